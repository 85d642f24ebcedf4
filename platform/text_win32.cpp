#include "platform/text.h"

#include <limits>

#include <windows.h>

namespace kelmora::platform {
namespace {

/// The system counts in int. A longer text, or room, is beyond what it converts.
template <class Text>
bool IsCountable(const Text& text)
{
    return text.size() <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

template <class Text>
int Count(const Text& text)
{
    return static_cast<int>(text.size());
}

Converted Result(int length, bool exact)
{
    if (length <= 0)
        return {0, false};
    return {static_cast<std::size_t>(length), exact};
}

} // namespace

Converted NarrowToUtf16(std::string_view text, std::span<char16_t> out)
{
    if (text.empty())
        return {0, true};
    if (!IsCountable(text) || !IsCountable(out))
        return {};
    const auto convert = [&](DWORD flags) {
        return MultiByteToWideChar(CP_ACP, flags, text.data(), Count(text),
                                   reinterpret_cast<wchar_t*>(out.data()), Count(out));
    };
    if (const int length = convert(MB_ERR_INVALID_CHARS))
        return Result(length, true);
    return Result(convert(0), false);
}

Converted Utf16ToNarrow(std::u16string_view text, std::span<char> out)
{
    if (text.empty())
        return {0, true};
    if (GetACP() == CP_UTF8) // this code page takes neither the flag nor the question below
        return Utf16ToUtf8(text, out);
    if (!IsCountable(text) || !IsCountable(out))
        return {};
    BOOL replaced = FALSE;
    // Without the flag a letter that the code page lacks turns into a look-alike: another file's name.
    const int length =
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, reinterpret_cast<const wchar_t*>(text.data()),
                            Count(text), out.data(), Count(out), nullptr, &replaced);
    return Result(length, !replaced);
}

} // namespace kelmora::platform

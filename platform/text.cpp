#include "platform/text.h"

#include "platform/utf.h"

namespace kelmora::platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

} // namespace

Converted Utf8ToUtf16(std::string_view text, std::span<char16_t> out)
{
    UnitWriter<char16_t> writer(out);
    bool exact = true;
    while (!text.empty()) {
        const Character next = ReadUtf8(text);
        exact = exact && next.valid;
        PutUtf16(writer, next.valid ? next.value : kReplacement);
        text.remove_prefix(next.taken);
    }
    return writer.Finish(exact);
}

Converted Utf16ToUtf8(std::u16string_view text, std::span<char> out)
{
    UnitWriter<char> writer(out);
    bool exact = true;
    while (!text.empty()) {
        const Character next = ReadUtf16(text);
        exact = exact && next.valid;
        PutUtf8(writer, next.valid ? next.value : kReplacement);
        text.remove_prefix(next.taken);
    }
    return writer.Finish(exact);
}

} // namespace kelmora::platform

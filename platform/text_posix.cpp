#include "platform/text.h"

#include "platform/utf.h"

namespace kelmora::platform {
namespace {

// File names are bytes that need not be UTF-8. A byte that is none travels as a lone low surrogate, which
// UTF-8 never gives, so it can be told apart on the way back.
constexpr char32_t kByteEscape = 0xDC00;

bool IsEscapedByte(char32_t unit)
{
    return unit >= kByteEscape + 0x80 && unit <= kByteEscape + 0xFF;
}

} // namespace

Converted NarrowToUtf16(std::string_view text, std::span<char16_t> out)
{
    UnitWriter<char16_t> writer(out);
    bool exact = true;
    while (!text.empty()) {
        const Character next = ReadUtf8(text);
        if (next.valid) {
            PutUtf16(writer, next.value);
        } else {
            exact = false;
            for (const char byte : text.substr(0, next.taken))
                writer.Put(kByteEscape + static_cast<unsigned char>(byte));
        }
        text.remove_prefix(next.taken);
    }
    return writer.Finish(exact);
}

Converted Utf16ToNarrow(std::u16string_view text, std::span<char> out)
{
    UnitWriter<char> writer(out);
    bool exact = true;
    while (!text.empty()) {
        const Character next = ReadUtf16(text);
        if (next.valid) {
            PutUtf8(writer, next.value);
        } else if (IsEscapedByte(next.value)) {
            writer.Put(next.value - kByteEscape);
        } else {
            exact = false;
            writer.Put(U'?');
        }
        text.remove_prefix(next.taken);
    }
    return writer.Finish(exact);
}

} // namespace kelmora::platform

#include "platform/utf.h"

namespace kelmora::platform {
namespace {

struct Lead {
    std::size_t followers; // 0: no lead of a longer character
    char32_t bits;
    unsigned char low;  // range of the first byte that follows; it keeps out what has a shorter form,
    unsigned char high; // surrogates, and what lies past U+10FFFF
};

Lead LeadOf(unsigned char byte)
{
    if (byte >= 0xC2 && byte <= 0xDF)
        return {1, byte & 0x1Fu, 0x80, 0xBF};
    if (byte >= 0xE0 && byte <= 0xEF) {
        const unsigned char low = byte == 0xE0 ? 0xA0 : 0x80;
        const unsigned char high = byte == 0xED ? 0x9F : 0xBF;
        return {2, byte & 0x0Fu, low, high};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        const unsigned char low = byte == 0xF0 ? 0x90 : 0x80;
        const unsigned char high = byte == 0xF4 ? 0x8F : 0xBF;
        return {3, byte & 0x07u, low, high};
    }
    return {0, 0, 0, 0};
}

bool IsHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

} // namespace

Character ReadUtf8(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80)
        return {first, 1, true};
    Lead lead = LeadOf(first);
    if (lead.followers == 0)
        return {first, 1, false};
    char32_t value = lead.bits;
    for (std::size_t i = 1; i <= lead.followers; ++i) {
        const auto byte =
            i < text.size() ? static_cast<unsigned char>(text[i]) : static_cast<unsigned char>(0);
        if (byte < lead.low || byte > lead.high)
            return {first, i, false};
        value = value << 6 | (byte & 0x3Fu);
        lead.low = 0x80;
        lead.high = 0xBF;
    }
    return {value, lead.followers + 1, true};
}

Character ReadUtf16(std::u16string_view text)
{
    const char32_t first = text[0];
    if (!IsHighSurrogate(first))
        return {first, 1, !IsLowSurrogate(first)};
    if (text.size() < 2 || !IsLowSurrogate(text[1]))
        return {first, 1, false};
    return {0x10000 + ((first - 0xD800) << 10) + (text[1] - 0xDC00u), 2, true};
}

void PutUtf16(UnitWriter<char16_t>& out, char32_t value)
{
    if (value < 0x10000) {
        out.Put(value);
        return;
    }
    out.Put(0xD800 + ((value - 0x10000) >> 10));
    out.Put(0xDC00 + ((value - 0x10000) & 0x3FF));
}

void PutUtf8(UnitWriter<char>& out, char32_t value)
{
    if (value < 0x80) {
        out.Put(value);
        return;
    }
    if (value < 0x800) {
        out.Put(0xC0 | value >> 6);
    } else {
        if (value < 0x10000) {
            out.Put(0xE0 | value >> 12);
        } else {
            out.Put(0xF0 | value >> 18);
            out.Put(0x80 | (value >> 12 & 0x3F));
        }
        out.Put(0x80 | (value >> 6 & 0x3F));
    }
    out.Put(0x80 | (value & 0x3F));
}

} // namespace kelmora::platform

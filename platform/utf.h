#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "platform/text.h"

namespace kelmora::platform {

/// One character taken from a text.
struct Character {
    char32_t value;    ///< its code point; what it says is open when it is not valid
    std::size_t taken; ///< units of the text that it takes, at least 1
    bool valid;        ///< whether these units are a character
};

/// The character at the start of `text`, which is not empty. Where there is none, `taken` covers the bytes
/// that one replacement stands for: the longest start of a character, or a single byte.
Character ReadUtf8(std::string_view text);

/// The character at the start of `text`, which is not empty. A lone surrogate is not valid; `value` is it.
Character ReadUtf16(std::u16string_view text);

/// Where a conversion writes: counts all units, keeps those that have a place.
template <class Unit>
class UnitWriter {
public:
    explicit UnitWriter(std::span<Unit> out) : m_out(out) {}

    void Put(char32_t unit)
    {
        if (m_length < m_out.size())
            m_out[m_length] = static_cast<Unit>(unit);
        ++m_length;
    }

    /// The result; `exact` says whether nothing was replaced.
    Converted Finish(bool exact) const
    {
        if (!m_out.empty() && m_length > m_out.size())
            return {0, false};
        return {m_length, exact};
    }

private:
    std::span<Unit> m_out;
    std::size_t m_length = 0;
};

/// Writes one code point as UTF-16.
void PutUtf16(UnitWriter<char16_t>& out, char32_t value);

/// Writes one code point as UTF-8.
void PutUtf8(UnitWriter<char>& out, char32_t value);

} // namespace kelmora::platform

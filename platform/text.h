#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace kelmora::platform {

// Text in the two forms that cross the boundary. Wide text is UTF-16. Narrow text is in the encoding that
// the system gives to narrow text: on Windows the ANSI code page, elsewhere UTF-8.
//
// All conversions take the text without an end mark, write none, and throw nothing. With an empty `out` they
// only count. A text that is longer than `out` is not converted in part: then nothing useful is in `out`.

/// What a conversion gave.
struct Converted {
    /// Units written, or needed where `out` was empty; 0 when the text did not fit.
    std::size_t length = 0;

    /// Everything fitted, and every character has its counterpart: nothing was replaced.
    bool whole = false;
};

/// Narrow text to UTF-16. Bytes that mean nothing in the code page become its replacement character.
/// Where narrow text is UTF-8, bytes that are none become U+DC80 to U+DCFF, and Utf16ToNarrow turns them
/// back: a file name survives the way there and back whatever its bytes are.
Converted NarrowToUtf16(std::string_view text, std::span<char16_t> out);

/// UTF-16 to narrow text. `whole` is false when a character has no exact counterpart: no look-alike is put
/// in its place without saying so.
Converted Utf16ToNarrow(std::u16string_view text, std::span<char> out);

/// UTF-8 to UTF-16, the same on every system. What is no UTF-8 becomes U+FFFD, and `whole` is false.
Converted Utf8ToUtf16(std::string_view text, std::span<char16_t> out);

/// UTF-16 to UTF-8, the same on every system. A lone surrogate becomes U+FFFD, and `whole` is false.
Converted Utf16ToUtf8(std::u16string_view text, std::span<char> out);

} // namespace kelmora::platform

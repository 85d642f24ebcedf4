#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelmora {

// Numbers in preset files. The functions of the C library would follow the host's locale, in which a comma may
// stand for the point, and part ways between systems where a number is out of range.

/// The integer that `text` begins with, blanks and a sign before it allowed. Too large a number gives the nearest
/// end of the range, no number gives 0.
std::int32_t ReadInteger(std::string_view text);

/// The decimal number that `text` begins with, blanks and a sign before it allowed, as a double narrowed to
/// float. Too large a number gives the largest of its sign; no number, and words such as "nan", give 0.
float ReadLevel(std::string_view text);

/// Room for every float as text, and an end mark.
inline constexpr std::size_t kLevelTextCapacity = 64;

/// Writes `level` with six decimals, zero-ended; what is no number in words: "nan", "inf".
void WriteLevel(float level, char (&text)[kLevelTextCapacity]);

} // namespace kelmora

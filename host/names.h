#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelmora::host {

/// The name in lower case, blanks turned into '-': "Air Brush" gives "air-brush". ASCII.
std::string Slug(std::string_view name);

/// What counts when names are compared: lower case, without blanks, '-' and '_'.
std::string Folded(std::string_view name);

/// How many letters must be put in, taken out, changed or exchanged with their neighbour to get from `a` to
/// `b`.
std::size_t EditDistance(std::string_view a, std::string_view b);

/// The index of the name that `asked` means: the one that is equal letter by letter, or else the first one
/// that is equal when folded. Nothing when there is none.
std::optional<std::size_t> FindName(const std::vector<std::string>& names, std::string_view asked);

/// Up to three of `names` that `asked` may have been meant for, nearest first. Empty when none is near.
std::vector<std::string> NearestNames(const std::vector<std::string>& names, std::string_view asked);

/// The sentence `there is no KIND "ASKED"; did you mean ...? HINT`, without the question when nothing is
/// near.
std::string UnknownName(std::string_view kind, std::string_view asked, const std::vector<std::string>& names,
                        std::string_view hint);

} // namespace kelmora::host

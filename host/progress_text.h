#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kelmora::host {

/// One line that shows how far a rendering is: a bar and a share where the number of frames is known, the
/// frames, how many are done in a second, and the time that is left.
///
/// done     frames that are written
/// frames   how many there will be
/// seconds  since the beginning
std::string ProgressText(std::int64_t done, std::optional<std::int64_t> frames, double seconds);

} // namespace kelmora::host

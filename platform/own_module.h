#pragma once

#include <cstddef>

namespace kelmora::platform {

/// Characters of a path buffer, the end mark included.
inline constexpr std::size_t kPathCapacity = 1024;

/// What stands between a folder and a name in the paths that the system gives out.
extern const char16_t kFolderSeparator;

/// Stores the full path of the file that this code was loaded from, zero-ended, and gives its length. A path
/// that does not fit, end mark included, counts as unknown: the result is 0 and the path empty.
std::size_t OwnModulePath(char16_t (&path)[kPathCapacity]);

} // namespace kelmora::platform

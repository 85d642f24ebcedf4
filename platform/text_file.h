#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelmora::platform {

// Paths are zero-ended, at most as long as the system takes them, and made as Utf16ToNarrow reads them where the
// system's own paths are narrow.

/// Reads the whole file at `path`, byte by byte as it stands there. False, and `content` of no use, when it is no
/// regular file, cannot be read, or holds more than `most` bytes. Throws std::bad_alloc.
bool ReadFile(const char16_t* path, std::size_t most, std::string& content);

/// Writes a file so that at `path` there is the old one, or none, until the new one is whole and on the disk. False
/// on any failure, and then nothing is left behind.
///
/// text  goes into the file as it is: a file made on one system is the same, byte for byte, on any other
///
/// What is no regular file, or must not be written to, is not replaced. Throws std::bad_alloc.
bool ReplaceTextFile(const char16_t* path, std::string_view text);

} // namespace kelmora::platform

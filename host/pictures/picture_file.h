#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/pictures/picture.h"
#include "host/pictures/safe_write.h"

namespace kelmora::host {

inline constexpr int kDefaultQuality = 92;

/// Reads a PNG, JPEG, BMP or TGA file; `path` is UTF-8. A picture without alpha gets 255. Throws Failure when
/// that does not work.
Picture ReadPicture(const std::string& path);

/// Throws Failure when `path` does not end as a PNG or JPEG file does, or cannot be written to. For saying so
/// before the work begins.
void CheckPictureTarget(const std::string& path, Overwrite overwrite);

/// Throws Failure when the file that `path` names by its end cannot hold a picture of so many pixels: a JPEG
/// file has at most 65535 of them along a side, and a PNG file is built in memory, up to 900 MB of pixels.
void CheckPictureSize(const std::string& path, std::int64_t width, std::int64_t height);

/// A JPEG file of the picture without its alpha. Throws Failure when it is too large for one.
///
/// quality  1 to 100
std::vector<std::uint8_t> JpegBytes(const Picture& picture, int quality);

/// Writes a PNG or, without its alpha, a JPEG file, as the end of the name says. Throws Failure when that
/// does not work.
///
/// quality  1 to 100, for JPEG alone
void WritePicture(const std::string& path, const Picture& picture, Overwrite overwrite,
                  int quality = kDefaultQuality);

} // namespace kelmora::host

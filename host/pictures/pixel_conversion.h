#pragma once

#include <cstdint>
#include <vector>

#include "contract/video_frame.h"
#include "host/pictures/picture.h"

namespace kelmora::host {

/// Bytes of a pixel: 4 in the byte formats of pictures, 16 in the float ones, 0 for all others.
std::int32_t BytesOfPixel(PixelFormat format);

/// The picture's pixels in one of the four picture formats, rows without a gap. A float is its byte times
/// 0.003921569. Throws Failure when the contract's records cannot hold so large a picture, and for any other
/// format.
std::vector<std::uint8_t> ToFormat(const Picture& picture, PixelFormat format);

/// The way back: floats are cut to 0 to 1, a not-a-number counts as 0, and go to the nearest byte.
///
/// pixels  width * height of them, rows without a gap
Picture FromFormat(const std::vector<std::uint8_t>& pixels, std::int32_t width, std::int32_t height,
                   PixelFormat format);

} // namespace kelmora::host

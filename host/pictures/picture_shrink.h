#pragma once

#include <cstdint>

#include "host/pictures/picture.h"

namespace kelmora::host {

/// The height, to the nearest and at least 1, that keeps the shape of `width` by `height` pixels when the
/// width becomes `newWidth`, 1 to `width`.
std::int32_t ShrunkHeight(std::int32_t width, std::int32_t height, std::int32_t newWidth);

/// The picture shrunk to `newWidth`, 1 to its own width, pixels: each pixel is the mean of the area that it
/// covers, a colour counting by its alpha, to the nearest. Without any alpha there the colours are 0.
Picture Shrink(const Picture& picture, std::int32_t newWidth);

} // namespace kelmora::host

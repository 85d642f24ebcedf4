#pragma once

#include <cstdint>

#include "image/frame_buffer.h"

namespace kelmora {

/// Darkens a picture to `light`, 0 to below 1, of its brightness; alpha stays. Bytes are rounded, halves up, and
/// saturate for any other light; one that is no number makes them 0. Of Packed8 only byte 0 of each pixel is
/// darkened; masks and unknown formats stay as they are, as do pictures whose rows do not hold their pixels.
void ApplyLight(FrameBuffer& picture, double light);

/// The mean luminance of a part of the picture, 0 to 255, which is cut to the picture. 0 for a picture without
/// pixels, an empty part and formats above ARGB32F.
// Kept: the divisor is the area that was asked for, also where the part hangs over an edge of the picture.
std::uint8_t AverageBrightness(const FrameBuffer& picture, int x, int y, int width, int height);

} // namespace kelmora

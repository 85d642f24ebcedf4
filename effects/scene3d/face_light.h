#pragma once

#include <cstdint>
#include <span>

#include "effects/scene3d/quad_face.h"
#include "image/frame_buffer.h"

namespace kelmora {

/// Darkens a picture to `light`, 0 to below 1, of its brightness; alpha stays. Bytes are rounded, halves up, and
/// saturate for any other light; one that is no number makes them 0. Of Packed8 only byte 0 of each pixel is
/// darkened; masks and unknown formats stay as they are, as do pictures whose rows do not hold their pixels.
void ApplyLight(FrameBuffer& picture, double light);

/// What ApplyLight multiplies the four values of a float pixel by.
struct LightFactors {
    float values[4];

    LightFactors(std::uint32_t format, double light);
};

/// A copy of a picture of one of the four picture formats, darkened as ApplyLight does it. Both pictures have the same
/// size and format, and hold their pixels.
void CopyLit(const FrameBuffer& from, FrameBuffer& to, double light);

/// The mean luminance of a part of the picture, 0 to 255, which is cut to the picture. 0 for a picture without
/// pixels, an empty part and formats above ARGB32F.
// Kept: the divisor is the area that was asked for, also where the part hangs over an edge of the picture.
std::uint8_t AverageBrightness(const FrameBuffer& picture, int x, int y, int width, int height);

/// A part of a picture, and its mean luminance.
struct Brightness {
    const FrameBuffer* picture = nullptr; ///< not owned
    SourceRect part = {};
    std::uint8_t mean = 0;
};

/// AverageBrightness for each of `parts`: many floats at once take a fraction of the time. Parts that follow each other
/// should be about as large.
void FindBrightness(std::span<Brightness> parts);

} // namespace kelmora

#pragma once

#include "tests/reference/picture.h"

namespace kelmora::reference {

/// Codes of interpolations.
inline constexpr int kNearest = 1, kLinear = 2, kCubic = 4, kAverage = 8, kLanczos = 16;

/// A part of a picture, in pixels; the origin lies in the picture.
struct ResizeRegion {
    int x = 0, y = 0, width = 0, height = 0;
};

/// What a picture of that size leaves of an interpolation.
int LoweredInterpolation(int width, int height, int interpolation);

/// How many pixels `size` of them become, cut to the `limit` pixels that there are; 0 when not even half a pixel
/// would be left.
int ResizedLength(int size, double factor, int limit);

/// Resizes a region of `src` into the top left of `dst`, one value at a time. Without effect when a length
/// becomes 0.
///
/// The values are exact but for the last bits of double; linear bytes alone are the rounded ones, in
/// integers. Other bytes are cut to 0..255 and not rounded; cubic and Lanczos ones have weights in 16384ths.
void Resize(const Picture& src, ResizeRegion region, Picture& dst, double xFactor, double yFactor,
            int interpolation);

} // namespace kelmora::reference

#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Colours of four-channel pixels whose fourth value is left alone. A region may be read and written in place.
//
// src, dst      the region's first pixel (of alpha-first pictures: its second value)
// *Step         bytes from row to row, positive
// Status        pxNullPointer, pxBadSize, pxBadStep

/// New channel r = twist[r][0] * c0 + twist[r][1] * c1 + twist[r][2] * c2 + twist[r][3], from the old ones:
/// single precision, every product and every sum rounded, from left to right. Floats are not clamped. Bytes
/// are taken as 0 to 255, and so is the fourth column: results of 255 or more give 255, of 0 or less and
/// not-a-number 0, all others go to nearest, ties to even.
PxStatus pxColorTwist_32f_A3(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                             const float twist[3][4]);
PxStatus pxColorTwist_32f_A3_I(float* pixels, int step, int width, int height, const float twist[3][4]);
PxStatus pxColorTwist_8u_A3(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                            int height, const float twist[3][4]);

/// Hue, saturation, value, from pixels whose first three values are blue, green, red. V = max(R, G, B),
/// S = 255 * (V - min) / V, H 0 to 255 for a full turn that begins at blue and goes by green to red; S and H
/// to nearest, ties to even. Greys have H = S = 0.
PxStatus pxRGBToHSV_8u_A3(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                          int height);

/// The inverse: colours to nearest (there are no ties).
PxStatus pxHSVToRGB_8u_A3(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                          int height);

} // namespace kelmora

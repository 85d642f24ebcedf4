#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

/// How pixels between pixels are made. Codes that hosts and effects have always used.
enum PxInterpolation : int {
    pxNearest = 1,
    pxLinear = 2,
    pxCubic = 4,   ///< Catmull-Rom (a = -0.5), four taps per axis
    pxAverage = 8, ///< of the area that a pixel covers
    pxLanczos = 16 ///< three lobes, six taps per axis that sum to 1
};

/// A part of a picture, in pixels.
struct PxRect {
    int x, y, width, height;
};

// Resizes a region of a picture. `xFactor` and `yFactor` are the size of the result over that of the region;
// the result is as large as they make the region, cut to the destination's size, and what lies beyond it
// stays untouched. Taps outside the region are its nearest edge pixels.
//
// src             the picture's first pixel
// region          the part to take, cut to what lies in the picture from its origin on
// dst             the destination's first pixel; must not overlap the source
// *Step           bytes from row to row, positive
// interpolation   PxInterpolation. A picture less than 8 pixels wide or high lowers Lanczos to cubic, one
//                 less than 4 cubic to linear, one less than 2 anything to nearest
// Status          pxNullPointer; pxBadSize for a width or height below 1; pxBadStep; pxRegionOutsideSource
//                 (a warning) when the region does not begin in the picture; pxBadFactor for one that is not
//                 above 0; pxBadInterpolation for an unknown code and for pxAverage with a factor above 1;
//                 pxResultTooSmall when not even half a pixel would be left; pxNoMemory for working rows
//
// Rows first, then columns, the first tap first. Floats and averages: sums in double, rounded once, at the end.
// Linear bytes: 14-bit weights, 16384 for 1, sums exact, to nearest, halves up, like averages. Cubic and Lanczos
// bytes: weights to the nearest 1/16384, ties to even, the largest one such that they sum to 1; sums along rows
// exact, along columns in single precision; to nearest, ties to even, saturated. Floats are not clamped; one that
// is no number spreads to every pixel with a tap on it, even a tap of weight 0, save for the nearest neighbour,
// which moves bits.

PxStatus pxResize_8u_C1(const std::uint8_t* src, int srcWidth, int srcHeight, int srcStep,
                        const PxRect& region, std::uint8_t* dst, int dstStep, int dstWidth, int dstHeight,
                        double xFactor, double yFactor, int interpolation);
PxStatus pxResize_8u_C4(const std::uint8_t* src, int srcWidth, int srcHeight, int srcStep,
                        const PxRect& region, std::uint8_t* dst, int dstStep, int dstWidth, int dstHeight,
                        double xFactor, double yFactor, int interpolation);
PxStatus pxResize_32f_C1(const float* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                         float* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                         int interpolation);
PxStatus pxResize_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                         float* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                         int interpolation);

/// pxResize_8u_C4 for a caller who hides a part of the result: its pixels may come out or stay as they stood.
/// hole  that part, in the result's pixels
PxStatus pxResizeAround_8u_C4(const std::uint8_t* src, int srcWidth, int srcHeight, int srcStep,
                              const PxRect& region, std::uint8_t* dst, int dstStep, int dstWidth,
                              int dstHeight, double xFactor, double yFactor, int interpolation,
                              const PxRect& hole);

/// pxResize_32f_C4 for such a caller, whose pictures hold levels: results are cut to 0 to 1, what is no number to 0.
PxStatus pxResizeLevelsAround_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep,
                                     const PxRect& region, float* dst, int dstStep, int dstWidth,
                                     int dstHeight, double xFactor, double yFactor, int interpolation,
                                     const PxRect& hole);

} // namespace kelmora

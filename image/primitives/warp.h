#pragma once

#include <cstdint>

#include "image/primitives/resize.h"
#include "image/primitives/status.h"

namespace kelmora {

/// Set in a perspective warp's interpolation code: the pixels just outside the quadrangle are mixed in.
inline constexpr std::uint32_t pxSmoothEdges = 0x80000000;

// Lay a region of a picture over a region of another one. The coefficients map source positions to those of
// the destination, in whole pictures' pixel indices; every destination pixel is sampled where the inverse
// takes it. Pixels whose position lies outside the source region stay as they were.
//
// src, dst        the pictures' first pixels; the pictures must not overlap
// *Step           bytes from row to row, positive
// srcRegion       the part to take, cut to the picture
// dstRegion       the part to write
// interpolation   pxNearest, pxLinear or pxCubic
// Status          pxNullPointer; pxBadSize for a width or height below 1; pxBadStep; pxRegionOutsideSource (a
//                 warning) when the source region does not begin in the picture or the destination region has a
//                 negative corner; pxBadInterpolation; pxDegenerateWarp when the map has no finite inverse
//
// Inside the source region means its closed range of pixel indices, widened by kWarpSlack so that rounding
// never drops a border row; positions are cut to the range before they are sampled.
//
// Positions are taken in double, from the inverse i of an affine map as i00 * x + (i01 * y + i02), from the adjugate
// a of a perspective one as u * q with u = a00 * x + (a01 * y + a02), w likewise and q = 1 / w: one division serves
// both coordinates.
//
// Linear bytes: positions to the nearest 1/256, ties to even; the four products are summed in full and rounded
// once, halves up. Linear floats: weights in single precision, rows first, a * (1 - f) + b * f. Cubic
// (Catmull-Rom): double precision, rounded once, ties to even, bytes saturate; taps outside the region are its
// edge pixels. Nearest: the position plus a half, toward zero.

/// In pixels.
inline constexpr double kWarpSlack = 1e-3;

/// A map's 2 by 2 part that is this close to the identity's is taken for it. What is left is a shift, whose
/// fraction is the same for all pixels: of bytes the nearest 1/256 of the shift, ties to even.
inline constexpr double kPlainShift = 1e-6;

/// coeffs: x' = c[0][0] x + c[0][1] y + c[0][2], y' = c[1][0] x + c[1][1] y + c[1][2].
PxStatus pxWarpAffine_8u_C1(const std::uint8_t* src, int srcWidth, int srcHeight, int srcStep,
                            const PxRect& srcRegion, std::uint8_t* dst, int dstStep, const PxRect& dstRegion,
                            const double coeffs[2][3], int interpolation);
PxStatus pxWarpAffine_8u_C4(const std::uint8_t* src, int srcWidth, int srcHeight, int srcStep,
                            const PxRect& srcRegion, std::uint8_t* dst, int dstStep, const PxRect& dstRegion,
                            const double coeffs[2][3], int interpolation);
PxStatus pxWarpAffine_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep,
                             const PxRect& srcRegion, float* dst, int dstStep, const PxRect& dstRegion,
                             const double coeffs[2][3], int interpolation);

/// The perspective map that takes the corner pixels of a rectangle, (x, y), (x + width - 1, y) and so on
/// clockwise, to those of a quadrangle: with w = c[2][0] x + c[2][1] y + c[2][2], x' = (c[0][0] x + c[0][1] y +
/// c[0][2]) / w and y' likewise. Either sense of turning will do.
///
/// Status: pxNullPointer, pxEmptyQuadRect for a width or height below 1, pxDegenerateQuad for one of 1 and for a
/// quadrangle that is not finite, not convex or has three corners in a line.
PxStatus pxQuadTransform(const PxRect& rect, const double quad[4][2], double coeffs[3][3]);

/// The perspective warp. interpolation may carry pxSmoothEdges: then a pixel outside whose distance d to the
/// quadrangle of the source region's corners is below 1 gets the colour of the quadrangle's nearest point, with the
/// weight 1 - d. Bytes: the weight to the nearest 1/256, one rounding, halves up; floats: in double.
PxStatus pxWarpQuad_8u_C4(const std::uint8_t* src, int srcWidth, int srcHeight, int srcStep,
                          const PxRect& srcRegion, std::uint8_t* dst, int dstStep, const PxRect& dstRegion,
                          const double coeffs[3][3], std::uint32_t interpolation);
PxStatus pxWarpQuad_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep,
                           const PxRect& srcRegion, float* dst, int dstStep, const PxRect& dstRegion,
                           const double coeffs[3][3], std::uint32_t interpolation);

/// The same of a picture each of whose values is multiplied by `light`, that of its channel, and rounded, before it is
/// sampled. Linear alone, else pxBadInterpolation, of a source region of two rows and columns at least in a picture
/// that lies within 2 GB, else pxBadSize.
PxStatus pxWarpQuadLit_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep,
                              const PxRect& srcRegion, float* dst, int dstStep, const PxRect& dstRegion,
                              const double coeffs[3][3], std::uint32_t interpolation, const float light[4]);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Arithmetic per channel. Float members do not clamp and round once per operation.
//
// consts        one per processed channel, in memory order
// src, dst      the region's first pixel; `pixels` and `srcDst` are read and written
// *Step         bytes from row to row, positive
// Status        pxNullPointer, pxBadSize, pxBadStep

/// Channel + constant.
PxStatus pxAddConst_32f_A3(const float* src, int srcStep, const float consts[3], float* dst, int dstStep,
                           int width, int height);
PxStatus pxAddConst_32f_A3_I(const float consts[3], float* pixels, int step, int width, int height);

/// Channel * constant.
PxStatus pxMulConst_32f_A3(const float* src, int srcStep, const float consts[3], float* dst, int dstStep,
                           int width, int height);
PxStatus pxMulConst_32f_A3_I(const float consts[3], float* pixels, int step, int width, int height);
PxStatus pxMulConst_32f_C4_I(const float consts[4], float* pixels, int step, int width, int height);

/// srcDst += src.
PxStatus pxAdd_32f_C4_I(const float* src, int srcStep, float* srcDst, int srcDstStep, int width, int height);

/// With p = channel * constant: (p + (p >> 8) + 1) >> 8, which takes 255 * 255 to 255.
PxStatus pxMulConstScaled_8u_C1_I(std::uint8_t constant, std::uint8_t* pixels, int step, int width,
                                  int height);
PxStatus pxMulConstScaled_8u_C4_I(const std::uint8_t consts[4], std::uint8_t* pixels, int step, int width,
                                  int height);

/// srcDst = (src + srcDst) shifted right by `scale`, to nearest with ties to even; saturated. A negative
/// scale shifts left, one above 9 clears the region.
PxStatus pxAddScaled_8u_C1_I(const std::uint8_t* src, int srcStep, std::uint8_t* srcDst, int srcDstStep,
                             int width, int height, int scale);
PxStatus pxAddScaled_8u_C4_I(const std::uint8_t* src, int srcStep, std::uint8_t* srcDst, int srcDstStep,
                             int width, int height, int scale);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Convolution of a region with a one-dimensional kernel, applied reversed, per channel:
//
//   row filter      dst(x, y) = sum over j of kernel[j] * src(x + anchor - j, y)
//   column filter   dst(x, y) = sum over j of kernel[j] * src(x, y + anchor - j)
//
// There is no border: the caller sees to it that every tap lies in readable memory. The destination must
// not overlap what the taps read. A kernel may have any length.
//
// The float members sum in double and store without clamping. The byte members sum integers and finish with
//   divisor 1             saturation to 0..255
//   a power of two        a shift, to nearest, ties to even, then saturation
//   any other divisor     times 1 / divisor in double: 255 or more gives 255, 0.5 or less gives 0, otherwise
//                         to nearest, ties to even
//
// src, dst      the region's first pixel
// *Step         bytes from row to row, positive
// kernel        kernelSize taps
// anchor        0 to kernelSize - 1
// Status        pxNullPointer, pxBadSize, pxBadStep, pxBadAnchor, pxZeroDivisor

PxStatus pxRowFilter_8u_C1(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                           int height, const int* kernel, int kernelSize, int anchor, int divisor);
PxStatus pxRowFilter_8u_A3(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                           int height, const int* kernel, int kernelSize, int anchor, int divisor);
PxStatus pxRowFilter_8u_C4(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                           int height, const int* kernel, int kernelSize, int anchor, int divisor);
PxStatus pxRowFilter_32f_C1(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                            const float* kernel, int kernelSize, int anchor);
PxStatus pxRowFilter_32f_A3(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                            const float* kernel, int kernelSize, int anchor);
PxStatus pxRowFilter_32f_C4(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                            const float* kernel, int kernelSize, int anchor);

PxStatus pxColumnFilter_8u_C1(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                              int height, const int* kernel, int kernelSize, int anchor, int divisor);
PxStatus pxColumnFilter_8u_A3(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                              int height, const int* kernel, int kernelSize, int anchor, int divisor);
PxStatus pxColumnFilter_8u_C4(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                              int height, const int* kernel, int kernelSize, int anchor, int divisor);
PxStatus pxColumnFilter_32f_C1(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                               const float* kernel, int kernelSize, int anchor);
PxStatus pxColumnFilter_32f_A3(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                               const float* kernel, int kernelSize, int anchor);
PxStatus pxColumnFilter_32f_C4(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                               const float* kernel, int kernelSize, int anchor);

} // namespace kelmora

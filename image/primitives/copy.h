#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Exact copy of a region. Source and destination may be the same region or overlap in rows.
//
// src, dst    first pixel of the region
// *Step       bytes from row to row, positive
// Status      pxNullPointer, pxBadSize, pxBadStep

PxStatus pxCopy_8u_C1(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                      int height);
PxStatus pxCopy_8u_C4(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                      int height);
PxStatus pxCopy_32f_C1(const float* src, int srcStep, float* dst, int dstStep, int width, int height);
PxStatus pxCopy_32f_C4(const float* src, int srcStep, float* dst, int dstStep, int width, int height);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Fixed masks. They read one or two pixels beyond the region on every side, which the caller provides; source
// and destination must not overlap.
//
// src, dst      the region's first pixel
// *Step         bytes from row to row, positive
// Status        pxNullPointer, pxBadSize, pxBadStep

/// Per channel, of the first three: x = 17 * c - (sum of the 3 by 3 neighbours, c among them);
/// (x + ((x & 8) >> 3) + 3) >> 3, saturated.
PxStatus pxSharpen3x3_8u_A3(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                            int height);

enum PxBoxMask : int { pxBox3x3 = 33, pxBox5x5 = 55 };

/// The mean of 3 by 3 (((sum + 5) * 455) >> 12) or 5 by 5 (((sum + 13) * 10485) >> 18) neighbours. Also
/// pxBadMask for another mask.
PxStatus pxBoxAverage_8u_C1(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                            int height, int mask);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Alpha in the fourth of four bytes. m(a, b) stands for (p + (p >> 8) + 1) >> 8 with p = a * b. Any regions
// may be the same.
//
// src*, dst     the region's first pixel
// *Step         bytes from row to row, positive
// Status        pxNullPointer, pxBadSize, pxBadStep

/// Which of the composites (T. Porter and T. Duff, 1984) pxAlphaComposite_8u_C4 makes.
enum PxAlphaOp : int {
    pxAlphaOver = 0,              ///< straight colours: m(c1, a1) + m(m(c2, a2), 255 - a1), its low byte
    pxAlphaOverPremultiplied = 6, ///< c1 + m(c2, 255 - a1), at most 255
};

/// The first source over the second. Alpha: a1 + m(a2, 255 - a1), its low byte, or at most 255 as the colours
/// go. Any other `op` counts as pxAlphaOver.
PxStatus pxAlphaComposite_8u_C4(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                                int src2Step, std::uint8_t* dst, int dstStep, int width, int height, int op);

/// Colours become m(colour, alpha); alpha is copied.
PxStatus pxPremultiply_8u_A3(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                             int height);

} // namespace kelmora

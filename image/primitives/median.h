#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Per channel, the median of the mask's area: of maskWidth * maskHeight values in order, the one at
// (maskWidth * maskHeight) / 2, counted from 0. The mask covers the pixels from (x - anchorX, y - anchorY) on,
// which the caller provides also where they lie outside the region; source and destination must not overlap, save
// that the destination may begin in the source's own memory, with the same step, one row above the first mask's
// first pixel: what is written there is read no more.
//
// src, dst      the region's first pixel
// *Step         bytes from row to row, positive
// mask*         odd
// Status        pxNullPointer, pxBadSize, pxBadStep, pxBadMask for an even size, pxBadAnchor outside the mask,
//               pxNoMemory for the working space (about 300 bytes per column, at most 1 MB; more for masks
//               higher than 127 pixels)

PxStatus pxMedian_8u_A3(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                        int height, int maskWidth, int maskHeight, int anchorX, int anchorY);
PxStatus pxMedian_8u_C4(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                        int height, int maskWidth, int maskHeight, int anchorX, int anchorY);

} // namespace kelmora

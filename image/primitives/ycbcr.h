#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Between packed YCbCr 4:2:2 (per pair of pixels the bytes Y0, Cb, Y1, Cr; ITU-R BT.601, video range) and three
// bytes R, G, B per pixel. A last odd pixel has the bytes Y, Cb alone.
//
// src, dst      the region's first byte
// *Step         bytes from row to row, positive: at least 2 (YCbCr) or 3 (RGB) per pixel
// Status        pxNullPointer, pxBadSize, pxBadStep

/// A last odd pixel takes the Cr of the pair before it, and 128 where there is none.
PxStatus pxYCbCr422ToRGB(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                         int height);

/// A pair's Cb and Cr come from the sums of both pixels.
PxStatus pxRGBToYCbCr422(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                         int height);

} // namespace kelmora

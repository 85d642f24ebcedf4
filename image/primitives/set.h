#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Constant fills of a region.
//
// values        one per channel, in memory order
// pixels        the region's first pixel; for pxSetChannel the channel's value in it
// step          bytes from row to row, positive
// Status        pxNullPointer, pxBadSize, pxBadStep

PxStatus pxSet_8u_C1(std::uint8_t value, std::uint8_t* pixels, int step, int width, int height);
PxStatus pxSet_8u_C4(const std::uint8_t values[4], std::uint8_t* pixels, int step, int width, int height);
PxStatus pxSet_32f_C1(float value, float* pixels, int step, int width, int height);
PxStatus pxSet_32f_C4(const float values[4], float* pixels, int step, int width, int height);

/// One channel of four-channel pixels: every fourth value and nothing else.
PxStatus pxSetChannel_8u_C4(std::uint8_t value, std::uint8_t* pixels, int step, int width, int height);
PxStatus pxSetChannel_32f_C4(float value, float* pixels, int step, int width, int height);

} // namespace kelmora

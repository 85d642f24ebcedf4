#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Single channels of four-channel regions. Which channel is the caller's choice: it offsets the pointer.
// A region may be read and written in place.
//
// src, dst    the channel's value in the region's first pixel
// *Step       bytes from row to row, positive
// Status      pxNullPointer, pxBadSize, pxBadStep

/// One channel to one channel.
PxStatus pxCopyChannel_8u_C4(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                             int height);
PxStatus pxCopyChannel_32f_C4(const float* src, int srcStep, float* dst, int dstStep, int width, int height);

/// One channel of four into a plane.
PxStatus pxExtractChannel_8u_C4C1(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                                  int width, int height);
PxStatus pxExtractChannel_32f_C4C1(const float* src, int srcStep, float* dst, int dstStep, int width,
                                   int height);

/// A plane into one channel of four.
PxStatus pxInsertChannel_8u_C1C4(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                                 int width, int height);
PxStatus pxInsertChannel_32f_C1C4(const float* src, int srcStep, float* dst, int dstStep, int width,
                                  int height);

/// In place, per pixel: new channel i is old channel order[i]. `pixels` is the first pixel. Also
/// pxBadChannelOrder for a value outside 0 to 3.
PxStatus pxSwapChannels_8u_C4_I(std::uint8_t* pixels, int step, int width, int height, const int order[4]);

} // namespace kelmora

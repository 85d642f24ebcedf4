#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

// Places the source at (left, top) in the destination and extends its edge pixels to every side.
//
// The source may already lie at its place in the destination; it is then left alone.
//
// Status      pxNullPointer, pxBadSize, pxBadStep; pxBadSize also when the source does not fit at that place

PxStatus pxPadReplicate_8u_C1(const std::uint8_t* src, int srcStep, int srcWidth, int srcHeight,
                              std::uint8_t* dst, int dstStep, int dstWidth, int dstHeight, int top, int left);
PxStatus pxPadReplicate_8u_C4(const std::uint8_t* src, int srcStep, int srcWidth, int srcHeight,
                              std::uint8_t* dst, int dstStep, int dstWidth, int dstHeight, int top, int left);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/primitives/status.h"

namespace kelmora {

/// What a fill has changed: how many pixels, and the smallest rectangle around them. All 0 for none.
struct PxFilledRegion {
    std::int64_t pixels = 0;
    int x = 0, y = 0, width = 0, height = 0;
};

/// The working space of a fill in `*bytes`: 24 * width * height / 4 + 32. pxBadSize also for planes whose working
/// space an int does not hold: those of more than 357913935 pixels, which no fill takes either.
PxStatus pxFloodFillSize(int width, int height, int* bytes);

// Sets the area of equal value around the seed to `newValue`. Pixels are neighbours across their sides, not across
// their corners. A seed that has `newValue` already is left alone, with pxOk. Not-a-number equals nothing, so a seed
// of it has no area.
//
// plane     the plane's first pixel
// step      bytes from row to row, positive
// region    where given, what was filled
// work      pxFloodFillSize's bytes, aligned to 4
// Status    pxNullPointer, pxBadSize, pxBadStep, pxSeedOutside

PxStatus pxFloodFill_8u_C1(std::uint8_t* plane, int step, int width, int height, int seedX, int seedY,
                           std::uint8_t newValue, PxFilledRegion* region, void* work);
PxStatus pxFloodFill_32f_C1(float* plane, int step, int width, int height, int seedX, int seedY,
                            float newValue, PxFilledRegion* region, void* work);

} // namespace kelmora

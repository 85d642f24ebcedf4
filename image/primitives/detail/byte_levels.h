// Levels of 0 to 1 and the bytes that stand for them, in vectors, for sources that are compiled once per instruction
// set: see simd.h for what that forbids.
#pragma once

#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {

/// A byte's level: the only rounding is that of the product, as if it were computed in double.
KELMORA_INLINE F32 LevelOf(I32 byte)
{
    return ToFloat(byte) * 0.003921569f;
}

/// Into 0 to 1; not-a-number gives 0.
KELMORA_INLINE F32 ClampedLevel(F32 level)
{
    return Least(Most(level, F32{}), F32{} + 1.0f);
}

// 255 levels are 256 less one. Next to a whole number t that is at most 1 away, level * 256 - t is exact, so that
// comparing it with the level says on which side of t the product lies, which its own rounding may have crossed.

/// level * 255 to nearest, halves up, of clamped levels: as in exact arithmetic.
KELMORA_INLINE I32 NearestByte(F32 level)
{
    level = ClampedLevel(level);
    const I32 below = Truncate(level * 255.0f);
    const F32 rest = level * 256.0f - (ToFloat(below) + 0.5f);
    return below - (I32)(rest >= level);
}

/// level * 255 toward zero, of clamped levels: as in exact arithmetic.
KELMORA_INLINE I32 TruncatedByte(F32 level)
{
    level = ClampedLevel(level);
    const I32 below = Truncate(level * 255.0f);
    const F32 rest = level * 256.0f - ToFloat(below);
    return below + (I32)(rest < level);
}

} // namespace kelmora::KELMORA_VARIANT

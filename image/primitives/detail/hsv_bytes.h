// Hue, saturation and value of byte pixels, in vectors, for sources that are compiled once per instruction set: see
// simd.h for what that forbids.
#pragma once

#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {

/// A byte of each pixel, from the bit `shift` on.
KELMORA_INLINE F32 Channel(U32 pixels, int shift)
{
    return ToFloat((I32)((pixels >> shift) & 0xFFu));
}

/// Hue 0 to 255 for a full turn from blue by green to red, saturation and value in bytes: exact quotients of
/// whole numbers, to nearest, ties to even, all of them small enough for single precision.
struct HsvBytes {
    F32 hue, saturation, value;
};

KELMORA_INLINE F32 Nearest(F32 v)
{
    return ToFloat(Round(v));
}

KELMORA_INLINE HsvBytes ToHsvBytes(F32 b, F32 g, F32 r)
{
    const F32 zero = {};
    const F32 most = Most(Most(b, g), r);
    const F32 range = most - Least(Least(b, g), r);
    const F32 safeRange = range == zero ? zero + 1.0f : range;
    const F32 safeMost = most == zero ? zero + 1.0f : most;
    // In units of the range, from blue on: two to green, two more to red.
    const F32 fromGreen = most == g ? r - b + 2.0f * range : b - g + 4.0f * range;
    const F32 turn = most == b ? g - r : fromGreen;
    const F32 forward = turn < zero ? turn + 6.0f * range : turn;
    return {Nearest(85.0f * forward / (2.0f * safeRange)), Nearest(255.0f * range / safeMost), most};
}

/// The colours, which in the pixels of layout P begin at the bits P::b, P::g and P::r; the fourth byte is 0.
template <class P>
KELMORA_INLINE U32 FromHsvBytes(const HsvBytes& hsv)
{
    const F32 zero = {};
    // In 85ths of a sixth of a turn; the last sixth counts from below blue.
    const F32 twice = hsv.hue + hsv.hue;
    const F32 turn = hsv.hue > zero + 212.5f ? twice - 510.0f : twice;
    const auto aboveBlue = turn >= zero + 85.0f;
    const auto aboveGreen = turn >= zero + 255.0f;
    const F32 centre = aboveGreen ? zero + 340.0f : aboveBlue ? zero + 170.0f : zero;
    const F32 offset = turn - centre;
    const auto before = offset < zero;
    const F32 distance = before ? -offset : offset;

    const F32 unsaturated = 255.0f - hsv.saturation;
    // No quotient lies near enough to a half for a reciprocal to be wrong.
    const F32 low = Nearest(hsv.value * unsaturated * (1.0f / 255.0f));
    const F32 middle =
        Nearest(hsv.value * (85.0f * unsaturated + distance * hsv.saturation) * (1.0f / 21675.0f));

    // The channels that follow the strongest one and come before it.
    const F32 next = before ? low : middle;
    const F32 last = before ? middle : low;
    const F32 b = aboveGreen ? next : aboveBlue ? last : hsv.value;
    const F32 g = aboveGreen ? last : aboveBlue ? hsv.value : next;
    const F32 r = aboveGreen ? hsv.value : aboveBlue ? next : last;
    return (U32)Truncate(b) << P::b | (U32)Truncate(g) << P::g | (U32)Truncate(r) << P::r;
}

} // namespace kelmora::KELMORA_VARIANT

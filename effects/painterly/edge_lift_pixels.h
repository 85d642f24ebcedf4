// The edge step on vectors of pixels, for sources that are compiled once per instruction set: see
// image/primitives/detail/simd.h for what that forbids.
#pragma once

#include "effects/common/luma_pixels.h"

namespace kelmora::KELMORA_VARIANT {

/// What becomes of alpha.
enum class LiftedAlpha {
    Kept,   ///< it is the picture's
    Lifted, ///< it goes with the colours, and is no part of the luminance
};

// --- bytes --------------------------------------------------------------------------------------------

struct LiftBgra : BgraWords {
    static constexpr int colourShift = 0; ///< of the three bytes that are colours
};

struct LiftArgb : ArgbWords {
    static constexpr int colourShift = 8;
};

/// `share`: PairWeights(256ths of the blur's luminance, 0).
template <class P, LiftedAlpha alpha>
KELMORA_INLINE U32 LiftPixels(U32 picture, U32 blurred, I16 share)
{
    const I32 luma = Luma<P>(picture);
    const I32 threshold = MulAddPairs((I16)Luma<P>(blurred), share) >> 8;
    const U32 lifts = (U32)MaskGreater(threshold, luma);

    const U32 rise = (U32)(threshold - luma) & lifts; // of one colour, 0 to 244
    const U32 pair = rise | rise << 8;
    if constexpr (alpha == LiftedAlpha::Lifted) {
        const U32 lifted = (U32)AddSaturated((U8)picture, (U8)(pair | pair << 16));
        const U32 darker = (U32)Min((U8)picture, (U8)blurred);
        return (lifted & lifts) | (darker & ~lifts);
    } else {
        const U32 lifted = (U32)AddSaturated((U8)picture, (U8)((pair | rise << 16) << P::colourShift));
        // All ones in alpha let the picture's alpha win the minimum.
        const U32 darker = (U32)Min((U8)picture, (U8)(blurred | P::alphaMask));
        return (lifted & lifts) | (darker & ~lifts);
    }
}

// --- floats -------------------------------------------------------------------------------------------

/// kPixels pixels as planes, into `blurred`.
template <class P, LiftedAlpha alpha>
KELMORA_INLINE void LiftPlanes(const F32 (&picture)[4], F32 (&blurred)[4], F32 share)
{
    const F32 luma = Luma(picture[P::r], picture[P::g], picture[P::b]);
    const F32 threshold = Luma(blurred[P::r], blurred[P::g], blurred[P::b]) * share;
    const F32 rise = threshold - luma;
    for (int c = 0; c < 4; ++c) {
        const F32 darker = picture[c] < blurred[c] ? picture[c] : blurred[c];
        if (alpha == LiftedAlpha::Kept && c == P::a)
            blurred[c] = picture[c];
        else
            blurred[c] = threshold <= luma ? darker : picture[c] + rise;
    }
}

} // namespace kelmora::KELMORA_VARIANT

// The edge step on vectors of pixels, for sources that are compiled once per instruction set: see
// image/primitives/detail/simd.h for what that forbids.
#pragma once

#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {

/// What becomes of alpha.
enum class LiftedAlpha {
    Kept,   ///< it is the picture's
    Lifted, ///< it goes with the colours, and is no part of the luminance
};

// --- bytes --------------------------------------------------------------------------------------------

/// A pixel as a little-endian word: which of its byte pairs weigh what, and where alpha stands.
struct LiftBgra {
    static constexpr int evenLow = 30, evenHigh = 76; ///< blue, red
    static constexpr int oddLow = 149, oddHigh = 0;   ///< green, alpha
    static constexpr uint32_t alphaMask = 0xFF000000;
    static constexpr int colourShift = 0;
};

struct LiftArgb {
    static constexpr int evenLow = 0, evenHigh = 149; ///< alpha, green
    static constexpr int oddLow = 76, oddHigh = 30;   ///< red, blue
    static constexpr uint32_t alphaMask = 0x000000FF;
    static constexpr int colourShift = 8;
};

KELMORA_INLINE I16 LiftWeights(int low, int high)
{
    return (I16)(I32{} + (low | high << 16));
}

template <class P>
KELMORA_INLINE I32 LiftLuma(U32 pixels)
{
    const I16 even = (I16)(pixels & 0x00FF00FFu);
    const I16 odd = (I16)((pixels >> 8) & 0x00FF00FFu);
    return (MulAddPairs(even, LiftWeights(P::evenLow, P::evenHigh))
            + MulAddPairs(odd, LiftWeights(P::oddLow, P::oddHigh)))
        >> 8;
}

/// `share`: LiftWeights(256ths of the blur's luminance, 0).
template <class P, LiftedAlpha alpha>
KELMORA_INLINE U32 LiftPixels(U32 picture, U32 blurred, I16 share)
{
    const I32 luma = LiftLuma<P>(picture);
    const I32 threshold = MulAddPairs((I16)LiftLuma<P>(blurred), share) >> 8;
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

struct LiftBgraPlanes {
    static constexpr int b = 0, g = 1, r = 2, a = 3;
};

struct LiftArgbPlanes {
    static constexpr int a = 0, r = 1, g = 2, b = 3;
};

/// Summed in double and rounded once.
KELMORA_INLINE F32 LiftLuma(F32 r, F32 g, F32 b)
{
    constexpr double red = static_cast<double>(0.298f);
    constexpr double green = static_cast<double>(0.586f);
    constexpr double blue = static_cast<double>(0.113f);
    const WideFloats wr = Widen(r), wg = Widen(g), wb = Widen(b);
    return Narrow(
        {wr.low * red + wg.low * green + wb.low * blue, wr.high * red + wg.high * green + wb.high * blue});
}

/// kPixels pixels as planes, into `blurred`.
template <class P, LiftedAlpha alpha>
KELMORA_INLINE void LiftPlanes(const F32 (&picture)[4], F32 (&blurred)[4], F32 share)
{
    const F32 luma = LiftLuma(picture[P::r], picture[P::g], picture[P::b]);
    const F32 threshold = LiftLuma(blurred[P::r], blurred[P::g], blurred[P::b]) * share;
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

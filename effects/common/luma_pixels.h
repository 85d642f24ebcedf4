// Channel layouts and luminance of vectors of pixels, for sources that are compiled once per instruction set: see
// image/primitives/detail/simd.h for what that forbids.
#pragma once

#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {

// --- bytes --------------------------------------------------------------------------------------------

/// A pixel as a little-endian word: which of its byte pairs weigh what, and where alpha stands.
struct BgraWords {
    static constexpr int evenLow = 30, evenHigh = 76; ///< blue, red
    static constexpr int oddLow = 149, oddHigh = 0;   ///< green, alpha
    static constexpr uint32_t alphaMask = 0xFF000000;
};

struct ArgbWords {
    static constexpr int evenLow = 0, evenHigh = 149; ///< alpha, green
    static constexpr int oddLow = 76, oddHigh = 30;   ///< red, blue
    static constexpr uint32_t alphaMask = 0x000000FF;
};

/// The weights of every pair of 16-bit words.
KELMORA_INLINE I16 PairWeights(int low, int high)
{
    return (I16)(I32{} + (low | high << 16));
}

/// (76 red + 149 green + 30 blue) / 256 toward zero: 0 to 254.
template <class P>
KELMORA_INLINE I32 Luma(U32 pixels)
{
    const I16 even = (I16)(pixels & 0x00FF00FFu);
    const I16 odd = (I16)((pixels >> 8) & 0x00FF00FFu);
    return (MulAddPairs(even, PairWeights(P::evenLow, P::evenHigh))
            + MulAddPairs(odd, PairWeights(P::oddLow, P::oddHigh)))
        >> 8;
}

// --- floats -------------------------------------------------------------------------------------------

/// Which plane holds what, once the channels are split.
struct BgraPlanes {
    static constexpr int b = 0, g = 1, r = 2, a = 3;
};

struct ArgbPlanes {
    static constexpr int a = 0, r = 1, g = 2, b = 3;
};

/// Summed in double and rounded once, as pictures take it pixel by pixel. Means of many pixels are of sums in single
/// precision: see FaceKernels.
KELMORA_INLINE F32 Luma(F32 r, F32 g, F32 b)
{
    constexpr double red = static_cast<double>(0.298f);
    constexpr double green = static_cast<double>(0.586f);
    constexpr double blue = static_cast<double>(0.113f);
    const WideFloats wr = Widen(r), wg = Widen(g), wb = Widen(b);
    return Narrow(
        {wr.low * red + wg.low * green + wb.low * blue, wr.high * red + wg.high * green + wb.high * blue});
}

} // namespace kelmora::KELMORA_VARIANT

// The edge step's rows, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "effects/painterly/edge_lift_kernels.h"
#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

// --- bytes --------------------------------------------------------------------------------------------

/// A pixel as a little-endian word: which of its byte pairs weigh what, and where alpha stands.
struct Bgra {
    static constexpr int evenLow = 30, evenHigh = 76; ///< blue, red
    static constexpr int oddLow = 149, oddHigh = 0;   ///< green, alpha
    static constexpr uint32_t alphaMask = 0xFF000000;
    static constexpr int colourShift = 0;
};

struct Argb {
    static constexpr int evenLow = 0, evenHigh = 149; ///< alpha, green
    static constexpr int oddLow = 76, oddHigh = 30;   ///< red, blue
    static constexpr uint32_t alphaMask = 0x000000FF;
    static constexpr int colourShift = 8;
};

KELMORA_INLINE I16 Weights(int low, int high)
{
    return (I16)(I32{} + (low | high << 16));
}

template <class P>
KELMORA_INLINE I32 Luma(U32 pixels)
{
    const I16 even = (I16)(pixels & 0x00FF00FFu);
    const I16 odd = (I16)((pixels >> 8) & 0x00FF00FFu);
    return (MulAddPairs(even, Weights(P::evenLow, P::evenHigh))
            + MulAddPairs(odd, Weights(P::oddLow, P::oddHigh)))
        >> 8;
}

template <class P>
KELMORA_INLINE U32 LiftPixels(U32 picture, U32 blurred, I16 share)
{
    const I32 luma = Luma<P>(picture);
    const I32 threshold = MulAddPairs((I16)Luma<P>(blurred), share) >> 8;
    const U32 lifts = (U32)MaskGreater(threshold, luma);

    const U32 rise = (U32)(threshold - luma) & lifts; // of one colour, 0 to 244
    const U32 rises = (rise | rise << 8 | rise << 16) << P::colourShift;
    const U32 lifted = (U32)AddSaturated((U8)picture, (U8)rises);
    // All ones in alpha let the picture's alpha win the minimum.
    const U32 darker = (U32)Min((U8)picture, (U8)(blurred | P::alphaMask));
    return (lifted & lifts) | (darker & ~lifts);
}

template <class P>
void LiftBytes(const void* picture, const void* blurred, void* result, int width, float share)
{
    const I16 shares = Weights(static_cast<int>(share), 0);
    const auto* p = static_cast<const uint8_t*>(picture);
    const auto* q = static_cast<const uint8_t*>(blurred);
    auto* out = static_cast<uint8_t*>(result);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 4;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(out + at, LiftPixels<P>(Load<U32>(p + at), Load<U32>(q + at), shares));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(out + at, LiftPixels<P>(LoadPart<U32>(p + at, rest), LoadPart<U32>(q + at, rest), shares),
                  rest);
}

// --- floats -------------------------------------------------------------------------------------------

struct BgraPlanes {
    static constexpr int b = 0, g = 1, r = 2, a = 3;
};

struct ArgbPlanes {
    static constexpr int a = 0, r = 1, g = 2, b = 3;
};

/// Summed in double and rounded once.
KELMORA_INLINE F32 Luma(F32 r, F32 g, F32 b)
{
    constexpr double red = static_cast<double>(0.298f);
    constexpr double green = static_cast<double>(0.586f);
    constexpr double blue = static_cast<double>(0.113f);
    const WideFloats wr = Widen(r), wg = Widen(g), wb = Widen(b);
    return Narrow(
        {wr.low * red + wg.low * green + wb.low * blue, wr.high * red + wg.high * green + wb.high * blue});
}

KELMORA_INLINE F32 Darker(F32 a, F32 b)
{
    return a < b ? a : b;
}

/// kPixels pixels: four vectors of interleaved channels.
template <class P>
KELMORA_INLINE void LiftPixels(F32 (&picture)[4], F32 (&blurred)[4], F32 share)
{
    SplitChannels(picture);
    SplitChannels(blurred);
    const F32 luma = Luma(picture[P::r], picture[P::g], picture[P::b]);
    const F32 threshold = Luma(blurred[P::r], blurred[P::g], blurred[P::b]) * share;
    const F32 rise = threshold - luma;
    constexpr int colours[3] = {P::b, P::g, P::r};
    for (const int c : colours)
        blurred[c] = threshold <= luma ? Darker(picture[c], blurred[c]) : picture[c] + rise;
    blurred[P::a] = picture[P::a];
    SplitChannels(blurred); // the transposition undoes itself
}

template <class P>
void LiftFloats(const void* picture, const void* blurred, void* result, int width, float share)
{
    const F32 shares = F32{} + share;
    const auto* p = static_cast<const uint8_t*>(picture);
    const auto* q = static_cast<const uint8_t*>(blurred);
    auto* out = static_cast<uint8_t*>(result);
    constexpr int strip = 4 * kVectorBytes;
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 16;
    const bool streams = CanStream(out, bytes);
    ptrdiff_t at = 0;
    for (; at + strip <= bytes; at += strip) {
        F32 a[4], b[4];
        for (int i = 0; i < 4; ++i) {
            a[i] = Load<F32>(p + at + i * kVectorBytes);
            b[i] = Load<F32>(q + at + i * kVectorBytes);
        }
        LiftPixels<P>(a, b, shares);
        for (int i = 0; i < 4; ++i)
            streams ? Stream(out + at + i * kVectorBytes, b[i]) : Store(out + at + i * kVectorBytes, b[i]);
    }
    if (streams)
        EndStream();
    if (at < bytes) {
        // A copy of its own: vectors whose address is taken would live in memory in the loop above as well.
        const auto rest = static_cast<size_t>(bytes - at);
        F32 a[4] = {}, b[4] = {};
        __builtin_memcpy(a, p + at, rest);
        __builtin_memcpy(b, q + at, rest);
        LiftPixels<P>(a, b, shares);
        __builtin_memcpy(out + at, b, rest);
    }
}

} // namespace

extern const EdgeLiftKernels kEdgeLiftKernels;
const EdgeLiftKernels kEdgeLiftKernels = {LiftBytes<Bgra>, LiftBytes<Argb>, LiftFloats<BgraPlanes>,
                                          LiftFloats<ArgbPlanes>};

} // namespace kelmora::KELMORA_VARIANT

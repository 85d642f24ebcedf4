// The melt's rows, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "effects/painterly/color_melt_kernels.h"
#include "effects/painterly/edge_lift_pixels.h"
#include "image/primitives/detail/hsv_bytes.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

// --- bytes --------------------------------------------------------------------------------------------

/// With the bits that a colour begins at.
struct Bgra : LiftBgra {
    static constexpr int b = 0, g = 8, r = 16;
};

struct Argb : LiftArgb {
    static constexpr int r = 8, g = 16, b = 24;
};

KELMORA_INLINE F32 OnLine(F32 x, const ByteLine& line)
{
    const F32 y = x * line.gain + line.offset;
    return ToFloat(Truncate(Least(Most(y, F32{}), F32{} + 255.0f)));
}

KELMORA_INLINE F32 LookUp(F32 x, const uint8_t* table)
{
    const I32 at = Truncate(x);
    I32 found;
    for (int i = 0; i < kPixels; ++i)
        found[i] = table[at[i]];
    return ToFloat(found);
}

template <class P, bool straight>
KELMORA_INLINE U32 DriveColours(U32 pixels, const MeltLook& look)
{
    HsvBytes hsv = ToHsvBytes(Channel(pixels, P::b), Channel(pixels, P::g), Channel(pixels, P::r));
    if constexpr (straight) {
        hsv.saturation = OnLine(hsv.saturation, look.saturationLine);
        hsv.value = OnLine(hsv.value, look.valueLine);
    } else {
        hsv.saturation = LookUp(hsv.saturation, look.saturations);
        hsv.value = LookUp(hsv.value, look.values);
    }
    return FromHsvBytes<P>(hsv) | (pixels & P::alphaMask);
}

/// (a * weightA + b * weightB) / 255, toward zero, at most 255.
KELMORA_INLINE U32 Weigh(U32 a, U32 b, U16 weightA, U16 weightB)
{
    // v * 0x8081 >> 23 is v / 255 for all words.
    const U16 factor = U16{} + static_cast<uint16_t>(0x8081);
    const U16 low = (U16)WidenLow((U8)a) * weightA + (U16)WidenLow((U8)b) * weightB;
    const U16 high = (U16)WidenHigh((U8)a) * weightA + (U16)WidenHigh((U8)b) * weightB;
    return (U32)Pack((I16)(MulHigh(low, factor) >> 7), (I16)(MulHigh(high, factor) >> 7));
}

template <class P, bool straight>
KELMORA_INLINE U32 MeltPixels(U32 mix, U32 blurred, const MeltLook& look)
{
    const U32 driven = DriveColours<P, straight>(blurred, look);
    const U32 melted = LiftPixels<P, LiftedAlpha::Lifted>(mix, driven, PairWeights(look.share, 0));
    return Weigh(mix, melted, U16{} + static_cast<uint16_t>(look.mixWeight),
                 U16{} + static_cast<uint16_t>(look.meltWeight));
}

template <class P, bool straight>
void MeltBytes(const uint8_t* mix, const uint8_t* blurred, uint8_t* out, int width, const MeltLook& look)
{
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 4;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(out + at, MeltPixels<P, straight>(Load<U32>(mix + at), Load<U32>(blurred + at), look));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(
            out + at,
            MeltPixels<P, straight>(LoadPart<U32>(mix + at, rest), LoadPart<U32>(blurred + at, rest), look),
            rest);
}

template <class P>
void MeltAnyBytes(const void* mix, const void* blurred, void* result, int width, const MeltLook& look)
{
    (look.straight ? MeltBytes<P, true> : MeltBytes<P, false>)(static_cast<const uint8_t*>(mix),
                                                               static_cast<const uint8_t*>(blurred),
                                                               static_cast<uint8_t*>(result), width, look);
}

// --- floats -------------------------------------------------------------------------------------------

template <class P>
KELMORA_INLINE void DriveColours(F32 (&p)[4], const MeltLook& look)
{
    const F32 zero = {}, one = zero + 1.0f;
    const F32 b = p[P::b], g = p[P::g], r = p[P::r];
    const F32 most = Most(Most(b, g), r);
    const F32 range = most - Least(Least(b, g), r);
    const auto coloured = (most > zero) & (range > zero);
    const F32 safeRange = coloured ? range : one;

    const F32 way = (most == b ? g - r : most == g ? r - b : b - g) / safeRange;
    const F32 turn = most == b ? way : way + (most == g ? zero + 2.0f : zero + 4.0f);
    // The last sixth counts from below blue: negative turns as they are.
    const F32 hue = coloured ? (turn >= zero + 5.0f ? turn - 6.0f : turn) : zero;

    const F32 saturation =
        Least((coloured ? range / (coloured ? most : one) : zero) * look.saturationGain, one);
    const F32 value = (look.target - most) * look.amount + most;

    const F32 low = (1.0f - saturation) * value;
    const F32 span = value - low;
    const auto aboveBlue = hue >= one;
    const auto aboveGreen = hue >= zero + 3.0f;
    const F32 t = (hue - (aboveGreen ? zero + 4.0f : aboveBlue ? zero + 2.0f : zero)) * span;
    const auto before = t < zero;
    const F32 middle = low + (before ? -t : t);
    const F32 next = before ? low : middle;
    const F32 last = before ? middle : low;
    const auto grey = saturation <= zero;
    p[P::b] = grey ? value : aboveGreen ? next : aboveBlue ? last : value;
    p[P::g] = grey ? value : aboveGreen ? last : aboveBlue ? value : next;
    p[P::r] = grey ? value : aboveGreen ? value : aboveBlue ? next : last;
}

/// In double, rounded once.
KELMORA_INLINE F32 Weigh(F32 a, F32 b, const MeltLook& look)
{
    const WideFloats wideA = Widen(a), wideB = Widen(b);
    const double partA = static_cast<double>(look.mixPart), partB = static_cast<double>(look.meltPart);
    const F32 sum = Narrow({wideA.low * partA + wideB.low * partB, wideA.high * partA + wideB.high * partB});
    return look.capped ? (sum > F32{} + 1.0f ? F32{} + 1.0f : sum) : sum;
}

/// kPixels pixels: four vectors of interleaved channels; the result in `blurred`.
template <class P>
KELMORA_INLINE void MeltPixels(F32 (&mix)[4], F32 (&blurred)[4], const MeltLook& look)
{
    SplitChannels(mix);
    SplitChannels(blurred);
    DriveColours<P>(blurred, look);
    LiftPlanes<P, LiftedAlpha::Lifted>(mix, blurred, F32{} + look.fogShare);
    for (int c = 0; c < 4; ++c)
        blurred[c] = Weigh(mix[c], blurred[c], look);
    SplitChannels(blurred);
}

template <class P>
void MeltFloats(const void* mix, const void* blurred, void* result, int width, const MeltLook& look)
{
    const auto* p = static_cast<const uint8_t*>(mix);
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
        MeltPixels<P>(a, b, look);
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
        MeltPixels<P>(a, b, look);
        __builtin_memcpy(out + at, b, rest);
    }
}

} // namespace

extern const MeltKernels kMeltKernels;
const MeltKernels kMeltKernels = {MeltAnyBytes<Bgra>, MeltAnyBytes<Argb>, MeltFloats<BgraPlanes>,
                                  MeltFloats<ArgbPlanes>};

} // namespace kelmora::KELMORA_VARIANT

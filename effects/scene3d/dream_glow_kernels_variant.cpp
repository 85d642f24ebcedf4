// The rows of both stages of the dream glow, compiled once per instruction set: see image/primitives/detail/simd.h
// for what that forbids.

#include "effects/common/luma_pixels.h"
#include "effects/scene3d/dream_glow_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

typedef uint64_t U64 __attribute__((vector_size(kVectorBytes), may_alias));

// --- layouts ------------------------------------------------------------------------------------------

struct GlowBgra : BgraWords {
    static constexpr int blueShift = 0, greenShift = 8, redShift = 16, alphaShift = 24;
};

struct GlowArgb : ArgbWords {
    static constexpr int alphaShift = 0, redShift = 8, greenShift = 16, blueShift = 24;
};

KELMORA_INLINE uint32_t BlueOf(uint32_t colour)
{
    return colour >> 16 & 255;
}

KELMORA_INLINE uint32_t GreenOf(uint32_t colour)
{
    return colour >> 8 & 255;
}

KELMORA_INLINE uint32_t RedOf(uint32_t colour)
{
    return colour & 255;
}

/// The second for what is no number.
KELMORA_INLINE F32 Least(F32 a, F32 b)
{
    return a < b ? a : b;
}

// --- haze, bytes --------------------------------------------------------------------------------------

/// The glow colour as the pixels have it, and 255 in alpha.
template <class P>
KELMORA_INLINE uint32_t GlowPixel(uint32_t colour)
{
    return BlueOf(colour) << P::blueShift | GreenOf(colour) << P::greenShift | RedOf(colour) << P::redShift
        | P::alphaMask;
}

struct ByteFog {
    I16 gain;
    U32 colour;    ///< 255 in alpha
    U16 even, odd; ///< the colour's bytes as words times 16, 0 for alpha
};

template <class P>
KELMORA_INLINE ByteFog MakeByteFog(const GlowFog& fog)
{
    const uint32_t pixel = GlowPixel<P>(fog.colour);
    const uint32_t colours = pixel & ~P::alphaMask;
    return {PairWeights(fog.byteGain, 0), U32{} + pixel, (U16)(U32{} + ((colours & 0x00FF00FFu) << 4)),
            (U16)(U32{} + ((colours >> 8 & 0x00FF00FFu) << 4))};
}

/// Of numbers that a word holds.
KELMORA_INLINE I32 LeastWord(I32 a, int b)
{
    const I16 words = (I16)a, bounds = (I16)(I32{} + b);
    return (I32)(words < bounds ? words : bounds);
}

/// 0 for what is below.
KELMORA_INLINE I32 Positive(I32 words)
{
    const I16 v = (I16)words;
    return (I32)(v > I16{} ? v : I16{});
}

// Kept: the weights of brightness sum to 255 of 256, so white has the level 254.
template <class P>
KELMORA_INLINE U32 FogPixels(U32 picture, U32 blurred, const ByteFog& fog)
{
    const I32 glow = MulAddPairs((I16)Luma<P>(blurred), fog.gain) >> 8; // fits a word
    const I32 gap = glow - Luma<P>(picture);
    const I32 lift = LeastWord(Positive(gap), 256); // that lifts any colour to the glow's

    const U16 pair = (U16)(lift << 4 | lift << 20);
    const U32 rise = (U32)MulHigh(pair, fog.even) | (U32)MulHigh(pair, fog.odd) << 8;
    const U32 lifted = (U32)Min(AddSaturated((U8)picture, (U8)rise), (U8)fog.colour);

    const U32 opaque = (U32)LeastWord(glow, 255) << P::alphaShift;
    const U32 alpha = ~(U32)Min((U8)~picture, (U8)~opaque); // the greater one
    return (lifted & ~P::alphaMask) | (alpha & P::alphaMask);
}

template <class P>
void FogBytes(const void* picture, const void* blurred, void* result, int width, const GlowFog& glow)
{
    const ByteFog fog = MakeByteFog<P>(glow);
    const auto* p = static_cast<const uint8_t*>(picture);
    const auto* q = static_cast<const uint8_t*>(blurred);
    auto* out = static_cast<uint8_t*>(result);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 4;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(out + at, FogPixels<P>(Load<U32>(p + at), Load<U32>(q + at), fog));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(out + at, FogPixels<P>(LoadPart<U32>(p + at, rest), LoadPart<U32>(q + at, rest), fog),
                  rest);
}

// --- haze, floats -------------------------------------------------------------------------------------

struct FloatFog {
    F32 gain;
    F32 blue, green, red;
};

KELMORA_INLINE F32 FogColour(F32 colour, F32 lift, F32 top)
{
    return Least(colour + lift * top, top);
}

/// kPixels pixels as planes, into `blurred`.
template <class P>
KELMORA_INLINE void FogPlanes(const F32 (&picture)[4], F32 (&blurred)[4], const FloatFog& fog)
{
    // Kept: the blur's first channel gives way to the picture's, so with alpha last the haze sees sharp blue.
    blurred[0] = picture[0];
    const F32 level = Luma(picture[P::r], picture[P::g], picture[P::b]);
    const F32 glow = Luma(blurred[P::r], blurred[P::g], blurred[P::b]) * fog.gain;
    const F32 lift = level >= glow ? F32{} : glow - level;
    blurred[P::b] = FogColour(picture[P::b], lift, fog.blue);
    blurred[P::g] = FogColour(picture[P::g], lift, fog.green);
    blurred[P::r] = FogColour(picture[P::r], lift, fog.red);
    blurred[P::a] = Least(glow > picture[P::a] ? glow : picture[P::a], F32{} + 1.0f);
}

template <class P>
KELMORA_INLINE void FogInterleaved(F32 (&picture)[4], F32 (&blurred)[4], const FloatFog& fog)
{
    SplitChannels(picture);
    SplitChannels(blurred);
    FogPlanes<P>(picture, blurred, fog);
    SplitChannels(blurred); // the transposition undoes itself
}

KELMORA_INLINE F32 GlowLevel(uint32_t level)
{
    return F32{} + static_cast<float>(level / 255.0);
}

template <class P>
void FogFloats(const void* picture, const void* blurred, void* result, int width, const GlowFog& glow)
{
    const FloatFog fog = {F32{} + glow.floatGain, GlowLevel(BlueOf(glow.colour)),
                          GlowLevel(GreenOf(glow.colour)), GlowLevel(RedOf(glow.colour))};
    const auto* p = static_cast<const uint8_t*>(picture);
    const auto* q = static_cast<const uint8_t*>(blurred);
    auto* out = static_cast<uint8_t*>(result);
    constexpr int strip = 4 * kVectorBytes;
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 16;
    ptrdiff_t at = 0;
    for (; at + strip <= bytes; at += strip) {
        F32 a[4], b[4];
        for (int i = 0; i < 4; ++i) {
            a[i] = Load<F32>(p + at + i * kVectorBytes);
            b[i] = Load<F32>(q + at + i * kVectorBytes);
        }
        FogInterleaved<P>(a, b, fog);
        for (int i = 0; i < 4; ++i)
            Store(out + at + i * kVectorBytes, b[i]);
    }
    if (at < bytes) {
        // A copy of its own: vectors whose address is taken would live in memory in the loop above as well.
        const auto rest = static_cast<size_t>(bytes - at);
        F32 a[4] = {}, b[4] = {};
        __builtin_memcpy(a, p + at, rest);
        __builtin_memcpy(b, q + at, rest);
        FogInterleaved<P>(a, b, fog);
        __builtin_memcpy(out + at, b, rest);
    }
}

// --- wave, bytes --------------------------------------------------------------------------------------

// In double: colours in units of 1 / 2^21, so that 256 levels fit the integers that doubles round to.
constexpr int kUnitBits = 21;
constexpr double kUnit = 1 << kUnitBits;

struct ByteShine {
    const double* waves;
    F64 keep, blue, green, red;
};

/// What stands in the table for each element.
KELMORA_INLINE Doubles LookUp(const double* table, I32 index)
{
    Doubles v;
    for (int i = 0; i < kPixels / 2; ++i) {
        const int at = i / 2 * 4 + i % 2; // see Doubles
        v.low[i] = table[index[at]];
        v.high[i] = table[index[at + 2]];
    }
    return v;
}

KELMORA_INLINE F64 ShineColour(F64 level, F64 wave, F64 keep, F64 colour)
{
    const F64 zero = {}, top = zero + 255.0 * kUnit;
    F64 v = colour * wave + level * keep;
    v = v > zero ? v : zero; // and what is no number
    v = v < top ? v : top;
    return v - 0.5; // the half that rounding to nearest adds
}

KELMORA_INLINE U32 ShineChannel(I32 levels, const Doubles& wave, F64 keep, F64 colour)
{
    const Doubles v = ToDouble(levels);
    const I32 units = Round(
        Doubles{ShineColour(v.low, wave.low, keep, colour), ShineColour(v.high, wave.high, keep, colour)});
    return (U32)(units >> kUnitBits);
}

template <class P>
KELMORA_INLINE U32 ShinePixels(U32 picture, const ByteShine& shine)
{
    const I32 blue = (I32)(picture >> P::blueShift & 255u);
    const I32 green = (I32)(picture >> P::greenShift & 255u);
    const I32 red = (I32)(picture >> P::redShift & 255u);
    const Doubles wave = LookUp(shine.waves, blue + green + red);
    return (picture & P::alphaMask) | ShineChannel(blue, wave, shine.keep, shine.blue) << P::blueShift
        | ShineChannel(green, wave, shine.keep, shine.green) << P::greenShift
        | ShineChannel(red, wave, shine.keep, shine.red) << P::redShift;
}

template <class P>
void ShineBytesInDouble(const uint8_t* picture, uint8_t* result, ptrdiff_t bytes, const GlowShine& glow)
{
    const ByteShine shine = {glow.waves, F64{} + glow.keep * kUnit, F64{} + glow.blue * kUnit,
                             F64{} + glow.green * kUnit, F64{} + glow.red * kUnit};
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(result + at, ShinePixels<P>(Load<U32>(picture + at), shine));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(result + at, ShinePixels<P>(LoadPart<U32>(picture + at, rest), shine), rest);
}

/// One colour of every pixel, where the pixels have it.
template <int shift>
KELMORA_INLINE U32 StepChannel(U32 pixels, F32 step, F32 keep)
{
    const F32 v = ToFloat((I32)(pixels >> shift & 255u)) * keep + step;
    return (U32)Truncate(Least(v, F32{} + 255.0f)) << shift;
}

constexpr int kChunk = 64;

/// kChunk pixels. Table entries are gathered through memory, and a whole chunk at a time: a vector's load that
/// follows the stores of its elements too closely would wait for them.
template <class P>
KELMORA_INLINE void StepChunk(const uint8_t* picture, uint8_t* result, const float* table, F32 keep)
{
    alignas(64) int32_t sums[kChunk];
    alignas(64) float steps[kChunk];
    for (int i = 0; i < kChunk; i += kPixels) {
        const U32 pixels = Load<U32>(picture + 4 * i);
        Store(sums + i,
              (pixels >> P::blueShift & 255u) + (pixels >> P::greenShift & 255u)
                  + (pixels >> P::redShift & 255u));
    }
    for (int i = 0; i < kChunk; ++i)
        steps[i] = table[sums[i]];
    for (int i = 0; i < kChunk; i += kPixels) {
        const U32 pixels = Load<U32>(picture + 4 * i);
        const F32 step = Load<F32>(steps + i);
        Store(result + 4 * i,
              (pixels & P::alphaMask) | StepChannel<P::blueShift>(pixels, step, keep)
                  | StepChannel<P::greenShift>(pixels, step, keep)
                  | StepChannel<P::redShift>(pixels, step, keep));
    }
}

template <class P>
void ShineBytesInSteps(const uint8_t* picture, uint8_t* result, ptrdiff_t bytes, const GlowShine& glow)
{
    const F32 keep = F32{} + static_cast<float>(glow.keep);
    constexpr int chunk = 4 * kChunk;
    ptrdiff_t at = 0;
    for (; at + chunk <= bytes; at += chunk)
        StepChunk<P>(picture + at, result + at, glow.steps, keep);
    if (at < bytes) {
        uint8_t last[chunk] = {};
        __builtin_memcpy(last, picture + at, static_cast<size_t>(bytes - at));
        StepChunk<P>(last, last, glow.steps, keep);
        __builtin_memcpy(result + at, last, static_cast<size_t>(bytes - at));
    }
}

template <class P>
void ShineBytes(const void* picture, void* result, int width, const GlowShine& glow)
{
    const auto shine = glow.steps ? ShineBytesInSteps<P> : ShineBytesInDouble<P>;
    shine(static_cast<const uint8_t*>(picture), static_cast<uint8_t*>(result),
          static_cast<ptrdiff_t>(width) * 4, glow);
}

// --- wave, floats -------------------------------------------------------------------------------------

/// The sine of an angle in radians. Right to 1e-7 for angles to 2^30; those beyond count as the nearest within.
/// Made of additions and multiplications in double alone: the same bits everywhere.
KELMORA_INLINE F64 Sine(F64 angle)
{
    constexpr double mostAngle = 1 << 30;
    constexpr double whole = 6755399441055744.0; // where one unit is the last bit: 1.5 * 2^52
    const F64 least = F64{} - mostAngle, most = F64{} + mostAngle;
    angle = angle > least ? angle : least;
    angle = angle < most ? angle : most;

    // Half turns: every second one turns the sign. pi in two parts, of which the first has 23 bits, so that
    // its products with as many half turns as there can be are exact.
    const F64 counted = angle * 0x1.45f306dc9c883p-2 + whole;
    const F64 halfTurns = counted - whole;
    const F64 x = (angle - halfTurns * 0x1.921fb4p+1) - halfTurns * 0x1.4442d18469899p-23;

    // The power series to the eleventh power, from -pi / 2 to pi / 2: within 6e-8.
    const F64 square = x * x;
    F64 series = F64{} - 1.0 / 39916800.0;
    series = series * square + 1.0 / 362880.0;
    series = series * square - 1.0 / 5040.0;
    series = series * square + 1.0 / 120.0;
    series = series * square - 1.0 / 6.0;
    series = series * square + 1.0;
    return (F64)((U64)(series * x) ^ (U64)counted << 63);
}

struct FloatShine {
    F64 amount, start, slope, sway, keep, blue, green, red;
};

KELMORA_INLINE F64 ShineFloat(F64 level, F64 wave, F64 keep, F64 colour)
{
    const F64 zero = {}, one = zero + 1.0;
    F64 v = colour * wave + level * keep;
    v = v > zero ? v : zero; // and what is no number
    return v < one ? v : one;
}

KELMORA_INLINE void ShineDoubles(F64& blue, F64& green, F64& red, const FloatShine& shine)
{
    const F64 light = (red + green + blue) * (1.0 / 3.0);
    const F64 wave = (Sine(shine.start + shine.slope * light) * shine.sway + 1.0) * 0.5 + light;
    const F64 w = shine.amount * wave;
    blue = ShineFloat(blue, w, shine.keep, shine.blue);
    green = ShineFloat(green, w, shine.keep, shine.green);
    red = ShineFloat(red, w, shine.keep, shine.red);
}

template <class P>
KELMORA_INLINE void ShineInterleaved(F32 (&picture)[4], const FloatShine& shine)
{
    SplitChannels(picture);
    WideFloats blue = Widen(picture[P::b]), green = Widen(picture[P::g]), red = Widen(picture[P::r]);
    ShineDoubles(blue.low, green.low, red.low, shine);
    ShineDoubles(blue.high, green.high, red.high, shine);
    picture[P::b] = Narrow(blue);
    picture[P::g] = Narrow(green);
    picture[P::r] = Narrow(red);
    SplitChannels(picture); // the transposition undoes itself
}

template <class P>
void ShineFloats(const void* picture, void* result, int width, const GlowShine& glow)
{
    const F64 zero = {};
    const FloatShine shine = {zero + glow.amount, zero + glow.start, zero + glow.slope, zero + glow.sway,
                              zero + glow.keep,   zero + glow.blue,  zero + glow.green, zero + glow.red};
    const auto* p = static_cast<const uint8_t*>(picture);
    auto* out = static_cast<uint8_t*>(result);
    constexpr int strip = 4 * kVectorBytes;
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 16;
    ptrdiff_t at = 0;
    for (; at + strip <= bytes; at += strip) {
        F32 a[4];
        for (int i = 0; i < 4; ++i)
            a[i] = Load<F32>(p + at + i * kVectorBytes);
        ShineInterleaved<P>(a, shine);
        for (int i = 0; i < 4; ++i)
            Store(out + at + i * kVectorBytes, a[i]);
    }
    if (at < bytes) {
        const auto rest = static_cast<size_t>(bytes - at);
        F32 a[4] = {}; // of its own, as in the haze
        __builtin_memcpy(a, p + at, rest);
        ShineInterleaved<P>(a, shine);
        __builtin_memcpy(out + at, a, rest);
    }
}

} // namespace

extern const DreamGlowKernels kDreamGlowKernels;
const DreamGlowKernels kDreamGlowKernels = {{FogBytes<GlowBgra>, ShineBytes<GlowBgra>},
                                            {FogBytes<GlowArgb>, ShineBytes<GlowArgb>},
                                            {FogFloats<BgraPlanes>, ShineFloats<BgraPlanes>},
                                            {FogFloats<ArgbPlanes>, ShineFloats<ArgbPlanes>}};

} // namespace kelmora::KELMORA_VARIANT

// Rows of floats, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/detail/byte_levels.h"
#include "image/primitives/detail/simd_bytes.h"
#include "image/primitives/detail/simd_strips.h"
#include "image/primitives/float_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

// --- values ---------------------------------------------------------------------------------------------

/// dst = map(src, dst), vector by vector.
template <class Map>
KELMORA_INLINE void MapInto(const void* src, void* dst, int values, Map map)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    ForVectors(
        static_cast<ptrdiff_t>(values) * 4,
        [=](ptrdiff_t at) { Store(to + at, map(Load<F32>(from + at), Load<F32>(to + at))); },
        [=](ptrdiff_t at, int count) {
            StorePart(to + at, map(LoadPart<F32>(from + at, count), LoadPart<F32>(to + at, count)), count);
        });
}

void Add(const void* src, void* dst, int values)
{
    MapInto(
        src, dst, values, [](F32 a, F32 b) __attribute__((always_inline)) { return a + b; });
}

void Mean(const void* src, void* dst, int values)
{
    MapInto(
        src, dst, values, [](F32 a, F32 b) __attribute__((always_inline)) { return (a + b) * 0.5f; });
}

void Clamp(void* values, int count)
{
    MapInto(
        values, values, count, [](F32 v, F32) __attribute__((always_inline)) { return ClampedLevel(v); });
}

// --- channels -------------------------------------------------------------------------------------------

/// Each 16 bytes' elements from last to first.
KELMORA_INLINE F32 ReversedFloats(F32 v)
{
#if defined(KELMORA_VEC)
    const KELMORA_VECF x = (KELMORA_VECF)v;
    return (F32)KELMORA_BY_WIDTH(_mm_shuffle_ps, _mm256_shuffle_ps, _mm512_shuffle_ps)(x, x, 0x1B);
#else
    return F32{v[3], v[2], v[1], v[0]};
#endif
}

void Reverse(const void* src, void* dst, int pixels)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    ForVectors(
        static_cast<ptrdiff_t>(pixels) * 16,
        [=](ptrdiff_t at) { Store(to + at, ReversedFloats(Load<F32>(from + at))); },
        [=](ptrdiff_t at, int count) {
            StorePart(to + at, ReversedFloats(LoadPart<F32>(from + at, count)), count);
        });
}

void ExtractChannel(const void* src, void* dst, int pixels)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    int x = 0;
    for (; x + kPixels < pixels; x += kPixels, from += 4 * kVectorBytes, to += kVectorBytes) {
        F32 v[4];
        for (int i = 0; i < 4; ++i)
            v[i] = Load<F32>(from + i * kVectorBytes);
        SplitChannels(v);
        Store(to, FromLaneOrder((U32)v[0]));
    }
    for (; x < pixels; ++x, from += 16, to += 4)
        Store(to, Load<uint32_t>(from));
}

// --- over -----------------------------------------------------------------------------------------------

/// Element `alpha` of every pixel in all four places.
template <int alpha>
KELMORA_INLINE WideFloats AlphaOf(F32 v)
{
    const WideFloats wide = Widen((F32)Spread<alpha>((I32)v));
    if constexpr (kPixels == 4)
        return {wide.low, wide.low}; // one pixel: half of the work
    return wide;
}

template <int alpha>
struct PremultipliedFloats {
    KELMORA_METHOD F32 Over(F32 first, F32 second) const
    {
        const WideFloats a = Widen(first), b = Widen(second), share = AlphaOf<alpha>(first);
        return Narrow({(1.0 - share.low) * b.low + a.low, (1.0 - share.high) * b.high + a.high});
    }
};

template <int alpha>
struct StraightFloats {
    U32 isAlpha = {};

    KELMORA_METHOD StraightFloats()
    {
        for (int i = alpha; i < kPixels; i += 4)
            isAlpha[i] = 0xFFFFFFFFu;
    }

    /// With 1 for alpha, whose own share is then that of a colour.
    KELMORA_METHOD WideFloats Colours(F32 v) const
    {
        const F32 ones = F32{} + 1.0f;
        return Widen((F32)(((U32)v & ~isAlpha) | ((U32)ones & isAlpha)));
    }

    KELMORA_METHOD F32 Over(F32 first, F32 second) const
    {
        const WideFloats a = Colours(first), b = Colours(second);
        const WideFloats share = AlphaOf<alpha>(first), below = AlphaOf<alpha>(second);
        return Narrow({a.low * share.low + (1.0 - share.low) * below.low * b.low,
                       a.high * share.high + (1.0 - share.high) * below.high * b.high});
    }
};

template <class Op>
void OverFloats(const OverRow& row)
{
    const auto* first = static_cast<const uint8_t*>(row.first);
    const auto* second = static_cast<const uint8_t*>(row.second);
    auto* dst = static_cast<uint8_t*>(row.dst);
    const Op op;
    ForVectors(
        static_cast<ptrdiff_t>(row.pixels) * 16,
        [=](ptrdiff_t at) { Store(dst + at, op.Over(Load<F32>(first + at), Load<F32>(second + at))); },
        [=](ptrdiff_t at, int count) {
            StorePart(dst + at, op.Over(LoadPart<F32>(first + at, count), LoadPart<F32>(second + at, count)),
                      count);
        });
}

// --- tint -----------------------------------------------------------------------------------------------

KELMORA_INLINE F64 LumaOf(F64 red, F64 green, F64 blue)
{
    const F64 luma = red * 0.298 + green * 0.586 + blue * 0.113;
    return luma > 1.0 ? F64{} + 1.0 : luma;
}

/// The places of the channels.
template <int b, int g, int r, int a>
void Tint(const FloatTintRow& row)
{
    const double red = row.red, green = row.green, blue = row.blue, alpha = row.alpha;
    ChangeStrips(
        row.src, row.dst, row.pixels, [=](F32(&v)[4]) __attribute__((always_inline)) {
            SplitChannels(v);
            const WideFloats reds = Widen(v[r]), greens = Widen(v[g]), blues = Widen(v[b]);
            const F64 low = LumaOf(reds.low, greens.low, blues.low);
            const F64 high = LumaOf(reds.high, greens.high, blues.high);
            v[r] = Narrow({low * red, high * red});
            v[g] = Narrow({low * green, high * green});
            v[b] = Narrow({low * blue, high * blue});
            v[a] = Narrow({low * alpha, high * alpha});
            SplitChannels(v); // the transposition undoes itself
        });
}

} // namespace

extern const FloatKernels kFloatKernels;
const FloatKernels kFloatKernels = {Add,
                                    Mean,
                                    Clamp,
                                    Reverse,
                                    ExtractChannel,
                                    OverFloats<StraightFloats<3>>,
                                    OverFloats<PremultipliedFloats<3>>,
                                    OverFloats<StraightFloats<0>>,
                                    OverFloats<PremultipliedFloats<0>>,
                                    Tint<0, 1, 2, 3>,
                                    Tint<3, 2, 1, 0>};

} // namespace kelmora::KELMORA_VARIANT

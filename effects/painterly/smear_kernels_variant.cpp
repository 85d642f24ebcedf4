// The rows of Smear's streaks, compiled once per instruction set: see image/primitives/detail/simd.h for what that
// forbids.

#include "effects/painterly/smear_kernels.h"
#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

/// LoadPart and StorePart, of rows that are often short.
template <class V>
KELMORA_INLINE V LoadRest(const uint8_t* from, int bytes)
{
#if defined(__AVX512BW__)
    return (V)_mm512_maskz_loadu_epi8((1ull << bytes) - 1, from);
#else
    return LoadPart<V>(from, bytes);
#endif
}

template <class V>
KELMORA_INLINE void StoreRest(uint8_t* to, V v, int bytes)
{
#if defined(__AVX512BW__)
    _mm512_mask_storeu_epi8(to, (1ull << bytes) - 1, (__m512i)v);
#else
    StorePart(to, v, bytes);
#endif
}

/// Calls mean(own, load) for whole vectors and for the rest, in the order that the row wants; load(from) is what stands
/// at an address or as far behind it as the vector's pixels stand behind the first.
template <class V, class Mean>
KELMORA_INLINE void MeanValues(const SmearRow& row, ptrdiff_t bytes, const Mean& mean)
{
    auto* const pixels = static_cast<uint8_t*>(row.pixels);
    const ptrdiff_t whole = bytes / kVectorBytes * kVectorBytes;
    const auto meanAt = [&](ptrdiff_t at) __attribute__((always_inline))
    {
        const auto load = [at](const uint8_t* from) __attribute__((always_inline))
        {
            return Load<V>(from + at);
        };
        Store(pixels + at, mean(load(pixels), load));
    };
    const auto meanOfRest = [&]() __attribute__((always_inline))
    {
        const int rest = static_cast<int>(bytes - whole);
        const auto load = [=](const uint8_t* from) __attribute__((always_inline))
        {
            return LoadRest<V>(from + whole, rest);
        };
        if (rest > 0)
            StoreRest(pixels + whole, mean(load(pixels), load), rest);
    };
    if (row.backward) {
        meanOfRest();
        for (ptrdiff_t at = whole - kVectorBytes; at >= 0; at -= kVectorBytes)
            meanAt(at);
    } else {
        for (ptrdiff_t at = 0; at < whole; at += kVectorBytes)
            meanAt(at);
        meanOfRest();
    }
}

/// Calls mean(own, here, next) for whole vectors and for the rest, in the order that the row wants. load(at, bytes) is
/// what stands `at` bytes behind the first neighbours, as far as there are `bytes`, and `next` is that of the vector
/// behind `here`. Each neighbour is loaded once, and before pixels are replaced: the row may be its own source.
template <class V, class Neighbours, int pixelBytes, class LoadAt, class Mean>
KELMORA_INLINE void MeanOfNeighbours(const SmearRow& row, const LoadAt& load, const Mean& mean)
{
    auto* const pixels = static_cast<uint8_t*>(row.pixels);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row.count) * pixelBytes;
    const ptrdiff_t whole = bytes / kVectorBytes * kVectorBytes, there = bytes + pixelBytes;
    const int rest = static_cast<int>(bytes - whole);
    const auto meanAt = [&](ptrdiff_t at, const Neighbours& here, const Neighbours& next)
        __attribute__((always_inline))
    {
        Store(pixels + at, mean(Load<V>(pixels + at), here, next));
    };
    const auto meanOfRest = [&](const Neighbours& here) __attribute__((always_inline))
    {
        if (rest > 0)
            StoreRest(pixels + whole, mean(LoadRest<V>(pixels + whole, rest), here, Neighbours{}), rest);
    };
    if (row.backward) {
        Neighbours next = load(whole, there - whole);
        meanOfRest(next);
        for (ptrdiff_t at = whole - kVectorBytes; at >= 0; at -= kVectorBytes) {
            const Neighbours here = load(at, kVectorBytes);
            meanAt(at, here, next);
            next = here;
        }
    } else {
        Neighbours here = load(0, there);
        ptrdiff_t at = 0;
        for (; at + 2 * kVectorBytes <= there; at += kVectorBytes) {
            const Neighbours next = load(at + kVectorBytes, kVectorBytes);
            meanAt(at, here, next);
            here = next;
        }
        if (at < whole) {
            const Neighbours next = load(whole, there - whole);
            meanAt(at, here, next);
            here = next;
        }
        meanOfRest(here);
    }
}

/// What stands at `from`, as far as there are `bytes`.
template <class V>
KELMORA_INLINE V LoadUpTo(const uint8_t* from, ptrdiff_t bytes)
{
    return bytes >= kVectorBytes ? Load<V>(from) : LoadRest<V>(from, static_cast<int>(bytes));
}

// --- floats ---------------------------------------------------------------------------------------------

/// What is moved over the pixels, row by row: to the right, then down.
class FloatShift {
public:
    KELMORA_METHOD explicit FloatShift(const SmearRow& row)
        : m_left(1.0f - row.rightFloat), m_right(row.rightFloat), m_above(1.0f - row.belowFloat),
          m_below(row.belowFloat)
    {
    }

    KELMORA_METHOD F32 Across(F32 left, F32 right) const { return left * m_left + right * m_right; }
    KELMORA_METHOD F32 Down(F32 upper, F32 lower) const { return upper * m_above + lower * m_below; }

private:
    float m_left, m_right, m_above, m_below;
};

void MeanFloats(const SmearRow& row)
{
    const FloatShift shift(row);
    const auto* const upper = static_cast<const uint8_t*>(row.upper);
    const auto* const lower = static_cast<const uint8_t*>(row.lower);
    MeanValues<F32>(
        row, static_cast<ptrdiff_t>(row.count) * 16, [=](F32 own, auto load) __attribute__((always_inline)) {
            const F32 above = shift.Across(load(upper), load(upper + 16));
            const F32 below = shift.Across(load(lower), load(lower + 16));
            return (own + shift.Down(above, below)) * 0.5f;
        });
}

/// Each pixel's right neighbour, of which the last is `next`'s first.
[[maybe_unused]] KELMORA_INLINE F32 RightOf(F32 here, F32 next)
{
#if defined(__AVX512BW__)
    return (F32)_mm512_alignr_epi32((__m512i)next, (__m512i)here, 4);
#elif defined(__AVX2__)
    return (F32)_mm256_permute2f128_ps((__m256)here, (__m256)next, 0x21);
#else
    return (void)here, next;
#endif
}

void MeanLevelFloats(const SmearRow& row)
{
    const FloatShift shift(row);
    const auto* const upper = static_cast<const uint8_t*>(row.upper);
    const auto mean = [=](F32 own, F32 left, F32 right) __attribute__((always_inline))
    {
        // The row below would add a positive 0.
        return (own + (shift.Across(left, right) + 0.0f)) * 0.5f;
    };
    if constexpr (kVectorBytes == 16) // a vector is a pixel, so that its neighbour is one as well
        MeanValues<F32>(
            row,
            static_cast<ptrdiff_t>(row.count) * 16, [=](F32 own, auto load) __attribute__((always_inline)) {
                return mean(own, load(upper), load(upper + 16));
            });
    else
        MeanOfNeighbours<F32, F32, 16>(
            row,
            [=](ptrdiff_t at, ptrdiff_t bytes)
                __attribute__((always_inline)) { return LoadUpTo<F32>(upper + at, bytes); },
            [=](F32 own, F32 here, F32 next)
                __attribute__((always_inline)) { return mean(own, here, RightOf(here, next)); });
}

bool AreOrdinary(const void* floats, int values)
{
    constexpr int32_t kMost = 0x71800000; // 2^100; the order of positive floats is that of their bits
    const auto* from = static_cast<const uint8_t*>(floats);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(values) * 4;
    const auto strangeness = [=](I32 v) __attribute__((always_inline))
    {
        return v | MaskGreater(v, I32{} + kMost);
    };
    I32 strange = {}; // negative where one was
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        strange |= strangeness(Load<I32>(from + at));
    strange |= strangeness(LoadPart<I32>(from + at, static_cast<int>(bytes - at)));
    int32_t any = 0;
    for (int i = 0; i < kVectorBytes / 4; ++i)
        any |= strange[i];
    return any >= 0;
}

// --- bytes ----------------------------------------------------------------------------------------------

KELMORA_INLINE U8 HalveEven(U8 a, U8 b)
{
    const U8 mean = Average(a, b);
    return mean - ((a ^ b) & mean & 1);
}

/// Interpolation of bytes along one axis.
class ByteLerp {
public:
    /// weight: of the second, 1 to 255.
    KELMORA_METHOD explicit ByteLerp(int weight)
        : m_second(I16{} + static_cast<int16_t>(weight)),
          m_both(
              InterleaveLow(U8{} + static_cast<uint8_t>(256 - weight), U8{} + static_cast<uint8_t>(weight)))
    {
    }

    /// In 256ths, less 32768 so that they are signed words.
    KELMORA_METHOD I16 Low(U8 a, U8 b) const
    {
#if defined(__AVX2__)
        return MulAddBytes(m_both, InterleaveLow(a, b) ^ 128);
#else
        return Less32768(RaiseLow(a) + (U16)(WidenLow(b) - WidenLow(a)) * (U16)m_second);
#endif
    }

    KELMORA_METHOD I16 High(U8 a, U8 b) const
    {
#if defined(__AVX2__)
        return MulAddBytes(m_both, InterleaveHigh(a, b) ^ 128);
#else
        return Less32768(RaiseHigh(a) + (U16)(WidenHigh(b) - WidenHigh(a)) * (U16)m_second);
#endif
    }

    /// To nearest, halves up.
    KELMORA_METHOD U8 operator()(U8 a, U8 b) const
    {
        const uint16_t raise = 32768 + 128;
        return Pack((I16)(((U16)Low(a, b) + raise) >> 8), (I16)(((U16)High(a, b) + raise) >> 8));
    }

private:
    [[maybe_unused]] KELMORA_METHOD static I16 Less32768(U16 words)
    {
        return (I16)words ^ static_cast<int16_t>(-32768);
    }

    [[maybe_unused]] I16 m_second;
    [[maybe_unused]] U8 m_both; ///< the weights of both, one by one
};

/// A vector's bytes as words, in the order of InterleaveLow and InterleaveHigh.
struct Words {
    I16 low, high;
};

/// The words of each pixel's right neighbour, of which the last is `next`'s first.
KELMORA_INLINE Words RightOf(const Words& here, const Words& next)
{
#if defined(__AVX512BW__)
    const auto pair = [](__m512i a, __m512i b) {
        return (I16)_mm512_castpd_si512(
            _mm512_shuffle_pd(_mm512_castsi512_pd(a), _mm512_castsi512_pd(b), 0x55));
    };
    const __m512i low = (__m512i)here.low, high = (__m512i)here.high;
    return {pair(low, high), pair(high, _mm512_alignr_epi64((__m512i)next.low, low, 2))};
#elif defined(__AVX2__)
    const auto pair = [](__m256i a, __m256i b) {
        return (I16)_mm256_castpd_si256(
            _mm256_shuffle_pd(_mm256_castsi256_pd(a), _mm256_castsi256_pd(b), 0x5));
    };
    const __m256i low = (__m256i)here.low, high = (__m256i)here.high;
    return {pair(low, high), pair(high, _mm256_permute2x128_si256(low, (__m256i)next.low, 0x21))};
#else
    return {__builtin_shufflevector(here.low, here.high, 4, 5, 6, 7, 8, 9, 10, 11),
            __builtin_shufflevector(here.high, next.low, 4, 5, 6, 7, 8, 9, 10, 11)};
#endif
}

/// Interpolation of bytes along both axes, with one rounding: down first, once for a pixel and for the one to its left.
class ByteShift {
public:
    /// right, below: 1 to 255.
    KELMORA_METHOD explicit ByteShift(const SmearRow& row)
        : m_upper(static_cast<const uint8_t*>(row.upper)), m_lower(static_cast<const uint8_t*>(row.lower)),
          m_down(row.below), m_across((I16)(I32{} + ((256 - row.right) | row.right << 16)))
    {
    }

    /// What lies `at` bytes behind the first pixel, up to `bytes` of it.
    KELMORA_METHOD Words DownAt(ptrdiff_t at, ptrdiff_t bytes) const
    {
        return DownOf(LoadUpTo<U8>(m_upper + at, bytes), LoadUpTo<U8>(m_lower + at, bytes));
    }

    KELMORA_METHOD U8 Across(const Words& here, const Words& next) const
    {
        const Words right = RightOf(here, next);
        return Pack(Across(here.low, right.low), Across(here.high, right.high));
    }

private:
    KELMORA_METHOD Words DownOf(U8 upper, U8 lower) const
    {
        return {m_down.Low(upper, lower), m_down.High(upper, lower)};
    }

    KELMORA_METHOD I16 Across(I16 left, I16 right) const
    {
        const I32 round = I32{} + (32768 * 256 + 32768);
        const I32 low = MulAddPairs(InterleaveLow(left, right), m_across) + round;
        const I32 high = MulAddPairs(InterleaveHigh(left, right), m_across) + round;
        return Pack((I32)((U32)low >> 16), (I32)((U32)high >> 16));
    }

    const uint8_t* m_upper;
    const uint8_t* m_lower;
    ByteLerp m_down;
    I16 m_across;
};

void MeanShiftedBytes(const SmearRow& row)
{
    const ByteShift shift(row);
    MeanOfNeighbours<U8, Words, 4>(
        row,
        [&](ptrdiff_t at, ptrdiff_t bytes) __attribute__((always_inline)) { return shift.DownAt(at, bytes); },
        [&](U8 own, const Words& here, const Words& next)
            __attribute__((always_inline)) { return HalveEven(own, shift.Across(here, next)); });
}

void MeanBytes(const SmearRow& row)
{
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row.count) * 4;
    const auto* const upper = static_cast<const uint8_t*>(row.upper);
    const auto* const lower = static_cast<const uint8_t*>(row.lower);
    if (row.right == 0 && row.below == 0) {
        MeanValues<U8>(
            row, bytes, [=](U8 own, auto load) __attribute__((always_inline)) {
                return HalveEven(own, load(upper));
            });
    } else if (row.right == 0 || row.below == 0) {
        const ByteLerp lerp(row.right != 0 ? row.right : row.below);
        const uint8_t* const second = row.right != 0 ? upper + 4 : lower;
        MeanValues<U8>(
            row, bytes, [=](U8 own, auto load) __attribute__((always_inline)) {
                return HalveEven(own, lerp(load(upper), load(second)));
            });
    } else {
        MeanShiftedBytes(row);
    }
}

} // namespace

extern const SmearKernels kSmearKernels;
const SmearKernels kSmearKernels = {MeanBytes, MeanFloats, MeanLevelFloats, AreOrdinary};

} // namespace kelmora::KELMORA_VARIANT

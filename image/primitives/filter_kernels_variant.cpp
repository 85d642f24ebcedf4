// Filters of bytes with any kernel, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/detail/simd_bytes.h"
#include "image/primitives/filter_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

// --- finish ---------------------------------------------------------------------------------------------

template <FilterFinish how>
struct Finish {
    int shift;
    int below; ///< what makes the shift round
    float single;
    double reciprocal;

    KELMORA_METHOD explicit Finish(const FilterRow& row)
        : shift(row.shift), below(how == FilterFinish::Shift ? (1 << (row.shift - 1)) - 1 : 0),
          single(static_cast<float>(row.reciprocal)), reciprocal(row.reciprocal)
    {
    }

    /// Not cut yet.
    KELMORA_METHOD I32 operator()(I32 sum) const
    {
        if constexpr (how == FilterFinish::Shift)
            return (sum + below + ((sum >> shift) & 1)) >> shift;
        if constexpr (how == FilterFinish::ScaleSingle)
            return Round(ToFloat(sum) * single);
        if constexpr (how == FilterFinish::ScaleDouble) {
            const Doubles v = ToDouble(sum & ~(sum >> 31)); // negative ones are cut to 0 anyway
            return Round(Doubles{v.low * reciprocal, v.high * reciprocal});
        }
        return sum;
    }
};

// --- sums -----------------------------------------------------------------------------------------------

/// Loads vectors of taps: all of them, or the first `count` bytes and zeros.
template <bool part>
struct Taps {
    const uint8_t* next;
    ptrdiff_t step;
    int count;

    KELMORA_METHOD U8 Take()
    {
        U8 v;
        if constexpr (part)
            v = LoadPart<U8>(next, count);
        else
            v = Load<U8>(next);
        next += step;
        return v;
    }
};

/// Sums of words.
struct NarrowSums {
    I16 low = {}, high = {};

    KELMORA_METHOD void AddPair(U8 a, U8 b, int weightA, int weightB)
    {
#if defined(__AVX2__)
        const U8 weights =
            (U8)(I16{} + static_cast<int16_t>(static_cast<uint16_t>((weightA & 0xFF) | weightB << 8)));
        low += MulAddBytes(InterleaveLow(a, b), weights);
        high += MulAddBytes(InterleaveHigh(a, b), weights);
#else
        low += WidenLow(a) * static_cast<int16_t>(weightA) + WidenLow(b) * static_cast<int16_t>(weightB);
        high += WidenHigh(a) * static_cast<int16_t>(weightA) + WidenHigh(b) * static_cast<int16_t>(weightB);
#endif
    }

    template <class End>
    KELMORA_METHOD U8 Finished(const End& end) const
    {
        return Pack(Pack(end(WidenLow(low)), end(WidenHigh(low))),
                    Pack(end(WidenLow(high)), end(WidenHigh(high))));
    }
};

/// Sums of 32 bits.
struct WideSums {
    I32 sums[4] = {};

    KELMORA_METHOD void AddPair(U8 a, U8 b, int weightA, int weightB)
    {
        const I16 weights =
            (I16)(U32{} + (static_cast<uint32_t>(weightA & 0xFFFF) | static_cast<uint32_t>(weightB) << 16));
        const U8 low = InterleaveLow(a, b), high = InterleaveHigh(a, b);
        sums[0] += MulAddPairs(WidenLow(low), weights);
        sums[1] += MulAddPairs(WidenHigh(low), weights);
        sums[2] += MulAddPairs(WidenLow(high), weights);
        sums[3] += MulAddPairs(WidenHigh(high), weights);
    }

    template <class End>
    KELMORA_METHOD U8 Finished(const End& end) const
    {
        return Pack(Pack(end(sums[0]), end(sums[1])), Pack(end(sums[2]), end(sums[3])));
    }
};

/// The vector whose first tap stands in `taps`.
template <class Sums, bool part, class End>
KELMORA_INLINE U8 FilterVector(Taps<part> taps, const FilterRow& row, const End& end)
{
    Sums sums;
    int j = 0;
    for (; j + 2 <= row.taps; j += 2) {
        const U8 a = taps.Take();
        const U8 b = taps.Take();
        sums.AddPair(a, b, row.weights[j], row.weights[j + 1]);
    }
    if (j < row.taps)
        sums.AddPair(taps.Take(), U8{}, row.weights[j], 0);
    return sums.Finished(end);
}

KELMORA_INLINE U8 WithFourth(U8 v, U32 old)
{
    return (U8)(((U32)v & 0x00FFFFFFu) | (old & 0xFF000000u));
}

template <class Sums, FilterFinish how>
void FilterBytes(const FilterRow& given)
{
    const FilterRow row = given; // stores could change it for all that the compiler knows
    const Finish<how> end(row);
    ForVectors(
        row.count,
        [&](ptrdiff_t at) __attribute__((always_inline)) {
            const U8 v = FilterVector<Sums>(Taps<false>{row.src + at, row.tapStep, 0}, row, end);
            uint8_t* const to = row.dst + at;
            Store(to, row.keepsFourth ? WithFourth(v, Load<U32>(to)) : v);
        },
        [&](ptrdiff_t at, int count) __attribute__((always_inline)) {
            const U8 v = FilterVector<Sums>(Taps<true>{row.src + at, row.tapStep, count}, row, end);
            uint8_t* const to = row.dst + at;
            StorePart(to, row.keepsFourth ? WithFourth(v, LoadPart<U32>(to, count)) : v, count);
        });
}

template <class Sums>
void FilterAny(const FilterRow& row)
{
    switch (row.finish) {
    case FilterFinish::Saturate:
        return FilterBytes<Sums, FilterFinish::Saturate>(row);
    case FilterFinish::Shift:
        return FilterBytes<Sums, FilterFinish::Shift>(row);
    case FilterFinish::ScaleSingle:
        return FilterBytes<Sums, FilterFinish::ScaleSingle>(row);
    case FilterFinish::ScaleDouble:
        return FilterBytes<Sums, FilterFinish::ScaleDouble>(row);
    }
}

} // namespace

extern const FilterKernels kFilterKernels;
const FilterKernels kFilterKernels = {FilterAny<NarrowSums>, FilterAny<WideSums>};

} // namespace kelmora::KELMORA_VARIANT

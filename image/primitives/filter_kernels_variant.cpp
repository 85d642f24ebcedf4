// Filters with any kernel, compiled once per instruction set: see detail/simd.h for what that forbids.

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

// --- floats ---------------------------------------------------------------------------------------------

/// The sums of a vector's values.
struct FloatSums {
    WideFloats sums = {};

    KELMORA_METHOD void Add(const WideFloats& tap, double weight)
    {
        sums.low += tap.low * weight;
        sums.high += tap.high * weight;
    }

    KELMORA_METHOD void StoreTo(uint8_t* to, bool keepsFourth) const
    {
        U32 v = (U32)Narrow(sums);
        if (keepsFourth) {
            U32 fourth = {};
            for (int i = 3; i < kPixels; i += 4)
                fourth[i] = 0xFFFFFFFFu;
            v = (v & ~fourth) | (Load<U32>(to) & fourth);
        }
        Store(to, v);
    }
};

/// The taps of a row's values, as floats in the picture.
struct FloatTaps {
    const uint8_t* first; ///< of the first value
    ptrdiff_t step;       ///< bytes

    /// Of the vector that begins with a value.
    KELMORA_METHOD WideFloats At(ptrdiff_t value, ptrdiff_t tap) const
    {
        const uint8_t* const from = first + value * 4 + tap * step;
        return {LoadFloatsAsDoubles(from), LoadFloatsAsDoubles(from + kVectorBytes / 2)};
    }
};

/// As doubles beside the picture: a row filter meets each value once for every tap.
struct DoubleTaps {
    const double* first;
    ptrdiff_t step; ///< values

    KELMORA_METHOD WideFloats At(ptrdiff_t value, ptrdiff_t tap) const
    {
        const double* const from = first + value + tap * step;
        return {Load<F64>(from), Load<F64>(from + kPixels / 2)};
    }
};

/// So many vectors of a row.
template <int vectors, class Taps>
KELMORA_INLINE void FilterSideBySide(const FloatFilter& filter, const Taps& taps, ptrdiff_t value,
                                     uint8_t* dst)
{
    FloatSums sums[vectors];
    for (int j = 0; j < filter.taps; ++j) {
        const auto weight = static_cast<double>(filter.weights[j]);
        for (int v = 0; v < vectors; ++v)
            sums[v].Add(taps.At(value + v * kPixels, j), weight);
    }
    for (int v = 0; v < vectors; ++v)
        sums[v].StoreTo(dst + 4 * value + v * kVectorBytes, filter.keepsFourth);
}

/// The whole vectors among a row's values; returns how many values they have.
template <class Taps>
KELMORA_INLINE ptrdiff_t FilterVectors(const FloatFilter& filter, const Taps& taps, uint8_t* dst,
                                       ptrdiff_t values)
{
    constexpr int several = 4;
    ptrdiff_t done = 0;
    for (; done + several * kPixels <= values; done += several * kPixels)
        FilterSideBySide<several>(filter, taps, done, dst);
    for (; done + kPixels <= values; done += kPixels)
        FilterSideBySide<1>(filter, taps, done, dst);
    return done;
}

/// One by one from the value `first` on: what fills no vector.
KELMORA_INLINE void FilterRest(const FloatFilter& filter, const uint8_t* src, uint8_t* dst, ptrdiff_t first)
{
    for (ptrdiff_t i = first; i < filter.count; ++i) {
        if (filter.keepsFourth && i % 4 == 3)
            continue;
        double sum = 0.0;
        for (int j = 0; j < filter.taps; ++j)
            sum += static_cast<double>(filter.weights[j])
                * static_cast<double>(Load<float>(src + 4 * i + j * filter.tapStep));
        Store(dst + 4 * i, static_cast<float>(sum));
    }
}

constexpr ptrdiff_t kStretch = 896; ///< doubles that a row filter holds at once

void FilterFloatRow(const FloatFilter& filter, const uint8_t* src, uint8_t* dst)
{
    const ptrdiff_t done = FilterVectors(filter, FloatTaps{src, filter.tapStep}, dst, filter.count);
    FilterRest(filter, src, dst, done);
}

/// For taps that are whole values and less than half a stretch apart.
void FilterNearbyFloats(const FloatFilter& filter, const uint8_t* src, uint8_t* dst)
{
    alignas(kVectorBytes) double stretch[kStretch];
    const ptrdiff_t step = filter.tapStep / 4, span = step * (filter.taps - 1);
    const ptrdiff_t before = span < 0 ? -span : 0, around = span < 0 ? -span : span;
    const ptrdiff_t most = (kStretch - around) / kPixels * kPixels;
    ptrdiff_t first = 0;
    while (filter.count - first >= kPixels) {
        const ptrdiff_t left = filter.count - first, values = left < most ? left : most;
        const uint8_t* const from = src + 4 * (first - before);
        const ptrdiff_t held = values + around;
        ptrdiff_t i = 0;
        for (; i + kPixels / 2 <= held; i += kPixels / 2)
            Store(stretch + i, LoadFloatsAsDoubles(from + 4 * i));
        for (; i < held; ++i)
            stretch[i] = static_cast<double>(Load<float>(from + 4 * i));
        first += FilterVectors(filter, DoubleTaps{stretch + before, step}, dst + 4 * first, values);
    }
    FilterRest(filter, src, dst, first);
}

/// Rows of a column filter that are summed at once: what is a tap of one is the next tap of the row before.
constexpr int kTogether = 4;

/// A vector of kTogether rows, which are counted as the taps run: the row r's tap j is the first one's tap j + r.
/// There are at least kTogether taps.
KELMORA_INLINE void FilterBelowEachOther(const FloatFilter& filter, const FloatTaps& taps, ptrdiff_t value,
                                         uint8_t* dst, ptrdiff_t dstStep)
{
    constexpr int last = kTogether - 1;
    FloatSums sums[kTogether];
    const auto addTo = [&](int firstRow, int lastRow, int place) __attribute__((always_inline))
    {
        const WideFloats tap = taps.At(value, place);
        for (int r = firstRow; r <= lastRow; ++r)
            sums[r].Add(tap, static_cast<double>(filter.weights[place - r]));
    };
    for (int i = 0; i < last; ++i)
        addTo(0, i, i);
    for (int place = last; place < filter.taps; ++place)
        addTo(0, last, place);
    for (int i = 0; i < last; ++i)
        addTo(i + 1, last, filter.taps + i);
    for (int r = 0; r < kTogether; ++r)
        sums[r].StoreTo(dst + 4 * value + r * dstStep, filter.keepsFourth);
}

/// kTogether rows of a column filter, of which `src` and `dst` are the first.
void FilterFloatRows(const FloatFilter& filter, const uint8_t* src, uint8_t* dst)
{
    const bool upward = filter.tapStep < 0;
    const FloatTaps taps = {upward ? src + (kTogether - 1) * filter.srcStep : src, filter.tapStep};
    uint8_t* const to = upward ? dst + (kTogether - 1) * filter.dstStep : dst;
    const ptrdiff_t dstStep = upward ? -filter.dstStep : filter.dstStep;
    ptrdiff_t done = 0;
    for (; done + kPixels <= filter.count; done += kPixels)
        FilterBelowEachOther(filter, taps, done, to, dstStep);
    for (int y = 0; y < kTogether; ++y)
        FilterRest(filter, src + y * filter.srcStep, dst + y * filter.dstStep, done);
}

/// Whether a row's taps lie near enough to each other to be held.
KELMORA_INLINE bool AreNearby(const FloatFilter& filter)
{
    const ptrdiff_t step = filter.tapStep < 0 ? -filter.tapStep : filter.tapStep;
    const int64_t span = static_cast<int64_t>(step / 4) * (filter.taps - 1);
    return step % 4 == 0 && span <= kStretch / 2;
}

void FilterFloats(const FloatFilter& given)
{
    const FloatFilter filter = given; // stores could change it for all that the compiler knows
    const auto* src = static_cast<const uint8_t*>(filter.src);
    auto* dst = static_cast<uint8_t*>(filter.dst);
    const bool isColumn = filter.tapStep == filter.srcStep || filter.tapStep == -filter.srcStep;
    const auto row = !isColumn && AreNearby(filter) ? FilterNearbyFloats : FilterFloatRow;
    int y = 0;
    if (isColumn && filter.taps >= kTogether)
        for (; y + kTogether <= filter.rows; y += kTogether)
            FilterFloatRows(filter, src + y * filter.srcStep, dst + y * filter.dstStep);
    for (; y < filter.rows; ++y)
        row(filter, src + y * filter.srcStep, dst + y * filter.dstStep);
}

} // namespace

extern const FilterKernels kFilterKernels;
const FilterKernels kFilterKernels = {FilterAny<NarrowSums>, FilterAny<WideSums>, FilterFloats};

} // namespace kelmora::KELMORA_VARIANT

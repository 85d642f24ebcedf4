// The tent filter's inner loops, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/detail/simd.h"
#include "image/primitives/tent_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

// --- bytes --------------------------------------------------------------------------------------------------

/// The forms that the scale of a sum takes: no form does more than its numbers ask for.
enum class Form { Single, SingleSpread, SinglePair, SinglePatched, SingleBiased, Double, DoubleBiased };

struct Scale {
    F32 spread, factor, rest, bias;
    F64 factorDouble, biasDouble;
    I32 patchedSum;
    F32 patch; ///< the sum to take in its place

    explicit Scale(const TentScale& scale)
        : spread(F32{} + static_cast<float>(scale.spread)), factor(F32{} + static_cast<float>(scale.factor)),
          rest(F32{} + static_cast<float>(scale.rest)), bias(F32{} + static_cast<float>(scale.bias)),
          factorDouble(F64{} + scale.factor), biasDouble(F64{} + scale.bias),
          patchedSum(I32{} + scale.patchedSum),
          patch(F32{} + static_cast<float>(scale.patchedSum + scale.patch))
    {
    }
};

template <Form form>
KELMORA_INLINE I32 Finish(I32 sum, const Scale& scale)
{
    if constexpr (form == Form::Single)
        return Round(ToFloat(sum) * scale.factor);
    if constexpr (form == Form::SingleSpread)
        return Round(ToFloat(sum) * scale.spread * scale.factor);
    if constexpr (form == Form::SinglePair)
        return Round(ToFloat(sum) * scale.factor + ToFloat(sum) * scale.rest);
    if constexpr (form == Form::SinglePatched)
        return Round((sum == scale.patchedSum ? scale.patch : ToFloat(sum)) * scale.spread * scale.factor);
    if constexpr (form == Form::SingleBiased)
        return Round(ToFloat(sum) * scale.factor + scale.bias);
    Doubles sums = ToDouble(sum);
    sums.low *= scale.factorDouble;
    sums.high *= scale.factorDouble;
    if constexpr (form == Form::DoubleBiased) {
        sums.low += scale.biasDouble;
        sums.high += scale.biasDouble;
    }
    return Round(sums);
}

/// Slopes and sums of one vector of bytes. `sum` stands first in each.
template <bool wide>
struct State;

template <>
struct State<false> {
    I32 sum[4];
    I16 slope[2];

    KELMORA_METHOD void Step(I16 low, I16 high)
    {
        slope[0] += low;
        slope[1] += high;
        sum[0] += WidenLow(slope[0]);
        sum[1] += WidenHigh(slope[0]);
        sum[2] += WidenLow(slope[1]);
        sum[3] += WidenHigh(slope[1]);
    }
};

template <>
struct State<true> {
    I32 sum[4];
    I32 slope[4];

    KELMORA_METHOD void Step(I16 low, I16 high)
    {
        slope[0] += WidenLow(low);
        slope[1] += WidenHigh(low);
        slope[2] += WidenLow(high);
        slope[3] += WidenHigh(high);
        for (int i = 0; i < 4; ++i)
            sum[i] += slope[i];
    }
};

/// The state in a picture that is `flat` everywhere.
template <bool wide>
KELMORA_INLINE State<wide> FlatState(U8 flat, std::int64_t weights)
{
    const auto factor = static_cast<int32_t>(weights);
    State<wide> state = {};
    state.sum[0] = WidenLow(WidenLow(flat)) * factor;
    state.sum[1] = WidenHigh(WidenLow(flat)) * factor;
    state.sum[2] = WidenLow(WidenHigh(flat)) * factor;
    state.sum[3] = WidenHigh(WidenHigh(flat)) * factor;
    return state;
}

/// What the rise takes away, as words. A tent of two equal highest weights has its rise one step behind its fall, a
/// tent of one has both in one place: so no step loads more than three taps.
struct Rise {
    I16 low, high;

    KELMORA_METHOD explicit Rise(U8 rise) : low(WidenLow(rise)), high(WidenHigh(rise)) {}
};

template <bool peaked, bool wide>
KELMORA_INLINE void Advance(State<wide>& state, Rise& rise, U8 first, U8 fall, U8 last)
{
    const Rise next(fall);
    if (peaked)
        rise = next;
    state.Step((WidenLow(first) + WidenLow(last)) - (next.low + rise.low),
               (WidenHigh(first) + WidenHigh(last)) - (next.high + rise.high));
    rise = next;
}

template <Form form, bool wide>
KELMORA_INLINE U8 Blurred(const State<wide>& state, const Scale& scale)
{
    return Pack(Pack(Finish<form>(state.sum[0], scale), Finish<form>(state.sum[1], scale)),
                Pack(Finish<form>(state.sum[2], scale), Finish<form>(state.sum[3], scale)));
}

/// Bytes ahead in every row that are fetched: more rows are read side by side than the hardware follows.
constexpr int kAhead = 256;
constexpr int kTapsLoaded[] = {0, 2, 3}; ///< of a row's four, see Rise

/// One vector's width of columns.
template <Form form, bool wide, bool peaked, class LoadTap>
KELMORA_INLINE void ColumnStrip(const TentColumns& job, const Scale& scale, int at, LoadTap load)
{
    using Slope = typename Conditional<wide, int32_t, int16_t>::type;
    auto* slope = static_cast<Slope*>(job.slope) + at;
    auto* sum = static_cast<int32_t*>(job.sum) + at;
    State<wide> state;
    if (job.flat) {
        state = FlatState<wide>(load(job.flat + at), job.weights);
    } else {
        __builtin_memcpy(state.slope, slope, sizeof state.slope);
        __builtin_memcpy(state.sum, sum, sizeof state.sum);
    }

    const std::uint8_t* const* taps = job.taps;
    Rise rise(job.steps > 0 ? load(taps[1] + at) : U8{});
    const auto advance = [&] {
        Advance<peaked>(state, rise, load(taps[0] + at), load(taps[2] + at), load(taps[3] + at));
    };
    if (job.turned) {
        U32 rows[kPixels];
        for (int r = 0; r < kPixels; ++r, taps += 4) {
            for (const int k : kTapsLoaded)
                __builtin_prefetch(taps[k] + at + kAhead);
            advance();
            rows[r] = (U32)Blurred<form>(state, scale);
        }
        Transpose(rows);
        std::uint8_t* turned = job.turned + static_cast<ptrdiff_t>(at) * kPixels;
        for (int c = 0; c < kPixels; ++c)
            Store(turned + c * kVectorBytes, rows[c]);
    } else {
        for (int r = 0; r < job.steps; ++r, taps += 4)
            advance();
    }
    __builtin_memcpy(slope, state.slope, sizeof state.slope);
    __builtin_memcpy(sum, state.sum, sizeof state.sum);
}

template <Form form, bool wide, bool peaked>
void ByteColumns(const TentColumns& job)
{
    const Scale scale(job.scale);
    const int bytes = job.width * 4;
    int at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        ColumnStrip<form, wide, peaked>(job, scale, at, [](const std::uint8_t* p) { return Load<U8>(p); });
    if (const int rest = bytes - at; rest > 0)
        ColumnStrip<form, wide, peaked>(job, scale, at,
                                        [rest](const std::uint8_t* p) { return LoadPart<U8>(p, rest); });
}

template <Form form, bool wide, bool peaked>
void ByteRowPass(const TentRows& job)
{
    const Scale scale(job.scale);
    const auto column = [&job](int x) {
        return Load<U8>(job.turned + static_cast<ptrdiff_t>(x) * kVectorBytes);
    };
    Rise rise(column(job.taps.rise - job.lead));
    const auto advance = [&](State<wide>& state, int x) {
        Advance<peaked>(state, rise, column(x + job.taps.first), column(x + job.taps.fall),
                        column(x + job.taps.last));
    };

    // Before the lead the window lies on a flat stretch.
    auto state = FlatState<wide>(column(job.taps.last - job.lead - 1), job.weights);
    for (int x = -job.lead; x < 0; ++x)
        advance(state, x);

    for (int x = 0; x < job.width; x += kPixels) {
        U32 columns[kPixels];
        for (int c = 0; c < kPixels; ++c) {
            // The block's last columns may lie behind the row; the taps must not go further.
            if (x + c < job.width)
                advance(state, x + c);
            columns[c] = (U32)Blurred<form>(state, scale);
        }
        Transpose(columns);
        for (int r = 0; r < kPixels; ++r)
            Store(job.rows + static_cast<ptrdiff_t>(r) * job.rowStep + x * 4, columns[r]);
    }
}

/// Calls `work` with the form as a type's value.
template <class Work>
void WithForm(const TentScale& scale, Work&& work)
{
    if (scale.single && scale.bias != 0)
        work.template operator()<Form::SingleBiased>();
    else if (scale.single && scale.rest != 0)
        work.template operator()<Form::SinglePair>();
    else if (scale.single && scale.patch != 0)
        work.template operator()<Form::SinglePatched>();
    else if (scale.single && scale.spread != 1)
        work.template operator()<Form::SingleSpread>();
    else if (scale.single)
        work.template operator()<Form::Single>();
    else if (scale.bias != 0)
        work.template operator()<Form::DoubleBiased>();
    else
        work.template operator()<Form::Double>();
}

/// Calls `work` with whether slopes are wide and whether the tent is peaked as types' values.
template <class Job, class Work>
void WithShape(const Job& job, Work&& work)
{
    if (job.wide)
        job.peaked ? work.template operator()<true, true>() : work.template operator()<true, false>();
    else
        job.peaked ? work.template operator()<false, true>() : work.template operator()<false, false>();
}

void AnyByteColumns(const TentColumns& job)
{
    WithForm(job.scale, [&]<Form form>() {
        WithShape(job, [&]<bool wide, bool peaked>() { ByteColumns<form, wide, peaked>(job); });
    });
}

void AnyByteRowPass(const TentRows& job)
{
    WithForm(job.scale, [&]<Form form>() {
        WithShape(job, [&]<bool wide, bool peaked>() { ByteRowPass<form, wide, peaked>(job); });
    });
}

// --- floats -------------------------------------------------------------------------------------------------

constexpr int kDoubles = kVectorBytes / 8; ///< doubles in a vector
constexpr int kFloatRows = 8;
constexpr int kTurnedColumn = kFloatRows * 16; ///< bytes of a turned column

constexpr int kPair = 8 / kDoubles; ///< vectors that hold two pixels as doubles

/// Pixels that the column pass takes at a time: a cache line of each tap row where the registers suffice, for
/// the rows of a picture often lie so that they displace each other before their next pixels are read.
constexpr int kGroup = kDoubles > 2 ? 4 : 2;
constexpr int kGroupBytes = kGroup * 16;
constexpr int kGroupVectors = kGroup * 4 / kDoubles;

constexpr int kPrefetchBytes = 1024;

KELMORA_INLINE F64 SecondDifference(const std::uint8_t* first, F64 rise, F64 fall, const std::uint8_t* last)
{
    // One order for all instruction sets: the sums must come out alike to the last bit.
    return ((LoadFloatsAsDoubles(first) - rise) - fall) + LoadFloatsAsDoubles(last);
}

/// Watches for floats that running sums cannot take.
struct Guard {
    I32 least = {}; ///< below zero once there was one

    /// As many bytes of floats as a group has.
    KELMORA_METHOD void Watch(const std::uint8_t* floats)
    {
        // Without their sign floats go up with their bits, to infinity and on to what is no number.
        const I32 most = I32{} + __builtin_bit_cast(int32_t, kTentLargestSummed);
        for (int i = 0; i < kGroupBytes; i += kVectorBytes)
            least |= most - (Load<I32>(floats + i) & 0x7FFFFFFF);
    }

    KELMORA_METHOD bool IsAtEase() const
    {
        int32_t all = 0;
        for (int i = 0; i < kPixels; ++i)
            all |= least[i];
        return all >= 0;
    }
};

/// Two pixels, each to a place of its own.
KELMORA_INLINE void StorePair(std::uint8_t* left, std::uint8_t* right, const F64* pixels, F64 factor)
{
    constexpr int bytes = kDoubles * 4; // of a vector's floats
    for (int i = 0; i < kPair; ++i) {
        alignas(32) std::uint8_t floats[bytes];
        StoreAsFloats(floats, pixels[i] * factor);
        if constexpr (bytes == 32) {
            __builtin_memcpy(left, floats, 16);
            __builtin_memcpy(right, floats + 16, 16);
        } else {
            std::uint8_t* to = i * bytes < 16 ? left : right;
            __builtin_memcpy(to + i * bytes % 16, floats, bytes);
        }
    }
}

/// One group of columns; `whole` says that all its pixels are there.
template <bool whole, bool peaked>
KELMORA_INLINE void FloatColumnGroup(const TentColumns& job, F64 factor, int x, Guard& guard)
{
    const int bytes = whole ? kGroupBytes : (job.width - x) * 16;
    const ptrdiff_t offset = static_cast<ptrdiff_t>(x) * 16;
    const auto reach = [&](std::uint8_t(&copy)[kGroupBytes], const std::uint8_t* row) {
        if constexpr (whole)
            return row + offset;
        __builtin_memset(copy, 0, sizeof copy);
        __builtin_memcpy(copy, row + offset, static_cast<size_t>(bytes));
        return static_cast<const std::uint8_t*>(copy);
    };

    auto* slopes = static_cast<double*>(job.slope) + static_cast<ptrdiff_t>(x) * 4;
    auto* sums = static_cast<double*>(job.sum) + static_cast<ptrdiff_t>(x) * 4;
    std::uint8_t copies[4][kGroupBytes];
    F64 slope[kGroupVectors] = {}, sum[kGroupVectors];
    if (job.flat) {
        const std::uint8_t* flat = reach(copies[0], job.flat);
        guard.Watch(flat);
        for (int i = 0; i < kGroupVectors; ++i)
            sum[i] = LoadFloatsAsDoubles(flat + i * kDoubles * 4) * static_cast<double>(job.weights);
    } else {
        __builtin_memcpy(slope, slopes, sizeof slope);
        __builtin_memcpy(sum, sums, sizeof sum);
    }

    const std::uint8_t* const* taps = job.taps;
    F64 rise[kGroupVectors] = {};
    if (!peaked && job.steps > 0) {
        const std::uint8_t* const from = reach(copies[1], taps[1]);
        for (int i = 0; i < kGroupVectors; ++i)
            rise[i] = LoadFloatsAsDoubles(from + i * kDoubles * 4);
    }
    for (int r = 0; r < job.steps; ++r, taps += 4) {
        const std::uint8_t* at[4];
        for (const int t : kTapsLoaded) {
            at[t] = reach(copies[t], taps[t]);
            // More rows are read at once than the processor follows by itself.
            if (whole)
                __builtin_prefetch(at[t] + kPrefetchBytes, 0,
                                   2); // to the second cache: the first is too small
        }
        guard.Watch(at[3]);
        for (int i = 0; i < kGroupVectors; ++i) {
            const int o = i * kDoubles * 4;
            const F64 fall = LoadFloatsAsDoubles(at[2] + o);
            slope[i] += SecondDifference(at[0] + o, peaked ? fall : rise[i], fall, at[3] + o);
            sum[i] += slope[i];
            rise[i] = fall;
        }
        if (job.turned) {
            for (int c = 0; c < kGroup; c += 2) {
                std::uint8_t* left = job.turned + static_cast<ptrdiff_t>(x + c) * kTurnedColumn + r * 16;
                StorePair(left, left + kTurnedColumn, sum + c / 2 * kPair, factor);
            }
        }
    }
    __builtin_memcpy(slopes, slope, sizeof slope);
    __builtin_memcpy(sums, sum, sizeof sum);
}

template <bool peaked>
bool FloatColumns(const TentColumns& job)
{
    const F64 factor = F64{} + job.scale.factor;
    Guard guard;
    int x = 0;
    for (; x + kGroup <= job.width; x += kGroup)
        FloatColumnGroup<true, peaked>(job, factor, x, guard);
    if (x < job.width)
        FloatColumnGroup<false, peaked>(job, factor, x, guard);
    return guard.IsAtEase();
}

bool AnyFloatColumns(const TentColumns& job)
{
    return job.peaked ? FloatColumns<true>(job) : FloatColumns<false>(job);
}

void FloatRowPass(const TentRows& job)
{
    constexpr int vectors = kFloatRows * 4 / kDoubles; // of one turned column
    const F64 factor = F64{} + job.scale.factor;
    const auto column = [&job](int x) { return job.turned + static_cast<ptrdiff_t>(x) * kTurnedColumn; };

    F64 slope[vectors] = {}, sum[vectors];
    const std::uint8_t* flat = column(job.taps.last - job.lead - 1);
    for (int i = 0; i < vectors; ++i)
        sum[i] = LoadFloatsAsDoubles(flat + i * kDoubles * 4) * static_cast<double>(job.weights);

    for (int x = -job.lead; x < job.width; ++x) {
        const std::uint8_t* first = column(x + job.taps.first);
        const std::uint8_t* rise = column(x + job.taps.rise);
        const std::uint8_t* fall = column(x + job.taps.fall);
        const std::uint8_t* last = column(x + job.taps.last);
        for (int i = 0; i < vectors; ++i) {
            const int o = i * kDoubles * 4;
            slope[i] += SecondDifference(first + o, LoadFloatsAsDoubles(rise + o),
                                         LoadFloatsAsDoubles(fall + o), last + o);
            sum[i] += slope[i];
        }
        if (x < 0)
            continue;
        for (int r = 0; r < kFloatRows; r += 2) {
            std::uint8_t* upper = job.rows + static_cast<ptrdiff_t>(r) * job.rowStep + x * 16;
            F64 pair[kPair];
            for (int i = 0; i < kPair; ++i)
                pair[i] = sum[r / 2 * kPair + i];
            StorePair(upper, upper + job.rowStep, pair, factor);
        }
    }
}

} // namespace

extern const TentKernels kTentKernels;
const TentKernels kTentKernels = {kPixels,        kFloatRows,      AnyByteColumns,
                                  AnyByteRowPass, AnyFloatColumns, FloatRowPass};

} // namespace kelmora::KELMORA_VARIANT

// The median's loops, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/detail/simd.h"
#include "image/primitives/median_kernels.h"

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi" // wide vectors are passed to inlined functions alone
#endif

namespace kelmora::KELMORA_VARIANT {
namespace {

constexpr int kBins = 16; ///< sixteenths of the range, and values in each of them
constexpr int kValues = 256;

typedef int8_t Bytes16 __attribute__((vector_size(16), may_alias));
typedef int32_t Ints16 __attribute__((vector_size(64), may_alias));

#if defined(__AVX2__)

typedef int16_t Words16 __attribute__((vector_size(32), may_alias));

KELMORA_INLINE Words16 Widen(Bytes16 v)
{
    return (Words16)_mm256_cvtepi8_epi16((__m128i)v);
}

#else

/// Sixteen words in two vectors.
struct Words16 {
    I16 low, high;

    KELMORA_METHOD Words16& operator+=(Words16 v)
    {
        low += v.low;
        high += v.high;
        return *this;
    }
};

static_assert(kVectorBytes == 16);

KELMORA_INLINE Words16 Widen(Bytes16 v)
{
    return {(I16)RaiseLow((U8)v) >> 8, (I16)RaiseHigh((U8)v) >> 8};
}

KELMORA_INLINE Words16 WidenUnsigned(Bytes16 v)
{
    return {WidenLow((U8)v), WidenHigh((U8)v)};
}

#endif

KELMORA_INLINE Ints16 Widen(Ints16 v)
{
    return v;
}

/// Two sixteenths side by side, so that values around a border between two do not make the search change over.
#if defined(__AVX2__)

typedef int8_t ColumnPair __attribute__((vector_size(32), may_alias));

KELMORA_INLINE ColumnPair LoadPair(const void* counts)
{
    return Load<ColumnPair>(counts);
}

#else

struct ColumnPair {
    Bytes16 low, high;

    KELMORA_METHOD ColumnPair operator+(const ColumnPair& v) const { return {low + v.low, high + v.high}; }
    KELMORA_METHOD ColumnPair operator-(const ColumnPair& v) const { return {low - v.low, high - v.high}; }
};

KELMORA_INLINE ColumnPair LoadPair(const void* counts)
{
    return {Load<Bytes16>(counts), Load<Bytes16>(static_cast<const char*>(counts) + 16)};
}

#endif

#if defined(__AVX512BW__)

typedef int16_t WordPair __attribute__((vector_size(64), may_alias));

KELMORA_INLINE WordPair Widen(ColumnPair v)
{
    return (WordPair)_mm512_cvtepi8_epi16((__m256i)v);
}

KELMORA_INLINE WordPair WidenUnsigned(ColumnPair v)
{
    return (WordPair)_mm512_cvtepu8_epi16((__m256i)v);
}

#else

struct WordPair {
    Words16 low, high;

    KELMORA_METHOD WordPair& operator+=(WordPair v)
    {
        low += v.low;
        high += v.high;
        return *this;
    }
};

#if defined(__AVX2__)

KELMORA_INLINE WordPair Widen(ColumnPair v)
{
    return {(Words16)_mm256_cvtepi8_epi16(_mm256_castsi256_si128((__m256i)v)),
            (Words16)_mm256_cvtepi8_epi16(_mm256_extracti128_si256((__m256i)v, 1))};
}

KELMORA_INLINE WordPair WidenUnsigned(ColumnPair v)
{
    return {(Words16)_mm256_cvtepu8_epi16(_mm256_castsi256_si128((__m256i)v)),
            (Words16)_mm256_cvtepu8_epi16(_mm256_extracti128_si256((__m256i)v, 1))};
}

#else

KELMORA_INLINE WordPair Widen(ColumnPair v)
{
    return {Widen(v.low), Widen(v.high)};
}

KELMORA_INLINE WordPair WidenUnsigned(ColumnPair v)
{
    return {WidenUnsigned(v.low), WidenUnsigned(v.high)};
}

#endif
#endif

struct IntPair {
    Ints16 low, high;

    KELMORA_METHOD IntPair& operator+=(const IntPair& v)
    {
        low += v.low;
        high += v.high;
        return *this;
    }
    KELMORA_METHOD IntPair operator+(const IntPair& v) const { return {low + v.low, high + v.high}; }
    KELMORA_METHOD IntPair operator-(const IntPair& v) const { return {low - v.low, high - v.high}; }
};

KELMORA_INLINE IntPair Widen(const IntPair& v)
{
    return v;
}

KELMORA_INLINE IntPair WidenUnsigned(const IntPair& v)
{
    return v;
}

KELMORA_INLINE IntPair LoadPair(const Ints16* counts)
{
    return {counts[0], counts[1]};
}

// --- which counts are above a rank, a bit each -------------------------------------------------------------

KELMORA_INLINE unsigned Above(const Words16& counts, int16_t rank)
{
#if defined(__AVX512BW__)
    return _mm256_cmpgt_epi16_mask((__m256i)counts, _mm256_set1_epi16(rank));
#elif defined(__AVX2__)
    const __m256i above = (__m256i)(counts > (Words16{} + rank));
    return (unsigned)_mm_movemask_epi8(
        _mm_packs_epi16(_mm256_castsi256_si128(above), _mm256_extracti128_si256(above, 1)));
#elif defined(__SSE2__)
    const I16 limit = I16{} + rank;
    return (unsigned)_mm_movemask_epi8(
        _mm_packs_epi16((__m128i)(counts.low > limit), (__m128i)(counts.high > limit)));
#else
    unsigned above = 0;
    for (int i = 0; i < kBins; ++i)
        above |= static_cast<unsigned>((i < 8 ? counts.low[i] : counts.high[i - 8]) > rank) << i;
    return above;
#endif
}

KELMORA_INLINE unsigned Above(const Ints16& counts, int32_t rank)
{
    unsigned above = 0;
    for (int i = 0; i < kBins; ++i)
        above |= static_cast<unsigned>(counts[i] > rank) << i;
    return above;
}

KELMORA_INLINE unsigned Above(const WordPair& counts, int16_t rank)
{
#if defined(__AVX512BW__)
    return _mm512_cmpgt_epi16_mask((__m512i)counts, _mm512_set1_epi16(rank));
#elif defined(__AVX2__)
    const Words16 limit = Words16{} + rank;
    const __m256i above = _mm256_packs_epi16((__m256i)(counts.low > limit), (__m256i)(counts.high > limit));
    return (unsigned)_mm256_movemask_epi8(_mm256_permute4x64_epi64(above, 0xD8));
#else
    return Above(counts.low, rank) | Above(counts.high, rank) << kBins;
#endif
}

KELMORA_INLINE unsigned Above(const IntPair& counts, int32_t rank)
{
    return Above(counts.low, rank) | Above(counts.high, rank) << kBins;
}

/// Columns counted in bytes, the window in words.
struct ByteCounts {
    using Column = Bytes16;
    using Window = Words16;
    using Count = int8_t;
    using Total = int16_t;
    using PairWindow = WordPair;
};

/// All in 32 bits.
struct WideCounts {
    using Column = Ints16;
    using Window = Ints16;
    using Count = int32_t;
    using Total = int32_t;
    using PairWindow = IntPair;
};

/// A column's histogram, cumulative: how many values lie in the sixteenths up to the i-th, and per sixteenth,
/// how many of its values are at most its j-th.
template <class C>
struct Histogram {
    typename C::Column coarse;
    typename C::Column fine[kBins];
};

static_assert(sizeof(Histogram<ByteCounts>) == MedianKernels::kByteHistogram);
static_assert(sizeof(Histogram<WideCounts>) == MedianKernels::kWideHistogram);

constexpr int kChunk = 64; ///< pixels: a window and a chunk of histograms fit the first cache

/// What stands before the histograms.
template <class C>
struct State {
    typename C::Column coarseStep[kValues];     ///< what one more value does to the coarse counts
    typename C::Column fineStep[kValues];       ///< and to those of its sixteenth
    typename C::PairWindow fine[kBins];         ///< the window's counts in a sixteenth and the one above it
    typename C::Total below[kChunk][2 * kBins]; ///< counts below each sixteenth, from 0 on
    ptrdiff_t fineAt[kBins];                    ///< the pixel that they are for
    uint8_t bins[kChunk];
};

static_assert(sizeof(State<WideCounts>) <= MedianKernels::kState);

/// Rows of the result, each in two passes over a few columns at a time: the first moves the histograms down
/// and finds each pixel's sixteenth, the second its place in that. So the search never waits for the window.
template <class C>
class MedianRows {
    using Column = typename C::Column;
    using Window = typename C::Window;
    using Total = typename C::Total;
    using Count = typename C::Count;
    using PairWindow = typename C::PairWindow;

public:
    KELMORA_METHOD explicit MedianRows(const MedianStrip& strip)
        : m_strip(strip), m_state(*static_cast<State<C>*>(strip.work)),
          m_columns(reinterpret_cast<Histogram<C>*>(static_cast<char*>(strip.work) + MedianKernels::kState)
                    + 1),
          m_ahead(strip.maskWidth - 1), m_addends(strip.maskHeight > 127 ? 1 : 255 / strip.maskHeight),
          m_rank(static_cast<Total>(static_cast<int64_t>(strip.maskWidth) * strip.maskHeight / 2))
    {
        MakeSteps();
        for (int i = 0; i < kChunk; ++i)
            m_state.below[i][0] = 0;
    }

    KELMORA_METHOD void Run()
    {
        Fill();
        for (int y = 0; y < m_strip.height; ++y) {
            // The first row's columns are there already: a value that replaces itself moves nothing.
            const uint8_t* leaving = SourceRow(y == 0 ? 0 : y - 1);
            const uint8_t* entering = y == 0 ? leaving : SourceRow(y - 1 + m_strip.maskHeight);
            FilterRow(leaving, entering, m_strip.dst + static_cast<ptrdiff_t>(m_strip.dstStep) * y);
        }
    }

private:
    [[gnu::noinline]] void MakeSteps()
    {
        auto* coarse = reinterpret_cast<Count*>(m_state.coarseStep);
        auto* fine = reinterpret_cast<Count*>(m_state.fineStep);
        for (int i = 0; i < kValues * kBins; ++i) {
            const int value = i / kBins, at = i % kBins;
            coarse[i] = at >= value / kBins;
            fine[i] = at >= value % kBins;
        }
    }

    KELMORA_METHOD const uint8_t* SourceRow(int y) const
    {
        return m_strip.src + static_cast<ptrdiff_t>(m_strip.srcStep) * y;
    }

    KELMORA_METHOD static Column& Sixteenth(Histogram<C>& column, ptrdiff_t value)
    {
        constexpr int bytes = sizeof(Column);
        auto* first = reinterpret_cast<char*>(column.fine);
        return *reinterpret_cast<Column*>(first + (value & (kValues - kBins)) * (bytes / kBins));
    }

    /// In front of the columns stands one that is always empty: the one that leaves the first window.
    [[gnu::noinline]] void Fill()
    {
        const ptrdiff_t count = m_strip.width + m_ahead;
        __builtin_memset(m_columns - 1, 0, sizeof(Histogram<C>) * static_cast<size_t>(count + 1));
        for (int y = 0; y < m_strip.maskHeight; ++y) {
            const uint8_t* row = SourceRow(y);
            for (ptrdiff_t i = 0; i < count; ++i) {
                const ptrdiff_t value = row[4 * i];
                m_columns[i].coarse += m_state.coarseStep[value];
                Sixteenth(m_columns[i], value) += m_state.fineStep[value];
            }
        }
    }

    KELMORA_METHOD Column MoveDown(Histogram<C>& column, ptrdiff_t leaving, ptrdiff_t entering)
    {
        const Column coarse = column.coarse + m_state.coarseStep[entering] - m_state.coarseStep[leaving];
        column.coarse = coarse;
        Sixteenth(column, entering) += m_state.fineStep[entering];
        Sixteenth(column, leaving) -= m_state.fineStep[leaving];
        return coarse;
    }

    KELMORA_METHOD void FilterRow(const uint8_t* leaving, const uint8_t* entering, uint8_t* dst)
    {
        Window window = {};
        for (ptrdiff_t i = 0; i < m_ahead; ++i)
            window += Widen(MoveDown(m_columns[i], leaving[4 * i], entering[4 * i]));

        for (int b = 0; b < kBins; ++b)
            m_state.fineAt[b] = -m_ahead - 2;
        for (int x = 0; x < m_strip.width; x += kChunk) {
            const int count = m_strip.width - x < kChunk ? m_strip.width - x : kChunk;
            const ptrdiff_t ahead = 4 * (x + m_ahead);
            window = FindSixteenths(window, m_columns + x, count, leaving + ahead, entering + ahead);
            FindValues(x, count, dst + 4 * static_cast<ptrdiff_t>(x));
        }
    }

    /// `window` is that of the pixel before, `first` the first column of the first pixel's window; the rows
    /// stand at its last column.
    KELMORA_METHOD Window FindSixteenths(Window window, Histogram<C>* first, int count,
                                         const uint8_t* leaving, const uint8_t* entering)
    {
        for (ptrdiff_t i = 0; i < count; ++i) {
            const Column last = MoveDown(first[i + m_ahead], leaving[4 * i], entering[4 * i]);
            window += Widen(last - first[i - 1].coarse);
            __builtin_memcpy(m_state.below[i] + 1, &window, sizeof window);
            m_state.bins[i] = static_cast<uint8_t>(__builtin_ctz(Above(window, m_rank)));
        }
        return window;
    }

    KELMORA_METHOD void FindValues(int x, int count, uint8_t* dst)
    {
        CatchUp(m_pair, x);
        ptrdiff_t pair = m_pair; // the lower of the two sixteenths
        PairWindow fine = m_state.fine[pair];
        const auto* leaving = reinterpret_cast<const char*>(m_columns + x - 1);
        const auto* entering = reinterpret_cast<const char*>(m_columns + x + m_ahead);
        for (ptrdiff_t i = 0; i < count; ++i) {
            const ptrdiff_t bin = m_state.bins[i];
            if (__builtin_expect(static_cast<size_t>(bin - pair) > 1, false)) {
                m_state.fine[pair] = fine;
                m_state.fineAt[pair] = x + i - 1;
                // The sixteenth that it comes from stays in the pair, for values go back as often as not; but
                // not where they go on the same way from one pair to the next.
                const bool up = bin > pair;
                const ptrdiff_t back = up ? bin - 1 : bin, on = up ? bin : bin - 1;
                pair = up == m_up && on >= 0 && on < kBins - 1 && x + i - 1 - m_state.fineAt[back] > m_ahead
                    ? on
                    : back;
                m_up = up;
                CatchUp(pair, x + i);
                fine = m_state.fine[pair];
            }
            const ptrdiff_t at = kFineOffset + pair * static_cast<ptrdiff_t>(sizeof(Column));
            fine += Widen(LoadPair(reinterpret_cast<const Column*>(entering + at))
                          - LoadPair(reinterpret_cast<const Column*>(leaving + at)));
            leaving += sizeof(Histogram<C>);
            entering += sizeof(Histogram<C>);
            const auto rank = static_cast<Total>(m_rank - m_state.below[i][bin]);
            const unsigned above = Above(fine, rank) >> ((bin - pair) * kBins);
            dst[4 * i] = static_cast<uint8_t>(static_cast<int>(bin) * kBins + __builtin_ctz(above));
        }
        m_state.fine[pair] = fine;
        m_state.fineAt[pair] = x + count - 1;
        m_pair = pair;
    }

    static constexpr ptrdiff_t kFineOffset = sizeof(Column);

    /// Brings the counts of a pair to the window of the pixel before x, from what is known of an earlier one.
    [[gnu::noinline]] void CatchUp(ptrdiff_t pair, ptrdiff_t x)
    {
        ptrdiff_t known = m_state.fineAt[pair];
        PairWindow fine = m_state.fine[pair];
        if (x - 1 - known > m_ahead) { // nothing is left of that window
            fine = PairWindow{};
            const ptrdiff_t end = x + m_ahead;
            for (ptrdiff_t i = x - 1; i < end;) {
                auto sum = LoadPair(m_columns[i].fine + pair);
                const ptrdiff_t most = i + m_addends < end ? i + m_addends : end;
                for (++i; i < most; ++i)
                    sum = sum + LoadPair(m_columns[i].fine + pair);
                fine += WidenUnsigned(sum);
            }
        } else {
            for (; known < x - 1; ++known)
                fine += Widen(LoadPair(m_columns[known + 1 + m_ahead].fine + pair)
                              - LoadPair(m_columns[known].fine + pair));
        }
        m_state.fine[pair] = fine;
    }

    ptrdiff_t m_pair = 0;
    bool m_up = false;
    const MedianStrip& m_strip;
    State<C>& m_state;
    Histogram<C>* const m_columns;
    const ptrdiff_t m_ahead;   ///< columns of a window behind its first
    const ptrdiff_t m_addends; ///< columns whose counts may be added before they are widened
    const Total m_rank;
};

template <class C>
void Median(const MedianStrip& strip)
{
    MedianRows<C>(strip).Run();
}

} // namespace

extern const MedianKernels kMedianKernels;
const MedianKernels kMedianKernels = {Median<ByteCounts>, Median<WideCounts>};

} // namespace kelmora::KELMORA_VARIANT

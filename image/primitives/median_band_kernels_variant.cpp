// The median's loops for a band of thresholds, compiled once per instruction set: see detail/simd.h for what that
// forbids.

#include "image/primitives/detail/simd.h"
#include "image/primitives/median_band_kernels.h"

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi" // wide vectors are passed to inlined functions alone
#endif

namespace kelmora::KELMORA_VARIANT {

extern const MedianBandKernels kMedianBandKernels;

#if defined(__AVX512BW__)

namespace {

constexpr int kValues = 256;

/// Half of a vector's counts, in words, and the other half.
struct WideCounts {
    I16 high = {}, low = {}; ///< of the upper thresholds and of the lower ones

    KELMORA_METHOD void AddSigned(U8 counts)
    {
        high += (I16)_mm512_cvtepi8_epi16(_mm512_castsi512_si256((__m512i)counts));
        low += (I16)_mm512_cvtepi8_epi16(_mm512_extracti64x4_epi64((__m512i)counts, 1));
    }

    KELMORA_METHOD void AddUnsigned(U8 counts)
    {
        high += (I16)_mm512_cvtepu8_epi16(_mm512_castsi512_si256((__m512i)counts));
        low += (I16)_mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64((__m512i)counts, 1));
    }

    /// A bit for each count that is above the rank.
    KELMORA_METHOD uint64_t Above(I16 rank) const
    {
        return _cvtmask64_u64(_mm512_kunpackd(_mm512_cmpgt_epi16_mask((__m512i)low, (__m512i)rank),
                                              _mm512_cmpgt_epi16_mask((__m512i)high, (__m512i)rank)));
    }
};

KELMORA_INLINE int CountOf(uint64_t bits)
{
    return __builtin_popcountll(bits);
}

/// Columns with the counts of a band of `vectors` vectors, which follows their medians from row to row.
template <int vectors>
class BandRows {
    static constexpr int kBand = vectors * kVectorBytes; ///< thresholds

    // No value is at most the threshold -1, and all are at most 255: a median lies between two of them.
    static constexpr int kLowestBase = -1, kHighestBase = kValues - 1 - kBand;

    struct Counts {
        U8 v[vectors]; ///< from the highest threshold on
    };

    /// What stands before the columns' counts.
    struct State {
        Counts steps[kValues]; ///< what one more value adds to a column's counts
    };

    static_assert(sizeof(State) <= MedianKernels::kState);
    static_assert(sizeof(Counts) <= MedianKernels::kByteHistogram);

    struct Window {
        WideCounts v[vectors];
    };

public:
    KELMORA_METHOD explicit BandRows(const MedianBand& band)
        : m_strip(band.strip), m_steps(static_cast<State*>(m_strip.work)->steps),
          m_columns(reinterpret_cast<Counts*>(static_cast<char*>(m_strip.work) + MedianKernels::kState)),
          m_ahead(m_strip.maskWidth - 1), m_addends(255 / m_strip.maskHeight),
          m_rank(static_cast<int16_t>(m_strip.maskWidth * m_strip.maskHeight / 2)),
          m_price(4 + m_strip.maskHeight / 2)
    {
        MoveTo((band.least + band.most - kBand) / 2, 0);
    }

    KELMORA_METHOD int Run()
    {
        int spare = 4 * m_price;
        for (int y = 0; y < m_strip.height; ++y, ++spare) {
            uint8_t* const dst = m_strip.dst + static_cast<ptrdiff_t>(m_strip.dstStep) * y;
            bool found = y == 0
                ? FilterRow<false>(nullptr, nullptr, dst)
                : FilterRow<true>(SourceRow(y - 1), SourceRow(y - 1 + m_strip.maskHeight), dst);
            for (; !found; found = FilterRow<false>(nullptr, nullptr, dst)) {
                const int shift = Shift();
                if (shift == 0 || spare < 0)
                    return y;
                spare -= m_price;
                MoveTo(m_base + shift, y);
            }
        }
        return m_strip.height;
    }

private:
    KELMORA_METHOD const uint8_t* SourceRow(int y) const
    {
        return m_strip.src + static_cast<ptrdiff_t>(m_strip.srcStep) * y;
    }

    /// Counts anew for the masks of row y, with `base` as the lowest threshold.
    [[gnu::noinline]] void MoveTo(int base, int y)
    {
        m_base = base < kLowestBase ? kLowestBase : base > kHighestBase ? kHighestBase : base;
        for (int i = 0; i < vectors; ++i) {
            U8 limits; // values below them are counted
            for (int j = 0; j < kVectorBytes; ++j)
                limits[j] = static_cast<uint8_t>(m_base + kBand - i * kVectorBytes - j);
            for (int value = 0; value < kValues; ++value)
                m_steps[value].v[i] = (U8)(limits > static_cast<uint8_t>(value)) & 1;
        }

        const ptrdiff_t count = m_strip.width + m_ahead;
        __builtin_memset(m_columns, 0, sizeof(Counts) * static_cast<size_t>(count));
        int row = 0;
        for (; row + 4 <= m_strip.maskHeight; row += 4)
            CountRows<4>(SourceRow(y + row), count);
        for (; row < m_strip.maskHeight; ++row)
            CountRows<1>(SourceRow(y + row), count);
    }

    template <int rows>
    KELMORA_METHOD void CountRows(const uint8_t* row, ptrdiff_t count)
    {
        const ptrdiff_t step = m_strip.srcStep;
        for (ptrdiff_t x = 0; x < count; ++x)
            for (int i = 0; i < vectors; ++i) {
                U8 counts = m_columns[x].v[i];
                for (int j = 0; j < rows; ++j)
                    counts += m_steps[row[j * step + 4 * x]].v[i];
                m_columns[x].v[i] = counts;
            }
    }

    KELMORA_METHOD U8 MoveDown(ptrdiff_t column, int i, uint8_t leaving, uint8_t entering)
    {
        const U8 counts = m_columns[column].v[i] + m_steps[entering].v[i] - m_steps[leaving].v[i];
        m_columns[column].v[i] = counts;
        return counts;
    }

    /// All columns of the first window but its last.
    KELMORA_METHOD Window FirstWindow() const
    {
        Window window;
        for (int i = 0; i < vectors; ++i)
            for (ptrdiff_t x = 0; x < m_ahead;) {
                U8 sum = m_columns[x].v[i];
                const ptrdiff_t end = x + m_addends < m_ahead ? x + m_addends : m_ahead;
                for (++x; x < end; ++x)
                    sum += m_columns[x].v[i];
                window.v[i].AddUnsigned(sum);
            }
        return window;
    }

    /// Whether the band held all medians of the row. `moves`: the columns' counts are those of the row above.
    template <bool moves>
    KELMORA_METHOD bool FilterRow(const uint8_t* leaving, const uint8_t* entering, uint8_t* dst)
    {
        const ptrdiff_t ahead = m_ahead, width = m_strip.width;
        if constexpr (moves) {
            for (ptrdiff_t x = 0; x < ahead; ++x)
                for (int i = 0; i < vectors; ++i)
                    MoveDown(x, i, leaving[4 * x], entering[4 * x]);
            leaving += 4 * ahead;
            entering += 4 * ahead;
        }

        Window window = FirstWindow();
        const I16 rank = I16{} + m_rank;
        const int top = m_base + kBand;
        // Counts fall with the thresholds: those above the rank are the first ones, at some pixels and at all.
        uint64_t some[vectors], all[vectors];
        for (int i = 0; i < vectors; ++i)
            all[i] = ~(some[i] = 0);
        Counts first = {}; // the column that leaves the window
        for (ptrdiff_t x = 0; x < width; ++x) {
            int value = top;
            for (int i = 0; i < vectors; ++i) {
                U8 last;
                if constexpr (moves)
                    last = MoveDown(x + ahead, i, leaving[4 * x], entering[4 * x]);
                else
                    last = m_columns[x + ahead].v[i];
                window.v[i].AddSigned(last - first.v[i]);
                first.v[i] = m_columns[x].v[i];
                const uint64_t above = window.v[i].Above(rank);
                some[i] |= above;
                all[i] &= above;
                value -= CountOf(above);
            }
            dst[4 * x] = static_cast<uint8_t>(value);
        }

        m_least = m_most = top;
        for (int i = 0; i < vectors; ++i) {
            m_least -= CountOf(some[i]);
            m_most -= CountOf(all[i]);
        }
        return !IsBelow() && !IsBeyond();
    }

    /// Whether the last row had medians that are at most the lowest threshold.
    KELMORA_METHOD bool IsBelow() const { return m_least == m_base; }

    /// Whether it had medians above the highest one, which may be more than the next value.
    KELMORA_METHOD bool IsBeyond() const { return m_most == m_base + kBand && m_base != kHighestBase; }

    /// How far to move the band after a row that it did not hold; 0 where that cannot help. Medians mostly go on
    /// the way that they went, so it moves nearly as far as it can.
    KELMORA_METHOD int Shift() const
    {
        if (IsBelow() == IsBeyond())
            return 0;
        const int room = IsBelow() ? m_base + kBand - 1 - m_most : m_least - m_base - 1;
        const int shift = room - room / 8;
        return IsBelow() ? -shift : shift;
    }

    const MedianStrip& m_strip;
    Counts* const m_steps;
    Counts* const m_columns;
    const ptrdiff_t m_ahead;   ///< columns of a window behind its first
    const ptrdiff_t m_addends; ///< columns whose counts may be added before they are widened
    const int16_t m_rank;
    const int m_price; ///< rows that a move must have saved before the next
    int m_base = 0;    ///< the lowest threshold
    int m_least = 0, m_most = 0;
};

template <int thresholds>
int FindRows(const MedianBand& band)
{
    return BandRows<thresholds / kVectorBytes>(band).Run();
}

} // namespace

const MedianBandKernels kMedianBandKernels = {FindRows<MedianBandKernels::kNarrow>,
                                              FindRows<MedianBandKernels::kWide>};

#else

const MedianBandKernels kMedianBandKernels = {nullptr, nullptr};

#endif

} // namespace kelmora::KELMORA_VARIANT

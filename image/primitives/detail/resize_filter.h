#pragma once

// Planes: rows first, then columns, in double.

#include <algorithm>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/resize_job.h"
#include "image/primitives/detail/resize_rows.h"
#include "image/primitives/detail/resize_taps.h"

namespace kelmora::px::resizing {

/// The taps of all pixels along an axis.
template <class Kernel>
class TapTable {
public:
    explicit TapTable(const Axis& axis)
        : m_first(axis.size), m_weights(std::int64_t{axis.size} * Kernel::kTaps)
    {
        if (!IsThere())
            return;
        for (int i = 0; i < axis.size; ++i)
            m_first.Values()[i] = Kernel::Place(axis.PositionOf(i), axis.source,
                                                m_weights.Values() + std::ptrdiff_t{i} * Kernel::kTaps);
    }

    bool IsThere() const { return m_first.Values() && m_weights.Values(); }
    const int* Firsts() const { return m_first.Values(); }
    int First(int i) const { return m_first.Values()[i]; }
    const double* Weights(int i) const { return m_weights.Values() + std::ptrdiff_t{i} * Kernel::kTaps; }

private:
    Table<int> m_first;
    Table<double> m_weights;
};

/// Pixels that stand before and behind a source row as copies of its ends, so that taps need no test.
inline constexpr int kPad = 3;

template <class L, class T>
void LoadPaddedRow(const T* from, int width, double* row)
{
    const std::int64_t values = std::int64_t{width} * L::channels;
    LoadRow(from, values, row);
    for (int i = 1; i <= kPad * L::channels; ++i) {
        row[-i] = row[(L::channels - i % L::channels) % L::channels];
        row[values + i - 1] = row[values - L::channels + (i - 1) % L::channels];
    }
}

/// Sums go from the first tap to the last in both passes.
template <class Kernel>
void FilterRow(const double* row, const TapTable<Kernel>& taps, int size, double* __restrict out)
{
    for (int x = 0; x < size; ++x, ++out) {
        const double* p = row + taps.First(x);
        const double* w = taps.Weights(x);
        double sum = p[0] * w[0];
        for (int k = 1; k < Kernel::kTaps; ++k)
            sum += p[k] * w[k];
        *out = sum;
    }
}

template <int taps>
void CombineRows(const double* const* rows, const double* weights, std::int64_t first, int count,
                 double* __restrict acc)
{
    const double* p[taps];
    double w[taps];
    for (int k = 0; k < taps; ++k) {
        p[k] = rows[k] + first;
        w[k] = weights[k];
    }
    for (int i = 0; i < count; ++i) {
        double sum = p[0][i] * w[0];
        for (int k = 1; k < taps; ++k)
            sum += p[k][i] * w[k];
        acc[i] = sum;
    }
}

template <class L, class Kernel, class T, class Round>
PxStatus Filter(const Job<T>& job, Round round)
{
    static_assert(L::channels == 1);
    constexpr int kTaps = Kernel::kTaps;
    const std::int64_t values = std::int64_t{job.x.size} * L::channels;
    const TapTable<Kernel> across(job.x);
    const TapTable<Kernel> down(job.y);
    const Table<double> padded((std::int64_t{job.x.source} + 2 * kPad) * L::channels);
    const Table<double> ring(values * kTaps); // source row i, filtered, stands in place i % kTaps
    if (!across.IsThere() || !down.IsThere() || !padded.Values() || !ring.Values())
        return pxNoMemory;

    double* row = padded.Values() + kPad * L::channels;
    int held[kTaps];
    std::fill_n(held, kTaps, -1);
    for (int y = 0; y < job.y.size; ++y) {
        const double* rows[kTaps];
        for (int k = 0; k < kTaps; ++k) {
            const int i = std::clamp(down.First(y) + k, 0, job.y.source - 1);
            double* place = ring.Values() + values * (i % kTaps);
            if (held[i % kTaps] != i) {
                LoadPaddedRow<L>(Row(job.src, job.srcStep, i), job.x.source, row);
                FilterRow(row, across, job.x.size, place);
                held[i % kTaps] = i;
            }
            rows[k] = place;
        }
        T* to = Row(job.dst, job.dstStep, y);
        double acc[kStretch];
        for (std::int64_t first = 0; first < values; first += kStretch) {
            const int count = static_cast<int>(std::min<std::int64_t>(kStretch, values - first));
            CombineRows<kTaps>(rows, down.Weights(y), first, count, acc);
            StoreValues(acc, count, to + first, round);
        }
    }
    return pxOk;
}

} // namespace kelmora::px::resizing

#pragma once

// Float pictures with four channels: rows first, then columns, in double.

#include <algorithm>
#include <cstdint>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/detail/resize_filter.h"
#include "image/primitives/detail/resize_job.h"
#include "image/primitives/resize_kernels.h"

namespace kelmora::px::resizing {

/// Columns in a strip of floats: the rows that it is made of stay in the nearest caches.
inline constexpr int kFloatStrip = 384;

/// Working space for `count` doubles that begins with a cache line, which the widest vectors then do not straddle.
class Lines {
public:
    explicit Lines(std::int64_t count) : m_table(count + kLine) {}

    /// Null when there is no memory.
    double* Values() const
    {
        double* const values = m_table.Values();
        const auto over = reinterpret_cast<std::uintptr_t>(values) / sizeof(double) % kLine;
        return values ? values + (kLine - over) % kLine : nullptr;
    }

private:
    static constexpr int kLine = 64 / sizeof(double);

    Table<double> m_table;
};

/// Where the strip that begins in column `x` ends: it lies inside of the hole's columns or beside them.
inline int StripEnd(const Job<float>& job, int x)
{
    int end = std::min(x + kFloatStrip, job.x.size);
    for (const int edge : {job.hole.x, job.hole.x + job.hole.width})
        if (edge > x && edge < end)
            end = edge;
    return end;
}

/// The source rows of a strip, filtered across.
template <class Kernel>
class FilteredRows {
public:
    FilteredRows(const Job<float>& job, const TapTable<Kernel>& across)
        : m_job(job), m_across(across), m_padded(std::int64_t{WidestOf(job, across)} * 8),
          m_ring(std::int64_t{kRows} * kFloatStrip * 4)
    {
    }

    bool IsThere() const { return m_padded.Values() && m_ring.Values(); }

    void BeginStrip(int x, int end)
    {
        m_x = x;
        m_count = end - x;
        std::fill_n(m_held, kRows, -1);
    }

    /// Row `i`, which is below those that were asked for before or among the last kTaps of them.
    const double* Row(int i)
    {
        if (m_held[i % kRows] != i)
            MakePair(i);
        return Place(i);
    }

private:
    static constexpr int kTaps = Kernel::kTaps;
    /// Row i stands in place i % kRows. Two are made at a time, the second of them ahead of its use.
    static constexpr int kRows = kTaps + 1;

    /// Source pixels of a strip, at most.
    static int WidestOf(const Job<float>& job, const TapTable<Kernel>& across)
    {
        int widest = 0;
        for (int x = 0; across.IsThere() && x < job.x.size; x = StripEnd(job, x))
            widest = std::max(widest, across.First(StripEnd(job, x) - 1) + kTaps - across.First(x));
        return widest;
    }

    double* Place(int i) const { return m_ring.Values() + std::ptrdiff_t{i % kRows} * kFloatStrip * 4; }

    const float* SourceRow(int i) const
    {
        return px::Row(m_job.src, m_job.srcStep, std::min(i, m_job.y.source - 1));
    }

    /// Rows `i` and `i` + 1; below the last one there is a copy of it.
    void MakePair(int i)
    {
        const std::ptrdiff_t inside = std::ptrdiff_t{std::max(m_across.First(m_x), 0)} * 4;
        WidenPadded(SourceRow(i), SourceRow(i + 1));
        m_loops.acrossFloats({m_padded.Values(),
                              {Place(i), Place(i + 1)},
                              m_count,
                              m_across.Firsts() + m_x,
                              m_across.Weights(m_x),
                              kTaps,
                              {SourceRow(i + 2) + inside, SourceRow(i + 3) + inside}});
        m_held[i % kRows] = i;
        m_held[(i + 1) % kRows] = i + 1;
    }

    /// All that the strip's taps lie on; outside of the rows there are their ends.
    void WidenPadded(const float* one, const float* other)
    {
        const int first = m_across.First(m_x), end = m_across.First(m_x + m_count - 1) + kTaps;
        const int begin = std::clamp(first, 0, m_job.x.source - 1);
        const int last = std::clamp(end, begin + 1, m_job.x.source);
        double* const inner = m_padded.Values() + std::ptrdiff_t{begin - first} * 8;
        double* const behind = inner + std::ptrdiff_t{last - begin} * 8;
        m_loops.widen(one + std::ptrdiff_t{begin} * 4, other + std::ptrdiff_t{begin} * 4, inner,
                      last - begin);
        for (double* pixel = m_padded.Values(); pixel < inner; pixel += 8)
            std::copy_n(inner, 8, pixel);
        for (double* pixel = behind; pixel < m_padded.Values() + std::ptrdiff_t{end - first} * 8; pixel += 8)
            std::copy_n(behind - 8, 8, pixel);
    }

    const Job<float>& m_job;
    const TapTable<Kernel>& m_across;
    const ResizeKernels& m_loops = ResizeKernelsFor(CurrentVariant());
    Lines m_padded, m_ring;
    int m_x = 0, m_count = 0;
    int m_held[kRows] = {};
};

/// From this size on no cache holds a result, so nothing is gained by keeping it in one.
inline constexpr std::int64_t kStreamedPixels = 1280 * 720;

template <class Kernel>
PxStatus FilterFloats(const Job<float>& job)
{
    const TapTable<Kernel> across(job.x);
    const TapTable<Kernel> down(job.y);
    FilteredRows<Kernel> rows(job, across);
    if (!across.IsThere() || !down.IsThere() || !rows.IsThere())
        return pxNoMemory;
    ResizeDownFloats sums = {};
    sums.taps = Kernel::kTaps;
    sums.levels = job.levels;
    // Who hides a part reads the rest soon, to draw on it.
    sums.streams = job.hole.width == 0 && std::int64_t{job.x.size} * job.y.size >= kStreamedPixels;
    const ResizeKernels& loops = ResizeKernelsFor(CurrentVariant());
    for (int x = 0, end; x < job.x.size; x = end) {
        end = StripEnd(job, x);
        const bool hidden = x >= job.hole.x && end <= job.hole.x + job.hole.width;
        rows.BeginStrip(x, end);
        sums.values = (end - x) * 4;
        for (int y = 0; y < job.y.size; ++y) {
            if (hidden && y >= job.hole.y && y < job.hole.y + job.hole.height)
                continue;
            for (int k = 0; k < Kernel::kTaps; ++k) {
                sums.rows[k] = rows.Row(std::clamp(down.First(y) + k, 0, job.y.source - 1));
                sums.weights[k] = down.Weights(y)[k];
            }
            sums.dst = Row(job.dst, job.dstStep, y) + std::ptrdiff_t{x} * 4;
            loops.downFloats(sums);
        }
    }
    if (sums.streams)
        loops.endStreams();
    return pxOk;
}

/// What is there of the result, cut to 0 to 1, what is no number to 0.
inline void CutToLevels(const Job<float>& job)
{
    for (int y = 0; y < job.y.size; ++y) {
        LooseFloat* const row = Loose(Row(job.dst, job.dstStep, y));
        for (std::ptrdiff_t i = 0; i < std::ptrdiff_t{job.x.size} * 4; ++i) {
            const float positive = row[i].v > 0.0f ? row[i].v : 0.0f;
            row[i] = positive < 1.0f ? positive : 1.0f;
        }
    }
}

} // namespace kelmora::px::resizing

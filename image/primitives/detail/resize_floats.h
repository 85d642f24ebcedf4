#pragma once

// Float pictures with four channels: rows first, then columns, in double.

#include <algorithm>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/detail/resize_filter.h"
#include "image/primitives/detail/resize_job.h"
#include "image/primitives/resize_kernels.h"

namespace kelmora::px::resizing {

/// Columns in a strip of floats: the rows that it is made of stay in the nearest caches.
inline constexpr int kFloatStrip = 256;

/// Pixels `first` to `end` - 1 of a row as doubles; those outside it are its ends.
inline void WidenPadded(const ResizeKernels& loops, const float* row, int width, int first, int end,
                        double* to)
{
    const int begin = std::clamp(first, 0, width - 1), last = std::clamp(end, begin + 1, width);
    double* const inner = to + std::ptrdiff_t{begin - first} * 4;
    double* const behind = inner + std::ptrdiff_t{last - begin} * 4;
    loops.widen(row + std::ptrdiff_t{begin} * 4, inner, (last - begin) * 4);
    for (double* pixel = to; pixel < inner; pixel += 4)
        std::copy_n(inner, 4, pixel);
    for (double* pixel = behind; pixel < to + std::ptrdiff_t{end - first} * 4; pixel += 4)
        std::copy_n(behind - 4, 4, pixel);
}

template <class Kernel>
PxStatus FilterFloats(const Job<float>& job)
{
    constexpr int kTaps = Kernel::kTaps;
    const ResizeKernels& loops = ResizeKernelsFor(CurrentVariant());
    const TapTable<Kernel> across(job.x);
    const TapTable<Kernel> down(job.y);
    if (!across.IsThere() || !down.IsThere())
        return pxNoMemory;
    const int strip = std::min(kFloatStrip, job.x.size);
    int most = 0; // source pixels of a strip
    for (int x = 0; x < job.x.size; x += strip)
        most =
            std::max(most, across.Firsts()[std::min(x + strip, job.x.size) - 1] + kTaps - across.Firsts()[x]);
    const std::ptrdiff_t rowValues = std::ptrdiff_t{strip} * 4;
    const Table<double> padded(std::int64_t{most} * 4);
    const Table<double> ring(rowValues * kTaps); // source row i, filtered, stands in place i % kTaps
    if (!padded.Values() || !ring.Values())
        return pxNoMemory;

    for (int x = 0; x < job.x.size; x += strip) {
        const int count = std::min(strip, job.x.size - x);
        const int begin = across.Firsts()[x];
        const int end = across.Firsts()[x + count - 1] + kTaps;
        const bool hidden = x >= job.hole.x && x + count <= job.hole.x + job.hole.width;
        int held[kTaps];
        std::fill_n(held, kTaps, -1);
        for (int y = 0; y < job.y.size; ++y) {
            if (hidden && y >= job.hole.y && y < job.hole.y + job.hole.height)
                continue;
            ResizeDownFloats rows = {};
            rows.taps = kTaps;
            rows.dst = Row(job.dst, job.dstStep, y) + std::ptrdiff_t{x} * 4;
            rows.values = count * 4;
            rows.levels = job.levels;
            for (int k = 0; k < kTaps; ++k) {
                const int i = std::clamp(down.First(y) + k, 0, job.y.source - 1);
                double* const place = ring.Values() + rowValues * (i % kTaps);
                if (held[i % kTaps] != i) {
                    WidenPadded(loops, Row(job.src, job.srcStep, i), job.x.source, begin, end,
                                padded.Values());
                    loops.acrossFloats(
                        {padded.Values(), place, count, across.Firsts() + x, across.Weights(x), kTaps});
                    held[i % kTaps] = i;
                }
                rows.rows[k] = place;
                rows.weights[k] = down.Weights(y)[k];
            }
            loops.downFloats(rows);
        }
    }
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

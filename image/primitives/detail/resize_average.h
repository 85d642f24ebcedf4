#pragma once

// Each pixel of the result as the average of the area that it covers.

#include <algorithm>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/resize_job.h"
#include "image/primitives/detail/resize_rows.h"

namespace kelmora::px::resizing {

/// How much of pixel `i` lies between two edges.
inline double Coverage(int i, double begin, double end)
{
    return std::min(i + 1.0, end) - std::max(static_cast<double>(i), begin);
}

/// Sums, not averages: whole areas of bytes stay exact up to the one division at the end.
template <class L>
void SumAreas(const double* row, const Axis& axis, const double* edges, double* __restrict sums)
{
    for (int x = 0; x < axis.size; ++x, sums += L::channels) {
        double sum[L::channels] = {};
        for (int i = static_cast<int>(edges[x]); i < edges[x + 1]; ++i) {
            const double weight = Coverage(i, edges[x], edges[x + 1]);
            for (int c = 0; c < L::channels; ++c)
                sum[c] += weight * row[std::ptrdiff_t{i} * L::channels + c];
        }
        for (int c = 0; c < L::channels; ++c)
            sums[c] = sum[c];
    }
}

template <class L, class T, class Round>
PxStatus Average(const Job<T>& job, Round round)
{
    const std::int64_t sourceValues = std::int64_t{job.x.source} * L::channels;
    const std::int64_t values = std::int64_t{job.x.size} * L::channels;
    const Table<double> edges(std::int64_t{job.x.size} + 1);
    const Table<double> row(sourceValues);
    const Table<double> sums(values); // of the areas in source row `held`
    const Table<double> total(values);
    if (!edges.Values() || !row.Values() || !sums.Values() || !total.Values())
        return pxNoMemory;
    for (int x = 0; x <= job.x.size; ++x)
        edges.Values()[x] = job.x.EdgeOf(x);

    int held = -1;
    for (int y = 0; y < job.y.size; ++y) {
        const double begin = job.y.EdgeOf(y);
        const double end = job.y.EdgeOf(y + 1);
        double* __restrict acc = total.Values();
        const double* __restrict add = sums.Values();
        std::fill_n(acc, values, 0.0);
        for (int i = static_cast<int>(begin); i < end; ++i) {
            if (i != held) { // a row may lie in two areas
                LoadRow(Row(job.src, job.srcStep, i), sourceValues, row.Values());
                SumAreas<L>(row.Values(), job.x, edges.Values(), sums.Values());
                held = i;
            }
            const double weight = Coverage(i, begin, end);
            for (std::ptrdiff_t v = 0; v < values; ++v)
                acc[v] += weight * add[v];
        }
        for (std::ptrdiff_t x = 0; x < job.x.size; ++x) {
            const double area = (edges.Values()[x + 1] - edges.Values()[x]) * (end - begin);
            for (int c = 0; c < L::channels; ++c)
                acc[x * L::channels + c] /= area;
        }
        T* to = Row(job.dst, job.dstStep, y);
        for (std::int64_t first = 0; first < values; first += kStretch) {
            const int count = static_cast<int>(std::min<std::int64_t>(kStretch, values - first));
            StoreValues(acc + first, count, to + first, round);
        }
    }
    return pxOk;
}

} // namespace kelmora::px::resizing

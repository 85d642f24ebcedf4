#pragma once

// Bytes with more than one tap.
//
// Weights in 16384ths: sums across are whole numbers, exact as floats, which serve as well for the sums down. Those of
// two taps are exact.

#include <algorithm>
#include <cstring>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/detail/resize_job.h"
#include "image/primitives/detail/resize_taps.h"
#include "image/primitives/detail/rounding.h"
#include "image/primitives/resize_kernels.h"

namespace kelmora::px::resizing {

using u8 = std::uint8_t;

/// Columns in a strip: the rows that it is made of stay in the first cache.
inline constexpr int kStrip = 384;

inline constexpr int kWholeWeight = 16384;

/// The taps of all pixels along an axis.
template <class Kernel>
class WholeTaps {
public:
    explicit WholeTaps(const Axis& axis)
        : m_stride((axis.size + ResizeKernels::kBlock - 1) / ResizeKernels::kBlock * ResizeKernels::kBlock),
          m_first(m_stride), m_weights(std::int64_t{m_stride} * Kernel::kTaps)
    {
        if (!IsThere())
            return;
        for (int i = 0; i < m_stride; ++i) {
            double weights[Kernel::kTaps];
            // What fills the last block up repeats its last pixel.
            m_first.Values()[i] =
                Kernel::Place(axis.PositionOf(std::min(i, axis.size - 1)), axis.source, weights);
            int rest = kWholeWeight, largest = 0;
            for (int k = 0; k < Kernel::kTaps; ++k) {
                At(i, k) = static_cast<std::int16_t>(RoundEven(weights[k] * kWholeWeight));
                rest -= At(i, k);
                largest = weights[k] > weights[largest] ? k : largest;
            }
            At(i, largest) = static_cast<std::int16_t>(At(i, largest) + rest);
        }
    }

    bool IsThere() const { return m_first.Values() && m_weights.Values(); }
    const int* First() const { return m_first.Values(); }
    std::int16_t& At(int i, int tap) const
    {
        return m_weights.Values()[(std::ptrdiff_t{tap / 2} * m_stride + i) * 2 + tap % 2];
    }
    /// Two by two, a row of Stride() pairs for each two taps.
    const std::int16_t* Pairs() const { return m_weights.Values(); }
    int Stride() const { return m_stride; }

private:
    int m_stride;
    Table<int> m_first;
    Table<std::int16_t> m_weights;
};

/// Pixels `first` to `end` - 1 of a row; those outside it are its ends.
template <class L>
void CopyPadded(const u8* row, int width, int first, int end, u8* to)
{
    const int begin = std::clamp(first, 0, width), last = std::clamp(end, begin, width);
    u8* const inner = to + std::ptrdiff_t{begin - first} * L::channels;
    std::memcpy(inner, row + std::ptrdiff_t{begin} * L::channels,
                static_cast<std::size_t>(last - begin) * L::channels);
    for (int i = first; i < end; ++i)
        if (i < begin || i >= last)
            std::memcpy(to + std::ptrdiff_t{i - first} * L::channels,
                        row + std::ptrdiff_t{std::clamp(i, 0, width - 1)} * L::channels, L::channels);
}

/// One value per pixel, in plain order.
template <int taps>
void AcrossPlane(const ResizeAcross& across)
{
    for (int x = 0; x < across.count; ++x) {
        const u8* p = across.row + across.first[x];
        std::int32_t sum = 0;
        for (int k = 0; k < taps; ++k) {
            std::int16_t pair[2];
            std::memcpy(pair, across.weights + k / 2 * std::ptrdiff_t{across.stride} + x, sizeof pair);
            sum += p[k] * pair[k % 2];
        }
        across.out[x] = static_cast<float>(sum);
    }
}

template <int taps>
void DownPlane(const ResizeDown& down)
{
    for (int x = 0; x < down.count; ++x) {
        float sum = down.rows[0][x] * down.weights[0];
        for (int k = 1; k < taps; ++k)
            sum += down.rows[k][x] * down.weights[k];
        down.dst[x] = static_cast<u8>(RoundEven(std::clamp(static_cast<double>(sum), 0.0, 255.0)));
    }
}

template <class L, int taps>
ResizeKernels ByteLoops()
{
    ResizeKernels loops = ResizeKernelsFor(CurrentVariant());
    if constexpr (L::channels == 1) {
        loops.across = AcrossPlane<taps>;
        loops.down = DownPlane<taps>;
    }
    return loops;
}

template <class L, class Kernel>
PxStatus FilterBytes(const Job<u8>& job)
{
    constexpr int kTaps = Kernel::kTaps;
    constexpr int kSlack = 128; // bytes that the loops may read behind a row
    const ResizeKernels loops = ByteLoops<L, kTaps>();
    const WholeTaps<Kernel> across(job.x);
    const WholeTaps<Kernel> down(job.y);
    if (!across.IsThere() || !down.IsThere())
        return pxNoMemory;
    // The first strip may need as many source pixels as any other one, give or take a pixel.
    const int strip = std::min(kStrip, across.Stride());
    std::int64_t most = 0;
    for (int x = 0; x < job.x.size; x += strip)
        most = std::max<std::int64_t>(
            most, across.First()[std::min(x + strip, job.x.size) - 1] + kTaps - across.First()[x]);
    const std::int64_t rowValues = std::int64_t{strip} * L::channels;
    const Table<u8> padded(most * L::channels + kSlack);
    const Table<float> ring(rowValues * kTaps); // source row i, filtered, stands in place i % kTaps
    const Table<std::int32_t> first(strip);
    if (!padded.Values() || !ring.Values() || !first.Values())
        return pxNoMemory;

    for (int x = 0; x < job.x.size; x += strip) {
        const int count = std::min(strip, job.x.size - x);
        const int begin = across.First()[x];
        const int end = across.First()[x + count - 1] + kTaps;
        for (int i = 0; i < std::min(strip, across.Stride() - x); ++i)
            first.Values()[i] = across.First()[x + i] - begin;
        const bool inside = begin >= 0 && end <= job.x.source - kSlack / L::channels;
        const bool hidden = x >= job.hole.x && x + count <= job.hole.x + job.hole.width;
        int held[kTaps];
        std::fill_n(held, kTaps, -1);
        for (int y = 0; y < job.y.size; ++y) {
            if (hidden && y >= job.hole.y && y < job.hole.y + job.hole.height)
                continue;
            ResizeDown rows = {};
            rows.taps = kTaps;
            rows.dst = Row(job.dst, job.dstStep, y) + std::ptrdiff_t{x} * L::channels;
            rows.count = count;
            rows.ahead =
                Row(job.dst, job.dstStep, std::min(y + 1, job.y.size - 1)) + std::ptrdiff_t{x} * L::channels;
            for (int k = 0; k < kTaps; ++k) {
                const int i = std::clamp(down.First()[y] + k, 0, job.y.source - 1);
                float* const place = ring.Values() + rowValues * (i % kTaps);
                if (held[i % kTaps] != i) {
                    const u8* const row = Row(job.src, job.srcStep, i);
                    if (!inside)
                        CopyPadded<L>(row, job.x.source, begin, end, padded.Values());
                    const u8* const next = Row(job.src, job.srcStep, std::min(i + 1, job.y.source - 1));
                    loops.across({inside ? row + std::ptrdiff_t{begin} * L::channels : padded.Values(), place,
                                  count, first.Values(),
                                  reinterpret_cast<const std::int32_t*>(across.Pairs()) + x, across.Stride(),
                                  kTaps, next + std::ptrdiff_t{std::max(begin, 0)} * L::channels});
                    held[i % kTaps] = i;
                }
                rows.rows[k] = place;
                if constexpr (kTaps == 2)
                    rows.whole[k] = down.At(y, k);
                else
                    rows.weights[k] =
                        static_cast<float>(down.At(y, k)) / (static_cast<float>(kWholeWeight) * kWholeWeight);
            }
            loops.down(rows);
        }
    }
    return pxOk;
}

} // namespace kelmora::px::resizing

#include "image/primitives/resize.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/detail/rounding.h"
#include "image/primitives/memory.h"
#include "image/primitives/resize_kernels.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

/// Working space for `count` values.
template <class T>
class Table {
public:
    explicit Table(std::int64_t count)
        : m_values(static_cast<T*>(pxMalloc(count * static_cast<std::int64_t>(sizeof(T)))))
    {
    }
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;
    ~Table() { pxFree(m_values); }

    /// Null when there is no memory.
    T* Values() const { return m_values; }

private:
    T* m_values;
};

// --- one axis ----------------------------------------------------------------------------------------------

/// Where the pixels of the result lie in the region, along one axis.
struct Axis {
    int source;     ///< pixels of the region
    int size;       ///< of the result
    double factor;  ///< above 0, may be infinite
    double product; ///< the result's exact size

    int NearestOf(int i) const { return static_cast<int>(std::min(i / factor, source - 1.0)); }

    /// From 0 to the last pixel of the region, on which the last one of the result lands.
    double PositionOf(int i) const
    {
        if (!(product > 1.0))
            return 0.0;
        return std::min(static_cast<double>(i) * (source - 1.0) / (product - 1.0), source - 1.0);
    }

    /// Where the area of pixel `i` begins; the end of the one before.
    double EdgeOf(int i) const { return std::min(i / factor, static_cast<double>(source)); }
};

PxStatus MapAxis(int source, double factor, int mostPixels, Axis& axis)
{
    const double product = source * factor;
    // Cut before the cast: the product may be anything up to infinity.
    const int size = static_cast<int>(std::min(product + 1e-7, static_cast<double>(mostPixels)));
    if (size < 1 && product < 0.5)
        return pxResultTooSmall;
    axis = {source, std::max(size, 1), factor, product};
    return pxOk;
}

/// A resize that was found sound. The source begins with the region's first pixel.
template <class T>
struct Job {
    const T* src;
    int srcStep;
    T* dst;
    int dstStep;
    Axis x, y;
    PxRect hole = {0, 0, 0, 0}; ///< pixels of the result that nobody will look at
};

// --- nearest neighbour -------------------------------------------------------------------------------------

/// Bytes are moved, not values: a float that is no number keeps its bits.
template <class L, class T>
PxStatus PickNearest(const Job<T>& job)
{
    constexpr std::size_t kBytes = L::channels * sizeof(T);
    const Table<std::ptrdiff_t> offsets(job.x.size);
    if (!offsets.Values())
        return pxNoMemory;
    for (int x = 0; x < job.x.size; ++x)
        offsets.Values()[x] = job.x.NearestOf(x) * static_cast<std::ptrdiff_t>(kBytes);
    for (int y = 0; y < job.y.size; ++y) {
        const auto* from = reinterpret_cast<const u8*>(Row(job.src, job.srcStep, job.y.NearestOf(y)));
        auto* to = reinterpret_cast<u8*>(Row(job.dst, job.dstStep, y));
        for (int x = 0; x < job.x.size; ++x, to += kBytes)
            std::memcpy(to, from + offsets.Values()[x], kBytes);
    }
    return pxOk;
}

// --- rows in and out ---------------------------------------------------------------------------------------

/// Values that pass through small arrays at once, in steps that the compiler makes vectors of.
constexpr int kStretch = 256;

void LoadRow(const u8* from, std::int64_t values, double* __restrict to)
{
    std::int32_t levels[kStretch];
    for (std::int64_t first = 0; first < values; first += kStretch) {
        const int count = static_cast<int>(std::min<std::int64_t>(kStretch, values - first));
        for (int i = 0; i < count; ++i)
            levels[i] = from[first + i];
        for (int i = 0; i < count; ++i)
            to[first + i] = levels[i];
    }
}

void LoadRow(const float* from, std::int64_t values, double* __restrict to)
{
    const LooseFloat* loose = Loose(from);
    for (std::int64_t i = 0; i < values; ++i)
        to[i] = static_cast<double>(loose[i].v);
}

/// To nearest, halves up, of values that are not below 0.
struct HalvesUp {
    std::int32_t operator()(double value) const
    {
        const double raised = value + 0.5;
        return static_cast<std::int32_t>(raised);
    }
};

struct Narrow {};

/// At most kStretch values. They fit in 16 bits: the weights of two axes add up to less than 3, signs aside.
template <class Round>
void StoreValues(const double* __restrict from, int count, u8* to, Round round)
{
    std::int32_t rounded[kStretch];
    std::int16_t levels[kStretch];
    for (int i = 0; i < count; ++i)
        rounded[i] = round(from[i]);
    for (int i = 0; i < count; ++i)
        levels[i] = static_cast<std::int16_t>(rounded[i]);
    for (int i = 0; i < count; ++i) {
        const std::int16_t positive = levels[i] > 0 ? levels[i] : std::int16_t{0};
        to[i] = static_cast<u8>(positive < 255 ? positive : std::int16_t{255});
    }
}

void StoreValues(const double* __restrict from, int count, float* to, Narrow)
{
    LooseFloat* loose = Loose(to);
    for (int i = 0; i < count; ++i)
        loose[i] = static_cast<float>(from[i]);
}

// --- area averaging ----------------------------------------------------------------------------------------

/// How much of pixel `i` lies between two edges.
double Coverage(int i, double begin, double end)
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

// --- kernels -----------------------------------------------------------------------------------------------
//
// Each writes the weights of its taps for a position and gives the pixel of the first one, which may lie
// outside the region.

/// `bits` of the weights' fraction; 0 for all that there are.
template <int bits>
struct LinearTaps {
    static constexpr int kTaps = 2;

    static int Place(double position, int source, double* weights)
    {
        int index = static_cast<int>(position);
        double right = position - index;
        if (index == source - 1) {
            --index;
            right = 1.0;
        }
        if constexpr (bits > 0) {
            constexpr double kOne = 1 << bits;
            right = std::floor(right * kOne + 0.5) / kOne;
        }
        weights[0] = 1.0 - right;
        weights[1] = right;
        return index;
    }
};

/// Catmull-Rom.
struct CubicTaps {
    static constexpr int kTaps = 4;

    static int Place(double position, int, double* weights)
    {
        const int index = static_cast<int>(position);
        const double t = position - index;
        weights[0] = ((-0.5 * t + 1.0) * t - 0.5) * t;
        weights[1] = (1.5 * t - 2.5) * t * t + 1.0;
        weights[2] = ((-1.5 * t + 2.0) * t + 0.5) * t;
        weights[3] = (0.5 * t - 0.5) * t * t;
        return index - 1;
    }
};

struct LanczosTaps {
    static constexpr int kTaps = 6;

    static int Place(double position, int, double* weights)
    {
        const int index = static_cast<int>(position);
        const double t = position - index;
        if (t <= 0.5)
            Weigh(t, weights);
        else {
            Weigh(1.0 - t, weights);
            std::reverse(weights, weights + kTaps);
        }
        return index - 2;
    }

private:
    /// sin(pi x) sin(pi x / 3) / x^2 at the distances x = t + 2, t + 1, ... t - 3, made to sum to 1. The
    /// first sine is the same for all taps but for its sign, so it cancels out. `t` is 0 to 0.5.
    static void Weigh(double t, double* weights)
    {
        constexpr double kPiThird = 1.04719755119659774615;
        constexpr double kSine = 0.86602540378443864676; // of pi / 3; the cosine is a half
        std::fill_n(weights, kTaps, 0.0);
        weights[2] = 1.0;
        if (!(t > 0.0))
            return;
        // Polynomials, because the last bits of the math library's sines depend on the platform.
        const double angle = t * kPiThird;
        const double s = angle * SineSeries(angle * angle);
        const double c = CosineSeries(angle * angle);
        // Times t, so that the nearest tap stays finite.
        const auto overSquare = [t](double sine, double x) { return sine * t / (x * x); };
        weights[0] = overSquare(kSine * c - 0.5 * s, t + 2.0);
        weights[1] = -overSquare(kSine * c + 0.5 * s, t + 1.0);
        weights[2] = s / t;
        weights[3] = overSquare(kSine * c - 0.5 * s, t - 1.0);
        weights[4] = -overSquare(kSine * c + 0.5 * s, t - 2.0);
        weights[5] = overSquare(s, t - 3.0); // half a turn on, and of the other sign
        double sum = 0.0;
        for (int i = 0; i < kTaps; ++i)
            sum += weights[i];
        for (int i = 0; i < kTaps; ++i)
            weights[i] /= sum;
    }

    /// sin(a) / a from the square of an angle up to pi / 6.
    static double SineSeries(double square)
    {
        double sum = 1.0;
        for (int n = 14; n > 0; n -= 2)
            sum = 1.0 - square / (n * (n + 1)) * sum;
        return sum;
    }

    static double CosineSeries(double square)
    {
        double sum = 1.0;
        for (int n = 15; n > 0; n -= 2)
            sum = 1.0 - square / (n * (n + 1)) * sum;
        return sum;
    }
};

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
    int First(int i) const { return m_first.Values()[i]; }
    const double* Weights(int i) const { return m_weights.Values() + std::ptrdiff_t{i} * Kernel::kTaps; }

private:
    Table<int> m_first;
    Table<double> m_weights;
};

// --- the two passes ----------------------------------------------------------------------------------------

/// Pixels that stand before and behind a source row as copies of its ends, so that taps need no test.
constexpr int kPad = 3;

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

typedef double Pair __attribute__((vector_size(16)));

inline Pair LoadPair(const double* from)
{
    Pair pair;
    std::memcpy(&pair, from, sizeof pair);
    return pair;
}

inline void StorePair(double* to, Pair pair)
{
    std::memcpy(to, &pair, sizeof pair);
}

/// Sums go from the first tap to the last in both passes.
template <class L, class Kernel>
void FilterRow(const double* row, const TapTable<Kernel>& taps, int size, double* __restrict out)
{
    for (int x = 0; x < size; ++x, out += L::channels) {
        const double* p = row + std::ptrdiff_t{taps.First(x)} * L::channels;
        const double* w = taps.Weights(x);
        if constexpr (L::channels == 4) {
            Pair low = LoadPair(p) * w[0];
            Pair high = LoadPair(p + 2) * w[0];
            for (int k = 1; k < Kernel::kTaps; ++k) {
                low += LoadPair(p + 4 * k) * w[k];
                high += LoadPair(p + 4 * k + 2) * w[k];
            }
            StorePair(out, low);
            StorePair(out + 2, high);
        } else {
            double sum = p[0] * w[0];
            for (int k = 1; k < Kernel::kTaps; ++k)
                sum += p[k] * w[k];
            out[0] = sum;
        }
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
                FilterRow<L>(row, across, job.x.size, place);
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

// --- bytes with more than two taps -----------------------------------------------------------------------------
//
// Weights in 16384ths: sums across are whole numbers, exact as floats, which serve as well for the sums down.

/// Columns in a strip: the rows that it is made of stay in the first cache.
constexpr int kStrip = 384;

constexpr int kWholeWeight = 16384;

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
    if constexpr (L::channels == 4)
        return ResizeKernelsFor(CurrentVariant());
    else
        return {AcrossPlane<taps>, DownPlane<taps>};
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
            for (int k = 0; k < kTaps; ++k) {
                const int i = std::clamp(down.First()[y] + k, 0, job.y.source - 1);
                float* const place = ring.Values() + rowValues * (i % kTaps);
                if (held[i % kTaps] != i) {
                    const u8* const row = Row(job.src, job.srcStep, i);
                    if (!inside)
                        CopyPadded<L>(row, job.x.source, begin, end, padded.Values());
                    loops.across({inside ? row + std::ptrdiff_t{begin} * L::channels : padded.Values(), place,
                                  count, first.Values(),
                                  reinterpret_cast<const std::int32_t*>(across.Pairs()) + x, across.Stride(),
                                  kTaps});
                    held[i % kTaps] = i;
                }
                rows.rows[k] = place;
                rows.weights[k] =
                    static_cast<float>(down.At(y, k)) / (static_cast<float>(kWholeWeight) * kWholeWeight);
            }
            loops.down(rows);
        }
    }
    return pxOk;
}

// --- the choice --------------------------------------------------------------------------------------------

template <class L>
PxStatus Run(const Job<u8>& job, int interpolation)
{
    switch (interpolation) {
    case pxNearest:
        return PickNearest<L>(job);
    case pxLinear:
        // Sums of 14-bit weights are exact in double: 8 + 14 + 14 bits.
        return Filter<L, LinearTaps<14>>(job, HalvesUp{});
    case pxCubic:
        return FilterBytes<L, CubicTaps>(job);
    case pxLanczos:
        return FilterBytes<L, LanczosTaps>(job);
    default:
        return Average<L>(job, HalvesUp{});
    }
}

template <class L>
PxStatus Run(const Job<float>& job, int interpolation)
{
    switch (interpolation) {
    case pxNearest:
        return PickNearest<L>(job);
    case pxLinear:
        return Filter<L, LinearTaps<0>>(job, Narrow{});
    case pxCubic:
        return Filter<L, CubicTaps>(job, Narrow{});
    case pxLanczos:
        return Filter<L, LanczosTaps>(job, Narrow{});
    default:
        return Average<L>(job, Narrow{});
    }
}

bool IsServed(int interpolation, double xFactor, double yFactor)
{
    switch (interpolation) {
    case pxNearest:
    case pxLinear:
    case pxCubic:
    case pxLanczos:
        return true;
    case pxAverage:
        return xFactor <= 1.0 && yFactor <= 1.0;
    default:
        return false;
    }
}

/// What a picture whose smaller side has `side` pixels is resized with.
int Lowered(int interpolation, int side)
{
    if (side < 2)
        return pxNearest;
    if (interpolation == pxLanczos && side < 8)
        interpolation = pxCubic;
    if (interpolation == pxCubic && side < 4)
        interpolation = pxLinear;
    return interpolation;
}

template <class L, class T>
PxStatus Resize(const T* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region, T* dst,
                int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor, int interpolation,
                const PxRect& hole = {0, 0, 0, 0})
{
    if (!src || !dst)
        return pxNullPointer;
    for (const PxStatus status :
         {CheckSize(srcWidth, srcHeight), CheckSize(region.width, region.height),
          CheckSize(dstWidth, dstHeight), CheckStep(srcStep, srcWidth, L::channels * sizeof(T)),
          CheckStep(dstStep, dstWidth, L::channels * sizeof(T))})
        if (status != pxOk)
            return status;
    if (region.x < 0 || region.x >= srcWidth || region.y < 0 || region.y >= srcHeight)
        return pxRegionOutsideSource;
    if (!(xFactor > 0.0) || !(yFactor > 0.0))
        return pxBadFactor;
    if (!IsServed(interpolation, xFactor, yFactor))
        return pxBadInterpolation;

    Job<T> job = {};
    job.src = Row(src, srcStep, region.y) + std::ptrdiff_t{region.x} * L::channels;
    job.srcStep = srcStep;
    job.dst = dst;
    job.dstStep = dstStep;
    job.hole = hole;
    const int width = std::min(region.width, srcWidth - region.x);
    const int height = std::min(region.height, srcHeight - region.y);
    if (const PxStatus status = MapAxis(width, xFactor, dstWidth, job.x))
        return status;
    if (const PxStatus status = MapAxis(height, yFactor, dstHeight, job.y))
        return status;
    return Run<L>(job, Lowered(interpolation, std::min(srcWidth, srcHeight)));
}

} // namespace

PxStatus pxResize_8u_C1(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                        u8* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                        int interpolation)
{
    return Resize<C1>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation);
}

PxStatus pxResize_8u_C4(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                        u8* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                        int interpolation)
{
    return Resize<C4>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation);
}

PxStatus pxResizeAround_8u_C4(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                              u8* dst, int dstStep, int dstWidth, int dstHeight, double xFactor,
                              double yFactor, int interpolation, const PxRect& hole)
{
    return Resize<C4>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation, hole);
}

PxStatus pxResize_32f_C1(const float* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                         float* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                         int interpolation)
{
    return Resize<C1>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation);
}

PxStatus pxResize_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                         float* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                         int interpolation)
{
    return Resize<C4>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation);
}

} // namespace kelmora

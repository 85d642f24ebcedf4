#include "tests/reference/resize.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace kelmora::reference {
namespace {

/// One source pixel's share in a result, along one axis.
struct Tap {
    int index; ///< in the region
    double weight;
};

using Taps = std::vector<Tap>;

double Sinc(double x)
{
    if (x == 0.0)
        return 1.0;
    const double angle = 3.14159265358979323846 * x;
    return std::sin(angle) / angle;
}

/// Catmull-Rom.
double CubicWeight(double distance)
{
    const double d = std::fabs(distance);
    if (d < 1.0)
        return 1.5 * d * d * d - 2.5 * d * d + 1.0;
    if (d < 2.0)
        return -0.5 * d * d * d + 2.5 * d * d - 4.0 * d + 2.0;
    return 0.0;
}

double LanczosWeight(double distance)
{
    return std::fabs(distance) < 3.0 ? Sinc(distance) * Sinc(distance / 3.0) : 0.0;
}

/// The taps from `before` pixels before the position's own to `after` behind it, with weights that sum to 1.
Taps TapsAround(double position, int size, int before, int after, double (*weightAt)(double))
{
    const int own = std::min(static_cast<int>(position), size - 1);
    Taps taps;
    double sum = 0.0;
    for (int i = own - before; i <= own + after; ++i) {
        const double weight = weightAt(position - i);
        sum += weight;
        taps.push_back({std::clamp(i, 0, size - 1), weight});
    }
    for (Tap& tap : taps)
        tap.weight /= sum;
    return taps;
}

Taps LinearTaps(double position, int size)
{
    int index = static_cast<int>(position);
    double weight = position - index;
    if (index >= size - 1) {
        index = size - 2;
        weight = 1.0;
    }
    return {{std::max(index, 0), 1.0 - weight}, {index + 1, weight}};
}

/// Every pixel with the part of it that lies in pixel i of the result.
Taps AverageTaps(int i, int size, double factor)
{
    const double from = i / factor, to = std::min((i + 1) / factor, static_cast<double>(size));
    Taps taps;
    for (int pixel = 0; pixel < size; ++pixel) {
        const double covered = std::min(to, pixel + 1.0) - std::max(from, static_cast<double>(pixel));
        if (covered > 0.0)
            taps.push_back({pixel, covered / (to - from)});
    }
    return taps;
}

double PositionOf(int i, int size, double factor)
{
    const double length = size * factor;
    if (!(length > 1.0))
        return 0.0;
    return std::min(i * (size - 1.0) / (length - 1.0), size - 1.0);
}

Taps TapsOf(int i, int size, double factor, int interpolation)
{
    switch (interpolation) {
    case kNearest:
        return {{static_cast<int>(std::min(i / factor, size - 1.0)), 1.0}};
    case kLinear:
        return LinearTaps(PositionOf(i, size, factor), size);
    case kCubic:
        return TapsAround(PositionOf(i, size, factor), size, 1, 2, CubicWeight);
    case kAverage:
        return AverageTaps(i, size, factor);
    default:
        return TapsAround(PositionOf(i, size, factor), size, 2, 3, LanczosWeight);
    }
}

/// The weight of the right one of two linear taps, 16384 for 1.
std::int64_t FixedWeight(const Taps& taps)
{
    return static_cast<std::int64_t>(std::floor(taps[1].weight * 16384.0 + 0.5));
}

/// Linear bytes: a weighted sum of four, with 28 bits of weight, rounded once.
double LinearByte(const Picture& src, ResizeRegion region, const Taps& across, const Taps& down, int c)
{
    const std::int64_t right = FixedWeight(across), lower = FixedWeight(down);
    const std::int64_t xWeights[2] = {16384 - right, right}, yWeights[2] = {16384 - lower, lower};
    std::int64_t sum = 0;
    for (std::size_t j = 0; j < 2; ++j)
        for (std::size_t i = 0; i < 2; ++i)
            sum += xWeights[i] * yWeights[j]
                * static_cast<std::int64_t>(src.At(region.x + across[i].index, region.y + down[j].index, c));
    return static_cast<double>((sum + (1 << 27)) >> 28);
}

/// Weights to the nearest 16384th, ties to even, of which the largest takes what is missing to 1.
void MakeWhole(Taps& taps)
{
    double rest = 16384.0;
    Tap* largest = &taps.front();
    for (Tap& tap : taps)
        largest = tap.weight > largest->weight ? &tap : largest;
    for (Tap& tap : taps) {
        tap.weight = std::nearbyint(tap.weight * 16384.0);
        rest -= tap.weight;
    }
    largest->weight += rest;
    for (Tap& tap : taps)
        tap.weight /= 16384.0;
}

double WeightedSum(const Picture& src, ResizeRegion region, const Taps& across, const Taps& down, int c)
{
    double sum = 0.0;
    for (const Tap& y : down)
        for (const Tap& x : across)
            if (x.weight != 0.0 && y.weight != 0.0)
                sum += x.weight * y.weight * src.At(region.x + x.index, region.y + y.index, c);
    return src.floats ? sum : std::clamp(sum, 0.0, 255.0);
}

} // namespace

int LoweredInterpolation(int width, int height, int interpolation)
{
    const int smaller = std::min(width, height);
    if (smaller < 8 && interpolation == kLanczos)
        interpolation = kCubic;
    if (smaller < 4 && interpolation == kCubic)
        interpolation = kLinear;
    return smaller < 2 ? kNearest : interpolation;
}

int ResizedLength(int size, double factor, int limit)
{
    const double length = size * factor;
    if (length + 1e-7 < 1.0)
        return length < 0.5 ? 0 : 1;
    return static_cast<int>(std::min(length + 1e-7, static_cast<double>(limit)));
}

void Resize(const Picture& src, ResizeRegion region, Picture& dst, double xFactor, double yFactor,
            int interpolation)
{
    interpolation = LoweredInterpolation(src.width, src.height, interpolation);
    region.width = std::min(region.width, src.width - region.x);
    region.height = std::min(region.height, src.height - region.y);
    const int width = ResizedLength(region.width, xFactor, dst.width);
    const int height = ResizedLength(region.height, yFactor, dst.height);
    const bool roundsLinear = interpolation == kLinear && !src.floats;
    const bool isWhole = !src.floats && (interpolation == kCubic || interpolation == kLanczos);
    for (int y = 0; y < height; ++y) {
        Taps down = TapsOf(y, region.height, yFactor, interpolation);
        if (isWhole)
            MakeWhole(down);
        for (int x = 0; x < width; ++x) {
            Taps across = TapsOf(x, region.width, xFactor, interpolation);
            if (isWhole)
                MakeWhole(across);
            for (int c = 0; c < dst.channels; ++c)
                dst.At(x, y, c) = roundsLinear ? LinearByte(src, region, across, down, c)
                                               : WeightedSum(src, region, across, down, c);
        }
    }
}

} // namespace kelmora::reference

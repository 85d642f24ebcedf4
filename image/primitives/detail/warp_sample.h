#pragma once

// What both kinds of warps are made of: sampling a pixel between pixels, and the checks.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/detail/rounding.h"
#include "image/primitives/resize.h"
#include "image/primitives/warp_map.h"

namespace kelmora::px::warping {

using u8 = std::uint8_t;

struct Taps {
    int index[4]; ///< cut to the bounds
    double weight[4];
};

inline Taps CubicTaps(double position, int low, int high)
{
    const int index = static_cast<int>(std::floor(position));
    const double t = position - index;
    Taps taps;
    for (int k = 0; k < 4; ++k)
        taps.index[k] = std::clamp(index - 1 + k, low, high);
    taps.weight[0] = ((-0.5 * t + 1.0) * t - 0.5) * t;
    taps.weight[1] = (1.5 * t - 2.5) * t * t + 1.0;
    taps.weight[2] = ((-1.5 * t + 2.0) * t + 0.5) * t;
    taps.weight[3] = (0.5 * t - 0.5) * t * t;
    return taps;
}

/// A tap between two pixels.
struct Pair {
    int index[2]; ///< the second one cut to the bounds
    int weight;   ///< of the second, in 256ths
    float weightFloat;
};

inline Pair PairFor(int whole, int fraction, float fractionFloat, int low, int high)
{
    if (whole < low)
        return {{low, low}, 0, 0.0f};
    if (whole >= high)
        return {{high, high}, 0, 0.0f};
    return {{whole, whole + 1}, fraction, fractionFloat};
}

template <class T>
Pair PairOf(double position, int low, int high);

template <>
inline Pair PairOf<u8>(double position, int low, int high)
{
    const double fixed = RoundEven(position * 256.0);
    const double whole = std::floor(fixed / 256.0);
    return PairFor(static_cast<int>(whole), static_cast<int>(fixed - whole * 256.0), 0.0f, low, high);
}

template <>
inline Pair PairOf<float>(double position, int low, int high)
{
    const int whole = static_cast<int>(position);
    return PairFor(whole, 0, static_cast<float>(position - whole), low, high);
}

template <class T>
struct Source {
    const T* pixels;
    int step;
    WarpBounds bounds;

    template <class L>
    const T* Pixel(int x, int y) const
    {
        return Row(pixels, step, y) + std::ptrdiff_t{x} * L::channels;
    }
};

template <class L>
void SampleLinear(const Source<u8>& src, const Pair& x, const Pair& y, u8* to)
{
    const u8* p[4] = {src.Pixel<L>(x.index[0], y.index[0]), src.Pixel<L>(x.index[1], y.index[0]),
                      src.Pixel<L>(x.index[0], y.index[1]), src.Pixel<L>(x.index[1], y.index[1])};
    for (int c = 0; c < L::channels; ++c) {
        const int upper = p[0][c] * (256 - x.weight) + p[1][c] * x.weight;
        const int lower = p[2][c] * (256 - x.weight) + p[3][c] * x.weight;
        to[c] = static_cast<u8>((upper * (256 - y.weight) + lower * y.weight + 32768) >> 16);
    }
}

template <class L>
void SampleLinear(const Source<float>& src, const Pair& x, const Pair& y, float* to)
{
    const LooseFloat* p[4] = {
        Loose(src.Pixel<L>(x.index[0], y.index[0])), Loose(src.Pixel<L>(x.index[1], y.index[0])),
        Loose(src.Pixel<L>(x.index[0], y.index[1])), Loose(src.Pixel<L>(x.index[1], y.index[1]))};
    const auto lerp = [](float a, float b, float f) { return a * (1.0f - f) + b * f; };
    for (int c = 0; c < L::channels; ++c)
        Loose(to)[c] =
            lerp(lerp(p[0][c], p[1][c], x.weightFloat), lerp(p[2][c], p[3][c], x.weightFloat), y.weightFloat);
}

inline u8 Rounded(double value, u8)
{
    return static_cast<u8>(RoundEven(std::clamp(value, 0.0, 255.0)));
}

inline float Rounded(double value, float)
{
    return static_cast<float>(value);
}

inline double ValueOf(const u8* p)
{
    return *p;
}

inline double ValueOf(const float* p)
{
    return static_cast<double>(Loose(p)->v);
}

/// The colour at a position, which is cut to the bounds.
template <class L, class T>
void SampleAt(const Source<T>& src, double x, double y, int interpolation, T* to)
{
    const WarpBounds& bounds = src.bounds;
    x = std::clamp(x, static_cast<double>(bounds.left), static_cast<double>(bounds.right));
    y = std::clamp(y, static_cast<double>(bounds.top), static_cast<double>(bounds.bottom));
    switch (interpolation) {
    case pxNearest: {
        const double column = x + 0.5, line = y + 0.5;
        std::memcpy(to, src.template Pixel<L>(static_cast<int>(column), static_cast<int>(line)),
                    L::channels * sizeof(T));
        return;
    }
    case pxCubic: {
        const Taps across = CubicTaps(x, bounds.left, bounds.right);
        const Taps down = CubicTaps(y, bounds.top, bounds.bottom);
        for (int c = 0; c < L::channels; ++c) {
            double sum = 0.0;
            for (int j = 0; j < 4; ++j) {
                double line = 0.0;
                for (int i = 0; i < 4; ++i)
                    line +=
                        across.weight[i] * ValueOf(src.template Pixel<L>(across.index[i], down.index[j]) + c);
                sum += down.weight[j] * line;
            }
            const T value = Rounded(sum, T{});
            std::memcpy(to + c, &value, sizeof value);
        }
        return;
    }
    default:
        SampleLinear<L>(src, PairOf<T>(x, bounds.left, bounds.right), PairOf<T>(y, bounds.top, bounds.bottom),
                        to);
    }
}

inline bool IsServed(int interpolation)
{
    return interpolation == pxNearest || interpolation == pxLinear || interpolation == pxCubic;
}

/// The checks that all warps share; `bounds` becomes the part of the source region that lies in the picture.
template <class L, class T>
PxStatus Check(const T* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion, const T* dst,
               int dstStep, const PxRect& dstRegion, const void* coeffs, int interpolation,
               WarpBounds& bounds)
{
    if (!src || !dst || !coeffs)
        return pxNullPointer;
    for (const PxStatus status :
         {CheckSize(srcWidth, srcHeight), CheckSize(srcRegion.width, srcRegion.height),
          CheckSize(dstRegion.width, dstRegion.height),
          CheckStep(srcStep, srcWidth, L::channels * sizeof(T))})
        if (status != pxOk)
            return status;
    if (srcRegion.x < 0 || srcRegion.x >= srcWidth || srcRegion.y < 0 || srcRegion.y >= srcHeight
        || dstRegion.x < 0 || dstRegion.y < 0)
        return pxRegionOutsideSource;
    const std::int64_t dstRight = std::int64_t{dstRegion.x} + dstRegion.width;
    const std::int64_t dstBottom = std::int64_t{dstRegion.y} + dstRegion.height;
    if (dstRight > std::numeric_limits<int>::max() || dstBottom > std::numeric_limits<int>::max())
        return pxBadSize;
    if (const PxStatus status = CheckStep(dstStep, static_cast<int>(dstRight), L::channels * sizeof(T)))
        return status;
    if (!IsServed(interpolation))
        return pxBadInterpolation;
    bounds = {srcRegion.x, srcRegion.y, srcRegion.x + std::min(srcRegion.width, srcWidth - srcRegion.x) - 1,
              srcRegion.y + std::min(srcRegion.height, srcHeight - srcRegion.y) - 1};
    return pxOk;
}

/// Whether the kernels can address the source: offsets in 31 bits, positions in 256ths likewise.
template <class L, class T>
bool IsWithinReach(const Source<T>& src)
{
    constexpr int kMost = std::numeric_limits<int>::max();
    return L::channels == 4 && src.bounds.right < kMost / 512 && src.bounds.bottom < kMost / 512
        && (std::int64_t{src.bounds.bottom} + 1) * src.step <= kMost;
}

/// Whether there are two rows and columns between which to interpolate.
inline bool HasPairs(const WarpBounds& bounds)
{
    return bounds.left < bounds.right && bounds.top < bounds.bottom;
}

/// So many rows before they are sampled, pixels are asked for.
inline constexpr int kRowsAhead = 4;

/// Bytes from a pixel to the one that lies `x` columns and `y` rows further on, which may be any numbers. Where it
/// lies below, the row below that one is needed, too.
inline std::ptrdiff_t BytesAhead(double x, double y, const WarpBounds& bounds, std::ptrdiff_t step,
                                 int pixelBytes)
{
    const auto whole = [](double way, int most) {
        const double cut = way > -most ? std::min(way, static_cast<double>(most)) : -most; // no number: back
        return static_cast<std::int64_t>(RoundEven(cut));
    };
    const std::int64_t down = whole(y, bounds.bottom);
    return static_cast<std::ptrdiff_t>((down > 0 ? down + 1 : down) * step
                                       + whole(x, bounds.right) * pixelBytes);
}

/// Under rotation a row runs through many source rows: columns of this width keep them in the first cache.
inline constexpr int kStrip = 256;

template <class Work>
void ForStrips(const PxRect& region, Work work)
{
    const int right = region.x + region.width;
    for (int x = region.x; x < right; x += kStrip) {
        const WarpSpan columns = {x, std::min(right - x, kStrip) + x};
        for (int y = region.y; y < region.y + region.height; ++y)
            work(columns, y);
        if (right - x <= kStrip)
            return;
    }
}

} // namespace kelmora::px::warping

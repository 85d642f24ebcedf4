#include "image/primitives/warp.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/detail/rounding.h"
#include "image/primitives/memory.h"
#include "image/primitives/separable_warp.h"
#include "image/primitives/warp_kernels.h"
#include "image/primitives/warp_map.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

// --- one pixel, any interpolation ---------------------------------------------------------------------------

struct Taps {
    int index[4]; ///< cut to the bounds
    double weight[4];
};

Taps CubicTaps(double position, int low, int high)
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

Pair PairFor(int whole, int fraction, float fractionFloat, int low, int high)
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
Pair PairOf<u8>(double position, int low, int high)
{
    const double fixed = RoundEven(position * 256.0);
    const double whole = std::floor(fixed / 256.0);
    return PairFor(static_cast<int>(whole), static_cast<int>(fixed - whole * 256.0), 0.0f, low, high);
}

template <>
Pair PairOf<float>(double position, int low, int high)
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

u8 Rounded(double value, u8)
{
    return static_cast<u8>(RoundEven(std::clamp(value, 0.0, 255.0)));
}

float Rounded(double value, float)
{
    return static_cast<float>(value);
}

double ValueOf(const u8* p)
{
    return *p;
}

double ValueOf(const float* p)
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

// --- checks -------------------------------------------------------------------------------------------------

bool IsServed(int interpolation)
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
bool HasPairs(const WarpBounds& bounds)
{
    return bounds.left < bounds.right && bounds.top < bounds.bottom;
}

/// Under rotation a row runs through many source rows: columns of this width keep them in the first cache.
constexpr int kStrip = 256;

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

// --- affine -------------------------------------------------------------------------------------------------

template <class L, class T>
void AffinePixels(const Source<T>& src, const AffineMap& map, T* dst, int dstStep, const PxRect& region,
                  int interpolation)
{
    for (int y = region.y; y < region.y + region.height; ++y) {
        const WarpSpan span = InsideSpan({region.x, region.x + region.width}, y, map, src.bounds);
        T* to = Row(dst, dstStep, y) + std::ptrdiff_t{span.begin} * L::channels;
        const double rowX = map.RowX(y), rowY = map.RowY(y);
        for (int x = span.begin; x < span.end; ++x, to += L::channels)
            SampleAt<L>(src, map.X(x, rowX), map.Y(x, rowY), interpolation, to);
    }
}

/// A shift's weights are the same all over, so they are not those of the positions one by one.
template <class L, class T>
void ShiftPixels(const Source<T>& src, const AffineMap& map, T* dst, int dstStep, const PxRect& region)
{
    const auto split = [](double shift) {
        if constexpr (std::is_same_v<T, u8>)
            return RoundEven(shift * 256.0) / 256.0;
        else
            return shift;
    };
    const double shiftX = split(map.x0), shiftY = split(map.y0);
    const double wholeX = std::floor(shiftX), wholeY = std::floor(shiftY);
    const auto pair = [](int at, double whole, double shift, int low, int high) {
        return PairFor(static_cast<int>(at + whole), static_cast<int>((shift - whole) * 256.0),
                       static_cast<float>(shift - whole), low, high);
    };
    const WarpBounds& bounds = src.bounds;
    for (int y = region.y; y < region.y + region.height; ++y) {
        const WarpSpan span = InsideSpan({region.x, region.x + region.width}, y, map, bounds);
        T* to = Row(dst, dstStep, y) + std::ptrdiff_t{span.begin} * L::channels;
        for (int x = span.begin; x < span.end; ++x, to += L::channels)
            SampleLinear<L>(src, pair(x, wholeX, shiftX, bounds.left, bounds.right),
                            pair(y, wholeY, shiftY, bounds.top, bounds.bottom), to);
    }
}

template <class L, class T>
void AffineRows(const WarpImage& image, const AffineMap& map, T* dst, int dstStep, const PxRect& region)
{
    const WarpKernels& kernels = WarpKernelsFor(CurrentVariant());
    const auto kernel = std::is_same_v<T, u8> ? kernels.affineBytes : kernels.affineFloats;
    ForStrips(region, [&](WarpSpan columns, int y) {
        const WarpSpan span = InsideSpan(columns, y, map, image.bounds);
        if (span.IsEmpty())
            return;
        kernel({image,
                Row(dst, dstStep, y) + std::ptrdiff_t{span.begin} * L::channels,
                span,
                {map.xx, map.RowX(y)},
                {map.yx, map.RowY(y)}});
    });
}

/// False when there is no memory.
template <class L, class T>
bool SeparableRows(const WarpImage& image, const AffineMap& map, T* dst, int dstStep, const PxRect& region)
{
    constexpr bool kFloats = !std::is_same_v<T, u8>;
    constexpr int kAlignment = 64;
    void* const memory = pxMalloc(SeparableWarp::WorkBytes(region.width, kFloats) + kAlignment);
    if (!memory)
        return false;
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    void* const work = static_cast<u8*>(memory) + (kAlignment - address % kAlignment);
    SeparableWarp warp(image, map, {region.x, region.x + region.width}, kFloats, work);
    for (int y = region.y; y < region.y + region.height; ++y)
        if (const WarpSpan span = warp.Covered(y); !span.IsEmpty())
            warp.Row(y, Row(dst, dstStep, y) + std::ptrdiff_t{span.begin} * L::channels);
    pxFree(memory);
    return true;
}

template <class L, class T>
PxStatus WarpAffine(const T* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion, T* dst,
                    int dstStep, const PxRect& dstRegion, const double coeffs[2][3], int interpolation)
{
    Source<T> source = {src, srcStep, {}};
    if (const PxStatus status = Check<L>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep,
                                         dstRegion, coeffs, interpolation, source.bounds))
        return status;
    AffineMap map;
    if (const PxStatus status = InvertAffine(coeffs, map))
        return status;

    if (interpolation == pxLinear && IsWithinReach<L>(source)) {
        const WarpImage image = {src, srcStep, source.bounds};
        if (SeparableWarp::Serves(map, image)) {
            if (SeparableRows<L>(image, map, dst, dstStep, dstRegion))
                return pxOk;
        } else if (HasPairs(source.bounds)) {
            AffineRows<L>(image, map, dst, dstStep, dstRegion);
            return pxOk;
        }
    }
    if (interpolation == pxLinear && map.isShift)
        ShiftPixels<L>(source, map, dst, dstStep, dstRegion);
    else
        AffinePixels<L>(source, map, dst, dstStep, dstRegion, interpolation);
    return pxOk;
}

// --- perspective --------------------------------------------------------------------------------------------

struct Point {
    double x, y;
};

/// Four corners in their order around.
struct Quad {
    Point corners[4];
    bool isFinite; ///< all of the region lies before the horizon
};

/// Where the corners of the bounds come to lie.
Quad QuadOf(const double coeffs[3][3], const WarpBounds& bounds)
{
    const int x[4] = {bounds.left, bounds.right, bounds.right, bounds.left};
    const int y[4] = {bounds.top, bounds.top, bounds.bottom, bounds.bottom};
    Quad quad = {};
    int before = 0, behind = 0;
    for (int k = 0; k < 4; ++k) {
        const auto form = [&](int i) { return coeffs[i][0] * x[k] + (coeffs[i][1] * y[k] + coeffs[i][2]); };
        const double w = form(2);
        const double q = w != 0.0 ? 1.0 / w : 0.0; // no matter which: not finite below
        quad.corners[k] = {form(0) * q, form(1) * q};
        before += w > 0.0;
        behind += w < 0.0;
    }
    quad.isFinite = before == 4 || behind == 4;
    for (const Point& corner : quad.corners)
        quad.isFinite = quad.isFinite && std::isfinite(corner.x) && std::isfinite(corner.y);
    return quad;
}

double Distance(Point a, Point b)
{
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

/// The point of the line from a to b, which may be a point itself, that is nearest to p.
Point NearestOnEdge(Point a, Point b, Point p)
{
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double square = dx * dx + dy * dy;
    const double along = (p.x - a.x) * dx + (p.y - a.y) * dy;
    const double t = square > 0.0 ? std::clamp(along / square, 0.0, 1.0) : 0.0;
    return {a.x + t * dx, a.y + t * dy};
}

/// The lines through a quadrangle's edges, outward.
class Outline {
public:
    explicit Outline(const Quad& quad)
    {
        double area = 0.0;
        for (int k = 0; k < 4; ++k) {
            const Point a = quad.corners[k], b = quad.corners[(k + 1) % 4];
            area += a.x * b.y - b.x * a.y;
        }
        for (int k = 0; k < 4; ++k) {
            const Point a = quad.corners[k], b = quad.corners[(k + 1) % 4];
            const double length = (area < 0.0 ? -1.0 : 1.0) * Distance(a, b);
            if (length == 0.0)
                continue; // no direction, and nothing that the other edges do not know
            m_lines[k] = {(b.y - a.y) / length, (a.x - b.x) / length, 0.0};
            m_lines[k].offset = -(m_lines[k].x * a.x + m_lines[k].y * a.y);
        }
    }

    /// No point of the quadrangle is nearer than this to p, but for rounding.
    double LeastDistance(Point p) const
    {
        double most = 0.0;
        for (const Line& line : m_lines)
            most = std::max(most, line.x * p.x + line.y * p.y + line.offset);
        return most;
    }

private:
    struct Line {
        double x, y, offset;
    };
    Line m_lines[4] = {};
};

Point NearestOn(const Quad& quad, Point p)
{
    Point nearest = quad.corners[0];
    for (int k = 0; k < 4; ++k) {
        const Point candidate = NearestOnEdge(quad.corners[k], quad.corners[(k + 1) % 4], p);
        if (Distance(candidate, p) < Distance(nearest, p))
            nearest = candidate;
    }
    return nearest;
}

/// The whole numbers of `within` that are no further than `reach` from the range of two values.
WarpSpan Near(double low, double high, double reach, WarpSpan within)
{
    const auto cut = [&](double value) {
        return static_cast<int>(
            std::clamp(value, static_cast<double>(within.begin), static_cast<double>(within.end)));
    };
    return {cut(std::ceil(low - reach)), cut(std::floor(high + reach) + 1.0)};
}

/// So far from the quadrangle pixels may be touched: the smoothed ring, and what the slack lets in.
constexpr double kReach = 1.5;

/// What of the region is near the quadrangle's extent.
PxRect RegionNear(const Quad& quad, const PxRect& region)
{
    if (!quad.isFinite)
        return region;
    Point low = quad.corners[0], high = low;
    for (const Point& corner : quad.corners) {
        low = {std::min(low.x, corner.x), std::min(low.y, corner.y)};
        high = {std::max(high.x, corner.x), std::max(high.y, corner.y)};
    }
    const WarpSpan columns = Near(low.x, high.x, kReach, {region.x, region.x + region.width});
    const WarpSpan rows = Near(low.y, high.y, kReach, {region.y, region.y + region.height});
    return {columns.begin, rows.begin, columns.end - columns.begin, rows.end - rows.begin};
}

/// The pixels of row y that are near the quadrangle: near its part between the rows within reach.
WarpSpan ColumnsNear(const Quad& quad, int y, WarpSpan columns)
{
    if (!quad.isFinite)
        return columns;
    const double top = y - kReach, bottom = y + kReach;
    double low = std::numeric_limits<double>::infinity(), high = -low;
    for (int k = 0; k < 4; ++k) {
        Point a = quad.corners[k], b = quad.corners[(k + 1) % 4];
        if (a.y > b.y)
            std::swap(a, b);
        if (b.y < top || a.y > bottom)
            continue;
        const auto at = [&](double line) { return a.x + (b.x - a.x) * ((line - a.y) / (b.y - a.y)); };
        const double first = a.y < top ? at(top) : a.x;
        const double last = b.y > bottom ? at(bottom) : b.x;
        low = std::min({low, first, last});
        high = std::max({high, first, last});
    }
    return low <= high ? Near(low, high, kReach, columns) : WarpSpan{0, 0};
}

/// Positions of a row's pixels.
struct Forms {
    double u[2], v[2], w[2];

    Forms(const PerspectiveMap& map, double y)
        : u{map.rows[0][0], map.rows[0][1] * y + map.rows[0][2]},
          v{map.rows[1][0], map.rows[1][1] * y + map.rows[1][2]}, w{map.rows[2][0],
                                                                    map.rows[2][1] * y + map.rows[2][2]}
    {
    }

    Point At(double x) const
    {
        const double depth = x * w[0] + w[1];
        const double q =
            depth != 0.0 ? 1.0 / depth : std::numeric_limits<double>::quiet_NaN(); // on the horizon
        return {(x * u[0] + u[1]) * q, (x * v[0] + v[1]) * q};
    }
};

bool Holds(const WarpBounds& bounds, Point position)
{
    return bounds.HoldsX(position.x) && bounds.HoldsY(position.y);
}

void MixIn(const u8* colour, double share, u8* to)
{
    const int weight = static_cast<int>(RoundEven(share * 256.0));
    for (int c = 0; c < 4; ++c)
        to[c] = static_cast<u8>((to[c] * (256 - weight) + colour[c] * weight + 128) >> 8);
}

void MixIn(const float* colour, double share, float* to)
{
    for (int c = 0; c < 4; ++c) {
        const double under = static_cast<double>(Loose(to)[c].v), over = static_cast<double>(colour[c]);
        Loose(to)[c] = static_cast<float>(under * (1.0 - share) + over * share);
    }
}

/// One row of a perspective warp.
template <class T>
class PerspectiveWarp {
public:
    PerspectiveWarp(const Source<T>& src, const PerspectiveMap& map, const Quad& quad, int interpolation,
                    bool smooth)
        : m_src(src), m_map(map), m_quad(quad), m_outline(quad), m_interpolation(interpolation),
          m_smooth(smooth),
          m_fast(interpolation == pxLinear && IsWithinReach<C4>(src) && HasPairs(src.bounds)),
          m_kernel(std::is_same_v<T, u8> ? WarpKernelsFor(CurrentVariant()).perspectiveBytes
                                         : WarpKernelsFor(CurrentVariant()).perspectiveFloats)
    {
    }

    void Row(WarpSpan columns, int y, T* row) const
    {
        columns = ColumnsNear(m_quad, y, columns);
        const Forms forms(m_map, y);
        // What lies inside stands in one piece.
        WarpSpan inside = columns;
        const auto isOutside = [&](int x) { return !Holds(m_src.bounds, forms.At(x)); };
        while (!inside.IsEmpty() && isOutside(inside.begin))
            ++inside.begin;
        while (!inside.IsEmpty() && isOutside(inside.end - 1))
            --inside.end;
        if (!inside.IsEmpty())
            Fill(forms, inside, row);
        if (!m_smooth)
            return;
        for (int x = columns.begin; x < inside.begin; ++x)
            Smooth(x, y, row);
        for (int x = inside.IsEmpty() ? columns.end : inside.end; x < columns.end; ++x)
            Smooth(x, y, row);
    }

private:
    void Fill(const Forms& forms, WarpSpan span, T* row) const
    {
        if (m_fast) {
            PerspectiveRow job = {{m_src.pixels, m_src.step, m_src.bounds},
                                  row + std::ptrdiff_t{span.begin} * 4,
                                  span,
                                  {},
                                  {},
                                  {}};
            std::copy_n(forms.u, 2, job.u);
            std::copy_n(forms.v, 2, job.v);
            std::copy_n(forms.w, 2, job.w);
            m_kernel(job);
            return;
        }
        for (int x = span.begin; x < span.end; ++x)
            if (const Point at = forms.At(x); Holds(m_src.bounds, at))
                SampleAt<C4>(m_src, at.x, at.y, m_interpolation, row + std::ptrdiff_t{x} * 4);
    }

    void Smooth(int x, int y, T* row) const
    {
        const Point pixel = {static_cast<double>(x), static_cast<double>(y)};
        if (m_outline.LeastDistance(pixel) > 1.001)
            return;
        const Point border = NearestOn(m_quad, pixel);
        const double share = 1.0 - Distance(border, pixel);
        if (!(share > 0.0))
            return;
        const Point at = Forms(m_map, border.y).At(border.x);
        if (!std::isfinite(at.x) || !std::isfinite(at.y))
            return;
        T colour[4];
        SampleAt<C4>(m_src, at.x, at.y, m_interpolation, colour);
        MixIn(colour, share, row + std::ptrdiff_t{x} * 4);
    }

    const Source<T>& m_src;
    const PerspectiveMap& m_map;
    const Quad& m_quad;
    Outline m_outline;
    int m_interpolation;
    bool m_smooth;
    bool m_fast;
    void (*m_kernel)(const PerspectiveRow&);
};

template <class T>
PxStatus WarpQuad(const T* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion, T* dst,
                  int dstStep, const PxRect& dstRegion, const double coeffs[3][3], std::uint32_t code)
{
    const bool smooth = (code & pxSmoothEdges) != 0;
    const int interpolation = static_cast<int>(code & ~pxSmoothEdges);
    Source<T> source = {src, srcStep, {}};
    if (const PxStatus status = Check<C4>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep,
                                          dstRegion, coeffs, interpolation, source.bounds))
        return status;
    PerspectiveMap map;
    if (const PxStatus status = InvertPerspective(coeffs, map))
        return status;

    const Quad quad = QuadOf(coeffs, source.bounds);
    const PerspectiveWarp<T> warp(source, map, quad, interpolation, smooth && quad.isFinite);
    ForStrips(RegionNear(quad, dstRegion),
              [&](WarpSpan columns, int y) { warp.Row(columns, y, Row(dst, dstStep, y)); });
    return pxOk;
}

/// Twice the area of the triangle, with the sign of its turning.
double Cross(Point a, Point b, Point c)
{
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

/// Whether all corners turn the same way, and visibly so for a quadrangle of this extent.
bool IsConvex(const Point (&p)[4])
{
    constexpr double kLeastTurn = 1e-10;
    constexpr double kMostExtent = 1e50;
    double extent = 0.0;
    for (const Point& corner : p) {
        if (!(std::fabs(corner.x) <= kMostExtent && std::fabs(corner.y) <= kMostExtent))
            return false;
        extent = std::max({extent, std::fabs(corner.x - p[0].x), std::fabs(corner.y - p[0].y)});
    }
    int left = 0, right = 0;
    for (int k = 0; k < 4; ++k) {
        const double turn = Cross(p[k], p[(k + 1) % 4], p[(k + 2) % 4]);
        left += turn > kLeastTurn * extent * extent;
        right += turn < -kLeastTurn * extent * extent;
    }
    return left == 4 || right == 4;
}

} // namespace

PxStatus pxQuadTransform(const PxRect& rect, const double quad[4][2], double coeffs[3][3])
{
    if (!quad || !coeffs)
        return pxNullPointer;
    if (rect.width < 1 || rect.height < 1)
        return pxEmptyQuadRect;
    Point p[4];
    for (int k = 0; k < 4; ++k)
        p[k] = {quad[k][0], quad[k][1]};
    if (rect.width == 1 || rect.height == 1 || !IsConvex(p))
        return pxDegenerateQuad;

    // From the unit square (Heckbert, "Fundamentals of Texture Mapping and Image Warping", 1989), after the
    // rectangle became one.
    const Point sum = {p[0].x - p[1].x + p[2].x - p[3].x, p[0].y - p[1].y + p[2].y - p[3].y};
    const Point d1 = {p[1].x - p[2].x, p[1].y - p[2].y};
    const Point d2 = {p[3].x - p[2].x, p[3].y - p[2].y};
    const double determinant = d1.x * d2.y - d2.x * d1.y;
    const double g = (sum.x * d2.y - d2.x * sum.y) / determinant;
    const double h = (d1.x * sum.y - sum.x * d1.y) / determinant;
    const double unit[3][3] = {{p[1].x - p[0].x + g * p[1].x, p[3].x - p[0].x + h * p[3].x, p[0].x},
                               {p[1].y - p[0].y + g * p[1].y, p[3].y - p[0].y + h * p[3].y, p[0].y},
                               {g, h, 1.0}};
    for (int i = 0; i < 3; ++i) {
        coeffs[i][0] = unit[i][0] / (rect.width - 1.0);
        coeffs[i][1] = unit[i][1] / (rect.height - 1.0);
        coeffs[i][2] = unit[i][2] - coeffs[i][0] * rect.x - coeffs[i][1] * rect.y;
    }
    return pxOk;
}

PxStatus pxWarpAffine_8u_C1(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion,
                            u8* dst, int dstStep, const PxRect& dstRegion, const double coeffs[2][3],
                            int interpolation)
{
    return WarpAffine<C1>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep, dstRegion, coeffs,
                          interpolation);
}

PxStatus pxWarpAffine_8u_C4(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion,
                            u8* dst, int dstStep, const PxRect& dstRegion, const double coeffs[2][3],
                            int interpolation)
{
    return WarpAffine<C4>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep, dstRegion, coeffs,
                          interpolation);
}

PxStatus pxWarpAffine_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep,
                             const PxRect& srcRegion, float* dst, int dstStep, const PxRect& dstRegion,
                             const double coeffs[2][3], int interpolation)
{
    return WarpAffine<C4>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep, dstRegion, coeffs,
                          interpolation);
}

PxStatus pxWarpQuad_8u_C4(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion,
                          u8* dst, int dstStep, const PxRect& dstRegion, const double coeffs[3][3],
                          std::uint32_t interpolation)
{
    return WarpQuad(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep, dstRegion, coeffs,
                    interpolation);
}

PxStatus pxWarpQuad_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep,
                           const PxRect& srcRegion, float* dst, int dstStep, const PxRect& dstRegion,
                           const double coeffs[3][3], std::uint32_t interpolation)
{
    return WarpQuad(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep, dstRegion, coeffs,
                    interpolation);
}

} // namespace kelmora

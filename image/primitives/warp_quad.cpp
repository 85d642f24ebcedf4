#include "image/primitives/warp.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/detail/rounding.h"
#include "image/primitives/detail/warp_sample.h"
#include "image/primitives/warp_kernels.h"
#include "image/primitives/warp_map.h"

namespace kelmora {
namespace {

using namespace px;
using namespace px::warping;

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

double SquareDistance(Point a, Point b)
{
    return (a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y);
}

double Distance(Point a, Point b)
{
    return std::sqrt(SquareDistance(a, b));
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
    double least = SquareDistance(nearest, p);
    for (int k = 0; k < 4; ++k) {
        const Point candidate = NearestOnEdge(quad.corners[k], quad.corners[(k + 1) % 4], p);
        const double square = SquareDistance(candidate, p);
        if (square < least
            && std::sqrt(square) < std::sqrt(least)) { // the first of those as near as rounding tells
            nearest = candidate;
            least = square;
        }
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

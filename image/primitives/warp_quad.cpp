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

/// Where the corners of the bounds come to lie, widened by `slack`.
Quad QuadOf(const double coeffs[3][3], const WarpBounds& bounds, double slack)
{
    const double left = bounds.left - slack, right = bounds.right + slack;
    const double top = bounds.top - slack, bottom = bounds.bottom + slack;
    const double x[4] = {left, right, right, left};
    const double y[4] = {top, top, bottom, bottom};
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

/// Whether both are finite and no corner of one is further than nearly a pixel from the other's.
bool AreNear(const Quad& a, const Quad& b)
{
    constexpr double kMost = 0.9;
    bool near = a.isFinite && b.isFinite;
    for (int k = 0; k < 4; ++k)
        near = near && Distance(a.corners[k], b.corners[k]) <= kMost;
    return near;
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

/// Pixels that are nearer to the quadrangle than this are smoothed; a little is for rounding.
constexpr double kRing = 1.001;

/// The quadrangle's edges, the lines through them outward.
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
            WarpEdge& edge = m_edges[k];
            edge = {a.x, a.y, b.x - a.x, b.y - a.y, 0.0, 0.0, 0.0, 0.0};
            edge.square = edge.wayX * edge.wayX + edge.wayY * edge.wayY;
            const double length = (area < 0.0 ? -1.0 : 1.0) * Distance(a, b);
            if (length == 0.0)
                continue; // no direction, and nothing that the other edges do not know
            edge.outwardX = (b.y - a.y) / length;
            edge.outwardY = (a.x - b.x) / length;
            edge.outwardFrom = -(edge.outwardX * a.x + edge.outwardY * a.y);
            m_perOutwardX[k] = edge.outwardX != 0.0 ? 1.0 / edge.outwardX : 0.0;
            m_isExact = m_isExact && std::fabs(edge.outwardFrom) < kMostExact;
        }
    }

    /// No point of the quadrangle is nearer than this to p, but for rounding.
    double LeastDistance(Point p) const
    {
        double most = 0.0;
        for (const WarpEdge& edge : m_edges)
            most = std::max(most, edge.outwardX * p.x + edge.outwardY * p.y + edge.outwardFrom);
        return most;
    }

    /// The point of the edges, which may be points themselves, that is nearest to p.
    Point NearestTo(Point p) const
    {
        Point nearest = {m_edges[0].x, m_edges[0].y};
        double least = SquareDistance(nearest, p);
        for (const WarpEdge& edge : m_edges) {
            const double along = (p.x - edge.x) * edge.wayX + (p.y - edge.y) * edge.wayY;
            const double t = edge.square > 0.0 ? std::clamp(along / edge.square, 0.0, 1.0) : 0.0;
            const Point candidate = {edge.x + t * edge.wayX, edge.y + t * edge.wayY};
            const double square = SquareDistance(candidate, p);
            if (square < least
                && std::sqrt(square) < std::sqrt(least)) { // the first of those as near as rounding tells
                nearest = candidate;
                least = square;
            }
        }
        return nearest;
    }

    /// Those of row y for which LeastDistance can be kRing and less.
    WarpSpan RingOf(int y, WarpSpan columns) const
    {
        double low = columns.begin, high = columns.end - 1.0;
        for (int k = 0; k < 4 && m_isExact; ++k) {
            const WarpEdge& edge = m_edges[k];
            const double room = kRing + kMargin - (edge.outwardY * y + edge.outwardFrom);
            if (edge.outwardX > 0.0)
                high = std::min(high, room * m_perOutwardX[k]);
            else if (edge.outwardX < 0.0)
                low = std::max(low, room * m_perOutwardX[k]);
            else if (room < 0.0)
                return {columns.end, columns.end};
        }
        return low <= high ? Near(low, high, 0.0, columns) : WarpSpan{columns.end, columns.end};
    }

    bool IsExact() const { return m_isExact; } ///< RingOf tells
    const WarpEdge* Edges() const { return m_edges; }

private:
    static constexpr double kMargin = 0.01;    ///< more than what is lost to rounding below
    static constexpr double kMostExact = 1e12; ///< so far from the origin

    WarpEdge m_edges[4];
    double m_perOutwardX[4] = {};
    bool m_isExact = true;
};

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

/// A perspective warp, row by row.
template <class T>
class PerspectiveWarp {
public:
    PerspectiveWarp(const Source<T>& src, T* dst, int dstStep, const PerspectiveMap& map, const Quad& quad,
                    bool isTight, int interpolation, bool smooth, const float* light)
        : m_src(src), m_map(map), m_quad(quad), m_outline(quad), m_isTight(isTight && m_outline.IsExact()),
          m_interpolation(interpolation), m_smooth(smooth), m_fast(IsFast(src, interpolation)),
          m_kernels(WarpKernelsFor(CurrentVariant()))
    {
        m_ring.src = {src.pixels, src.step, src.bounds, 0, light};
        m_ring.dst = dst;
        m_ring.dstStep = dstStep;
        m_ring.edges = m_outline.Edges();
        m_ring.map = map.rows;
        m_ring.count = 0;
    }

    /// Whether the loops serve it, which alone know a light.
    static bool IsFast(const Source<T>& src, int interpolation)
    {
        return interpolation == pxLinear && IsWithinReach<C4>(src) && HasPairs(src.bounds);
    }

    void Row(WarpSpan columns, int y)
    {
        const WarpSpan ring = m_outline.RingOf(y, columns);
        columns = m_isTight ? ring : ColumnsNear(m_quad, y, columns);
        if (columns.IsEmpty())
            return;
        WarpSpan inside = Fill(columns, y); // it stands in one piece
        if (!m_smooth)
            return;
        if (inside.IsEmpty())
            inside = {ring.end, ring.end};
        Collect({ring.begin, std::min(ring.end, inside.begin)}, y);
        Collect({std::max(ring.begin, inside.end), ring.end}, y);
    }

    /// After the last row.
    void End()
    {
        if (m_fast) {
            for (int i = m_ring.count; i % WarpKernels::kBlock != 0; ++i) {
                m_ring.x[i] = m_ring.x[i - 1];
                m_ring.y[i] = m_ring.y[i - 1];
            }
            (std::is_same_v<T, u8> ? m_kernels.ringBytes : m_kernels.ringFloats)(m_ring);
        } else {
            for (int i = 0; i < m_ring.count; ++i)
                Smooth({m_ring.x[i], m_ring.y[i]});
        }
        m_ring.count = 0;
    }

private:
    static constexpr int kRowsPerHint = 16; ///< the way ahead changes slowly

    T* Pixel(int x, int y) const
    {
        return px::Row(static_cast<T*>(m_ring.dst), static_cast<int>(m_ring.dstStep), y)
            + std::ptrdiff_t{x} * 4;
    }

    /// The pixels from the first to the last that lies inside.
    WarpSpan Fill(WarpSpan span, int y)
    {
        const Forms forms(m_map, y);
        if (m_fast) {
            PerspectiveRow row = {m_ring.src,
                                  Pixel(span.begin, y),
                                  span,
                                  {forms.u[0], forms.u[1]},
                                  {forms.v[0], forms.v[1]},
                                  {forms.w[0], forms.w[1]}};
            if (m_untilHint-- == 0) {
                m_untilHint = kRowsPerHint;
                m_ring.src.ahead = row.src.ahead = AheadOf(forms, span, y);
            }
            return (std::is_same_v<T, u8> ? m_kernels.perspectiveBytes : m_kernels.perspectiveFloats)(row);
        }
        WarpSpan found = {};
        for (int x = span.begin; x < span.end; ++x)
            if (const Point at = forms.At(x); Holds(m_src.bounds, at)) {
                SampleAt<C4>(m_src, at.x, at.y, m_interpolation, Pixel(x, y));
                found = {found.IsEmpty() ? x : found.begin, x + 1};
            }
        return found;
    }

    std::ptrdiff_t AheadOf(const Forms& forms, WarpSpan span, int y) const
    {
        const int middle = span.begin + (span.end - span.begin) / 2;
        const Point here = forms.At(middle), later = Forms(m_map, y + kRowsAhead).At(middle);
        return BytesAhead(later.x - here.x, later.y - here.y, m_src.bounds, m_src.step,
                          4 * static_cast<int>(sizeof(T)));
    }

    /// Pixels outside, for the ring.
    void Collect(WarpSpan span, int y)
    {
        for (int x = span.begin; x < span.end; ++x) {
            if (m_ring.count == WarpRing::kMost)
                End();
            m_ring.x[m_ring.count] = x;
            m_ring.y[m_ring.count++] = y;
        }
    }

    void Smooth(Point pixel) const
    {
        if (m_outline.LeastDistance(pixel) > kRing)
            return;
        const Point border = m_outline.NearestTo(pixel);
        const double share = 1.0 - Distance(border, pixel);
        if (!(share > 0.0))
            return;
        const Point at = Forms(m_map, border.y).At(border.x);
        if (!std::isfinite(at.x) || !std::isfinite(at.y))
            return;
        T colour[4];
        SampleAt<C4>(m_src, at.x, at.y, m_interpolation, colour);
        MixIn(colour, share, Pixel(static_cast<int>(pixel.x), static_cast<int>(pixel.y)));
    }

    const Source<T>& m_src;
    const PerspectiveMap& m_map;
    const Quad& m_quad;
    Outline m_outline;
    bool m_isTight; ///< whatever lies inside is nearer to the quadrangle than 1
    int m_interpolation;
    bool m_smooth;
    bool m_fast;
    int m_untilHint = 0; ///< rows
    const WarpKernels& m_kernels;
    WarpRing m_ring;
};

template <class T>
PxStatus WarpQuad(const T* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion, T* dst,
                  int dstStep, const PxRect& dstRegion, const double coeffs[3][3], std::uint32_t code,
                  const float* light = nullptr)
{
    const bool smooth = (code & pxSmoothEdges) != 0;
    const int interpolation = static_cast<int>(code & ~pxSmoothEdges);
    Source<T> source = {src, srcStep, {}};
    if (const PxStatus status = Check<C4>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep,
                                          dstRegion, coeffs, interpolation, source.bounds))
        return status;
    if (light && !PerspectiveWarp<T>::IsFast(source, interpolation))
        return interpolation == pxLinear ? pxBadSize : pxBadInterpolation;
    PerspectiveMap map;
    if (const PxStatus status = InvertPerspective(coeffs, map))
        return status;

    const Quad quad = QuadOf(coeffs, source.bounds, 0.0);
    const bool isTight = AreNear(quad, QuadOf(coeffs, source.bounds, kWarpSlack));
    PerspectiveWarp<T> warp(source, dst, dstStep, map, quad, isTight, interpolation, smooth && quad.isFinite,
                            light);
    ForStrips(RegionNear(quad, dstRegion), [&](WarpSpan columns, int y) { warp.Row(columns, y); });
    warp.End();
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

PxStatus pxWarpQuadLit_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep,
                              const PxRect& srcRegion, float* dst, int dstStep, const PxRect& dstRegion,
                              const double coeffs[3][3], std::uint32_t interpolation, const float light[4])
{
    if (!light)
        return pxNullPointer;
    return WarpQuad(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep, dstRegion, coeffs,
                    interpolation, light);
}

} // namespace kelmora

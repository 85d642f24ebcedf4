#include "tests/reference/warp.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/reference/rounding.h"

namespace kelmora::reference {
namespace {

constexpr double kSlack = 1e-3;

/// How close to the identity a 2 by 2 part counts as the identity.
constexpr double kNoTurn = 1e-6;

template <class Map>
bool IsFinite(const Map& map)
{
    return std::all_of(map.begin(), map.end(), [](const auto& row) {
        return std::all_of(row.begin(), row.end(), [](double value) { return std::isfinite(value); });
    });
}

ResizeRegion CutTo(const Picture& picture, ResizeRegion region)
{
    region.width = std::min(region.width, picture.width - region.x);
    region.height = std::min(region.height, picture.height - region.y);
    return region;
}

Point CutTo(ResizeRegion region, Point at)
{
    return {std::clamp(at.x, region.x + 0.0, region.x + region.width - 1.0),
            std::clamp(at.y, region.y + 0.0, region.y + region.height - 1.0)};
}

/// The region's pixel, or its edge's nearest one.
double TapAt(const Picture& src, ResizeRegion region, int x, int y, int c)
{
    return src.At(std::clamp(x, region.x, region.x + region.width - 1),
                  std::clamp(y, region.y, region.y + region.height - 1), c);
}

/// Catmull-Rom.
double CubicWeight(double distance)
{
    const double d = std::fabs(distance);
    if (d < 1.0)
        return 1.5 * d * d * d - 2.5 * d * d + 1.0;
    return d < 2.0 ? -0.5 * d * d * d + 2.5 * d * d - 4.0 * d + 2.0 : 0.0;
}

double Cubic(const Picture& src, ResizeRegion region, Point at, int c)
{
    const int left = static_cast<int>(at.x) - 1, top = static_cast<int>(at.y) - 1;
    double sum = 0.0;
    for (int y = top; y < top + 4; ++y)
        for (int x = left; x < left + 4; ++x)
            sum += CubicWeight(at.x - x) * CubicWeight(at.y - y) * TapAt(src, region, x, y, c);
    return src.floats ? sum : std::clamp(sum, 0.0, 255.0);
}

double Nearest(const Picture& src, ResizeRegion region, Point at, int c)
{
    return TapAt(src, region, static_cast<int>(at.x + 0.5), static_cast<int>(at.y + 0.5), c);
}

/// The nearest 1/256, ties to even.
double InSteps(double value)
{
    return std::nearbyint(value * 256.0) / 256.0;
}

double LinearByte(const Picture& src, ResizeRegion region, Point at, int c)
{
    const Point cut = CutTo(region, {InSteps(at.x), InSteps(at.y)});
    // Every product and sum is exact.
    return std::floor(ExactSample(src, region, cut, c, kLinear) + 0.5);
}

/// a (1 - f) + b f, each operation rounded to single precision.
double BetweenFloats(double a, double b, double f)
{
    return RoundedToFloat(RoundedToFloat(a * RoundedToFloat(1.0 - f)) + RoundedToFloat(b * f));
}

double LinearFloat(const Picture& src, ResizeRegion region, Point at, int c)
{
    const int x = static_cast<int>(at.x), y = static_cast<int>(at.y);
    const double fx = RoundedToFloat(at.x - x), fy = RoundedToFloat(at.y - y);
    const auto row = [&](int line) {
        return BetweenFloats(TapAt(src, region, x, line, c), TapAt(src, region, x + 1, line, c), fx);
    };
    return BetweenFloats(row(y), row(y + 1), fy);
}

/// What the library must give at a position, but for cubic.
double Sample(const Picture& src, ResizeRegion region, Point at, int c, int interpolation)
{
    at = CutTo(region, at);
    if (interpolation != kLinear)
        return ExactSample(src, region, at, c, interpolation);
    return src.floats ? LinearFloat(src, region, at, c) : LinearByte(src, region, at, c);
}

bool IsShift(const AffineMap& map)
{
    return std::fabs(map[0][0] - 1.0) <= kNoTurn && std::fabs(map[0][1]) <= kNoTurn
        && std::fabs(map[1][0]) <= kNoTurn && std::fabs(map[1][1] - 1.0) <= kNoTurn;
}

/// Calls put(x, y) for the region's pixels that lie in the picture.
template <class Put>
void ForEachPixel(const Picture& dst, ResizeRegion region, Put&& put)
{
    for (int y = region.y; y < std::min(region.y + region.height, dst.height); ++y)
        for (int x = region.x; x < std::min(region.x + region.width, dst.width); ++x)
            put(x, y);
}

double Cross(Point a, Point b, Point c)
{
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

bool IsConvex(const Quad& quad)
{
    int left = 0, right = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const Point a = quad[i], b = quad[(i + 1) % 4], c = quad[(i + 2) % 4];
        if (!std::isfinite(a.x) || !std::isfinite(a.y))
            return false;
        const double lengths = std::hypot(b.x - a.x, b.y - a.y) * std::hypot(c.x - b.x, c.y - b.y);
        const double cross = Cross(a, b, c);
        if (!(std::fabs(cross) > 1e-12 * lengths))
            return false;
        (cross > 0.0 ? right : left) += 1;
    }
    return left == 0 || right == 0;
}

using Equations = std::array<std::array<long double, 9>, 8>;

/// Gauss with the largest pivot of each column; the last column is the right side.
std::array<long double, 8> Solved(Equations m)
{
    for (std::size_t i = 0; i < 8; ++i) {
        std::size_t best = i;
        for (std::size_t row = i; row < 8; ++row)
            if (std::fabs(m[row][i]) > std::fabs(m[best][i]))
                best = row;
        std::swap(m[i], m[best]);
        for (std::size_t row = 0; row < 8; ++row) {
            if (row == i)
                continue;
            const long double factor = m[row][i] / m[i][i];
            for (std::size_t column = i; column < 9; ++column)
                m[row][column] -= factor * m[i][column];
        }
    }
    std::array<long double, 8> result;
    for (std::size_t i = 0; i < 8; ++i)
        result[i] = m[i][8] / m[i][i];
    return result;
}

Point NearestOnEdge(Point a, Point b, Point at)
{
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double along = ((at.x - a.x) * dx + (at.y - a.y) * dy) / (dx * dx + dy * dy);
    const double t = std::clamp(along, 0.0, 1.0);
    return {a.x + t * dx, a.y + t * dy};
}

double Distance(Point a, Point b)
{
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

Point NearestOn(const Quad& quad, Point at)
{
    Point nearest = quad[0];
    for (std::size_t i = 0; i < 4; ++i) {
        const Point candidate = NearestOnEdge(quad[i], quad[(i + 1) % 4], at);
        if (Distance(candidate, at) < Distance(nearest, at))
            nearest = candidate;
    }
    return nearest;
}

double Mixed(double under, double colour, double weight, bool floats)
{
    if (floats)
        return under * (1.0 - weight) + colour * weight;
    const double steps = InSteps(weight) * 256.0;
    return std::floor((under * (256.0 - steps) + colour * steps + 128.0) / 256.0);
}

/// The quadrangle that the region's corner pixels come to stand at.
Quad Outline(ResizeRegion region, const PerspectiveMap& map)
{
    const double left = region.x, top = region.y, right = left + region.width - 1,
                 bottom = top + region.height - 1;
    return {Mapped(map, {left, top}), Mapped(map, {right, top}), Mapped(map, {right, bottom}),
            Mapped(map, {left, bottom})};
}

} // namespace

Quad QuadOf(const double corners[4][2])
{
    Quad quad;
    for (std::size_t i = 0; i < 4; ++i)
        quad[i] = {corners[i][0], corners[i][1]};
    return quad;
}

Point Mapped(const AffineMap& map, Point at)
{
    const auto line = [&](const std::array<double, 3>& row) {
        return row[0] * at.x + (row[1] * at.y + row[2]);
    };
    return {line(map[0]), line(map[1])};
}

Point Mapped(const PerspectiveMap& map, Point at)
{
    const auto line = [&](const std::array<double, 3>& row) {
        return row[0] * at.x + (row[1] * at.y + row[2]);
    };
    const double w = line(map[2]);
    if (w == 0.0)
        return {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};
    const double part = 1.0 / w;
    return {line(map[0]) * part, line(map[1]) * part};
}

std::optional<AffineMap> Inverse(const AffineMap& map)
{
    const double det = map[0][0] * map[1][1] - map[0][1] * map[1][0];
    if (!IsFinite(map) || !std::isfinite(det) || det == 0.0)
        return {};
    AffineMap back = {{{map[1][1] / det, -map[0][1] / det, 0.0}, {-map[1][0] / det, map[0][0] / det, 0.0}}};
    for (auto& row : back)
        row[2] = -(row[0] * map[0][2] + row[1] * map[1][2]);
    if (!IsFinite(back))
        return {};
    return back;
}

std::optional<PerspectiveMap> Inverse(const PerspectiveMap& map)
{
    if (!IsFinite(map))
        return {};
    PerspectiveMap back;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column) {
            const auto &a = map[(column + 1) % 3], &b = map[(column + 2) % 3];
            back[row][column] = a[(row + 1) % 3] * b[(row + 2) % 3] - a[(row + 2) % 3] * b[(row + 1) % 3];
        }
    const double det = map[0][0] * back[0][0] + map[0][1] * back[1][0] + map[0][2] * back[2][0];
    if (!IsFinite(back) || !std::isfinite(det) || det == 0.0)
        return {};
    return back;
}

bool IsInside(ResizeRegion region, Point at)
{
    return at.x >= region.x - kSlack && at.x <= region.x + region.width - 1 + kSlack
        && at.y >= region.y - kSlack && at.y <= region.y + region.height - 1 + kSlack;
}

std::optional<PerspectiveMap> QuadTransform(ResizeRegion rect, const Quad& quad)
{
    if (rect.width < 2 || rect.height < 2 || !IsConvex(quad))
        return {};
    const long double right = rect.width - 1.0L, bottom = rect.height - 1.0L;
    const long double corners[4][2] = {{0, 0}, {right, 0}, {right, bottom}, {0, bottom}};
    Equations equations = {};
    for (std::size_t i = 0; i < 4; ++i) {
        const long double x = corners[i][0], y = corners[i][1];
        const auto toX = static_cast<long double>(quad[i].x), toY = static_cast<long double>(quad[i].y);
        equations[2 * i] = {x, y, 1, 0, 0, 0, -x * toX, -y * toX, toX};
        equations[2 * i + 1] = {0, 0, 0, x, y, 1, -x * toY, -y * toY, toY};
    }
    const auto s = Solved(equations);
    const long double rows[3][3] = {{s[0], s[1], s[2]}, {s[3], s[4], s[5]}, {s[6], s[7], 1}};
    PerspectiveMap map;
    for (std::size_t i = 0; i < 3; ++i) // from the rectangle's own corner to the picture's
        map[i] = {static_cast<double>(rows[i][0]), static_cast<double>(rows[i][1]),
                  static_cast<double>(rows[i][2] - rows[i][0] * rect.x - rows[i][1] * rect.y)};
    if (!IsFinite(map))
        return {};
    return map;
}

double ExactSample(const Picture& src, ResizeRegion region, Point at, int c, int interpolation)
{
    at = CutTo(region, at);
    if (interpolation == kNearest)
        return Nearest(src, region, at, c);
    if (interpolation == kCubic)
        return Cubic(src, region, at, c);
    const int x = static_cast<int>(at.x), y = static_cast<int>(at.y);
    const double fx = at.x - x, fy = at.y - y;
    const auto row = [&](int line) {
        return TapAt(src, region, x, line, c) * (1.0 - fx) + TapAt(src, region, x + 1, line, c) * fx;
    };
    return row(y) * (1.0 - fy) + row(y + 1) * fy;
}

bool WarpAffine(const Picture& src, ResizeRegion region, Picture& dst, ResizeRegion dstRegion,
                const AffineMap& map, int interpolation)
{
    const bool shift = IsShift(map);
    const std::optional<AffineMap> back =
        Inverse(shift ? AffineMap{{{1.0, 0.0, map[0][2]}, {0.0, 1.0, map[1][2]}}} : map);
    if (!back)
        return false;
    const bool inSteps = shift && interpolation == kLinear && !src.floats;
    region = CutTo(src, region);
    ForEachPixel(dst, dstRegion, [&](int x, int y) {
        const Point at = Mapped(*back, {static_cast<double>(x), static_cast<double>(y)});
        const Point stepped = {x + InSteps((*back)[0][2]), y + InSteps((*back)[1][2])};
        if (IsInside(region, at))
            for (int c = 0; c < dst.channels; ++c)
                dst.At(x, y, c) = Sample(src, region, inSteps ? stepped : at, c, interpolation);
    });
    return true;
}

bool WarpPerspective(const Picture& src, ResizeRegion region, Picture& dst, ResizeRegion dstRegion,
                     const PerspectiveMap& map, int interpolation, bool smooth)
{
    const std::optional<PerspectiveMap> back = Inverse(map);
    if (!back)
        return false;
    region = CutTo(src, region);
    const Quad outline = Outline(region, map);
    ForEachPixel(dst, dstRegion, [&](int x, int y) {
        const Point pixel = {static_cast<double>(x), static_cast<double>(y)};
        const Point at = Mapped(*back, pixel);
        if (IsInside(region, at)) {
            for (int c = 0; c < dst.channels; ++c)
                dst.At(x, y, c) = Sample(src, region, at, c, interpolation);
        } else if (smooth) {
            const Point border = NearestOn(outline, pixel);
            const double weight = 1.0 - Distance(border, pixel);
            if (weight > 0.0)
                for (int c = 0; c < dst.channels; ++c)
                    dst.At(x, y, c) =
                        Mixed(dst.At(x, y, c), Sample(src, region, Mapped(*back, border), c, interpolation),
                              weight, dst.floats);
        }
    });
    return true;
}

bool WarpAffine(const Picture& src, Picture& dst, const float (&matrix)[3][3])
{
    AffineMap map;
    for (std::size_t row = 0; row < 2; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            map[row][column] = static_cast<double>(matrix[column][row]);
    const ResizeRegion both = {0, 0, std::min(src.width, dst.width), std::min(src.height, dst.height)};
    return WarpAffine(src, both, dst, both, map, kLinear);
}

bool WarpQuad(const Picture& src, Picture& dst, const Quad& quad, int interpolation, bool smooth)
{
    const ResizeRegion whole = {0, 0, src.width, src.height};
    const std::optional<PerspectiveMap> map = QuadTransform(whole, quad);
    return map
        && WarpPerspective(src, whole, dst, {0, 0, dst.width, dst.height}, *map, interpolation, smooth);
}

} // namespace kelmora::reference

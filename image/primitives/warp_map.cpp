#include "image/primitives/warp_map.h"

#include <algorithm>
#include <cmath>

#include "image/primitives/detail/first_where.h"

namespace kelmora {
namespace {

/// Beyond this the fractions of positions are lost in any case, and products could leave the range of a double.
constexpr double kMostCoefficient = 1e100;

bool IsSane(double value)
{
    return std::fabs(value) <= kMostCoefficient; // not-a-number is not
}

} // namespace

PxStatus InvertAffine(const double coeffs[2][3], AffineMap& map)
{
    for (int i = 0; i < 6; ++i)
        if (!IsSane(coeffs[i / 3][i % 3]))
            return pxDegenerateWarp;
    const double a = coeffs[0][0], b = coeffs[0][1], c = coeffs[0][2];
    const double d = coeffs[1][0], e = coeffs[1][1], f = coeffs[1][2];
    const double determinant = a * e - b * d;
    if (determinant == 0.0)
        return pxDegenerateWarp;

    const auto isNear = [](double value, double wanted) { return std::fabs(value - wanted) <= kPlainShift; };
    if (isNear(a, 1.0) && isNear(b, 0.0) && isNear(d, 0.0) && isNear(e, 1.0)) {
        map = {1.0, 0.0, -c, 0.0, 1.0, -f, true};
        return pxOk;
    }
    const double xx = e / determinant, xy = -b / determinant;
    const double yx = -d / determinant, yy = a / determinant;
    map = {xx, xy, -(xx * c + xy * f), yx, yy, -(yx * c + yy * f), false};
    for (const double value : {map.xx, map.xy, map.x0, map.yx, map.yy, map.y0})
        if (!IsSane(value))
            return pxDegenerateWarp;
    return pxOk;
}

PxStatus InvertPerspective(const double coeffs[3][3], PerspectiveMap& map)
{
    for (int i = 0; i < 9; ++i)
        if (!IsSane(coeffs[i / 3][i % 3]))
            return pxDegenerateWarp;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            // The rows and columns other than j and i, in an order that brings the sign along.
            const int r0 = (j + 1) % 3, r1 = (j + 2) % 3;
            const int c0 = (i + 1) % 3, c1 = (i + 2) % 3;
            map.rows[i][j] = coeffs[r0][c0] * coeffs[r1][c1] - coeffs[r0][c1] * coeffs[r1][c0];
        }
    const double determinant =
        coeffs[0][0] * map.rows[0][0] + coeffs[0][1] * map.rows[1][0] + coeffs[0][2] * map.rows[2][0];
    return std::isfinite(determinant) && determinant != 0.0 ? pxOk : pxDegenerateWarp;
}

WarpSpan InsideSpan(WarpSpan row, double slope, double start, double low, double high)
{
    // Rounding keeps the order of positions, so the ends are found by halving.
    const auto position = [=](int x) { return slope * x + start; };
    if (slope < 0.0)
        return {px::FirstWhere(row.begin, row.end, [=](int x) { return position(x) <= high; }),
                px::FirstWhere(row.begin, row.end, [=](int x) { return position(x) < low; })};
    return {px::FirstWhere(row.begin, row.end, [=](int x) { return position(x) >= low; }),
            px::FirstWhere(row.begin, row.end, [=](int x) { return position(x) > high; })};
}

WarpSpan InsideSpan(WarpSpan row, int y, const AffineMap& map, const WarpBounds& bounds)
{
    const WarpSpan byX =
        InsideSpan(row, map.xx, map.RowX(y), bounds.left - kWarpSlack, bounds.right + kWarpSlack);
    const WarpSpan byY =
        InsideSpan(row, map.yx, map.RowY(y), bounds.top - kWarpSlack, bounds.bottom + kWarpSlack);
    return {std::max(byX.begin, byY.begin), std::min(byX.end, byY.end)};
}

} // namespace kelmora

#pragma once

#include "image/primitives/resize.h"
#include "image/primitives/status.h"
#include "image/primitives/warp.h"

namespace kelmora {

/// The inverse of an affine map: the source position of destination pixel (x, y).
struct AffineMap {
    double xx, xy, x0;
    double yx, yy, y0;
    bool isShift; ///< the 2 by 2 part is the identity

    /// Whether columns depend on x alone and rows on y alone.
    bool IsSeparable() const { return xy == 0.0 && yx == 0.0; }

    double RowX(int y) const { return xy * y + x0; } ///< where x = 0 lies
    double RowY(int y) const { return yy * y + y0; }
    double X(int x, double rowX) const { return xx * x + rowX; }
    double Y(int x, double rowY) const { return yx * x + rowY; }
};

/// pxDegenerateWarp when `coeffs` have no finite inverse.
PxStatus InvertAffine(const double coeffs[2][3], AffineMap& map);

/// The adjugate of a perspective map, which takes destination positions to source positions.
struct PerspectiveMap {
    double rows[3][3];
};

/// pxDegenerateWarp when `coeffs` are not finite or singular.
PxStatus InvertPerspective(const double coeffs[3][3], PerspectiveMap& map);

/// The pixel indices of a region, both ends included.
struct WarpBounds {
    int left, top, right, bottom;

    bool HoldsX(double x) const { return x >= left - kWarpSlack && x <= right + kWarpSlack; }
    bool HoldsY(double y) const { return y >= top - kWarpSlack && y <= bottom + kWarpSlack; }
};

/// Pixels of a row, `end` excluded.
struct WarpSpan {
    int begin, end;

    bool IsEmpty() const { return begin >= end; }
};

/// The part of `row` whose positions slope * x + start lie in the closed range from `low` to `high`.
WarpSpan InsideSpan(WarpSpan row, double slope, double start, double low, double high);

/// The part of `row` that `map` takes into the bounds.
WarpSpan InsideSpan(WarpSpan row, int y, const AffineMap& map, const WarpBounds& bounds);

} // namespace kelmora

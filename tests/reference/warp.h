#pragma once

#include <array>
#include <optional>

#include "tests/reference/picture.h"
#include "tests/reference/resize.h"

namespace kelmora::reference {

/// A position, in pixels.
struct Point {
    double x = 0.0, y = 0.0;
};

/// Corners, clockwise from the first pixel's where the picture is not turned over.
using Quad = std::array<Point, 4>;

/// The corners as operations take them.
Quad QuadOf(const double corners[4][2]);

/// x' = m[0][0] x + m[0][1] y + m[0][2], and y' likewise.
using AffineMap = std::array<std::array<double, 3>, 2>;

/// The same over w = m[2][0] x + m[2][1] y + m[2][2].
using PerspectiveMap = std::array<std::array<double, 3>, 3>;

/// Where a point comes to stand; not a number where w is 0.
Point Mapped(const AffineMap& map, Point at);
Point Mapped(const PerspectiveMap& map, Point at);

/// The maps back; nothing where one would not be finite. A perspective one is scaled by its determinant.
std::optional<AffineMap> Inverse(const AffineMap& map);
std::optional<PerspectiveMap> Inverse(const PerspectiveMap& map);

/// Whether a sample may be taken there: in the closed range of the region's pixel indices, widened by 1/1000.
bool IsInside(ResizeRegion region, Point at);

/// The map that takes the rectangle's corner pixels to the quadrangle's corners; its w is 1 at the first one.
/// Nothing for a rectangle less than two pixels wide or high, and for a quadrangle that is not finite, or not
/// strictly convex.
std::optional<PerspectiveMap> QuadTransform(ResizeRegion rect, const Quad& quad);

/// One channel of a region between its pixels, without any rounding but that of double: the position is cut to
/// the region, and so is every tap. interpolation: kNearest, kLinear, kCubic.
double ExactSample(const Picture& src, ResizeRegion region, Point at, int c, int interpolation);

/// Warps of a region of `src`, which is cut to the picture, onto a region of `dst`, one value at a time. Pixels
/// whose position lies outside the source region stay. False, and nothing written, for a map without inverse.
///
/// Nearest and linear are what the library must give: linear bytes in 1/256 of a pixel, linear floats in single
/// precision. Cubic bytes are cut to 0..255 and not rounded, cubic floats not either.
bool WarpAffine(const Picture& src, ResizeRegion region, Picture& dst, ResizeRegion dstRegion,
                const AffineMap& map, int interpolation);

/// smooth  the pixels around the quadrangle of the region's corners get the colour of the quadrangle's nearest
///         point, with the weight 1 minus the distance: of bytes to the nearest 1/256, rounded once more
bool WarpPerspective(const Picture& src, ResizeRegion region, Picture& dst, ResizeRegion dstRegion,
                     const PerspectiveMap& map, int interpolation, bool smooth = false);

/// The common size of two pictures, through a matrix for row vectors, linear.
bool WarpAffine(const Picture& src, Picture& dst, const float (&matrix)[3][3]);

/// A whole picture, its corner pixels at the quadrangle's corners. False where there is no such map.
bool WarpQuad(const Picture& src, Picture& dst, const Quad& quad, int interpolation, bool smooth = false);

} // namespace kelmora::reference

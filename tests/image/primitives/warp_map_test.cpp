#include "image/primitives/warp_map.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

/// 0 to 1, without 1.
double Unit(std::mt19937& random)
{
    return static_cast<double>(random()) / 4294967296.0;
}

TEST(InvertAffine, HandComputedMaps_RunBack)
{
    AffineMap map = {};
    const double zoomed[2][3] = {{2, 0, 3}, {0, -4, -1}};
    ASSERT_EQ(InvertAffine(zoomed, map), pxOk);
    EXPECT_EQ(map.xx, 0.5);
    EXPECT_EQ(map.xy, 0.0);
    EXPECT_EQ(map.x0, -1.5);
    EXPECT_EQ(map.yx, 0.0);
    EXPECT_EQ(map.yy, -0.25);
    EXPECT_EQ(map.y0, -0.25);
    EXPECT_FALSE(map.isShift);
    EXPECT_TRUE(map.IsSeparable());

    // x' = x + 2 y + 5, y' = 3 x + 8 y - 7; the determinant is 2.
    const double sheared[2][3] = {{1, 2, 5}, {3, 8, -7}};
    ASSERT_EQ(InvertAffine(sheared, map), pxOk);
    EXPECT_EQ(map.xx, 4.0);
    EXPECT_EQ(map.xy, -1.0);
    EXPECT_EQ(map.x0, -27.0);
    EXPECT_EQ(map.yx, -1.5);
    EXPECT_EQ(map.yy, 0.5);
    EXPECT_EQ(map.y0, 11.0);
    EXPECT_FALSE(map.IsSeparable());
    // (1, 1) stands at (8, 4).
    EXPECT_EQ(map.X(8, map.RowX(4)), 1.0);
    EXPECT_EQ(map.Y(8, map.RowY(4)), 1.0);
}

TEST(InvertAffine, NextToTheIdentity_IsAShift)
{
    AffineMap map = {};
    const double near[2][3] = {{1 + 9e-7, -9e-7, 2.5}, {9e-7, 1 - 9e-7, -4}};
    ASSERT_EQ(InvertAffine(near, map), pxOk);
    EXPECT_TRUE(map.isShift);
    EXPECT_EQ(map.xx, 1.0);
    EXPECT_EQ(map.xy, 0.0);
    EXPECT_EQ(map.x0, -2.5);
    EXPECT_EQ(map.yx, 0.0);
    EXPECT_EQ(map.yy, 1.0);
    EXPECT_EQ(map.y0, 4.0);
    const double justSo[2][3] = {{1, kPlainShift, 2.5}, {-kPlainShift, 1, -4}};
    ASSERT_EQ(InvertAffine(justSo, map), pxOk);
    EXPECT_TRUE(map.isShift);
    for (int i = 0; i < 4; ++i) {
        double off[2][3] = {{1, 0, 2.5}, {0, 1, -4}};
        off[i / 2][i % 2] += 2e-6;
        ASSERT_EQ(InvertAffine(off, map), pxOk);
        EXPECT_FALSE(map.isShift) << i;
    }
}

TEST(InvertAffine, MapsWithoutAFiniteInverse_AreDegenerate)
{
    AffineMap map = {};
    const double singular[2][3] = {{2, 6, 0}, {1, 3, 0}}, far[2][3] = {{1e-200, 0, 1e200}, {0, 1, 0}};
    EXPECT_EQ(InvertAffine(singular, map), pxDegenerateWarp);
    EXPECT_EQ(InvertAffine(far, map), pxDegenerateWarp);
    const double farBack[2][3] = {{1e-60, 0, 1e60}, {0, 1, 0}}; // harmless itself, but 0 comes from -1e120
    EXPECT_EQ(InvertAffine(farBack, map), pxDegenerateWarp);
    for (const double bad : {kNotANumber, kInfinity, -kInfinity})
        for (int i = 0; i < 6; ++i) {
            double coeffs[2][3] = {{1, 0, 2.5}, {0, 1, -4}};
            coeffs[i / 3][i % 3] = bad;
            EXPECT_EQ(InvertAffine(coeffs, map), pxDegenerateWarp) << bad << " at " << i;
        }
}

TEST(InvertPerspective, HandComputedMap_HasItsAdjugate)
{
    PerspectiveMap map = {};
    const double coeffs[3][3] = {{2, -1, 3}, {0, 4, 5}, {1, 2, -2}};
    ASSERT_EQ(InvertPerspective(coeffs, map), pxOk);
    const double expected[3][3] = {{-18, 4, -17}, {5, -7, -10}, {-4, -5, 8}};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_EQ(map.rows[row][column], expected[row][column]) << row << ", " << column;
}

TEST(InvertPerspective, SingularOrNotFinite_IsDegenerate)
{
    PerspectiveMap map = {};
    const double singular[3][3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    EXPECT_EQ(InvertPerspective(singular, map), pxDegenerateWarp);
    for (const double bad : {kNotANumber, kInfinity, -kInfinity})
        for (int i = 0; i < 9; ++i) {
            double coeffs[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
            coeffs[i / 3][i % 3] = bad;
            EXPECT_EQ(InvertPerspective(coeffs, map), pxDegenerateWarp) << bad << " at " << i;
        }
}

TEST(WarpBounds, Slack_IsAThousandthOfAPixel)
{
    const WarpBounds bounds = {3, 5, 10, 20};
    for (const double x : {2.9991, 3.0, 10.0, 10.0009})
        EXPECT_TRUE(bounds.HoldsX(x)) << x;
    for (const double y : {4.9991, 5.0, 20.0, 20.0009})
        EXPECT_TRUE(bounds.HoldsY(y)) << y;
    for (const double x : {2.9989, 10.0011, -1e300, 1e300, kInfinity, kNotANumber})
        EXPECT_FALSE(bounds.HoldsX(x)) << x;
    for (const double y : {4.9989, 20.0011, -1e300, 1e300, -kInfinity, kNotANumber})
        EXPECT_FALSE(bounds.HoldsY(y)) << y;
}

/// Pixel by pixel.
template <class Inside>
void CheckSpan(WarpSpan row, WarpSpan span, Inside&& inside)
{
    ASSERT_TRUE(span.IsEmpty() || (span.begin >= row.begin && span.end <= row.end));
    for (int x = row.begin; x < row.end; ++x)
        ASSERT_EQ(x >= span.begin && x < span.end, inside(x))
            << x << " of " << span.begin << ", " << span.end;
}

TEST(InsideSpan, RandomLines_HoldThePixelsWhosePositionsLieInside)
{
    std::mt19937 random(1);
    const auto unit = [&] { return Unit(random); };
    const double slopes[] = {0, 1, -1, 0.5, -0.5, 1e-9, -1e-300, 1e9, 3, 1.0 / 3, 1e300, -1e18};
    for (int round = 0; round < 200000 && !testing::Test::HasFatalFailure(); ++round) {
        const WarpSpan row = {static_cast<int>(random() % 50), static_cast<int>(random() % 120)};
        const double slope = random() % 2 != 0 ? slopes[random() % std::size(slopes)] : 4 * unit() - 2;
        // Whole numbers, so that positions meet the ends of the range exactly, or any.
        const bool whole = random() % 2 != 0;
        double start = 200 * unit() - 100, low = 60 * unit() - 10;
        double high = low + 60 * unit();
        if (whole) {
            start = std::floor(start);
            low = std::floor(low);
            high = std::floor(high);
        }
        if (random() % 16 == 0)
            start *= std::pow(10.0, 300 * unit());
        CheckSpan(row, InsideSpan(row, slope, start, low, high), [&](int x) {
            const double position = slope * x + start;
            return position >= low && position <= high;
        });
    }
}

TEST(InsideSpan, LongRows_AreFoundAsFast)
{
    const WarpSpan row = {0, INT_MAX};
    const WarpSpan span = InsideSpan(row, 1.0, -1e6, -0.5, 10.5);
    EXPECT_EQ(span.begin, 1000000);
    EXPECT_EQ(span.end, 1000011);
    EXPECT_TRUE(InsideSpan(row, 1.0, 1e6, -0.5, 10.5).IsEmpty());
    EXPECT_TRUE(InsideSpan(row, 0.0, 11.0, -0.5, 10.5).IsEmpty());
    const WarpSpan all = InsideSpan(row, 0.0, 10.0, -0.5, 10.5);
    EXPECT_EQ(all.begin, 0);
    EXPECT_EQ(all.end, INT_MAX);
}

TEST(InsideSpan, RandomMaps_HoldThePixelsThatComeFromTheBounds)
{
    std::mt19937 random(2);
    const auto between = [&](double low, double high) { return low + (high - low) * Unit(random); };
    for (int round = 0; round < 100000 && !testing::Test::HasFatalFailure(); ++round) {
        AffineMap map = {between(-2, 2),   between(-2, 2), between(-40, 40), between(-2, 2), between(-2, 2),
                         between(-40, 40), false};
        if (random() % 4 == 0)
            map.yx = 0.0;
        if (random() % 4 == 0)
            map.xx = 1.0;
        WarpBounds bounds = {static_cast<int>(random() % 20), static_cast<int>(random() % 20), 0, 0};
        bounds.right = bounds.left + static_cast<int>(random() % 30);
        bounds.bottom = bounds.top + static_cast<int>(random() % 30);
        const WarpSpan row = {static_cast<int>(random() % 20), static_cast<int>(20 + random() % 60)};
        const int y = static_cast<int>(random() % 60);
        CheckSpan(row, InsideSpan(row, y, map, bounds), [&](int x) {
            return bounds.HoldsX(map.X(x, map.RowX(y))) && bounds.HoldsY(map.Y(x, map.RowY(y)));
        });
    }
}

} // namespace
} // namespace kelmora

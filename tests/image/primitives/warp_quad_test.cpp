#include "image/primitives/warp.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <optional>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/primitives/warps.h"
#include "tests/support/flush_record.h"

namespace kelmora {
namespace {

using reference::Picture;
using reference::Point;
using reference::Quad;
using Affine = reference::AffineMap;
using Perspective = reference::PerspectiveMap;

constexpr std::uint32_t kFormats[] = {PF_BGRA8, PF_BGRA32F}; // one for each member

PxStatus WarpQuad(const GuardedPicture& src, const GuardedPicture& dst, const Perspective& map,
                  std::uint32_t code = pxLinear)
{
    return CallOn(src, WholeOf(src), dst, WholeOf(dst), map, code).RunQuad();
}

/// The library's own map of a rectangle onto a quadrangle.
Perspective TransformTo(const PxRect& rect, const Quad& quad)
{
    double corners[4][2], rows[3][3] = {};
    for (std::size_t i = 0; i < 4; ++i) {
        corners[i][0] = quad[i].x;
        corners[i][1] = quad[i].y;
    }
    EXPECT_EQ(pxQuadTransform(rect, corners, rows), pxOk);
    Perspective map;
    for (std::size_t i = 0; i < 3; ++i)
        std::copy_n(rows[i], 3, map[i].begin());
    return map;
}

/// The corners of a rectangle of pixels, moved by (dx, dy).
Quad CornersOf(const PxRect& rect, double dx = 0.0, double dy = 0.0)
{
    const double left = rect.x + dx, top = rect.y + dy, right = left + rect.width - 1,
                 bottom = top + rect.height - 1;
    return {Point{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

void CheckQuad(GuardedPicture& src, const PxRect& from, GuardedPicture& dst, const PxRect& to,
               const Perspective& map, std::uint32_t code, Noise noise = Noise::Uniform)
{
    if (testing::Test::HasFatalFailure())
        return;
    SCOPED_TRACE(Words(map, src, from, to, code));
    src.Thaw();
    src.FillNoise(1, noise);
    src.Freeze();
    dst.FillNoise(2);
    Picture expected = reference::Read(dst);
    const bool smooth = (code & pxSmoothEdges) != 0;
    ASSERT_TRUE(reference::WarpPerspective(reference::Read(src), Plain(from), expected, Plain(to), map,
                                           static_cast<int>(code & ~pxSmoothEdges), smooth));
    CheckVariants(src, dst, expected, ToleranceOf(src.Format(), code), [&](const GuardedPicture& result) {
        return CallOn(src, from, result, to, map, code).RunQuad();
    });
}

// --- the map onto a quadrangle ----------------------------------------------------------------------------

PxStatus TransformStatus(const PxRect& rect, const Quad& quad)
{
    double corners[4][2];
    for (std::size_t i = 0; i < 4; ++i) {
        corners[i][0] = quad[i].x;
        corners[i][1] = quad[i].y;
    }
    double rows[3][3];
    std::fill_n(&rows[0][0], 9, 7.0);
    const PxStatus status = pxQuadTransform(rect, corners, rows);
    for (const auto& row : rows)
        for (const double value : row)
            EXPECT_TRUE(status == pxOk ? std::isfinite(value) : value == 7.0) << value;
    return status;
}

/// The corner pixels land on the quadrangle's corners, and a point between where the plain map puts it.
void CheckTransform(const PxRect& rect, const Quad& quad)
{
    const Perspective map = TransformTo(rect, quad);
    const std::optional<Perspective> plain = reference::QuadTransform(Plain(rect), quad);
    ASSERT_TRUE(plain);
    double size = 0;
    for (const Point& corner : quad)
        size = std::max({size, std::fabs(corner.x), std::fabs(corner.y)});
    const Quad corners = CornersOf(rect);
    for (std::size_t i = 0; i < 4; ++i) {
        const Point at = reference::Mapped(map, corners[i]);
        ASSERT_NEAR(at.x, quad[i].x, 1e-9 * size);
        ASSERT_NEAR(at.y, quad[i].y, 1e-9 * size);
    }
    const Point between = {rect.x + 0.3 * (rect.width - 1), rect.y + 0.6 * (rect.height - 1)};
    const Point at = reference::Mapped(map, between), expected = reference::Mapped(*plain, between);
    ASSERT_NEAR(at.x, expected.x, 1e-8 * size);
    ASSERT_NEAR(at.y, expected.y, 1e-8 * size);
}

TEST(QuadTransform, CornerPixels_LandOnTheCorners)
{
    CheckTransform({0, 0, 2, 2}, {Point{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    CheckTransform({0, 0, 101, 51}, {Point{10, 20}, {90, 5}, {95, 80}, {3, 60}});
    CheckTransform({7, -3, 30, 20}, {Point{0, 0}, {100, 0}, {70, 50}, {30, 50}});
    CheckTransform({100, 200, 2, 9}, {Point{-5, -5}, {5, -5}, {5, 5}, {-5, 5}});
    CheckTransform({0, 0, 1920, 1080}, {Point{100, -40}, {1900, 80}, {1700, 1000}, {220, 1200}});
}

TEST(QuadTransform, Trapezoid_HasTheDiagonalsCrossingOfItsPicture)
{
    // The middle of the square lands where the diagonals (0, 0)-(6, 3) and (9, 0)-(3, 3) cross: at x 4.5,
    // where both are at height 2.25.
    const Perspective map = TransformTo({0, 0, 3, 3}, {Point{0, 0}, {9, 0}, {6, 3}, {3, 3}});
    const Point middle = reference::Mapped(map, {1, 1});
    EXPECT_NEAR(middle.x, 4.5, 1e-12);
    EXPECT_NEAR(middle.y, 2.25, 1e-12);
    // The upper edge is three times as long as the lower one, and so is w at the lower one.
    EXPECT_NEAR((map[2][1] * 2 + map[2][2]) / map[2][2], 3.0, 1e-12);
    EXPECT_NEAR(map[2][0] / map[2][2], 0.0, 1e-12);
}

TEST(QuadTransform, EitherSenseOfTurningAndEveryFirstCorner_WillDo)
{
    const Quad quad = {Point{10, 20}, {90, 5}, {95, 80}, {3, 60}};
    for (std::size_t first = 0; first < 4; ++first)
        for (const bool backward : {false, true}) {
            Quad turned;
            for (std::size_t i = 0; i < 4; ++i)
                turned[i] = quad[(first + (backward ? 4 - i : i)) % 4];
            CheckTransform({3, 4, 33, 21}, turned);
        }
}

TEST(QuadTransform, AnySize_IsServed)
{
    const Quad quad = {Point{1, 2}, {9, 0.5}, {9.5, 8}, {0.3, 6}};
    for (const double scale : {1e-6, 1e-3, 1e3, 1e6, 1e9}) {
        Quad scaled = quad;
        for (Point& corner : scaled)
            corner = {corner.x * scale, corner.y * scale};
        CheckTransform({0, 0, 64, 48}, scaled);
        CheckTransform({0, 0, INT_MAX, INT_MAX}, scaled);
    }
}

TEST(QuadTransform, RandomConvexQuadrangles_LandOnTheCorners)
{
    // Corners on an ellipse are convex.
    std::mt19937 random(3);
    const auto unit = [&] { return Unit(random); };
    for (int round = 0; round < 5000 && !testing::Test::HasFatalFailure(); ++round) {
        Quad quad;
        const double start = 7 * unit(), width = 1 + 900 * unit(), height = 1 + 900 * unit();
        for (std::size_t i = 0; i < 4; ++i) {
            const double angle = start + (static_cast<double>(i) + 0.9 * unit()) * kPi / 2;
            quad[i] = {300 + width * std::cos(angle), 200 + height * std::sin(angle)};
        }
        CheckTransform({static_cast<int>(random() % 50), static_cast<int>(random() % 50),
                        static_cast<int>(2 + random() % 90), static_cast<int>(2 + random() % 90)},
                       quad);
    }
}

TEST(QuadTransform, RectangleWithoutPixels_IsEmpty)
{
    const Quad quad = {Point{0, 0}, {9, 0}, {9, 9}, {0, 9}};
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_EQ(TransformStatus({0, 0, bad, 9}, quad), pxEmptyQuadRect);
        EXPECT_EQ(TransformStatus({0, 0, 9, bad}, quad), pxEmptyQuadRect);
        EXPECT_EQ(TransformStatus({0, 0, 1, bad}, quad), pxEmptyQuadRect);
    }
    EXPECT_EQ(pxEmptyQuadRect, -57);
}

TEST(QuadTransform, RectangleOnePixelWideOrHigh_IsDegenerate)
{
    const Quad quad = {Point{0, 0}, {9, 0}, {9, 9}, {0, 9}};
    EXPECT_EQ(TransformStatus({0, 0, 1, 9}, quad), pxDegenerateQuad);
    EXPECT_EQ(TransformStatus({0, 0, 9, 1}, quad), pxDegenerateQuad);
    EXPECT_EQ(TransformStatus({0, 0, 1, 1}, quad), pxDegenerateQuad);
    EXPECT_EQ(pxDegenerateQuad, -58);
}

TEST(QuadTransform, QuadranglesThatAreNotConvex_AreDegenerate)
{
    const Quad quads[] = {
        {Point{0, 0}, {9, 9}, {9, 0}, {0, 9}},                    // crossed
        {Point{0, 0}, {9, 0}, {0, 9}, {9, 9}},                    // crossed the other way
        {Point{0, 0}, {9, 0}, {2, 2}, {0, 9}},                    // a dent
        {Point{5, 5}, {9, 0}, {9, 9}, {0, 9}},                    // a dent at the first
        {Point{0, 0}, {9, 0}, {4.5, 4.5}, {0, 9}},                // flat at the third
        {Point{0, 0}, {5, 0}, {9, 0}, {0, 9}},                    // flat at the second
        {Point{0, 0}, {3, 1}, {6, 2}, {9, 3}},                    // a line
        {Point{0, 0}, {9, 0}, {9, 0}, {0, 9}},                    // two corners in one
        {Point{0, 0}, {9, 0}, {0, 0}, {0, 9}},                    // two opposite ones
        {Point{4, 4}, {4, 4}, {4, 4}, {4, 4}},                    // a point
        {Point{0, 0}, {0, 0}, {0, 0}, {0, 0}},                    // a point at the origin
        {Point{1e6, 1e6}, {1e6 + 1e-9, 1e6}, {1e6, 1e6}, {0, 0}}, // next to nothing
    };
    for (const Quad& quad : quads) {
        for (const double scale : {1e-3, 1.0, 1e3}) {
            Quad scaled = quad;
            for (Point& corner : scaled)
                corner = {corner.x * scale, corner.y * scale};
            EXPECT_EQ(TransformStatus({0, 0, 10, 10}, scaled), pxDegenerateQuad) << &quad - quads;
        }
    }
}

TEST(QuadTransform, CornersThatAreNotFinite_AreDegenerate)
{
    for (const double bad : {kNotANumber, kInfinity, -kInfinity})
        for (std::size_t i = 0; i < 8; ++i) {
            Quad quad = {Point{0, 0}, {9, 0}, {9, 9}, {0, 9}};
            (i % 2 != 0 ? quad[i / 2].y : quad[i / 2].x) = bad;
            EXPECT_EQ(TransformStatus({0, 0, 10, 10}, quad), pxDegenerateQuad) << bad << " at " << i;
        }
}

TEST(QuadTransform, EnormousQuadrangles_AreServedFinitelyOrRefused)
{
    for (const double scale : {1e100, 1e150, 1e154, 1e200, 1e300, 1.7e308})
        for (const double turn : {1.0, -1.0}) {
            const PxStatus status = TransformStatus(
                {0, 0, 10, 10}, {Point{0, 0}, {scale, 0}, {scale, turn * scale}, {0, turn * scale}});
            EXPECT_TRUE(status == pxOk || status == pxDegenerateQuad) << status;
        }
}

TEST(QuadTransform, FourCornersAtTheEndOfTheMemory_AreReadAlone)
{
    struct Corners {
        double at[4][2];
    };
    const FlushRecord<Corners> quad(Corners{{{0, 0}, {9, 0}, {9, 9}, {0, 9}}});
    double rows[3][3];
    EXPECT_EQ(pxQuadTransform({0, 0, 10, 10}, quad.Get()->at, rows), pxOk);
    EXPECT_EQ(rows[0][0], 1.0);
}

TEST(QuadTransform, NullPointers_AreRefused)
{
    double quad[4][2] = {{0, 0}, {9, 0}, {9, 9}, {0, 9}}, rows[3][3];
    EXPECT_EQ(pxQuadTransform({0, 0, 9, 9}, nullptr, rows), pxNullPointer);
    EXPECT_EQ(pxQuadTransform({0, 0, 9, 9}, quad, nullptr), pxNullPointer);
    EXPECT_EQ(pxQuadTransform({0, 0, 0, 9}, nullptr, rows), pxNullPointer);
}

// --- perspective: numbers worked out by hand --------------------------------------------------------------

constexpr std::uint32_t kAllQuadCodes[] = {pxNearest,
                                           pxLinear,
                                           pxCubic,
                                           pxNearest | pxSmoothEdges,
                                           pxLinear | pxSmoothEdges,
                                           pxCubic | pxSmoothEdges};

TEST(WarpQuad, CornersAtRest_CopyEverySizeExactly)
{
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes)
            for (int width = 2; width <= 40; ++width)
                for (const int height : {2, 3, 9, 42 - width}) {
                    GuardedPicture src(width, height, format), dst(width + 3, height + 2, format);
                    src.FillNoise(3);
                    dst.FillNoise(4);
                    Picture expected = reference::Read(dst);
                    const Picture from = reference::Read(src);
                    for (int y = 0; y < height; ++y)
                        for (int x = 0; x < width; ++x)
                            for (int c = 0; c < 4; ++c)
                                expected.At(x, y, c) = from.At(x, y, c);
                    const Perspective map = TransformTo(WholeOf(src), CornersOf(WholeOf(src)));
                    CheckVariants(
                        src, dst, expected, IsFloatFormat(format) ? 1e-6 : 0.0,
                        [&](const GuardedPicture& result) { return WarpQuad(src, result, map, code); });
                }
}

TEST(WarpQuad, MirroredAndTurnedCorners_MovePixelsExactly)
{
    // Each corner in turn is the first, in both senses.
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes)
            for (std::size_t first = 0; first < 4; ++first)
                for (const bool backward : {false, true}) {
                    GuardedPicture src(9, 9, format), dst(9, 9, format);
                    src.FillNoise(3);
                    const Quad corners = CornersOf(WholeOf(src));
                    Quad quad;
                    for (std::size_t i = 0; i < 4; ++i)
                        quad[i] = corners[(first + (backward ? 4 - i : i)) % 4];
                    const Picture from = reference::Read(src);
                    Picture expected = reference::Read(dst);
                    for (int y = 0; y < 9; ++y)
                        for (int x = 0; x < 9; ++x)
                            for (int c = 0; c < 4; ++c) {
                                // Along the first edge by x, along the one from its end by y.
                                const auto place = [&](double Point::*axis) {
                                    return static_cast<int>(quad[0].*axis
                                                            + (quad[1].*axis - quad[0].*axis) * x / 8
                                                            + (quad[2].*axis - quad[1].*axis) * y / 8);
                                };
                                expected.At(place(&Point::x), place(&Point::y), c) = from.At(x, y, c);
                            }
                    const Perspective map = TransformTo(WholeOf(src), quad);
                    CheckVariants(
                        src, dst, expected, IsFloatFormat(format) ? 1e-6 : 0.0,
                        [&](const GuardedPicture& result) { return WarpQuad(src, result, map, code); });
                }
}

/// x' = 5 x / (x + 1), y' = 5 y / (x + 1): back, x / (5 - x) and y / (5 - x).
const Perspective kFalling = {{{5, 0, 0}, {0, 5, 0}, {1, 0, 1}}};

TEST(WarpQuad, HandComputedPerspective_ComesOut)
{
    // Positions in the first row: 0, 1/4, 2/3, 3/2, 4, none (w is 0), -6, -7/2. 2/3 is 171 steps.
    GuardedPicture src(6, 2, PF_BGRA8), dst(8, 1, PF_BGRA8);
    for (int x = 0; x < 6; ++x)
        for (int y = 0; y < 2; ++y)
            for (int c = 0; c < 4; ++c)
                src.SetByte(x, y, c, static_cast<std::uint8_t>(y == 0 ? 48 * x : 255));
    const int expected[] = {0, 12, 32, 72, 192, kUntouched, kUntouched, kUntouched};
    for (const double scale : {1.0, -1.0, 0.25, -1024.0})
        ForEachVariant([&] {
            Perspective map = kFalling;
            for (auto& row : map)
                for (double& value : row)
                    value *= scale;
            dst.FillBytes(kUntouched);
            ASSERT_EQ(WarpQuad(src, dst, map), pxOk);
            for (int x = 0; x < 8; ++x)
                for (int c = 0; c < 4; ++c)
                    EXPECT_EQ(dst.Byte(x, 0, c), expected[x]) << x << ", scale " << scale;
        });
}

TEST(WarpQuad, BehindTheHorizon_NothingIsDrawn)
{
    // A trapezoid that falls away so steeply that the horizon lies two pixels above it.
    const Quad quad = {Point{18, 12}, {22, 12}, {40, 30}, {0, 30}};
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes) {
            GuardedPicture src(20, 20, format), dst(41, 31, format);
            src.FillNoise(3);
            dst.FillNoise(4);
            const GuardedPicture before = dst;
            ASSERT_EQ(WarpQuad(src, dst, TransformTo(WholeOf(src), quad), code), pxOk);
            for (int y = 0; y < 11; ++y)
                EXPECT_TRUE(std::equal(dst.Row(y), dst.Row(y) + 41 * dst.PixelBytes(), before.Row(y))) << y;
        }
}

/// Weights of a ring around a square from 2.25 to 5.25, in 256ths: 1 minus the distance.
/// Beside it: 0.25 away 192, 0.75 away 64. At the corners sqrt(0.125) is 0.353553, so 165.49 and 165;
/// sqrt(0.625) is 0.790569, so 53.61 and 54; sqrt(1.125) is above 1.
constexpr int kRing[8][8] = {
    {0, 0, 0, 0, 0, 0, 0, 0},          {0, 0, 0, 0, 0, 0, 0, 0},          {0, 0, 165, 192, 192, 192, 54, 0},
    {0, 0, 192, 256, 256, 256, 64, 0}, {0, 0, 192, 256, 256, 256, 64, 0}, {0, 0, 192, 256, 256, 256, 64, 0},
    {0, 0, 54, 64, 64, 64, 0, 0},      {0, 0, 0, 0, 0, 0, 0, 0},
};

TEST(WarpQuad, SmoothedRingOfBytes_FallsWithTheDistance)
{
    GuardedPicture src(4, 4, PF_BGRA8), dst(8, 8, PF_BGRA8);
    const std::array<std::uint8_t, 4> colour = {200, 255, 0, 131}, ground = {0, 7, 255, 30};
    src.Fill(colour[0], colour[1], colour[2], colour[3]);
    const Perspective map = TransformTo(WholeOf(src), CornersOf(WholeOf(src), 2.25, 2.25));
    for (const int code : kCodes)
        for (const bool smooth : {false, true})
            ForEachVariant([&] {
                dst.Fill(ground[0], ground[1], ground[2], ground[3]);
                ASSERT_EQ(
                    WarpQuad(src, dst, map, static_cast<std::uint32_t>(code) | (smooth ? pxSmoothEdges : 0)),
                    pxOk);
                for (int y = 0; y < 8; ++y)
                    for (int x = 0; x < 8; ++x)
                        for (std::size_t c = 0; c < 4; ++c) {
                            const int weight = smooth || kRing[y][x] == 256 ? kRing[y][x] : 0;
                            EXPECT_EQ(dst.Byte(x, y, static_cast<int>(c)),
                                      (colour[c] * weight + ground[c] * (256 - weight) + 128) / 256)
                                << x << ", " << y << ", code " << code;
                        }
            });
}

TEST(WarpQuad, SmoothedRingOfFloats_FallsWithTheDistance)
{
    GuardedPicture src(4, 4, PF_BGRA32F), dst(8, 8, PF_BGRA32F);
    src.FillFloat(2.0f, 1.0f, -3.0f, 0.5f);
    const Perspective map = TransformTo(WholeOf(src), CornersOf(WholeOf(src), 2.25, 2.25));
    const double colour[] = {2, 1, -3, 0.5}, ground[] = {0, 0.25, 1, 1};
    ForEachVariant([&] {
        dst.FillFloat(0.0f, 0.25f, 1.0f, 1.0f);
        ASSERT_EQ(WarpQuad(src, dst, map, pxLinear | pxSmoothEdges), pxOk);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const double dx = std::max({2.25 - x, x - 5.25, 0.0}),
                             dy = std::max({2.25 - y, y - 5.25, 0.0});
                const double weight = std::max(0.0, 1 - std::sqrt(dx * dx + dy * dy));
                for (int c = 0; c < 4; ++c)
                    EXPECT_NEAR(static_cast<double>(dst.Float(x, y, c)),
                                colour[c] * weight + ground[c] * (1 - weight), 2e-6)
                        << x << ", " << y;
            }
    });
}

TEST(WarpQuad, SmoothedRing_HasTheNearestEdgesColour)
{
    // Columns of 0, 100, 200 at 1.5 and so on; the edges lie half a pixel from the ring, at rows 0.5 and 3.5.
    GuardedPicture src(3, 4, PF_BGRA8), dst(6, 5, PF_BGRA8);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 3; ++x)
            for (int c = 0; c < 4; ++c)
                src.SetByte(x, y, c, static_cast<std::uint8_t>(100 * x));
    const Perspective map = TransformTo(WholeOf(src), CornersOf(WholeOf(src), 1.5, 0.5));
    dst.FillBytes(0);
    ASSERT_EQ(WarpQuad(src, dst, map, pxLinear | pxSmoothEdges), pxOk);
    // Inside 50 and 150; above half of them; to the right half of 200; to the left half of 0. The corner at
    // sqrt(0.5) has the weight 75 of 256, and 200 * 75 / 256 is 58.6.
    const int expected[5][6] = {{0, 0, 25, 75, 59, 0},
                                {0, 0, 50, 150, 100, 0},
                                {0, 0, 50, 150, 100, 0},
                                {0, 0, 50, 150, 100, 0},
                                {0, 0, 25, 75, 59, 0}};
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(dst.Byte(x, y), expected[y][x]) << x << ", " << y;
}

TEST(WarpQuad, SmoothedRingBeyondTheHorizon_HasTheNearestEdgesColour)
{
    // Columns of 0, the last one 200. x' = (5 x + s (x + 1)) / (x + 1): the horizon at 5 + s, the last of 20
    // columns at 4.75 + s. Pixel 5 lies on the horizon, a quarter beyond the edge; with s = 0.5 pixel 6 lies
    // behind it, three quarters beyond the edge.
    GuardedPicture src(20, 3, PF_BGRA8), dst(8, 1, PF_BGRA8);
    for (int y = 0; y < 3; ++y)
        for (int c = 0; c < 4; ++c)
            src.SetByte(19, y, c, 200);
    for (const double s : {0.0, 0.5}) {
        dst.FillBytes(0);
        ASSERT_EQ(WarpQuad(src, dst, {{{5 + s, 0, s}, {0, 5, 0}, {1, 0, 1}}}, pxLinear | pxSmoothEdges),
                  pxOk);
        const int pixel = s == 0.0 ? 5 : 6;
        for (int c = 0; c < 4; ++c) {
            EXPECT_EQ(dst.Byte(pixel, 0, c), s == 0.0 ? 150 : 50);
            EXPECT_EQ(dst.Byte(pixel + 1, 0, c), 0);
        }
    }
}

TEST(WarpQuad, FacesAtRestThatShareTheirEdges_GiveThePictureBack)
{
    // Cut at shared rows and columns, drawn in a mixed order over noise.
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes)
            for (const auto& grid : {std::array{3, 2}, {5, 4}, {1, 1}, {7, 3}}) {
                const int width = 43, height = 31;
                GuardedPicture src(width, height, format);
                src.FillNoise(3);
                src.Freeze();
                const int columns = grid[0], rows = grid[1];
                const auto cut = [](int i, int parts, int size) { return i * (size - 1) / parts; };
                ForEachVariant([&] {
                    GuardedPicture dst(width, height, format);
                    dst.FillNoise(9);
                    for (int i = 0; i < columns * rows; ++i) {
                        const int face = i * 11 % (columns * rows);
                        const int column = face % columns, row = face / columns;
                        const int left = cut(column, columns, width), top = cut(row, rows, height);
                        const PxRect rect = {left, top, cut(column + 1, columns, width) - left + 1,
                                             cut(row + 1, rows, height) - top + 1};
                        const Perspective map = TransformTo(rect, CornersOf(rect));
                        ASSERT_EQ(CallOn(src, rect, dst, WholeOf(dst), map, code).RunQuad(), pxOk);
                    }
                    ASSERT_TRUE(Near(dst, src, IsFloatFormat(format) ? 1e-6 : 0.0))
                        << "code " << (code & 0xff) << ", " << columns << " x " << rows;
                });
            }
}

// --- perspective: against the plain version ---------------------------------------------------------------

/// Quadrangles of all kinds around a picture of that size.
std::vector<Quad> QuadsFor(double width, double height)
{
    const double w = width - 1, h = height - 1;
    return {
        {Point{0.25, 0.75}, {w + 0.25, 0.75}, {w + 0.25, h + 0.75}, {0.25, h + 0.75}},          // moved
        {Point{w * 0.3, h * 0.2}, {w * 0.7, h * 0.25}, {w * 1.02, h * 0.9}, {w * -0.05, h}},    // lying
        {Point{w * 0.1, h * -0.2}, {w * 0.9, h * 0.3}, {w * 0.9, h * 0.6}, {w * 0.1, h * 1.3}}, // a door
        {Point{w * 0.93, h * 0.11},
         {w * 0.12, h * 0.07},
         {w * 0.03, h * 0.91},
         {w * 0.88, h * 1.04}}, // its back
        {Point{w * 0.5, h * -0.1},
         {w * 1.1, h * 0.52},
         {w * 0.48, h * 1.07},
         {w * -0.13, h * 0.49}},                                                          // on its tip
        {Point{w * 0.49, h * 0.5}, {w * 0.51, h * 0.5}, {w * 3, h * 2}, {w * -2, h * 2}}, // to the horizon
        {Point{w * 0.2, h * 0.5}, {w * 0.8, h * 0.47}, {w * 0.8, h * 0.5}, {w * 0.2, h * 0.51}}, // a sliver
        {Point{w * 0.411, h * 0.42}, {w * 0.52, h * 0.43}, {w * 0.5, h * 0.55}, {w * 0.4, h * 0.51}}, // small
        {Point{w * -4, h * -3}, {w * 5.5, h * -4}, {w * 6, h * 5}, {w * -5, h * 4}}, // from near by
        {Point{w * 2, h * 2}, {w * 3, h * 2}, {w * 3, h * 3}, {w * 2, h * 3.1}},     // out of sight
    };
}

TEST(WarpQuad, EveryMemberCodeAndSize_MatchesThePlainVersion)
{
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes)
            for (int width = 2; width <= 40; ++width)
                for (const int height : {width, 42 - width}) {
                    const std::vector<Quad> quads = QuadsFor(width, height);
                    GuardedPicture src(width, height, format), dst(width, height, format);
                    for (std::size_t i = 0; i < 3; ++i) {
                        const Quad& quad = quads[(static_cast<std::size_t>(width) + i * 3) % quads.size()];
                        CheckQuad(src, WholeOf(src), dst, WholeOf(dst), TransformTo(WholeOf(src), quad),
                                  code);
                    }
                }
}

TEST(WarpQuad, EveryQuadrangle_MatchesThePlainVersion)
{
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes)
            for (const Quad& quad : QuadsFor(61, 43))
                for (const auto& size : {std::array{20, 15}, {64, 64}, {33, 3}}) {
                    GuardedPicture src(size[0], size[1], format), dst(61, 43, format);
                    CheckQuad(src, WholeOf(src), dst, WholeOf(dst), TransformTo(WholeOf(src), quad), code,
                              Noise::Leaning);
                }
}

TEST(WarpQuad, EveryLayout_MatchesThePlainVersion)
{
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes)
            for (const Quad& quad : QuadsFor(23, 17))
                ForEachLayout([&](const PictureLayout& layout) {
                    GuardedPicture src(19, 13, format, layout), dst(23, 17, format, layout);
                    CheckQuad(src, WholeOf(src), dst, WholeOf(dst), TransformTo(WholeOf(src), quad), code);
                });
}

TEST(WarpQuad, UnreadablePagesAround_AreNeverTouched)
{
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes)
            for (const Guard guard : {Guard::PageStart, Guard::PageEnd})
                for (const int width : {2, 3, 9, 17})
                    for (const Quad& quad : QuadsFor(width, 9)) {
                        GuardedPicture src(width, 7, format, {.guard = guard}),
                            dst(width, 9, format, {.guard = guard});
                        CheckQuad(src, WholeOf(src), dst, WholeOf(dst), TransformTo(WholeOf(src), quad),
                                  code);
                    }
}

// Between rows that are not there nothing is interpolated, whatever weight it would have.
TEST(WarpQuad, SourcesOneRowHigh_AreReadAlone)
{
    const Perspective leaning = {{{1.0, 0.3, 0.25}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const Guard guard : {Guard::PictureStart, Guard::PictureEnd})
                for (const int width : {2, 5, 17, 33}) {
                    GuardedPicture src(width, 1, format, {.guard = guard}),
                        dst(width + 1, 2, format, {.guard = guard});
                    CheckQuad(src, WholeOf(src), dst, WholeOf(dst), leaning,
                              static_cast<std::uint32_t>(code));
                }
}

TEST(WarpQuad, Regions_AreTakenAndWrittenAlone)
{
    const PxRect from[] = {{0, 0, 30, 20}, {4, 3, 11, 9}, {28, 18, 2, 2}, {20, 10, 7, 10}};
    const PxRect to[] = {{0, 0, 35, 25}, {3, 2, 20, 11}, {34, 24, 1, 1}, {0, 12, 35, 1}, {17, 0, 1, 25}};
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes)
            for (const PxRect& source : from)
                for (const PxRect& target : to)
                    for (const Quad& quad : QuadsFor(35, 25)) {
                        GuardedPicture src(30, 20, format), dst(35, 25, format);
                        CheckQuad(src, source, dst, target, TransformTo(source, quad), code);
                    }
}

TEST(WarpQuad, RandomQuadrangles_MatchThePlainVersion)
{
    std::mt19937 random(11);
    const auto unit = [&] { return Unit(random); };
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : kAllQuadCodes)
            for (int round = 0; round < 120; ++round) {
                GuardedPicture src(static_cast<int>(2 + random() % 40), static_cast<int>(2 + random() % 40),
                                   format);
                GuardedPicture dst(static_cast<int>(1 + random() % 70), static_cast<int>(1 + random() % 40),
                                   format);
                const double start = 7 * unit(), radius = dst.Width() * (0.1 + unit());
                Quad quad;
                for (std::size_t i = 0; i < 4; ++i) {
                    const auto step = static_cast<double>(round % 2 != 0 ? i : 3 - i);
                    const double angle = start + (step + 0.8 * unit()) * kPi / 2;
                    quad[i] = {dst.Width() / 2.0 + radius * std::cos(angle),
                               dst.Height() / 2.0 + radius * std::sin(angle)};
                }
                CheckQuad(src, WholeOf(src), dst, WholeOf(dst), TransformTo(WholeOf(src), quad), code);
            }
}

TEST(WarpQuad, PicturesOfManyStripsWithLongRings_MatchThePlainVersion)
{
    for (const std::uint32_t format : kFormats)
        for (const std::uint32_t code : {std::uint32_t{pxLinear}, pxLinear | pxSmoothEdges})
            for (const Quad& quad : QuadsFor(531, 60)) {
                GuardedPicture src(300, 41, format), dst(531, 60, format);
                CheckQuad(src, WholeOf(src), dst, WholeOf(dst), TransformTo(WholeOf(src), quad), code);
            }
}

TEST(WarpQuad, EnlargedAThousandfold_TheSlackIsPixelsWide)
{
    // Pixel 9 lies at -1/1200, which still counts, pixel 8 at -2/1200.
    const Perspective map = {{{1200, 0, 10}, {0, 1200, 10}, {0, 0, 1}}};
    for (const int code : kCodes) {
        GuardedPicture src(2, 2, PF_BGRA8), dst(20, 20, PF_BGRA8);
        src.Fill(200, 200, 200, 200);
        ForEachVariant([&] {
            dst.FillBytes(kUntouched);
            ASSERT_EQ(WarpQuad(src, dst, map, static_cast<std::uint32_t>(code)), pxOk);
            for (int y = 0; y < 20; ++y)
                for (int x = 0; x < 20; ++x)
                    EXPECT_EQ(dst.Byte(x, y, 0), x >= 9 && y >= 9 ? 200 : kUntouched) << x << ", " << y;
        });
    }
}

TEST(WarpQuad, Linear_IsCloseToTheExactMean)
{
    for (const std::uint32_t format : kFormats)
        for (const Quad& quad : QuadsFor(45, 33)) {
            GuardedPicture src(37, 29, format), dst(45, 33, format);
            src.FillNoise(3, Noise::Leaning);
            const Picture from = reference::Read(src);
            const Perspective map = TransformTo(WholeOf(src), quad);
            const std::optional<Perspective> back = reference::Inverse(map);
            ASSERT_TRUE(back);
            ASSERT_EQ(WarpQuad(src, dst, map), pxOk);
            const Picture result = reference::Read(dst);
            for (int y = 0; y < 33; ++y)
                for (int x = 0; x < 45; ++x) {
                    const Point at = reference::Mapped(*back, {1.0 * x, 1.0 * y});
                    if (!reference::IsInside({0, 0, 37, 29}, at))
                        continue;
                    for (int c = 0; c < 4; ++c)
                        ASSERT_NEAR(result.At(x, y, c),
                                    reference::ExactSample(from, {0, 0, 37, 29}, at, c, reference::kLinear),
                                    from.floats ? 1e-6 : 1.5)
                            << x << ", " << y;
                }
        }
}

TEST(WarpQuad, AffineCoefficients_GiveTheAffineWarp)
{
    // Zoomed by powers of two and sheared: every position is exact both ways.
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const Affine& affine :
                 {Affine{{{2, 0, 3}, {0, 4, -1}}}, {{{-2, 0, 30}, {0, 0.5, 2}}}, {{{1, 1, -4}, {0, 2, 0}}}}) {
                GuardedPicture src(21, 17, format), dst(32, 24, format), other(32, 24, format);
                src.FillNoise(3);
                ASSERT_EQ(
                    CallOn(src, WholeOf(src), dst, WholeOf(dst), affine, static_cast<std::uint32_t>(code))
                        .RunAffine(),
                    pxOk);
                ASSERT_EQ(WarpQuad(src, other, {{affine[0], affine[1], {0, 0, 1}}},
                                   static_cast<std::uint32_t>(code)),
                          pxOk);
                EXPECT_TRUE(Equal(other, dst)) << "code " << code;
            }
}

TEST(WarpQuad, HostileMaps_EndSoonAndKeepTheGuards)
{
    std::mt19937 random(5);
    const double values[] = {0,    1,     -1,     1e-3,  64,     -64,    1e9,       -1e9,
                             1e99, -1e99, 1e-205, 1e300, -1e300, 1e-300, kInfinity, kNotANumber};
    GuardedPicture sources[] = {{16, 16, PF_BGRA8}, {16, 16, PF_BGRA32F}};
    GuardedPicture results[] = {{64, 64, PF_BGRA8}, {64, 64, PF_BGRA32F}};
    for (GuardedPicture& src : sources) {
        src.FillNoise(1);
        src.Freeze();
    }
    for (int round = 0; round < 20000; ++round) {
        const GuardedPicture& src = sources[round % 2];
        const GuardedPicture& dst = results[round % 2];
        Perspective map;
        const auto hostile = random() % 8; // of eight coefficients
        for (auto& row : map)
            for (double& value : row)
                value =
                    random() % 8 < hostile ? values[random() % std::size(values)] : (Unit(random) - 0.5) * 8;
        const std::uint32_t code = kAllQuadCodes[random() % std::size(kAllQuadCodes)];
        const PxStatus status = WarpQuad(src, dst, map, code);
        ASSERT_TRUE(status == pxOk || status == pxDegenerateWarp) << status;
        for (const auto& row : map)
            for (const double value : row)
                ASSERT_TRUE(status != pxOk || std::isfinite(value));
    }
    for (const GuardedPicture& picture : sources)
        picture.Check();
    for (const GuardedPicture& picture : results)
        picture.Check();
}

// --- perspective: lit -------------------------------------------------------------------------------------

constexpr float kLight[] = {0.3f, 0.7f, 1.0f, 0.51f};

PxStatus WarpQuadLit(const GuardedPicture& src, const GuardedPicture& dst, const Perspective& map,
                     std::uint32_t code, const float* light = kLight)
{
    const WarpCall call = CallOn(src, WholeOf(src), dst, WholeOf(dst), map, code);
    return pxWarpQuadLit_32f_C4(static_cast<const float*>(call.src), call.srcWidth, call.srcHeight,
                                call.srcStep, call.srcRegion, static_cast<float*>(call.dst), call.dstStep,
                                call.dstRegion, call.map, call.code, light);
}

/// Of noise that has its numbers bit for bit, of special values alike.
void CheckLit(const std::array<int, 2>& size, Guard guard, const Quad& quad, std::uint32_t code, Noise noise)
{
    GuardedPicture src(size[0], size[1], PF_BGRA32F, {.guard = guard});
    src.FillNoise(1, noise);
    GuardedPicture lit = src;
    for (int y = 0; y < lit.Height(); ++y)
        for (int x = 0; x < lit.Width(); ++x)
            for (int c = 0; c < 4; ++c)
                lit.SetFloat(x, y, c, src.Float(x, y, c) * kLight[c]);
    src.Freeze();
    const Perspective map = TransformTo(WholeOf(src), quad);
    ForEachVariant([&] {
        GuardedPicture dst(61, 43, PF_BGRA32F, {.guard = guard});
        dst.FillNoise(2);
        GuardedPicture expected = dst;
        ASSERT_EQ(WarpQuad(lit, expected, map, code), pxOk);
        ASSERT_EQ(WarpQuadLit(src, dst, map, code), pxOk);
        dst.Check();
        ASSERT_TRUE(noise == Noise::Special ? reference::Matches(dst, reference::Read(expected))
                                            : Equal(dst, expected))
            << size[0] << " x " << size[1];
    });
}

TEST(WarpQuadLit, EveryQuadrangleAndSize_IsTheWarpOfALitCopy)
{
    for (const std::uint32_t code : {std::uint32_t{pxLinear}, pxLinear | pxSmoothEdges})
        for (const Guard guard : {Guard::PageStart, Guard::PageEnd})
            for (const Quad& quad : QuadsFor(61, 43))
                for (const auto& size : {std::array{20, 15}, {64, 40}, {33, 2}, {2, 9}})
                    for (const Noise noise : {Noise::Leaning, Noise::Special})
                        CheckLit(size, guard, quad, code, noise);
}

TEST(WarpQuadLit, WhatTheLoopsCannotTake_IsRefused)
{
    const Perspective still = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    GuardedPicture src(9, 8, PF_BGRA32F), row(9, 1, PF_BGRA32F), column(1, 8, PF_BGRA32F),
        dst(12, 10, PF_BGRA32F);
    dst.FillNoise(2);
    dst.Freeze();
    EXPECT_EQ(WarpQuadLit(src, dst, still, pxLinear, nullptr), pxNullPointer);
    for (const std::uint32_t code : {std::uint32_t{pxNearest}, std::uint32_t{pxCubic}, 3u, 0u})
        EXPECT_EQ(WarpQuadLit(src, dst, still, code | pxSmoothEdges), pxBadInterpolation) << code;
    EXPECT_EQ(WarpQuadLit(row, dst, still, pxLinear), pxBadSize);
    EXPECT_EQ(WarpQuadLit(column, dst, still, pxLinear), pxBadSize);
    const WarpCall call = CallOn(src, WholeOf(src), dst, WholeOf(dst), still, pxLinear);
    EXPECT_EQ(pxWarpQuadLit_32f_C4(static_cast<const float*>(call.src), 9, 8, 1 << 28, call.srcRegion,
                                   static_cast<float*>(call.dst), call.dstStep, call.dstRegion, call.map,
                                   pxLinear, kLight),
              pxBadSize)
        << "rows that reach further than 2 GB";
    dst.Check();
}

// --- perspective: what is refused -------------------------------------------------------------------------

const Perspective kStillQuad = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

class WarpQuadRefusals : public testing::TestWithParam<std::uint32_t> {
protected:
    WarpQuadRefusals() : m_src(9, 8, GetParam()), m_dst(12, 10, GetParam())
    {
        m_src.FillNoise(1);
        m_dst.FillNoise(2);
        m_dst.Freeze();
    }

    ~WarpQuadRefusals() override { m_dst.Check(); }

    WarpCall With(const Perspective& map) const
    {
        return CallOn(m_src, WholeOf(m_src), m_dst, WholeOf(m_dst), map, pxLinear | pxSmoothEdges);
    }

    GuardedPicture m_src, m_dst;
};

TEST_P(WarpQuadRefusals, EveryBadArgumentInTurn_HasItsStatus)
{
    ForEachBadCall(With(kStillQuad), m_src.Width() * m_src.PixelBytes(), m_dst.Width() * m_dst.PixelBytes(),
                   [](const WarpCall& call, PxStatus status) { EXPECT_EQ(call.RunQuad(), status); });
}

TEST_P(WarpQuadRefusals, UnknownInterpolations_AreRefused)
{
    for (const std::uint32_t bad : {0u, 3u, 5u, 6u, 8u, 16u, 0x40000002u, 0x01000002u, 0xFFFFFFFFu})
        for (const std::uint32_t top : {0u, pxSmoothEdges}) {
            WarpCall call = With(kStillQuad);
            call.code = bad | top;
            EXPECT_EQ(call.RunQuad(), pxBadInterpolation) << bad;
        }
}

TEST_P(WarpQuadRefusals, SingularMaps_AreDegenerate)
{
    for (const Perspective& map : {Perspective{},
                                   {{{1, 0, 0}, {0, 1, 0}, {0, 0, 0}}},
                                   {{{1, 0, 0}, {0, 0, 0}, {0, 0, 1}}},
                                   {{{1, 2, 3}, {2, 4, 6}, {0, 0, 1}}},
                                   {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}},
                                   {{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}}})
        EXPECT_EQ(With(map).RunQuad(), pxDegenerateWarp) << testing::PrintToString(map);
    EXPECT_EQ(pxDegenerateWarp, -56);
}

TEST_P(WarpQuadRefusals, CoefficientsThatAreNotFinite_AreDegenerate)
{
    for (const double bad : {kNotANumber, kInfinity, -kInfinity})
        for (std::size_t i = 0; i < 9; ++i) {
            Perspective map = kStillQuad;
            map[i / 3][i % 3] = bad;
            EXPECT_EQ(With(map).RunQuad(), pxDegenerateWarp) << bad << " at " << i;
        }
}

TEST_P(WarpQuadRefusals, WithSeveralReasons_NameTheFirst)
{
    const Perspective bad = {};
    WarpCall call = With(bad);
    call.src = nullptr;
    call.srcRegion = {9, 0, 0, 1};
    call.srcStep = 1;
    call.code = 3;
    EXPECT_EQ(call.RunQuad(), pxNullPointer);
    call.src = m_src.Row(0);
    EXPECT_EQ(call.RunQuad(), pxBadSize);
    call.srcRegion.width = 1;
    EXPECT_EQ(call.RunQuad(), pxBadStep);
    call.srcStep = m_src.Stride();
    EXPECT_EQ(call.RunQuad(), pxRegionOutsideSource);
    call.srcRegion.x = 0;
    EXPECT_EQ(call.RunQuad(), pxBadInterpolation);
    call.code = pxNearest;
    EXPECT_EQ(call.RunQuad(), pxDegenerateWarp);
}

INSTANTIATE_TEST_SUITE_P(EveryMember, WarpQuadRefusals, testing::ValuesIn(kFormats));

} // namespace
} // namespace kelmora

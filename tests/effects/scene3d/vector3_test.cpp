#include "effects/scene3d/vector3.h"

#include <limits>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr Vector3 kZero;

TEST(Vector3, Default_IsZero)
{
    EXPECT_EQ(kZero, (Vector3{0.0, 0.0, 0.0}));
}

TEST(Vector3, AddSubtractScale_GoPartByPart)
{
    const Vector3 a = {1.0, 2.0, 3.0}, b = {10.0, -20.0, 0.5};
    EXPECT_EQ(Add(a, b), (Vector3{11.0, -18.0, 3.5}));
    EXPECT_EQ(Subtract(a, b), (Vector3{-9.0, 22.0, 2.5}));
    EXPECT_EQ(Scale(a, -2.0), (Vector3{-2.0, -4.0, -6.0}));
    Vector3 sum = a;
    sum.AddInPlace(b);
    EXPECT_EQ(sum, Add(a, b));
}

TEST(Vector3, DotAndCross_AreTheProducts)
{
    const Vector3 a = {1.0, 2.0, 3.0}, b = {4.0, 5.0, 6.0};
    EXPECT_EQ(Dot(a, b), 32.0);
    EXPECT_EQ(Cross(a, b), (Vector3{-3.0, 6.0, -3.0}));
    EXPECT_EQ(Cross({1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}), (Vector3{0.0, 0.0, 1.0}));
}

TEST(Vector3, Length_IsTheRootOfTheSquares)
{
    EXPECT_EQ((Vector3{2.0, -3.0, 6.0}.Length()), 7.0);
    EXPECT_EQ(kZero.Length(), 0.0);
}

TEST(Vector3, Normalize_AVector_GetsLengthOne)
{
    Vector3 v = {3.0, 0.0, -4.0};
    v.Normalize();
    EXPECT_EQ(v, (Vector3{0.6, 0.0, -0.8}));
    EXPECT_EQ(Normalized({0.0, 0.5, 0.0}), (Vector3{0.0, 1.0, 0.0}));
}

TEST(Vector3, Normalize_NextToNoLength_GivesZero)
{
    EXPECT_EQ(Normalized(kZero), kZero);
    EXPECT_EQ(Normalized({0.0, 9.9e-7, 0.0}), kZero);
    EXPECT_EQ(Normalized({0.0, 1.1e-6, 0.0}), (Vector3{0.0, 1.0, 0.0}));
    EXPECT_EQ(Normalized({kNaN, 1.0, 0.0}), kZero);
}

// The limit is the float next to a millionth, which lies a little below it.
TEST(Vector3, DivideInPlace_BelowAMillionth_GivesZero)
{
    const auto halved = [](double s) {
        Vector3 v = {1.0, 2.0, -4.0};
        v.DivideInPlace(s);
        return v;
    };
    EXPECT_EQ(halved(-2.0), (Vector3{-0.5, -1.0, 2.0}));
    EXPECT_EQ(halved(0.0), kZero);
    EXPECT_EQ(halved(9.99999997475e-07), kZero);
    EXPECT_EQ(halved(-9.99999997475e-07), kZero);
    EXPECT_NE(halved(9.999999974752427e-07), kZero);
    EXPECT_NE(halved(-1e-6), kZero);
    EXPECT_EQ(halved(kNaN), kZero);
}

TEST(Vector3, FaceNormal_OfPointsAnticlockwise_LooksAtTheViewer)
{
    const Vector3 a = {0.0, 0.0, 0.0}, b = {3.0, 0.0, 0.0}, c = {1.0, 5.0, 0.0};
    EXPECT_EQ(FaceNormal(a, b, c), (Vector3{0.0, 0.0, 1.0}));
    EXPECT_EQ(FaceNormal(a, c, b), (Vector3{0.0, 0.0, -1.0}));
}

TEST(Vector3, FaceNormal_OfPointsOnALine_IsZero)
{
    EXPECT_EQ(FaceNormal({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {2.0, 2.0, 2.0}), kZero);
}

} // namespace
} // namespace kelmora

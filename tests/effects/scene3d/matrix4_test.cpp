#include "effects/scene3d/matrix4.h"

#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/effects/scene3d/near.h"

namespace kelmora {
namespace {

constexpr double kQuarter = std::numbers::pi / 2.0;

TEST(Matrix4, Default_IsAllZeros)
{
    const Matrix4 zeros;
    for (const auto& row : zeros.m)
        for (const double entry : row)
            EXPECT_EQ(entry, 0.0);
}

TEST(Matrix4, Identity_HasOnesOnTheDiagonal)
{
    EXPECT_EQ(Matrix4::Identity(), (Matrix4{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}}));
}

TEST(Matrix4, TranslationAndScaling_SetTheirEntries)
{
    const Matrix4 translation = {{{1, 0, 0, 2}, {0, 1, 0, 3}, {0, 0, 1, 4}, {0, 0, 0, 1}}};
    EXPECT_EQ(Matrix4::Translation(2.0, 3.0, 4.0), translation);
    EXPECT_EQ(Matrix4::Translation(Vector3{2.0, 3.0, 4.0}), translation);
    EXPECT_EQ(Matrix4::Scaling(2.0, 3.0, 4.0),
              (Matrix4{{{2, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 4, 0}, {0, 0, 0, 1}}}));
}

TEST(Matrix4, Rotations_SetTheirEntries)
{
    const double s = 0.479425538604203, c = 0.8775825618903728; // of 0.5
    ExpectNear(Matrix4::RotationX(0.5), {{{1, 0, 0, 0}, {0, c, s, 0}, {0, -s, c, 0}, {0, 0, 0, 1}}});
    ExpectNear(Matrix4::RotationY(0.5), {{{c, 0, -s, 0}, {0, 1, 0, 0}, {s, 0, c, 0}, {0, 0, 0, 1}}});
    ExpectNear(Matrix4::RotationZ(0.5), {{{c, s, 0, 0}, {-s, c, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}});
}

// The right hand would take y to z, z to x, and x to y.
TEST(Matrix4, Kept_Rotations_TurnAgainstTheRightHand)
{
    ExpectNear(Matrix4::RotationX(kQuarter).Transform({0, 1, 0}), {0, 0, -1});
    ExpectNear(Matrix4::RotationY(kQuarter).Transform({0, 0, 1}), {-1, 0, 0});
    ExpectNear(Matrix4::RotationZ(kQuarter).Transform({1, 0, 0}), {0, -1, 0});
}

TEST(Matrix4, Then_AppliesTheArgumentLast)
{
    const Matrix4 move = Matrix4::Translation(1.0, 2.0, 3.0), grow = Matrix4::Scaling(2.0, 3.0, 4.0);
    EXPECT_EQ(move.Then(grow).Transform({1, 1, 1}), (Vector3{4, 9, 16}));
    EXPECT_EQ(grow.Then(move).Transform({1, 1, 1}), (Vector3{3, 5, 7}));
    EXPECT_EQ(move.Then(Matrix4::Identity()), move);
}

TEST(Matrix4, Perspective_SetsOneEntry)
{
    EXPECT_EQ(Matrix4::Perspective(5.0),
              (Matrix4{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, -0.2, 1}}}));
}

TEST(Matrix4, Perspective_FromNextToNoDistance_IsTheIdentity)
{
    for (const double distance : {0.0, 9.9e-7, -9.9e-7, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(Matrix4::Perspective(distance), Matrix4::Identity()) << distance;
    EXPECT_NE(Matrix4::Perspective(1e-6), Matrix4::Identity());
}

TEST(Matrix4, Transform_ThroughPerspective_DividesByTheDistanceLeft)
{
    const Matrix4 view = Matrix4::Perspective(6.0);
    EXPECT_EQ(view.Transform({1, -1, 0}), (Vector3{1, -1, 0}));
    EXPECT_EQ(view.Transform({1, -1, 3}), (Vector3{2, -2, 6}));
    EXPECT_EQ(view.Transform({1, -1, -6}), (Vector3{0.5, -0.5, -3}));
}

TEST(Matrix4, Transform_BehindTheViewer_Mirrors)
{
    EXPECT_EQ(Matrix4::Perspective(6.0).Transform({1, -1, 12}), (Vector3{-1, 1, -12}));
}

TEST(Matrix4, Transform_NextToTheViewer_DividesNothing)
{
    const Matrix4 view = Matrix4::Perspective(1.0);
    EXPECT_EQ(view.Transform({3, 2, 1}), (Vector3{3, 2, 1}));
    EXPECT_EQ(view.Transform({3, 2, 1.0 - 0x1p-20}).x, 3.0); // w is 0.95e-6
    EXPECT_EQ(view.Transform({3, 2, 1.0 - 0x1p-19}).x, 3.0 * 0x1p19);
    EXPECT_EQ(view.Transform({3, 2, 1.0 + 0x1p-19}).x, -3.0 * 0x1p19);
}

TEST(Matrix4, Transform_WithWOfOne_DividesNothing)
{
    Matrix4 shear = Matrix4::Identity();
    shear.m[0][1] = 0.1;
    EXPECT_EQ(shear.Transform({0.3, 0.7, 0.0}).x, 0.3 + 0.1 * 0.7);
}

TEST(Matrix4, Transform_WithoutANumberForW_DividesNothing)
{
    Matrix4 broken = Matrix4::Identity();
    broken.m[3][3] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(broken.Transform({3, 2, 1}), (Vector3{3, 2, 1}));
}

} // namespace
} // namespace kelmora

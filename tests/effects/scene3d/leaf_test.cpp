#include "effects/scene3d/leaf.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "tests/effects/scene3d/near.h"
#include "tests/support/failing_heap.h"

namespace kelmora {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// A square of side 0.2 about `center`.
QuadFace SquareAt(const Vector3& center)
{
    QuadFace face;
    face.SetCorners(Add(center, {-0.1, 0.1, 0}), Add(center, {0.1, 0.1, 0}), Add(center, {0.1, -0.1, 0}),
                    Add(center, {-0.1, -0.1, 0}));
    return face;
}

/// A leaf that flies from the middle of the frame for the whole time.
Leave3D LeafTo(const Vector3& target, double totalAngle = 0.0, double flutter = 0.0)
{
    return {SquareAt({}), target, totalAngle, 0.0, 0.0, 1.0, 0.0, flutter};
}

/// Where the top left corner of the leaf is half way.
Vector3 CornerHalfWay(const Leave3D& leaf)
{
    return leaf.GetFaceAt(0.5).corners[0];
}

TEST(Leave3D, Times_AreCutToZeroToOne)
{
    const Leave3D leaf(QuadFace(), {}, 0.0, 0.0, -0.5, 1.5, 7.0, 0.0);
    EXPECT_EQ(leaf.startTime, 0.0);
    EXPECT_EQ(leaf.endTime, 1.0);
    EXPECT_EQ(leaf.stopTime, 7.0);
}

TEST(Leave3D, IsVisibleAt_UntilItStops)
{
    Leave3D leaf = LeafTo({1, 0, 0});
    EXPECT_TRUE(leaf.IsVisibleAt(1.0));
    leaf.stopTime = 0.5;
    EXPECT_TRUE(leaf.IsVisibleAt(0.4));
    EXPECT_FALSE(leaf.IsVisibleAt(0.5));
    EXPECT_FALSE(leaf.IsVisibleAt(0.6));
}

TEST(Leave3D, BeforeItsStartAndFromItsEnd_Rests)
{
    const Leave3D leaf(SquareAt({}), {1, 0, 0}, kPi, 0.5, 0.25, 0.75, 0.0, 0.5);
    for (const double t : {-1.0, 0.0, 0.24, 0.75, 0.9, 1.0, 5.0})
        EXPECT_EQ(leaf.GetMatrixAt(t), Matrix4::Identity()) << t;
    EXPECT_NE(leaf.GetMatrixAt(0.5), Matrix4::Identity());
}

TEST(Leave3D, FromItsStopOn_Rests)
{
    Leave3D leaf = LeafTo({1, 0, 0});
    leaf.stopTime = 0.5;
    EXPECT_NE(leaf.GetMatrixAt(0.4), Matrix4::Identity());
    EXPECT_EQ(leaf.GetMatrixAt(0.5), Matrix4::Identity());
    leaf.stopTime = -0.5;
    EXPECT_EQ(leaf.GetMatrixAt(0.4), Matrix4::Identity());
}

TEST(Leave3D, WithoutTimeToFly_Rests)
{
    const Leave3D leaf(SquareAt({}), {1, 0, 0}, 0.0, 0.0, 0.5, 0.5, 0.0, 0.0);
    EXPECT_EQ(leaf.GetMatrixAt(0.5), Matrix4::Identity());
    EXPECT_EQ(LeafTo({1, 0, 0}).GetMatrixAt(kNaN), Matrix4::Identity());
}

TEST(Leave3D, TheWay_IsStraightAndEven)
{
    const Leave3D leaf(SquareAt({0.5, 0.25, 0}), {2.5, -1.75, -4}, 0.0, 0.0, 0.2, 0.6, 0.0, 0.0);
    ExpectNear(leaf.GetFaceAt(0.2).GetCenter(), {0.5, 0.25, 0});
    ExpectNear(leaf.GetFaceAt(0.3).GetCenter(), {1.0, -0.25, -1});
    ExpectNear(leaf.GetFaceAt(0.4).GetCenter(), {1.5, -0.75, -2});
    ExpectNear(leaf.GetFaceAt(0.4).corners[0], {1.4, -0.65, -2});
    EXPECT_EQ(leaf.face.GetCenter(), SquareAt({0.5, 0.25, 0}).GetCenter());
}

TEST(Leave3D, Shrink_ScalesAboutTheCenter)
{
    const Leave3D leaf(SquareAt({0.5, 0, 0}), {1.5, 0, 0}, 0.0, 0.8, 0.0, 1.0, 0.0, 0.0);
    ExpectNear(leaf.GetFaceAt(0.5).corners[0], {0.94, 0.06, 0}); // 0.6 of the size about (1, 0, 0)
}

TEST(Leave3D, PlainSpin_ToTheRight_TurnsAboutTheUpright)
{
    ExpectNear(CornerHalfWay(LeafTo({1, 0, 0}, kPi)), {0.5, 0.1, -0.1});
}

TEST(Leave3D, PlainSpin_ToTheLeft_TurnsTheOtherWay)
{
    ExpectNear(CornerHalfWay(LeafTo({-1, 0, 0}, kPi)), {-0.5, 0.1, -0.1});
}

TEST(Leave3D, PlainSpin_UpAndDown_TurnsAboutTheLevel)
{
    ExpectNear(CornerHalfWay(LeafTo({0, 1, 0}, kPi)), {-0.1, 0.5, 0.1});
    ExpectNear(CornerHalfWay(LeafTo({0, -1, 0}, kPi)), {-0.1, -0.5, -0.1});
}

// The corner and the flight both point along (-1, 1), so the quarter turn takes the corner straight back or forth.
TEST(Leave3D, PlainSpin_Aslant_TurnsAcrossTheFlight)
{
    const Vector3 corner = CornerHalfWay(LeafTo({-1, 1, 0}, kPi));
    EXPECT_NEAR(corner.x, -0.5, kRounding);
    EXPECT_NEAR(corner.y, 0.5, kRounding);
    EXPECT_NEAR(std::fabs(corner.z), 0.1 * std::sqrt(2.0), kRounding);
}

// The angle about x is -(a * g * (0.5 - g) * 0.5), which is 0 where g is 0.5.
TEST(Leave3D, Tumble_OfAHalf_TurnsAboutTheUprightAtHalfTheRate)
{
    ExpectNear(CornerHalfWay(LeafTo({0, 1, 0}, 2.0 * kPi, 0.5)), {0.0, 0.6, -0.1});
}

// g = 1: a about y and a / 4 about x. Half way a is 2 pi: a whole turn about y, a quarter about x.
TEST(Leave3D, Tumble_OfOne_TurnsAboutBothAxes)
{
    ExpectNear(CornerHalfWay(LeafTo({1, 0, 0}, 4.0 * kPi, 1.0)), {0.4, 0.0, -0.1});
}

// a is pi: half a turn about y takes the corner to (0.1, 0.1, 0), an eighth about x follows.
TEST(Leave3D, Tumble_TurnsAboutYFirst)
{
    const double eighth = 0.1 * std::sqrt(0.5);
    ExpectNear(CornerHalfWay(LeafTo({1, 0, 0}, 2.0 * kPi, 1.0)), {0.6, eighth, -eighth});
}

// g = -0.5: -a / 2 about y and -(a * -0.5 * 1 * 0.5) = a / 4 about x. With a = 2 pi: half a turn, then a quarter.
TEST(Leave3D, Tumble_BelowZero_TurnsBack)
{
    ExpectNear(CornerHalfWay(LeafTo({1, 0, 0}, 4.0 * kPi, -0.5)), {0.6, 0.0, -0.1});
}

TEST(Leave3D, Tumble_ToTheLeft_TurnsTheOtherWay)
{
    ExpectNear(CornerHalfWay(LeafTo({-1, 0, 0}, 2.0 * kPi, 0.5)), {-0.5, 0.1, 0.1});
}

TEST(Leave3D, PlainSpin_InAnyDirection_IsARotation)
{
    for (int i = 0; i < 100000; ++i) {
        const Vector3 target = {std::cos(i * 0.37), std::sin(i * 0.37), 0.0};
        const Matrix4 move = LeafTo(Scale(target, 3.0 + i * 1e-5), 1.0).GetMatrixAt(0.5);
        ASSERT_FALSE(std::isnan(move.m[0][0])) << i;
        ASSERT_NEAR(move.m[2][2], std::cos(0.5), kRounding) << i;
    }
}

std::vector<std::size_t> Numbers(const FaceOrder& order)
{
    return {order.begin(), order.end()};
}

TEST(Leave3D, FliesAt_FromItsStartUntilItsEndOrItsStop)
{
    Leave3D leaf(SquareAt({}), {1, 0, 0}, 0.0, 0.0, 0.25, 0.75, 0.0, 0.0);
    for (const double t : {-1.0, 0.0, 0.2499, 0.75, 1.0, 7.0, kNaN})
        EXPECT_FALSE(leaf.FliesAt(t)) << t;
    for (const double t : {0.25, 0.5, 0.7499})
        EXPECT_TRUE(leaf.FliesAt(t)) << t;
    leaf.stopTime = 0.5;
    EXPECT_TRUE(leaf.FliesAt(0.4999));
    EXPECT_FALSE(leaf.FliesAt(0.5));
    leaf.stopTime = -1.0;
    EXPECT_FALSE(leaf.FliesAt(0.4));
}

TEST(LeaveSystem, WithoutMemory_ThereAreNoFacesAndNoOrder)
{
    LeaveSystem system;
    ASSERT_TRUE(system.AddLeave(LeafTo({1, 0, 0})));
    const QuadMesh faces = system.GetFacesAt(0.5);
    bool hasFaces = true, hasOrder = true;
    {
        const FailingHeap scope(FailingHeap::kNever, 0);
        hasFaces = system.GetFacesAt(0.5).GetFaceCount() != 0;
        hasOrder = !system.GetDrawOrder(faces).empty();
    }
    EXPECT_FALSE(hasFaces);
    EXPECT_FALSE(hasOrder);
}

TEST(LeaveSystem, GetFacesAt_LeavesOutWhatIsGone)
{
    LeaveSystem system;
    for (int i = 0; i < 3; ++i)
        system.AddLeave(LeafTo({i + 1.0, 0, 0}));
    system.leaves[1].stopTime = 0.5;
    const QuadMesh early = system.GetFacesAt(0.25), late = system.GetFacesAt(0.5);
    ASSERT_EQ(early.GetFaceCount(), 3u);
    ASSERT_EQ(late.GetFaceCount(), 2u);
    ExpectNear(early.GetFace(1).GetCenter(), {0.5, 0, 0});
    ExpectNear(late.GetFace(0).GetCenter(), {0.5, 0, 0});
    ExpectNear(late.GetFace(1).GetCenter(), {1.5, 0, 0});
}

TEST(LeaveSystem, GetDrawOrder_GoesFromTheFarthestToTheNearest)
{
    LeaveSystem system;
    for (const double z : {0.5, -1.0, 2.0, -1.0})
        system.AddLeave(LeafTo({0, 0, 2.0 * z}));
    EXPECT_EQ(Numbers(system.GetDrawOrder(system.GetFacesAt(0.5))), (std::vector<std::size_t>{1, 3, 0, 2}));
    EXPECT_TRUE(LeaveSystem().GetDrawOrder(LeaveSystem().GetFacesAt(0.5)).empty());
}

TEST(LeaveSystem, GetDrawOrder_WithADepthLimit_LeavesOutTheLimitItself)
{
    LeaveSystem system;
    QuadMesh faces;
    for (const double z : {1.0, -1.0, 0.75, -0.75, 3.0, kNaN})
        faces.AddFace(SquareAt({0, 0, z}));
    system.depthLimit = 1.0;
    EXPECT_EQ(Numbers(system.GetDrawOrder(faces)), (std::vector<std::size_t>{3, 2}));
    system.depthLimit = 0.0;
    EXPECT_EQ(system.GetDrawOrder(faces).size(), 6u);
}

} // namespace
} // namespace kelmora

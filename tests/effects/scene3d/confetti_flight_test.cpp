#include "effects/scene3d/confetti_flight.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/effects/scene3d/near.h"

namespace kelmora::confetti {
namespace {

constexpr double kPi = std::numbers::pi;
const double kReach = std::sqrt(2.0);
const double kLastStart = static_cast<double>(0.9f);

QuadFace Piece(double left, double top, double right, double bottom)
{
    QuadFace face;
    face.SetCorners({left, top, 0}, {right, top, 0}, {right, bottom, 0}, {left, bottom, 0});
    return face;
}

QuadMesh WholeFrame()
{
    QuadMesh mesh;
    mesh.AddFace(Piece(-1, 1, 1, -1));
    return mesh;
}

/// Two halves, the left one first.
QuadMesh Halves()
{
    QuadMesh mesh;
    mesh.AddFace(Piece(-1, 1, 0, -1));
    mesh.AddFace(Piece(0, 1, 1, -1));
    return mesh;
}

/// From the right, not strong.
Wind FromTheRight(bool vacuum = false)
{
    return {.direction = 0.0, .power = 1.0, .flutter = 1.0, .vacuum = vacuum};
}

/// From the spring of that wind to a place on the level through the middle.
Vector3 WayTo(double x)
{
    return {x - kReach, 0.0, static_cast<double>(0.1f)};
}

Vector3 TargetFrom(double x, double carry)
{
    const Vector3 way = WayTo(x);
    const double length = std::sqrt(way.x * way.x + way.z * way.z);
    return {x + way.x / length * carry, 0.0, way.z / length * carry};
}

TEST(CreateLeaveSystem, AnEmptyMesh_GivesAnEmptySystem)
{
    EXPECT_TRUE(CreateLeaveSystem(QuadMesh(), FromTheRight()).leaves.empty());
}

TEST(CreateLeaveSystem, OnePiece_LeavesAtOnceAndFliesFarthest)
{
    const LeaveSystem system = CreateLeaveSystem(WholeFrame(), FromTheRight());
    ASSERT_EQ(system.leaves.size(), 1u);
    const Leave3D& leaf = system.leaves[0];
    EXPECT_EQ(leaf.startTime, 0.0);
    EXPECT_EQ(leaf.endTime, 1.0);
    EXPECT_EQ(leaf.stopTime, 0.0);
    EXPECT_EQ(leaf.shrink, 0.0);
    EXPECT_EQ(leaf.flutter, 0.0);
    EXPECT_EQ(system.depthLimit, 0.0);
    EXPECT_NEAR(leaf.totalAngle, 2.0 * (1.0 + static_cast<double>(0.1f)) * kPi, kRounding);
    ExpectNear(leaf.target, TargetFrom(0.0, 2.0 * kReach));
}

TEST(CreateLeaveSystem, OnePieceInAVacuum_LeavesLastAndFliesLeast)
{
    const LeaveSystem system = CreateLeaveSystem(WholeFrame(), FromTheRight(true));
    ASSERT_EQ(system.leaves.size(), 1u);
    EXPECT_EQ(system.leaves[0].startTime, kLastStart);
    ExpectNear(system.leaves[0].target, TargetFrom(0.0, 2.0 * kReach * static_cast<double>(0.2f)));
}

TEST(CreateLeaveSystem, TheNearestPiece_LeavesFirstAndFliesFarthest)
{
    const LeaveSystem system = CreateLeaveSystem(Halves(), FromTheRight());
    ASSERT_EQ(system.leaves.size(), 2u);
    const Leave3D &near = system.leaves[0], &far = system.leaves[1];
    EXPECT_EQ(near.face.GetCenter(), (Vector3{0.5, 0, 0}));
    EXPECT_EQ(far.face.GetCenter(), (Vector3{-0.5, 0, 0}));
    EXPECT_EQ(near.startTime, 0.0);
    EXPECT_EQ(far.startTime, kLastStart); // 0.9 + sin(1) / 2, cut
    ExpectNear(near.target, TargetFrom(0.5, 2.0 * kReach));
    ExpectNear(far.target, TargetFrom(-0.5, 2.0 * kReach * (1.0 - static_cast<double>(0.8f))));
    EXPECT_NEAR(near.totalAngle, 2.2 * kPi, 1e-7);
    EXPECT_NEAR(far.totalAngle, 0.2 * kPi, 1e-7);
}

TEST(CreateLeaveSystem, InAVacuum_TheFarthestPieceLeavesFirstAndFliesFarthest)
{
    const LeaveSystem system = CreateLeaveSystem(Halves(), FromTheRight(true));
    ASSERT_EQ(system.leaves.size(), 2u);
    const Leave3D &far = system.leaves[0], &near = system.leaves[1];
    EXPECT_EQ(far.face.GetCenter(), (Vector3{-0.5, 0, 0}));
    EXPECT_EQ(far.startTime, 0.0);
    EXPECT_NEAR(near.startTime, kLastStart - 0.42073549240394825, kRounding); // sin(1) / 2
    const double most = static_cast<double>(0.8f) + static_cast<double>(0.2f);
    ExpectNear(far.target, TargetFrom(-0.5, 2.0 * kReach * most));
    ExpectNear(near.target, TargetFrom(0.5, 2.0 * kReach * static_cast<double>(0.2f)));
}

TEST(CreateLeaveSystem, TheDirection_IsWhereTheWindSpringsFrom)
{
    Wind wind = FromTheRight();
    wind.direction = kPi; // from the left
    EXPECT_EQ(CreateLeaveSystem(Halves(), wind).leaves[0].face.GetCenter(), (Vector3{-0.5, 0, 0}));
    wind.direction = kPi / 2.0; // from above: the whole frame goes down
    EXPECT_LT(CreateLeaveSystem(WholeFrame(), wind).leaves[0].target.y, -2.0);
}

TEST(CreateLeaveSystem, PowerAndFlutter_MultiplyWayAndSpin)
{
    Wind wind = FromTheRight();
    wind.power = 3.0;
    wind.flutter = 4.0;
    const LeaveSystem system = CreateLeaveSystem(WholeFrame(), wind);
    ExpectNear(system.leaves[0].target, TargetFrom(0.0, 6.0 * kReach));
    EXPECT_NEAR(system.leaves[0].totalAngle, 8.8 * kPi, 1e-6);
    wind.flutter = 0.0;
    EXPECT_EQ(CreateLeaveSystem(WholeFrame(), wind).leaves[0].totalAngle, 0.0);
}

TEST(CreateLeaveSystem, PiecesAtOneDistance_KeepTheOrderOfTheMesh)
{
    QuadMesh mesh;
    for (const double top : {1.0, 0.0})
        mesh.AddFace(Piece(-1, top, 1, top - 1.0));
    for (const bool vacuum : {false, true}) {
        const LeaveSystem system = CreateLeaveSystem(mesh, FromTheRight(vacuum));
        ASSERT_EQ(system.leaves.size(), 2u);
        EXPECT_EQ(system.leaves[0].face.GetCenter().y, 0.5);
        EXPECT_EQ(system.leaves[1].face.GetCenter().y, -0.5);
        // Without a range all are nearest.
        EXPECT_EQ(system.leaves[0].totalAngle, system.leaves[1].totalAngle);
    }
}

// The place in the order is the index of the sine: here the pieces at one distance come first, second and so on.
TEST(CreateLeaveSystem, Starts_AreUnevenByTheSineOfThePlace)
{
    QuadMesh mesh;
    for (int i = 0; i < 5; ++i)
        mesh.AddFace(Piece(-1, 1, 1, -1));
    const LeaveSystem system = CreateLeaveSystem(mesh, FromTheRight());
    const double sines[5] = {0.0, 0.8414709848078965, 0.9092974268256817, 0.1411200080598672,
                             -0.7568024953079282};
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_NEAR(system.leaves[i].startTime, std::fmax(sines[i] / 5.0, 0.0), kRounding) << i;
}

TEST(CreateLeaveSystem, NoPiece_Tumbles)
{
    const LeaveSystem system = CreateLeaveSystem(Halves(), FromTheRight());
    EXPECT_EQ(system.leaves[0].flutter, 0.0);
    EXPECT_EQ(system.leaves[1].flutter, 0.0);
}

TEST(CreateLeaveSystem, TheReach_ComesFromTheFirstCorner)
{
    QuadMesh mesh;
    mesh.AddFace(Piece(-3, 4, 3, -4));
    const LeaveSystem system = CreateLeaveSystem(mesh, FromTheRight());
    const double length = std::sqrt(25.0 + 0.1 * 0.1);
    EXPECT_NEAR(system.leaves[0].target.x, -5.0 / length * 10.0, 1e-8);
}

TEST(GetBrightnessTumble, OfTwoBrightnesses_IsASine)
{
    EXPECT_NEAR(GetBrightnessTumble(0.25, 0.0), 1.0, kRounding);
    EXPECT_NEAR(GetBrightnessTumble(0.0, 0.75), -1.0, kRounding);
    EXPECT_NEAR(GetBrightnessTumble(0.5, 0.5), 1.0, kRounding);        // 0.25 + 1 turns
    EXPECT_NEAR(GetBrightnessTumble(1.0 / 12.0, 0.0), 0.5, kRounding); // 30 degrees
    EXPECT_NEAR(GetBrightnessTumble(0.5, 1.0 / 18.0), -0.5,
                kRounding); // 0.5 + 1 / 36 + 1 / 18 turns: 210 degrees
}

TEST(GetBrightnessTumble, WhereTheSineIsNextToZero_IsACosine)
{
    EXPECT_NEAR(GetBrightnessTumble(0.0, 0.0), 1.0, kRounding);
    EXPECT_NEAR(GetBrightnessTumble(1.0, 1.0), 1.0, kRounding);
    EXPECT_NEAR(GetBrightnessTumble(0.5, 0.0), -1.0, kRounding);
    // 0.015 turns: the sine is 0.094, so the cosine of -0.015 turns.
    EXPECT_NEAR(GetBrightnessTumble(0.015, 0.0), 0.99556196460308, kRounding);
    // 0.017 turns: the sine is 0.1066 and counts.
    EXPECT_NEAR(GetBrightnessTumble(0.017, 0.0), 0.10661115427525991, kRounding);
}

TEST(GetCameraMatrix, WithoutAmount_IsTheIdentity)
{
    for (const double t : {0.0, 0.3, 0.5, 1.0})
        EXPECT_EQ(GetCameraMatrix(t, 0.0, 0.5, 0.5), Matrix4::Identity()) << t;
}

TEST(GetCameraMatrix, Straight_GoesBackAndForth)
{
    ExpectNear(GetCameraMatrix(0.5, 1.0, 0.5, 0.5), Matrix4::Translation(0, 0, -5));
    ExpectNear(GetCameraMatrix(1.0 / 6.0, 2.0, 0.5, 0.5), Matrix4::Translation(0, 0, -5));
}

// Half way the angle s is pi * 0.33 / 2. It turns about z by a fifth of it, and then about y.
TEST(GetCameraMatrix, ToTheSide_TurnsAboutZAndThenY)
{
    const double s = kPi * static_cast<double>(0.33f) * 0.5, tilt = s * 0.2;
    const Vector3 right = GetCameraMatrix(0.5, 1.0, 1.0, 0.5).Transform({1, 0, 0});
    ExpectNear(right, {std::cos(tilt) * std::cos(s), -std::sin(tilt), std::cos(tilt) * std::sin(s) - 5.0});
    const Vector3 left = GetCameraMatrix(0.5, 1.0, 0.0, 0.5).Transform({1, 0, 0});
    ExpectNear(left, {std::cos(tilt) * std::cos(s), std::sin(tilt), -std::cos(tilt) * std::sin(s) - 5.0});
}

TEST(GetCameraMatrix, Upward_TurnsAboutX)
{
    const double s = kPi * static_cast<double>(0.33f) * 0.5;
    const Vector3 up = GetCameraMatrix(0.5, 1.0, 0.5, 1.0).Transform({0, 1, 0});
    ExpectNear(up, {0, std::cos(s), -std::sin(s) - 5.0});
}

// About x before y: z goes to y, which a turn about y leaves alone.
TEST(GetCameraMatrix, Aslant_TurnsAboutXBeforeY)
{
    const double s = kPi * static_cast<double>(0.33f) * 0.5;
    const Vector3 ahead = GetCameraMatrix(0.5, 1.0, 1.0, 1.0).Transform({0, 0, 1});
    ExpectNear(ahead, {-std::cos(s) * std::sin(s), std::sin(s), std::cos(s) * std::cos(s) - 5.0});
}

} // namespace
} // namespace kelmora::confetti

#include "effects/scene3d/box_motion.h"

#include <array>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "tests/effects/scene3d/near.h"

namespace kelmora {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// 3 across, 4 down and 4 deep about (0, 0, -2), before `middle` is added.
QuadMesh BoxAt(const Vector3& middle)
{
    QuadFace face;
    face.SetCorners(Add(middle, {-1.5, 2, 0}), Add(middle, {1.5, 2, 0}), Add(middle, {1.5, -2, 0}),
                    Add(middle, {-1.5, -2, 0}));
    QuadMesh mesh;
    mesh.AddFace(face);
    return QuadMeshCreator().CreateBoxes(mesh)[0];
}

/// The top left corner of the front at `t`.
Vector3 CornerAt(double t, const BoxMotion& motion, int index = 0, int count = 1, const Vector3& middle = {})
{
    QuadMesh box = BoxAt(middle);
    AnimateBox(box, index, count, t, motion);
    return box.GetFace(0).corners[0];
}

/// Boxes that move all together.
BoxMotion Together(bool horizontal)
{
    BoxMotion motion;
    motion.horizontal = horizontal;
    motion.cohesion = 1.0;
    return motion;
}

// --- time ---------------------------------------------------------------------------------------------

TEST(LocalTime, WithoutCohesion_GoesBoxByBox)
{
    EXPECT_EQ(LocalTime(2, 4, 0.4, 0.0), 0.0);
    EXPECT_EQ(LocalTime(2, 4, 0.5, 0.0), 0.0);
    EXPECT_EQ(LocalTime(2, 4, 0.625, 0.0), 0.5);
    EXPECT_EQ(LocalTime(2, 4, 0.75, 0.0), 1.0);
    EXPECT_EQ(LocalTime(2, 4, 0.9, 0.0), 1.0);
}

TEST(LocalTime, InFullCohesion_IsThatOfTheTransition)
{
    for (const double t : {0.0, 0.25, 0.5, 0.99})
        EXPECT_EQ(LocalTime(3, 10, t, 1.0), t);
}

// 3 boxes at 0.5: each takes 1 / (0.5 * 3 + 0.5) = 0.5 of the time, and begins 0.25 after the one before.
TEST(LocalTime, InSomeCohesion_Overlaps)
{
    EXPECT_EQ(LocalTime(0, 3, 0.25, 0.5), 0.5);
    EXPECT_EQ(LocalTime(1, 3, 0.25, 0.5), 0.0);
    EXPECT_EQ(LocalTime(1, 3, 0.5, 0.5), 0.5);
    EXPECT_EQ(LocalTime(2, 3, 0.75, 0.5), 0.5);
    EXPECT_EQ(LocalTime(2, 3, 1.0, 0.5), 1.0);
}

TEST(LocalTime, TheLastBox_IsNextToDoneJustBeforeTheEnd)
{
    EXPECT_NEAR(LocalTime(9, 10, 1.0 - 1e-9, 0.0), 1.0, 1e-7);
    EXPECT_EQ(LocalTime(0, 1, 0.0, 0.0), 0.0);
}

TEST(LocalTime, WildCohesion_CountsAsTheNearestEnd)
{
    EXPECT_EQ(LocalTime(1, 2, 0.25, 2.0), 0.25); // 2 boxes would have slots of no length
    EXPECT_EQ(LocalTime(1, 2, 0.25, -2.0), 0.0);
    EXPECT_EQ(LocalTime(1, 2, 0.75, -2.0), 0.5);
    for (const double cohesion : {kNaN, 1e300, -1e300, 4.0 / 3.0, 1.5, -2.0})
        for (int i = 0; i < 4; ++i)
            for (const double t : {0.0, 0.3, 1.0}) {
                const double local = LocalTime(i, 4, t, cohesion);
                EXPECT_TRUE(local >= 0.0 && local <= 1.0) << cohesion << ", " << i << ", " << t;
            }
}

// --- place --------------------------------------------------------------------------------------------

TEST(AnimateBox, AtRest_StaysInPlace)
{
    for (const bool horizontal : {true, false}) {
        BoxMotion motion = Together(horizontal);
        motion.spread = motion.alternate = motion.rotateRight = true;
        motion.ebb = 3.0;
        ExpectNear(CornerAt(0.0, motion, 1, 2, {0.25, 0.5, 0}), {-1.25, 2.5, 0});
    }
}

// About the upright through the middle, (0, 0, -2): what was 2 before it lies 2 to its left then.
TEST(AnimateBox, Horizontal_TurnsAboutTheUpright)
{
    ExpectNear(CornerAt(0.5, Together(true)), {-2, 2, -3.5});
    ExpectNear(CornerAt(1.0, Together(true)), {1.5, 2, -4});
}

TEST(AnimateBox, Vertical_TurnsAboutTheLevel)
{
    ExpectNear(CornerAt(0.5, Together(false)), {-1.5, 2, -4});
    ExpectNear(CornerAt(1.0, Together(false)), {-1.5, -2, -4});
}

TEST(AnimateBox, RotateRight_TurnsTheOtherWay)
{
    BoxMotion motion = Together(true);
    motion.rotateRight = true;
    ExpectNear(CornerAt(0.5, motion), {2, 2, -0.5});
    motion.horizontal = false;
    ExpectNear(CornerAt(0.5, motion), {-1.5, -2, 0});
}

TEST(AnimateBox, Alternate_TurnsOddBoxesTheOtherWay)
{
    BoxMotion motion = Together(true);
    motion.alternate = true;
    ExpectNear(CornerAt(0.5, motion, 0, 3), {-2, 2, -3.5});
    ExpectNear(CornerAt(0.5, motion, 1, 3), {2, 2, -0.5});
    ExpectNear(CornerAt(0.5, motion, 2, 3), {-2, 2, -3.5});
    motion.rotateRight = true;
    ExpectNear(CornerAt(0.5, motion, 1, 3), {-2, 2, -3.5});
}

TEST(AnimateBox, BottomUp_TurnsVerticalBoxesAloneTheOtherWay)
{
    BoxMotion motion = Together(false);
    motion.bottomUp = true;
    ExpectNear(CornerAt(0.5, motion), {-1.5, -2, 0});
    motion.horizontal = true;
    ExpectNear(CornerAt(0.5, motion), {-2, 2, -3.5});
}

TEST(AnimateBox, Spread_MovesByTheDistanceFromTheMiddleAlongTheStack)
{
    BoxMotion motion = Together(true);
    motion.spread = true;
    const Vector3 middle = {0.25, 0.5, 0};
    ExpectNear(CornerAt(0.5, motion, 0, 1, middle), {-1.75, 3, -3.5});
    motion.horizontal = false;
    ExpectNear(CornerAt(0.5, motion, 0, 1, middle), {-1.0, 2.5, -4});
}

// Its turn comes in the second half of the transition, but it is already apart.
TEST(AnimateBox, Spread_GoesByTheTimeOfAll)
{
    BoxMotion motion;
    motion.spread = true;
    ExpectNear(CornerAt(0.5, motion, 1, 2, {0, 0.5, 0}), {-1.5, 3, 0});
}

// A quarter into its own turn it has come nearest: sin(pi / 2). The front's corner, (-1.5, 2, 2) from the center,
// has made an eighth of a turn.
TEST(AnimateBox, Ebb_SwingsInItsOwnTime)
{
    BoxMotion motion;
    const Vector3 still = CornerAt(0.125, motion, 0, 2);
    motion.ebb = 3.0;
    ExpectNear(CornerAt(0.125, motion, 0, 2), Add(still, {0, 0, 3}));
    motion.cohesion = 1.0;
    ExpectNear(CornerAt(0.5, motion, 0, 2), {-2, 2, -3.5});
    const double eighth = std::numbers::sqrt2 / 2.0;
    ExpectNear(CornerAt(0.75, motion, 0, 2), {-0.5 * eighth, 2, -2.0 - 3.5 * eighth - 3.0});
}

TEST(AnimateBox, EbbAndAlternate_SwingOddBoxesTheOtherWay)
{
    BoxMotion motion = Together(true);
    motion.alternate = true;
    const Vector3 still = CornerAt(0.25, motion, 1, 2);
    motion.ebb = 3.0;
    ExpectNear(CornerAt(0.25, motion, 1, 2), Add(still, {0, 0, -3}));
}

TEST(AnimateBox, ManyMotions_KeepTheSizeOfTheBox)
{
    for (int bits = 0; bits < 32; ++bits) {
        BoxMotion motion = Together((bits & 1) != 0);
        motion.rotateRight = (bits & 2) != 0;
        motion.spread = (bits & 4) != 0;
        motion.alternate = (bits & 8) != 0;
        motion.bottomUp = (bits & 16) != 0;
        motion.ebb = 1.0;
        QuadMesh box = BoxAt({0.3, -0.4, 0});
        AnimateBox(box, 1, 2, 0.3, motion);
        const QuadFace::Corners front = box.GetFace(0).corners;
        EXPECT_NEAR(Subtract(front[1], front[0]).Length(), 3.0, kRounding);
        EXPECT_NEAR(Subtract(front[2], front[1]).Length(), 4.0, kRounding);
    }
}

// --- backs --------------------------------------------------------------------------------------------

TEST(SetBackOfBox, Horizontal_ShowsTheOtherTextureAfterTheTurn)
{
    const FrameBuffer first, second;
    QuadMesh box = BoxAt({});
    for (std::size_t i = 0; i < 6; ++i)
        box.GetFace(i).SetFrontTexture(&first);
    SetBackOfBox(box, &second, true);
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(box.GetFace(i).frontTexture, i == 2 ? &second : &first);
    AnimateBox(box, 0, 1, 1.0, Together(true));
    ExpectNear(box.GetFace(2).corners[0], {-1.5, 2, 0});
    ExpectNear(box.GetFace(2).corners[2], {1.5, -2, 0});
}

TEST(SetBackOfBox, Vertical_StandsUprightAfterTheTurn)
{
    const FrameBuffer second;
    for (const bool bottomUp : {false, true}) {
        QuadMesh box = BoxAt({});
        SetBackOfBox(box, &second, false);
        BoxMotion motion = Together(false);
        motion.bottomUp = bottomUp;
        AnimateBox(box, 0, 1, 1.0, motion);
        const std::array<Vector3, 4> upright = {{{-1.5, 2, 0}, {1.5, 2, 0}, {1.5, -2, 0}, {-1.5, -2, 0}}};
        for (std::size_t i = 0; i < 4; ++i)
            ExpectNear(box.GetFace(2).corners[i], upright[i]);
    }
}

TEST(SetBackOfBox, WhatIsNoBox_StaysAsItIs)
{
    const FrameBuffer second;
    QuadMesh mesh;
    for (int i = 0; i < 5; ++i)
        mesh.AddFace(QuadFace());
    SetBackOfBox(mesh, &second, true);
    EXPECT_EQ(mesh.GetFace(2).frontTexture, nullptr);
}

} // namespace
} // namespace kelmora

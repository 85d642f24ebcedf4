#include "effects/scene3d/pizza_boxes_plan.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/effects/scene3d/near.h"

namespace kelmora::pizza_boxes {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(PizzaBoxesPlan, SlicesFor_TheKnob_CountsFromOneToTen)
{
    EXPECT_EQ(SlicesFor(0.0f), 1);
    EXPECT_EQ(SlicesFor(0.1f), 1);  // 1.9
    EXPECT_EQ(SlicesFor(0.43f), 4); // 4.87
    EXPECT_EQ(SlicesFor(0.47f), 5); // 5.23
    EXPECT_EQ(SlicesFor(1.0f), 10);
    EXPECT_EQ(SlicesFor(kNaN), 0);
}

TEST(PizzaBoxesPlan, MotionFor_TakesTheKnobs)
{
    Knobs knobs;
    knobs.cohesion = 0.25f;
    knobs.ebb = 0.405f;
    knobs.rotateRight = knobs.spread = true;
    const BoxMotion motion = MotionFor(knobs, true);
    EXPECT_TRUE(motion.horizontal);
    EXPECT_EQ(motion.cohesion, 0.5);
    EXPECT_TRUE(motion.rotateRight);
    EXPECT_TRUE(motion.spread);
    EXPECT_FALSE(motion.alternate);
    EXPECT_EQ(motion.ebb, static_cast<double>(5.0f * 0.405f));
    EXPECT_TRUE(motion.bottomUp);
}

TEST(PizzaBoxesPlan, MotionFor_OtherKnobs)
{
    Knobs knobs;
    knobs.cohesion = 0.5f;
    knobs.alternate = true;
    knobs.orientation = 1;
    const BoxMotion motion = MotionFor(knobs, false);
    EXPECT_FALSE(motion.horizontal);
    EXPECT_EQ(motion.cohesion, static_cast<double>(0.70710678f));
    EXPECT_TRUE(motion.alternate);
    EXPECT_EQ(motion.ebb, 0.0);
    EXPECT_FALSE(motion.bottomUp);
}

TEST(PizzaBoxesPlan, MotionFor_WildKnobs_IsDefined)
{
    Knobs knobs;
    knobs.orientation = 7;
    for (const float cohesion : {-1.0f, kNaN}) {
        knobs.cohesion = cohesion;
        EXPECT_EQ(MotionFor(knobs, false).cohesion, 0.0);
        EXPECT_FALSE(MotionFor(knobs, false).horizontal);
    }
}

TEST(PizzaBoxesPlan, StackMatrix_GoesAwayAndComesBack)
{
    ExpectNear(StackMatrix(0.5, 1.0f), Matrix4::Translation(0, 0, -5));
    ExpectNear(StackMatrix(1.0 / 6.0, 0.5f), Matrix4::Translation(0, 0, -1.25));
    ExpectNear(StackMatrix(1.0, 1.0f), Matrix4::Identity());
    for (const float depth : {0.0f, -1.0f, kNaN})
        EXPECT_EQ(StackMatrix(0.5, depth), Matrix4::Identity());
}

TEST(PizzaBoxesPlan, HasGlow_NeedsFogOrShine)
{
    Knobs knobs;
    EXPECT_FALSE(HasGlow(knobs));
    knobs.shine = 0.1f;
    EXPECT_TRUE(HasGlow(knobs));
    knobs.shine = -1.0f;
    EXPECT_FALSE(HasGlow(knobs));
    knobs.fog = 0.1f;
    EXPECT_TRUE(HasGlow(knobs));
    knobs.fog = knobs.shine = kNaN;
    EXPECT_FALSE(HasGlow(knobs));
}

// The constant for a half turn is a little short, so that the glow ends above nothing.
TEST(PizzaBoxesPlan, GlowAt_RisesAndFalls)
{
    Knobs knobs;
    knobs.fog = 0.5f;
    knobs.shine = 1.0f;
    EXPECT_EQ(GlowAt(0.0, knobs).fog, 0.0);
    EXPECT_EQ(GlowAt(0.0, knobs).shine, 0.0);
    EXPECT_NEAR(GlowAt(0.5, knobs).fog, 0.5, 1e-8);
    EXPECT_NEAR(GlowAt(0.5, knobs).shine, 1.0, 1e-8);
    EXPECT_NEAR(GlowAt(1.0, knobs).shine, 3.141592653589793 - 3.1414999961853027, 1e-12);
}

TEST(PizzaBoxesPlan, Radius_IsUpToAFifthOfTheHeight)
{
    EXPECT_EQ((Glow{1.0, 0.0}.Radius(1080)), 216);
    EXPECT_EQ((Glow{0.5, 0.0}.Radius(99)), 9); // 9.9
    EXPECT_EQ((Glow{0.0, 1.0}.Radius(1080)), 0);
    EXPECT_EQ((Glow{1e300, 0.0}.Radius(1080)), std::numeric_limits<int>::max());
}

} // namespace
} // namespace kelmora::pizza_boxes

#include "effects/scene3d/confetti_plan.h"

#include <limits>
#include <numbers>

#include <gtest/gtest.h>

namespace kelmora::confetti {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(ConfettiPlan, PiecesFor_TheKnob_CountsFromOneToTwenty)
{
    EXPECT_EQ(PiecesFor(0.0f), 1);
    EXPECT_EQ(PiecesFor(0.315f), 6); // 6.985
    EXPECT_EQ(PiecesFor(0.21f), 4);  // 4.99
    EXPECT_EQ(PiecesFor(0.99f), 19); // 19.81
    EXPECT_EQ(PiecesFor(1.0f), 20);
}

// 7 / 19 and 5 / 19, rounded to six places: the one falls short of a whole number.
TEST(ConfettiPlan, PiecesFor_SharesOfNineteen_MayLoseAPiece)
{
    EXPECT_EQ(PiecesFor(0.368421f), 7);
    EXPECT_EQ(PiecesFor(0.263158f), 6);
}

TEST(ConfettiPlan, PiecesFor_WildKnobs_AreDefined)
{
    EXPECT_EQ(PiecesFor(kNaN), 0);
    EXPECT_EQ(PiecesFor(1e30f), std::numeric_limits<int>::max());
    EXPECT_EQ(PiecesFor(-1.0f), -18);
}

TEST(ConfettiPlan, AmbientFor_IsWhatShadingLeaves)
{
    EXPECT_EQ(AmbientFor(0.0f), 1.0);
    EXPECT_EQ(AmbientFor(0.25f), 0.75);
    EXPECT_EQ(AmbientFor(1.0f), 0.0);
    EXPECT_EQ(AmbientFor(0.85f), static_cast<double>(1.0f - 0.85f));
}

TEST(ConfettiPlan, WindFor_TheDefaults)
{
    Knobs knobs;
    knobs.power = 0.5f;
    knobs.flutter = 0.41f;
    const Wind wind = WindFor(knobs);
    EXPECT_EQ(wind.direction, 0.0);
    EXPECT_EQ(wind.power, 2.0);
    EXPECT_EQ(wind.flutter, static_cast<double>(4.1f));
    EXPECT_FALSE(wind.vacuum);
}

TEST(ConfettiPlan, WindFor_AHalfOfTheCircle_IsPiInSinglePrecision)
{
    Knobs knobs;
    knobs.direction = 0.5f;
    knobs.vacuum = true;
    EXPECT_EQ(WindFor(knobs).direction, 3.1415927410125732);
    EXPECT_TRUE(WindFor(knobs).vacuum);
    knobs.direction = 0.25f;
    EXPECT_EQ(WindFor(knobs).direction, 1.5707963705062866);
}

} // namespace
} // namespace kelmora::confetti

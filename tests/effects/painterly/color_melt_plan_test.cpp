#include "effects/painterly/color_melt_plan.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/reference/color_melt.h"

namespace kelmora::color_melt {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(ColorMeltPlan, TapsFor_TheMiddle_IsUpTo22PercentOfTheHeight)
{
    // (soften + 0.1) * rows * 0.2, truncated, and one more.
    EXPECT_EQ(TapsFor(1.0f, 1080, 1.0f), 238); // 237.6
    EXPECT_EQ(TapsFor(0.0f, 1080, 1.0f), 22);  // 21.6
    EXPECT_EQ(TapsFor(0.5f, 480, 1.0f), 58);   // 57.6
    EXPECT_EQ(TapsFor(1.0f, 1080, 0.5f), 119); // 118.8
    EXPECT_EQ(TapsFor(1.0f, 1080, 0.25f), 60); // 59.4
    EXPECT_EQ(TapsFor(1.0f, 100, 0.001f), 1);  // 0.022
}

TEST(ColorMeltPlan, TapsFor_AProductJustShortOfAWhole_RoundsToItFirst)
{
    // 0.9f is 0.899999976 and 0.1f 0.100000001, in all 0.99999998; times 0.2f, 0.200000003, and 1000 rows:
    // 199.9999985, between the singles 199.9999847 and 200. Single precision makes it 200.
    EXPECT_EQ(TapsFor(0.9f, 1000, 1.0f), 201);
}

TEST(ColorMeltPlan, TapsFor_WildKnobs_AreDefined)
{
    EXPECT_EQ(TapsFor(kNaN, 1080, 1.0f), 1);
    EXPECT_EQ(TapsFor(-5.0f, 1080, 1.0f), 1);
    EXPECT_EQ(TapsFor(-kInfinity, 1080, 1.0f), 1);
    EXPECT_GT(TapsFor(kInfinity, 1080, 1.0f), kMostTaps);
    EXPECT_GT(TapsFor(1e30f, 1, 1.0f), kMostTaps);
}

TEST(ColorMeltPlan, TapsFor_EveryHeight_IsThePlainVersions)
{
    for (int height = 1; height < 3000; height += 13)
        for (int step = 0; step <= 50; ++step)
            for (const float amount : {0.01f, 0.3f, 0.7f, 1.0f}) {
                const float soften = static_cast<float>(step) / 50.0f;
                ASSERT_EQ(TapsFor(soften, height, amount), reference::MeltTaps(soften, height, amount, true));
            }
}

TEST(ColorMeltPlan, SaturationGain_GoesFromOneToNine)
{
    EXPECT_EQ(SaturationGain(0.0f, 1.0f), 1.0);
    EXPECT_EQ(SaturationGain(1.0f, 0.0f), 1.0);
    EXPECT_EQ(SaturationGain(1.0f, 1.0f), 9.0);
    EXPECT_EQ(SaturationGain(0.5f, 1.0f), 2.0); // 8 / 8
    EXPECT_EQ(SaturationGain(1.0f, 0.5f), 3.0); // 8 / 4
    EXPECT_EQ(SaturationGain(0.5f, 0.25f), 1.0625);
}

TEST(ColorMeltPlan, TargetValue_GoesFrom55To255)
{
    EXPECT_EQ(TargetValue(0.0f), 55.0);
    EXPECT_EQ(TargetValue(1.0f), 255.0);
    EXPECT_EQ(TargetValue(0.5f), 205.0);  // 0.75
    EXPECT_EQ(TargetValue(0.25f), 142.5); // 0.4375
}

// Fog 1: no edge at all, 245 of 256 parts of the blur. Fog 0: the full edge, nothing of it.
TEST(ColorMeltPlan, Fog_IsTheEdgeTurnedRound)
{
    EXPECT_EQ(FogLevel(1.0f), 0.0f);
    EXPECT_EQ(FogLevel(0.0f), 1.0f);
    EXPECT_EQ(FogLevel(0.25f), 0.75f);
    EXPECT_EQ(FogShare(1.0f), 0.9607843160629272f);
    EXPECT_EQ(FogShare(0.0f), 0.0f);
    EXPECT_NEAR(FogShare(0.5f), 0.720588237, 1e-7); // three quarters
}

TEST(ColorMeltPlan, Numbers_ForManyKnobs_AreThePlainVersions)
{
    for (int step = 0; step <= 1000; ++step) {
        const float knob = static_cast<float>(step) / 1000.0f;
        ASSERT_EQ(TargetValue(knob), reference::MeltTarget(knob));
        for (const float amount : {0.0f, 0.1f, 0.5f, 0.9f, 1.0f})
            ASSERT_EQ(SaturationGain(knob, amount), reference::MeltSaturationGain(knob, amount));
    }
}

} // namespace
} // namespace kelmora::color_melt

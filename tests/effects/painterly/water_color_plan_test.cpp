#include "effects/painterly/water_color_plan.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/reference/water_color.h"

namespace kelmora::water_color {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

void ExpectBrush(const Brush& brush, int radiusX, int radiusY, int passes)
{
    EXPECT_EQ(brush.radiusX, radiusX);
    EXPECT_EQ(brush.radiusY, radiusY);
    EXPECT_EQ(brush.passes, passes);
}

TEST(WaterColorPlan, BrushFor_Frames_GrowsWithKnobAndHeight)
{
    ExpectBrush(BrushFor(1.0f, 1080, false), 27, 27, 2); // 6 * 4.5
    ExpectBrush(BrushFor(0.0f, 1080, false), 4, 4, 2);   // 1 * 4.5
    ExpectBrush(BrushFor(1.0f, 480, false), 12, 12, 1);  // 6 * 2
    ExpectBrush(BrushFor(0.5f, 480, false), 7, 7, 1);    // 3.5 * 2
    ExpectBrush(BrushFor(0.0f, 240, false), 1, 1, 1);
}

TEST(WaterColorPlan, BrushFor_ResultsUnderOne_AreNoMedian)
{
    ExpectBrush(BrushFor(1.0f, 39, false), 0, 0, 0);  // 0.975
    ExpectBrush(BrushFor(1.0f, 40, false), 1, 1, 1);  // 40 / 240 in single precision lies above a sixth
    ExpectBrush(BrushFor(0.0f, 239, false), 0, 0, 0); // 0.996
    ExpectBrush(BrushFor(-1.0f, 1080, false), 0, 0, 0);
}

TEST(WaterColorPlan, BrushFor_Fields_ScaleAsFramesAndHalveTheVerticalRadius)
{
    ExpectBrush(BrushFor(1.0f, 540, true), 27, 13, 2);
    ExpectBrush(BrushFor(1.0f, 240, true), 12, 6, 1);
    ExpectBrush(BrushFor(1.0f, 20, true), 1, 1, 1); // half of one would be none
    ExpectBrush(BrushFor(1.0f, 19, true), 0, 0, 0); // 0.95
}

TEST(WaterColorPlan, Kept_Over500Lines_TakesTwoPasses)
{
    EXPECT_EQ(BrushFor(0.5f, 500, false).passes, 1);
    EXPECT_EQ(BrushFor(0.5f, 501, false).passes, 2);
    EXPECT_EQ(BrushFor(0.5f, 250, true).passes, 1);
    EXPECT_EQ(BrushFor(0.5f, 251, true).passes, 2);
}

TEST(WaterColorPlan, BrushFor_WildKnobs_AreDefined)
{
    ExpectBrush(BrushFor(kNaN, 1080, false), 0, 0, 0);
    ExpectBrush(BrushFor(-kInfinity, 1080, false), 0, 0, 0);
    EXPECT_GT(BrushFor(kInfinity, 1, false).radiusX, kMostRadius);
    EXPECT_GT(BrushFor(1e9f, 1, true).radiusX, kMostRadius);
    EXPECT_EQ(BrushFor(0.5f, std::numeric_limits<int>::min(), true).radiusX, 0);
    EXPECT_EQ(BrushFor(0.0f, std::numeric_limits<int>::max(), true).passes, 2);
}

TEST(WaterColorPlan, BrushFor_EveryHeight_IsThePlainVersions)
{
    for (int height = 1; height < 3000; height += 7)
        for (int step = 0; step <= 100; ++step)
            for (const bool halfHeight : {false, true}) {
                const float knob = static_cast<float>(step) / 100.0f;
                const Brush brush = BrushFor(knob, height, halfHeight);
                ASSERT_EQ(brush.radiusX, reference::WaterColorRadius(knob, height, halfHeight));
                if (brush.radiusX > 0) {
                    ASSERT_EQ(brush.passes, reference::WaterColorPasses(height, halfHeight));
                }
            }
}

// The knob's ends turn the hue by 0.15 of a circle, 54 degrees, with a factor of single precision.
TEST(WaterColorPlan, HueOf_Ends_TurnBy54Degrees)
{
    EXPECT_EQ(HueOf(0.5f), 0.5f);
    EXPECT_EQ(HueOf(0.0f), static_cast<float>(0.5 - 0.5 * 0.30000001192092896));
    EXPECT_EQ(HueOf(1.0f), static_cast<float>(0.5 + 0.5 * 0.30000001192092896));
    EXPECT_NEAR(HueOf(0.5001f), 0.50003, 1e-7);
}

} // namespace
} // namespace kelmora::water_color

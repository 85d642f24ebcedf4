#include "effects/painterly/air_brush_plan.h"

#include <limits>

#include <gtest/gtest.h>

#include "effects/common/taps.h"
#include "tests/reference/air_brush.h"

namespace kelmora::air_brush {
namespace {

TEST(AirBrushPlan, TapsFor_ATallPicture_GrowWithSprayAndHeight)
{
    // (spray + 0.1) * rows * 0.15: 16.2 and 178.2 at 1080 rows, 97.2 at half spray.
    EXPECT_EQ(TapsFor(0.0f, 1080), 16);
    EXPECT_EQ(TapsFor(0.5f, 1080), 97);
    EXPECT_EQ(TapsFor(1.0f, 1080), 178);
    EXPECT_EQ(TapsFor(0.5f, 480), 43); // 43.2
}

TEST(AirBrushPlan, TapsFor_ResultsUnderTwo_AreTwo)
{
    EXPECT_EQ(TapsFor(0.0f, 100), 2); // 1.5
    EXPECT_EQ(TapsFor(0.0f, 133), 2); // 1.995
    EXPECT_EQ(TapsFor(0.0f, 199), 2); // 2.985
    EXPECT_EQ(TapsFor(0.0f, 201), 3); // 3.015
    EXPECT_EQ(TapsFor(1.0f, 1), 2);
    EXPECT_EQ(TapsFor(-5.0f, 1080), 2);
}

TEST(AirBrushPlan, TapsFor_ConstantsAreSinglePrecision)
{
    // 0.9f is 0.899999976, 0.1f is 0.1000000015, 0.15f is 0.150000006: at 1000 rows 150.0000026. With the
    // doubles 0.1 and 0.15 it would be 149.9999964.
    EXPECT_EQ(TapsFor(0.9f, 1000), 150);
}

TEST(AirBrushPlan, TapsFor_WildSprays_AreDefined)
{
    EXPECT_EQ(TapsFor(std::numeric_limits<float>::quiet_NaN(), 1080), 2);
    EXPECT_EQ(TapsFor(-std::numeric_limits<float>::infinity(), 1080), 2);
    EXPECT_GT(TapsFor(std::numeric_limits<float>::infinity(), 1080), kMostTaps);
    EXPECT_GT(TapsFor(1e30f, 1), kMostTaps);
    EXPECT_EQ(TapsFor(0.5f, std::numeric_limits<int>::min()), 2);
}

TEST(AirBrushPlan, TapsFor_EveryHeight_IsThePlainVersions)
{
    for (int height = 1; height < 3000; height += 7)
        for (int step = 0; step <= 100; ++step) {
            const float spray = static_cast<float>(step) / 100.0f;
            ASSERT_EQ(TapsFor(spray, height), reference::AirBrushTaps(spray, height));
        }
}

} // namespace
} // namespace kelmora::air_brush

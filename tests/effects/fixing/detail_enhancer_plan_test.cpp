#include "effects/fixing/detail_enhancer_plan.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/reference/detail_enhancer.h"

namespace kelmora::detail_enhancer {
namespace {

TEST(DetailEnhancerPlan, MakePlan_DoublesStrengthAndRaisesDefinition)
{
    const Plan plan = MakePlan({.strength = 0.455f, .definition = 0.5f});
    EXPECT_EQ(plan.amount, 0.91f);
    EXPECT_EQ(plan.radius, 0.51f);
    EXPECT_EQ(MakePlan({}).radius, 0.01f);
}

TEST(DetailEnhancerPlan, BlurSize_1080RowsAtHalfDefinition_Is116)
{
    EXPECT_EQ(BlurSize(0.51f, 1080), 116); // 0.355 * 1080 * 0.3 = 115.02, made even
}

TEST(DetailEnhancerPlan, BlurSize_100RowsAtNoDefinition_IsFour)
{
    EXPECT_EQ(BlurSize(0.01f, 100), 4); // 0.105 * 100 * 0.3 = 3.15, made even
}

TEST(DetailEnhancerPlan, BlurSize_IsNeverBelowTwo)
{
    EXPECT_EQ(BlurSize(0.01f, 1), 2);
    EXPECT_EQ(BlurSize(0.01f, 32), 2);  // 1.008, made even
    EXPECT_EQ(BlurSize(-5.0f, 100), 2); // -72
}

TEST(DetailEnhancerPlan, BlurSize_WildRadii_AreBounded)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(BlurSize(std::numeric_limits<float>::quiet_NaN(), 100), 2);
    EXPECT_EQ(BlurSize(-infinity, 100), 2);
    for (const float radius : {1e30f, infinity}) {
        EXPECT_EQ(BlurSize(radius, 100) % 2, 0);
        EXPECT_GT(BlurSize(radius, 100), 100);
        EXPECT_GT(BlurWidth(BlurSize(radius, 100), true), 100);
    }
}

TEST(DetailEnhancerPlan, BlurWidth_OfAField_IsTwiceTheHeight)
{
    EXPECT_EQ(BlurWidth(116, false), 116);
    EXPECT_EQ(BlurWidth(116, true), 232);
}

TEST(DetailEnhancerPlan, BlurSize_EveryHeight_IsThePlainVersions)
{
    for (int height = 1; height < 3000; height += 7)
        for (int step = 0; step <= 100; ++step) {
            const float definition = static_cast<float>(step) / 100.0f;
            ASSERT_EQ(BlurSize(MakePlan({0, definition}).radius, height),
                      reference::DetailEnhancerBlurSize(definition, height));
        }
}

} // namespace
} // namespace kelmora::detail_enhancer

#include "effects/fixing/pixelator_plan.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/reference/pixelator.h"

namespace kelmora::pixelator {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(PixelatorPlan, CentreShare_AtBothEnds_LiesAHundredthInside)
{
    EXPECT_EQ(CentreShare(0.0f), 0.01f);
    EXPECT_EQ(CentreShare(0.5f), 0.5f);
    EXPECT_EQ(CentreShare(1.0f), 0.99f);
    for (const float below : {-0.1f, -1e30f, -kInfinity, kNaN})
        EXPECT_EQ(CentreShare(below), 0.01f);
    for (const float above : {1.1f, 1e30f, kInfinity})
        EXPECT_EQ(CentreShare(above), 0.99f);
}

// 0.511628 * 0.98 + 0.01 = 0.5114, of 720: 368.2; 0.534884 and 0.465116 of 480: 256.4 and 223.6.
// 0.41 * 1.3 * 720 / 2 = 191.88, 0.615 * 1.3 * 480 / 2 = 191.88.
TEST(PixelatorPlan, Ellipse_OfTheDefaults_IsTruncatedAndTurnsWithTheRows)
{
    constexpr Knobs knobs = {0.511628f, 0.465116f, 0.41f, 0.615f, 0.505f};
    EXPECT_EQ(MakeEllipse(knobs, 720, 480, false), (Ellipse{368, 256, 191, 191}));
    EXPECT_EQ(MakeEllipse(knobs, 720, 480, true), (Ellipse{368, 223, 191, 191}));
}

// 1.3 is single precision, a little below: 1247.99995 and 701.99997.
TEST(PixelatorPlan, Ellipse_OfMax_IsLargerThanThePicture)
{
    constexpr Knobs knobs = {0.488372f, 0.465116f, 1.0f, 1.0f, 1.0f};
    EXPECT_EQ(MakeEllipse(knobs, 1920, 1080, false), (Ellipse{938, 576, 1247, 701}));
}

TEST(PixelatorPlan, Ellipse_CentreKnobsAtTheEnds_LandAPercentInside)
{
    EXPECT_EQ(MakeEllipse({0, 0, 0, 0, 0}, 1000, 500, true),
              (Ellipse{9, 4, 0, 0})); // 9.9999998 and 4.9999999
    EXPECT_EQ(MakeEllipse({0, 0, 0, 0, 0}, 1000, 500, false), (Ellipse{9, 495, 0, 0}));
    EXPECT_EQ(MakeEllipse({1, 1, 0, 0, 0}, 1000, 500, true), (Ellipse{990, 495, 0, 0}));
    EXPECT_EQ(MakeEllipse({1, 1, 0, 0, 0}, 1000, 500, false), (Ellipse{990, 4, 0, 0}));
    EXPECT_EQ(MakeEllipse({1, 0, 1, 1, 0}, 1, 1, false), (Ellipse{0, 0, 0, 0}));
}

TEST(PixelatorPlan, Radius_WildKnobs_IsAtLeast0AndAtMostTwiceTheSide)
{
    for (const float small : {0.0f, -0.5f, -1e30f, -kInfinity, kNaN})
        EXPECT_EQ(Radius(small, 100), 0);
    for (const float large : {4.0f, 1e30f, kInfinity})
        EXPECT_EQ(Radius(large, 100), 200);
    EXPECT_EQ(Radius(3.0f, 100), 194); // 195 less the rounding of 1.3
    EXPECT_EQ(Radius(1e30f, std::numeric_limits<int>::max()), 1 << 30);
}

TEST(PixelatorPlan, SoftSize_Is14PercentOfTheHeight)
{
    EXPECT_EQ(SoftSize(480), 67); // 67.2
    EXPECT_EQ(SoftSize(1080), 151);
    EXPECT_EQ(SoftSize(50), 7); // 7 exactly
    EXPECT_EQ(SoftSize(7), 0);
    EXPECT_EQ(SoftSize(8), 1);
}

TEST(PixelatorPlan, Widened_AddsTheSoftEdgeToTheRadii)
{
    EXPECT_EQ(Widened({3, 4, 5, 6}, 10), (Ellipse{3, 4, 15, 16}));
}

TEST(PixelatorPlan, BlockSize_OfMaxOn480Rows_Is72)
{
    EXPECT_EQ(BlockAmount(1.0f), 0.5f);
    EXPECT_EQ(MakeBlockSize(0.5f, 640, 480, false), (BlockSize{72, 72}));
    EXPECT_EQ(MakeBlockSize(BlockAmount(0.505f), 640, 480, false), (BlockSize{36, 36})); // 36.36
}

TEST(PixelatorPlan, BlockSize_InAField_IsTwiceAsWideAsHigh)
{
    EXPECT_EQ(MakeBlockSize(0.5f, 30, 240, true), (BlockSize{72, 36}));
    EXPECT_EQ(MakeBlockSize(0.5f, 30, 20, true), (BlockSize{6, 3}));
    EXPECT_EQ(MakeBlockSize(0.5f, 30, 10, true), (BlockSize{3, 1}));
    EXPECT_EQ(MakeBlockSize(0.0f, 30, 240, true), (BlockSize{2, 1}));
}

TEST(PixelatorPlan, BlockSize_ZeroAndWildAmounts_StaysBetween2AndTheLongerSide)
{
    for (const float small : {0.0f, 0.00005f, -1.0f, -kInfinity, kNaN})
        EXPECT_EQ(MakeBlockSize(small, 640, 480, false), (BlockSize{2, 2}));
    for (const float large : {100.0f, 1e30f, kInfinity}) {
        EXPECT_EQ(MakeBlockSize(large, 640, 480, false), (BlockSize{640, 640}));
        EXPECT_EQ(MakeBlockSize(large, 48, 480, false), (BlockSize{480, 480}));
        EXPECT_EQ(MakeBlockSize(large, 640, 240, true), (BlockSize{640, 320}));
    }
    EXPECT_EQ(MakeBlockSize(kInfinity, 1, 1, false), (BlockSize{2, 2}));
}

TEST(PixelatorPlan, BlockCount_CoversTheSide)
{
    EXPECT_EQ(BlockCount(90, 30), 3);
    EXPECT_EQ(BlockCount(91, 30), 4);
    EXPECT_EQ(BlockCount(1, 30), 1);
}

// Blocks of 30 on a side of 100: they begin at 0, 30, 60 and 90.
TEST(PixelatorPlan, BlockRange_MeetsTheRegionAndNoMore)
{
    EXPECT_EQ(MakeBlockRange(50, 25, 100, 30), (BlockRange{0, 3})); // 25 to 75
    EXPECT_EQ(MakeBlockRange(50, 20, 100, 30), (BlockRange{1, 3})); // 30 to 70
    EXPECT_EQ(MakeBlockRange(50, 0, 100, 30), (BlockRange{1, 2}));
    EXPECT_EQ(MakeBlockRange(10, 30, 100, 30), (BlockRange{0, 2})); // -20 to 40
}

// 50 + 1000 is block 35 of 4. Where the region begins beyond the picture its end counts as the picture's, and
// there is no block left.
TEST(PixelatorPlan, Kept_TheEndOfTheRange_MayComeFromBeyondThePicture)
{
    EXPECT_EQ(MakeBlockRange(50, 1000, 100, 30), (BlockRange{0, 4}));
    EXPECT_EQ(MakeBlockRange(80, 50, 100, 30), (BlockRange{1, 4}));
    EXPECT_EQ(MakeBlockRange(150, 20, 100, 30), (BlockRange{4, 4}));
    constexpr int most = std::numeric_limits<int>::max();
    EXPECT_EQ(MakeBlockRange(99, most, 100, 30), (BlockRange{0, 4}));
}

TEST(PixelatorPlan, Numbers_ForManySizesAndKnobs_AreThePlainVersions)
{
    for (int size = 1; size < 2000; size += 7)
        for (int step = -5; step <= 105; ++step) {
            const float knob = static_cast<float>(step) / 100.0f;
            const reference::PixelatorNumbers plain = reference::PixelatorNumbersOf(
                {knob, 1 - knob, knob, 1 - knob, knob}, size, 2000 - size, step % 2 == 0);
            const Ellipse expected = {plain.centreX, plain.centreY, plain.radiusX, plain.radiusY};
            ASSERT_EQ(MakeEllipse({knob, 1 - knob, knob, 1 - knob, knob}, size, 2000 - size, step % 2 == 0),
                      expected)
                << size << ' ' << knob;
            ASSERT_EQ(SoftSize(2000 - size), plain.soft);
            ASSERT_EQ(BlockAmount(knob), plain.amount);
        }
}

} // namespace
} // namespace kelmora::pixelator

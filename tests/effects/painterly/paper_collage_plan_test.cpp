#include "effects/painterly/paper_collage_plan.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference/paper_collage.h"

namespace kelmora::paper_collage {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kMost = std::numeric_limits<int>::max();

TEST(PaperCollagePlan, LayersFor_TheKnob_CountsFromTwoToEight)
{
    EXPECT_EQ(LayersFor(0.0f), 2);
    EXPECT_EQ(LayersFor(0.005f), 2);
    EXPECT_EQ(LayersFor(0.16f), 2); // 0.96
    EXPECT_EQ(LayersFor(0.17f), 3); // 1.02
    EXPECT_EQ(LayersFor(0.5f), 5);
    EXPECT_EQ(LayersFor(0.87f), 7); // 5.22
    EXPECT_EQ(LayersFor(1.0f), 8);
}

TEST(PaperCollagePlan, LayersFor_WildKnobs_AreCutToTwoAndEight)
{
    EXPECT_EQ(LayersFor(2.0f), 8);
    EXPECT_EQ(LayersFor(1e30f), 8);
    EXPECT_EQ(LayersFor(kInfinity), 8);
    EXPECT_EQ(LayersFor(-0.2f), 2);
    EXPECT_EQ(LayersFor(-kInfinity), 2);
    EXPECT_EQ(LayersFor(kNaN), 2);
}

TEST(PaperCollagePlan, RoundingSize_IsUpTo15PercentOfTheHeight)
{
    EXPECT_EQ(RoundingSize(1.0f, 1080), 162);
    EXPECT_EQ(RoundingSize(0.5f, 480), 36);
    EXPECT_EQ(RoundingSize(0.0f, 1080), 0);
    EXPECT_EQ(RoundingSize(1.0f, 6), 0); // 0.9
    EXPECT_EQ(RoundingSize(1.0f, 20), 3);
    EXPECT_EQ(RoundingSize(-1.0f, 1080), 0);
    EXPECT_EQ(RoundingSize(kNaN, 1080), 0);
    EXPECT_EQ(RoundingSize(kInfinity, 1080), kMost);
}

TEST(PaperCollagePlan, ShadowDistance_IsUpTo3PercentOfTheHeight)
{
    EXPECT_EQ(ShadowDistance(1.0f, 1080), 32); // 32.4
    EXPECT_EQ(ShadowDistance(0.5f, 480), 7);   // 7.2
    EXPECT_EQ(ShadowDistance(1.0f, 33), 0);    // 0.99
    EXPECT_EQ(ShadowDistance(1.0f, 34), 1);
    EXPECT_EQ(ShadowDistance(-1.0f, 1080), 0);
    EXPECT_EQ(ShadowDistance(kNaN, 1080), 0);
    EXPECT_EQ(ShadowDistance(kInfinity, 1), kMost);
}

void ExpectOffset(const Offset& offset, int x, int y)
{
    EXPECT_EQ(offset.x, x);
    EXPECT_EQ(offset.y, y);
}

// The constant for a half turn is a little short, so that a quarter turn's sine is too, and truncates.
TEST(PaperCollagePlan, ShadowOffset_QuarterTurns_PointRightUpLeftAndDown)
{
    ExpectOffset(ShadowOffset(1.0f, 10, false), 10, 0);
    ExpectOffset(ShadowOffset(0.75f, 10, false), 0, 9); // 10 * 0.99999999999999...
    ExpectOffset(ShadowOffset(0.5f, 10, false), -9, 0);
    ExpectOffset(ShadowOffset(0.25f, 10, false), 0, -9);
    ExpectOffset(ShadowOffset(0.0f, 10, false), 9, 0);
    ExpectOffset(ShadowOffset(0.875f, 10, false), 7, 7); // 7.07
}

TEST(PaperCollagePlan, ShadowOffset_Fields_DoubleTheTruncatedWay)
{
    ExpectOffset(ShadowOffset(1.0f, 10, true), 20, 0);
    ExpectOffset(ShadowOffset(0.875f, 10, true), 14, 7);
    ExpectOffset(ShadowOffset(0.5f, 10, true), -18, 0);
}

TEST(PaperCollagePlan, ShadowOffset_WildAngles_StayWithinTheDistance)
{
    for (const float angle : {kNaN, kInfinity, -kInfinity})
        ExpectOffset(ShadowOffset(angle, 10, true), 0, 0);
    for (const float angle : {1e30f, -1e30f, 12345.6f, -3.0f}) {
        const Offset offset = ShadowOffset(angle, 10, true);
        EXPECT_LE(std::abs(offset.x), 20);
        EXPECT_LE(std::abs(offset.y), 10);
    }
}

TEST(PaperCollagePlan, Kept_PaperColorMix_LosesALevel)
{
    EXPECT_EQ(PaperColorMix(255, 0, 255), 254);
    EXPECT_EQ(PaperColorMix(100, 0, 255), 99);
    EXPECT_EQ(PaperColorMix(0, 255, 0), 254);
    EXPECT_EQ(PaperColorMix(0, 0, 128), 0);
    EXPECT_EQ(PaperColorMix(255, 255, 128), 254);
    EXPECT_EQ(PaperColorMix(200, 100, 128), 149); // 38300 >> 8
    EXPECT_EQ(PaperColorMix(1, 0, 255), 0);
}

TEST(PaperCollagePlan, PaperColorMix_AllBytes_IsThePlainVersion)
{
    for (int a = 0; a < 256; a += 3)
        for (int b = 0; b < 256; b += 5)
            for (int k = 0; k < 256; ++k)
                ASSERT_EQ(PaperColorMix(a, b, k), reference::PaperColorMix(a, b, k));
}

TEST(PaperCollagePlan, LevelsFor_TwoToSeven_EndAt255)
{
    const std::vector<std::vector<int>> expected = {
        {0, 255},
        {0, 127, 255},
        {0, 85, 170, 255},
        {0, 63, 127, 191, 255},
        {0, 51, 102, 153, 204, 255},
        {0, 42, 85, 127, 170, 212, 255},
    };
    for (const std::vector<int>& greys : expected) {
        const Levels levels = LevelsFor(static_cast<int>(greys.size()));
        EXPECT_EQ(levels.count, static_cast<int>(greys.size()));
        for (std::size_t i = 0; i < greys.size(); ++i)
            EXPECT_EQ(levels.grey[i], greys[i]) << greys.size();
    }
}

// 255 / 7 in single precision lies below it.
TEST(PaperCollagePlan, Kept_EightSheets_EndAt254)
{
    const Levels levels = LevelsFor(8);
    const int expected[] = {0, 36, 72, 109, 145, 182, 218, 254};
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(levels.grey[i], expected[i]);
}

TEST(PaperCollagePlan, SheetsFor_TwoSheetsAtHalfBalance_PartAt127)
{
    const auto sheets = SheetsFor(2, 0.5f);
    for (std::size_t grey = 0; grey < 256; ++grey)
        ASSERT_EQ(sheets[grey], grey < 127 ? 0 : 1) << grey;
}

// Balance 0 puts the middle at grey 12, Balance 1 at 242: 0.05 and 0.95 of 255, truncated.
TEST(PaperCollagePlan, SheetsFor_TheBalance_MovesTheMiddle)
{
    EXPECT_EQ(reference::BalancePoint(0.0f), 12);
    EXPECT_EQ(reference::BalancePoint(0.5f), 127);
    EXPECT_EQ(reference::BalancePoint(1.0f), 242);
    // At 12 itself the upper half begins: 255 - 243 * 127 / 243 = 128, on the upper sheet of two. Below it
    // 11 * 127 / 12 = 116.
    EXPECT_EQ(SheetsFor(2, 0.0f)[11], 0);
    EXPECT_EQ(SheetsFor(2, 0.0f)[12], 1);
    EXPECT_EQ(SheetsFor(2, 1.0f)[241], 0);
    EXPECT_EQ(SheetsFor(2, 1.0f)[242], 1);
}

TEST(PaperCollagePlan, SheetsFor_AllCountsAndBalances_AreThePlainVersions)
{
    for (int count = 2; count <= 8; ++count)
        for (int step = -20; step <= 120; ++step) {
            const float balance = static_cast<float>(step) / 100.0f;
            const auto sheets = SheetsFor(count, balance);
            const std::array<int, 256> table = reference::PaperTable(count, balance);
            const Levels levels = LevelsFor(count);
            for (std::size_t grey = 0; grey < 256; ++grey)
                ASSERT_EQ(levels.grey[sheets[grey]], table[grey])
                    << count << " sheets, balance " << balance << ", grey " << grey;
        }
}

TEST(PaperCollagePlan, SheetsFor_WildBalances_AreDefined)
{
    for (const float balance : {kNaN, kInfinity, -kInfinity, 1e30f, -1e30f})
        for (const std::uint8_t sheet : SheetsFor(5, balance))
            EXPECT_LT(sheet, 5);
}

// The rows are cut by the brightest grey of each sheet.
TEST(PaperCollagePlan, SheetsFor_AnyBalance_RisesFromTheLowestSheet)
{
    for (int count = 2; count <= 8; ++count)
        for (const float balance : {0.0f, 0.1f, 0.495f, 0.5f, 0.815f, 1.0f, kNaN, kInfinity, -kInfinity}) {
            const auto sheets = SheetsFor(count, balance);
            EXPECT_EQ(sheets[0], 0);
            EXPECT_TRUE(std::is_sorted(sheets.begin(), sheets.end()))
                << count << " sheets, balance " << balance;
            EXPECT_EQ(sheets[255], count - 1);
        }
}

TEST(PaperCollagePlan, ColourOf_AWord_TakesRedFromTheLowByte)
{
    const Colour colour = ColourOf(0x00112233);
    EXPECT_EQ(colour.b, 0x11);
    EXPECT_EQ(colour.g, 0x22);
    EXPECT_EQ(colour.r, 0x33);
}

TEST(PaperCollagePlan, Mix_MixesEachChannel)
{
    const Colour colour = Mix({200, 100, 0}, {100, 200, 255}, 128);
    EXPECT_EQ(colour.b, 149); // (25600 + 12700) >> 8
    EXPECT_EQ(colour.g, 149); // (12800 + 25400) >> 8
    EXPECT_EQ(colour.r, 126); // 32385 >> 8
}

TEST(PaperCollagePlan, Share255_AnyNumber_IsAByte)
{
    EXPECT_EQ(Share255(0.0), 0);
    EXPECT_EQ(Share255(0.5), 127);
    EXPECT_EQ(Share255(1.0), 255);
    EXPECT_EQ(Share255(1.0001), 255);
    EXPECT_EQ(Share255(-1.0), 0);
    EXPECT_EQ(Share255(1e300), 255);
    EXPECT_EQ(Share255(std::numeric_limits<double>::quiet_NaN()), 0);
}

} // namespace
} // namespace kelmora::paper_collage

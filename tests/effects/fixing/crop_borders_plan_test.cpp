#include "effects/fixing/crop_borders_plan.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/reference/crop_borders.h"

namespace kelmora::crop_borders {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

Knobs Crop(float horizontal, float vertical)
{
    return {.horizCrop = horizontal, .vertCrop = vertical};
}

void ExpectRect(const Rect& rect, const Rect& expected)
{
    EXPECT_EQ(rect.left, expected.left);
    EXPECT_EQ(rect.top, expected.top);
    EXPECT_EQ(rect.right, expected.right);
    EXPECT_EQ(rect.bottom, expected.bottom);
}

TEST(CropBordersPlan, CropShare_IsUpToATenth)
{
    EXPECT_EQ(CropShare(0.0f), 0.0f);
    EXPECT_EQ(CropShare(0.5f), 0.05f);
    EXPECT_EQ(CropShare(1.0f), 0.1f);
}

TEST(CropBordersPlan, TheKeptRect_NoCrop_IsAll)
{
    ExpectRect(KeptRect(Crop(0.0f, 0.0f), 720, 480), {0, 0, 720, 480});
    ExpectRect(KeptRect(Crop(0.0f, 0.0f), 1, 1), {0, 0, 1, 1});
}

TEST(CropBordersPlan, TheKeptRect_FullCrop_TakesATenthOffEverySide)
{
    ExpectRect(KeptRect(Crop(1.0f, 1.0f), 720, 480), {72, 48, 648, 432});
}

TEST(CropBordersPlan, TheKeptRect_PresetsAndDefaults_RoundToNearest)
{
    ExpectRect(KeptRect(Crop(0.75f, 0.75f), 720, 480), {54, 36, 666, 444});
    ExpectRect(KeptRect(Crop(0.215f, 0.17f), 720, 480), {15, 8, 705, 472}); // 15.48, 8.16
    ExpectRect(KeptRect(Crop(0.0f, 0.0001f), 720, 480), {0, 0, 720, 480});  // 0.0048
}

TEST(CropBordersPlan, TheKeptRect_AHalfPixel_GoesToTheLowerMarginAndComesOffTheUpper)
{
    // 0.0625: half a pixel of 8, one and a half of 24.
    ExpectRect(KeptRect(Crop(0.625f, 0.625f), 8, 24), {1, 2, 8, 23});
}

TEST(CropBordersPlan, TheKeptRect_TheTenth_IsSinglePrecision)
{
    // A little above a tenth, so that 4.5 less of 45 pixels is just below 40.5.
    ExpectRect(KeptRect(Crop(1.0f, 1.0f), 45, 5), {5, 1, 40, 4});
}

TEST(CropBordersPlan, TheKeptRect_AKnobBelowZero_MayBeginInsideAndEndOutside)
{
    ExpectRect(KeptRect(Crop(-1.0f, 0.0f), 9, 9), {0, 0, 10, 9}); // -0.4, truncated, and 10.4
}

TEST(CropBordersPlan, TheKeptRect_WildKnobs_AreDefined)
{
    ExpectRect(KeptRect(Crop(kNaN, 0.0f), 8, 8), {0, 0, 0, 8});
    ExpectRect(KeptRect(Crop(kInfinity, -kInfinity), 8, 8), {kMost, kLeast, kLeast, kMost});
    ExpectRect(KeptRect(Crop(1e30f, -1e30f), 8, 8), {kMost, kLeast, kLeast, kMost});
}

TEST(CropBordersPlan, FeatherSize_IsUpTo15PercentOfTheHeight)
{
    EXPECT_EQ(FeatherSize(1.0f, 480), 72.0f);
    EXPECT_EQ(FeatherSize(0.25f, 64), 2.4f);
    EXPECT_EQ(FeatherSize(0.0f, 1080), 0.0f);
}

TEST(CropBordersPlan, FeatherWidth_OfAField_IsTwiceTheHeight)
{
    EXPECT_EQ(FeatherWidth(7.5f, false), 7.5f);
    EXPECT_EQ(FeatherWidth(7.5f, true), 15.0f);
}

TEST(CropBordersPlan, Numbers_ForEveryKnobAndManySizes_AreThePlainVersions)
{
    for (int size = 1; size < 2000; size += 7)
        for (int step = 0; step <= 100; ++step) {
            const float knob = static_cast<float>(step) / 100.0f;
            reference::CropBordersKnobs plain;
            plain.horizontal = plain.feather = knob;
            plain.vertical = 1.0f - knob;
            const reference::CropNumbers expected = reference::CropOf(plain, size, 2000 - size);
            const Rect kept = KeptRect(Crop(plain.horizontal, plain.vertical), size, 2000 - size);
            ASSERT_EQ(kept, (Rect{expected.left, expected.top, expected.right, expected.bottom}))
                << size << ' ' << knob;
            ASSERT_EQ(FeatherSize(knob, 2000 - size), expected.feather) << size << ' ' << knob;
        }
}

} // namespace
} // namespace kelmora::crop_borders

#include "image/primitives/ycbcr.h"

#include <climits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/ycbcr.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {
namespace {

using Row = std::vector<std::uint8_t>;

/// Rows of pixels of 2 or 3 bytes: the format says nothing of these.
constexpr std::uint32_t kNoFormat = PF_Packed8;

Row RowOf(const GuardedPicture& picture, int y)
{
    return Row(picture.Row(y), picture.Row(y) + picture.Width() * picture.PixelBytes());
}

void CheckMember(const char* name, decltype(&pxYCbCr422ToRGB) member, int from, int to,
                 Row (*plain)(const Row&, int))
{
    SCOPED_TRACE(name);
    for (int width = 1; width <= 70; ++width)
        for (const Noise noise : {Noise::Uniform, Noise::Leaning, Noise::Special})
            ForEachLayout([&](const PictureLayout& layout) {
                GuardedPicture src(width, 3, from, kNoFormat, layout), dst(width, 3, to, kNoFormat, layout);
                src.FillNoise(static_cast<std::uint32_t>(width), noise);
                src.Freeze();
                ASSERT_EQ(member(src.Row(0), src.Stride(), dst.Row(0), dst.Stride(), width, 3), pxOk);
                for (int y = 0; y < 3; ++y)
                    ASSERT_EQ(RowOf(dst, y), plain(RowOf(src, y), width)) << width << ", row " << y;
                src.Check();
                dst.Check();
            });

    GuardedPicture src(5, 4, from, kNoFormat), dst(5, 4, to, kNoFormat);
    dst.FillNoise(1);
    dst.Freeze();
    const std::uint8_t* s = src.Row(0);
    std::uint8_t* d = dst.Row(0);
    const int ss = src.Stride(), ds = dst.Stride();
    EXPECT_EQ(member(nullptr, ss, d, ds, 5, 4), pxNullPointer);
    EXPECT_EQ(member(s, ss, nullptr, ds, 5, 4), pxNullPointer);
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_EQ(member(s, ss, d, ds, bad, 4), pxBadSize);
        EXPECT_EQ(member(s, ss, d, ds, 5, bad), pxBadSize);
    }
    EXPECT_EQ(member(s, ss - 1, d, ds, 5, 4), pxBadStep);
    EXPECT_EQ(member(s, ss, d, ds - 1, 5, 4), pxBadStep);
    EXPECT_EQ(member(s, -ss, d, ds, 5, 4), pxBadStep);
    EXPECT_EQ(member(s, ss, d, 0, 5, 4), pxBadStep);
    EXPECT_EQ(member(s, ss, d, ds, INT_MAX, 4), pxBadStep);
    dst.Check();
}

TEST(YCbCr422, EveryMember_IsThePlainConversionAndRefusesBadArguments)
{
    ForEachVariant([] {
        CheckMember("pxYCbCr422ToRGB", pxYCbCr422ToRGB, 2, 3, reference::RgbRow);
        CheckMember("pxRGBToYCbCr422", pxRGBToYCbCr422, 3, 2, reference::YCbCrRow);
    });
}

TEST(YCbCr422, EveryTripleOfAFewLevels_ComesOutBothWays)
{
    ForEachVariant([] {
        for (int first = 0; first < 256; ++first)
            for (int second = 0; second < 256; second += 5) {
                Row src, rgb;
                for (int third = 0; third < 256; third += 5)
                    for (const int value : {first, second, 255 - first, third}) {
                        src.push_back(static_cast<std::uint8_t>(value));
                        rgb.push_back(static_cast<std::uint8_t>(value));
                    }
                const int width = static_cast<int>(src.size()) / 2,
                          colours = static_cast<int>(rgb.size()) / 3;
                Row dst(static_cast<std::size_t>(width) * 3), ycbcr(static_cast<std::size_t>(colours) * 2);
                ASSERT_EQ(pxYCbCr422ToRGB(src.data(), width * 2, dst.data(), width * 3, width, 1), pxOk);
                ASSERT_EQ(dst, reference::RgbRow(src, width)) << first << ", " << second;
                ASSERT_EQ(pxRGBToYCbCr422(rgb.data(), static_cast<int>(rgb.size()), ycbcr.data(), colours * 2,
                                          colours, 1),
                          pxOk);
                ASSERT_EQ(ycbcr, reference::YCbCrRow(rgb, colours)) << first << ", " << second;
            }
    });
}

TEST(YCbCr422ToRGB, HandComputedPairs_ComeOut)
{
    // Y 235 with neutral chroma: R = 76284 * 235 + 104595 * 128 - 14608761 = 16706139, >> 16 = 254
    // G: 17926740 - 3288320 - 6819968 + 8887730 = 16706182, 254. B: 17926740 + 16919808 - 18140365 = 16706183.
    // Y 16: R = 1220544 + 13388160 - 14608761 = -57, below 0.
    const std::uint8_t src[] = {235, 128, 16, 128};
    std::uint8_t dst[6] = {};
    ASSERT_EQ(pxYCbCr422ToRGB(src, 4, dst, 6, 2, 1), pxOk);
    const std::uint8_t expected[] = {254, 254, 254, 0, 0, 0};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(dst[i], expected[i]) << i;
}

TEST(RGBToYCbCr422, HandComputedPairs_ComeOut)
{
    // White: 255 * 56296 = 14355480; + 0x108000 (1081344) = 15436824, >> 16 = 235; the odd pixel + 0x100000:
    // 15404056, >> 16 = 235. Cb: 510 * 0 + 0x1010000 = 16842752, >> 17 = 128. Cr the same.
    // Black after it: the odd pixel's Y is 0x100000 >> 16 = 16.
    const std::uint8_t white[] = {255, 255, 255, 255, 255, 255};
    std::uint8_t dst[4] = {};
    ASSERT_EQ(pxRGBToYCbCr422(white, 6, dst, 4, 2, 1), pxOk);
    EXPECT_EQ(dst[0], 235);
    EXPECT_EQ(dst[1], 128);
    EXPECT_EQ(dst[2], 235);
    EXPECT_EQ(dst[3], 128);
    // Pure blue twice: Y = 6423 * 255 = 1637865; + 1081344 = 2719209, 41; + 1048576 = 2686441, 40.
    // Cb = 28770 * 510 + 16842752 = 31515452, >> 17 = 240. Cr = -4653 * 510 + 16842752 = 14469722, 110.
    const std::uint8_t blue[] = {0, 0, 255, 0, 0, 255};
    ASSERT_EQ(pxRGBToYCbCr422(blue, 6, dst, 4, 2, 1), pxOk);
    EXPECT_EQ(dst[0], 41);
    EXPECT_EQ(dst[1], 240);
    EXPECT_EQ(dst[2], 40);
    EXPECT_EQ(dst[3], 110);
}

TEST(YCbCr422ToRGB, WidthOne_TakesNeutralCr)
{
    const std::uint8_t src[] = {235, 128}; // no third byte may be read
    std::uint8_t dst[3] = {};
    ASSERT_EQ(pxYCbCr422ToRGB(src, 2, dst, 3, 1, 1), pxOk);
    for (const std::uint8_t value : dst)
        EXPECT_EQ(value, 254);
}

TEST(YCbCr422ToRGB, LastOddPixel_TakesThePreviousPairsCr)
{
    // Cr 228 with Y 100: R = 7628400 + 23847660 - 14608761 = 16867299, >> 16 = 257, cut to 255;
    // Cr 28: R = 7628400 + 2928660 - 14608761 < 0.
    std::uint8_t dst[9] = {};
    const std::uint8_t high[] = {100, 128, 100, 228, 100, 128}, low[] = {100, 128, 100, 28, 100, 128};
    ASSERT_EQ(pxYCbCr422ToRGB(high, 6, dst, 9, 3, 1), pxOk);
    EXPECT_EQ(dst[6], 255);
    ASSERT_EQ(pxYCbCr422ToRGB(low, 6, dst, 9, 3, 1), pxOk);
    EXPECT_EQ(dst[6], 0);
}

TEST(RGBToYCbCr422, LastOddPixel_HasItsOwnCb)
{
    // Blue: Cb = 28770 * 255 + 0x808000 (8421376) = 15757726, >> 16 = 240; Y with 0x108000: 41.
    const std::uint8_t src[] = {0, 0, 255};
    std::uint8_t dst[3] = {1, 2, 0xC3};
    ASSERT_EQ(pxRGBToYCbCr422(src, 3, dst, 2, 1, 1), pxOk);
    EXPECT_EQ(dst[0], 41);
    EXPECT_EQ(dst[1], 240);
    EXPECT_EQ(dst[2], 0xC3);
}

} // namespace
} // namespace kelmora

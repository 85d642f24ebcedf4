#include "image/primitives/neighbourhood.h"

#include <climits>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/neighbourhood.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

using reference::Picture;

TEST(Sharpen, EveryWidthAndLayout_IsThePlainMaskAndLeavesTheFourthChannel)
{
    for (int width = 1; width <= 33; ++width)
        for (const Noise noise : {Noise::Uniform, Noise::Leaning, Noise::Special})
            ForEachLayout([&](const PictureLayout& layout) {
                GuardedPicture src(width + 2, 5, PF_BGRA8, layout), dst(width, 3, PF_BGRA8, layout);
                src.FillNoise(static_cast<std::uint32_t>(width), noise);
                dst.FillNoise(2);
                Picture expected = reference::Read(dst);
                reference::Sharpen(reference::Read(src), 1, 1, expected);
                src.Freeze();
                ForEachVariant([&] {
                    GuardedPicture to(dst);
                    ASSERT_EQ(pxSharpen3x3_8u_A3(ElementAt<std::uint8_t>(src, 1, 1), src.Stride(), to.Row(0),
                                                 to.Stride(), width, 3),
                              pxOk);
                    ASSERT_TRUE(reference::Matches(to, expected)) << width;
                    to.Check();
                });
                src.Check();
            });
}

TEST(Sharpen, HandComputedPixels_ComeOut)
{
    // The middle value, its eight neighbours, the result.
    struct {
        std::uint8_t middle, around, result;
    } const cases[] = {
        {0, 0, 0},       {255, 255, 255}, {100, 100, 100}, {100, 90, 110}, // 1600 - 720 = 880
        {100, 0, 200},                                                     // 1600
        {200, 100, 255},                                                   // 3200 - 800 = 2400, 300
        {10, 50, 0},                                                       // 160 - 400
    };
    for (const auto& one : cases) {
        std::uint8_t src[3 * 12];
        for (std::uint8_t& value : src)
            value = one.around;
        for (int c = 0; c < 3; ++c)
            src[16 + c] = one.middle;
        std::uint8_t dst[4] = {1, 2, 3, 44};
        ASSERT_EQ(pxSharpen3x3_8u_A3(src + 16, 12, dst, 4, 1, 1), pxOk);
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(dst[c], one.result) << int{one.middle} << " among " << int{one.around};
        EXPECT_EQ(dst[3], 44);
    }
}

TEST(Sharpen, EveryRemainder_GoesToNearestWithTiesToEven)
{
    // 20 in the middle, one neighbour, all else 0: x = 17 * 20 - 20 - neighbour.
    struct {
        int neighbour, result;
    } const cases[] = {
        {0, 40},  // 320
        {1, 40},  // 319: (319 + 1 + 3) >> 3
        {3, 40},  // 317: 321
        {4, 40},  // 316 is 39.5: 39 is odd, up to 40
        {5, 39},  // 315: 319
        {11, 39}, // 309 is 38.6: 38 is even, 312 >> 3 = 39
        {12, 38}, // 308 is 38.5: down to the even 38
        {13, 38},
    };
    for (const auto& one : cases) {
        std::uint8_t src[3 * 12] = {};
        for (int c = 0; c < 3; ++c) {
            src[16 + c] = 20;
            src[c] = static_cast<std::uint8_t>(one.neighbour);
        }
        std::uint8_t dst[4] = {};
        ASSERT_EQ(pxSharpen3x3_8u_A3(src + 16, 12, dst, 4, 1, 1), pxOk);
        EXPECT_EQ(dst[0], one.result) << one.neighbour;
        EXPECT_EQ(dst[2], one.result) << one.neighbour;
    }
}

TEST(Sharpen, BadArguments_AreRefused)
{
    GuardedPicture src(7, 6, PF_BGRA8), dst(5, 4, PF_BGRA8);
    dst.Freeze();
    const std::uint8_t* s = ElementAt<std::uint8_t>(src, 1, 1);
    std::uint8_t* d = dst.Row(0);
    EXPECT_EQ(pxSharpen3x3_8u_A3(nullptr, 28, d, 20, 5, 4), pxNullPointer);
    EXPECT_EQ(pxSharpen3x3_8u_A3(s, 28, nullptr, 20, 5, 4), pxNullPointer);
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_EQ(pxSharpen3x3_8u_A3(s, 28, d, 20, bad, 4), pxBadSize);
        EXPECT_EQ(pxSharpen3x3_8u_A3(s, 28, d, 20, 5, bad), pxBadSize);
    }
    for (const int bad : {19, 0, -28}) {
        EXPECT_EQ(pxSharpen3x3_8u_A3(s, bad, d, 20, 5, 4), pxBadStep);
        EXPECT_EQ(pxSharpen3x3_8u_A3(s, 28, d, bad, 5, 4), pxBadStep);
    }
    EXPECT_EQ(pxSharpen3x3_8u_A3(s, 28, d, 20, INT_MAX, 4), pxBadStep);
    dst.Check();
}

TEST(BoxAverage, EveryWidthAndLayoutWithBothMasks_IsThePlainMean)
{
    for (const int size : {3, 5})
        for (int width = 1; width <= 33; ++width)
            ForEachLayout([&](const PictureLayout& layout) {
                const int reach = size / 2;
                GuardedPicture src(width + 2 * reach, 4 + 2 * reach, PF_Mask8, layout),
                    dst(width, 4, PF_Mask8, layout);
                src.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                const Picture from = reference::Read(src);
                Picture expected(width, 4, PF_Mask8);
                for (int y = 0; y < 4; ++y)
                    for (int x = 0; x < width; ++x)
                        expected.At(x, y, 0) = reference::BoxAverageAt(from, x + reach, y + reach, 0, size);
                src.Freeze();
                ForEachVariant([&] {
                    GuardedPicture to(dst);
                    ASSERT_EQ(pxBoxAverage_8u_C1(ElementAt<std::uint8_t>(src, reach, reach), src.Stride(),
                                                 to.Row(0), to.Stride(), width, 4, 11 * size),
                              pxOk);
                    ASSERT_TRUE(reference::Matches(to, expected)) << width << ", size " << size;
                    to.Check();
                });
                src.Check();
            });
}

TEST(BoxAverage, EverySum_IsDividedAsStated)
{
    // All sums that a mask may have: so many pixels of 255, one in between, the rest 0.
    for (const int size : {3, 5}) {
        const int area = size * size;
        for (int sum = 0; sum <= 255 * area; ++sum) {
            std::uint8_t src[25] = {};
            for (int i = 0, left = sum; left > 0; ++i) {
                src[i] = static_cast<std::uint8_t>(left > 255 ? 255 : left);
                left -= src[i];
            }
            std::uint8_t dst = 0;
            const std::uint8_t* const middle = src + (size / 2) * (size + 1);
            const int expected = size == 3 ? (sum + 5) * 455 / 4096 : (sum + 13) * 10485 / 262144;
            ForEachVariant([&] {
                ASSERT_EQ(pxBoxAverage_8u_C1(middle, size, &dst, 1, 1, 1, 11 * size), pxOk);
                ASSERT_EQ(dst, expected) << sum << ", size " << size;
            });
        }
    }
}

TEST(BoxAverage, HandComputedSums_ComeOut)
{
    const std::uint8_t white[25] = {255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255,
                                    255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
    const std::uint8_t four[9] = {1, 0, 1, 0, 0, 0, 1, 0, 1};
    std::uint8_t dst = 7;
    ASSERT_EQ(pxBoxAverage_8u_C1(white + 4, 3, &dst, 1, 1, 1, pxBox3x3), pxOk);
    EXPECT_EQ(dst, 255); // 2300 * 455 = 1046500, / 4096 = 255.5
    ASSERT_EQ(pxBoxAverage_8u_C1(white + 12, 5, &dst, 1, 1, 1, pxBox5x5), pxOk);
    EXPECT_EQ(dst, 255); // 6388 * 10485 = 66978180, / 262144 = 255.5
    ASSERT_EQ(pxBoxAverage_8u_C1(four + 4, 3, &dst, 1, 1, 1, pxBox3x3), pxOk);
    EXPECT_EQ(dst, 0); // 9 * 455 = 4095, one short of 4096
}

TEST(BoxAverage, BadArguments_AreRefused)
{
    GuardedPicture src(9, 8, PF_Mask8), dst(5, 4, PF_Mask8);
    dst.Freeze();
    const std::uint8_t* s = ElementAt<std::uint8_t>(src, 2, 2);
    std::uint8_t* d = dst.Row(0);
    for (const int mask : {33, 55}) {
        EXPECT_EQ(pxBoxAverage_8u_C1(nullptr, 9, d, 5, 5, 4, mask), pxNullPointer);
        EXPECT_EQ(pxBoxAverage_8u_C1(s, 9, nullptr, 5, 5, 4, mask), pxNullPointer);
        for (const int bad : {0, -1, INT_MIN}) {
            EXPECT_EQ(pxBoxAverage_8u_C1(s, 9, d, 5, bad, 4, mask), pxBadSize);
            EXPECT_EQ(pxBoxAverage_8u_C1(s, 9, d, 5, 5, bad, mask), pxBadSize);
        }
        for (const int bad : {4, 0, -9}) {
            EXPECT_EQ(pxBoxAverage_8u_C1(s, bad, d, 5, 5, 4, mask), pxBadStep);
            EXPECT_EQ(pxBoxAverage_8u_C1(s, 9, d, bad, 5, 4, mask), pxBadStep);
        }
    }
    for (const int bad : {0, -33, 3, 5, 32, 34, 44, 53, 35, 77, INT_MAX, INT_MIN})
        EXPECT_EQ(pxBoxAverage_8u_C1(s, 9, d, 5, 5, 4, bad), pxBadMask) << bad;
    dst.Check();
}

} // namespace
} // namespace kelmora

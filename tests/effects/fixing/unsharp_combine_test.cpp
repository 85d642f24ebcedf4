#include "effects/fixing/unsharp_combine.h"

#include <array>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "contract/video_frame.h"
#include "tests/reference/detail_enhancer.h"

namespace kelmora {
namespace {

using Pixel8 = std::array<std::uint8_t, 4>;
using PixelF = std::array<float, 4>;

template <class Pixel>
Pixel Combine(std::uint32_t format, Pixel picture, Pixel blurred, Pixel alpha, float amount)
{
    Pixel result = {};
    UnsharpCombine(format, amount)(picture.data(), blurred.data(), alpha.data(), result.data(), 1);
    return result;
}

TEST(UnsharpCombine, Bytes_AmountOfOne_IsTwiceThePictureLessTheBlur)
{
    EXPECT_EQ(Combine<Pixel8>(PF_BGRA8, {100, 200, 50, 9}, {90, 210, 50, 8}, {1, 2, 3, 4}, 1.0f),
              (Pixel8{110, 190, 50, 4}));
}

TEST(UnsharpCombine, Bytes_EachProductIsTruncated)
{
    // 0.91 in single precision is 0.91000003: 9100 ten-thousandths. 9100 * 101 / 10000 = 91.91: 91; 9100 * 99 =
    // 90.09: 90. So 101 + 91 - 90 = 102; 99 + 90 - 91 = 98; 1 + 0 - 91 saturates.
    EXPECT_EQ(Combine<Pixel8>(PF_BGRA8, {101, 99, 1, 0}, {99, 101, 101, 0}, {0, 0, 0, 255}, 0.91f),
              (Pixel8{102, 98, 0, 255}));
}

TEST(UnsharpCombine, Bytes_SaturateAtBothEnds)
{
    EXPECT_EQ(Combine<Pixel8>(PF_BGRA8, {255, 0, 200, 0}, {0, 255, 100, 0}, {0, 0, 0, 7}, 2.0f),
              (Pixel8{255, 0, 255, 7}));
}

TEST(UnsharpCombine, AlphaFirst_KeepsTheFirstChannel)
{
    EXPECT_EQ(Combine<Pixel8>(PF_ARGB8, {9, 100, 200, 50}, {8, 90, 210, 50}, {4, 3, 2, 1}, 1.0f),
              (Pixel8{4, 110, 190, 50}));
    EXPECT_EQ(Combine<PixelF>(PF_ARGB32F, {9, 0.5f, 0.25f, 0.5f}, {8, 0.25f, 0.5f, 0.5f}, {4, 3, 2, 1}, 1.0f),
              (PixelF{4, 0.75f, 0, 0.5f}));
}

TEST(UnsharpCombine, Floats_AreClampedToTheRange)
{
    EXPECT_EQ(Combine<PixelF>(PF_BGRA32F, {0.5f, 0.25f, 0.9f, 0}, {0.25f, 0.9f, 0.1f, 0}, {0, 0, 0, 7}, 1.0f),
              (PixelF{0.75f, 0, 1, 7}));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Combine<PixelF>(PF_BGRA32F, {nan, 0.5f, nan, 0}, {0, nan, nan, 0}, {0, 0, 0, 7}, 1.0f),
              (PixelF{0, 0, 0, 7}));
}

TEST(UnsharpCombine, FindByteGain_EveryAmountOfTheKnob_GivesTheTruncatedProducts)
{
    for (int scaled = 0; scaled <= 20000; scaled += 7) {
        const std::optional<ByteGain> gain = FindByteGain(scaled);
        if (!gain)
            continue; // the table serves, and the next test sees it
        for (int v = 0; v < 256; ++v)
            ASSERT_EQ((*gain)(v), scaled * v / 10000) << scaled << " " << v;
    }
    EXPECT_TRUE(FindByteGain(0));
    EXPECT_TRUE(FindByteGain(10000));
    EXPECT_FALSE(FindByteGain(-1));
    EXPECT_FALSE(FindByteGain(20001));
}

TEST(UnsharpCombine, Bytes_EveryAmountAndLevel_AreThePlainVersions)
{
    std::vector<float> amounts;
    for (int scaled = 0; scaled <= 20000; scaled += 7)
        amounts.push_back(static_cast<float>(scaled) / 10000.0f);
    for (const float wild : {2.1f, 7.0f, 150.0f, 1e6f, 1e30f, -0.3f, -1e30f,
                             std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
        amounts.push_back(wild);
    std::vector<std::uint8_t> picture(1024), blurred(1024), result(1024);
    std::size_t turn = 0;
    for (const float amount : amounts) {
        ++turn;
        for (std::size_t i = 0; i < 1024; ++i) {
            picture[i] = static_cast<std::uint8_t>(i / 4);
            blurred[i] = static_cast<std::uint8_t>(i / 4 * (2 * turn + 1) + 85 * i);
        }
        UnsharpCombine(PF_BGRA8, amount)(picture.data(), blurred.data(), picture.data(), result.data(), 256);
        for (std::size_t i = 0; i < 1024; ++i) {
            const int expected =
                i % 4 == 3 ? picture[i] : reference::SharpenByte(picture[i], blurred[i], amount);
            ASSERT_EQ(result[i], expected)
                << "amount " << amount << ", picture " << int{picture[i]} << ", blur " << int{blurred[i]};
        }
    }
}

} // namespace
} // namespace kelmora

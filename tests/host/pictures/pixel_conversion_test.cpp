#include "host/pictures/pixel_conversion.h"

#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "host/failure.h"

namespace kelmora::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<float> Floats(const Bytes& bytes)
{
    std::vector<float> floats(bytes.size() / sizeof(float));
    std::memcpy(floats.data(), bytes.data(), bytes.size());
    return floats;
}

Bytes BytesOf(const std::vector<float>& floats)
{
    Bytes bytes(floats.size() * sizeof(float));
    std::memcpy(bytes.data(), floats.data(), bytes.size());
    return bytes;
}

TEST(BytesOfPixel, PictureFormats_HaveTheirSizes)
{
    EXPECT_EQ(BytesOfPixel(PF_BGRA8), 4);
    EXPECT_EQ(BytesOfPixel(PF_ARGB8), 4);
    EXPECT_EQ(BytesOfPixel(PF_BGRA32F), 16);
    EXPECT_EQ(BytesOfPixel(PF_ARGB32F), 16);
    EXPECT_EQ(BytesOfPixel(PF_Mask8), 0);
}

TEST(ToFormat, Bytes_StandInTheFormatsOrder)
{
    const Picture picture{2, 1, {1, 2, 3, 4, 5, 6, 7, 8}};
    EXPECT_EQ(ToFormat(picture, PF_BGRA8), (Bytes{3, 2, 1, 4, 7, 6, 5, 8}));
    EXPECT_EQ(ToFormat(picture, PF_ARGB8), (Bytes{4, 1, 2, 3, 8, 5, 6, 7}));
}

TEST(ToFormat, Floats_AreByteTimesTheConstant)
{
    const Picture picture{1, 1, {0, 1, 51, 255}};
    const std::vector<float> bgra = Floats(ToFormat(picture, PF_BGRA32F));
    ASSERT_EQ(bgra.size(), 4u);
    EXPECT_NEAR(static_cast<double>(bgra[0]), 0.2, 1e-7); // blue 51: 51 / 255
    EXPECT_EQ(bgra[1], 0.003921569f);                     // green 1
    EXPECT_EQ(bgra[2], 0.0f);                             // red 0
    EXPECT_EQ(bgra[3], 1.0f); // alpha 255: the constant is 8421505 / 2^31, times 255 is 1 + 127 / 2^31
    const std::vector<float> argb = Floats(ToFormat(picture, PF_ARGB32F));
    EXPECT_EQ(argb, (std::vector<float>{bgra[3], bgra[2], bgra[1], bgra[0]}));
}

TEST(ToFormat, FormatOfNoPicture_IsRefused)
{
    EXPECT_THROW(ToFormat({1, 1, {1, 2, 3, 4}}, PF_Mask8), Failure);
}

TEST(FromFormat, Bytes_ComeBack)
{
    EXPECT_EQ(FromFormat({3, 2, 1, 4}, 1, 1, PF_BGRA8), (Picture{1, 1, {1, 2, 3, 4}}));
    EXPECT_EQ(FromFormat({4, 1, 2, 3}, 1, 1, PF_ARGB8), (Picture{1, 1, {1, 2, 3, 4}}));
}

TEST(FromFormat, Floats_GoToTheNearestByte)
{
    // 0.5 * 255 + 0.5 = 128; 0.2 * 255 + 0.5 = 51.5; 0.0019 * 255 + 0.5 = 0.98; 0.002 * 255 + 0.5 = 1.01
    const Bytes pixels = BytesOf({0.5f, 0.2f, 0.0019f, 0.002f});
    EXPECT_EQ(FromFormat(pixels, 1, 1, PF_BGRA32F), (Picture{1, 1, {0, 51, 128, 1}}));
    EXPECT_EQ(FromFormat(pixels, 1, 1, PF_ARGB32F), (Picture{1, 1, {51, 0, 1, 128}}));
}

TEST(FromFormat, FloatsOutsideOf0To1_AreCut)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const Bytes pixels = BytesOf({-1.0f, 2.0f, kInfinity, -kInfinity});
    EXPECT_EQ(FromFormat(pixels, 1, 1, PF_ARGB32F), (Picture{1, 1, {255, 255, 0, 0}}));
    const Bytes noNumbers = BytesOf(std::vector<float>(4, std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(FromFormat(noNumbers, 1, 1, PF_BGRA32F), (Picture{1, 1, {0, 0, 0, 0}}));
}

TEST(PixelConversion, EveryByte_SurvivesEveryFormat)
{
    Picture picture{256, 1, {}};
    for (unsigned i = 0; i < 256; ++i) {
        const auto byte = static_cast<std::uint8_t>(i);
        const auto other = static_cast<std::uint8_t>(255 - i);
        picture.rgba.insert(picture.rgba.end(), {byte, other, byte, other});
    }
    for (const PixelFormat format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F})
        EXPECT_EQ(FromFormat(ToFormat(picture, format), 256, 1, format), picture) << format;
}

} // namespace
} // namespace kelmora::host

#include "image/hsv.h"

#include <array>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/reference/colour.h"

namespace kelmora {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

reference::Hsv Plain(float red, float green, float blue)
{
    return reference::HsvOf(
        {static_cast<double>(blue), static_cast<double>(green), static_cast<double>(red)});
}

TEST(PixelRGBToHSV, PrimaryAndMixedColours_HaveTheirHues)
{
    struct {
        float red, green, blue, hue;
    } const cases[] = {
        {0, 0, 1, 0.0f},             // blue
        {0, 1, 1, 1.0f / 6},         // blue wins the draw
        {0, 1, 0, 1.0f / 3},         // green
        {1, 1, 0, 0.5f},             // green wins the draw
        {1, 0, 0, 2.0f / 3},         // red
        {1, 0, 1, 5.0f / 6},         // blue wins: -60 degrees
        {0.25f, 0, 1, 345.0f / 360}, // -15 degrees
        {1, 0.5f, 0, 3.5f / 6},      // red: 4 + (0.5 - 1) sixths
    };
    for (const auto& one : cases) {
        const HsvColour hsv = PixelRGBToHSV({one.red, one.green, one.blue});
        EXPECT_NEAR(static_cast<double>(hsv.hue), static_cast<double>(one.hue), 6e-8);
        EXPECT_EQ(hsv.saturation, 1.0f);
        EXPECT_EQ(hsv.value, 1.0f);
    }
}

TEST(PixelRGBToHSV, GreysAndWhatIsNotAboveZero_HaveNoHueAndNoSaturation)
{
    for (const float level : {0.0f, 0.25f, 1.0f, 3.0f, -1.0f, 1e-42f, 1e38f}) {
        const HsvColour hsv = PixelRGBToHSV({level, level, level});
        EXPECT_EQ(hsv.hue, 0.0f) << static_cast<double>(level);
        EXPECT_EQ(hsv.saturation, 0.0f);
        EXPECT_EQ(hsv.value, level);
    }
    const HsvColour below = PixelRGBToHSV({-0.5f, -1.0f, -2.0f});
    EXPECT_EQ(below.hue, 0.0f);
    EXPECT_EQ(below.saturation, 0.0f);
    EXPECT_EQ(below.value, -0.5f);
}

TEST(PixelRGBToHSV, ANegativeChannel_CarriesSaturationAboveOne)
{
    const HsvColour hsv = PixelRGBToHSV({1.0f, -1.0f, 0.0f});
    EXPECT_EQ(hsv.saturation, 2.0f);
    EXPECT_EQ(hsv.value, 1.0f);
    EXPECT_NEAR(static_cast<double>(hsv.hue), 4.5 / 6, 6e-8); // g - b = 1 - 0.5
}

TEST(PixelRGBToHSV, ColoursOfAGrid_AreThePlainResult)
{
    const std::array<float, 9> levels = {0.0f, 1e-40f, 0.1f, 0.25f, 0.5f, 0.7f, 1.0f, 1.5f, -0.3f};
    for (const float red : levels)
        for (const float green : levels)
            for (const float blue : levels) {
                const HsvColour hsv = PixelRGBToHSV({red, green, blue});
                const reference::Hsv plain = Plain(red, green, blue);
                ASSERT_NEAR(static_cast<double>(hsv.hue), plain.hue, 1.2e-7);
                if (plain.saturation > 3.5e38) // beyond what a float holds
                    ASSERT_EQ(hsv.saturation, kInfinity);
                else
                    ASSERT_NEAR(static_cast<double>(hsv.saturation), plain.saturation,
                                1.2e-7 * (1 + std::fabs(plain.saturation)));
                ASSERT_EQ(static_cast<double>(hsv.value), plain.value);
            }
}

TEST(PixelRGBToHSV, DistancesOfDenormalSize_HaveAHue)
{
    // 1 / 1.4e-45 is beyond single precision.
    const HsvColour hsv = PixelRGBToHSV({0.0f, std::numeric_limits<float>::denorm_min(), 0.0f});
    EXPECT_NEAR(static_cast<double>(hsv.hue), 1.0 / 3, 6e-8);
    EXPECT_EQ(hsv.saturation, 1.0f);
}

TEST(PixelRGBToHSV, SpecialChannels_EndInAColourWithoutAFault)
{
    const std::array<float, 6> levels = {kNan, kInfinity, -kInfinity, 0.0f, 1.0f, 1e38f};
    for (const float red : levels)
        for (const float green : levels)
            for (const float blue : levels) {
                const HsvColour hsv = PixelRGBToHSV({red, green, blue});
                const RgbColour back = PixelHSVToRGB(hsv);
                // A hue that is not a number ends as the grey of the value.
                if (std::isnan(hsv.hue) && hsv.saturation > 0) {
                    EXPECT_TRUE(back.red == hsv.value || std::isnan(hsv.value));
                    EXPECT_TRUE(back.blue == hsv.value || std::isnan(hsv.value));
                }
            }
}

TEST(PixelHSVToRGB, HuesOfTheSixths_GiveTheirColours)
{
    struct {
        double sixths;
        float red, green, blue;
    } const cases[] = {
        {0, 0, 0, 1},      {0.5, 0, 0.5f, 1},  {1, 0, 1, 1},      {1.5, 0, 1, 0.5f},  {2, 0, 1, 0},
        {2.5, 0.5f, 1, 0}, {3.5, 1, 0.5f, 0},  {4, 1, 0, 0},      {4.5, 1, 0, 0.5f},  {5.5, 0.5f, 0, 1},
        {6, 0, 0, 1},      {-0.5, 0.5f, 0, 1}, {7.5, 0, 1, 0.5f}, {10.5, 1, 0, 0.5f},
    };
    for (const auto& one : cases) {
        const RgbColour colour = PixelHSVToRGB({static_cast<float>(one.sixths / 6), 1.0f, 1.0f});
        EXPECT_NEAR(static_cast<double>(colour.red), static_cast<double>(one.red), 4e-6) << one.sixths;
        EXPECT_NEAR(static_cast<double>(colour.green), static_cast<double>(one.green), 4e-6) << one.sixths;
        EXPECT_NEAR(static_cast<double>(colour.blue), static_cast<double>(one.blue), 4e-6) << one.sixths;
    }
}

TEST(PixelHSVToRGB, NoSaturation_IsTheGreyOfTheValue)
{
    for (const float saturation : {0.0f, -0.0f, -1.0f, -kInfinity, kNan}) {
        const RgbColour colour = PixelHSVToRGB({0.7f, saturation, 0.4f});
        EXPECT_EQ(colour.red, 0.4f);
        EXPECT_EQ(colour.green, 0.4f);
        EXPECT_EQ(colour.blue, 0.4f);
    }
}

TEST(PixelHSVToRGB, HueBeyondTheThreeRanges_IsTheGreyOfTheValue)
{
    for (const float hue : {kNan, kInfinity, -kInfinity, -0.17f, -3.0f, 1.84f, 2.0f, 1e30f, -1e30f}) {
        const RgbColour colour = PixelHSVToRGB({hue, 1.0f, 0.75f});
        EXPECT_EQ(colour.red, 0.75f) << static_cast<double>(hue);
        EXPECT_EQ(colour.green, 0.75f) << static_cast<double>(hue);
        EXPECT_EQ(colour.blue, 0.75f) << static_cast<double>(hue);
    }
}

TEST(PixelHSVToRGB, ColoursOfAGrid_ComeBack)
{
    for (int red = 0; red <= 16; ++red)
        for (int green = 0; green <= 16; ++green)
            for (int blue = 0; blue <= 16; ++blue) {
                const float r = static_cast<float>(red) / 16, g = static_cast<float>(green) / 16,
                            b = static_cast<float>(blue) / 16;
                const RgbColour back = PixelHSVToRGB(PixelRGBToHSV({r, g, b}));
                ASSERT_NEAR(static_cast<double>(back.red), static_cast<double>(r), 1e-6);
                ASSERT_NEAR(static_cast<double>(back.green), static_cast<double>(g), 1e-6);
                ASSERT_NEAR(static_cast<double>(back.blue), static_cast<double>(b), 1e-6);
            }
}

TEST(PixelHSVToRGB, HuesOfAGrid_AreThePlainResult)
{
    for (int step = -60; step <= 660; ++step)
        for (const float saturation : {0.1f, 0.5f, 1.0f, 2.0f})
            for (const float value : {0.0f, 0.3f, 1.0f, -0.5f}) {
                const float hue = static_cast<float>(step) / 360 + 0.0001f;
                const RgbColour colour = PixelHSVToRGB({hue, saturation, value});
                const reference::Colour plain = reference::ColourOf(
                    {static_cast<double>(hue), static_cast<double>(saturation), static_cast<double>(value)});
                ASSERT_NEAR(static_cast<double>(colour.red), plain.red, 1e-7) << step;
                ASSERT_NEAR(static_cast<double>(colour.green), plain.green, 1e-7) << step;
                ASSERT_NEAR(static_cast<double>(colour.blue), plain.blue, 1e-7) << step;
            }
}

} // namespace
} // namespace kelmora

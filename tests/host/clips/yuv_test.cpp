#include "host/clips/yuv.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Back(const YuvLayout& layout, std::int32_t width, std::int32_t height, const Bytes& planes)
{
    Bytes bgra(static_cast<std::size_t>(width * height) * 4);
    FromYuv(layout, width, height, planes.data(), bgra.data());
    return bgra;
}

Bytes There(const YuvLayout& layout, std::int32_t width, std::int32_t height, const Bytes& bgra)
{
    Bytes planes(layout.FrameBytes(width, height));
    ToYuv(layout, width, height, bgra.data(), planes.data());
    return planes;
}

TEST(LayoutNamed, WordsOfY4m_HaveTheirSizes)
{
    EXPECT_EQ(LayoutNamed("420jpeg")->FrameBytes(5, 3), 15u + 2 * 6);
    EXPECT_EQ(LayoutNamed("420mpeg2")->FrameBytes(4, 4), 24u);
    EXPECT_EQ(LayoutNamed("422")->FrameBytes(5, 3), 15u + 2 * 9);
    EXPECT_EQ(LayoutNamed("444")->FrameBytes(5, 3), 45u);
    EXPECT_EQ(LayoutNamed("mono")->FrameBytes(5, 3), 15u);
    for (const char* const other : {"", "420p10", "411", "444alpha", "mono16"})
        EXPECT_FALSE(LayoutNamed(other).has_value()) << other;
}

// Red by hand. BT.601: Y = 16 + 0.299 * 219 = 81.5, U = 128 - 0.5 * 0.299 / 0.886 * 224 = 90.2, V = 240.
TEST(ToYuv, Red_IsThatOfTheStandard)
{
    YuvLayout layout;
    const Bytes red = {0, 0, 255, 255};
    EXPECT_EQ(There(layout, 1, 1, red), (Bytes{81, 90, 240}));
    layout.isHighDefinition = true; // 16 + 0.2126 * 219 = 62.6; 128 - 0.5 * 0.2126 / 0.9278 * 224 = 102.3
    EXPECT_EQ(There(layout, 1, 1, red), (Bytes{63, 102, 240}));
    layout.isHighDefinition = false;
    layout.isFullRange = true; // 0.299 * 255 = 76.2; 128 - 43.0; 255.5 is cut
    EXPECT_EQ(There(layout, 1, 1, red), (Bytes{76, 85, 255}));
}

TEST(FromYuv, BlackWhiteAndRed_AreThoseOfTheStandard)
{
    const YuvLayout layout;
    EXPECT_EQ(Back(layout, 1, 1, {16, 128, 128}), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(Back(layout, 1, 1, {235, 128, 128}), (Bytes{255, 255, 255, 255}));
    // 255 / 219 * 65 + 255 / 224 * 1.402 * 112 = 75.7 + 178.8
    EXPECT_EQ(Back(layout, 1, 1, {81, 90, 240}), (Bytes{0, 0, 254, 255}));
    EXPECT_EQ(Back(layout, 1, 1, {255, 128, 128}), (Bytes{255, 255, 255, 255}));
}

TEST(FromYuv, SmallerPlanes_StandForTheirPixels)
{
    const YuvLayout layout = *LayoutNamed("420");
    // Three by one: two columns of colour, the second for the last pixel alone.
    const Bytes bgra = Back(layout, 3, 1, {81, 81, 16, 90, 128, 240, 128});
    EXPECT_EQ(bgra, (Bytes{0, 0, 254, 255, 0, 0, 254, 255, 0, 0, 0, 255}));
}

TEST(ToYuv, SmallerPlanes_HoldTheMean)
{
    const YuvLayout layout = *LayoutNamed("422");
    // The mean of red and black is (128, 0, 0): U = 128 - 37.8 * 128 / 255 = 109.0, V = 128 + 56.2.
    EXPECT_EQ(There(layout, 2, 1, {0, 0, 255, 255, 0, 0, 0, 255}), (Bytes{81, 16, 109, 184}));
}

TEST(ToYuv, Grey_ComesBackWithinAStep_InEveryLayout)
{
    for (const char* const name : {"420", "422", "444", "mono"}) {
        for (int level = 0; level < 256; ++level) {
            const Bytes grey(3 * 3 * 4, static_cast<std::uint8_t>(level));
            const Bytes back = Back(*LayoutNamed(name), 3, 3, There(*LayoutNamed(name), 3, 3, grey));
            EXPECT_NEAR(back[0], level, 1) << name;
            EXPECT_EQ(back[0], back[1]) << name;
            EXPECT_EQ(back[0], back[2]) << name;
        }
    }
}

} // namespace
} // namespace kelmora::host

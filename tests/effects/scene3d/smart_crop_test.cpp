#include "effects/scene3d/smart_crop.h"

#include <array>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

VideoFrame FrameOf(void* pixels, int width, int height, std::uint32_t format, bool bottomUp)
{
    VideoFrame frame = {};
    frame.data = pixels;
    frame.width = width;
    frame.height = height;
    frame.stride = 64;
    frame.pixelBytes = 4;
    frame.format = format;
    frame.bottomUp = bottomUp;
    return frame;
}

void ExpectSame(const VideoFrame& actual, const VideoFrame& expected)
{
    EXPECT_EQ(actual.data, expected.data);
    EXPECT_EQ(actual.width, expected.width);
    EXPECT_EQ(actual.height, expected.height);
    EXPECT_EQ(actual.stride, expected.stride);
    EXPECT_EQ(actual.pixelBytes, expected.pixelBytes);
    EXPECT_EQ(actual.format, expected.format);
    EXPECT_EQ(actual.bottomUp, expected.bottomUp);
}

TEST(SmartCrop, Pictures_AreHandedOnAsTheyAre)
{
    std::array<std::uint8_t, 256> first = {}, second = {};
    const VideoFrame a = FrameOf(first.data(), 15, 4, PF_BGRA8, false);
    const VideoFrame b = FrameOf(second.data(), 7, 3, PF_ARGB8, true);
    const double progress = 0.5;
    const CSmartCrop crop(nullptr, &a, &b, &progress, 1, 1);
    ExpectSame(crop.GetFirstPicture(), a);
    ExpectSame(crop.GetSecondPicture(), b);
}

TEST(SmartCrop, NoPicture_GivesNullDataAndNoSize)
{
    std::array<std::uint8_t, 256> first = {};
    const VideoFrame a = FrameOf(first.data(), 15, 4, PF_BGRA8, false);
    const CSmartCrop crop(nullptr, &a, nullptr, nullptr, 0, 0);
    ExpectSame(crop.GetFirstPicture(), a);
    EXPECT_EQ(crop.GetSecondPicture().data, nullptr);
    EXPECT_EQ(crop.GetSecondPicture().width, 0);
    EXPECT_EQ(crop.GetSecondPicture().height, 0);
}

} // namespace
} // namespace kelmora

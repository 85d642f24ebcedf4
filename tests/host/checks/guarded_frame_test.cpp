#include "host/checks/guarded_frame.h"

#include <cstring>

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(GuardedFrame, Record_SaysHowItLies)
{
    FrameShape shape = ShapeOf(3, 2, PF_ARGB8);
    shape.slack = 8;
    shape.bottomUp = 1;
    GuardedFrame frame(shape);
    const VideoFrame record = frame.Record();
    EXPECT_EQ(record.width, 3);
    EXPECT_EQ(record.height, 2);
    EXPECT_EQ(record.stride, 20);
    EXPECT_EQ(record.pixelBytes, 4);
    EXPECT_EQ(record.format, static_cast<std::uint32_t>(PF_ARGB8));
    EXPECT_EQ(record.bottomUp, 1);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(record.data) % 64, 0u);
}

TEST(GuardedFrame, Upward_StartsAtTheLastRowInMemory)
{
    FrameShape shape = ShapeOf(3, 2, PF_BGRA32F);
    shape.upward = true;
    GuardedFrame frame(shape);
    const VideoFrame record = frame.Record();
    EXPECT_EQ(record.stride, -48);
    static_cast<std::uint8_t*>(record.data)[0] = 9; // row 0, so the last one in memory
    EXPECT_EQ(frame.Pixels()[48], 9);
}

TEST(GuardedFrame, Shift_IsBytesOffAlignment)
{
    FrameShape shape = ShapeOf(3, 2, PF_BGRA8);
    shape.shift = 5;
    GuardedFrame frame(shape);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(frame.Record().data) % 64, 5u);
}

TEST(GuardedFrame, ByteOutsideOfARow_IsSeen)
{
    // Rows of 12 bytes at 0 and 20.
    for (const std::ptrdiff_t offset : {-256, -1, 12, 19, 32, 39, 40, 200}) {
        FrameShape shape = ShapeOf(3, 2, PF_BGRA8);
        shape.slack = 8;
        GuardedFrame frame(shape);
        EXPECT_TRUE(frame.AreGuardsIntact());
        static_cast<std::uint8_t*>(frame.Record().data)[offset] = 0;
        EXPECT_FALSE(frame.AreGuardsIntact()) << offset;
    }
}

TEST(GuardedFrame, PixelsWritten_AreNoFinding)
{
    FrameShape shape = ShapeOf(3, 2, PF_BGRA8);
    shape.slack = 8;
    GuardedFrame frame(shape);
    frame.Fill(0xA5);
    EXPECT_EQ(frame.Pixels(), Bytes(24, 0xA5));
    EXPECT_TRUE(frame.AreGuardsIntact());
    frame.FillNoise(1);
    EXPECT_TRUE(frame.AreGuardsIntact());
}

TEST(GuardedFrame, Noise_DependsOnTheSeedAlone)
{
    FrameShape loose = ShapeOf(7, 5, PF_BGRA8);
    loose.slack = 12;
    loose.shift = 3;
    GuardedFrame one(loose);
    GuardedFrame other(ShapeOf(7, 5, PF_BGRA8));
    one.FillNoise(42);
    other.FillNoise(42);
    EXPECT_EQ(one.Pixels(), other.Pixels());
    other.FillNoise(43);
    EXPECT_NE(one.Pixels(), other.Pixels());
}

TEST(GuardedFrame, FloatNoise_IsFrom0To1)
{
    GuardedFrame frame(ShapeOf(16, 16, PF_ARGB32F));
    frame.FillNoise(7);
    const Bytes pixels = frame.Pixels();
    for (std::size_t at = 0; at < pixels.size(); at += sizeof(float)) {
        float level = 0.0f;
        std::memcpy(&level, &pixels[at], sizeof level);
        EXPECT_TRUE(level >= 0.0f && level <= 1.0f) << level;
    }
}

TEST(GuardedFrame, EmptySizes_HaveNoPixels)
{
    FrameShape shape = ShapeOf(3, 2, PF_BGRA8);
    shape.width = -5;
    GuardedFrame frame(shape);
    EXPECT_TRUE(frame.Pixels().empty());
    EXPECT_EQ(frame.Record().width, -5);
    EXPECT_TRUE(frame.AreGuardsIntact());
}

TEST(FormatText, PictureFormats_HaveTheirWords)
{
    EXPECT_EQ(FormatText(PF_BGRA8), "bgra8");
    EXPECT_EQ(FormatText(PF_ARGB8), "argb8");
    EXPECT_EQ(FormatText(PF_BGRA32F), "bgra32f");
    EXPECT_EQ(FormatText(PF_ARGB32F), "argb32f");
    EXPECT_EQ(FormatText(5), "format 5");
}

TEST(FirstDifference, OnePixel_IsNamedWithBothValues)
{
    const FrameShape shape = ShapeOf(2, 2, PF_BGRA8);
    Bytes is(16, 0);
    is[13] = 7; // pixel 3: column 1 of row 1
    EXPECT_EQ(FirstDifference(shape, is, Bytes(16, 0)), "pixel (1, 1) is 0 7 0 0, not 0 0 0 0");
    EXPECT_EQ(FirstDifference(shape, is, is), "");
    EXPECT_EQ(FirstDifference(shape, is, Bytes(4, 0)), "the sizes differ");
}

TEST(FirstDifference, Floats_AreNamedAsNumbers)
{
    const FrameShape shape = ShapeOf(1, 1, PF_BGRA32F);
    const float is[4] = {0.25f, 1.0f, 0.0f, 0.5f};
    Bytes bytes(16);
    std::memcpy(bytes.data(), is, sizeof is);
    EXPECT_EQ(FirstDifference(shape, bytes, Bytes(16, 0)), "pixel (0, 0) is 0.25 1 0 0.5, not 0 0 0 0");
}

} // namespace
} // namespace kelmora::host

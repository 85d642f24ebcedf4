#include "image/picture_check.h"

#include <climits>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

FrameBuffer Labelled(void* pixels, int width, int height, int stride, int pixelBytes)
{
    FrameBuffer picture;
    picture.Attach(pixels, width, height, stride, pixelBytes, PF_BGRA8, false);
    return picture;
}

TEST(PictureCheck, CommonSize_IsTheSmallerOfEachSide)
{
    std::uint8_t memory[64] = {};
    const FrameBuffer wide = Labelled(memory, 7, 2, 28, 4), high = Labelled(memory, 3, 5, 12, 4);
    EXPECT_EQ(SizeOf(wide), (Size{7, 2}));
    EXPECT_EQ(CommonSize(wide, high), (Size{3, 2}));
    EXPECT_EQ(CommonSize(high, wide), (Size{3, 2}));
}

TEST(PictureCheck, IsEmpty_WhereASideIsBelowOne)
{
    EXPECT_FALSE(IsEmpty({1, 1}));
    EXPECT_TRUE(IsEmpty({0, 1}));
    EXPECT_TRUE(IsEmpty({1, 0}));
    EXPECT_TRUE(IsEmpty({-1, INT_MIN}));
}

TEST(PictureCheck, Holds_GoesByTheBytesOfARow)
{
    std::uint8_t memory[64] = {};
    EXPECT_TRUE(Holds(Labelled(memory, 4, 2, 16, 4), 4, 4));
    EXPECT_FALSE(Holds(Labelled(memory, 4, 2, 15, 4), 4, 4));
    EXPECT_FALSE(Holds(Labelled(memory, 4, 2, 64, 4), 4, 16)); // larger pixels than it says to have
    EXPECT_FALSE(Holds(Labelled(memory, 4, 2, 16, 0), 4, 0));
    EXPECT_FALSE(Holds(Labelled(memory, 4, 2, 16, -4), 4, -4));
    EXPECT_FALSE(Holds(Labelled(nullptr, 4, 2, 16, 4), 4, 4));
    EXPECT_FALSE(Holds(Labelled(memory, 0, 2, 16, 4), 0, 4));
    EXPECT_FALSE(Holds(Labelled(memory, 4, 0, 16, 4), 4, 4));
    EXPECT_FALSE(Holds(Labelled(memory, INT_MAX, 1, 16, 16), INT_MAX, 16));     // 32 bits would wrap to -16
    EXPECT_FALSE(Holds(Labelled(memory, 0x40000001, 1, 16, 4), 0x40000001, 4)); // ... and to 4
}

TEST(PictureCheck, Overlap_IsSharedBytes)
{
    std::uint8_t memory[64] = {};
    const FrameBuffer upper = Labelled(memory, 4, 2, 16, 4);
    EXPECT_TRUE(Overlap(upper, upper));
    EXPECT_TRUE(Overlap(upper, Labelled(memory + 31, 4, 2, 16, 4)));
    EXPECT_FALSE(Overlap(upper, Labelled(memory + 32, 4, 2, 16, 4)));
    EXPECT_FALSE(Overlap(Labelled(memory + 32, 4, 2, 16, 4), upper));

    // Of rows of 8 bytes that are 16 apart, the second one ends at 24.
    const FrameBuffer spaced = Labelled(memory, 2, 2, 16, 4);
    EXPECT_TRUE(Overlap(spaced, Labelled(memory + 23, 2, 1, 8, 4)));
    EXPECT_TRUE(Overlap(Labelled(memory + 23, 2, 1, 8, 4), spaced));
    EXPECT_FALSE(Overlap(spaced, Labelled(memory + 32, 2, 1, 8, 4)));
}

TEST(PictureCheck, Floats_IsTheSameAddress)
{
    float value = 0;
    EXPECT_EQ(Floats(reinterpret_cast<std::uint8_t*>(&value)), &value);
}

} // namespace
} // namespace kelmora

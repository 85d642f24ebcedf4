#include "effects/common/frame.h"

#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/info.h"

namespace kelmora {
namespace {

bool HalfHeight(std::uint32_t flags, std::int16_t fieldMode)
{
    InfoFields fields;
    fields.flags = flags;
    fields.fieldMode = fieldMode;
    const FlushInfo info(fields, 0xFF); // ends on an unreadable page, at an odd address for its doubles
    return IsHalfHeight(info.Get());
}

TEST(Frame, IsHalfHeight_NeedsTheFlagAndAModeBelowThree)
{
    EXPECT_TRUE(HalfHeight(0x20, 0));
    EXPECT_TRUE(HalfHeight(0x20, 2));
    EXPECT_TRUE(HalfHeight(0x20, -1)); // the mode is signed
    EXPECT_TRUE(HalfHeight(0xFFFFFFFF, -32768));
    EXPECT_FALSE(HalfHeight(0x20, 3));
    EXPECT_FALSE(HalfHeight(0x20, 32767));
    EXPECT_FALSE(HalfHeight(0xFFFFFFDF, 0));
    EXPECT_FALSE(HalfHeight(0, 0));
}

TEST(Frame, ReadField_ReadsUnalignedDoubles)
{
    const FlushInfo info(AtProgress(0.375));
    EXPECT_EQ(ReadField<double>(info.Get(), offsetof(RenderInfo, progress)), 0.375);
}

TEST(Frame, AttachCorner_IsTheTopLeftInTheOrderOfMemory)
{
    std::vector<std::uint8_t> memory(5 * 32);
    FrameBuffer picture, corner;
    picture.Attach(memory.data() + 4 * 32, 6, 5, -32, 4, PF_ARGB8, false); // upward rows, 8 bytes apart
    AttachCorner(corner, picture, {2, 3});
    EXPECT_EQ(corner.GetPixels(), memory.data());
    EXPECT_EQ(corner.GetWidth(), 2);
    EXPECT_EQ(corner.GetHeight(), 3);
    EXPECT_EQ(corner.GetStride(), 32);
    EXPECT_EQ(corner.GetPixelBytes(), 4);
    EXPECT_EQ(corner.GetFormat(), PF_ARGB8);
    EXPECT_TRUE(corner.IsBottomUp());
    EXPECT_FALSE(corner.IsOwned());
}

TEST(Frame, AttachStrip_HasTheRowsThatThereAre)
{
    std::vector<std::uint8_t> memory(5 * 32);
    FrameBuffer picture, strip;
    picture.Attach(memory.data(), 6, 5, 32, 4, PF_ARGB8, true);
    AttachStrip(strip, picture, 3, 8);
    EXPECT_EQ(strip.GetPixels(), memory.data() + 3 * 32);
    EXPECT_EQ(strip.GetWidth(), 6);
    EXPECT_EQ(strip.GetHeight(), 2);
    EXPECT_EQ(strip.GetStride(), 32);
    EXPECT_EQ(strip.GetPixelBytes(), 4);
    EXPECT_EQ(strip.GetFormat(), PF_ARGB8);
    EXPECT_TRUE(strip.IsBottomUp());
    AttachStrip(strip, picture, 1, 2);
    EXPECT_EQ(strip.GetPixels(), memory.data() + 32);
    EXPECT_EQ(strip.GetHeight(), 2);
    AttachStrip(strip, picture, 5, 1);
    EXPECT_EQ(strip.GetPixels(), nullptr);
    EXPECT_EQ(strip.GetHeight(), 0);
    AttachStrip(strip, FrameBuffer(), 0, 1);
    EXPECT_EQ(strip.GetPixels(), nullptr);
}

TEST(Frame, HasRowsOf_GoesByPixelsAndStride)
{
    std::vector<std::uint8_t> memory(5 * 32);
    FrameBuffer picture, other;
    picture.Attach(memory.data(), 6, 5, 32, 4, PF_ARGB8, true);
    other.Attach(memory.data(), 4, 3, 32, 4, PF_BGRA8, false);
    EXPECT_TRUE(HasRowsOf(picture, other));
    other.Attach(memory.data() + 32, 6, 4, 32, 4, PF_ARGB8, true);
    EXPECT_FALSE(HasRowsOf(picture, other));
    other.Attach(memory.data(), 6, 5, 28, 4, PF_ARGB8, true);
    EXPECT_FALSE(HasRowsOf(picture, other));
}

TEST(Frame, AllocateLike_HasTheSizeAskedForAndThePicturesLabels)
{
    std::vector<std::uint8_t> memory(5 * 24);
    MemoryAllocator allocator;
    FrameBuffer picture, scratch;
    picture.Attach(memory.data() + 4 * 24, 6, 5, -24, 4, PF_ARGB8, false); // upward rows
    ASSERT_TRUE(AllocateLike(scratch, picture, {9, 3}, allocator));
    EXPECT_EQ(scratch.GetWidth(), 9);
    EXPECT_EQ(scratch.GetHeight(), 3);
    EXPECT_EQ(scratch.GetPixelBytes(), 4);
    EXPECT_EQ(scratch.GetFormat(), PF_ARGB8);
    EXPECT_TRUE(scratch.IsBottomUp());
    EXPECT_TRUE(scratch.IsOwned());
}

TEST(Frame, SetAside_CopiesAPictureThatTheOutputWouldOverwrite)
{
    std::vector<std::uint8_t> memory(6 * 24, 7), other(6 * 24);
    MemoryAllocator allocator;
    FrameBuffer picture, into, elsewhere, aside;
    picture.Attach(memory.data(), 6, 3, 24, 4, PF_BGRA8, false);
    into.Attach(memory.data() + 2 * 24, 6, 4, 24, 4, PF_BGRA8, false); // the last row is both
    elsewhere.Attach(other.data(), 6, 3, 24, 4, PF_BGRA8, false);
    ASSERT_TRUE(SetAside(picture, elsewhere, aside, allocator));
    EXPECT_EQ(aside.GetPixels(), memory.data());
    ASSERT_TRUE(SetAside(picture, into, aside, allocator));
    EXPECT_NE(aside.GetPixels(), memory.data());
    EXPECT_EQ(aside.GetWidth(), 6);
    EXPECT_EQ(aside.GetHeight(), 3);
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(std::memcmp(aside.GetPixels() + y * aside.GetStride(), memory.data(), 24), 0) << y;
}

TEST(Frame, SetAside_CopiesEveryByteOfThePixels_WhateverTheirLabel)
{
    struct Label {
        std::uint32_t format;
        int pixelBytes;
    };
    for (const auto& [format, pixelBytes] :
         {Label{PF_Packed8, 4}, {5, 4}, {9, 3}, {PF_Mask32F, 16}, {PF_BGRA8, 16}}) {
        constexpr int width = 3, height = 2;
        const int rowBytes = width * pixelBytes, stride = rowBytes + 4;
        std::vector<std::uint8_t> memory(static_cast<std::size_t>(height * stride));
        for (std::size_t i = 0; i < memory.size(); ++i)
            memory[i] = static_cast<std::uint8_t>(i + 1);
        MemoryAllocator allocator;
        FrameBuffer picture, aside;
        picture.Attach(memory.data(), width, height, stride, pixelBytes, format, false);
        ASSERT_TRUE(SetAside(picture, picture, aside, allocator));
        EXPECT_EQ(aside.GetFormat(), format);
        EXPECT_EQ(aside.GetPixelBytes(), pixelBytes);
        for (int y = 0; y < height; ++y)
            EXPECT_EQ(std::memcmp(aside.GetPixels() + y * aside.GetStride(), memory.data() + y * stride,
                                  static_cast<std::size_t>(rowBytes)),
                      0)
                << format << " of " << pixelBytes << ", row " << y;
    }
}

TEST(Frame, SetAside_RowsShorterThanTheirPixels_AreRefused)
{
    std::vector<std::uint8_t> memory(64);
    MemoryAllocator allocator;
    FrameBuffer picture, aside;
    picture.Attach(memory.data(), 4, 2, 15, 4, PF_BGRA8, false);
    EXPECT_FALSE(SetAside(picture, picture, aside, allocator));
    picture.Attach(memory.data(), 4, 2, 16, 4, PF_BGRA8, false);
    EXPECT_TRUE(SetAside(picture, picture, aside, allocator));
}

TEST(Frame, HasWholePixelRows_OnlyForStridesThatAreMultiples)
{
    std::vector<std::uint8_t> memory(64);
    FrameBuffer picture;
    picture.Attach(memory.data(), 4, 2, 20, 4, PF_BGRA8, false);
    EXPECT_TRUE(HasWholePixelRows(picture));
    picture.Attach(memory.data(), 4, 2, 21, 4, PF_BGRA8, false);
    EXPECT_FALSE(HasWholePixelRows(picture));
}

} // namespace
} // namespace kelmora

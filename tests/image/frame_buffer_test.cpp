#include "image/frame_buffer.h"

#include <climits>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/fake_host.h"
#include "tests/support/fake_memory_provider.h"

namespace kelmora {
namespace {

static_assert(!std::is_copy_assignable_v<FrameBuffer>, "an assignment would make two owners");

void ExpectEmpty(const FrameBuffer& buffer)
{
    EXPECT_EQ(buffer.GetPixels(), nullptr);
    EXPECT_EQ(buffer.GetWidth(), 0);
    EXPECT_EQ(buffer.GetHeight(), 0);
    EXPECT_EQ(buffer.GetStride(), 0);
    EXPECT_EQ(buffer.GetRowPixels(), 0);
    EXPECT_EQ(buffer.GetPixelBytes(), 0);
    EXPECT_EQ(buffer.GetFormat(), 0u);
    EXPECT_FALSE(buffer.IsBottomUp());
    EXPECT_FALSE(buffer.IsOwned());
}

/// A host's memory with an allocator on it.
struct Memory {
    FakeMemoryProvider provider;
    FakeHost host;
    Memory() { host.SetMemory(&provider); }
};

TEST(FrameBuffer, New_IsEmpty)
{
    const FrameBuffer buffer;
    ExpectEmpty(buffer);
}

TEST(FrameBuffer, PixelAddress_Empty_IsNullForAnyArguments)
{
    const FrameBuffer buffer;
    for (const int n : {0, 1, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(buffer.PixelAddress(n, n, n), nullptr);
}

TEST(FrameBuffer, Allocate_StoresWhatItIsTold)
{
    Memory memory;
    MemoryAllocator allocator(&memory.host);
    FrameBuffer buffer;
    ASSERT_TRUE(buffer.Allocate(5, 3, 4, &allocator, PF_ARGB8, true));
    EXPECT_NE(buffer.GetPixels(), nullptr);
    EXPECT_EQ(buffer.GetWidth(), 5);
    EXPECT_EQ(buffer.GetHeight(), 3);
    EXPECT_GE(buffer.GetStride(), 20);
    EXPECT_EQ(buffer.GetRowPixels(), buffer.GetStride() / 4);
    EXPECT_EQ(buffer.GetPixelBytes(), 4);
    EXPECT_EQ(buffer.GetFormat(), static_cast<std::uint32_t>(PF_ARGB8));
    EXPECT_TRUE(buffer.IsBottomUp());
    EXPECT_TRUE(buffer.IsOwned());
    EXPECT_EQ(memory.provider.OpenBlocks(), 1u);
    buffer.Release();
    ExpectEmpty(buffer);
    EXPECT_EQ(memory.provider.OpenBlocks(), 0u);
    buffer.Release();
    EXPECT_EQ(memory.provider.Calls().size(), 2u);
}

TEST(FrameBuffer, Allocate_Again_GivesTheFirstPixelsBack)
{
    Memory memory;
    MemoryAllocator allocator(&memory.host);
    {
        FrameBuffer buffer;
        ASSERT_TRUE(buffer.Allocate(5, 3, 4, &allocator, PF_BGRA8, false));
        ASSERT_TRUE(buffer.Allocate(6, 2, 16, &allocator, PF_BGRA32F, false));
        EXPECT_EQ(memory.provider.OpenBlocks(), 1u);
    }
    EXPECT_EQ(memory.provider.OpenBlocks(), 0u);
}

TEST(FrameBuffer, Allocate_OneBytePerPixel_IsAMask)
{
    FrameBuffer buffer;
    ASSERT_TRUE(buffer.Allocate(5, 3, 1, nullptr, PF_BGRA8, false));
    EXPECT_EQ(buffer.GetFormat(), static_cast<std::uint32_t>(PF_Mask8));
    ASSERT_TRUE(buffer.Allocate(5, 3, 1, nullptr, PF_Mask8, false));
    EXPECT_EQ(buffer.GetFormat(), static_cast<std::uint32_t>(PF_Mask8));
}

TEST(FrameBuffer, Allocate_WithoutAllocator_TakesMemoryOfOurOwn)
{
    FrameBuffer buffer;
    ASSERT_TRUE(buffer.Allocate(9, 2, 4, nullptr, PF_BGRA8, false));
    EXPECT_EQ(buffer.GetStride(), 64);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.GetPixels()) % 32, 0u);
    std::memset(buffer.GetPixels(), 1, 128);
}

TEST(FrameBuffer, Allocate_Refused_KeepsWhatWasAskedWithoutPixels)
{
    MemoryAllocator allocator;
    FrameBuffer buffer;
    EXPECT_FALSE(buffer.Allocate(7, 3, 8, &allocator, PF_BGRA8, true)); // no such pixels by default
    EXPECT_EQ(buffer.GetPixels(), nullptr);
    EXPECT_EQ(buffer.PixelAddress(1, 1, 1), nullptr);
    EXPECT_EQ(buffer.GetWidth(), 7);
    EXPECT_EQ(buffer.GetHeight(), 3);
    EXPECT_EQ(buffer.GetPixelBytes(), 8);
    EXPECT_EQ(buffer.GetRowPixels(), 0);
    EXPECT_TRUE(buffer.IsOwned());
    EXPECT_TRUE(buffer.IsBottomUp());
}

TEST(FrameBuffer, Allocate_RowsThatAProviderGetsWrong_HasNoStride)
{
    for (const int claimed : {INT_MIN, -32, 0, 19}) {
        FakeMemoryProvider provider({.claimedStride = claimed});
        FakeHost host;
        host.SetMemory(&provider);
        MemoryAllocator allocator(&host);
        FrameBuffer buffer;
        EXPECT_FALSE(buffer.Allocate(5, 3, 4, &allocator, PF_BGRA8, false)) << claimed;
        EXPECT_EQ(buffer.GetPixels(), nullptr);
        EXPECT_EQ(buffer.GetStride(), 0);
        EXPECT_EQ(buffer.GetRowPixels(), 0);
        EXPECT_EQ(provider.OpenBlocks(), 0u);
    }
}

TEST(FrameBuffer, Allocate_ImpossibleSizes_AreFalseWithoutFault)
{
    struct {
        int width, height, bytes;
    } const sizes[] = {{4, 4, 0},
                       {4, 4, -1},
                       {0, 4, 4},
                       {4, -4, 4},
                       {46341, 46341, 4},
                       {65536, 65536, 1},
                       {INT_MAX, 2, 1},
                       {INT_MAX, INT_MAX, 16},
                       {INT_MIN, INT_MIN, 4}};
    for (const auto& size : sizes) {
        FrameBuffer buffer;
        EXPECT_FALSE(buffer.Allocate(size.width, size.height, size.bytes, nullptr, PF_BGRA8, false))
            << size.width << " x " << size.height << " x " << size.bytes;
        EXPECT_EQ(buffer.GetPixels(), nullptr);
    }
}

TEST(FrameBuffer, Attach_NegativeStride_StartsAtTheLowestRowAndTogglesTheFlag)
{
    std::uint8_t memory[4 * 20] = {};
    for (const bool bottomUp : {false, true}) {
        FrameBuffer view;
        EXPECT_TRUE(view.Attach(memory + 60, 5, 4, -20, 4, PF_BGRA8, bottomUp));
        EXPECT_EQ(view.GetPixels(), memory);
        EXPECT_EQ(view.GetStride(), 20);
        EXPECT_EQ(view.GetRowPixels(), 5);
        EXPECT_EQ(view.IsBottomUp(), !bottomUp);
        EXPECT_FALSE(view.IsOwned());
        EXPECT_EQ(view.PixelAddress(1, 2, 3), memory + 47);
    }
}

TEST(FrameBuffer, Attach_WildNegativeStrides_AreViewsThatHarmNobody)
{
    std::uint8_t memory[16] = {};
    FrameBuffer view;
    EXPECT_TRUE(view.Attach(memory, 2, 2, INT_MIN, 4, PF_BGRA8, false)); // has no positive counterpart
    EXPECT_EQ(view.GetPixels(), nullptr);
    EXPECT_GE(view.GetStride(), 0);
    EXPECT_TRUE(view.Attach(memory, 2, 0, -8, 4, PF_BGRA8, false)); // no rows: nothing moves
    EXPECT_EQ(view.GetPixels(), memory);
    EXPECT_EQ(view.GetStride(), 8);
    EXPECT_TRUE(view.Attach(nullptr, 2, 4, -8, 4, PF_BGRA8, false));
    EXPECT_EQ(view.GetPixels(), nullptr);
    EXPECT_TRUE(view.IsBottomUp());
}

TEST(FrameBuffer, Attach_NoPixelBytes_HasNoRowPixels)
{
    std::uint8_t memory[16] = {};
    FrameBuffer view;
    EXPECT_TRUE(view.Attach(memory, 4, 1, 16, 0, PF_BGRA8, false));
    EXPECT_EQ(view.GetRowPixels(), 0);
    EXPECT_EQ(view.GetStride(), 16);
}

TEST(FrameBuffer, Attach_StrideThatIsNoMultiple_TruncatesRowPixels)
{
    std::uint8_t memory[19] = {};
    FrameBuffer view;
    EXPECT_TRUE(view.Attach(memory, 4, 1, 19, 4, PF_BGRA8, false));
    EXPECT_EQ(view.GetRowPixels(), 4);
    EXPECT_TRUE(view.Attach(memory, 1, 1, 19, 16, PF_BGRA32F, false));
    EXPECT_EQ(view.GetRowPixels(), 1);
}

TEST(FrameBuffer, Attach_OneBytePerPixel_KeepsTheFormat)
{
    std::uint8_t memory[4] = {};
    FrameBuffer view;
    EXPECT_TRUE(view.Attach(memory, 4, 1, 4, 1, PF_BGRA8, false));
    EXPECT_EQ(view.GetFormat(), static_cast<std::uint32_t>(PF_BGRA8));
}

TEST(FrameBuffer, PixelAddress_FarDown_IsComputedBeyond32Bits)
{
    if (sizeof(void*) < 8)
        GTEST_SKIP() << "no such addresses";
    FrameBuffer view;
    std::uint8_t memory[4] = {};
    view.Attach(memory, 1, 4001, 1 << 20, 4, PF_BGRA8, false);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(view.PixelAddress(0, 4000, 0)),
              reinterpret_cast<std::uintptr_t>(&memory[0])
                  + static_cast<std::uintptr_t>(std::uint64_t{4000} << 20));
}

TEST(FrameBuffer, AttachFrame_TakesEveryField)
{
    std::uint8_t memory[4 * 20] = {};
    VideoFrame frame = {};
    frame.data = memory;
    frame.width = 5;
    frame.height = 4;
    frame.stride = 20;
    frame.pixelBytes = 4;
    frame.format = PF_ARGB8;
    frame.bottomUp = 0x80; // any non-zero byte
    FrameBuffer view;
    EXPECT_TRUE(view.AttachFrame(&frame));
    EXPECT_EQ(view.GetPixels(), memory);
    EXPECT_EQ(view.GetWidth(), 5);
    EXPECT_EQ(view.GetHeight(), 4);
    EXPECT_EQ(view.GetPixelBytes(), 4);
    EXPECT_EQ(view.GetFormat(), static_cast<std::uint32_t>(PF_ARGB8));
    EXPECT_TRUE(view.IsBottomUp());
}

TEST(FrameBuffer, AttachFrame_Null_IsFalseAndEmptyAlsoForAnOwner)
{
    Memory memory;
    MemoryAllocator allocator(&memory.host);
    FrameBuffer buffer;
    ASSERT_TRUE(buffer.Allocate(5, 3, 4, &allocator, PF_BGRA8, false));
    EXPECT_FALSE(buffer.AttachFrame(nullptr));
    ExpectEmpty(buffer);
    EXPECT_EQ(memory.provider.OpenBlocks(), 0u);
}

TEST(FrameBuffer, Copy_OfAnOwner_DoesNotFreeThePixels)
{
    Memory memory;
    MemoryAllocator allocator(&memory.host);
    FrameBuffer owner;
    ASSERT_TRUE(owner.Allocate(5, 3, 4, &allocator, PF_ARGB8, true));
    {
        const FrameBuffer view(owner);
        EXPECT_EQ(view.GetPixels(), owner.GetPixels());
        EXPECT_EQ(view.GetStride(), owner.GetStride());
        EXPECT_EQ(view.GetRowPixels(), owner.GetRowPixels());
        EXPECT_EQ(view.GetFormat(), owner.GetFormat());
        EXPECT_TRUE(view.IsBottomUp());
        EXPECT_FALSE(view.IsOwned());
    }
    EXPECT_EQ(memory.provider.OpenBlocks(), 1u);
    std::memset(owner.GetPixels(), 1, 20);
}

TEST(FrameBuffer, AttachBuffer_IsAViewAndReleasesFirst)
{
    Memory memory;
    MemoryAllocator allocator(&memory.host);
    FrameBuffer owner, other;
    ASSERT_TRUE(owner.Allocate(5, 3, 4, &allocator, PF_ARGB8, true));
    ASSERT_TRUE(other.Allocate(2, 2, 4, &allocator, PF_BGRA8, false));
    EXPECT_TRUE(other.AttachBuffer(owner));
    EXPECT_EQ(memory.provider.OpenBlocks(), 1u);
    EXPECT_EQ(other.GetPixels(), owner.GetPixels());
    EXPECT_EQ(other.GetWidth(), 5);
    EXPECT_TRUE(other.IsBottomUp());
    EXPECT_FALSE(other.IsOwned());
    EXPECT_TRUE(other.AttachBuffer(other)); // stays what it is
    EXPECT_EQ(other.GetPixels(), owner.GetPixels());
    EXPECT_EQ(other.GetWidth(), 5);
}

TEST(FrameBuffer, AttachBuffer_AnOwnerToItself_IsEmpty)
{
    Memory memory;
    MemoryAllocator allocator(&memory.host);
    FrameBuffer owner;
    ASSERT_TRUE(owner.Allocate(5, 3, 4, &allocator, PF_ARGB8, true));
    EXPECT_TRUE(owner.AttachBuffer(owner));
    EXPECT_EQ(memory.provider.OpenBlocks(), 0u);
    EXPECT_EQ(owner.GetPixels(), nullptr);
    EXPECT_EQ(owner.GetWidth(), 0);
    EXPECT_EQ(owner.GetStride(), 0);
    EXPECT_FALSE(owner.IsOwned());
}

TEST(FrameBuffer, ToVideoFrame_WritesTheNamedFieldsOnly)
{
    std::uint8_t memory[4 * 20] = {};
    FrameBuffer view;
    view.Attach(memory + 60, 5, 4, -20, 4, PF_ARGB8, false);
    VideoFrame frame;
    std::memset(&frame, 0xCC, sizeof frame);
    EXPECT_EQ(view.ToVideoFrame(&frame), &frame);
    EXPECT_EQ(frame.data, memory);
    EXPECT_EQ(frame.width, 5);
    EXPECT_EQ(frame.height, 4);
    EXPECT_EQ(frame.stride, 20);
    EXPECT_EQ(frame.pixelBytes, 4);
    EXPECT_EQ(frame.reserved[0], 0u);
    EXPECT_EQ(frame.reserved[1], 0u);
    EXPECT_EQ(frame.format, static_cast<std::uint32_t>(PF_ARGB8));
    EXPECT_EQ(frame.bottomUp, 1);
    std::uint8_t bytes[sizeof frame];
    std::memcpy(bytes, &frame, sizeof bytes);
    for (std::size_t i = offsetof(VideoFrame, bottomUp) + 1; i < sizeof bytes; ++i)
        EXPECT_EQ(bytes[i], 0xCC) << "byte " << i;
    EXPECT_EQ(view.ToVideoFrame(nullptr), nullptr);
}

} // namespace
} // namespace kelmora

#include "image/scratch.h"

#include <cstring>

#include <gtest/gtest.h>

#include "tests/support/fake_host.h"
#include "tests/support/fake_memory_provider.h"

namespace kelmora {
namespace {

TEST(Scratch, BeforeAllocate_IsNull)
{
    const Scratch scratch;
    EXPECT_EQ(scratch.Bytes(), nullptr);
}

TEST(Scratch, AnyAddressOfTheAllocator_IsAlignedAndLargeEnough)
{
    for (const bool isPlain : {false, true})
        for (int misalign = 0; misalign < 64; ++misalign) {
            FakeMemoryProvider memory({.misalign = misalign});
            FakeHost host;
            host.SetMemory(&memory);
            {
                MemoryAllocator allocator(&host);
                Scratch scratch;
                ASSERT_TRUE(isPlain ? scratch.AllocatePlain(allocator, 101)
                                    : scratch.Allocate(allocator, 101));
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(scratch.Bytes()) % 64, 0u);
                std::memset(scratch.Bytes(), 1, 101); // the provider watches over its surroundings
                EXPECT_EQ(memory.OpenBlocks(), 1u);
            }
            EXPECT_EQ(memory.OpenBlocks(), 0u); // and over the way back
        }
}

TEST(Scratch, RowsOfPixels_AreAPictureOfOneRow)
{
    // Between the rows of this host's pictures lie 64 bytes of its own.
    FakeMemoryProvider memory({.slack = 64});
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    Scratch rows, taps;
    ASSERT_TRUE(rows.Allocate(allocator, 4000));
    ASSERT_TRUE(taps.AllocatePlain(allocator, 4000));
    ASSERT_EQ(memory.Calls().size(), 2u);
    EXPECT_EQ(memory.Calls()[0].kind, MemoryCall::AllocImage);
    EXPECT_EQ(memory.Calls()[0].height, 1);
    EXPECT_EQ(memory.Calls()[0].pixelBytes, 4);
    EXPECT_EQ(memory.Calls()[1].kind, MemoryCall::Alloc);
    std::memset(rows.Bytes(), 1, 4000);
}

TEST(Scratch, RefusedOrEmpty_IsFalseAndNull)
{
    FakeMemoryProvider memory({.refuseFrom = 0});
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    Scratch refused, refusedPlain;
    EXPECT_FALSE(refused.Allocate(allocator, 100));
    EXPECT_EQ(refused.Bytes(), nullptr);
    EXPECT_FALSE(refusedPlain.AllocatePlain(allocator, 100));
    EXPECT_EQ(refusedPlain.Bytes(), nullptr);
    EXPECT_EQ(memory.Asked(), 2u);
    for (const std::int64_t bytes :
         {std::int64_t{0}, std::int64_t{-1}, INT64_MIN, INT64_MAX, std::int64_t{1} << 31}) {
        Scratch none, nonePlain;
        EXPECT_FALSE(none.Allocate(allocator, bytes)) << bytes;
        EXPECT_FALSE(nonePlain.AllocatePlain(allocator, bytes)) << bytes;
    }
    EXPECT_EQ(memory.Asked(), 2u);
}

} // namespace
} // namespace kelmora

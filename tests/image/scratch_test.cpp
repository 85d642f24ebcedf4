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
    for (int misalign = 0; misalign < 64; ++misalign) {
        FakeMemoryProvider memory({.misalign = misalign});
        FakeHost host;
        host.SetMemory(&memory);
        {
            MemoryAllocator allocator(&host);
            Scratch scratch;
            ASSERT_TRUE(scratch.Allocate(allocator, 100));
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(scratch.Bytes()) % 64, 0u);
            std::memset(scratch.Bytes(), 1, 100); // the provider watches over its surroundings
            EXPECT_EQ(memory.OpenBlocks(), 1u);
        }
        EXPECT_EQ(memory.OpenBlocks(), 0u);
    }
}

TEST(Scratch, RefusedOrEmpty_IsFalseAndNull)
{
    FakeMemoryProvider memory({.refuseFrom = 0});
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    Scratch refused, none, negative, huge;
    EXPECT_FALSE(refused.Allocate(allocator, 100));
    EXPECT_EQ(refused.Bytes(), nullptr);
    EXPECT_EQ(memory.Asked(), 1u);
    EXPECT_FALSE(none.Allocate(allocator, 0));
    EXPECT_FALSE(negative.Allocate(allocator, -1));
    EXPECT_FALSE(huge.Allocate(allocator, INT64_MAX));
    EXPECT_EQ(memory.Asked(), 1u);
}

} // namespace
} // namespace kelmora

#include "image/row_ring.h"

#include <vector>

#include <gtest/gtest.h>

#include "tests/support/fake_host.h"
#include "tests/support/fake_memory_provider.h"

namespace kelmora {
namespace {

/// A maker of rows of one byte, ten times the row's number, that tells which rows it made.
auto Tenfold(std::vector<int>& made)
{
    return [&made](int y, std::uint8_t* row) {
        made.push_back(y);
        *row = static_cast<std::uint8_t>(10 * y);
    };
}

TEST(RowRing, Rows_AreMadeOnceAndInOrder)
{
    MemoryAllocator allocator;
    std::vector<int> made;
    RowRing ring(Tenfold(made));
    ASSERT_TRUE(ring.Allocate(allocator, 3, 20, 1));
    EXPECT_TRUE(made.empty());
    EXPECT_EQ(*ring.Row(1), 10);
    EXPECT_EQ(made, (std::vector<int>{0, 1}));
    EXPECT_EQ(*ring.Row(0), 0);
    EXPECT_EQ(*ring.Row(4), 40);
    EXPECT_EQ(made, (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(*ring.Row(2), 20);
    EXPECT_EQ(*ring.Row(3), 30);
    EXPECT_EQ(made.size(), 5u);
}

TEST(RowRing, RowsAmongTheLast_StayWhereTheyAre)
{
    MemoryAllocator allocator;
    std::vector<int> made;
    RowRing ring(Tenfold(made));
    ASSERT_TRUE(ring.Allocate(allocator, 2, 20, 1));
    const std::uint8_t* const third = ring.Row(3);
    EXPECT_EQ(*ring.Row(4), 40);
    EXPECT_EQ(*third, 30);
}

TEST(RowRing, PicturesWithFewerRows_TakeNoMoreMemoryThanThose)
{
    FakeMemoryProvider memory;
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    std::vector<int> made;
    RowRing ring(Tenfold(made));
    ASSERT_TRUE(ring.Allocate(allocator, 1000, 4, 1000));
    EXPECT_LT(memory.PeakBytes(), 5000u);
}

TEST(RowRing, RefusedMemory_IsFalseAndMakesNoRow)
{
    FakeMemoryProvider memory({.refuseOnly = 0});
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    std::vector<int> made;
    RowRing ring(Tenfold(made));
    EXPECT_FALSE(ring.Allocate(allocator, 4, 4, 1));
    EXPECT_TRUE(made.empty());
}

} // namespace
} // namespace kelmora

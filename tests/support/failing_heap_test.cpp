#include "tests/support/failing_heap.h"

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "image/memory_allocator.h"
#include "tests/support/failing_new.h"

namespace kelmora {
namespace {

// Calls that the compiler may not leave out.
void* Take(std::size_t bytes)
{
    void* volatile memory = std::malloc(bytes);
    return memory;
}

TEST(FailingHeap, OnlyTheGivenCall_IsRefused)
{
    void* blocks[3] = {};
    std::uint64_t calls = 0, refused = 0;
    {
        const FailingHeap heap(1);
        for (void*& block : blocks)
            block = Take(10);
        calls = heap.Calls();
        refused = heap.Refused();
    }
    EXPECT_NE(blocks[0], nullptr);
    EXPECT_EQ(blocks[1], nullptr);
    EXPECT_NE(blocks[2], nullptr);
    EXPECT_EQ(calls, 3u);
    EXPECT_EQ(refused, 1u);
    for (void* const block : blocks)
        std::free(block);
}

TEST(FailingHeap, AllFromTheGivenCallOn_AreRefusedUntilTheScopeEnds)
{
    void* blocks[3] = {};
    {
        const FailingHeap heap(FailingHeap::kNever, 1);
        for (void*& block : blocks)
            block = Take(10);
    }
    EXPECT_NE(blocks[0], nullptr);
    EXPECT_EQ(blocks[1], nullptr);
    EXPECT_EQ(blocks[2], nullptr);
    std::free(blocks[0]);
    void* const after = Take(10);
    EXPECT_NE(after, nullptr);
    std::free(after);
}

TEST(FailingHeap, OpenBlocks_AreThoseNotGivenBack)
{
    const std::int64_t before = FailingHeap::OpenBlocksOfProgram();
    void* const block = Take(10);
    std::free(nullptr);
    const std::int64_t during = FailingHeap::OpenBlocksOfProgram();
    std::free(block);
    const std::int64_t after = FailingHeap::OpenBlocksOfProgram();
    EXPECT_EQ(during, before + 1);
    EXPECT_EQ(after, before);
}

TEST(FailingHeap, LibrarysOwnMemory_ComesFromIt)
{
    MemoryAllocator allocator;
    void *block = nullptr, *picture = nullptr;
    int stride = 0;
    bool given = true, drawn = true;
    {
        const FailingHeap none(FailingHeap::kNever, 0);
        given = allocator.Allocate(&block, 100);
        drawn = allocator.AllocateImage(&picture, 4, 4, 4, &stride);
    }
    EXPECT_FALSE(given);
    EXPECT_FALSE(drawn);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(picture, nullptr);
}

TEST(FailingHeap, OperatorNew_ComesFromIt)
{
    if (!FailingNew::Works())
        GTEST_SKIP() << "operator new belongs to the sanitizer";
    bool isRefused = false;
    {
        const FailingHeap none(FailingHeap::kNever, 0);
        void* volatile block = ::operator new(10, std::nothrow);
        isRefused = block == nullptr;
        ::operator delete(block);
    }
    EXPECT_TRUE(isRefused);
}

} // namespace
} // namespace kelmora

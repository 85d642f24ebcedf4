#include "tests/support/process_figures.h"

#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

TEST(ProcessFigures, OpenFile_IsOneHandleMoreUntilItIsClosed)
{
    const std::int64_t before = FiguresOfThisProcess().handles;
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(FiguresOfThisProcess().handles, before + 1);
    std::fclose(file);
    EXPECT_EQ(FiguresOfThisProcess().handles, before);
}

TEST(ProcessFigures, Block_IsOfTheHeapAndOfMemoryUntilItIsFreed)
{
#ifdef KELMORA_SANITIZED
    GTEST_SKIP() << "the sanitizer has a heap of its own";
#endif
    constexpr std::size_t bytes = 8u << 20;
    const ProcessFigures before = FiguresOfThisProcess();
    auto* const block = static_cast<char*>(std::malloc(bytes));
    ASSERT_NE(block, nullptr);
    for (std::size_t i = 0; i < bytes; i += 4096) // a page that nobody has touched has no memory
        static_cast<volatile char*>(block)[i] = 1;
    const ProcessFigures with = FiguresOfThisProcess();
    std::free(block);
    const ProcessFigures after = FiguresOfThisProcess();
    EXPECT_GE(with.heapBytes, before.heapBytes + static_cast<std::int64_t>(bytes));
    EXPECT_LT(with.heapBytes, before.heapBytes + static_cast<std::int64_t>(bytes) + 65536);
    EXPECT_GE(with.residentBytes, before.residentBytes + static_cast<std::int64_t>(bytes));
    EXPECT_LT(after.heapBytes, before.heapBytes + 65536);
    EXPECT_LT(after.residentBytes, before.residentBytes + 1048576);
}

TEST(ProcessFigures, ShareOneHeap_BlocksOfThreads_AreGivenBackWhole)
{
#ifdef KELMORA_SANITIZED
    GTEST_SKIP() << "the sanitizer has a heap of its own";
#endif
    ShareOneHeap();
    const ProcessFigures before = FiguresOfThisProcess();
    std::thread([] {
        std::vector<void*> blocks;
        for (int i = 0; i < 1000; ++i)
            blocks.push_back(std::calloc(1, 10'000));
        for (void* const block : blocks)
            std::free(block);
    }).join();
    const ProcessFigures after = FiguresOfThisProcess();
    EXPECT_LT(std::abs(after.heapBytes - before.heapBytes), 65536);
    EXPECT_LT(after.residentBytes, before.residentBytes + (4 << 20)); // less than half of the blocks
}

} // namespace
} // namespace kelmora

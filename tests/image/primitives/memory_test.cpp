#include "image/primitives/memory.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

using ImageAllocMember = void* (*)(int, int, int*);

bool IsOn32(const void* memory)
{
    return reinterpret_cast<std::uintptr_t>(memory) % 32 == 0;
}

void CheckMember(const char* name, int pixelBytes, ImageAllocMember alloc)
{
    SCOPED_TRACE(name);
    for (int width = 1; width <= 33; ++width) {
        int stride = -1;
        void* memory = alloc(width, 3, &stride);
        ASSERT_NE(memory, nullptr);
        EXPECT_TRUE(IsOn32(memory));
        EXPECT_EQ(stride, (width * pixelBytes + 31) & ~31);
        std::memset(memory, 0xEE, static_cast<std::size_t>(stride) * 3); // all of it is ours
        pxImageFree(memory);
    }
    for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {-1, 4}, {4, INT_MIN}}) {
        int stride = -1;
        EXPECT_EQ(alloc(width, height, &stride), nullptr);
        EXPECT_EQ(stride, 0);
    }
    EXPECT_EQ(alloc(4, 4, nullptr), nullptr);

    // 2 GiB and more, where 32-bit products would wrap to something small.
    for (const auto& [width, height] :
         {std::pair{65536, 65536}, {46341, 46341}, {INT_MAX, INT_MAX}, {INT_MAX, 1}, {64, INT_MAX}}) {
        int stride = -1;
        EXPECT_EQ(alloc(width, height, &stride), nullptr) << width << " x " << height;
        EXPECT_EQ(stride, 0);
    }
}

TEST(Memory, EveryImageAlloc_RoundsTheStrideUpTo32)
{
    CheckMember("pxImageAlloc_1", 1, pxImageAlloc_1);
    CheckMember("pxImageAlloc_2", 2, pxImageAlloc_2);
    CheckMember("pxImageAlloc_3", 3, pxImageAlloc_3);
    CheckMember("pxImageAlloc_4", 4, pxImageAlloc_4);
    CheckMember("pxImageAlloc_16", 16, pxImageAlloc_16);
}

TEST(Memory, ImageAlloc4_Width9_HasAStrideOf64)
{
    int stride = 0;
    void* memory = pxImageAlloc_4(9, 1, &stride);
    EXPECT_EQ(stride, 64);
    pxImageFree(memory);
}

TEST(Memory, Malloc_EverySmallSize_IsAlignedAndWhole)
{
    std::vector<void*> blocks;
    for (int bytes = 1; bytes <= 200; ++bytes) {
        void* block = pxMalloc(bytes);
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(IsOn32(block));
        std::memset(block, bytes, static_cast<std::size_t>(bytes));
        blocks.push_back(block);
    }
    for (int bytes = 1; bytes <= 200; ++bytes) {
        const auto* block = static_cast<const std::uint8_t*>(blocks[static_cast<std::size_t>(bytes - 1)]);
        for (int i = 0; i < bytes; ++i)
            ASSERT_EQ(block[i], bytes);
    }
    for (void* block : blocks)
        pxFree(block);
}

TEST(Memory, Malloc_ImpossibleSizes_GiveNull)
{
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t addresses = std::numeric_limits<std::ptrdiff_t>::max();
    for (const std::int64_t bytes : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{INT_MIN}, -largest - 1,
                                     largest, largest - 35, addresses, addresses - 8, addresses - 35})
        EXPECT_EQ(pxMalloc(bytes), nullptr) << bytes;
}

TEST(Memory, Free_Null_IsIgnored)
{
    pxFree(nullptr);
    pxImageFree(nullptr);
    SUCCEED();
}

} // namespace
// --- kept blocks ------------------------------------------------------------------------------------------

constexpr std::int64_t kLarge = 1 << 20;

TEST(BlockKeeper, LargeBlocks_AreKeptWhileThereIsAKeeper)
{
    pxFree(pxMalloc(kLarge));
    EXPECT_EQ(BlockKeeper::KeptBytes(), 0) << "nobody asked for it";
    {
        const BlockKeeper outer;
        pxFree(pxMalloc(kLarge));
        const std::int64_t kept = BlockKeeper::KeptBytes();
        if (kept == 0)
            GTEST_SKIP() << "a sanitizer must see every block";
        EXPECT_EQ(kept, kLarge);
        {
            const BlockKeeper inner;
        }
        EXPECT_EQ(BlockKeeper::KeptBytes(), kLarge);
    }
    EXPECT_EQ(BlockKeeper::KeptBytes(), 0);
}

TEST(BlockKeeper, RequestsOfAboutTheSize_GetTheKeptBlock)
{
    const BlockKeeper keeper;
    void* const first = pxMalloc(kLarge);
    pxFree(first);
    if (BlockKeeper::KeptBytes() == 0)
        GTEST_SKIP() << "a sanitizer must see every block";
    void* const larger = pxMalloc(kLarge + 1);
    void* const muchSmaller = pxMalloc(kLarge / 2 - 1);
    EXPECT_EQ(BlockKeeper::KeptBytes(), kLarge);
    void* const half = pxMalloc(kLarge / 2);
    EXPECT_EQ(half, first);
    EXPECT_EQ(BlockKeeper::KeptBytes(), 0);
    std::memset(half, 1, static_cast<std::size_t>(kLarge));
    for (void* block : {larger, muchSmaller, half})
        pxFree(block);
}

TEST(BlockKeeper, OfTwoKeptBlocks_TheSmallerOneThatServesIsTaken)
{
    const BlockKeeper keeper;
    void* const large = pxMalloc(kLarge);
    void* const larger = pxMalloc(kLarge + kLarge / 2);
    pxFree(larger);
    pxFree(large);
    if (BlockKeeper::KeptBytes() == 0)
        GTEST_SKIP() << "a sanitizer must see every block";
    void* const taken = pxMalloc(kLarge - 100);
    EXPECT_EQ(taken, large);
    pxFree(taken);
}

TEST(BlockKeeper, SmallBlocks_AreTheHeapsOwnAffair)
{
    const BlockKeeper keeper;
    pxFree(pxMalloc(1000));
    EXPECT_EQ(BlockKeeper::KeptBytes(), 0);
}

TEST(BlockKeeper, AQuarterOfAMegabyte_IsTheLeastThatIsKept)
{
    const BlockKeeper keeper;
    pxFree(pxMalloc(kLarge));
    if (BlockKeeper::KeptBytes() == 0)
        GTEST_SKIP() << "a sanitizer must see every block";
    pxFree(pxMalloc(kLarge / 4 - 1));
    EXPECT_EQ(BlockKeeper::KeptBytes(), kLarge);
    pxFree(pxMalloc(kLarge / 4));
    EXPECT_EQ(BlockKeeper::KeptBytes(), kLarge + kLarge / 4);
}

TEST(BlockKeeper, MoreThanTheLimit_IsNotKept)
{
    const BlockKeeper keeper;
    constexpr std::int64_t limit = (sizeof(void*) == 4 ? 48 : 256) * kLarge;
    void* const blocks[] = {pxMalloc(limit / 2), pxMalloc(limit / 2), pxMalloc(kLarge)};
    for (void* block : blocks)
        pxFree(block);
    if (BlockKeeper::KeptBytes() == 0)
        GTEST_SKIP() << "a sanitizer must see every block";
    EXPECT_EQ(BlockKeeper::KeptBytes(), limit);
}

} // namespace kelmora

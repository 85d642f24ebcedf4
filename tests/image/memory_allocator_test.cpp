#include "image/memory_allocator.h"

#include <climits>
#include <cstring>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/fake_host.h"
#include "tests/support/fake_memory_provider.h"

namespace kelmora {
namespace {

static_assert(!std::is_copy_constructible_v<MemoryAllocator> && !std::is_copy_assignable_v<MemoryAllocator>,
              "two owners would release the provider twice");

TEST(MemoryAllocator, WithoutHost_GivesMemoryOfOurOwn)
{
    MemoryAllocator allocator;
    void* memory = nullptr;
    ASSERT_TRUE(allocator.Allocate(&memory, 100));
    std::memset(memory, 1, 100);
    allocator.Free(memory);

    for (const int pixelBytes : {1, 2, 3, 4, 16}) {
        int stride = 0;
        ASSERT_TRUE(allocator.AllocateImage(&memory, 9, 3, pixelBytes, &stride));
        EXPECT_EQ(stride, (9 * pixelBytes + 31) / 32 * 32);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 32, 0u);
        std::memset(memory, 1, static_cast<std::size_t>(stride) * 3);
        allocator.FreeImage(memory);
    }
}

TEST(MemoryAllocator, BadArguments_GiveFalse)
{
    MemoryAllocator allocator;
    int local = 0, stride = 77;
    void* memory = &local;
    EXPECT_FALSE(allocator.Allocate(nullptr, 100));
    EXPECT_FALSE(allocator.Allocate(&memory, 0));
    EXPECT_FALSE(allocator.AllocateImage(nullptr, 4, 4, 4, &stride));
    EXPECT_FALSE(allocator.AllocateImage(&memory, 4, 4, 4, nullptr));
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_FALSE(allocator.AllocateImage(&memory, bad, 4, 4, &stride));
        EXPECT_FALSE(allocator.AllocateImage(&memory, 4, bad, 4, &stride));
        EXPECT_FALSE(allocator.AllocateImage(&memory, 4, 4, bad, &stride));
    }
    allocator.Free(nullptr);
    allocator.FreeImage(nullptr);
}

TEST(MemoryAllocator, PixelSizesThatNobodyServes_GiveFalseAndNull)
{
    MemoryAllocator allocator;
    for (const int pixelBytes : {5, 6, 7, 8, 12, 15, 17, 32, INT_MAX}) {
        int local = 0, stride = 0;
        void* memory = &local;
        EXPECT_FALSE(allocator.AllocateImage(&memory, 4, 4, pixelBytes, &stride)) << pixelBytes;
        EXPECT_EQ(memory, nullptr);
    }
}

TEST(MemoryAllocator, TwoGibibytesAndMore_AreRefusedBeforeAnybodyIsAsked)
{
    FakeMemoryProvider provider;
    FakeHost host;
    host.SetMemory(&provider);
    MemoryAllocator asking(&host), own;
    for (MemoryAllocator* allocator : {&asking, &own}) {
        struct {
            int width, height, bytes;
        } const sizes[] = {
            {46341, 46341, 1}, {65536, 65536, 4}, {INT_MAX, INT_MAX, 16}, {1 << 27, 1, 16}, {1, INT_MAX, 4}};
        for (const auto& size : sizes) {
            int local = 0, stride = 0;
            void* memory = &local;
            EXPECT_FALSE(allocator->AllocateImage(&memory, size.width, size.height, size.bytes, &stride));
            EXPECT_EQ(memory, nullptr);
        }
        int local = 0;
        void* memory = &local;
        EXPECT_FALSE(allocator->Allocate(&memory, 0x80000000u));
        EXPECT_EQ(memory, nullptr);
        EXPECT_FALSE(allocator->Allocate(&memory, 0x100000001u)); // 1 in 32 bits
        EXPECT_FALSE(allocator->Allocate(&memory, UINT64_MAX));
    }
    EXPECT_EQ(provider.Asked(), 0u);
}

TEST(MemoryAllocator, HostsProvider_ServesEverythingAndIsReleased)
{
    FakeMemoryProvider provider({.slack = 7});
    FakeHost host;
    host.SetMemory(&provider);
    {
        MemoryAllocator allocator(&host);
        EXPECT_EQ(provider.References(), 2u);
        void *block = nullptr, *image = nullptr;
        int stride = 0;
        ASSERT_TRUE(allocator.Allocate(&block, 100));
        ASSERT_TRUE(allocator.AllocateImage(&image, 5, 3, 8, &stride)); // any pixel size, where it likes
        EXPECT_EQ(stride, 47);
        allocator.Free(block);
        allocator.FreeImage(image);
        ASSERT_EQ(provider.Calls().size(), 4u);
        EXPECT_EQ(provider.Calls()[0].kind, MemoryCall::Alloc);
        EXPECT_EQ(provider.Calls()[0].bytes, 100u);
        EXPECT_EQ(provider.Calls()[1].kind, MemoryCall::AllocImage);
        EXPECT_EQ(provider.Calls()[2].kind, MemoryCall::Free);
        EXPECT_EQ(provider.Calls()[3].kind, MemoryCall::FreeImage);
        allocator.Free(nullptr);
        allocator.FreeImage(nullptr);
        EXPECT_EQ(provider.Calls().size(), 4u);
    }
    EXPECT_EQ(provider.References(), 1u);
    ASSERT_EQ(host.Queries().size(), 1u);
    EXPECT_EQ(std::memcmp(&host.Queries()[0], &IMemoryProvider::id, sizeof(InterfaceId)), 0);
}

TEST(MemoryAllocator, ProviderThatAnswersBackwards_IsTakenByItsPointer)
{
    FakeMemoryProvider provider({.answersBackwards = true});
    FakeHost host;
    host.SetMemory(&provider);
    MemoryAllocator allocator(&host);
    void* memory = nullptr;
    int stride = 0;
    ASSERT_TRUE(allocator.Allocate(&memory, 8));
    allocator.Free(memory);
    ASSERT_TRUE(allocator.AllocateImage(&memory, 2, 2, 4, &stride));
    allocator.FreeImage(memory);
    provider.SetHabits({.refuseFrom = 0, .answersBackwards = true});
    EXPECT_FALSE(allocator.Allocate(&memory, 8));
    EXPECT_EQ(memory, nullptr);
    EXPECT_FALSE(allocator.AllocateImage(&memory, 2, 2, 4, &stride));
    EXPECT_EQ(memory, nullptr);
}

TEST(MemoryAllocator, RowsThatOverlap_GoBackAndGiveFalse)
{
    for (const int claimed : {-16, 0, 15, INT_MIN}) {
        FakeMemoryProvider provider({.claimedStride = claimed});
        FakeHost host;
        host.SetMemory(&provider);
        MemoryAllocator allocator(&host);
        void* memory = nullptr;
        int stride = 0;
        EXPECT_FALSE(allocator.AllocateImage(&memory, 4, 4, 4, &stride)) << claimed;
        EXPECT_EQ(memory, nullptr);
        EXPECT_EQ(stride, 0);
        EXPECT_EQ(provider.OpenBlocks(), 0u);
    }
}

TEST(MemoryAllocator, HostsWithoutProvider_LeaveUsWithOurOwn)
{
    for (const ProviderAnswer answer :
         {ProviderAnswer::Refuse, ProviderAnswer::SayYesGiveNothing, ProviderAnswer::SayNoLeaveGarbage}) {
        FakeHost host;
        host.SetProviderAnswer(answer);
        MemoryAllocator allocator(&host);
        void* memory = nullptr;
        ASSERT_TRUE(allocator.Allocate(&memory, 8));
        allocator.Free(memory);
    }
    MemoryAllocator nobody(nullptr);
    void* memory = nullptr;
    ASSERT_TRUE(nobody.Allocate(&memory, 8));
    nobody.Free(memory);
}

} // namespace
} // namespace kelmora

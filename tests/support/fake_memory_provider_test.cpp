#include "tests/support/fake_memory_provider.h"

#include <gtest/gtest-spi.h>

#include <cstring>

namespace kelmora {
namespace {

void* AskForPicture(FakeMemoryProvider& provider, std::int32_t width, std::int32_t height,
                    std::int32_t* stride = nullptr)
{
    void* memory = nullptr;
    std::int32_t ownStride = 0;
    const bool answer = provider.AllocImage(&memory, width, height, 4, stride ? stride : &ownStride);
    EXPECT_EQ(answer, memory != nullptr);
    return memory;
}

TEST(FakeMemoryProvider_Blocks, ComeFilled_AndAreCounted)
{
    FakeMemoryProvider provider({.fill = 0x7FA5A5A5u});
    std::int32_t stride = 0;
    void* const picture = AskForPicture(provider, 3, 2, &stride);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(stride, 12);
    std::uint32_t word = 0;
    std::memcpy(&word, static_cast<char*>(picture) + 20, 4);
    EXPECT_EQ(word, 0x7FA5A5A5u);
    void* plain = nullptr;
    EXPECT_TRUE(provider.Alloc(&plain, 100));
    EXPECT_EQ(provider.OpenBlocks(), 2u);
    EXPECT_EQ(provider.OpenBytes(), 124u);
    provider.FreeImage(picture);
    provider.Free(plain);
    EXPECT_EQ(provider.OpenBlocks(), 0u);
    EXPECT_EQ(provider.PeakBytes(), 124u);
    ASSERT_EQ(provider.Calls().size(), 4u);
    EXPECT_EQ(provider.Calls()[0].kind, MemoryCall::AllocImage);
    EXPECT_EQ(provider.Calls()[0].width, 3);
    EXPECT_EQ(provider.Calls()[1].kind, MemoryCall::Alloc);
    EXPECT_EQ(provider.Calls()[2].kind, MemoryCall::FreeImage);
    EXPECT_EQ(provider.Calls()[3].kind, MemoryCall::Free);
}

TEST(FakeMemoryProvider_Refusal, OfOneCall_LeavesTheOthers)
{
    FakeMemoryProvider provider({.refuseOnly = 1});
    void* const first = AskForPicture(provider, 1, 1);
    EXPECT_EQ(AskForPicture(provider, 1, 1), nullptr);
    void* const third = AskForPicture(provider, 1, 1);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(third, nullptr);
    EXPECT_EQ(provider.Asked(), 3u);
    EXPECT_EQ(provider.Refused(), 1u);
    provider.FreeImage(first);
    provider.FreeImage(third);
}

TEST(FakeMemoryProvider_Refusal, FromACallOn_NeverEnds)
{
    FakeMemoryProvider provider({.refuseFrom = 1});
    void* const first = AskForPicture(provider, 1, 1);
    ASSERT_NE(first, nullptr);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(AskForPicture(provider, 1, 1), nullptr);
    provider.FreeImage(first);
}

TEST(FakeMemoryProvider_Refusal, OfABlockLargerThanTheMost)
{
    FakeMemoryProvider provider({.mostBytes = 1000});
    EXPECT_EQ(AskForPicture(provider, 20000, 20000), nullptr);
    EXPECT_EQ(AskForPicture(provider, 0x7FFFFFFF, 0x7FFFFFFF), nullptr);
}

TEST(FakeMemoryProvider_Habits, MoveMemoryAndStride)
{
    FakeMemoryProvider provider({.misalign = 3, .slack = 5});
    std::int32_t stride = 0;
    void* const picture = AskForPicture(provider, 3, 2, &stride);
    EXPECT_EQ(stride, 17);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(picture) % 64, 3u);
    provider.FreeImage(picture);

    provider.SetHabits({.claimedStride = -64});
    void* const liar = AskForPicture(provider, 3, 2, &stride);
    EXPECT_EQ(stride, -64);
    provider.FreeImage(liar);

    provider.SetHabits({.refuseImages = true});
    EXPECT_EQ(AskForPicture(provider, 3, 2), nullptr);
    void* memory = nullptr;
    EXPECT_TRUE(provider.Alloc(&memory, 4));
    provider.Free(memory);
    EXPECT_EQ(provider.Refused(), 1u);

    provider.SetHabits({.refusePlain = true});
    EXPECT_FALSE(provider.Alloc(&memory, 4));
    EXPECT_EQ(memory, nullptr);
    void* const granted = AskForPicture(provider, 3, 2);
    EXPECT_NE(granted, nullptr);
    provider.FreeImage(granted);
    EXPECT_EQ(provider.Refused(), 1u);

    provider.SetHabits({.answersBackwards = true});
    EXPECT_FALSE(provider.Alloc(&memory, 4));
    ASSERT_NE(memory, nullptr);
    provider.Free(memory);
}

TEST(FakeMemoryProviderDeathTest, PageMemory_OneByteBehind_Faults)
{
    FakeMemoryProvider provider({.guard = Guard::PageEnd});
    auto* const picture = static_cast<volatile std::uint8_t*>(AskForPicture(provider, 3, 1));
    EXPECT_EQ(picture[11], 0xA5);
    EXPECT_DEATH(static_cast<void>(picture[12] + 1), "");
    provider.FreeImage(const_cast<std::uint8_t*>(picture));
}

TEST(FakeMemoryProvider_Misuse, FailsTheTest)
{
    FakeMemoryProvider provider;
    void* const picture = AskForPicture(provider, 1, 1);
    EXPECT_NONFATAL_FAILURE(provider.Free(picture), "wrong function");
    EXPECT_NONFATAL_FAILURE(provider.FreeImage(picture), "did not give");
    int foreign = 0;
    EXPECT_NONFATAL_FAILURE(provider.Free(&foreign), "did not give");
    EXPECT_NONFATAL_FAILURE(provider.Release(), "more often");

    auto* const strayed = static_cast<volatile std::uint8_t*>(AskForPicture(provider, 1, 1));
    strayed[4] = 0;
    EXPECT_NONFATAL_FAILURE(provider.FreeImage(const_cast<std::uint8_t*>(strayed)), "guard byte");

    EXPECT_NONFATAL_FAILURE(
        {
            FakeMemoryProvider leaky;
            static_cast<void>(AskForPicture(leaky, 1, 1));
        },
        "never came back");
    EXPECT_NONFATAL_FAILURE(
        {
            FakeMemoryProvider counted;
            counted.AddRef();
        },
        "references");
}

TEST(FakeMemoryProvider_QueryInterface, AnswersItsTwoInterfaces)
{
    FakeMemoryProvider provider;
    void* view = nullptr;
    EXPECT_EQ(provider.QueryInterface(&IMemoryProvider::id, &view), S_OK);
    EXPECT_EQ(view, static_cast<IMemoryProvider*>(&provider));
    EXPECT_EQ(provider.References(), 2u);
    EXPECT_EQ(provider.Release(), 1u);
    const InterfaceId other = {1, 2, 3, {}};
    EXPECT_EQ(provider.QueryInterface(&other, &view), E_NOINTERFACE);
    EXPECT_EQ(view, nullptr);
}

} // namespace
} // namespace kelmora

#include "host/strict_memory.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

using Rules = std::vector<std::string>;

std::uint8_t* Take(StrictMemory& memory, std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                   std::int32_t& stride)
{
    void* out = nullptr;
    memory.AllocImage(&out, width, height, pixelBytes, &stride);
    return static_cast<std::uint8_t*>(out);
}

TEST(StrictMemory, BlocksGivenBack_BreakNoRule)
{
    StrictMemory memory({});
    std::int32_t stride = 0;
    std::uint8_t* const picture = Take(memory, 3, 2, 4, stride);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(stride, 12);
    EXPECT_TRUE(std::all_of(picture, picture + 24, [](std::uint8_t byte) { return byte == 0xA5; }));
    void* plain = nullptr;
    EXPECT_TRUE(memory.Alloc(&plain, 5));
    EXPECT_EQ(memory.OpenBlocks(), 2u);
    std::fill_n(picture, 24, std::uint8_t{1});
    memory.FreeImage(picture);
    memory.Free(plain);
    memory.EndRender();
    EXPECT_EQ(memory.Asked(), 2u);
    EXPECT_EQ(memory.BrokenRules(), Rules{});
}

TEST(StrictMemory, BlockLeft_IsNoted)
{
    StrictMemory memory({});
    void* plain = nullptr;
    memory.Alloc(&plain, 5);
    memory.EndRender();
    EXPECT_EQ(memory.BrokenRules(), Rules{"memory of the host was not given back"});
}

TEST(StrictMemory, OtherFunction_IsNoted)
{
    StrictMemory memory({});
    std::int32_t stride = 0;
    memory.Free(Take(memory, 3, 2, 4, stride));
    EXPECT_EQ(memory.BrokenRules(), Rules{"memory was given back by the other function"});
}

TEST(StrictMemory, GivenBackTwice_IsNoted)
{
    StrictMemory memory({});
    void* plain = nullptr;
    memory.Alloc(&plain, 5);
    memory.Free(plain);
    memory.Free(plain);
    EXPECT_EQ(memory.BrokenRules(), Rules{"memory was given back that the host did not give"});
}

TEST(StrictMemory, ByteBeforeBehindOrBetweenRows_IsNoted)
{
    for (const std::ptrdiff_t offset : {-1, 12, 17, 30, 50}) { // rows at 0 and 20, 12 bytes each, slack 8
        MemoryHabits habits;
        habits.slack = 8;
        StrictMemory memory(habits);
        std::int32_t stride = 0;
        std::uint8_t* const picture = Take(memory, 3, 2, 4, stride);
        ASSERT_EQ(stride, 20);
        picture[offset] = 0;
        memory.FreeImage(picture);
        const bool isInside = offset == 30;
        EXPECT_EQ(memory.BrokenRules(),
                  isInside ? Rules{} : Rules{"bytes around the host's memory were written"})
            << offset;
    }
}

TEST(StrictMemory, RefuseOnly_RefusesThatOneAlone)
{
    MemoryHabits habits;
    habits.refuseOnly = 1;
    StrictMemory memory(habits);
    for (const bool expected : {true, false, true}) {
        void* plain = &memory;
        EXPECT_EQ(memory.Alloc(&plain, 5), expected);
        EXPECT_EQ(plain != nullptr, expected);
        if (plain != nullptr)
            memory.Free(plain);
    }
    EXPECT_EQ(memory.Refused(), 1u);
}

TEST(StrictMemory, RefuseFrom_RefusesAllFromThere)
{
    MemoryHabits habits;
    habits.refuseFrom = 1;
    StrictMemory memory(habits);
    std::int32_t stride = 7;
    std::uint8_t* const first = Take(memory, 1, 1, 4, stride);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(Take(memory, 1, 1, 4, stride), nullptr);
    EXPECT_EQ(stride, 0);
    EXPECT_EQ(Take(memory, 1, 1, 4, stride), nullptr);
    EXPECT_EQ(memory.Refused(), 2u);
    memory.FreeImage(first);
}

TEST(StrictMemory, AnswersBackwards_GivesMemoryAll_TheSame)
{
    MemoryHabits habits;
    habits.answersBackwards = true;
    habits.refuseOnly = 1;
    StrictMemory memory(habits);
    void* plain = nullptr;
    EXPECT_FALSE(memory.Alloc(&plain, 5));
    EXPECT_NE(plain, nullptr);
    memory.Free(plain);
    EXPECT_TRUE(memory.Alloc(&plain, 5));
    EXPECT_EQ(plain, nullptr);
}

TEST(StrictMemory, Shift_IsBytesOffAlignment)
{
    for (const std::uint32_t shift : {0u, 4u, 31u}) {
        MemoryHabits habits;
        habits.shift = shift;
        StrictMemory memory(habits);
        void* plain = nullptr;
        memory.Alloc(&plain, 5);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(plain) % 32, shift);
        memory.Free(plain);
        EXPECT_EQ(memory.BrokenRules(), Rules{});
    }
}

TEST(StrictMemory, NonsenseRequests_AreNotedAndRefused)
{
    StrictMemory memory({});
    std::int32_t stride = 0;
    EXPECT_EQ(Take(memory, 0, 2, 4, stride), nullptr);
    EXPECT_EQ(Take(memory, 2, -1, 4, stride), nullptr);
    EXPECT_FALSE(memory.Alloc(nullptr, 4));
    EXPECT_EQ(memory.BrokenRules(),
              (Rules{"memory for a picture was asked for without a place or a size",
                     "memory was asked for without a place or a size"}));
}

TEST(StrictMemory, MoreThanAnyHostHas_IsRefused)
{
    StrictMemory memory({});
    std::int32_t stride = 0;
    EXPECT_EQ(Take(memory, 0x7FFFFFFF, 0x7FFFFFFF, 16, stride), nullptr);
    EXPECT_EQ(memory.BrokenRules(), Rules{}); // no rule: every request may be refused
}

TEST(StrictMemory, References_AreCountedAndMissed)
{
    StrictMemory memory({});
    void* view = nullptr;
    EXPECT_EQ(memory.QueryInterface(&IMemoryProvider::id, &view), S_OK);
    EXPECT_EQ(view, static_cast<IMemoryProvider*>(&memory));
    memory.EndRender();
    EXPECT_EQ(memory.BrokenRules(), Rules{"a reference to the memory provider was not given back"});
    EXPECT_EQ(memory.Release(), 1u);
    EXPECT_EQ(memory.Release(), 1u);
    EXPECT_EQ(memory.BrokenRules().back(), "the memory provider was released once too often");
}

} // namespace
} // namespace kelmora::host

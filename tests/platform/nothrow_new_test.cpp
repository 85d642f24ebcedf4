// Of the operator new that the Windows file has; it is this program's, too, on every system.

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "tests/support/failing_heap.h"

namespace kelmora {
namespace {

/// What one of the two operators gives, and how often it asked for memory.
struct Answer {
    void* memory = nullptr;
    std::uint64_t calls = 0;
};

Answer Ask(bool array, std::size_t bytes, bool refused)
{
    Answer answer;
    const FailingHeap heap(FailingHeap::kNever, refused ? 0 : FailingHeap::kNever);
    answer.memory = array ? operator new[](bytes, std::nothrow) : operator new(bytes, std::nothrow);
    answer.calls = heap.Calls();
    return answer;
}

TEST(NothrowNew, WithoutMemory_IsNullAfterOneRequest)
{
    for (const bool array : {false, true}) {
        const Answer answer = Ask(array, 24, true);
        EXPECT_EQ(answer.memory, nullptr);
        EXPECT_EQ(answer.calls, 1u) << "an exception asks for memory, too";
    }
}

TEST(NothrowNew, AnySize_IsMemoryOfItsOwn)
{
    for (const bool array : {false, true})
        for (const std::size_t bytes : {0u, 1u, 5000u}) {
            const Answer one = Ask(array, bytes, false), other = Ask(array, bytes, false);
            EXPECT_NE(one.memory, nullptr);
            EXPECT_NE(one.memory, other.memory);
            std::free(one.memory);
            std::free(other.memory);
        }
}

} // namespace
} // namespace kelmora

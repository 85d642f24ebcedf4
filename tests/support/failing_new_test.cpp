#include "tests/support/failing_new.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <thread>
#include <vector>

namespace kelmora {
namespace {

struct alignas(64) Wide {
    unsigned char bytes[64];
};

// Pointers that the compiler must believe to be used: it may leave out a new and its delete otherwise.
template <class T>
T* Kept(T* pointer)
{
    static T* volatile place;
    place = pointer;
    return place;
}

class FailingNewTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!FailingNew::Works())
            GTEST_SKIP() << "operator new belongs to the sanitizer";
    }
};

using FailingNew_Scope = FailingNewTest;
using FailingNew_RefuseOnly = FailingNewTest;
using FailingNew_RefuseFrom = FailingNewTest;
using FailingNew_RefusedAlignedCalls = FailingNewTest;
using FailingNew_OtherThreads = FailingNewTest;
using FailingNew_OpenBlocksOfProgram = FailingNewTest;
using FailingNew_NestedScopes = FailingNewTest;

TEST_F(FailingNew_Scope, CountsEveryFormOfNew)
{
    std::uint64_t calls = 0;
    std::int64_t open = 0;
    std::int64_t openAtEnd = 0;
    bool aligned = false;
    {
        const FailingNew scope;
        int* const one = Kept(new int(1));
        int* const many = Kept(new int[10]);
        int* const quiet = Kept(new (std::nothrow) int(2));
        int* const quietMany = Kept(new (std::nothrow) int[10]);
        Wide* const wide = Kept(new Wide());
        Wide* const wideMany = Kept(new Wide[2]);
        Wide* const wideQuiet = Kept(new (std::nothrow) Wide());
        Wide* const wideQuietMany = Kept(new (std::nothrow) Wide[2]);
        calls = scope.Calls();
        open = scope.OpenBlocks();
        aligned = reinterpret_cast<std::uintptr_t>(wide) % 64 == 0
            && reinterpret_cast<std::uintptr_t>(wideQuiet) % 64 == 0
            && reinterpret_cast<std::uintptr_t>(wideMany) % 64 == 0
            && reinterpret_cast<std::uintptr_t>(wideQuietMany) % 64 == 0;
        delete one;
        delete[] many;
        delete quiet;
        delete[] quietMany;
        delete wide;
        delete[] wideMany;
        delete wideQuiet;
        delete[] wideQuietMany;
        openAtEnd = scope.OpenBlocks();
    }
    EXPECT_EQ(calls, 8u);
    EXPECT_EQ(open, 8);
    EXPECT_EQ(openAtEnd, 0);
    EXPECT_TRUE(aligned);
}

TEST_F(FailingNew_RefuseOnly, RefusesThatOneCall)
{
    int* first = nullptr;
    int* second = nullptr;
    int* third = nullptr;
    std::uint64_t refused = 0;
    {
        const FailingNew scope(1);
        first = Kept(new (std::nothrow) int(1));
        second = Kept(new (std::nothrow) int(2));
        third = Kept(new (std::nothrow) int(3));
        refused = scope.Refused();
    }
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_NE(third, nullptr);
    EXPECT_EQ(refused, 1u);
    delete first;
    delete third;
}

TEST_F(FailingNew_RefuseFrom, ThrowsFromThatCallOn)
{
    int thrown = 0;
    int granted = 0;
    {
        const FailingNew scope(FailingNew::kNever, 1);
        for (int i = 0; i < 3; ++i) {
            try {
                delete Kept(new int(i));
                ++granted;
            } catch (const std::bad_alloc&) {
                ++thrown;
            }
        }
    }
    EXPECT_EQ(granted, 1);
    EXPECT_EQ(thrown, 2);
}

TEST_F(FailingNew_RefusedAlignedCalls, GiveNullOrThrow)
{
    bool thrown = false;
    Wide* quiet = nullptr;
    {
        const FailingNew scope(FailingNew::kNever, 0);
        quiet = Kept(new (std::nothrow) Wide());
        try {
            delete Kept(new Wide());
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
    }
    EXPECT_EQ(quiet, nullptr);
    EXPECT_TRUE(thrown);
}

TEST_F(FailingNew_OtherThreads, AreNotTouched)
{
    bool granted = false;
    std::thread other([&granted] {
        for (int i = 0; i < 1000; ++i)
            delete Kept(new int(i));
        granted = true;
    });
    std::uint64_t calls = 0;
    {
        const FailingNew scope(FailingNew::kNever, 0);
        other.join();
        calls = scope.Calls();
    }
    EXPECT_TRUE(granted);
    EXPECT_EQ(calls, 0u);
}

TEST_F(FailingNew_OpenBlocksOfProgram, ComesBackToWhereItWas)
{
    const std::int64_t before = FailingNew::OpenBlocksOfProgram();
    int* const block = Kept(new int(1));
    EXPECT_EQ(FailingNew::OpenBlocksOfProgram(), before + 1);
    delete block;
    EXPECT_EQ(FailingNew::OpenBlocksOfProgram(), before);
}

TEST_F(FailingNew_NestedScopes, TheInnermostRules)
{
    bool inner = false;
    bool outer = false;
    {
        const FailingNew all(FailingNew::kNever, 0);
        {
            const FailingNew none;
            int* const block = Kept(new (std::nothrow) int(1));
            inner = block != nullptr;
            delete block;
        }
        outer = Kept(new (std::nothrow) int(1)) == nullptr;
    }
    EXPECT_TRUE(inner);
    EXPECT_TRUE(outer);
}

} // namespace
} // namespace kelmora

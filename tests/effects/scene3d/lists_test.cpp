#include "effects/scene3d/lists.h"

#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/failing_heap.h"

namespace kelmora {
namespace {

/// Counts those that live.
class Counted {
public:
    explicit Counted(int value, int& living) : m_value(value), m_living(&living) { ++*m_living; }
    Counted(const Counted& other) : m_value(other.m_value), m_living(other.m_living) { ++*m_living; }
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --*m_living; }

    int Value() const { return m_value; }

private:
    int m_value;
    int* m_living;
};

std::vector<int> Values(const GrowingList<Counted>& list)
{
    std::vector<int> values;
    for (const Counted& element : list)
        values.push_back(element.Value());
    return values;
}

bool AddTo(GrowingList<Counted>& list, int count, int& living)
{
    bool isAdded = true;
    for (int i = 0; i < count; ++i)
        isAdded &= list.push_back(Counted(i, living));
    return isAdded;
}

TEST(FixedList, PushBack_IntoAFullList_IsRefused)
{
    FixedList<int, 2> list;
    EXPECT_TRUE(list.empty());
    EXPECT_TRUE(list.push_back(7));
    EXPECT_TRUE(list.push_back(8));
    EXPECT_FALSE(list.push_back(9));
    EXPECT_EQ(std::vector<int>(list.begin(), list.end()), (std::vector<int>{7, 8}));
}

TEST(FixedList, Resize_ResetsWhatGoesAndStopsAtTheEnd)
{
    FixedList<int, 3> list(2);
    list[0] = 5;
    list[1] = 6;
    list.resize(1);
    list.resize(9);
    EXPECT_EQ(std::vector<int>(list.begin(), list.end()), (std::vector<int>{5, 0, 0}));
}

TEST(FixedList, Clear_LetsGoOfWhatElementsHold)
{
    FixedList<std::shared_ptr<int>, 2> list;
    const auto held = std::make_shared<int>(1);
    list.push_back(held);
    EXPECT_EQ(held.use_count(), 2);
    list.clear();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_TRUE(list.empty());
}

TEST(GrowingList, PushBack_KeepsTheOrderWhileTheListMoves)
{
    int living = 0;
    {
        GrowingList<Counted> list;
        std::vector<int> expected;
        for (int i = 0; i < 100; ++i) {
            ASSERT_TRUE(list.push_back(Counted(i, living)));
            expected.push_back(i);
            ASSERT_EQ(Values(list), expected);
            ASSERT_EQ(living, i + 1);
        }
        list.truncate(40);
        EXPECT_EQ(living, 40);
        EXPECT_EQ(list[39].Value(), 39);
    }
    EXPECT_EQ(living, 0);
}

TEST(GrowingList, Reserve_IsAllTheMemoryThatIsTaken)
{
    GrowingList<int> list;
    const FailingHeap scope;
    bool isDone = list.reserve(50);
    const int* const place = list.begin();
    for (int i = 0; i < 50; ++i)
        isDone &= list.push_back(i);
    const bool stays = list.begin() == place && list.reserve(3);
    EXPECT_TRUE(isDone && stays);
    EXPECT_EQ(scope.Calls(), 1u);
}

TEST(GrowingList, Reserve_MoreThanMemoryCanHave_IsRefused)
{
    GrowingList<double> list;
    ASSERT_TRUE(list.push_back(3.0));
    EXPECT_FALSE(list.reserve(std::numeric_limits<std::size_t>::max()));
    EXPECT_FALSE(list.reserve(std::numeric_limits<std::size_t>::max() / sizeof(double) + 2));
    EXPECT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0], 3.0);
}

TEST(GrowingList, CopyAndMove_TakeTheElementsAlong)
{
    int living = 0;
    GrowingList<Counted> list;
    ASSERT_TRUE(AddTo(list, 3, living));
    GrowingList<Counted> copy(list);
    EXPECT_EQ(Values(copy), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(living, 6);
    const GrowingList<Counted> moved(std::move(list));
    EXPECT_EQ(Values(moved), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(living, 6);
    copy = GrowingList<Counted>();
    EXPECT_TRUE(copy.empty());
    EXPECT_EQ(living, 3);
}

TEST(GrowingList, WithoutMemory_NothingIsAddedAndCopiesAreEmpty)
{
    int living = 0;
    GrowingList<Counted> list;
    ASSERT_TRUE(AddTo(list, 8, living)); // as many as the first block holds
    bool isAdded = true, isCopyEmpty = false;
    {
        const FailingHeap scope(FailingHeap::kNever, 0);
        isAdded = list.push_back(Counted(8, living));
        const GrowingList<Counted> copy(list);
        isCopyEmpty = copy.empty();
    }
    EXPECT_FALSE(isAdded);
    EXPECT_TRUE(isCopyEmpty);
    EXPECT_EQ(living, 8);
    EXPECT_EQ(Values(list), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_TRUE(list.push_back(Counted(8, living)));
    EXPECT_EQ(list.size(), 9u);
}

} // namespace
} // namespace kelmora

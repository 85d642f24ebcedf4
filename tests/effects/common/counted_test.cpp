#include "effects/common/counted.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

TEST(HolderCount, StartsAtOneAndGivesTheNewCount)
{
    HolderCount count;
    EXPECT_EQ(count.Add(), 2u);
    EXPECT_EQ(count.Add(), 3u);
    EXPECT_EQ(count.Drop(), 2u);
    EXPECT_EQ(count.Drop(), 1u);
    EXPECT_EQ(count.Drop(), 0u);
}

TEST(HolderCount, FromFourThreads_LosesNoChange)
{
    HolderCount count;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&count] {
            for (int i = 0; i < 1000; ++i) {
                count.Add();
                count.Add();
                count.Drop();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count.Add(), 4002u);
}

} // namespace
} // namespace kelmora

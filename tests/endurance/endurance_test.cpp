#include "tests/endurance/endurance_run.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/support/failing_new.h"

namespace kelmora {
namespace {

TEST(Endurance, TwoThousandRenders_LeaveNothingBehind)
{
    const EnduranceReport report = Endure({.renders = 2000, .settled = 500, .every = 250, .seed = 1});
    SCOPED_TRACE(TextOf(report));
    EXPECT_EQ(report.renders, 2000u);
    EXPECT_EQ(report.looks, 8u);
    EXPECT_GT(report.objects, 400u);
    EXPECT_GT(report.refused, 20u);
    EXPECT_EQ(report.openBlocks, 0);
    EXPECT_EQ(report.handleGrowth, 0);
    EXPECT_TRUE(report.unequal.empty());
#ifndef KELMORA_SANITIZED // their heaps keep what is freed
    EXPECT_LE(std::abs(report.heapGrowth), 4096);
    EXPECT_LE(report.residentGrowth, 256 * 1024);
#endif
}

TEST(Endurance, PlanOf_AHundredThousand_SettlesAfterFiveThousandAndLooksEveryThousand)
{
    const EndurancePlan plan = PlanOf(100'000, 7);
    EXPECT_EQ(plan.renders, 100'000u);
    EXPECT_EQ(plan.settled, 5'000u);
    EXPECT_EQ(plan.every, 1'000u);
    EXPECT_EQ(plan.seed, 7u);
    EXPECT_EQ(PlanOf(10'000, 7).settled, 2'500u);
    EXPECT_EQ(PlanOf(10, 7).every, 1u);
}

} // namespace
} // namespace kelmora

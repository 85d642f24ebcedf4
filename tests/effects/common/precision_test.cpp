#include "effects/common/precision.h"

#include <limits>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

TEST(Precision, Single_IsTheDoubleThatTheFloatRoundsTo)
{
    EXPECT_EQ(Single(0.5), 0.5);
    EXPECT_EQ(Single(0.1), 0.100000001490116119384765625);
    EXPECT_NE(Single(0.1), 0.1);
}

TEST(Precision, Truncate_GoesTowardZero)
{
    EXPECT_EQ(Truncate(2.999), 2);
    EXPECT_EQ(Truncate(-2.999), -2);
    EXPECT_EQ(Truncate(-0.5), 0);
    EXPECT_EQ(Truncate(2147483646.9), 2147483646);
}

TEST(Precision, Truncate_WhatNoIntHolds_GivesTheNearest)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Truncate(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(Truncate(infinity), std::numeric_limits<int>::max());
    EXPECT_EQ(Truncate(1e300), std::numeric_limits<int>::max());
    EXPECT_EQ(Truncate(2147483648.0), std::numeric_limits<int>::max());
    EXPECT_EQ(Truncate(-infinity), std::numeric_limits<int>::min());
    EXPECT_EQ(Truncate(-2147483649.0), std::numeric_limits<int>::min());
}

} // namespace
} // namespace kelmora

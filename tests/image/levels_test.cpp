#include "image/levels.h"

#include <limits>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(LevelOf, EndsOfTheRange_AreZeroAndOne)
{
    EXPECT_EQ(LevelOf(0), 0.0f);
    EXPECT_EQ(LevelOf(1), 0.003921569f);
    EXPECT_EQ(LevelOf(255), 1.0f);
}

TEST(TruncateToByte, AnyNumber_GoesTowardZeroIntoTheRange)
{
    EXPECT_EQ(TruncateToByte(41.999), 41);
    EXPECT_EQ(TruncateToByte(254.9999), 254);
    EXPECT_EQ(TruncateToByte(-0.9), 0);
    EXPECT_EQ(TruncateToByte(1e300), 255);
    EXPECT_EQ(TruncateToByte(kInfinity), 255);
    EXPECT_EQ(TruncateToByte(-kInfinity), 0);
    EXPECT_EQ(TruncateToByte(kNan), 0);
}

TEST(ClampLevel, AnyNumber_LandsInZeroToOne)
{
    EXPECT_EQ(ClampLevel(0.25f), 0.25f);
    EXPECT_EQ(ClampLevel(-1.0), 0.0);
    EXPECT_EQ(ClampLevel(kInfinity), 1.0);
    EXPECT_EQ(ClampLevel(kNan), 0.0);
}

} // namespace
} // namespace kelmora

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

TEST(ByteOf, EveryByte_ComesBack)
{
    for (int byte = 0; byte < 256; ++byte)
        EXPECT_EQ(ByteOf(LevelOf(byte)), byte);
}

TEST(ByteOf, Halves_GoUpAndTheRestIsClamped)
{
    EXPECT_EQ(ByteOf(0.5f), 128); // 127.5 + 0.5
    EXPECT_EQ(ByteOf(0.25f), 64); // 63.75
    EXPECT_EQ(ByteOf(-3.0f), 0);
    EXPECT_EQ(ByteOf(1e30f), 255);
    EXPECT_EQ(ByteOf(std::numeric_limits<float>::quiet_NaN()), 0);
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

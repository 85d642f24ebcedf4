#include "host/progress_text.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

TEST(ProgressText, KnownLength_HasBarRateAndTimeLeft)
{
    // 50 of 200 in 10 seconds: a quarter of 24 places, 5 a second, 150 to go take 30 seconds.
    EXPECT_EQ(ProgressText(50, 200, 10.0), "[######..................] 25%  50/200 frames  5.0/s  0:30 left");
    EXPECT_EQ(ProgressText(1, 7201, 2.0),
              "[........................] 0%  1/7201 frames  0.5/s  4:00:00 left");
}

TEST(ProgressText, UnknownLength_HasFramesAndRate)
{
    EXPECT_EQ(ProgressText(12, std::nullopt, 8.0), "12 frames  1.5/s");
}

TEST(ProgressText, BeginningAndOverrun_StayInBounds)
{
    EXPECT_EQ(ProgressText(0, 10, 0.0), "[........................] 0%  0/10 frames  0.0/s");
    EXPECT_EQ(ProgressText(12, 10, 4.0), "[########################] 100%  12/10 frames  3.0/s  0:00 left");
}

} // namespace
} // namespace kelmora::host

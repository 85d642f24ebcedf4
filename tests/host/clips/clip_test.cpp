#include "host/clips/clip.h"

#include <gtest/gtest.h>

#include "host/failure.h"

namespace kelmora::host {
namespace {

TEST(Ratio, SameValue_IsEqual)
{
    EXPECT_EQ((Ratio{50, 2}), (Ratio{25, 1}));
    EXPECT_FALSE((Ratio{30000, 1001}) == (Ratio{30, 1}));
    EXPECT_EQ((Ratio{8, 5}.Value()), 1.6);
}

TEST(CheckFrameSize, SizesThatNoRecordHolds_AreRefused)
{
    EXPECT_NO_THROW(CheckFrameSize("a", 1, 1));
    EXPECT_NO_THROW(CheckFrameSize("a", 7680, 4320));
    EXPECT_THROW(CheckFrameSize("a", 0, 1), Failure);
    EXPECT_THROW(CheckFrameSize("a", 1, -1), Failure);
    EXPECT_THROW(CheckFrameSize("a", 2147483647, 2147483647), Failure);
    EXPECT_THROW(CheckFrameSize("a", 536870912, 1), Failure); // four times as many bytes: 2^31
}

} // namespace
} // namespace kelmora::host

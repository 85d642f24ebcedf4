#include "host/clips/still_clip.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

TEST(StillClip, Picture_IsThereForEveryFrameAndNoMore)
{
    StillClip clip({1, 1, {1, 2, 3, 4}}, {30, 1}, 3);
    EXPECT_EQ(clip.Frames(), 3);
    EXPECT_EQ(clip.Format().width, 1);
    EXPECT_EQ(clip.Format().rate, (Ratio{30, 1}));
    clip.Skip(1);
    for (int frame = 1; frame < 3; ++frame) {
        FrameBytes bytes;
        EXPECT_TRUE(clip.Read(bytes));
        EXPECT_EQ(bytes, (FrameBytes{3, 2, 1, 4}));
    }
    FrameBytes none;
    EXPECT_FALSE(clip.Read(none));
}

} // namespace
} // namespace kelmora::host

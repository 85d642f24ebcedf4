#include "host/clip_timeline.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

TEST(ParseFrameRange, BothEnds_AreInIt)
{
    EXPECT_EQ(ParseFrameRange("100-200"), (FrameRange{100, 201}));
    EXPECT_EQ(ParseFrameRange("7"), (FrameRange{7, 8}));
    EXPECT_EQ(ParseFrameRange("7-7"), (FrameRange{7, 8}));
    EXPECT_EQ(ParseFrameRange("30-"), (FrameRange{30, std::nullopt}));
}

TEST(ParseFrameRange, WhatIsNone_IsRefused)
{
    for (const char* const text : {"", "-", "-5", "5-4", "1-2-3", "a", "1-b", "1.5", "99999999999", " 1"})
        EXPECT_EQ(ParseFrameRange(text), std::nullopt) << text;
}

TEST(ParseRate, WholeBrokenAndDecimal_AreRead)
{
    EXPECT_EQ(ParseRate("25"), (Ratio{25, 1}));
    EXPECT_EQ(ParseRate("29.97"), (Ratio{2997, 100}));
    EXPECT_EQ(ParseRate("30000/1001"), (Ratio{30000, 1001}));
}

TEST(ParseRate, WhatIsNone_IsRefused)
{
    for (const char* const text : {"", "0", "-25", "25/0", "0/1", "nan", "1e9", "2000/1", "fast", "1/2/3"})
        EXPECT_EQ(ParseRate(text), std::nullopt) << text;
}

TEST(ClipTimeline, Filter_GoesFromEndToEndOfTheClip)
{
    const ClipTimeline timeline{{25, 1}, 101, std::nullopt, 0};
    EXPECT_EQ(timeline.Frames(), 101);
    EXPECT_EQ(timeline.At(0).progress, 0.0);
    EXPECT_EQ(timeline.At(25).progress, 0.25);
    EXPECT_EQ(timeline.At(25).seconds, 1.0);
    EXPECT_EQ(timeline.At(100).progress, 1.0);
    EXPECT_EQ(timeline.At(105).progress, 1.0);
    EXPECT_TRUE(timeline.At(50).hasFirst);
    EXPECT_FALSE(timeline.At(50).hasSecond);
}

TEST(ClipTimeline, FilterOfUnknownLength_StaysHalfWayWhileTheClockRuns)
{
    const ClipTimeline timeline{{30000, 1001}, std::nullopt, std::nullopt, 0};
    EXPECT_EQ(timeline.Frames(), std::nullopt);
    EXPECT_EQ(timeline.At(30).progress, 0.5);
    EXPECT_DOUBLE_EQ(timeline.At(30).seconds, 1.001);
}

TEST(ClipTimeline, Transition_LiesOverTheEndOfOneClipAndTheBeginningOfTheOther)
{
    const ClipTimeline timeline{{10, 1}, 30, 20, 5};
    EXPECT_EQ(timeline.Frames(), 45);
    EXPECT_FALSE(timeline.At(24).hasSecond);
    EXPECT_TRUE(timeline.At(25).hasFirst);
    EXPECT_TRUE(timeline.At(25).hasSecond);
    EXPECT_EQ(timeline.At(25).progress, 0.0);
    EXPECT_EQ(timeline.At(25).seconds, 0.0);
    EXPECT_EQ(timeline.At(27).progress, 0.5);
    EXPECT_EQ(timeline.At(29).progress, 1.0);
    EXPECT_EQ(timeline.At(29).seconds, 0.4);
    EXPECT_FALSE(timeline.At(30).hasFirst);
    EXPECT_TRUE(timeline.At(30).hasSecond);
}

TEST(ClipTimeline, TransitionOfOneFrame_IsHalfWay)
{
    const ClipTimeline timeline{{25, 1}, 1, std::nullopt, 1};
    EXPECT_EQ(timeline.At(0).progress, 0.5);
    EXPECT_EQ(timeline.Frames(), std::nullopt);
}

} // namespace
} // namespace kelmora::host

#include "host/keyframes.h"

#include <gtest/gtest.h>

#include "host/failure.h"

namespace kelmora::host {
namespace {

EffectFace Face()
{
    EffectFace face;
    face.name = "Test";
    face.knobs.resize(5);
    const ParamKind kinds[] = {ParamFloat, ParamChoice, ParamCheck, ParamPoint, ParamColor};
    const char* const names[] = {"Blur", "Side", "On", "Middle", "Tint"};
    for (std::size_t i = 0; i < face.knobs.size(); ++i) {
        face.knobs[i].name = names[i];
        face.knobs[i].kind = kinds[i];
        face.knobs[i].standard.kind = kinds[i];
    }
    face.knobs[0].max = 100.0f;
    face.knobs[1].choices = {"Left", "Right"};
    return face;
}

/// The knob's value at a moment of "NAME=VALUE@SECONDS,...".
ParamValue At(const std::string& assignment, std::size_t knob, double seconds)
{
    KnobTimeline timeline(Face().Defaults());
    timeline.Set(Face(), assignment);
    return timeline.At(seconds)[knob];
}

float Level(const std::string& assignment, double seconds)
{
    return WordFloat(At(assignment, 0, seconds).value);
}

TEST(ParseSeconds, SecondsAndMilliseconds_AreRead)
{
    EXPECT_EQ(ParseSeconds("2"), 2.0);
    EXPECT_EQ(ParseSeconds("1.5s"), 1.5);
    EXPECT_EQ(ParseSeconds("500ms"), 0.5);
    for (const char* const text : {"", "s", "-1s", "nan", "1m", "1s s"})
        EXPECT_EQ(ParseSeconds(text), std::nullopt) << text;
}

TEST(KnobTimeline, Floats_GoInAStraightLineAndStayBeyondTheEnds)
{
    const std::string way = "Blur=0.25@1s,0.75@3s";
    EXPECT_EQ(Level(way, 0.0), 0.25f);
    EXPECT_EQ(Level(way, 1.0), 0.25f);
    EXPECT_EQ(Level(way, 1.5), 0.375f);
    EXPECT_EQ(Level(way, 2.0), 0.5f);
    EXPECT_EQ(Level(way, 3.0), 0.75f);
    EXPECT_EQ(Level(way, 99.0), 0.75f);
    EXPECT_EQ(Level("blur=0u@0,100u@500ms,0@1s", 0.5), 1.0f);
}

TEST(KnobTimeline, ChoicesAndChecks_StepAtTheMoment)
{
    EXPECT_EQ(At("Side=left@0,right@2", 1, 1.999).value, 0u);
    EXPECT_EQ(At("Side=left@0,right@2", 1, 2.0).value, 1u);
    EXPECT_EQ(At("On=on@0,off@1s", 2, 0.9).value, 1u);
    EXPECT_EQ(At("On=on@0,off@1s", 2, 1.0).value, 0u);
}

TEST(KnobTimeline, PointsAndColours_GoInEachOfTheirParts)
{
    const ParamValue point = At("Middle=0,1@0s,1,0@4s", 3, 1.0);
    EXPECT_EQ(WordFloat(point.value), 0.25f);
    EXPECT_EQ(WordFloat(point.valueY), 0.75f);
    // Red 0 to 255, green 128 stays, blue 255 to 0; half of 255 goes to the nearest, 128.
    EXPECT_EQ(At("Tint=#0080ff@0s,#ff8000@2s", 4, 1.0).value, 0x808080u);
}

TEST(KnobTimeline, LaterSetting_ReplacesTheEarlierOne)
{
    KnobTimeline timeline(Face().Defaults());
    timeline.Set(Face(), "Blur=0@0s,1@1s");
    timeline.Set(Face(), "Blur=0.5");
    EXPECT_EQ(WordFloat(timeline.At(1.0)[0].value), 0.5f);
    timeline.Set(Face(), "Blur=1@0s");
    EXPECT_EQ(WordFloat(timeline.At(0.0)[0].value), 1.0f);
}

TEST(KnobTimeline, BadWays_AreRefused)
{
    for (const char* const text :
         {"Blur=0@", "Blur=0@0s,", "Blur=0@0s,1", "Blur=@0s", "Blur=0@1s,1@1s", "Blur=0@2s,1@1s", "Blur=2@0s",
          "Blur=0@-1s", "Blur=0@nan", "Side=up@0s", "Middle=1@0s"}) {
        KnobTimeline timeline(Face().Defaults());
        try {
            timeline.Set(Face(), text);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), ExitCode::Usage) << text;
        }
    }
}

} // namespace
} // namespace kelmora::host

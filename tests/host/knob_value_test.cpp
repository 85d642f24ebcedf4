#include "host/knob_value.h"

#include <limits>

#include <gtest/gtest.h>

#include "host/failure.h"

namespace kelmora::host {
namespace {

Knob FloatKnob(float min, float max)
{
    Knob knob;
    knob.name = "Spray";
    knob.kind = ParamFloat;
    knob.min = min;
    knob.max = max;
    return knob;
}

Knob KnobOf(ParamKind kind)
{
    Knob knob;
    knob.name = "Knob";
    knob.kind = kind;
    if (kind == ParamChoice)
        knob.choices = {"Left", "Right Side", "7"};
    return knob;
}

/// The code and the message of the refusal.
Failure RefusalOf(const Knob& knob, const std::string& text)
{
    try {
        ParseValue(knob, text);
    } catch (const Failure& failure) {
        return failure;
    }
    ADD_FAILURE() << text << " is taken";
    return {ExitCode::Done, ""};
}

EffectFace Face()
{
    EffectFace face;
    face.slug = "air-brush";
    face.knobs = {FloatKnob(0.0f, 100.0f), KnobOf(ParamCheck)};
    face.presets = {{"Out Of Focus", {{FloatWord(0.395f), 0, ParamFloat}, {1, 0, ParamCheck}}}};
    return face;
}

TEST(ParseNumber, WholeFiniteNumbers_AreTaken)
{
    EXPECT_EQ(ParseNumber("0.25"), 0.25);
    EXPECT_EQ(ParseNumber("-3"), -3.0);
    EXPECT_EQ(ParseNumber("2e-1"), 0.2);
}

TEST(ParseNumber, AnythingElse_IsNone)
{
    for (const char* const text :
         {"", " ", "0.5x", "x", "0,5", "nan", "inf", "-inf", "1e999", "+1", " 1", "1 "})
        EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
}

TEST(FloatText, AnyFloat_IsAsShortAsItReadsBack)
{
    EXPECT_EQ(FloatText(0.39f), "0.39");
    EXPECT_EQ(FloatText(1.0f), "1");
    EXPECT_EQ(FloatText(0.1f + 0.2f), "0.3");
    EXPECT_EQ(FloatText(0.6279069781303406f), "0.627907");
}

TEST(ParseValue, FloatNormalised_IsTheLevel)
{
    EXPECT_EQ(ParseValue(FloatKnob(0.0f, 100.0f), "0.4").value, FloatWord(0.4f));
    EXPECT_EQ(ParseValue(FloatKnob(-100.0f, 100.0f), "0").value, FloatWord(0.0f));
    EXPECT_EQ(ParseValue(FloatKnob(-100.0f, 100.0f), "1").value, FloatWord(1.0f));
    EXPECT_EQ(ParseValue(FloatKnob(0.0f, 1.0f), "1").kind, static_cast<std::uint32_t>(ParamFloat));
}

TEST(ParseValue, FloatOnTheShownScale_IsBroughtTo0To1)
{
    EXPECT_EQ(ParseValue(FloatKnob(0.0f, 100.0f), "25u").value, FloatWord(0.25f));
    EXPECT_EQ(ParseValue(FloatKnob(-100.0f, 100.0f), "-50u").value, FloatWord(0.25f));
    EXPECT_EQ(ParseValue(FloatKnob(0.0f, 360.0f), "90u").value, FloatWord(0.25f));
}

TEST(ParseValue, FloatOutOfRange_IsRefusedWithTheRange)
{
    const Failure failure = RefusalOf(FloatKnob(0.0f, 100.0f), "40");
    EXPECT_EQ(failure.Code(), ExitCode::Usage);
    EXPECT_STREQ(failure.what(),
                 "\"40\" is no value for \"Spray\": give a number from 0 to 1, or 0u to 100u on "
                 "the scale that is shown");
    for (const char* const text : {"-0.1", "1.0001", "101u", "-1u", "u", "", "nan", "0.5uu"})
        EXPECT_EQ(RefusalOf(FloatKnob(0.0f, 100.0f), text).Code(), ExitCode::Usage) << text;
}

TEST(ParseValue, ChoiceByNameOrIndex_IsTheIndex)
{
    EXPECT_EQ(ParseValue(KnobOf(ParamChoice), "left").value, 0u);
    EXPECT_EQ(ParseValue(KnobOf(ParamChoice), "right-side").value, 1u);
    EXPECT_EQ(ParseValue(KnobOf(ParamChoice), "1").value, 1u);
    EXPECT_EQ(ParseValue(KnobOf(ParamChoice), "7").value, 2u); // a name comes before an index
}

TEST(ParseValue, UnknownChoice_IsRefusedWithAllOfThem)
{
    EXPECT_STREQ(RefusalOf(KnobOf(ParamChoice), "up").what(),
                 "\"up\" is no value for \"Knob\": give one of \"Left\", \"Right Side\", \"7\"");
    for (const char* const text : {"3", "-1", "", "4294967296"})
        EXPECT_EQ(RefusalOf(KnobOf(ParamChoice), text).Code(), ExitCode::Usage) << text;
}

TEST(ParseValue, Colour_HasRedInTheLowByte)
{
    EXPECT_EQ(ParseValue(KnobOf(ParamColor), "#ff8000").value, 0x000080FFu);
    EXPECT_EQ(ParseValue(KnobOf(ParamColor), "#010203").value, 0x00030201u);
    EXPECT_EQ(ParseValue(KnobOf(ParamColor), "#FFFFFF").value, 0x00FFFFFFu);
}

TEST(ParseValue, NoColour_IsRefused)
{
    for (const char* const text : {"ff8000", "#ff80", "#ff80000", "#gg8000", "#-f8000", "red", ""})
        EXPECT_EQ(RefusalOf(KnobOf(ParamColor), text).Code(), ExitCode::Usage) << text;
}

TEST(ParseValue, CheckInWords_IsOnOrOff)
{
    for (const char* const text : {"on", "ON", "true", "yes", "1"})
        EXPECT_EQ(ParseValue(KnobOf(ParamCheck), text).value, 1u) << text;
    for (const char* const text : {"off", "false", "No", "0"})
        EXPECT_EQ(ParseValue(KnobOf(ParamCheck), text).value, 0u) << text;
    EXPECT_EQ(RefusalOf(KnobOf(ParamCheck), "maybe").Code(), ExitCode::Usage);
}

TEST(ParseValue, PointBeyondWhatAFloatHolds_IsRefused)
{
    EXPECT_EQ(WordFloat(ParseValue(KnobOf(ParamPoint), "3e38,-3e38").valueY), -3e38f);
    for (const char* text : {"1e39,0", "0,-1e300", "1e308,1e308"})
        EXPECT_EQ(RefusalOf(KnobOf(ParamPoint), text).Code(), ExitCode::Usage) << text;
}

TEST(ParseValue, Point_HasTwoNumbers)
{
    const ParamValue value = ParseValue(KnobOf(ParamPoint), "0.25,-1.5");
    EXPECT_EQ(value.value, FloatWord(0.25f));
    EXPECT_EQ(value.valueY, FloatWord(-1.5f));
    for (const char* const text : {"0.25", "0.25;1", ",1", "1,", "1,2,3"})
        EXPECT_EQ(RefusalOf(KnobOf(ParamPoint), text).Code(), ExitCode::Usage) << text;
}

TEST(ValueText, EveryKind_ReadsBack)
{
    EXPECT_EQ(ValueText(FloatKnob(0.0f, 100.0f), {FloatWord(0.395f), 0, ParamFloat}), "0.395");
    EXPECT_EQ(ValueText(KnobOf(ParamChoice), {1, 0, ParamChoice}), "Right Side");
    EXPECT_EQ(ValueText(KnobOf(ParamChoice), {9, 0, ParamChoice}), "9");
    EXPECT_EQ(ValueText(KnobOf(ParamColor), {0x00030201u, 0, ParamColor}), "#010203");
    EXPECT_EQ(ValueText(KnobOf(ParamCheck), {0x100u, 0, ParamCheck}), "off"); // the low byte alone counts
    EXPECT_EQ(ValueText(KnobOf(ParamCheck), {1, 0, ParamCheck}), "on");
    EXPECT_EQ(ValueText(KnobOf(ParamPoint), {FloatWord(0.5f), FloatWord(2.0f), ParamPoint}), "0.5,2");
}

TEST(ShownText, Float_IsOnItsScale)
{
    EXPECT_EQ(ShownText(FloatKnob(0.0f, 100.0f), {FloatWord(0.39f), 0, ParamFloat}), "39");
    EXPECT_EQ(ShownText(FloatKnob(-100.0f, 100.0f), {FloatWord(0.78f), 0, ParamFloat}), "56");
    EXPECT_EQ(ShownText(KnobOf(ParamCheck), {1, 0, ParamCheck}), "");
}

TEST(KindText, EveryKind_HasAWord)
{
    EXPECT_STREQ(KindText(ParamPoint), "point");
    EXPECT_STREQ(KindText(ParamChoice), "choice");
    EXPECT_STREQ(KindText(ParamFloat), "float");
    EXPECT_STREQ(KindText(ParamColor), "color");
    EXPECT_STREQ(KindText(ParamCheck), "check");
    EXPECT_STREQ(KindText(static_cast<ParamKind>(9)), "unknown");
}

TEST(SplitAssignment, KnobWrittenDifferently_IsFound)
{
    const Assignment split = SplitAssignment(Face(), "SPRAY=a=b");
    EXPECT_EQ(split.knob, 0u);
    EXPECT_EQ(split.text, "a=b");
}

TEST(SplitAssignment, UnknownKnob_IsRefusedWithTheNearest)
{
    const EffectFace face = Face();
    try {
        SplitAssignment(face, "Sprai=0.5");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Unknown);
        EXPECT_STREQ(failure.what(),
                     "there is no knob \"Sprai\"; did you mean \"Spray\"? \"kelmora describe "
                     "air-brush\" shows all knobs");
    }
}

TEST(SplitAssignment, NoAssignment_IsRefused)
{
    const EffectFace face = Face();
    for (const char* const text : {"Spray", "=1", ""}) {
        try {
            SplitAssignment(face, text);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), ExitCode::Usage) << text;
        }
    }
}

TEST(PresetValues, NameWrittenDifferently_GivesItsValues)
{
    const std::vector<ParamValue> values = PresetValues(Face(), "out-of-focus");
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0].value, FloatWord(0.395f));
    EXPECT_EQ(values[1].value, 1u);
}

TEST(PresetValues, UnknownName_IsRefused)
{
    try {
        PresetValues(Face(), "Out Of Locus");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Unknown);
        EXPECT_STREQ(failure.what(),
                     "there is no preset \"Out Of Locus\"; did you mean \"Out Of Focus\"? "
                     "\"kelmora describe air-brush\" shows all presets");
    }
}

} // namespace
} // namespace kelmora::host

#include "effects/common/face_answers.h"

#include <cstring>

#include <gtest/gtest.h>

#include "tests/support/flush_record.h"

namespace kelmora {
namespace {

constexpr Face<4, 2> kFace{
    .name = "Face",
    .helpId = 1,
    .knobs = {{
        {"Level", Level(0.5), {1, 2, 3, 4}, {{-5, 100}}, 1, 1},
        {"Kind", Choice(1), {}, {}, {}, {}, {"One", "Two"}},
        {"Spot", Point(0.25, 0.5)},
        {"Bare", Level(0.25), {}, {{0, 1}}},
    }},
    .presets = {{
        {"First", {{Level(1.0), Choice(0), Point(0.0, 1.0), Level(0.0)}}},
        {"Second", {{LevelWith(0.5, 1.0), Choice(1), Point(0.5, 0.5), Level(1.0)}}},
    }},
};

struct Answer {
    bool result;
    ParamInfo info;
    std::uint8_t bytes[sizeof(ParamInfo)];
};

template <std::size_t K, std::size_t P>
Answer Ask(const Face<K, P>& face, std::uint32_t knob, std::uint8_t fill)
{
    const FlushRecord<ParamInfo> record(fill);
    Answer answer;
    answer.result = AnswerParamInfo(face, knob, record.Get());
    answer.info = record.Read();
    std::memcpy(answer.bytes, record.Bytes(), sizeof answer.bytes);
    return answer;
}

void ExpectUntouched(const Answer& answer, std::size_t first, std::size_t end, std::uint8_t fill = 0xCC)
{
    for (std::size_t i = first; i < end; ++i)
        EXPECT_EQ(answer.bytes[i], fill) << "byte " << i;
}

TEST(FaceAnswers, ParamInfo_OfALevel_HasItsFieldsAndNoOthers)
{
    const Answer answer = Ask(kFace, 0, 0xCC);
    EXPECT_TRUE(answer.result);
    EXPECT_EQ(answer.info.value, 0x3F000000u);
    EXPECT_EQ(answer.info.kind, ParamFloat);
    EXPECT_EQ(answer.info.scale.min, -5.0f);
    EXPECT_EQ(answer.info.scale.max, 100.0f);
    EXPECT_EQ(answer.info.scale.hostFlag, 1u);
    EXPECT_EQ(answer.info.scale.angular, 1);
    EXPECT_STREQ(answer.info.name, "Level");
    EXPECT_EQ(answer.info.rect, (ParamRect{1, 2, 3, 4}));
    EXPECT_EQ(answer.info.shown, 1);
    ExpectUntouched(answer, 4, 8);     // the second word
    ExpectUntouched(answer, 25, 216);  // behind `angular`
    ExpectUntouched(answer, 222, 256); // behind the name
    ExpectUntouched(answer, 273, 276);
}

TEST(FaceAnswers, ParamInfo_WithoutHostFlagAndAngular_LeavesThem)
{
    const Answer answer = Ask(kFace, 3, 0xCC);
    EXPECT_EQ(answer.info.scale.max, 1.0f);
    ExpectUntouched(answer, 20, 216);
}

TEST(FaceAnswers, ParamInfo_OfAChoice_HasItsNames)
{
    const Answer answer = Ask(kFace, 1, 0xCC);
    EXPECT_EQ(answer.info.kind, ParamChoice);
    EXPECT_EQ(answer.info.value, 1u);
    EXPECT_EQ(answer.info.choice.choiceCount, 2);
    EXPECT_STREQ(answer.info.choice.choiceNames[0], "One");
    EXPECT_STREQ(answer.info.choice.choiceNames[1], "Two");
    ExpectUntouched(answer, 16 + 40, 216);
}

TEST(FaceAnswers, ParamInfo_OfAPoint_HasBothWords)
{
    const Answer answer = Ask(kFace, 2, 0xCC);
    EXPECT_EQ(answer.info.value, 0x3E800000u);
    EXPECT_EQ(answer.info.valueY, 0x3F000000u);
}

TEST(FaceAnswers, ParamInfo_PastTheEnd_IsFalseAndLeavesTheRecord)
{
    for (const std::uint32_t knob : {4u, 5u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        const Answer answer = Ask(kFace, knob, 0xCC);
        EXPECT_FALSE(answer.result);
        ExpectUntouched(answer, 0, sizeof(ParamInfo));
    }
    EXPECT_FALSE(AnswerParamInfo(kFace, 0, nullptr));
}

TEST(FaceAnswers, ParamInfo_OfAFaceThatClears_ZeroesFirstAlsoPastTheEnd)
{
    auto clearing = kFace;
    clearing.clearsRecord = true;
    const Answer inside = Ask(clearing, 3, 0xCC);
    EXPECT_TRUE(inside.result);
    ExpectUntouched(inside, 20, 216, 0);
    const Answer past = Ask(clearing, 4, 0xCC);
    EXPECT_FALSE(past.result);
    ExpectUntouched(past, 0, 273, 0);
}

TEST(FaceAnswers, PresetName_EndsWithNull)
{
    EXPECT_STREQ(AnswerPresetName(kFace, 0), "First");
    EXPECT_STREQ(AnswerPresetName(kFace, 1), "Second");
    for (const std::uint32_t preset : {2u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(AnswerPresetName(kFace, preset), nullptr);
}

TEST(FaceAnswers, PresetValue_WritesBothWordsAndLeavesTheKind)
{
    ParamValue value = {7, 8, 9};
    EXPECT_TRUE(AnswerPresetValue(kFace, 1, 0, &value));
    EXPECT_EQ(value.value, 0x3F000000u);
    EXPECT_EQ(value.valueY, 0x3F800000u);
    EXPECT_EQ(value.kind, 9u);
}

TEST(FaceAnswers, PresetValue_PastEitherEndOrNull_IsFalseAndWritesNothing)
{
    ParamValue value = {7, 8, 9};
    EXPECT_FALSE(AnswerPresetValue(kFace, 2, 0, &value));
    EXPECT_FALSE(AnswerPresetValue(kFace, 0, 4, &value));
    EXPECT_FALSE(AnswerPresetValue(kFace, 0xFFFFFFFF, 0, &value));
    EXPECT_FALSE(AnswerPresetValue(kFace, 0, 0xFFFFFFFF, &value));
    EXPECT_FALSE(AnswerPresetValue(kFace, 0, 0, nullptr));
    EXPECT_EQ(value.value, 7u);
    EXPECT_EQ(value.valueY, 8u);
    EXPECT_EQ(value.kind, 9u);
}

} // namespace
} // namespace kelmora

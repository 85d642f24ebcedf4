#include "host/checks/frame_case.h"

#include <gtest/gtest.h>

#include "host/held.h"
#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class FrameCases : public testing::TestWithParam<FaultCase> {};

TEST_P(FrameCases, RuleBrokenInARender_IsSeenByAnyCheckThatRenders)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"writes-input", "render-is-repeatable"},          {"changes-record", "render-is-repeatable"},
    {"asks-with-other-kind", "render-is-repeatable"},  {"asks-for-other-knob", "render-is-repeatable"},
    {"calls-kept-place", "render-is-repeatable"},      {"holds-host", "render-is-repeatable"},
    {"writes-behind-picture", "render-is-repeatable"},
};

INSTANTIATE_TEST_SUITE_P(Fault, FrameCases, testing::ValuesIn(kCases), CaseName);

class RenderCaseTest : public testing::Test {
protected:
    LibraryFile m_file{kFakeLibrary};
    Held<IEffectLibrary> m_library = m_file.MakeLibrary();
    Held<IVideoEffect> m_effect = MakeEffect(*m_library, 106);
    EffectFace m_face = ReadFace(106, *m_effect);
    CheckRun m_run{kFakeLibrary, 1};
};

TEST_F(RenderCaseTest, Filter_WithLevel0_GivesTheInput)
{
    FrameCase frame = CaseFor(m_face, 7, 5, PF_BGRA8);
    frame.knobs[0].value = FloatWord(0.0f);
    frame.noise = 11;
    GuardedFrame input(frame.first);
    input.FillNoise(11);
    const FrameResult result = RenderCase(m_run, *m_effect, frame);
    EXPECT_TRUE(result.done);
    EXPECT_EQ(result.pixels, input.Pixels());
    EXPECT_EQ(m_run.Report(), CheckReport{});
}

TEST_F(RenderCaseTest, Memory_IsUsed)
{
    StrictMemory memory({});
    RenderedPixels(m_run, *m_effect, CaseFor(m_face, 7, 5, PF_BGRA8), &memory);
    EXPECT_EQ(memory.Asked(), 2u);
    EXPECT_EQ(m_run.Report(), CheckReport{});
}

TEST_F(RenderCaseTest, OutputOfAnotherFormat_KeepsItsOldBytes)
{
    FrameCase frame = CaseFor(m_face, 7, 5, PF_BGRA8);
    frame.output = ShapeOf(7, 5, PF_BGRA32F);
    frame.outputFill = 0x77;
    EXPECT_EQ(RenderCase(m_run, *m_effect, frame).pixels, std::vector<std::uint8_t>(7 * 5 * 16, 0x77));
}

TEST_F(RenderCaseTest, ExpectSame_DifferentPictures_IsAFinding)
{
    const FrameShape shape = ShapeOf(1, 1, PF_BGRA8);
    EXPECT_TRUE(ExpectSame(m_run, shape, {1, 2, 3, 4}, {1, 2, 3, 4}, "same"));
    EXPECT_FALSE(ExpectSame(m_run, shape, {1, 2, 3, 4}, {1, 2, 3, 5}, "not the same"));
    EXPECT_EQ(m_run.Report().details,
              std::vector<std::string>{"not the same: pixel (0, 0) is 1 2 3 4, not 1 2 3 5"});
}

TEST_F(RenderCaseTest, RandomKnobs_AreInTheirRanges)
{
    std::mt19937 engine(5);
    for (int i = 0; i < 100; ++i) {
        const std::vector<ParamValue> values = RandomKnobs(m_face, engine);
        ASSERT_EQ(values.size(), 5u);
        EXPECT_TRUE(WordFloat(values[0].value) >= 0.0f && WordFloat(values[0].value) <= 1.0f);
        EXPECT_LT(values[1].value, 2u);
        EXPECT_LE(values[2].value, 0xFFFFFFu);
        EXPECT_LE(values[3].value, 1u);
        for (std::size_t knob = 0; knob < values.size(); ++knob)
            EXPECT_EQ(values[knob].kind, static_cast<std::uint32_t>(m_face.knobs[knob].kind));
    }
}

TEST(CaseFor, Transition_HasASecondPicture)
{
    EffectFace face;
    face.pictures = 2;
    EXPECT_TRUE(CaseFor(face, 3, 2, PF_BGRA8).hasSecond);
    face.pictures = 1;
    EXPECT_FALSE(CaseFor(face, 3, 2, PF_BGRA8).hasSecond);
    EXPECT_EQ(CaseText(CaseFor(face, 3, 2, PF_ARGB32F).output), "argb32f, 3 x 2");
}

TEST(IsScene, OnlyTheTwoOfThreeDimensions_Are)
{
    EXPECT_TRUE(IsScene(100));
    EXPECT_TRUE(IsScene(101));
    EXPECT_FALSE(IsScene(102));
}

TEST(IsCutToSecond, ColorMeltAndSmear_AreNot)
{
    EXPECT_FALSE(IsCutToSecond(102));
    EXPECT_FALSE(IsCutToSecond(104));
    EXPECT_TRUE(IsCutToSecond(103));
}

} // namespace
} // namespace kelmora::host

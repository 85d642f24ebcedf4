// The thread belongs to the host, and so does its floating-point arithmetic: whatever rounding, precision, flushing and
// unmasked exceptions an effect is called in, its answers are the same, and the host finds all of it as it was.

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "contract/param_tool_tip.h"
#include "tests/effects/render.h"
#include "tests/golden/effect_presets.h"
#include "tests/support/float_state.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

class FloatGuardOf : public testing::TestWithParam<EffectClass> {
protected:
    /// The knobs of one factory preset after the other.
    std::vector<ParamValue> Knobs(std::size_t turn) const
    {
        const EffectRow& row = *EffectRowOf(KeyOf(GetParam()));
        const auto presets = GetParam() == InnerOf(GetParam()) ? row.innerPresets : row.wrapperPresets;
        return Levels(GetParam(), ValuesOf(presets[turn % presets.size()], KnobCount(GetParam())));
    }
};

/// Noise, with every sort of number that there is or with some denormals.
GuardedPicture Noisy(std::uint32_t format, std::uint32_t seed, Noise noise)
{
    GuardedPicture picture(26, 19, format);
    picture.FillNoise(seed, noise);
    if (IsFloatFormat(format))
        for (std::int32_t x = 0; x < picture.Width(); ++x)
            picture.SetFloat(x, 9, 1, 1e-42f * static_cast<float>(x));
    return picture;
}

TEST_P(FloatGuardOf, Render_WhateverTheHostsArithmetic_GivesTheSamePixelsAndPutsItBack)
{
    std::size_t turn = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (const Noise noise : {Noise::Uniform, Noise::Special})
            for (const double progress : {0.4, 0.5, 0.97}) {
                ++turn;
                const GuardedPicture in = Noisy(format, 1, noise), second = Noisy(format, 2, noise);
                const HeldEffect effect = NewEffect(GetParam());
                FakeHost host(Knobs(turn));
                InfoFields fields = AtProgress(progress);
                fields.time = 1.3 * static_cast<double>(turn);
                RenderInfo info = MakeInfo(fields);
                VideoFrame first = in.Frame(), next = second.Frame();
                const auto render = [&](const FloatState& state, GuardedPicture& out, bool& result) {
                    VideoFrame output = out.Frame();
                    return AfterWorkIn(
                        state, [&] { result = effect->Render(&host, &first, &next, &output, &info); });
                };
                GuardedPicture expected(26, 19, format);
                bool expectedResult = false;
                render(kUsualFloatState, expected, expectedResult);
                for (const FloatHabit& habit : kFloatHabits) {
                    SCOPED_TRACE(std::string(habit.name) + ", " + std::string(FormatName(format)) + ", turn "
                                 + std::to_string(turn));
                    GuardedPicture out(26, 19, format);
                    bool result = false;
                    EXPECT_EQ(render(habit.state, out, result), habit.state);
                    EXPECT_EQ(result, expectedResult);
                    EXPECT_TRUE(Equal(out, expected));
                }
            }
}

/// All that an effect says of itself, byte by byte.
std::vector<std::uint8_t> AnswersOf(IVideoEffect& effect)
{
    std::vector<std::uint8_t> answers;
    const auto append = [&](const void* record, std::size_t bytes) {
        const auto* const first = static_cast<const std::uint8_t*>(record);
        answers.insert(answers.end(), first, first + bytes);
    };
    const auto appendText = [&](const char* text) { append(text, std::strlen(text)); };
    appendText(effect.GetName());
    void* tips = nullptr;
    effect.QueryInterface(&IParamToolTip::id, &tips);
    ParamInfo info = {};
    for (std::uint32_t knob = 0; effect.GetParamInfo(knob, &info); ++knob) {
        append(&info, sizeof info);
        if (const char* const tip = tips ? static_cast<IParamToolTip*>(tips)->GetToolTip(knob) : nullptr)
            appendText(tip);
    }
    for (std::uint32_t preset = 0; const char* const name = effect.GetPresetName(preset); ++preset) {
        appendText(name);
        ParamValue value = {};
        for (std::uint32_t knob = 0; effect.GetPresetValue(preset, knob, &value); ++knob)
            append(&value, sizeof value);
    }
    if (tips)
        static_cast<IParamToolTip*>(tips)->Release();
    return answers;
}

TEST_P(FloatGuardOf, Face_WhateverTheHostsArithmetic_GivesTheSameAnswersAndRaisesNoFlag)
{
    const std::vector<std::uint8_t> expected = AnswersOf(*NewEffect(GetParam()));
    EXPECT_GT(expected.size(), 300u);
    for (const FloatHabit& habit : kFloatHabits) {
        std::vector<std::uint8_t> answers;
        EXPECT_EQ(AfterWorkIn(habit.state, [&] { answers = AnswersOf(*NewEffect(GetParam())); }), habit.state)
            << habit.name;
        EXPECT_EQ(answers, expected) << habit.name;
    }
}

#ifdef KELMORA_HAS_FLOAT_STATE

// An exception that the host has unmasked and raised, but that no instruction of its own has met yet.
TEST_P(FloatGuardOf, Render_WithAnX87ExceptionPending_LeavesItPendingForTheHost)
{
    constexpr FloatState pending = {0x1F80, 0x0340, 0x8084}; // busy, a summary, division by zero
    const GuardedPicture in = Noisy(PF_BGRA32F, 1, Noise::Uniform),
                         second = Noisy(PF_BGRA32F, 2, Noise::Uniform);
    GuardedPicture out(26, 19, PF_BGRA32F);
    const HeldEffect effect = NewEffect(GetParam());
    FakeHost host(Knobs(1));
    RenderInfo info = MakeInfo(AtProgress(0.4));
    VideoFrame first = in.Frame(), next = second.Frame(), output = out.Frame();
    EXPECT_EQ(AfterWorkIn(pending, [&] { effect->Render(&host, &first, &next, &output, &info); }), pending);
}

#endif

INSTANTIATE_TEST_SUITE_P(Effects, FloatGuardOf, testing::ValuesIn(kAllEffects),
                         [](const auto& tested) { return NameOf(tested.param); });

} // namespace
} // namespace kelmora

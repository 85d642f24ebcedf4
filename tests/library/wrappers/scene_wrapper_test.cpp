// What the host sees of the two transitions in space, and what stands behind it.

#include <cstring>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "library/wrappers/confetti.h"
#include "library/wrappers/pizza_boxes.h"
#include "tests/golden/effect_presets.h"
#include "tests/support/fake_host.h"
#include "tests/support/flush_record.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/info.h"

namespace kelmora {
namespace {

/// A knob as the host must see it.
struct KnobRow {
    ParamKind kind;
    const char* name;
    ParamRect rect;
    float initial = 0.0f; ///< of a level
    float least = 0.0f, most = 100.0f;
    std::uint32_t hostFlag = 1;
    bool angular = false;
    std::vector<const char*> choices = {};
};

const KnobRow kConfettiKnobs[] = {
    {ParamFloat, "Shading", {0, 0, 48, 30}, 0.85f},
    {ParamFloat, "Columns", {66, 0, 48, 30}, 0.315f, 1, 20, 0},
    {ParamFloat, "Rows", {132, 0, 48, 30}, 0.21f, 1, 20, 0},
    {ParamFloat, "Power", {0, 90, 114, 10}, 0.5f},
    {ParamFloat, "Direction", {66, 90, 48, 30}, 0.0f, 0, 360, 1, true},
    {ParamFloat, "Flutter", {132, 90, 114, 20}, 0.41f},
    {ParamCheck, "Vacuum", {88, 180, 72, 30}},
    {ParamCheck, "Reverse", {0, 180, 72, 30}},
};
const KnobRow kWrapConfettiKnobs[] = {
    {ParamFloat, "Columns", {0, 0, 48, 30}, 0.35f, 1, 20, 0},
    {ParamFloat, "Rows", {66, 0, 48, 30}, 0.31f, 1, 20, 0},
    {ParamFloat, "Direction", {132, 0, 48, 30}, 0.0f, 0, 360, 1, true},
    {ParamCheck, "Reverse", {0, 90, 72, 30}},
};

const std::vector<const char*> kWays = {"Horizontal", "Vertical"};
const std::vector<const char*> kGrounds = {"First Picture", "Second Picture", "Transparent"};

const KnobRow kPizzaBoxesKnobs[] = {
    {ParamFloat, "Slices", {0, 0, 48, 30}, 0.43f, 1, 10, 0},
    {ParamFloat, "Cohesion", {66, 0, 48, 30}, 0.85f},
    {ParamFloat, "Depth", {132, 0, 48, 30}, 0.25f},
    {ParamFloat, "Ebb && Flow", {198, 0, 48, 30}, 0.405f},
    {ParamChoice, "Orientation", {0, 90, 114, 20}, 0, 0, 0, 0, false, kWays},
    {ParamCheck, "Rotate right", {0, 145, 114, 10}},
    {ParamCheck, "Spread", {0, 175, 114, 10}},
    {ParamCheck, "Alternate", {0, 205, 114, 10}},
    {ParamFloat, "Fog", {132, 90, 48, 30}, 0.0f},
    {ParamFloat, "Shine", {198, 90, 48, 30}, 0.0f},
    {ParamChoice, "Background", {132, 181, 114, 20}, 0, 0, 0, 0, false, kGrounds},
};
const KnobRow kWrapPizzaBoxesKnobs[] = {
    {ParamFloat, "Slices", {0, 0, 48, 30}, 0.43f, 1, 10, 0},
    {ParamFloat, "Depth", {66, 0, 48, 30}, 0.51f},
    {ParamChoice, "Orientation", {0, 90, 114, 20}, 0, 0, 0, 0, false, kWays},
    {ParamCheck, "Rotate right", {0, 145, 114, 10}},
    {ParamCheck, "Spread", {132, 145, 114, 10}},
    {ParamFloat, "Fog", {132, 0, 48, 30}, 0.45f},
    {ParamFloat, "Shine", {198, 0, 48, 30}, 0.0f},
    {ParamChoice, "Background", {132, 90, 114, 20}, 0, 0, 0, 0, false, kGrounds},
};

/// `rest` is what the bytes hold that the knob has no use for.
void ExpectKnob(IVideoEffect& effect, std::uint32_t k, const KnobRow& knob, std::uint8_t rest)
{
    SCOPED_TRACE(knob.name);
    const FlushRecord<ParamInfo> record(0xCC);
    ASSERT_TRUE(effect.GetParamInfo(k, record.Get()));
    const ParamInfo info = record.Read();
    const std::uint32_t restWord = rest * 0x01010101u;
    EXPECT_EQ(info.kind, knob.kind);
    EXPECT_EQ(info.value, knob.kind == ParamFloat ? FloatWord(knob.initial) : 0u);
    EXPECT_EQ(info.valueY, restWord);
    EXPECT_STREQ(info.name, knob.name);
    EXPECT_EQ(info.rect, knob.rect);
    EXPECT_EQ(info.shown, 1);
    EXPECT_EQ(info.reserved[0], rest);
    if (knob.kind == ParamFloat) {
        EXPECT_EQ(info.scale.min, knob.least);
        EXPECT_EQ(info.scale.max, knob.most);
        EXPECT_EQ(info.scale.hostFlag, knob.hostFlag);
        EXPECT_EQ(info.scale.angular, knob.angular ? 1 : rest);
    } else if (knob.kind == ParamChoice) {
        ASSERT_EQ(info.choice.choiceCount, static_cast<std::int32_t>(knob.choices.size()));
        for (std::size_t i = 0; i < knob.choices.size(); ++i)
            EXPECT_STREQ(info.choice.choiceNames[i], knob.choices[i]);
    } else {
        EXPECT_EQ(FloatWord(info.scale.min), restWord);
    }
}

/// `wholeWords`: check boxes hold nothing above their low byte.
void ExpectPresets(IVideoEffect& effect, std::span<const KnobRow> knobs, std::span<const PresetRow> presets,
                   bool wholeWords)
{
    std::uint32_t p = 0;
    for (const PresetRow& preset : presets) {
        SCOPED_TRACE(preset.name);
        EXPECT_STREQ(effect.GetPresetName(p), preset.name);
        for (std::uint32_t k = 0; k < knobs.size(); ++k) {
            ParamValue value = {1, 2, 77};
            EXPECT_TRUE(effect.GetPresetValue(p, k, &value));
            const bool isLevel = knobs[k].kind == ParamFloat;
            const std::uint32_t read = isLevel || wholeWords ? value.value : value.value & 0xFF;
            EXPECT_EQ(read,
                      isLevel ? FloatWord(preset.values[k]) : static_cast<std::uint32_t>(preset.values[k]))
                << knobs[k].name;
            EXPECT_EQ(value.kind, 77u);
        }
        ++p;
    }
    ParamValue value = {1, 2, 77};
    EXPECT_EQ(effect.GetPresetName(p), nullptr);
    EXPECT_EQ(effect.GetPresetName(0xFFFFFFFF), nullptr);
    EXPECT_FALSE(effect.GetPresetValue(p, 0, &value));
    EXPECT_FALSE(effect.GetPresetValue(0, static_cast<std::uint32_t>(knobs.size()), &value));
    EXPECT_FALSE(effect.GetPresetValue(0, 0, nullptr));
    EXPECT_EQ(value.value, 1u);
}

template <class Effect>
void ExpectFaceOf(const char* name, std::uint32_t helpId, std::span<const KnobRow> knobs,
                  std::span<const PresetRow> presets, bool isInner)
{
    auto* const effect = new Effect;
    EXPECT_STREQ(effect->GetName(), name);
    EXPECT_EQ(effect->GetHelpId(), helpId);
    for (std::uint32_t k = 0; k < knobs.size(); ++k)
        ExpectKnob(*effect, k, knobs[k], isInner ? 0 : 0xCC);
    ParamInfo info = {};
    EXPECT_FALSE(effect->GetParamInfo(static_cast<std::uint32_t>(knobs.size()), &info));
    EXPECT_FALSE(effect->GetParamInfo(0xFFFFFFFF, &info));
    EXPECT_FALSE(effect->GetParamInfo(0, nullptr));
    ExpectPresets(*effect, knobs, presets, !isInner);
    EXPECT_EQ(effect->Release(), 0u);
}

TEST(SceneWrapper, Confetti_ShowsItsOwnTables)
{
    ExpectFaceOf<CWrap3DConfetti>("3D Confetti", 970, kWrapConfettiKnobs, kWrapConfettiPresets, false);
}

TEST(SceneWrapper, ConfettiInside_HasEightKnobsInAClearedRecord)
{
    ExpectFaceOf<D3DBlowingLeaves>("3D Confetti", 970, kConfettiKnobs, kConfettiPresets, true);
}

TEST(SceneWrapper, PizzaBoxes_ShowsItsOwnTables)
{
    ExpectFaceOf<CWrap3DPizzaBoxes>("3D Pizza Boxes", 966, kWrapPizzaBoxesKnobs, kWrapPizzaBoxesPresets,
                                    false);
}

TEST(SceneWrapper, PizzaBoxesInside_HasElevenKnobsInAClearedRecord)
{
    ExpectFaceOf<D3DLayers>("3D Pizza Boxes", 966, kPizzaBoxesKnobs, kPizzaBoxesPresets, true);
}

/// The values of a preset as a host's knobs.
std::vector<ParamValue> HostKnobs(std::span<const KnobRow> knobs, const std::vector<float>& values)
{
    std::vector<ParamValue> host;
    for (std::size_t k = 0; k < knobs.size(); ++k)
        host.push_back(knobs[k].kind == ParamFloat
                           ? LevelKnob(values[k])
                           : ParamValue{static_cast<std::uint32_t>(values[k]), 0, knobs[k].kind});
    return host;
}

/// The wrapper's picture, and what it asks the host for.
template <class Wrapped, class Inner>
std::vector<KnobRead> ComparePictures(const std::vector<ParamValue>& hostKnobs,
                                      const std::vector<ParamValue>& innerKnobs)
{
    std::vector<KnobRead> reads;
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture in(45, 40, format), second(45, 40, format), out(45, 40, format),
            expected(45, 40, format);
        in.FillNoise(format + 1);
        second.FillNoise(format + 9);
        FakeHost host(hostKnobs), innerHost(innerKnobs);
        auto* const wrapper = new Wrapped;
        auto* const inner = new Inner;
        VideoFrame firstFrame = in.Frame(), secondFrame = second.Frame(), output = out.Frame();
        RenderInfo info = MakeInfo(AtProgress(0.4));
        EXPECT_TRUE(wrapper->Render(&host, &firstFrame, &secondFrame, &output, &info));
        output = expected.Frame();
        EXPECT_TRUE(inner->Render(&innerHost, &firstFrame, &secondFrame, &output, &info));
        EXPECT_TRUE(Equal(out, expected));
        EXPECT_EQ(wrapper->Release(), 0u);
        EXPECT_EQ(inner->Release(), 0u);
        reads = host.Reads();
    }
    return reads;
}

TEST(SceneWrapper, Confetti_GivesTheInnerEffectsPicturesWithHiddenKnobsFixed)
{
    for (const PresetRow& preset : kWrapConfettiPresets) {
        const float* const v = preset.values;
        const auto reads = ComparePictures<CWrap3DConfetti, D3DBlowingLeaves>(
            HostKnobs(kWrapConfettiKnobs, ValuesOf(preset, 4)),
            HostKnobs(kConfettiKnobs, {0.545f, v[0], v[1], 0.34f, v[2], 0.355f, 0, v[3]}));
        EXPECT_EQ(
            reads,
            (std::vector<KnobRead>{{0, ParamFloat}, {1, ParamFloat}, {2, ParamFloat}, {3, ParamCheck}}));
    }
}

TEST(SceneWrapper, PizzaBoxes_GivesTheInnerEffectsPicturesWithHiddenKnobsFixed)
{
    for (const PresetRow& preset : kWrapPizzaBoxesPresets) {
        const float* const v = preset.values;
        const auto reads = ComparePictures<CWrap3DPizzaBoxes, D3DLayers>(
            HostKnobs(kWrapPizzaBoxesKnobs, ValuesOf(preset, 8)),
            HostKnobs(kPizzaBoxesKnobs, {v[0], 0.495f, v[1], 0, v[2], v[3], v[4], 0, v[5], v[6], v[7]}));
        EXPECT_EQ(reads,
                  (std::vector<KnobRead>{{0, ParamFloat},
                                         {1, ParamFloat},
                                         {2, ParamChoice},
                                         {3, ParamCheck},
                                         {4, ParamCheck},
                                         {5, ParamFloat},
                                         {6, ParamFloat},
                                         {7, ParamChoice}}));
    }
}

} // namespace
} // namespace kelmora

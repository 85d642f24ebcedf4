#include "library/wrappers/wrapper.h"

#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "library/wrappers/active_camera.h"
#include "library/wrappers/air_brush.h"
#include "library/wrappers/color_melt.h"
#include "library/wrappers/detail_enhancer.h"
#include "library/wrappers/paper_collage.h"
#include "library/wrappers/smear.h"
#include "library/wrappers/water_color.h"
#include "tests/golden/effect_presets.h"
#include "tests/support/fake_host.h"
#include "tests/support/flush_record.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/info.h"

namespace kelmora {
namespace {

constexpr InterfaceId kUnknownId = {0x12345678, 0x1234, 0x1234, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr std::uint32_t kFormats[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};

bool RenderOnce(IVideoEffect& effect, IVideoHost* host, const GuardedPicture& first,
                const GuardedPicture& second, GuardedPicture& out, InfoFields fields)
{
    VideoFrame firstFrame = first.Frame(), secondFrame = second.Frame(), output = out.Frame();
    fields.time = 12.5;
    RenderInfo info = MakeInfo(fields);
    return effect.Render(host, &firstFrame, &secondFrame, &output, &info);
}

bool RenderOnce(IVideoEffect& effect, IVideoHost* host, const GuardedPicture& in, GuardedPicture& out)
{
    return RenderOnce(effect, host, in, in, out, AtProgress(0.4));
}

/// An inner effect that tells what it is given, and asks its host for every kind of knob.
constexpr Face<4, 1> kProbeInner{
    .name = "Probe",
    .helpId = 42,
    .knobs = {{
        {"Level", Level(0.5), {}, {{0, 1}}},
        {"Check", Check(false)},
        {"Choice", Choice(0), {}, {}, {}, {}, {"A", "B", "C", "D"}},
        {"Colour", Colour(0)},
    }},
    .presets = {{{"Inner", {{Level(0.0), Check(false), Choice(0), Colour(0)}}}}},
};

struct ProbeCall {
    IVideoHost* host;
    const VideoFrame *first, *second, *output;
    const RenderInfo* info;
    std::vector<ParamValue> values;
    std::vector<bool> results;
};

class CProbe final : public TableEffect<kProbeInner> {
public:
    static std::vector<ProbeCall> calls;
    static int alive;

    CProbe() { ++alive; }
    ~CProbe() override { --alive; }

protected:
    bool RenderFrame(const RenderCall& call) override
    {
        ProbeCall seen = {&call.host, &call.firstPicture, call.secondPicture, &call.output, call.info, {},
                          {}};
        constexpr ParamKind kinds[] = {ParamFloat, ParamCheck, ParamChoice, ParamColor, ParamFloat};
        for (std::uint32_t k = 0; k < 5; ++k) {
            ParamValue value = {0xAABBCCDD, 0x11223344, 99};
            seen.results.push_back(call.host.GetParamValue(k, &value, kinds[k]));
            seen.values.push_back(value);
        }
        calls.push_back(seen);
        return call.info != nullptr;
    }
};

std::vector<ProbeCall> CProbe::calls;
int CProbe::alive = 0;

} // namespace

// The order is turned round, a check and a choice are hidden.
inline constexpr WrapperTables<2, 1, 4> kProbeTables{
    .face =
        {
            .name = kProbeInner.name,
            .helpId = kProbeInner.helpId,
            .knobs = {{
                {"Shown colour", Colour(5)},
                {"Shown level", Level(0.5), {}, {{0, 1}}},
            }},
            .presets = {{{"Outer", {{Colour(1), Level(0.25)}}}}},
        },
    .answers = {{FromHost(1), Always(Check(true)), Always(Choice(3)), FromHost(0)}},
};
static_assert(AnswersAll(kProbeTables, kProbeInner));

namespace {

/// AnswersAll of kProbeTables with one answer changed.
template <class Change>
consteval bool AnswersWith(Change change)
{
    auto tables = kProbeTables;
    change(tables.answers);
    return AnswersAll(tables, kProbeInner);
}
static_assert(!AnswersWith([](auto& answers) { answers[0] = FromHost(0); }));      // another kind
static_assert(!AnswersWith([](auto& answers) { answers[0] = FromHost(2); }));      // no such knob
static_assert(!AnswersWith([](auto& answers) { answers[1] = Always(Level(1)); })); // another kind
static_assert(!AnswersWith([](auto& answers) { answers[2] = {}; }));               // cut short

using CWrapProbe = Wrapper<CProbe, kProbeTables>;

// --- faces ----------------------------------------------------------------------------------------------

/// A knob as the host must see it: a level or, where `colour` is set, a colour.
struct KnobRow {
    const char* name;
    ParamRect rect;
    float initial = 0.5f;
    float least = 0.0f, most = 100.0f;
    std::optional<std::uint32_t> hostFlag = {};
    std::optional<std::uint8_t> angular = {};
    std::optional<std::uint32_t> colour = {};
};

void ExpectKnob(IVideoEffect& effect, std::uint32_t k, const KnobRow& knob)
{
    SCOPED_TRACE(knob.name);
    const FlushRecord<ParamInfo> record(0xCC);
    ASSERT_TRUE(effect.GetParamInfo(k, record.Get()));
    const ParamInfo info = record.Read();
    if (knob.colour) {
        EXPECT_EQ(info.value, *knob.colour);
        EXPECT_EQ(info.kind, ParamColor);
        EXPECT_EQ(FloatWord(info.scale.min), 0xCCCCCCCCu);
    } else {
        EXPECT_EQ(WordFloat(info.value), knob.initial);
        EXPECT_EQ(info.kind, ParamFloat);
        EXPECT_EQ(info.scale.min, knob.least);
        EXPECT_EQ(info.scale.max, knob.most);
    }
    EXPECT_EQ(info.valueY, 0xCCCCCCCCu);
    EXPECT_EQ(info.scale.hostFlag, knob.hostFlag.value_or(0xCCCCCCCCu));
    EXPECT_EQ(info.scale.angular, knob.angular.value_or(0xCC));
    EXPECT_STREQ(info.name, knob.name);
    EXPECT_EQ(info.rect, knob.rect);
    EXPECT_EQ(info.shown, 1);
    EXPECT_EQ(info.reserved[0], 0xCC);
}

void ExpectPreset(IVideoEffect& effect, std::uint32_t p, const PresetRow& preset,
                  const std::vector<KnobRow>& knobs)
{
    SCOPED_TRACE(preset.name);
    EXPECT_STREQ(effect.GetPresetName(p), preset.name);
    for (std::uint32_t k = 0; k < knobs.size(); ++k) {
        ParamValue value = {1, 2, 77};
        EXPECT_TRUE(effect.GetPresetValue(p, k, &value));
        if (knobs[k].colour)
            EXPECT_EQ(value.value, static_cast<std::uint32_t>(preset.values[k]));
        else
            EXPECT_EQ(WordFloat(value.value), preset.values[k]) << k;
        EXPECT_EQ(value.valueY, 0u);
        EXPECT_EQ(value.kind, 77u);
    }
    ParamValue value = {1, 2, 77};
    EXPECT_FALSE(effect.GetPresetValue(p, static_cast<std::uint32_t>(knobs.size()), &value));
    EXPECT_FALSE(effect.GetPresetValue(p, 0, nullptr));
    EXPECT_EQ(value.value, 1u);
}

void ExpectFace(IVideoEffect& effect, const char* name, std::uint32_t helpId,
                const std::vector<KnobRow>& knobs, std::span<const PresetRow> presets)
{
    EXPECT_STREQ(effect.GetName(), name);
    EXPECT_EQ(effect.GetHelpId(), helpId);
    const auto knobCount = static_cast<std::uint32_t>(knobs.size());
    const auto presetCount = static_cast<std::uint32_t>(presets.size());
    for (std::uint32_t k = 0; k < knobCount; ++k)
        ExpectKnob(effect, k, knobs[k]);
    ParamInfo info = {};
    EXPECT_FALSE(effect.GetParamInfo(knobCount, &info));
    EXPECT_FALSE(effect.GetParamInfo(0xFFFFFFFF, &info));
    for (std::uint32_t p = 0; p < presetCount; ++p)
        ExpectPreset(effect, p, presets[p], knobs);
    ParamValue value = {};
    EXPECT_EQ(effect.GetPresetName(presetCount), nullptr);
    EXPECT_EQ(effect.GetPresetName(0xFFFFFFFF), nullptr);
    EXPECT_FALSE(effect.GetPresetValue(presetCount, 0, &value));
    EXPECT_FALSE(effect.GetPresetValue(0xFFFFFFFF, 0xFFFFFFFF, &value));
}

/// A new effect of the class, looked at and let go.
template <class Effect>
void ExpectFaceOf(const char* name, std::uint32_t helpId, const std::vector<KnobRow>& knobs,
                  std::span<const PresetRow> presets)
{
    auto* const effect = new Effect;
    ExpectFace(*effect, name, helpId, knobs, presets);
    EXPECT_EQ(effect->Release(), 0u);
}

TEST(Wrapper, AirBrush_ShowsItsOwnTables)
{
    ExpectFaceOf<CWrapAirbrush>("Air Brush", 961,
                                {{.name = "Spray", .rect = {0, 0, 198, 30}, .hostFlag = 0},
                                 {.name = "Edge", .rect = {66, 0, 198, 30}, .hostFlag = 0}},
                                kAirBrushPresets);
}

TEST(Wrapper, DetailEnhancer_ShowsOneKnobAndFourPresets)
{
    ExpectFaceOf<CWrapDetailEnhancer>("Detail Enhancer", 961,
                                      {{.name = "Strength", .rect = {0, 0, 198, 30}, .hostFlag = 1}},
                                      kWrapDetailEnhancerPresets);
    auto* const wrapper = new CWrapDetailEnhancer;
    ParamValue value = {};
    EXPECT_FALSE(wrapper->GetPresetValue(0, 1, &value));
    EXPECT_FALSE(wrapper->GetPresetValue(4, 0, &value));
    EXPECT_EQ(wrapper->Release(), 0u);
}

KnobRow TwoSided(const char* name, ParamRect rect, float initial)
{
    return {.name = name, .rect = rect, .initial = initial, .least = -100.0f, .hostFlag = 1};
}

TEST(Wrapper, WaterColor_ShowsItsOwnTables)
{
    ExpectFaceOf<CWrapWaterColor>(
        "Water Color", 961,
        {TwoSided("Color", {0, 0, 48, 30}, 0.78f),
         TwoSided("Brightness", {66, 0, 48, 30}, 0.505f),
         TwoSided("Contrast", {132, 0, 48, 30}, 0.5001f),
         {.name = "Brush Width",
          .rect = {0, 90, 48, 30},
          .initial = 0.955f,
          .least = 1.0f,
          .most = 10.0f,
          .hostFlag = 1},
         {.name = "Blend", .rect = {66, 90, 48, 30}, .initial = 1.0f, .hostFlag = 1}},
        kWrapWaterColorPresets);
}

TEST(Wrapper, WaterColorInside_HasAKnobMore)
{
    ExpectFaceOf<CWaterColor>(
        "Water Color", 961,
        {TwoSided("Color Shift", {0, 0, 48, 30}, 0.53f),
         TwoSided("Color", {66, 0, 48, 30}, 0.69f),
         TwoSided("Brightness", {132, 0, 48, 30}, 0.435f),
         TwoSided("Contrast", {0, 90, 48, 30}, 0.64f),
         {.name = "Brush Width",
          .rect = {66, 90, 48, 30},
          .initial = 1.0f,
          .least = 1.0f,
          .most = 10.0f,
          .hostFlag = 1},
         {.name = "Blend", .rect = {132, 90, 48, 30}, .initial = 0.885f, .hostFlag = 1}},
        kWaterColorPresets);
}

TEST(Wrapper, ColorMelt_ShowsItsOwnTables)
{
    ExpectFaceOf<CWrapColorMelt>(
        "Color Melt", 962,
        {{.name = "Soften", .rect = {0, 0, 198, 30}, .initial = 0.565f, .hostFlag = 1},
         {.name = "Fog", .rect = {66, 0, 198, 30}, .initial = 0.99f, .hostFlag = 1},
         {.name = "Brightness", .rect = {132, 0, 198, 30}, .initial = 0.54f, .hostFlag = 1},
         {.name = "Color", .rect = {198, 0, 198, 30}, .initial = 0.24f, .hostFlag = 1}},
        kWrapColorMeltPresets);
}

TEST(Wrapper, ColorMeltInside_LeavesTheHostFlagAsItIs)
{
    ExpectFaceOf<CColormelt>("Color Melt", 962,
                             {{.name = "Soften", .rect = {0, 0, 198, 30}, .initial = 0.34f},
                              {.name = "Fog", .rect = {66, 0, 198, 30}, .initial = 0.99f},
                              {.name = "Brightness", .rect = {132, 0, 198, 30}, .initial = 0.54f},
                              {.name = "Color", .rect = {0, 100, 198, 30}, .initial = 0.24f},
                              {.name = "Tempo", .rect = {66, 100, 198, 30}, .initial = 0.0f},
                              {.name = "Cross Fade", .rect = {132, 100, 198, 30}, .initial = 0.34f}},
                             kColorMeltPresets);
}

KnobRow Dial(const char* name, ParamRect rect, float initial)
{
    return {.name = name, .rect = rect, .initial = initial, .hostFlag = 1};
}

TEST(Wrapper, PaperCollage_ShowsItsOwnTables)
{
    ExpectFaceOf<CWrapPaperCollage>("Paper Collage", 962,
                                    {Dial("Rounding", {0, 0, 48, 30}, 0.39f),
                                     {.name = "Layers",
                                      .rect = {66, 0, 48, 30},
                                      .initial = 0.87f,
                                      .least = 2.0f,
                                      .most = 8.0f,
                                      .hostFlag = 0},
                                     Dial("Shadow", {132, 0, 48, 30}, 0.76f),
                                     {.name = "Angle",
                                      .rect = {198, 0, 48, 30},
                                      .initial = 0.76f,
                                      .most = 360.0f,
                                      .hostFlag = 1,
                                      .angular = std::uint8_t{1}},
                                     {.name = "Foreground", .rect = {0, 90, 48, 30}, .colour = 0x44FEFE},
                                     {.name = "Background", .rect = {66, 90, 48, 30}, .colour = 0x400080},
                                     Dial("Blend Colors", {132, 90, 48, 30}, 1.0f)},
                                    kWrapPaperCollagePresets);
}

TEST(Wrapper, PaperCollageInside_HasTenKnobs)
{
    ExpectFaceOf<CEmbossedPaperBlend>(
        "Paper Collage", 962,
        {Dial("Rounding", {0, 0, 48, 30}, 0.39f),
         {.name = "Layers",
          .rect = {66, 0, 48, 30},
          .initial = 0.87f,
          .least = 2.0f,
          .most = 8.0f,
          .hostFlag = 0},
         {.name = "Balance", .rect = {132, 0, 48, 30}, .initial = 0.815f, .least = -100.0f, .hostFlag = 0},
         {.name = "Foreground", .rect = {0, 90, 48, 30}, .colour = 0x44FEFE},
         {.name = "Background", .rect = {66, 90, 48, 30}, .colour = 0x400080},
         Dial("Blend Colors", {132, 90, 48, 30}, 1.0f),
         Dial("Shadow", {0, 180, 48, 30}, 0.66f),
         {.name = "Angle", .rect = {66, 180, 48, 30}, .initial = 0.415f, .most = 360.0f, .hostFlag = 1},
         Dial("Tempo", {132, 180, 48, 30}, 0.0f),
         Dial("Cross Fade", {198, 180, 48, 30}, 1.0f)},
        kPaperCollagePresets);
}

TEST(Wrapper, Smear_ShowsItsOwnTables)
{
    ExpectFaceOf<CWrapSmear>("Smear", 966,
                             {Dial("Blur", {0, 0, 48, 30}, 0.8001f),
                              {.name = "Angle",
                               .rect = {66, 0, 48, 30},
                               .initial = 0.0001f,
                               .most = 360.0f,
                               .hostFlag = 1,
                               .angular = std::uint8_t{1}},
                              TwoSided("Direction", {132, 0, 48, 30}, 1.0f)},
                             kWrapSmearPresets);
}

TEST(Wrapper, ActiveCamera_ShowsItsOwnTables)
{
    ExpectFaceOf<CWrapActiveCamera>(
        "Active Camera", 965,
        {Dial("Horizontal", {0, 0, 48, 30}, 0.2f), Dial("Vertical", {66, 0, 48, 30}, 0.5f),
         Dial("Crop", {132, 0, 48, 30}, 0.18f), Dial("Rate", {0, 90, 48, 30}, 0.9f),
         Dial("Jitter", {66, 90, 48, 30}, 0.5f), Dial("Blur", {132, 90, 48, 30}, 0.505f)},
        kWrapActiveCameraPresets);
}

TEST(Wrapper, ActiveCameraInside_HasNineKnobsInAClearedRecord)
{
    const KnobRow knobs[] = {{.name = "Horizontal", .rect = {0, 0, 48, 30}, .initial = 0.2f},
                             {.name = "Vertical", .rect = {66, 0, 48, 30}, .initial = 0.5f},
                             {.name = "Rotation", .rect = {132, 0, 48, 30}, .initial = 0.12f},
                             {.name = "Crop", .rect = {198, 0, 48, 30}, .initial = 0.3f},
                             {.name = "Rate", .rect = {0, 90, 48, 30}, .initial = 0.9f},
                             {.name = "Jitter", .rect = {66, 90, 48, 30}, .initial = 0.5f},
                             {.name = "Hold", .rect = {132, 90, 48, 30}, .initial = 0.3f},
                             {.name = "Blur", .rect = {198, 90, 48, 30}, .initial = 0.4f}};
    auto* const effect = new CActivecamera;
    for (std::uint32_t k = 0; k < 8; ++k) {
        SCOPED_TRACE(knobs[k].name);
        const FlushRecord<ParamInfo> record(0xCC);
        ASSERT_TRUE(effect->GetParamInfo(k, record.Get()));
        ParamInfo expected = {};
        expected.value = FloatWord(knobs[k].initial);
        expected.kind = ParamFloat;
        expected.scale.max = 100.0f;
        std::strcpy(expected.name, knobs[k].name);
        expected.rect = knobs[k].rect;
        expected.shown = 1;
        const ParamInfo info = record.Read();
        EXPECT_EQ(std::memcmp(&info, &expected, sizeof info), 0);
    }
    const FlushRecord<ParamInfo> record(0xCC);
    ASSERT_TRUE(effect->GetParamInfo(8, record.Get()));
    ParamInfo expected = {}, info = record.Read();
    expected.kind = ParamCheck;
    std::strcpy(expected.name, "Synchronize Axes");
    expected.rect = {0, 180, 114, 10};
    expected.shown = 1;
    EXPECT_EQ(std::memcmp(&info, &expected, sizeof info), 0);
    std::memset(&info, 0xCC, sizeof info);
    expected = {};
    EXPECT_FALSE(effect->GetParamInfo(9, &info));
    EXPECT_EQ(std::memcmp(&info, &expected, sizeof info), 0);
    EXPECT_EQ(effect->Release(), 0u);
}

TEST(Wrapper, ActiveCameraInside_HasThirteenPresetsWithAWholeNumberForTheCheckBox)
{
    auto* const effect = new CActivecamera;
    std::uint32_t p = 0;
    for (const PresetRow& preset : kActiveCameraPresets) {
        SCOPED_TRACE(preset.name);
        EXPECT_STREQ(effect->GetPresetName(p), preset.name);
        for (std::uint32_t k = 0; k < 9; ++k) {
            ParamValue value = {1, 2, 77};
            EXPECT_TRUE(effect->GetPresetValue(p, k, &value));
            EXPECT_EQ(value.value,
                      k < 8 ? FloatWord(preset.values[k]) : static_cast<std::uint32_t>(preset.values[k]));
            EXPECT_EQ(value.valueY, 0u);
        }
        ++p;
    }
    EXPECT_EQ(p, 13u);
    ParamValue value = {};
    EXPECT_EQ(effect->GetPresetName(p), nullptr);
    EXPECT_FALSE(effect->GetPresetValue(p, 0, &value));
    EXPECT_FALSE(effect->GetPresetValue(0, 9, &value));
    EXPECT_EQ(effect->Release(), 0u);
}

// --- interfaces -------------------------------------------------------------------------------------------

TEST(Wrapper, QueryInterface_AnIdAtAnyAddress_IsReadByWrapperAndInnerEffect)
{
    alignas(8) std::uint8_t raw[24] = {};
    const auto* const id = reinterpret_cast<const InterfaceId*>(raw + 1);
    IVideoEffect* const effects[] = {new CWrapProbe, new CProbe};
    for (IVideoEffect* const effect : effects) {
        std::memcpy(raw + 1, &IVideoEffect::id, sizeof(InterfaceId));
        void* found = nullptr;
        EXPECT_EQ(effect->QueryInterface(id, &found), S_OK);
        EXPECT_EQ(found, effect);
        std::memcpy(raw + 1, &kUnknownId, sizeof(InterfaceId));
        EXPECT_EQ(effect->QueryInterface(id, &found), E_NOINTERFACE);
        EXPECT_EQ(effect->Release(), 1u);
        EXPECT_EQ(effect->Release(), 0u);
    }
}

TEST(Wrapper, QueryInterface_BothViews_AnswerAlikeOnOneCount)
{
    auto* const wrapper = new CWrapDetailEnhancer;
    auto* const effect = static_cast<IVideoEffect*>(wrapper);
    void* found = nullptr;
    ASSERT_EQ(effect->QueryInterface(&IVideoHost::id, &found), S_OK);
    auto* const host = static_cast<IVideoHost*>(found);
    EXPECT_EQ(host, static_cast<IVideoHost*>(wrapper));
    EXPECT_EQ(host->AddRef(), 3u);
    EXPECT_EQ(effect->Release(), 2u);
    for (const InterfaceId& id : {IUnknown::id, IVideoEffect::id}) {
        EXPECT_EQ(host->QueryInterface(&id, &found), S_OK);
        EXPECT_EQ(found, effect);
        EXPECT_EQ(host->Release(), 2u);
    }
    EXPECT_EQ(effect->Release(), 1u);
    EXPECT_EQ(host->Release(), 0u);
}

TEST(Wrapper, QueryInterface_OtherInterfacesBeforeARender_StoreNull)
{
    auto* const wrapper = new CWrapDetailEnhancer;
    // The inner effect's tool tips stay out of reach.
    for (const InterfaceId& id : {kUnknownId, IMemoryProvider::id, IParamToolTip::id}) {
        void* found = wrapper;
        EXPECT_EQ(wrapper->QueryInterface(&id, &found), E_NOINTERFACE);
        EXPECT_EQ(found, nullptr);
    }
    void* found = wrapper;
    EXPECT_EQ(wrapper->QueryInterface(&kUnknownId, nullptr), E_FAIL);
    EXPECT_EQ(wrapper->QueryInterface(nullptr, &found), E_FAIL);
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, QueryInterface_AfterARender_ReachesTheHost)
{
    FakeMemoryProvider memory;
    FakeHost host{LevelKnob(0.5f)};
    host.SetMemory(&memory);
    auto* const wrapper = new CWrapDetailEnhancer;
    const GuardedPicture in(8, 8, PF_BGRA8);
    GuardedPicture out(8, 8, PF_BGRA8);
    EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out));
    void* found = nullptr;
    EXPECT_EQ(wrapper->QueryInterface(&IMemoryProvider::id, &found), S_OK);
    EXPECT_EQ(found, &memory);
    memory.Release();
    EXPECT_EQ(wrapper->QueryInterface(&kUnknownId, &found), E_NOINTERFACE);
    EXPECT_EQ(host.Queries().back(), kUnknownId);
    EXPECT_EQ(wrapper->QueryInterface(&IParamToolTip::id, &found), E_NOINTERFACE);
    // The wrapper's own views are not asked of the host.
    const std::size_t asked = host.Queries().size();
    EXPECT_EQ(wrapper->QueryInterface(&IVideoHost::id, &found), S_OK);
    EXPECT_EQ(found, static_cast<IVideoHost*>(wrapper));
    EXPECT_EQ(host.Queries().size(), asked);
    wrapper->Release();
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, Render_TakesScratchFromTheHostsProvider)
{
    FakeMemoryProvider memory;
    FakeHost host{LevelKnob(0.5f), LevelKnob(0.5f)};
    host.SetMemory(&memory);
    auto* const wrapper = new CWrapAirbrush;
    GuardedPicture in(40, 30, PF_BGRA8), out(40, 30, PF_BGRA8);
    in.FillNoise(1);
    EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out));
    EXPECT_GT(memory.Asked(), 0u);
    EXPECT_EQ(memory.OpenBlocks(), 0u);
    EXPECT_EQ(memory.References(), 1u);
    EXPECT_EQ(host.References(), 1u);
    EXPECT_EQ(wrapper->Release(), 0u);
}

// --- toward the inner effect ----------------------------------------------------------------------------------

TEST(Wrapper, Render_HandsTheOtherArgumentsOnAndGivesTheInnerResult)
{
    CProbe::calls.clear();
    FakeHost host{ColorKnob(0x00112233), LevelKnob(0.75f)};
    auto* const wrapper = new CWrapProbe;
    const GuardedPicture picture(4, 4, PF_BGRA8);
    VideoFrame first = picture.Frame(), second = picture.Frame(), output = picture.Frame();
    RenderInfo info = MakeInfo({});
    EXPECT_TRUE(wrapper->Render(&host, &first, &second, &output, &info));
    EXPECT_FALSE(wrapper->Render(&host, &first, nullptr, &output, nullptr));
    ASSERT_EQ(CProbe::calls.size(), 2u);
    const ProbeCall& call = CProbe::calls[0];
    EXPECT_EQ(call.host, static_cast<IVideoHost*>(wrapper));
    EXPECT_EQ(call.first, &first);
    EXPECT_EQ(call.second, &second);
    EXPECT_EQ(call.output, &output);
    EXPECT_EQ(call.info, &info);
    EXPECT_EQ(CProbe::calls[1].second, nullptr);
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, GetParamValue_MapsKnobsAndAnswersForHiddenOnes)
{
    CProbe::calls.clear();
    FakeHost host{ColorKnob(0x00112233), LevelKnob(0.75f)};
    auto* const wrapper = new CWrapProbe;
    const GuardedPicture in(4, 4, PF_BGRA8);
    GuardedPicture out(4, 4, PF_BGRA8);
    EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out));
    ASSERT_EQ(CProbe::calls.size(), 1u);
    const ProbeCall& call = CProbe::calls[0];
    EXPECT_EQ(call.results, (std::vector<bool>{true, true, true, true, false}));
    EXPECT_EQ(WordFloat(call.values[0].value), 0.75f);
    EXPECT_EQ(call.values[1].value, 0xAABBCC01u); // a check owns its low byte
    EXPECT_EQ(call.values[2].value, 3u);          // whatever the host does
    EXPECT_EQ(call.values[3].value, 0x00112233u);
    EXPECT_EQ(call.values[4].value, 0xAABBCCDDu); // past the table
    EXPECT_EQ(call.values[1].valueY, 0x11223344u);
    const std::uint32_t kinds[] = {ParamFloat, ParamCheck, ParamChoice, ParamColor, ParamFloat};
    for (std::size_t k = 0; k < 5; ++k)
        EXPECT_EQ(call.values[k].kind, kinds[k]) << k;
    EXPECT_EQ(host.Reads(), (std::vector<KnobRead>{{1, ParamFloat}, {0, ParamColor}}));
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, GetParamValue_BeforeARender_IsFalseAndWritesNothing)
{
    auto* const wrapper = new CWrapProbe;
    ParamValue value = {1, 2, 3};
    for (const std::uint32_t knob : {0u, 1u, 4u, 0xFFFFFFFFu})
        EXPECT_FALSE(wrapper->GetParamValue(knob, &value, ParamFloat));
    EXPECT_EQ(value.value, 1u);
    EXPECT_EQ(value.kind, 3u);
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, GetParamValue_AfterARender_StillAsksTheHost)
{
    FakeHost host{ColorKnob(1), LevelKnob(0.75f)};
    auto* const wrapper = new CWrapProbe;
    const GuardedPicture in(4, 4, PF_BGRA8);
    GuardedPicture out(4, 4, PF_BGRA8);
    EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out));
    ParamValue value = {};
    EXPECT_TRUE(wrapper->GetParamValue(0, &value, ParamFloat));
    EXPECT_EQ(WordFloat(value.value), 0.75f);
    EXPECT_FALSE(wrapper->GetParamValue(4, &value, ParamFloat));
    EXPECT_FALSE(wrapper->GetParamValue(0xFFFFFFFF, &value, ParamFloat));
    EXPECT_FALSE(wrapper->GetParamValue(0, nullptr, ParamFloat));
    host.RefuseKnob(1);
    EXPECT_FALSE(wrapper->GetParamValue(0, &value, ParamFloat));
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, HostReserved_4And5AreHandedOn_6And7AreNot)
{
    auto* const wrapper = new CWrapProbe;
    EXPECT_FALSE(wrapper->HostReserved4(1, 2, 3));
    EXPECT_EQ(wrapper->HostReserved5(4, 5), 0u);
    EXPECT_FALSE(wrapper->HostReserved6(6, 7));
    FakeHost host{ColorKnob(1), LevelKnob(0.75f)};
    host.AcceptReserved();
    const GuardedPicture in(4, 4, PF_BGRA8);
    GuardedPicture out(4, 4, PF_BGRA8);
    EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out));
    EXPECT_TRUE(wrapper->HostReserved4(1, 2, 3));
    EXPECT_EQ(wrapper->HostReserved5(4, 5), 0x12345678u);
    EXPECT_FALSE(wrapper->HostReserved6(6, 7));
    wrapper->HostReserved7(8, 9);
    EXPECT_EQ(host.OtherCalls(), (std::vector<std::string>{"HostReserved4(1, 2, 3)", "HostReserved5(4, 5)"}));
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, GetHostInfo_IsZerosAlsoWhenAHostIsKnown)
{
    FakeHost host{ColorKnob(1), LevelKnob(0.75f)};
    auto* const wrapper = new CWrapProbe;
    const GuardedPicture in(4, 4, PF_BGRA8);
    GuardedPicture out(4, 4, PF_BGRA8);
    for (int round = 0; round < 2; ++round) {
        HostInfo info = {"somebody", {1, 2, 3}};
        EXPECT_EQ(wrapper->GetHostInfo(&info), &info);
        EXPECT_EQ(info.hostName, nullptr);
        for (const std::uint32_t word : info.words)
            EXPECT_EQ(word, 0u);
        EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out));
    }
    EXPECT_EQ(wrapper->GetHostInfo(nullptr), nullptr);
    EXPECT_TRUE(host.OtherCalls().empty());
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, Release_AtZero_EndsTheInnerEffectToo)
{
    const int before = CProbe::alive;
    auto* const wrapper = new CWrapProbe;
    EXPECT_EQ(CProbe::alive, before + 1);
    EXPECT_EQ(wrapper->Release(), 0u);
    EXPECT_EQ(CProbe::alive, before);
}

TEST(Wrapper, Render_WithoutHostOrWithItselfAsHost_IsRefused)
{
    CProbe::calls.clear();
    auto* const wrapper = new CWrapProbe;
    const GuardedPicture in(4, 4, PF_BGRA8);
    GuardedPicture out(4, 4, PF_BGRA8);
    EXPECT_FALSE(RenderOnce(*wrapper, nullptr, in, out));
    EXPECT_FALSE(RenderOnce(*wrapper, static_cast<IVideoHost*>(wrapper), in, out));
    EXPECT_TRUE(CProbe::calls.empty());
    ParamValue value = {};
    EXPECT_FALSE(wrapper->GetParamValue(0, &value, ParamFloat));
    void* found = wrapper;
    EXPECT_EQ(wrapper->QueryInterface(&kUnknownId, &found), E_NOINTERFACE); // and no endless question
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, HostThatHandsQuestionsBack_IsNotAskedAgainInsideOfOne)
{
    auto* const wrapper = new CWrapProbe;
    FakeHost host{ColorKnob(1), LevelKnob(0.75f)};
    int handedBack = 0;
    host.OnKnob([&](std::uint32_t) {
        ParamValue value = {7, 8, 9};
        EXPECT_FALSE(wrapper->GetParamValue(0, &value, ParamFloat));
        EXPECT_EQ(value.value, 7u);
        ++handedBack;
    });
    const GuardedPicture in(4, 4, PF_BGRA8);
    GuardedPicture out(4, 4, PF_BGRA8);
    EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out));
    EXPECT_EQ(handedBack, 2);
    ParamValue value = {};
    EXPECT_TRUE(wrapper->GetParamValue(0, &value, ParamFloat)) << "the host is known again";
    EXPECT_EQ(WordFloat(value.value), 0.75f);
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, TwoWrappersAsEachOthersHosts_ComeToAnEnd)
{
    auto* const first = new CWrapProbe;
    auto* const second = new CWrapProbe;
    const GuardedPicture in(4, 4, PF_BGRA8);
    GuardedPicture out(4, 4, PF_BGRA8);
    EXPECT_TRUE(RenderOnce(*first, static_cast<IVideoHost*>(second), in, out));
    EXPECT_TRUE(RenderOnce(*second, static_cast<IVideoHost*>(first), in, out));
    void* found = first;
    EXPECT_EQ(first->QueryInterface(&kUnknownId, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_FALSE(first->HostReserved4(1, 2, 3));
    EXPECT_EQ(first->HostReserved5(4, 5), 0u);
    EXPECT_EQ(first->Release(), 0u);
    EXPECT_EQ(second->Release(), 0u);
}

// --- pictures ---------------------------------------------------------------------------------------------------

/// Wrapper with the host's knobs against the inner effect with the mapped ones. The pictures differ, or no cross
/// fade would show.
template <class Wrapped, class Inner>
void ComparePictures(const std::vector<ParamValue>& hostKnobs, const std::vector<ParamValue>& innerKnobs)
{
    for (const std::uint32_t format : kFormats)
        for (const InfoFields& info : {AtProgress(0.4), AtProgress(0.65), FieldAtProgress(0.4)}) {
            GuardedPicture first(45, 70, format), second(45, 70, format);
            GuardedPicture out(40, 75, format), expected(40, 75, format);
            first.FillNoise(format + 1);
            second.FillNoise(format + 11);
            FakeHost host(hostKnobs), innerHost(innerKnobs);
            auto* const wrapper = new Wrapped;
            auto* const inner = new Inner;
            EXPECT_TRUE(RenderOnce(*wrapper, &host, first, second, out, info));
            EXPECT_TRUE(RenderOnce(*inner, &innerHost, first, second, expected, info));
            EXPECT_TRUE(Equal(out, expected));
            EXPECT_EQ(wrapper->Release(), 0u);
            EXPECT_EQ(inner->Release(), 0u);
        }
}

/// The values of a preset as a host's knobs.
std::vector<ParamValue> LevelKnobs(const std::vector<float>& values)
{
    std::vector<ParamValue> knobs;
    for (const float value : values)
        knobs.push_back(LevelKnob(value));
    return knobs;
}

TEST(Wrapper, AirBrush_GivesTheInnerEffectsPictures)
{
    for (const PresetRow& preset : kAirBrushPresets) {
        const std::vector<ParamValue> knobs = LevelKnobs(ValuesOf(preset, 2));
        ComparePictures<CWrapAirbrush, CAirbrush>(knobs, knobs);
    }
}

TEST(Wrapper, DetailEnhancer_GivesTheInnerEffectsPicturesAtItsFixedDefinition)
{
    for (const PresetRow& preset : kWrapDetailEnhancerPresets)
        ComparePictures<CWrapDetailEnhancer, CUnsharpMask>({LevelKnob(preset.values[0])},
                                                           LevelKnobs({0.065f, preset.values[0]}));
}

TEST(Wrapper, WaterColor_GivesTheInnerEffectsPicturesWithoutAShift)
{
    for (const PresetRow& preset : kWrapWaterColorPresets) {
        const std::vector<float> v = ValuesOf(preset, 5);
        ComparePictures<CWrapWaterColor, CWaterColor>(LevelKnobs(v),
                                                      LevelKnobs({0.5001f, v[0], v[1], v[2], v[3], v[4]}));
    }
}

TEST(Wrapper, ColorMelt_GivesTheInnerEffectsPicturesAtItsFixedTempoAndCrossFade)
{
    for (const PresetRow& preset : kWrapColorMeltPresets) {
        const std::vector<float> v = ValuesOf(preset, 4);
        ComparePictures<CWrapColorMelt, CColormelt>(LevelKnobs(v),
                                                    LevelKnobs({v[0], v[1], v[2], v[3], 0.675f, 0.63f}));
    }
}

TEST(Wrapper, PaperCollage_GivesTheInnerEffectsPicturesAtItsFixedBalanceTempoAndCrossFade)
{
    for (const PresetRow& preset : kWrapPaperCollagePresets) {
        const float* const v = preset.values;
        const ParamValue foreground = ColorKnob(static_cast<std::uint32_t>(v[4]));
        const ParamValue background = ColorKnob(static_cast<std::uint32_t>(v[5]));
        ComparePictures<CWrapPaperCollage, CEmbossedPaperBlend>(
            {LevelKnob(v[0]), LevelKnob(v[1]), LevelKnob(v[2]), LevelKnob(v[3]), foreground, background,
             LevelKnob(v[6])},
            {LevelKnob(v[0]), LevelKnob(v[1]), LevelKnob(0.495f), foreground, background, LevelKnob(v[6]),
             LevelKnob(v[2]), LevelKnob(v[3]), LevelKnob(0.32f), LevelKnob(0.725f)});
    }
}

TEST(Wrapper, Smear_GivesTheInnerEffectsPicturesAtItsFixedCrossFadeOnTheBlendedBackground)
{
    for (const PresetRow& preset : kWrapSmearPresets) {
        const std::vector<float> v = ValuesOf(preset, 3);
        std::vector<ParamValue> inner = LevelKnobs({v[0], v[1], v[2], 0.595f});
        inner.push_back({3, 0, ParamChoice}); // "Blended"
        ComparePictures<CWrapSmear, CSmear>(LevelKnobs(v), inner);
    }
}

TEST(Wrapper, ActiveCamera_GivesTheInnerEffectsPicturesSynchronizedWithoutTurnOrRest)
{
    for (const PresetRow& preset : kWrapActiveCameraPresets) {
        const std::vector<float> v = ValuesOf(preset, 6);
        std::vector<ParamValue> inner = LevelKnobs({v[0], v[1], 0.0f, v[2], v[3], v[4], 0.0f, v[5]});
        inner.push_back({1, 0, ParamCheck});
        ComparePictures<CWrapActiveCamera, CActivecamera>(LevelKnobs(v), inner);
    }
}

/// The host's knobs that a wrapper asks for while it renders.
template <class Wrapped>
std::vector<KnobRead> ReadsOf(const std::vector<ParamValue>& knobs)
{
    FakeHost host(knobs);
    auto* const wrapper = new Wrapped;
    const GuardedPicture in(8, 8, PF_BGRA8);
    GuardedPicture out(8, 8, PF_BGRA8);
    EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out));
    EXPECT_EQ(wrapper->Release(), 0u);
    return host.Reads();
}

TEST(Wrapper, WaterColor_AsksTheHostInTheInnerEffectsOrder)
{
    EXPECT_EQ(ReadsOf<CWrapWaterColor>(LevelKnobs({0.5f, 0.5f, 0.5f, 0.5f, 0.5f})),
              (std::vector<KnobRead>{
                  {3, ParamFloat}, {2, ParamFloat}, {1, ParamFloat}, {0, ParamFloat}, {4, ParamFloat}}));
}

TEST(Wrapper, ColorMelt_AsksTheHostForItsFourKnobs)
{
    EXPECT_EQ(ReadsOf<CWrapColorMelt>(LevelKnobs({0.5f, 0.5f, 0.5f, 0.5f})),
              (std::vector<KnobRead>{{0, ParamFloat}, {1, ParamFloat}, {2, ParamFloat}, {3, ParamFloat}}));
}

TEST(Wrapper, PaperCollage_AsksTheHostInTheInnerEffectsOrder)
{
    EXPECT_EQ(ReadsOf<CWrapPaperCollage>({LevelKnob(0.5f), LevelKnob(0.5f), LevelKnob(0.5f), LevelKnob(0.5f),
                                          ColorKnob(1), ColorKnob(2), LevelKnob(0.5f)}),
              (std::vector<KnobRead>{{0, ParamFloat},
                                     {1, ParamFloat},
                                     {4, ParamColor},
                                     {5, ParamColor},
                                     {2, ParamFloat},
                                     {6, ParamFloat},
                                     {3, ParamFloat}}));
}

TEST(Wrapper, Smear_AsksTheHostForItsThreeKnobs)
{
    EXPECT_EQ(ReadsOf<CWrapSmear>(LevelKnobs({0.5f, 0.5f, 0.5f})),
              (std::vector<KnobRead>{{0, ParamFloat}, {1, ParamFloat}, {2, ParamFloat}}));
}

TEST(Wrapper, ActiveCamera_AsksTheHostForItsSixKnobs)
{
    EXPECT_EQ(ReadsOf<CWrapActiveCamera>(LevelKnobs({0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f})),
              (std::vector<KnobRead>{{0, ParamFloat},
                                     {1, ParamFloat},
                                     {2, ParamFloat},
                                     {3, ParamFloat},
                                     {4, ParamFloat},
                                     {5, ParamFloat}}));
}

TEST(Wrapper, DetailEnhancer_AsksTheHostForStrengthAlone)
{
    FakeHost host{LevelKnob(0.5f)};
    auto* const wrapper = new CWrapDetailEnhancer;
    const GuardedPicture in(8, 8, PF_BGRA8);
    GuardedPicture out(8, 8, PF_BGRA8);
    EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out));
    EXPECT_EQ(host.Reads(), (std::vector<KnobRead>{{0, ParamFloat}}));
    EXPECT_EQ(wrapper->Release(), 0u);
}

} // namespace
} // namespace kelmora

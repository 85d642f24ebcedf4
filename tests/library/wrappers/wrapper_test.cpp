#include "library/wrappers/wrapper.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "library/wrappers/air_brush.h"
#include "library/wrappers/detail_enhancer.h"
#include "tests/golden/effect_presets.h"
#include "tests/support/fake_host.h"
#include "tests/support/flush_record.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/info.h"

namespace kelmora {
namespace {

constexpr InterfaceId kUnknownId = {0x12345678, 0x1234, 0x1234, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr std::uint32_t kFormats[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};

bool RenderOnce(IVideoEffect& effect, IVideoHost* host, const GuardedPicture& in, GuardedPicture& out,
                bool halfHeight = false)
{
    VideoFrame first = in.Frame(), output = out.Frame();
    RenderInfo info = MakeInfo(halfHeight ? FieldAtProgress(0.0) : InfoFields{});
    return effect.Render(host, &first, nullptr, &output, &info);
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

struct KnobRow {
    const char* name;
    ParamRect rect;
    std::uint32_t hostFlag;
};

void ExpectFace(IVideoEffect& wrapper, const char* name, const std::vector<KnobRow>& knobs,
                const std::vector<PresetRow>& presets)
{
    EXPECT_STREQ(wrapper.GetName(), name);
    EXPECT_EQ(wrapper.GetHelpId(), 961u);
    const auto knobCount = static_cast<std::uint32_t>(knobs.size());
    const auto presetCount = static_cast<std::uint32_t>(presets.size());
    for (std::uint32_t k = 0; k < knobCount; ++k) {
        const FlushRecord<ParamInfo> record(0xCC);
        ASSERT_TRUE(wrapper.GetParamInfo(k, record.Get()));
        const ParamInfo info = record.Read();
        EXPECT_EQ(WordFloat(info.value), 0.5f);
        EXPECT_EQ(info.valueY, 0xCCCCCCCCu);
        EXPECT_EQ(info.kind, ParamFloat);
        EXPECT_EQ(info.scale.min, 0.0f);
        EXPECT_EQ(info.scale.max, 100.0f);
        EXPECT_EQ(info.scale.hostFlag, knobs[k].hostFlag);
        EXPECT_EQ(info.scale.angular, 0xCC);
        EXPECT_STREQ(info.name, knobs[k].name);
        EXPECT_EQ(info.rect, knobs[k].rect);
        EXPECT_EQ(info.shown, 1);
        EXPECT_EQ(info.reserved[0], 0xCC);
    }
    ParamInfo info = {};
    EXPECT_FALSE(wrapper.GetParamInfo(knobCount, &info));
    EXPECT_FALSE(wrapper.GetParamInfo(0xFFFFFFFF, &info));
    for (std::uint32_t p = 0; p < presetCount; ++p) {
        EXPECT_STREQ(wrapper.GetPresetName(p), presets[p].name);
        for (std::uint32_t k = 0; k < knobCount; ++k) {
            ParamValue value = {1, 2, 77};
            EXPECT_TRUE(wrapper.GetPresetValue(p, k, &value));
            EXPECT_EQ(WordFloat(value.value), k == 0 ? presets[p].first : presets[p].second);
            EXPECT_EQ(value.valueY, 0u);
            EXPECT_EQ(value.kind, 77u);
        }
        ParamValue value = {1, 2, 77};
        EXPECT_FALSE(wrapper.GetPresetValue(p, knobCount, &value));
        EXPECT_FALSE(wrapper.GetPresetValue(p, 0, nullptr));
        EXPECT_EQ(value.value, 1u);
    }
    ParamValue value = {};
    EXPECT_EQ(wrapper.GetPresetName(presetCount), nullptr);
    EXPECT_EQ(wrapper.GetPresetName(0xFFFFFFFF), nullptr);
    EXPECT_FALSE(wrapper.GetPresetValue(presetCount, 0, &value));
    EXPECT_FALSE(wrapper.GetPresetValue(0xFFFFFFFF, 0xFFFFFFFF, &value));
}

TEST(Wrapper, AirBrush_ShowsItsOwnTables)
{
    auto* const wrapper = new CWrapAirbrush;
    ExpectFace(*wrapper, "Air Brush", {{"Spray", {0, 0, 198, 30}, 0}, {"Edge", {66, 0, 198, 30}, 0}},
               {std::begin(kAirBrushPresets), std::end(kAirBrushPresets)});
    EXPECT_EQ(wrapper->Release(), 0u);
}

TEST(Wrapper, DetailEnhancer_ShowsOneKnobAndFourPresets)
{
    auto* const wrapper = new CWrapDetailEnhancer;
    ExpectFace(*wrapper, "Detail Enhancer", {{"Strength", {0, 0, 198, 30}, 1}},
               {std::begin(kWrapDetailEnhancerPresets), std::end(kWrapDetailEnhancerPresets)});
    ParamValue value = {};
    EXPECT_FALSE(wrapper->GetPresetValue(0, 1, &value));
    EXPECT_FALSE(wrapper->GetPresetValue(4, 0, &value));
    EXPECT_EQ(wrapper->Release(), 0u);
}

// --- interfaces -------------------------------------------------------------------------------------------

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

// --- pictures ---------------------------------------------------------------------------------------------------

/// Wrapper with the host's knobs against the inner effect with the mapped ones.
template <class Wrapped, class Inner>
void ComparePictures(const std::vector<ParamValue>& hostKnobs, const std::vector<ParamValue>& innerKnobs)
{
    for (const std::uint32_t format : kFormats)
        for (const bool halfHeight : {false, true}) {
            GuardedPicture in(45, 70, format), out(40, 75, format), expected(40, 75, format);
            in.FillNoise(format + 1);
            FakeHost host(hostKnobs), innerHost(innerKnobs);
            auto* const wrapper = new Wrapped;
            auto* const inner = new Inner;
            EXPECT_TRUE(RenderOnce(*wrapper, &host, in, out, halfHeight));
            EXPECT_TRUE(RenderOnce(*inner, &innerHost, in, expected, halfHeight));
            EXPECT_TRUE(Equal(out, expected));
            EXPECT_EQ(wrapper->Release(), 0u);
            EXPECT_EQ(inner->Release(), 0u);
        }
}

TEST(Wrapper, AirBrush_GivesTheInnerEffectsPictures)
{
    for (const PresetRow& preset : kAirBrushPresets) {
        const std::vector<ParamValue> knobs = {LevelKnob(preset.first), LevelKnob(preset.second)};
        ComparePictures<CWrapAirbrush, CAirbrush>(knobs, knobs);
    }
}

TEST(Wrapper, DetailEnhancer_GivesTheInnerEffectsPicturesAtItsFixedDefinition)
{
    for (const PresetRow& preset : kWrapDetailEnhancerPresets)
        ComparePictures<CWrapDetailEnhancer, CUnsharpMask>({LevelKnob(preset.first)},
                                                           {LevelKnob(0.065f), LevelKnob(preset.first)});
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

#include "effects/common/table_effect.h"

#include <cstring>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "effects/fixing/detail_enhancer.h"
#include "effects/painterly/air_brush.h"
#include "tests/golden/effect_presets.h"
#include "tests/support/fake_host.h"
#include "tests/support/flush_record.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/info.h"

namespace kelmora {
namespace {

// --- the tables of the effects -----------------------------------------------------------------------------

struct KnobRow {
    const char* name;
    float initial;
    ParamRect rect;
    bool hasHostFlag; ///< then 1, else left as the caller passed it
};

void ExpectKnobs(IVideoEffect& effect, const std::vector<KnobRow>& rows)
{
    for (std::uint32_t k = 0; k < rows.size(); ++k) {
        const KnobRow& row = rows[k];
        const FlushRecord<ParamInfo> record(0xCC);
        ASSERT_TRUE(effect.GetParamInfo(k, record.Get()));
        const ParamInfo info = record.Read();
        EXPECT_EQ(WordFloat(info.value), row.initial);
        EXPECT_EQ(info.valueY, 0xCCCCCCCCu);
        EXPECT_EQ(info.kind, ParamFloat);
        EXPECT_EQ(info.scale.min, 0.0f);
        EXPECT_EQ(info.scale.max, 100.0f);
        EXPECT_EQ(info.scale.hostFlag, row.hasHostFlag ? 1u : 0xCCCCCCCCu);
        EXPECT_EQ(info.scale.angular, 0xCC);
        EXPECT_STREQ(info.name, row.name);
        EXPECT_EQ(info.rect, row.rect);
        EXPECT_EQ(info.shown, 1);
        EXPECT_EQ(info.reserved[0], 0xCC);
        EXPECT_EQ(info.reserved[2], 0xCC);
    }
    ParamInfo info = {};
    EXPECT_FALSE(effect.GetParamInfo(static_cast<std::uint32_t>(rows.size()), &info));
    EXPECT_FALSE(effect.GetParamInfo(0xFFFFFFFF, &info));
    EXPECT_FALSE(effect.GetParamInfo(0, nullptr));
}

template <std::size_t Count>
void ExpectPresets(IVideoEffect& effect, const PresetRow (&rows)[Count])
{
    for (std::uint32_t p = 0; p < Count; ++p) {
        EXPECT_STREQ(effect.GetPresetName(p), rows[p].name);
        for (std::uint32_t k = 0; k < 2; ++k) {
            ParamValue value = {1, 2, 77};
            EXPECT_TRUE(effect.GetPresetValue(p, k, &value));
            EXPECT_EQ(WordFloat(value.value), rows[p].values[k]);
            EXPECT_EQ(value.valueY, 0u);
            EXPECT_EQ(value.kind, 77u);
        }
        ParamValue untouched = {1, 2, 77};
        EXPECT_FALSE(effect.GetPresetValue(p, 2, &untouched));
        EXPECT_FALSE(effect.GetPresetValue(p, 0xFFFFFFFF, &untouched));
        EXPECT_FALSE(effect.GetPresetValue(p, 0, nullptr));
        EXPECT_EQ(untouched.value, 1u);
    }
    ParamValue value = {};
    EXPECT_EQ(effect.GetPresetName(Count), nullptr);
    EXPECT_EQ(effect.GetPresetName(0xFFFFFFFF), nullptr);
    EXPECT_FALSE(effect.GetPresetValue(Count, 0, &value));
    EXPECT_FALSE(effect.GetPresetValue(0xFFFFFFFF, 0, &value));
}

TEST(TableEffect, AirBrush_HasItsKnobsAndPresets)
{
    auto* const effect = new CAirbrush;
    EXPECT_STREQ(effect->GetName(), "Air Brush");
    EXPECT_EQ(effect->GetHelpId(), 961u);
    ExpectKnobs(*effect, {{"Spray", 0.5f, {0, 0, 198, 30}, false}, {"Edge", 0.5f, {66, 0, 198, 30}, false}});
    ExpectPresets(*effect, kAirBrushPresets);
    EXPECT_EQ(effect->Release(), 0u);
}

TEST(TableEffect, DetailEnhancer_HasItsKnobsPresetsAndToolTips)
{
    auto* const effect = new CUnsharpMask;
    EXPECT_STREQ(effect->GetName(), "Detail Enhancer");
    EXPECT_EQ(effect->GetHelpId(), 961u);
    ExpectKnobs(*effect,
                {{"Definition", 0.5f, {0, 0, 198, 30}, true}, {"Strength", 0.5f, {66, 0, 198, 30}, true}});
    ExpectPresets(*effect, kDetailEnhancerPresets);
    EXPECT_STREQ(effect->GetToolTip(0), "Definition");
    EXPECT_STREQ(effect->GetToolTip(1), "Strength");
    EXPECT_EQ(effect->GetToolTip(2), nullptr);
    EXPECT_EQ(effect->GetToolTip(0xFFFFFFFF), nullptr);
    EXPECT_EQ(effect->Release(), 0u);
}

// --- interfaces -------------------------------------------------------------------------------------------

TEST(TableEffect, QueryInterface_RootAndEffect_GiveTheFirstViewCounted)
{
    auto* const effect = new CAirbrush;
    for (const InterfaceId& id : {IUnknown::id, IVideoEffect::id}) {
        void* found = nullptr;
        EXPECT_EQ(effect->QueryInterface(&id, &found), S_OK);
        EXPECT_EQ(found, static_cast<IVideoEffect*>(effect));
        EXPECT_EQ(effect->Release(), 1u);
    }
    EXPECT_EQ(effect->AddRef(), 2u);
    EXPECT_EQ(effect->Release(), 1u);
    EXPECT_EQ(effect->Release(), 0u);
}

TEST(TableEffect, QueryInterface_OtherInterfaces_StoreNull)
{
    auto* const effect = new CAirbrush;
    for (const InterfaceId& id : {IVideoHost::id, IParamToolTip::id, IMemoryProvider::id}) {
        void* found = effect;
        EXPECT_EQ(effect->QueryInterface(&id, &found), E_NOINTERFACE);
        EXPECT_EQ(found, nullptr);
    }
    EXPECT_EQ(effect->Release(), 0u);
}

TEST(TableEffect, QueryInterface_NullIdOrOut_IsRefused)
{
    auto* const effect = new CAirbrush;
    void* found = effect;
    EXPECT_EQ(effect->QueryInterface(&IUnknown::id, nullptr), E_FAIL);
    EXPECT_EQ(effect->QueryInterface(nullptr, &found), E_FAIL);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(effect->Release(), 0u);
}

TEST(TableEffect, QueryInterface_ToolTips_GiveASecondViewOnTheSameCount)
{
    auto* const effect = new CUnsharpMask;
    void* found = nullptr;
    ASSERT_EQ(effect->QueryInterface(&IParamToolTip::id, &found), S_OK);
    auto* const toolTips = static_cast<IParamToolTip*>(found);
    EXPECT_STREQ(toolTips->GetToolTip(1), "Strength");
    EXPECT_EQ(toolTips->AddRef(), 3u);
    EXPECT_EQ(effect->Release(), 2u);
    // The root is one and the same, whichever view is asked.
    void* root = nullptr;
    EXPECT_EQ(toolTips->QueryInterface(&IUnknown::id, &root), S_OK);
    EXPECT_EQ(root, static_cast<IVideoEffect*>(effect));
    EXPECT_EQ(effect->Release(), 2u);
    EXPECT_EQ(effect->Release(), 1u);
    EXPECT_EQ(toolTips->Release(), 0u);
}

// --- the shield ---------------------------------------------------------------------------------------------

class Throwing final : public TableEffect<kAirBrush> {
protected:
    bool RenderFrame(const RenderCall& call) override
    {
        if (call.info)
            throw std::bad_alloc();
        throw 5;
    }
};

TEST(TableEffect, Render_WhatIsThrown_BecomesFalse)
{
    auto* const effect = new Throwing;
    FakeHost host;
    const GuardedPicture picture(4, 4, PF_BGRA8);
    VideoFrame frame = picture.Frame();
    RenderInfo info = MakeInfo({});
    EXPECT_FALSE(effect->Render(&host, &frame, nullptr, &frame, &info));
    EXPECT_FALSE(effect->Render(&host, &frame, nullptr, &frame, nullptr));
    EXPECT_EQ(effect->Release(), 0u);
}

} // namespace
} // namespace kelmora

#include "library/presets/preset_check.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "library/library_object.h"
#include "tests/support/flush_record.h"

namespace kelmora {
namespace {

/// An effect with knobs of any kinds, owned by the test.
class Effect final : public IVideoEffect {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId*, void** out) override
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    std::uint32_t KELMORA_CALL AddRef() override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t KELMORA_CALL Release() override { return static_cast<std::uint32_t>(--references); }
    const char* KELMORA_CALL GetName() override { return name; }
    std::uint32_t KELMORA_CALL GetHelpId() override { return 0; }
    bool KELMORA_CALL GetParamInfo(std::uint32_t knob, ParamInfo* info) override
    {
        ++questions;
        const bool known = knob < kinds.size();
        if (known || endless)
            info->kind = known ? kinds[knob] : ParamFloat;
        return known || endless;
    }
    bool KELMORA_CALL Render(IVideoHost*, VideoFrame*, VideoFrame*, VideoFrame*, RenderInfo*) override
    {
        return false;
    }
    const char* KELMORA_CALL GetPresetName(std::uint32_t) override { return nullptr; }
    bool KELMORA_CALL GetPresetValue(std::uint32_t, std::uint32_t, ParamValue*) override { return false; }

    const char* name = "An Effect";
    std::vector<std::uint32_t> kinds = {ParamFloat, ParamCheck, ParamPoint};
    bool endless = false;
    int references = 0;
    int questions = 0;
};

/// A library with one effect, or none.
class Library final : public IEffectLibrary {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId*, void** out) override
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }
    const char* KELMORA_CALL GetName() override { return name; }
    IVideoEffect* KELMORA_CALL CreateEffect(std::int32_t effectId) override
    {
        if (effectId != 7)
            return nullptr;
        effect.AddRef();
        return &effect;
    }
    void KELMORA_CALL ShowHelp(void*, std::uint32_t) override {}
    void* KELMORA_CALL LibraryReserved() override { return nullptr; }
    IFrameProcessor* KELMORA_CALL CreateFrameProcessor() override { return nullptr; }
    IPresetSaver* KELMORA_CALL CreatePresetSaver() override { return nullptr; }

    const char* name = "A Library";
    Effect effect;
};

struct PresetCheck : testing::Test {
    PresetCheck()
    {
        std::strcpy(preset.LibraryName, "A Library");
        std::strcpy(preset.EffectName, "An Effect");
        Entries({ParamFloat, ParamCheck, ParamPoint});
    }

    ~PresetCheck() override { EXPECT_EQ(library.effect.references, 0); }

    void Entries(const std::vector<std::uint32_t>& kinds)
    {
        preset.paramCount = static_cast<std::int32_t>(kinds.size());
        for (std::size_t i = 0; i < kinds.size(); ++i)
            preset.params[i].kind = kinds[i];
    }

    bool Fits() { return PresetFits(&preset, &library, 7); }

    PresetData preset = {};
    Library library;
};

TEST_F(PresetCheck, SameNamesAndKinds_Fit)
{
    EXPECT_TRUE(Fits());
}

TEST_F(PresetCheck, NoPreset_DoesNotFit)
{
    EXPECT_FALSE(PresetFits(nullptr, &library, 7));
    EXPECT_FALSE(PresetFits(nullptr, nullptr, 7));
}

TEST_F(PresetCheck, NoLibrary_AnyEntryWillDo)
{
    preset.LibraryName[0] = 'x';
    EXPECT_TRUE(PresetFits(&preset, nullptr, 7));
    preset.paramCount = 0;
    EXPECT_FALSE(PresetFits(&preset, nullptr, 7));
    preset.paramCount = -1;
    EXPECT_FALSE(PresetFits(&preset, nullptr, 7));
}

TEST_F(PresetCheck, EffectThatCannotBeMade_DoesNotFit)
{
    EXPECT_FALSE(PresetFits(&preset, &library, 8));
}

TEST_F(PresetCheck, AnotherLibraryName_DoesNotFit)
{
    for (const char* name : {"", "A Librar", "A Library ", "a library"}) {
        std::strcpy(preset.LibraryName, name);
        EXPECT_FALSE(Fits()) << name;
    }
}

TEST_F(PresetCheck, AnotherEffectName_DoesNotFit)
{
    for (const char* name : {"", "An Effec", "An Effects", "an effect"}) {
        std::strcpy(preset.EffectName, name);
        EXPECT_FALSE(Fits()) << name;
    }
}

TEST_F(PresetCheck, NamesThatAreNull_AreDifferent)
{
    library.name = nullptr;
    preset.LibraryName[0] = '\0';
    EXPECT_FALSE(Fits());
    library.name = "";
    EXPECT_TRUE(Fits());
    library.effect.name = nullptr;
    preset.EffectName[0] = '\0';
    EXPECT_FALSE(Fits());
}

TEST_F(PresetCheck, NameWithoutAnEndMark_IsComparedAsFarAsItsField)
{
    const std::string longest(PresetData::kNameBytes, 'n');
    std::memcpy(preset.LibraryName, longest.data(), longest.size());
    EXPECT_FALSE(Fits());
    library.name = longest.c_str();
    EXPECT_TRUE(Fits());
}

TEST_F(PresetCheck, AnotherKindAnywhere_DoesNotFit)
{
    for (std::size_t i = 0; i < 3; ++i) {
        Entries({ParamFloat, ParamCheck, ParamPoint});
        preset.params[i].kind = ParamColor;
        EXPECT_FALSE(Fits()) << i;
    }
}

TEST_F(PresetCheck, FewerEntriesThanKnobs_DoNotFit)
{
    preset.paramCount = 2;
    EXPECT_FALSE(Fits());
    preset.paramCount = 0;
    EXPECT_FALSE(Fits());
    preset.paramCount = -5;
    EXPECT_FALSE(Fits());
}

TEST_F(PresetCheck, MoreEntriesThanKnobs_Fit)
{
    Entries({ParamFloat, ParamCheck, ParamPoint, 12345});
    EXPECT_TRUE(Fits());
}

TEST_F(PresetCheck, EffectWithoutKnobs_FitsWithoutEntries)
{
    library.effect.kinds.clear();
    preset.paramCount = 0;
    EXPECT_TRUE(Fits());
}

TEST_F(PresetCheck, EffectWhoseKnobsNeverEnd_DoesNotFitAndTheWalkEnds)
{
    library.effect.kinds.clear();
    library.effect.endless = true;
    Entries(std::vector<std::uint32_t>(100, ParamFloat));
    EXPECT_FALSE(Fits());
    EXPECT_EQ(library.effect.questions, 101);
    preset.paramCount = 0x7FFFFFFF; // more than there is room for
    EXPECT_FALSE(Fits());
    EXPECT_EQ(library.effect.questions, 202);
}

TEST_F(PresetCheck, RecordAtTheEndOfMemory_IsReadNoFurther)
{
    FlushRecord<PresetData> flush(0xFF);
    flush.Freeze();
    EXPECT_FALSE(PresetFits(flush.Get(), &library, 7));
    EXPECT_FALSE(PresetFits(flush.Get(), nullptr, 7));
}

TEST(PresetCheckOfThisLibrary, WaterColor_FitsItsOwnKnobs)
{
    IEffectLibrary* const library = new CKelmora;
    PresetData preset = {};
    std::strcpy(preset.LibraryName, "Larkvee Kelmora");
    std::strcpy(preset.EffectName, "Water Color");
    IVideoEffect* const effect = library->CreateEffect(EffectWaterColor);
    ASSERT_NE(effect, nullptr);
    ParamInfo info = {};
    for (std::uint32_t knob = 0; effect->GetParamInfo(knob, &info); ++knob)
        preset.params[preset.paramCount++].kind = info.kind;
    effect->Release();
    ASSERT_GT(preset.paramCount, 0);
    EXPECT_TRUE(PresetFits(&preset, library, EffectWaterColor));
    EXPECT_FALSE(PresetFits(&preset, library, EffectAirBrush));
    EXPECT_FALSE(PresetFits(&preset, library, 99));
    library->Release();
}

} // namespace
} // namespace kelmora

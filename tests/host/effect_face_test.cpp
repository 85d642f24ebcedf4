#include "host/effect_face.h"

#include <gtest/gtest.h>

#include "host/failure.h"
#include "host/library_file.h"
#include "tests/host/fake_library_file.h"

namespace kelmora::host {
namespace {

/// An effect whose knobs or presets are what a test makes them. Lives as long as the test.
class PlainEffect : public IVideoEffect {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId*, void**) override { return E_NOINTERFACE; }
    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }
    const char* KELMORA_CALL GetName() override { return name; }
    std::uint32_t KELMORA_CALL GetHelpId() override { return 961; }
    bool KELMORA_CALL GetParamInfo(std::uint32_t knob, ParamInfo* info) override
    {
        *info = record;
        return knob < knobs;
    }
    bool KELMORA_CALL Render(IVideoHost*, VideoFrame*, VideoFrame*, VideoFrame*, RenderInfo*) override
    {
        return false;
    }
    const char* KELMORA_CALL GetPresetName(std::uint32_t preset) override
    {
        return preset < presets ? "Preset" : nullptr;
    }
    bool KELMORA_CALL GetPresetValue(std::uint32_t, std::uint32_t, ParamValue*) override
    {
        return givesValues;
    }

    const char* name = "Plain";
    ParamInfo record = {};
    std::uint32_t knobs = 1;
    std::uint32_t presets = 0;
    bool givesValues = true;
};

TEST(ReadFace, EffectWithAKnobOfEachKind_HasThemAll)
{
    const LibraryFile file(kFakeLibrary);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const EffectFace face = ReadFace(106, *MakeEffect(*library, 106));
    EXPECT_EQ(face.number, 106);
    EXPECT_EQ(face.name, "Fake Filter");
    EXPECT_EQ(face.slug, "fake-filter");
    EXPECT_EQ(face.helpId, 77u);
    EXPECT_EQ(face.pictures, 1);

    ASSERT_EQ(face.knobs.size(), 5u);
    EXPECT_EQ(face.knobs[0].name, "Level");
    EXPECT_EQ(face.knobs[0].kind, ParamFloat);
    EXPECT_EQ(face.knobs[0].standard.value, FloatWord(0.25f));
    EXPECT_EQ(face.knobs[0].max, 100.0f);
    EXPECT_EQ(face.knobs[0].hostFlag, 1u);
    EXPECT_FALSE(face.knobs[0].angular);
    EXPECT_EQ(face.knobs[0].rect, (ParamRect{0, 10, 198, 30}));
    EXPECT_EQ(face.knobs[1].choices, (std::vector<std::string>{"Left", "Right Side"}));
    EXPECT_EQ(face.knobs[2].kind, ParamColor);
    EXPECT_EQ(face.knobs[3].kind, ParamCheck);
    EXPECT_EQ(face.knobs[4].kind, ParamPoint);

    ASSERT_EQ(face.presets.size(), 2u);
    EXPECT_EQ(face.presets[0].name, "Half Light");
    ASSERT_EQ(face.presets[1].values.size(), 5u);
    EXPECT_EQ(face.presets[1].values[0].value, FloatWord(1.0f));
    EXPECT_EQ(face.presets[1].values[1].value, 1u);
}

TEST(ReadFace, Transition_TakesTwoPictures)
{
    const LibraryFile file(kFakeLibrary);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    EXPECT_EQ(ReadFace(102, *MakeEffect(*library, 102)).pictures, 2);
}

TEST(ReadFace, KnobsWithoutEnd_AreGivenUp)
{
    PlainEffect effect;
    effect.knobs = kMostKnobs;
    EXPECT_EQ(ReadFace(106, effect).knobs.size(), kMostKnobs);
    effect.knobs = kMostKnobs + 1;
    EXPECT_THROW(ReadFace(106, effect), Failure);
}

TEST(ReadFace, PresetsWithoutEnd_AreGivenUp)
{
    PlainEffect effect;
    effect.presets = kMostPresets + 1;
    EXPECT_THROW(ReadFace(106, effect), Failure);
}

TEST(ReadFace, PresetWithoutAValue_IsRefused)
{
    PlainEffect effect;
    effect.presets = 1;
    effect.givesValues = false;
    EXPECT_THROW(ReadFace(106, effect), Failure);
}

TEST(ReadFace, EffectWithoutName_IsRefused)
{
    PlainEffect effect;
    effect.name = nullptr;
    EXPECT_THROW(ReadFace(106, effect), Failure);
}

TEST(ReadFace, NamesThatFillTheirFields_AreCutThere)
{
    PlainEffect effect;
    std::fill(std::begin(effect.record.name), std::end(effect.record.name), 'n');
    effect.record.kind = ParamChoice;
    effect.record.choice.choiceCount = 2000000000; // not to be believed
    std::fill(std::begin(effect.record.choice.choiceNames[0]), std::end(effect.record.choice.choiceNames[0]),
              'c');
    const EffectFace face = ReadFace(106, effect);
    EXPECT_EQ(face.knobs[0].name, std::string(40, 'n'));
    EXPECT_EQ(face.knobs[0].choices.size(), 10u);
    EXPECT_EQ(face.knobs[0].choices[0], std::string(20, 'c'));
}

TEST(ReadFace, NegativeNumberOfChoices_CountsAsNone)
{
    PlainEffect effect;
    effect.record.kind = ParamChoice;
    effect.record.choice.choiceCount = -1;
    EXPECT_TRUE(ReadFace(106, effect).knobs[0].choices.empty());
}

TEST(IsTransition, OnlyTheFirstFiveNumbers_BlendTwoPictures)
{
    for (const std::int32_t number : {100, 101, 102, 103, 104})
        EXPECT_TRUE(IsTransition(number)) << number;
    for (const std::int32_t number : {99, 105, 106, 107, 108, 109, 110})
        EXPECT_FALSE(IsTransition(number)) << number;
}

TEST(EffectFace, Defaults_AreOnePerKnob)
{
    EffectFace face;
    face.knobs.resize(2);
    face.knobs[1].standard = {7, 8, ParamPoint};
    const std::vector<ParamValue> values = face.Defaults();
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[1].value, 7u);
    EXPECT_EQ(values[1].valueY, 8u);
}

} // namespace
} // namespace kelmora::host

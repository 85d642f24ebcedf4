#include "host/preset_file_choice.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "host/failure.h"
#include "tests/platform/file_content.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

EffectFace TwoKnobs()
{
    EffectFace face;
    face.name = "Two Knobs";
    face.knobs.resize(2);
    face.knobs[0].kind = ParamFloat;
    face.knobs[1].kind = ParamCheck;
    return face;
}

PresetData PresetOf(const char* effect, std::vector<ParamValue> values)
{
    PresetData preset = {};
    std::strcpy(preset.EffectName, effect);
    std::copy(values.begin(), values.end(), preset.params);
    preset.paramCount = static_cast<std::int32_t>(values.size());
    return preset;
}

const ParamValue kLevel = {FloatWord(0.25f), 0, ParamFloat};
const ParamValue kOn = {1, 0, ParamCheck};

std::string Refusal(const PresetData& preset)
{
    try {
        ValuesFor(TwoKnobs(), preset, "FILE");
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Failed);
        return failure.what();
    }
    return "none";
}

TEST(PresetFileChoice, WhatIsWritten_IsReadAgain)
{
    const TestFolder folder;
    const std::string path = Utf8(folder.Path() / u"\u0101.fxpklmg");
    WritePresetFile(path, PresetOf("Two Knobs", {kLevel, kOn}));
    EXPECT_NE(FileContent(folder.Path() / u"\u0101.fxpklmg").find("EffectName=\"Two Knobs\""),
              std::string::npos);
    const std::vector<ParamValue> values = PresetFileValues(TwoKnobs(), path);
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0].value, FloatWord(0.25f));
    EXPECT_EQ(values[1].value & 0xFF, 1u); // the low byte alone is a check's
}

TEST(PresetFileChoice, EntriesBehindTheKnobs_AreLeftOut)
{
    EXPECT_EQ(ValuesFor(TwoKnobs(), PresetOf("Two Knobs", {kLevel, kOn, kLevel}), "FILE").size(), 2u);
}

TEST(PresetFileChoice, PresetsOfAnotherEffect_AreRefused)
{
    EXPECT_EQ(Refusal(PresetOf("two knobs", {kLevel, kOn})),
              "FILE is a preset of \"two knobs\", not of \"Two Knobs\"");
    EXPECT_EQ(Refusal(PresetOf("Two Knobs", {kLevel})), "FILE has not the knobs of \"Two Knobs\"");
    EXPECT_EQ(Refusal(PresetOf("Two Knobs", {kOn, kLevel})), "FILE has not the knobs of \"Two Knobs\"");
}

TEST(PresetFileChoice, FilesThatCannotBeReadOrWritten_AreFailures)
{
    const TestFolder folder;
    TestFolder::Write(folder.Path() / "text", "no preset");
    EXPECT_THROW(ReadPresetFile(Utf8(folder.Path() / "text")), Failure);
    EXPECT_THROW(ReadPresetFile(Utf8(folder.Path() / "missing")), Failure);
    EXPECT_THROW(ReadPresetFile(""), Failure);
    EXPECT_THROW(WritePresetFile(Utf8(folder.Path()), PresetOf("Two Knobs", {kLevel})), Failure);
}

} // namespace
} // namespace kelmora::host

// The preset saver reads and writes numbers, in whatever floating-point arithmetic the host's thread happens to be.

#include <algorithm>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "library/library_object.h"
#include "tests/library/seams.h"
#include "tests/platform/file_content.h"
#include "tests/platform/test_folder.h"
#include "tests/support/float_state.h"

namespace kelmora {
namespace {

TEST(FloatGuard, PresetSaver_WhateverTheHostsArithmetic_WritesAndReadsTheSameNumbersAndPutsItBack)
{
    // 1/128 lies half way between two texts, the others between two floats.
    constexpr float levels[] = {0.0078125f, 0.1f, 0.7f, 1e-40f, 3.4e38f};
    const std::string elements = "    <parameter type=\"2\" value=\"0.007812\" />\n"
                                 "    <parameter type=\"2\" value=\"0.100000\" />\n"
                                 "    <parameter type=\"2\" value=\"0.700000\" />\n"
                                 "    <parameter type=\"2\" value=\"0.000000\" />\n";
    const TestFolder folder;
    NextDialogAnswer() = {true, (folder.Path() / "look.fxpklmg").u16string()};
    IEffectLibrary* const library = new CKelmora;
    IPresetSaver* const saver = library->CreatePresetSaver();
    for (const FloatHabit& habit : kFloatHabits) {
        SCOPED_TRACE(habit.name);
        PresetData saved = {}, loaded = {};
        for (const float level : levels)
            saved.params[saved.paramCount++] = {FloatWord(level), 0, ParamFloat};
        std::int32_t saveResult = 1, loadResult = 1;
        EXPECT_EQ(AfterWorkIn(habit.state,
                              [&] {
                                  saveResult =
                                      saver->SavePreset(nullptr, library, EffectAirBrush, &saved, nullptr);
                              }),
                  habit.state);
        EXPECT_EQ(saveResult, 0);
        EXPECT_NE(FileContent(folder.Path() / "look.fxpklmg").find(elements), std::string::npos);
        EXPECT_EQ(AfterWorkIn(habit.state,
                              [&] {
                                  loadResult =
                                      saver->LoadPreset(nullptr, library, EffectAirBrush, &loaded, nullptr);
                              }),
                  habit.state);
        EXPECT_EQ(loadResult, 0);
        ASSERT_EQ(loaded.paramCount, 5);
        EXPECT_EQ(loaded.params[0].value, FloatWord(0.007812f));
        EXPECT_EQ(loaded.params[1].value, FloatWord(0.1f));
        EXPECT_EQ(loaded.params[2].value, FloatWord(0.7f));
        EXPECT_EQ(loaded.params[3].value, 0u);
        EXPECT_EQ(loaded.params[4].value, FloatWord(3.4e38f));
    }
    EXPECT_EQ(saver->Release(), 0u);
    EXPECT_EQ(library->Release(), 0u);
    NextDialogAnswer() = {};
    ShownDialogs().clear();
    ShownMessages().clear();
}

} // namespace
} // namespace kelmora

#include "host/commands/presets.h"

#include <gtest/gtest.h>

#include "tests/host/fake_library_file.h"
#include "tests/host/program_run.h"
#include "tests/platform/file_content.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

// The preset "Half Light" of the fake filter.
constexpr char kHalfLight[] = R"(<?xml version="1.0" standalone="no" ?>
<!-- Effect's Preset File -->
<Preset Name="Mine" LibraryName="Fake Library" EffectName="Fake Filter">
    <parameter type="2" value="0.390000" />
    <parameter type="1" value="0" />
    <parameter type="3" value="16777215" />
    <parameter type="4" value="1" />
    <parameter type="0" x="0.250000" y="0.000000" />
</Preset>
)";

struct RunPresetsTest : testing::Test {
    ProgramRun Presets(const std::string& action, std::vector<std::string> more = {}) const
    {
        more.insert(more.begin(), {"presets", action, Path(), "--library", kFakeLibrary});
        return RunWith(more);
    }

    std::string Path() const { return Utf8(File()); }
    std::filesystem::path File() const { return folder.Path() / "file.fxpklmg"; }

    const TestFolder folder;
};

TEST_F(RunPresetsTest, Save_WritesThePresetAndTheSettingsOverIt)
{
    const ProgramRun run =
        Presets("save", {"--effect", "fake-filter", "--preset", "Half Light", "--name", "Mine"});
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(FileContent(File()), kHalfLight);
    EXPECT_EQ(Presets("save", {"--effect", "106", "--set", "Level=0.5", "--force"}).code, 0);
    const std::string text = FileContent(File());
    EXPECT_NE(text.find("Name=\"file\""), text.npos) << text;
    EXPECT_NE(text.find("type=\"2\" value=\"0.500000\""), text.npos) << text;
}

TEST_F(RunPresetsTest, Save_WithoutForce_LeavesTheFileThatIsThere)
{
    TestFolder::Write(File(), "old");
    const ProgramRun run = Presets("save", {"--effect", "106"});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("--force"), std::string::npos) << run.errors;
    EXPECT_EQ(FileContent(File()), "old");
}

TEST_F(RunPresetsTest, Save_WithoutAnEffectOrWithTooLongAName_IsAUsageError)
{
    EXPECT_EQ(Presets("save").code, 2);
    EXPECT_EQ(Presets("save", {"--effect", "106", "--name", std::string(260, 'n')}).code, 2);
    EXPECT_FALSE(std::filesystem::exists(File()));
    EXPECT_EQ(Presets("save", {"--effect", "106", "--name", std::string(259, 'n')}).code, 0);
    EXPECT_EQ(Presets("destroy").code, 2);
}

TEST_F(RunPresetsTest, Load_WritesTheKnobsAsSettings)
{
    TestFolder::Write(File(), kHalfLight);
    const ProgramRun run = Presets("load");
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(run.out, "Level=0.39\nMode=Left\nTint=#ffffff\nNegative=on\nMiddle=0.25,0\n");
}

TEST_F(RunPresetsTest, Load_OfAnotherEffectOrLibrary_Fails)
{
    TestFolder::Write(File(), kHalfLight);
    ProgramRun run = Presets("load", {"--effect", "102"});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("is a preset of \"Fake Filter\", not of \"Fake Blend\""), std::string::npos);
    std::string other = kHalfLight;
    other.replace(other.find("Fake Library"), 4, "Some");
    TestFolder::Write(File(), other);
    run = Presets("load");
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("is a preset of the library \"Some Library\""), std::string::npos);
    EXPECT_EQ(run.out, "");
}

TEST_F(RunPresetsTest, Show_TellsWhatTheFileHolds)
{
    TestFolder::Write(File(), kHalfLight);
    const ProgramRun run = Presets("show");
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(run.out, R"(name     Mine
library  Fake Library
effect   Fake Filter
float    0.39
choice   0
color    #ffffff
check    on
point    0.25,0
)");
}

TEST_F(RunPresetsTest, ShowAndLoad_OfNoPreset_Fail)
{
    for (const char* const action : {"show", "load"}) {
        const ProgramRun run = Presets(action);
        EXPECT_EQ(run.code, 1);
        EXPECT_NE(run.errors.find("is no preset file"), std::string::npos) << run.errors;
    }
}

TEST_F(RunPresetsTest, PresetFile_SetsTheKnobsOfOtherCommands)
{
    TestFolder::Write(File(), kHalfLight);
    const std::filesystem::path copy = folder.Path() / "copy";
    const ProgramRun run = RunWith({"presets", "save", Utf8(copy), "--effect", "106", "--preset-file", Path(),
                                    "--set", "Negative=off", "--name", "Mine", "--library", kFakeLibrary});
    EXPECT_EQ(run.code, 0) << run.errors;
    std::string expected = kHalfLight;
    expected.replace(expected.find("type=\"4\" value=\"1\""), 18, "type=\"4\" value=\"0\"");
    EXPECT_EQ(FileContent(copy), expected);
    EXPECT_EQ(Presets("save", {"--effect", "106", "--preset", "Night", "--preset-file", Path()}).code, 2);
}

} // namespace
} // namespace kelmora::host

#include "host/commands/render.h"

#include <gtest/gtest.h>

#include "host/pictures/picture_file.h"
#include "tests/host/fake_library_file.h"
#include "tests/host/program_run.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

/// A folder with a picture "in.png" of one pixel.
class RunRenderTest : public testing::Test {
protected:
    void SetUp() override { WritePicture(Path("in.png"), {1, 1, {51, 102, 0, 200}}, Overwrite::No); }

    std::string Path(const std::string& name) const { return Utf8(m_folder.Path() / name); }

    ProgramRun Render(const std::string& effect, std::vector<std::string> more) const
    {
        more.insert(more.begin(), {"render", effect, Path("in.png"), "--library", kFakeLibrary});
        return RunWith(more);
    }

    /// Renders to "out.png" and reads it.
    std::vector<std::uint8_t> Pixels(const std::string& effect, std::vector<std::string> more) const
    {
        more.insert(more.end(), {"-o", Path("out.png"), "--force"});
        const ProgramRun run = Render(effect, more);
        EXPECT_EQ(run.code, 0) << run.errors;
        EXPECT_EQ(run.out, "");
        return run.code == 0 ? ReadPicture(Path("out.png")).rgba : std::vector<std::uint8_t>();
    }

    std::size_t Files() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_folder.Path()),
                                                      std::filesystem::directory_iterator()));
    }

private:
    TestFolder m_folder;
};

using Bytes = std::vector<std::uint8_t>;

TEST_F(RunRenderTest, Defaults_AreTheKnobsOwn)
{
    // A quarter of the way to 255: 51 + 51, 102 + 38.25, 0 + 63.75.
    EXPECT_EQ(Pixels("106", {}), (Bytes{102, 140, 64, 200}));
}

TEST_F(RunRenderTest, Setting_ReplacesTheDefault)
{
    EXPECT_EQ(Pixels("fake-filter", {"--set", "Level=0.5"}), (Bytes{153, 179, 128, 200}));
    EXPECT_EQ(Pixels("fake-filter", {"--set", "level=50u"}), (Bytes{153, 179, 128, 200}));
    EXPECT_EQ(Pixels("fake-filter", {"--set", "Level=0", "--set", "Negative=on"}),
              (Bytes{204, 153, 255, 200}));
}

TEST_F(RunRenderTest, Preset_SetsAllKnobs_AndASettingComesOverIt)
{
    EXPECT_EQ(Pixels("106", {"--preset", "night"}), (Bytes{255, 255, 255, 200}));
    EXPECT_EQ(Pixels("106", {"--set", "Level=0", "--preset", "Half Light"}), (Bytes{204, 153, 255, 200}));
}

TEST_F(RunRenderTest, EveryFormat_GivesTheSamePicture)
{
    for (const char* const format : {"bgra8", "argb8", "bgra32f", "argb32f"})
        EXPECT_EQ(Pixels("106", {"--set", "Level=0.5", "--format", format}), (Bytes{153, 179, 128, 200}))
            << format;
}

TEST_F(RunRenderTest, Transition_IsOnItsWay)
{
    WritePicture(Path("second.png"), {1, 1, {251, 102, 100, 0}}, Overwrite::No);
    // A quarter of the way: 51 + 50, 102, 25, 200 - 50.
    EXPECT_EQ(Pixels("102", {"--to", Path("second.png"), "--progress", "0.25"}), (Bytes{101, 102, 25, 150}));
    EXPECT_EQ(Pixels("102", {"--to", Path("second.png"), "--progress", "1"}), (Bytes{251, 102, 100, 0}));
}

TEST_F(RunRenderTest, TransitionWithoutSecondPicture_IsUsage)
{
    const ProgramRun run = Render("102", {"-o", Path("out.png")});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.errors, "kelmora: \"Fake Blend\" blends two pictures: give the second one with --to\n");
}

TEST_F(RunRenderTest, FilterWithSecondPicture_IsUsage)
{
    EXPECT_EQ(Render("106", {"-o", Path("out.png"), "--to", Path("in.png")}).code, 2);
}

TEST_F(RunRenderTest, ExistingOutput_StaysWithoutForce)
{
    WritePicture(Path("out.png"), {1, 1, {1, 2, 3, 4}}, Overwrite::No);
    const ProgramRun run = Render("106", {"-o", Path("out.png")});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kelmora: " + Path("out.png") + " is already there; --force replaces it\n");
    EXPECT_EQ(ReadPicture(Path("out.png")).rgba, (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(Files(), 2u);
}

TEST_F(RunRenderTest, InputAsOutput_StaysWithoutForce)
{
    EXPECT_EQ(Render("106", {"-o", Path("in.png")}).code, 1);
    EXPECT_EQ(ReadPicture(Path("in.png")).rgba, (Bytes{51, 102, 0, 200}));
}

TEST_F(RunRenderTest, UnreadablePicture_IsCode1AndLeavesNoOutput)
{
    const ProgramRun run =
        RunWith({"render", "106", Path("none.png"), "-o", Path("out.png"), "--library", kFakeLibrary});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.errors.starts_with("kelmora: cannot read " + Path("none.png"))) << run.errors;
    EXPECT_EQ(Files(), 1u);
}

TEST_F(RunRenderTest, OutputInNoFolder_IsCode1)
{
    const ProgramRun run = Render("106", {"-o", Path("missing/out.png")});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.errors.starts_with("kelmora: cannot write ")) << run.errors;
}

TEST_F(RunRenderTest, OutputOfUnknownKind_IsUsage)
{
    EXPECT_EQ(Render("106", {"-o", Path("out.gif")}).code, 2);
}

TEST_F(RunRenderTest, UnknownNames_AreCode3)
{
    EXPECT_EQ(Render("107", {"-o", Path("out.png")}).code, 3);
    EXPECT_EQ(Render("106", {"-o", Path("out.png"), "--preset", "Dusk"}).code, 3);
    EXPECT_EQ(Render("106", {"-o", Path("out.png"), "--set", "Colour=1"}).code, 3);
    EXPECT_EQ(Files(), 1u);
}

TEST_F(RunRenderTest, BadValue_IsUsage)
{
    EXPECT_EQ(Render("106", {"-o", Path("out.png"), "--set", "Level=much"}).code, 2);
    EXPECT_EQ(Render("106", {"-o", Path("out.png"), "--set", "Level"}).code, 2);
}

} // namespace
} // namespace kelmora::host

#include "host/commands/sweep.h"

#include <gtest/gtest.h>

#include "host/pictures/picture_file.h"
#include "tests/host/fake_library_file.h"
#include "tests/host/program_run.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

/// A folder with two pictures of 2 by 2 pixels, black "a.png" and "b.png" of (100, 200, 40).
class RunSweepTest : public testing::Test {
protected:
    void SetUp() override
    {
        Write("a.png", {0, 0, 0, 255});
        Write("b.png", {100, 200, 40, 255});
    }

    std::string Path(const std::string& name) const { return Utf8(m_folder.Path() / name); }

    ProgramRun Sweep(const std::string& effect, std::vector<std::string> more) const
    {
        more.insert(more.begin(), {"sweep", effect, Path("a.png"), "--library", kFakeLibrary});
        return RunWith(more);
    }

    /// Sweeps from "a.png" to "b.png" into "out.png" and reads it.
    Picture Sheet(std::vector<std::string> more) const
    {
        more.insert(more.end(), {"--to", Path("b.png"), "-o", Path("out.png"), "--force"});
        const ProgramRun run = Sweep("fake-blend", more);
        EXPECT_EQ(run.code, 0) << run.errors;
        EXPECT_EQ(run.out, "");
        return run.code == 0 ? ReadPicture(Path("out.png")) : Picture();
    }

    bool HasOutput() const { return std::filesystem::exists(m_folder.Path() / "out.png"); }

private:
    void Write(const std::string& name, const std::vector<std::uint8_t>& pixel) const
    {
        Picture picture{2, 2, {}};
        for (int i = 0; i < 4; ++i)
            picture.rgba.insert(picture.rgba.end(), pixel.begin(), pixel.end());
        WritePicture(Path(name), picture, Overwrite::No);
    }

    TestFolder m_folder;
};

using Reds = std::vector<int>;

/// The red of every pixel in a row.
Reds RowOf(const Picture& picture, std::int32_t row)
{
    Reds reds;
    for (std::int32_t x = 0; x < picture.width; ++x)
        reds.push_back(
            picture.rgba[static_cast<std::size_t>(row * picture.width + x) * Picture::kPixelBytes]);
    return reds;
}

TEST_F(RunSweepTest, Defaults_AreElevenFramesInOneRow)
{
    const Picture sheet = Sheet({});
    EXPECT_EQ(sheet.width, 22);
    EXPECT_EQ(sheet.height, 2);
    const Reds tenths = {0,  0,  10, 10, 20, 20, 30, 30, 40, 40,  50,
                         50, 60, 60, 70, 70, 80, 80, 90, 90, 100, 100};
    EXPECT_EQ(RowOf(sheet, 0), tenths);
    EXPECT_EQ(RowOf(sheet, 1), tenths);
}

TEST_F(RunSweepTest, Steps_AreSpacedEvenlyFromEndToEnd)
{
    EXPECT_EQ(RowOf(Sheet({"--steps", "2"}), 0), (Reds{0, 0, 100, 100}));
    EXPECT_EQ(RowOf(Sheet({"--steps", "5"}), 0), (Reds{0, 0, 25, 25, 50, 50, 75, 75, 100, 100}));
}

TEST_F(RunSweepTest, Columns_BreakTheRow_AndPlacesLeftAreClear)
{
    const Picture sheet = Sheet({"--steps", "5", "--columns", "3"});
    EXPECT_EQ(sheet.width, 6);
    EXPECT_EQ(sheet.height, 4);
    EXPECT_EQ(RowOf(sheet, 1), (Reds{0, 0, 25, 25, 50, 50}));
    EXPECT_EQ(RowOf(sheet, 2), (Reds{75, 75, 100, 100, 0, 0}));
    EXPECT_EQ(sheet.rgba.back(), 0);
}

TEST_F(RunSweepTest, MoreColumnsThanFrames_LeaveNoPlaceEmpty)
{
    EXPECT_EQ(Sheet({"--steps", "3", "--columns", "9"}).width, 6);
}

TEST_F(RunSweepTest, Width_ShrinksEachFrame_AndNeverEnlarges)
{
    const Picture small = Sheet({"--steps", "3", "--width", "1"});
    EXPECT_EQ(small, (Picture{3, 1, {0, 0, 0, 255, 50, 100, 20, 255, 100, 200, 40, 255}}));
    EXPECT_EQ(Sheet({"--steps", "3", "--width", "4"}).width, 6);
}

TEST_F(RunSweepTest, EveryFormat_GivesTheSameSheet)
{
    const Picture expected = Sheet({"--steps", "5"});
    for (const char* const format : {"argb8", "bgra32f", "argb32f"})
        EXPECT_EQ(Sheet({"--steps", "5", "--format", format}), expected) << format;
}

TEST_F(RunSweepTest, Filter_IsUsageAndNamesRender)
{
    const std::string expected =
        "kelmora: \"Fake Filter\" takes one picture and leads nowhere: \"kelmora render\" renders it\n";
    const ProgramRun without = Sweep("106", {"-o", Path("out.png")});
    EXPECT_EQ(without.code, 2);
    EXPECT_EQ(without.errors, expected);
    const ProgramRun with = Sweep("106", {"-o", Path("out.png"), "--to", Path("b.png")});
    EXPECT_EQ(with.code, 2);
    EXPECT_EQ(with.errors, expected);
    EXPECT_FALSE(HasOutput());
}

TEST_F(RunSweepTest, MissingSecondPicture_IsUsage)
{
    const ProgramRun run = Sweep("102", {"-o", Path("out.png")});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.errors, "kelmora: \"Fake Blend\" blends two pictures: give the second one with --to\n");
}

TEST_F(RunSweepTest, UnreadableSecondPicture_IsCode1AndLeavesNoOutput)
{
    EXPECT_EQ(Sweep("102", {"-o", Path("out.png"), "--to", Path("none.png")}).code, 1);
    EXPECT_FALSE(HasOutput());
}

TEST_F(RunSweepTest, ExistingOutput_StaysWithoutForce)
{
    Sheet({"--steps", "2"});
    EXPECT_EQ(Sweep("102", {"-o", Path("out.png"), "--to", Path("b.png")}).code, 1);
    EXPECT_EQ(ReadPicture(Path("out.png")).width, 4);
}

TEST_F(RunSweepTest, UnknownNames_AreCode3)
{
    EXPECT_EQ(Sweep("107", {"-o", Path("out.png"), "--to", Path("b.png")}).code, 3);
    EXPECT_EQ(Sweep("102", {"-o", Path("out.png"), "--to", Path("b.png"), "--preset", "Dusk"}).code, 3);
    EXPECT_EQ(Sweep("102", {"-o", Path("out.png"), "--to", Path("b.png"), "--set", "Colour=1"}).code, 3);
}

TEST_F(RunSweepTest, SheetTooWideForAJpegFile_IsCode1BeforeTheWork)
{
    WritePicture(Path("wide.png"), {3000, 1, std::vector<std::uint8_t>(3000 * Picture::kPixelBytes)},
                 Overwrite::No);
    const ProgramRun run = RunWith({"sweep", "102", Path("wide.png"), "--to", Path("b.png"), "-o",
                                    Path("out.jpg"), "--steps", "30", "--library", kFakeLibrary});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors,
              "kelmora: cannot write " + Path("out.jpg")
                  + ": 90000 x 1 pixels are too many for such a file\n");
}

} // namespace
} // namespace kelmora::host

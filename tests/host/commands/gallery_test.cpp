#include "host/commands/gallery.h"

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "host/pictures/picture_file.h"
#include "tests/host/fake_library_file.h"
#include "tests/host/program_run.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

/// A folder with two pictures of 4 by 2 pixels, black "a.png" and white "b.png".
class RunGalleryTest : public testing::Test {
protected:
    void SetUp() override
    {
        for (const auto& [name, level] : {std::pair("a.png", 0), std::pair("b.png", 255)}) {
            Picture picture{4, 2, std::vector<std::uint8_t>(32, static_cast<std::uint8_t>(level))};
            for (std::size_t alpha = 3; alpha < picture.rgba.size(); alpha += 4)
                picture.rgba[alpha] = 255;
            WritePicture(Path(name), picture, Overwrite::No);
        }
    }

    std::string Path(const std::string& name) const { return Utf8(m_folder.Path() / name); }

    ProgramRun Gallery(std::vector<std::string> more) const
    {
        more.insert(more.begin(), {"gallery", Path("a.png"), Path("b.png"), "--library", kFakeLibrary});
        more.insert(more.end(), {"-o", Path("page.html")});
        return RunWith(more);
    }

    std::string PageText() const
    {
        std::ostringstream text;
        text << std::ifstream(m_folder.Path() / "page.html", std::ios::binary).rdbuf();
        return text.str();
    }

    bool HasPage() const { return std::filesystem::exists(m_folder.Path() / "page.html"); }

private:
    TestFolder m_folder;
};

std::size_t CountOf(const std::string& part, const std::string& text)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

TEST_F(RunGalleryTest, EveryEffectWithEveryPreset_IsOnThePage)
{
    const ProgramRun run = Gallery({});
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_TRUE(run.out.starts_with("2 effects with 4 presets, ")) << run.out;
    const std::string page = PageText();
    EXPECT_EQ(CountOf("<section ", page), 2u);
    EXPECT_EQ(CountOf("<h2 id=\"fake-blend-name\">Fake Blend</h2>", page), 1u);
    EXPECT_EQ(CountOf("<h2 id=\"fake-filter-name\">Fake Filter</h2>", page), 1u);
    // Two presets of a transition once, two of a filter on each picture.
    EXPECT_EQ(CountOf("<figure", page), 6u);
    EXPECT_EQ(CountOf("<b>Half Light</b>", page), 3u);
    EXPECT_EQ(CountOf("<b>Night</b>", page), 3u);
    EXPECT_EQ(CountOf("data:image/jpeg;base64,/9j/", page), 8u); // and both pictures before
}

TEST_F(RunGalleryTest, Steps_AreTheFramesOfATransition)
{
    EXPECT_EQ(Gallery({"--steps", "5"}).code, 0);
    EXPECT_EQ(CountOf("--frames:5;", PageText()), 2u);
    EXPECT_EQ(CountOf("--frames:1;", PageText()), 4u);
}

TEST_F(RunGalleryTest, Width_ShrinksFramesAndNeverEnlarges)
{
    EXPECT_EQ(Gallery({"--width", "2"}).code, 0);
    EXPECT_EQ(CountOf("aspect-ratio:2/1", PageText()), 6u);
    EXPECT_EQ(Gallery({"--width", "400", "-f"}).code, 0);
    EXPECT_EQ(CountOf("aspect-ratio:4/2", PageText()), 6u);
}

TEST_F(RunGalleryTest, ExistingPage_StaysWithoutForce)
{
    EXPECT_EQ(Gallery({}).code, 0);
    EXPECT_EQ(Gallery({}).code, 1);
    EXPECT_EQ(Gallery({"--force"}).code, 0);
}

TEST_F(RunGalleryTest, OnePicture_IsUsage)
{
    EXPECT_EQ(RunWith({"gallery", Path("a.png"), "-o", Path("page.html")}).code, 2);
    EXPECT_FALSE(HasPage());
}

TEST_F(RunGalleryTest, UnreadablePicture_LeavesNoPage)
{
    EXPECT_EQ(Gallery({Path("none.png")}).code, 1);
    EXPECT_FALSE(HasPage());
}

TEST_F(RunGalleryTest, FilmTooHighForAFile_IsRefusedBeforeTheWork)
{
    const std::size_t rows = 33000;
    WritePicture(Path("high.png"), {1, static_cast<std::int32_t>(rows), std::vector<std::uint8_t>(rows * 4)},
                 Overwrite::No);
    const ProgramRun run = Gallery({"--steps", "2", Path("high.png")});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("1 x 66016 pixels are too many"), std::string::npos) << run.errors;
    EXPECT_FALSE(HasPage());
}

} // namespace
} // namespace kelmora::host

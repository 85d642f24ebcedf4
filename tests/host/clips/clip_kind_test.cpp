#include "host/clips/clip_kind.h"

#include <gtest/gtest.h>

#include "host/failure.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

TEST(KindOfClip, Names_TellTheKind)
{
    EXPECT_EQ(KindOfClip("-"), ClipKind::Pipe);
    EXPECT_EQ(KindOfClip("a.JPG"), ClipKind::Picture);
    EXPECT_EQ(KindOfClip("b/c.y4m"), ClipKind::Y4m);
    EXPECT_EQ(KindOfClip("c.Pam"), ClipKind::Pam);
    EXPECT_EQ(KindOfClip("d.mp4"), ClipKind::Film);
    EXPECT_EQ(KindOfClip("folder.d/e"), ClipKind::Nothing);
    EXPECT_EQ(KindOfClip("-o.mkv"), ClipKind::Film);
}

TEST(OpenClip, FirstBytes_CountMoreThanTheName)
{
    const TestFolder folder;
    const auto path = folder.Path() / "clip.mp4";
    TestFolder::Write(path, "YUV4MPEG2 W2 H1\n");
    EXPECT_EQ(OpenClip(Utf8(path), kDefaultRate)->Format().width, 2);
    TestFolder::Write(path, "P7\nWIDTH 3\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\n");
    EXPECT_EQ(OpenClip(Utf8(path), {50, 1})->Format().rate, (Ratio{50, 1}));
}

TEST(OpenClip, MissingEmptyAndFolder_AreRefused)
{
    const TestFolder folder;
    TestFolder::Write(folder.Path() / "empty.mp4", "");
    for (const char* const name : {"none.mp4", "empty.mp4", "."})
        EXPECT_THROW(OpenClip(Utf8(folder.Path() / name), kDefaultRate), Failure) << name;
}

TEST(MakeClip, Ending_DecidesTheForm)
{
    const TestFolder folder;
    ClipFormat format;
    format.width = 1;
    format.height = 1;
    for (const char* const name : {"a.y4m", "a.pam"}) {
        const std::string path = Utf8(folder.Path() / name);
        const auto writer = MakeClip({path, Overwrite::No, ClipKind::Y4m, ""}, format, {});
        writer->Write({0, 0, 0, 255});
        writer->Finish();
        EXPECT_EQ(OpenClip(path, kDefaultRate)->Frames(), 1) << name;
    }
}

} // namespace
} // namespace kelmora::host

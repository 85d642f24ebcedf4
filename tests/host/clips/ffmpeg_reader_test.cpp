#include "host/clips/ffmpeg_reader.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "host/failure.h"
#include "tests/host/clips/film.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

class FfmpegReaderTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!HasFfmpeg())
            GTEST_SKIP() << "FFmpeg is not installed";
    }

    std::string Path(const std::string& name) const { return Utf8(m_folder.Path() / name); }

    /// Ten frames of 16 by 16 whose grey is ten times their number, without loss.
    std::string TenGreys() const
    {
        Ffmpeg({"-f", "lavfi", "-i", "color=black:s=16x16:r=10:d=1,format=bgra,geq=r=10*N:g=10*N:b=10*N",
                "-c:v", "ffv1", Path("greys.mkv")});
        return Path("greys.mkv");
    }

private:
    TestFolder m_folder;
};

TEST_F(FfmpegReaderTest, Frames_AreReadInOrderToTheEnd)
{
    FfmpegReader reader(TenGreys());
    EXPECT_EQ(reader.Format().rate, (Ratio{10, 1}));
    EXPECT_EQ(reader.Frames(), 10);
    EXPECT_EQ(reader.CountFrames(), 10);
    EXPECT_FALSE(reader.HasSound());
    FrameBytes frame;
    for (int number = 0; number < 10; ++number) {
        EXPECT_TRUE(reader.Read(frame));
        EXPECT_EQ(frame.size(), 16u * 16 * 4);
        EXPECT_EQ(frame[0], 10 * number);
    }
    EXPECT_FALSE(reader.Read(frame));
}

TEST_F(FfmpegReaderTest, Skip_BeginsAtThatFrame)
{
    FfmpegReader reader(TenGreys());
    reader.Skip(7);
    FrameBytes frame;
    EXPECT_TRUE(reader.Read(frame));
    EXPECT_EQ(frame[0], 70);
}

TEST_F(FfmpegReaderTest, CutOffClip_IsRefused)
{
    const std::string path = TenGreys();
    std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
    try {
        FfmpegReader reader(path);
        FrameBytes frame;
        while (reader.Read(frame)) {
        }
        ADD_FAILURE() << "read to the end";
    } catch (const Failure& failure) {
        EXPECT_TRUE(std::string(failure.what()).starts_with("cannot read " + path + ": ")) << failure.what();
    }
}

TEST_F(FfmpegReaderTest, FileOfNoClip_IsRefused)
{
    TestFolder::Write(Path("text.mp4"), "no clip at all");
    EXPECT_THROW(FfmpegReader(Path("text.mp4")), Failure);
    EXPECT_THROW(FfmpegReader(Path("none.mp4")), Failure);
}

TEST(ReadCommand, WaveringRateAndLaterStart_AreFilters)
{
    ProbedClip clip;
    clip.format.width = 1280;
    clip.format.height = 720;
    clip.hasSteadyRate = false;
    const std::vector<std::string> words = ReadCommand("a.mp4", clip, 5);
    const auto filter = std::find(words.begin(), words.end(), "-vf");
    ASSERT_NE(filter, words.end());
    EXPECT_TRUE((filter + 1)->starts_with("fps=25/1,trim=start_frame=5,scale=in_color_matrix=bt709:"))
        << *(filter + 1);
}

} // namespace
} // namespace kelmora::host

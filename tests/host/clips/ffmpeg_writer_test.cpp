#include "host/clips/ffmpeg_writer.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "host/clips/ffmpeg_reader.h"
#include "host/failure.h"
#include "tests/host/clips/film.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

ClipFormat Format(std::int32_t width, std::int32_t height)
{
    ClipFormat format;
    format.width = width;
    format.height = height;
    return format;
}

std::string Joined(const std::vector<std::string>& words)
{
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + word;
    return line;
}

bool Has(const std::string& line, const std::string& part)
{
    return line.find(part) != std::string::npos;
}

TEST(WriteCommand, SoundOfTheSameKind_IsCopied)
{
    SoundPlan sound;
    sound.first = "in.mp4";
    EXPECT_TRUE(Has(Joined(WriteCommand("out.mp4", Format(4, 4), sound, "")), "-i file:in.mp4 -map 0:v:0"));
    EXPECT_TRUE(Has(Joined(WriteCommand("out.mp4", Format(4, 4), sound, "")), "-c:a copy"));
    EXPECT_FALSE(Has(Joined(WriteCommand("out.webm", Format(4, 4), sound, "")), "-c:a"));
}

TEST(WriteCommand, PartOfAClip_TakesThatPartOfTheSound)
{
    SoundPlan sound;
    sound.first = "in.mp4";
    sound.isPart = true;
    sound.from = 4.0;
    sound.seconds = 0.5;
    EXPECT_TRUE(Has(Joined(WriteCommand("out.mp4", Format(4, 4), sound, "")),
                    "-ss 4.000000 -t 0.500000 -i file:in.mp4"));
}

TEST(WriteCommand, Transition_FadesTheSounds)
{
    SoundPlan sound;
    sound.first = "a.mp4";
    sound.second = "b.mp4";
    sound.isTransition = true;
    sound.firstSeconds = 4.0;
    sound.blendSeconds = 1.5;
    const std::string line = Joined(WriteCommand("out.mp4", Format(4, 4), sound, ""));
    EXPECT_TRUE(Has(line,
                    "[1:a:0]apad,atrim=end=4.000000,afade=t=out:st=2.500000:d=1.500000[first];"
                    "[2:a:0]afade=t=in:st=0:d=1.500000,adelay=delays=2500.000000:all=1[second];"
                    "[first][second]amix=inputs=2:duration=longest:normalize=0[sound] -map [sound]"))
        << line;
    sound.first.clear();
    EXPECT_TRUE(Has(Joined(WriteCommand("out.mp4", Format(4, 4), sound, "")), "[1:a:0]afade=t=in"));
}

TEST(WriteCommand, OddSizes_KeepTheirColours)
{
    EXPECT_TRUE(Has(Joined(WriteCommand("o.mp4", Format(4, 6), {}, "")), "-pix_fmt yuv420p"));
    EXPECT_TRUE(Has(Joined(WriteCommand("o.mp4", Format(5, 6), {}, "")), "-pix_fmt yuv444p"));
}

TEST(WriteCommand, WordsOfTheUser_ComeLast)
{
    const auto words = WriteCommand("o.mkv", Format(4, 4), {}, "-c:v  ffv1 -pix_fmt bgra");
    const std::vector<std::string> expected = {"-c:v", "ffv1", "-pix_fmt", "bgra", "file:o.mkv"};
    EXPECT_TRUE(std::equal(expected.rbegin(), expected.rend(), words.rbegin()));
}

class FfmpegWriterTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!HasFfmpeg())
            GTEST_SKIP() << "FFmpeg is not installed";
    }

    const TestFolder m_folder;
};

TEST_F(FfmpegWriterTest, WithoutLoss_TheFramesComeBack)
{
    const std::string path = Utf8(m_folder.Path() / "out.mkv");
    ClipFormat format = Format(16, 16);
    format.rate = {30000, 1001};
    format.pixelAspect = {8, 9};
    FfmpegWriter writer(path, Overwrite::No, format, {}, "-c:v ffv1 -pix_fmt bgra");
    FrameBytes frame(format.FrameBytes());
    for (std::uint8_t number = 0; number < 5; ++number) {
        std::fill(frame.begin(), frame.end(), number);
        writer.Write(frame);
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    writer.Finish();
    FfmpegReader reader(path);
    EXPECT_EQ(reader.Format().rate, format.rate);
    EXPECT_EQ(reader.Format().pixelAspect, format.pixelAspect);
    for (std::uint8_t number = 0; number < 5; ++number) {
        EXPECT_TRUE(reader.Read(frame));
        EXPECT_EQ(frame, FrameBytes(format.FrameBytes(), number));
    }
    EXPECT_FALSE(reader.Read(frame));
}

TEST_F(FfmpegWriterTest, WithoutFinish_NothingStays)
{
    {
        FfmpegWriter writer(Utf8(m_folder.Path() / "out.mp4"), Overwrite::No, Format(16, 16), {}, "");
        writer.Write(FrameBytes(16 * 16 * 4));
    }
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path()));
}

TEST_F(FfmpegWriterTest, WordsThatFfmpegRefuses_AreItsReason)
{
    FfmpegWriter writer(Utf8(m_folder.Path() / "out.mp4"), Overwrite::No, Format(16, 16), {}, "-c:v nosuch");
    try {
        for (int frame = 0; frame < 10'000; ++frame)
            writer.Write(FrameBytes(16 * 16 * 4));
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find("Unknown encoder 'nosuch'"), std::string::npos)
            << failure.what();
    }
}

} // namespace
} // namespace kelmora::host

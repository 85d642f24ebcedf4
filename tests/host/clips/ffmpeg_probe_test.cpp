#include "host/clips/ffmpeg_probe.h"

#include <gtest/gtest.h>

#include "host/failure.h"

namespace kelmora::host {
namespace {

ProbedClip Video(const std::string& fields)
{
    return ParseProbe(
        "a.mp4", R"({"streams":[{"codec_type":"video",)" + fields + R"(}],"format":{"duration":"4.0"}})");
}

TEST(ParseProbe, UsualClip_HasItsFormat)
{
    const ProbedClip clip = ParseProbe("a.mp4", R"({"streams":[
        {"codec_type":"video","width":720,"height":576,"sample_aspect_ratio":"16:15","color_space":"bt470bg",
         "r_frame_rate":"25/1","avg_frame_rate":"25/1","duration":"4.0","nb_frames":"101"},
        {"codec_type":"audio"}],"format":{"duration":"5.0"}})");
    EXPECT_EQ(clip.format.width, 720);
    EXPECT_EQ(clip.format.height, 576);
    EXPECT_EQ(clip.format.rate, (Ratio{25, 1}));
    EXPECT_EQ(clip.format.pixelAspect, (Ratio{16, 15}));
    EXPECT_EQ(clip.format.colours, "bt470bg");
    EXPECT_EQ(clip.frames, 101);
    EXPECT_TRUE(clip.hasSteadyRate);
    EXPECT_TRUE(clip.hasSound);
}

TEST(ParseProbe, HeadersWithoutFrames_AreEstimatedByTheFile)
{
    const ProbedClip clip =
        Video(R"("width":2,"height":2,"r_frame_rate":"30000/1001","avg_frame_rate":"30000/1001")");
    EXPECT_EQ(clip.frames, 120); // 4 s of 29.97 in one: 119.88
    EXPECT_FALSE(clip.hasSound);
    EXPECT_EQ(clip.format.pixelAspect.over, 0);
}

TEST(ParseProbe, RateThatWavers_IsTheMean)
{
    const ProbedClip clip =
        Video(R"("width":2,"height":2,"r_frame_rate":"90000/1","avg_frame_rate":"24/1","nb_frames":"80")");
    EXPECT_FALSE(clip.hasSteadyRate);
    EXPECT_EQ(clip.format.rate, (Ratio{24, 1}));
    EXPECT_EQ(clip.frames, 96);
}

TEST(ParseProbe, PictureOnItsSide_IsTurned)
{
    const ProbedClip clip = Video(
        R"("width":1920,"height":1080,"sample_aspect_ratio":"4:3","side_data_list":[{"rotation":-90}])");
    EXPECT_EQ(clip.format.width, 1080);
    EXPECT_EQ(clip.format.height, 1920);
    EXPECT_EQ(clip.format.pixelAspect, (Ratio{3, 4}));
}

TEST(ParseProbe, CoverOfARecord_IsNoVideo)
{
    EXPECT_THROW(Video(R"("width":2,"height":2,"disposition":{"attached_pic":1})"), Failure);
}

TEST(ParseProbe, OddAnswers_AreRefused)
{
    for (const char* const text :
         {"", "{", "[]", "null", "{}", R"({"streams":7})", R"({"streams":[null,3]})",
          R"({"streams":[{"codec_type":"audio"}]})", R"({"streams":[{"codec_type":"video"}]})",
          R"({"streams":[{"codec_type":"video","width":1e300,"height":2}]})",
          R"({"streams":[{"codec_type":"video","width":-1,"height":2}],"format":[]})"})
        EXPECT_THROW(ParseProbe("a.mp4", text), Failure) << text;
}

TEST(ParseProbe, OddRates_AreTheUsualOne)
{
    for (const char* const rate : {"0/0", "25", "x/y", "-1/1", "1/0"}) {
        const std::string field = std::string(R"("width":2,"height":2,"r_frame_rate":")") + rate + "\"";
        EXPECT_EQ(Video(field).format.rate, kDefaultRate) << rate;
    }
}

TEST(MatrixOf, WhatIsNotKnown_GoesByTheSize)
{
    ClipFormat format;
    format.width = 1280;
    format.height = 720;
    EXPECT_EQ(MatrixOf(format), "bt709");
    format.width = 720;
    format.height = 576;
    EXPECT_EQ(MatrixOf(format), "smpte170m");
    format.colours = "bt709";
    EXPECT_EQ(MatrixOf(format), "bt709");
    format.colours = "bt2020nc";
    EXPECT_EQ(MatrixOf(format), "bt2020");
}

TEST(FfmpegReason, FirstLine_IsWithoutItsOrigin)
{
    EXPECT_EQ(FfmpegReason("[mov,mp4 @ 0x55] moov atom not found\na.mp4: Invalid data\n"),
              "moov atom not found");
    EXPECT_EQ(FfmpegReason("\r\nx: No space left\r\n"), "x: No space left");
    EXPECT_EQ(FfmpegReason(""), "it gave no reason");
}

TEST(FfmpegPath, NamesThatLookLikeSomethingElse_AreFiles)
{
    EXPECT_EQ(FfmpegPath("-i"), "file:-i");
    EXPECT_EQ(FfmpegPath("http://x"), "file:http://x");
}

} // namespace
} // namespace kelmora::host

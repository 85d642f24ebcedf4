#include "host/clips/y4m.h"

#include <gtest/gtest.h>

#include "host/failure.h"
#include "tests/host/clips/memory_stream.h"

namespace kelmora::host {
namespace {

Y4mReader Reader(const std::string& text, bool knowsSize = true)
{
    return Y4mReader("a.y4m", std::make_unique<MemorySource>(text, knowsSize));
}

/// The line with which the text is refused when it is read to its end.
std::string Refusal(const std::string& text)
{
    try {
        Y4mReader reader = Reader(text);
        FrameBytes frame;
        while (reader.Read(frame)) {
        }
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "read";
}

// Two frames of 2 by 1, black and white, and white and black.
const std::string kBlackWhite("\x10\xEB\x80\x80", 4);
const std::string kWhiteBlack("\xEB\x10\x80\x80", 4);
const std::string kTwo =
    "YUV4MPEG2 W2 H1 F30000:1001 Ip A8:9 C420mpeg2\nFRAME\n" + kBlackWhite + "FRAME\n" + kWhiteBlack;

TEST(Y4mReader, Header_GivesTheFormat)
{
    const Y4mReader reader = Reader(kTwo);
    EXPECT_EQ(reader.Format().width, 2);
    EXPECT_EQ(reader.Format().height, 1);
    EXPECT_EQ(reader.Format().rate, (Ratio{30000, 1001}));
    EXPECT_EQ(reader.Format().pixelAspect, (Ratio{8, 9}));
    EXPECT_EQ(reader.Format().chroma, "420mpeg2");
    EXPECT_EQ(reader.Format().colours, "smpte170m");
    EXPECT_EQ(reader.Frames(), 2);
}

TEST(Y4mReader, WordsThatAreLeftOutOrUnknown_HaveTheirDefaults)
{
    const Y4mReader reader = Reader("YUV4MPEG2 H2 W1280 F0:0 A0:0 Xwhatever\n");
    EXPECT_EQ(reader.Format().rate, kDefaultRate);
    EXPECT_EQ(reader.Format().pixelAspect.over, 0);
    EXPECT_EQ(reader.Format().chroma, "420jpeg");
    EXPECT_EQ(reader.Format().colours, "bt709");
    EXPECT_EQ(reader.Frames(), 0);
}

TEST(Y4mReader, Frames_AreReadInOrderToTheEnd)
{
    Y4mReader reader = Reader(kTwo);
    FrameBytes frame;
    EXPECT_TRUE(reader.Read(frame));
    EXPECT_EQ(frame, (FrameBytes{0, 0, 0, 255, 255, 255, 255, 255}));
    EXPECT_TRUE(reader.Read(frame));
    EXPECT_EQ(frame, (FrameBytes{255, 255, 255, 255, 0, 0, 0, 255}));
    EXPECT_FALSE(reader.Read(frame));
}

TEST(Y4mReader, Skip_PassesOverFramesAndTheEnd)
{
    Y4mReader reader = Reader(kTwo);
    FrameBytes frame;
    reader.Skip(1);
    EXPECT_TRUE(reader.Read(frame));
    EXPECT_EQ(frame[0], 255);
    reader.Skip(9);
    EXPECT_FALSE(reader.Read(frame));
}

TEST(Y4mReader, PipeOrFramesWithWords_HaveNoLength)
{
    EXPECT_EQ(Reader(kTwo, false).Frames(), std::nullopt);
    Y4mReader reader = Reader("YUV4MPEG2 W2 H1\nFRAME Ip\n" + kWhiteBlack);
    EXPECT_EQ(reader.Frames(), std::nullopt);
    FrameBytes frame;
    EXPECT_TRUE(reader.Read(frame));
    EXPECT_FALSE(reader.Read(frame));
}

TEST(Y4mReader, CutOff_IsRefusedWithTheFrame)
{
    EXPECT_EQ(Refusal(kTwo.substr(0, kTwo.size() - 1)), "cannot read a.y4m: it is cut off in frame 1");
    EXPECT_EQ(Refusal(kTwo.substr(0, kTwo.size() - 6)),
              "cannot read a.y4m: frame 1 does not begin as a frame does");
}

TEST(Y4mReader, HostileHeaders_AreRefused)
{
    const char* const bad[] = {"",
                               "YUV4MPEG2",
                               "YUV4MPEG2\n",
                               "YUV4MPEG2 W0 H1\n",
                               "YUV4MPEG2 W-2 H1\n",
                               "YUV4MPEG2 W2\n",
                               "YUV4MPEG2 W99999999999 H1\n",
                               "YUV4MPEG2 W2147483647 H2147483647\n",
                               "YUV4MPEG2 W2 H1 C420p10\n",
                               "YUV4MPEG2 W2 H1 C\n",
                               "YUV4MPEG2 W H1\n",
                               "YUV4MPEG W2 H1\n",
                               "YUV4MPEG2 W2 H1\nFRAMES",
                               "YUV4MPEG2 W2 H1\nfoo\n"};
    for (const char* const text : bad)
        EXPECT_TRUE(Refusal(text).starts_with("cannot read a.y4m: ")) << text;
    EXPECT_NE(Refusal("YUV4MPEG2 " + std::string(1'000'000, ' ') + "W2 H1\n"), "read");
    EXPECT_NE(Refusal("YUV4MPEG2 W2 H1\nFRAME" + std::string(1'000'000, ' ')), "read");
}

TEST(Y4mWriter, WhatItWrites_IsTheSameClip)
{
    Y4mReader reader = Reader(kTwo);
    std::string text;
    Y4mWriter writer(reader.Format(), std::make_unique<MemorySink>(text));
    for (FrameBytes frame; reader.Read(frame);)
        writer.Write(frame);
    writer.Finish();
    EXPECT_EQ(text, kTwo + "END");
}

TEST(Y4mWriter, FormatOfNoY4m_Becomes420)
{
    ClipFormat format;
    format.width = 2;
    format.height = 2;
    std::string text;
    const Y4mWriter writer(format, std::make_unique<MemorySink>(text));
    EXPECT_EQ(text, "YUV4MPEG2 W2 H2 F25:1 Ip A0:0 C420jpeg\n");
}

} // namespace
} // namespace kelmora::host

#include "host/clips/pam.h"

#include <gtest/gtest.h>

#include "host/failure.h"
#include "tests/host/clips/memory_stream.h"

namespace kelmora::host {
namespace {

PamReader Reader(const std::string& text, bool knowsSize = true)
{
    return PamReader("a.pam", std::make_unique<MemorySource>(text, knowsSize), {30, 1});
}

std::string Refusal(const std::string& text)
{
    try {
        PamReader reader = Reader(text);
        FrameBytes frame;
        while (reader.Read(frame)) {
        }
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "read";
}

std::string Header(int depth)
{
    return "P7\nWIDTH 1\nHEIGHT 1\nDEPTH " + std::to_string(depth) + "\nMAXVAL 255\nENDHDR\n";
}

FrameBytes Pixel(int depth, const std::string& bytes)
{
    PamReader reader = Reader(Header(depth) + bytes);
    FrameBytes frame;
    EXPECT_TRUE(reader.Read(frame));
    return frame;
}

TEST(PamReader, EveryDepth_HasItsChannels)
{
    EXPECT_EQ(Pixel(1, "\x07"), (FrameBytes{7, 7, 7, 255}));
    EXPECT_EQ(Pixel(2, "\x07\x09"), (FrameBytes{7, 7, 7, 9}));
    EXPECT_EQ(Pixel(3, "\x01\x02\x03"), (FrameBytes{3, 2, 1, 255}));
    EXPECT_EQ(Pixel(4, "\x01\x02\x03\x04"), (FrameBytes{3, 2, 1, 4}));
}

TEST(PamReader, PicturesInARow_AreFramesAtTheRateGiven)
{
    PamReader reader = Reader(Header(1) + "a" + Header(1) + "b" + Header(1) + "c");
    EXPECT_EQ(reader.Frames(), 3);
    EXPECT_EQ(reader.Format().rate, (Ratio{30, 1}));
    reader.Skip(1);
    FrameBytes frame;
    EXPECT_TRUE(reader.Read(frame));
    EXPECT_EQ(frame[0], 'b');
    EXPECT_TRUE(reader.Read(frame));
    EXPECT_FALSE(reader.Read(frame));
}

TEST(PamReader, CommentsAndOtherOrder_AreRead)
{
    PamReader reader =
        Reader("P7\n# a remark\nMAXVAL 255\n\nDEPTH 1\nTUPLTYPE GRAYSCALE\nHEIGHT 1\nWIDTH 1\nENDHDR\nz");
    FrameBytes frame;
    EXPECT_TRUE(reader.Read(frame));
    EXPECT_EQ(frame[0], 'z');
}

TEST(PamReader, Pipe_HasNoLength)
{
    EXPECT_EQ(Reader(Header(1) + "a", false).Frames(), std::nullopt);
}

TEST(PamReader, CutOff_IsRefusedWithTheFrame)
{
    EXPECT_EQ(Refusal(Header(4) + "abcd" + Header(4) + "abc"), "cannot read a.pam: it is cut off in frame 1");
    EXPECT_EQ(Refusal(Header(4) + "abcd" + "P7\nWIDTH"),
              "cannot read a.pam: the header of frame 1 is no PAM header");
}

TEST(PamReader, HostileHeaders_AreRefused)
{
    const std::string bad[] = {
        "",
        "P7",
        "P7\n",
        "P6\n1 1\n255\nabc",
        Header(0),
        Header(5),
        "P7\nWIDTH x\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\n",
        "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 65535\nENDHDR\n",
        "P7\nWIDTH 2147483647\nHEIGHT 2147483647\nDEPTH 4\nMAXVAL 255\nENDHDR\n",
        "P7\nWIDTH 99999999999\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nENDHDR\n",
        "P7\nWIDTH -1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nENDHDR\n",
        "P7\nDEPTH 4\nMAXVAL 255\nENDHDR\n",
        "P7\n" + std::string(1'000'000, '#'),
    };
    for (const std::string& text : bad)
        EXPECT_TRUE(Refusal(text).starts_with("cannot read a.pam: ")) << text.substr(0, 80);
    std::string comments = "P7\n";
    for (int i = 0; i < 100'000; ++i)
        comments += "#\n";
    EXPECT_EQ(Refusal(comments), "cannot read a.pam: the header of frame 0 does not end");
}

TEST(PamReader, ChangeOfSize_IsRefused)
{
    EXPECT_EQ(Refusal(Header(1) + "a" + Header(2) + "ab"),
              "cannot read a.pam: frame 1 has another size than the first one");
}

TEST(PamWriter, WhatItWrites_IsRedGreenBlueAlpha)
{
    ClipFormat format;
    format.width = 1;
    format.height = 1;
    std::string text;
    PamWriter writer(format, std::make_unique<MemorySink>(text));
    writer.Write({'b', 'g', 'r', 'a'});
    writer.Write({'1', '2', '3', '4'});
    writer.Finish();
    const std::string header = "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
    EXPECT_EQ(text, header + "rgba" + header + "3214END");
}

} // namespace
} // namespace kelmora::host

#include "host/clips/byte_stream.h"

#include <gtest/gtest.h>

#include "host/failure.h"
#include "tests/host/clips/memory_stream.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

TEST(ByteSource, BytesAhead_StayToBeRead)
{
    MemorySource source("abcdef");
    EXPECT_EQ(source.Ahead(2), "ab");
    EXPECT_EQ(source.Ahead(4), "abcd");
    char bytes[10] = {};
    EXPECT_EQ(source.Read(bytes, 3), 3u);
    EXPECT_STREQ(bytes, "abc");
    EXPECT_EQ(source.Read(bytes, 10), 3u);
    EXPECT_EQ(source.Ahead(1), "");
}

TEST(ByteSource, Lines_EndAtTheirEndOrNotAtAll)
{
    MemorySource source("one\n\nthree");
    EXPECT_EQ(source.Line(10), "one");
    EXPECT_EQ(source.Line(10), "");
    EXPECT_EQ(source.Line(10), std::nullopt);
    MemorySource longLine(std::string(100, 'x') + "\n");
    EXPECT_EQ(longLine.Line(100), std::nullopt);
}

TEST(ByteSource, Skip_TellsWhetherAllWasThere)
{
    MemorySource source(std::string(10'000, 'x') + "y");
    EXPECT_TRUE(source.Skip(10'000));
    EXPECT_EQ(source.Ahead(1), "y");
    EXPECT_FALSE(source.Skip(2));
}

TEST(OpenSink, File_AppearsWhenItIsWhole)
{
    const TestFolder folder;
    const std::string path = Utf8(folder.Path() / "out.pam");
    {
        const auto sink = OpenSink(path, Overwrite::No);
        sink->Write("half", 4);
        EXPECT_FALSE(std::filesystem::exists(path));
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    const auto sink = OpenSink(path, Overwrite::No);
    sink->Write("whole", 5);
    sink->Finish();
    const auto source = OpenSource(path);
    EXPECT_EQ(source->Ahead(10), "whole");
    EXPECT_EQ(source->Size(), 5u);
    EXPECT_THROW(OpenSink(path, Overwrite::No), Failure);
}

TEST(OpenSource, MissingFile_IsRefusedWithItsName)
{
    try {
        OpenSource("no/such.y4m");
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_TRUE(std::string(failure.what()).starts_with("cannot read no/such.y4m: ")) << failure.what();
    }
}

#ifndef _WIN32
TEST(OpenSink, Device_IsRefused)
{
    // A device is no file to be replaced.
    EXPECT_THROW(OpenSink("/dev/full", Overwrite::Yes), Failure);
}
#endif

} // namespace
} // namespace kelmora::host

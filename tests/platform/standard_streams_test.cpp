#include "platform/standard_streams.h"

#include <string>

#include <gtest/gtest.h>

namespace kelmora::platform {
namespace {

bool Always()
{
    return true;
}

TEST(ReadStandardInput, Stop_ReadsNothing)
{
    char letter = 'a';
    EXPECT_EQ(ReadStandardInput(&letter, 1, Always), 0u);
    EXPECT_EQ(letter, 'a');
}

TEST(WriteStandardOutput, Text_ComesOut)
{
    testing::internal::CaptureStdout();
    const std::string text = "one\ntwo";
    const bool isDone = WriteStandardOutput(text.data(), text.size());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), text);
    EXPECT_TRUE(isDone);
}

TEST(IsErrorTerminal, ErrorsThatGoToAFile_AreNotWatched)
{
    testing::internal::CaptureStderr();
    const bool isWatched = IsErrorTerminal();
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(isWatched);
}

} // namespace
} // namespace kelmora::platform

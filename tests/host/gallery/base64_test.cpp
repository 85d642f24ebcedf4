#include "host/gallery/base64.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

std::string OfText(const std::string& text)
{
    return Base64({text.begin(), text.end()});
}

TEST(Base64, Text_IsThatOfTheStandardsExamples)
{
    EXPECT_EQ(OfText(""), "");
    EXPECT_EQ(OfText("f"), "Zg==");
    EXPECT_EQ(OfText("fo"), "Zm8=");
    EXPECT_EQ(OfText("foo"), "Zm9v");
    EXPECT_EQ(OfText("foob"), "Zm9vYg==");
    EXPECT_EQ(OfText("fooba"), "Zm9vYmE=");
    EXPECT_EQ(OfText("foobar"), "Zm9vYmFy");
}

TEST(Base64, HighBits_ReachTheEndOfTheAlphabet)
{
    EXPECT_EQ(Base64({0xFF, 0xFF, 0xFF}), "////");
    EXPECT_EQ(Base64({0xFB, 0xEF, 0xBE}), "++++");
    EXPECT_EQ(Base64({0x00, 0x10, 0x83}), "ABCD");
}

} // namespace
} // namespace kelmora::host

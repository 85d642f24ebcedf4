#include "host/path_text.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

TEST(PathText, NameBeyondAscii_SurvivesTheWayThereAndBack)
{
    const std::string text = "Bl\xC3\xBCte/\xE5\xA4\x9C.png"; // umlaut, one kanji
    EXPECT_EQ(TextOf(PathOf(text).filename()), "\xE5\xA4\x9C.png");
    EXPECT_EQ(TextOf(PathOf(text).generic_u8string()), text);
}

TEST(PathText, Empty_StaysEmpty)
{
    EXPECT_TRUE(PathOf("").empty());
    EXPECT_EQ(TextOf({}), "");
}

} // namespace
} // namespace kelmora::host

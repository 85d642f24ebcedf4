#include "platform/utf.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

using platform::Character;
using platform::Converted;
using platform::UnitWriter;

struct Sample {
    char32_t value;
    std::string_view utf8;
    std::u16string_view utf16;
};

// The first and the last character of every length.
constexpr std::array kSamples{
    Sample{0x0001, "\x01", u"\x01"},
    Sample{0x007F, "\x7F", u"\x7F"},
    Sample{0x0080, "\xC2\x80", u"\x80"},
    Sample{0x07FF, "\xDF\xBF", u"\u07FF"},
    Sample{0x0800, "\xE0\xA0\x80", u"\u0800"},
    Sample{0xD7FF, "\xED\x9F\xBF", u"\uD7FF"},
    Sample{0xE000, "\xEE\x80\x80", u"\uE000"},
    Sample{0xFFFF, "\xEF\xBF\xBF", u"\uFFFF"},
    Sample{0x10000, "\xF0\x90\x80\x80", u"\U00010000"},
    Sample{0x10FFFF, "\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
};

TEST(Utf, Read_ValidCharacter_GivesItsValueAndLength)
{
    for (const Sample& sample : kSamples) {
        const Character fromUtf8 = platform::ReadUtf8(std::string(sample.utf8) + "tail");
        EXPECT_TRUE(fromUtf8.valid);
        EXPECT_EQ(fromUtf8.value, sample.value);
        EXPECT_EQ(fromUtf8.taken, sample.utf8.size());

        const Character fromUtf16 = platform::ReadUtf16(std::u16string(sample.utf16) + u"tail");
        EXPECT_TRUE(fromUtf16.valid);
        EXPECT_EQ(fromUtf16.value, sample.value);
        EXPECT_EQ(fromUtf16.taken, sample.utf16.size());
    }
}

TEST(Utf, Put_EachLength_GivesItsUnits)
{
    for (const Sample& sample : kSamples) {
        char bytes[4];
        UnitWriter<char> utf8(bytes);
        platform::PutUtf8(utf8, sample.value);
        EXPECT_EQ(std::string_view(bytes, utf8.Finish(true).length), sample.utf8);

        char16_t units[2];
        UnitWriter<char16_t> utf16(units);
        platform::PutUtf16(utf16, sample.value);
        EXPECT_EQ(std::u16string_view(units, utf16.Finish(true).length), sample.utf16);
    }
}

TEST(Utf, ReadUtf8_NoCharacter_TakesTheLongestStartOfOne)
{
    struct Broken {
        std::string_view text;
        std::size_t taken;
    };
    for (const Broken& broken : {
             Broken{"\x80", 1},             // follows nothing
             Broken{"\xC0\x80", 1},         // has a shorter form
             Broken{"\xC1\xBF", 1},         //
             Broken{"\xE0\x9F\xBF", 1},     //
             Broken{"\xF0\x8F\xBF\xBF", 1}, //
             Broken{"\xED\xA0\x80", 1},     // a surrogate
             Broken{"\xF4\x90\x80\x80", 1}, // past the last character
             Broken{"\xF5\x80\x80\x80", 1}, //
             Broken{"\xFF", 1},             //
             Broken{"\xC3(", 1},            // broken off
             Broken{"\xE2\x82(", 2},        //
             Broken{"\xF0\x9F\x98(", 3},    //
             Broken{"\xC3", 1},             // the text ends
             Broken{"\xE2\x82", 2},         //
             Broken{"\xF0\x9F\x98", 3},     //
         }) {
        const Character character = platform::ReadUtf8(broken.text);
        EXPECT_FALSE(character.valid) << testing::PrintToString(broken.text);
        EXPECT_EQ(character.taken, broken.taken) << testing::PrintToString(broken.text);
    }
}

TEST(Utf, ReadUtf16_LoneSurrogate_IsNotValidAndTakesOneUnit)
{
    const std::u16string high(1, char16_t(0xD83D));
    const std::u16string low(1, char16_t(0xDE00));
    for (const std::u16string& text : {high, low, high + u"x", low + high, high + high}) {
        const Character character = platform::ReadUtf16(text);
        EXPECT_FALSE(character.valid);
        EXPECT_EQ(character.taken, 1u);
        EXPECT_EQ(character.value, text[0]);
    }
}

TEST(Utf, UnitWriter_MoreUnitsThanRoom_WritesNoneBeyondAndFails)
{
    char room[3] = {'-', '-', '#'};
    UnitWriter<char> writer(std::span<char>(room, 2));
    for (const char32_t unit : {U'a', U'b', U'c'})
        writer.Put(unit);
    const Converted result = writer.Finish(true);
    EXPECT_EQ(result.length, 0u);
    EXPECT_FALSE(result.whole);
    EXPECT_EQ(room[2], '#');
}

TEST(Utf, UnitWriter_NoRoom_Counts)
{
    UnitWriter<char> writer({});
    for (const char32_t unit : {U'a', U'b', U'c'})
        writer.Put(unit);
    EXPECT_EQ(writer.Finish(true).length, 3u);
    EXPECT_TRUE(writer.Finish(true).whole);
    EXPECT_FALSE(writer.Finish(false).whole);
}

} // namespace
} // namespace kelmora

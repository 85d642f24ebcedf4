#include "platform/text.h"

#include <string>

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

namespace kelmora {
namespace {

using platform::Converted;

template <class Out>
struct Conversion {
    std::basic_string<Out> text;
    bool whole;
};

/// Counts, converts, and checks that both say the same.
template <class Out, class In>
Conversion<Out> Convert(Converted (*convert)(std::basic_string_view<In>, std::span<Out>),
                        std::basic_string_view<In> text)
{
    const Converted counted = convert(text, {});
    std::basic_string<Out> out(counted.length, Out('#'));
    if (!out.empty()) {
        const Converted converted = convert(text, out);
        EXPECT_EQ(converted.length, counted.length);
        EXPECT_EQ(converted.whole, counted.whole);
    }
    return {out, counted.whole};
}

auto FromUtf8(std::string_view text)
{
    return Convert(platform::Utf8ToUtf16, text);
}

auto ToUtf8(std::u16string_view text)
{
    return Convert(platform::Utf16ToUtf8, text);
}

auto FromNarrow(std::string_view text)
{
    return Convert(platform::NarrowToUtf16, text);
}

auto ToNarrow(std::u16string_view text)
{
    return Convert(platform::Utf16ToNarrow, text);
}

std::u16string Units(std::initializer_list<unsigned> units)
{
    std::u16string text;
    for (const unsigned unit : units)
        text.push_back(static_cast<char16_t>(unit));
    return text;
}

TEST(Text, Utf8_EveryCharacter_ComesBack)
{
    std::u16string text;
    for (char32_t value = 1; value <= 0x10FFFF; ++value) {
        if (value >= 0xD800 && value <= 0xDFFF)
            continue;
        if (value >= 0x10000) {
            text.push_back(static_cast<char16_t>(0xD7C0 + (value >> 10)));
            text.push_back(static_cast<char16_t>(0xDC00 + value % 0x400));
        } else {
            text.push_back(static_cast<char16_t>(value));
        }
    }
    const auto utf8 = ToUtf8(text);
    EXPECT_TRUE(utf8.whole);
    // 127 of one byte, 1920 of two, 61440 of three without the surrogates, 1048576 of four.
    EXPECT_EQ(utf8.text.size(), 127u + 2 * 1920u + 3 * 61440u + 4 * 1048576u);
    const auto back = FromUtf8(utf8.text);
    EXPECT_TRUE(back.whole);
    EXPECT_TRUE(back.text == text);
}

TEST(Text, Utf8ToUtf16_BrokenText_HasOneReplacementForEachBrokenStart)
{
    EXPECT_EQ(FromUtf8("a\xE2\x82z").text, u"a\uFFFDz");
    EXPECT_EQ(FromUtf8("\xF0\x80\x80\x41").text, u"\uFFFD\uFFFD\uFFFDA");
    EXPECT_EQ(FromUtf8("\xED\xA0\x80").text, u"\uFFFD\uFFFD\uFFFD");
    EXPECT_FALSE(FromUtf8("a\xFFz").whole);
}

TEST(Text, Utf16ToUtf8_LoneSurrogate_BecomesAReplacement)
{
    const auto converted = ToUtf8(Units({'a', 0xD83D, 'z'}));
    EXPECT_EQ(converted.text, "a\xEF\xBF\xBDz");
    EXPECT_FALSE(converted.whole);
}

TEST(Text, Ascii_IsTheSameInAllForms)
{
    const std::string narrow = "Air Brush (2) ~";
    const std::u16string wide = u"Air Brush (2) ~";
    EXPECT_EQ(FromNarrow(narrow).text, wide);
    EXPECT_TRUE(FromNarrow(narrow).whole);
    EXPECT_EQ(ToNarrow(wide).text, narrow);
    EXPECT_TRUE(ToNarrow(wide).whole);
    EXPECT_EQ(FromUtf8(narrow).text, wide);
    EXPECT_EQ(ToUtf8(wide).text, narrow);
}

TEST(Text, EmptyText_IsWholeAndEmpty)
{
    char narrow[4];
    char16_t wide[4];
    for (const Converted converted : {platform::NarrowToUtf16("", wide), platform::Utf16ToNarrow(u"", narrow),
                                      platform::Utf8ToUtf16("", wide), platform::Utf16ToUtf8(u"", narrow)}) {
        EXPECT_EQ(converted.length, 0u);
        EXPECT_TRUE(converted.whole);
    }
}

TEST(Text, RoomForLess_IsRefusedAndNothingIsWrittenBeyond)
{
    char narrow[4] = {'#', '#', '#', '#'};
    char16_t wide[4] = {u'#', u'#', u'#', u'#'};
    for (const Converted converted :
         {platform::NarrowToUtf16("four", {wide, 3}), platform::Utf16ToNarrow(u"four", {narrow, 3}),
          platform::Utf8ToUtf16("four", {wide, 3}), platform::Utf16ToUtf8(u"four", {narrow, 3})}) {
        EXPECT_EQ(converted.length, 0u);
        EXPECT_FALSE(converted.whole);
    }
    EXPECT_EQ(narrow[3], '#');
    EXPECT_EQ(wide[3], u'#');
}

TEST(Text, RoomThatFitsExactly_IsEnough)
{
    char narrow[4];
    char16_t wide[4];
    EXPECT_EQ(platform::NarrowToUtf16("four", wide).length, 4u);
    EXPECT_EQ(platform::Utf16ToNarrow(u"four", narrow).length, 4u);
    EXPECT_EQ(platform::Utf8ToUtf16("four", wide).length, 4u);
    EXPECT_EQ(platform::Utf16ToUtf8(u"four", narrow).length, 4u);
}

#ifdef _WIN32

TEST(Text, Narrow_WesternLetter_IsOneByte)
{
    if (GetACP() != 1252)
        GTEST_SKIP() << "the code page here is " << GetACP();
    EXPECT_EQ(FromNarrow("caf\xE9").text, u"caf\u00E9");
    EXPECT_EQ(ToNarrow(u"caf\u00E9").text, "caf\xE9");
    EXPECT_TRUE(ToNarrow(u"caf\u00E9").whole);
}

TEST(Text, Utf16ToNarrow_LetterThatTheCodePageLacks_IsNotWholeAndNoLookAlike)
{
    if (GetACP() != 1252)
        GTEST_SKIP() << "the code page here is " << GetACP();
    const auto converted = ToNarrow(u"\u0101");
    EXPECT_FALSE(converted.whole);
    EXPECT_NE(converted.text, "a");
}

#else

TEST(Text, Narrow_IsUtf8)
{
    EXPECT_EQ(FromNarrow("caf\xC3\xA9 \xF0\x9F\x98\x80").text, u"caf\u00E9 \U0001F600");
    EXPECT_TRUE(FromNarrow("caf\xC3\xA9 \xF0\x9F\x98\x80").whole);
    EXPECT_EQ(ToNarrow(u"caf\u00E9 \U0001F600").text, "caf\xC3\xA9 \xF0\x9F\x98\x80");
    EXPECT_TRUE(ToNarrow(u"caf\u00E9 \U0001F600").whole);
}

TEST(Text, Narrow_BytesThatAreNoUtf8_ComeBack)
{
    for (unsigned first = 0x80; first <= 0xFF; ++first) {
        const std::string bytes = {'a', static_cast<char>(first), 'z', static_cast<char>(first)};
        const auto wide = FromNarrow(bytes);
        EXPECT_EQ(wide.text, Units({'a', 0xDC00 + first, 'z', 0xDC00 + first}));
        EXPECT_FALSE(wide.whole);
        EXPECT_EQ(ToNarrow(wide.text).text, bytes);
        EXPECT_TRUE(ToNarrow(wide.text).whole);
    }
}

TEST(Text, Utf16ToNarrow_SurrogateThatStandsForNoByte_IsNotWhole)
{
    for (const unsigned unit : {0xD800u, 0xDBFFu, 0xDC00u, 0xDC7Fu, 0xDD00u, 0xDFFFu})
        EXPECT_FALSE(ToNarrow(Units({'a', unit})).whole) << unit;
}

#endif

} // namespace
} // namespace kelmora

#include "library/language/strings.h"

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/failing_new.h"
#include "tests/support/flush_record.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace kelmora {
namespace {

constexpr std::uint32_t npos = LVString::npos;

/// What both kinds of strings have in common, with their characters.
template <class String>
struct EitherString : testing::Test {
    using Char = std::remove_const_t<std::remove_pointer_t<decltype(std::declval<String>().GetBuffer())>>;
    using Text = std::basic_string<Char>;

    static Text Of(std::string_view ascii) { return Text(ascii.begin(), ascii.end()); }
    static String Make(std::string_view ascii) { return String(Of(ascii).c_str()); }

    static void ExpectText(const String& string, std::string_view ascii)
    {
        ASSERT_EQ(string.GetLength(), ascii.size());
        EXPECT_TRUE(string.HasText());
        ASSERT_NE(string.GetBuffer(), nullptr);
        EXPECT_EQ(Text(string.GetBuffer(), ascii.size()), Of(ascii));
        EXPECT_EQ(string.GetBuffer()[ascii.size()], Char());
    }

    static void ExpectEmpty(const String& string)
    {
        EXPECT_EQ(string.GetLength(), 0u);
        EXPECT_FALSE(string.HasText());
        EXPECT_EQ(string.GetBuffer(), nullptr);
    }
};

using BothStrings = testing::Types<LVString, LVUnicodeString>;
TYPED_TEST_SUITE(EitherString, BothStrings);

TYPED_TEST(EitherString, Default_IsEmpty)
{
    this->ExpectEmpty(TypeParam());
}

TYPED_TEST(EitherString, TableHoldsTheDestructorAloneBeforeLengthAndText)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<TypeParam>);
    EXPECT_EQ(sizeof(TypeParam), 3 * sizeof(void*)); // the table, the length with its padding, the text
    const TypeParam string = this->Make("abc");
    const auto* const words = reinterpret_cast<const void* const*>(&string);
    std::uint32_t length = 0;
    std::memcpy(&length, words + 1, sizeof length);
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(words[2], string.GetBuffer());
}

TYPED_TEST(EitherString, FromPointer_NoLength_RunsUpToTheZero)
{
    const auto text = this->Of(std::string_view("ab\0cd", 5));
    this->ExpectText(TypeParam(text.c_str()), "ab");
    this->ExpectText(TypeParam(text.c_str(), npos), "ab");
}

TYPED_TEST(EitherString, FromPointer_Length_TakesThatManyAndReadsNoFurther)
{
    const auto text = this->Of("abcdef");
    this->ExpectText(TypeParam(text.c_str(), 4), "abcd");
    struct Three {
        typename TestFixture::Char text[3];
    };
    const FlushRecord<Three> three(std::uint8_t{'x'});
    EXPECT_EQ(TypeParam(three.Get()->text, 3).GetLength(), 3u);
}

TYPED_TEST(EitherString, FromPointer_LengthOverAZero_KeepsIt)
{
    const auto text = this->Of(std::string_view("a\0b", 3));
    this->ExpectText(TypeParam(text.c_str(), 3), std::string_view("a\0b", 3));
}

TYPED_TEST(EitherString, FromPointer_NullOrEmpty_IsEmpty)
{
    this->ExpectEmpty(TypeParam(nullptr));
    this->ExpectEmpty(TypeParam(nullptr, 5));
    this->ExpectEmpty(this->Make(""));
    this->ExpectEmpty(TypeParam(this->Of("abc").c_str(), 0));
}

TYPED_TEST(EitherString, Copy_OwnsItsOwnText)
{
    TypeParam first = this->Make("abc");
    const TypeParam second(first);
    EXPECT_NE(first.GetBuffer(), second.GetBuffer());
    first.Clear();
    this->ExpectEmpty(first);
    this->ExpectText(second, "abc");
    this->ExpectEmpty(TypeParam(first));
}

TYPED_TEST(EitherString, Assignment_ReplacesTheText)
{
    TypeParam first = this->Make("abc");
    const TypeParam second = this->Make("longer");
    first = second;
    this->ExpectText(first, "longer");
    first = TypeParam();
    this->ExpectEmpty(first);
}

TYPED_TEST(EitherString, Assignment_ToItself_ChangesNothing)
{
    TypeParam string = this->Make("abc");
    const TypeParam& same = string;
    string = same;
    this->ExpectText(string, "abc");
}

TYPED_TEST(EitherString, Assign_ReplacesOrEmpties)
{
    TypeParam string = this->Make("abc");
    string.Assign(this->Of("other").c_str(), 3);
    this->ExpectText(string, "oth");
    string.Assign(this->Of("other").c_str(), npos);
    this->ExpectText(string, "other");
    string.Assign(nullptr, 3);
    this->ExpectEmpty(string);
    string = this->Make("abc");
    string.Assign(this->Of("other").c_str(), 0);
    this->ExpectEmpty(string);
}

TYPED_TEST(EitherString, Assign_OwnText_KeepsThatPart)
{
    TypeParam string = this->Make("abcdef");
    string.Assign(string.GetBuffer() + 2, 3);
    this->ExpectText(string, "cde");
}

TYPED_TEST(EitherString, Assign_TooLong_LeavesItEmpty)
{
    const auto text = this->Of("abc");
    for (const std::uint32_t length : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu}) {
        TypeParam string = this->Make("before");
        string.Assign(text.c_str(), length);
        this->ExpectEmpty(string);
    }
}

TYPED_TEST(EitherString, Append_PutsTheOtherBehind)
{
    TypeParam string;
    string.Append(this->Make("ab"));
    this->ExpectText(string, "ab");
    string.Append(this->Make("cde"));
    this->ExpectText(string, "abcde");
    string.Append(TypeParam());
    this->ExpectText(string, "abcde");
    string.Append(string);
    this->ExpectText(string, "abcdeabcde");
    TypeParam nothing;
    nothing.Append(TypeParam());
    this->ExpectEmpty(nothing);
}

TYPED_TEST(EitherString, Equality_ComparesLengthAndEveryCharacter)
{
    EXPECT_TRUE(this->Make("abc") == this->Make("abc"));
    EXPECT_FALSE(this->Make("abc") == this->Make("abC"));
    EXPECT_FALSE(this->Make("abc") == this->Make("ab"));
    EXPECT_FALSE(this->Make("abc") == TypeParam());
    EXPECT_TRUE(TypeParam() == TypeParam());
    const auto withZero = this->Of(std::string_view("a\0b", 3));
    const auto withOther = this->Of(std::string_view("a\0c", 3));
    EXPECT_FALSE(TypeParam(withZero.c_str(), 3) == TypeParam(withOther.c_str(), 3));
}

TYPED_TEST(EitherString, Substring_IsCutToWhatIsThere)
{
    const TypeParam string = this->Make("abcdef");
    this->ExpectText(string.Substring(0, 2), "ab");
    this->ExpectText(string.Substring(2, 3), "cde");
    this->ExpectText(string.Substring(4, 100), "ef");
    this->ExpectText(string.Substring(4, npos), "ef");
    this->ExpectText(string.Substring(5, 0xFFFFFFFE), "f");
    this->ExpectText(string.Substring(0), "abcdef");
    this->ExpectEmpty(string.Substring(2, 0));
    this->ExpectEmpty(string.Substring(6, 1));
    this->ExpectEmpty(string.Substring(7, 1));
    this->ExpectEmpty(string.Substring(npos, npos));
    this->ExpectEmpty(TypeParam().Substring(0, npos));
}

TYPED_TEST(EitherString, MemoryIsOut_LeavesEmptyStringsAndNoBlocks)
{
    if (!FailingNew::Works())
        GTEST_SKIP();
    const auto text = this->Of("abc");
    const TypeParam other = this->Make("other");
    std::int64_t open = -1;
    std::uint32_t lengths[4] = {1, 1, 1, 1};
    {
        const FailingNew refuse(FailingNew::kNever, 0);
        {
            const TypeParam made(text.c_str());
            const TypeParam copied(other);
            const TypeParam part = other.Substring(1, 2);
            TypeParam appended;
            appended.Append(other);
            lengths[0] = made.GetLength();
            lengths[1] = copied.GetLength();
            lengths[2] = part.GetLength();
            lengths[3] = appended.GetLength();
        }
        open = refuse.OpenBlocks();
    }
    for (const std::uint32_t length : lengths)
        EXPECT_EQ(length, 0u);
    EXPECT_EQ(open, 0);
}

TYPED_TEST(EitherString, AssignAndAppendWithoutMemory_DropTheOldText)
{
    if (!FailingNew::Works())
        GTEST_SKIP();
    const TypeParam other = this->Make("other");
    TypeParam assigned = this->Make("abc");
    TypeParam appended = this->Make("abc");
    {
        const FailingNew refuse(FailingNew::kNever, 0);
        assigned = other;
        appended.Append(other);
    }
    this->ExpectEmpty(assigned);
    this->ExpectEmpty(appended);
}

TEST(LVString, IsEmpty_IsTheOppositeOfHasText)
{
    EXPECT_TRUE(LVString().IsEmpty());
    EXPECT_FALSE(LVString("a").IsEmpty());
}

TEST(LVString, ToUnsigned_ReadsTheNumberThatTheTextBeginsWith)
{
    struct Row {
        const char* text;
        std::uint32_t number;
    };
    constexpr std::uint32_t fallback = 77;
    for (const Row& row : {
             Row{nullptr, fallback},
             Row{"", fallback},
             Row{"0", 0},
             Row{"12", 12},
             Row{"007", 7},
             Row{" \t\n\v\f\r12", 12},
             Row{"+12", 12},
             Row{"12ul", 12},
             Row{"12.9", 12},
             Row{"12 34", 12},
             Row{"4294967295", 0xFFFFFFFF},
             Row{"4294967296", 0xFFFFFFFF}, // too large
             Row{"99999999999999999999999", 0xFFFFFFFF},
             Row{"-1", 0xFFFFFFFF}, // counts downward
             Row{"-4294967295", 1},
             Row{"-4294967296", 0xFFFFFFFF},
             Row{"abc", fallback}, // no number
             Row{"-", fallback},
             Row{"+", fallback},
             Row{"+-1", fallback},
             Row{"   ", fallback},
             Row{"- 1", fallback},
         })
        EXPECT_EQ(LVString(row.text).ToUnsigned(fallback), row.number) << (row.text ? row.text : "null");
}

TEST(LVString, ToUnicode_Ascii_IsTheSameText)
{
    EXPECT_TRUE(LVString("Open Preset").ToUnicode() == LVUnicodeString(u"Open Preset"));
    EXPECT_FALSE(LVString().ToUnicode().HasText());
}

#ifdef _WIN32
constexpr char kWesternLetter[] = "\xE9";
bool IsWestern()
{
    return GetACP() == 1252;
}
#else
constexpr char kWesternLetter[] = "\xC3\xA9"; // narrow text is UTF-8 here
bool IsWestern()
{
    return true;
}
#endif

TEST(LVString, ToUnicode_LetterWithAnAccent_IsOneCharacterAndTwoBytesBack)
{
    if (!IsWestern())
        GTEST_SKIP() << "another code page";
    const LVUnicodeString wide = LVString(kWesternLetter).ToUnicode();
    EXPECT_TRUE(wide == LVUnicodeString(u"\u00E9"));
    EXPECT_TRUE(wide.ToNarrow() == LVString("\xC3\xA9"));
}

TEST(LVUnicodeString, Kept_ToNarrow_IsUtf8WhateverNarrowTextIs)
{
    EXPECT_TRUE(LVUnicodeString(u"a\u00E9\u20AC\U0001F600").ToNarrow()
                == LVString("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"));
    EXPECT_FALSE(LVUnicodeString().ToNarrow().HasText());
}

TEST(LVUnicodeString, ToNarrow_LoneSurrogate_BecomesAReplacement)
{
    const char16_t text[] = {u'a', 0xD83D, u'z', 0};
    EXPECT_TRUE(LVUnicodeString(text).ToNarrow() == LVString("a\xEF\xBF\xBDz"));
}

TEST(LVUnicodeString, AssignUtf8_ReplacesTheText)
{
    LVUnicodeString string(u"before");
    string.AssignUtf8("a\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_TRUE(string == LVUnicodeString(u"a\u00E9\U0001F600"));
    EXPECT_EQ(string.GetLength(), 4u);
    string.AssignUtf8("abcdef", 3);
    EXPECT_TRUE(string == LVUnicodeString(u"abc"));
    string.AssignUtf8("abc", 0);
    EXPECT_FALSE(string.HasText());
    string.AssignUtf8("abc");
    string.AssignUtf8(nullptr);
    EXPECT_FALSE(string.HasText());
}

TEST(LVUnicodeString, AssignUtf8_BrokenText_HasReplacementsAndReadsNoFurther)
{
    LVUnicodeString string;
    string.AssignUtf8("\xE2\x82\xAC", 2); // the third byte is somebody else's
    EXPECT_TRUE(string == LVUnicodeString(u"\uFFFD"));
    string.AssignUtf8("\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80");
    EXPECT_EQ(string.GetLength(),
              9u); // an overlong form, a surrogate, a number too large: a mark for each byte
    struct Two {
        char text[2];
    };
    const FlushRecord<Two> cut(std::uint8_t{0xF0});
    string.AssignUtf8(cut.Get()->text, 2);
    EXPECT_TRUE(string == LVUnicodeString(u"\uFFFD\uFFFD"));
}

TEST(LVUnicodeString, ConversionsWithoutMemory_AreEmpty)
{
    if (!FailingNew::Works())
        GTEST_SKIP();
    const LVString narrow("abc");
    const LVUnicodeString wide(u"abc");
    LVUnicodeString assigned(u"abc");
    std::uint32_t lengths[3] = {1, 1, 1};
    {
        const FailingNew refuse(FailingNew::kNever, 0);
        assigned.AssignUtf8("xyz");
        lengths[0] = assigned.GetLength();
        lengths[1] = narrow.ToUnicode().GetLength();
        lengths[2] = wide.ToNarrow().GetLength();
    }
    for (const std::uint32_t length : lengths)
        EXPECT_EQ(length, 0u);
}

TEST(LVUnicodeString, IsValidIndex_IsWhereACharacterStands)
{
    const LVUnicodeString string(u"abc");
    EXPECT_TRUE(string.IsValidIndex(0));
    EXPECT_TRUE(string.IsValidIndex(2));
    EXPECT_FALSE(string.IsValidIndex(3));
    EXPECT_FALSE(string.IsValidIndex(npos));
    EXPECT_FALSE(LVUnicodeString().IsValidIndex(0));
}

TEST(LVUnicodeString, Find_GivesTheFirstPlaceFromStartOn)
{
    const LVUnicodeString string(u"abcabcab");
    const LVUnicodeString wanted(u"ab");
    EXPECT_EQ(string.Find(wanted), 0u);
    EXPECT_EQ(string.Find(wanted, 0), 0u);
    EXPECT_EQ(string.Find(wanted, 1), 3u);
    EXPECT_EQ(string.Find(wanted, 6), 6u);
    EXPECT_EQ(string.Find(wanted, 7), npos);
    EXPECT_EQ(string.Find(wanted, 8), npos);
    EXPECT_EQ(string.Find(wanted, 9), npos);
    EXPECT_EQ(string.Find(wanted, npos), npos);
    EXPECT_EQ(string.Find(LVUnicodeString(u"abd")), npos);
    EXPECT_EQ(string.Find(LVUnicodeString(u"abcabcabc")), npos);
    EXPECT_EQ(LVUnicodeString().Find(wanted), npos);
}

TEST(LVUnicodeString, Find_Nothing_IsFoundAtStart)
{
    const LVUnicodeString string(u"abc");
    EXPECT_EQ(string.Find(LVUnicodeString(), 0), 0u);
    EXPECT_EQ(string.Find(LVUnicodeString(), 3), 3u);
    EXPECT_EQ(string.Find(LVUnicodeString(), 4), npos);
}

TEST(LVUnicodeString, FindLast_GivesTheLastPlace)
{
    const LVUnicodeString string(u"C:\\one\\two");
    EXPECT_EQ(string.FindLast(LVUnicodeString(u"\\")), 6u);
    EXPECT_EQ(string.FindLast(LVUnicodeString(u"C:")), 0u);
    EXPECT_EQ(string.FindLast(LVUnicodeString(u"two")), 7u);
    EXPECT_EQ(string.FindLast(LVUnicodeString(u"three")), npos);
    EXPECT_EQ(string.FindLast(LVUnicodeString(u"C:\\one\\two\\")), npos);
    EXPECT_EQ(LVUnicodeString().FindLast(LVUnicodeString(u"a")), npos);
    EXPECT_EQ(string.FindLast(LVUnicodeString()), 10u);
}

TEST(LVUnicodeString, Plus_LeavesBothAndGivesTheSum)
{
    const LVUnicodeString first(u"ab");
    const LVUnicodeString second(u"cd");
    EXPECT_TRUE(first + second == LVUnicodeString(u"abcd"));
    EXPECT_TRUE(first + LVUnicodeString() == first);
    EXPECT_TRUE(LVUnicodeString() + second == second);
    EXPECT_TRUE(first == LVUnicodeString(u"ab"));
}

TEST(LVUnicodeString, PlusWithoutMemory_IsEmptyAndNeverHalf)
{
    if (!FailingNew::Works())
        GTEST_SKIP();
    const LVUnicodeString first(u"ab");
    const LVUnicodeString second(u"cd");
    for (std::uint64_t refused = 0; refused < 2; ++refused) {
        std::uint32_t length = 1;
        std::uint64_t failures = 0;
        {
            const FailingNew refuse(refused);
            length = (first + second).GetLength();
            failures = refuse.Refused();
        }
        EXPECT_EQ(failures, 1u);
        EXPECT_EQ(length, 0u) << refused;
    }
}

} // namespace
} // namespace kelmora

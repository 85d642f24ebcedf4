#include "library/presets/preset_file.h"

#include <algorithm>
#include <cfenv>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "library/presets/xml_limits.h"
#include "platform/text.h"
#include "tests/library/presets/comma_locale.h"
#include "tests/platform/file_content.h"
#include "tests/platform/test_folder.h"
#include "tests/support/failing_new.h"
#include "tests/support/flush_record.h"

#if defined(__SANITIZE_ADDRESS__)
#define KELMORA_LEAKS_ARE_COUNTED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KELMORA_LEAKS_ARE_COUNTED
#endif
#endif
#ifdef KELMORA_LEAKS_ARE_COUNTED
#include <sanitizer/lsan_interface.h>
#endif

namespace kelmora {
namespace {

const std::string kHead = "<?xml version=\"1.0\" standalone=\"no\" ?>\n"
                          "<!-- Effect's Preset File -->\n";

/// One entry of each kind.
PresetData EveryKind()
{
    PresetData preset = {};
    std::strcpy(preset.Name, "My Look");
    std::strcpy(preset.LibraryName, "Larkvee Kelmora");
    std::strcpy(preset.EffectName, "Water Color");
    preset.params[0] = {FloatWord(0.25f), FloatWord(-1.5f), ParamPoint};
    preset.params[1] = {3, 0, ParamChoice};
    preset.params[2] = {FloatWord(0.36842105f), 0, ParamFloat};
    preset.params[3] = {0x00FF8040, 0, ParamColor};
    preset.params[4] = {1, 0, ParamCheck};
    preset.params[5] = {0, 0, ParamCheck};
    preset.paramCount = 6;
    return preset;
}

const std::string kEveryKind = kHead
    + "<Preset Name=\"My Look\" LibraryName=\"Larkvee Kelmora\" EffectName=\"Water Color\">\n"
      "    <parameter type=\"0\" x=\"0.250000\" y=\"-1.500000\" />\n"
      "    <parameter type=\"1\" value=\"3\" />\n"
      "    <parameter type=\"2\" value=\"0.368421\" />\n"
      "    <parameter type=\"3\" value=\"16744512\" />\n" // 0xFF8040
      "    <parameter type=\"4\" value=\"1\" />\n"
      "    <parameter type=\"4\" value=\"0\" />\n"
      "</Preset>\n";

/// A preset with one entry, and nothing else in it.
PresetData OneEntry(const ParamValue& entry)
{
    PresetData preset = {};
    preset.params[0] = entry;
    preset.paramCount = 1;
    return preset;
}

std::string OneEntryText(const std::string& parameter)
{
    return kHead + "<Preset Name=\"\" LibraryName=\"\" EffectName=\"\">\n    " + parameter + "\n</Preset>\n";
}

/// A record in which nothing is zero.
PresetData Dirty()
{
    PresetData preset;
    std::memset(&preset, 0xAB, sizeof preset);
    return preset;
}

/// What is read of a text, which has entries.
PresetData Read(std::string_view text)
{
    PresetData preset = Dirty();
    EXPECT_TRUE(ReadPreset(text, &preset)) << text.substr(0, 200);
    return preset;
}

/// What is read of these parameter elements.
PresetData ReadEntries(const std::string& elements)
{
    return Read("<Preset>" + elements + "</Preset>");
}

bool CanRead(const std::string& text)
{
    PresetData preset = Dirty();
    return ReadPreset(text, &preset);
}

std::string Times(int count, const std::string& text)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

void ExpectEntry(const ParamValue& entry, std::uint32_t value, std::uint32_t valueY, std::uint32_t kind)
{
    EXPECT_EQ(entry.value, value);
    EXPECT_EQ(entry.valueY, valueY);
    EXPECT_EQ(entry.kind, kind);
}

// --- writing ------------------------------------------------------------------------------------------------

TEST(PresetText, EveryKind_IsWrittenByteForByte)
{
    EXPECT_EQ(PresetText(EveryKind()), kEveryKind);
}

TEST(PresetText, NoEntries_LeaveAnEmptyElement)
{
    EXPECT_EQ(PresetText(PresetData{}), kHead + "<Preset Name=\"\" LibraryName=\"\" EffectName=\"\" />\n");
}

TEST(PresetText, WholeWords_AreSigned)
{
    EXPECT_EQ(PresetText(OneEntry({0xFFFFFFFF, 0, ParamChoice})),
              OneEntryText("<parameter type=\"1\" value=\"-1\" />"));
    EXPECT_EQ(PresetText(OneEntry({0x80000000, 0, ParamColor})),
              OneEntryText("<parameter type=\"3\" value=\"-2147483648\" />"));
}

TEST(PresetText, CheckBox_HasItsLowByteAlone)
{
    EXPECT_EQ(PresetText(OneEntry({0xFFFFFF00, 0, ParamCheck})),
              OneEntryText("<parameter type=\"4\" value=\"0\" />"));
    EXPECT_EQ(PresetText(OneEntry({0xFFFFFF80, 0, ParamCheck})),
              OneEntryText("<parameter type=\"4\" value=\"1\" />"));
}

TEST(PresetText, UnknownKind_HasNoValue)
{
    EXPECT_EQ(PresetText(OneEntry({7, 7, 5})), OneEntryText("<parameter type=\"5\" />"));
    EXPECT_EQ(PresetText(OneEntry({7, 7, 0xFFFFFFFF})), OneEntryText("<parameter type=\"-1\" />"));
}

TEST(PresetText, LargeAndSmallLevels_HaveSixDecimalsToo)
{
    EXPECT_EQ(PresetText(OneEntry({FloatWord(1e-7f), 0, ParamFloat})),
              OneEntryText("<parameter type=\"2\" value=\"0.000000\" />"));
    EXPECT_EQ(PresetText(OneEntry({FloatWord(123456792.0f), 0, ParamFloat})),
              OneEntryText("<parameter type=\"2\" value=\"123456792.000000\" />"));
}

TEST(PresetText, NamesWithSignsOfXml_AreEscaped)
{
    PresetData preset = OneEntry({1, 0, ParamCheck});
    std::strcpy(preset.Name, "<a> & 'b' &#x41; \t\n");
    EXPECT_NE(PresetText(preset).find("Name=\"&lt;a&gt; &amp; &apos;b&apos; &amp;#x41; &#x09;&#x0A;\" "),
              std::string::npos)
        << PresetText(preset);
    EXPECT_STREQ(Read(PresetText(preset)).Name, preset.Name);
    std::strcpy(preset.Name, "say \"so\"");
    EXPECT_STREQ(Read(PresetText(preset)).Name, preset.Name);
}

TEST(PresetText, CountOutOfRange_IsCut)
{
    PresetData preset = {};
    for (ParamValue& entry : preset.params)
        entry = {1, 0, ParamChoice};
    const std::string element = "\n    <parameter type=\"1\" value=\"1\" />";
    const std::string start = kHead + "<Preset Name=\"\" LibraryName=\"\" EffectName=\"\">";
    for (const std::int32_t count : {100, 101, 0x7FFFFFFF}) {
        preset.paramCount = count;
        EXPECT_EQ(PresetText(preset), start + Times(100, element) + "\n</Preset>\n");
    }
    for (const std::int32_t count : {0, -1, -0x7FFFFFFF - 1}) {
        preset.paramCount = count;
        EXPECT_EQ(PresetText(preset), kHead + "<Preset Name=\"\" LibraryName=\"\" EffectName=\"\" />\n");
    }
}

TEST(PresetText, RecordWithoutEndMarksAtTheEndOfMemory_IsCutAt259Characters)
{
    FlushRecord<PresetData> flush('n');
    flush.Freeze();
    const std::string text = PresetText(*flush.Get());
    const std::string name(259, 'n');
    EXPECT_NE(
        text.find("<Preset Name=\"" + name + "\" LibraryName=\"" + name + "\" EffectName=\"" + name + "\">"),
        std::string::npos);
}

// --- reading ------------------------------------------------------------------------------------------------

TEST(ReadPreset, EveryKind_ComesBackAndKeepsNothingOfTheRecord)
{
    const PresetData preset = Read(kEveryKind);
    EXPECT_STREQ(preset.Name, "My Look");
    EXPECT_STREQ(preset.LibraryName, "Larkvee Kelmora");
    EXPECT_STREQ(preset.EffectName, "Water Color");
    ASSERT_EQ(preset.paramCount, 6);
    ExpectEntry(preset.params[0], FloatWord(0.25f), FloatWord(-1.5f), ParamPoint);
    EXPECT_EQ(preset.params[1].value, 3u);
    EXPECT_EQ(preset.params[2].value, FloatWord(0.368421f));
    EXPECT_EQ(preset.params[3].value, 0x00FF8040u);
    EXPECT_EQ(preset.params[4].value & 0xFF, 1u);
    EXPECT_EQ(preset.params[5].value & 0xFF, 0u);
    for (std::uint32_t i = 0; i < 5; ++i)
        EXPECT_EQ(preset.params[i].kind, i);
}

TEST(ReadPreset, Level_ComesBackRoundedToSixDecimals)
{
    const PresetData preset = Read(PresetText(OneEntry({FloatWord(0.36842105f), 0, ParamFloat})));
    EXPECT_EQ(WordFloat(preset.params[0].value), 0.368421f);
}

TEST(ReadPreset, TextReadAndWrittenAgain_IsTheSame)
{
    EXPECT_EQ(PresetText(Read(kEveryKind)), kEveryKind);
}

TEST(ReadPreset, MissingNames_BecomeEmpty)
{
    const PresetData preset = ReadEntries("<parameter type=\"1\" value=\"1\"/>");
    EXPECT_STREQ(preset.Name, "");
    EXPECT_STREQ(preset.LibraryName, "");
    EXPECT_STREQ(preset.EffectName, "");
}

TEST(ReadPreset, Names_AreCutAt259Characters)
{
    for (const std::size_t length : {0u, 258u, 259u, 260u, 5000u, 1000000u}) {
        const std::string name(length, 'n');
        const PresetData preset = Read("<Preset Name='" + name + "' LibraryName='" + name + "' EffectName='"
                                       + name + "'><parameter type='1'/></Preset>");
        const std::string cut = name.substr(0, 259);
        EXPECT_EQ(preset.Name, cut);
        EXPECT_EQ(preset.LibraryName, cut);
        EXPECT_EQ(preset.EffectName, cut);
        EXPECT_EQ(preset.paramCount, 1);
    }
}

TEST(ReadPreset, RecordAtTheEndOfMemory_IsWrittenNoFurther)
{
    const FlushRecord<PresetData> flush(0xFF);
    const std::string name(5000, 'n');
    EXPECT_TRUE(ReadPreset("<Preset EffectName='" + name + "'>"
                               + Times(200, "<parameter type='2' value='1'/>") + "</Preset>",
                           flush.Get()));
    EXPECT_EQ(flush.Read().paramCount, 100);
}

TEST(ReadPreset, MoreThanAHundredEntries_AreLeftOut)
{
    for (const int count : {99, 100, 101, 1000, 100000}) {
        const PresetData preset = ReadEntries(Times(count, "<parameter type=\"1\" value=\"5\" />"));
        EXPECT_EQ(preset.paramCount, std::min(count, 100));
        ExpectEntry(preset.params[98], 5, 0, ParamChoice);
    }
}

TEST(ReadPreset, MissingType_IsAPoint)
{
    ExpectEntry(ReadEntries("<parameter x='0.5' y='2' value='9'/>").params[0], FloatWord(0.5f),
                FloatWord(2.0f), ParamPoint);
    EXPECT_EQ(ReadEntries("<parameter type='' x='1'/>").params[0].kind, 0u);
    EXPECT_EQ(ReadEntries("<parameter type='x' x='1'/>").params[0].kind, 0u);
}

TEST(ReadPreset, IntegerValues_AreReadAsTextBegins)
{
    EXPECT_EQ(ReadEntries("<parameter type='1' value=' 12abc'/>").params[0].value, 12u);
    EXPECT_EQ(ReadEntries("<parameter type='3' value='99999999999'/>").params[0].value, 0x7FFFFFFFu);
    EXPECT_EQ(ReadEntries("<parameter type='1' value='-1'/>").params[0].value, 0xFFFFFFFFu);
    EXPECT_EQ(ReadEntries("<parameter type=' 1 ' value='7'/>").params[0].value, 7u);
}

TEST(ReadPreset, LevelsThatAreNoNumbers_AreZero)
{
    for (const std::string text : {"", "nan", "inf", "-inf", "abc", ","})
        EXPECT_EQ(ReadEntries("<parameter type='2' value='" + text + "'/>").params[0].value, FloatWord(0.0f));
    EXPECT_EQ(ReadEntries("<parameter type='2' value='1e400'/>").params[0].value,
              FloatWord(std::numeric_limits<float>::max()));
    EXPECT_EQ(ReadEntries("<parameter type='2' value='1,5'/>").params[0].value, FloatWord(1.0f));
}

TEST(ReadPreset, CheckBox_IsOnForEveryIntegerButZero)
{
    for (const std::string text : {"1", "256", "-1", "512", "99999999999"})
        EXPECT_EQ(ReadEntries("<parameter type='4' value='" + text + "'/>").params[0].value, 1u) << text;
    for (const std::string text : {"0", "", "0.9", "true", "-0"})
        EXPECT_EQ(ReadEntries("<parameter type='4' value='" + text + "'/>").params[0].value, 0u) << text;
}

TEST(ReadPreset, Kept_WordsThatAnElementDoesNotSet_StayFromTheOneBefore)
{
    const PresetData preset = ReadEntries("<parameter type='0' y='2'/>"            // x never set: zero
                                          "<parameter type='1'/>"                  // all of the point
                                          "<parameter type='3' value='16909060'/>" // 0x01020304
                                          "<parameter type='4' value='0'/>"        // the low byte alone
                                          "<parameter type='5' value='9'/>"        // no kind that has a value
                                          "<parameter type='-1'/>"
                                          "<parameter type='0' x='1'/>"
                                          "<parameter type='2147483648'/>");
    ASSERT_EQ(preset.paramCount, 8);
    const std::uint32_t y = FloatWord(2.0f);
    ExpectEntry(preset.params[0], 0, y, 0);
    ExpectEntry(preset.params[1], 0, y, 1);
    ExpectEntry(preset.params[2], 0x01020304, y, 3);
    ExpectEntry(preset.params[3], 0x01020300, y, 4);
    ExpectEntry(preset.params[4], 0x01020300, y, 5);
    ExpectEntry(preset.params[5], 0x01020300, y, 0xFFFFFFFF);
    ExpectEntry(preset.params[6], FloatWord(1.0f), y, 0);
    ExpectEntry(preset.params[7], FloatWord(1.0f), y, 0x7FFFFFFF);
}

TEST(ReadPreset, TextWithoutAPreset_WritesNothing)
{
    for (const std::string text : {
             "",
             " \n\t ",
             "\xEF\xBB\xBF",
             "no XML",
             "<",
             "<?xml version=\"1.0\"?>",
             "<!-- <Preset><parameter/></Preset> -->",
             "<preset><parameter/></preset>",
             "<Presets><parameter/></Presets>",
             "<Other><Preset><parameter/></Preset></Other>", // not at the top
             "<Preset><parameter/>",                         // breaks off
             "<Preset><parameter/></Preset",
             "<Preset><parameter></Preset>",
             "<Preset Name='a' Name='b'><parameter/></Preset>",
             "<Preset Name=\"abc",
             "junk<Preset><parameter/></Preset>",
         }) {
        PresetData preset = Dirty();
        const PresetData before = preset;
        EXPECT_FALSE(ReadPreset(text, &preset)) << text;
        EXPECT_EQ(std::memcmp(&preset, &before, sizeof preset), 0) << text;
    }
}

TEST(ReadPreset, NoEntries_IsFalseAndTheRecordIsThatOfTheFile)
{
    for (const std::string text : {"<Preset Name='n'/>", "<Preset Name='n'>text<other/></Preset>"}) {
        PresetData preset = Dirty();
        EXPECT_FALSE(ReadPreset(text, &preset)) << text;
        EXPECT_EQ(preset.paramCount, 0);
        EXPECT_STREQ(preset.Name, "n");
        EXPECT_STREQ(preset.LibraryName, "");
        EXPECT_STREQ(preset.EffectName, "");
    }
}

TEST(ReadPreset, NoRecord_IsFalse)
{
    EXPECT_FALSE(ReadPreset(kEveryKind, nullptr));
}

TEST(ReadPreset, OnlyDirectChildrenOfTheFirstPreset_AreEntries)
{
    const PresetData preset =
        Read("<!DOCTYPE x><Other/><Preset Name='first'>text"
             "<parameter type='1' value='1'><parameter type='1' value='2'/></parameter>"
             "<other><parameter type='1' value='3'/></other><!-- c --><![CDATA[d]]>"
             "<Parameter type='1' value='4'/>more<parameter type='1' value='5'/></Preset>"
             "<Preset Name='second'><parameter type='1' value='6'/></Preset>");
    EXPECT_STREQ(preset.Name, "first");
    ASSERT_EQ(preset.paramCount, 2);
    EXPECT_EQ(preset.params[0].value, 1u);
    EXPECT_EQ(preset.params[1].value, 5u);
}

TEST(ReadPreset, Entities_BecomeCharacters)
{
    const std::string entries = "<parameter type='1'/></Preset>";
    EXPECT_STREQ(Read("<Preset Name='&lt;&amp;&gt;&quot;&apos;&#65;&#x42;'>" + entries).Name, "<&>\"'AB");
    EXPECT_STREQ(Read(kHead + "<Preset Name='&#xE9;&#x20AC;'>" + entries).Name, "\xC3\xA9\xE2\x82\xAC");
    EXPECT_STREQ(Read(kHead + "<Preset Name='a&#x110000;&#99999999999;b&unknown;&'>" + entries).EffectName,
                 "");
    EXPECT_FALSE(CanRead("<Preset Name='&#xZZ;'>" + entries));
    EXPECT_FALSE(CanRead("<Preset Name='&#x41'>" + entries));
}

TEST(ReadPreset, ZeroCharacter_EndsTheText)
{
    EXPECT_EQ(Read(kEveryKind + std::string(1, '\0') + "<<<<").paramCount, 6);
    EXPECT_FALSE(CanRead(std::string(1, '\0') + kEveryKind));
    EXPECT_FALSE(CanRead(kEveryKind.substr(0, 100) + std::string(1, '\0') + kEveryKind.substr(100)));
    EXPECT_FALSE(CanRead("<?xml version=\"1.0\" " + std::string(1, '\0')));
}

TEST(ReadPreset, ByteOrderMark_IsSkipped)
{
    EXPECT_EQ(PresetText(Read("\xEF\xBB\xBF" + kEveryKind)), kEveryKind);
}

TEST(ReadPreset, OtherDeclarationsAndUnknownWordsInThem_AreSkipped)
{
    const std::string body = kEveryKind.substr(kEveryKind.find("<!--"));
    for (const char* const declarations : {
             "<?xml version=\"1.0\"?>\n<?xml-stylesheet type=\"text/xsl\" href=\"look.xsl\"?>\n",
             "<?xml version=\"1.0\" author=\"somebody\" draft ?>\n",
             "<?xml version=1.0 standalone=no ?>",
             "",
         })
        EXPECT_EQ(PresetText(Read(declarations + body)), kEveryKind) << declarations;
}

TEST(ReadPreset, TextOf16Bits_IsRefused)
{
    std::string wide = "\xFF\xFE";
    for (const char c : kEveryKind)
        wide += {c, '\0'};
    EXPECT_FALSE(CanRead(wide));
}

TEST(ReadPreset, LineEndsOfEverySystem_ReadTheSame)
{
    std::string windows, old;
    for (const char c : kEveryKind) {
        windows += c == '\n' ? "\r\n" : std::string(1, c);
        old += c == '\n' ? '\r' : c;
    }
    EXPECT_EQ(PresetText(Read(windows)), kEveryKind);
    EXPECT_EQ(PresetText(Read(old)), kEveryKind);
    const std::string entries = "><parameter type='1'/></Preset>";
    EXPECT_STREQ(Read("<Preset Name='a\r\nb\rc\nd\r\r\ne'" + entries).Name, "a\nb\nc\nd\n\ne");
}

TEST(ReadPreset, NameInACodePage_ComesBackByteForByte)
{
    PresetData preset = EveryKind();
    for (unsigned byte = 1; byte <= 255; ++byte)
        preset.Name[byte - 1] = static_cast<char>(byte);
    preset.Name[255] = '\0';
    std::strcpy(preset.LibraryName, "caf\xE9"); // a letter right before the quote
    std::strcpy(preset.EffectName, "caf\xC3\xA9");
    const PresetData back = Read(PresetText(preset));
    EXPECT_STREQ(back.Name, preset.Name);
    EXPECT_STREQ(back.LibraryName, preset.LibraryName);
    EXPECT_STREQ(back.EffectName, preset.EffectName);
    EXPECT_EQ(back.paramCount, 6);
}

TEST(ReadPreset, TextThatEndsWithinACharacter_IsReadNoFurther)
{
    for (const char* tail : {"\xF0", "\xE2", "\xE2\x82", "\xF0\x9F", "\xF0\x9F\x98", "\xC3", "\xEF",
                             "\xEF\xBB", "&", "&#", "&#x", "&#x4"}) {
        for (const std::string head :
             {"<Preset Name=\"abc", "<Preset>abc", "<Pre", "<!-- ", "<?xml version='", "<![CDATA["}) {
            EXPECT_FALSE(CanRead(head + tail));
            EXPECT_FALSE(CanRead(kHead + head + tail));
        }
    }
}

TEST(ReadPreset, EveryPrefixOfAFile_IsRefused)
{
    const std::size_t end = kEveryKind.rfind('>');
    for (std::size_t length = 0; length <= end; ++length)
        EXPECT_FALSE(CanRead(kEveryKind.substr(0, length))) << length;
    EXPECT_TRUE(CanRead(kEveryKind.substr(0, end + 1)));
}

TEST(ReadPreset, Depth_EndsAtTheLimit)
{
    const auto nested = [](int depth) { // with the preset itself
        return "<Preset><parameter type='1'/>" + Times(depth - 1, "<a>") + Times(depth - 1, "</a>")
            + "</Preset>";
    };
    EXPECT_TRUE(CanRead(nested(2)));
    EXPECT_TRUE(CanRead(nested(kMostXmlDepth)));
    EXPECT_FALSE(CanRead(nested(kMostXmlDepth + 1)));
    EXPECT_FALSE(CanRead(nested(100000)));
}

TEST(ReadPreset, Attributes_EndAtTheLimit)
{
    const auto with = [](int count) {
        std::string text = "<Preset";
        for (int i = 0; i < count; ++i)
            text += " n" + std::to_string(i) + "='v'";
        return text + "><parameter type='1'/></Preset>";
    };
    EXPECT_TRUE(CanRead(with(kMostXmlAttributes)));
    EXPECT_FALSE(CanRead(with(kMostXmlAttributes + 1)));
    EXPECT_FALSE(CanRead(with(100000)));
}

TEST(ReadPreset, LocaleWithADecimalComma_ChangesNothing)
{
    std::string text;
    {
        const CommaLocale locale;
        if (!CommaLocale::IsHere())
            GTEST_SKIP() << "there is no such locale here";
        text = PresetText(Read(kEveryKind));
    }
    EXPECT_EQ(text, kEveryKind);
}

TEST(ReadPreset, RoundingOfTheHost_ChangesNothingAndStays)
{
    const std::string elements = "<parameter type='2' value='0.1'/><parameter type='2' value='0.7'/>";
    PresetData preset = OneEntry({FloatWord(0.0078125f), 0, ParamFloat}); // a tie in the sixth place
    for (const int rounding : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        PresetData read = Dirty();
        std::fesetround(rounding);
        const bool good = ReadPreset("<Preset>" + elements + "</Preset>", &read);
        const std::string text = PresetText(preset);
        const int after = std::fegetround();
        std::fesetround(FE_TONEAREST);
        EXPECT_TRUE(good);
        EXPECT_EQ(after, rounding);
        EXPECT_EQ(read.params[0].value, 0x3DCCCCCDu); // the float above 0.1 is the nearer one,
        EXPECT_EQ(read.params[1].value, 0x3F333333u); // of 0.7 that below
        EXPECT_NE(text.find("value=\"0.007812\""), text.npos) << text;
    }
}

// --- files --------------------------------------------------------------------------------------------------

struct PresetFile : testing::Test {
    PresetFile() { preset = EveryKind(); }

    bool Save(const std::filesystem::path& name)
    {
        return SavePresetFile((folder.Path() / name).u16string().c_str(), preset);
    }
    bool Load(const std::filesystem::path& name)
    {
        preset = Dirty();
        return LoadPresetFile((folder.Path() / name).u16string().c_str(), &preset);
    }
    std::size_t Files() const
    {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
    }

    TestFolder folder;
    PresetData preset;
};

TEST_F(PresetFile, Saved_HasTheTextAndNothingElseIsLeft)
{
    EXPECT_TRUE(Save("a.fxpklmj"));
    EXPECT_EQ(FileContent(folder.Path() / "a.fxpklmj"), kEveryKind);
    EXPECT_EQ(Files(), 1u);
}

TEST_F(PresetFile, SavedAndLoaded_IsTheSamePreset)
{
    EXPECT_TRUE(Save("a.fxpklmj"));
    EXPECT_TRUE(Load("a.fxpklmj"));
    EXPECT_EQ(PresetText(preset), kEveryKind);
}

TEST_F(PresetFile, SavedOverAnotherFile_ReplacesIt)
{
    TestFolder::Write(folder.Path() / "a.prs", std::string(100000, 'x'));
    EXPECT_TRUE(Save("a.prs"));
    EXPECT_EQ(FileContent(folder.Path() / "a.prs"), kEveryKind);
    EXPECT_EQ(Files(), 1u);
}

TEST_F(PresetFile, NamesBeyondAscii_AreFound)
{
    const std::filesystem::path name = u"\u00DCbung \u65E5\u672C.prs";
    EXPECT_TRUE(Save(name));
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / name));
    EXPECT_TRUE(Load(name));
}

TEST_F(PresetFile, MissingFile_IsNotLoadedAndTheRecordStays)
{
    EXPECT_FALSE(Load("missing.prs"));
    const PresetData dirty = Dirty();
    EXPECT_EQ(std::memcmp(&preset, &dirty, sizeof preset), 0);
    EXPECT_FALSE(LoadPresetFile(u"", &preset));
}

TEST_F(PresetFile, Folder_IsNeitherLoadedNorReplaced)
{
    folder.Folder("a.prs");
    EXPECT_FALSE(Load("a.prs"));
    EXPECT_FALSE(Save("a.prs"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "a.prs"));
    EXPECT_EQ(Files(), 1u);
    EXPECT_FALSE(SavePresetFile(u"", preset));
    EXPECT_FALSE(Save("no folder/a.prs"));
}

TEST_F(PresetFile, Size_EndsAt16MiB)
{
    TestFolder::Write(folder.Path() / "empty.prs", "");
    EXPECT_FALSE(Load("empty.prs"));
    TestFolder::Write(folder.Path() / "one.prs", "<");
    EXPECT_FALSE(Load("one.prs"));
    const std::string full = kEveryKind + std::string(kMostPresetFileBytes - kEveryKind.size(), ' ');
    TestFolder::Write(folder.Path() / "full.prs", full);
    EXPECT_TRUE(Load("full.prs"));
    EXPECT_EQ(preset.paramCount, 6);
    TestFolder::Write(folder.Path() / "over.prs", full + " ");
    EXPECT_FALSE(Load("over.prs"));
}

TEST_F(PresetFile, NoRecord_IsNotLoaded)
{
    ASSERT_TRUE(Save("a.prs"));
    EXPECT_FALSE(LoadPresetFile((folder.Path() / "a.prs").u16string().c_str(), nullptr));
}

// Every single allocation fails once, and all from each one on.
TEST_F(PresetFile, MemoryIsOut_IsAFailureAndNothingIsLeftBehind)
{
    if (!FailingNew::Works())
        GTEST_SKIP();
#ifdef KELMORA_LEAKS_ARE_COUNTED
    __lsan_disable(); // the parser drops what it was making when memory ran out
#endif
    ASSERT_TRUE(Save("a.prs"));
    const std::u16string path = (folder.Path() / "a.prs").u16string();
    const auto outcome = [&](bool save, bool only, std::uint64_t call) {
        const FailingNew refuse(only ? call : FailingNew::kNever, only ? FailingNew::kNever : call);
        PresetData record = EveryKind();
        const bool good = save ? SavePresetFile(path.c_str(), record) : LoadPresetFile(path.c_str(), &record);
        return std::pair(good, refuse.Refused());
    };
    for (const bool save : {false, true}) {
        for (const bool only : {false, true}) {
            std::uint64_t call = 0;
            for (;; ++call) {
                const auto [good, refused] = outcome(save, only, call);
                if (refused == 0) {
                    EXPECT_TRUE(good);
                    break;
                }
                EXPECT_FALSE(good) << call;
                ASSERT_EQ(Files(), 1u);
            }
            EXPECT_GT(call, 5u);
            EXPECT_EQ(FileContent(folder.Path() / "a.prs"), kEveryKind);
        }
    }
#ifdef KELMORA_LEAKS_ARE_COUNTED
    __lsan_enable();
#endif
}

// --- paths --------------------------------------------------------------------------------------------------

TEST(IsPresetPath, AsciiPath_IsOne)
{
    EXPECT_TRUE(IsPresetPath(u"C:\\Users\\me\\look.fxpklma"));
    EXPECT_TRUE(IsPresetPath(u""));
}

TEST(IsPresetPath, Kept_PathThatGrowsInNarrowText_IsNone)
{
    // Whatever the encoding of narrow text is, no letter of another script fits into one byte of it here.
    const std::u16string path = u"look \u65E5\u672C.fxpklma";
    const platform::Converted narrow = platform::Utf16ToNarrow(path, {});
    EXPECT_FALSE(narrow.whole && narrow.length == path.size());
    EXPECT_FALSE(IsPresetPath(path));
}

TEST(IsPresetPath, LetterThatHasNoCounterpart_IsNone)
{
    const char16_t lone[] = {u'a', 0xD83D, u'z'};
    EXPECT_FALSE(IsPresetPath({lone, 3}));
}

} // namespace
} // namespace kelmora

#include "library/language/translation_helper.h"

#include <algorithm>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "contract/multi_lingual.h"
#include "tests/support/failing_new.h"
#include "tests/support/flush_record.h"

namespace kelmora {
namespace {

/// A library that has texts, or none, and notes what it is asked.
class Texts final : public IMultiLingual {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override
    {
        ++questions;
        const bool has = offersTexts && *interfaceId == IMultiLingual::id;
        *out = has ? static_cast<IMultiLingual*>(this) : nullptr;
        references += has ? 1 : 0;
        return has ? S_OK : E_NOINTERFACE;
    }

    std::uint32_t KELMORA_CALL AddRef() override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t KELMORA_CALL Release() override { return static_cast<std::uint32_t>(--references); }

    std::uint32_t KELMORA_CALL GetTextEx(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t,
                                         std::uintptr_t, std::uintptr_t, std::uintptr_t) override
    {
        return 0;
    }

    std::uint32_t KELMORA_CALL GetText(const char* languageCode, std::uint32_t section, const char* key,
                                       char16_t* buffer, std::uint32_t capacity) override
    {
        ++lookups;
        askedCode = languageCode;
        askedSection = section;
        askedKey = key;
        askedCapacity = capacity;
        std::copy_n(text.data(), std::min<std::size_t>(text.size(), capacity), buffer);
        return count.value_or(static_cast<std::uint32_t>(text.size()));
    }

    bool offersTexts = true;
    std::u16string text = {u'J', u'a', u'\0'};
    std::optional<std::uint32_t> count; ///< instead of the length

    int references = 1;
    int questions = 0;
    int lookups = 0;
    std::string askedCode;
    std::uint32_t askedSection = 0;
    std::string askedKey;
    std::uint32_t askedCapacity = 0;
};

struct TranslationHelperWithTexts : testing::Test {
    TranslationHelperWithTexts() { helper.SetContext(&texts, "de"); }

    Texts texts;
    TranslationHelper helper;
    bool found = false;
};

std::string CodeFor(const char* languageCode)
{
    Texts texts;
    TranslationHelper helper;
    helper.SetContext(&texts, languageCode);
    helper.Lookup(4, "key", nullptr, nullptr);
    return texts.askedCode;
}

TEST(TranslationHelper, SetContext_TwoCharacters_GoToTheLookupsAsTheyAre)
{
    EXPECT_EQ(CodeFor("de"), "de");
    EXPECT_EQ(CodeFor("JP"), "JP");
    EXPECT_EQ(CodeFor("1-"), "1-");
}

TEST(TranslationHelper, SetContext_AnyOtherLength_MeansEnglish)
{
    EXPECT_EQ(CodeFor(nullptr), "en");
    EXPECT_EQ(CodeFor(""), "en");
    EXPECT_EQ(CodeFor("d"), "en");
    EXPECT_EQ(CodeFor("deu"), "en");
    EXPECT_EQ(CodeFor("de-DE"), "en");
}

TEST(TranslationHelper, SetContext_ShortCode_IsReadNoFurtherThanItsEnd)
{
    for (const std::string code : {"", "d", "de"}) {
        const FlushRecord<char> end(std::uint8_t{0}, code.size() + 1);
        std::copy(code.begin(), code.end(), end.Bytes());
        EXPECT_EQ(CodeFor(end.Get()), code == "de" ? "de" : "en");
    }
}

TEST(TranslationHelper, Lookup_WithoutALibrary_GivesTheDefault)
{
    TranslationHelper helper;
    bool found = true;
    EXPECT_EQ(std::u16string(helper.Lookup(4, "Open Preset", nullptr, nullptr)), u"Open Preset");
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", "Save Preset As", &found)), u"Save Preset As");
    EXPECT_FALSE(found);
}

TEST(TranslationHelper, Lookup_EmptyDefault_StaysEmpty)
{
    TranslationHelper helper;
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", "", nullptr)), u"");
    EXPECT_EQ(std::u16string(helper.Lookup(4, nullptr, nullptr, nullptr)), u"");
}

TEST(TranslationHelper, Lookup_LongDefault_IsCutTo2047)
{
    TranslationHelper helper;
    const std::string text(3000, 'x');
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", text.c_str(), nullptr)), std::u16string(2047, u'x'));
    EXPECT_EQ(std::u16string(helper.Lookup(4, text.c_str(), nullptr, nullptr)), std::u16string(2047, u'x'));
    const std::string fits(2047, 'y');
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", fits.c_str(), nullptr)), std::u16string(2047, u'y'));
}

TEST(TranslationHelper, Lookup_WithoutMemory_IsEmpty)
{
    if (!FailingNew::Works())
        GTEST_SKIP();
    TranslationHelper helper;
    char16_t first = u'#';
    {
        const FailingNew refuse(FailingNew::kNever, 0);
        first = helper.Lookup(4, "key", nullptr, nullptr)[0];
    }
    EXPECT_EQ(first, u'\0');
}

TEST_F(TranslationHelperWithTexts, Lookup_KnownText_IsTheTables)
{
    EXPECT_EQ(std::u16string(helper.Lookup(4, "Open Preset", "default", &found)), u"Ja");
    EXPECT_TRUE(found);
    EXPECT_EQ(texts.askedCode, "de");
    EXPECT_EQ(texts.askedSection, 4u);
    EXPECT_EQ(texts.askedKey, "Open Preset");
    EXPECT_EQ(texts.askedCapacity, 2048u);
}

TEST_F(TranslationHelperWithTexts, Lookup_AsksForTheTextsAndReleasesThemEachTime)
{
    for (int i = 1; i <= 3; ++i) {
        helper.Lookup(4, "key", nullptr, nullptr);
        EXPECT_EQ(texts.questions, i);
        EXPECT_EQ(texts.lookups, i);
        EXPECT_EQ(texts.references, 1);
    }
}

TEST_F(TranslationHelperWithTexts, SetContext_DoesNotCountTheLibrary)
{
    helper.SetContext(&texts, "fr");
    EXPECT_EQ(texts.references, 1);
    EXPECT_EQ(texts.questions, 0);
}

TEST_F(TranslationHelperWithTexts, SetContext_WithoutALibrary_AsksNobodyAnyMore)
{
    helper.SetContext(nullptr, "de");
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", nullptr, &found)), u"key");
    EXPECT_FALSE(found);
    EXPECT_EQ(texts.questions, 0);
}

TEST_F(TranslationHelperWithTexts, SetContext_ForgetsTheLatestText)
{
    const char16_t* const text = helper.Lookup(4, "key", nullptr, nullptr);
    helper.SetContext(&texts, "de");
    EXPECT_EQ(text[0], u'\0');
}

TEST_F(TranslationHelperWithTexts, Lookup_Overwrites)
{
    const char16_t* const first = helper.Lookup(4, "key", nullptr, nullptr);
    texts.offersTexts = false;
    EXPECT_EQ(helper.Lookup(4, "another key", nullptr, nullptr), first);
    EXPECT_EQ(std::u16string(first), u"another key");
}

TEST_F(TranslationHelperWithTexts, Lookup_LibraryWithoutTexts_GivesTheDefault)
{
    texts.offersTexts = false;
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", "default", &found)), u"default");
    EXPECT_FALSE(found);
    EXPECT_EQ(texts.lookups, 0);
}

TEST_F(TranslationHelperWithTexts, Lookup_UnknownKey_GivesTheDefaultWhateverLiesInTheRoom)
{
    texts.count = 0;
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", "default", &found)), u"default");
    EXPECT_FALSE(found);
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", "", &found)), u"");
    texts.count = 0xFFFFFFFF; // -1, as some say for none
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", "default", &found)), u"default");
    EXPECT_FALSE(found);
}

TEST_F(TranslationHelperWithTexts, Lookup_TextThatFillsTheRoom_IsEnded)
{
    texts.text.assign(5000, u'k');
    EXPECT_EQ(std::u16string(helper.Lookup(4, "key", nullptr, &found)), std::u16string(2047, u'k'));
    EXPECT_TRUE(found);
}

} // namespace
} // namespace kelmora

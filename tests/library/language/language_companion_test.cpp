#include "library/language/language_companion.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/library/built_library.h"
#include "tests/library/companion/companion_watch.h"
#include "tests/library/seams.h"
#include "tests/platform/loaded_modules.h"
#include "tests/platform/test_folder.h"

namespace kelmora {
namespace {

// The built library in a folder of its own, with a companion beside it or not.
struct LanguageCompanionBesideLibrary : testing::Test {
    void SetUp() override { ASSERT_TRUE(built.IsGood()) << built.Error(); }

    /// Puts a companion beside the library.
    std::filesystem::path Place(const char* file) const { return TestFolder::Copy(file, folder.Path()); }

    std::u16string TablePath() const { return (folder.Path() / "LVKelmoraLang.xml").u16string(); }

    bool HasTexts(IEffectLibrary* library) const
    {
        auto* const texts = Ask<IMultiLingual>(library);
        if (texts)
            texts->Release();
        return texts != nullptr;
    }

    /// Makes a library object, asks it for texts and releases it; gives whether it had texts.
    bool LiveOnce() const
    {
        IEffectLibrary* const library = built.GetEffectsLibrary();
        const bool had = HasTexts(library);
        EXPECT_EQ(library->Release(), 0u);
        EXPECT_EQ(built.CanUnloadDLLNow(), 1);
        return had;
    }

    CompanionRecord& companion = WatchCompanions();
    TestFolder folder;
    BuiltLibrary built{folder.Path()};
};

TEST_F(LanguageCompanionBesideLibrary, NoCompanion_LibraryWorksWithoutTexts)
{
    EXPECT_FALSE(LiveOnce());
    EXPECT_STREQ(companion.events, "");
}

TEST_F(LanguageCompanionBesideLibrary, GoodCompanion_LoadsTheTableBesideTheLibraryAndGoesWithTheObject)
{
    const auto path = Place(KELMORA_COMPANION_FULL);
    EXPECT_TRUE(LiveOnce());
    EXPECT_STREQ(companion.events, "AGLRUD");
    EXPECT_EQ(std::u16string(companion.loadedPaths[0]), TablePath());
    EXPECT_FALSE(IsLoaded(path));
}

TEST_F(LanguageCompanionBesideLibrary, TableMissingBesideTheLibrary_IsLoadedByItsBareName)
{
    Place(KELMORA_COMPANION_FULL);
    companion.loadResults[0] = false;
    EXPECT_TRUE(LiveOnce());
    EXPECT_STREQ(companion.events, "AGLLRUD");
    EXPECT_EQ(std::u16string(companion.loadedPaths[0]), TablePath());
    EXPECT_EQ(std::u16string(companion.loadedPaths[1]), u"LVKelmoraLang.xml");
}

TEST_F(LanguageCompanionBesideLibrary, TableMissingEverywhere_ModuleStaysAndTextsAreRefused)
{
    const auto path = Place(KELMORA_COMPANION_FULL);
    companion.loadResults[0] = companion.loadResults[1] = false;
    IEffectLibrary* const library = built.GetEffectsLibrary();
    EXPECT_FALSE(HasTexts(library));
    EXPECT_STREQ(companion.events, "AGLL");
    EXPECT_TRUE(IsLoaded(path));
    library->Release();
    EXPECT_STREQ(companion.events, "AGLLRUD");
}

TEST_F(LanguageCompanionBesideLibrary, NullParser_ModuleStaysUntilTheObjectGoes)
{
    const auto path = Place(KELMORA_COMPANION_FULL);
    companion.giveParser = false;
    IEffectLibrary* const library = built.GetEffectsLibrary();
    EXPECT_FALSE(HasTexts(library));
    EXPECT_STREQ(companion.events, "AG");
    EXPECT_TRUE(IsLoaded(path));
    library->Release();
    EXPECT_STREQ(companion.events, "AGUD");
}

TEST_F(LanguageCompanionBesideLibrary, NoParserExport_ModuleStaysUntilTheObjectGoes)
{
    const auto path = Place(KELMORA_COMPANION_WITHOUT_PARSER);
    IEffectLibrary* const library = built.GetEffectsLibrary();
    EXPECT_FALSE(HasTexts(library));
    EXPECT_STREQ(companion.events, "A");
    EXPECT_TRUE(IsLoaded(path));
    library->Release();
    EXPECT_STREQ(companion.events, "AUD");
}

TEST_F(LanguageCompanionBesideLibrary, NoUnloadExport_CountsAsYes)
{
    const auto path = Place(KELMORA_COMPANION_WITHOUT_UNLOAD);
    EXPECT_TRUE(LiveOnce());
    EXPECT_STREQ(companion.events, "AGLRD");
    EXPECT_FALSE(IsLoaded(path));
}

TEST_F(LanguageCompanionBesideLibrary, CompanionThatCannotBeUnloaded_StaysLoaded)
{
    const auto path = Place(KELMORA_COMPANION_FULL);
    companion.canUnload = 0;
    EXPECT_TRUE(LiveOnce());
    EXPECT_STREQ(companion.events, "AGLRU");
    ASSERT_TRUE(IsLoaded(path));
    TakeBack(path);
    EXPECT_STREQ(companion.events, "AGLRUD");
}

TEST_F(LanguageCompanionBesideLibrary, AnyNumberButZero_MeansThatItCanBeUnloaded)
{
    Place(KELMORA_COMPANION_FULL);
    companion.canUnload = -1;
    EXPECT_TRUE(LiveOnce());
    EXPECT_STREQ(companion.events, "AGLRUD");
}

TEST_F(LanguageCompanionBesideLibrary, FileThatIsNoModule_CountsAsMissing)
{
    TestFolder::Write(folder.Path() / "LVQBLang.dll", "not a module");
    EXPECT_FALSE(LiveOnce());
    EXPECT_STREQ(companion.events, "");
}

TEST_F(LanguageCompanionBesideLibrary, CompanionInTheCurrentFolder_IsNotLoaded)
{
    TestFolder::Copy(KELMORA_COMPANION_FULL, folder.Folder("elsewhere"));
    std::filesystem::current_path(folder.Folder("elsewhere"));
    EXPECT_FALSE(LiveOnce());
    EXPECT_STREQ(companion.events, "");
}

#ifndef _WIN32 // there the system takes a path that counts from the current folder as it is at the load

TEST_F(LanguageCompanionBesideLibrary,
       LibraryLoadedByARelativePath_StaysWhereItWasWhenTheCurrentFolderChanges)
{
    TestFolder::Copy(KELMORA_BUILT_LIBRARY, folder.Folder("first/near"));
    const auto beside = TestFolder::Copy(KELMORA_COMPANION_FULL, folder.Folder("first/near"));
    TestFolder::Copy(KELMORA_COMPANION_WITHOUT_PARSER, folder.Folder("second/near"));
    std::filesystem::current_path(folder.Path() / "first");
    const auto name = "near" / built.Path().filename();
    const platform::Module library = platform::Module::LoadFile(name.c_str());
    const auto make = library.FunctionNamed<GetEffectsLibraryFunction>("GetEffectsLibrary");
    ASSERT_NE(make, nullptr);
    std::filesystem::current_path(folder.Path() / "second");
    IEffectLibrary* const object = make();
    EXPECT_TRUE(HasTexts(object));
    object->Release();
    EXPECT_STREQ(companion.events, "AGLRUD");
    EXPECT_EQ(std::u16string(companion.loadedPaths[0]),
              (beside.parent_path() / "LVKelmoraLang.xml").u16string());
}

#endif

TEST_F(LanguageCompanionBesideLibrary, TwoObjects_EachLoadTheCompanionForThemselves)
{
    Place(KELMORA_COMPANION_FULL);
    IEffectLibrary* const first = built.GetEffectsLibrary();
    companion.loadResults[0] = companion.loadResults[1] = false;
    IEffectLibrary* const second = built.GetEffectsLibrary();
    EXPECT_STREQ(companion.events, "AGLGLL");
    EXPECT_TRUE(HasTexts(first));
    EXPECT_FALSE(HasTexts(second));
    first->Release();
    EXPECT_STREQ(companion.events, "AGLGLLRU");
    second->Release();
    EXPECT_STREQ(companion.events, "AGLGLLRURUD");
}

TEST_F(LanguageCompanionBesideLibrary, GetText_PassesEverythingOnAndBack)
{
    Place(KELMORA_COMPANION_FULL);
    IEffectLibrary* const library = built.GetEffectsLibrary();
    auto* const texts = Ask<IMultiLingual>(library);
    ASSERT_NE(texts, nullptr);

    const char key[] = "Open Preset";
    for (const std::uint32_t length : {0u, 5u, 5000u}) {
        std::u16string buffer(2049, u'#');
        companion.textLength = length;
        EXPECT_EQ(texts->GetText("de", 4, key, buffer.data(), 2048), length);
        EXPECT_STREQ(companion.languageCode, "de");
        EXPECT_EQ(companion.section, 4u);
        EXPECT_EQ(companion.key, key);
        EXPECT_EQ(companion.buffer, buffer.data());
        EXPECT_EQ(companion.capacity, 2048u);
        const std::size_t stored = length < 2048 ? length : 2048;
        EXPECT_EQ(buffer, std::u16string(stored, u'k') + std::u16string(2049 - stored, u'#'));
    }
    texts->Release();
    library->Release();
    EXPECT_STREQ(companion.events, "AGLTTTRUD");
}

TEST_F(LanguageCompanionBesideLibrary, GetTextEx_PassesSevenWordsOn)
{
    Place(KELMORA_COMPANION_FULL);
    IEffectLibrary* const library = built.GetEffectsLibrary();
    auto* const texts = Ask<IMultiLingual>(library);
    ASSERT_NE(texts, nullptr);
    const std::uintptr_t last = ~std::uintptr_t{0};
    EXPECT_EQ(texts->GetTextEx(11, 22, 33, 44, 55, 66, last), kCompanionTextExResult);
    const std::uintptr_t expected[7] = {11, 22, 33, 44, 55, 66, last};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(companion.words[i], expected[i]) << i;
    texts->Release();
    library->Release();
    EXPECT_STREQ(companion.events, "AGLXRUD");
}

TEST_F(LanguageCompanionBesideLibrary, FolderBeyondAscii_IsFound)
{
    const auto other = folder.Folder(u"\u00DCbung \u65E5\u672C");
    TestFolder::Copy(KELMORA_COMPANION_FULL, other);
    const BuiltLibrary there(other);
    ASSERT_TRUE(there.IsGood()) << there.Error();
    there.GetEffectsLibrary()->Release();
    EXPECT_STREQ(companion.events, "AGLRUD");
    EXPECT_EQ(std::u16string(companion.loadedPaths[0]), (other / "LVKelmoraLang.xml").u16string());
}

// A parser as another compiler lays it out: a table of plain functions, the object before the arguments.

int g_slot = -1;
std::uint32_t g_loadResult = 0;

template <int slot, class... Words>
std::uint32_t KELMORA_CALL RawSlot(void* /*parser*/, Words... /*words*/)
{
    g_slot = slot;
    return g_loadResult;
}

template <class Function>
void* Entry(Function function)
{
    return reinterpret_cast<void*>(function);
}

struct RawParser {
    void* const* table;
};

using Word = std::uintptr_t;

void* const kRawTable[] = {
    Entry(RawSlot<0, Word, Word>),                               // QueryInterface
    Entry(RawSlot<1>),                                           // AddRef
    Entry(RawSlot<2>),                                           // Release
    Entry(RawSlot<3>),                                           //
    Entry(RawSlot<4, Word>),                                     // load
    Entry(RawSlot<5, Word, Word, Word, Word, Word, Word, Word>), // text ex
    Entry(RawSlot<6, Word, Word, Word, Word, Word>),             // text
};

// It is no object of C++, so a sanitizer must not ask for its type.
__attribute__((no_sanitize("vptr"))) void CallEverySlot(ILangXMLParser* parser, int (&slots)[4],
                                                        bool (&loaded)[2])
{
    parser->Release();
    slots[0] = g_slot;
    g_loadResult = 0xFFFFFF00;
    loaded[0] = parser->Load(u"");
    g_loadResult = 0xABCDEF01;
    loaded[1] = parser->Load(u"");
    slots[1] = g_slot;
    parser->GetTextEx(1, 2, 3, 4, 5, 6, 7);
    slots[2] = g_slot;
    parser->GetText("en", 4, "key", nullptr, 0);
    slots[3] = g_slot;
}

TEST(LangXMLParser, Slots_AreThoseOfTheCompanionAndOfALoadOnlyTheLowByteCounts)
{
    RawParser raw{kRawTable};
    void* volatile address = &raw; // the compiler must not see through it
    int slots[4];
    bool loaded[2];
    CallEverySlot(static_cast<ILangXMLParser*>(address), slots, loaded);
    EXPECT_EQ(slots[0], 2);
    EXPECT_EQ(slots[1], 4);
    EXPECT_EQ(slots[2], 5);
    EXPECT_EQ(slots[3], 6);
    EXPECT_FALSE(loaded[0]);
    EXPECT_TRUE(loaded[1]);
}

// The class itself, in this program; its folder has no companion.

void ExpectOneRefusal()
{
    ASSERT_EQ(ShownMessages().size(), 1u);
    const ShownMessage& message = ShownMessages().front();
    EXPECT_EQ(message.owner, nullptr);
    EXPECT_EQ(message.text, u"!(! m_pLangParser && szLangDLLName && szXMLFileName)");
    EXPECT_EQ(message.title, u"");
    EXPECT_EQ(message.kind, platform::MessageKind::Plain);
}

TEST(LanguageCompanion, LoadLanguage_NullName_IsRefusedWithAMessage)
{
    LanguageCompanion language;
    ShownMessages().clear();
    EXPECT_FALSE(language.LoadLanguage(nullptr, "table.xml"));
    ExpectOneRefusal();
    ShownMessages().clear();
    EXPECT_FALSE(language.LoadLanguage("LVQBLang.dll", nullptr));
    ExpectOneRefusal();
    EXPECT_EQ(language.Parser(), nullptr);
}

TEST(LanguageCompanion, LoadLanguage_MissingCompanion_FailsSilently)
{
    LanguageCompanion language;
    ShownMessages().clear();
    EXPECT_FALSE(language.LoadLanguage("LVQBLang.dll", "table.xml"));
    EXPECT_FALSE(language.LoadLanguage("", ""));
    EXPECT_EQ(language.Parser(), nullptr);
    EXPECT_TRUE(ShownMessages().empty());
}

TEST(LanguageCompanion, LoadLanguage_NameTooLongForAPath_CountsAsMissing)
{
    LanguageCompanion language;
    EXPECT_FALSE(language.LoadLanguage(std::string(5000, 'n').c_str(), "table.xml"));
    EXPECT_EQ(language.Parser(), nullptr);
}

// A companion beside this program, under a name that no other test looks for.
struct LanguageCompanionBesideProgram : testing::Test {
    LanguageCompanionBesideProgram()
        : path(std::filesystem::path(KELMORA_PROGRAM).parent_path()
               / (std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + ".dll"))
    {
        std::filesystem::remove(path);
        std::filesystem::copy_file(KELMORA_COMPANION_FULL, path);
    }

    ~LanguageCompanionBesideProgram() override
    {
        std::error_code ignored; // it may still be loaded
        std::filesystem::remove(path, ignored);
    }

    std::string Name() const { return path.filename().string(); }

    CompanionRecord& companion = WatchCompanions();
    std::filesystem::path path;
};

TEST_F(LanguageCompanionBesideProgram, LoadLanguage_SecondCallWithAParser_IsRefusedWithAMessage)
{
    {
        LanguageCompanion language;
        EXPECT_TRUE(language.LoadLanguage(Name().c_str(), "table.xml"));
        ShownMessages().clear();
        EXPECT_FALSE(language.LoadLanguage(Name().c_str(), "table.xml"));
        ExpectOneRefusal();
        EXPECT_STREQ(companion.events, "AGL");
    }
    EXPECT_STREQ(companion.events, "AGLRUD");
}

TEST_F(LanguageCompanionBesideProgram, LoadLanguage_SecondCallWithoutAParser_LetsTheFirstModuleGo)
{
    companion.giveParser = false;
    LanguageCompanion language;
    EXPECT_FALSE(language.LoadLanguage(Name().c_str(), "table.xml"));
    EXPECT_STREQ(companion.events, "AG");
    companion.giveParser = true;
    EXPECT_TRUE(language.LoadLanguage(Name().c_str(), "table.xml"));
    EXPECT_STREQ(companion.events, "AGUDAGL");
}

TEST_F(LanguageCompanionBesideProgram, LoadLanguage_FirstModuleThatCannotBeUnloaded_IsForgotten)
{
    companion.giveParser = false;
    companion.canUnload = 0;
    {
        LanguageCompanion language;
        EXPECT_FALSE(language.LoadLanguage(Name().c_str(), "table.xml"));
        EXPECT_FALSE(language.LoadLanguage("", "table.xml"));
        EXPECT_STREQ(companion.events, "AGU");
    }
    EXPECT_STREQ(companion.events, "AGU");
    ASSERT_TRUE(IsLoaded(path));
    TakeBack(path);
    EXPECT_STREQ(companion.events, "AGUD");
}

} // namespace
} // namespace kelmora

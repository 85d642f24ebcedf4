// Stands in a folder with a companion, where the system looks for a bare name: on Windows the folder of the
// program, elsewhere the one that the program names. That companion has no CanUnloadDLLNow, so its events
// tell it from one beside the library.

#include <string>

#include <gtest/gtest.h>

#include "tests/library/built_library.h"
#include "tests/library/companion/companion_watch.h"
#include "tests/platform/test_folder.h"

namespace kelmora {
namespace {

struct LanguageCompanionBySearch : testing::Test {
    void SetUp() override { ASSERT_TRUE(built.IsGood()) << built.Error(); }

    CompanionRecord& companion = WatchCompanions();
    TestFolder folder;
    BuiltLibrary built{folder.Path()};
};

TEST_F(LanguageCompanionBySearch, NoCompanionBesideTheLibrary_TheSystemFindsIt)
{
    IEffectLibrary* const library = built.GetEffectsLibrary();
    auto* const texts = Ask<IMultiLingual>(library);
    ASSERT_NE(texts, nullptr);
    texts->Release();
    library->Release();
    EXPECT_STREQ(companion.events, "AGLRD");
    // The table is looked for beside the library all the same.
    EXPECT_EQ(std::u16string(companion.loadedPaths[0]), (folder.Path() / "LVKelmoraLang.xml").u16string());
}

TEST_F(LanguageCompanionBySearch, CompanionBesideTheLibrary_GoesFirst)
{
    TestFolder::Copy(KELMORA_COMPANION_FULL, folder.Path());
    built.GetEffectsLibrary()->Release();
    EXPECT_STREQ(companion.events, "AGLRUD");
}

TEST_F(LanguageCompanionBySearch, BrokenFileBesideTheLibrary_TheSystemFindsTheOther)
{
    TestFolder::Write(folder.Path() / "LVQBLang.dll", "not a module");
    built.GetEffectsLibrary()->Release();
    EXPECT_STREQ(companion.events, "AGLRD");
}

TEST_F(LanguageCompanionBySearch, CompanionOfNoUseBesideTheLibrary_IsNotReplaced)
{
    TestFolder::Copy(KELMORA_COMPANION_WITHOUT_PARSER, folder.Path());
    built.GetEffectsLibrary()->Release();
    EXPECT_STREQ(companion.events, "AUD");
}

} // namespace
} // namespace kelmora

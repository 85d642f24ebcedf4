#include "library/path_library.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/platform/test_folder.h"

namespace kelmora {
namespace {

const std::u16string kSeparator(1, platform::kFolderSeparator);

struct Made {
    bool ok;
    std::u16string path;
};

Made Beside(const std::u16string& module, const std::u16string& name)
{
    char16_t path[kBesideCapacity];
    path[0] = u'#';
    const bool ok = PathLibrary().Beside(module.c_str(), name.c_str(), path);
    return {ok, path};
}

TEST(PathLibrary, Beside_ModulePath_KeepsTheFolderUpToTheLastSeparator)
{
    const std::u16string folder = u"one" + kSeparator + u"two.\u00E9" + kSeparator;
    const Made made = Beside(folder + u"Kelmora.dll", u"Kelmora.chm");
    EXPECT_TRUE(made.ok);
    EXPECT_EQ(made.path, folder + u"Kelmora.chm");
}

TEST(PathLibrary, Beside_ModuleInTheRoot_KeepsTheSeparator)
{
    EXPECT_EQ(Beside(kSeparator + u"Kelmora.dll", u"x").path, kSeparator + u"x");
}

TEST(PathLibrary, Beside_NoFolderInTheModulePath_GivesAnEmptyPath)
{
    for (const char16_t* module : {u"", u"Kelmora.dll"}) {
        const Made made = Beside(module, u"x");
        EXPECT_FALSE(made.ok);
        EXPECT_EQ(made.path, u"");
    }
}

TEST(PathLibrary, Beside_LongestPath_FitsWithItsEndMark)
{
    const std::u16string folder = std::u16string(1000, u'f') + kSeparator;
    const std::u16string fits(kBesideCapacity - 1 - folder.size(), u'n');
    EXPECT_TRUE(Beside(folder + u"m", fits).ok);
    EXPECT_EQ(Beside(folder + u"m", fits).path, folder + fits);
    EXPECT_FALSE(Beside(folder + u"m", fits + u"n").ok);
    EXPECT_EQ(Beside(folder + u"m", fits + u"n").path, u"");
}

TEST(PathLibrary, Beside_FolderThatFillsTheRoom_GivesAnEmptyPath)
{
    for (const std::size_t length : {kBesideCapacity - 1, kBesideCapacity, kBesideCapacity + 1}) {
        const Made made = Beside(std::u16string(length - 1, u'f') + kSeparator, u"n");
        EXPECT_FALSE(made.ok) << length;
        EXPECT_EQ(made.path, u"") << length;
    }
}

TEST(PathLibrary, BesideModule_IsInTheFolderOfTheFileThatTheCodeStandsIn)
{
    char16_t path[kBesideCapacity];
    ASSERT_TRUE(PathLibrary().BesideModule(
        std::filesystem::path(KELMORA_PROGRAM).filename().u16string().c_str(), path));
    EXPECT_TRUE(std::filesystem::equivalent(path, KELMORA_PROGRAM)) << Utf8(path);
}

} // namespace
} // namespace kelmora

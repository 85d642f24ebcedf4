#include "host/library_file.h"

#include <gtest/gtest.h>

#include "host/failure.h"
#include "tests/host/fake_library_file.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

std::string RefusalOf(const std::string& path)
{
    try {
        const LibraryFile file(path);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Failed);
        return failure.what();
    }
    ADD_FAILURE() << path << " is loaded";
    return {};
}

TEST(LibraryFile, Missing_IsRefusedByItsPath)
{
    EXPECT_EQ(RefusalOf("no/such/library.so"), "there is no library file no/such/library.so");
}

TEST(LibraryFile, NoModule_IsRefusedWithTheSystemsReason)
{
    const TestFolder folder;
    TestFolder::Write(folder.Path() / "text.so", "no module at all");
    const std::string path = Utf8(folder.Path() / "text.so");
    const std::string beginning = "cannot load the library file " + path + ": ";
    const std::string refusal = RefusalOf(path);
    EXPECT_TRUE(refusal.starts_with(beginning)) << refusal;
    EXPECT_GT(refusal.size(), beginning.size());
    EXPECT_EQ(refusal.find(path, beginning.size()), std::string::npos)
        << "the path once is enough: " << refusal;
    EXPECT_EQ(refusal.find('\n'), std::string::npos);
}

TEST(LibraryFile, ModuleWithoutTheExports_IsRefusedByTheMissingName)
{
    EXPECT_EQ(RefusalOf(kEmptyLibrary),
              kEmptyLibrary + " is no effect library: it does not export GetEffectsLibrary");
}

TEST(LibraryFile, LibraryObjects_AreCountedByTheFile)
{
    const LibraryFile file(kFakeLibrary);
    EXPECT_EQ(file.CanUnload(), 1);
    Held<IEffectLibrary> library = file.MakeLibrary();
    EXPECT_EQ(file.CanUnload(), 0);
    EXPECT_STREQ(library->GetName(), "Fake Library");
    library.reset();
    EXPECT_EQ(file.CanUnload(), 1);
}

TEST(EffectNumbers, GapsBetweenEffects_AreSteppedOver)
{
    const LibraryFile file(kFakeLibrary);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    EXPECT_EQ(EffectNumbers(*library), (std::vector<std::int32_t>{102, 106}));
    const std::vector<EffectFace> faces = ReadFaces(*library);
    ASSERT_EQ(faces.size(), 2u);
    EXPECT_EQ(faces[0].name, "Fake Blend");
    EXPECT_EQ(faces[1].name, "Fake Filter");
}

TEST(FindEffect, NumberNameOrSlug_IsFound)
{
    const LibraryFile file(kFakeLibrary);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    for (const char* const text : {"106", "Fake Filter", "fake-filter", "FAKEFILTER"})
        EXPECT_EQ(FindEffect(*library, text), 106) << text;
    EXPECT_EQ(FindEffect(*library, "fake blend"), 102);
}

TEST(FindEffect, Unknown_IsRefusedWithTheNearest)
{
    const LibraryFile file(kFakeLibrary);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    try {
        FindEffect(*library, "fake-filtre");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Unknown);
        EXPECT_STREQ(failure.what(),
                     "there is no effect \"fake-filtre\"; did you mean \"Fake Filter\"? \"kelmora "
                     "list\" shows all effects");
    }
    EXPECT_THROW(FindEffect(*library, "100"), Failure);
    EXPECT_THROW(FindEffect(*library, ""), Failure);
}

TEST(MakeEffect, NumberOfNone_IsRefused)
{
    const LibraryFile file(kFakeLibrary);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    EXPECT_THROW(MakeEffect(*library, 100), Failure);
}

TEST(DefaultLibraryPath, FileBesideTheProgram_BearsTheLibrarysName)
{
    const std::filesystem::path path = DefaultLibraryPath();
    EXPECT_EQ(path.stem(), "Kelmora");
    EXPECT_TRUE(std::filesystem::is_directory(path.parent_path()));
}

} // namespace
} // namespace kelmora::host

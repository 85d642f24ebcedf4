#include "library/exports.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "library/dll_dependent_object.h"
#include "tests/library/built_library.h"
#include "tests/platform/loaded_modules.h"
#include "tests/platform/test_folder.h"
#include "tests/support/failing_new.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace kelmora {
namespace {

TEST(Exports, GetEffectsLibrary_EveryCall_GivesANewObjectCountedOnce)
{
    const TestFolder folder;
    const BuiltLibrary built(folder.Path());
    ASSERT_TRUE(built.IsGood()) << built.Error();
    IEffectLibrary* const first = built.GetEffectsLibrary();
    IEffectLibrary* const second = built.GetEffectsLibrary();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->AddRef(), 2u);
    EXPECT_EQ(first->Release(), 1u);
    EXPECT_EQ(first->Release(), 0u);
    EXPECT_EQ(second->Release(), 0u);
}

TEST(Exports, CanUnloadDLLNow_IsOneExactlyWhileNoLibraryObjectLives)
{
    const TestFolder folder;
    const BuiltLibrary built(folder.Path());
    ASSERT_TRUE(built.IsGood()) << built.Error();
    EXPECT_EQ(built.CanUnloadDLLNow(), 1);
    IEffectLibrary* const first = built.GetEffectsLibrary();
    EXPECT_EQ(built.CanUnloadDLLNow(), 0);
    IEffectLibrary* const second = built.GetEffectsLibrary();
    first->Release();
    EXPECT_EQ(built.CanUnloadDLLNow(), 0);
    second->AddRef();
    second->Release();
    EXPECT_EQ(built.CanUnloadDLLNow(), 0);
    second->Release();
    EXPECT_EQ(built.CanUnloadDLLNow(), 1);
}

TEST(Exports, CanUnloadDLLNow_EffectsAndServiceObjectsAlive_AreNotCounted)
{
    const TestFolder folder;
    const BuiltLibrary built(folder.Path());
    ASSERT_TRUE(built.IsGood()) << built.Error();
    IEffectLibrary* const library = built.GetEffectsLibrary();
    std::vector<IUnknown*> others;
    for (std::int32_t number = Effect3DConfetti; number <= EffectWaterColor; ++number)
        others.push_back(library->CreateEffect(number));
    others.push_back(library->CreateFrameProcessor());
    others.push_back(library->CreatePresetSaver());
    EXPECT_EQ(library->Release(), 0u);
    EXPECT_EQ(built.CanUnloadDLLNow(), 1);
    for (IUnknown* const other : others) {
        if (other) {
            EXPECT_EQ(other->Release(), 0u);
        }
    }
    EXPECT_EQ(built.CanUnloadDLLNow(), 1);
}

TEST(Exports, File_AfterUse_CanBeFreed)
{
    const TestFolder folder;
    BuiltLibrary built(folder.Path());
    ASSERT_TRUE(built.IsGood()) << built.Error();
    built.GetEffectsLibrary()->Release();
    EXPECT_TRUE(IsLoaded(built.Path()));
    built.Unload();
    EXPECT_FALSE(IsLoaded(built.Path()));
}

TEST(Exports, GetEffectsLibrary_ManyThreads_CountsComeBackToNone)
{
    const TestFolder folder;
    const BuiltLibrary built(folder.Path());
    ASSERT_TRUE(built.IsGood()) << built.Error();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&built] {
            for (int round = 0; round < 50; ++round) {
                IEffectLibrary* const library = built.GetEffectsLibrary();
                library->AddRef();
                library->Release();
                library->Release();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(built.CanUnloadDLLNow(), 1);
}

TEST(Exports, GetEffectsLibrary_OutOfMemory_GivesNullAndCountsNothing)
{
    if (!FailingNew::Works())
        GTEST_SKIP() << "operator new belongs to the sanitizer";
    IEffectLibrary* library = nullptr;
    std::uint64_t refused = 0;
    {
        const FailingNew none(FailingNew::kNever, 0);
        library = GetEffectsLibrary();
        refused = none.Refused();
    }
    EXPECT_EQ(library, nullptr);
    EXPECT_GT(refused, 0u);
    EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 0);
    EXPECT_EQ(CanUnloadDLLNow(), 1);
}

TEST(Exports, GetEffectsLibrary_EachAllocationRefusedInTurn_GivesAnObjectOrNullAndLosesNothing)
{
    if (!FailingNew::Works())
        GTEST_SKIP() << "operator new belongs to the sanitizer";
    for (std::uint64_t refuse = 0; refuse < 20; ++refuse) {
        std::int64_t open = 0;
        std::uint64_t refused = 0;
        {
            const FailingNew one(refuse);
            if (IEffectLibrary* const library = GetEffectsLibrary())
                library->Release();
            open = one.OpenBlocks();
            refused = one.Refused();
        }
        EXPECT_EQ(open, 0) << refuse;
        EXPECT_EQ(CanUnloadDLLNow(), 1) << refuse;
        if (refused == 0)
            return; // there are no more allocations
    }
    FAIL() << "more allocations than a library object can need";
}

#ifdef _WIN32

TEST(Exports, File_CarriesItsVersionAndNames)
{
    DWORD ignored = 0;
    const std::wstring path = std::filesystem::path(KELMORA_BUILT_LIBRARY).wstring();
    std::vector<char> block(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    ASSERT_FALSE(block.empty());
    ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()));
    const auto text = [&block](const std::wstring& name) -> std::wstring {
        void* value = nullptr;
        UINT length = 0;
        const std::wstring key = L"\\StringFileInfo\\040904B0\\" + name;
        return VerQueryValueW(block.data(), key.c_str(), &value, &length) ? static_cast<wchar_t*>(value)
                                                                          : L"";
    };
    EXPECT_EQ(text(L"ProductName"), L"Larkvee Kelmora");
    EXPECT_EQ(text(L"OriginalFilename"), L"Kelmora.dll");
    EXPECT_EQ(text(L"FileVersion"), L"" KELMORA_VERSION);
}

#endif

} // namespace
} // namespace kelmora

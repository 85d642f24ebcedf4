#include "library/library_object.h"

#include <cstring>
#include <new>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "contract/kelmora.h"
#include "tests/library/built_library.h"
#include "tests/library/companion/companion_watch.h"
#include "tests/library/seams.h"
#include "tests/platform/test_folder.h"
#include "tests/support/failing_new.h"

namespace kelmora {
namespace {

// Another person's interface.
constexpr InterfaceId kUnknownId = {0x12345678, 0x1234, 0x1234, {1, 2, 3, 4, 5, 6, 7, 8}};

struct LibraryObject : testing::Test {
    ~LibraryObject() override { library->Release(); }

    CKelmora* const library = new CKelmora;
};

TEST_F(LibraryObject, GetName_IsTheLibrarysName)
{
    EXPECT_STREQ(library->GetName(), "Larkvee Kelmora");
}

TEST_F(LibraryObject, QueryInterface_RootAndLibrary_GiveTheLibraryViewCounted)
{
    for (const InterfaceId& id : {IUnknown::id, IEffectLibrary::id}) {
        void* found = nullptr;
        EXPECT_EQ(library->QueryInterface(&id, &found), S_OK);
        EXPECT_EQ(found, static_cast<IEffectLibrary*>(library));
        EXPECT_EQ(library->Release(), 1u);
    }
}

TEST_F(LibraryObject, QueryInterface_WithoutALanguageTable_HasNoTexts)
{
    void* found = library;
    EXPECT_EQ(library->QueryInterface(&IMultiLingual::id, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(library->AddRef(), 2u);
    EXPECT_EQ(library->Release(), 1u);
}

TEST_F(LibraryObject, QueryInterface_OtherInterfaces_StoreNull)
{
    for (const InterfaceId& id : {kUnknownId, IVideoEffect::id, IPresetSaver::id, IFrameProcessor::id}) {
        void* found = library;
        EXPECT_EQ(library->QueryInterface(&id, &found), E_NOINTERFACE);
        EXPECT_EQ(found, nullptr);
    }
}

TEST_F(LibraryObject, QueryInterface_OneByteOfTheIdDiffers_IsAnotherInterface)
{
    for (std::size_t byte = 0; byte < sizeof(InterfaceId); ++byte) {
        unsigned char bytes[sizeof(InterfaceId)];
        std::memcpy(bytes, &IEffectLibrary::id, sizeof bytes);
        bytes[byte] ^= 1;
        InterfaceId id;
        std::memcpy(&id, bytes, sizeof id);
        void* found = library;
        EXPECT_EQ(library->QueryInterface(&id, &found), E_NOINTERFACE) << byte;
    }
}

TEST_F(LibraryObject, QueryInterface_NullArguments_AreRefused)
{
    EXPECT_EQ(library->QueryInterface(&IUnknown::id, nullptr), E_FAIL);
    void* found = library;
    EXPECT_EQ(library->QueryInterface(nullptr, &found), E_FAIL);
    EXPECT_EQ(found, nullptr);
}

TEST_F(LibraryObject, GetText_WithoutALanguageTable_GivesNone)
{
    IMultiLingual* const texts = library;
    std::u16string buffer = u"abcd";
    EXPECT_EQ(texts->GetText("en", 4, "Open Preset", buffer.data(), 4), 0u);
    EXPECT_EQ(buffer, u"abcd");
    EXPECT_EQ(texts->GetTextEx(1, 2, 3, 4, 5, 6, 7), 0u);
}

TEST_F(LibraryObject, CreateEffect_UnknownNumbers_GiveNull)
{
    for (const std::int32_t number : {99, 110, 0, -1, -100, std::int32_t{-0x7FFFFFFF - 1}})
        EXPECT_EQ(library->CreateEffect(number), nullptr) << number;
}

TEST_F(LibraryObject, CreateFrameProcessor_EveryCall_GivesANewOneCountedOnce)
{
    IFrameProcessor* const first = library->CreateFrameProcessor();
    IFrameProcessor* const second = library->CreateFrameProcessor();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(Ask<IUnknown>(first), first);
    EXPECT_EQ(first->AddRef(), 3u);
    EXPECT_EQ(first->Release(), 2u);
    EXPECT_EQ(first->Release(), 1u);
    // It neither holds the library object nor counts as one.
    EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 1);
    EXPECT_EQ(library->AddRef(), 2u);
    EXPECT_EQ(library->Release(), 1u);
    EXPECT_EQ(first->Release(), 0u);
    EXPECT_EQ(second->Release(), 0u);
}

TEST_F(LibraryObject, CreateFrameProcessor_OutOfMemory_GivesNull)
{
    if (!FailingNew::Works())
        GTEST_SKIP() << "operator new belongs to the sanitizer";
    IFrameProcessor* processor = nullptr;
    std::uint64_t refused = 0;
    {
        const FailingNew none(FailingNew::kNever, 0);
        processor = library->CreateFrameProcessor();
        refused = none.Refused();
    }
    EXPECT_EQ(processor, nullptr);
    EXPECT_EQ(refused, 1u);
}

TEST_F(LibraryObject, ShowHelp_OpensTheHelpFileBesideTheLibraryAtTheTopic)
{
    ShownHelps().clear();
    library->ShowHelp(this, 961);
    ASSERT_EQ(ShownHelps().size(), 1u);
    const ShownHelp& help = ShownHelps().front();
    EXPECT_EQ(help.owner, this);
    EXPECT_EQ(help.topic, 961u);
    const std::filesystem::path file(help.file);
    EXPECT_EQ(file.filename().string(), "Kelmora.chm");
    EXPECT_TRUE(std::filesystem::equivalent(file.parent_path(),
                                            std::filesystem::path(KELMORA_PROGRAM).parent_path()));
}

TEST_F(LibraryObject, Release_FromManyThreads_DestroysOnce)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int round = 0; round < 1000; ++round) {
                library->AddRef();
                library->Release();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 1);
    EXPECT_EQ(library->AddRef(), 2u);
    EXPECT_EQ(library->Release(), 1u);
}

TEST(LibraryObjectLife, Destroy_WithoutTheFlag_LeavesTheMemory)
{
    alignas(CKelmora) unsigned char memory[sizeof(CKelmora)];
    auto* const library = new (memory) CKelmora;
    DLLDependentObject* const dependent = library;
    EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 1);
    EXPECT_EQ(dependent->Destroy(0), static_cast<void*>(memory));
    EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 0);
}

TEST(LibraryObjectLife, Destroy_WithTheFlag_FreesTheObject)
{
    DLLDependentObject* const dependent = new CKelmora;
    EXPECT_EQ(dependent->Destroy(KELMORA_DESTROY_FREE), nullptr);
    EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 0);
}

TEST(LibraryObjectLife, Layout_BasesStandInOrderAndFieldsBehindThem)
{
    auto* const library = new CKelmora;
    const auto offset = [library](const void* view) {
        return static_cast<std::size_t>(static_cast<const char*>(view)
                                        - reinterpret_cast<const char*>(library));
    };
    EXPECT_EQ(offset(static_cast<DLLDependentObject*>(library)), 0u);
    EXPECT_EQ(offset(static_cast<IEffectLibrary*>(library)), sizeof(void*));
    EXPECT_EQ(offset(static_cast<IMultiLingual*>(library)), 2 * sizeof(void*));
    // Three tables, the count, the parser, the module, the boolean; each fills a pointer's room.
    EXPECT_EQ(sizeof(CKelmora), 7 * sizeof(void*));
    std::uint32_t references = 0;
    library->AddRef();
    std::memcpy(&references, reinterpret_cast<const char*>(library) + 3 * sizeof(void*), sizeof references);
    EXPECT_EQ(references, 2u);
    library->Release();
    library->Release();
}

TEST(LibraryObjectViews, QueryInterface_ThroughEitherView_GivesTheSame)
{
    WatchCompanions();
    const TestFolder folder;
    TestFolder::Copy(KELMORA_COMPANION_FULL, folder.Path());
    const BuiltLibrary built(folder.Path());
    ASSERT_TRUE(built.IsGood()) << built.Error();
    IEffectLibrary* const library = built.GetEffectsLibrary();
    auto* const texts = Ask<IMultiLingual>(library);
    ASSERT_NE(texts, nullptr);
    EXPECT_NE(static_cast<void*>(texts), static_cast<void*>(library));
    EXPECT_EQ(Ask<IUnknown>(texts), library);
    EXPECT_EQ(Ask<IEffectLibrary>(texts), library);
    EXPECT_EQ(Ask<IMultiLingual>(texts), texts);
    // One count for all views: the factory's, the first question's, and the three above.
    EXPECT_EQ(texts->AddRef(), 6u);
    for (std::uint32_t left = 6; left > 1; --left)
        EXPECT_EQ(texts->Release(), left - 1);
    EXPECT_EQ(built.CanUnloadDLLNow(), 0);
    EXPECT_EQ(library->Release(), 0u);
    EXPECT_EQ(built.CanUnloadDLLNow(), 1);
}

} // namespace
} // namespace kelmora

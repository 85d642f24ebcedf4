#include "platform/own_module.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/module.h"
#include "tests/platform/test_folder.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace kelmora {
namespace {

using platform::kPathCapacity;
using platform::Module;

using OwnModulePathFunction = std::size_t (*)(char16_t (&)[kPathCapacity]);

TEST(OwnModule, OwnModulePath_InAProgram_IsTheProgram)
{
    char16_t path[kPathCapacity];
    const std::size_t length = platform::OwnModulePath(path);
    EXPECT_EQ(std::u16string(path).size(), length);
    EXPECT_TRUE(std::filesystem::equivalent(path, KELMORA_PROGRAM)) << Utf8(path);
}

TEST(OwnModule, OwnModulePath_EndsWithTheSeparatorAndTheName)
{
    char16_t path[kPathCapacity];
    platform::OwnModulePath(path);
    const std::u16string end =
        platform::kFolderSeparator + std::filesystem::path(KELMORA_PROGRAM).filename().u16string();
    EXPECT_TRUE(std::u16string(path).ends_with(end)) << Utf8(path);
}

/// A copy of the probe, loaded, deep in a folder. It goes with the object.
class DeepProbe {
public:
    /// length  characters of its path in the form that the system is given
    DeepProbe(const TestFolder& folder, std::size_t length) : m_top(folder.LongPath()), m_path(m_top)
    {
        const std::u16string name = u"probe.dll";
        const std::size_t longest = 100;
        while (m_path.native().size() + 2 * longest < length)
            m_path /= std::string(longest, 'f');
        m_path /= std::string(length - m_path.native().size() - 2 - name.size(), 'f');
        std::filesystem::create_directories(m_path);
        m_path = TestFolder::Copy(KELMORA_PROBE, m_path, name);
        m_module = Module::LoadFile(m_path.u16string().c_str());
    }

    ~DeepProbe()
    {
        m_module.Unload();
        std::error_code ignored;
        for (; m_path != m_top; m_path = m_path.parent_path())
            std::filesystem::remove(m_path, ignored);
    }

    DeepProbe(const DeepProbe&) = delete;
    DeepProbe& operator=(const DeepProbe&) = delete;

    const Module& Loaded() const { return m_module; }

    /// The path as the system tells it: Windows may leave out what made it a long path.
    std::u16string Told() const
    {
#ifdef _WIN32
        std::wstring told(2 * kPathCapacity, L'\0');
        told.resize(GetModuleFileNameW(GetModuleHandleW(m_path.c_str()), told.data(), 2 * kPathCapacity));
        return std::filesystem::path(told).u16string();
#else
        return m_path.u16string();
#endif
    }

private:
    std::filesystem::path m_top;
    std::filesystem::path m_path;
    Module m_module;
};

TEST(OwnModule, OwnModulePath_LongestPaths_CountAsUnknownOnlyWhereTheyDoNotFit)
{
    const TestFolder folder;
    const std::size_t given = 900;
    const std::size_t leftOut = given - DeepProbe(folder, given).Told().size();
    for (const std::size_t length :
         {kPathCapacity - 2, kPathCapacity - 1, kPathCapacity, kPathCapacity + 1}) {
        const DeepProbe probe(folder, length + leftOut);
        ASSERT_EQ(probe.Told().size(), length);
        const auto ownPath = probe.Loaded().FunctionNamed<OwnModulePathFunction>("ProbeOwnModulePath");
        ASSERT_NE(ownPath, nullptr);

        char16_t path[kPathCapacity];
        path[0] = u'x';
        const bool fits = length < kPathCapacity; // with the end mark
        EXPECT_EQ(ownPath(path), fits ? length : 0);
        EXPECT_EQ(std::u16string(path), fits ? probe.Told() : u"");
    }
}

#ifndef _WIN32

TEST(OwnModule, OwnModulePath_LoadedByARelativePath_IsFull)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Folder("near"));
    std::filesystem::current_path(folder.Path());
    const Module module = Module::LoadFile("near/probe.dll");
    const auto ownPath = module.FunctionNamed<OwnModulePathFunction>("ProbeOwnModulePath");
    ASSERT_NE(ownPath, nullptr);
    char16_t found[kPathCapacity];
    EXPECT_EQ(ownPath(found), path.u16string().size());
    EXPECT_EQ(std::u16string(found), path.u16string());
}

TEST(OwnModule, OwnModulePath_LoadedByARelativePath_StaysWhenTheCurrentFolderChanges)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Folder("first/near \u00E9"));
    TestFolder::Copy(KELMORA_PROBE, folder.Folder("second/near \u00E9"));
    std::filesystem::current_path(folder.Path() / "first");
    const Module module = Module::LoadFile("near \u00E9/probe.dll");
    const auto ownPath = module.FunctionNamed<OwnModulePathFunction>("ProbeOwnModulePath");
    ASSERT_NE(ownPath, nullptr);
    for (const char* const current : {"second", "second/near \u00E9", "."}) {
        std::filesystem::current_path(folder.Path() / current);
        char16_t found[kPathCapacity];
        EXPECT_EQ(ownPath(found), path.u16string().size());
        EXPECT_EQ(std::u16string(found), path.u16string());
    }
}

TEST(OwnModule, OwnModulePath_LoadedByARelativePathThatDoesNotFit_CountsAsUnknown)
{
    // Sixteen of the longest names that there may be are more than any buffer of a path.
    const TestFolder folder;
    const std::string longest(255, 'f');
    std::filesystem::current_path(folder.Path());
    for (int i = 0; i < 16; ++i) {
        std::filesystem::create_directory(longest);
        std::filesystem::current_path(longest);
    }
    TestFolder::Copy(KELMORA_PROBE, ".");
    {
        const Module module = Module::LoadFile("./probe.dll");
        const auto ownPath = module.FunctionNamed<OwnModulePathFunction>("ProbeOwnModulePath");
        ASSERT_NE(ownPath, nullptr);
        char16_t found[kPathCapacity] = u"x";
        EXPECT_EQ(ownPath(found), 0u);
        EXPECT_EQ(std::u16string(found), u"");
    }
    std::filesystem::remove("probe.dll");
    for (int i = 0; i < 16; ++i) {
        std::filesystem::current_path("..");
        std::filesystem::remove(longest);
    }
}

#endif

} // namespace
} // namespace kelmora

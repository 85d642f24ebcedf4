#include "platform/module.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "platform/own_module.h"
#include "tests/platform/loaded_modules.h"
#include "tests/platform/test_folder.h"

namespace kelmora {
namespace {

using platform::Module;

int Answer(const Module& module)
{
    const auto answer = module.FunctionNamed<int (*)()>("ProbeAnswer");
    return answer ? answer() : 0;
}

TEST(Module, LoadFile_FullPath_FindsWhatTheModuleExports)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Path());
    std::string error;
    const Module module = Module::LoadFile(Utf8(path).c_str(), &error);
    ASSERT_TRUE(module) << error;
    EXPECT_EQ(Answer(module), 42);
    EXPECT_EQ(module.Symbol("ProbeQuestion"), nullptr);
    EXPECT_EQ(error, "");
}

TEST(Module, LoadFile_WidePath_FindsWhatTheModuleExports)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Path());
    EXPECT_EQ(Answer(Module::LoadFile(path.u16string().c_str())), 42);
}

TEST(Module, LoadFile_BareFileName_IsTheFileInTheCurrentFolder)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Path(), "near.dll");
    std::filesystem::current_path(folder.Path());
    const Module module = Module::LoadFile("near.dll");
    EXPECT_EQ(Answer(module), 42);
    EXPECT_TRUE(IsLoaded(path));
}

TEST(Module, LoadFile_BareNameOfASystemModule_IsNotSearched)
{
    const TestFolder folder;
    std::filesystem::current_path(folder.Path());
    for (const char* name : {"libm.so.6", "version.dll"})
        EXPECT_FALSE(Module::LoadFile(name)) << name;
}

TEST(Module, LoadFile_NameBeyondAscii_LoadsInBothForms)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Folder(u"\u00DCbung \u65E5\u672C \U0001F600"));
    EXPECT_EQ(Answer(Module::LoadFile(Utf8(path).c_str())), 42);
    EXPECT_EQ(Answer(Module::LoadFile(path.u16string().c_str())), 42);
}

TEST(Module, LoadFile_MissingFile_TellsTheReasonInOneLine)
{
    const TestFolder folder;
    const auto path = folder.Path() / "missing.dll";
    std::string error;
    EXPECT_FALSE(Module::LoadFile(Utf8(path).c_str(), &error));
    EXPECT_GT(error.size(), 10u);
    EXPECT_EQ(error.find_first_of("\r\n"), error.npos);
    EXPECT_FALSE(Module::LoadFile(path.u16string().c_str()));
}

TEST(Module, LoadFile_FileThatIsNoModule_TellsTheReason)
{
    const TestFolder folder;
    const auto path = folder.Path() / "text.dll";
    TestFolder::Write(path, "not a module");
    std::string error;
    EXPECT_FALSE(Module::LoadFile(Utf8(path).c_str(), &error));
    EXPECT_GT(error.size(), 10u);
    EXPECT_FALSE(Module::LoadFile(path.u16string().c_str()));
}

TEST(Module, LoadFile_EmptyPath_GivesNone)
{
    std::string error;
    EXPECT_FALSE(Module::LoadFile("", &error));
    EXPECT_NE(error, "");
    EXPECT_FALSE(Module::LoadFile(u""));
}

TEST(Module, LoadByName_ModuleOfTheSystem_IsFound)
{
#ifdef _WIN32
    const Module module = Module::LoadByName(u"version.dll");
    EXPECT_NE(module.Symbol("GetFileVersionInfoW"), nullptr);
#else
    const Module module = Module::LoadByName(u"libm.so.6");
    EXPECT_NE(module.Symbol("cos"), nullptr);
#endif
}

TEST(Module, LoadByName_ModuleInTheCurrentFolder_IsNotFound)
{
    const TestFolder folder;
    TestFolder::Copy(KELMORA_PROBE, folder.Path(), "planted.dll");
    std::filesystem::current_path(folder.Path());
    EXPECT_FALSE(Module::LoadByName(u"planted.dll"));
}

TEST(Module, LoadByName_EmptyOrUnknown_GivesNone)
{
    EXPECT_FALSE(Module::LoadByName(u""));
    EXPECT_FALSE(Module::LoadByName(u"no-module-of-this-name.dll"));
}

TEST(Module, NoModule_HasNoSymbolsAndUnloadsNothing)
{
    Module module;
    EXPECT_FALSE(module);
    EXPECT_EQ(module.Symbol("ProbeAnswer"), nullptr);
    module.Unload();
    module.Detach();
    EXPECT_FALSE(module);
}

TEST(Module, Destroyed_IsUnloaded)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Path());
    {
        const Module module = Module::LoadFile(Utf8(path).c_str());
        EXPECT_TRUE(IsLoaded(path));
    }
    EXPECT_FALSE(IsLoaded(path));
}

TEST(Module, Unload_UnloadsOnce)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Path());
    const Module other = Module::LoadFile(Utf8(path).c_str());
    Module module = Module::LoadFile(Utf8(path).c_str());
    module.Unload();
    EXPECT_FALSE(module);
    module.Unload();
    EXPECT_TRUE(IsLoaded(path));
    EXPECT_EQ(Answer(other), 42);
}

TEST(Module, Detach_LeavesTheModuleLoaded)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Path());
    {
        Module module = Module::LoadFile(Utf8(path).c_str());
        module.Detach();
        EXPECT_FALSE(module);
    }
    ASSERT_TRUE(IsLoaded(path));
    TakeBack(path);
    EXPECT_FALSE(IsLoaded(path));
}

TEST(Module, Moved_LeavesNothingBehind)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Path());
    Module target;
    {
        Module source = Module::LoadFile(Utf8(path).c_str());
        Module between(std::move(source));
        EXPECT_FALSE(source); // NOLINT(bugprone-use-after-move): what is left is the question
        target = std::move(between);
        EXPECT_FALSE(between); // NOLINT(bugprone-use-after-move)
    }
    EXPECT_EQ(Answer(target), 42);
}

TEST(Module, Assigned_UnloadsWhatItHeld)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Path());
    Module module = Module::LoadFile(Utf8(path).c_str());
    Module& same = module;
    module = std::move(same);
    EXPECT_TRUE(IsLoaded(path));
    module = Module();
    EXPECT_FALSE(IsLoaded(path));
}

#ifndef _WIN32

TEST(Module, LoadFile_PathThatIsNoUtf8_SurvivesTheWayThroughWideText)
{
    const TestFolder folder;
    const auto path = TestFolder::Copy(KELMORA_PROBE, folder.Folder("bytes \xFF\xFE\xC3"));
    const Module module = Module::LoadFile(path.c_str());
    const auto ownPath =
        module.FunctionNamed<std::size_t (*)(char16_t(&)[platform::kPathCapacity])>("ProbeOwnModulePath");
    ASSERT_NE(ownPath, nullptr);
    char16_t wide[platform::kPathCapacity];
    EXPECT_GT(ownPath(wide), 0u);
    EXPECT_EQ(Answer(Module::LoadFile(wide)), 42);
}

TEST(Module, LoadFile_WidePathWithoutAFolder_IsNotSearched)
{
    EXPECT_FALSE(Module::LoadFile(u"libm.so.6"));
}

TEST(Module, LoadFile_WidePathThatHasNoNarrowForm_GivesNone)
{
    const char16_t path[] = {u'/', 0xD800, u'/', u'x', 0};
    EXPECT_FALSE(Module::LoadFile(path));
}

#endif

} // namespace
} // namespace kelmora

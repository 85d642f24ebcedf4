#include <string>

#include <gtest/gtest.h>

#include "platform/module.h"
#include "platform/own_module.h"
#include "tests/platform/test_folder.h"

namespace kelmora {
namespace {

using platform::kPathCapacity;
using platform::Module;

std::u16string PathThatTheModuleTells(const Module& module)
{
    const auto ownPath =
        module.FunctionNamed<std::size_t (*)(char16_t(&)[kPathCapacity])>("ProbeOwnModulePath");
    if (!ownPath)
        return {};
    char16_t path[kPathCapacity];
    ownPath(path);
    return path;
}

TEST(OwnModuleAttach, TwoCopiesOfAModule_EachKnowsItself)
{
    const TestFolder folder;
    const auto first = TestFolder::Copy(KELMORA_PROBE, folder.Folder("first"));
    const auto second = TestFolder::Copy(KELMORA_PROBE, folder.Folder(u"second \u00E9\u65E5"));
    const Module firstModule = Module::LoadFile(first.u16string().c_str());
    const Module secondModule = Module::LoadFile(second.u16string().c_str());
    EXPECT_EQ(PathThatTheModuleTells(firstModule), first.u16string());
    EXPECT_EQ(PathThatTheModuleTells(secondModule), second.u16string());
}

} // namespace
} // namespace kelmora

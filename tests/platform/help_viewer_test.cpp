#include "platform/help_viewer.h"

#include <gtest/gtest.h>

#include "platform/module.h"
#include "tests/platform/loaded_modules.h"
#include "tests/platform/test_folder.h"

namespace kelmora {
namespace {

TEST(HelpViewer, ShowHelp_MissingFile_AsksNoViewer)
{
    const TestFolder folder;
    platform::ShowHelp(nullptr, (folder.Path() / "Missing.chm").u16string().c_str(), 961);
    EXPECT_FALSE(IsLoaded("hhctrl.ocx"));
}

TEST(HelpViewer, ShowHelp_File_IsGivenToTheViewerWhereThereIsOne)
{
    const TestFolder folder;
    const auto file = folder.Path() / "Broken.chm";
    TestFolder::Write(file, "no help in here");
    const bool hasViewer = static_cast<bool>(platform::Module::LoadByName(u"hhctrl.ocx"));
    EXPECT_FALSE(IsLoaded("hhctrl.ocx"));
    platform::ShowHelp(nullptr, file.u16string().c_str(), 961);
    EXPECT_EQ(IsLoaded("hhctrl.ocx"), hasViewer);
}

} // namespace
} // namespace kelmora

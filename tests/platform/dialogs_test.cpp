#include "platform/dialogs.h"

#include <string>

#include <gtest/gtest.h>

#ifndef _WIN32
#include <cstring>
#include <utility>

#include "tests/platform/desktop_programs.h"
#endif

namespace kelmora {
namespace {

TEST(Dialogs, Flags_AreThoseOfTheSystemsHeaders)
{
    EXPECT_EQ(std::uint32_t{platform::OFN_OVERWRITEPROMPT}, 0x2u);
    EXPECT_EQ(std::uint32_t{platform::OFN_PATHMUSTEXIST}, 0x800u);
    EXPECT_EQ(std::uint32_t{platform::OFN_FILEMUSTEXIST}, 0x1000u);
    EXPECT_EQ(std::uint32_t{platform::OFN_EXPLORER}, 0x80000u);
}

#ifndef _WIN32 // there tests/dialogs shows them

using platform::FileDialog;
using platform::FileDialogKind;

constexpr std::size_t kCapacity = 32;

struct Dialog {
    explicit Dialog(FileDialogKind kind)
        : dialog{kind,       nullptr,
                 path,       kCapacity,
                 u"A Title", u"Texts (*.txt)\0*.txt\0",
                 u"txt",     platform::OFN_OVERWRITEPROMPT}
    {
    }

    bool Ask() { return platform::AskForFile(dialog); }

    char16_t path[kCapacity] = u"";
    FileDialog dialog;
};

TEST(Dialogs, Open_AsksZenityForAFileOfTheFilter)
{
    const FakeDesktop desktop;
    desktop.Install("zenity", "echo /somewhere/a.txt");
    Dialog dialog(FileDialogKind::Open);
    EXPECT_TRUE(dialog.Ask());
    EXPECT_EQ(std::u16string(dialog.path), u"/somewhere/a.txt");
    EXPECT_EQ(desktop.TakeAsked(),
              "zenity\n--file-selection\n--title=A Title\n--file-filter=Texts (*.txt) | *.txt\n--\n");
}

TEST(Dialogs, Open_AsksKdialogForAFileOfTheFilter)
{
    const FakeDesktop desktop;
    desktop.Install("kdialog", "echo /somewhere/a.txt");
    Dialog dialog(FileDialogKind::Open);
    EXPECT_TRUE(dialog.Ask());
    EXPECT_EQ(std::u16string(dialog.path), u"/somewhere/a.txt");
    EXPECT_EQ(desktop.TakeAsked(), "kdialog\n--title\nA Title\n--getopenfilename\n.\nTexts (*.txt)\n--\n");
}

TEST(Dialogs, Save_AsksForAnyFileAndBeforeItIsReplaced)
{
    const FakeDesktop desktop;
    desktop.Install("zenity", "echo /somewhere/a.txt");
    Dialog dialog(FileDialogKind::Save);
    EXPECT_TRUE(dialog.Ask());
    EXPECT_EQ(desktop.TakeAsked(),
              "zenity\n--file-selection\n--title=A Title\n--file-filter=Texts (*.txt) | *.txt\n"
              "--save\n--confirm-overwrite\n--\n");
    dialog.dialog.flags = 0;
    dialog.path[0] = u'\0';
    EXPECT_TRUE(dialog.Ask());
    EXPECT_EQ(desktop.TakeAsked(),
              "zenity\n--file-selection\n--title=A Title\n--file-filter=Texts (*.txt) | *.txt\n--save\n--\n");
}

TEST(Dialogs, ANameInThePath_IsOffered)
{
    const FakeDesktop desktop;
    desktop.Install("kdialog", "exit 1");
    Dialog dialog(FileDialogKind::Save);
    dialog.path[0] = u'n';
    EXPECT_FALSE(dialog.Ask());
    EXPECT_EQ(desktop.TakeAsked(), "kdialog\n--title\nA Title\n--getsavefilename\nn\nTexts (*.txt)\n--\n");
}

TEST(Dialogs, Save_NamesWithoutAnExtension_GetTheDefaultOne)
{
    const FakeDesktop desktop;
    const std::pair<const char*, const char16_t*> names[] = {
        {"/s.d/a", u"/s.d/a.txt"}, {"/s/a.doc", u"/s/a.doc"}, {"a", u"a.txt"}, {"/s/.a", u"/s/.a"}};
    for (const auto& [chosen, expected] : names) {
        desktop.Install("zenity", std::string("echo ") + chosen);
        Dialog dialog(FileDialogKind::Save);
        EXPECT_TRUE(dialog.Ask());
        EXPECT_EQ(std::u16string(dialog.path), expected);
        Dialog opened(FileDialogKind::Open);
        EXPECT_TRUE(opened.Ask());
        EXPECT_EQ(std::u16string(opened.path), std::u16string(chosen, chosen + std::strlen(chosen)));
    }
}

TEST(Dialogs, Save_AFileThatTheExtensionNames_IsAskedAboutUntilTheAnswerIsYes)
{
    const FakeDesktop desktop;
    TestFolder::Write(desktop.Path() / "a.txt", "old");
    std::filesystem::current_path(desktop.Path());
    // The first question is answered with no, so the dialog comes again.
    desktop.Install("zenity",
                    "if [ $1 = --question ]; then [ -e once ] || { : > once; exit 1; }; exit 0; fi; echo a");
    Dialog dialog(FileDialogKind::Save);
    EXPECT_TRUE(dialog.Ask());
    EXPECT_EQ(std::u16string(dialog.path), u"a.txt");
    const std::string ask =
        "zenity\n--file-selection\n--title=A Title\n--file-filter=Texts (*.txt) | *.txt\n";
    const std::string question = "zenity\n--question\n--no-markup\n--title=A Title\n"
                                 "--text=a.txt already exists.\nDo you want to replace it?\n--\n";
    EXPECT_EQ(desktop.TakeAsked(),
              ask + "--save\n--confirm-overwrite\n--\n" + question + ask
                  + "--filename=a.txt\n--save\n--confirm-overwrite\n--\n" + question);
}

TEST(Dialogs, Paths_AsLongAsTheRoom_AreTakenAndLongerOnesAreNot)
{
    const FakeDesktop desktop;
    const std::string fits = "/" + std::string(kCapacity - 2 - 4, 'a') + ".txt";
    desktop.Install("zenity", "echo " + fits);
    Dialog dialog(FileDialogKind::Open);
    EXPECT_TRUE(dialog.Ask());
    EXPECT_EQ(std::u16string(dialog.path), std::u16string(fits.begin(), fits.end()));
    desktop.Install("zenity", "echo " + fits + "x");
    Dialog longer(FileDialogKind::Open);
    EXPECT_FALSE(longer.Ask());
}

TEST(Dialogs, Paths_OfAnyBytes_ComeAsWideText)
{
    const FakeDesktop desktop;
    desktop.Install("zenity", "printf '/caf\\303\\251/\\377\\n'");
    Dialog dialog(FileDialogKind::Open);
    EXPECT_TRUE(dialog.Ask());
    EXPECT_EQ(std::u16string(dialog.path), std::u16string(u"/caf\u00E9/") + char16_t{0xDCFF});
}

TEST(Dialogs, CancelledOrWithoutPrograms_AreFalse)
{
    const FakeDesktop desktop;
    Dialog dialog(FileDialogKind::Save);
    EXPECT_FALSE(dialog.Ask());
    desktop.Install("zenity", "exit 1");
    EXPECT_FALSE(dialog.Ask());
}

#endif

} // namespace
} // namespace kelmora

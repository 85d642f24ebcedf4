#include "platform/messages.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <string>
#include <thread>

#include <windows.h>
#else
#include "tests/platform/desktop_programs.h"
#endif

namespace kelmora {
namespace {

using platform::MessageKind;

#ifdef _WIN32

BOOL CALLBACK NoteIcon(HWND child, LPARAM hasIcon)
{
    wchar_t kind[16] = L"";
    GetClassNameW(child, kind, 16);
    if (std::wstring(kind) == L"Static" && SendMessageW(child, STM_GETICON, 0, 0))
        *reinterpret_cast<bool*>(hasIcon) = true;
    return TRUE;
}

/// Waits until a message with the title `title` is on the screen, reads it and answers it. Gives what it says;
/// empty when none came in ten seconds, or the message was answered otherwise.
std::wstring AnswerMessage(const wchar_t* title, bool* hasIcon)
{
    for (int attempt = 0; attempt < 200; ++attempt) {
        Sleep(50);
        const HWND box = FindWindowW(L"#32770", title);
        if (!box || !IsWindowVisible(box))
            continue;
        wchar_t text[256] = L"";
        GetDlgItemTextW(box, 0xFFFF, text, 256);
        EnumChildWindows(box, NoteIcon, reinterpret_cast<LPARAM>(hasIcon));
        PostMessageW(box, WM_COMMAND, IDOK, 0);
        return text;
    }
    return {};
}

struct Shown {
    std::wstring text;
    bool hasIcon = false;
};

Shown Show(const char16_t* text, const char16_t* title, MessageKind kind)
{
    Shown shown;
    std::thread user(
        [&] { shown.text = AnswerMessage(reinterpret_cast<const wchar_t*>(title), &shown.hasIcon); });
    platform::ShowMessage(nullptr, text, title, kind);
    user.join();
    return shown;
}

bool HasScreen()
{
    const HWND window =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    if (window)
        DestroyWindow(window);
    return window != nullptr;
}

TEST(Messages, ShowMessage_ShowsTextTitleAndIcon)
{
    if (!HasScreen())
        GTEST_SKIP() << "no screen to show a message on";
    const Shown warning = Show(u"caf\u00E9 \u65E5", u"Kelmora warning", MessageKind::Exclamation);
    EXPECT_EQ(warning.text, L"caf\u00E9 \u65E5");
    EXPECT_TRUE(warning.hasIcon);
    const Shown plain = Show(u"plain", u"Kelmora plain", MessageKind::Plain);
    EXPECT_EQ(plain.text, L"plain");
    EXPECT_FALSE(plain.hasIcon);
}

#else

TEST(Messages, WithoutAWayToShowThem_ComeBackAtOnce)
{
    const FakeDesktop desktop; // without programs
    platform::ShowMessage(nullptr, u"text", u"title", MessageKind::Exclamation);
    platform::ShowMessage(nullptr, u"", u"", MessageKind::Plain);
    EXPECT_EQ(platform::ForegroundWindow(), nullptr);
}

TEST(Messages, ShowMessage_AsksZenityWithTheTextAsItIs)
{
    const FakeDesktop desktop;
    desktop.Install("zenity", "exit 0");
    platform::ShowMessage(nullptr, u"caf\u00E9 <b>\\n", u"A title", MessageKind::Exclamation);
    EXPECT_EQ(desktop.TakeAsked(),
              "zenity\n--warning\n--no-markup\n--title=A title\n--text=caf\xC3\xA9 <b>\\\\n\n--\n");
    platform::ShowMessage(nullptr, u"text", u"A title", MessageKind::Plain);
    EXPECT_EQ(desktop.TakeAsked(), "zenity\n--info\n--no-markup\n--title=A title\n--text=text\n--\n");
}

TEST(Messages, ShowMessage_WithoutZenity_AsksKdialog)
{
    const FakeDesktop desktop;
    desktop.Install("kdialog", "exit 0");
    platform::ShowMessage(nullptr, u"text", u"A title", MessageKind::Exclamation);
    EXPECT_EQ(desktop.TakeAsked(), "kdialog\n--title\nA title\n--sorry\ntext\n--\n");
    platform::ShowMessage(nullptr, u"text", u"A title", MessageKind::Plain);
    EXPECT_EQ(desktop.TakeAsked(), "kdialog\n--title\nA title\n--msgbox\ntext\n--\n");
}

#endif

} // namespace
} // namespace kelmora

#include <gtest/gtest.h>

#ifndef _WIN32

#include <csignal>

#include "platform/desktop_posix.h"
#include "tests/platform/desktop_programs.h"

namespace kelmora {
namespace {

using platform::AskDesktop;
using platform::DesktopAnswer;

TEST(Desktop, AskDesktop_TakesZenityFirst)
{
    const FakeDesktop desktop;
    desktop.Install("zenity", "echo chosen");
    desktop.Install("kdialog", "echo another");
    const DesktopAnswer answer = AskDesktop({"--a", "b c"}, {"--d"});
    EXPECT_TRUE(answer.confirmed);
    EXPECT_EQ(answer.output, "chosen");
    EXPECT_EQ(desktop.TakeAsked(), "zenity\n--a\nb c\n--\n");
}

TEST(Desktop, AskDesktop_WithoutZenity_TakesKdialog)
{
    const FakeDesktop desktop;
    desktop.Install("kdialog", "echo another");
    EXPECT_EQ(AskDesktop({"--a"}, {"--d"}).output, "another");
    EXPECT_EQ(desktop.TakeAsked(), "kdialog\n--d\n--\n");
}

TEST(Desktop, AskDesktop_WithoutPrograms_IsNotConfirmed)
{
    const FakeDesktop desktop;
    EXPECT_FALSE(AskDesktop({"--a"}, {"--d"}).confirmed);
}

TEST(Desktop, AskDesktop_WithoutAScreen_StartsNothing)
{
    const FakeDesktop desktop;
    desktop.Install("zenity", "echo chosen");
    desktop.Install("kdialog", "echo another");
    const Variable none("DISPLAY", nullptr);
    EXPECT_FALSE(AskDesktop({}, {}).confirmed);
    const Variable empty("DISPLAY", "");
    EXPECT_FALSE(AskDesktop({}, {}).confirmed);
    EXPECT_EQ(desktop.TakeAsked(), "");
    const Variable wayland("WAYLAND_DISPLAY", "wayland-0");
    EXPECT_TRUE(AskDesktop({}, {}).confirmed);
}

TEST(Desktop, AskDesktop_CancelledOrBroken_IsNotConfirmedAndAsksNoOther)
{
    const FakeDesktop desktop;
    desktop.Install("kdialog", "echo another");
    for (const char* const end : {"exit 1", "exit 255", "kill -9 $$"}) {
        desktop.Install("zenity", end);
        EXPECT_FALSE(AskDesktop({}, {}).confirmed) << end;
        EXPECT_EQ(desktop.TakeAsked(), "zenity\n--\n");
    }
}

TEST(Desktop, AskDesktop_HostThatIgnoresItsChildren_IsAskedOnceAndTakesWhatWasPrinted)
{
    const FakeDesktop desktop;
    desktop.Install("kdialog", "echo another");
    void (*const before)(int) = std::signal(SIGCHLD, SIG_IGN); // the exit codes are lost
    desktop.Install("zenity", "echo chosen");
    const DesktopAnswer chosen = AskDesktop({}, {});
    EXPECT_TRUE(chosen.confirmed);
    EXPECT_EQ(chosen.output, "chosen");
    desktop.Install("zenity", "exit 1");
    EXPECT_FALSE(AskDesktop({}, {}).confirmed);
    std::signal(SIGCHLD, before);
    EXPECT_EQ(desktop.TakeAsked(), "zenity\n--\nzenity\n--\n");
}

TEST(Desktop, AskDesktop_OfTheOutputOnlyTheLastLineFeedIsTheProgramsOwn)
{
    const FakeDesktop desktop;
    desktop.Install("zenity", "printf '/a\\nb\\n\\n'");
    EXPECT_EQ(AskDesktop({}, {}).output, "/a\nb\n");
    desktop.Install("zenity", "printf ''");
    EXPECT_EQ(AskDesktop({}, {}).output, "");
}

TEST(Desktop, AskDesktop_TextsAreUtf8WhateverTheLocale)
{
    const FakeDesktop desktop;
    desktop.Install("zenity", "echo $CHARSET $G_FILENAME_ENCODING");
    EXPECT_EQ(AskDesktop({}, {}).output, "UTF-8 UTF-8");
}

TEST(Desktop, ForZenity_DoublesBackslashes)
{
    EXPECT_EQ(platform::ForZenity("a\\nb\\\\"), "a\\\\nb\\\\\\\\");
    EXPECT_EQ(platform::ForZenity("line\n<b>"), "line\n<b>");
}

TEST(Desktop, NarrowText_IsUtf8)
{
    EXPECT_EQ(platform::NarrowText(u"caf\u00E9"), "caf\xC3\xA9");
    EXPECT_EQ(platform::NarrowText(u""), "");
}

} // namespace
} // namespace kelmora

#endif

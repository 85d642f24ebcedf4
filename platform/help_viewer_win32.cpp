#include "platform/help_viewer.h"

#include "platform/module.h"

#include <windows.h>

namespace kelmora::platform {
namespace {

using HtmlHelpFunction = HWND(WINAPI*)(HWND owner, const wchar_t* file, UINT command, DWORD_PTR data);

constexpr UINT kHelpContext = 15; // HH_HELP_CONTEXT

} // namespace

void ShowHelp(void* owner, const char16_t* file, std::uint32_t topic)
{
    const auto* const path = reinterpret_cast<const wchar_t*>(file);
    if (GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES)
        return;
    // Not every system has the viewer, so it is looked up where it is needed and not linked.
    Module viewer = Module::LoadByName(u"hhctrl.ocx");
    const auto htmlHelp = viewer.FunctionNamed<HtmlHelpFunction>("HtmlHelpW");
    if (!htmlHelp)
        return;
    htmlHelp(static_cast<HWND>(owner), path, kHelpContext, topic);
    viewer.Detach(); // its window lives on, with threads of its own
}

} // namespace kelmora::platform

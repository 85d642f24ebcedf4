#include "platform/messages.h"

#include "platform/wide_win32.h"

#include <windows.h>

namespace kelmora::platform {

void ShowMessage(void* owner, const char16_t* text, const char16_t* title, MessageKind kind)
{
    const UINT icon = kind == MessageKind::Exclamation ? MB_ICONEXCLAMATION : 0;
    MessageBoxW(static_cast<HWND>(owner), Wide(text), Wide(title), MB_OK | icon);
}

void* ForegroundWindow()
{
    return GetForegroundWindow();
}

} // namespace kelmora::platform

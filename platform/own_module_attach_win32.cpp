// Stands in the DLL alone. The system calls it with its loader lock held, so it does no more than this.

#include "platform/own_module_win32.h"

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* /*reserved*/)
{
    if (reason == DLL_PROCESS_ATTACH)
        kelmora::platform::RememberOwnModule(instance);
    return TRUE;
}

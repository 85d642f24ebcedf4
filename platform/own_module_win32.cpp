#include "platform/own_module.h"

#include "platform/own_module_win32.h"

#include <windows.h>

namespace kelmora::platform {
namespace {

constinit void* g_ownModule = nullptr;

} // namespace

const char16_t kFolderSeparator = u'\\';

void RememberOwnModule(void* handle)
{
    g_ownModule = handle;
}

std::size_t OwnModulePath(char16_t (&path)[kPathCapacity])
{
    const DWORD length = GetModuleFileNameW(static_cast<HMODULE>(g_ownModule),
                                            reinterpret_cast<wchar_t*>(path), kPathCapacity);
    // A path that was cut fills the buffer, and old systems leave it without an end mark.
    if (length == 0 || length >= kPathCapacity) {
        path[0] = u'\0';
        return 0;
    }
    return length;
}

} // namespace kelmora::platform

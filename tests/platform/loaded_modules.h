#pragma once

#include <filesystem>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace kelmora {

/// Whether this program has the module of the full path `path` loaded.
inline bool IsLoaded(const std::filesystem::path& path)
{
#ifdef _WIN32
    return GetModuleHandleW(path.c_str()) != nullptr;
#else
    void* const handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
#endif
}

/// Takes back the one reference that somebody left on the module of the full path `path`. Windows gives a
/// loaded module to whoever asks for its bare name, so a test that lets one stay would disturb the next.
inline void TakeBack(const std::filesystem::path& path)
{
#ifdef _WIN32
    FreeLibrary(GetModuleHandleW(path.c_str()));
#else
    void* const handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    dlclose(handle);
    dlclose(handle);
#endif
}

} // namespace kelmora

#include "platform/module.h"

#include "platform/text.h"
#include "platform/wide_win32.h"

#include <string>
#include <string_view>
#include <utility>

#include <windows.h>

namespace kelmora::platform {
namespace {

/// While it lives, a broken file is an error code for this thread and not a box of the system's.
class NoErrorBoxes {
public:
    NoErrorBoxes() { SetThreadErrorMode(SEM_FAILCRITICALERRORS, &m_before); }
    ~NoErrorBoxes() { SetThreadErrorMode(m_before, nullptr); }
    NoErrorBoxes(const NoErrorBoxes&) = delete;
    NoErrorBoxes& operator=(const NoErrorBoxes&) = delete;

private:
    DWORD m_before = 0;
};

char16_t* Units(wchar_t* text)
{
    return reinterpret_cast<char16_t*>(text);
}

std::wstring WideFromUtf8(std::string_view text)
{
    std::wstring wide(Utf8ToUtf16(text, {}).length, L'\0');
    Utf8ToUtf16(text, {Units(wide.data()), wide.size()});
    return wide;
}

std::string Utf8FromWide(std::wstring_view text)
{
    const std::u16string_view units(reinterpret_cast<const char16_t*>(text.data()), text.size());
    std::string narrow(Utf16ToUtf8(units, {}).length, '\0');
    Utf16ToUtf8(units, narrow);
    return narrow;
}

std::wstring FullPath(const std::wstring& path)
{
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

std::string Reason(DWORD code)
{
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS
                                      | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                  nullptr, code, 0, text, 512, nullptr);
    while (length > 0 && text[length - 1] <= L' ')
        --length;
    return (length ? Utf8FromWide({text, length}) : "unknown error") + " (" + std::to_string(code) + ")";
}

} // namespace

Module Module::LoadFile(const char* path, std::string* error)
{
    const std::wstring full = FullPath(WideFromUtf8(path));
    const NoErrorBoxes quiet;
    // The module's own folder comes first when the system looks for what the module needs.
    const HMODULE handle = LoadLibraryExW(full.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!handle && error)
        *error = Reason(GetLastError());
    return Module(handle);
}

Module Module::LoadFile(const char16_t* path) noexcept
{
    const NoErrorBoxes quiet;
    return Module(*path ? LoadLibraryW(Wide(path)) : nullptr);
}

Module Module::LoadByName(const char16_t* name) noexcept
{
    if (!*name)
        return Module();
    const NoErrorBoxes quiet;
    // The usual order ends with the current folder and PATH, where anybody may have put a file.
    HMODULE handle = LoadLibraryExW(Wide(name), nullptr, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (!handle && GetLastError() == ERROR_INVALID_PARAMETER)
        handle = LoadLibraryW(Wide(name)); // a system that does not know the flag
    return Module(handle);
}

void* Module::Symbol(const char* name) const
{
    if (!m_handle)
        return nullptr;
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
}

void Module::Unload()
{
    if (m_handle)
        FreeLibrary(static_cast<HMODULE>(std::exchange(m_handle, nullptr)));
}

} // namespace kelmora::platform

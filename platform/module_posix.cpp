#include "platform/module.h"

#include "platform/text.h"

#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <new>
#include <utility>

namespace kelmora::platform {
namespace {

void* Open(const char* name)
{
    return dlopen(name, RTLD_NOW | RTLD_LOCAL);
}

/// Opens what is named in wide characters. Null on failure.
void* Open(std::u16string_view name) noexcept
{
    const Converted counted = Utf16ToNarrow(name, {});
    if (!counted.whole)
        return nullptr;
    const std::unique_ptr<char[]> narrow(new (std::nothrow) char[counted.length + 1]);
    if (!narrow)
        return nullptr;
    Utf16ToNarrow(name, {narrow.get(), counted.length});
    narrow[counted.length] = '\0';
    return Open(narrow.get());
}

} // namespace

Module Module::LoadFile(const char* path, std::string* error)
{
    // Without a slash it would be looked for in the system's folders.
    const bool bare = std::strchr(path, '/') == nullptr;
    void* const handle = Open(bare ? (std::string("./") + path).c_str() : path);
    if (!handle && error) {
        const char* const reason = dlerror();
        *error = reason ? reason : "unknown error";
    }
    return Module(handle);
}

Module Module::LoadFile(const char16_t* path) noexcept
{
    const std::u16string_view name(path);
    return Module(name.find(u'/') == name.npos ? nullptr : Open(name));
}

Module Module::LoadByName(const char16_t* name) noexcept
{
    return Module(*name ? Open(std::u16string_view(name)) : nullptr);
}

void* Module::Symbol(const char* name) const
{
    return m_handle ? dlsym(m_handle, name) : nullptr;
}

void Module::Unload()
{
    if (m_handle)
        dlclose(std::exchange(m_handle, nullptr));
}

} // namespace kelmora::platform

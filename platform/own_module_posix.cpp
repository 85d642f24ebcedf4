#include "platform/own_module.h"

#include "platform/text.h"

#include <cstring>
#include <dlfcn.h>
#include <span>
#include <string_view>
#include <unistd.h>

namespace kelmora::platform {
namespace {

// Its address lies in the file that is asked for.
const char g_anchor = 0;

// A UTF-16 character takes at most three bytes, so a longer path would not fit either.
constexpr std::size_t kMostBytes = 3 * kPathCapacity;

/// Puts the current folder before a relative `name`. False when the whole does not fit.
bool MakeFull(const char* name, char (&full)[kMostBytes])
{
    std::size_t used = 0;
    if (name[0] != '/') {
        if (!getcwd(full, sizeof full - 1))
            return false;
        used = std::strlen(full);
        full[used++] = '/';
    }
    const std::size_t length = std::strlen(name);
    if (length >= sizeof full - used)
        return false;
    std::memcpy(full + used, name, length + 1);
    return true;
}

} // namespace

const char16_t kFolderSeparator = u'/';

std::size_t OwnModulePath(char16_t (&path)[kPathCapacity])
{
    path[0] = u'\0';
    Dl_info info;
    char full[kMostBytes];
    if (!dladdr(&g_anchor, &info) || !info.dli_fname || !MakeFull(info.dli_fname, full))
        return 0;
    const std::span<char16_t> room(path, kPathCapacity - 1);
    const Converted converted = NarrowToUtf16(full, room);
    path[converted.length] = u'\0';
    return converted.length;
}

} // namespace kelmora::platform

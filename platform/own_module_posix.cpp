#include "platform/own_module.h"

#include "platform/text.h"

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <span>

namespace kelmora::platform {
namespace {

// Its address lies in the file that is asked for.
const char g_anchor = 0;

// A UTF-16 character takes at most three bytes, so a longer path would not fit either.
constexpr std::size_t kMostBytes = 3 * kPathCapacity;

// What stands before the path in a line of the system's list of mappings is shorter than this.
constexpr std::size_t kMostNumbers = 128;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// The path of the file of a mapping, in `line`; null where `address` lies in another one.
const char* MappedFile(const char* line, std::uintptr_t address)
{
    std::uintptr_t begin = 0, end = 0;
    int path = 0;
    std::sscanf(line, "%" SCNxPTR "-%" SCNxPTR " %*s %*s %*s %*s %n", &begin, &end, &path);
    return path > 0 && address >= begin && address < end ? line + path : nullptr;
}

/// The path of the file that is mapped at `address`, in `line`; null where it is not known. The system has it in
/// full, with links followed; the name that the file was loaded by may count from a folder that is no longer the
/// current one.
const char* FindMappedFile(const void* address, char (&line)[kMostBytes + kMostNumbers])
{
    const std::unique_ptr<std::FILE, CloseFile> mappings(std::fopen("/proc/self/maps", "re"));
    bool begins = true; // what a longer path leaves over must not be taken for a line
    while (mappings && std::fgets(line, sizeof line, mappings.get())) {
        char* const end = std::strchr(line, '\n');
        const char* const path =
            begins ? MappedFile(line, reinterpret_cast<std::uintptr_t>(address)) : nullptr;
        begins = end != nullptr;
        if (end)
            *end = '\0';
        if (path)
            return end && *path == '/' ? path : nullptr;
    }
    return nullptr;
}

} // namespace

const char16_t kFolderSeparator = u'/';

std::size_t OwnModulePath(char16_t (&path)[kPathCapacity])
{
    path[0] = u'\0';
    Dl_info info;
    if (!dladdr(&g_anchor, &info) || !info.dli_fname)
        return 0;
    char line[kMostBytes + kMostNumbers];
    const char* const name = *info.dli_fname == '/' ? info.dli_fname : FindMappedFile(&g_anchor, line);
    if (!name)
        return 0;
    const std::span<char16_t> room(path, kPathCapacity - 1);
    const Converted converted = NarrowToUtf16(name, room);
    path[converted.length] = u'\0';
    return converted.length;
}

} // namespace kelmora::platform

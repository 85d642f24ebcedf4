#include "tests/support/process_figures.h"

#ifdef _WIN32
#include <windows.h>

#include <psapi.h>
#else
#include <cstdio>

#include <dirent.h>
#include <malloc.h>
#include <unistd.h>
#endif

namespace kelmora {

#ifdef _WIN32
namespace {

std::int64_t BusyBytes(HANDLE heap)
{
    std::int64_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    if (!HeapLock(heap))
        return 0;
    while (HeapWalk(heap, &entry))
        if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)
            bytes += entry.cbData;
    HeapUnlock(heap);
    return bytes;
}

// GetProcessHandleCount says 0 in Wine.
std::int64_t OpenHandles()
{
    constexpr std::uintptr_t most = 4096, step = 4; // handles are multiples of 4, low ones first
    std::int64_t count = 0;
    for (std::uintptr_t i = 1; i <= most; ++i) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(i * step), &flags) != FALSE;
    }
    return count;
}

} // namespace

ProcessFigures FiguresOfThisProcess()
{
    constexpr DWORD most = 64;
    HANDLE heaps[most];
    const DWORD count = GetProcessHeaps(most, heaps);
    ProcessFigures figures = {};
    for (DWORD i = 0; i < count && i < most; ++i)
        figures.heapBytes += BusyBytes(heaps[i]);
    PROCESS_MEMORY_COUNTERS memory = {};
    if (K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory))
        figures.residentBytes = static_cast<std::int64_t>(memory.WorkingSetSize);
    figures.handles = OpenHandles();
    return figures;
}

void ShareOneHeap() {}

#else
namespace {

std::int64_t ResidentBytes()
{
    long pages = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%*d %ld", &pages) != 1)
            pages = 0;
        std::fclose(file);
    }
    return std::int64_t{pages} * sysconf(_SC_PAGESIZE);
}

std::int64_t OpenFiles()
{
    DIR* const folder = opendir("/proc/self/fd");
    if (!folder)
        return 0;
    std::int64_t entries = -3; // the folder itself, and its two dots
    while (readdir(folder))
        ++entries;
    closedir(folder);
    return entries;
}

} // namespace

ProcessFigures FiguresOfThisProcess()
{
    const std::int64_t files = OpenFiles();
    malloc_trim(0);
    const std::int64_t resident = ResidentBytes();
    const struct mallinfo2 heap = mallinfo2();
    return {static_cast<std::int64_t>(heap.uordblks + heap.hblkhd), resident, files};
}

void ShareOneHeap()
{
    mallopt(M_ARENA_MAX, 1);
}

#endif

} // namespace kelmora

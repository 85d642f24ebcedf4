#pragma once

#include <cstdint>

namespace kelmora {

/// What this process holds of the system.
struct ProcessFigures {
    std::int64_t heapBytes;     ///< in blocks of the heap; a freed one may count until its thread has ended
    std::int64_t residentBytes; ///< of memory
    std::int64_t handles;       ///< open files and, on Windows, whatever else has a handle
};

/// The figures now, after the heap has given back what it can. Under sanitizers, whose heap is another, the first
/// two mean nothing.
ProcessFigures FiguresOfThisProcess();

/// Threads that start from now on share the one heap that can give back all that is free. Some systems' heaps have
/// parts for threads that keep some, more or less of it by chance.
void ShareOneHeap();

} // namespace kelmora

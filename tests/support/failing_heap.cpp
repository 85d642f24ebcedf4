#include "tests/support/failing_heap.h"

#include <atomic>
#include <cstddef>

namespace kelmora {
namespace {

// No thread_local: on some systems its first use takes memory.
constinit std::atomic<FailingHeap*> g_scope = nullptr;
constinit std::atomic<std::int64_t> g_openBlocks = 0;

} // namespace

struct FailingHeapAccess {
    // Whether the next call may have its memory.
    static bool Ask()
    {
        FailingHeap* const scope = g_scope.load(std::memory_order_relaxed);
        if (!scope)
            return true;
        const std::uint64_t number = scope->m_calls++;
        if (number != scope->m_refuseOnly && number < scope->m_refuseFrom)
            return true;
        ++scope->m_refused;
        return false;
    }

    static void Count(std::int64_t blocks) { g_openBlocks.fetch_add(blocks, std::memory_order_relaxed); }
};

FailingHeap::FailingHeap(std::uint64_t refuseOnly, std::uint64_t refuseFrom)
    : m_refuseOnly(refuseOnly), m_refuseFrom(refuseFrom)
{
    g_scope = this;
}

FailingHeap::~FailingHeap()
{
    g_scope = nullptr;
}

std::int64_t FailingHeap::OpenBlocksOfProgram()
{
    return g_openBlocks.load(std::memory_order_relaxed);
}

} // namespace kelmora

// The linker turns the program's calls of malloc and free to these (its option --wrap).
extern "C" {

void* __real_malloc(std::size_t bytes);
void __real_free(void* memory);
void* __wrap_malloc(std::size_t bytes);
void __wrap_free(void* memory);

void* __wrap_malloc(std::size_t bytes)
{
    void* const memory = kelmora::FailingHeapAccess::Ask() ? __real_malloc(bytes) : nullptr;
    if (memory)
        kelmora::FailingHeapAccess::Count(1);
    return memory;
}

void __wrap_free(void* memory)
{
    if (memory)
        kelmora::FailingHeapAccess::Count(-1);
    __real_free(memory);
}

} // extern "C"

#include "tests/support/failing_new.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_THREAD__)
#define KELMORA_KEEPS_NEW 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KELMORA_KEEPS_NEW 1
#endif
#endif

namespace kelmora {
namespace {

thread_local FailingNew* t_scope = nullptr;
std::atomic<std::int64_t> g_openBlocks = 0;

} // namespace

struct FailingNewAccess {
    // Whether the next call may have its memory.
    static bool Ask()
    {
        FailingNew* const scope = t_scope;
        if (!scope)
            return true;
        const std::uint64_t number = scope->m_calls++;
        if (number != scope->m_refuseOnly && number < scope->m_refuseFrom)
            return true;
        ++scope->m_refused;
        return false;
    }

    static void Count(std::int64_t blocks)
    {
        g_openBlocks.fetch_add(blocks, std::memory_order_relaxed);
        if (t_scope)
            t_scope->m_openBlocks += blocks;
    }
};

bool FailingNew::Works()
{
#ifdef KELMORA_KEEPS_NEW
    return false;
#else
    return true;
#endif
}

FailingNew::FailingNew(std::uint64_t refuseOnly, std::uint64_t refuseFrom)
    : m_refuseOnly(refuseOnly), m_refuseFrom(refuseFrom), m_outer(t_scope)
{
    t_scope = this;
}

FailingNew::~FailingNew()
{
    t_scope = m_outer;
}

std::int64_t FailingNew::OpenBlocksOfProgram()
{
    return g_openBlocks.load(std::memory_order_relaxed);
}

} // namespace kelmora

#ifndef KELMORA_KEEPS_NEW

namespace kelmora {
namespace {

void* Take(std::size_t bytes) noexcept
{
    if (!FailingNewAccess::Ask())
        return nullptr;
    void* const memory = std::malloc(bytes > 0 ? bytes : 1);
    if (memory)
        FailingNewAccess::Count(1);
    return memory;
}

void GiveBack(void* memory) noexcept
{
    if (!memory)
        return;
    FailingNewAccess::Count(-1);
    std::free(memory);
}

// The word before an aligned block keeps the address that malloc gave.
void* TakeAligned(std::size_t bytes, std::align_val_t alignment) noexcept
{
    const auto align = static_cast<std::size_t>(alignment);
    if (bytes > static_cast<std::size_t>(-1) - align - sizeof(void*))
        return nullptr;
    auto* const memory = static_cast<unsigned char*>(Take(bytes + align + sizeof(void*)));
    if (!memory)
        return nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(memory + sizeof(void*));
    auto* const block = memory + sizeof(void*) + ((address + align - 1) / align * align - address);
    reinterpret_cast<void**>(block)[-1] = memory;
    return block;
}

void GiveBackAligned(void* block) noexcept
{
    if (block)
        GiveBack(static_cast<void**>(block)[-1]);
}

void* OrThrow(void* memory)
{
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

} // namespace
} // namespace kelmora

// clang-format off
void* operator new(std::size_t bytes)                                                    { return kelmora::OrThrow(kelmora::Take(bytes)); }
void* operator new[](std::size_t bytes)                                                  { return kelmora::OrThrow(kelmora::Take(bytes)); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept                    { return kelmora::Take(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept                  { return kelmora::Take(bytes); }
void* operator new(std::size_t bytes, std::align_val_t a)                                { return kelmora::OrThrow(kelmora::TakeAligned(bytes, a)); }
void* operator new[](std::size_t bytes, std::align_val_t a)                              { return kelmora::OrThrow(kelmora::TakeAligned(bytes, a)); }
void* operator new(std::size_t bytes, std::align_val_t a, const std::nothrow_t&) noexcept   { return kelmora::TakeAligned(bytes, a); }
void* operator new[](std::size_t bytes, std::align_val_t a, const std::nothrow_t&) noexcept { return kelmora::TakeAligned(bytes, a); }

void operator delete(void* p) noexcept                                                   { kelmora::GiveBack(p); }
void operator delete[](void* p) noexcept                                                 { kelmora::GiveBack(p); }
void operator delete(void* p, std::size_t) noexcept                                      { kelmora::GiveBack(p); }
void operator delete[](void* p, std::size_t) noexcept                                    { kelmora::GiveBack(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept                            { kelmora::GiveBack(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept                          { kelmora::GiveBack(p); }
void operator delete(void* p, std::align_val_t) noexcept                                 { kelmora::GiveBackAligned(p); }
void operator delete[](void* p, std::align_val_t) noexcept                               { kelmora::GiveBackAligned(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept                    { kelmora::GiveBackAligned(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept                  { kelmora::GiveBackAligned(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept          { kelmora::GiveBackAligned(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept        { kelmora::GiveBackAligned(p); }
// clang-format on

#endif

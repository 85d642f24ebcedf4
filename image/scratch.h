#pragma once

#include <cstddef>
#include <cstdint>

#include "image/memory_allocator.h"

namespace kelmora {

/// A block of plain working space from a render's allocator, given back when it goes.
class Scratch {
public:
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch()
    {
        if (m_allocator)
            m_allocator->Free(m_memory);
    }

    /// `bytes` bytes, not cleared, aligned to 64 whatever the allocator gives. To be called once.
    bool Allocate(MemoryAllocator& allocator, std::int64_t bytes)
    {
        m_allocator = &allocator;
        return bytes > 0 && allocator.Allocate(&m_memory, static_cast<std::uint64_t>(bytes) + kAlignment);
    }

    /// Null until Allocate succeeded.
    std::uint8_t* Bytes() const
    {
        if (!m_memory)
            return nullptr;
        auto* start = static_cast<std::uint8_t*>(m_memory);
        return start + (kAlignment - reinterpret_cast<std::uintptr_t>(start) % kAlignment) % kAlignment;
    }

private:
    static constexpr std::size_t kAlignment = 64;

    MemoryAllocator* m_allocator = nullptr;
    void* m_memory = nullptr;
};

} // namespace kelmora

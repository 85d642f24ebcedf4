#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "image/memory_allocator.h"

namespace kelmora {

/// A block of working space from a render's allocator, given back when it goes.
class Scratch {
public:
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch()
    {
        if (!m_memory)
            return;
        if (m_isPlain)
            m_allocator->Free(m_memory);
        else
            m_allocator->FreeImage(m_memory);
    }

    /// `bytes` bytes for rows of pixels, not cleared, aligned to 64 whatever the allocator gives. Asked for as the
    /// picture that they stand for: a host that has no more pictures to give gives none of these either. To be called
    /// once.
    bool Allocate(MemoryAllocator& allocator, std::int64_t bytes)
    {
        // One row: what lies between the rows of a host's picture is the host's.
        constexpr int kPixel = 4, kMost = std::numeric_limits<int>::max();
        m_allocator = &allocator;
        if (bytes < 1 || bytes > kMost)
            return false;
        const std::int64_t pixels = (bytes + std::int64_t{kAlignment} + kPixel - 1) / kPixel;
        int stride = 0;
        return allocator.AllocateImage(&m_memory, static_cast<int>(pixels), 1, kPixel, &stride);
    }

    /// The same as plain memory, for what is no picture: the taps of a filter.
    bool AllocatePlain(MemoryAllocator& allocator, std::int64_t bytes)
    {
        m_allocator = &allocator;
        m_isPlain = true;
        return bytes > 0 && allocator.Allocate(&m_memory, static_cast<std::uint64_t>(bytes) + kAlignment);
    }

    /// Null until there is memory.
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
    bool m_isPlain = false;
};

} // namespace kelmora

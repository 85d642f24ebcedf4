#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "contract/memory_provider.h"
#include "contract/unknown.h"

namespace kelmora {

/// The one source of pixel memory, made on the stack of each render and gone with it: the host's
/// IMemoryProvider where it offers one, else memory of our own. Every allocation may fail.
/// [one thread at a time]
class MemoryAllocator {
public:
    /// Memory of our own.
    MemoryAllocator() = default;

    /// Asks `host`, which may be null, for its IMemoryProvider. A refusal is no error.
    explicit MemoryAllocator(IUnknown* host);

    MemoryAllocator(const MemoryAllocator&) = delete;
    MemoryAllocator& operator=(const MemoryAllocator&) = delete;
    virtual ~MemoryAllocator();

    /// Plain memory of `bytes` bytes, not cleared, in `*out`; null there when there is none. False when
    /// `out` is null, `bytes` is 0 or beyond what one block may have, or there is no memory.
    bool Allocate(void** out, std::uint64_t bytes);

    /// Takes back what Allocate gave; null is ignored.
    void Free(void* memory);

    /// Memory for a picture, not cleared, in `*out`, and the bytes from row to row in `*stride`. False
    /// when a pointer is null, a size is not positive, the picture is 2 GiB or more, or there is no
    /// memory. The stride of memory that a provider refuses is 0. Our own memory serves pixels of 1, 2, 3, 4 and 16 bytes, with
    /// rows on 32-byte boundaries.
    bool AllocateImage(void** out, int width, int height, int pixelBytes, int* stride);

    /// Takes back what AllocateImage gave; null is ignored.
    void FreeImage(void* memory);

private:
    // Kept for the tracking of memory; nothing fills them.
    struct Bookkeeping {
        std::array<std::uint32_t, 3> words{};
    };

    IMemoryProvider* m_pProvider = nullptr;
    [[maybe_unused]] Bookkeeping m_images;
    [[maybe_unused]] Bookkeeping m_blocks;
    [[maybe_unused]] std::vector<std::uint64_t> m_entries;
};

} // namespace kelmora

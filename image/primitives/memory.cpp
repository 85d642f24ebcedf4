#include "image/primitives/memory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <thread>

namespace kelmora {
namespace {

constexpr std::uintptr_t kAlignment = 32;

/// What stands right before a block.
struct Header {
    void* heap;            ///< the heap's own pointer
    std::int64_t capacity; ///< bytes from the block on
};

// Room to move up to the boundary behind a header.
constexpr std::int64_t kOverhead = 32 + sizeof(Header);

Header HeaderOf(const void* block)
{
    Header header;
    std::memcpy(&header, static_cast<const char*>(block) - sizeof header, sizeof header);
    return header;
}

void* NewBlock(std::int64_t bytes)
{
    void* heap = std::malloc(static_cast<std::size_t>(bytes + kOverhead));
    if (!heap)
        return nullptr;
    auto* lowest = static_cast<char*>(heap) + sizeof(Header);
    const auto address = reinterpret_cast<std::uintptr_t>(lowest);
    char* block = lowest + (kAlignment - address % kAlignment) % kAlignment;
    const Header header = {heap, bytes};
    std::memcpy(block - sizeof header, &header, sizeof header);
    return block;
}

// --- blocks that are kept ---------------------------------------------------------------------------------

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kKeeps = false; // a block that is kept hides from the sanitizer
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool kKeeps = false;
#else
constexpr bool kKeeps = true;
#endif
#else
constexpr bool kKeeps = true;
#endif

/// Smaller blocks are reused by every heap.
constexpr std::int64_t kLargeBlock = 256 * 1024;

/// In all. In 32-bit processes addresses are scarce.
constexpr std::int64_t kMostKept = (sizeof(void*) == 4 ? 48 : 256) * std::int64_t{1024} * 1024;

/// Held for a few steps at a time. A std::mutex would want a constructor to run on some systems, and nothing of ours
/// runs when a host loads the library.
class BriefLock {
public:
    void lock()
    {
        while (m_held.test_and_set(std::memory_order_acquire))
            std::this_thread::yield();
    }
    void unlock() { m_held.clear(std::memory_order_release); }

private:
    std::atomic_flag m_held;
};

/// Large blocks between two uses. Heaps hand them back to the system, which clears every page that is touched
/// anew: for a picture that costs more than most of what is done with it.
class Shelf {
public:
    /// A block of that many bytes and not more than twice as many, or null.
    void* Take(std::int64_t bytes)
    {
        const std::lock_guard lock(m_mutex);
        void** best = nullptr;
        for (void*& place : m_blocks)
            if (place && HeaderOf(place).capacity >= bytes && HeaderOf(place).capacity / 2 <= bytes
                && (!best || HeaderOf(place).capacity < HeaderOf(*best).capacity))
                best = &place;
        if (!best)
            return nullptr;
        m_bytes -= HeaderOf(*best).capacity;
        void* const block = *best;
        *best = nullptr;
        return block;
    }

    /// False when the block is not wanted.
    bool Put(void* block)
    {
        const std::int64_t capacity = HeaderOf(block).capacity;
        const std::lock_guard lock(m_mutex);
        if (m_keepers == 0 || m_bytes + capacity > kMostKept)
            return false;
        for (void*& place : m_blocks)
            if (!place) {
                place = block;
                m_bytes += capacity;
                return true;
            }
        return false;
    }

    void AddKeeper()
    {
        const std::lock_guard lock(m_mutex);
        ++m_keepers;
    }

    void DropKeeper()
    {
        const std::lock_guard lock(m_mutex);
        if (--m_keepers == 0)
            Clear();
    }

    void Empty()
    {
        const std::lock_guard lock(m_mutex);
        Clear();
    }

    std::int64_t Bytes()
    {
        const std::lock_guard lock(m_mutex);
        return m_bytes;
    }

private:
    void Clear()
    {
        for (void*& place : m_blocks)
            if (place) {
                std::free(HeaderOf(place).heap);
                place = nullptr;
            }
        m_bytes = 0;
    }

    BriefLock m_mutex;
    void* m_blocks[32] = {};
    std::int64_t m_bytes = 0;
    std::int64_t m_keepers = 0;
};

constinit Shelf g_shelf;

/// Where memory would be tracked: called with each block that is handed out or about to be freed.
void OnBlock(void*) {}

void* ImageAlloc(int width, int height, int pixelBytes, int* stride)
{
    if (!stride)
        return nullptr;
    *stride = 0;
    if (width < 1 || height < 1)
        return nullptr;
    const std::int64_t rowBytes = (static_cast<std::int64_t>(width) * pixelBytes + 31) / 32 * 32;
    const std::int64_t limit = std::numeric_limits<std::int32_t>::max();
    if (rowBytes > limit || rowBytes * height > limit)
        return nullptr;
    *stride = static_cast<int>(rowBytes);
    return pxMalloc(rowBytes * height);
}

} // namespace

void* pxMalloc(std::int64_t bytes)
{
    const std::int64_t limit = std::numeric_limits<std::ptrdiff_t>::max() - kOverhead;
    if (bytes < 1 || bytes > limit)
        return nullptr;
    void* block = kKeeps && bytes >= kLargeBlock ? g_shelf.Take(bytes) : nullptr;
    if (!block)
        block = NewBlock(bytes);
    if (!block) { // what is kept may be what is missing
        g_shelf.Empty();
        block = NewBlock(bytes);
    }
    if (block)
        OnBlock(block);
    return block;
}

void pxFree(void* memory)
{
    if (!memory)
        return;
    OnBlock(memory);
    if (!kKeeps || HeaderOf(memory).capacity < kLargeBlock || !g_shelf.Put(memory))
        std::free(HeaderOf(memory).heap);
}

BlockKeeper::BlockKeeper()
{
    g_shelf.AddKeeper();
}

BlockKeeper::~BlockKeeper()
{
    g_shelf.DropKeeper();
}

std::int64_t BlockKeeper::KeptBytes()
{
    return g_shelf.Bytes();
}

void* pxImageAlloc_1(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 1, stride);
}

void* pxImageAlloc_2(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 2, stride);
}

void* pxImageAlloc_3(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 3, stride);
}

void* pxImageAlloc_4(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 4, stride);
}

void* pxImageAlloc_16(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 16, stride);
}

void pxImageFree(void* memory)
{
    pxFree(memory);
}

} // namespace kelmora

#include "image/primitives/memory.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace kelmora {
namespace {

constexpr std::uintptr_t kAlignment = 32;

// Room to move up to the boundary and to keep the heap's own pointer in the word before the block.
constexpr std::int64_t kOverhead = 32 + sizeof(void*);

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
    void* heap = std::malloc(static_cast<std::size_t>(bytes + kOverhead));
    if (!heap)
        return nullptr;
    auto* lowest = static_cast<char*>(heap) + sizeof(void*);
    const auto address = reinterpret_cast<std::uintptr_t>(lowest);
    char* block = lowest + (kAlignment - address % kAlignment) % kAlignment;
    std::memcpy(block - sizeof(void*), &heap, sizeof(void*));
    OnBlock(block);
    return block;
}

void pxFree(void* memory)
{
    if (!memory)
        return;
    OnBlock(memory);
    void* heap = nullptr;
    std::memcpy(&heap, static_cast<char*>(memory) - sizeof(void*), sizeof(void*));
    std::free(heap);
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

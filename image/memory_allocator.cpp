#include "image/memory_allocator.h"

#include <cstdlib>

#include "image/primitives/memory.h"

namespace kelmora {
namespace {

// The boundary's sizes are signed 32-bit words.
constexpr std::int64_t kLargestBlock = 0x7FFFFFFF;

void* OwnImage(int width, int height, int pixelBytes, int* stride)
{
    switch (pixelBytes) {
    case 1:
        return pxImageAlloc_1(width, height, stride);
    case 2:
        return pxImageAlloc_2(width, height, stride);
    case 3:
        return pxImageAlloc_3(width, height, stride);
    case 4:
        return pxImageAlloc_4(width, height, stride);
    case 16:
        return pxImageAlloc_16(width, height, stride);
    default:
        return nullptr;
    }
}

} // namespace

MemoryAllocator::MemoryAllocator(IUnknown* host)
{
    if (!host)
        return;
    void* provider = nullptr;
    // Both halves of the answer count: a refusing host may leave anything in the pointer.
    if (host->QueryInterface(&IMemoryProvider::id, &provider) == S_OK && provider)
        m_pProvider = static_cast<IMemoryProvider*>(provider);
}

MemoryAllocator::~MemoryAllocator()
{
    if (m_pProvider)
        m_pProvider->Release();
}

bool MemoryAllocator::Allocate(void** out, std::uint64_t bytes)
{
    if (!out || bytes == 0)
        return false;
    *out = nullptr;
    if (bytes > static_cast<std::uint64_t>(kLargestBlock))
        return false;
    if (m_pProvider)
        m_pProvider->Alloc(out, static_cast<std::uint32_t>(bytes));
    else
        *out = std::malloc(static_cast<std::size_t>(bytes));
    return *out != nullptr;
}

void MemoryAllocator::Free(void* memory)
{
    if (!memory)
        return;
    if (m_pProvider)
        m_pProvider->Free(memory);
    else
        std::free(memory);
}

bool MemoryAllocator::AllocateImage(void** out, int width, int height, int pixelBytes, int* stride)
{
    if (!out || !stride || width <= 0 || height <= 0 || pixelBytes <= 0)
        return false;
    *out = nullptr;
    *stride = 0;
    const std::int64_t rowBytes = static_cast<std::int64_t>(width) * pixelBytes;
    if (rowBytes > kLargestBlock || rowBytes * height > kLargestBlock)
        return false;
    if (!m_pProvider) {
        *out = OwnImage(width, height, pixelBytes, stride);
        return *out != nullptr;
    }
    m_pProvider->AllocImage(out, width, height, pixelBytes, stride);
    if (*out && *stride < rowBytes) {
        // Rows that overlap cannot hold a picture.
        m_pProvider->FreeImage(*out);
        *out = nullptr;
    }
    if (!*out)
        *stride = 0; // whatever a refusing provider left there
    return *out != nullptr;
}

void MemoryAllocator::FreeImage(void* memory)
{
    if (!memory)
        return;
    if (m_pProvider)
        m_pProvider->FreeImage(memory);
    else
        pxImageFree(memory);
}

} // namespace kelmora

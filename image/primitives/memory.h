#pragma once

#include <cstdint>

namespace kelmora {

// Memory for pixels. Blocks start on 32-byte boundaries.

/// A block of `bytes` bytes, not cleared; null when `bytes` is below 1 or there is no memory.
void* pxMalloc(std::int64_t bytes);

/// Frees a block of pxMalloc; null is ignored.
void pxFree(void* memory);

/// While there is one of these, large blocks that are freed are kept for later requests of about their size; the
/// last one to go frees them all. Objects that a host holds from frame to frame have one, so that frames do not pay
/// for fresh memory and nothing is held once the host has let go. [any thread]
class BlockKeeper {
public:
    BlockKeeper();
    BlockKeeper(const BlockKeeper&) = delete;
    BlockKeeper& operator=(const BlockKeeper&) = delete;
    ~BlockKeeper();

    /// Bytes in blocks that are kept now: 256 MB at most, 48 in a 32-bit process. 0 in builds whose sanitizers a
    /// kept block would hide from.
    static std::int64_t KeptBytes();
};

// Memory for a picture of `width` by `height` pixels of 1, 2, 3, 4 or 16 bytes, not cleared. `*stride` is
// the width in bytes rounded up to a multiple of 32. Null when `stride` is null, when there is no memory,
// and, with a stride of 0, when a size is below 1 or the picture is 2 GiB or more.

void* pxImageAlloc_1(int width, int height, int* stride);
void* pxImageAlloc_2(int width, int height, int* stride);
void* pxImageAlloc_3(int width, int height, int* stride);
void* pxImageAlloc_4(int width, int height, int* stride);
void* pxImageAlloc_16(int width, int height, int* stride);

/// Frees a picture; null is ignored.
void pxImageFree(void* memory);

} // namespace kelmora

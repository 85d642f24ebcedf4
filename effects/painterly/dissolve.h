#pragma once

#include "image/frame_buffer.h"
#include "image/memory_allocator.h"
#include "image/picture_check.h"

namespace kelmora {

/// The dissolve of two pictures as a new picture of `size` and of the first one's format: `fade` is the share
/// of the second, 0 to 1. Where a picture is missing, smaller or of another format it is transparent black.
/// False when there is no memory.
bool Dissolve(const FrameBuffer& first, const FrameBuffer& second, FrameBuffer& mix, Size size, double fade,
              MemoryAllocator& allocator);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/frame_buffer.h"
#include "image/memory_allocator.h"
#include "image/picture_check.h"

namespace kelmora {

/// The dissolve of two pictures as a new picture of `size` and of the first one's format: `fade` is the share
/// of the second, 0 to 1. Where either picture is smaller it is transparent black, and where the second one is
/// missing or of another format all over; save that at 0 the second one plays no part, and at 1 the size of the first
/// one plays none. False when there is no memory.
bool Dissolve(const FrameBuffer& first, const FrameBuffer& second, FrameBuffer& mix, Size size, double fade,
              MemoryAllocator& allocator);

/// Row `y` of the same dissolve, `width` pixels of the first picture's format to `to`: for those who need no row
/// twice, or would rather make it again than keep it.
void DissolveRow(const FrameBuffer& first, const FrameBuffer& second, double fade, int y, int width,
                 std::uint8_t* to);

} // namespace kelmora

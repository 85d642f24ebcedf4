#pragma once

#include "effects/fixing/pixelator_plan.h"
#include "image/frame_buffer.h"
#include "image/memory_allocator.h"

namespace kelmora::pixelator {

/// Writes the average colours of `src`'s blocks over those blocks in `dst`, another picture of the same format and
/// at least the same size. Blocks stand in a grid from the top left on; those that do not meet `region` and all
/// alpha values stay as they are in `dst`.
///
/// amount     share of the height that gives the blocks' size, see MakeBlockSize
///
/// At the right a block's average is that of the pixels it has. Averages are cut to at most 255 or 1.0. False, and
/// nothing written, for other formats and pictures, and when there is no working space (a few rows).
bool Pixelate(const FrameBuffer& src, FrameBuffer& dst, float amount, bool halfHeight, const Ellipse& region,
              MemoryAllocator& allocator);

} // namespace kelmora::pixelator

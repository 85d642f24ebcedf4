#pragma once

#include "effects/fixing/pixelator_plan.h"
#include "image/frame_buffer.h"
#include "image/memory_allocator.h"

namespace kelmora::pixelator {

/// The outline of an ellipse, full in a plane of bytes (PF_Mask8) or floats (PF_Mask32F); other pictures are left
/// alone. What lies outside of the plane is left out. The radii are at least 0 and at most twice the plane's sides.
void DrawEllipse(FrameBuffer& mask, const Ellipse& ellipse);

/// Fills the area of equal value around the seed in such a plane with `value`, 0 to 255 (floats: in 255ths). Nothing
/// is filled when the plane has no pixels, when the seed lies outside, and when there is no working space.
void FloodMask(FrameBuffer& mask, int seedX, int seedY, int value, MemoryAllocator& allocator);

} // namespace kelmora::pixelator

#pragma once

#include "image/frame_buffer.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {

/// A view on a test picture.
inline FrameBuffer ViewOf(const GuardedPicture& picture)
{
    FrameBuffer view;
    const VideoFrame frame = picture.Frame();
    view.AttachFrame(&frame);
    return view;
}

/// The formats that operations serve with kernels and copies.
inline constexpr std::uint32_t kServedFormats[] = {PF_BGRA8,   PF_ARGB8, PF_BGRA32F,
                                                   PF_ARGB32F, PF_Mask8, PF_Mask32F};

} // namespace kelmora

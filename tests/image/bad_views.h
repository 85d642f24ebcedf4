#pragma once

#include "image/frame_buffer.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {

inline constexpr int kBadViews = 5;

/// What no operation takes for a picture: no pixels, no width, no height, rows that overlap, nothing at all.
inline FrameBuffer BadView(const GuardedPicture& picture, int kind)
{
    const int w = picture.Width(), h = picture.Height(), s = picture.Stride(), b = picture.PixelBytes();
    FrameBuffer bad;
    switch (kind) {
    case 0:
        bad.Attach(nullptr, w, h, s, b, picture.Format(), false);
        break;
    case 1:
        bad.Attach(picture.Row(0), 0, h, s, b, picture.Format(), false);
        break;
    case 2:
        bad.Attach(picture.Row(0), w, -2, s, b, picture.Format(), false);
        break;
    case 3:
        bad.Attach(picture.Row(0), w, h, w * b - 1, b, picture.Format(), false);
        break;
    default:
        break;
    }
    return bad;
}

} // namespace kelmora

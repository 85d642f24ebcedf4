#pragma once

#include "tests/reference/picture.h"

namespace kelmora::reference {

/// A mask of width by height pixels, of which the one at the anchor lies on the pixel.
struct MedianMask {
    int width = 1, height = 1, anchorX = 0, anchorY = 0;
};

/// A mask that reaches as far to all sides.
MedianMask CentredMask(int width, int height);

/// The middle one of the mask's values in order: the one at width * height / 2, counted from 0.
double MedianAt(const Picture& src, int x, int y, int c, const MedianMask& mask);

/// The medians of the region of `dst`'s size at (left, top) in `src`, of the first `channels` channels.
void Median(const Picture& src, int left, int top, Picture& dst, const MedianMask& mask, int channels = 4);

} // namespace kelmora::reference

#pragma once

#include "tests/reference/picture.h"

namespace kelmora::reference {

/// The rectangle of `w` by `h` pixels at (x, y) to (dstX, dstY), cut to what fits in both.
void CopyRect(const Picture& src, int x, int y, int w, int h, Picture& dst, int dstX, int dstY);

/// One channel to one channel over the common size. A plane's own number is ignored.
void CopyChannel(const Picture& src, Picture& dst, int srcChannel, int dstChannel);

/// New channel i = old channel order[i].
Picture SwappedChannels(const Picture& src, const int (&order)[4]);

/// Alpha-first to alpha-last and back: channel i gets channel 3 - i.
Picture ReversedChannels(const Picture& src);

/// The whole of `src` at (left, top) in a new picture, its edge pixels extended to every side.
Picture Padded(const Picture& src, int width, int height, int top, int left);

} // namespace kelmora::reference

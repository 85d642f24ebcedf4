#pragma once

#include "tests/reference/picture.h"

namespace kelmora::reference {

/// With x = 17 * (the pixel) - (the sum of its 3 by 3 neighbourhood): x / 8 to nearest, with ties to even,
/// saturated. The neighbours must lie in the picture.
int SharpenAt(const Picture& src, int x, int y, int c);

/// The first three channels of the region of `dst`'s size at (left, top) in `src`.
void Sharpen(const Picture& src, int left, int top, Picture& dst);

/// ((sum of 3 by 3) + 5) * 455 >> 12, or ((sum of 5 by 5) + 13) * 10485 >> 18. The neighbours must lie in the
/// picture.
/// size   3 or 5
int BoxAverageAt(const Picture& src, int x, int y, int c, int size);

} // namespace kelmora::reference

#pragma once

#include <cstdint>

#include "tests/reference/picture.h"

namespace kelmora::reference {

// Fills, conversions and blends of whole pictures, at the top left over the smallest width and height. False:
// the format is not served and nothing was written. Floats are computed in double and rounded once, where a
// line does not say otherwise.

/// A byte, 0 to 255, as a float picture holds it: times the float nearest to 1/255, in single precision.
double FloatOfLevel(int level);

/// Clamped to 0..1, times 255, plus 0.5, toward zero; not-a-number gives 0.
int LevelOfFloat(double value);

/// The product of two bytes as a byte: (p + (p >> 8) + 1) >> 8.
int ScaledProduct(int a, int b);

/// `src` in the format of `dst`.
bool Convert(const Picture& src, Picture& dst);

/// `a` over `b`. What is neither float nor ARGB8 counts as BGRA8.
void AlphaOver(const Picture& a, const Picture& b, Picture& out, bool premultiplied);

/// out = a * wa + b * wb; see ImageOps. Not-a-number in the pictures stays unless the results are cut to 1.
bool AddWeighted(const Picture& a, const Picture& b, Picture& out, float wa, float wb);

/// b = a * wa + b * wb, weights 0 to 255, clamped. `a` keeps its values here, whatever the library does.
bool Mix(const Picture& a, Picture& b, int wa, int wb);

/// Colours times alpha. Only BGRA8 gets the alpha of `src`.
bool Premultiply(const Picture& src, Picture& dst);

/// `colour` is 0xAARRGGBB; formats with their own pixel size.
bool Fill(Picture& picture, std::uint32_t colour);

/// `value` is 0 to 255.
bool SetChannel(Picture& picture, int channel, int value);

/// Luma times `colour`, 0x00BBGGRR; alpha gets luma / 255.
bool Tint(const Picture& src, Picture& dst, std::uint32_t colour);

} // namespace kelmora::reference

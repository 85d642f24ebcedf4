#pragma once

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// Rows of pixels to hue, saturation and value and back, for one instruction set. Rows may start at any address; `dst`
/// may be `src`.
///
/// Colours of bytes are as pxRGBToHSV_8u_A3 and its inverse say: the fourth byte of a pixel stays, and that of the last
/// pixel is neither read nor written.
///
/// All others are computed in double, each result rounded to a float once, as PixelRGBToHSV and PixelHSVToRGB say, with
/// H, S, V, A in memory whatever the picture's order. Bytes take part as levels, byte * 0.003921569, and come back as
/// level * 255 toward zero.
struct HsvKernels {
    using Row = void (*)(const void* src, void* dst, int pixels);

    Row coloursToHsv, coloursToRgb; ///< blue, green, red of four bytes
    Row argb8ToHsv, argb8ToRgb;
    Row bgra32fToHsv, bgra32fToRgb;
    Row argb32fToHsv, argb32fToRgb;
};

const HsvKernels& HsvKernelsFor(CpuVariant variant);

} // namespace kelmora

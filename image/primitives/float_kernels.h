#pragma once

#include "image/primitives/cpu_variant.h"
#include "image/primitives/row_kernels.h"

namespace kelmora {

/// Colours become luma times a colour, alpha luma times a constant: in double, each result rounded once. Luma is
/// 0.298 * red + 0.586 * green + 0.113 * blue from left to right, at most 1. `dst` may be `src`.
struct FloatTintRow {
    const void* src;
    void* dst;
    int pixels;
    double red, green, blue, alpha; ///< what luma is multiplied with
};

/// Rows of four-channel pixels of floats, for one instruction set. Rows may start at any address.
struct FloatKernels {
    /// dst = src + dst, value by value.
    void (*add)(const void* src, void* dst, int values);
    /// dst = (src + dst) * 0.5, each step rounded.
    void (*mean)(const void* src, void* dst, int values);
    /// Into 0 to 1; not-a-number gives 0.
    void (*clamp)(void* values, int count);
    /// The last channel becomes the first, and so on. `dst` may be `src`.
    void (*reverse)(const void* src, void* dst, int pixels);
    /// One value per pixel: that at `src` and every fourth one behind it. What lies behind the last one is not read.
    void (*extractChannel)(const void* src, void* dst, int pixels);
    /// See ImageOps::AlphaOver: in double, each result rounded once.
    void (*overBgra)(const OverRow&);
    void (*overBgraPremultiplied)(const OverRow&);
    void (*overArgb)(const OverRow&);
    void (*overArgbPremultiplied)(const OverRow&);
    void (*tintBgra)(const FloatTintRow&);
    void (*tintArgb)(const FloatTintRow&);
};

const FloatKernels& FloatKernelsFor(CpuVariant variant);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

// Rows of plain byte operations. Rows may start at any address.

/// Bytes of a row times the constants of their places, (p + (p >> 8) + 1) >> 8 of each product, in place.
struct ScaleRow {
    std::uint8_t* values;
    int count;
    std::uint8_t constants[4]; ///< of the bytes 0, 1, 2, 3, 4 again as 0, and so on
};

/// Colours become luma times a colour, toward zero, and alpha 0. `dst` may be `src`.
struct TintRow {
    const std::uint8_t* src;
    std::uint8_t* dst;
    int pixels;
    /// Luma in 1000ths, by a pixel's bytes: no negative ones; those of the colours sum to less than 1024, that of
    /// alpha is 0.
    std::int16_t luma[4];
    /// By a pixel's bytes: what a luma in 1000ths is multiplied with. No product passes 255, and none lies nearer
    /// than 1e-9 to a whole number above 0.
    double scale[4];
};

/// The loops for one instruction set.
struct ByteKernels {
    /// Four-byte pixels: colours times alpha, which is the fourth byte and copied; see pxPremultiply_8u_A3.
    void (*premultiply)(const std::uint8_t* src, std::uint8_t* dst, int pixels);
    void (*scale)(const ScaleRow&);
    /// dst = (src + dst) / 2, ties to even.
    void (*average)(const std::uint8_t* src, std::uint8_t* dst, int count);
    void (*tintAlphaLast)(const TintRow&);
    void (*tintAlphaFirst)(const TintRow&);
    /// See pxYCbCr422ToRGB. Whole blocks of pixels from the first one on; returns how many pixels that made, an
    /// even number, of `pixels` or fewer.
    int (*yCbCr422ToRgb)(const std::uint8_t* src, std::uint8_t* dst, int pixels);
};

const ByteKernels& ByteKernelsFor(CpuVariant variant);

} // namespace kelmora

#pragma once

#include <cstddef>
#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

// Rows of plain byte operations. Rows may start at any address.

/// One channel of a row of four-byte pixels. `src` and `dst` stand at that channel of their first pixels; what lies
/// behind that of the last pixel is neither read nor written. `dst` may lie in the row of `src`.
using ChannelRow = void (*)(const std::uint8_t* src, std::uint8_t* dst, int pixels);

/// Means of the square neighbourhood, see pxBoxAverage_8u_C1. One or two values more on both sides are read, and so
/// many rows above and below. `dst` overlaps nothing that is read.
struct BoxRow {
    const std::uint8_t* src;
    std::ptrdiff_t srcStep; ///< bytes from row to row
    std::uint8_t* dst;
    int width;
};

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
    /// Four-byte pixels: the last channel becomes the first, and so on. `dst` may be `src`.
    void (*reverse)(const std::uint8_t* src, std::uint8_t* dst, int pixels);
    ChannelRow copyChannel;
    ChannelRow extractChannel; ///< `dst` gets one byte per pixel, and lies elsewhere
    /// One channel of four-byte pixels, as ChannelRow says, becomes `value`.
    void (*setChannel)(std::uint8_t value, std::uint8_t* dst, int pixels);
    void (*box3x3)(const BoxRow&);
    void (*box5x5)(const BoxRow&);
    void (*tintAlphaLast)(const TintRow&);
    void (*tintAlphaFirst)(const TintRow&);
    /// See pxYCbCr422ToRGB. Whole blocks of pixels from the first one on; returns how many pixels that made, an
    /// even number, of `pixels` or fewer.
    int (*yCbCr422ToRgb)(const std::uint8_t* src, std::uint8_t* dst, int pixels);
};

const ByteKernels& ByteKernelsFor(CpuVariant variant);

} // namespace kelmora

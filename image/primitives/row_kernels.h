#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

// Rows of arithmetic that much of a frame's time goes into. Rows may start at any address.

/// New channel r = twist[r][0] * c0 + twist[r][1] * c1 + twist[r][2] * c2 + twist[r][3] of the first three of
/// four values. `dst` may be `src`. The fourth value of the last pixel is neither read nor written.
struct TwistRow {
    const void* src;
    void* dst;
    int width; ///< pixels
    const float (*twist)[4];
};

/// Sharpens the first three of four bytes with a mask of 3 by 3, see pxSharpen3x3_8u_A3.
struct SharpenRow {
    const std::uint8_t* above; ///< three rows of the source; one pixel more on both sides is read
    const std::uint8_t* middle;
    const std::uint8_t* below;
    std::uint8_t* dst;
    int width;
};

/// dst = first * firstWeight + second * secondWeight, value by value. `dst` may be one of the others.
template <class Weight>
struct BlendRow {
    const void* first;
    const void* second;
    void* dst;
    int values;
    Weight firstWeight;
    Weight secondWeight;
    bool saturates; ///< cut results to at most 1 (floats); the byte weights sum to more than 255
};

/// dst = first * firstWeight + second * secondWeight in 255ths, each product rounded as pxMulConstScaled does and
/// their sum cut to 255; floats: weights of single precision, each step rounded. `dst` may be one of the others.
template <class Weight>
struct MixRow {
    const void* first;
    const void* second;
    void* dst;
    int values;
    Weight firstWeight; ///< of bytes 0 to 255
    Weight secondWeight;
};

/// Four-byte pixels of `first` over those of `second`, see pxAlphaComposite_8u_C4 and ImageOps::AlphaOver. `dst` may
/// be one of the others.
struct OverRow {
    const void* first;
    const void* second;
    void* dst;
    int pixels;
};

/// The loops for one instruction set.
struct RowKernels {
    void (*twistBytes)(const TwistRow&);
    void (*twistFloats)(const TwistRow&);
    void (*sharpenBytes)(const SharpenRow&);
    void (*blendBytes)(const BlendRow<int>&); ///< weights 0 to 255, sums over 255 toward zero, at most 255
    void (*blendFloats)(const BlendRow<double>&); ///< in double, rounded once
    void (*mixBytes)(const MixRow<int>&);
    void (*mixFloats)(const MixRow<float>&);
    void (*halveBytes)(const void* src, void* dst, int values); ///< to nearest, ties to even
    void (*halveFloats)(const void* src, void* dst, int values);
    void (*overBgra)(const OverRow&);
    void (*overBgraPremultiplied)(const OverRow&);
    void (*overArgb)(const OverRow&);
    void (*overArgbPremultiplied)(const OverRow&);
};

const RowKernels& RowKernelsFor(CpuVariant variant);

} // namespace kelmora

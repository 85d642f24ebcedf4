#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

// The loops of resizes with more than two taps, of bytes, four values per pixel.

/// A source row, filtered across. Every tap's pixel is there: the row was padded.
struct ResizeAcross {
    const std::uint8_t* row;     ///< 128 bytes behind the last tap may be read
    float* out;                  ///< four per pixel, in an order that `down` knows; whole blocks are written
    int count;                   ///< pixels
    const std::int32_t* first;   ///< per pixel, rising: the column of its first tap; whole blocks are read
    const std::int32_t* weights; ///< per pair of taps a row of `stride`: per pixel two weights in 16384ths
    int stride;
    int taps; ///< 4 or 6
};

/// As many rows of `across` as there are taps, added up from the first on in single precision, rounded to nearest,
/// ties to even, and cut to 0 to 255.
struct ResizeDown {
    const float* rows[6];
    float weights[6];
    int taps;
    std::uint8_t* dst;
    int count; ///< pixels
};

struct ResizeKernels {
    static constexpr int kBlock = 16; ///< pixels

    void (*across)(const ResizeAcross&);
    void (*down)(const ResizeDown&);
};

const ResizeKernels& ResizeKernelsFor(CpuVariant variant);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

// The loops of resizes with more than one tap, of bytes, four values per pixel.

/// A source row, filtered across. Every tap's pixel is there: the row was padded.
struct ResizeAcross {
    const std::uint8_t* row;     ///< 128 bytes behind the last tap may be read
    float* out;                  ///< four per pixel, in a form that `down` knows; whole blocks are written
    int count;                   ///< pixels
    const std::int32_t* first;   ///< per pixel, rising: the column of its first tap; whole blocks are read
    const std::int32_t* weights; ///< per pair of taps a row of `stride`: per pixel two weights in 16384ths
    int stride;
    int taps;                  ///< 2, 4 or 6
    const std::uint8_t* ahead; ///< likewise of the row that comes next, which is fetched into the caches
};

/// As many rows of `across` as there are taps, added up from the first on in single precision, rounded to nearest,
/// ties to even, and cut to 0 to 255. Two rows are added up exactly and go to nearest, halves up.
struct ResizeDown {
    const float* rows[6];
    float weights[6];      ///< not of two taps
    std::int16_t whole[2]; ///< of two taps, in 16384ths: 0 and more, 16384 in sum
    int taps;
    std::uint8_t* dst;
    int count; ///< pixels
};

/// A source row of floats with four channels, filtered across in double, the first tap first.
struct ResizeAcrossFloats {
    const double* row; ///< begins with the first tap of the first pixel; every tap's pixel is there
    double* out;
    int count;                 ///< pixels
    const std::int32_t* first; ///< per pixel, rising: the column of its first tap
    const double* weights;     ///< `taps` per pixel
    int taps;                  ///< 2, 4 or 6
};

/// As many of those rows as there are taps, added up from the first on in double and rounded once.
struct ResizeDownFloats {
    const double* rows[6];
    double weights[6];
    int taps;
    float* dst;  ///< at any address
    int values;  ///< a multiple of four
    bool levels; ///< results are cut to 0 to 1, what is no number to 0
};

struct ResizeKernels {
    static constexpr int kBlock = 16; ///< pixels

    void (*across)(const ResizeAcross&);
    void (*down)(const ResizeDown&);
    void (*widen)(const float* from, double* to, int values); ///< `from` at any address, multiples of four
    void (*acrossFloats)(const ResizeAcrossFloats&);
    void (*downFloats)(const ResizeDownFloats&);
};

const ResizeKernels& ResizeKernelsFor(CpuVariant variant);

} // namespace kelmora

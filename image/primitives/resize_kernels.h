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
    int count;           ///< pixels
    std::uint8_t* ahead; ///< likewise the row that is written next, which is fetched into the caches
};

/// Two source rows of floats with four channels, filtered across in double, the first tap first.
struct ResizeAcrossFloats {
    /// As `widen` leaves them, from the first tap of the first pixel on; every tap's pixel is there.
    const double* rows;
    double* out[2];            ///< a row each
    int count;                 ///< pixels
    const std::int32_t* first; ///< per pixel, rising: the column of its first tap
    const double* weights;     ///< `taps` per pixel
    int taps;                  ///< 2, 4 or 6
    const float* ahead[2];     ///< likewise the rows that come next, which are fetched into the caches
};

/// As many of those rows as there are taps, added up from the first on in double and rounded once.
struct ResizeDownFloats {
    const double* rows[6];
    double weights[6];
    int taps;
    float* dst;   ///< at any address
    int values;   ///< a multiple of four
    bool levels;  ///< results are cut to 0 to 1, what is no number to 0
    bool streams; ///< results go past the caches where they can; `endStreams` follows the last ones
};

struct ResizeKernels {
    static constexpr int kBlock = 16; ///< pixels

    void (*across)(const ResizeAcross&);
    void (*down)(const ResizeDown&);
    /// Two rows of four channels as one of doubles, pixel by pixel: four values of `one`, four of `other`.
    void (*widen)(const float* one, const float* other, double* to, int pixels);
    void (*acrossFloats)(const ResizeAcrossFloats&);
    void (*downFloats)(const ResizeDownFloats&);
    void (*endStreams)(); ///< lets other threads see what was streamed before what is stored next
};

const ResizeKernels& ResizeKernelsFor(CpuVariant variant);

} // namespace kelmora

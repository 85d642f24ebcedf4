#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

// The inner loops of the median: a window of column histograms slides along each row, so that a pixel costs
// the same at any mask size (S. Perreault and P. Hebert, "Median filtering in constant time", 2007). Here the
// counts are kept cumulative, so that a value is found by one comparison of sixteen counts instead of a scan:
// first the sixteenth of the range it lies in, then its place in that.

/// One channel of a strip of columns.
struct MedianStrip {
    const std::uint8_t* src; ///< the channel's value under the top left of the first pixel's mask
    int srcStep;
    std::uint8_t* dst; ///< the channel's value in the first pixel
    int dstStep;
    int width, height; ///< pixels of the result
    int maskWidth, maskHeight;
    void* work; ///< working space on a 64-byte boundary: the state, then width + maskWidth histograms
};

/// The loops for one instruction set. `bytes` counts columns in bytes, for masks up to kMostByteRows high and
/// kMostByteArea pixels large; `wide` takes any mask of less than 2^31 pixels.
struct MedianKernels {
    void (*bytes)(const MedianStrip& strip);
    void (*wide)(const MedianStrip& strip);

    static constexpr int kMostByteRows = 127;
    static constexpr int kMostByteArea = 32767;
    static constexpr int kState = 48 * 1024;           ///< bytes of the state
    static constexpr int kByteHistogram = 17 * 16;     ///< bytes of a column's histogram
    static constexpr int kWideHistogram = 17 * 16 * 4; ///< the same, wide
};

const MedianKernels& MedianKernelsFor(CpuVariant variant);

} // namespace kelmora

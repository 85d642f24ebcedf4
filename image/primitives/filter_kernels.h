#pragma once

#include <cstddef>
#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// How sums of taps become bytes; all cut to 0 to 255.
enum class FilterFinish {
    Saturate,
    Shift,       ///< right by `shift`, 1 to 30, to nearest, ties to even
    ScaleSingle, ///< times `reciprocal` in single precision, to nearest, ties to even
    ScaleDouble, ///< likewise in double
};

/// One row of bytes: dst[i] = finish(sum over j of weights[j] * src[i + j * tapStep]). `dst` overlaps nothing that
/// is read.
struct FilterRow {
    const std::uint8_t* src;
    std::ptrdiff_t tapStep; ///< bytes
    const std::int16_t* weights;
    int taps; ///< at least 1
    std::uint8_t* dst;
    std::ptrdiff_t count; ///< values
    FilterFinish finish;
    int shift;
    double reciprocal; ///< above 0
    bool keepsFourth;  ///< every fourth value of `dst` stays
};

/// Rows of floats, at any address: dst value i of each row is the sum over j of weights[j] * (src value i, j * tapStep
/// bytes on), in double, from 0 on in the order of j, rounded once. `dst` overlaps nothing that is read.
struct FloatFilter {
    const void* src;        ///< the first tap of the first value
    std::ptrdiff_t srcStep; ///< bytes from row to row
    std::ptrdiff_t tapStep; ///< bytes
    const float* weights;
    int taps; ///< at least 1
    void* dst;
    std::ptrdiff_t dstStep;
    std::ptrdiff_t count; ///< values in a row
    int rows;
    bool keepsFourth; ///< every fourth value of a row stays
};

/// The loops for one instruction set.
struct FilterKernels {
    /// No sum leaves -32768 to 32767 on the way, and no weight -127 to 127.
    void (*narrow)(const FilterRow&);
    /// No sum leaves -2^24 to 2^24 on the way.
    void (*wide)(const FilterRow&);
    void (*floats)(const FloatFilter&);
};

const FilterKernels& FilterKernelsFor(CpuVariant variant);

} // namespace kelmora

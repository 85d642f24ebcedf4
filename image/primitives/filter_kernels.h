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

/// The loops for one instruction set.
struct FilterKernels {
    /// No sum leaves -32768 to 32767 on the way, and no weight -127 to 127.
    void (*narrow)(const FilterRow&);
    /// No sum leaves -2^24 to 2^24 on the way.
    void (*wide)(const FilterRow&);
};

const FilterKernels& FilterKernelsFor(CpuVariant variant);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// A byte times the amount as one multiplication, in unsigned words.
struct ByteGain {
    std::uint16_t factor;
    std::uint16_t offset;
    int shift;

    constexpr int operator()(int v) const
    {
        return static_cast<int>((((static_cast<unsigned>(v) * 256 * factor) >> 16) + offset) >> shift);
    }
};

/// One row of the combination of a picture and its blur. The rows may start at any address; `result` may be
/// any of the others. Alpha is taken from `alpha`, a row of the same format.
template <class Gain>
struct UnsharpRow {
    const void* picture;
    const void* blurred;
    const void* alpha;
    void* result;
    int width;
    int alphaIndex;
    Gain gain;
};

/// The loops for one instruction set.
struct UnsharpKernels {
    void (*bytes)(const UnsharpRow<ByteGain>&);
    void (*floats)(const UnsharpRow<float>&); ///< gain: the amount
};

const UnsharpKernels& UnsharpKernelsFor(CpuVariant variant);

} // namespace kelmora

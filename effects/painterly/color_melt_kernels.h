#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// A straight line through byte values: trunc(clamp(x * gain + offset, 0, 255)) in single precision.
struct ByteLine {
    float gain = 0;
    float offset = 0;
};

/// What the rows of a melt need to know.
struct MeltLook {
    // bytes
    bool straight = false; ///< the lines give what the tables hold
    ByteLine saturationLine, valueLine;
    const std::uint8_t* saturations = nullptr; ///< what each saturation becomes
    const std::uint8_t* values = nullptr;
    int share = 0;                     ///< of the blur's luminance, in 256ths
    int mixWeight = 0, meltWeight = 0; ///< in 255ths

    // floats
    float saturationGain = 0, target = 0, amount = 0;
    float fogShare = 0;
    float mixPart = 0, meltPart = 0;
    bool capped = false; ///< results are at most 1
};

/// The melt's rows for one instruction set: mix, blur, result, pixels.
struct MeltKernels {
    using Row = void (*)(const void* mix, const void* blurred, void* result, int width, const MeltLook& look);

    Row bgra8, argb8, bgra32f, argb32f;
};

const MeltKernels& MeltKernelsFor(CpuVariant variant);

} // namespace kelmora

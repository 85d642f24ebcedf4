#pragma once

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// The edge step's rows for one instruction set: picture, blur, result, pixels, and the share of the blur's
/// luminance that dark pixels are lifted to (bytes: a whole number of 256ths, 0 to 245).
struct EdgeLiftKernels {
    using Row = void (*)(const void* picture, const void* blurred, void* result, int width, float share);

    struct Rows {
        Row bgra8, argb8, bgra32f, argb32f;
    };

    Rows keepAlpha;
    Rows allChannels;
};

const EdgeLiftKernels& EdgeLiftKernelsFor(CpuVariant variant);

} // namespace kelmora

#pragma once

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// Rows of four-channel pixels from bytes to floats and back, for one instruction set. A byte's level is byte *
/// 0.003921569 in single precision. A float goes into 0 to 1 (not-a-number to 0) and from there to the nearest byte,
/// halves up. Rows may start at any address; source and destination do not overlap.
struct ConvertKernels {
    using Row = void (*)(const void* src, void* dst, int pixels);

    Row toFloats, toFloatsReversed; ///< reversed: the four channels from last to first
    Row toBytes, toBytesReversed;
};

const ConvertKernels& ConvertKernelsFor(CpuVariant variant);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// The loops over faces' pixels for one instruction set.
struct FaceKernels {
    /// Every byte v of a row of four-byte pixels in place to v * light + 0.5, toward zero, in single precision.
    /// alphaMask: the bits of a pixel, as a little-endian word, that stay.
    void (*lightBytes)(void* row, int pixels, float light, std::uint32_t alphaMask);

    /// Four factors for the four floats of each pixel of a row, in place.
    void (*lightFloats)(void* row, int pixels, const float (&factors)[4]);

    /// (76 red + 149 green + 30 blue) / 256 toward zero of each pixel, added up in 32 bits.
    std::uint32_t (*sumLumaBgra)(const void* row, int pixels);
    std::uint32_t (*sumLumaArgb)(const void* row, int pixels);
};

const FaceKernels& FaceKernelsFor(CpuVariant variant);

} // namespace kelmora

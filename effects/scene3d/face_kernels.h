#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// The loops over faces' pixels for one instruction set.
struct FaceKernels {
    /// Every byte v of a row of four-byte pixels to v * light + 0.5, toward zero, in single precision. `to` may be
    /// `from`. alphaMask: the bits of a pixel, as a little-endian word, that stay.
    void (*lightBytes)(const void* from, void* to, int pixels, float light, std::uint32_t alphaMask);

    /// Four factors for the four floats of each pixel of a row. `to` may be `from`.
    void (*lightFloats)(const void* from, void* to, int pixels, const float (&factors)[4]);

    /// (76 red + 149 green + 30 blue) / 256 toward zero of each pixel, added up in 32 bits.
    std::uint32_t (*sumLumaBgra)(const void* row, int pixels);
    std::uint32_t (*sumLumaArgb)(const void* row, int pixels);

    static constexpr int kSums = 8; ///< side by side: each waits for its own last addition alone

    /// 0.298 red + 0.586 green + 0.113 blue, in single precision, of each pixel of kSums rows of four floats, added to a
    /// sum per row, pixel after pixel. Rows may be the same.
    using SumFloats = void (*)(const void* const (&rows)[kSums], int pixels, float (&sums)[kSums]);
    SumFloats sumFloatsBgra;
    SumFloats sumFloatsArgb;
};

const FaceKernels& FaceKernelsFor(CpuVariant variant);

} // namespace kelmora

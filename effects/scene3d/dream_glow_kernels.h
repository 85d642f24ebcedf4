#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// What the rows of the haze need to know.
struct GlowFog {
    static constexpr int kMostGain = 32767; ///< the glow of white fits a word

    int byteGain = 0;         ///< what the blur's brightness is multiplied by, in 256ths: 0 to kMostGain
    float floatGain = 0;      ///< the same for floats
    std::uint32_t colour = 0; ///< 0x00BBGGRR
};

/// What the rows of the wave need to know. At brightness L, 0 to 1 and beyond, the wave is
/// (sin(start + slope * L) * sway + 1) / 2 + L.
struct GlowShine {
    static constexpr int kSums = 3 * 255 + 1; ///< sums of three bytes

    // Bytes have a table by the sum of red, green and blue: of what the colour is multiplied by, or, where there
    // is one, of what may be added in its place in single precision.
    const double* waves = nullptr;
    const float* steps = nullptr;

    // The loops of floats take the wave from here; bytes have their table made of it.
    double amount = 0; ///< what a wave is multiplied by; above 0
    double start = 0, slope = 0, sway = 0;

    double keep = 0;                     ///< what the picture's colours are multiplied by
    double blue = 0, green = 0, red = 0; ///< the glow colour
};

/// The rows of both stages for one instruction set. Rows may start at any address.
struct DreamGlowKernels {
    /// A row of the picture and of its blur, of `width` pixels; `result` may be either.
    using Fog = void (*)(const void* picture, const void* blurred, void* result, int width,
                         const GlowFog& fog);

    /// `result` may be `picture`. The sine of floats is right to 1e-7 up to brightnesses of ten million; those
    /// beyond count as the nearest within.
    using Shine = void (*)(const void* picture, void* result, int width, const GlowShine& shine);

    struct Rows {
        Fog fog;
        Shine shine;
    };

    Rows bgra8, argb8, bgra32f, argb32f;
};

const DreamGlowKernels& DreamGlowKernelsFor(CpuVariant variant);

} // namespace kelmora

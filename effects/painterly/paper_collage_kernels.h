#pragma once

#include <cstddef>
#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// The rows of Paper Collage for one instruction set.
struct PaperKernels {
    /// Greys of `width` BGRA pixels as BGRA pixels: in single precision, truncated; alpha 0 or 1.
    void (*greys)(const std::uint8_t* pixels, std::uint8_t* grey, int width);

    /// mask = 255 where a pixel's sheet is `sheet` or a higher one, else 0.
    void (*mask)(const std::uint8_t* sheets, std::uint8_t* mask, int width, int sheet);

    /// The mean of 3 by 3 values, as pxBoxAverage_8u_C1 makes it, of three rows of `width` values. Beyond the
    /// ends of the rows lie zeros.
    void (*soften)(const std::uint8_t* above, const std::uint8_t* middle, const std::uint8_t* below,
                   std::uint8_t* soft, int width);

    /// Lays a shadow of sheet `sheet` on the pixels of lower sheets: straight composition over opaque BGRA.
    /// `shadow` is the shadow's BGRA word, `soft` its alpha.
    void (*shade)(std::uint8_t* pixels, const std::uint8_t* sheets, const std::uint8_t* soft, int width,
                  int sheet, std::uint32_t shadow);

    /// Each pixel's sheet as its colour: pixels = colours[sheets], as BGRA words.
    void (*colour)(const std::uint8_t* sheets, std::uint8_t* pixels, int width, const std::uint32_t* colours);
};

const PaperKernels& PaperKernelsFor(CpuVariant variant);

} // namespace kelmora

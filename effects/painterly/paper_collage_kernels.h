#pragma once

#include <cstddef>
#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// The colours of the pixels on a sheet, summed up.
struct PaperSums {
    std::int64_t count = 0, b = 0, g = 0, r = 0;
};

/// One row of a sheet's shadow.
struct PaperShade {
    std::uint8_t* pixels;       ///< opaque BGRA
    const std::uint8_t* sheets; ///< the sheet of each pixel
    const std::uint8_t* above;  ///< three rows of the shadow's mask; one value more on both sides is read
    const std::uint8_t* middle;
    const std::uint8_t* below;
    int width;
    int sheet;            ///< whose shadow it is
    std::uint32_t shadow; ///< its BGRA word
};

/// The rows of Paper Collage for one instruction set.
struct PaperKernels {
    static constexpr int kMostSheets = 8;

    /// Greys of `width` BGRA pixels as BGRA pixels: in single precision, truncated; alpha 0 or 1.
    void (*greys)(const std::uint8_t* pixels, std::uint8_t* grey, int width);

    /// sheets = how many of the `count` limits, which rise, lie below byte 2 of the BGRA pixels.
    void (*cut)(const std::uint8_t* grey, std::uint8_t* sheets, int width, const std::uint8_t* limits,
                int count);

    /// Adds the colours of `width` BGRA pixels to the sums of their sheets.
    void (*add)(const std::uint8_t* pixels, const std::uint8_t* sheets, int width,
                PaperSums (&sums)[kMostSheets]);

    /// mask = 255 where a pixel's sheet is `sheet` or a higher one, else 0.
    void (*mask)(const std::uint8_t* sheets, std::uint8_t* mask, int width, int sheet);

    /// The mean of 3 by 3 values, as pxBoxAverage_8u_C1 makes it, of three rows of `width` values, and one more on
    /// both sides.
    void (*soften)(const std::uint8_t* above, const std::uint8_t* middle, const std::uint8_t* below,
                   std::uint8_t* soft, int width);

    /// Lays a shadow, its mask softened, on the pixels of lower sheets: straight composition.
    void (*shade)(const PaperShade& row);

    /// Each pixel's sheet as its colour: pixels = colours[sheets], as BGRA words.
    void (*colour)(const std::uint8_t* sheets, std::uint8_t* pixels, int width,
                   const std::uint32_t (&colours)[kMostSheets]);
};

const PaperKernels& PaperKernelsFor(CpuVariant variant);

} // namespace kelmora

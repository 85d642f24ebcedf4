#pragma once

#include <cstddef>
#include <cstdint>

#include "image/primitives/cpu_variant.h"
#include "image/primitives/warp_map.h"

namespace kelmora {

// The loops of the warps with linear interpolation, four values per pixel. See warp.h for their arithmetic.

/// A picture of which the pixels within the bounds may be read. For rows through a rotating or a perspective map
/// it has two rows and two columns at least.
struct WarpImage {
    const void* pixels;
    std::ptrdiff_t step;
    WarpBounds bounds;
};

/// Pixels of a row whose positions X[0] * x + X[1], Y[0] * x + Y[1] all lie inside.
struct AffineRow {
    WarpImage src;
    void* dst; ///< pixel span.begin
    WarpSpan span;
    double x[2], y[2];
};

/// Pixels of a row, of which those stay whose position lies outside. Slope and start of the forms u, v and w.
struct PerspectiveRow {
    WarpImage src;
    void* dst; ///< pixel span.begin
    WarpSpan span;
    double u[2], v[2], w[2];
};

/// A source row, interpolated across: what comes of it is the row of a kind of picture that only the `down`
/// loops know. Of bytes in an order of their own, so it begins on a vector and ends on one.
struct AcrossRow {
    const void* row;          ///< its first pixel
    void* out;                ///< count pixels, rounded up to WarpKernels::kBlock
    int count;                ///< pixels
    int lastColumn;           ///< of the source that may be read
    const std::int32_t* left; ///< per pixel: the column to its left; null for `firstLeft` and on, one by one
    int firstLeft;
    const void* weights; ///< per pixel, of the column to the right: four equal bytes in 256ths; a float
    int shiftWeight;     ///< in 256ths, with `left` null
    float shiftWeightFloat;
};

/// Two rows of `AcrossRow`, interpolated.
struct DownRow {
    const void* upper;
    const void* lower;
    void* dst;
    int count;
    int weight; ///< of the lower row, in 256ths, 0 to 256
    float weightFloat;
    const void* halveWith; ///< null, or a row whose mean with the result is wanted, ties to even
};

/// Two rows of bytes, interpolated in one direction.
struct LerpRow {
    const std::uint8_t* first;
    const std::uint8_t* second;
    std::uint8_t* dst;
    int bytes;
    int weight;                    ///< of the second, in 256ths
    const std::uint8_t* halveWith; ///< as above
};

struct WarpKernels {
    static constexpr int kBlock = 16;        ///< pixels
    static constexpr int kAcrossBytes = 8;   ///< of a pixel of `acrossBytes`
    static constexpr int kAcrossFloats = 16; ///< of a pixel of `acrossFloats`

    void (*affineBytes)(const AffineRow&);
    void (*affineFloats)(const AffineRow&);
    void (*perspectiveBytes)(const PerspectiveRow&);
    void (*perspectiveFloats)(const PerspectiveRow&);
    void (*acrossBytes)(const AcrossRow&);
    void (*acrossFloats)(const AcrossRow&);
    void (*downBytes)(const DownRow&);
    void (*downFloats)(const DownRow&);
    void (*lerpBytes)(const LerpRow&);
};

const WarpKernels& WarpKernelsFor(CpuVariant variant);

} // namespace kelmora

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
    std::ptrdiff_t ahead = 0; ///< bytes from a pixel to one that will soon be needed: a hint
    const float* light =
        nullptr; ///< of floats in perspective: what a pixel's four values are multiplied by; null: 1
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

/// One of a quadrangle's edges, clockwise or not, all four alike.
struct WarpEdge {
    double x, y;                            ///< where it begins
    double wayX, wayY, square;              ///< to where it ends, and that length's square
    double outwardX, outwardY, outwardFrom; ///< outwardX * x + outwardY * y + outwardFrom: how far outside
};

/// Pixels outside the quadrangle of the bounds' corners. Those nearer to it than 1 are mixed with the colour of its
/// nearest point.
struct WarpRing {
    static constexpr int kMost = 128; ///< pixels, whole blocks

    WarpImage src;
    void* dst; ///< the pixel (0, 0)
    std::ptrdiff_t dstStep;
    const WarpEdge* edges;  ///< four
    const double (*map)[3]; ///< PerspectiveMap::rows
    int count;
    double x[kMost], y[kMost]; ///< whole numbers, also behind `count` to the end of its block
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
    std::ptrdiff_t ahead; ///< as WarpImage::ahead
};

/// Two rows of `AcrossRow`, interpolated.
struct DownRow {
    const void* upper;
    const void* lower;
    void* dst;
    int count;
    int weight; ///< of the lower row, in 256ths, 0 to 256
    float weightFloat;
    bool isReadLater; ///< not soon: long rows of floats may go past the caches
};

/// Two rows of bytes, interpolated in one direction.
struct LerpRow {
    const std::uint8_t* first;
    const std::uint8_t* second;
    std::uint8_t* dst;
    int bytes;
    int weight; ///< of the second, in 256ths
};

struct WarpKernels {
    static constexpr int kBlock = 16;        ///< pixels
    static constexpr int kAcrossBytes = 8;   ///< of a pixel of `acrossBytes`
    static constexpr int kAcrossFloats = 16; ///< of a pixel of `acrossFloats`

    void (*affineBytes)(const AffineRow&);
    void (*affineFloats)(const AffineRow&);
    /// Both give the pixels from the first inside to the last one; none: an empty span.
    WarpSpan (*perspectiveBytes)(const PerspectiveRow&);
    WarpSpan (*perspectiveFloats)(const PerspectiveRow&);
    void (*ringBytes)(const WarpRing&);
    void (*ringFloats)(const WarpRing&);
    void (*acrossBytes)(const AcrossRow&);
    void (*acrossFloats)(const AcrossRow&);
    void (*downBytes)(const DownRow&);
    void (*downFloats)(const DownRow&);
    void (*lerpBytes)(const LerpRow&);
};

const WarpKernels& WarpKernelsFor(CpuVariant variant);

} // namespace kelmora

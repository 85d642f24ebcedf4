#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

// The inner loops of the tent filter: running sums, so that a pixel costs the same at any tap count.
//
// A tent is a box convolved with a box, so the second difference of its weights is zero but for four places.
// With `slope` the first difference of the sums and u a window's first pixel:
//
//   slope += x[u - 2] - x[u - 2 + rise] - x[u - 2 + fall] + x[u - 1 + taps]      sum += slope
//
// where rise is the length of the shorter box and fall = taps - rise + 1. (Running sums for tents are known
// as "stack blur", M. Klingemann, 2004.)
//
// A filter works on blocks of a few rows. The column pass leaves a block turned: per picture column, the
// pixels of all rows side by side. So the row pass runs along the columns with all lanes busy.

/// Where the four taps lie, from the pixel that the sum is for.
struct TentTaps {
    int first;
    int rise;
    int fall;
    int last;
};

/// The taps of a tent of `taps` taps that reaches `taps` / 2 pixels onward.
constexpr TentTaps TapsOf(int taps)
{
    const int reach = taps / 2;
    const int before = reach - taps - 1; // two before the window's first pixel
    const int rise = (taps + 1) / 2;     // an even tent has a flat top of two
    return {before, before + rise, before + taps - rise + 1, reach};
}

/// How a sum of bytes becomes a byte: round(sum * spread * factor + sum * rest + bias), every product and every
/// addition rounded, in single or in double precision.
struct TentScale {
    bool single = false;
    int spread = 1; ///< single precision only: a whole number that sums are multiplied by first
    double factor = 0;
    double rest = 0; ///< single precision only, and then alone beside the factor
    double bias = 0;
    std::int32_t patchedSum = 0; ///< single precision only: the one sum that comes out wrong, or 0
    int patch = 0;               ///< from it to the sum beside it that comes out as it should: 1 or -1
};

/// One block of a column pass: each step moves the sums one row on.
struct TentColumns {
    /// Four rows per step: first, rise, fall, last. Unless the tent is peaked a step's rise is the fall of the step
    /// before.
    const std::uint8_t* const* taps;
    int steps;                ///< rows to move on; the kernel's `rows` when `turned` is given
    int width;                ///< pixels
    const std::uint8_t* flat; ///< a row: begin with the sums of a picture that holds nothing else; or null
    std::int64_t weights;     ///< the sum of the tent's weights, used with `flat`
    void* slope;              ///< state, kept from block to block; see TentKernels
    void* sum;                ///< likewise
    std::uint8_t* turned;     ///< result, `width` columns and up to kTentSpare more; null: move on only
    TentScale scale;
    bool wide;   ///< bytes: slopes need 32 bits
    bool peaked; ///< the tent has one highest weight: rise and fall are one row
};

/// One block of a row pass.
struct TentRows {
    const std::uint8_t* turned; ///< column 0; the columns that the taps reach must be there
    TentTaps taps;
    int lead;             ///< steps to make before column 0; before them the sums are those of a flat row
    int width;            ///< pixels
    std::uint8_t* rows;   ///< result: `rows` rows of `width` pixels and up to kTentSpare more
    int rowStep;          ///< bytes from result row to result row
    std::int64_t weights; ///< the sum of the tent's weights
    TentScale scale;
    bool wide;
    bool peaked;
};

/// The most taps for which a slope of bytes fits 16 bits.
inline constexpr int kTentNarrowTaps = 256;

/// The most taps for which a sum of bytes fits 32 bits.
inline constexpr int kTentMostTaps = 5800;

/// Magnitudes beyond this make running sums in double coarser than a float beside them.
inline constexpr float kTentLargestSummed = 1024.0f;

/// Pixels that a kernel may write behind the last column.
inline constexpr int kTentSpare = 16;

/// The loops for one instruction set. State per picture value, `width` + kTentSpare pixels long:
/// bytes: slope int16 or, when wide, int32, sum int32. Floats: slope and sum double.
struct TentKernels {
    int byteRows;  ///< rows of a block of four-byte pixels; a turned column is 4 * byteRows bytes
    int floatRows; ///< rows of a block of float pixels; a turned column is 16 * floatRows bytes
    void (*byteColumns)(const TentColumns&);
    void (*byteRowPass)(const TentRows&);
    /// False: a row that came in holds more than kTentLargestSummed or no number, and neither state nor result is of
    /// use. The rows that come in are `flat` and the last ones of each step.
    bool (*floatColumns)(const TentColumns&);
    void (*floatRowPass)(const TentRows&);
};

const TentKernels& TentKernelsFor(CpuVariant variant);

} // namespace kelmora

#pragma once

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// Pixels of a row of floats, four values each, and their mask. Rows may start at any address.
struct CropMaskRow {
    const float* kept; ///< the kept part, extended: pixels, or the one that is repeated
    bool repeats;
    const float* own;  ///< the source's pixels
    const float* mask; ///< a value per pixel
    float* result;     ///< none of the others
    int pixels;
    int alphaIndex;
};

/// Pixels that the mask shows in full. Composites add a zero to what they make, of which a negative zero comes out
/// positive: to the colours when `addsToColours`, else to alpha.
struct CropFullRow {
    const float* own;
    float* result; ///< not `own`
    int pixels;
    int alphaIndex;
    bool addsToColours;
};

/// The loops of Crop Borders in floats for one instruction set.
struct CropBordersKernels {
    /// The kept part weighs as much as the mask says, in double; `result`, the ground, the rest. Alpha is the source's.
    void (*overlay)(const CropMaskRow&);
    /// The kept part; the source's alpha times the mask, in double.
    void (*fade)(const CropMaskRow&);
    void (*copy)(const CropFullRow&);
};

const CropBordersKernels& CropBordersKernelsFor(CpuVariant variant);

} // namespace kelmora

#pragma once

#include "image/primitives/cpu_variant.h"
#include "image/primitives/median_kernels.h"

namespace kelmora {

// The median's loops for neighbouring columns whose medians lie close together. Of such columns few counts matter:
// how many of a column's values are at most t, for each of the thresholds t in a band around the medians. They fit
// a vector or two. A window of columns then slides by one subtraction, and its median is told by how many of its counts
// the middle rank has passed.

/// Columns whose medians in the row above lay from `least` to `most`.
struct MedianBand {
    MedianStrip strip; ///< with masks of at most MedianBandKernels::kMostMask pixels a side
    int least, most;
};

/// The loops for one instruction set, with the same working space as MedianKernels; null where they would not pay,
/// for a vector must hold the whole narrow band. They give how many rows were found, and end at a row, written or
/// not, whose medians lie further apart than their band, or where the medians move up and down so fast that to
/// follow them would cost more than it saves.
struct MedianBandKernels {
    int (*narrow)(const MedianBand& band);
    int (*wide)(const MedianBand& band);

    static constexpr int kMostMask = 127; ///< a column's counts and their differences are signed bytes

    // Thresholds in a band. The medians of a row may differ by two less.
    static constexpr int kNarrow = 64, kWide = 128;
};

const MedianBandKernels& MedianBandKernelsFor(CpuVariant variant);

} // namespace kelmora

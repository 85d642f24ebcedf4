#pragma once

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// Pixels of four values that each become the mean, ties to even, of themselves and of what a shift lays over them:
/// of four pixels as neighbours, two of a row and two of the next one. The arithmetic is that of warp.h.
///
/// A row that is read may be the one that is written, if what is read of it begins at `pixels` or behind and the row
/// is gone through forward, or if it begins before and the row is gone through backward.
struct SmearRow {
    void* pixels;                 ///< the first of `count`
    const void* upper;            ///< its upper left neighbour; one pixel more than `count` is read
    const void* lower;            ///< likewise, in the row below
    int count;                    ///< 0 or more
    bool backward;                ///< from the last pixel to the first
    int right, below;             ///< of bytes: weights of the neighbours there, in 256ths, 0 to 255
    float rightFloat, belowFloat; ///< of floats, 0 to 1
};

struct SmearKernels {
    void (*meanBytes)(const SmearRow&); ///< `lower` is not looked at where `below` is 0
    void (*meanFloats)(const SmearRow&);

    /// Without a look at `lower`, whose row has no weight and holds ordinary floats alone.
    void (*meanLevelFloats)(const SmearRow&);

    /// Whether all of the values lie between 0, the positive one, and 2^100. Only a positive 0 comes of them times 0.
    bool (*areOrdinary)(const void* floats, int values);
};

const SmearKernels& SmearKernelsFor(CpuVariant variant);

} // namespace kelmora

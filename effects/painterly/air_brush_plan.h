#pragma once

#include <algorithm>

#include "effects/common/precision.h"

namespace kelmora::air_brush {

/// The knobs as the host gave them, normalised.
struct Knobs {
    float spray = 0;
    float edge = 0;
};

/// Taps of the tent, in both directions: about 1.5 % of the picture's height at no spray, 16 % at full.
/// `pictureHeight` is the first picture's own, whatever part of it is worked on.
constexpr int TapsFor(float spray, int pictureHeight)
{
    const int taps = Truncate((static_cast<double>(spray) + Single(0.1)) * pictureHeight * Single(0.15));
    return std::max(taps, 2);
}

} // namespace kelmora::air_brush

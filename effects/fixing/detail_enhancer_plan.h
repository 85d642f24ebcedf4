#pragma once

#include <algorithm>

#include "effects/common/precision.h"

namespace kelmora::detail_enhancer {

/// The knobs as the host gave them, normalised.
struct Knobs {
    float strength = 0;
    float definition = 0;
};

/// The same in the units of the pipeline.
struct Plan {
    float amount; ///< how much of the difference to the blur is added: 0 to 2
    float radius; ///< 0.01 to 1.01; the blur grows with it
};

constexpr Plan MakePlan(const Knobs& knobs)
{
    return {knobs.strength + knobs.strength, knobs.definition + 0.01f};
}

/// Vertical size of the blur, even, 2 or more. `height` is the height worked on. The blur itself cuts it.
constexpr int BlurSize(float radius, int height)
{
    constexpr int most = 32766; // keeps sums with it far from overflow
    const int size = Truncate((static_cast<double>(radius) * 0.5 + Single(0.1)) * height * Single(0.3));
    const int even = std::min(size, most) + (std::min(size, most) & 1);
    return std::max(even, 2);
}

/// Horizontal size: a field's line stands for two of the frame's.
constexpr int BlurWidth(int blurSize, bool halfHeight)
{
    return halfHeight ? 2 * blurSize : blurSize;
}

} // namespace kelmora::detail_enhancer

#pragma once

#include <algorithm>

#include "effects/common/precision.h"
#include "effects/common/taps.h"
#include "effects/painterly/edge_lift.h"

namespace kelmora::color_melt {

/// The knobs as the host gave them, normalised.
struct Knobs {
    float soften = 0;
    float fog = 0;
    float brightness = 0;
    float color = 0;
    float tempo = 0;
    float crossFade = 0;
};

/// Taps of the tent for a picture of `height` rows, 1 or more: up to 22 % of the height. `amount` is 0 to 1.
constexpr int TapsFor(float soften, int height, float amount)
{
    const double reach = Single((static_cast<double>(soften) + Single(0.1)) * height * Single(0.2)
                                * static_cast<double>(amount));
    return std::max(std::min(Truncate(reach), kMostTaps) + 1, 1);
}

/// What saturation is multiplied by: 1 to 9.
constexpr double SaturationGain(float color, float amount)
{
    const double c = static_cast<double>(color), a = static_cast<double>(amount);
    return Single(a * 8.0 * a * Single(c * c * c)) + 1.0;
}

/// The value that all pixels are drawn to, in bytes: 55 to 255.
constexpr double TargetValue(float brightness)
{
    const double dark = 1.0 - static_cast<double>(brightness);
    return Single(1.0 - dark * dark) * 200.0 + 55.0;
}

/// What the edge step of byte pictures takes for its edge.
constexpr float FogLevel(float fog)
{
    return 1.0f - fog;
}

/// The share of the blur that the edge step of float pictures lifts to.
constexpr float FogShare(float fog)
{
    return FloatLiftShare(1.0 - static_cast<double>(fog));
}

} // namespace kelmora::color_melt

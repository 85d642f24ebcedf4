#pragma once

#include <algorithm>

#include "image/exact_math.h"

namespace kelmora {

/// Where a transition stands.
struct Crossfade {
    double fade;  ///< share of the second picture in the dissolve of the two, 0 to 1
    float amount; ///< how far the effect is in: 0 at both ends, 1 in the middle
};

/// What a host's progress counts as: 0 to 1, not-a-number as 0.
inline double ClampProgress(double progress)
{
    return progress > 0.0 ? std::min(progress, 1.0) : 0.0;
}

/// progress     0 to 1
/// crossFade    length of the dissolve around the middle: 0 cuts, 1 takes the whole transition
/// tempo        0 lets the effect come and go evenly, more lets it come sooner and go later
inline Crossfade CrossfadeCurve(double progress, float crossFade, float tempo)
{
    const double length = static_cast<double>(crossFade);
    const double start = 0.5 - length * 0.5;
    Crossfade curve = {};
    if (progress < start)
        curve.fade = 0.0;
    else if (progress > start + length)
        curve.fade = 1.0;
    else
        curve.fade = (progress - start) / (length == 0.0 ? 1e-6 : length);

    double rising = 2.0 * progress;
    if (rising > 1.0)
        rising = 2.0 - rising;
    const double amount = 1.0 - ExactPower(1.0 - rising, static_cast<double>(tempo) * 3.0 + 1.0);
    // A tempo far outside its range sends the power anywhere.
    curve.amount = amount > 0.0 ? static_cast<float>(std::min(amount, 1.0)) : 0.0f;
    return curve;
}

} // namespace kelmora

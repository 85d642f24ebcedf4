#pragma once

#include "effects/common/precision.h"

namespace kelmora::confetti {

/// The knobs as the host gave them, levels normalised.
struct Knobs {
    float shading = 0;
    float columns = 0;
    float rows = 0;
    float power = 0;
    float direction = 0;
    float flutter = 0;
    bool vacuum = false;
    bool reverse = false;
};

/// What blows the pieces away.
struct Wind {
    double direction = 0; ///< radians, anticlockwise from the right: where the wind springs from
    double power = 0;     ///< how far it carries, 1 to 3
    double flutter = 0;   ///< how much pieces spin, 0 to 10
    bool vacuum = false;  ///< the pieces farthest from the wind leave first and fly farthest
};

/// How bright a piece is that the light misses, 0 to 1.
constexpr double AmbientFor(float shading)
{
    return Single(1.0 - static_cast<double>(shading));
}

/// Columns or rows of pieces, 1 to 20.
constexpr int PiecesFor(float level)
{
    return Truncate(Single(static_cast<double>(level) * 19.0 + 1.0));
}

constexpr Wind WindFor(const Knobs& knobs)
{
    return {
        .direction = Single(2.0 * 3.1415927410125732 * static_cast<double>(knobs.direction)),
        .power = Single(2.0 * static_cast<double>(knobs.power) + 1.0),
        .flutter = Single(10.0 * static_cast<double>(knobs.flutter)),
        .vacuum = knobs.vacuum,
    };
}

} // namespace kelmora::confetti

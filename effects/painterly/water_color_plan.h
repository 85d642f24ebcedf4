#pragma once

#include <algorithm>

#include "effects/common/precision.h"

namespace kelmora::water_color {

/// The knobs as the host gave them, normalised.
struct Knobs {
    float brushWidth = 0;
    float contrast = 0;
    float brightness = 0;
    float color = 0;
    float colorShift = 0;
    float blend = 0;
};

/// What turns the hue, 0.5 for none: the knob moves it by at most 54 degrees either way.
constexpr float HueOf(float colorShift)
{
    return static_cast<float>((static_cast<double>(colorShift) - 0.5) * Single(0.3) + 0.5);
}

/// How the paint runs.
struct Brush {
    int radiusX, radiusY; ///< of the median, in pixels; 0: no median
    int passes;
};

/// A brush so wide that no picture can be padded for it.
inline constexpr int kMostRadius = 32767;

/// `height` is the picture's; a field's line stands for two of the frame's.
constexpr Brush BrushFor(float brushWidth, int height, bool halfHeight)
{
    const int lines = halfHeight ? 2 : 1;
    const double scale = Single(height / 240.0 * lines);
    const int radius = Truncate((static_cast<double>(brushWidth) * 5.0 + 1.0) * scale);
    if (radius <= 0)
        return {0, 0, 0};
    // Kept: the number of passes jumps with the height, and with it the look.
    const bool twice = static_cast<long long>(height) * lines > 500;
    return {radius, std::max(radius / lines, 1), twice ? 2 : 1};
}

} // namespace kelmora::water_color

#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

#include "effects/common/precision.h"
#include "effects/scene3d/box_motion.h"
#include "effects/scene3d/matrix4.h"
#include "image/exact_math.h"

namespace kelmora::pizza_boxes {

/// What lies under the boxes, by the number of the choice. Any other number lays nothing.
enum Background : std::uint32_t { FirstPicture = 0, SecondPicture = 1, Transparent = 2 };

/// The knobs as the host gave them, levels normalised.
struct Knobs {
    float slices = 0;
    float cohesion = 0;
    float depth = 0;
    float ebb = 0;
    std::uint32_t orientation = 0;
    bool rotateRight = false;
    bool spread = false;
    bool alternate = false;
    float fog = 0;
    float shine = 0;
    std::uint32_t background = FirstPicture;
};

constexpr bool IsHorizontal(std::uint32_t orientation)
{
    return orientation == 0;
}

/// Rows of the grid when it is horizontal, else its columns: 1 to 10.
constexpr int SlicesFor(float level)
{
    return Truncate(Single(9.0 * static_cast<double>(level) + 1.0));
}

/// `bottomUp`: the rows of the first picture run upward.
inline BoxMotion MotionFor(const Knobs& knobs, bool bottomUp)
{
    const double cohesion = static_cast<double>(knobs.cohesion);
    return {
        .horizontal = IsHorizontal(knobs.orientation),
        .cohesion = cohesion > 0.0 ? Single(std::sqrt(cohesion)) : 0.0,
        .rotateRight = knobs.rotateRight,
        .spread = knobs.spread,
        .alternate = knobs.alternate,
        .ebb = Single(5.0 * static_cast<double>(knobs.ebb)),
        .bottomUp = bottomUp,
    };
}

/// The whole stack goes away from the viewer and comes back.
inline Matrix4 StackMatrix(double t, float depth)
{
    if (!(depth > 0.0f))
        return Matrix4::Identity();
    const double away = -ExactTurn(t * std::numbers::pi).sine * 5.0 * static_cast<double>(depth);
    return Matrix4::Translation(0.0, 0.0, away);
}

/// The glow of both pictures at one moment.
struct Glow {
    double fog = 0;
    double shine = 0;

    /// Of the haze, for a picture of `height` rows, in pixels.
    constexpr int Radius(int height) const { return Truncate(height * fog * Single(0.2)); }
};

constexpr bool HasGlow(const Knobs& knobs)
{
    return knobs.shine > 0.0f || knobs.fog > 0.0f;
}

/// It rises to the knobs' levels in mid-transition and falls to next to nothing at the end.
inline Glow GlowAt(double t, const Knobs& knobs)
{
    const double now = ExactTurn(t * Single(3.1415)).sine;
    return {static_cast<double>(knobs.fog) * now, static_cast<double>(knobs.shine) * now};
}

} // namespace kelmora::pizza_boxes

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "effects/common/precision.h"
#include "image/picture_check.h"
#include "image/transform_2d.h"

namespace kelmora::active_camera {

/// The knobs as the host gave them, normalised.
struct Knobs {
    float horizontal = 0;
    float vertical = 0;
    float rotation = 0;
    float crop = 0;
    float rate = 0;
    float jitter = 0;
    float hold = 0;
    float blur = 0;
    bool synchronize = false;
};

/// A number per axis: horizontal, vertical, rotation.
using Axes = std::array<float, 3>;

inline constexpr std::size_t kAxes = 3;
inline constexpr std::uint32_t kTimingSeeds[kAxes] = {444, 555, 666};
inline constexpr std::uint32_t kValueSeeds[kAxes] = {111, 222, 333};

/// How far the axes go; at 0 or below, or when it is no number, an axis stands still.
constexpr Axes AmountsOf(const Knobs& knobs)
{
    return {knobs.horizontal, knobs.vertical, knobs.rotation};
}

/// Synchronized axes move and rest together; where they go differs all the same.
constexpr std::uint32_t TimingSeed(std::size_t axis, bool synchronize)
{
    return kTimingSeeds[synchronize ? 0 : axis];
}

/// The time of the second sample of the motion: up to a quarter earlier.
constexpr double EarlierTime(double time, float blur)
{
    return time - static_cast<double>(blur) * 0.25;
}

/// The second sample's weight in 255ths: nearly half at full blur.
constexpr int EarlierWeight(float blur)
{
    return Truncate(static_cast<double>(blur) * 128.0);
}

/// Where a picture of `size` goes when the curves stand at `sway`: zoomed and turned about its middle, then shifted,
/// by a quarter of its size where a curve is at 1. `aspect`, the pixels' width over their height, is not 0: the turn is
/// one on the screen.
inline Transform2D CameraTransform(const Knobs& knobs, Size size, double aspect, const Axes& sway)
{
    const auto reach = [&](std::size_t axis) {
        return static_cast<double>(AmountsOf(knobs)[axis]) * 0.25 * static_cast<double>(sway[axis]);
    };
    const auto middleX = static_cast<float>(size.width / 2.0);
    const auto middleY = static_cast<float>(size.height / 2.0);
    Transform2D transform;
    transform.Translate(-middleX, -middleY);
    transform.Scale(1.0f, static_cast<float>(aspect));
    transform.Rotate(static_cast<float>(reach(2)));
    transform.Scale(1.0f, static_cast<float>(1.0 / aspect));
    transform.Scale(static_cast<float>(static_cast<double>(knobs.crop) * 0.67 + 1.0));
    transform.Translate(middleX, middleY);
    transform.Translate(static_cast<float>(reach(0) * size.width),
                        static_cast<float>(reach(1) * size.height));
    return transform;
}

} // namespace kelmora::active_camera

#pragma once

#include <algorithm>
#include <cstdint>

#include "effects/common/precision.h"
#include "image/exact_math.h"

namespace kelmora::smear {

/// What a picture lies on under its streak. Other numbers leave nothing to be seen of it, streak included.
enum class Background : std::uint32_t {
    FirstClip,
    SecondClip,
    Transparent,
    Blended, ///< the picture itself
};

/// The knobs as the host gave them, levels normalised.
struct Knobs {
    float blur = 0;
    float angle = 0;
    float direction = 0;
    float crossFade = 0;
    Background background = Background::FirstClip;
};

/// Which picture of the transition.
enum class Clip { First, Second };

/// How far a picture is smeared at `progress`, 0 to 1: the first one not at all at the beginning of the transition, and
/// fully from the dissolve's end on; the second one fully up to the dissolve's beginning, and not at all at the end.
constexpr double SmearShare(Clip clip, double progress, float crossFade)
{
    const double middle = static_cast<double>(crossFade) * 0.5 + 0.5;
    if (clip == Clip::First)
        return middle > progress ? progress / middle : 1.0;
    const double start = 1.0 - middle;
    return progress > start ? (1.0 - progress) / (1.0 - start) : 1.0;
}

/// Twice the width at full Blur, whatever the angle.
constexpr float SmearLength(float blur, int width, double share)
{
    const double reach = width * static_cast<double>(blur);
    return static_cast<float>((reach + reach) * share);
}

/// How a picture's smear is split into what runs forward, along the angle, and what runs backward.
struct Lengths {
    double forward, backward;
};

/// The second picture's split mirrors the first one's.
constexpr Lengths SplitLength(Clip clip, float length, float direction)
{
    const double all = static_cast<double>(length);
    const double part = static_cast<double>(direction) * all;
    const double forward = clip == Clip::First ? all - part : part;
    return {forward, all - forward};
}

/// A streak as doublings: the picture is averaged with itself moved by a step, the step doubles, and so on, which
/// makes 2^doublings copies side by side.
struct Doublings {
    int count;   ///< below 1: no streak
    double step; ///< the first one, in pixels
};

/// For a streak along `length` pixels; the last copy stands just short of half of it.
inline Doublings DoublingsFor(double length)
{
    const double reach = length > 0.0 ? length : 0.0; // neither negative nor not-a-number
    const auto log = [](double x) { return static_cast<double>(static_cast<float>(ExactLog(x))); };
    const int count = std::clamp(Truncate(log(reach + 0.5) / log(2.0)), -1, 30);
    return {count, reach / static_cast<double>(std::uint32_t{1} << (count + 1))};
}

/// Radians for a knob; 1 is a full turn.
constexpr double Turn(float angle)
{
    return static_cast<double>(angle) * 3.141592502593994 * 2;
}

/// Shares of two pictures in 255ths.
// Kept: both are cut to whole numbers, so that between the ends they sum to 254 at most places, and a mix of two
// equal pictures is darker by up to two levels.
struct Weights {
    int rising, falling;
};

/// For a share of 0 to 1, which is `rising`; 0 and 0 where it is not a number.
constexpr Weights WeightsFor(double share)
{
    const double level = Single(share * 255.0);
    return {Truncate(level), Truncate(255.0 - level)};
}

/// What the output shows.
enum class Shown { First, Second, Both };

struct Dissolve {
    Shown shown;
    Weights weights; ///< of the second picture, which rises, and of the first, if both are shown
};

/// At `progress`, 0 to 1: the pictures change over in the middle, within a time of `crossFade`.
// Kept: without a Cross Fade the frame in the very middle belongs to neither picture. Both weights are 0 then, and
// the frame is blank.
constexpr Dissolve DissolveAt(double progress, float crossFade)
{
    const double length = static_cast<double>(crossFade);
    const double start = 0.5 - length * 0.5;
    if (progress < start)
        return {Shown::First, {}};
    if (progress > start + length)
        return {Shown::Second, {}};
    return {Shown::Both, length == 0.0 ? Weights{0, 0} : WeightsFor((progress - start) / length)};
}

} // namespace kelmora::smear

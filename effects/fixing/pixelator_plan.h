#pragma once

#include <algorithm>
#include <cstdint>

#include "effects/common/precision.h"

namespace kelmora::pixelator {

/// The knobs as the host gave them, levels normalised. The centre's y runs upward in the picture.
struct Knobs {
    float centerX = 0, centerY = 0;
    float width = 0;
    float height = 0;
    float blockSize = 0;
};

/// An ellipse in pixels, y downward in memory.
struct Ellipse {
    int centreX, centreY, radiusX, radiusY;

    constexpr bool operator==(const Ellipse&) const = default;
};

/// The size of a block, in pixels.
struct BlockSize {
    int width, height;

    constexpr bool operator==(const BlockSize&) const = default;
};

/// Blocks along one axis: the first, and the one beyond the last.
struct BlockRange {
    int first, end;

    constexpr bool operator==(const BlockRange&) const = default;
};

/// A coordinate of the centre as a share of the side, at least a hundredth away from both ends.
constexpr float CentreShare(float knob)
{
    const double inside = knob > 0.0f ? std::min(static_cast<double>(knob), 1.0) : 0.0;
    return static_cast<float>(inside * Single(0.98) + Single(0.01));
}

/// Half of the ellipse along one axis: up to 65 % of the side, so that it may be larger than the picture. A wild
/// knob gets twice the side and no more, which keeps the outline's arithmetic in its bounds.
constexpr int Radius(float knob, int side)
{
    const auto share = static_cast<float>(static_cast<double>(knob) * Single(1.3));
    const std::int64_t most = std::min<std::int64_t>(std::int64_t{2} * side, 1 << 30);
    return static_cast<int>(
        std::clamp<std::int64_t>(Truncate(side * static_cast<double>(share) / 2), 0, most));
}

/// The ellipse that hides the face in a picture of `width` by `height` pixels.
constexpr Ellipse MakeEllipse(const Knobs& knobs, int width, int height, bool bottomUp)
{
    const float shareX = CentreShare(knobs.centerX);
    const float shareY = CentreShare(bottomUp ? knobs.centerY : 1.0f - knobs.centerY);
    return {Truncate(width * static_cast<double>(shareX)), Truncate(height * static_cast<double>(shareY)),
            Radius(knobs.width, width), Radius(knobs.height, height)};
}

/// Size of the blur that softens the ellipse's edge, in pixels.
constexpr int SoftSize(int height)
{
    return Truncate(height * 0.14);
}

/// The ellipse with all that the soft edge reaches.
constexpr Ellipse Widened(const Ellipse& ellipse, int soft)
{
    return {ellipse.centreX, ellipse.centreY, ellipse.radiusX + soft, ellipse.radiusY + soft};
}

/// The share of the height that Pixelate takes for its blocks' size.
constexpr float BlockAmount(float knob)
{
    return knob * 0.5f;
}

/// Blocks in a picture of `width` by `height` pixels. In a field a line stands for two of the frame's: the blocks are
/// half as high as wide there. At least two pixels wide; a wild `amount` gets the longer side and no more.
constexpr BlockSize MakeBlockSize(float amount, int width, int height, bool halfHeight)
{
    const double size =
        static_cast<double>(height) * (halfHeight ? 2 : 1) * Single(0.3) * static_cast<double>(amount);
    const int across = std::clamp(Truncate(size), 2, std::max({width, height, 2}));
    return {across, halfHeight ? across >> 1 : across};
}

/// How many blocks it takes to cover a side.
constexpr int BlockCount(int side, int block)
{
    return side / block + (side % block != 0 ? 1 : 0);
}

/// The blocks that meet the region `radius` around `centre`.
constexpr BlockRange MakeBlockRange(int centre, int radius, int side, int block)
{
    const std::int64_t from = std::int64_t{centre} - radius, to = std::int64_t{centre} + radius;
    // Kept: whether the range ends at the picture's edge is asked of where the region begins, so it may come from
    // beyond the edge. The cut to the blocks that there are takes care of it.
    const std::int64_t end = (from < side ? to : side) / block + 1;
    return {static_cast<int>(std::max<std::int64_t>(from, 0) / block),
            static_cast<int>(std::min<std::int64_t>(end, BlockCount(side, block)))};
}

} // namespace kelmora::pixelator

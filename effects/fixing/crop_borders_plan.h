#pragma once

#include <cstdint>

#include "effects/common/precision.h"

namespace kelmora::crop_borders {

/// What fills the frame once the margins are gone. Other numbers are no style.
enum class Style : std::uint32_t {
    Scale,       ///< the kept part, zoomed to the whole frame
    Overlay,     ///< the kept part in its place, over the same zoomed
    Extend,      ///< its edge pixels
    Transparent, ///< nothing
};

/// The knobs as the host gave them, levels normalised.
struct Knobs {
    float horizCrop = 0;
    float vertCrop = 0;
    float feather = 0;
    Style style = Style::Scale;
};

/// A part of a picture, by its first pixel and the ones beyond its last.
struct Rect {
    int left, top, right, bottom;

    constexpr bool operator==(const Rect&) const = default;
};

/// The share of a side that a knob takes away at each of its ends: at most a tenth.
constexpr float CropShare(float knob)
{
    return static_cast<float>(static_cast<double>(knob) * Single(0.1));
}

/// What is left of a picture of `width` by `height` pixels. Both corners round halves up, so the right and the
/// bottom margin may be a pixel narrower than the others. Knobs beyond 0 to 1 may lead outside.
constexpr Rect KeptRect(const Knobs& knobs, int width, int height)
{
    const auto cropX = static_cast<double>(CropShare(knobs.horizCrop));
    const auto cropY = static_cast<double>(CropShare(knobs.vertCrop));
    return {Truncate(width * cropX + 0.5), Truncate(height * cropY + 0.5),
            Truncate((1.0 - cropX) * width + 0.5), Truncate((1.0 - cropY) * height + 0.5)};
}

/// Whether the rectangle holds something, all of it in a picture of `width` by `height` pixels.
constexpr bool LiesInside(const Rect& rect, int width, int height)
{
    return rect.left >= 0 && rect.left < rect.right && rect.right <= width && rect.top >= 0
        && rect.top < rect.bottom && rect.bottom <= height;
}

/// Vertical size of the blur that softens the kept part's edge, in pixels, not yet whole: up to 15 % of the
/// height.
constexpr float FeatherSize(float feather, int height)
{
    return static_cast<float>(height * static_cast<double>(feather) * Single(0.15));
}

/// Horizontal size: a field's line stands for two of the frame's.
constexpr float FeatherWidth(float featherSize, bool halfHeight)
{
    return halfHeight ? 2.0f * featherSize : featherSize;
}

} // namespace kelmora::crop_borders

#pragma once

namespace kelmora {

/// Hue as a fraction of a full turn that begins at blue and goes by green (1/3) to red (2/3); saturation and
/// value from 0 to 1 for colours from 0 to 1.
struct HsvColour {
    float hue = 0, saturation = 0, value = 0;
};

struct RgbColour {
    float red = 0, green = 0, blue = 0;
};

/// Computed in double, each result rounded once. Greys and what is not above 0 have hue and saturation 0;
/// a channel that is not a number may leave a hue that is not a number either.
HsvColour PixelRGBToHSV(const RgbColour& colour);

/// The inverse. A hue outside of -1/6 to 11/6, not-a-number among them, gives the grey of `value`.
RgbColour PixelHSVToRGB(const HsvColour& colour);

} // namespace kelmora

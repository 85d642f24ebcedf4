#include "image/hsv.h"

#include <algorithm>

namespace kelmora {

HsvColour PixelRGBToHSV(const RgbColour& colour)
{
    const double r = static_cast<double>(colour.red);
    const double g = static_cast<double>(colour.green);
    const double b = static_cast<double>(colour.blue);
    const double max = std::max({b, g, r});
    const double min = std::min({b, g, r});
    HsvColour result;
    result.value = static_cast<float>(max);
    if (!(max > 0.0 && min < max))
        return result;
    result.saturation = static_cast<float>((max - min) / max);

    const double d = 1.0 / (max - min);
    const double red = (max - r) * d, green = (max - g) * d, blue = (max - b) * d;
    double h = 0.0;
    if (max == b)
        h = red - green;
    else if (max == g)
        h = blue + 2.0 - red;
    else if (max == r)
        h = green + 4.0 - blue;
    h *= 60.0;
    if (h < 0.0)
        h += 360.0;
    result.hue = static_cast<float>(h / 360.0);
    return result;
}

RgbColour PixelHSVToRGB(const HsvColour& colour)
{
    const double saturation = static_cast<double>(colour.saturation);
    const double value = static_cast<double>(colour.value);
    double red = value, green = value, blue = value;
    if (saturation > 0.0) {
        double h = static_cast<double>(colour.hue) * 360.0;
        if (h >= 300.0)
            h -= 360.0;
        h /= 60.0;
        const double low = (1.0 - saturation) * value;
        const double range = value - low;
        // Around blue, green and red at 0, 2 and 4: that colour is the value, the one toward which the hue
        // leans lies between, and the other is low.
        const auto lean = [&](double from, double& before, double& behind) {
            const double t = (h - from) * range;
            before = t < 0.0 ? low - t : low;
            behind = t < 0.0 ? low : t + low;
        };
        if (h >= -1.0 && h < 1.0)
            lean(0.0, red, green);
        else if (h >= 1.0 && h < 3.0)
            lean(2.0, blue, red);
        else if (h >= 3.0 && h < 5.0)
            lean(4.0, green, blue);
    }
    return {static_cast<float>(red), static_cast<float>(green), static_cast<float>(blue)};
}

} // namespace kelmora

#include "image/hsv.h"

#include "image/primitives/hsv_kernels.h"

namespace kelmora {

HsvColour PixelRGBToHSV(const RgbColour& colour)
{
    float pixel[4] = {colour.blue, colour.green, colour.red, 0};
    HsvKernelsFor(CurrentVariant()).bgra32fToHsv(pixel, pixel, 1);
    return {pixel[0], pixel[1], pixel[2]};
}

RgbColour PixelHSVToRGB(const HsvColour& colour)
{
    float pixel[4] = {colour.hue, colour.saturation, colour.value, 0};
    HsvKernelsFor(CurrentVariant()).bgra32fToRgb(pixel, pixel, 1);
    return {pixel[2], pixel[1], pixel[0]};
}

} // namespace kelmora

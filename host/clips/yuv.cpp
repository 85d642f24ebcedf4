#include "host/clips/yuv.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelmora::host {
namespace {

constexpr int kFraction = 16; // bits behind the point
constexpr int kHalf = 1 << (kFraction - 1);

constexpr int Fixed(double factor)
{
    const double scaled = factor * (1 << kFraction);
    return static_cast<int>(scaled < 0.0 ? scaled - 0.5 : scaled + 0.5);
}

std::uint8_t ToByte(int fixed)
{
    return static_cast<std::uint8_t>(std::clamp((fixed + kHalf) >> kFraction, 0, 255));
}

/// The arithmetic between the colours of a layout and red, green, blue.
struct Weights {
    int black; ///< luma of black
    int luma;
    int redOfV, greenOfU, greenOfV, blueOfU;
    int yOfRed, yOfGreen, yOfBlue;
    int uOfRed, uOfGreen, vOfGreen, vOfBlue, half; ///< half: U of blue, V of red

    explicit Weights(const YuvLayout& layout)
    {
        const double red = layout.isHighDefinition ? 0.2126 : 0.299;
        const double blue = layout.isHighDefinition ? 0.0722 : 0.114;
        const double green = 1.0 - red - blue;
        const double lumaRange = layout.isFullRange ? 1.0 : 219.0 / 255.0;
        const double colourRange = layout.isFullRange ? 1.0 : 224.0 / 255.0;
        black = layout.isFullRange ? 0 : 16;
        luma = Fixed(1.0 / lumaRange);
        redOfV = Fixed(2.0 * (1.0 - red) / colourRange);
        blueOfU = Fixed(2.0 * (1.0 - blue) / colourRange);
        greenOfU = Fixed(-2.0 * (1.0 - blue) * blue / green / colourRange);
        greenOfV = Fixed(-2.0 * (1.0 - red) * red / green / colourRange);
        yOfRed = Fixed(red * lumaRange);
        yOfGreen = Fixed(green * lumaRange);
        yOfBlue = Fixed(blue * lumaRange);
        half = Fixed(0.5 * colourRange);
        uOfRed = Fixed(-0.5 * red / (1.0 - blue) * colourRange);
        uOfGreen = Fixed(-0.5 * green / (1.0 - blue) * colourRange);
        vOfGreen = Fixed(-0.5 * green / (1.0 - red) * colourRange);
        vOfBlue = Fixed(-0.5 * blue / (1.0 - red) * colourRange);
    }
};

/// The place and size of the colour planes.
struct Planes {
    std::size_t width, height, lumaBytes, colourWidth, colourHeight, colourBytes;

    Planes(const YuvLayout& layout, std::int32_t frameWidth, std::int32_t frameHeight)
        : width(static_cast<std::size_t>(frameWidth)), height(static_cast<std::size_t>(frameHeight)),
          lumaBytes(width * height),
          colourWidth((width + (std::size_t{1} << layout.acrossShift) - 1) >> layout.acrossShift),
          colourHeight((height + (std::size_t{1} << layout.downShift) - 1) >> layout.downShift),
          colourBytes(layout.hasColour ? colourWidth * colourHeight : 0)
    {
    }
};

void LumaRow(const Weights& weights, const std::uint8_t* bgra, std::size_t width, std::uint8_t* luma)
{
    for (std::size_t x = 0; x < width; ++x, bgra += 4) {
        luma[x] = ToByte(weights.yOfBlue * bgra[0] + weights.yOfGreen * bgra[1] + weights.yOfRed * bgra[2]
                         + weights.black * (1 << kFraction));
    }
}

/// The mean of the pixels that the colour at (x, y) stands for: blue, green, red.
std::array<int, 3> MeanColour(const YuvLayout& layout, const Planes& planes, const std::uint8_t* bgra,
                              std::size_t x, std::size_t y)
{
    const std::size_t right = std::min((x + 1) << layout.acrossShift, planes.width);
    const std::size_t bottom = std::min((y + 1) << layout.downShift, planes.height);
    std::array<int, 3> sum = {};
    int count = 0;
    for (std::size_t row = y << layout.downShift; row < bottom; ++row) {
        for (std::size_t column = x << layout.acrossShift; column < right; ++column, ++count) {
            const std::uint8_t* const pixel = bgra + (row * planes.width + column) * 4;
            sum[0] += pixel[0];
            sum[1] += pixel[1];
            sum[2] += pixel[2];
        }
    }
    for (int& channel : sum)
        channel = (channel + count / 2) / count;
    return sum;
}

} // namespace

std::size_t YuvLayout::FrameBytes(std::int32_t width, std::int32_t height) const
{
    const Planes planes(*this, width, height);
    return planes.lumaBytes + 2 * planes.colourBytes;
}

std::optional<YuvLayout> LayoutNamed(std::string_view chroma)
{
    YuvLayout layout;
    if (chroma == "420" || chroma == "420jpeg" || chroma == "420mpeg2" || chroma == "420paldv")
        layout.acrossShift = layout.downShift = 1;
    else if (chroma == "422")
        layout.acrossShift = 1;
    else if (chroma == "mono")
        layout.hasColour = false;
    else if (chroma != "444")
        return std::nullopt;
    return layout;
}

void FromYuv(const YuvLayout& layout, std::int32_t width, std::int32_t height, const std::uint8_t* planes,
             std::uint8_t* bgra)
{
    constexpr int kGrey = 128;
    const Weights weights(layout);
    const Planes places(layout, width, height);
    for (std::size_t y = 0; y < places.height; ++y) {
        const std::uint8_t* const luma = planes + y * places.width;
        const std::size_t colourRow = places.lumaBytes + (y >> layout.downShift) * places.colourWidth;
        for (std::size_t x = 0; x < places.width; ++x, bgra += 4) {
            const std::size_t colour = colourRow + (x >> layout.acrossShift);
            const int u = layout.hasColour ? planes[colour] - kGrey : 0;
            const int v = layout.hasColour ? planes[colour + places.colourBytes] - kGrey : 0;
            const int grey = weights.luma * (luma[x] - weights.black);
            bgra[0] = ToByte(grey + weights.blueOfU * u);
            bgra[1] = ToByte(grey + weights.greenOfU * u + weights.greenOfV * v);
            bgra[2] = ToByte(grey + weights.redOfV * v);
            bgra[3] = 255;
        }
    }
}

void ToYuv(const YuvLayout& layout, std::int32_t width, std::int32_t height, const std::uint8_t* bgra,
           std::uint8_t* planes)
{
    constexpr int kGrey = 128 << kFraction;
    const Weights weights(layout);
    const Planes places(layout, width, height);
    for (std::size_t y = 0; y < places.height; ++y)
        LumaRow(weights, bgra + y * places.width * 4, places.width, planes + y * places.width);
    if (!layout.hasColour)
        return;
    std::uint8_t* to = planes + places.lumaBytes;
    for (std::size_t y = 0; y < places.colourHeight; ++y) {
        for (std::size_t x = 0; x < places.colourWidth; ++x, ++to) {
            const auto [blue, green, red] = MeanColour(layout, places, bgra, x, y);
            to[0] = ToByte(weights.half * blue + weights.uOfGreen * green + weights.uOfRed * red + kGrey);
            to[places.colourBytes] =
                ToByte(weights.half * red + weights.vOfGreen * green + weights.vOfBlue * blue + kGrey);
        }
    }
}

} // namespace kelmora::host

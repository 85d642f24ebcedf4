#include "host/pictures/pixel_conversion.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "host/failure.h"

namespace kelmora::host {
namespace {

constexpr std::size_t kChannels = 4;

/// Where red, green, blue and alpha lie in a pixel.
using Places = std::array<std::size_t, kChannels>;

constexpr Places PlacesOf(PixelFormat format)
{
    return format == PF_ARGB8 || format == PF_ARGB32F ? Places{1, 2, 3, 0} : Places{2, 1, 0, 3};
}

bool IsFloat(PixelFormat format)
{
    return format == PF_BGRA32F || format == PF_ARGB32F;
}

float ToFloat(std::uint8_t byte)
{
    return static_cast<float>(byte) * 0.003921569f;
}

std::uint8_t ToByte(float level)
{
    if (!(level > 0.0f)) // not-a-number too
        return 0;
    const double cut = std::min(static_cast<double>(level), 1.0);
    // Right for what is not negative.
    return static_cast<std::uint8_t>(cut * 255.0 + 0.5); // NOLINT(bugprone-incorrect-roundings)
}

} // namespace

std::int32_t BytesOfPixel(PixelFormat format)
{
    switch (format) {
    case PF_BGRA8:
    case PF_ARGB8:
        return 4;
    case PF_BGRA32F:
    case PF_ARGB32F:
        return 16;
    default:
        return 0;
    }
}

std::vector<std::uint8_t> ToFormat(const Picture& picture, PixelFormat format)
{
    const auto pixelBytes = static_cast<std::size_t>(BytesOfPixel(format));
    const std::size_t pixels = picture.rgba.size() / Picture::kPixelBytes;
    constexpr std::size_t kMostBytes = std::numeric_limits<std::int32_t>::max();
    if (pixelBytes == 0)
        throw Failure(ExitCode::Failed, "the format is none of a picture");
    if (pixels > kMostBytes / pixelBytes)
        throw Failure(ExitCode::Failed, "the picture is too large");

    const Places places = PlacesOf(format);
    std::vector<std::uint8_t> converted(pixels * pixelBytes);
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        const std::uint8_t* const from = &picture.rgba[pixel * Picture::kPixelBytes];
        std::uint8_t* const to = &converted[pixel * pixelBytes];
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            if (IsFloat(format)) {
                const float level = ToFloat(from[channel]);
                std::memcpy(to + places[channel] * sizeof level, &level, sizeof level);
            } else {
                to[places[channel]] = from[channel];
            }
        }
    }
    return converted;
}

Picture FromFormat(const std::vector<std::uint8_t>& pixels, std::int32_t width, std::int32_t height,
                   PixelFormat format)
{
    const auto pixelBytes = static_cast<std::size_t>(BytesOfPixel(format));
    const Places places = PlacesOf(format);
    Picture picture{width, height, {}};
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    picture.rgba.resize(count * Picture::kPixelBytes);
    for (std::size_t pixel = 0; pixel < count; ++pixel) {
        const std::uint8_t* const from = &pixels[pixel * pixelBytes];
        std::uint8_t* const to = &picture.rgba[pixel * Picture::kPixelBytes];
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            if (IsFloat(format)) {
                float level = 0.0f;
                std::memcpy(&level, from + places[channel] * sizeof level, sizeof level);
                to[channel] = ToByte(level);
            } else {
                to[channel] = from[places[channel]];
            }
        }
    }
    return picture;
}

} // namespace kelmora::host

#include "tests/support/pictures.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace kelmora {
namespace {

std::uint8_t ToByte(std::int64_t value)
{
    return static_cast<std::uint8_t>(std::clamp<std::int64_t>(value, 0, 255));
}

// 0 at the first of `count` places, 255 at the last.
std::uint8_t Rising(std::int64_t place, std::int64_t count)
{
    return ToByte(count > 1 ? place * 255 / (count - 1) : 0);
}

// Up from 0 to 255 and down again, once every 512 steps.
std::uint8_t Triangle(std::int64_t phase)
{
    const std::int64_t step = ((phase % 512) + 512) % 512;
    return ToByte(step < 256 ? step : 511 - step);
}

std::int64_t SquareRoot(std::int64_t value)
{
    std::int64_t root = 0;
    for (std::int64_t bit = std::int64_t{1} << 31; bit > 0; bit >>= 1)
        if ((root + bit) * (root + bit) <= value)
            root += bit;
    return root;
}

PixelColour Ramp(std::int64_t x, std::int64_t y, std::int64_t w, std::int64_t h)
{
    return {Rising(x, w), Rising(y, h), Rising(x + y, w + h - 1), 255};
}

PixelColour ZonePlate(std::int64_t x, std::int64_t y, std::int64_t w, std::int64_t h)
{
    // In half pixels from the middle. The phase runs 256 steps per pixel at the nearer border: there the
    // rings alternate from pixel to pixel.
    const std::int64_t dx = 2 * x - (w - 1);
    const std::int64_t dy = 2 * y - (h - 1);
    const std::int64_t reach = std::max<std::int64_t>(std::min(w, h), 1);
    const std::uint8_t level = Triangle((dx * dx + dy * dy) * 64 / reach);
    return {level, level, level, 255};
}

PixelColour HardEdges(std::int64_t x, std::int64_t y, std::int64_t w, std::int64_t h)
{
    if (x == w / 3 || y == h / 3)
        return {0, 0, 0, 255};
    const std::int64_t block = x / 8 + 3 * (y / 8);
    const auto level = [block](int bit) { return static_cast<std::uint8_t>((block >> bit) & 1 ? 255 : 0); };
    return {level(0), level(1), level(2), 255};
}

PixelColour SoftEdges(std::int64_t x, std::int64_t y, std::int64_t w, std::int64_t h)
{
    const std::int64_t dx = 2 * x - (w - 1);
    const std::int64_t dy = 2 * y - (h - 1);
    const std::int64_t distance = SquareRoot((dx * dx + dy * dy) * 64); // in sixteenths of a pixel
    const std::int64_t radius = 4 * h;                                  // a quarter of the height
    const std::int64_t fade = std::max<std::int64_t>(4 * h, 1);
    const std::int64_t light = std::clamp<std::int64_t>((radius + fade - distance) * 255 / fade, 0, 255);
    const auto mix = [light](std::int64_t inner, std::int64_t ground) {
        return ToByte((inner * light + ground * (255 - light) + 127) / 255);
    };
    return {mix(230, 120), mix(250, 60), mix(255, 20), 255};
}

PixelColour Moving(std::int64_t x, std::int64_t y, std::int64_t w, std::int64_t h, std::int64_t frame)
{
    const std::int64_t across = (frame * 7) % std::max<std::int64_t>(w, 1);
    const std::int64_t down = (frame * 3) % std::max<std::int64_t>(h, 1);
    const std::int64_t dx = x - across;
    const std::int64_t dy = y - (h - 1 - down);
    const std::int64_t radius = std::max<std::int64_t>(h / 6, 1);
    if (dx * dx + dy * dy <= radius * radius)
        return {40, 200, 250, 255};
    if (y >= down && y < down + std::max<std::int64_t>(h / 12, 1))
        return {220, 60, 90, 255};
    return {Triangle(4 * (x + y) + 16 * frame), Triangle(3 * x + 8 * frame), Triangle(5 * y), 255};
}

} // namespace

PixelColour ColourAt(Motif motif, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                     std::int32_t frame)
{
    switch (motif) {
    case Motif::Ramp:
        return Ramp(x, y, width, height);
    case Motif::ZonePlate:
        return ZonePlate(x, y, width, height);
    case Motif::HardEdges:
        return HardEdges(x, y, width, height);
    case Motif::SoftEdges:
        return SoftEdges(x, y, width, height);
    case Motif::AlphaRamp: {
        PixelColour colour = Ramp(x, y, width, height);
        colour.alpha = Rising(x, width);
        return colour;
    }
    case Motif::Checkerboard: {
        const std::uint8_t level = ((x + y) & 1) != 0 ? 255 : 0;
        return {level, level, level, 255};
    }
    case Motif::Moving:
        return Moving(x, y, width, height, frame);
    }
    return {};
}

void Draw(GuardedPicture& picture, Motif motif, std::int32_t frame)
{
    for (std::int32_t y = 0; y < picture.Height(); ++y) {
        for (std::int32_t x = 0; x < picture.Width(); ++x) {
            const PixelColour colour = ColourAt(motif, x, y, picture.Width(), picture.Height(), frame);
            if (picture.Channels() == 1)
                picture.SetColour(x, y, colour.green, 0, 0, 0);
            else
                picture.SetColour(x, y, colour.blue, colour.green, colour.red, colour.alpha);
        }
    }
}

GuardedPicture MakePicture(Motif motif, std::int32_t width, std::int32_t height, std::uint32_t format,
                           const PictureLayout& layout, std::int32_t frame)
{
    GuardedPicture picture(width, height, format, layout);
    Draw(picture, motif, frame);
    return picture;
}

GuardedPicture WithChannelsReversed(const GuardedPicture& picture)
{
    const std::uint32_t format = picture.Format();
    const std::uint32_t other = format == PF_BGRA8 ? PF_ARGB8
        : format == PF_ARGB8                       ? PF_BGRA8
        : format == PF_BGRA32F                     ? PF_ARGB32F
                                                   : PF_BGRA32F;
    GuardedPicture reversed(picture.Width(), picture.Height(), other, picture.Layout());
    const std::int32_t element = picture.PixelBytes() / 4;
    for (std::int32_t y = 0; y < picture.Height(); ++y) {
        for (std::int32_t x = 0; x < picture.Width(); ++x) {
            const std::uint8_t* const from = picture.Row(y) + static_cast<std::ptrdiff_t>(x) * 4 * element;
            std::uint8_t* const to = reversed.Row(y) + static_cast<std::ptrdiff_t>(x) * 4 * element;
            for (std::ptrdiff_t channel = 0; channel < 4; ++channel)
                std::memcpy(to + (3 - channel) * element, from + channel * element,
                            static_cast<std::size_t>(element));
        }
    }
    return reversed;
}

std::string_view Name(Motif motif)
{
    switch (motif) {
    case Motif::Ramp:
        return "ramp";
    case Motif::ZonePlate:
        return "zone-plate";
    case Motif::HardEdges:
        return "hard-edges";
    case Motif::SoftEdges:
        return "soft-edges";
    case Motif::AlphaRamp:
        return "alpha-ramp";
    case Motif::Checkerboard:
        return "checkerboard";
    case Motif::Moving:
        return "moving";
    }
    return "unknown";
}

std::optional<Motif> MotifNamed(std::string_view name)
{
    for (const Motif motif : kAllMotifs)
        if (Name(motif) == name)
            return motif;
    return {};
}

std::string_view FormatName(std::uint32_t format)
{
    switch (format) {
    case PF_BGRA8:
        return "BGRA8";
    case PF_ARGB8:
        return "ARGB8";
    case PF_Packed8:
        return "Packed8";
    case PF_BGRA32F:
        return "BGRA32F";
    case PF_ARGB32F:
        return "ARGB32F";
    case PF_Mask8:
        return "Mask8";
    case PF_Mask32F:
        return "Mask32F";
    default:
        return "unknown";
    }
}

} // namespace kelmora

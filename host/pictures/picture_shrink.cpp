#include "host/pictures/picture_shrink.h"

#include <algorithm>
#include <array>

namespace kelmora::host {
namespace {

/// The pixels from `first` on that a new pixel covers along an axis. All lengths are in new-size-ths of a
/// pixel, so that they are whole numbers: an old pixel is `newSize` long, a new one `size`.
struct Span {
    std::int64_t begin = 0; ///< of the new pixel
    std::int64_t end = 0;
    std::int64_t newSize = 1;

    std::int64_t First() const { return begin / newSize; }
    std::int64_t Last() const { return (end - 1) / newSize; }
    /// How much of pixel `place` is covered.
    std::int64_t Covered(std::int64_t place) const
    {
        return std::min(end, (place + 1) * newSize) - std::max(begin, place * newSize);
    }
};

Span SpanOf(std::int64_t place, std::int64_t size, std::int64_t newSize)
{
    return {place * size, (place + 1) * size, newSize};
}

/// `sum` / `weight` to the nearest.
std::uint8_t Mean(std::int64_t sum, std::int64_t weight)
{
    return static_cast<std::uint8_t>((2 * sum + weight) / (2 * weight));
}

} // namespace

std::int32_t ShrunkHeight(std::int32_t width, std::int32_t height, std::int32_t newWidth)
{
    const std::int64_t doubled = std::int64_t{2} * height * newWidth;
    return static_cast<std::int32_t>(
        std::max<std::int64_t>((doubled + width) / (std::int64_t{2} * width), 1));
}

Picture Shrink(const Picture& picture, std::int32_t newWidth)
{
    if (newWidth == picture.width)
        return picture;
    constexpr std::size_t kAlpha = Picture::kPixelBytes - 1;
    const std::int32_t newHeight = ShrunkHeight(picture.width, picture.height, newWidth);
    Picture shrunk{newWidth, newHeight, {}};
    shrunk.rgba.reserve(static_cast<std::size_t>(newWidth) * static_cast<std::size_t>(newHeight)
                        * Picture::kPixelBytes);
    for (std::int32_t y = 0; y < newHeight; ++y) {
        const Span rows = SpanOf(y, picture.height, newHeight);
        for (std::int32_t x = 0; x < newWidth; ++x) {
            const Span columns = SpanOf(x, picture.width, newWidth);
            std::array<std::int64_t, kAlpha> colours = {};
            std::int64_t alphas = 0; // of below 2 to the power of 29 pixels, so all sums fit
            for (std::int64_t row = rows.First(); row <= rows.Last(); ++row) {
                for (std::int64_t column = columns.First(); column <= columns.Last(); ++column) {
                    const std::uint8_t* const pixel =
                        &picture.rgba[static_cast<std::size_t>(row * picture.width + column)
                                      * Picture::kPixelBytes];
                    const std::int64_t alpha = rows.Covered(row) * columns.Covered(column) * pixel[kAlpha];
                    for (std::size_t channel = 0; channel < kAlpha; ++channel)
                        colours[channel] += alpha * pixel[channel];
                    alphas += alpha;
                }
            }
            for (const std::int64_t colour : colours)
                shrunk.rgba.push_back(alphas > 0 ? Mean(colour, alphas) : std::uint8_t{0});
            shrunk.rgba.push_back(Mean(alphas, std::int64_t{picture.width} * picture.height));
        }
    }
    return shrunk;
}

} // namespace kelmora::host

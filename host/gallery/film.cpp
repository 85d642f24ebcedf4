#include "host/gallery/film.h"

#include <algorithm>
#include <cstddef>

#include "host/pictures/contact_sheet.h"
#include "host/pictures/picture_file.h"

namespace kelmora::host {
namespace {

constexpr std::int32_t kBlock = 16; // pixels along a side: two of 8 where colour has half the size

/// The last row again and again, down to `height` rows.
Picture Lengthened(Picture picture, std::int32_t height)
{
    const std::size_t rowBytes = static_cast<std::size_t>(picture.width) * Picture::kPixelBytes;
    const std::vector<std::uint8_t> last(picture.rgba.end() - static_cast<std::ptrdiff_t>(rowBytes),
                                         picture.rgba.end());
    for (; picture.height < height; ++picture.height)
        picture.rgba.insert(picture.rgba.end(), last.begin(), last.end());
    return picture;
}

} // namespace

std::int32_t FilmPitch(std::int32_t height)
{
    return (height + kBlock - 1) / kBlock * kBlock;
}

Picture OverChequers(const Picture& picture)
{
    constexpr std::int32_t kSquare = 8; // pixels
    constexpr int kLight = 255, kDark = 204;
    Picture result = picture;
    std::size_t at = 0;
    for (std::int32_t y = 0; y < picture.height; ++y) {
        for (std::int32_t x = 0; x < picture.width; ++x, at += Picture::kPixelBytes) {
            const int ground = (x / kSquare + y / kSquare) % 2 == 0 ? kLight : kDark;
            const int alpha = picture.rgba[at + 3];
            for (std::size_t channel = at; channel < at + 3; ++channel) {
                const int mixed = picture.rgba[channel] * alpha + ground * (255 - alpha);
                result.rgba[channel] = static_cast<std::uint8_t>((mixed + 127) / 255);
            }
            result.rgba[at + 3] = 255;
        }
    }
    return result;
}

Film MakeFilm(const std::vector<Picture>& frames, int quality)
{
    Film film;
    film.width = frames.front().width;
    film.height = frames.front().height;
    film.pitch = FilmPitch(film.height);
    film.frames = static_cast<std::int32_t>(frames.size());
    const SheetGrid grid{film.width, film.pitch, film.frames, 1};
    Picture sheet = EmptySheet(grid);
    for (std::int32_t frame = 0; frame < film.frames; ++frame)
        PlaceFrame(grid, frame, Lengthened(OverChequers(frames[static_cast<std::size_t>(frame)]), film.pitch),
                   sheet);
    film.jpeg = JpegBytes(sheet, quality);
    return film;
}

} // namespace kelmora::host

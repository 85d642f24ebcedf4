#include "host/pictures/contact_sheet.h"

#include <algorithm>
#include <limits>

#include "host/failure.h"

namespace kelmora::host {

Picture EmptySheet(const SheetGrid& grid)
{
    constexpr std::int64_t kMostPixels =
        std::numeric_limits<std::int32_t>::max() / static_cast<std::int64_t>(Picture::kPixelBytes);
    if (grid.Height() > kMostPixels / grid.Width())
        throw Failure(ExitCode::Failed, "the sheet is too large");
    Picture sheet{static_cast<std::int32_t>(grid.Width()), static_cast<std::int32_t>(grid.Height()), {}};
    sheet.rgba.resize(static_cast<std::size_t>(grid.Width() * grid.Height()) * Picture::kPixelBytes);
    return sheet;
}

void PlaceFrame(const SheetGrid& grid, std::int32_t index, const Picture& frame, Picture& sheet)
{
    const auto size = [](std::int64_t count) { return static_cast<std::size_t>(count); };
    const std::size_t rowBytes = size(grid.frameWidth) * Picture::kPixelBytes;
    const std::size_t sheetRowBytes = size(grid.Width()) * Picture::kPixelBytes;
    const std::size_t top = size(index / grid.columns) * size(grid.frameHeight);
    const std::uint8_t* from = frame.rgba.data();
    std::uint8_t* to = sheet.rgba.data() + top * sheetRowBytes + size(index % grid.columns) * rowBytes;
    for (std::int32_t row = 0; row < grid.frameHeight; ++row, from += rowBytes, to += sheetRowBytes)
        std::copy_n(from, rowBytes, to);
}

} // namespace kelmora::host

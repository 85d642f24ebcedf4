#pragma once

#include <cstdint>

#include "host/pictures/picture.h"

namespace kelmora::host {

/// Where frames of one size stand on a sheet: side by side without a gap, row after row from the top left.
struct SheetGrid {
    std::int32_t frameWidth = 1;  ///< pixels, at least 1
    std::int32_t frameHeight = 1; ///< pixels, at least 1
    std::int32_t frames = 1;      ///< at least 1
    std::int32_t columns = 1;     ///< frames in a row, 1 to `frames`

    std::int64_t Width() const { return std::int64_t{frameWidth} * columns; }  ///< of the sheet, pixels
    std::int64_t Height() const { return std::int64_t{frameHeight} * Rows(); } ///< likewise
    std::int32_t Rows() const { return (frames - 1) / columns + 1; }
};

/// A sheet without its frames, transparent black. Throws Failure when a picture cannot have its size.
Picture EmptySheet(const SheetGrid& grid);

/// Copies a frame to its place.
///
/// index    0 to grid.frames - 1
/// frame    of the grid's frame size
/// sheet    from EmptySheet for the same grid
void PlaceFrame(const SheetGrid& grid, std::int32_t index, const Picture& frame, Picture& sheet);

} // namespace kelmora::host

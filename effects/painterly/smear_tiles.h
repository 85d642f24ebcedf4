#pragma once

#include <cstdint>

#include "image/picture_check.h"

namespace kelmora::smear {

/// How far a streak leads to the right per row, in 4096ths of a column: exact, so that the columns of rows that are
/// some rows apart differ by the same everywhere, to within one.
class Slant {
public:
    /// Of a streak that leads `columns` to the right on its way down by `lines`, which are not 0. Those that are
    /// nearly level count as a million columns per row.
    static Slant Along(double columns, double lines);

    /// Columns, rounded down, over `lines`.
    std::int64_t At(std::int64_t lines) const { return (m_perLine * lines) >> kFraction; }

private:
    static constexpr int kFraction = 12;

    std::int64_t m_perLine = 0;
};

/// Columns of a row, `end` excluded.
struct Columns {
    int begin, end;

    bool IsEmpty() const { return begin >= end; }
};

/// A part of a frame whose sides follow a streak: the pixels that are wanted, and a margin to both sides of those
/// that they come of.
struct Tile {
    std::int64_t left; ///< column of the frame where row 0 begins with its margin
    int firstRow, endRow;
};

/// A frame in tiles: each of its pixels is wanted in one of them.
class Tiles {
public:
    /// For frames that are not empty.
    /// margin        columns to each side, 0 or more
    /// leastColumns  that are wanted of a row, 1 or more; where margins are wide, more are
    Tiles(Size size, Slant slant, std::int64_t margin, int leastColumns);

    std::int64_t Count() const { return m_count; }
    Tile At(std::int64_t index) const;

    /// Of a row of a tile, what lies in the frame.
    Columns All(const Tile& tile, int y) const { return Part(tile, y, 0); }
    Columns Wanted(const Tile& tile, int y) const { return Part(tile, y, m_margin); }

    /// The most columns and the most rows that a tile has.
    Size Most() const;

private:
    Columns Part(const Tile& tile, int y, std::int64_t margin) const;

    Size m_size;
    Slant m_slant;
    std::int64_t m_margin;
    std::int64_t m_step = 0;  ///< columns that are wanted
    std::int64_t m_first = 0; ///< `left` of the first tile
    std::int64_t m_count = 0;
};

} // namespace kelmora::smear

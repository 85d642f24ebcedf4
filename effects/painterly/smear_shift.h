#pragma once

#include <cstddef>
#include <cstdint>

#include "image/picture_check.h"
#include "image/primitives/warp_map.h"
#include "image/transform_2d.h"

namespace kelmora::smear {

/// Columns `begin` to before `end` of a row of a frame. Others are not at hand.
struct RowPart {
    std::uint8_t* pixels = nullptr; ///< column `begin`
    int begin = 0, end = 0;
};

/// A move without turning of a frame, for the mean of the frame and itself moved: what ImageOps::WarpAffine onto
/// transparent black and ImageOps::Mix with 128 and 128 give, row by row and in place.
class Shift {
public:
    Shift() = default;

    /// For frames of `size` with four values per pixel, floats or bytes.
    Shift(const Transform2D& move, Size size, bool floats);

    /// Whether it is such a move, of a frame that warps can address. Nothing else is to be asked then.
    bool IsServed() const { return m_isServed; }

    /// Whether every row comes of the same row alone; of floats, as long as those of the next row are ordinary.
    bool IsLevel() const;

    /// Whether rows come of those above them, so that they are replaced from the last one to the first; otherwise
    /// from the first one to the last.
    bool IsUpward() const { return m_y < 0.0; }

    /// Whether anything of the frame comes to lie on it. If so, pixel (0, 0) comes of pixel (Column(), Line()) and the
    /// ones to the right, below and across.
    bool Reaches() const { return m_reaches; }
    int Column() const { return m_column; }
    int Line() const { return m_line; }

    /// Where pixel (0, 0) comes from.
    double X() const { return m_x; }
    double Y() const { return m_y; }

    /// The two rows that a row comes of, and the weight of the second one. The same row twice has none.
    struct Source {
        int upper, lower;
        int below; ///< bytes, in 256ths
        float belowFloat;
    };

    /// False for rows over which nothing is moved.
    bool SourceOf(int y, Source& source) const;

    /// `row` becomes the mean of itself and of what comes of `upper` and `lower`, which may be that row itself. Pixels
    /// for which too little of these is at hand are halved. Without any of `lower` at hand, that row counts as one of
    /// ordinary floats, and has to have no weight.
    void Average(const RowPart& row, const Source& source, const RowPart& upper, const RowPart& lower) const;

    /// `row` becomes the mean of itself and of nothing.
    void Halve(const RowPart& row) const;

private:
    struct Edge;
    struct Pair;

    void HalvePart(const RowPart& row, int begin, int end) const;
    void MeanOfPart(const RowPart& row, int begin, int end, const Source& source, const Pair& pair) const;
    bool MeanOfEdge(const RowPart& row, const Source& source, const Pair& pair, Edge& edge) const;

    Size m_size;
    double m_x = 0.0, m_y = 0.0;
    WarpSpan m_columns = {0, 0}, m_rows = {0, 0}; ///< what lies over something
    int m_column = 0, m_line = 0;
    int m_right = 0, m_below = 0; ///< the rest of the way, in 256ths
    float m_rightFloat = 0.0f, m_belowFloat = 0.0f;
    bool m_floats = false, m_isServed = false, m_reaches = false;
};

} // namespace kelmora::smear

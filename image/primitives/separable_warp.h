#pragma once

#include <cstdint>

#include "image/primitives/warp_kernels.h"

namespace kelmora {

/// A picture seen through an affine map without rotation, row by row, with linear interpolation and four values
/// per pixel: its columns are interpolated once per source row, which two rows of the result share as a rule.
/// Effects take rows from here where a whole warped picture would only be mixed into another one.
class SeparableWarp {
public:
    /// Whether the map is of this kind and the picture within what the loops can address.
    static bool Serves(const AffineMap& map, const WarpImage& src);

    /// Working space for rows of `columns` pixels, of bytes or floats.
    static std::int64_t WorkBytes(int columns, bool floats);

    /// work: WorkBytes, aligned to 64, for the pixels `columns` of every row that is asked for.
    SeparableWarp(const WarpImage& src, const AffineMap& map, WarpSpan columns, bool floats, void* work);

    /// The pixels of a row that the picture covers; empty for a row that it does not reach.
    WarpSpan Covered(int y) const;

    /// Writes the pixels Covered(y), which is not empty, to `dst`, the first of them. Rows are cheapest in order.
    void Row(int y, void* dst);

    /// From now on nobody reads rows before many others: long ones of floats may go past the caches.
    void RowsAreReadLater() { m_areReadLater = true; }

private:
    struct Place {
        int index;
        int weight; ///< of the pixel behind, in 256ths
        float weightFloat;
    };

    Place PlaceOf(double position, int low, int high) const;
    Place ShiftedPlace(int index, double shift, int low, int high) const;
    Place LineOf(int y) const;
    void MakeTable();
    const std::uint8_t* SourceRow(int line) const;
    void* AcrossOf(int line);
    void LerpAlongOneAxis(const Place& line, void* dst) const;

    const WarpKernels& m_kernels;
    WarpImage m_src;
    AffineMap m_map;
    WarpSpan m_columns; ///< covered
    bool m_floats;
    bool m_areReadLater = false;
    Place m_shift = {};     ///< of column 0, for a shift
    bool m_inSteps = false; ///< every covered column is one on from that of the pixel before, with one weight
    int m_firstLeft = 0;    ///< the first one then

    std::int32_t* m_left;
    void* m_weights;
    std::uint8_t* m_rows[2];
    int m_held[2];
};

} // namespace kelmora

#pragma once

#include <cstddef>
#include <cstdint>

#include "effects/fixing/crop_borders_plan.h"
#include "image/frame_buffer.h"
#include "image/memory_allocator.h"

namespace kelmora::crop_borders {

/// What is kept of a picture, and how soft its edge is: sizes of a blur in pixels.
struct Crop {
    Rect kept;
    float featherX, featherY;
};

/// Smaller pictures have no inside that a blur could start from.
inline constexpr int kLeastSide = 16;

/// First byte of a row of a picture that has pixels.
inline std::uint8_t* RowOf(const FrameBuffer& picture, int y)
{
    return picture.GetPixels() + std::ptrdiff_t{picture.GetStride()} * y;
}

/// The two styles with a soft edge as one pass over the rows of byte pictures, without a mask or any other scratch
/// picture: a blurred rectangle's rows differ in nothing but the level that they have inside, of which there are
/// 256, so a table of that many rows holds the whole mask.
class CropRows {
public:
    /// `src` and `dst` have one size and one byte format.
    CropRows(const FrameBuffer& src, FrameBuffer& dst, const Crop& crop);

    /// Whether the picture is one that the pass serves: bytes in whole pixels from row to row, not tiny, with the kept
    /// part inside.
    bool AreServed() const;

    /// Makes the table. False when there is no memory.
    bool Begin(MemoryAllocator& allocator);

    /// `dst` becomes the kept part, zoomed to the whole frame, where Overlay lets it be seen. False when there is no
    /// memory.
    bool ZoomGround();

    /// `dst`, which holds the ground, becomes the kept part with its soft edge over it. Alpha is the source's.
    void Overlay();

    /// `dst` becomes the kept part, extended, with its alpha times the mask.
    void Transparent();

private:
    using Word = std::uint32_t; // a pixel

    /// Where the levels of a row stand: in one byte of each word.
    struct MaskRow {
        const Word* words;
        int shift;
    };

    /// Columns from `first` to before `end`.
    struct Span {
        int first, end;
    };

    bool BlurLevels(MemoryAllocator& allocator);
    bool BlurTable(MemoryAllocator& allocator);
    int LevelOf(int y) const;
    MaskRow MaskOf(int y) const;
    Span FullColumns() const;
    void TakeExtended(int y, Span span);
    void Compose(void (CropRows::*compose)(int y, Span span));
    void OverlaySpan(int y, Span span);
    void TransparentSpan(int y, Span span);

    const FrameBuffer& m_src;
    FrameBuffer& m_dst;
    Crop m_crop;
    int m_width, m_height;
    int m_alphaShift;
    bool m_blurs;
    FrameBuffer m_levels; ///< a pixel of each row of the mask, all of which lie inside the kept columns
    FrameBuffer m_table;  ///< rows of the mask, by the level that they have inside
    FrameBuffer m_rows;   ///< working rows: extended, source, ground
};

} // namespace kelmora::crop_borders

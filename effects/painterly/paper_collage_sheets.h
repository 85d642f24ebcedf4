#pragma once

#include <array>
#include <cstdint>

#include "effects/painterly/paper_collage_plan.h"
#include "image/frame_buffer.h"
#include "image/memory_allocator.h"
#include "image/picture_check.h"
#include "image/scratch.h"

namespace kelmora {

/// What the sheets of a collage look like, but for their shapes.
struct PaperLook {
    std::uint32_t background; ///< 0x00BBGGRR
    std::uint32_t foreground;
    int blendColors;    ///< share of a sheet's average in its colour, in 255ths
    int shadowColour;   ///< share of the sheets' colours in their shadows, in 255ths
    int shadowDistance; ///< 0: no shadows
    paper_collage::Offset shadow;
    int shadowMargin; ///< what the canvas must be larger by on every side
};

/// Collects which sheet each pixel of a picture is on, row by row, then lays the sheets.
class PaperSheets {
public:
    /// count        sheets, 2 to 8
    /// sheetOf      the sheet of each grey
    PaperSheets(int count, const std::array<std::uint8_t, 256>& sheetOf);

    /// Working space for a picture of `size`. To be called once; false when there is none.
    bool Allocate(Size size, int shadowMargin, MemoryAllocator& allocator);

    /// Takes row y: `pixels` give the colours, byte 2 of `greys` the greys, both BGRA8.
    void AddRow(int y, const std::uint8_t* pixels, const std::uint8_t* greys);

    /// Paints the collage into the top left of `canvas`, BGRA8, once every row is in.
    void Lay(FrameBuffer& canvas, const PaperLook& look);

private:
    using Words = std::array<std::uint32_t, paper_collage::kMostLayers>;

    paper_collage::Colour AverageOf(int sheet) const;
    Words SheetColours(const PaperLook& look) const;
    Words ShadowColours(const Words& sheets, int share) const;
    void LayShadow(FrameBuffer& canvas, int sheet, paper_collage::Offset shadow, std::uint32_t colour);
    void MakeShadowRow(std::uint8_t* row, int y, int sheet, paper_collage::Offset shadow) const;
    void KeepMargins(const std::uint8_t* softRow, int y);

    std::uint8_t* SheetRow(int y) const { return m_sheets.Bytes() + std::ptrdiff_t{m_size.width} * y; }
    int GreyWidth() const { return m_size.width + 2 * m_margin; }
    std::uint8_t* GreyRow(int y) const
    {
        return m_grey.Bytes() + std::ptrdiff_t{GreyWidth()} * (y + m_margin);
    }

    /// Sums of the colours of the pixels on a sheet.
    struct Sums {
        std::int64_t count = 0, b = 0, g = 0, r = 0;
    };

    const int m_count;
    const std::array<std::uint8_t, 256> m_sheetOf;
    Size m_size;
    int m_margin = 0;
    Scratch m_sheets; ///< which sheet each pixel is on
    Scratch m_grey;   ///< the mask picture of the shadows: what its margins keep from sheet to sheet
    Scratch m_rows;   ///< three rows of it before they are softened, and one after
    std::array<Sums, paper_collage::kMostLayers> m_sums;
};

} // namespace kelmora

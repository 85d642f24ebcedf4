#pragma once

#include <array>
#include <cstdint>

#include "effects/painterly/paper_collage_kernels.h"
#include "effects/painterly/paper_collage_plan.h"
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
    /// sheetOf      the sheet of each grey: never below that of a darker one, and 0 for black
    PaperSheets(int count, const std::array<std::uint8_t, 256>& sheetOf);

    /// Working space for a picture of `size`. To be called once; false when there is none.
    bool Allocate(Size size, int shadowMargin, MemoryAllocator& allocator);

    /// Takes row y: `pixels` give the colours, byte 2 of `greys` the greys, both BGRA8.
    void AddRow(int y, const std::uint8_t* pixels, const std::uint8_t* greys);

    /// Paints the collage once every row is in: `takeRow` is called with (int y, const std::uint8_t* row) for each
    /// row, BGRA8, from the top down.
    template <class TakeRow>
    void Lay(const PaperLook& look, TakeRow&& takeRow)
    {
        Begin(look);
        for (int y = 0; y < m_size.height; ++y)
            takeRow(y, NextRow(y));
    }

private:
    static constexpr int kMostSheets = PaperKernels::kMostSheets;
    static_assert(kMostSheets == paper_collage::kMostLayers);

    struct Words {
        std::uint32_t of[kMostSheets] = {};
    };

    paper_collage::Colour AverageOf(int sheet) const;
    Words SheetColours(const PaperLook& look) const;
    Words ShadowColours(const Words& sheets, int share) const;
    void Begin(const PaperLook& look);
    const std::uint8_t* NextRow(int y);
    void LayRow(int y);
    void LayShadows(int y);
    void LayShadowRow(int sheet, int y);
    void MakeShadowRow(std::uint8_t* row, int y, int sheet) const;

    std::uint8_t* SheetRow(int y) const { return m_sheets.Bytes() + std::ptrdiff_t{m_size.width} * y; }
    std::uint8_t* CanvasRow(int y) const
    {
        return m_canvas.Bytes() + std::ptrdiff_t{m_size.width} * 4 * (y % m_count);
    }
    int GreyWidth() const { return m_size.width + 2 * m_margin; }
    /// A zero stands on both sides of a row.
    int GreyStep() const { return GreyWidth() + 2; }
    int FirstGrey() const { return -m_margin; }
    int EndOfGreys() const { return m_size.height + m_margin; }
    std::uint8_t* GreyRow(int sheet, int y) const
    {
        return m_greys.Bytes() + std::ptrdiff_t{GreyStep()} * (3 * sheet + (y - FirstGrey() + 3) % 3) + 1;
    }
    std::uint8_t* SoftRow() const { return m_greys.Bytes() + std::ptrdiff_t{GreyStep()} * 3 * m_count; }

    const int m_count;
    std::uint8_t m_limits[kMostSheets] = {}; ///< the brightest grey of each sheet, or of the one below
    Size m_size;
    int m_margin = 0;
    Scratch m_sheets; ///< which sheet each pixel is on
    Scratch m_greys;  ///< of each shadow's mask picture three rows before they are softened; one row after
    Scratch m_canvas; ///< rows that still wait for shadows
    PaperSums m_sums[kMostSheets];

    // While the sheets are laid.
    int m_step = 0; ///< the row of the lowest sheet's shadow, the one above's of the next, and so on
    bool m_hasShadows = false;
    paper_collage::Offset m_shadow = {};
    Words m_colours = {}, m_shadows = {};
};

} // namespace kelmora

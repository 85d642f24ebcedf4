#include "effects/painterly/paper_collage_sheets.h"

#include <algorithm>
#include <cstring>

#include "effects/painterly/paper_collage_kernels.h"
#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(PaperKernels, kPaperKernels, PaperKernelsFor)

namespace kelmora {

using namespace paper_collage;

namespace {

const PaperKernels& Kernels()
{
    return PaperKernelsFor(CurrentVariant());
}

std::uint32_t BgraWord(int first, int second, int third)
{
    return static_cast<std::uint32_t>(first | second << 8 | third << 16);
}

std::uint32_t BgraWord(const Colour& colour)
{
    return BgraWord(colour.b, colour.g, colour.r);
}

constexpr std::uint32_t kOpaque = 0xFF000000u;

} // namespace

PaperSheets::PaperSheets(int count, const std::array<std::uint8_t, 256>& sheetOf) : m_count(count)
{
    for (int grey = 0; grey < 256; ++grey)
        for (int sheet = sheetOf[static_cast<std::size_t>(grey)]; sheet < count; ++sheet)
            m_limits[sheet] = static_cast<std::uint8_t>(grey);
}

bool PaperSheets::Allocate(Size size, int shadowMargin, MemoryAllocator& allocator)
{
    m_size = size;
    // A canvas larger by the whole margin must be within what one picture may have. What is kept of it is what
    // can reach the picture: softening carries the margins' content inward by a pixel per sheet.
    const std::int64_t width = size.width + std::int64_t{2} * shadowMargin;
    const std::int64_t height = size.height + std::int64_t{2} * shadowMargin;
    if (width > (1 << 29) / height)
        return false;
    m_margin = std::min(shadowMargin, m_count);
    return m_sheets.Allocate(allocator, std::int64_t{size.width} * size.height)
        && m_greys.Allocate(allocator, std::int64_t{GreyStep()} * (3 * m_count + 1))
        && m_canvas.Allocate(allocator, std::int64_t{size.width} * 4 * m_count);
}

void PaperSheets::AddRow(int y, const std::uint8_t* pixels, const std::uint8_t* greys)
{
    Kernels().cut(greys, SheetRow(y), m_size.width, m_limits, m_count - 1);
    Kernels().add(pixels, SheetRow(y), m_size.width, m_sums);
}

Colour PaperSheets::AverageOf(int sheet) const
{
    const PaperSums& sums = m_sums[sheet];
    if (sums.count == 0)
        return {};
    const auto average = [&](std::int64_t sum) { return static_cast<int>(sum / sums.count); };
    return {average(sums.b), average(sums.g), average(sums.r)};
}

PaperSheets::Words PaperSheets::SheetColours(const PaperLook& look) const
{
    const Levels levels = LevelsFor(m_count);
    Words words = {};
    for (int i = 0; i < m_count; ++i) {
        const int level = levels.grey[static_cast<std::size_t>(i)];
        const Colour ramp = Mix(ColourOf(look.foreground), ColourOf(look.background), level);
        words.of[i] = BgraWord(Mix(AverageOf(i), ramp, look.blendColors));
    }
    return words;
}

PaperSheets::Words PaperSheets::ShadowColours(const Words& sheets, int share) const
{
    Words words = {};
    Colour shadow = {};
    for (int i = 0; i < m_count; ++i) {
        const std::uint32_t sheet = sheets.of[i];
        const Colour colour = {static_cast<int>(sheet & 255), static_cast<int>(sheet >> 8 & 255),
                               static_cast<int>(sheet >> 16 & 255)};
        shadow = Mix(colour, shadow, share);
        // Kept: red and blue change places on the way into the pixel. It shows while shadows have a colour.
        words.of[i] = BgraWord(shadow.r, shadow.g, shadow.b);
    }
    return words;
}

void PaperSheets::Begin(const PaperLook& look)
{
    const Words sheets = SheetColours(look);
    m_colours = sheets;
    for (std::uint32_t& word : m_colours.of)
        word |= kOpaque;
    m_shadows = ShadowColours(sheets, look.shadowColour);
    m_hasShadows = look.shadowDistance != 0;
    m_shadow = look.shadow;
    m_step = FirstGrey() - 1;
    // Above the first row lie zeros, and on both sides of each.
    std::memset(m_greys.Bytes(), 0,
                static_cast<std::size_t>(GreyStep()) * static_cast<std::size_t>(3 * m_count));
}

/// Row y of the canvas, finished. Shadows work their way down one behind the other, so that a row gets all of them
/// within a few steps: each reads a row of the one below it that was softened a moment ago.
const std::uint8_t* PaperSheets::NextRow(int y)
{
    if (!m_hasShadows) {
        LayRow(y);
        return CanvasRow(y);
    }
    for (; m_step < y + m_count; ++m_step) {
        if (m_step >= 0 && m_step < m_size.height)
            LayRow(m_step);
        LayShadows(m_step);
    }
    return CanvasRow(y);
}

/// The lowest sheet covers everything, and masks are nested: what shows of a pixel is its own sheet, under the
/// shadows of the higher ones.
void PaperSheets::LayRow(int y)
{
    Kernels().colour(SheetRow(y), CanvasRow(y), m_size.width, m_colours.of);
}

void PaperSheets::LayShadows(int y)
{
    for (int i = 0; i < m_count; ++i)
        if (y - i >= FirstGrey() - 1 && y - i < EndOfGreys())
            LayShadowRow(i, y - i);
}

/// One row of the mask picture with the shifted mask in it, over what the last shadow left there: its softened row.
// Kept: where that does not reach, the sheet below it is still there, and beyond the picture what was left of the
// last shadow. So a dark band runs along the two edges that shadows fall away from.
void PaperSheets::MakeShadowRow(std::uint8_t* row, int y, int sheet) const
{
    const int width = m_size.width, margin = m_margin;
    const auto keep = [&](int begin, int end) {
        const auto bytes = static_cast<std::size_t>(end - begin);
        if (sheet == 0)
            std::memset(row + begin, 0, bytes);
        else
            std::memcpy(row + begin, SoftRow() + begin, bytes);
    };
    const bool inside = y >= 0 && y < m_size.height;
    keep(0, inside ? margin : GreyWidth());
    if (inside)
        keep(margin + width, GreyWidth());
    const int from = y - m_shadow.y;
    const bool reached = from >= 0 && from < m_size.height;
    const int left = std::clamp(m_shadow.x, -margin, width + margin);
    const int right = reached ? std::clamp(m_shadow.x + width, left, width + margin) : left;
    if (inside) {
        const auto leave = [&](int begin, int end) {
            begin = std::max(begin, 0);
            end = std::min(end, width);
            if (begin >= end)
                return;
            if (sheet == 0)
                std::memset(row + margin + begin, 0, static_cast<std::size_t>(end - begin));
            else
                Kernels().mask(SheetRow(y) + begin, row + margin + begin, end - begin, sheet - 1);
        };
        leave(0, left);
        leave(right, width);
    }
    if (reached && right > left)
        Kernels().mask(SheetRow(from) + (left - m_shadow.x), row + margin + left, right - left, sheet);
}

/// Lays row y of a sheet's shadow, and makes the next row of its mask picture.
void PaperSheets::LayShadowRow(int sheet, int y)
{
    std::uint8_t* const next = GreyRow(sheet, y + 1);
    if (y + 1 < EndOfGreys())
        MakeShadowRow(next, y + 1, sheet);
    else
        std::memset(next, 0, static_cast<std::size_t>(GreyWidth()));
    if (y < FirstGrey())
        return;
    const std::uint8_t* const above = GreyRow(sheet, y - 1);
    const std::uint8_t* const middle = GreyRow(sheet, y);
    const auto soften = [&](int begin, int end) {
        Kernels().soften(above + begin, middle + begin, next + begin, SoftRow() + begin, end - begin);
    };
    if (y < 0 || y >= m_size.height) {
        soften(0, GreyWidth());
        return;
    }
    // Inside the picture no later shadow looks at it.
    soften(0, m_margin);
    soften(m_margin + m_size.width, GreyWidth());
    Kernels().shade({CanvasRow(y), SheetRow(y), above + m_margin, middle + m_margin, next + m_margin,
                     m_size.width, sheet, m_shadows.of[sheet]});
}

} // namespace kelmora

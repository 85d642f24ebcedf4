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

PaperSheets::PaperSheets(int count, const std::array<std::uint8_t, 256>& sheetOf)
    : m_count(count), m_sheetOf(sheetOf)
{
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
    const std::int64_t greyBytes = std::int64_t{GreyWidth()} * (size.height + 2 * m_margin);
    if (!m_sheets.Allocate(allocator, std::int64_t{size.width} * size.height)
        || !m_grey.Allocate(allocator, greyBytes)
        || !m_rows.Allocate(allocator, std::int64_t{4} * GreyWidth()))
        return false;
    std::memset(m_grey.Bytes(), 0, static_cast<std::size_t>(greyBytes));
    return true;
}

void PaperSheets::AddRow(int y, const std::uint8_t* pixels, const std::uint8_t* greys)
{
    // Sums of a stretch side by side in one word, in two sets: neighbours are mostly on the same sheet, and a sum
    // must not wait for the one before it.
    constexpr int kStretch = 4096; // of so many pixels a colour's sum fits 21 bits
    std::uint8_t* sheets = SheetRow(y);
    for (int first = 0; first < m_size.width; first += kStretch) {
        std::uint64_t sums[2][kMostLayers] = {};
        std::uint32_t counts[2][kMostLayers] = {};
        const int end = std::min(first + kStretch, m_size.width);
        for (int x = first; x < end; ++x) {
            const std::uint8_t* pixel = pixels + std::ptrdiff_t{4} * x;
            const std::uint8_t sheet = m_sheetOf[greys[std::ptrdiff_t{4} * x + 2]];
            sheets[x] = sheet;
            sums[x & 1][sheet] += pixel[0] | static_cast<std::uint64_t>(pixel[1]) << 21
                | static_cast<std::uint64_t>(pixel[2]) << 42;
            ++counts[x & 1][sheet];
        }
        constexpr std::uint64_t mask = (1u << 21) - 1;
        for (std::size_t i = 0; i < kMostLayers; ++i) {
            for (int set = 0; set < 2; ++set) {
                m_sums[i].count += counts[set][i];
                m_sums[i].b += static_cast<std::int64_t>(sums[set][i] & mask);
                m_sums[i].g += static_cast<std::int64_t>(sums[set][i] >> 21 & mask);
                m_sums[i].r += static_cast<std::int64_t>(sums[set][i] >> 42);
            }
        }
    }
}

Colour PaperSheets::AverageOf(int sheet) const
{
    const Sums& sums = m_sums[static_cast<std::size_t>(sheet)];
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
        const auto at = static_cast<std::size_t>(i);
        const Colour ramp = Mix(ColourOf(look.foreground), ColourOf(look.background), levels.grey[at]);
        words[at] = BgraWord(Mix(AverageOf(i), ramp, look.blendColors));
    }
    return words;
}

PaperSheets::Words PaperSheets::ShadowColours(const Words& sheets, int share) const
{
    Words words = {};
    Colour shadow = {};
    for (std::size_t i = 0; i < static_cast<std::size_t>(m_count); ++i) {
        const std::uint32_t sheet = sheets[i];
        const Colour colour = {static_cast<int>(sheet & 255), static_cast<int>(sheet >> 8 & 255),
                               static_cast<int>(sheet >> 16 & 255)};
        shadow = Mix(colour, shadow, share);
        // Kept: red and blue change places on the way into the pixel. It shows while shadows have a colour.
        words[i] = BgraWord(shadow.r, shadow.g, shadow.b);
    }
    return words;
}

void PaperSheets::Lay(FrameBuffer& canvas, const PaperLook& look)
{
    // The lowest sheet covers everything, and masks are nested: what shows of a pixel is its own sheet, under the
    // shadows of the higher ones.
    const Words sheets = SheetColours(look);
    Words opaque = sheets;
    for (std::uint32_t& word : opaque)
        word |= kOpaque;
    for (int y = 0; y < m_size.height; ++y)
        Kernels().colour(SheetRow(y), canvas.PixelAddress(0, y, 0), m_size.width, opaque.data());
    if (look.shadowDistance == 0)
        return;
    const Words shadows = ShadowColours(sheets, look.shadowColour);
    for (int i = 0; i < m_count; ++i)
        LayShadow(canvas, i, look.shadow, shadows[static_cast<std::size_t>(i)]);
}

/// One row of the mask picture with the shifted mask in it.
// Kept: where that does not reach, the sheet below it is still there, and beyond the picture what was left of the
// last shadow. So a dark band runs along the two edges that shadows fall away from.
void PaperSheets::MakeShadowRow(std::uint8_t* row, int y, int sheet, Offset shadow) const
{
    const int width = m_size.width, margin = m_margin;
    std::memcpy(row, GreyRow(y), static_cast<std::size_t>(GreyWidth()));
    const bool inside = y >= 0 && y < m_size.height;
    const int from = y - shadow.y;
    const bool reached = from >= 0 && from < m_size.height;
    const int left = std::clamp(shadow.x, -margin, width + margin);
    const int right = reached ? std::clamp(shadow.x + width, left, width + margin) : left;
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
        Kernels().mask(SheetRow(from) + (left - shadow.x), row + margin + left, right - left, sheet);
}

/// Keeps of a softened row what lies beyond the picture.
void PaperSheets::KeepMargins(const std::uint8_t* softRow, int y)
{
    const auto margin = static_cast<std::size_t>(m_margin), width = static_cast<std::size_t>(m_size.width);
    if (y < 0 || y >= m_size.height) {
        std::memcpy(GreyRow(y), softRow, width + 2 * margin);
        return;
    }
    std::memcpy(GreyRow(y), softRow, margin);
    std::memcpy(GreyRow(y) + margin + width, softRow + margin + width, margin);
}

void PaperSheets::LayShadow(FrameBuffer& canvas, int sheet, Offset shadow, std::uint32_t colour)
{
    const auto rowBytes = static_cast<std::size_t>(GreyWidth());
    std::uint8_t* rows[3];
    for (int i = 0; i < 3; ++i)
        rows[i] = m_rows.Bytes() + rowBytes * static_cast<std::size_t>(i);
    std::uint8_t* soft = m_rows.Bytes() + rowBytes * 3;

    const int first = -m_margin, end = m_size.height + m_margin;
    std::memset(rows[0], 0, rowBytes);
    MakeShadowRow(rows[1], first, sheet, shadow);
    for (int y = first; y < end; ++y) {
        if (y + 1 < end)
            MakeShadowRow(rows[2], y + 1, sheet, shadow);
        else
            std::memset(rows[2], 0, rowBytes);
        Kernels().soften(rows[0], rows[1], rows[2], soft, GreyWidth());
        KeepMargins(soft, y);
        if (y >= 0 && y < m_size.height)
            Kernels().shade(canvas.PixelAddress(0, y, 0), SheetRow(y), soft + m_margin, m_size.width, sheet,
                            colour);
        std::rotate(rows, rows + 1, rows + 3);
    }
}

} // namespace kelmora

#include "effects/fixing/crop_borders_rows.h"

#include <algorithm>
#include <cstring>

#include "effects/common/frame.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/primitives/row_kernels.h"

namespace kelmora::crop_borders {
namespace {

/// Smaller pictures have no inside that a blur could start from.
constexpr int kLeastSide = 16;

/// Rows and columns that a blur loses at every edge.
constexpr int kLost = 2;

/// First byte of a row of a picture that has pixels.
std::uint8_t* RowOf(const FrameBuffer& picture, int y)
{
    return picture.GetPixels() + std::ptrdiff_t{picture.GetStride()} * y;
}

constexpr int kLevelColumns = 8;
constexpr int kTableRows = 256 / 4; ///< four levels to a pixel

} // namespace

CropRows::CropRows(const FrameBuffer& src, FrameBuffer& dst, const Crop& crop)
    : m_src(src), m_dst(dst), m_crop(crop), m_width(src.GetWidth()), m_height(src.GetHeight()),
      m_alphaShift(AlphaIndex(src.GetFormat()) * 8), m_blurs(crop.featherX >= 1.0f && crop.featherY >= 1.0f)
{
}

bool CropRows::AreServed() const
{
    const Rect& kept = m_crop.kept;
    return IsByteColour(m_src.GetFormat()) && HasWholePixelRows(m_src) && HasWholePixelRows(m_dst)
        && m_width >= kLeastSide && m_height >= kLeastSide && kept.left >= 0 && kept.left < kept.right
        && kept.right <= m_width && kept.top >= 0 && kept.top < kept.bottom && kept.bottom <= m_height
        && 2 * kept.left < m_width && 2 * kept.top < m_height;
}

bool CropRows::Begin(MemoryAllocator& allocator)
{
    return BlurLevels(allocator) && BlurTable(allocator)
        && m_rows.Allocate(m_width, 3, 4, &allocator, PF_BGRA8, false);
}

/// The mask's middle column.
bool CropRows::BlurLevels(MemoryAllocator& allocator)
{
    ImageOps ops;
    if (!m_levels.Allocate(kLevelColumns, m_height, 4, &allocator, PF_BGRA8, false))
        return false;
    for (int y = 0; y < m_height; ++y)
        std::memset(RowOf(m_levels, y), y >= m_crop.kept.top && y < m_crop.kept.bottom ? 255 : 0,
                    kLevelColumns * 4);
    return !m_blurs || ops.Blur(m_levels, m_levels, 1.0f, m_crop.featherY, &allocator, true);
}

/// Level v inside stands in channel v % 4 of row v / 4, below the rows that a blur loses.
bool CropRows::BlurTable(MemoryAllocator& allocator)
{
    ImageOps ops;
    if (!m_table.Allocate(m_width, kTableRows + 2 * kLost, 4, &allocator, PF_BGRA8, false))
        return false;
    for (int row = 0; row < m_table.GetHeight(); ++row) {
        const int level = std::clamp(row - kLost, 0, kTableRows - 1) * 4;
        const std::uint8_t pixel[4] = {static_cast<std::uint8_t>(level), static_cast<std::uint8_t>(level + 1),
                                       static_cast<std::uint8_t>(level + 2),
                                       static_cast<std::uint8_t>(level + 3)};
        std::uint8_t* const to = RowOf(m_table, row);
        std::memset(to, 0, static_cast<std::size_t>(m_width) * 4);
        for (int x = m_crop.kept.left; x < m_crop.kept.right; ++x)
            std::memcpy(to + std::ptrdiff_t{x} * 4, pixel, 4);
    }
    if (m_blurs && !ops.Blur(m_table, m_table, m_crop.featherX, 1.0f, &allocator, true))
        return false;
    for (int row = 0; row < m_table.GetHeight(); ++row) { // the frame's own edge is not feathered
        std::uint8_t* const to = RowOf(m_table, row);
        std::memcpy(to, to + 4, 4);
        std::memcpy(to + std::ptrdiff_t{m_width - 1} * 4, to + std::ptrdiff_t{m_width - 2} * 4, 4);
    }
    return true;
}

CropRows::MaskRow CropRows::MaskOf(int y) const
{
    const int inside = std::clamp(y, 1, m_height - 2); // nor at the top and the bottom
    const int level = RowOf(m_levels, inside)[kLevelColumns / 2 * 4];
    return {reinterpret_cast<const Word*>(RowOf(m_table, kLost + level / 4)), level % 4 * 8};
}

/// The kept part's row, its edge pixels in the margins, into the first working row; the source's into the second.
void CropRows::TakeExtended(int y)
{
    const std::size_t bytes = static_cast<std::size_t>(m_width) * 4;
    const int left = m_crop.kept.left, top = m_crop.kept.top;
    auto* const extended = reinterpret_cast<Word*>(RowOf(m_rows, 0));
    std::memcpy(extended, RowOf(m_src, std::clamp(y, top, m_height - top - 1)), bytes);
    std::fill_n(extended, left, extended[left]);
    std::fill_n(extended + m_width - left, left, extended[m_width - left - 1]);
    std::memcpy(RowOf(m_rows, 1), RowOf(m_src, y), bytes);
}

void CropRows::Overlay()
{
    const std::size_t bytes = static_cast<std::size_t>(m_width) * 4;
    const Word alpha = Word{255} << m_alphaShift;
    const int alphaShift = m_alphaShift;
    const RowKernels& kernels = RowKernelsFor(CurrentVariant());
    const auto over = IsAlphaFirst(m_src.GetFormat()) ? kernels.overArgb : kernels.overBgra;
    auto* const extended = reinterpret_cast<Word*>(RowOf(m_rows, 0));
    const auto* const source = reinterpret_cast<const Word*>(RowOf(m_rows, 1));
    auto* const ground = reinterpret_cast<Word*>(RowOf(m_rows, 2));
    for (int y = 0; y < m_height; ++y) {
        TakeExtended(y);
        std::memcpy(ground, RowOf(m_dst, y), bytes);
        const MaskRow mask = MaskOf(y);
        for (int x = 0; x < m_width; ++x) {
            extended[x] = (extended[x] & ~alpha) | ((mask.words[x] >> mask.shift) & 255) << alphaShift;
            ground[x] |= alpha;
        }
        over({extended, ground, ground, m_width});
        for (int x = 0; x < m_width; ++x)
            ground[x] = (ground[x] & ~alpha) | (source[x] & alpha);
        std::memcpy(RowOf(m_dst, y), ground, bytes);
    }
}

void CropRows::Transparent()
{
    const std::size_t bytes = static_cast<std::size_t>(m_width) * 4;
    const Word alpha = Word{255} << m_alphaShift;
    const int alphaShift = m_alphaShift;
    auto* const extended = reinterpret_cast<Word*>(RowOf(m_rows, 0));
    const auto* const source = reinterpret_cast<const Word*>(RowOf(m_rows, 1));
    for (int y = 0; y < m_height; ++y) {
        TakeExtended(y);
        const MaskRow mask = MaskOf(y);
        for (int x = 0; x < m_width; ++x) {
            const Word product = ((source[x] >> alphaShift) & 255) * ((mask.words[x] >> mask.shift) & 255);
            const Word level = ((product + (product >> 8) + 1) >> 8) & 255; // over 255, as composites divide
            extended[x] = (extended[x] & ~alpha) | level << alphaShift;
        }
        std::memcpy(RowOf(m_dst, y), extended, bytes);
    }
}

} // namespace kelmora::crop_borders

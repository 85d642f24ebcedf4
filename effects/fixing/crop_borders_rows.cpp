#include "effects/fixing/crop_borders_rows.h"

#include <algorithm>
#include <cstring>

#include "effects/common/frame.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/primitives/resize.h"
#include "image/primitives/row_kernels.h"

namespace kelmora::crop_borders {
namespace {

/// Rows and columns that a blur loses at every edge.
constexpr int kLost = 2;

/// Gives `first` the mask's levels as its alpha, and `second` a full one. No two of the rows overlap.
void SetAlphas(std::uint32_t* __restrict first, std::uint32_t* __restrict second,
               const std::uint32_t* __restrict mask, int maskShift, int alphaShift, int count)
{
    const std::uint32_t alpha = 255u << alphaShift;
    for (int x = 0; x < count; ++x)
        first[x] = (first[x] & ~alpha) | ((mask[x] >> maskShift) & 255) << alphaShift;
    for (int x = 0; x < count; ++x)
        second[x] |= alpha;
}

/// Gives `to` the alpha of `from`.
void TakeAlphas(const std::uint32_t* __restrict from, std::uint32_t* __restrict to, int alphaShift, int count)
{
    const std::uint32_t alpha = 255u << alphaShift;
    for (int x = 0; x < count; ++x)
        to[x] = (to[x] & ~alpha) | (from[x] & alpha);
}

/// Gives `to` the alpha of `from` times the mask's level, over 255 as composites divide.
void MultiplyAlphas(const std::uint32_t* __restrict from, std::uint32_t* __restrict to,
                    const std::uint32_t* __restrict mask, int maskShift, int alphaShift, int count)
{
    const std::uint32_t alpha = 255u << alphaShift;
    for (int x = 0; x < count; ++x) {
        const std::uint32_t product = ((from[x] >> alphaShift) & 255) * ((mask[x] >> maskShift) & 255);
        const std::uint32_t level = ((product + (product >> 8) + 1) >> 8) & 255;
        to[x] = (to[x] & ~alpha) | level << alphaShift;
    }
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
        && m_width >= kLeastSide && m_height >= kLeastSide && LiesInside(kept, m_width, m_height)
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

int CropRows::LevelOf(int y) const
{
    const int inside = std::clamp(y, 1, m_height - 2); // nor at the top and the bottom
    return RowOf(m_levels, inside)[kLevelColumns / 2 * 4];
}

CropRows::MaskRow CropRows::MaskOf(int y) const
{
    const int level = LevelOf(y);
    return {reinterpret_cast<const Word*>(RowOf(m_table, kLost + level / 4)), level % 4 * 8};
}

/// Where the rows that are full inside hide the ground. A blurred rectangle rises once and falls once.
CropRows::Span CropRows::FullColumns() const
{
    const std::uint8_t* const full = RowOf(m_table, kLost + kTableRows - 1) + 3;
    Span span = {0, m_width};
    while (span.first < span.end && full[std::ptrdiff_t{span.first} * 4] != 255)
        ++span.first;
    while (span.first < span.end && full[std::ptrdiff_t{span.end - 1} * 4] != 255)
        --span.end;
    return span;
}

bool CropRows::ZoomGround()
{
    const Span columns = FullColumns();
    int top = 0, bottom = m_height;
    while (top < bottom && LevelOf(top) != 255)
        ++top;
    while (top < bottom && LevelOf(bottom - 1) != 255)
        --bottom;
    const Rect& kept = m_crop.kept;
    const PxRect region = {0, 0, kept.right - kept.left, kept.bottom - kept.top};
    return pxResizeAround_8u_C4(m_src.PixelAddress(kept.left, kept.top, 0), region.width, region.height,
                                m_src.GetStride(), region, m_dst.GetPixels(), m_dst.GetStride(), m_width,
                                m_height, static_cast<double>(m_width) / region.width,
                                static_cast<double>(m_height) / region.height, pxCubic,
                                {columns.first, top, columns.end - columns.first, bottom - top})
        == pxOk;
}

/// Columns of the kept part's row, its edge pixels in the margins, into the first working row; the source's into
/// the second.
void CropRows::TakeExtended(int y, Span span)
{
    const int left = m_crop.kept.left, right = m_width - left, top = m_crop.kept.top;
    const std::uint8_t* const row = RowOf(m_src, std::clamp(y, top, m_height - top - 1));
    auto* const extended = reinterpret_cast<Word*>(RowOf(m_rows, 0));
    const auto fill = [&](int first, int end, int from) {
        Word edge;
        std::memcpy(&edge, row + std::ptrdiff_t{from} * 4, sizeof edge);
        if (first < end)
            std::fill(extended + first - span.first, extended + end - span.first, edge);
    };
    const int first = std::max(span.first, left), end = std::min(span.end, right);
    if (first < end)
        std::memcpy(extended + first - span.first, row + std::ptrdiff_t{first} * 4,
                    static_cast<std::size_t>(end - first) * 4);
    fill(span.first, std::min(span.end, left), left);
    fill(std::max(span.first, right), span.end, right - 1);
    std::memcpy(RowOf(m_rows, 1), RowOf(m_src, y) + std::ptrdiff_t{span.first} * 4,
                static_cast<std::size_t>(span.end - span.first) * 4);
}

/// Copies what the mask leaves as it is, and has `compose` make the rest of every row.
void CropRows::Compose(void (CropRows::*compose)(int y, Span span))
{
    const Rect& kept = m_crop.kept;
    Span full = FullColumns();
    full = {std::max(full.first, kept.left), std::min(full.end, m_width - kept.left)};
    for (int y = 0; y < m_height; ++y) {
        if (LevelOf(y) != 255 || y < kept.top || y >= m_height - kept.top || full.first >= full.end) {
            (this->*compose)(y, {0, m_width});
            continue;
        }
        const std::ptrdiff_t at = std::ptrdiff_t{full.first} * 4;
        std::memcpy(RowOf(m_dst, y) + at, RowOf(m_src, y) + at,
                    static_cast<std::size_t>(full.end - full.first) * 4);
        (this->*compose)(y, {0, full.first});
        (this->*compose)(y, {full.end, m_width});
    }
}

void CropRows::Overlay()
{
    Compose(&CropRows::OverlaySpan);
}

void CropRows::Transparent()
{
    Compose(&CropRows::TransparentSpan);
}

/// The kept part's pixel of a row takes the mask's level as its alpha, the ground becomes opaque.
void CropRows::OverlaySpan(int y, Span span)
{
    const RowKernels& kernels = RowKernelsFor(CurrentVariant());
    const auto over = IsAlphaFirst(m_src.GetFormat()) ? kernels.overArgb : kernels.overBgra;
    const int count = span.end - span.first;
    const std::ptrdiff_t at = std::ptrdiff_t{span.first} * 4;
    const auto bytes = static_cast<std::size_t>(count) * 4;
    TakeExtended(y, span);
    auto* const extended = reinterpret_cast<Word*>(RowOf(m_rows, 0));
    auto* const ground = reinterpret_cast<Word*>(RowOf(m_rows, 2));
    std::memcpy(ground, RowOf(m_dst, y) + at, bytes);
    const MaskRow mask = MaskOf(y);
    SetAlphas(extended, ground, mask.words + span.first, mask.shift, m_alphaShift, count);
    over({extended, ground, ground, count});
    TakeAlphas(reinterpret_cast<const Word*>(RowOf(m_rows, 1)), ground, m_alphaShift, count);
    std::memcpy(RowOf(m_dst, y) + at, ground, bytes);
}

void CropRows::TransparentSpan(int y, Span span)
{
    const int count = span.end - span.first;
    TakeExtended(y, span);
    auto* const extended = reinterpret_cast<Word*>(RowOf(m_rows, 0));
    const MaskRow mask = MaskOf(y);
    MultiplyAlphas(reinterpret_cast<const Word*>(RowOf(m_rows, 1)), extended, mask.words + span.first,
                   mask.shift, m_alphaShift, count);
    std::memcpy(RowOf(m_dst, y) + std::ptrdiff_t{span.first} * 4, extended,
                static_cast<std::size_t>(count) * 4);
}

} // namespace kelmora::crop_borders

#include "effects/painterly/smear_tiles.h"

#include <algorithm>
#include <cmath>

#include "image/primitives/detail/first_where.h"

namespace kelmora::smear {
namespace {

constexpr std::int64_t kMarginShare = 12; ///< as many margins are wanted of one: the work on both is lost

} // namespace

Slant Slant::Along(double columns, double lines)
{
    constexpr double kMost = 1048576.0;
    Slant slant;
    slant.m_perLine = std::llrint(std::clamp(columns / lines, -kMost, kMost) * (1 << kFraction));
    return slant;
}

Tiles::Tiles(Size size, Slant slant, std::int64_t margin, int leastColumns)
    : m_size(size), m_slant(slant), m_margin(margin)
{
    const std::int64_t lead = slant.At(size.height - 1);
    const std::int64_t least = std::min<std::int64_t>(lead, 0), most = std::max<std::int64_t>(lead, 0);
    m_step = std::max<std::int64_t>(leastColumns, kMarginShare * margin);
    m_first = -margin - most;
    m_count = (size.width + most - least + m_step - 1) / m_step;
}

Columns Tiles::Part(const Tile& tile, int y, std::int64_t margin) const
{
    const std::int64_t begin = tile.left + m_slant.At(y) + margin;
    const std::int64_t end = tile.left + m_slant.At(y) + m_step + 2 * m_margin - margin;
    const std::int64_t width = m_size.width;
    return {static_cast<int>(std::clamp<std::int64_t>(begin, 0, width)),
            static_cast<int>(std::clamp<std::int64_t>(end, 0, width))};
}

Tile Tiles::At(std::int64_t index) const
{
    Tile tile = {m_first + index * m_step, 0, 0};
    const bool fromLeft = m_slant.At(1) >= 0;
    const auto isBefore = [&](int y) { return All(tile, y).end <= 0; };
    const auto isBehind = [&](int y) { return All(tile, y).begin >= m_size.width; };
    tile.firstRow =
        px::FirstWhere(0, m_size.height, [&](int y) { return fromLeft ? !isBefore(y) : !isBehind(y); });
    tile.endRow =
        px::FirstWhere(0, m_size.height, [&](int y) { return fromLeft ? isBehind(y) : isBefore(y); });
    tile.endRow = std::max(tile.endRow, tile.firstRow);
    return tile;
}

Size Tiles::Most() const
{
    Size most = {static_cast<int>(std::min<std::int64_t>(m_step + 2 * m_margin, m_size.width)), 0};
    for (std::int64_t i = 0; i < m_count; ++i) {
        const Tile tile = At(i);
        most.height = std::max(most.height, tile.endRow - tile.firstRow);
    }
    return most;
}

} // namespace kelmora::smear

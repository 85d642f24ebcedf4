#include "image/primitives/separable_warp.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "image/primitives/detail/rounding.h"

namespace kelmora {
namespace {

constexpr std::int64_t RoundUp(std::int64_t value, std::int64_t step)
{
    return (value + step - 1) / step * step;
}

constexpr std::int64_t TableBytes(int columns)
{
    return RoundUp(columns, WarpKernels::kBlock) * 4;
}

constexpr std::int64_t RowBytes(int columns, bool floats)
{
    return RoundUp(columns, WarpKernels::kBlock)
        * (floats ? WarpKernels::kAcrossFloats : WarpKernels::kAcrossBytes);
}

} // namespace

bool SeparableWarp::Serves(const AffineMap& map, const WarpImage& src)
{
    constexpr int kMostPixels = std::numeric_limits<int>::max() / 512; // positions are held in 256ths
    return map.IsSeparable() && src.bounds.right < kMostPixels && src.bounds.bottom < kMostPixels;
}

std::int64_t SeparableWarp::WorkBytes(int columns, bool floats)
{
    return 2 * TableBytes(columns) + 2 * RowBytes(columns, floats);
}

SeparableWarp::SeparableWarp(const WarpImage& src, const AffineMap& map, WarpSpan columns, bool floats,
                             void* work)
    : m_kernels(WarpKernelsFor(CurrentVariant())), m_src(src), m_map(map),
      m_columns(InsideSpan(columns, map.xx, map.RowX(0), src.bounds.left - kWarpSlack,
                           src.bounds.right + kWarpSlack)),
      m_floats(floats), m_held{-1, -1}
{
    auto* at = static_cast<std::uint8_t*>(work);
    const int most = columns.end - columns.begin;
    m_left = reinterpret_cast<std::int32_t*>(at);
    m_weights = at += TableBytes(most);
    m_rows[0] = at += TableBytes(most);
    m_rows[1] = at + RowBytes(most, floats);
    if (m_columns.IsEmpty())
        return;
    if (m_map.isShift)
        m_shift = ShiftedPlace(0, m_map.x0, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());

    if (m_map.isShift) {
        // Floats whose positions were cut have a weight of their own. Bytes at the ends have none to cut.
        const int first = m_columns.begin + m_shift.index, last = m_columns.end - 1 + m_shift.index;
        m_inSteps = first >= src.bounds.left && last <= src.bounds.right
            && (last < src.bounds.right || m_shift.weightFloat == 0.0f);
        m_firstLeft = first;
    }
    if (!m_inSteps)
        MakeTable();
}

void SeparableWarp::MakeTable()
{
    const int count = m_columns.end - m_columns.begin;
    const WarpBounds& bounds = m_src.bounds;
    Place place = {};
    for (int i = 0; i < RoundUp(count, WarpKernels::kBlock); ++i) {
        const int x = m_columns.begin + i;
        if (i < count) // what fills the last block up repeats its last pixel
            place = m_map.isShift ? ShiftedPlace(x, m_map.x0, bounds.left, bounds.right)
                                  : PlaceOf(m_map.X(x, m_map.RowX(0)), bounds.left, bounds.right);
        m_left[i] = place.index;
        if (m_floats)
            static_cast<float*>(m_weights)[i] = place.weightFloat;
        else
            std::memset(static_cast<std::uint8_t*>(m_weights) + 4 * i, place.weight, 4);
    }
}

SeparableWarp::Place SeparableWarp::PlaceOf(double position, int low, int high) const
{
    position = std::clamp(position, static_cast<double>(low), static_cast<double>(high));
    if (m_floats) {
        const int index = static_cast<int>(position);
        return {index, 0, static_cast<float>(position - index)};
    }
    const int fixed = static_cast<int>(px::RoundEven(position * 256.0));
    return {fixed >> 8, fixed & 255, 0.0f};
}

/// The fraction of a shift is the same everywhere, save at the ends, where positions are cut.
SeparableWarp::Place SeparableWarp::ShiftedPlace(int index, double shift, int low, int high) const
{
    int whole;
    Place place = {};
    if (m_floats) {
        const double floor = std::floor(shift);
        whole = static_cast<int>(floor);
        place.weightFloat = static_cast<float>(shift - floor);
    } else {
        const int fixed = static_cast<int>(px::RoundEven(shift * 256.0));
        whole = fixed >> 8;
        place.weight = fixed & 255;
    }
    place.index = index + whole;
    if (place.index < low)
        return {low, 0, 0.0f};
    if (place.index >= high)
        return {high, 0, 0.0f};
    return place;
}

SeparableWarp::Place SeparableWarp::LineOf(int y) const
{
    if (m_map.isShift)
        return ShiftedPlace(y, m_map.y0, m_src.bounds.top, m_src.bounds.bottom);
    return PlaceOf(m_map.Y(0, m_map.RowY(y)), m_src.bounds.top, m_src.bounds.bottom);
}

WarpSpan SeparableWarp::Covered(int y) const
{
    return m_src.bounds.HoldsY(m_map.Y(0, m_map.RowY(y))) ? m_columns : WarpSpan{0, 0};
}

const std::uint8_t* SeparableWarp::SourceRow(int line) const
{
    return static_cast<const std::uint8_t*>(m_src.pixels) + line * m_src.step;
}

/// A source row, interpolated across.
void* SeparableWarp::AcrossOf(int line)
{
    const int place = line & 1; // a row and the next one never compete
    if (m_held[place] == line)
        return m_rows[place];
    m_held[place] = line;

    AcrossRow across = {};
    across.row = SourceRow(line);
    across.out = m_rows[place];
    across.count = m_columns.end - m_columns.begin;
    across.lastColumn = m_src.bounds.right;
    across.left = m_left;
    across.weights = m_weights;
    across.ahead = m_map.yy < 0.0 ? -m_src.step : m_src.step;
    if (m_inSteps) {
        across.left = nullptr;
        across.firstLeft = m_firstLeft;
        across.shiftWeight = m_shift.weight;
        across.shiftWeightFloat = m_shift.weightFloat;
    }
    (m_floats ? m_kernels.acrossFloats : m_kernels.acrossBytes)(across);
    return m_rows[place];
}

/// Bytes of a shift along rows or along columns alone need one step, straight from the source.
void SeparableWarp::LerpAlongOneAxis(const Place& line, void* dst) const
{
    const int next = std::min(line.index + 1, m_src.bounds.bottom);
    LerpRow row = {};
    row.first = SourceRow(line.index) + static_cast<std::ptrdiff_t>(m_firstLeft) * 4;
    row.second =
        m_shift.weight != 0 ? row.first + 4 : SourceRow(next) + static_cast<std::ptrdiff_t>(m_firstLeft) * 4;
    row.dst = static_cast<std::uint8_t*>(dst);
    row.bytes = (m_columns.end - m_columns.begin) * 4;
    row.weight = m_shift.weight != 0 ? m_shift.weight : line.weight;
    m_kernels.lerpBytes(row);
}

void SeparableWarp::Row(int y, void* dst)
{
    const Place line = LineOf(y);
    if (m_inSteps && !m_floats && (m_shift.weight == 0 || line.weight == 0))
        return LerpAlongOneAxis(line, dst);
    const int next = std::min(line.index + 1, m_src.bounds.bottom);
    DownRow down = {};
    down.upper = AcrossOf(line.index);
    down.lower = AcrossOf(next);
    down.dst = dst;
    down.count = m_columns.end - m_columns.begin;
    down.weight = line.weight;
    down.weightFloat = line.weightFloat;
    down.isReadLater = m_areReadLater;
    (m_floats ? m_kernels.downFloats : m_kernels.downBytes)(down);
}

} // namespace kelmora

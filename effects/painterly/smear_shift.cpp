#include "effects/painterly/smear_shift.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "effects/painterly/smear_kernels.h"
#include "image/primitives/detail/rounding.h"
#include "image/primitives/detail/variant_table.h"
#include "image/primitives/row_kernels.h"
#include "image/primitives/separable_warp.h"

KELMORA_VARIANT_TABLE(SmearKernels, kSmearKernels, SmearKernelsFor)

namespace kelmora::smear {
namespace {

std::uint8_t* PixelOf(const RowPart& row, int column, int pixelBytes)
{
    return row.pixels + std::ptrdiff_t{column - row.begin} * pixelBytes;
}

/// A way in pixels, split into whole ones and the rest.
struct Split {
    int whole;
    int rest; ///< in 256ths
    float restFloat;
};

Split SplitOf(double way, bool floats)
{
    if (!floats) {
        const int fixed = static_cast<int>(px::RoundEven(way * 256.0));
        return {fixed >> 8, fixed & 255, 0.0f};
    }
    const double floor = std::floor(way);
    return {static_cast<int>(floor), 0, static_cast<float>(way - floor)};
}

} // namespace

/// The two rows that are read, and what there is of both.
struct Shift::Pair {
    const RowPart& upper;
    const RowPart& lower;
    int begin, end;

    Pair(const RowPart& above, const RowPart& below)
        : upper(above), lower(below), begin(below.pixels ? std::max(above.begin, below.begin) : above.begin),
          end(below.pixels ? std::min(above.end, below.end) : above.end)
    {
    }
};

/// The one pixel of a row whose position is cut to the frame, and what it becomes.
struct Shift::Edge {
    int column;
    alignas(16) std::uint8_t pixel[16];
};

Shift::Shift(const Transform2D& move, Size size, bool floats) : m_size(size), m_floats(floats)
{
    AffineMap map;
    const WarpImage image = {nullptr, 0, {0, 0, size.width - 1, size.height - 1}};
    m_isServed = InvertAffine(move.ToCoefficients().rows, map) == pxOk && map.isShift && !IsEmpty(size)
        && SeparableWarp::Serves(map, image);
    if (!m_isServed)
        return;
    m_x = map.x0;
    m_y = map.y0;
    m_columns = InsideSpan({0, size.width}, 1.0, m_x, -kWarpSlack, image.bounds.right + kWarpSlack);
    m_rows = InsideSpan({0, size.height}, 1.0, m_y, -kWarpSlack, image.bounds.bottom + kWarpSlack);
    m_reaches = !m_columns.IsEmpty() && !m_rows.IsEmpty();
    if (!m_reaches)
        return;
    const Split across = SplitOf(m_x, floats), down = SplitOf(m_y, floats);
    m_column = across.whole;
    m_right = across.rest;
    m_rightFloat = across.restFloat;
    m_line = down.whole;
    m_below = down.rest;
    m_belowFloat = down.restFloat;
}

bool Shift::IsLevel() const
{
    return m_floats ? m_y == 0.0 : std::fabs(m_y) < std::min(kWarpSlack, 1.0 / 512);
}

bool Shift::SourceOf(int y, Source& source) const
{
    if (!m_reaches || y < m_rows.begin || y >= m_rows.end)
        return false;
    const int line = y + m_line, last = m_size.height - 1;
    source = {std::clamp(line, 0, last), 0, m_below, m_belowFloat};
    if (line < 0 || line >= last) {
        source.below = 0;
        source.belowFloat = 0.0f;
    }
    source.lower = std::min(source.upper + 1, last);
    return true;
}

void Shift::HalvePart(const RowPart& row, int begin, int end) const
{
    if (begin >= end)
        return;
    const RowKernels& kernels = RowKernelsFor(CurrentVariant());
    std::uint8_t* const pixels = PixelOf(row, begin, m_floats ? 16 : 4);
    (m_floats ? kernels.halveFloats : kernels.halveBytes)(pixels, pixels, (end - begin) * 4);
}

void Shift::Halve(const RowPart& row) const
{
    HalvePart(row, row.begin, row.end);
}

/// Of columns whose left and right neighbours lie in the frame, and are at hand.
void Shift::MeanOfPart(const RowPart& row, int begin, int end, const Source& source, const Pair& pair) const
{
    const SmearKernels& kernels = SmearKernelsFor(CurrentVariant());
    const int bytes = m_floats ? 16 : 4;
    const bool looksBelow = pair.lower.pixels;
    SmearRow work = {};
    work.pixels = PixelOf(row, begin, bytes);
    work.upper = PixelOf(pair.upper, begin + m_column, bytes);
    work.lower = looksBelow ? PixelOf(pair.lower, begin + m_column, bytes) : nullptr;
    work.count = end - begin;
    work.backward = m_column < 0;
    work.right = m_right;
    work.below = source.below;
    work.rightFloat = m_rightFloat;
    work.belowFloat = source.belowFloat;
    (!m_floats ? kernels.meanBytes : looksBelow ? kernels.meanFloats : kernels.meanLevelFloats)(work);
}

/// False when the row has no such pixel, or what it comes of is not at hand.
bool Shift::MeanOfEdge(const RowPart& row, const Source& source, const Pair& pair, Edge& edge) const
{
    const int last = m_size.width - 1, bytes = m_floats ? 16 : 4;
    const int left = m_column < 0 ? 0 : last, right = std::min(left + 1, last);
    edge.column = m_column < 0 ? -1 - m_column : last - m_column;
    if (edge.column < std::max(row.begin, m_columns.begin) || edge.column >= std::min(row.end, m_columns.end)
        || left < pair.begin || right >= pair.end)
        return false;
    const auto size = static_cast<std::size_t>(bytes);
    alignas(16) std::uint8_t neighbours[2][2 * sizeof edge.pixel];
    const auto take = [&](const RowPart& from, std::uint8_t* to) {
        std::memcpy(to, PixelOf(from, left, bytes), size);
        std::memcpy(to + bytes, PixelOf(from, right, bytes), size);
    };
    const bool looksBelow = pair.lower.pixels;
    take(pair.upper, neighbours[0]);
    if (looksBelow)
        take(pair.lower, neighbours[1]);
    std::memcpy(edge.pixel, PixelOf(row, edge.column, bytes), size);
    SmearRow work = {};
    work.pixels = edge.pixel;
    work.upper = neighbours[0];
    work.lower = neighbours[1];
    work.count = 1;
    work.below = source.below;
    work.belowFloat = source.belowFloat;
    const SmearKernels& kernels = SmearKernelsFor(CurrentVariant());
    (!m_floats ? kernels.meanBytes : looksBelow ? kernels.meanFloats : kernels.meanLevelFloats)(work);
    return true;
}

void Shift::Average(const RowPart& row, const Source& source, const RowPart& upper,
                    const RowPart& lower) const
{
    const Pair pair(upper, lower);
    const int begin = std::max({row.begin, m_columns.begin, -m_column, pair.begin - m_column});
    const int end = std::min({row.end, m_columns.end, m_size.width - 1 - m_column, pair.end - 1 - m_column});
    Edge edge;
    const bool hasEdge = MeanOfEdge(row, source, pair, edge); // before what it comes of is replaced
    if (begin < end)
        MeanOfPart(row, begin, end, source, pair);
    HalvePart(row, row.begin, begin < end ? begin : row.end);
    HalvePart(row, begin < end ? end : row.end, row.end);
    if (hasEdge)
        std::memcpy(PixelOf(row, edge.column, m_floats ? 16 : 4), edge.pixel, m_floats ? 16 : 4);
}

} // namespace kelmora::smear

#include "effects/painterly/smear_streaks.h"

#include <algorithm>
#include <cstring>

#include "effects/common/frame.h"
#include "effects/painterly/smear_kernels.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"

namespace kelmora::smear {
namespace {

RowPart RowOf(const FrameBuffer& frame, int y)
{
    return {frame.PixelAddress(0, y, 0), 0, frame.GetWidth()};
}

/// Whether nothing but 0 comes of any row of the frame times 0.
bool IsOrdinary(const FrameBuffer& frame)
{
    if (!IsFloat(frame.GetFormat()))
        return true;
    const auto areOrdinary = SmearKernelsFor(CurrentVariant()).areOrdinary;
    for (int y = 0; y < frame.GetHeight(); ++y)
        if (!areOrdinary(frame.PixelAddress(0, y, 0), frame.GetWidth() * 4))
            return false;
    return true;
}

/// Rows that a shift is behind the one before it, so that it finds all that it reads as that one left it.
int LagOf(const Shift& shift)
{
    if (!shift.Reaches())
        return 0;
    return shift.IsUpward() ? std::max(-shift.Line(), 0) : shift.Line() + 1;
}

} // namespace

Transform2D StepAlong(double turn, double step)
{
    Transform2D move;
    move.Rotate(static_cast<float>(turn));
    move.Translate(static_cast<float>(step), 0.0f);
    move.Rotate(static_cast<float>(-turn));
    return move;
}

void AttachBand(FrameBuffer& band, const FrameBuffer& picture, int top, int rows)
{
    const int height = std::clamp(picture.GetHeight() - top, 0, rows);
    band.Attach(height > 0 ? picture.PixelAddress(0, top, 0) : nullptr, picture.GetWidth(), height,
                picture.GetStride(), picture.GetPixelBytes(), picture.GetFormat(), picture.IsBottomUp());
}

void AttachColumns(FrameBuffer& part, const FrameBuffer& picture, int left, int end)
{
    const int width = std::max(std::min(picture.GetWidth(), end) - left, 0);
    part.Attach(width > 0 ? picture.PixelAddress(left, 0, 0) : nullptr, width, picture.GetHeight(),
                picture.GetStride(), picture.GetPixelBytes(), picture.GetFormat(), picture.IsBottomUp());
}

void Place(const FrameBuffer& picture, FrameBuffer& frame)
{
    ImageOps ops;
    if (CommonSize(picture, frame) != SizeOf(frame))
        ops.Fill(frame, 0);
    ops.CopyRect(picture, 0, 0, frame.GetWidth(), frame.GetHeight(), frame, 0, 0);
}

// --- steps ----------------------------------------------------------------------------------------------

Steps::Steps(const Way& way, Size size, bool floats)
{
    Doublings doublings = way.doublings;
    for (; doublings.count > 0; --doublings.count, doublings.step *= 2) {
        Shift& shift = m_shifts[static_cast<std::size_t>(m_count++)];
        shift = Shift(StepAlong(way.turn, doublings.step), size, floats);
        m_areServed = m_areServed && shift.IsServed();
    }
}

std::int64_t Steps::Margin(Slant slant) const
{
    std::int64_t margin = 0;
    for (const Shift& shift : *this) {
        std::int64_t most = 0;
        for (int line = shift.Line(); shift.Reaches() && line <= shift.Line() + 1; ++line)
            for (int column = shift.Column(); column <= shift.Column() + 1; ++column)
                most = std::max({most, slant.At(line) + 1 - column, column - slant.At(line)});
        margin += most;
    }
    return margin;
}

// --- along the rows -------------------------------------------------------------------------------------

LevelStreak::LevelStreak(const Steps& steps) : m_steps(steps) {}

bool LevelStreak::Allocate(const FrameBuffer& like, Size size, MemoryAllocator& allocator)
{
    m_size = size;
    // A single move sees the row below, if only as often as never: what is infinite there shows.
    const int rows = m_steps.Count() == 1 ? kBandRows + 1 : kBandRows;
    return AllocateLike(m_memory, like, {size.width, std::min(rows, size.height)}, allocator);
}

FrameBuffer& LevelStreak::Band(const FrameBuffer& picture, int top)
{
    FrameBuffer source, frame;
    AttachBand(source, picture, top, m_memory.GetHeight());
    AttachBand(frame, m_memory, 0, m_size.height - top);
    Place(source, frame);
    Draw(frame);
    AttachBand(m_band, frame, 0, kBandRows);
    return m_band;
}

void LevelStreak::Draw(FrameBuffer& frame) const
{
    if (m_steps.Count() == 0)
        return;
    const int height = frame.GetHeight();
    if (IsOrdinary(frame)) {
        for (int y = 0; y < height; ++y) // all steps while the row is at hand
            for (const Shift& shift : m_steps)
                shift.Average(RowOf(frame, y), {}, RowOf(frame, y), {});
        return;
    }
    for (const Shift& shift : m_steps)
        for (int y = 0; y < height; ++y)
            shift.Average(RowOf(frame, y), {}, RowOf(frame, y), RowOf(frame, std::min(y + 1, height - 1)));
}

// --- across the rows ------------------------------------------------------------------------------------

bool SlantedStreak::Allocate(const FrameBuffer& like, MemoryAllocator& allocator)
{
    const Size most = m_tiles.Most();
    // Without a step, rows come one by one.
    return AllocateLike(m_memory, like, {most.width, m_steps.Count() > 0 ? most.height + 1 : 1}, allocator);
}

RowPart SlantedStreak::PartOf(int y) const
{
    if (y < m_tile.firstRow || y >= m_tile.endRow)
        return {};
    const Columns columns = m_tiles.All(m_tile, y);
    return {m_memory.PixelAddress(0, m_steps.Count() > 0 ? y - m_tile.firstRow : 0, 0), columns.begin,
            columns.end};
}

std::size_t SlantedStreak::BytesOf(const RowPart& row) const
{
    return static_cast<std::size_t>(row.end - row.begin) * static_cast<std::size_t>(m_memory.GetPixelBytes());
}

void SlantedStreak::Load(int y)
{
    const RowPart part = PartOf(y);
    if (!part.pixels)
        return;
    const RowPart there = {
        part.pixels, part.begin,
        y < m_picture->GetHeight() ? std::clamp(m_picture->GetWidth(), part.begin, part.end) : part.begin};
    if (there.begin < there.end)
        std::memcpy(there.pixels, m_picture->PixelAddress(there.begin, y, 0), BytesOf(there));
    std::memset(part.pixels + BytesOf(there), 0, BytesOf(part) - BytesOf(there));
}

void SlantedStreak::Average(const Shift& shift, int y)
{
    const RowPart row = PartOf(y);
    Shift::Source source;
    const bool hasSource = shift.SourceOf(y, source);
    const RowPart upper = hasSource ? PartOf(source.upper) : RowPart{};
    RowPart lower = hasSource ? PartOf(source.lower) : RowPart{};
    // Going upward, the first row may come of what would lie above it, and so of itself and, with no weight, of the
    // second one, as it was: what is infinite there shows.
    if (shift.IsUpward() && shift.Line() == -1 && lower.pixels) {
        std::uint8_t* const kept = m_memory.PixelAddress(0, m_memory.GetHeight() - 1, 0);
        if (y == 1)
            std::memcpy(kept, row.pixels, BytesOf(row));
        if (y == 0 && source.lower == 1)
            lower.pixels = kept;
    }
    if (upper.pixels && lower.pixels)
        shift.Average(row, source, upper, lower);
    else
        shift.Halve(row);
}

/// Row by row through all the steps, each as far behind the one before it as it has to be, so that what it reads is
/// still in the cache where that can be.
void SlantedStreak::Begin(const FrameBuffer& picture, const Tile& tile)
{
    m_picture = &picture;
    m_tile = tile;
    const int rows = tile.endRow - tile.firstRow;
    if (m_steps.Count() == 0)
        return;
    const bool upward = m_steps.begin()->IsUpward();
    const auto rowAt = [&](std::int64_t place) {
        return static_cast<int>(upward ? tile.endRow - 1 - place : tile.firstRow + place);
    };
    std::int64_t lags = 0;
    for (const Shift& shift : m_steps)
        lags += LagOf(shift);
    for (std::int64_t at = 0; at < rows + lags; ++at) {
        if (at < rows)
            Load(rowAt(at));
        std::int64_t place = at;
        for (const Shift& shift : m_steps)
            if (place -= LagOf(shift); place >= 0 && place < rows)
                Average(shift, rowAt(place));
    }
}

FrameBuffer& SlantedStreak::Row(int y)
{
    if (m_steps.Count() == 0)
        Load(y);
    const RowPart part = PartOf(y);
    const Columns wanted = m_tiles.Wanted(m_tile, y);
    const int bytes = m_memory.GetPixelBytes();
    m_row.Attach(part.pixels + std::ptrdiff_t{wanted.begin - part.begin} * bytes, wanted.end - wanted.begin,
                 1, m_memory.GetStride(), bytes, m_memory.GetFormat(), m_memory.IsBottomUp());
    return m_row;
}

} // namespace kelmora::smear

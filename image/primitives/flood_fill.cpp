#include "image/primitives/flood_fill.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/region.h"

namespace kelmora {
namespace {

using namespace px;

constexpr std::int64_t WorkingBytes(int width, int height)
{
    return 6 * (static_cast<std::int64_t>(width) * height) + 32;
}

constexpr bool IsServed(int width, int height)
{
    return static_cast<std::int64_t>(width) * height <= (std::numeric_limits<std::int32_t>::max() - 32) / 6;
}

// --- along a row ----------------------------------------------------------------------------------------------

/// The first place from `x` to before `end` that holds `value`, else `end`.
int FindValue(const std::uint8_t* row, int x, int end, std::uint8_t value)
{
    const void* found = std::memchr(row + x, value, static_cast<std::size_t>(end - x));
    return found ? static_cast<int>(static_cast<const std::uint8_t*>(found) - row) : end;
}

int FindValue(const LooseFloat* row, int x, int end, float value)
{
    while (x < end && !(row[x] == value))
        ++x;
    return x;
}

/// The first place from `x` to before `end` that holds another value, else `end`.
template <class T, class Value>
int EndOfValue(const T* row, int x, int end, Value value)
{
    while (x < end && row[x] == value)
        ++x;
    return x;
}

int EndOfValue(const std::uint8_t* row, int x, int end, std::uint8_t value)
{
    const std::uint64_t eight = 0x0101010101010101u * value;
    for (std::uint64_t word; end - x >= 8; x += 8) {
        std::memcpy(&word, row + x, sizeof word);
        if (word != eight)
            break;
    }
    return EndOfValue<std::uint8_t, std::uint8_t>(row, x, end, value);
}

// --- from row to row ------------------------------------------------------------------------------------------

/// Pixels of a row side by side that have been filled and whose neighbours above and below have not been seen.
struct Run {
    std::uint32_t first; ///< of all the plane's pixels, counted row after row
    std::uint32_t length;
};

/// A run is filled when it is found, so each comes into the working space once. Runs of a row have a pixel between
/// them: there are at most (width + 1) / 2 in each, 4 * (width + 1) bytes a row, for which 6 * width is enough from
/// 2 columns on. In a single column no more than two runs ever wait.
template <class T, class Value>
class Fill {
public:
    Fill(T* plane, int step, int width, int height, Value newValue, void* work)
        : m_plane(plane), m_step(step), m_width(width), m_height(height), m_newValue(newValue),
          m_waiting(static_cast<Run*>(work))
    {
    }

    PxFilledRegion From(int seedX, int seedY)
    {
        m_oldValue = Row(m_plane, m_step, seedY)[seedX];
        if (m_oldValue == m_newValue)
            return {};
        TakeRuns(seedY, seedX, seedX + 1);
        while (m_waitingCount > 0) {
            const Run run = m_waiting[--m_waitingCount];
            const auto y = static_cast<int>(run.first / static_cast<std::uint32_t>(m_width));
            const auto x = static_cast<int>(run.first % static_cast<std::uint32_t>(m_width));
            const int end = x + static_cast<int>(run.length);
            if (y > 0)
                TakeRuns(y - 1, x, end);
            if (y + 1 < m_height)
                TakeRuns(y + 1, x, end);
        }
        return Region();
    }

private:
    /// Fills every run that begins or goes on between `x` and `end`.
    void TakeRuns(int y, int x, int end)
    {
        T* row = Row(m_plane, m_step, y);
        while ((x = FindValue(row, x, end, m_oldValue)) < end) {
            int first = x;
            while (first > 0 && row[first - 1] == m_oldValue)
                --first;
            x = EndOfValue(row, x, m_width, m_oldValue);
            std::fill(row + first, row + x, m_newValue);
            Wait(y, first, x);
            if (x >= end)
                return;
        }
    }

    void Wait(int y, int first, int end)
    {
        const auto length = static_cast<std::uint32_t>(end - first);
        m_waiting[m_waitingCount++] = {static_cast<std::uint32_t>(y) * static_cast<std::uint32_t>(m_width)
                                           + static_cast<std::uint32_t>(first),
                                       length};
        m_pixels += length;
        m_left = std::min(m_left, first);
        m_right = std::max(m_right, end);
        m_top = std::min(m_top, y);
        m_bottom = std::max(m_bottom, y + 1);
    }

    PxFilledRegion Region() const
    {
        if (m_pixels == 0)
            return {};
        return {m_pixels, m_left, m_top, m_right - m_left, m_bottom - m_top};
    }

    T* const m_plane;
    const int m_step, m_width, m_height;
    const Value m_newValue;
    Value m_oldValue = {};
    Run* const m_waiting;
    std::size_t m_waitingCount = 0;
    std::int64_t m_pixels = 0;
    int m_left = std::numeric_limits<int>::max(), m_right = 0;
    int m_top = std::numeric_limits<int>::max(), m_bottom = 0;
};

template <class T, class Value>
PxStatus FloodFill(T* plane, int step, int width, int height, int seedX, int seedY, Value newValue,
                   PxFilledRegion* region, void* work)
{
    if (!work)
        return pxNullPointer;
    if (const PxStatus status = CheckRegions<C1, C1>(plane, step, plane, step, width, height))
        return status;
    if (!IsServed(width, height))
        return pxBadSize;
    if (seedX < 0 || seedY < 0 || seedX >= width || seedY >= height)
        return pxSeedOutside;
    const PxFilledRegion filled =
        Fill<T, Value>(plane, step, width, height, newValue, work).From(seedX, seedY);
    if (region)
        *region = filled;
    return pxOk;
}

} // namespace

PxStatus pxFloodFillSize(int width, int height, int* bytes)
{
    if (!bytes)
        return pxNullPointer;
    if (const PxStatus status = CheckSize(width, height))
        return status;
    if (!IsServed(width, height))
        return pxBadSize;
    *bytes = static_cast<int>(WorkingBytes(width, height));
    return pxOk;
}

PxStatus pxFloodFill_8u_C1(std::uint8_t* plane, int step, int width, int height, int seedX, int seedY,
                           std::uint8_t newValue, PxFilledRegion* region, void* work)
{
    return FloodFill(plane, step, width, height, seedX, seedY, newValue, region, work);
}

PxStatus pxFloodFill_32f_C1(float* plane, int step, int width, int height, int seedX, int seedY,
                            float newValue, PxFilledRegion* region, void* work)
{
    return FloodFill(Loose(plane), step, width, height, seedX, seedY, newValue, region, work);
}

} // namespace kelmora

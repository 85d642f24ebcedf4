#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>

#include "image/memory_allocator.h"
#include "image/scratch.h"
#include "image/tent_filter.h"

namespace kelmora {

/// A picture of which only some rows are kept, one below the other: a row is made when it is asked for first, and
/// gives its place to one further down.
///
/// MakeRow   called with (int y, std::uint8_t* row), for each y from 0 on, in that order
template <class MakeRow>
class RowRing final : public TentRowSource {
public:
    explicit RowRing(MakeRow makeRow) : m_makeRow(std::move(makeRow)) {}

    /// Room for `rows` of a picture's `height` rows, or for all if those are fewer. False when there is no memory.
    bool Allocate(MemoryAllocator& allocator, int rows, int height, std::int64_t rowBytes)
    {
        m_rows = std::min(rows, height);
        m_rowBytes = rowBytes;
        return m_memory.Allocate(allocator, m_rows * rowBytes);
    }

    /// Row `y`, which is further down than the last one made, or among the last that there is room for.
    const std::uint8_t* Row(int y) override
    {
        for (; m_made <= y; ++m_made)
            m_makeRow(m_made, Place(m_made));
        return Place(y);
    }

private:
    std::uint8_t* Place(int y) const { return m_memory.Bytes() + y % m_rows * m_rowBytes; }

    MakeRow m_makeRow;
    Scratch m_memory;
    int m_rows = 0;
    int m_made = 0; ///< rows so far
    std::int64_t m_rowBytes = 0;
};

} // namespace kelmora

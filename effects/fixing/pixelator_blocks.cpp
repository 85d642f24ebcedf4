#include "effects/fixing/pixelator_blocks.h"

#include <algorithm>
#include <cstdint>

#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/map.h"
#include "image/scratch.h"

namespace kelmora::pixelator {
namespace {

using px::LooseFloat;
using px::Word;

/// The blocks side by side, in pixels from the left one's first on.
struct Columns {
    int left = 0;  ///< in the picture
    int width = 0; ///< of all, as far as they lie in the picture
    int block = 0;
    int count = 0;

    int Begin(int i) const { return i * block; }
    int End(int i) const { return std::min(width - Begin(i), block) + Begin(i); }
};

Columns MakeColumns(BlockRange range, int block, int width)
{
    const int left = range.first * block;
    const auto right = static_cast<int>(std::min<std::int64_t>(std::int64_t{range.end} * block, width));
    return {left, right - left, block, range.end - range.first};
}

/// The averages of a row of blocks of byte pixels. Whole rows are summed first, columns of a block next: sums are
/// exact, so their order is free.
class ByteAverages {
public:
    using Channel = std::uint8_t;

    static std::int64_t WorkingBytes(const Columns& columns)
    {
        const std::int64_t pixelBytes = 4 * sizeof(std::uint16_t) + sizeof(Word);
        return columns.count * std::int64_t{4 * sizeof(std::uint64_t)} + columns.width * pixelBytes;
    }

    ByteAverages(const Columns& columns, int alpha, std::uint8_t* work)
        : m_columns(columns), m_values(std::ptrdiff_t{4} * columns.width), m_keep(Word{0xFF} << (8 * alpha)),
          m_sums(reinterpret_cast<std::uint64_t*>(work)),
          m_colours(reinterpret_cast<Word*>(m_sums + std::ptrdiff_t{4} * columns.count)),
          m_rowSums(reinterpret_cast<std::uint16_t*>(m_colours + columns.width))
    {
    }

    void Begin()
    {
        std::fill_n(m_sums, std::ptrdiff_t{4} * m_columns.count, 0u);
        std::fill_n(m_rowSums, m_values, std::uint16_t{0});
        m_rows = 0;
    }

    void Add(const std::uint8_t* row)
    {
        if (m_rows == kMostRows)
            Fold(1);
        AddRow(row, m_rowSums, m_values);
        ++m_rows;
    }

    void AddTimes(const std::uint8_t* row, int times)
    {
        Fold(1);
        AddRow(row, m_rowSums, m_values);
        Fold(static_cast<std::uint64_t>(times));
    }

    /// Once all rows are added, `rows` of them.
    void Divide(int rows)
    {
        Fold(1);
        for (int i = 0; i < m_columns.count; ++i) {
            const int begin = m_columns.Begin(i), end = m_columns.End(i);
            const std::uint64_t count =
                static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(end - begin);
            Word colour = 0;
            for (int c = 0; c < 4; ++c)
                colour |= static_cast<Word>(m_sums[4 * std::ptrdiff_t{i} + c] / count) << (8 * c);
            std::fill(m_colours + begin, m_colours + end, colour & ~m_keep);
        }
    }

    void Put(std::uint8_t* row) const
    {
        px::ZipPixelRow(reinterpret_cast<const std::uint8_t*>(m_colours), row, row, m_columns.width,
                        [keep = m_keep](Word colour, Word old) { return colour | (old & keep); });
    }

private:
    static constexpr int kMostRows = 257; ///< of 255 fill 16 bits

    static void AddRow(const std::uint8_t* __restrict row, std::uint16_t* __restrict sums,
                       std::ptrdiff_t values)
    {
        for (std::ptrdiff_t i = 0; i < values; ++i)
            sums[i] = static_cast<std::uint16_t>(sums[i] + row[i]);
    }

    /// The rows' sums into those of the blocks, and begin anew.
    void Fold(std::uint64_t times)
    {
        const std::uint16_t* from = m_rowSums;
        for (int i = 0; i < m_columns.count; ++i) {
            std::uint64_t sum[4] = {};
            for (int x = m_columns.Begin(i); x < m_columns.End(i); ++x, from += 4)
                for (int c = 0; c < 4; ++c)
                    sum[c] += from[c];
            for (int c = 0; c < 4; ++c)
                m_sums[4 * std::ptrdiff_t{i} + c] += times * sum[c];
        }
        std::fill_n(m_rowSums, m_values, std::uint16_t{0});
        m_rows = 0;
    }

    const Columns m_columns;
    const std::ptrdiff_t m_values;
    const Word m_keep;
    std::uint64_t* const m_sums;
    Word* const m_colours;
    std::uint16_t* const m_rowSums;
    int m_rows = 0;
};

/// The averages of a row of blocks of float pixels. Single precision rounds every sum, so pixels are added in the
/// order of rows, one by one.
class FloatAverages {
public:
    using Channel = LooseFloat;

    static std::int64_t WorkingBytes(const Columns& columns)
    {
        return (std::int64_t{columns.count} + columns.width) * 4 * std::int64_t{sizeof(float)};
    }

    FloatAverages(const Columns& columns, int alpha, std::uint8_t* work)
        : m_columns(columns), m_firstColour(alpha == 0 ? 1 : 0), m_sums(reinterpret_cast<float*>(work)),
          m_colours(m_sums + std::ptrdiff_t{4} * columns.count)
    {
    }

    void Begin() { std::fill_n(m_sums, std::ptrdiff_t{4} * m_columns.count, 0.0f); }

    void Add(const LooseFloat* row)
    {
        for (int i = 0; i < m_columns.count; ++i) {
            float* const sums = m_sums + 4 * std::ptrdiff_t{i};
            float sum[4] = {sums[0], sums[1], sums[2], sums[3]};
            for (int x = m_columns.Begin(i); x < m_columns.End(i); ++x, row += 4)
                for (int c = 0; c < 4; ++c)
                    sum[c] += row[c];
            std::copy_n(sum, 4, sums);
        }
    }

    void AddTimes(const LooseFloat* row, int times)
    {
        for (int i = 0; i < times; ++i)
            Add(row);
    }

    void Divide(int rows)
    {
        float* to = m_colours;
        for (int i = 0; i < m_columns.count; ++i) {
            const int width = m_columns.End(i) - m_columns.Begin(i);
            const auto count = static_cast<float>(static_cast<std::int64_t>(rows) * width);
            float colour[4];
            for (int c = 0; c < 4; ++c) {
                const float average = m_sums[4 * std::ptrdiff_t{i} + c] / count;
                colour[c] = average > 1.0f ? 1.0f : average;
            }
            for (int x = 0; x < width; ++x, to += 4)
                std::copy_n(colour, 4, to);
        }
    }

    void Put(LooseFloat* row) const
    {
        const float* from = m_colours + m_firstColour;
        LooseFloat* to = row + m_firstColour;
        for (int x = 0; x < m_columns.width; ++x, from += 4, to += 4)
            for (int c = 0; c < 3; ++c)
                to[c] = from[c];
    }

private:
    const Columns m_columns;
    const int m_firstColour;
    float* const m_sums;
    float* const m_colours;
};

template <class Averages>
bool Average(const FrameBuffer& src, FrameBuffer& dst, const Columns& columns, BlockRange rows,
             int blockHeight, MemoryAllocator& allocator)
{
    using Channel = typename Averages::Channel;
    Scratch work;
    if (!work.Allocate(allocator, Averages::WorkingBytes(columns)))
        return false;
    Averages averages(columns, AlphaIndex(src.GetFormat()), work.Bytes());
    const auto from = [&](int y) {
        return reinterpret_cast<const Channel*>(src.PixelAddress(columns.left, y, 0));
    };
    for (int i = rows.first; i < rows.end; ++i) {
        const int top = i * blockHeight, there = std::min(src.GetHeight() - top, blockHeight);
        averages.Begin();
        for (int y = top; y < top + there; ++y)
            averages.Add(from(y));
        // Kept: a block that reaches below the picture counts the last row once more for each row that it lacks.
        if (there < blockHeight)
            averages.AddTimes(from(top + there - 1), blockHeight - there);
        averages.Divide(blockHeight);
        for (int y = top; y < top + there; ++y)
            averages.Put(reinterpret_cast<Channel*>(dst.PixelAddress(columns.left, y, 0)));
    }
    return true;
}

} // namespace

bool Pixelate(const FrameBuffer& src, FrameBuffer& dst, float amount, bool halfHeight, const Ellipse& region,
              MemoryAllocator& allocator)
{
    const int width = src.GetWidth(), height = src.GetHeight(), bytes = PixelBytesOf(src.GetFormat());
    if (!IsPicture(src.GetFormat()) || dst.GetFormat() != src.GetFormat() || !Holds(src, width, bytes)
        || !Holds(dst, width, bytes) || dst.GetWidth() < width || dst.GetHeight() < height)
        return false;
    const BlockSize block = MakeBlockSize(amount, width, height, halfHeight);
    const BlockRange across = MakeBlockRange(region.centreX, region.radiusX, width, block.width);
    const BlockRange down = MakeBlockRange(region.centreY, region.radiusY, height, block.height);
    if (across.first >= across.end || down.first >= down.end)
        return true;
    const Columns columns = MakeColumns(across, block.width, width);
    const auto average = IsFloatColour(src.GetFormat()) ? Average<FloatAverages> : Average<ByteAverages>;
    return average(src, dst, columns, down, block.height, allocator);
}

} // namespace kelmora::pixelator

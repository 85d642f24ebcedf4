#include "image/tent_filter.h"

#include <algorithm>
#include <cstring>

#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/tent_kernels.h"
#include "image/scratch.h"
#include "image/tent_kernel.h"
#include "image/tent_scale.h"

namespace kelmora {
namespace {

bool AllocateTaps(Scratch& taps, const TentJob& job, std::int64_t bytes, MemoryAllocator& allocator)
{
    return job.plainTaps ? taps.AllocatePlain(allocator, bytes) : taps.Allocate(allocator, bytes);
}

TentScale ScaleFor(int taps, bool floats, bool truncate)
{
    if (!floats)
        return MakeByteScale(TentSum(taps), truncate);
    TentScale scale;
    scale.factor = 1.0 / static_cast<double>(TentSum(taps));
    return scale;
}

// --- the run ------------------------------------------------------------------------------------------

/// The rows of a picture in memory.
class PictureRows final : public TentRowSource {
public:
    explicit PictureRows(const FrameBuffer& picture) : m_picture(picture) {}
    const std::uint8_t* Row(int y) override { return m_picture.PixelAddress(0, y, 0); }

private:
    const FrameBuffer& m_picture;
};

/// The rows or columns that one direction works on.
struct TentRange {
    int first, last; ///< results
    int from, to;    ///< pixels that they are made of, and that count; those beyond are as these

    /// `first`, `last`: results that are wanted; `lastKept`: the last pixel that counts.
    TentRange(int firstWanted, int lastWanted, int lastKept, int taps)
        : first(firstWanted), last(lastWanted),
          from(std::clamp(first - (taps - 1 - taps / 2), TentJob::kFirstKept, lastKept)),
          to(std::clamp(last + taps / 2, TentJob::kFirstKept, lastKept))
    {
    }
};

/// One filter run: working space, and the block loop over it.
class TentRun {
public:
    TentRun(TentRowSource& src, bool floats, const TentJob& job)
        : m_src(src), m_job(job), m_part(job.Part()), m_columns(ColumnsOf(job)), m_lines(LinesOf(job)),
          m_readFrom(m_part.x == 0 ? 0 : m_columns.from),
          m_readWidth(std::max(m_columns.to + 1, m_part.x + m_part.size.width) - m_readFrom),
          m_floats(floats), m_kernels(TentKernelsFor(CurrentVariant())),
          m_blockRows(m_floats ? m_kernels.floatRows : m_kernels.byteRows),
          m_columnBytes(m_blockRows * PixelBytes()), m_columnTaps(TapsOf(job.columnTaps)),
          m_rowTaps(TapsOf(job.rowTaps)), m_columnScale(ScaleFor(job.columnTaps, m_floats, job.truncate)),
          m_rowScale(ScaleFor(job.rowTaps, m_floats, job.truncate))
    {
    }

    bool Allocate(MemoryAllocator& allocator)
    {
        const std::int64_t width = m_part.size.width;
        const std::int64_t values = (std::int64_t{m_readWidth} + kTentSpare) * 4;
        const std::int64_t slopeBytes = values * (m_floats ? 8 : 4);
        const std::int64_t sumBytes = values * (m_floats ? 8 : 4);
        m_rowStep = (width + kTentSpare) * PixelBytes();
        const std::int64_t turnedBytes = (LeftPad() + width + RightPad() + kTentSpare) * m_columnBytes;
        const std::int64_t longestRun = std::max(m_blockRows, StepsToFirstRow());
        const std::int64_t tapBytes = longestRun * 4 * static_cast<std::int64_t>(sizeof(const std::uint8_t*));
        return m_slope.Allocate(allocator, slopeBytes) && m_sum.Allocate(allocator, sumBytes)
            && m_turned.Allocate(allocator, turnedBytes)
            && m_rows.Allocate(allocator, m_rowStep * m_blockRows)
            && AllocateTaps(m_taps, m_job, tapBytes, allocator)
            && (!m_floats
                || AllocateTaps(m_kernel, m_job, std::int64_t{m_job.rowTaps + m_job.columnTaps} * 4,
                                allocator));
    }

    void Run(TentRowSink& sink)
    {
        const int last = m_lines.last;
        if (m_floats)
            MakeKernels();
        bool summable = MoveToFirstRow();
        for (int y = m_lines.first; y <= last; y += m_blockRows) {
            summable = summable && FilterBlock(y);
            if (!summable)
                FilterBlockAfresh(y);
            for (int r = 0; r < m_blockRows && y + r <= last; ++r)
                HandOut(sink, y + r, m_rows.Bytes() + m_rowStep * r);
        }
    }

private:
    static TentRange ColumnsOf(const TentJob& job)
    {
        const TentPart part = job.Part();
        return {part.x, part.x + part.size.width - 1, job.LastColumn(), job.rowTaps};
    }

    /// Rows that do not count are handed out as copies of the nearest that does.
    static TentRange LinesOf(const TentJob& job)
    {
        const TentPart part = job.Part();
        const auto kept = [&job](int y) { return std::clamp(y, TentJob::kFirstKept, job.LastRow()); };
        return {kept(part.y), kept(part.y + part.size.height - 1), job.LastRow(), job.columnTaps};
    }

    int PixelBytes() const { return m_floats ? 16 : 4; }
    /// Before the part's first column: what the first sum is made of, and the kernel once more.
    int LeftPad() const { return std::max(m_part.x - m_columns.from, 0) + m_job.rowTaps + 1; }
    int RightPad() const { return m_rowTaps.last; }
    /// `x`: from the picture's left.
    std::uint8_t* Turned(int x) const
    {
        return m_turned.Bytes() + std::int64_t{m_columnBytes} * (LeftPad() + x - m_part.x);
    }

    /// The row, or the nearest that the results are made of, from the first column that is read.
    const std::uint8_t* SourceRow(int y) const
    {
        return m_src.Row(std::clamp(y, m_lines.from, m_lines.to)) + std::ptrdiff_t{m_readFrom} * PixelBytes();
    }

    TentColumns ColumnJob(int firstRow, int steps)
    {
        auto** taps = reinterpret_cast<const std::uint8_t**>(m_taps.Bytes());
        for (int i = 0; i < steps; ++i) {
            taps[4 * i] = SourceRow(firstRow + i + m_columnTaps.first);
            taps[4 * i + 1] = SourceRow(firstRow + i + m_columnTaps.rise);
            taps[4 * i + 2] = SourceRow(firstRow + i + m_columnTaps.fall);
            taps[4 * i + 3] = SourceRow(firstRow + i + m_columnTaps.last);
        }
        TentColumns job = {};
        job.taps = taps;
        job.steps = steps;
        job.width = m_readWidth;
        job.slope = m_slope.Bytes();
        job.sum = m_sum.Bytes();
        job.weights = TentSum(m_job.columnTaps);
        job.scale = m_columnScale;
        job.wide = m_job.columnTaps > kTentNarrowTaps;
        job.peaked = m_columnTaps.rise == m_columnTaps.fall;
        return job;
    }

    /// Whether running sums can take the rows that came in; bytes always.
    bool RunColumns(const TentColumns& job)
    {
        if (m_floats)
            return m_kernels.floatColumns(job);
        m_kernels.byteColumns(job);
        return true;
    }

    int StepsToFirstRow() const { return std::max(m_lines.first - m_lines.from + m_columnTaps.last - 1, 0); }

    /// Brings the column sums to the row before the first: from a window that holds nothing but copies of
    /// the first row that counts.
    bool MoveToFirstRow()
    {
        const int steps = StepsToFirstRow();
        TentColumns job = ColumnJob(m_lines.first - steps, steps);
        job.flat = SourceRow(m_lines.from);
        return RunColumns(job);
    }

    bool FilterBlock(int y)
    {
        TentColumns columns = ColumnJob(y, m_blockRows);
        columns.turned = Turned(m_readFrom);
        if (!RunColumns(columns))
            return false;
        PadTurned();

        TentRows rows = {};
        rows.turned = Turned(m_part.x);
        rows.taps = m_rowTaps;
        rows.lead = std::max(m_part.x + m_rowTaps.last - m_columns.from, 0);
        rows.width = m_part.size.width;
        rows.rows = m_rows.Bytes();
        rows.rowStep = static_cast<int>(m_rowStep);
        rows.weights = TentSum(m_job.rowTaps);
        rows.scale = m_rowScale;
        rows.wide = m_job.rowTaps > kTentNarrowTaps;
        rows.peaked = m_rowTaps.rise == m_rowTaps.fall;
        (m_floats ? m_kernels.floatRowPass : m_kernels.byteRowPass)(rows);
        return true;
    }

    // --- floats that running sums cannot take ---------------------------------------------------------

    float* ColumnKernel() const { return reinterpret_cast<float*>(m_kernel.Bytes()); }
    float* RowKernel() const { return ColumnKernel() + m_job.columnTaps; }

    void MakeKernels()
    {
        MakeTentKernelF(ColumnKernel(), m_job.columnTaps);
        MakeTentKernelF(RowKernel(), m_job.rowTaps);
    }

    void FilterBlockAfresh(int y)
    {
        for (int r = 0; r < m_blockRows && y + r <= m_lines.last; ++r) {
            auto* row = reinterpret_cast<float*>(m_rows.Bytes() + m_rowStep * r);
            FilterRowAfresh(y + r, row);
        }
    }

    void FilterRowAfresh(int y, float* row)
    {
        auto* sums = reinterpret_cast<double*>(m_sum.Bytes());
        std::fill_n(sums, m_readWidth * 4, 0.0);
        for (int j = 0; j < m_job.columnTaps; ++j) {
            const auto* from =
                reinterpret_cast<const px::LooseFloat*>(SourceRow(y + m_job.columnTaps / 2 - j));
            const double weight = static_cast<double>(ColumnKernel()[j]);
            for (int i = 0; i < m_readWidth * 4; ++i)
                sums[i] += weight * static_cast<double>(from[i].v);
        }
        auto* filtered = reinterpret_cast<float*>(m_turned.Bytes());
        for (int i = 0; i < m_readWidth * 4; ++i)
            filtered[i] = static_cast<float>(sums[i]);
        for (int x = 0; x < m_part.size.width; ++x) {
            double sum[4] = {};
            for (int j = 0; j < m_job.rowTaps; ++j) {
                const int reached = m_part.x + x + m_job.rowTaps / 2 - j;
                const int at = std::clamp(reached, m_columns.from, m_columns.to) - m_readFrom;
                for (int c = 0; c < 4; ++c)
                    sum[c] += static_cast<double>(RowKernel()[j]) * static_cast<double>(filtered[4 * at + c]);
            }
            for (int c = 0; c < 4; ++c)
                row[4 * x + c] = static_cast<float>(sum[c]);
        }
    }

    /// Columns beyond the ones that count become copies of the nearest that does.
    void PadTurned()
    {
        const auto column = static_cast<std::size_t>(m_columnBytes);
        for (int x = m_part.x - LeftPad(); x < m_columns.from; ++x)
            std::memcpy(Turned(x), Turned(m_columns.from), column);
        for (int x = m_columns.to + 1; x < m_part.x + m_part.size.width + RightPad(); ++x)
            std::memcpy(Turned(x), Turned(m_columns.to), column);
    }

    /// Rows beyond the ones that count are copies as well.
    void HandOut(TentRowSink& sink, int y, const std::uint8_t* row)
    {
        const int from = y == m_lines.first ? m_part.y : y;
        const int to = y == m_lines.last ? m_part.y + m_part.size.height - 1 : y;
        for (int i = from; i <= to; ++i)
            sink.Row(i, row);
    }

    TentRowSource& m_src;
    const TentJob& m_job;
    const TentPart m_part;
    const TentRange m_columns, m_lines;
    const int m_readFrom, m_readWidth; ///< columns
    const bool m_floats;
    const TentKernels& m_kernels;
    const int m_blockRows;
    const int m_columnBytes;
    const TentTaps m_columnTaps, m_rowTaps;
    const TentScale m_columnScale, m_rowScale;
    std::int64_t m_rowStep = 0;
    Scratch m_slope, m_sum, m_turned, m_rows, m_taps, m_kernel;
};

} // namespace

namespace {

bool HasPaddableSize(const TentJob& job)
{
    return std::max(job.size.width, job.size.height) <= TentJob::kLongestSide
        && std::max({job.padWidth, job.padHeight, job.rowTaps, job.columnTaps}) <= 1 << 16;
}

bool HasPartInside(const TentJob& job)
{
    const TentPart part = job.Part();
    return part.x >= 0 && part.y >= 0 && std::int64_t{part.x} + part.size.width <= job.size.width
        && std::int64_t{part.y} + part.size.height <= job.size.height;
}

} // namespace

TentResult FilterTent(const FrameBuffer& src, const TentJob& job, MemoryAllocator& allocator,
                      TentRowSink& sink)
{
    const std::uint32_t format = src.GetFormat();
    if (src.GetPixelBytes() != PixelBytesOf(format) || !Holds(src, job.size.width, PixelBytesOf(format))
        || src.GetHeight() < job.size.height)
        return TentResult::NotServed;
    PictureRows rows(src);
    return FilterTent(rows, format, job, allocator, sink);
}

TentResult FilterTent(TentRowSource& src, std::uint32_t format, const TentJob& job,
                      MemoryAllocator& allocator, TentRowSink& sink)
{
    if (!IsPicture(format) || !HasPaddableSize(job) || job.rowTaps < 1 || job.columnTaps < 1
        || std::max(job.rowTaps, job.columnTaps) > kTentMostTaps || !job.HasInside() || !HasPartInside(job))
        return TentResult::NotServed;

    TentRun run(src, IsFloat(format), job);
    if (!run.Allocate(allocator))
        return TentResult::NoMemory;
    run.Run(sink);
    return TentResult::Done;
}

// --- step by step -------------------------------------------------------------------------------------

namespace {

bool AllocateCleared(FrameBuffer& picture, Size size, int pixelBytes, std::uint32_t format,
                     MemoryAllocator& allocator)
{
    if (!picture.Allocate(size.width, size.height, pixelBytes, &allocator, format, false))
        return false;
    // What no step writes must not show what the memory held before.
    const auto rowBytes = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(pixelBytes);
    for (int y = 0; y < size.height; ++y)
        std::memset(picture.PixelAddress(0, y, 0), 0, rowBytes);
    return true;
}

/// Runs both passes with kernels of type Tap.
template <class Tap>
bool RunPasses(FrameBuffer& padded, FrameBuffer& columns, FrameBuffer& dst, const TentJob& job,
               MemoryAllocator& allocator, bool withAlpha)
{
    const int halfX = job.rowTaps / 2, halfY = job.columnTaps / 2;
    const auto makeKernel = [](Tap* kernel, int taps) {
        if constexpr (std::is_same_v<Tap, int>)
            return MakeTentKernelI(kernel, taps);
        else
            return MakeTentKernelF(kernel, taps), 1;
    };
    Scratch kernel;
    if (!AllocateTaps(kernel, job,
                      std::int64_t{std::max(job.rowTaps, job.columnTaps)} * std::int64_t{sizeof(Tap)},
                      allocator))
        return false;
    auto* taps = reinterpret_cast<Tap*>(kernel.Bytes());

    ImageOps ops;
    ops.ExtendBorder(padded, padded, halfX + 2, halfY + 2);
    const int columnSum = makeKernel(taps, job.columnTaps);
    ops.ColumnFilter(padded, columns, taps, job.columnTaps, halfX, halfY, columnSum, withAlpha);
    ops.ExtendBorder(columns, columns, halfX + 2, halfY + 2);
    const int rowSum = makeKernel(taps, job.rowTaps);
    return ops.RowFilter(columns, dst, taps, job.rowTaps, halfX, halfY, rowSum, withAlpha);
}

} // namespace

bool FilterTentStepwise(const FrameBuffer& src, FrameBuffer& dst, const TentJob& job,
                        std::uint32_t scratchFormat, MemoryAllocator& allocator, bool withAlpha)
{
    if (!HasPaddableSize(job))
        return false;
    const Size padded = {job.size.width + job.padWidth, job.size.height + job.padHeight};
    FrameBuffer a, b;
    if (!AllocateCleared(a, padded, src.GetPixelBytes(), scratchFormat, allocator)
        || !AllocateCleared(b, padded, src.GetPixelBytes(), scratchFormat, allocator))
        return false;

    ImageOps ops;
    if (!ops.CopyRect(src, 0, 0, job.size.width, job.size.height, a, job.rowTaps / 2, job.columnTaps / 2))
        return false;
    if (IsAlphaFirst(src.GetFormat()) && !IsAlphaFirst(scratchFormat))
        ops.ReverseChannels(a, a);

    if (IsFloat(a.GetFormat()))
        return RunPasses<float>(a, b, dst, job, allocator, withAlpha);
    if (IsByteColour(a.GetFormat()) || a.GetPixelBytes() == 1)
        return RunPasses<int>(a, b, dst, job, allocator, withAlpha);
    return false;
}

} // namespace kelmora

#include "image/tent_filter.h"

#include <algorithm>
#include <cmath>
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

/// Magnitudes beyond this make running sums in double coarser than a float beside them.
constexpr float kLargestSummed = 1024.0f;

bool IsSummable(const std::uint8_t* row, int width)
{
    const auto* values = reinterpret_cast<const px::LooseFloat*>(row);
    int outside = 0; // an or over the row vectorises; leaving early does not
    for (int i = 0; i < width * 4; ++i)
        outside |= !(std::fabs(values[i].v) <= kLargestSummed);
    return !outside;
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

/// One filter run: working space, and the block loop over it.
class TentRun {
public:
    TentRun(const FrameBuffer& src, const TentJob& job)
        : m_src(src), m_job(job), m_floats(IsFloat(src.GetFormat())),
          m_kernels(TentKernelsFor(CurrentVariant())),
          m_blockRows(m_floats ? m_kernels.floatRows : m_kernels.byteRows),
          m_columnBytes(m_blockRows * PixelBytes()), m_columnTaps(TapsOf(job.columnTaps)),
          m_rowTaps(TapsOf(job.rowTaps)), m_columnScale(ScaleFor(job.columnTaps, m_floats, job.truncate)),
          m_rowScale(ScaleFor(job.rowTaps, m_floats, job.truncate))
    {
    }

    bool Allocate(MemoryAllocator& allocator)
    {
        const std::int64_t width = m_job.size.width;
        const std::int64_t values = (width + kTentSpare) * 4;
        const std::int64_t slopeBytes = values * (m_floats ? 8 : 4);
        const std::int64_t sumBytes = values * (m_floats ? 8 : 4);
        m_rowStep = (width + kTentSpare) * PixelBytes();
        const std::int64_t turnedBytes = (LeftPad() + width + RightPad() + kTentSpare) * m_columnBytes;
        const std::int64_t longestRun = std::max(m_blockRows, m_columnTaps.last);
        const std::int64_t tapBytes = longestRun * 4 * static_cast<std::int64_t>(sizeof(const std::uint8_t*));
        return m_slope.Allocate(allocator, slopeBytes) && m_sum.Allocate(allocator, sumBytes)
            && m_turned.Allocate(allocator, turnedBytes)
            && m_rows.Allocate(allocator, m_rowStep * m_blockRows) && m_taps.Allocate(allocator, tapBytes)
            && (!m_floats
                || m_kernel.Allocate(allocator, std::int64_t{m_job.rowTaps + m_job.columnTaps} * 4));
    }

    void Run(TentRowSink& sink)
    {
        const int first = TentJob::kFirstKept;
        const int last = m_job.LastRow();
        if (m_floats)
            MakeKernels();
        m_summable = RowsAreSummable(first + m_columnTaps.last - 1);
        MoveToFirstRow();
        for (int y = first; y <= last; y += m_blockRows) {
            m_summable = m_summable && RowsAreSummable(y + m_blockRows - 1 + m_columnTaps.last);
            if (m_summable)
                FilterBlock(y);
            else
                FilterBlockAfresh(y);
            for (int r = 0; r < m_blockRows && y + r <= last; ++r)
                HandOut(sink, y + r, m_rows.Bytes() + m_rowStep * r);
        }
    }

private:
    int PixelBytes() const { return m_floats ? 16 : 4; }
    int LeftPad() const { return m_job.rowTaps + 1; }
    int RightPad() const { return m_rowTaps.last; }
    std::uint8_t* Turned(int x) const
    {
        return m_turned.Bytes() + std::int64_t{m_columnBytes} * (LeftPad() + x);
    }

    const std::uint8_t* SourceRow(int y) const
    {
        return m_src.PixelAddress(0, std::clamp(y, TentJob::kFirstKept, m_job.LastRow()), 0);
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
        job.width = m_job.size.width;
        job.slope = m_slope.Bytes();
        job.sum = m_sum.Bytes();
        job.weights = TentSum(m_job.columnTaps);
        job.scale = m_columnScale;
        job.wide = m_job.columnTaps > kTentNarrowTaps;
        return job;
    }

    void RunColumns(const TentColumns& job)
    {
        (m_floats ? m_kernels.floatColumns : m_kernels.byteColumns)(job);
    }

    /// Brings the column sums to the row before the first: from a window that holds nothing but copies of
    /// the first row that counts.
    void MoveToFirstRow()
    {
        const int steps = std::max(m_columnTaps.last - 1, 0);
        TentColumns job = ColumnJob(TentJob::kFirstKept - steps, steps);
        job.flat = SourceRow(TentJob::kFirstKept);
        RunColumns(job);
    }

    void FilterBlock(int y)
    {
        TentColumns columns = ColumnJob(y, m_blockRows);
        columns.turned = Turned(0);
        RunColumns(columns);
        PadTurned();

        TentRows rows = {};
        rows.turned = Turned(0);
        rows.taps = m_rowTaps;
        rows.lead = std::max(m_rowTaps.last - TentJob::kFirstKept, 0);
        rows.width = m_job.size.width;
        rows.rows = m_rows.Bytes();
        rows.rowStep = static_cast<int>(m_rowStep);
        rows.weights = TentSum(m_job.rowTaps);
        rows.scale = m_rowScale;
        rows.wide = m_job.rowTaps > kTentNarrowTaps;
        (m_floats ? m_kernels.floatRowPass : m_kernels.byteRowPass)(rows);
    }

    // --- floats that running sums cannot take ---------------------------------------------------------

    float* ColumnKernel() const { return reinterpret_cast<float*>(m_kernel.Bytes()); }
    float* RowKernel() const { return ColumnKernel() + m_job.columnTaps; }

    void MakeKernels()
    {
        MakeTentKernelF(ColumnKernel(), m_job.columnTaps);
        MakeTentKernelF(RowKernel(), m_job.rowTaps);
    }

    /// Looks at the rows up to `last` that were not looked at before; bytes are always summable.
    bool RowsAreSummable(int last)
    {
        bool summable = true;
        for (; m_floats && m_rowsSeen <= std::min(last, m_job.LastRow()); ++m_rowsSeen)
            summable &= IsSummable(m_src.PixelAddress(0, m_rowsSeen, 0), m_job.size.width);
        return summable;
    }

    void FilterBlockAfresh(int y)
    {
        for (int r = 0; r < m_blockRows && y + r <= m_job.LastRow(); ++r) {
            auto* row = reinterpret_cast<float*>(m_rows.Bytes() + m_rowStep * r);
            FilterRowAfresh(y + r, row);
        }
    }

    void FilterRowAfresh(int y, float* row)
    {
        const int width = m_job.size.width;
        auto* sums = reinterpret_cast<double*>(m_sum.Bytes());
        std::fill_n(sums, width * 4, 0.0);
        for (int j = 0; j < m_job.columnTaps; ++j) {
            const auto* from =
                reinterpret_cast<const px::LooseFloat*>(SourceRow(y + m_job.columnTaps / 2 - j));
            const double weight = static_cast<double>(ColumnKernel()[j]);
            for (int i = 0; i < width * 4; ++i)
                sums[i] += weight * static_cast<double>(from[i].v);
        }
        auto* filtered = reinterpret_cast<float*>(m_turned.Bytes());
        for (int i = 0; i < width * 4; ++i)
            filtered[i] = static_cast<float>(sums[i]);
        for (int x = 0; x < width; ++x) {
            double sum[4] = {};
            for (int j = 0; j < m_job.rowTaps; ++j) {
                const int at = std::clamp(x + m_job.rowTaps / 2 - j, TentJob::kFirstKept, m_job.LastColumn());
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
        for (int x = -LeftPad(); x < TentJob::kFirstKept; ++x)
            std::memcpy(Turned(x), Turned(TentJob::kFirstKept), column);
        for (int x = m_job.LastColumn() + 1; x < m_job.size.width + RightPad(); ++x)
            std::memcpy(Turned(x), Turned(m_job.LastColumn()), column);
    }

    /// Rows beyond the ones that count are copies as well.
    void HandOut(TentRowSink& sink, int y, const std::uint8_t* row)
    {
        const int from = y == TentJob::kFirstKept ? 0 : y;
        const int to = y == m_job.LastRow() ? m_job.size.height - 1 : y;
        for (int i = from; i <= to; ++i)
            sink.Row(i, row);
    }

    const FrameBuffer& m_src;
    const TentJob& m_job;
    const bool m_floats;
    const TentKernels& m_kernels;
    const int m_blockRows;
    const int m_columnBytes;
    const TentTaps m_columnTaps, m_rowTaps;
    const TentScale m_columnScale, m_rowScale;
    std::int64_t m_rowStep = 0;
    int m_rowsSeen = TentJob::kFirstKept;
    bool m_summable = true;
    Scratch m_slope, m_sum, m_turned, m_rows, m_taps, m_kernel;
};

} // namespace

namespace {

bool HasPaddableSize(const TentJob& job)
{
    return std::max(job.size.width, job.size.height) <= TentJob::kLongestSide
        && std::max({job.padWidth, job.padHeight, job.rowTaps, job.columnTaps}) <= 1 << 16;
}

} // namespace

TentResult FilterTent(const FrameBuffer& src, const TentJob& job, MemoryAllocator& allocator,
                      TentRowSink& sink)
{
    const std::uint32_t format = src.GetFormat();
    if (!IsPicture(format) || src.GetPixelBytes() != PixelBytesOf(format)
        || !Holds(src, job.size.width, PixelBytesOf(format)) || src.GetHeight() < job.size.height)
        return TentResult::NotServed;
    if (!HasPaddableSize(job) || job.rowTaps < 1 || job.columnTaps < 1
        || std::max(job.rowTaps, job.columnTaps) > kTentMostTaps || !job.HasInside())
        return TentResult::NotServed;

    TentRun run(src, job);
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
    if (!kernel.Allocate(allocator,
                         std::int64_t{std::max(job.rowTaps, job.columnTaps)} * std::int64_t{sizeof(Tap)} + 1))
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

#pragma once

#include <cstdint>
#include <utility>

#include "image/frame_buffer.h"
#include "image/picture_check.h"

namespace kelmora {

/// A rectangle of a picture: columns and rows from `x` and `y` on.
struct TentPart {
    int x = 0;
    int y = 0;
    Size size;
};

/// What a separable tent filter is asked for. It works on the `size` pixels at the top left of a picture.
///
/// The two outermost rows and columns count as copies of the third, and so does everything outside: that is
/// what a picture looks like once ExtendBorder has rebuilt its surroundings with a margin two pixels deeper
/// than the padding. With padding for one pixel more than the kernel reaches, on the far sides only the
/// outermost row and column do.
struct TentJob {
    Size size;
    int rowTaps = 1;    ///< horizontal size
    int columnTaps = 1; ///< vertical size
    int padWidth = 0;   ///< what a padded scratch picture is wider by: rowTaps, or rowTaps less 1 when odd
    int padHeight = 0;
    bool truncate = false;  ///< bytes: divide toward zero instead of rounding to nearest
    bool plainTaps = false; ///< the taps lie in the host's plain memory, not in that for pictures

    /// What of the filtered picture is wanted; all of it when this is empty. Pixels around the part are read as far
    /// as the kernel reaches. Bytes are those of the whole, float sums may start elsewhere.
    TentPart part;

    /// What ImageOps::Blur does, into a picture of `size`: the padding has room for what the kernel reaches.
    static TentJob Blur(Size size, int rowTaps, int columnTaps)
    {
        return {size, rowTaps, columnTaps, rowTaps / 2 * 2, columnTaps / 2 * 2, false, false, {}};
    }

    /// The blur of the effects that make their scratch pictures larger by as many pixels as the kernel has taps.
    static TentJob PaddedByTaps(Size size, int taps)
    {
        return {size, taps, taps, taps, taps, false, true, {}};
    }

    TentPart Part() const { return IsEmpty(part.size) ? TentPart{0, 0, size} : part; }

    int LastColumn() const { return size.width + padWidth - 2 * (rowTaps / 2) - 3; }
    /// How many rows, one below the other, the filter looks at in the same moment, and its sink with it.
    int RowsAtOnce() const { return columnTaps + kMostBlockRows + 2 * kFirstKept + 1; }

    int LastRow() const { return size.height + padHeight - 2 * (columnTaps / 2) - 3; }

    /// Whether the picture is large enough to have an inside that can be extended.
    bool HasInside() const { return LastColumn() >= kFirstKept && LastRow() >= kFirstKept; }

    // Kept: the two outermost rows and columns are lost to every blur, also to one of a single tap.
    static constexpr int kFirstKept = 2; ///< the first row and column that count

    /// The largest side of a picture: padding may be added to it without a thought of overflow.
    static constexpr int kLongestSide = 1 << 30;

    static constexpr int kMostBlockRows =
        16; ///< rows that the loops of any set of instructions take together
};

/// Gives the rows of a picture, of four channels, bytes or floats.
class TentRowSource {
public:
    /// The pixels of row `y`. They stay until rows are asked for that lie TentJob::RowsAtOnce or more below.
    virtual const std::uint8_t* Row(int y) = 0;

protected:
    ~TentRowSource() = default;
};

/// Takes the filtered rows: each row of the part once, from the top down.
class TentRowSink {
public:
    /// `row`: as many pixels of four channels as the part is wide, in the source's element type and channel order;
    /// valid during the call. `y` counts from the picture's top.
    virtual void Row(int y, const std::uint8_t* row) = 0;

protected:
    ~TentRowSink() = default;
};

enum class TentResult {
    Done,
    NotServed, ///< no row was handed out: the job wants the stepwise filter
    NoMemory,  ///< no row was handed out: there is no working space
};

/// Filters four-channel pictures, bytes or floats, with running sums: the price of a pixel does not depend
/// on the number of taps, and the working space is a few rows from `allocator`. While it takes row y the sink may
/// write to `src`'s rows up to y - (columnTaps - columnTaps / 2 + 1): they are read no more.
///
/// Bytes come out exactly as from the column filter and the row filter in turn. Floats are summed in double
/// with whole weights and divided once, so they may differ from sums with rounded weights in the last bit.
/// From the first row on that holds floats which are not finite, or so large that running sums would lose
/// the small ones beside them, every sum is made afresh: slow, and right.
///
/// NotServed: the picture has no inside or is none of the four picture formats, there are more taps than a sum
/// holds, or the part sticks out of the picture.
TentResult FilterTent(const FrameBuffer& src, const TentJob& job, MemoryAllocator& allocator,
                      TentRowSink& sink);

/// The same of rows that are asked for from the top down, once the filter gets to them. `format` is theirs. The
/// sink may ask for the rows about the one it takes, too: up to two beyond those that count.
TentResult FilterTent(TentRowSource& src, std::uint32_t format, const TentJob& job,
                      MemoryAllocator& allocator, TentRowSink& sink);

/// A function object for a sink.
template <class WriteRow>
class TentRowWriter final : public TentRowSink {
public:
    explicit TentRowWriter(WriteRow& write) : m_write(write) {}
    void Row(int y, const std::uint8_t* row) override { m_write(y, row); }

private:
    WriteRow& m_write;
};

/// FilterTent with a function object for a sink.
template <class WriteRow>
TentResult FilterTentRows(const FrameBuffer& src, const TentJob& job, MemoryAllocator& allocator,
                          WriteRow&& writeRow)
{
    TentRowWriter<WriteRow> sink(writeRow);
    return FilterTent(src, job, allocator, sink);
}

/// The same of rows that are made on the way.
template <class WriteRow>
TentResult FilterTentRows(TentRowSource& src, std::uint32_t format, const TentJob& job,
                          MemoryAllocator& allocator, WriteRow&& writeRow)
{
    TentRowWriter<WriteRow> sink(writeRow);
    return FilterTent(src, format, job, allocator, sink);
}

/// The same filter step by step: two padded scratch pictures of format `scratchFormat`, their borders
/// rebuilt, a column filter and a row filter into `dst`. Serves every format and size; where a picture has
/// no inside, its surroundings count as zeros. False when a step is refused or there is no memory.
bool FilterTentStepwise(const FrameBuffer& src, FrameBuffer& dst, const TentJob& job,
                        std::uint32_t scratchFormat, MemoryAllocator& allocator, bool withAlpha);

} // namespace kelmora

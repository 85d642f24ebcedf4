#include "effects/painterly/paper_collage.h"

#include <algorithm>
#include <cstring>

#include "effects/common/knob_reader.h"
#include "effects/painterly/dissolve.h"
#include "effects/painterly/paper_collage_kernels.h"
#include "effects/painterly/paper_collage_plan.h"
#include "effects/painterly/paper_collage_sheets.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/row_ring.h"
#include "image/scratch.h"
#include "image/tent_filter.h"

namespace kelmora {
namespace {

using paper_collage::Knobs;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.balance = read.Level(2);
    knobs.rounding = read.Level(0);
    knobs.layers = read.Level(1);
    knobs.foreground = read.Colour(3);
    knobs.background = read.Colour(4);
    knobs.shadow = read.Level(6);
    knobs.blendColors = read.Level(5);
    knobs.angle = read.Level(7);
    knobs.tempo = read.Level(8);
    knobs.crossFade = read.Level(9);
    return knobs;
}

// Kept: the height is measured against the second picture's width. In the usual case, landscape, it is the first
// picture's height.
Size DissolveSize(const FrameBuffer& first, const FrameBuffer& second)
{
    return {std::min(first.GetWidth(), second.GetWidth()), std::min(first.GetHeight(), second.GetWidth())};
}

PaperLook MakeLook(const Knobs& knobs, float amount, int sheets, int shadowDistance, bool halfHeight)
{
    PaperLook look = {};
    look.background = knobs.background;
    look.foreground = knobs.foreground;
    look.blendColors = paper_collage::Share255(static_cast<double>(knobs.blendColors));
    look.shadowColour = paper_collage::Share255(static_cast<double>(1.0f - amount));
    look.shadowDistance = shadowDistance;
    look.shadow = paper_collage::ShadowOffset(knobs.angle, shadowDistance, halfHeight);
    const std::int64_t margin = std::int64_t{shadowDistance} * sheets * (halfHeight ? 2 : 1);
    look.shadowMargin = static_cast<int>(std::min<std::int64_t>(margin, 1 << 29));
    return look;
}

/// The collage of two pictures' dissolve, into an output that may be the same memory as one of them: no row is
/// written before the last time that it is read.
class Collage {
public:
    Collage(const FrameBuffer& first, const FrameBuffer& second, FrameBuffer& output, const Knobs& knobs,
            const Crossfade& curve, bool halfHeight)
        : m_first(first), m_second(second), m_output(output), m_knobs(knobs), m_amount(curve.amount),
          m_fade(static_cast<double>(static_cast<float>(curve.fade))), m_hold(HoldOf(m_amount)),
          m_halfHeight(halfHeight), m_asIs(first.GetFormat() == PF_BGRA8),
          m_dissolve(DissolveSize(first, second)), m_size(SizeOf(output))
    {
    }

    /// Without memory for the sheets the rounded greys, without memory for less nothing.
    void Render(MemoryAllocator& allocator)
    {
        if (!m_mixRow.Allocate(allocator, std::int64_t{m_size.width} * m_output.GetPixelBytes()))
            return;
        // Without an amount the dissolve covers the collage. Where it is too short for that the lowest sheet shows;
        // alpha-last bytes, which are worked on in the output itself, show the output there.
        if (m_amount > 0.0f || !(m_asIs || m_dissolve.height >= m_size.height)) {
            RenderSheets(allocator);
            return;
        }
        for (int y = 0; y < std::min(m_size.height, m_dissolve.height); ++y) {
            MakeMixRow(y);
            BlendMixRow(y);
        }
    }

private:
    /// The plain dissolve stands alone at both ends and is gone by half the amount.
    static float HoldOf(float amount)
    {
        return amount >= 0.5f ? 0.0f : static_cast<float>(1.0 - static_cast<double>(amount) / 0.5);
    }

    /// Alpha-last bytes measure the dissolve, the others what is worked on.
    int WorkHeight() const { return m_asIs ? m_dissolve.height : m_size.height; }

    void RenderSheets(MemoryAllocator& allocator)
    {
        const int rounding = paper_collage::RoundingSize(m_knobs.rounding * m_amount, WorkHeight());
        const int distance = paper_collage::ShadowDistance(m_knobs.shadow * m_amount, WorkHeight());
        const int count = paper_collage::LayersFor(m_knobs.layers);
        const PaperLook look = MakeLook(m_knobs, m_amount, count, distance, m_halfHeight);
        const int cutRows = std::min(WorkHeight(), m_size.height);

        const int taps = std::min(rounding, ImageOps::kMostBlurTaps);
        const TentJob job = TentJob::Blur(m_size, taps, taps);
        RowRing mix([&](int y, std::uint8_t* row) { MakeBytes(y, row); });
        RowRing greys([&](int y, std::uint8_t* row) {
            // Below a short dissolve stands what the output shows there.
            if (y < cutRows)
                PaperKernelsFor(CurrentVariant()).greys(mix.Row(y), row, m_size.width);
            else
                std::memcpy(row, m_output.PixelAddress(0, y, 0), ByteRow());
        });
        // Pictures that are too small to have an inside are blurred as a whole.
        const int rows = taps < 1 || job.HasInside() ? job.RowsAtOnce() : m_size.height;
        if (!mix.Allocate(allocator, rows, m_size.height, std::int64_t{4} * m_size.width)
            || !greys.Allocate(allocator, rows, m_size.height, std::int64_t{4} * m_size.width))
            return;

        PaperSheets sheets(count, paper_collage::SheetsFor(count, m_knobs.balance));
        const bool hasSheets = sheets.Allocate({m_size.width, cutRows}, look.shadowMargin, allocator);
        const auto takeRow = [&](int y, const std::uint8_t* row) {
            if (hasSheets && y < cutRows)
                sheets.AddRow(y, mix.Row(y), row);
            else
                Finish(y, row);
        };
        if (RoundGreys(greys, job, allocator, takeRow) && hasSheets)
            sheets.Lay(look, [&](int y, const std::uint8_t* row) { Finish(y, row); });
    }

    /// Rounds off the greys: every row goes to `takeRow`, from the top down, once no more rows are read of what stands
    /// above it. False when there is no memory; no row has gone then.
    template <class TakeRow>
    static bool RoundGreys(TentRowSource& greys, const TentJob& job, MemoryAllocator& allocator,
                           TakeRow&& takeRow)
    {
        if (job.rowTaps < 1) {
            for (int y = 0; y < job.size.height; ++y)
                takeRow(y, greys.Row(y));
            return true;
        }
        const TentResult result = FilterTentRows(greys, PF_BGRA8, job, allocator, takeRow);
        return result == TentResult::NotServed ? RoundWholeGreys(greys, job, allocator, takeRow)
                                               : result == TentResult::Done;
    }

    /// The same for pictures that are too small to have an inside.
    template <class TakeRow>
    static bool RoundWholeGreys(TentRowSource& greys, const TentJob& job, MemoryAllocator& allocator,
                                TakeRow&& takeRow)
    {
        FrameBuffer whole;
        if (!whole.Allocate(job.size.width, job.size.height, 4, &allocator, PF_BGRA8, false))
            return false;
        for (int y = 0; y < job.size.height; ++y)
            std::memcpy(whole.PixelAddress(0, y, 0), greys.Row(y),
                        std::size_t{4} * static_cast<std::size_t>(job.size.width));
        ImageOps ops;
        if (!ops.Blur(whole, whole, static_cast<float>(job.rowTaps), static_cast<float>(job.columnTaps),
                      &allocator, true))
            return false;
        for (int y = 0; y < job.size.height; ++y)
            takeRow(y, whole.PixelAddress(0, y, 0));
        return true;
    }

    /// Row y of the dissolve into the row that is kept for it.
    void MakeMixRow(int y) { MakeDissolve(y, m_mixRow.Bytes()); }

    /// Row y of the dissolve to where there is room for it. Pictures of two formats have no dissolve: it is black and
    /// transparent all over, also where it would be the first picture alone.
    void MakeDissolve(int y, std::uint8_t* to) const
    {
        if (m_second.GetFormat() == m_first.GetFormat()
            && m_second.GetPixelBytes() == m_first.GetPixelBytes())
            DissolveRow(m_first, m_second, m_fade, y, m_size.width, to);
        else
            std::memset(to, 0, PixelRow());
    }

    /// Row y of the dissolve as alpha-last bytes, of which the sheets are cut: black below it.
    void MakeBytes(int y, std::uint8_t* to)
    {
        if (y >= m_dissolve.height) {
            std::memset(to, 0, ByteRow());
        } else if (m_asIs) {
            MakeDissolve(y, to);
        } else {
            MakeMixRow(y);
            FrameBuffer mix, bytes;
            AttachMixRow(mix);
            AttachByteRow(bytes, to);
            ImageOps ops;
            ops.Convert(mix, bytes);
        }
    }

    /// Brings row y of the collage home.
    void Finish(int y, const std::uint8_t* row)
    {
        const bool blends = m_hold > 0.0f && y < m_dissolve.height;
        if (blends)
            MakeMixRow(y); // while the pictures' row is there
        if (m_asIs) {
            std::memcpy(m_output.PixelAddress(0, y, 0), row, ByteRow());
        } else {
            FrameBuffer bytes, output;
            AttachByteRow(bytes, row);
            AttachStrip(output, m_output, y, 1);
            ImageOps ops;
            ops.Convert(bytes, output);
        }
        if (blends)
            BlendMixRow(y);
    }

    /// Lays the row of the dissolve on the output's row y.
    void BlendMixRow(int y)
    {
        FrameBuffer mix, output;
        AttachMixRow(mix);
        AttachStrip(output, m_output, y, 1);
        ImageOps ops;
        ops.AddWeighted(mix, output, output, m_hold, 1.0f - m_hold);
    }

    std::size_t ByteRow() const { return std::size_t{4} * static_cast<std::size_t>(m_size.width); }
    std::size_t PixelRow() const
    {
        return static_cast<std::size_t>(m_output.GetPixelBytes()) * static_cast<std::size_t>(m_size.width);
    }

    void AttachByteRow(FrameBuffer& view, const std::uint8_t* row) const
    {
        view.Attach(const_cast<std::uint8_t*>(row), m_size.width, 1, 4 * m_size.width, 4, PF_BGRA8, false);
    }
    void AttachMixRow(FrameBuffer& view) const
    {
        const int bytes = m_output.GetPixelBytes();
        view.Attach(m_mixRow.Bytes(), m_size.width, 1, bytes * m_size.width, bytes, m_output.GetFormat(),
                    false);
    }

    const FrameBuffer& m_first;
    const FrameBuffer& m_second;
    FrameBuffer& m_output;
    const Knobs& m_knobs;
    const float m_amount;
    const double m_fade;
    const float m_hold; ///< share of the plain dissolve
    const bool m_halfHeight;
    const bool m_asIs; ///< the pictures are of alpha-last bytes already
    const Size m_dissolve;
    const Size m_size;
    Scratch m_mixRow; ///< a row of the dissolve in the pictures' format
};

/// The picture, or a copy where the output's rows lie over other rows of it.
bool Attach(FrameBuffer& picture, const FrameBuffer& given, const FrameBuffer& output,
            MemoryAllocator& allocator)
{
    return HasRowsOf(given, output) ? picture.AttachBuffer(given)
                                    : SetAside(given, output, picture, allocator);
}

} // namespace

bool CEmbossedPaperBlend::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const double progress = ClampProgress(ReadField<double>(call.info, offsetof(RenderInfo, progress)));
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer given, givenSecond, target, output, first, second;
    given.AttachFrame(&call.firstPicture);
    givenSecond.AttachFrame(call.secondPicture);
    target.AttachFrame(&call.output);
    const Size both = CommonSize(given, target);
    const Size size = {std::min(both.width, givenSecond.GetWidth()),
                       std::min(both.height, givenSecond.GetHeight())};
    if (!AreServedAlike(given, target) || !givenSecond.GetPixels() || IsEmpty(size))
        return true;
    AttachCorner(output, target, size);
    if (Attach(first, given, output, allocator) && Attach(second, givenSecond, output, allocator))
        Collage(first, second, output, knobs, CrossfadeCurve(progress, knobs.crossFade, knobs.tempo),
                IsHalfHeight(call.info))
            .Render(allocator);
    return true;
}

} // namespace kelmora

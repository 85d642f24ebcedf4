#include "effects/painterly/paper_collage.h"

#include <algorithm>

#include "effects/common/knob_reader.h"
#include "effects/painterly/dissolve.h"
#include "effects/painterly/paper_collage_kernels.h"
#include "effects/painterly/paper_collage_plan.h"
#include "effects/painterly/paper_collage_sheets.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
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

/// A BGRA8 picture of `size` with the contents of `from`, black where that is smaller.
bool Take(FrameBuffer& bytes, const FrameBuffer& from, Size size, MemoryAllocator& allocator)
{
    if (!bytes.Allocate(size.width, size.height, 4, &allocator, PF_BGRA8, false))
        return false;
    ImageOps ops;
    ops.Fill(bytes, 0);
    return ops.Convert(from, bytes);
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

/// Rounds off the greys of a picture: every row goes to `takeRow` with its greys, from the top down. False when
/// there is no memory; rows may have gone then.
template <class TakeRow>
bool RoundGreys(FrameBuffer& greys, int size, MemoryAllocator& allocator, TakeRow&& takeRow)
{
    const int taps = std::min(size, ImageOps::kMostBlurTaps);
    if (taps > 0) {
        const TentJob job = TentJob::Blur(SizeOf(greys), taps, taps);
        const TentResult result = FilterTentRows(greys, job, allocator, takeRow);
        if (result != TentResult::NotServed)
            return result == TentResult::Done;
        ImageOps ops;
        if (!ops.Blur(greys, greys, static_cast<float>(taps), static_cast<float>(taps), &allocator, true))
            return false;
    }
    for (int y = 0; y < greys.GetHeight(); ++y)
        takeRow(y, greys.PixelAddress(0, y, 0));
    return true;
}

void MakeGreys(const FrameBuffer& mix, FrameBuffer& greys, Size size)
{
    const PaperKernels& kernels = PaperKernelsFor(CurrentVariant());
    for (int y = 0; y < size.height; ++y)
        kernels.greys(mix.PixelAddress(0, y, 0), greys.PixelAddress(0, y, 0), size.width);
}

/// The collage of `mix`, BGRA8, on the part of `canvas` that it covers. Without memory the rounded greys.
void Collage(const FrameBuffer& mix, FrameBuffer& canvas, const Knobs& knobs, float amount, bool halfHeight,
             MemoryAllocator& allocator)
{
    const Size size = CommonSize(mix, canvas);
    const int rounding = paper_collage::RoundingSize(knobs.rounding * amount, mix.GetHeight());
    const int distance = paper_collage::ShadowDistance(knobs.shadow * amount, mix.GetHeight());
    const int count = paper_collage::LayersFor(knobs.layers);
    const PaperLook look = MakeLook(knobs, amount, count, distance, halfHeight);

    // Greys of their own, for the blur reads them many times. Below them stands what the canvas shows there.
    PaperSheets sheets(count, paper_collage::SheetsFor(count, knobs.balance));
    ImageOps ops;
    FrameBuffer greys;
    const bool taken = greys.Allocate(canvas.GetWidth(), canvas.GetHeight(), 4, &allocator, PF_BGRA8, false)
        && sheets.Allocate(size, look.shadowMargin, allocator);
    if (taken) {
        if (size != SizeOf(canvas))
            ops.Copy(canvas, greys);
        MakeGreys(mix, greys, size);
        const auto takeRow = [&](int y, const std::uint8_t* row) {
            if (y < size.height)
                sheets.AddRow(y, mix.PixelAddress(0, y, 0), row);
            else
                std::copy_n(row, std::size_t{4} * static_cast<std::size_t>(canvas.GetWidth()),
                            canvas.PixelAddress(0, y, 0));
        };
        if (RoundGreys(greys, rounding, allocator, takeRow)) {
            sheets.Lay(canvas, look);
            return;
        }
    }
    MakeGreys(mix, canvas, size);
    ops.Blur(canvas, canvas, static_cast<float>(rounding), static_cast<float>(rounding), &allocator, true);
}

} // namespace

bool CEmbossedPaperBlend::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const double progress = ClampProgress(ReadField<double>(call.info, offsetof(RenderInfo, progress)));
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer first, second, target, output;
    first.AttachFrame(&call.firstPicture);
    second.AttachFrame(call.secondPicture);
    target.AttachFrame(&call.output);
    const Size both = CommonSize(first, target);
    const Size size = {std::min(both.width, second.GetWidth()), std::min(both.height, second.GetHeight())};
    if (!AreServedAlike(first, target) || !second.GetPixels() || IsEmpty(size))
        return true;
    AttachCorner(output, target, size);

    const Crossfade curve = CrossfadeCurve(progress, knobs.crossFade, knobs.tempo);
    const auto fade = static_cast<double>(static_cast<float>(curve.fade));
    FrameBuffer mix;
    if (!Dissolve(first, second, mix, DissolveSize(first, second), fade, allocator))
        return true;

    ImageOps ops;
    // Without an amount the dissolve covers the collage. Where it is too short for that the lowest sheet shows;
    // alpha-last bytes, which are worked on in the output itself, show the output there.
    const bool covers = first.GetFormat() == PF_BGRA8 || mix.GetHeight() >= size.height;
    if (curve.amount > 0.0f || !covers) {
        const bool halfHeight = IsHalfHeight(call.info);
        if (first.GetFormat() == PF_BGRA8) {
            Collage(mix, output, knobs, curve.amount, halfHeight, allocator);
        } else {
            FrameBuffer bytes, canvas;
            if (!Take(bytes, mix, size, allocator)
                || !canvas.Allocate(size.width, size.height, 4, &allocator, PF_BGRA8, false))
                return true;
            Collage(bytes, canvas, knobs, curve.amount, halfHeight, allocator);
            ops.Convert(canvas, output);
        }
    }
    // The plain dissolve stands alone at both ends and is gone by half the amount.
    const float hold =
        curve.amount >= 0.5f ? 0.0f : static_cast<float>(1.0 - static_cast<double>(curve.amount) / 0.5);
    if (hold > 0.0f)
        ops.AddWeighted(mix, output, output, hold, 1.0f - hold);
    return true;
}

} // namespace kelmora

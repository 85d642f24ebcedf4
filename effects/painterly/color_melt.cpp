#include "effects/painterly/color_melt.h"

#include <algorithm>

#include "effects/common/knob_reader.h"
#include "effects/painterly/color_melt_plan.h"
#include "effects/painterly/color_melt_row.h"
#include "effects/painterly/crossfade.h"
#include "effects/painterly/dissolve.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/tent_filter.h"

namespace kelmora {
namespace {

using color_melt::Knobs;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.soften = read.Level(0);
    knobs.fog = read.Level(1);
    knobs.brightness = read.Level(2);
    knobs.color = read.Level(3);
    knobs.tempo = read.Level(4);
    knobs.crossFade = read.Level(5);
    return knobs;
}

Melt MakeMelt(const Knobs& knobs, float amount)
{
    Melt melt = {};
    melt.amount = amount;
    melt.saturationGain = color_melt::SaturationGain(knobs.color, amount);
    melt.targetValue = color_melt::TargetValue(knobs.brightness);
    melt.fogLevel = color_melt::FogLevel(knobs.fog);
    melt.fogShare = color_melt::FogShare(knobs.fog);
    return melt;
}

/// Blur, colours, edge step and dissolve in one pass over the rows.
TentResult MeltRows(const FrameBuffer& mix, FrameBuffer& output, const TentJob& job, const MeltRow& melt,
                    MemoryAllocator& allocator)
{
    return FilterTentRows(mix, job, allocator, [&](int y, const std::uint8_t* blurred) {
        melt(mix.PixelAddress(0, y, 0), blurred, output.PixelAddress(0, y, 0), job.size.width);
    });
}

/// The blur into the output, then the rest: for pictures too small to have an inside.
bool MeltStepwise(const FrameBuffer& mix, FrameBuffer& output, const TentJob& job, const MeltRow& melt,
                  MemoryAllocator& allocator)
{
    ImageOps ops;
    // Rows that the filters leave out show the mix.
    if (!ops.Copy(mix, output)
        || !FilterTentStepwise(mix, output, job, AlphaLast(mix.GetFormat()), allocator, true))
        return false;
    if (IsAlphaFirst(mix.GetFormat()))
        ops.ReverseChannels(output, output);
    for (int y = 0; y < output.GetHeight(); ++y)
        melt(mix.PixelAddress(0, y, 0), output.PixelAddress(0, y, 0), output.PixelAddress(0, y, 0),
             output.GetWidth());
    return true;
}

bool MeltPicture(const FrameBuffer& mix, FrameBuffer& output, const Knobs& knobs, float amount,
                 MemoryAllocator& allocator)
{
    const int least = IsFloat(mix.GetFormat()) ? 1 : 2;
    const int taps = std::max(color_melt::TapsFor(knobs.soften, mix.GetHeight(), amount), least);
    if (taps > color_melt::kMostTaps)
        return false;
    const TentJob job = TentJob::PaddedByTaps(SizeOf(mix), taps);
    const MeltRow melt(mix.GetFormat(), MakeMelt(knobs, amount));
    const TentResult result = MeltRows(mix, output, job, melt, allocator);
    return result == TentResult::NotServed ? MeltStepwise(mix, output, job, melt, allocator)
                                           : result == TentResult::Done;
}

} // namespace

bool CColormelt::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const auto given = ReadField<double>(call.info, offsetof(RenderInfo, progress));
    const auto progress = static_cast<double>(static_cast<float>(ClampProgress(given)));
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer first, second, target, output;
    first.AttachFrame(&call.firstPicture);
    second.AttachFrame(call.secondPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(first, target);
    if (!AreServedAlike(first, target) || IsEmpty(size))
        return true;
    AttachCorner(output, target, size);

    const Crossfade curve = CrossfadeCurve(progress, knobs.crossFade, knobs.tempo);
    FrameBuffer mix;
    if (!Dissolve(first, second, mix, size, curve.fade, allocator))
        return true;
    // At the ends the melt has no weight.
    ImageOps ops;
    if (curve.amount == 0.0f || !MeltPicture(mix, output, knobs, curve.amount, allocator))
        ops.Copy(mix, output);
    return true;
}

} // namespace kelmora

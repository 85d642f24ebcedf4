#include "effects/painterly/color_melt.h"

#include <algorithm>

#include "effects/common/knob_reader.h"
#include "effects/painterly/color_melt_plan.h"
#include "effects/painterly/color_melt_row.h"
#include "effects/painterly/crossfade.h"
#include "effects/painterly/dissolve.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/row_ring.h"
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

/// What is melted: two pictures, and the share of the second.
struct Pair {
    const FrameBuffer& first;
    const FrameBuffer& second;
    double fade;

    void Row(int y, int width, std::uint8_t* to) const { DissolveRow(first, second, fade, y, width, to); }
};

void DissolveInto(FrameBuffer& output, const Pair& pair)
{
    for (int y = 0; y < output.GetHeight(); ++y)
        pair.Row(y, output.GetWidth(), output.PixelAddress(0, y, 0));
}

/// Dissolve, blur, colours, edge step and the second dissolve in one pass over the rows. Of the first dissolve no
/// more rows are kept than the blur looks at; without memory for them nothing comes out, without memory for the blur
/// the dissolve alone. False when the picture is too small to have an inside: nothing is done then.
bool MeltRows(const Pair& pair, FrameBuffer& output, const TentJob& job, const MeltRow& melt,
              MemoryAllocator& allocator)
{
    const int width = job.size.width;
    RowRing mix([&](int y, std::uint8_t* row) { pair.Row(y, width, row); });
    if (!mix.Allocate(allocator, job.RowsAtOnce(), job.size.height,
                      std::int64_t{width} * output.GetPixelBytes()))
        return true;
    const TentResult result =
        FilterTentRows(mix, output.GetFormat(), job, allocator, [&](int y, const std::uint8_t* blurred) {
            melt(mix.Row(y), blurred, output.PixelAddress(0, y, 0), width);
        });
    if (result == TentResult::NoMemory)
        DissolveInto(output, pair);
    return result != TentResult::NotServed;
}

/// The same picture after picture: the blur into the output, then the rest.
void MeltStepwise(const Pair& pair, FrameBuffer& output, const TentJob& job, const MeltRow& melt,
                  MemoryAllocator& allocator)
{
    FrameBuffer mix;
    ImageOps ops;
    // Rows that the filters leave out show the mix.
    if (!Dissolve(pair.first, pair.second, mix, job.size, pair.fade, allocator) || !ops.Copy(mix, output)
        || !FilterTentStepwise(mix, output, job, AlphaLast(mix.GetFormat()), allocator, true))
        return;
    if (IsAlphaFirst(mix.GetFormat()))
        ops.ReverseChannels(output, output);
    for (int y = 0; y < output.GetHeight(); ++y)
        melt(mix.PixelAddress(0, y, 0), output.PixelAddress(0, y, 0), output.PixelAddress(0, y, 0),
             output.GetWidth());
}

void MeltPicture(const Pair& pair, FrameBuffer& output, const Knobs& knobs, float amount,
                 MemoryAllocator& allocator)
{
    const int least = IsFloat(output.GetFormat()) ? 1 : 2;
    const int taps = std::max(color_melt::TapsFor(knobs.soften, output.GetHeight(), amount), least);
    if (taps > kMostTaps) // as many as no memory holds
        return DissolveInto(output, pair);
    const TentJob job = TentJob::PaddedByTaps(SizeOf(output), taps);
    const MeltRow melt(output.GetFormat(), MakeMelt(knobs, amount));
    if (!MeltRows(pair, output, job, melt, allocator))
        MeltStepwise(pair, output, job, melt, allocator);
}

} // namespace

bool CColormelt::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const auto asked = ReadField<double>(call.info, offsetof(RenderInfo, progress));
    const auto progress = static_cast<double>(static_cast<float>(ClampProgress(asked)));
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer given, givenSecond, target, output, first, second;
    given.AttachFrame(&call.firstPicture);
    givenSecond.AttachFrame(call.secondPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(given, target);
    if (!AreServedAlike(given, target) || IsEmpty(size))
        return true;
    AttachCorner(output, target, size);
    // The rows of the output are done while those further down are still to be read.
    if (!SetAside(given, output, first, allocator) || !SetAside(givenSecond, output, second, allocator))
        return true;

    const Crossfade curve = CrossfadeCurve(progress, knobs.crossFade, knobs.tempo);
    const Pair pair = {first, second, curve.fade};
    if (curve.amount == 0.0f) // the ends, where the melt has no weight
        DissolveInto(output, pair);
    else
        MeltPicture(pair, output, knobs, curve.amount, allocator);
    return true;
}

} // namespace kelmora

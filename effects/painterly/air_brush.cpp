#include "effects/painterly/air_brush.h"

#include "effects/common/knob_reader.h"
#include "effects/common/taps.h"
#include "effects/painterly/air_brush_plan.h"
#include "effects/painterly/edge_lift.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/tent_filter.h"

namespace kelmora {
namespace {

using air_brush::Knobs;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.edge = read.Level(1);
    knobs.spray = read.Level(0);
    return knobs;
}

/// The edge step over whole pictures, whose rows the per-pixel loops find by their length in pixels.
void EdgeLift(const FrameBuffer& picture, FrameBuffer& output, float edge)
{
    const EdgeLiftRow lift(picture.GetFormat(), edge);
    const auto row = [](const FrameBuffer& p, int y) {
        return p.GetPixels() + std::ptrdiff_t{p.GetRowPixels()} * p.GetPixelBytes() * y;
    };
    for (int y = 0; y < output.GetHeight(); ++y)
        lift(row(picture, y), row(output, y), row(output, y), output.GetWidth());
}

/// The blur and the edge step in one pass over the rows.
TentResult BlurAndLift(const FrameBuffer& picture, FrameBuffer& output, const TentJob& job, float edge,
                       MemoryAllocator& allocator)
{
    const EdgeLiftRow lift(picture.GetFormat(), edge);
    return FilterTentRows(picture, job, allocator, [&](int y, const std::uint8_t* blurred) {
        lift(picture.PixelAddress(0, y, 0), blurred, output.PixelAddress(0, y, 0), job.size.width);
    });
}

/// The blur into the output, then the edge step: for pictures too small to have an inside, and for rows that
/// are no whole number of pixels apart.
bool BlurThenLift(const FrameBuffer& picture, FrameBuffer& output, const TentJob& job, float edge,
                  MemoryAllocator& allocator)
{
    if (!FilterTentStepwise(picture, output, job, AlphaLast(picture.GetFormat()), allocator, true))
        return false;
    if (IsAlphaFirst(picture.GetFormat())) {
        ImageOps ops;
        ops.ReverseChannels(output, output);
    }
    EdgeLift(picture, output, edge);
    return true;
}

} // namespace

bool CAirbrush::RenderFrame(const RenderCall& call)
{
    MemoryAllocator allocator(&call.host);
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer picture, target;
    picture.AttachFrame(&call.firstPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(picture, target);
    const int taps = air_brush::TapsFor(knobs.spray, picture.GetHeight());
    if (!AreServed(picture, target) || IsEmpty(size) || taps > kMostTaps)
        return true;

    FrameBuffer output, source;
    AttachCorner(output, target, size);
    if (!SetAside(picture, output, source, allocator))
        return true;

    const TentJob job = TentJob::PaddedByTaps(size, taps);
    const bool onePass = HasWholePixelRows(source) && HasWholePixelRows(output);
    if (!onePass || BlurAndLift(source, output, job, knobs.edge, allocator) == TentResult::NotServed)
        BlurThenLift(source, output, job, knobs.edge, allocator);
    return true;
}

} // namespace kelmora

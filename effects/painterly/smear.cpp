#include "effects/painterly/smear.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "effects/common/knob_reader.h"
#include "effects/painterly/crossfade.h"
#include "effects/painterly/smear_plan.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/scratch.h"
#include "image/transform_2d.h"
#include "image/warped_rows.h"

namespace kelmora {
namespace {

using smear::Background;
using smear::Clip;
using smear::Doublings;
using smear::Knobs;
using smear::Shown;
using smear::Weights;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.blur = read.Level(0);
    knobs.angle = read.Level(1);
    knobs.direction = read.Level(2);
    knobs.crossFade = read.Level(3);
    knobs.background = static_cast<Background>(read.Choice(4));
    return knobs;
}

/// The two pictures of the transition; `second` is empty where the host gave none that the first goes with.
struct Clips {
    FrameBuffer first, second;

    const FrameBuffer& Of(Clip clip) const { return clip == Clip::First ? first : second; }
};

bool CopyInto(const FrameBuffer& picture, FrameBuffer& frame)
{
    ImageOps ops;
    return ops.CopyRect(picture, 0, 0, frame.GetWidth(), frame.GetHeight(), frame, 0, 0);
}

/// The picture at the top left, transparent black around it.
void Place(const FrameBuffer& picture, FrameBuffer& frame)
{
    ImageOps ops;
    if (CommonSize(picture, frame) != SizeOf(frame))
        ops.Fill(frame, 0);
    CopyInto(picture, frame);
}

/// A move by `step` pixels along the angle. In rows, a positive angle leads upward.
Transform2D StepAlong(double turn, double step)
{
    Transform2D move;
    move.Rotate(static_cast<float>(turn));
    move.Translate(static_cast<float>(step), 0.0f);
    move.Rotate(static_cast<float>(-turn));
    return move;
}

/// The mean of the frame and itself moved, in `frame`; `moved` is working space. What comes in from outside, all of
/// it where the move has no inverse, is transparent.
void AverageWithMoved(FrameBuffer& frame, FrameBuffer& moved, const Transform2D& move)
{
    ImageOps ops;
    ops.Fill(moved, 0);
    ops.WarpAffine(frame, moved, move);
    ops.Mix(moved, frame, 128, 128);
}

/// The same into `mean`, in one pass over the rows where the move allows it.
void AverageInto(FrameBuffer& mean, FrameBuffer& frame, const Transform2D& move, const Scratch& scratch)
{
    WarpedRows rows(frame, SizeOf(frame), move);
    if (rows.AreServed() && scratch.Bytes()) {
        rows.Begin(scratch.Bytes());
        for (int y = 0; y < frame.GetHeight(); ++y)
            rows.MeanRow(y, frame.PixelAddress(0, y, 0), mean.PixelAddress(0, y, 0));
        return;
    }
    ImageOps ops;
    ops.Fill(mean, 0);
    ops.WarpAffine(frame, mean, move);
    ops.Mix(frame, mean, 128, 128);
}

/// A way along which a picture is drawn out: forward, or backward with a negative step.
struct Way {
    double turn;
    Doublings doublings;
};

/// Draws the picture out into a streak, in `frame`. `other` is working space.
void StreakWhole(const FrameBuffer& picture, FrameBuffer& frame, FrameBuffer& other, const Way& way,
                 const Scratch& scratch)
{
    // Every step goes from one frame to the other one, so the number of steps says where to begin.
    Doublings doublings = way.doublings;
    FrameBuffer* from = doublings.count > 0 && doublings.count % 2 != 0 ? &other : &frame;
    FrameBuffer* to = from == &frame ? &other : &frame;
    Place(picture, *from);
    for (; doublings.count > 0; --doublings.count, doublings.step *= 2) {
        AverageInto(*to, *from, StepAlong(way.turn, doublings.step), scratch);
        std::swap(from, to);
    }
}

/// Rows from `top` on, as many as there are up to `rows`.
void AttachBand(FrameBuffer& band, const FrameBuffer& picture, int top, int rows)
{
    const int height = std::clamp(picture.GetHeight() - top, 0, rows);
    band.Attach(height > 0 ? picture.PixelAddress(0, top, 0) : nullptr, picture.GetWidth(), height,
                picture.GetStride(), picture.GetPixelBytes(), picture.GetFormat(), picture.IsBottomUp());
}

/// The same, in bands that the caches hold through all the steps where no step leaves its row.
void Streak(const FrameBuffer& picture, FrameBuffer& frame, FrameBuffer& other, const Way& way,
            const Scratch& scratch)
{
    constexpr int kBandRows = 8;
    const Doublings& doublings = way.doublings;
    const double longest = std::ldexp(doublings.step, std::max(doublings.count - 1, 0));
    if (doublings.count < 2 || !scratch.Bytes()
        || !WarpedRows(frame, SizeOf(frame), StepAlong(way.turn, longest)).StayInTheirRows())
        return StreakWhole(picture, frame, other, way, scratch);
    for (int top = 0; top < frame.GetHeight(); top += kBandRows) {
        FrameBuffer pictureBand, band, otherBand;
        AttachBand(pictureBand, picture, top, kBandRows);
        AttachBand(band, frame, top, kBandRows);
        AttachBand(otherBand, other, 0, band.GetHeight());
        StreakWhole(pictureBand, band, otherBand, way, scratch);
    }
}

/// The same with `moved` left as the last step moved the frame.
// Kept: where a background is smaller than the streak, that shows.
void StreakStepByStep(const FrameBuffer& picture, FrameBuffer& frame, FrameBuffer& moved, const Way& way)
{
    Place(picture, frame);
    for (Doublings doublings = way.doublings; doublings.count > 0; --doublings.count, doublings.step *= 2)
        AverageWithMoved(frame, moved, StepAlong(way.turn, doublings.step));
}

/// What a streak lies on; null for nothing.
const FrameBuffer* GroundOf(Background background, const Clips& clips, Clip clip)
{
    switch (background) {
    case Background::FirstClip:
        return &clips.first;
    case Background::SecondClip:
        return &clips.second;
    case Background::Blended:
        return &clips.Of(clip);
    default:
        return nullptr;
    }
}

/// The streak on its background. Where that does not reach, `smeared` stays as it is.
void LayOnGround(const FrameBuffer& streak, FrameBuffer& smeared, Background background, const Clips& clips,
                 Clip clip)
{
    ImageOps ops;
    if (const FrameBuffer* ground = GroundOf(background, clips, clip))
        ops.AlphaOver(streak, *ground, smeared, true);
    else if (background == Background::Transparent)
        CopyInto(streak, smeared);
    else
        ops.Fill(smeared, 0);
}

/// One picture of the transition, smeared, as a new frame of `size`. Without memory `smeared` has no pixels.
void SmearClip(Clip clip, const Clips& clips, FrameBuffer& smeared, Size size, double progress,
               const Knobs& knobs, MemoryAllocator& allocator)
{
    FrameBuffer forward, backward;
    if (!AllocateLike(forward, clips.first, size, allocator)
        || !AllocateLike(backward, clips.first, size, allocator)
        || !AllocateLike(smeared, clips.first, size, allocator))
        return;

    const double share = smear::SmearShare(clip, progress, knobs.crossFade);
    const float length = smear::SmearLength(knobs.blur, size.width, share);
    const smear::Lengths lengths = smear::SplitLength(clip, length, knobs.direction);
    const double turn = smear::Turn(knobs.angle);

    const Way there = {turn, smear::DoublingsFor(lengths.forward)};
    const Doublings across = smear::DoublingsFor(lengths.backward);
    const Way back = {turn, {across.count, -across.step}};
    const FrameBuffer& picture = clips.Of(clip);
    const FrameBuffer* const ground = GroundOf(knobs.background, clips, clip);
    ImageOps ops;
    ops.Fill(smeared, 0); // a second picture may be smaller
    if (ground && CommonSize(*ground, smeared) != size) {
        StreakStepByStep(picture, forward, smeared, there);
        StreakStepByStep(picture, backward, smeared, back);
    } else {
        Scratch scratch;
        scratch.Allocate(allocator, WarpedRows::WorkBytes(size.width, IsFloat(picture.GetFormat())));
        Streak(picture, forward, smeared, there, scratch);
        Streak(picture, backward, smeared, back, scratch);
    }

    // The longer streak has the greater weight.
    const Weights weights = smear::WeightsFor(static_cast<double>(knobs.direction));
    if (clip == Clip::First)
        ops.Mix(backward, forward, weights.rising, weights.falling);
    else
        ops.Mix(backward, forward, weights.falling, weights.rising);
    LayOnGround(forward, smeared, knobs.background, clips, clip);
}

void Show(FrameBuffer& first, FrameBuffer& second, FrameBuffer& output, const smear::Dissolve& dissolve)
{
    ImageOps ops;
    CopyInto(dissolve.shown == Shown::Second ? second : first, output);
    if (dissolve.shown == Shown::Both)
        ops.Mix(second, output, dissolve.weights.rising, dissolve.weights.falling);
}

} // namespace

bool CSmear::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const double progress = ClampProgress(ReadField<double>(call.info, offsetof(RenderInfo, progress)));
    const Knobs knobs = ReadKnobs(call.host);

    Clips clips;
    FrameBuffer second, target, output;
    clips.first.AttachFrame(&call.firstPicture);
    second.AttachFrame(call.secondPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(clips.first, target);
    if (!AreServedAlike(clips.first, target) || IsEmpty(size))
        return true;
    if (AreServedAlike(clips.first, second))
        clips.second.AttachBuffer(second);
    AttachCorner(output, target, size);

    // The output may lie in a picture's own memory: it is written last.
    FrameBuffer smeared[2];
    SmearClip(Clip::First, clips, smeared[0], size, progress, knobs, allocator);
    SmearClip(Clip::Second, clips, smeared[1], size, progress, knobs, allocator);
    Show(smeared[0], smeared[1], output, smear::DissolveAt(progress, knobs.crossFade));
    return true;
}

} // namespace kelmora

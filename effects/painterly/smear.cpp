#include "effects/painterly/smear.h"

#include <algorithm>

#include "effects/common/knob_reader.h"
#include "effects/painterly/crossfade.h"
#include "effects/painterly/smear_plan.h"
#include "effects/painterly/smear_streaks.h"
#include "effects/painterly/smear_tiles.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/transform_2d.h"

namespace kelmora {
namespace {

using smear::AttachBand;
using smear::AttachColumns;
using smear::Background;
using smear::Clip;
using smear::Columns;
using smear::Doublings;
using smear::Knobs;
using smear::LevelStreak;
using smear::Place;
using smear::Shift;
using smear::Shown;
using smear::Slant;
using smear::SlantedStreak;
using smear::StepAlong;
using smear::Steps;
using smear::Tile;
using smear::Tiles;
using smear::Way;
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

/// The mean of the frame and itself moved, in `frame`; `moved` is working space. What comes in from outside, all of
/// it where the move has no inverse, is transparent.
void AverageWithMoved(FrameBuffer& frame, FrameBuffer& moved, const Transform2D& move)
{
    ImageOps ops;
    ops.Fill(moved, 0);
    ops.WarpAffine(frame, moved, move);
    ops.Mix(moved, frame, 128, 128);
}

/// Draws the picture out into a streak, in `frame`, of any kind; leaves `moved` as the last step moved the frame.
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

/// What a picture of the transition is smeared with.
struct Plan {
    Clip clip;
    Way there, back;
    Weights weights; ///< of the streak backward and of the one forward: the longer one has the greater
};

Plan MakePlan(Clip clip, const Knobs& knobs, int width, double progress)
{
    const double share = smear::SmearShare(clip, progress, knobs.crossFade);
    const float length = smear::SmearLength(knobs.blur, width, share);
    const smear::Lengths lengths = smear::SplitLength(clip, length, knobs.direction);
    const double turn = smear::Turn(knobs.angle);
    const Doublings across = smear::DoublingsFor(lengths.backward);
    const Weights weights = smear::WeightsFor(static_cast<double>(knobs.direction));
    return {clip,
            {turn, smear::DoublingsFor(lengths.forward)},
            {turn, {across.count, -across.step}},
            clip == Clip::First ? weights : Weights{weights.falling, weights.rising}};
}

/// How a smeared picture comes into the output: in place of what is there, or mixed into it.
struct Entry {
    bool mixes;
    Weights weights; ///< of the picture and of what is there
};

/// Whether bands of a ground's rows can be taken for grounds of their own: composites of one format go by whole pixels.
bool ComesInBands(const FrameBuffer& ground, Size size)
{
    return ground.GetWidth() >= size.width && ground.GetHeight() >= size.height
        && (ground.GetFormat() != PF_BGRA8 || HasWholePixelRows(ground));
}

/// What comes of a picture of the transition, and where.
struct Task {
    const Plan& plan;
    const Clips& clips;
    Background background;
    const Entry& entry;
    FrameBuffer& output;

    const FrameBuffer& Picture() const { return clips.Of(plan.clip); }

    /// Both streaks on their ground, in `smeared`, as far as that reaches. Spends `forward`.
    void Lay(FrameBuffer& forward, const FrameBuffer& backward, const Clips& grounds,
             FrameBuffer& smeared) const
    {
        ImageOps ops;
        ops.Mix(backward, forward, plan.weights.rising, plan.weights.falling);
        LayOnGround(forward, smeared, background, grounds, plan.clip);
    }

    /// The same for a part of the pictures which the ground covers, into the output's. `space` is as large.
    void Enter(FrameBuffer& forward, const FrameBuffer& backward, const Clips& part, FrameBuffer& space,
               FrameBuffer& out) const
    {
        ImageOps ops;
        const bool isDirect = !entry.mixes && HasWholePixelRows(out); // composites go by whole pixels
        Lay(forward, backward, part, isDirect ? out : space);
        if (entry.mixes)
            ops.Mix(space, out, entry.weights.rising, entry.weights.falling);
        else if (!isDirect)
            CopyInto(space, out);
    }
};

/// Step by step, in whole pictures.
void SmearWhole(const Task& task, MemoryAllocator& allocator)
{
    const Size size = SizeOf(task.output);
    FrameBuffer forward, backward, smeared;
    if (!AllocateLike(forward, task.clips.first, size, allocator)
        || !AllocateLike(backward, task.clips.first, size, allocator)
        || !AllocateLike(smeared, task.clips.first, size, allocator))
        return;
    ImageOps ops;
    ops.Fill(smeared, 0); // a second picture may be smaller
    StreakStepByStep(task.Picture(), forward, smeared, task.plan.there);
    StreakStepByStep(task.Picture(), backward, smeared, task.plan.back);
    task.Lay(forward, backward, task.clips, smeared);
    if (task.entry.mixes)
        ops.Mix(smeared, task.output, task.entry.weights.rising, task.entry.weights.falling);
    else
        CopyInto(smeared, task.output);
}

/// Streaks along the rows, in bands of these.
void SmearLevel(const Task& task, const Steps& there, const Steps& back, MemoryAllocator& allocator)
{
    constexpr int kRows = LevelStreak::kBandRows;
    const Size size = SizeOf(task.output);
    LevelStreak forward(there), backward(back);
    FrameBuffer laid;
    if (!forward.Allocate(task.clips.first, size, allocator)
        || !backward.Allocate(task.clips.first, size, allocator)
        || !AllocateLike(laid, task.clips.first, {size.width, std::min(kRows, size.height)}, allocator))
        return;
    for (int top = 0; top < size.height; top += kRows) {
        Clips bands;
        FrameBuffer space, out;
        AttachBand(bands.first, task.clips.first, top, kRows);
        AttachBand(bands.second, task.clips.second, top, kRows);
        AttachBand(out, task.output, top, kRows);
        AttachBand(space, laid, 0, out.GetHeight());
        task.Enter(forward.Band(task.Picture(), top), backward.Band(task.Picture(), top), bands, space, out);
    }
}

/// The wanted columns of one row.
void LayRow(const Task& task, SlantedStreak& forward, SlantedStreak& backward, FrameBuffer& laid, int y,
            const Columns& columns)
{
    const auto attach = [&](FrameBuffer& part, const FrameBuffer& picture) {
        FrameBuffer row;
        AttachBand(row, picture, y, 1);
        AttachColumns(part, row, columns.begin, columns.end);
    };
    Clips parts;
    FrameBuffer space, out;
    attach(parts.first, task.clips.first);
    attach(parts.second, task.clips.second);
    attach(out, task.output);
    AttachColumns(space, laid, 0, columns.end - columns.begin);
    task.Enter(forward.Row(y), backward.Row(y), parts, space, out);
}

/// Streaks across the rows, in tiles that lie along them.
void SmearSlanted(const Task& task, const Steps& there, const Steps& back, MemoryAllocator& allocator)
{
    const Shift& longest = there.Count() > back.Count() ? there.Last() : back.Last();
    const Slant slant = Slant::Along(longest.X(), longest.Y());
    // Every row of a tile has its price, so there are few: as wide as memory lets them be, below 64 MB at 2160p.
    const int columns = IsFloat(task.output.GetFormat()) ? 768 : 3072;
    const Tiles tiles(SizeOf(task.output), slant, std::max(there.Margin(slant), back.Margin(slant)), columns);
    SlantedStreak forward(there, tiles), backward(back, tiles);
    FrameBuffer laid;
    if (!forward.Allocate(task.clips.first, allocator) || !backward.Allocate(task.clips.first, allocator)
        || !AllocateLike(laid, task.clips.first, {tiles.Most().width, 1}, allocator))
        return;
    for (std::int64_t i = 0; i < tiles.Count(); ++i) {
        const Tile tile = tiles.At(i);
        forward.Begin(task.Picture(), tile);
        backward.Begin(task.Picture(), tile);
        for (int y = tile.firstRow; y < tile.endRow; ++y)
            if (const Columns wanted = tiles.Wanted(tile, y); !wanted.IsEmpty())
                LayRow(task, forward, backward, laid, y, wanted);
    }
}

/// Smears one picture of the transition, part by part as far as that serves. Without memory nothing enters.
void SmearClip(const Plan& plan, const Clips& clips, Background background, FrameBuffer& output,
               const Entry& entry, MemoryAllocator& allocator)
{
    const Size size = SizeOf(output);
    const bool floats = IsFloat(clips.first.GetFormat());
    const FrameBuffer* const ground = GroundOf(background, clips, plan.clip);
    const Steps there(plan.there, size, floats), back(plan.back, size, floats);
    const Task task = {plan, clips, background, entry, output};
    if ((ground && !ComesInBands(*ground, size)) || !there.AreServed() || !back.AreServed())
        SmearWhole(task, allocator);
    else if (there.AreLevel() && back.AreLevel())
        SmearLevel(task, there, back, allocator);
    else
        SmearSlanted(task, there, back, allocator);
}

/// The pictures that are shown, one after the other.
void Show(const Clips& clips, const Knobs& knobs, double progress, FrameBuffer& output,
          MemoryAllocator& allocator)
{
    const smear::Dissolve dissolve = smear::DissolveAt(progress, knobs.crossFade);
    const auto smear = [&](Clip clip, const Entry& entry) {
        SmearClip(MakePlan(clip, knobs, output.GetWidth(), progress), clips, knobs.background, output, entry,
                  allocator);
    };
    if (dissolve.shown != Shown::Second)
        smear(Clip::First, {false, {}});
    if (dissolve.shown != Shown::First)
        smear(Clip::Second, {dissolve.shown == Shown::Both, dissolve.weights});
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

    if (!Overlap(output, clips.first) && !Overlap(output, clips.second)) {
        Show(clips, knobs, progress, output, allocator);
        return true;
    }
    FrameBuffer aside; // the pictures must stay as they are until the last of their pixels is read
    if (AllocateLike(aside, clips.first, size, allocator)) {
        CopyInto(output, aside);
        Show(clips, knobs, progress, aside, allocator);
        CopyInto(aside, output);
    }
    return true;
}

} // namespace kelmora

#include "effects/painterly/smear.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "effects/common/knob_reader.h"
#include "effects/painterly/crossfade.h"
#include "effects/painterly/smear_plan.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/primitives/warp_map.h"
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

/// A way along which a picture is drawn out: forward, or backward with a negative step.
struct Way {
    double turn;
    Doublings doublings;
};

/// Rows from `top` on, as many as there are up to `rows`.
void AttachBand(FrameBuffer& band, const FrameBuffer& picture, int top, int rows)
{
    const int height = std::clamp(picture.GetHeight() - top, 0, rows);
    band.Attach(height > 0 ? picture.PixelAddress(0, top, 0) : nullptr, picture.GetWidth(), height,
                picture.GetStride(), picture.GetPixelBytes(), picture.GetFormat(), picture.IsBottomUp());
}

/// Columns from `left` to before `end`, as many as there are.
void AttachColumns(FrameBuffer& part, const FrameBuffer& picture, int left, int end)
{
    const int width = std::max(std::min(picture.GetWidth(), end) - left, 0);
    part.Attach(width > 0 ? picture.PixelAddress(left, 0, 0) : nullptr, width, picture.GetHeight(),
                picture.GetStride(), picture.GetPixelBytes(), picture.GetFormat(), picture.IsBottomUp());
}

/// In which order the rows of a picture can be replaced by themselves moved, none of them read after that.
enum class Order { None, Downward, Upward };

Order OrderFor(const Transform2D& move, int height)
{
    constexpr double kSurelyAbove = -1e-9; // beyond what rounding could lift to the row itself
    AffineMap map;
    if (InvertAffine(move.ToCoefficients().rows, map) != pxOk)
        return Order::None;
    if (map.isShift)
        return map.y0 >= 0.0 ? Order::Downward : Order::Upward;
    const double first = map.Y(0, map.RowY(0)), last = map.Y(0, map.RowY(height - 1)) - (height - 1);
    if (first >= 0.0 && last >= 0.0)
        return Order::Downward;
    return first < kSurelyAbove && last < kSurelyAbove ? Order::Upward : Order::None;
}

/// A picture drawn out into a streak, in bands of its rows. Only a streak that leaves its rows takes memory for all of
/// them: one that stays in them is made band by band, and none is the picture itself.
class Streak {
public:
    static constexpr int kBandRows = 8;

    /// For pictures of up to `size`; `like` is one of the kind, and at least as large.
    Streak(const FrameBuffer& like, Size size, const Way& way) : m_like(like), m_most(size), m_way(way)
    {
        const double longest = std::ldexp(way.doublings.step, std::max(way.doublings.count - 1, 0));
        m_isWhole = way.doublings.count > 0
            && !WarpedRows(like, size, StepAlong(way.turn, longest)).StayInTheirRows();
        // A single move sees the row below, if only as often as never: what is infinite there shows.
        m_bandRows = way.doublings.count == 1 ? kBandRows + 1 : kBandRows;
    }

    /// Whether all of its moves can be made row by row.
    bool IsServed() const
    {
        Doublings doublings = m_way.doublings;
        for (; doublings.count > 0; --doublings.count, doublings.step *= 2) {
            const Transform2D move = StepAlong(m_way.turn, doublings.step);
            if (!WarpedRows(m_like, m_most, move).AreServed() || OrderFor(move, m_most.height) == Order::None)
                return false;
        }
        return true;
    }

    bool IsWhole() const { return m_isWhole; }

    /// Columns to each side from which something may reach a pixel; more than any picture has where columns cannot be
    /// taken for pictures of their own.
    double Sway() const
    {
        double sway = 0.0;
        Doublings doublings = m_way.doublings;
        for (; doublings.count > 0; --doublings.count, doublings.step *= 2) {
            AffineMap map;
            if (InvertAffine(StepAlong(m_way.turn, doublings.step).ToCoefficients().rows, map) != pxOk
                || !map.isShift)
                return HUGE_VAL;
            sway += std::ceil(std::fabs(map.x0)) + 1.0;
        }
        return sway;
    }

    /// False when there is no memory.
    bool Allocate(MemoryAllocator& allocator)
    {
        const bool floats = IsFloat(m_like.GetFormat());
        const Size size = {m_most.width, m_isWhole ? m_most.height : std::min(m_bandRows, m_most.height)};
        return AllocateLike(m_memory, m_like, size, allocator)
            && m_work.Allocate(allocator, WarpedRows::WorkBytes(m_most.width, floats))
            && m_row.Allocate(allocator, std::int64_t{m_most.width} * m_like.GetPixelBytes());
    }

    /// From here on, of the first `width` columns of the picture, transparent where it has none. It must stay.
    void Begin(const FrameBuffer& picture, int width)
    {
        m_picture = &picture;
        AttachColumns(m_frame, m_memory, 0, width);
        if (m_isWhole)
            Draw(picture, m_frame);
    }

    /// The rows from `top` on, up to kBandRows of them, for the caller to change; valid until the next call.
    FrameBuffer& Band(int top)
    {
        if (!m_isWhole) {
            FrameBuffer picture, frame;
            AttachBand(picture, *m_picture, top, m_bandRows);
            AttachBand(frame, m_frame, 0, std::min(m_bandRows, m_most.height - top));
            Draw(picture, frame);
        }
        AttachBand(m_band, m_frame, m_isWhole ? top : 0, std::min(kBandRows, m_most.height - top));
        return m_band;
    }

private:
    void Draw(const FrameBuffer& picture, FrameBuffer& frame)
    {
        Place(picture, frame);
        Doublings doublings = m_way.doublings;
        for (; doublings.count > 0; --doublings.count, doublings.step *= 2)
            AverageInPlace(frame, StepAlong(m_way.turn, doublings.step));
    }

    void AverageInPlace(FrameBuffer& frame, const Transform2D& move)
    {
        WarpedRows rows(frame, SizeOf(frame), move);
        rows.Begin(m_work.Bytes());
        const bool upward = OrderFor(move, frame.GetHeight()) == Order::Upward;
        const auto rowBytes =
            static_cast<std::size_t>(frame.GetWidth()) * static_cast<std::size_t>(frame.GetPixelBytes());
        for (int i = 0; i < frame.GetHeight(); ++i) {
            const int y = upward ? frame.GetHeight() - 1 - i : i;
            std::uint8_t* const row = frame.PixelAddress(0, y, 0);
            rows.MeanRow(y, row, m_row.Bytes()); // which may read the row more than once
            std::memcpy(row, m_row.Bytes(), rowBytes);
        }
    }

    const FrameBuffer& m_like;
    const Size m_most;
    const Way m_way;
    bool m_isWhole;
    int m_bandRows;
    const FrameBuffer* m_picture = nullptr;
    FrameBuffer m_memory, m_frame, m_band;
    Scratch m_work, m_row;
};

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

void Enter(const FrameBuffer& smeared, FrameBuffer& output, const Entry& entry)
{
    ImageOps ops;
    if (entry.mixes)
        ops.Mix(smeared, output, entry.weights.rising, entry.weights.falling);
    else
        CopyInto(smeared, output);
}

/// Smears one picture of the transition step by step, in whole pictures. Without memory nothing enters.
void SmearWhole(const Plan& plan, const Clips& clips, Background background, FrameBuffer& output,
                const Entry& entry, MemoryAllocator& allocator)
{
    const Size size = SizeOf(output);
    FrameBuffer forward, backward, smeared;
    if (!AllocateLike(forward, clips.first, size, allocator)
        || !AllocateLike(backward, clips.first, size, allocator)
        || !AllocateLike(smeared, clips.first, size, allocator))
        return;
    ImageOps ops;
    ops.Fill(smeared, 0); // a second picture may be smaller
    StreakStepByStep(clips.Of(plan.clip), forward, smeared, plan.there);
    StreakStepByStep(clips.Of(plan.clip), backward, smeared, plan.back);
    ops.Mix(backward, forward, plan.weights.rising, plan.weights.falling);
    LayOnGround(forward, smeared, background, clips, plan.clip);
    Enter(smeared, output, entry);
}

/// Whether bands of a ground's rows can be taken for grounds of their own: composites of one format go by whole pixels.
bool ComesInBands(const FrameBuffer& ground, Size size)
{
    return ground.GetWidth() >= size.width && ground.GetHeight() >= size.height
        && (ground.GetFormat() != PF_BGRA8 || HasWholePixelRows(ground));
}

/// Columns of a picture at a time: from `first` to before `end`, with those around that reach them.
struct Tile {
    int first, end;
    int left, right; ///< the first and the one behind the last of them all
};

/// Lays the streaks of a tile, which have begun, on its ground, into the output's columns.
void EnterTile(const Plan& plan, const Clips& clips, Background background, Streak& forward, Streak& backward,
               const Tile& tile, FrameBuffer& laid, FrameBuffer& output, const Entry& entry)
{
    Clips columns;
    FrameBuffer target, inner;
    AttachColumns(columns.first, clips.first, tile.left, tile.right);
    AttachColumns(columns.second, clips.second, tile.left, tile.right);
    AttachColumns(target, output, tile.first, tile.end);
    AttachColumns(inner, laid, 0, tile.right - tile.left);
    ImageOps ops;
    for (int top = 0; top < output.GetHeight(); top += Streak::kBandRows) {
        Clips bands;
        FrameBuffer smeared, shown, out;
        AttachBand(bands.first, columns.first, top, Streak::kBandRows);
        AttachBand(bands.second, columns.second, top, Streak::kBandRows);
        AttachBand(out, target, top, Streak::kBandRows);
        AttachBand(smeared, inner, 0, out.GetHeight());
        FrameBuffer& streak = forward.Band(top);
        ops.Mix(backward.Band(top), streak, plan.weights.rising, plan.weights.falling);
        LayOnGround(streak, smeared, background, bands, plan.clip);
        AttachColumns(shown, smeared, tile.first - tile.left, tile.end - tile.left);
        Enter(shown, out, entry);
    }
}

/// The same, in bands of rows and, where streaks run along them, of columns, as far as that serves.
void SmearClip(const Plan& plan, const Clips& clips, Background background, FrameBuffer& output,
               const Entry& entry, MemoryAllocator& allocator)
{
    constexpr int kTileColumns = 512;
    constexpr double kMostSway = 64.0; // beyond, tiles would be mostly surroundings
    const Size size = SizeOf(output);
    const FrameBuffer* const ground = GroundOf(background, clips, plan.clip);
    const Streak there(clips.first, size, plan.there), back(clips.first, size, plan.back);
    if ((ground && !ComesInBands(*ground, size)) || !there.IsServed() || !back.IsServed())
        return SmearWhole(plan, clips, background, output, entry, allocator);

    const double sway = std::max(there.Sway(), back.Sway());
    const bool tiles = (there.IsWhole() || back.IsWhole()) && sway <= kMostSway;
    const int around = tiles ? static_cast<int>(sway) : 0;
    const int step = tiles ? kTileColumns : size.width;
    const Size most = {std::min(step + 2 * around, size.width), size.height};
    Streak forward(clips.first, most, plan.there), backward(clips.first, most, plan.back);
    FrameBuffer laid;
    if (!forward.Allocate(allocator) || !backward.Allocate(allocator)
        || !AllocateLike(laid, clips.first, {most.width, std::min(Streak::kBandRows, size.height)},
                         allocator))
        return;
    for (int x = 0; x < size.width; x += step) {
        const int end = std::min(x + step, size.width);
        const Tile tile = {x, end, std::max(x - around, 0), std::min(end + around, size.width)};
        FrameBuffer picture;
        AttachColumns(picture, clips.Of(plan.clip), tile.left, tile.right);
        forward.Begin(picture, tile.right - tile.left);
        backward.Begin(picture, tile.right - tile.left);
        EnterTile(plan, clips, background, forward, backward, tile, laid, output, entry);
    }
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

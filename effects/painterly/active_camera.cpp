#include "effects/painterly/active_camera.h"

#include <cmath>
#include <optional>

#include "effects/common/knob_reader.h"
#include "effects/painterly/active_camera_plan.h"
#include "effects/painterly/camera_walk.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/row_mix.h"
#include "image/scratch.h"
#include "image/warped_rows.h"

namespace kelmora {
namespace {

using active_camera::Axes;
using active_camera::Knobs;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.horizontal = read.Level(0);
    knobs.vertical = read.Level(1);
    knobs.rotation = read.Level(2);
    knobs.crop = read.Level(3);
    knobs.rate = read.Level(4);
    knobs.jitter = read.Level(5);
    knobs.hold = read.Level(6);
    knobs.blur = read.Level(7);
    knobs.synchronize = read.Check(8);
    return knobs;
}

/// The pixels' width over their height. A field's rows count as twice as high as the frame's when the host gives
/// no aspect, or none that can be divided by.
double AspectOf(const RenderInfo* info)
{
    if (ReadField<std::uint32_t>(info, offsetof(RenderInfo, flags)) & RenderHasAspect) {
        const auto aspect = ReadField<double>(info, offsetof(RenderInfo, pixelAspect));
        if (std::isfinite(aspect) && aspect != 0.0)
            return aspect;
    }
    return IsHalfHeight(info) ? 2.0 : 1.0;
}

/// The two samples of the motion in a frame.
template <class T>
struct Samples {
    T earlier = {}, now = {};
};

/// The curves of the axes that move. A walk serves both samples, and all axes that share its seed.
Samples<Axes> SwayAt(const Samples<float>& times, const Knobs& knobs)
{
    const Axes amounts = active_camera::AmountsOf(knobs);
    Samples<Axes> sway;
    std::optional<Samples<CameraInterval>> intervals;
    for (std::size_t axis = 0; axis < active_camera::kAxes; ++axis) {
        if (!(amounts[axis] > 0.0f))
            continue;
        if (!intervals || !knobs.synchronize) {
            CameraWalk walk(knobs.rate, knobs.hold, active_camera::TimingSeed(axis, knobs.synchronize));
            intervals.emplace();
            intervals->earlier = walk.AdvanceTo(times.earlier);
            intervals->now = walk.AdvanceTo(times.now);
        }
        const std::uint32_t valueSeed = active_camera::kValueSeeds[axis];
        sway.earlier[axis] = CameraNoise(intervals->earlier, knobs.jitter, valueSeed);
        sway.now[axis] = CameraNoise(intervals->now, knobs.jitter, valueSeed);
    }
    return sway;
}

/// Both samples, mixed into the output, row by row: neither exists as a whole picture.
void MixRows(WarpedRows& now, WarpedRows& earlier, FrameBuffer& output, int earlierWeight,
             MemoryAllocator& allocator)
{
    const bool floats = IsFloat(output.GetFormat());
    const int width = output.GetWidth();
    const std::int64_t work = WarpedRows::WorkBytes(width, floats);
    Scratch scratch;
    if (!scratch.Allocate(allocator, 2 * work + std::int64_t{width} * output.GetPixelBytes()))
        return;
    now.Begin(scratch.Bytes());
    earlier.Begin(scratch.Bytes() + work);
    std::uint8_t* const row = scratch.Bytes() + 2 * work;
    const RowMix mix(output.GetFormat(), 255 - earlierWeight, earlierWeight);
    for (int y = 0; y < output.GetHeight(); ++y) {
        std::uint8_t* const out = output.PixelAddress(0, y, 0);
        now.Row(y, row);
        earlier.Row(y, out);
        mix(row, out, width);
    }
}

/// Both samples, mixed into the output. Without memory the output stays as it is.
void WarpTwice(const FrameBuffer& picture, FrameBuffer& output, const Samples<Transform2D>& views, float blur,
               MemoryAllocator& allocator)
{
    const int weight = active_camera::EarlierWeight(blur);
    WarpedRows rowsNow(picture, SizeOf(output), views.now),
        rowsEarlier(picture, SizeOf(output), views.earlier);
    if (rowsNow.AreServed() && rowsEarlier.AreServed() && AreServedAlike(picture, output))
        return MixRows(rowsNow, rowsEarlier, output, weight, allocator);

    ImageOps ops;
    FrameBuffer now;
    if (!AllocateLike(now, picture, SizeOf(output), allocator))
        return;
    ops.Fill(now, 0);
    ops.Fill(output, 0);
    ops.WarpAffine(picture, now, views.now);
    ops.WarpAffine(picture, output, views.earlier);
    ops.Mix(now, output, 255 - weight, weight);
}

} // namespace

bool CActivecamera::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer given, target, output, picture;
    given.AttachFrame(&call.firstPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(given, target);
    if (IsEmpty(size))
        return true;
    AttachCorner(output, target, size);
    ImageOps ops;
    if (given.GetFormat() != output.GetFormat()) {
        ops.Fill(output, 0); // which no picture reaches
        return true;
    }
    if (!SetAside(given, output, picture, allocator))
        return true;

    const bool blurs = knobs.blur > 0.0f;
    const auto asked = ReadField<double>(call.info, offsetof(RenderInfo, time));
    const double time = std::isfinite(asked) ? asked : 0.0;
    const double earlier = blurs ? active_camera::EarlierTime(time, knobs.blur) : time;
    const Samples<Axes> sway = SwayAt({CameraTime(earlier), CameraTime(time)}, knobs);

    const double aspect = AspectOf(call.info);
    const Samples<Transform2D> views = {
        active_camera::CameraTransform(knobs, size, aspect, sway.earlier),
        active_camera::CameraTransform(knobs, size, aspect, sway.now),
    };
    if (blurs) {
        WarpTwice(picture, output, views, knobs.blur, allocator);
    } else {
        ops.Fill(output, 0);
        ops.WarpAffine(picture, output, views.now);
    }
    return true;
}

} // namespace kelmora

#include "effects/painterly/water_color.h"

#include <cstdint>

#include "effects/common/knob_reader.h"
#include "effects/painterly/water_color_plan.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/primitives/median.h"
#include "image/primitives/neighbourhood.h"
#include "image/primitives/pad.h"

namespace kelmora {
namespace {

using water_color::Brush;
using water_color::Knobs;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.brushWidth = read.Level(4);
    knobs.contrast = read.Level(3);
    knobs.brightness = read.Level(2);
    knobs.color = read.Level(1);
    knobs.colorShift = read.Level(0);
    knobs.blend = read.Level(5);
    return knobs;
}

/// A new BGRA8 picture of `size` with the contents of `from`, which is as large or larger.
bool Take(FrameBuffer& canvas, const FrameBuffer& from, Size size, MemoryAllocator& allocator)
{
    ImageOps ops;
    return canvas.Allocate(size.width, size.height, 4, &allocator, PF_BGRA8, false)
        && (from.GetFormat() == PF_ARGB8 ? ops.ReverseChannels(from, canvas) : ops.Convert(from, canvas));
}

/// A copy of `frame` with its edge pixels extended to every side.
bool PadInto(FrameBuffer& padded, const FrameBuffer& frame, int marginX, int marginY,
             MemoryAllocator& allocator)
{
    ImageOps ops;
    return padded.Allocate(frame.GetWidth() + 2 * marginX, frame.GetHeight() + 2 * marginY,
                           frame.GetPixelBytes(), &allocator, frame.GetFormat(), false)
        && ops.ExtendBorder(frame, padded, marginX, marginY);
}

/// The median of every pixel's surroundings, in place.
bool PaintMedian(FrameBuffer& frame, const Brush& brush)
{
    if (brush.radiusX > water_color::kMostRadius)
        return false;
    MemoryAllocator own;
    FrameBuffer padded;
    if (!PadInto(padded, frame, brush.radiusX, brush.radiusY, own))
        return false;
    return pxMedian_8u_A3(padded.PixelAddress(brush.radiusX, brush.radiusY, 0), padded.GetStride(),
                          frame.GetPixels(), frame.GetStride(), frame.GetWidth(), frame.GetHeight(),
                          2 * brush.radiusX + 1, 2 * brush.radiusY + 1, brush.radiusX, brush.radiusY)
        == pxOk;
}

/// A fixed sharpening, in place.
bool PaintSharpen(FrameBuffer& frame)
{
    MemoryAllocator own;
    FrameBuffer padded;
    return PadInto(padded, frame, 1, 1, own)
        && pxSharpen3x3_8u_A3(padded.PixelAddress(1, 1, 0), padded.GetStride(), frame.GetPixels(),
                              frame.GetStride(), frame.GetWidth(), frame.GetHeight())
        == pxOk;
}

bool Paint(const FrameBuffer& picture, FrameBuffer& canvas, const Knobs& knobs, bool halfHeight,
           MemoryAllocator& allocator)
{
    ImageOps ops;
    ops.AdjustColor(picture, canvas, knobs.contrast, knobs.brightness, knobs.color,
                    water_color::HueOf(knobs.colorShift), &allocator);
    const Brush brush = water_color::BrushFor(knobs.brushWidth, picture.GetHeight(), halfHeight);
    for (int pass = 0; pass < brush.passes; ++pass)
        if (!PaintMedian(canvas, brush))
            return false;
    return PaintSharpen(canvas);
}

} // namespace

bool CWaterColor::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer given, target, output, picture;
    given.AttachFrame(&call.firstPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(given, target);
    if (!AreServedAlike(given, target) || IsEmpty(size))
        return false;
    AttachCorner(output, target, size);
    if (!SetAside(given, output, picture, allocator))
        return false;

    ImageOps ops;
    FrameBuffer source, canvas;
    const bool inPlace = picture.GetFormat() == PF_BGRA8;
    if (inPlace) {
        source.AttachBuffer(picture);
        canvas.AttachBuffer(output);
    } else if (!Take(source, picture, size, allocator) || !Take(canvas, output, size, allocator)) {
        return false;
    }

    if (!Paint(source, canvas, knobs, IsHalfHeight(call.info), allocator))
        return false;
    if (!inPlace)
        picture.GetFormat() == PF_ARGB8 ? ops.ReverseChannels(canvas, output) : ops.Convert(canvas, output);
    if (knobs.blend < 1.0f)
        ops.AddWeighted(picture, output, output, 1.0f - knobs.blend, knobs.blend);
    const int alpha = AlphaIndex(picture.GetFormat());
    ops.CopyChannel(picture, output, alpha, alpha);
    return true;
}

} // namespace kelmora

#include "effects/fixing/crop_borders.h"

#include <algorithm>

#include "effects/common/knob_reader.h"
#include "effects/fixing/crop_borders_float_rows.h"
#include "effects/fixing/crop_borders_plan.h"
#include "effects/fixing/crop_borders_rows.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"

namespace kelmora {
namespace {

using crop_borders::Crop;
using crop_borders::CropRows;
using crop_borders::FloatCropRows;
using crop_borders::Knobs;
using crop_borders::Rect;
using crop_borders::Style;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.horizCrop = read.Level(0);
    knobs.vertCrop = read.Level(1);
    knobs.feather = read.Level(2);
    knobs.style = static_cast<Style>(read.Choice(3));
    return knobs;
}

Crop MakeCrop(const Knobs& knobs, Size size, bool halfHeight)
{
    const float feather = crop_borders::FeatherSize(knobs.feather, size.height);
    return {crop_borders::KeptRect(knobs, size.width, size.height),
            crop_borders::FeatherWidth(feather, halfHeight), feather};
}

/// The kept part on the whole of `zoomed`, a picture of `src`'s size.
bool Zoom(const FrameBuffer& src, FrameBuffer& zoomed, const Rect& kept)
{
    if (IsFloatColour(src.GetFormat()))
        return crop_borders::ZoomFloats(src, zoomed, kept, {0, 0, 0, 0});
    ImageOps ops;
    return ops.ResizeRect(src, zoomed, kept.left, kept.top, kept.right, kept.bottom, 0, 0, zoomed.GetWidth(),
                          zoomed.GetHeight(), 2, 0, 0);
}

/// A new plane for a mask of the picture.
bool AllocateMask(FrameBuffer& mask, const FrameBuffer& picture, MemoryAllocator& allocator)
{
    const bool floats = IsFloatColour(picture.GetFormat());
    return mask.Allocate(picture.GetWidth(), picture.GetHeight(), floats ? 4 : 1, &allocator,
                         floats ? PF_Mask32F : PF_Mask8, picture.IsBottomUp());
}

/// Fills what the picture has of the rectangle. False for a negative corner and where nothing is left.
bool FillRect(FrameBuffer& picture, const Rect& rect, std::uint32_t colour)
{
    const int right = std::min(rect.right, picture.GetWidth());
    const int bottom = std::min(rect.bottom, picture.GetHeight());
    if (rect.left < 0 || rect.top < 0 || rect.left >= right || rect.top >= bottom)
        return false;
    FrameBuffer part;
    part.Attach(picture.PixelAddress(rect.left, rect.top, 0), right - rect.left, bottom - rect.top,
                picture.GetStride(), picture.GetPixelBytes(), picture.GetFormat(), picture.IsBottomUp());
    ImageOps ops;
    return ops.Fill(part, colour);
}

/// Full where the picture is kept, none at its margins, soft in between.
bool MakeCropMask(FrameBuffer& mask, const Crop& crop, MemoryAllocator& allocator)
{
    const bool bytes = mask.GetFormat() == PF_Mask8;
    FrameBuffer shape;
    ImageOps ops;
    return shape.Allocate(mask.GetWidth(), mask.GetHeight(), bytes ? 4 : 16, &allocator,
                          bytes ? PF_BGRA8 : PF_BGRA32F, mask.IsBottomUp())
        && ops.Fill(shape, 0) && FillRect(shape, crop.kept, 0xFFFFFFFF)
        && ops.Blur(shape, shape, crop.featherX, crop.featherY, &allocator, false)
        && ops.ExtendBorder(shape, shape, 1, 1) // the frame's own edge is not feathered
        && ops.CopyChannel(shape, mask, 0, 0);
}

template <class Rows>
bool OverlayRows(Rows& rows, MemoryAllocator& allocator)
{
    if (!rows.Begin(allocator) || !rows.ZoomGround())
        return false;
    rows.Overlay();
    return true;
}

/// Without memory the kept part is extended all the same.
template <class Rows>
bool TransparentRows(Rows& rows, const FrameBuffer& src, FrameBuffer& dst, const Rect& kept,
                     MemoryAllocator& allocator)
{
    if (!rows.Begin(allocator)) {
        ImageOps ops;
        ops.ExtendBorder(src, dst, kept.left, kept.top);
        return false;
    }
    rows.Transparent();
    return true;
}

// Kept: AlphaOver weighs both pictures together in alpha-first bytes and each by itself in alpha-last ones, where two
// results are cut to whole levels. So Overlay comes out up to a level lower in the latter.

/// The kept part with a soft edge, over itself zoomed. Alpha is the source's.
bool OverlayCrop(const FrameBuffer& src, FrameBuffer& dst, const Crop& crop, MemoryAllocator& allocator)
{
    ImageOps ops;
    if (CropRows rows(src, dst, crop); rows.AreServed())
        return OverlayRows(rows, allocator);
    if (FloatCropRows rows(src, dst, crop); rows.AreServed())
        return OverlayRows(rows, allocator);
    const int alpha = AlphaIndex(src.GetFormat());
    FrameBuffer mask, zoomed;
    return AllocateMask(mask, src, allocator) && AllocateLike(zoomed, src, SizeOf(src), allocator)
        && Zoom(src, zoomed, crop.kept) && ops.ExtendBorder(src, dst, crop.kept.left, crop.kept.top)
        && MakeCropMask(mask, crop, allocator) && ops.CopyChannel(mask, dst, 0, alpha)
        && ops.SetChannel(zoomed, alpha, 255) && ops.AlphaOver(dst, zoomed, dst, false)
        && ops.CopyChannel(src, dst, alpha, alpha);
}

/// The kept part, extended, with its alpha times the mask. The product is made in a picture of its own: over
/// black a colour comes out times its alpha, so one alpha goes there as a colour and the other as alpha.
bool TransparentCrop(const FrameBuffer& src, FrameBuffer& dst, const Crop& crop, MemoryAllocator& allocator)
{
    ImageOps ops;
    if (CropRows rows(src, dst, crop); rows.AreServed())
        return TransparentRows(rows, src, dst, crop.kept, allocator);
    if (FloatCropRows rows(src, dst, crop); rows.AreServed())
        return TransparentRows(rows, src, dst, crop.kept, allocator);
    const int alpha = AlphaIndex(src.GetFormat());
    const int colour = 3 - alpha;
    FrameBuffer mask, backdrop, carrier;
    return ops.ExtendBorder(src, dst, crop.kept.left, crop.kept.top) && AllocateMask(mask, src, allocator)
        && MakeCropMask(mask, crop, allocator) && AllocateLike(backdrop, src, SizeOf(src), allocator)
        && AllocateLike(carrier, src, SizeOf(src), allocator) && ops.Fill(backdrop, 0) && ops.Fill(carrier, 0)
        && ops.CopyChannel(src, carrier, alpha, colour) && ops.CopyChannel(mask, carrier, 0, alpha)
        && ops.AlphaOver(carrier, backdrop, carrier, false) && ops.CopyChannel(carrier, dst, colour, alpha);
}

bool ApplyStyle(Style style, const FrameBuffer& src, FrameBuffer& dst, const Crop& crop,
                MemoryAllocator& allocator)
{
    ImageOps ops;
    switch (style) {
    case Style::Scale:
        return Zoom(src, dst, crop.kept);
    case Style::Overlay:
        return OverlayCrop(src, dst, crop, allocator);
    case Style::Extend:
        return ops.ExtendBorder(src, dst, crop.kept.left, crop.kept.top);
    case Style::Transparent:
        return TransparentCrop(src, dst, crop, allocator);
    }
    return false;
}

} // namespace

bool CBorderCrop::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer given, target, part, src, dst;
    given.AttachFrame(&call.firstPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(given, target);
    if (!AreServedAlike(given, target) || IsEmpty(size))
        return false;
    AttachCorner(part, given, size);
    AttachCorner(dst, target, size);
    return SetAside(part, dst, src, allocator)
        && ApplyStyle(knobs.style, src, dst, MakeCrop(knobs, size, IsHalfHeight(call.info)), allocator);
}

} // namespace kelmora

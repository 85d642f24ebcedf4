#include "effects/fixing/pixelator.h"

#include "effects/common/knob_reader.h"
#include "effects/fixing/pixelator_blocks.h"
#include "effects/fixing/pixelator_mask.h"
#include "effects/fixing/pixelator_plan.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"

namespace kelmora {
namespace {

using pixelator::Ellipse;
using pixelator::Knobs;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    read.Point(0, knobs.centerX, knobs.centerY);
    knobs.width = read.Level(1);
    knobs.height = read.Level(2);
    knobs.blockSize = read.Level(3);
    return knobs;
}

/// A new picture of the size of `picture`, all zeros: what no step writes may reach the result.
bool AllocateCleared(FrameBuffer& scratch, const FrameBuffer& picture, std::uint32_t format,
                     MemoryAllocator& allocator)
{
    ImageOps ops;
    return scratch.Allocate(picture.GetWidth(), picture.GetHeight(), PixelBytesOf(format), &allocator, format,
                            picture.IsBottomUp())
        && ops.Fill(scratch, 0);
}

/// Softens the plane, by way of a picture: running sums serve pictures alone. A plane that there is no memory for
/// stays sharp.
void SoftenMask(FrameBuffer& mask, int soft, MemoryAllocator& allocator)
{
    const bool floats = IsFloat(mask.GetFormat());
    const auto size = static_cast<float>(soft);
    FrameBuffer picture;
    ImageOps ops;
    if (AllocateCleared(picture, mask, floats ? PF_BGRA32F : PF_BGRA8, allocator)
        && ops.CopyChannel(mask, picture, 0, 0) && ops.Blur(picture, picture, size, size, &allocator, false))
        ops.CopyChannel(picture, mask, 0, 0);
}

/// Full in the ellipse, none outside, soft in between.
bool MakeMask(FrameBuffer& mask, const FrameBuffer& src, const Ellipse& face, int soft,
              MemoryAllocator& allocator)
{
    if (!AllocateCleared(mask, src, IsFloatColour(src.GetFormat()) ? PF_Mask32F : PF_Mask8, allocator))
        return false;
    pixelator::DrawEllipse(mask, face);
    pixelator::FloodMask(mask, face.centreX, face.centreY, 255, allocator);
    if (soft != 0)
        SoftenMask(mask, soft, allocator);
    return true;
}

/// The picture in blocks, with the mask for alpha, and zeros beyond the region. False when a step has no memory.
bool MakeBlocks(FrameBuffer& blocks, const FrameBuffer& src, const Knobs& knobs, bool halfHeight,
                MemoryAllocator& allocator)
{
    const int height = src.GetHeight();
    const Ellipse face = pixelator::MakeEllipse(knobs, src.GetWidth(), height, src.IsBottomUp());
    const int soft = pixelator::SoftSize(height);
    FrameBuffer mask;
    ImageOps ops;
    return MakeMask(mask, src, face, soft, allocator)
        && AllocateCleared(blocks, src, src.GetFormat(), allocator)
        && pixelator::Pixelate(src, blocks, pixelator::BlockAmount(knobs.blockSize), halfHeight,
                               pixelator::Widened(face, soft), allocator)
        && ops.CopyChannel(mask, blocks, 0, AlphaIndex(src.GetFormat()));
}

/// The blocks over the picture that is in `dst` already. Alpha is the source's.
// Kept: they are laid over in the picture's own format. AlphaOver weighs alpha-first bytes together and divides
// once, alpha-last ones one by one, so results differ by up to a level.
void LayOver(const FrameBuffer& blocks, const FrameBuffer& src, FrameBuffer& dst)
{
    const int alpha = AlphaIndex(src.GetFormat());
    ImageOps ops;
    ops.SetChannel(dst, alpha, 255);
    ops.AlphaOver(blocks, dst, dst, false);
    ops.CopyChannel(src, dst, alpha, alpha);
}

} // namespace

bool CFacePixelator::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer given, target, part, src, dst, blocks;
    given.AttachFrame(&call.firstPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(given, target);
    if (!AreServedAlike(given, target) || IsEmpty(size))
        return true;
    AttachCorner(part, given, size);
    AttachCorner(dst, target, size);
    if (!SetAside(part, dst, src, allocator))
        return true;

    ImageOps ops;
    ops.Copy(src, dst);
    if (MakeBlocks(blocks, src, knobs, IsHalfHeight(call.info), allocator))
        LayOver(blocks, src, dst);
    return true;
}

} // namespace kelmora

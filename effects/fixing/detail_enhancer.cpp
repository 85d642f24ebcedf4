#include "effects/fixing/detail_enhancer.h"

#include <algorithm>

#include "effects/common/knob_reader.h"
#include "effects/fixing/detail_enhancer_plan.h"
#include "effects/fixing/unsharp_combine.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/tent_filter.h"

namespace kelmora {
namespace {

using detail_enhancer::Knobs;
using detail_enhancer::Plan;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.strength = read.Level(1);
    knobs.definition = read.Level(0);
    return knobs;
}

bool IsServed(const FrameBuffer& src, const FrameBuffer& dst)
{
    const int bytes = PixelBytesOf(src.GetFormat());
    return IsPicture(src.GetFormat()) && src.GetPixelBytes() == bytes && dst.GetPixelBytes() == bytes
        && Holds(src, dst.GetWidth(), bytes) && Holds(dst, dst.GetWidth(), bytes);
}

/// What ImageOps::Blur would do from a picture into one of its format and size.
TentJob BlurJob(const FrameBuffer& src, Size size, int xSize, int ySize)
{
    TentJob job = TentJob::Blur(size, std::min(xSize, ImageOps::kMostBlurTaps),
                                std::min(ySize, ImageOps::kMostBlurTaps));
    job.truncate = src.GetFormat() == PF_ARGB8;
    return job;
}

/// Blur and combination in one pass over the rows.
TentResult SharpenRows(const FrameBuffer& src, FrameBuffer& dst, const TentJob& job, float amount,
                       MemoryAllocator& allocator)
{
    const UnsharpCombine combine(src.GetFormat(), amount);
    return FilterTentRows(src, job, allocator, [&](int y, const std::uint8_t* blurred) {
        const std::uint8_t* row = src.PixelAddress(0, y, 0);
        combine(row, blurred, row, dst.PixelAddress(0, y, 0), job.size.width);
    });
}

/// The blur into a picture of its own, then the combination: for an output in the picture's own memory, for
/// pictures too small for running sums, and for rows that are no whole number of pixels apart.
bool SharpenStepwise(const FrameBuffer& src, FrameBuffer& dst, Size size, int xSize, int ySize, float amount,
                     MemoryAllocator& allocator)
{
    const bool bottomUp = IsFloat(src.GetFormat()) && src.IsBottomUp();
    FrameBuffer blurred;
    if (!blurred.Allocate(size.width, size.height, src.GetPixelBytes(), &allocator, src.GetFormat(),
                          bottomUp))
        return false;
    ImageOps ops;
    if (!ops.Blur(src, blurred, static_cast<float>(xSize), static_cast<float>(ySize), &allocator, false))
        return false;
    const UnsharpCombine combine(src.GetFormat(), amount);
    const auto row = [](const FrameBuffer& p, int y) {
        return p.GetPixels() + std::ptrdiff_t{p.GetRowPixels()} * p.GetPixelBytes() * y;
    };
    for (int y = 0; y < size.height; ++y)
        combine(row(src, y), row(blurred, y), row(dst, y), row(dst, y), size.width);
    return true;
}

/// What of the output is there.
enum class Sharpened { Nothing, Colours, AllChannels };

Sharpened Sharpen(const FrameBuffer& src, FrameBuffer& dst, const Plan& plan, bool halfHeight,
                  MemoryAllocator& allocator)
{
    if (!(plan.radius > 0 && plan.amount > 0))
        return Sharpened::Nothing;
    const Size size = SizeOf(dst);
    const int ySize = detail_enhancer::BlurSize(plan.radius, size.height);
    const int xSize = detail_enhancer::BlurWidth(ySize, halfHeight);
    if (HasWholePixelRows(src) && HasWholePixelRows(dst) && !Overlap(src, dst)) {
        const TentResult result =
            SharpenRows(src, dst, BlurJob(src, size, xSize, ySize), plan.amount, allocator);
        if (result != TentResult::NotServed)
            return result == TentResult::Done ? Sharpened::AllChannels : Sharpened::Nothing;
    }
    return SharpenStepwise(src, dst, size, xSize, ySize, plan.amount, allocator) ? Sharpened::Colours
                                                                                 : Sharpened::Nothing;
}

} // namespace

bool CUnsharpMask::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const Plan plan = detail_enhancer::MakePlan(ReadKnobs(call.host));

    FrameBuffer src, target, dst;
    src.AttachFrame(&call.firstPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(src, target);
    if (IsEmpty(size))
        return true;
    AttachCorner(dst, target, size);
    if (!IsServed(src, dst))
        return true;

    const Sharpened sharpened = Sharpen(src, dst, plan, IsHalfHeight(call.info), allocator);
    if (sharpened == Sharpened::AllChannels)
        return true;
    // Without memory, and without anything to add, the picture itself is what remains.
    ImageOps ops;
    if (sharpened == Sharpened::Nothing)
        ops.Copy(src, dst);
    const int alpha = AlphaIndex(src.GetFormat());
    ops.CopyChannel(src, dst, alpha, alpha);
    return true;
}

} // namespace kelmora

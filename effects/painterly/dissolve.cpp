#include "effects/painterly/dissolve.h"

#include <cstring>

#include "effects/common/frame.h"
#include "image/image_ops.h"

namespace kelmora {
namespace {

bool Covers(const FrameBuffer& picture, Size size)
{
    return picture.GetPixels() && picture.GetWidth() >= size.width && picture.GetHeight() >= size.height;
}

void Clear(FrameBuffer& picture)
{
    const auto bytes =
        static_cast<std::size_t>(picture.GetWidth()) * static_cast<std::size_t>(picture.GetPixelBytes());
    for (int y = 0; y < picture.GetHeight(); ++y)
        std::memset(picture.PixelAddress(0, y, 0), 0, bytes);
}

/// The dissolve on the pixels of `mix`, whatever it showed before.
void MixInto(FrameBuffer& mix, const FrameBuffer& first, const FrameBuffer& second, double fade)
{
    ImageOps ops;
    const bool alike =
        second.GetFormat() == first.GetFormat() && second.GetPixelBytes() == first.GetPixelBytes();
    if (!Covers(first, SizeOf(mix)) || !Covers(second, SizeOf(mix)) || !alike)
        Clear(mix);
    if (fade == 0.0)
        ops.Copy(first, mix);
    else if (!alike)
        return;
    else if (fade == 1.0)
        ops.Copy(second, mix);
    else
        ops.AddWeighted(first, second, mix, static_cast<float>(1.0 - fade), static_cast<float>(fade));
}

} // namespace

bool Dissolve(const FrameBuffer& first, const FrameBuffer& second, FrameBuffer& mix, Size size, double fade,
              MemoryAllocator& allocator)
{
    if (!mix.Allocate(size.width, size.height, first.GetPixelBytes(), &allocator, first.GetFormat(),
                      first.IsBottomUp()))
        return false;
    MixInto(mix, first, second, fade);
    return true;
}

void DissolveRow(const FrameBuffer& first, const FrameBuffer& second, double fade, int y, int width,
                 std::uint8_t* to)
{
    FrameBuffer firstRow, secondRow, mix;
    AttachStrip(firstRow, first, y, 1);
    AttachStrip(secondRow, second, y, 1);
    mix.Attach(to, width, 1, width * first.GetPixelBytes(), first.GetPixelBytes(), first.GetFormat(),
               first.IsBottomUp());
    MixInto(mix, firstRow, secondRow, fade);
}

} // namespace kelmora

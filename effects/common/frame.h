#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "contract/render_info.h"
#include "contract/video_frame.h"
#include "contract/video_host.h"
#include "image/frame_buffer.h"
#include "image/image_ops.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"

namespace kelmora {

/// What a host passed to Render, once it is known to hold pixels.
struct RenderCall {
    IVideoHost& host;
    const VideoFrame& firstPicture;
    const VideoFrame* secondPicture; ///< may be null
    const VideoFrame& output;
    const RenderInfo* info; ///< may be null
};

/// One field of the host's record, which may stand at any address and end right behind its last field.
template <class T>
T ReadField(const RenderInfo* info, std::size_t offset)
{
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(info) + offset, sizeof value);
    return value;
}

/// Whether the frame is a half-height field of an interlaced picture.
inline bool IsHalfHeight(const RenderInfo* info)
{
    const auto flags = ReadField<std::uint32_t>(info, offsetof(RenderInfo, flags));
    const auto fieldMode = ReadField<std::int16_t>(info, offsetof(RenderInfo, fieldMode));
    return (flags & RenderFieldPicture) != 0 && fieldMode < 3;
}

/// The top left `size` pixels of a picture. What lies outside of an effect's working size is out of its reach.
inline void AttachCorner(FrameBuffer& view, const FrameBuffer& picture, Size size)
{
    view.Attach(picture.GetPixels(), size.width, size.height, picture.GetStride(), picture.GetPixelBytes(),
                picture.GetFormat(), picture.IsBottomUp());
}

/// The `count` rows of a picture from row `first` on, or as many of them as it has; no pixels where it has none.
inline void AttachStrip(FrameBuffer& view, const FrameBuffer& picture, int first, int count)
{
    const int rows = std::clamp(picture.GetHeight() - first, 0, count);
    view.Attach(rows > 0 ? picture.PixelAddress(0, first, 0) : nullptr, picture.GetWidth(), rows,
                picture.GetStride(), picture.GetPixelBytes(), picture.GetFormat(), picture.IsBottomUp());
}

/// Whether both are pictures of one of the four formats with all their pixels' bytes there. Their channel orders
/// may differ.
inline bool AreServed(const FrameBuffer& picture, const FrameBuffer& output)
{
    const int bytes = PixelBytesOf(picture.GetFormat());
    return IsPicture(picture.GetFormat()) && picture.GetPixelBytes() == bytes
        && output.GetPixelBytes() == bytes && Holds(picture, picture.GetWidth(), bytes)
        && Holds(output, output.GetWidth(), bytes);
}

/// The same, and both of one format.
inline bool AreServedAlike(const FrameBuffer& picture, const FrameBuffer& output)
{
    return picture.GetFormat() == output.GetFormat() && AreServed(picture, output);
}

/// A new picture of `size` like `picture`, not cleared.
inline bool AllocateLike(FrameBuffer& scratch, const FrameBuffer& picture, Size size,
                         MemoryAllocator& allocator)
{
    return scratch.Allocate(size.width, size.height, picture.GetPixelBytes(), &allocator, picture.GetFormat(),
                            picture.IsBottomUp());
}

/// Whether each row of one picture lies on the same row of the other.
inline bool HasRowsOf(const FrameBuffer& picture, const FrameBuffer& other)
{
    return picture.GetPixels() == other.GetPixels() && picture.GetStride() == other.GetStride();
}

/// A view of the picture, or a copy of it where an output in its own memory would overwrite it. The copy has every
/// byte of the pixels, whatever their label: who reads them may go by another one. False where there is no memory
/// for it, or the picture's rows are shorter than its pixels.
inline bool SetAside(const FrameBuffer& picture, const FrameBuffer& output, FrameBuffer& aside,
                     MemoryAllocator& allocator)
{
    if (!Overlap(picture, output))
        return aside.AttachBuffer(picture);
    if (!Holds(picture, picture.GetWidth(), picture.GetPixelBytes())
        || !AllocateLike(aside, picture, SizeOf(picture), allocator))
        return false;
    const std::size_t bytes =
        static_cast<std::size_t>(picture.GetWidth()) * static_cast<std::size_t>(picture.GetPixelBytes());
    for (std::ptrdiff_t y = 0; y < picture.GetHeight(); ++y)
        std::memcpy(aside.GetPixels() + y * aside.GetStride(), picture.GetPixels() + y * picture.GetStride(),
                    bytes);
    return true;
}

/// Whether the loops that go pixel by pixel and those that go by the stride meet the same rows.
inline bool HasWholePixelRows(const FrameBuffer& picture)
{
    return picture.GetRowPixels() * picture.GetPixelBytes() == picture.GetStride();
}

} // namespace kelmora

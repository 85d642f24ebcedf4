#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "contract/render_info.h"
#include "contract/video_frame.h"
#include "contract/video_host.h"
#include "image/frame_buffer.h"
#include "image/picture_check.h"

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

/// Whether the loops that go pixel by pixel and those that go by the stride meet the same rows.
inline bool HasWholePixelRows(const FrameBuffer& picture)
{
    return picture.GetRowPixels() * picture.GetPixelBytes() == picture.GetStride();
}

} // namespace kelmora

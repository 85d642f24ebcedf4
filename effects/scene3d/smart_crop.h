#pragma once

#include <cstdint>

#include "contract/video_frame.h"
#include "contract/video_host.h"
#include "image/frame_buffer.h"
#include "image/memory_allocator.h"

namespace kelmora {

/// Holds the two pictures of a transition and hands them on as they are: nothing is copied, and nothing cropped.
class CSmartCrop {
public:
    /// Views on the pictures, either of which may be null. The other arguments are not read.
    CSmartCrop(IVideoHost* /*host*/, const VideoFrame* firstPicture, const VideoFrame* secondPicture,
               const double* /*info*/, std::uint32_t /*switchA*/, std::uint32_t /*switchB*/)
    {
        m_firstPicture.AttachFrame(firstPicture);
        m_secondPicture.AttachFrame(secondPicture);
    }

    CSmartCrop(const CSmartCrop&) = delete;
    CSmartCrop& operator=(const CSmartCrop&) = delete;
    virtual ~CSmartCrop() = default;

    /// Null data and no size where there is no picture.
    VideoFrame GetFirstPicture() const { return FrameOf(m_firstPicture); }
    VideoFrame GetSecondPicture() const { return FrameOf(m_secondPicture); }

private:
    static VideoFrame FrameOf(const FrameBuffer& picture)
    {
        VideoFrame frame = {};
        picture.ToVideoFrame(&frame);
        return frame;
    }

    FrameBuffer m_firstPicture;
    FrameBuffer m_secondPicture;
    [[maybe_unused]] MemoryAllocator m_allocator; // nothing allocates from it
};

} // namespace kelmora

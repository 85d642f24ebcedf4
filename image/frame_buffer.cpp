#include "image/frame_buffer.h"

#include <limits>

namespace kelmora {

FrameBuffer::FrameBuffer(const FrameBuffer& other)
    : m_pixels(other.m_pixels), m_width(other.m_width), m_height(other.m_height), m_stride(other.m_stride),
      m_rowPixels(other.m_rowPixels), m_pixelBytes(other.m_pixelBytes), m_bottomUp(other.m_bottomUp),
      m_format(other.m_format)
{
}

void FrameBuffer::Release()
{
    if (m_owned && m_pixels) {
        MemoryAllocator ownMemory;
        (m_allocator ? *m_allocator : ownMemory).FreeImage(m_pixels);
    }
    m_pixels = nullptr;
    m_width = 0;
    m_height = 0;
    m_stride = 0;
    m_rowPixels = 0;
    m_pixelBytes = 0;
    m_owned = false;
    m_bottomUp = false;
    m_format = 0;
    m_allocator = nullptr;
}

bool FrameBuffer::Allocate(int width, int height, int pixelBytes, MemoryAllocator* allocator,
                           std::uint32_t format, bool bottomUp)
{
    Release();
    m_owned = true;
    m_width = width;
    m_height = height;
    m_pixelBytes = pixelBytes;
    m_allocator = allocator;

    void* pixels = nullptr;
    MemoryAllocator ownMemory;
    (allocator ? *allocator : ownMemory).AllocateImage(&pixels, width, height, pixelBytes, &m_stride);
    m_pixels = static_cast<std::uint8_t*>(pixels);

    m_rowPixels = pixelBytes == 0 ? 0 : m_stride / pixelBytes;
    m_format = pixelBytes == 1 ? static_cast<std::uint32_t>(PF_Mask8) : format;
    m_bottomUp = bottomUp;
    return m_pixels != nullptr;
}

bool FrameBuffer::Attach(void* pixels, int width, int height, int stride, int pixelBytes,
                         std::uint32_t format, bool bottomUp)
{
    Release();
    if (stride == std::numeric_limits<int>::min())
        return true; // has no positive counterpart: a view of nothing
    auto* firstRow = static_cast<std::uint8_t*>(pixels);
    if (stride < 0) {
        if (firstRow && height > 0)
            firstRow += static_cast<std::ptrdiff_t>(height - 1) * stride;
        stride = -stride;
        bottomUp = !bottomUp;
    }
    m_pixels = firstRow;
    m_width = width;
    m_height = height;
    m_stride = stride;
    m_pixelBytes = pixelBytes;
    m_rowPixels = pixelBytes == 0 ? 0 : stride / pixelBytes;
    m_format = format;
    m_bottomUp = bottomUp;
    return true;
}

bool FrameBuffer::AttachBuffer(const FrameBuffer& other)
{
    const FrameBuffer view(other); // `other` may be this buffer
    if (&other == this && m_owned) {
        Release(); // there is nothing left to view
        return true;
    }
    return Attach(view.m_pixels, view.m_width, view.m_height, view.m_stride, view.m_pixelBytes, view.m_format,
                  view.m_bottomUp);
}

bool FrameBuffer::AttachFrame(const VideoFrame* frame)
{
    Release();
    if (!frame)
        return false;
    return Attach(frame->data, frame->width, frame->height, frame->stride, frame->pixelBytes, frame->format,
                  frame->bottomUp != 0);
}

VideoFrame* FrameBuffer::ToVideoFrame(VideoFrame* out) const
{
    if (!out)
        return nullptr;
    out->data = m_pixels;
    out->width = m_width;
    out->height = m_height;
    out->stride = m_stride;
    out->pixelBytes = m_pixelBytes;
    out->reserved[0] = 0;
    out->reserved[1] = 0;
    out->format = m_format;
    out->bottomUp = m_bottomUp ? 1 : 0;
    return out;
}

} // namespace kelmora

#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/video_frame.h"
#include "image/memory_allocator.h"

namespace kelmora {

/// The one image object. It is empty, a view on somebody's pixels, or the owner of scratch pixels that
/// came from a MemoryAllocator, which must outlive it.
///
/// Rows are always addressed forwards: a negative stride is turned round when the pixels are attached,
/// and only `bottomUp` remembers the orientation. [one thread at a time]
class FrameBuffer {
public:
    /// Empty.
    FrameBuffer() = default;

    /// A view of the same pixels: not owned, whatever `other` is.
    FrameBuffer(const FrameBuffer& other);
    FrameBuffer& operator=(const FrameBuffer&) = delete;
    ~FrameBuffer() { Release(); }

    /// Gives owned pixels back; the buffer is empty then.
    void Release();

    /// New pixels, not cleared. `allocator` may be null: memory of our own then. `format` becomes PF_Mask8
    /// where `pixelBytes` is 1. False when there is no memory: the pixels are null then, and the other
    /// fields hold what was asked for.
    bool Allocate(int width, int height, int pixelBytes, MemoryAllocator* allocator, std::uint32_t format,
                  bool bottomUp);

    /// A view on foreign pixels. A negative stride means that the rows run upward from `pixels`: the view
    /// then starts at the lowest row in memory and `bottomUp` is toggled. Always true.
    bool Attach(void* pixels, int width, int height, int stride, int pixelBytes, std::uint32_t format,
                bool bottomUp);

    /// A view of `other`'s pixels, once this buffer's own are given back: an owner that is to view itself is empty
    /// then. Always true.
    bool AttachBuffer(const FrameBuffer& other);

    /// A view on a host's picture. False, and empty, when `frame` is null.
    bool AttachFrame(const VideoFrame* frame);

    /// Describes the pixels in `*out`, of which only the named fields are written. Gives `out`.
    VideoFrame* ToVideoFrame(VideoFrame* out) const;

    std::uint8_t* GetPixels() const { return m_pixels; }
    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }

    /// Bytes from row to row; never negative.
    int GetStride() const { return m_stride; }

    /// stride / pixelBytes, truncated: the row step, in pixels, of the few loops that go by it, as composites of
    /// PF_BGRA8 do. All others go by the stride; where that is no multiple of the pixel's size they part ways.
    int GetRowPixels() const { return m_rowPixels; }
    int GetPixelBytes() const { return m_pixelBytes; }
    std::uint32_t GetFormat() const { return m_format; }
    bool IsBottomUp() const { return m_bottomUp; }
    bool IsOwned() const { return m_owned; }

    /// The byte at `byteOffset` in pixel (x, y); null when there are no pixels. Not checked against the size.
    std::uint8_t* PixelAddress(int x, int y, int byteOffset) const
    {
        if (!m_pixels)
            return nullptr;
        return m_pixels + static_cast<std::ptrdiff_t>(m_stride) * y
            + static_cast<std::ptrdiff_t>(m_pixelBytes) * x + byteOffset;
    }

private:
    std::uint8_t* m_pixels = nullptr;
    int m_width = 0;
    int m_height = 0;
    int m_stride = 0;
    int m_rowPixels = 0;
    int m_pixelBytes = 0;
    bool m_owned = false;
    bool m_bottomUp = false;
    std::uint32_t m_format = 0;
    MemoryAllocator* m_allocator = nullptr;
};

} // namespace kelmora

#pragma once

#include <algorithm>
#include <cstdint>

#include "image/frame_buffer.h"

namespace kelmora {

/// Width and height in pixels.
struct Size {
    int width = 0;
    int height = 0;

    constexpr bool operator==(const Size&) const = default;
};

inline Size SizeOf(const FrameBuffer& picture)
{
    return {picture.GetWidth(), picture.GetHeight()};
}

/// The smaller width and the smaller height of two pictures.
inline Size CommonSize(const FrameBuffer& a, const FrameBuffer& b)
{
    return {std::min(a.GetWidth(), b.GetWidth()), std::min(a.GetHeight(), b.GetHeight())};
}

constexpr bool IsEmpty(Size size)
{
    return size.width < 1 || size.height < 1;
}

/// Whether rows of `width` pixels of `bytes` bytes each may be taken from the picture, whatever its
/// labels say: bytes are what counts.
inline bool Holds(const FrameBuffer& picture, int width, int bytes)
{
    return picture.GetPixels() && picture.GetWidth() >= 1 && picture.GetHeight() >= 1 && bytes >= 1
        && bytes <= picture.GetPixelBytes()
        && static_cast<std::int64_t>(width) * bytes <= picture.GetStride();
}

/// Whether the memory between the first and the last byte of two pictures meets.
inline bool Overlap(const FrameBuffer& a, const FrameBuffer& b)
{
    const auto begin = [](const FrameBuffer& p) { return reinterpret_cast<std::uintptr_t>(p.GetPixels()); };
    const auto end = [&](const FrameBuffer& p) {
        return begin(p)
            + static_cast<std::uintptr_t>(p.GetStride()) * static_cast<std::uintptr_t>(p.GetHeight());
    };
    return begin(a) < end(b) && begin(b) < end(a);
}

inline float* Floats(std::uint8_t* address)
{
    return reinterpret_cast<float*>(address);
}

} // namespace kelmora

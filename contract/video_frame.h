#pragma once

#include <cstddef>
#include <cstdint>

namespace kelmora {

/// How a picture's channels lie in memory. Float 1.0 means byte 255.
enum PixelFormat : std::uint32_t {
    PF_BGRA8 = 0,   ///< 4 bytes: blue, green, red, alpha
    PF_ARGB8 = 1,   ///< 4 bytes: alpha, red, green, blue
    PF_Packed8 = 2, ///< 4 bytes, the first carries the value
    PF_BGRA32F = 3, ///< 16 bytes: blue, green, red, alpha, each a float
    PF_ARGB32F = 4, ///< 16 bytes: alpha, red, green, blue, each a float
    PF_Mask8 = 6,   ///< 1 byte
    PF_Mask32F = 7, ///< 4 bytes, one float
};

/// A picture as it crosses the boundary. Its memory belongs to whoever made the record.
///
/// Row y starts at `data + y * stride`. What is promised of a row are its width * pixelBytes bytes; what
/// lies between the rows belongs to the maker and is neither read nor written.
struct VideoFrame {
    void* data;          ///< first row
    std::int32_t width;  ///< pixels
    std::int32_t height; ///< pixels
    std::int32_t stride; ///< bytes from row to row; negative: the rows run upward in memory
    std::int32_t pixelBytes;
    std::uint32_t reserved[2]; ///< written as 0, never read
    std::uint32_t format;      ///< a PixelFormat
    std::uint8_t bottomUp;     ///< non-zero: row 0 is the bottom row of the picture
};

// 32-bit Windows is the wire format. Elsewhere the same fields stand in the same order behind the
// pointer; on 64-bit machines that moves them by 4 bytes.
static_assert(offsetof(VideoFrame, width) == sizeof(void*));
static_assert(offsetof(VideoFrame, height) == sizeof(void*) + 4);
static_assert(offsetof(VideoFrame, stride) == sizeof(void*) + 8);
static_assert(offsetof(VideoFrame, pixelBytes) == sizeof(void*) + 12);
static_assert(offsetof(VideoFrame, reserved) == sizeof(void*) + 16);
static_assert(offsetof(VideoFrame, format) == sizeof(void*) + 24);
static_assert(offsetof(VideoFrame, bottomUp) == sizeof(void*) + 28);
static_assert(sizeof(VideoFrame) == 32 + sizeof(void*));

} // namespace kelmora

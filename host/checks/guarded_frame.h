#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "contract/video_frame.h"

namespace kelmora::host {

/// How a picture lies in memory, and what its record says.
struct FrameShape {
    std::int32_t width = 0;  ///< pixels
    std::int32_t height = 0; ///< pixels
    std::uint32_t format = PF_BGRA8;
    std::int32_t pixelBytes = 4;
    std::int32_t slack = 0; ///< bytes between the rows
    std::int32_t shift = 0; ///< bytes off 64-byte alignment, 0 to 63
    bool upward = false;    ///< negative stride: row 0 is the last one in memory
    std::uint8_t bottomUp = 0;
};

/// A shape of one of the four picture formats.
FrameShape ShapeOf(std::int32_t width, std::int32_t height, PixelFormat format);

/// The format in a word: "bgra8".
std::string FormatText(std::uint32_t format);

/// A picture with marked bytes before it, behind it and between its rows.
class GuardedFrame {
public:
    explicit GuardedFrame(const FrameShape& shape);

    /// The record of the picture.
    VideoFrame Record();

    /// Random pixels: bytes of any value, floats from 0 to 1. The same for the same seed, size and format,
    /// however the picture lies; the lowest row in memory comes first.
    void FillNoise(std::uint32_t seed);

    /// All pixel bytes alike.
    void Fill(std::uint8_t byte);

    /// The pixel bytes without the slack, the lowest row in memory first.
    std::vector<std::uint8_t> Pixels() const;

    /// Whether the marked bytes are as they were.
    bool AreGuardsIntact() const;

private:
    std::size_t RowBytes() const;
    std::size_t Step() const;
    std::size_t Rows() const;
    std::uint8_t* Row(std::size_t row) { return m_start + row * Step(); }
    const std::uint8_t* Row(std::size_t row) const { return m_start + row * Step(); }

    FrameShape m_shape;
    std::vector<std::uint8_t> m_memory;
    std::uint8_t* m_start = nullptr;
};

/// Where two pictures of `shape` differ first: "pixel (3, 2) is 10 20 30 255, not 11 20 30 255", in rows from
/// the lowest in memory. Empty when they are the same.
std::string FirstDifference(const FrameShape& shape, const std::vector<std::uint8_t>& is,
                            const std::vector<std::uint8_t>& shouldBe);

} // namespace kelmora::host

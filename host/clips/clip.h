#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelmora::host {

/// A fraction, as rates and aspects are told.
struct Ratio {
    std::int64_t over = 0;
    std::int64_t under = 1; ///< positive

    double Value() const { return static_cast<double>(over) / static_cast<double>(under); }

    /// Equal in value: 50/2 is 25/1.
    bool operator==(const Ratio& other) const { return over * other.under == other.over * under; }
};

/// The rate of clips that do not tell one.
inline constexpr Ratio kDefaultRate = {25, 1};

/// What all frames of a clip have in common.
struct ClipFormat {
    std::int32_t width = 0;     ///< pixels
    std::int32_t height = 0;    ///< pixels
    Ratio rate = kDefaultRate;  ///< frames per second, positive
    Ratio pixelAspect = {0, 1}; ///< width of a pixel over its height; 0: not known
    std::string colours;      ///< matrix of the file's colours as FFmpeg names it: "bt709"; empty: not known
    bool isFullRange = false; ///< luma from 0 to 255, not 16 to 235
    std::string chroma;       ///< of Y4M: its word for the layout of the colours; else empty

    /// Bytes of a frame: 4 per pixel.
    std::size_t FrameBytes() const
    {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    }
};

/// The pixels of a frame: blue, green, red, alpha; the top row first, no gap between rows.
using FrameBytes = std::vector<std::uint8_t>;

/// Throws Failure, with `path` in its line, when no frame can have so many pixels.
void CheckFrameSize(const std::string& path, std::int64_t width, std::int64_t height);

/// The frames of a clip, one after the other.
class ClipReader {
public:
    ClipReader() = default;
    ClipReader(const ClipReader&) = delete;
    ClipReader& operator=(const ClipReader&) = delete;
    virtual ~ClipReader() = default;

    virtual const ClipFormat& Format() const = 0;

    /// How many there are; nothing when only the end will tell.
    virtual std::optional<std::int64_t> Frames() const = 0;

    /// How many there are, counted where Frames() may be a little off. May take as long as reading them all.
    virtual std::optional<std::int64_t> CountFrames() const { return Frames(); }

    /// Whether there is sound that FFmpeg can take from the file.
    virtual bool HasSound() const { return false; }

    /// Passes over frames. Before the first Read, once. Throws Failure as Read does.
    virtual void Skip(std::int64_t frames) = 0;

    /// Reads the next frame; false at the end. Throws Failure when the clip is damaged or cut off.
    virtual bool Read(FrameBytes& frame) = 0;
};

/// Takes the frames of a clip, one after the other. Without Finish no file appears.
class ClipWriter {
public:
    ClipWriter() = default;
    ClipWriter(const ClipWriter&) = delete;
    ClipWriter& operator=(const ClipWriter&) = delete;
    virtual ~ClipWriter() = default;

    /// Throws Failure when that does not work.
    virtual void Write(const FrameBytes& frame) = 0;

    /// Makes the clip whole. Throws Failure when that does not work.
    virtual void Finish() = 0;
};

} // namespace kelmora::host

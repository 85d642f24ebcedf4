#pragma once

#include "host/clips/clip.h"
#include "host/pictures/picture.h"

namespace kelmora::host {

/// One picture for so many frames.
class StillClip final : public ClipReader {
public:
    StillClip(const Picture& picture, const Ratio& rate, std::int64_t frames);

    const ClipFormat& Format() const override { return m_format; }
    std::optional<std::int64_t> Frames() const override { return m_frames; }
    void Skip(std::int64_t frames) override { m_next = frames; }
    bool Read(FrameBytes& frame) override;

private:
    ClipFormat m_format;
    std::int64_t m_frames;
    std::int64_t m_next = 0;
    FrameBytes m_pixels;
};

} // namespace kelmora::host

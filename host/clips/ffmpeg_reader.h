#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/clips/ffmpeg_probe.h"

namespace kelmora::host {

/// Reads the first video stream of any file that FFmpeg reads, through the program `ffmpeg`, as 8-bit frames
/// at a steady rate.
class FfmpegReader final : public ClipReader {
public:
    /// Throws Failure when FFmpeg is missing or does not read the file.
    explicit FfmpegReader(std::string path);

    const ClipFormat& Format() const override { return m_clip.format; }
    std::optional<std::int64_t> Frames() const override;
    void Skip(std::int64_t frames) override { m_next = frames; }
    bool Read(FrameBytes& frame) override;

    /// Decodes the whole clip: headers tell about how many frames there are.
    std::optional<std::int64_t> CountFrames() const override;

    bool HasSound() const override { return m_clip.hasSound; }

private:
    void CheckEnd(std::size_t bytes);

    std::string m_path;
    ProbedClip m_clip;
    std::int64_t m_next = 0;
    std::unique_ptr<platform::PipedProcess> m_process;
};

/// The command that writes the frames of a clip from `first` on to the standard output: blue, green, red,
/// alpha.
std::vector<std::string> ReadCommand(const std::string& path, const ProbedClip& clip, std::int64_t first);

} // namespace kelmora::host

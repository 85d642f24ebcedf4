#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/clips/clip.h"
#include "host/pictures/safe_write.h"
#include "platform/process.h"

namespace kelmora::host {

/// Where the sound of a clip comes from.
struct SoundPlan {
    std::string first;         ///< path; empty: no sound from there
    std::string second;        ///< of a transition, path; empty: no sound from there
    bool isTransition = false; ///< the sounds fade into each other; false: `first` goes along as it is
    double firstSeconds = 0.0; ///< how long the first clip of a transition is
    double blendSeconds = 0.0; ///< how long both are heard
    bool isPart = false;       ///< only what follows is wanted
    double from = 0.0;         ///< seconds
    double seconds = 0.0;      ///< how long; 0: to the end
};

/// Writes frames to any file that FFmpeg writes, through the program `ffmpeg`. The file appears when it is
/// whole.
class FfmpegWriter final : public ClipWriter {
public:
    /// encode  more words for FFmpeg's command, blanks between them
    ///
    /// Throws Failure when the path cannot be written to or FFmpeg is missing.
    FfmpegWriter(std::string path, Overwrite overwrite, const ClipFormat& format, const SoundPlan& sound,
                 const std::string& encode);

    void Write(const FrameBytes& frame) override;
    void Finish() override;

private:
    void CheckEnd(const platform::ProcessResult& result) const;

    std::string m_path;
    PartFile m_part;
    platform::PipedProcess m_process; // ended before the part is removed
};

/// The command that writes a clip from frames on its standard input: blue, green, red, alpha.
std::vector<std::string> WriteCommand(const std::string& path, const ClipFormat& format,
                                      const SoundPlan& sound, const std::string& encode);

} // namespace kelmora::host

#pragma once

#include <memory>
#include <string>

#include "host/clips/clip.h"
#include "host/clips/ffmpeg_writer.h"

namespace kelmora::host {

/// What a file is, as its name tells.
enum class ClipKind {
    Picture, ///< PNG, JPEG, BMP, TGA
    Y4m,
    Pam,
    Pipe,    ///< "-": a standard stream, Y4M or PAM
    Film,    ///< all else is FFmpeg's
    Nothing, ///< a name without an ending
};

ClipKind KindOfClip(const std::string& path);

/// Opens a clip that is no picture: Y4M and PAM, known by their first bytes, directly, all others through
/// FFmpeg. Throws Failure when that does not work.
///
/// rate  of PAM, which tells none
std::unique_ptr<ClipReader> OpenClip(const std::string& path, const Ratio& rate);

/// Where a clip goes and how.
struct ClipTarget {
    std::string path;
    Overwrite overwrite = Overwrite::No;
    ClipKind pipe = ClipKind::Y4m; ///< what a pipe carries, Y4m or Pam
    std::string encode;            ///< more words for FFmpeg
};

/// Opens a clip for writing. Throws Failure when that does not work.
std::unique_ptr<ClipWriter> MakeClip(const ClipTarget& target, const ClipFormat& format,
                                     const SoundPlan& sound);

} // namespace kelmora::host

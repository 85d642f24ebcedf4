#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/clips/clip.h"
#include "platform/process.h"

namespace kelmora::host {

/// What FFmpeg tells of a clip.
struct ProbedClip {
    ClipFormat format;
    std::int64_t frames = 0;   ///< about so many; 0: not known
    bool hasSteadyRate = true; ///< false: frames come at moments of their own
    bool hasSound = false;
};

/// Asks FFmpeg for the first video stream of a file. Throws Failure when FFmpeg is missing or the file is none
/// that it reads.
ProbedClip ProbeClip(const std::string& path);

/// Reads what `ffprobe -of json` wrote. Throws Failure, naming `path`, when there is no video in it.
ProbedClip ParseProbe(const std::string& path, const std::string& json);

/// A path in the form in which FFmpeg takes it for a file's, whatever it looks like.
std::string FfmpegPath(const std::string& path);

/// The matrix between a clip's colours and red, green, blue, in the words of FFmpeg's scaler. What is not known
/// counts as BT.709 when it is wider than 1024 or higher than 576 pixels, else as BT.601.
std::string MatrixOf(const ClipFormat& format);

/// The line of FFmpeg's messages that says most: the first one, without the part of FFmpeg that it is from.
/// "it gave no reason" when there is none.
std::string FfmpegReason(const std::string& messages);

/// The line for a program of FFmpeg that could not be started.
std::string FfmpegMissing(const std::string& program);

/// Runs a program of FFmpeg to its end and gives what it wrote. Throws Failure with `failed` in front of the
/// reason.
std::string RunFfmpeg(const std::vector<std::string>& arguments, const std::string& failed);

} // namespace kelmora::host

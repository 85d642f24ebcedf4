#include "host/clips/ffmpeg_reader.h"

#include <sstream>

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/knob_value.h"

namespace kelmora::host {
namespace {

/// The beginning of every command that decodes `path`: frames by number, not by their moment, unless they
/// come at moments of their own.
std::vector<std::string> DecodeWords(const std::string& path)
{
    return {"ffmpeg", "-v",  "error", "-nostdin", "-i",        FfmpegPath(path), "-map",
            "0:V:0",  "-an", "-sn",   "-dn",      "-fps_mode", "passthrough"};
}

std::string SteadyFilter(const ProbedClip& clip)
{
    if (clip.hasSteadyRate)
        return {};
    return "fps=" + std::to_string(clip.format.rate.over) + "/" + std::to_string(clip.format.rate.under)
        + ",";
}

} // namespace

std::vector<std::string> ReadCommand(const std::string& path, const ProbedClip& clip, std::int64_t first)
{
    std::string filters = SteadyFilter(clip);
    if (first > 0)
        filters += "trim=start_frame=" + std::to_string(first) + ",";
    filters += "scale=in_color_matrix=" + MatrixOf(clip.format)
        + ":flags=accurate_rnd+full_chroma_int+full_chroma_inp+bitexact,format=bgra";
    std::vector<std::string> words = DecodeWords(path);
    words.insert(words.end(), {"-vf", filters, "-f", "rawvideo", "pipe:1"});
    return words;
}

FfmpegReader::FfmpegReader(std::string path) : m_path(std::move(path)), m_clip(ProbeClip(m_path)) {}

std::optional<std::int64_t> FfmpegReader::Frames() const
{
    return m_clip.frames > 0 ? std::optional(m_clip.frames) : std::nullopt;
}

bool FfmpegReader::Read(FrameBytes& frame)
{
    if (m_process == nullptr) {
        m_process = std::make_unique<platform::PipedProcess>(ReadCommand(m_path, m_clip, m_next),
                                                             platform::PipedStream::Output, IsInterrupted);
    }
    frame.resize(m_clip.format.FrameBytes());
    const std::size_t bytes = m_process->Read(frame.data(), frame.size());
    if (bytes < frame.size()) {
        CheckEnd(bytes);
        return false;
    }
    ++m_next;
    return true;
}

void FfmpegReader::CheckEnd(std::size_t bytes)
{
    const platform::ProcessResult result = m_process->Finish();
    const std::string failed = "cannot read " + m_path + ": ";
    if (result.end == platform::ProcessEnd::NotStarted)
        throw Failure(ExitCode::Failed, failed + FfmpegMissing("ffmpeg"));
    if (result.end != platform::ProcessEnd::Exited || result.exitCode != 0)
        throw Failure(ExitCode::Failed, failed + FfmpegReason(result.errors));
    // Headers may promise a few frames too many. Where FFmpeg complained besides, the clip is no longer whole.
    if (bytes > 0 || (m_next < m_clip.frames && !result.errors.empty())) {
        throw Failure(ExitCode::Failed,
                      failed + "it is cut off after frame " + std::to_string(m_next) + " of "
                          + std::to_string(m_clip.frames) + " (" + FfmpegReason(result.errors) + ")");
    }
}

std::optional<std::int64_t> FfmpegReader::CountFrames() const
{
    std::vector<std::string> words = DecodeWords(m_path);
    words.insert(words.end(),
                 {"-vf", SteadyFilter(m_clip) + "null", "-f", "null", "-progress", "pipe:1", "-"});
    std::istringstream lines(RunFfmpeg(words, "cannot read " + m_path));
    std::int64_t frames = 0;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("frame="))
            continue;
        if (const auto number = ParseNumber(line.substr(line.find_first_not_of(' ', 6))))
            frames = static_cast<std::int64_t>(*number);
    }
    return frames;
}

} // namespace kelmora::host

#include "host/clips/ffmpeg_writer.h"

#include <array>
#include <charconv>
#include <sstream>

#include "host/clips/ffmpeg_probe.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/names.h"
#include "host/path_text.h"

namespace kelmora::host {
namespace {

using Words = std::vector<std::string>;

/// Microseconds are what FFmpeg counts in. The same in every locale.
std::string Seconds(double seconds)
{
    std::array<char, 400> text;
    constexpr int kDigits = 6;
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed, kDigits);
    return {text.data(), result.ptr};
}

std::string RatioText(const Ratio& ratio)
{
    return std::to_string(ratio.over) + "/" + std::to_string(ratio.under);
}

std::string EndingOf(const std::string& path)
{
    return Slug(TextOf(PathOf(path).extension()));
}

void AddSoundInputs(const SoundPlan& sound, Words& words)
{
    if (sound.isPart && !sound.isTransition && !sound.first.empty()) {
        words.insert(words.end(), {"-ss", Seconds(sound.from)});
        if (sound.seconds > 0.0)
            words.insert(words.end(), {"-t", Seconds(sound.seconds)});
    }
    for (const std::string& path : {sound.first, sound.second}) {
        if (!path.empty())
            words.insert(words.end(), {"-i", FfmpegPath(path)});
    }
}

/// The filters that let the sounds of a transition fade into each other.
std::string FadeFilters(const SoundPlan& sound)
{
    const double start = sound.firstSeconds - sound.blendSeconds;
    const std::string blend = Seconds(sound.blendSeconds);
    constexpr double kMilliseconds = 1000.0;
    std::string filters;
    if (!sound.first.empty())
        filters += "[1:a:0]apad,atrim=end=" + Seconds(sound.firstSeconds)
            + ",afade=t=out:st=" + Seconds(start) + ":d=" + blend + "[first];";
    if (!sound.second.empty())
        filters += std::string(sound.first.empty() ? "[1:a:0]" : "[2:a:0]") + "afade=t=in:st=0:d=" + blend
            + ",adelay=delays=" + Seconds(start * kMilliseconds) + ":all=1[second];";
    if (!sound.first.empty() && !sound.second.empty())
        filters += "[first][second]amix=inputs=2:duration=longest:normalize=0";
    else
        filters += sound.first.empty() ? "[second]anull" : "[first]anull";
    if (sound.isPart) {
        filters += ",atrim=start=" + Seconds(sound.from)
            + (sound.seconds > 0.0 ? ":end=" + Seconds(sound.from + sound.seconds) : std::string())
            + ",asetpts=PTS-STARTPTS";
    }
    return filters + "[sound]";
}

void AddSound(const std::string& path, const SoundPlan& sound, Words& words)
{
    if (sound.first.empty() && sound.second.empty())
        return;
    if (sound.isTransition) {
        words.insert(words.end(), {"-filter_complex", FadeFilters(sound), "-map", "[sound]"});
        return;
    }
    words.insert(words.end(), {"-map", "1:a?", "-map_metadata", "1"});
    // What a file of this kind held, another one of its kind can hold.
    if (EndingOf(sound.first) == EndingOf(path))
        words.insert(words.end(), {"-c:a", "copy"});
}

/// The word for a stream's matrix; the scaler's word for BT.2020 is shorter.
std::string MatrixTag(const std::string& matrix)
{
    return matrix == "bt2020" ? "bt2020nc" : matrix;
}

} // namespace

Words WriteCommand(const std::string& path, const ClipFormat& format, const SoundPlan& sound,
                   const std::string& encode)
{
    Words words = {"ffmpeg",
                   "-v",
                   "error",
                   "-nostdin",
                   "-y",
                   "-f",
                   "rawvideo",
                   "-pix_fmt",
                   "bgra",
                   "-video_size",
                   std::to_string(format.width) + "x" + std::to_string(format.height),
                   "-framerate",
                   RatioText(format.rate),
                   "-i",
                   "pipe:0"};
    AddSoundInputs(sound, words);
    const std::string matrix = MatrixOf(format);
    std::string filters = "scale=out_color_matrix=" + matrix
        + ":out_range=tv:flags=accurate_rnd+full_chroma_int+full_chroma_inp+bitexact";
    if (format.pixelAspect.over > 0)
        filters += ",setsar=" + RatioText(format.pixelAspect);
    words.insert(words.end(), {"-map", "0:v:0", "-vf", filters});
    AddSound(path, sound, words);
    // Players want 4:2:0, which has no odd sizes.
    const bool isEven = format.width % 2 == 0 && format.height % 2 == 0;
    words.insert(
        words.end(),
        {"-pix_fmt", isEven ? "yuv420p" : "yuv444p", "-colorspace", MatrixTag(matrix), "-color_range", "tv"});
    std::istringstream more(encode);
    for (std::string word; more >> word;)
        words.push_back(word);
    words.push_back(FfmpegPath(path));
    return words;
}

FfmpegWriter::FfmpegWriter(std::string path, Overwrite overwrite, const ClipFormat& format,
                           const SoundPlan& sound, const std::string& encode)
    : m_path(std::move(path)), m_part(m_path, overwrite),
      m_process(WriteCommand(TextOf(m_part.Path()), format, sound, encode), platform::PipedStream::Input,
                IsInterrupted)
{
}

void FfmpegWriter::CheckEnd(const platform::ProcessResult& result) const
{
    const std::string failed = "cannot write " + m_path + ": ";
    if (result.end == platform::ProcessEnd::NotStarted)
        throw Failure(ExitCode::Failed, failed + FfmpegMissing("ffmpeg"));
    CheckInterrupt();
    if (result.end != platform::ProcessEnd::Exited || result.exitCode != 0)
        throw Failure(ExitCode::Failed, failed + FfmpegReason(result.errors));
}

void FfmpegWriter::Write(const FrameBytes& frame)
{
    if (m_process.Write(frame.data(), frame.size()))
        return;
    CheckEnd(m_process.Finish());
    throw Failure(ExitCode::Failed, "cannot write " + m_path + ": ffmpeg ended before its time");
}

void FfmpegWriter::Finish()
{
    const platform::ProcessResult result = m_process.Finish();
    CheckEnd(result);
    m_part.Keep();
}

} // namespace kelmora::host

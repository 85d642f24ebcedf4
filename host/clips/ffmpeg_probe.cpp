#include "host/clips/ffmpeg_probe.h"

#include <array>
#include <charconv>
#include <cmath>
#include <sstream>

#include <nlohmann/json.hpp>

#include "host/failure.h"
#include "host/knob_value.h"

namespace kelmora::host {
namespace {

using nlohmann::json;

/// The text of a field, whatever its type; empty when it is not there.
std::string Field(const json& object, const char* name)
{
    const auto found = object.find(name);
    if (found == object.end() || found->is_null())
        return {};
    return found->is_string() ? found->get<std::string>() : found->dump();
}

/// "30000/1001" or "8:9". Nothing for what is none or not positive.
std::optional<Ratio> PositiveRatio(const std::string& text, char between)
{
    const std::size_t place = text.find(between);
    if (place == std::string::npos)
        return std::nullopt;
    const auto over = ParseNumber(std::string_view(text).substr(0, place));
    const auto under = ParseNumber(std::string_view(text).substr(place + 1));
    constexpr double kMost = 2147483647.0;
    if (!over || !under || *over < 1.0 || *under < 1.0 || *over > kMost || *under > kMost)
        return std::nullopt;
    return Ratio{static_cast<std::int64_t>(*over), static_cast<std::int64_t>(*under)};
}

double NumberField(const json& object, const char* name)
{
    return ParseNumber(Field(object, name)).value_or(0.0);
}

bool IsCover(const json& stream)
{
    const auto found = stream.find("disposition");
    return found != stream.end() && NumberField(*found, "attached_pic") != 0.0;
}

/// Whether players show the frames turned by a quarter.
bool IsOnItsSide(const json& stream)
{
    const auto list = stream.find("side_data_list");
    if (list == stream.end() || !list->is_array())
        return false;
    for (const json& data : *list) {
        const double turn = std::fabs(NumberField(data, "rotation"));
        if (turn == 90.0 || turn == 270.0)
            return true;
    }
    return false;
}

void ReadRate(const json& stream, ProbedClip& clip)
{
    constexpr double kSteady = 0.002; // what rounding in headers comes to, and less than a frame in 500
    const auto lowest = PositiveRatio(Field(stream, "r_frame_rate"), '/');
    const auto mean = PositiveRatio(Field(stream, "avg_frame_rate"), '/');
    clip.format.rate = mean ? *mean : lowest.value_or(kDefaultRate);
    clip.hasSteadyRate =
        !lowest || !mean || std::fabs(lowest->Value() - mean->Value()) <= kSteady * mean->Value();
    if (lowest && clip.hasSteadyRate)
        clip.format.rate = *lowest; // the mean of few frames is a little off
}

ProbedClip ReadVideo(const std::string& path, const json& stream, double fileSeconds)
{
    ProbedClip clip;
    const double width = NumberField(stream, "width");
    const double height = NumberField(stream, "height");
    constexpr double kMostSide = 1 << 20;
    if (!(width <= kMostSide) || !(height <= kMostSide))
        throw Failure(ExitCode::Failed, "cannot read " + path + ": its frames are too large");
    CheckFrameSize(path, static_cast<std::int64_t>(width), static_cast<std::int64_t>(height));
    clip.format.width = static_cast<std::int32_t>(width);
    clip.format.height = static_cast<std::int32_t>(height);
    clip.format.pixelAspect = PositiveRatio(Field(stream, "sample_aspect_ratio"), ':').value_or(Ratio{0, 1});
    clip.format.colours = Field(stream, "color_space");
    if (IsOnItsSide(stream)) {
        std::swap(clip.format.width, clip.format.height);
        std::swap(clip.format.pixelAspect.over, clip.format.pixelAspect.under);
        if (clip.format.pixelAspect.under == 0)
            clip.format.pixelAspect = {0, 1};
    }
    ReadRate(stream, clip);
    const double counted = NumberField(stream, "nb_frames");
    const double ownSeconds = NumberField(stream, "duration");
    const double frames = counted > 0.0 && clip.hasSteadyRate
        ? counted
        : (ownSeconds > 0.0 ? ownSeconds : fileSeconds) * clip.format.rate.Value();
    if (frames > 0.0 && frames < 1e12)
        clip.frames = std::llround(frames);
    return clip;
}

} // namespace

ProbedClip ProbeClip(const std::string& path)
{
    constexpr const char* kEntries =
        "stream=codec_type,width,height,r_frame_rate,avg_frame_rate,nb_frames,duration,sample_aspect_ratio,"
        "color_space:stream_disposition=attached_pic:stream_side_data=rotation:format=duration";
    return ParseProbe(
        path,
        RunFfmpeg({"ffprobe", "-v", "error", "-show_entries", kEntries, "-of", "json", FfmpegPath(path)},
                  "cannot read " + path));
}

ProbedClip ParseProbe(const std::string& path, const std::string& text)
{
    const json root = json::parse(text, nullptr, false);
    const auto streams = root.is_object() ? root.find("streams") : root.end();
    const auto format = root.is_object() ? root.find("format") : root.end();
    const double seconds =
        format != root.end() && format->is_object() ? NumberField(*format, "duration") : 0.0;
    std::optional<ProbedClip> clip;
    bool hasSound = false;
    if (streams != root.end() && streams->is_array()) {
        for (const json& stream : *streams) {
            const std::string kind = stream.is_object() ? Field(stream, "codec_type") : std::string();
            hasSound = hasSound || kind == "audio";
            if (kind == "video" && !clip && !IsCover(stream))
                clip = ReadVideo(path, stream, seconds);
        }
    }
    if (!clip)
        throw Failure(ExitCode::Failed, "cannot read " + path + ": there is no video in it");
    clip->hasSound = hasSound;
    return *clip;
}

std::string FfmpegPath(const std::string& path)
{
    return "file:" + path;
}

std::string MatrixOf(const ClipFormat& format)
{
    constexpr std::array kKnown = {"bt709", "smpte170m", "bt470bg", "smpte240m", "fcc"};
    for (const char* const known : kKnown) {
        if (format.colours == known)
            return known;
    }
    if (format.colours.starts_with("bt2020"))
        return "bt2020";
    return format.width > 1024 || format.height > 576 ? "bt709" : "smpte170m";
}

std::string FfmpegReason(const std::string& messages)
{
    std::istringstream lines(messages);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::size_t bracket = line.starts_with('[') ? line.find("] ") : std::string::npos;
        if (bracket != std::string::npos)
            line.erase(0, bracket + 2);
        if (!line.empty())
            return line;
    }
    return "it gave no reason";
}

std::string FfmpegMissing(const std::string& program)
{
    return "the program " + program
        + " cannot be started; install FFmpeg (package ffmpeg), or use Y4M or PAM, which need none";
}

std::string RunFfmpeg(const std::vector<std::string>& arguments, const std::string& failed)
{
    const platform::ProcessResult result = platform::RunProcess(arguments, std::chrono::hours(24));
    if (result.end == platform::ProcessEnd::NotStarted)
        throw Failure(ExitCode::Failed, failed + ": " + FfmpegMissing(arguments.front()));
    if (result.end != platform::ProcessEnd::Exited || result.exitCode != 0)
        throw Failure(ExitCode::Failed, failed + ": " + FfmpegReason(result.errors));
    return result.output;
}

} // namespace kelmora::host

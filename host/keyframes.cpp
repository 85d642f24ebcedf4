#include "host/keyframes.h"

#include <algorithm>
#include <cmath>

#include "host/failure.h"
#include "host/knob_value.h"

namespace kelmora::host {
namespace {

std::uint32_t MixFloats(std::uint32_t from, std::uint32_t to, double part)
{
    const double first = static_cast<double>(WordFloat(from));
    const double last = static_cast<double>(WordFloat(to));
    return FloatWord(static_cast<float>(first + (last - first) * part));
}

/// Each of the three colours goes its own way, to the nearest byte.
std::uint32_t MixColors(std::uint32_t from, std::uint32_t to, double part)
{
    std::uint32_t mixed = 0;
    for (const unsigned shift : {0u, 8u, 16u}) {
        const double first = from >> shift & 0xFFu;
        const double last = to >> shift & 0xFFu;
        mixed |= static_cast<std::uint32_t>(std::lround(first + (last - first) * part)) << shift;
    }
    return mixed;
}

ParamValue Mix(const ParamValue& from, const ParamValue& to, double part)
{
    switch (from.kind) {
    case ParamFloat:
        return {MixFloats(from.value, to.value, part), from.valueY, from.kind};
    case ParamPoint:
        return {MixFloats(from.value, to.value, part), MixFloats(from.valueY, to.valueY, part), from.kind};
    case ParamColor:
        return {MixColors(from.value, to.value, part), from.valueY, from.kind};
    default:
        return from;
    }
}

} // namespace

std::optional<double> ParseSeconds(std::string_view text)
{
    double unit = 1.0;
    if (text.ends_with("ms")) {
        unit = 0.001;
        text.remove_suffix(2);
    } else if (text.ends_with('s')) {
        text.remove_suffix(1);
    }
    const auto number = ParseNumber(text);
    if (!number || !(*number >= 0.0))
        return std::nullopt;
    return *number * unit;
}

ParamValue ValueAt(const std::vector<Keyframe>& keyframes, double seconds)
{
    const auto isLater = [](double moment, const Keyframe& key) { return moment < key.seconds; };
    const auto next = std::upper_bound(keyframes.begin(), keyframes.end(), seconds, isLater);
    if (next == keyframes.begin())
        return next->value;
    const Keyframe& last = *(next - 1);
    if (next == keyframes.end())
        return last.value;
    return Mix(last.value, next->value, (seconds - last.seconds) / (next->seconds - last.seconds));
}

std::vector<Keyframe> ParseKeyframes(const Knob& knob, const std::string& text)
{
    std::vector<Keyframe> keyframes;
    // A value may have commas, a moment has none.
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t at = text.find('@', start);
        const std::size_t end = at == std::string::npos ? at : std::min(text.find(',', at), text.size());
        const auto seconds = at == std::string::npos
            ? std::nullopt
            : ParseSeconds(std::string_view(text).substr(at + 1, end - at - 1));
        if (!seconds)
            throw Failure(ExitCode::Usage,
                          "\"" + text + "\" is no way for \"" + knob.name
                              + "\" to go: give VALUE@SECONDS,VALUE@SECONDS and so on");
        if (!keyframes.empty() && *seconds <= keyframes.back().seconds)
            throw Failure(ExitCode::Usage,
                          "\"" + text + "\" does not go forward in time for \"" + knob.name + "\"");
        keyframes.push_back({*seconds, ParseValue(knob, text.substr(start, at - start))});
        start = end + 1;
    }
    return keyframes;
}

void KnobTimeline::Set(const EffectFace& face, const std::string& assignment)
{
    const auto [knob, text] = SplitAssignment(face, assignment);
    std::erase_if(m_tracks, [knob = knob](const Track& track) { return track.knob == knob; });
    if (text.find('@') == std::string::npos)
        m_values[knob] = ParseValue(face.knobs[knob], text);
    else
        m_tracks.push_back({knob, ParseKeyframes(face.knobs[knob], text)});
}

std::vector<ParamValue> KnobTimeline::At(double seconds) const
{
    std::vector<ParamValue> values = m_values;
    for (const Track& track : m_tracks)
        values[track.knob] = ValueAt(track.keyframes, seconds);
    return values;
}

} // namespace kelmora::host

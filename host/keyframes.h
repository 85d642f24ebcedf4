#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contract/param.h"
#include "host/effect_face.h"

namespace kelmora::host {

/// Seconds as "1.5", "1.5s" or "1500ms"; nothing for what is none or negative.
std::optional<double> ParseSeconds(std::string_view text);

/// A knob's value at a moment.
struct Keyframe {
    double seconds = 0.0;
    ParamValue value = {};
};

/// What a knob does over time: before the first keyframe its value, behind the last one that one's. Between
/// two of them floats, points and colours go in a straight line, choices and checks stay until the next one.
///
/// keyframes  at least one, in the order of time
ParamValue ValueAt(const std::vector<Keyframe>& keyframes, double seconds);

/// Reads "VALUE@SECONDS,VALUE@SECONDS", values as ParseValue takes them. Throws Failure with what would have
/// been right, also when the moments do not come one after the other.
std::vector<Keyframe> ParseKeyframes(const Knob& knob, const std::string& text);

/// The values of all knobs over time.
class KnobTimeline {
public:
    /// All knobs at rest.
    explicit KnobTimeline(std::vector<ParamValue> values) : m_values(std::move(values)) {}

    /// Lays "NAME=VALUE" or "NAME=VALUE@SECONDS,..." over what is there. Throws Failure for an unknown knob and for a bad value.
    void Set(const EffectFace& face, const std::string& assignment);

    std::vector<ParamValue> At(double seconds) const;

private:
    struct Track {
        std::size_t knob = 0;
        std::vector<Keyframe> keyframes;
    };

    std::vector<ParamValue> m_values;
    std::vector<Track> m_tracks; // at most one per knob
};

} // namespace kelmora::host

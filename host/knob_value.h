#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contract/param.h"
#include "host/effect_face.h"

namespace kelmora::host {

/// A finite number in plain or scientific notation, the whole of `text`; nothing for anything else.
std::optional<double> ParseNumber(std::string_view text);

/// The shortest text that reads back as the same float.
std::string FloatText(float value);

/// The value that `text` gives to `knob`.
///
/// floats    0 to 1, or on the scale that is shown with a 'u' behind: "0.25", "90u"
/// choices   a name or an index
/// colours   "#rrggbb"
/// checks    "on", "off", "true", "false", "yes", "no", "1", "0"
/// points    "x,y"
///
/// Throws Failure with what would have been right.
ParamValue ParseValue(const Knob& knob, const std::string& text);

/// The value in the form that ParseValue takes.
std::string ValueText(const Knob& knob, const ParamValue& value);

/// A float knob's value on the scale that is shown, to six digits. Empty for other kinds.
std::string ShownText(const Knob& knob, const ParamValue& value);

/// The kind in a word: "float", "choice", "color", "check", "point"; "unknown" for others.
const char* KindText(ParamKind kind);

/// A knob, by its index, and the value that it is given.
struct Assignment {
    std::size_t knob = 0;
    std::string text;
};

/// Takes "NAME=VALUE" apart. Throws Failure when it is none and for an unknown knob.
Assignment SplitAssignment(const EffectFace& face, const std::string& assignment);

/// The values of the preset named `name`. Throws Failure, with the nearest names, when there is none.
std::vector<ParamValue> PresetValues(const EffectFace& face, const std::string& name);

} // namespace kelmora::host

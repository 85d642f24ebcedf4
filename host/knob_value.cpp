#include "host/knob_value.h"

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

#include "host/failure.h"
#include "host/names.h"

namespace kelmora::host {
namespace {

[[noreturn]] void Refuse(const Knob& knob, const std::string& text, const std::string& wanted)
{
    throw Failure(ExitCode::Usage, "\"" + text + "\" is no value for \"" + knob.name + "\": give " + wanted);
}

std::optional<std::uint32_t> ParseUnsigned(std::string_view text, int base)
{
    std::uint32_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, base);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

ParamValue ParseFloat(const Knob& knob, const std::string& text)
{
    const double min = static_cast<double>(knob.min);
    const double max = static_cast<double>(knob.max);
    const bool onShownScale = text.ends_with('u') && max != min;
    const auto number = ParseNumber(onShownScale ? std::string_view(text).substr(0, text.size() - 1) : text);
    if (number) {
        const double level = onShownScale ? (*number - min) / (max - min) : *number;
        if (level >= 0.0 && level <= 1.0)
            return {FloatWord(static_cast<float>(level)), 0, ParamFloat};
    }
    Refuse(knob, text,
           "a number from 0 to 1, or " + FloatText(knob.min) + "u to " + FloatText(knob.max)
               + "u on the scale that is shown");
}

ParamValue ParseChoice(const Knob& knob, const std::string& text)
{
    if (const auto found = FindName(knob.choices, text))
        return {static_cast<std::uint32_t>(*found), 0, ParamChoice};
    const auto index = ParseUnsigned(text, 10);
    if (index && *index < knob.choices.size())
        return {*index, 0, ParamChoice};
    std::string wanted = "one of";
    for (std::size_t i = 0; i < knob.choices.size(); ++i)
        wanted += (i == 0 ? " \"" : ", \"") + knob.choices[i] + "\"";
    Refuse(knob, text, wanted);
}

ParamValue ParseColor(const Knob& knob, const std::string& text)
{
    constexpr std::size_t kLength = 7;
    const auto rgb =
        text.size() == kLength && text[0] == '#' ? ParseUnsigned(text.substr(1), 16) : std::nullopt;
    if (!rgb)
        Refuse(knob, text, "a colour as #rrggbb");
    // Red is the low byte of the word.
    return {(*rgb >> 16 & 0xFFu) | (*rgb & 0xFF00u) | (*rgb & 0xFFu) << 16, 0, ParamColor};
}

ParamValue ParseCheck(const Knob& knob, const std::string& text)
{
    const std::string word = Folded(text);
    if (word == "on" || word == "true" || word == "yes" || word == "1")
        return {1, 0, ParamCheck};
    if (word == "off" || word == "false" || word == "no" || word == "0")
        return {0, 0, ParamCheck};
    Refuse(knob, text, "on or off");
}

ParamValue ParsePoint(const Knob& knob, const std::string& text)
{
    const std::size_t comma = text.find(',');
    if (comma != std::string::npos) {
        const auto x = ParseNumber(std::string_view(text).substr(0, comma));
        const auto y = ParseNumber(std::string_view(text).substr(comma + 1));
        const float xFloat = static_cast<float>(x.value_or(0.0)),
                    yFloat = static_cast<float>(y.value_or(0.0));
        if (x && y && std::isfinite(xFloat) && std::isfinite(yFloat)) // doubles reach further
            return {FloatWord(xFloat), FloatWord(yFloat), ParamPoint};
    }
    Refuse(knob, text, "a point as x,y");
}

std::string ColorText(std::uint32_t bbggrr)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text = "#";
    for (const unsigned shift : {4u, 0u, 12u, 8u, 20u, 16u})
        text += kDigits[bbggrr >> shift & 0xFu];
    return text;
}

} // namespace

std::optional<double> ParseNumber(std::string_view text)
{
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::string FloatText(float value)
{
    std::array<char, 64> text;
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), result.ptr};
}

ParamValue ParseValue(const Knob& knob, const std::string& text)
{
    switch (knob.kind) {
    case ParamFloat:
        return ParseFloat(knob, text);
    case ParamChoice:
        return ParseChoice(knob, text);
    case ParamColor:
        return ParseColor(knob, text);
    case ParamCheck:
        return ParseCheck(knob, text);
    case ParamPoint:
        return ParsePoint(knob, text);
    }
    throw Failure(ExitCode::Failed,
                  "\"" + knob.name + "\" is a knob of a kind that this program does not know");
}

std::string ValueText(const Knob& knob, const ParamValue& value)
{
    switch (knob.kind) {
    case ParamFloat:
        return FloatText(WordFloat(value.value));
    case ParamChoice:
        return value.value < knob.choices.size() ? knob.choices[value.value] : std::to_string(value.value);
    case ParamColor:
        return ColorText(value.value);
    case ParamCheck:
        return (value.value & 0xFFu) != 0 ? "on" : "off";
    case ParamPoint:
        return FloatText(WordFloat(value.value)) + "," + FloatText(WordFloat(value.valueY));
    }
    return std::to_string(value.value);
}

std::string ShownText(const Knob& knob, const ParamValue& value)
{
    if (knob.kind != ParamFloat)
        return {};
    const double min = static_cast<double>(knob.min);
    const double max = static_cast<double>(knob.max);
    const double shown = min + static_cast<double>(WordFloat(value.value)) * (max - min);
    std::array<char, 64> text;
    constexpr int kDigits = 6; // a float holds no more
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), shown, std::chars_format::general, kDigits);
    return {text.data(), result.ptr};
}

const char* KindText(ParamKind kind)
{
    switch (kind) {
    case ParamPoint:
        return "point";
    case ParamChoice:
        return "choice";
    case ParamFloat:
        return "float";
    case ParamColor:
        return "color";
    case ParamCheck:
        return "check";
    }
    return "unknown";
}

Assignment SplitAssignment(const EffectFace& face, const std::string& assignment)
{
    const std::size_t equals = assignment.find('=');
    if (equals == std::string::npos || equals == 0)
        throw Failure(ExitCode::Usage, "\"" + assignment + "\" is no setting: give KNOB=VALUE");
    const std::string asked = assignment.substr(0, equals);
    std::vector<std::string> names;
    for (const Knob& knob : face.knobs)
        names.push_back(knob.name);
    const auto found = FindName(names, asked);
    if (!found) {
        throw Failure(
            ExitCode::Unknown,
            UnknownName("knob", asked, names, "\"kelmora describe " + face.slug + "\" shows all knobs"));
    }
    return {*found, assignment.substr(equals + 1)};
}

std::vector<ParamValue> PresetValues(const EffectFace& face, const std::string& name)
{
    std::vector<std::string> names;
    for (const Preset& preset : face.presets)
        names.push_back(preset.name);
    const auto found = FindName(names, name);
    if (!found) {
        throw Failure(
            ExitCode::Unknown,
            UnknownName("preset", name, names, "\"kelmora describe " + face.slug + "\" shows all presets"));
    }
    return face.presets[*found].values;
}

} // namespace kelmora::host

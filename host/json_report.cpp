#include "host/json_report.h"

#include <nlohmann/json.hpp>

#include "host/knob_value.h"

namespace kelmora::host {
namespace {

// Keys stay in order, and numbers are floats, which makes them come out as short as a float needs.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t,
                                  std::uint64_t, float>;

Json ValueJson(const Knob& knob, const ParamValue& value)
{
    switch (knob.kind) {
    case ParamFloat:
        return WordFloat(value.value);
    case ParamCheck:
        return (value.value & 0xFFu) != 0;
    case ParamPoint:
        return {WordFloat(value.value), WordFloat(value.valueY)};
    case ParamChoice:
    case ParamColor:
        break;
    }
    return ValueText(knob, value);
}

Json KnobJson(std::size_t index, const Knob& knob)
{
    const bool isFloat = knob.kind == ParamFloat;
    Json json;
    json["index"] = index;
    json["name"] = knob.name;
    json["kind"] = KindText(knob.kind);
    json["default"] = ValueJson(knob, knob.standard);
    json["min"] = isFloat ? Json(knob.min) : Json();
    json["max"] = isFloat ? Json(knob.max) : Json();
    json["hostFlag"] = knob.hostFlag;
    json["angular"] = knob.angular;
    json["choices"] = knob.choices;
    json["rect"] = {knob.rect.x, knob.rect.y, knob.rect.width, knob.rect.height};
    return json;
}

Json PresetJson(const EffectFace& effect, const Preset& preset)
{
    Json values = Json::object();
    for (std::size_t knob = 0; knob < effect.knobs.size(); ++knob)
        values[effect.knobs[knob].name] = ValueJson(effect.knobs[knob], preset.values[knob]);
    Json json;
    json["name"] = preset.name;
    json["values"] = std::move(values);
    return json;
}

/// Indented, with a line end. A name that is no UTF-8 must not stop the output.
std::string TextOf(const Json& json)
{
    constexpr int kIndent = 2;
    return json.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace

std::string ListJson(const std::string& libraryName, const std::vector<EffectFace>& effects)
{
    Json list = Json::array();
    for (const EffectFace& effect : effects) {
        Json json;
        json["id"] = effect.number;
        json["slug"] = effect.slug;
        json["name"] = effect.name;
        json["pictures"] = effect.pictures;
        json["knobs"] = effect.knobs.size();
        json["presets"] = effect.presets.size();
        list.push_back(std::move(json));
    }
    Json json;
    json["schema"] = kJsonSchema;
    json["library"] = libraryName;
    json["effects"] = std::move(list);
    return TextOf(json);
}

std::string DescribeJson(const EffectFace& effect)
{
    Json json;
    json["schema"] = kJsonSchema;
    json["id"] = effect.number;
    json["slug"] = effect.slug;
    json["name"] = effect.name;
    json["helpId"] = effect.helpId;
    json["pictures"] = effect.pictures;
    json["knobs"] = Json::array();
    for (std::size_t knob = 0; knob < effect.knobs.size(); ++knob)
        json["knobs"].push_back(KnobJson(knob, effect.knobs[knob]));
    json["presets"] = Json::array();
    for (const Preset& preset : effect.presets)
        json["presets"].push_back(PresetJson(effect, preset));
    return TextOf(json);
}

} // namespace kelmora::host

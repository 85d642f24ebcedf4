#include "host/effect_face.h"

#include <algorithm>

#include "contract/effect_library.h"
#include "host/failure.h"
#include "host/names.h"

namespace kelmora::host {
namespace {

[[noreturn]] void Refuse(const std::string& effect, const char* what)
{
    throw Failure(ExitCode::Failed, "effect \"" + effect + "\" " + what);
}

Knob KnobFrom(const ParamInfo& info)
{
    Knob knob;
    knob.name = FieldText(info.name);
    knob.kind = static_cast<ParamKind>(info.kind);
    knob.standard = {info.value, info.valueY, info.kind};
    knob.rect = info.rect;
    if (knob.kind == ParamFloat) {
        knob.min = info.scale.min;
        knob.max = info.scale.max;
        knob.hostFlag = info.scale.hostFlag;
        knob.angular = info.scale.angular != 0;
    } else if (knob.kind == ParamChoice) {
        constexpr auto kMost = static_cast<std::int32_t>(std::size(ParamChoices{}.choiceNames));
        const std::int32_t count = std::clamp(info.choice.choiceCount, 0, kMost);
        for (std::int32_t i = 0; i < count; ++i)
            knob.choices.push_back(FieldText(info.choice.choiceNames[i]));
    }
    return knob;
}

std::vector<Knob> WalkKnobs(const std::string& name, IVideoEffect& effect)
{
    std::vector<Knob> knobs;
    for (std::uint32_t index = 0;; ++index) {
        ParamInfo info = {};
        if (!effect.GetParamInfo(index, &info))
            return knobs;
        if (index == kMostKnobs)
            Refuse(name, "has no last knob");
        knobs.push_back(KnobFrom(info));
    }
}

std::vector<Preset> WalkPresets(const std::string& name, IVideoEffect& effect, const std::vector<Knob>& knobs)
{
    std::vector<Preset> presets;
    for (std::uint32_t index = 0;; ++index) {
        const char* const presetName = effect.GetPresetName(index);
        if (presetName == nullptr)
            return presets;
        if (index == kMostPresets)
            Refuse(name, "has no last preset");
        Preset preset;
        preset.name = presetName;
        for (std::uint32_t knob = 0; knob < knobs.size(); ++knob) {
            ParamValue value = {0, 0, knobs[knob].kind};
            if (!effect.GetPresetValue(index, knob, &value))
                Refuse(name, "has a preset without a value for every knob");
            preset.values.push_back(value);
        }
        presets.push_back(std::move(preset));
    }
}

} // namespace

std::vector<ParamValue> EffectFace::Defaults() const
{
    std::vector<ParamValue> values;
    for (const Knob& knob : knobs)
        values.push_back(knob.standard);
    return values;
}

bool IsTransition(std::int32_t number)
{
    // The contract passes every effect two pictures and has no word for whether the second one is looked at.
    constexpr std::array kTransitions = {Effect3DConfetti, Effect3DPizzaBoxes, EffectColorMelt,
                                         EffectPaperCollage, EffectSmear};
    return std::find(kTransitions.begin(), kTransitions.end(), number) != kTransitions.end();
}

EffectFace ReadFace(std::int32_t number, IVideoEffect& effect)
{
    EffectFace face;
    face.number = number;
    const char* const name = effect.GetName();
    if (name == nullptr)
        Refuse(std::to_string(number), "has no name");
    face.name = name;
    face.slug = Slug(face.name);
    face.helpId = effect.GetHelpId();
    face.pictures = IsTransition(number) ? 2 : 1;
    face.knobs = WalkKnobs(face.name, effect);
    face.presets = WalkPresets(face.name, effect, face.knobs);
    return face;
}

} // namespace kelmora::host

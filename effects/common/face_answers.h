#pragma once

#include <cstdint>
#include <cstring>

#include "effects/common/tables.h"

namespace kelmora {

// What a face answers to the host's questions. Effects and wrappers share it.

/// Writes the fields that the knob has and leaves the others as the caller passed them.
inline void DescribeKnob(const Knob& knob, ParamInfo& info)
{
    info.value = knob.initial.word;
    if (knob.initial.kind == ParamPoint)
        info.valueY = knob.initial.wordY;
    info.kind = knob.initial.kind;
    if (knob.scale) {
        info.scale.min = (*knob.scale)[0];
        info.scale.max = (*knob.scale)[1];
    }
    if (knob.hostFlag)
        info.scale.hostFlag = *knob.hostFlag;
    if (knob.angular)
        info.scale.angular = *knob.angular;
    if (const std::size_t count = knob.ChoiceCount()) {
        info.choice.choiceCount = static_cast<std::int32_t>(count);
        for (std::size_t i = 0; i < count; ++i)
            std::memcpy(info.choice.choiceNames[i], knob.choices[i], std::strlen(knob.choices[i]) + 1);
    }
    std::memcpy(info.name, knob.name, std::strlen(knob.name) + 1);
    info.rect = knob.rect;
    info.shown = 1;
}

template <std::size_t Knobs, std::size_t Presets>
bool AnswerParamInfo(const Face<Knobs, Presets>& face, std::uint32_t knob, ParamInfo* info)
{
    if (!info)
        return false;
    if (face.clearsRecord)
        *info = {};
    if (knob >= Knobs)
        return false;
    DescribeKnob(face.knobs[knob], *info);
    return true;
}

template <std::size_t Knobs, std::size_t Presets>
const char* AnswerPresetName(const Face<Knobs, Presets>& face, std::uint32_t preset)
{
    return preset < Presets ? face.presets[preset].name : nullptr;
}

template <std::size_t Knobs, std::size_t Presets>
bool AnswerPresetValue(const Face<Knobs, Presets>& face, std::uint32_t preset, std::uint32_t knob,
                       ParamValue* out)
{
    if (preset >= Presets || knob >= Knobs || !out)
        return false;
    const Value& value = face.presets[preset].values[knob];
    out->value = value.word;
    out->valueY = value.wordY;
    return true;
}

} // namespace kelmora

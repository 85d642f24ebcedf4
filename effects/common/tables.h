#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "contract/param.h"

namespace kelmora {

// The face of an effect - its knobs, their defaults and its factory presets - as tables that the compiler
// checks: IsSound refuses a row that is cut short, a name that does not fit its record, a preset value of
// another kind than its knob, a level outside 0 to 1.

// --- one knob value -----------------------------------------------------------------------------------

/// A knob's value as it stands in a table: the words that cross the boundary, and the kind that they were
/// written as.
struct Value {
    static constexpr ParamKind kNoKind = static_cast<ParamKind>(~0u); ///< a row cut short shows

    ParamKind kind = kNoKind;
    std::uint32_t word = 0;
    std::uint32_t wordY = 0;
    bool asGiven = false; ///< may lie outside of what its kind holds
};

constexpr Value Level(double normalised)
{
    return {ParamFloat, FloatWord(static_cast<float>(normalised))};
}

/// A level that is meant to lie outside 0 to 1.
constexpr Value LevelAsGiven(double level)
{
    return {ParamFloat, FloatWord(static_cast<float>(level)), 0, true};
}

/// A level whose second word, which nobody reads, is not 0.
constexpr Value LevelWith(double normalised, double second)
{
    return {ParamFloat, FloatWord(static_cast<float>(normalised)), FloatWord(static_cast<float>(second))};
}

constexpr Value Choice(std::uint32_t index)
{
    return {ParamChoice, index};
}

/// 0x00BBGGRR.
constexpr Value Colour(std::uint32_t bbggrr)
{
    return {ParamColor, bbggrr};
}

constexpr Value Check(bool on)
{
    return {ParamCheck, on ? 1u : 0u};
}

/// A check box whose upper bytes, which nobody reads, are not 0.
constexpr Value CheckAsGiven(std::uint32_t word)
{
    return {ParamCheck, word, 0, true};
}

constexpr Value Point(double x, double y)
{
    return {ParamPoint, FloatWord(static_cast<float>(x)), FloatWord(static_cast<float>(y))};
}

// --- tables -------------------------------------------------------------------------------------------

/// One knob of an effect. A field left empty is not written into the host's record.
struct Knob {
    const char* name = nullptr;
    Value initial;
    ParamRect rect = {};
    std::optional<std::array<float, 2>> scale = {}; ///< shown to the user only
    std::optional<std::uint32_t> hostFlag = {};
    std::optional<std::uint8_t> angular = {};
    std::array<const char*, 10> choices = {};

    constexpr std::size_t ChoiceCount() const
    {
        std::size_t count = 0;
        while (count < choices.size() && choices[count])
            ++count;
        return count;
    }
};

template <std::size_t Knobs>
struct Preset {
    const char* name = nullptr;
    std::array<Value, Knobs> values;
};

/// Everything about an effect that a host can ask for without rendering.
template <std::size_t Knobs, std::size_t Presets>
struct Face {
    const char* name;
    std::uint32_t helpId;
    bool clearsRecord = false; ///< GetParamInfo zeroes the host's record first, also past the last knob
    std::array<Knob, Knobs> knobs;
    std::array<Preset<Knobs>, Presets> presets;
};

// --- proofs -------------------------------------------------------------------------------------------

/// Whether `text` and its end mark fit `bytes` bytes.
consteval bool Fits(const char* text, std::size_t bytes)
{
    return text && std::string_view(text).size() < bytes;
}

consteval bool IsSound(const Value& value, const Knob& knob)
{
    if (value.kind != knob.initial.kind)
        return false;
    switch (value.kind) {
    case ParamFloat:
        return value.asGiven || (WordFloat(value.word) >= 0.0f && WordFloat(value.word) <= 1.0f);
    case ParamChoice:
        return value.word < knob.ChoiceCount();
    case ParamColor:
        return value.word <= 0x00FFFFFF;
    case ParamCheck:
        return value.asGiven || value.word <= 1;
    case ParamPoint:
        return true;
    }
    return false;
}

consteval bool IsSound(const Knob& knob)
{
    if (!Fits(knob.name, sizeof(ParamInfo::name)) || !IsSound(knob.initial, knob))
        return false;
    const bool isFloat = knob.initial.kind == ParamFloat;
    const bool isChoice = knob.initial.kind == ParamChoice;
    if (knob.scale.has_value() != isFloat || (knob.ChoiceCount() > 0) != isChoice)
        return false;
    if ((knob.hostFlag || knob.angular) && !isFloat)
        return false;
    for (std::size_t i = 0; i < knob.ChoiceCount(); ++i)
        if (!Fits(knob.choices[i], sizeof(ParamChoices::choiceNames[0])))
            return false;
    return true;
}

template <std::size_t Knobs, std::size_t Presets>
consteval bool IsSound(const Face<Knobs, Presets>& face)
{
    if (!face.name)
        return false;
    for (const Knob& knob : face.knobs)
        if (!IsSound(knob))
            return false;
    for (const auto& preset : face.presets) {
        if (!preset.name)
            return false;
        for (std::size_t k = 0; k < Knobs; ++k)
            if (!IsSound(preset.values[k], face.knobs[k]))
                return false;
    }
    return true;
}

} // namespace kelmora

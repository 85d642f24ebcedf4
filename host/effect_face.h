#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "contract/param.h"
#include "contract/video_effect.h"

namespace kelmora::host {

/// One knob as the effect describes it.
struct Knob {
    std::string name;
    ParamKind kind = ParamFloat;
    ParamValue standard = {};         ///< the default
    float min = 0.0f;                 ///< floats: the scale that is shown
    float max = 0.0f;                 ///< floats
    std::uint32_t hostFlag = 0;       ///< floats
    bool angular = false;             ///< floats
    std::vector<std::string> choices; ///< choices: their names
    ParamRect rect = {};              ///< panel pixels
};

/// One factory preset: a value for each knob, in the order of the knobs.
struct Preset {
    std::string name;
    std::vector<ParamValue> values;
};

/// All that an effect tells of itself.
struct EffectFace {
    std::int32_t number = 0;
    std::string name;
    std::string slug;
    std::uint32_t helpId = 0;
    int pictures = 1; ///< 1: a filter, 2: a transition
    std::vector<Knob> knobs;
    std::vector<Preset> presets;

    /// The knobs' defaults.
    std::vector<ParamValue> Defaults() const;
};

/// A walk that has not ended here never will.
inline constexpr std::uint32_t kMostKnobs = 100; // a saved preset has room for no more
inline constexpr std::uint32_t kMostPresets = 1000;

/// Whether effect `number` blends two pictures.
bool IsTransition(std::int32_t number);

/// The text in a field of a record, which may lack its end mark.
template <std::size_t Size>
std::string FieldText(const char (&field)[Size])
{
    std::size_t length = 0;
    while (length < Size && field[length] != '\0')
        ++length;
    return {field, length};
}

/// Walks the knobs and presets of an effect. Throws Failure when a walk has no end or a name is missing.
EffectFace ReadFace(std::int32_t number, IVideoEffect& effect);

} // namespace kelmora::host

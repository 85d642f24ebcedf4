#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/param.h"

namespace kelmora {

/// A user's preset: written by the host before a save, by the library at a load.
struct PresetData {
    static constexpr std::size_t kNameBytes = 260; ///< the end mark included
    static constexpr std::int32_t kMostParams = 100;

    char Name[kNameBytes];          ///< the preset's display name, zero-ended narrow text
    char LibraryName[kNameBytes];   ///< IEffectLibrary::GetName
    char EffectName[kNameBytes];    ///< IVideoEffect::GetName
    ParamValue params[kMostParams]; ///< in the effect's knob order
    std::int32_t paramCount;        ///< entries in use, 0 to 100
};

static_assert(offsetof(PresetData, LibraryName) == 260 && offsetof(PresetData, EffectName) == 520);
static_assert(offsetof(PresetData, params) == 780 && offsetof(PresetData, paramCount) == 1980);
static_assert(sizeof(PresetData) == 1984);

} // namespace kelmora

#pragma once

#include <cstdint>

#include "contract/effect_library.h"
#include "contract/preset_data.h"

namespace kelmora {

/// Whether a preset can be given to effect `effectId` of `library`: it names both, and has an entry of the right
/// kind for each knob. Entries beyond the last knob do no harm.
///
/// library  null: any preset with at least one entry will do
/// preset   null: false
///
/// False, too, when the effect cannot be made.
bool PresetFits(const PresetData* preset, IEffectLibrary* library, std::int32_t effectId);

} // namespace kelmora

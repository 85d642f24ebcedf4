#include "library/presets/preset_check.h"

#include <string_view>

namespace kelmora {
namespace {

/// Whether the text in a preset's field is `name`, case and all.
bool IsNamed(const char (&field)[PresetData::kNameBytes], const char* name)
{
    const std::string_view bytes(field, sizeof field); // it need not have an end mark
    return name && bytes.substr(0, bytes.find('\0')) == name;
}

bool HasAllKnobs(const PresetData& preset, IVideoEffect& effect)
{
    for (std::int32_t knob = 0;; ++knob) {
        ParamInfo info = {};
        if (!effect.GetParamInfo(static_cast<std::uint32_t>(knob), &info))
            return true;
        // Ends the walk at the latest behind the last entry, however many knobs an effect claims to have.
        if (knob >= preset.paramCount || knob >= PresetData::kMostParams)
            return false;
        if (preset.params[knob].kind != info.kind)
            return false;
    }
}

} // namespace

bool PresetFits(const PresetData* preset, IEffectLibrary* library, std::int32_t effectId)
{
    if (!preset)
        return false;
    if (!library)
        return preset->paramCount > 0;
    IVideoEffect* const effect = library->CreateEffect(effectId);
    if (!effect)
        return false;
    const bool fits = IsNamed(preset->LibraryName, library->GetName())
        && IsNamed(preset->EffectName, effect->GetName()) && HasAllKnobs(*preset, *effect);
    effect->Release();
    return fits;
}

} // namespace kelmora

#pragma once

#include <string>
#include <vector>

#include "contract/preset_data.h"
#include "host/effect_face.h"

namespace kelmora::host {

/// Reads the preset file at `path`, UTF-8. Throws Failure when it cannot be read or holds no preset.
PresetData ReadPresetFile(const std::string& path);

/// A value for each knob of the effect, as `preset` has them. Throws Failure when it is a preset of another
/// effect, as an editor would refuse it; of what library it is does not count here.
///
/// path  what the failure calls it
std::vector<ParamValue> ValuesFor(const EffectFace& face, const PresetData& preset, const std::string& path);

/// Both in one.
std::vector<ParamValue> PresetFileValues(const EffectFace& face, const std::string& path);

/// Writes `preset` to the file at `path`, UTF-8, whole or not at all. Throws Failure.
void WritePresetFile(const std::string& path, const PresetData& preset);

} // namespace kelmora::host

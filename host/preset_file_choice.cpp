#include "host/preset_file_choice.h"

#include "host/failure.h"
#include "library/presets/preset_file.h"
#include "platform/text.h"

namespace kelmora::host {
namespace {

std::u16string WidePath(const std::string& path)
{
    std::u16string wide(platform::Utf8ToUtf16(path, {}).length, u'\0');
    if (!wide.empty())
        platform::Utf8ToUtf16(path, wide);
    return wide;
}

bool HasAllKnobs(const EffectFace& face, const PresetData& preset)
{
    if (static_cast<std::size_t>(preset.paramCount) < face.knobs.size())
        return false;
    for (std::size_t i = 0; i < face.knobs.size(); ++i) {
        if (preset.params[i].kind != static_cast<std::uint32_t>(face.knobs[i].kind))
            return false;
    }
    return true;
}

} // namespace

PresetData ReadPresetFile(const std::string& path)
{
    PresetData preset = {};
    if (!LoadPresetFile(WidePath(path).c_str(), &preset))
        throw Failure(ExitCode::Failed, path + " cannot be read, or is no preset file");
    return preset;
}

std::vector<ParamValue> ValuesFor(const EffectFace& face, const PresetData& preset, const std::string& path)
{
    if (FieldText(preset.EffectName) != face.name)
        throw Failure(ExitCode::Failed,
                      path + " is a preset of \"" + FieldText(preset.EffectName) + "\", not of \"" + face.name
                          + "\"");
    if (!HasAllKnobs(face, preset))
        throw Failure(ExitCode::Failed, path + " has not the knobs of \"" + face.name + "\"");
    return {preset.params, preset.params + face.knobs.size()};
}

std::vector<ParamValue> PresetFileValues(const EffectFace& face, const std::string& path)
{
    return ValuesFor(face, ReadPresetFile(path), path);
}

void WritePresetFile(const std::string& path, const PresetData& preset)
{
    if (!SavePresetFile(WidePath(path).c_str(), preset))
        throw Failure(ExitCode::Failed, "cannot write " + path);
}

} // namespace kelmora::host

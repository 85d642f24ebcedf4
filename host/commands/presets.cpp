#include "host/commands/presets.h"

#include <iomanip>

#include "host/commands/frame_choice.h"
#include "host/knob_value.h"
#include "host/library_file.h"
#include "host/path_text.h"
#include "host/pictures/safe_write.h"
#include "host/preset_file_choice.h"

namespace kelmora::host {
namespace {

void SetName(char (&field)[PresetData::kNameBytes], const std::string& name)
{
    if (name.size() >= sizeof field)
        throw Failure(ExitCode::Usage, "a preset's name has at most 259 bytes");
    field[name.copy(field, name.size())] = '\0';
}

EffectFace FaceNamed(IEffectLibrary& library, const std::string& effect)
{
    const std::int32_t number = FindEffect(library, effect);
    return ReadFace(number, *MakeEffect(library, number));
}

std::string LibraryName(IEffectLibrary& library)
{
    const char* const name = library.GetName();
    return name != nullptr ? name : "";
}

void Save(const PresetsArguments& arguments, IEffectLibrary& library)
{
    if (arguments.frame.effect.empty())
        throw Failure(ExitCode::Usage, "say with --effect what effect the preset is for");
    const EffectFace face = FaceNamed(library, arguments.frame.effect);
    const std::vector<ParamValue> knobs = ChosenKnobs(face, arguments.frame).At(0.0);
    PresetData preset = {};
    SetName(preset.Name, arguments.name.empty() ? TextOf(PathOf(arguments.file).stem()) : arguments.name);
    SetName(preset.LibraryName, LibraryName(library));
    SetName(preset.EffectName, face.name);
    preset.paramCount = static_cast<std::int32_t>(knobs.size());
    for (std::size_t i = 0; i < knobs.size(); ++i) {
        preset.params[i] = knobs[i];
        preset.params[i].kind = face.knobs[i].kind;
    }
    CheckTarget(arguments.file, arguments.frame.overwrite);
    WritePresetFile(arguments.file, preset);
}

/// The knobs in the form that --set takes, one a line.
void Load(const PresetsArguments& arguments, IEffectLibrary& library, std::ostream& out)
{
    const PresetData preset = ReadPresetFile(arguments.file);
    const std::string& asked = arguments.frame.effect;
    const EffectFace face = FaceNamed(library, asked.empty() ? FieldText(preset.EffectName) : asked);
    const std::vector<ParamValue> values = ValuesFor(face, preset, arguments.file);
    if (FieldText(preset.LibraryName) != LibraryName(library))
        throw Failure(ExitCode::Failed,
                      arguments.file + " is a preset of the library \"" + FieldText(preset.LibraryName)
                          + "\"");
    for (std::size_t i = 0; i < values.size(); ++i)
        out << face.knobs[i].name << '=' << ValueText(face.knobs[i], values[i]) << '\n';
}

/// What the file holds, whatever effect it is for.
void Show(const PresetsArguments& arguments, std::ostream& out)
{
    const PresetData preset = ReadPresetFile(arguments.file);
    out << "name     " << FieldText(preset.Name) << "\nlibrary  " << FieldText(preset.LibraryName)
        << "\neffect   " << FieldText(preset.EffectName) << '\n';
    for (std::int32_t i = 0; i < preset.paramCount; ++i) {
        Knob knob; // the file knows neither its name nor its choices
        knob.kind = static_cast<ParamKind>(preset.params[i].kind);
        out << std::left << std::setw(9) << KindText(knob.kind)
            << (knob.kind == ParamChoice ? std::to_string(preset.params[i].value)
                                         : ValueText(knob, preset.params[i]))
            << '\n';
    }
}

} // namespace

void RunPresets(const PresetsArguments& arguments, std::ostream& out)
{
    if (arguments.action == PresetAction::Show) {
        Show(arguments, out);
        return;
    }
    const LibraryFile file(arguments.frame.library);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    if (arguments.action == PresetAction::Save)
        Save(arguments, *library);
    else
        Load(arguments, *library, out);
}

} // namespace kelmora::host

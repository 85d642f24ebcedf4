// A host as small as can be: dialog_probe LIBRARY save|load EFFECT LANGUAGE
//
// Saves or loads a preset of the effect through the dialogs of the library file, and says in lines what came of
// it. The saved one is called "Probe" and has the effect's first factory preset. LANGUAGE: two letters or "none".

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "contract/kelmora.h"
#include "platform/module.h"

namespace kelmora {
namespace {

PresetData FirstPreset(IVideoEffect& effect)
{
    PresetData preset = {};
    std::strcpy(preset.Name, "Probe");
    ParamInfo info = {};
    for (std::uint32_t knob = 0; effect.GetParamInfo(knob, &info); ++knob) {
        ParamValue& value = preset.params[knob];
        effect.GetPresetValue(0, knob, &value);
        value.kind = info.kind;
        ++preset.paramCount;
    }
    return preset;
}

void Say(std::int32_t result, const PresetData& preset)
{
    std::printf("result %d\nname %s\nlibrary %s\neffect %s\n", result, preset.Name, preset.LibraryName,
                preset.EffectName);
    for (std::int32_t i = 0; i < preset.paramCount; ++i)
        std::printf("knob %u %08x\n", preset.params[i].kind, preset.params[i].value);
}

int Run(const char* file, const std::string& operation, std::int32_t number, const char* language)
{
    std::string error;
    const platform::Module module = platform::Module::LoadFile(file, &error);
    const auto make = module.FunctionNamed<GetEffectsLibraryFunction>("GetEffectsLibrary");
    if (make == nullptr) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    IEffectLibrary* const library = make();
    IVideoEffect* const effect = library->CreateEffect(number);
    IPresetSaver* const saver = library->CreatePresetSaver();
    PresetData preset = operation == "save" ? FirstPreset(*effect) : PresetData{};
    const std::int32_t result = operation == "save"
        ? saver->SavePreset(nullptr, library, number, &preset, language)
        : saver->LoadPreset(nullptr, library, number, &preset, language);
    Say(result, preset);
    saver->Release();
    effect->Release();
    library->Release();
    return 0;
}

} // namespace
} // namespace kelmora

int main(int argc, char** argv)
{
    std::setlocale(LC_ALL, ""); // as hosts do
    if (argc != 5)
        return 2;
    return kelmora::Run(argv[1], argv[2], std::atoi(argv[3]),
                        std::strcmp(argv[4], "none") == 0 ? nullptr : argv[4]);
}

// Any text: read as a preset, tested against an effect, written and read again. No fault, and what is written reads
// back the same.

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "library/library_object.h"
#include "library/presets/preset_check.h"
#include "library/presets/preset_file.h"

namespace kelmora::fuzz {
namespace {

bool IsEnded(const char (&field)[PresetData::kNameBytes])
{
    return std::memchr(field, '\0', sizeof field) != nullptr;
}

/// As much of a name as a file has.
std::string NameIn(const char (&field)[PresetData::kNameBytes])
{
    const std::string_view bytes(field, sizeof field - 1);
    return std::string(bytes.substr(0, bytes.find('\0')));
}

/// Reads what was written of `preset` and writes it again: nothing is lost but what six decimals
/// and the words "nan" and "inf" do not hold, and that only once.
void RequireLastingText(const PresetData& preset, const std::string& text)
{
    const auto back = std::make_unique<PresetData>();
    Require(ReadPreset(text, back.get()));
    Require(NameIn(preset.Name) == back->Name);
    Require(NameIn(preset.LibraryName) == back->LibraryName);
    Require(NameIn(preset.EffectName) == back->EffectName);
    Require(back->paramCount == std::min(preset.paramCount, PresetData::kMostParams));
    const std::string second = PresetText(*back);
    Require(ReadPreset(second, back.get()));
    Require(PresetText(*back) == second);
}

void ReadAndWrite(std::string_view text, IEffectLibrary* library)
{
    // A heap block of just its size: a step outside is a report.
    const auto preset = std::make_unique<PresetData>();
    std::memset(preset.get(), 0xCC, sizeof(PresetData));
    if (!ReadPreset(text, preset.get()))
        return;
    Require(preset->paramCount >= 1 && preset->paramCount <= PresetData::kMostParams);
    Require(IsEnded(preset->Name) && IsEnded(preset->LibraryName) && IsEnded(preset->EffectName));
    for (std::int32_t effectId = Effect3DConfetti; effectId <= EffectWaterColor; ++effectId)
        PresetFits(preset.get(), library, effectId);
    RequireLastingText(*preset, PresetText(*preset));
}

/// A host's record to save, which may hold anything.
void WriteAndRead(Input input)
{
    const auto preset = std::make_unique<PresetData>(input.Take<PresetData>());
    const std::string text = PresetText(*preset);
    if (preset->paramCount > 0)
        RequireLastingText(*preset, text);
    else
        Require(!ReadPreset(text, std::make_unique<PresetData>().get()));
}

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelmora;
    static IEffectLibrary* const library = new CKelmora;
    fuzz::ReadAndWrite({reinterpret_cast<const char*>(data), size}, library);
    fuzz::WriteAndRead(fuzz::Input(data, size));
    return 0;
}

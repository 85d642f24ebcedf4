#pragma once

#include <cstdint>

#include "contract/frame_processor.h"
#include "contract/preset_saver.h"
#include "contract/unknown.h"
#include "contract/video_effect.h"

namespace kelmora {

/// The numbers that IEffectLibrary::CreateEffect takes.
enum EffectId : std::int32_t {
    Effect3DConfetti = 100,
    Effect3DPizzaBoxes = 101,
    EffectColorMelt = 102,
    EffectPaperCollage = 103,
    EffectSmear = 104,
    EffectActiveCamera = 105,
    EffectAirBrush = 106,
    EffectCropBorders = 107,
    EffectDetailEnhancer = 108,
    EffectWaterColor = 109,
};

/// The library: the one object that the file's exports give, and the maker of all others.
struct IEffectLibrary : IUnknown {
    static constexpr InterfaceId id = {
        0x9B8D0B5F, 0x065A, 0x46B1, {0x88, 0x9C, 0xF0, 0x57, 0x93, 0x4C, 0xE8, 0xA4}};

    /// The library's name, constant ASCII.
    virtual const char* KELMORA_CALL GetName() = 0;

    /// A new effect with a count of 1; null for an unknown number or when memory is out.
    virtual IVideoEffect* KELMORA_CALL CreateEffect(std::int32_t effectId) = 0;

    /// Opens the help file on `topic` where the system has a viewer for it.
    virtual void KELMORA_CALL ShowHelp(void* parent, std::uint32_t topic) = 0;

    /// A place kept in the table. Its result has no meaning.
    virtual void* KELMORA_CALL LibraryReserved() = 0;

    /// A new toolbox with a count of 1; null when memory is out.
    virtual IFrameProcessor* KELMORA_CALL CreateFrameProcessor() = 0;

    /// A new keeper of presets with a count of 1; null when memory is out.
    virtual IPresetSaver* KELMORA_CALL CreatePresetSaver() = 0;

protected:
    ~IEffectLibrary() = default;
};

} // namespace kelmora

// The exports of the library file. Both are undecorated.
extern "C" {

/// A new library object with a count of 1; null when memory is out. Every call makes a new one.
typedef kelmora::IEffectLibrary*(KELMORA_CALL* GetEffectsLibraryFunction)();

/// 1 when no library object lives and the file may be freed, else 0. Release everything else first:
/// only library objects are counted.
typedef std::int32_t(KELMORA_CALL* CanUnloadDLLNowFunction)();
}

#pragma once

#include <cstdint>

#include "contract/preset_data.h"
#include "contract/unknown.h"

namespace kelmora {

struct IEffectLibrary;

/// Keeps a user's knob settings in files, with the dialogs that ask for the file. [one thread at a time]
struct IPresetSaver : IUnknown {
    static constexpr InterfaceId id = {
        0x44CD1462, 0x6E3D, 0x438E, {0x9B, 0x72, 0x8C, 0x53, 0x3A, 0xA8, 0xFD, 0x8C}};

    /// Asks for a file and reads it into `*preset`.
    ///
    /// parent        owner window of the dialogs, or null
    /// languageCode  two letters, or null for English titles
    ///
    /// 0 loaded, 1 not loaded, 2 a preset of another effect.
    virtual std::int32_t KELMORA_CALL LoadPreset(void* parent, IEffectLibrary* library, std::int32_t effectId,
                                                 PresetData* preset, const char* languageCode) = 0;

    /// Asks for a file and writes `*preset` to it. 0 saved, 1 not saved.
    virtual std::int32_t KELMORA_CALL SavePreset(void* parent, IEffectLibrary* library, std::int32_t effectId,
                                                 PresetData* preset, const char* languageCode) = 0;

    /// The place of a deleting destructor. flags: KELMORA_DESTROY_FREE. Use Release instead.
    virtual void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t flags) = 0;

protected:
    ~IPresetSaver() = default;
};

} // namespace kelmora

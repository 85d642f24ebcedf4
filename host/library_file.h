#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "contract/effect_library.h"
#include "host/effect_face.h"
#include "host/held.h"
#include "platform/module.h"

namespace kelmora::host {

/// The numbers that are tried: the contract has no list.
inline constexpr std::int32_t kFirstEffect = Effect3DConfetti;
inline constexpr std::int32_t kLastEffect = EffectWaterColor;

/// A library file, loaded, with its exports. The objects made from it must be gone before it is.
class LibraryFile {
public:
    /// Loads the file at `path`, UTF-8. Throws Failure when there is none, when it cannot be loaded or when
    /// an export is missing.
    explicit LibraryFile(const std::string& path);

    /// A new library object. Throws Failure when there is none.
    Held<IEffectLibrary> MakeLibrary() const;

    /// The answer of the export CanUnloadDLLNow.
    std::int32_t CanUnload() const { return m_canUnload(); }

private:
    platform::Module m_module;
    GetEffectsLibraryFunction m_getLibrary = nullptr;
    CanUnloadDLLNowFunction m_canUnload = nullptr;
};

/// The library file that is taken when none is named: the one beside the program. UTF-8.
std::string DefaultLibraryPath();

/// The numbers for which the library makes an effect.
std::vector<std::int32_t> EffectNumbers(IEffectLibrary& library);

/// The faces of all effects of the library, by number.
std::vector<EffectFace> ReadFaces(IEffectLibrary& library);

/// The number of the effect that `asked` names by number, name or slug. Throws Failure, with the nearest
/// names, when there is none.
std::int32_t FindEffect(IEffectLibrary& library, const std::string& asked);

/// A new effect. Throws Failure when the library makes none.
Held<IVideoEffect> MakeEffect(IEffectLibrary& library, std::int32_t number);

} // namespace kelmora::host

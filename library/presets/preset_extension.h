#pragma once

#include <cstddef>
#include <cstdint>

namespace kelmora {

/// Room for the extension of a preset file and its end mark.
inline constexpr std::size_t kPresetExtensionCapacity = 8;

/// Stores the extension, without a dot, of the files that keep presets of one effect: "fxpklma" for number 100
/// of this library, "fxpunk" and the letter for a library that is not known, "prs" without a library.
///
/// libraryName  as IEffectLibrary::GetName gives it; null: no library
/// effectId     100 has the letter a; what lies beyond z is whatever character stands there
void MakePresetExtension(const char* libraryName, std::int32_t effectId,
                         char16_t (&extension)[kPresetExtensionCapacity]);

} // namespace kelmora

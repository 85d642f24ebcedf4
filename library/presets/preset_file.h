#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "contract/preset_data.h"

namespace kelmora {

/// A larger file is no preset.
inline constexpr std::size_t kMostPresetFileBytes = std::size_t{16} << 20;

/// Whether a preset can be kept in a file of this path: narrow text names the file as well, character by
/// character.
// Kept: a path whose narrow form is longer than its wide form is refused, though the file can be opened.
bool IsPresetPath(std::u16string_view path);

/// Reads the file at `path`, zero-ended, as ReadPreset does. False when it cannot be read, is larger than
/// kMostPresetFileBytes, or memory is out. Throws nothing.
bool LoadPresetFile(const char16_t* path, PresetData* preset);

/// Writes `preset` to the file at `path`, zero-ended; what stood there stays until the new file is whole. False
/// when it could not be written in full. Throws nothing.
bool SavePresetFile(const char16_t* path, const PresetData& preset);

/// Reads a preset from the text of its file, whatever that holds.
///
/// preset  entries behind the hundredth are left out, names are cut to their fields; a name that the text does
///         not have becomes empty. Null, or a text without a Preset element: false, nothing is written
///
/// True when there is at least one entry. Throws std::bad_alloc.
bool ReadPreset(std::string_view text, PresetData* preset);

/// The text of the file of `preset`, each line ended by a single line feed. Throws std::bad_alloc.
std::string PresetText(const PresetData& preset);

} // namespace kelmora

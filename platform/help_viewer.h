#pragma once

#include <cstdint>

namespace kelmora::platform {

/// Opens the help file `file`, a zero-ended full path, at the topic of number `topic`. Does nothing where
/// the file, or the system's viewer for it, is missing.
///
/// owner  window that the viewer belongs to, or null
void ShowHelp(void* owner, const char16_t* file, std::uint32_t topic);

} // namespace kelmora::platform

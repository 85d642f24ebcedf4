#pragma once

#include <string>

namespace kelmora::host {

/// The library of two small effects, 102 "Fake Blend" and 106 "Fake Filter".
inline const std::string kFakeLibrary = KELMORA_FAKE_LIBRARY;

/// A file that loads and exports nothing of the contract.
inline const std::string kEmptyLibrary = KELMORA_EMPTY_LIBRARY;

} // namespace kelmora::host

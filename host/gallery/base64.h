#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelmora::host {

/// The bytes in base64 with the usual alphabet and padding, in one line.
std::string Base64(const std::vector<std::uint8_t>& bytes);

} // namespace kelmora::host

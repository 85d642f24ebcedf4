#pragma once

#include <cstddef>
#include <cstdint>

namespace kelmora {

/// What a host says of itself.
struct HostInfo {
    const char* hostName; ///< zero-ended ASCII, or null
    std::uint32_t words[3];
};

static_assert(offsetof(HostInfo, words) == sizeof(void*));
static_assert(sizeof(void*) != 4 || sizeof(HostInfo) == 16);

} // namespace kelmora

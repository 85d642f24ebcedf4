#pragma once

#include <cstdint>

namespace kelmora {

/// The name of an interface: 16 bytes, in memory as Windows lays out a GUID on every platform.
/// Two ids are equal when all bytes are.
struct InterfaceId {
    std::uint32_t data1;
    std::uint16_t data2;
    std::uint16_t data3;
    std::uint8_t data4[8];

    constexpr bool operator==(const InterfaceId&) const = default;
};

static_assert(sizeof(InterfaceId) == 16);

} // namespace kelmora

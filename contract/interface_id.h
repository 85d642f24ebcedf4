#pragma once

#include <cstdint>
#include <cstring>

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

/// Whether `asked`, which may stand at any address, is the id `known`. For objects that answer QueryInterface.
inline bool IsSameId(const InterfaceId* asked, const InterfaceId& known)
{
    return std::memcmp(asked, &known, sizeof known) == 0;
}

} // namespace kelmora

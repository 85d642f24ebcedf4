#pragma once

#include <cstdint>

namespace kelmora::px {

/// p / 255 toward zero, for p from 0 to 65279: so 255 * v gives v back.
constexpr std::uint8_t By255(std::uint16_t p)
{
    return static_cast<std::uint8_t>(static_cast<std::uint16_t>(p + static_cast<std::uint16_t>(p >> 8) + 1)
                                     >> 8);
}

constexpr std::uint8_t ByteProduct(std::uint8_t a, std::uint8_t b)
{
    return By255(static_cast<std::uint16_t>(a * b));
}

} // namespace kelmora::px

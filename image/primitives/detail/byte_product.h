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

// The same on all four bytes of a word, two at a time in its halves.

inline constexpr std::uint32_t kEvenBytes = 0x00FF00FF;

/// a * factorA + b * factorB per byte, over 255 toward zero. No byte's sum may pass 65279.
constexpr std::uint32_t WeighBytes(std::uint32_t a, std::uint32_t factorA, std::uint32_t b,
                                   std::uint32_t factorB)
{
    const auto halves = [](std::uint32_t p) { return (p + ((p >> 8) & kEvenBytes) + 0x00010001) >> 8; };
    const std::uint32_t even = halves((a & kEvenBytes) * factorA + (b & kEvenBytes) * factorB);
    const std::uint32_t odd = halves(((a >> 8) & kEvenBytes) * factorA + ((b >> 8) & kEvenBytes) * factorB);
    return (even & kEvenBytes) | ((odd & kEvenBytes) << 8);
}

constexpr std::uint32_t ScaleBytes(std::uint32_t a, std::uint32_t factor)
{
    return WeighBytes(a, factor, 0, 0);
}

/// a + b per byte, at most 255.
constexpr std::uint32_t AddBytes(std::uint32_t a, std::uint32_t b)
{
    const auto halves = [](std::uint32_t sum) {
        const std::uint32_t over = (sum >> 8) & 0x00010001;
        return (sum | ((over << 8) - over)) & kEvenBytes;
    };
    return halves((a & kEvenBytes) + (b & kEvenBytes))
        | halves(((a >> 8) & kEvenBytes) + ((b >> 8) & kEvenBytes)) << 8;
}

} // namespace kelmora::px

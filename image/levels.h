#pragma once

#include <cstdint>

namespace kelmora {

/// What a byte's unit is as a float: the float next to 1 / 255, so that 255 of them are 1.0.
inline constexpr double kByteUnit = static_cast<double>(0.003921569f);

/// A byte's level as a float.
constexpr float LevelOf(int byte)
{
    return static_cast<float>(byte * kByteUnit);
}

/// Toward zero and into 0 to 255; not-a-number gives 0.
constexpr std::uint8_t TruncateToByte(double value)
{
    const double positive = value > 0.0 ? value : 0.0;
    return static_cast<std::uint8_t>(static_cast<int>(positive < 255.0 ? positive : 255.0));
}

/// Into 0 to 1; not-a-number gives 0.
template <class Real>
constexpr Real ClampLevel(Real value)
{
    const Real positive = value > Real(0) ? value : Real(0);
    return positive < Real(1) ? positive : Real(1);
}

} // namespace kelmora

#pragma once

namespace kelmora::px {

/// To the nearest whole number, ties to even, of values up to 2^51 either way.
inline double RoundEven(double value)
{
    constexpr double kUnit = 6755399441055744.0; // 2^52 + 2^51, where one unit is the last bit
    return (value + kUnit) - kUnit;
}

} // namespace kelmora::px

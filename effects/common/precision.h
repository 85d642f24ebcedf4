#pragma once

#include <limits>

namespace kelmora {

/// A constant that is held in single precision and used in double.
constexpr double Single(double value)
{
    return static_cast<double>(static_cast<float>(value));
}

/// Toward zero: the one way from floating point to integers in effects. Knobs come from preset files and
/// hosts and may be anything, so not-a-number gives 0 and what lies beyond an int gives the nearest one.
constexpr int Truncate(double value)
{
    if (value != value)
        return 0;
    if (value >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (value <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

} // namespace kelmora

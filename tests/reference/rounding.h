#pragma once

namespace kelmora::reference {

/// The nearest float. Through memory, because GCC 12 forgets the rounding where it makes a vector of two doubles
/// that go to float and back.
inline double RoundedToFloat(double value)
{
    volatile float rounded = static_cast<float>(value);
    return static_cast<double>(rounded);
}

} // namespace kelmora::reference

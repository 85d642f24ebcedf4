#pragma once

// Rows of a picture as rows of doubles, and back.

#include <algorithm>
#include <cstdint>

#include "image/primitives/detail/loose_float.h"

namespace kelmora::px::resizing {

using u8 = std::uint8_t;

/// Values that pass through small arrays at once, in steps that the compiler makes vectors of.
inline constexpr int kStretch = 256;

inline void LoadRow(const u8* from, std::int64_t values, double* __restrict to)
{
    std::int32_t levels[kStretch];
    for (std::int64_t first = 0; first < values; first += kStretch) {
        const int count = static_cast<int>(std::min<std::int64_t>(kStretch, values - first));
        for (int i = 0; i < count; ++i)
            levels[i] = from[first + i];
        for (int i = 0; i < count; ++i)
            to[first + i] = levels[i];
    }
}

inline void LoadRow(const float* from, std::int64_t values, double* __restrict to)
{
    const LooseFloat* loose = Loose(from);
    for (std::int64_t i = 0; i < values; ++i)
        to[i] = static_cast<double>(loose[i].v);
}

/// To nearest, halves up, of values that are not below 0.
struct HalvesUp {
    std::int32_t operator()(double value) const
    {
        const double raised = value + 0.5;
        return static_cast<std::int32_t>(raised);
    }
};

struct Narrow {};

/// At most kStretch values. They fit in 16 bits: the weights of two axes add up to less than 3, signs aside.
template <class Round>
void StoreValues(const double* __restrict from, int count, u8* to, Round round)
{
    std::int32_t rounded[kStretch];
    std::int16_t levels[kStretch];
    for (int i = 0; i < count; ++i)
        rounded[i] = round(from[i]);
    for (int i = 0; i < count; ++i)
        levels[i] = static_cast<std::int16_t>(rounded[i]);
    for (int i = 0; i < count; ++i) {
        const std::int16_t positive = levels[i] > 0 ? levels[i] : std::int16_t{0};
        to[i] = static_cast<u8>(positive < 255 ? positive : std::int16_t{255});
    }
}

inline void StoreValues(const double* __restrict from, int count, float* to, Narrow)
{
    LooseFloat* loose = Loose(to);
    for (int i = 0; i < count; ++i)
        loose[i] = static_cast<float>(from[i]);
}

} // namespace kelmora::px::resizing

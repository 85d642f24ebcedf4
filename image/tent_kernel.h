#pragma once

#include <cstdint>

namespace kelmora {

// The tent: weights that rise by one to the middle and fall again, so 5 taps are 1 2 3 2 1 and 4 are
// 1 2 2 1. It is a box of (n + 1) / 2 taps convolved with one of n + 1 - (n + 1) / 2.

/// The sum of the weights of `taps` taps, 1 or more.
constexpr std::int64_t TentSum(int taps)
{
    const std::int64_t half = (static_cast<std::int64_t>(taps) + 1) / 2;
    return half * (static_cast<std::int64_t>(taps) + 1 - half);
}

/// Fills kernel[0..taps-1] with the integer weights; gives their sum. 0 for no taps or a null kernel.
int MakeTentKernelI(int* kernel, int taps);

/// Fills kernel[0..taps-1] with weights that sum to 1; gives the sum before they were normalised.
float MakeTentKernelF(float* kernel, int taps);

} // namespace kelmora

#include "image/tent_kernel.h"

namespace kelmora {

int MakeTentKernelI(int* kernel, int taps)
{
    if (!kernel || taps < 1)
        return 0;
    const int half = static_cast<int>((static_cast<std::int64_t>(taps) + 1) >> 1);
    for (int i = 0; i < half; ++i) {
        kernel[i] = i + 1;
        kernel[taps - 1 - i] = i + 1;
    }
    return static_cast<int>(TentSum(taps));
}

float MakeTentKernelF(float* kernel, int taps)
{
    if (!kernel || taps < 1)
        return 0;
    const int half = static_cast<int>((static_cast<std::int64_t>(taps) + 1) >> 1);
    // Both slopes, less the middle that an odd tent has once.
    float total = static_cast<float>((half + 1.0) * 0.5 * half * 2.0);
    if (taps & 1)
        total -= static_cast<float>(half);
    for (int i = 0; i < half; ++i) {
        const float weight = static_cast<float>(i + 1) / total;
        kernel[i] = weight;
        kernel[taps - 1 - i] = weight;
    }
    return total;
}

} // namespace kelmora

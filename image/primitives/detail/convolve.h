#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"

namespace kelmora::px {

// --- how a byte filter's sum becomes a byte ---------------------------------------------------------------

/// Divisor 1.
struct SaturateSum {
    template <class Sum>
    std::uint8_t operator()(Sum sum) const
    {
        return static_cast<std::uint8_t>(std::clamp<Sum>(sum, 0, 255));
    }
};

/// Divisor 2 to the power of `shift`: to nearest, ties to even.
struct ShiftSum {
    int shift;

    template <class Sum>
    std::uint8_t operator()(Sum sum) const
    {
        const Sum half = (Sum{1} << (shift - 1)) - 1;
        const Sum odd = (sum >> shift) & 1;
        return SaturateSum{}((sum + half + odd) >> shift);
    }
};

/// Any other divisor but 0: times its reciprocal, to nearest, ties to even.
struct ScaleSum {
    double reciprocal;

    template <class Sum>
    std::uint8_t operator()(Sum sum) const
    {
        const double value = static_cast<double>(sum) * reciprocal;
        if (value >= 255.0)
            return 255;
        if (!(value > 0.5))
            return 0;
        return static_cast<std::uint8_t>(std::lrint(value));
    }
};

/// Division toward zero, and none by 0: how the alpha-first loops finish.
struct TruncateSum {
    int divisor;

    template <class Sum>
    std::uint8_t operator()(Sum sum) const
    {
        return SaturateSum{}(divisor == 0 ? sum : sum / divisor);
    }
};

constexpr bool IsPowerOfTwo(int value)
{
    return value > 0 && (value & (value - 1)) == 0;
}

/// Calls `work` with the finish that belongs to a divisor, which is not 0.
template <class Work>
void WithFinish(int divisor, Work&& work)
{
    if (divisor == 1)
        work(SaturateSum{});
    else if (IsPowerOfTwo(divisor))
        work(ShiftSum{std::countr_zero(static_cast<unsigned>(divisor))});
    else
        work(ScaleSum{1.0 / divisor});
}

/// Whether sums of bytes with this kernel stay inside 32 bits, and so when half of any unit is added to them.
inline bool SumsFit32(const int* kernel, int kernelSize)
{
    std::int64_t largest = 0;
    for (int j = 0; j < kernelSize; ++j)
        largest += 255 * std::abs(static_cast<std::int64_t>(kernel[j]));
    return largest <= 0x5FFFFFFF;
}

// --- the loop -----------------------------------------------------------------------------------------------

/// One stretch of values: acc[i] = sum over j of kernel[j] * taps[j * tapStep bytes][i].
template <class Acc, class T, class Tap>
inline void SumTaps(Acc* __restrict acc, const T* src, std::ptrdiff_t tapStep, const Tap* kernel,
                    int kernelSize, int count)
{
    std::fill_n(acc, count, Acc{});
    for (int j = 0; j < kernelSize; ++j) {
        const Acc weight = static_cast<Acc>(kernel[j]);
        const T* __restrict tap =
            reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(src) + tapStep * j);
        for (int i = 0; i < count; ++i)
            acc[i] += weight * static_cast<Acc>(tap[i]);
    }
}

/// dst value i = finish(sum over j of kernel[j] * (src value i, j * tapStep bytes on)). Rows are taken as
/// flat lists of values, so one loop serves rows and columns of every layout.
template <class L, class Acc, class T, class Tap, class Finish>
void Convolve(const T* src, int srcStep, T* dst, int dstStep, int width, int height, const Tap* kernel,
              int kernelSize, std::ptrdiff_t tapStep, Finish finish)
{
    constexpr int kStretch = 256; // a multiple of all pixel sizes; its sums stay in the first cache
    // A layout that leaves the last value alone must not read it behind the last pixel either.
    const std::int64_t values = static_cast<std::int64_t>(width) * L::channels - (L::channels - L::touched);
    Acc acc[kStretch];
    for (int y = 0; y < height; ++y) {
        const T* from = Row(src, srcStep, y);
        T* to = Row(dst, dstStep, y);
        for (std::int64_t first = 0; first < values; first += kStretch) {
            const int count = static_cast<int>(std::min<std::int64_t>(kStretch, values - first));
            SumTaps(acc, from + first, tapStep, kernel, kernelSize, count);
            for (int i = 0; i < count; ++i)
                if (L::whole || i % L::channels < L::touched)
                    to[first + i] = finish(acc[i]);
        }
    }
}

/// Bytes, with the sums as wide as they need to be.
template <class L, class Finish>
void ConvolveBytes(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                   int height, const int* kernel, int kernelSize, std::ptrdiff_t tapStep, Finish finish)
{
    if (SumsFit32(kernel, kernelSize))
        Convolve<L, std::int32_t>(src, srcStep, dst, dstStep, width, height, kernel, kernelSize, tapStep,
                                  finish);
    else
        Convolve<L, std::int64_t>(src, srcStep, dst, dstStep, width, height, kernel, kernelSize, tapStep,
                                  finish);
}

} // namespace kelmora::px

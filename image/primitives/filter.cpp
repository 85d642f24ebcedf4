#include "image/primitives/filter.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "image/primitives/detail/convolve.h"
#include "image/primitives/filter_kernels.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

enum class Along { Row, Column };

template <class L, class T, class Tap>
PxStatus CheckFilter(const T* src, int srcStep, const T* dst, int dstStep, int width, int height,
                     const Tap* kernel, int kernelSize, int anchor)
{
    if (!kernel)
        return pxNullPointer;
    if (const PxStatus status = CheckRegions<L, L>(src, srcStep, dst, dstStep, width, height))
        return status;
    if (kernelSize < 1)
        return pxBadSize;
    return anchor < 0 || anchor >= kernelSize ? pxBadAnchor : pxOk;
}

/// Bytes from one tap to the next: the kernel runs against the picture.
template <Along along, class L, class T>
std::ptrdiff_t TapStep(int srcStep)
{
    return along == Along::Row ? -static_cast<std::ptrdiff_t>(L::channels * sizeof(T))
                               : -static_cast<std::ptrdiff_t>(srcStep);
}

/// The first tap's value for the region's first pixel.
template <class T>
const T* FirstTap(const T* src, std::ptrdiff_t tapStep, int anchor)
{
    return reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(src) - tapStep * anchor);
}

/// Values of a row, but for a last one that is left alone: it must not be read either.
template <class L>
std::ptrdiff_t ValuesOf(int width)
{
    return static_cast<std::ptrdiff_t>(width) * L::channels - (L::channels - L::touched);
}

constexpr int kMostTaps = 512; ///< of the kernels that the vector loops serve

/// How a divisor above 0 finishes.
FilterRow FinishOf(int divisor)
{
    FilterRow row = {};
    row.reciprocal = 1.0 / divisor;
    if (divisor == 1) {
        row.finish = FilterFinish::Saturate;
    } else if (IsPowerOfTwo(divisor)) {
        row.finish = FilterFinish::Shift;
        row.shift = std::countr_zero(static_cast<unsigned>(divisor));
    } else {
        // With an odd divisor nothing lies nearer to a half than 1 / (2 * divisor): further than the errors of single
        // precision below 256, which stay under 1 / 32768. An even one's ties go where double puts them.
        const bool single = divisor % 2 == 1 && divisor < 8192;
        row.finish = single ? FilterFinish::ScaleSingle : FilterFinish::ScaleDouble;
    }
    return row;
}

/// The vector loop for a kernel; null where its sums or its length are too large.
void (*LoopFor(const int* kernel, int kernelSize))(const FilterRow&)
{
    if (kernelSize > kMostTaps)
        return nullptr;
    std::int64_t sum = 0, largest = 0;
    for (int j = 0; j < kernelSize; ++j) {
        const std::int64_t size = std::abs(static_cast<std::int64_t>(kernel[j]));
        sum += size;
        largest = std::max(largest, size);
    }
    const FilterKernels& kernels = FilterKernelsFor(CurrentVariant());
    if (255 * sum <= 32767 && largest <= 127)
        return kernels.narrow;
    return 255 * sum <= 1 << 24 && largest <= 32767 ? kernels.wide : nullptr;
}

/// False, and nothing done, where no vector loop serves.
template <class L>
bool FilterInVectors(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height,
                     const int* kernel, int kernelSize, std::ptrdiff_t tapStep, int divisor)
{
    const auto filter = divisor > 0 ? LoopFor(kernel, kernelSize) : nullptr;
    if (!filter)
        return false;
    std::int16_t weights[kMostTaps];
    for (int j = 0; j < kernelSize; ++j)
        weights[j] = static_cast<std::int16_t>(kernel[j]);
    FilterRow row = FinishOf(divisor);
    row.tapStep = tapStep;
    row.weights = weights;
    row.taps = kernelSize;
    row.count = ValuesOf<L>(width);
    row.keepsFourth = !L::whole;
    for (int y = 0; y < height; ++y) {
        row.src = Row(src, srcStep, y);
        row.dst = Row(dst, dstStep, y);
        filter(row);
    }
    return true;
}

template <Along along, class L>
PxStatus Filter(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height, const int* kernel,
                int kernelSize, int anchor, int divisor)
{
    if (const PxStatus status =
            CheckFilter<L>(src, srcStep, dst, dstStep, width, height, kernel, kernelSize, anchor))
        return status;
    if (divisor == 0)
        return pxZeroDivisor;
    const std::ptrdiff_t tapStep = TapStep<along, L, u8>(srcStep);
    const u8* const first = FirstTap(src, tapStep, anchor);
    if (FilterInVectors<L>(first, srcStep, dst, dstStep, width, height, kernel, kernelSize, tapStep, divisor))
        return pxOk;
    WithFinish(divisor, [&](auto finish) {
        ConvolveBytes<L>(first, srcStep, dst, dstStep, width, height, kernel, kernelSize, tapStep, finish);
    });
    return pxOk;
}

template <Along along, class L>
PxStatus Filter(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                const float* kernel, int kernelSize, int anchor)
{
    if (const PxStatus status =
            CheckFilter<L>(src, srcStep, dst, dstStep, width, height, kernel, kernelSize, anchor))
        return status;
    FloatFilter filter = {};
    filter.tapStep = TapStep<along, L, float>(srcStep);
    filter.src = FirstTap(src, filter.tapStep, anchor);
    filter.srcStep = srcStep;
    filter.weights = kernel;
    filter.taps = kernelSize;
    filter.dst = dst;
    filter.dstStep = dstStep;
    filter.count = ValuesOf<L>(width);
    filter.rows = height;
    filter.keepsFourth = !L::whole;
    FilterKernelsFor(CurrentVariant()).floats(filter);
    return pxOk;
}

constexpr Along row = Along::Row;
constexpr Along column = Along::Column;

} // namespace

// clang-format off
PxStatus pxRowFilter_8u_C1(const u8* s, int ss, u8* d, int ds, int w, int h, const int* k, int n, int a, int div) { return Filter<row, C1>(s, ss, d, ds, w, h, k, n, a, div); }
PxStatus pxRowFilter_8u_A3(const u8* s, int ss, u8* d, int ds, int w, int h, const int* k, int n, int a, int div) { return Filter<row, A3>(s, ss, d, ds, w, h, k, n, a, div); }
PxStatus pxRowFilter_8u_C4(const u8* s, int ss, u8* d, int ds, int w, int h, const int* k, int n, int a, int div) { return Filter<row, C4>(s, ss, d, ds, w, h, k, n, a, div); }
PxStatus pxRowFilter_32f_C1(const float* s, int ss, float* d, int ds, int w, int h, const float* k, int n, int a) { return Filter<row, C1>(s, ss, d, ds, w, h, k, n, a); }
PxStatus pxRowFilter_32f_A3(const float* s, int ss, float* d, int ds, int w, int h, const float* k, int n, int a) { return Filter<row, A3>(s, ss, d, ds, w, h, k, n, a); }
PxStatus pxRowFilter_32f_C4(const float* s, int ss, float* d, int ds, int w, int h, const float* k, int n, int a) { return Filter<row, C4>(s, ss, d, ds, w, h, k, n, a); }

PxStatus pxColumnFilter_8u_C1(const u8* s, int ss, u8* d, int ds, int w, int h, const int* k, int n, int a, int div) { return Filter<column, C1>(s, ss, d, ds, w, h, k, n, a, div); }
PxStatus pxColumnFilter_8u_A3(const u8* s, int ss, u8* d, int ds, int w, int h, const int* k, int n, int a, int div) { return Filter<column, A3>(s, ss, d, ds, w, h, k, n, a, div); }
PxStatus pxColumnFilter_8u_C4(const u8* s, int ss, u8* d, int ds, int w, int h, const int* k, int n, int a, int div) { return Filter<column, C4>(s, ss, d, ds, w, h, k, n, a, div); }
PxStatus pxColumnFilter_32f_C1(const float* s, int ss, float* d, int ds, int w, int h, const float* k, int n, int a) { return Filter<column, C1>(s, ss, d, ds, w, h, k, n, a); }
PxStatus pxColumnFilter_32f_A3(const float* s, int ss, float* d, int ds, int w, int h, const float* k, int n, int a) { return Filter<column, A3>(s, ss, d, ds, w, h, k, n, a); }
PxStatus pxColumnFilter_32f_C4(const float* s, int ss, float* d, int ds, int w, int h, const float* k, int n, int a) { return Filter<column, C4>(s, ss, d, ds, w, h, k, n, a); }
// clang-format on

} // namespace kelmora

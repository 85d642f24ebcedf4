#include "image/primitives/filter.h"

#include "image/primitives/detail/convolve.h"
#include "image/primitives/detail/loose_float.h"

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
    WithFinish(divisor, [&](auto finish) {
        ConvolveBytes<L>(FirstTap(src, tapStep, anchor), srcStep, dst, dstStep, width, height, kernel,
                         kernelSize, tapStep, finish);
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
    const std::ptrdiff_t tapStep = TapStep<along, L, float>(srcStep);
    Convolve<L, double>(FirstTap(Loose(src), tapStep, anchor), srcStep, Loose(dst), dstStep, width, height,
                        kernel, kernelSize, tapStep, NarrowSum{});
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

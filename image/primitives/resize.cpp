#include "image/primitives/resize.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/detail/resize_average.h"
#include "image/primitives/detail/resize_bytes.h"
#include "image/primitives/detail/resize_filter.h"
#include "image/primitives/detail/resize_floats.h"

namespace kelmora {
namespace {

using namespace px;
using namespace px::resizing;

/// Bytes are moved, not values: a float that is no number keeps its bits.
template <class L, class T>
PxStatus PickNearest(const Job<T>& job)
{
    constexpr std::size_t kBytes = L::channels * sizeof(T);
    const Table<std::ptrdiff_t> offsets(job.x.size);
    if (!offsets.Values())
        return pxNoMemory;
    for (int x = 0; x < job.x.size; ++x)
        offsets.Values()[x] = job.x.NearestOf(x) * static_cast<std::ptrdiff_t>(kBytes);
    for (int y = 0; y < job.y.size; ++y) {
        const auto* from = reinterpret_cast<const u8*>(Row(job.src, job.srcStep, job.y.NearestOf(y)));
        auto* to = reinterpret_cast<u8*>(Row(job.dst, job.dstStep, y));
        for (int x = 0; x < job.x.size; ++x, to += kBytes)
            std::memcpy(to, from + offsets.Values()[x], kBytes);
    }
    return pxOk;
}

template <class L>
PxStatus Run(const Job<u8>& job, int interpolation)
{
    switch (interpolation) {
    case pxNearest:
        return PickNearest<L>(job);
    case pxLinear:
        if constexpr (L::channels == 4)
            return FilterBytes<L, LinearTaps<14>>(job);
        else // sums of 14-bit weights are exact in double: 8 + 14 + 14 bits
            return Filter<L, LinearTaps<14>>(job, HalvesUp{});
    case pxCubic:
        return FilterBytes<L, CubicTaps>(job);
    case pxLanczos:
        return FilterBytes<L, LanczosTaps>(job);
    default:
        return Average<L>(job, HalvesUp{});
    }
}

template <class L, class Kernel>
PxStatus FilterReal(const Job<float>& job)
{
    if constexpr (L::channels == 4)
        return FilterFloats<Kernel>(job);
    else
        return Filter<L, Kernel>(job, Narrow{});
}

template <class L>
PxStatus Run(const Job<float>& job, int interpolation)
{
    switch (interpolation) {
    case pxNearest:
        return PickNearest<L>(job);
    case pxLinear:
        return FilterReal<L, LinearTaps<0>>(job);
    case pxCubic:
        return FilterReal<L, CubicTaps>(job);
    case pxLanczos:
        return FilterReal<L, LanczosTaps>(job);
    default:
        return Average<L>(job, Narrow{});
    }
}

bool IsServed(int interpolation, double xFactor, double yFactor)
{
    switch (interpolation) {
    case pxNearest:
    case pxLinear:
    case pxCubic:
    case pxLanczos:
        return true;
    case pxAverage:
        return xFactor <= 1.0 && yFactor <= 1.0;
    default:
        return false;
    }
}

/// What a picture whose smaller side has `side` pixels is resized with.
int Lowered(int interpolation, int side)
{
    if (side < 2)
        return pxNearest;
    if (interpolation == pxLanczos && side < 8)
        interpolation = pxCubic;
    if (interpolation == pxCubic && side < 4)
        interpolation = pxLinear;
    return interpolation;
}

template <class L, class T>
PxStatus Resize(const T* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region, T* dst,
                int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor, int interpolation,
                const PxRect& hole = {0, 0, 0, 0}, bool levels = false)
{
    if (!src || !dst)
        return pxNullPointer;
    for (const PxStatus status :
         {CheckSize(srcWidth, srcHeight), CheckSize(region.width, region.height),
          CheckSize(dstWidth, dstHeight), CheckStep(srcStep, srcWidth, L::channels * sizeof(T)),
          CheckStep(dstStep, dstWidth, L::channels * sizeof(T))})
        if (status != pxOk)
            return status;
    if (region.x < 0 || region.x >= srcWidth || region.y < 0 || region.y >= srcHeight)
        return pxRegionOutsideSource;
    if (!(xFactor > 0.0) || !(yFactor > 0.0))
        return pxBadFactor;
    if (!IsServed(interpolation, xFactor, yFactor))
        return pxBadInterpolation;

    Job<T> job = {};
    job.src = Row(src, srcStep, region.y) + std::ptrdiff_t{region.x} * L::channels;
    job.srcStep = srcStep;
    job.dst = dst;
    job.dstStep = dstStep;
    job.hole = hole;
    job.levels = levels;
    const int width = std::min(region.width, srcWidth - region.x);
    const int height = std::min(region.height, srcHeight - region.y);
    if (const PxStatus status = MapAxis(width, xFactor, dstWidth, job.x))
        return status;
    if (const PxStatus status = MapAxis(height, yFactor, dstHeight, job.y))
        return status;
    interpolation = Lowered(interpolation, std::min(srcWidth, srcHeight));
    const PxStatus status = Run<L>(job, interpolation);
    if constexpr (std::is_same_v<T, float>)
        if (levels && status == pxOk && (interpolation == pxNearest || interpolation == pxAverage))
            CutToLevels(job); // the filters have done it on the way
    return status;
}

} // namespace

PxStatus pxResize_8u_C1(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                        u8* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                        int interpolation)
{
    return Resize<C1>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation);
}

PxStatus pxResize_8u_C4(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                        u8* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                        int interpolation)
{
    return Resize<C4>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation);
}

PxStatus pxResizeAround_8u_C4(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                              u8* dst, int dstStep, int dstWidth, int dstHeight, double xFactor,
                              double yFactor, int interpolation, const PxRect& hole)
{
    return Resize<C4>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation, hole);
}

PxStatus pxResize_32f_C1(const float* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                         float* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                         int interpolation)
{
    return Resize<C1>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation);
}

PxStatus pxResize_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep, const PxRect& region,
                         float* dst, int dstStep, int dstWidth, int dstHeight, double xFactor, double yFactor,
                         int interpolation)
{
    return Resize<C4>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation);
}

PxStatus pxResizeLevelsAround_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep,
                                     const PxRect& region, float* dst, int dstStep, int dstWidth,
                                     int dstHeight, double xFactor, double yFactor, int interpolation,
                                     const PxRect& hole)
{
    return Resize<C4>(src, srcWidth, srcHeight, srcStep, region, dst, dstStep, dstWidth, dstHeight, xFactor,
                      yFactor, interpolation, hole, true);
}

} // namespace kelmora

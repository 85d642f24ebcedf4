#include "image/primitives/warp.h"

#include <cmath>
#include <cstdint>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/detail/rounding.h"
#include "image/primitives/detail/warp_sample.h"
#include "image/primitives/memory.h"
#include "image/primitives/separable_warp.h"
#include "image/primitives/warp_kernels.h"
#include "image/primitives/warp_map.h"

namespace kelmora {
namespace {

using namespace px;
using namespace px::warping;

template <class L, class T>
void AffinePixels(const Source<T>& src, const AffineMap& map, T* dst, int dstStep, const PxRect& region,
                  int interpolation)
{
    for (int y = region.y; y < region.y + region.height; ++y) {
        const WarpSpan span = InsideSpan({region.x, region.x + region.width}, y, map, src.bounds);
        T* to = Row(dst, dstStep, y) + std::ptrdiff_t{span.begin} * L::channels;
        const double rowX = map.RowX(y), rowY = map.RowY(y);
        for (int x = span.begin; x < span.end; ++x, to += L::channels)
            SampleAt<L>(src, map.X(x, rowX), map.Y(x, rowY), interpolation, to);
    }
}

/// A shift's weights are the same all over, so they are not those of the positions one by one.
template <class L, class T>
void ShiftPixels(const Source<T>& src, const AffineMap& map, T* dst, int dstStep, const PxRect& region)
{
    const auto split = [](double shift) {
        if constexpr (std::is_same_v<T, u8>)
            return RoundEven(shift * 256.0) / 256.0;
        else
            return shift;
    };
    const double shiftX = split(map.x0), shiftY = split(map.y0);
    const double wholeX = std::floor(shiftX), wholeY = std::floor(shiftY);
    const auto pair = [](int at, double whole, double shift, int low, int high) {
        return PairFor(static_cast<int>(at + whole), static_cast<int>((shift - whole) * 256.0),
                       static_cast<float>(shift - whole), low, high);
    };
    const WarpBounds& bounds = src.bounds;
    for (int y = region.y; y < region.y + region.height; ++y) {
        const WarpSpan span = InsideSpan({region.x, region.x + region.width}, y, map, bounds);
        T* to = Row(dst, dstStep, y) + std::ptrdiff_t{span.begin} * L::channels;
        for (int x = span.begin; x < span.end; ++x, to += L::channels)
            SampleLinear<L>(src, pair(x, wholeX, shiftX, bounds.left, bounds.right),
                            pair(y, wholeY, shiftY, bounds.top, bounds.bottom), to);
    }
}

template <class L, class T>
void AffineRows(const WarpImage& image, const AffineMap& map, T* dst, int dstStep, const PxRect& region)
{
    const WarpKernels& kernels = WarpKernelsFor(CurrentVariant());
    const auto kernel = std::is_same_v<T, u8> ? kernels.affineBytes : kernels.affineFloats;
    ForStrips(region, [&](WarpSpan columns, int y) {
        const WarpSpan span = InsideSpan(columns, y, map, image.bounds);
        if (span.IsEmpty())
            return;
        kernel({image,
                Row(dst, dstStep, y) + std::ptrdiff_t{span.begin} * L::channels,
                span,
                {map.xx, map.RowX(y)},
                {map.yx, map.RowY(y)}});
    });
}

/// False when there is no memory.
template <class L, class T>
bool SeparableRows(const WarpImage& image, const AffineMap& map, T* dst, int dstStep, const PxRect& region)
{
    constexpr bool kFloats = !std::is_same_v<T, u8>;
    constexpr int kAlignment = 64;
    void* const memory = pxMalloc(SeparableWarp::WorkBytes(region.width, kFloats) + kAlignment);
    if (!memory)
        return false;
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    void* const work = static_cast<u8*>(memory) + (kAlignment - address % kAlignment);
    SeparableWarp warp(image, map, {region.x, region.x + region.width}, kFloats, work);
    warp.RowsAreReadLater();
    for (int y = region.y; y < region.y + region.height; ++y)
        if (const WarpSpan span = warp.Covered(y); !span.IsEmpty())
            warp.Row(y, Row(dst, dstStep, y) + std::ptrdiff_t{span.begin} * L::channels);
    pxFree(memory);
    return true;
}

template <class L, class T>
PxStatus WarpAffine(const T* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion, T* dst,
                    int dstStep, const PxRect& dstRegion, const double coeffs[2][3], int interpolation)
{
    Source<T> source = {src, srcStep, {}};
    if (const PxStatus status = Check<L>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep,
                                         dstRegion, coeffs, interpolation, source.bounds))
        return status;
    AffineMap map;
    if (const PxStatus status = InvertAffine(coeffs, map))
        return status;

    if (interpolation == pxLinear && IsWithinReach<L>(source)) {
        const WarpImage image = {src, srcStep, source.bounds,
                                 BytesAhead(kRowsAhead * map.xy, kRowsAhead * map.yy, source.bounds, srcStep,
                                            L::channels * static_cast<int>(sizeof(T)))};
        if (SeparableWarp::Serves(map, image)) {
            if (SeparableRows<L>(image, map, dst, dstStep, dstRegion))
                return pxOk;
        } else if (HasPairs(source.bounds)) {
            AffineRows<L>(image, map, dst, dstStep, dstRegion);
            return pxOk;
        }
    }
    if (interpolation == pxLinear && map.isShift)
        ShiftPixels<L>(source, map, dst, dstStep, dstRegion);
    else
        AffinePixels<L>(source, map, dst, dstStep, dstRegion, interpolation);
    return pxOk;
}

} // namespace

PxStatus pxWarpAffine_8u_C1(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion,
                            u8* dst, int dstStep, const PxRect& dstRegion, const double coeffs[2][3],
                            int interpolation)
{
    return WarpAffine<C1>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep, dstRegion, coeffs,
                          interpolation);
}

PxStatus pxWarpAffine_8u_C4(const u8* src, int srcWidth, int srcHeight, int srcStep, const PxRect& srcRegion,
                            u8* dst, int dstStep, const PxRect& dstRegion, const double coeffs[2][3],
                            int interpolation)
{
    return WarpAffine<C4>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep, dstRegion, coeffs,
                          interpolation);
}

PxStatus pxWarpAffine_32f_C4(const float* src, int srcWidth, int srcHeight, int srcStep,
                             const PxRect& srcRegion, float* dst, int dstStep, const PxRect& dstRegion,
                             const double coeffs[2][3], int interpolation)
{
    return WarpAffine<C4>(src, srcWidth, srcHeight, srcStep, srcRegion, dst, dstStep, dstRegion, coeffs,
                          interpolation);
}

} // namespace kelmora

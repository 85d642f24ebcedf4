#include "image/primitives/colour.h"

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/hsv_kernels.h"
#include "image/primitives/row_kernels.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

template <class T>
PxStatus Twist(const T* src, int srcStep, T* dst, int dstStep, int width, int height, const float twist[3][4],
               void (*kernel)(const TwistRow&))
{
    if (!twist)
        return pxNullPointer;
    if (const PxStatus status = CheckRegions<A3, A3>(src, srcStep, dst, dstStep, width, height))
        return status;
    for (int y = 0; y < height; ++y)
        kernel({Row(src, srcStep, y), Row(dst, dstStep, y), width, twist});
    return pxOk;
}

PxStatus MapColours(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height,
                    HsvKernels::Row kernel)
{
    if (const PxStatus status = CheckRegions<A3, A3>(src, srcStep, dst, dstStep, width, height))
        return status;
    for (int y = 0; y < height; ++y)
        kernel(Row(src, srcStep, y), Row(dst, dstStep, y), width);
    return pxOk;
}

} // namespace

PxStatus pxColorTwist_32f_A3(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                             const float twist[3][4])
{
    return Twist(src, srcStep, dst, dstStep, width, height, twist,
                 RowKernelsFor(CurrentVariant()).twistFloats);
}

PxStatus pxColorTwist_32f_A3_I(float* pixels, int step, int width, int height, const float twist[3][4])
{
    return pxColorTwist_32f_A3(pixels, step, pixels, step, width, height, twist);
}

PxStatus pxColorTwist_8u_A3(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height,
                            const float twist[3][4])
{
    return Twist(src, srcStep, dst, dstStep, width, height, twist,
                 RowKernelsFor(CurrentVariant()).twistBytes);
}

PxStatus pxRGBToHSV_8u_A3(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    return MapColours(src, srcStep, dst, dstStep, width, height,
                      HsvKernelsFor(CurrentVariant()).coloursToHsv);
}

PxStatus pxHSVToRGB_8u_A3(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    return MapColours(src, srcStep, dst, dstStep, width, height,
                      HsvKernelsFor(CurrentVariant()).coloursToRgb);
}

} // namespace kelmora

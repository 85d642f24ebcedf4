#include "image/primitives/neighbourhood.h"

#include "image/primitives/byte_kernels.h"
#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/row_kernels.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

} // namespace

PxStatus pxSharpen3x3_8u_A3(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    if (const PxStatus status = CheckRegions<A3, A3>(src, srcStep, dst, dstStep, width, height))
        return status;
    const auto sharpen = RowKernelsFor(CurrentVariant()).sharpenBytes;
    for (int y = 0; y < height; ++y)
        sharpen({Row(src, srcStep, y - 1), Row(src, srcStep, y), Row(src, srcStep, y + 1),
                 Row(dst, dstStep, y), width});
    return pxOk;
}

PxStatus pxBoxAverage_8u_C1(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height, int mask)
{
    if (const PxStatus status = CheckRegions<C1, C1>(src, srcStep, dst, dstStep, width, height))
        return status;
    if (mask != pxBox3x3 && mask != pxBox5x5)
        return pxBadMask;
    const ByteKernels& kernels = ByteKernelsFor(CurrentVariant());
    const auto average = mask == pxBox3x3 ? kernels.box3x3 : kernels.box5x5;
    for (int y = 0; y < height; ++y)
        average({Row(src, srcStep, y), srcStep, Row(dst, dstStep, y), width});
    return pxOk;
}

} // namespace kelmora

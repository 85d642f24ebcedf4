#include "image/primitives/composite.h"

#include "image/primitives/byte_kernels.h"
#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/row_kernels.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

} // namespace

PxStatus pxAlphaComposite_8u_C4(const u8* src1, int src1Step, const u8* src2, int src2Step, u8* dst,
                                int dstStep, int width, int height, int op)
{
    if (!src2)
        return pxNullPointer;
    if (const PxStatus status = CheckRegions<C4, C4>(src1, src1Step, dst, dstStep, width, height))
        return status;
    if (const PxStatus status = CheckStep(src2Step, width, 4))
        return status;
    const RowKernels& kernels = RowKernelsFor(CurrentVariant());
    const auto over = op == pxAlphaOverPremultiplied ? kernels.overBgraPremultiplied : kernels.overBgra;
    for (int y = 0; y < height; ++y)
        over({Row(src1, src1Step, y), Row(src2, src2Step, y), Row(dst, dstStep, y), width});
    return pxOk;
}

PxStatus pxPremultiply_8u_A3(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    if (const PxStatus status = CheckRegions<C4, C4>(src, srcStep, dst, dstStep, width, height))
        return status;
    const auto premultiply = ByteKernelsFor(CurrentVariant()).premultiply;
    for (int y = 0; y < height; ++y)
        premultiply(Row(src, srcStep, y), Row(dst, dstStep, y), width);
    return pxOk;
}

} // namespace kelmora

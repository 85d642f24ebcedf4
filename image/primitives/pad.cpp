#include "image/primitives/pad.h"

#include "image/primitives/detail/replicate.h"

namespace kelmora {

using namespace px;
using u8 = std::uint8_t;

PxStatus pxPadReplicate_8u_C1(const u8* src, int srcStep, int srcWidth, int srcHeight, u8* dst, int dstStep,
                              int dstWidth, int dstHeight, int top, int left)
{
    return PadReplicate<C1>(src, srcStep, srcWidth, srcHeight, dst, dstStep, dstWidth, dstHeight, top, left);
}

PxStatus pxPadReplicate_8u_C4(const u8* src, int srcStep, int srcWidth, int srcHeight, u8* dst, int dstStep,
                              int dstWidth, int dstHeight, int top, int left)
{
    return PadReplicate<C4>(src, srcStep, srcWidth, srcHeight, dst, dstStep, dstWidth, dstHeight, top, left);
}

} // namespace kelmora

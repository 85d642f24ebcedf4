#include "image/image_ops.h"

#include <algorithm>

#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/primitives/byte_kernels.h"
#include "image/primitives/channels.h"
#include "image/primitives/copy.h"
#include "image/primitives/float_kernels.h"

namespace kelmora {
namespace {

/// The exact copies that there are.
enum class CopyKind { None, Bytes1, Bytes4, Float1, Float4 };

CopyKind CopyKindOf(const FrameBuffer& picture)
{
    switch (picture.GetFormat()) {
    case PF_BGRA32F:
    case PF_ARGB32F:
        return CopyKind::Float4;
    case PF_BGRA8:
    case PF_ARGB8:
        return CopyKind::Bytes4;
    case PF_Mask32F:
        return CopyKind::Float1;
    default:
        return picture.GetPixelBytes() == 1 ? CopyKind::Bytes1 : CopyKind::None;
    }
}

constexpr int BytesOf(CopyKind kind)
{
    switch (kind) {
    case CopyKind::Bytes1:
        return 1;
    case CopyKind::Bytes4:
    case CopyKind::Float1:
        return 4;
    case CopyKind::Float4:
        return 16;
    case CopyKind::None:
        break;
    }
    return 0;
}

PxStatus CopyPixels(CopyKind kind, const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                    Size size)
{
    const auto* srcFloats = reinterpret_cast<const float*>(src);
    switch (kind) {
    case CopyKind::Bytes1:
        return pxCopy_8u_C1(src, srcStep, dst, dstStep, size.width, size.height);
    case CopyKind::Bytes4:
        return pxCopy_8u_C4(src, srcStep, dst, dstStep, size.width, size.height);
    case CopyKind::Float1:
        return pxCopy_32f_C1(srcFloats, srcStep, Floats(dst), dstStep, size.width, size.height);
    case CopyKind::Float4:
        return pxCopy_32f_C4(srcFloats, srcStep, Floats(dst), dstStep, size.width, size.height);
    case CopyKind::None:
        break;
    }
    return pxNullPointer;
}

template <class Reverse>
bool ReverseRows(const FrameBuffer& src, FrameBuffer& dst, Size size, Reverse reverse)
{
    for (int y = 0; y < size.height; ++y)
        reverse(src.PixelAddress(0, y, 0), dst.PixelAddress(0, y, 0), size.width);
    return true;
}

} // namespace

bool ImageOps::Copy(const FrameBuffer& src, FrameBuffer& dst)
{
    const Size size = CommonSize(src, dst);
    if (!Holds(src, size.width, 1) || !Holds(dst, size.width, 1)
        || src.GetPixelBytes() != dst.GetPixelBytes())
        return false;
    const CopyKind kind = CopyKindOf(src);
    // Kept: a copy that copies nothing has not failed.
    if (kind == CopyKind::None)
        return true;
    if (!Holds(src, size.width, BytesOf(kind)) || !Holds(dst, size.width, BytesOf(kind)))
        return false;
    return CopyPixels(kind, src.GetPixels(), src.GetStride(), dst.GetPixels(), dst.GetStride(), size) == pxOk;
}

bool ImageOps::CopyRect(const FrameBuffer& src, int x, int y, int w, int h, FrameBuffer& dst, int dstX,
                        int dstY)
{
    const CopyKind kind = CopyKindOf(src);
    const int bytes = BytesOf(kind);
    if (kind == CopyKind::None || src.GetPixelBytes() != dst.GetPixelBytes()
        || !Holds(src, src.GetWidth(), bytes) || !Holds(dst, dst.GetWidth(), bytes))
        return false;
    if (x < 0 || y < 0 || dstX < 0 || dstY < 0)
        return false;
    const Size size = {std::min({w, src.GetWidth() - x, dst.GetWidth() - dstX}),
                       std::min({h, src.GetHeight() - y, dst.GetHeight() - dstY})};
    if (IsEmpty(size))
        return false;
    return CopyPixels(kind, src.PixelAddress(x, y, 0), src.GetStride(), dst.PixelAddress(dstX, dstY, 0),
                      dst.GetStride(), size)
        == pxOk;
}

bool ImageOps::CopyChannel(const FrameBuffer& src, FrameBuffer& dst, int srcChannel, int dstChannel)
{
    const Size size = CommonSize(src, dst);
    const int srcBytes = src.GetPixelBytes();
    const int dstBytes = dst.GetPixelBytes();
    if (!Holds(src, size.width, srcBytes) || !Holds(dst, size.width, dstBytes))
        return false;

    const bool floats = IsFloat(src.GetFormat());
    const bool bytes = IsByteColour(src.GetFormat()) || src.GetFormat() == PF_Mask8 || srcBytes == 1;
    const int channelBytes = floats ? 4 : 1;
    const int planeBytes = channelBytes;
    const int colourBytes = 4 * channelBytes;
    const auto inRange = [](int channel) { return channel >= 0 && channel <= 3; };
    // A plane starts at its one channel, whatever number came for it.
    const bool fromColour = srcBytes == colourBytes, fromPlane = srcBytes == planeBytes;
    const bool toColour = dstBytes == colourBytes, toPlane = dstBytes == planeBytes;
    if (!(floats || bytes) || (fromColour && !inRange(srcChannel)) || (toColour && !inRange(dstChannel)))
        return false;

    const std::uint8_t* from = src.PixelAddress(0, 0, fromColour ? channelBytes * srcChannel : 0);
    std::uint8_t* to = dst.PixelAddress(0, 0, toColour ? channelBytes * dstChannel : 0);
    const auto* fromFloats = reinterpret_cast<const float*>(from);
    const int ss = src.GetStride(), ds = dst.GetStride();
    const int w = size.width, h = size.height;

    if (fromColour && toPlane)
        return (floats ? pxExtractChannel_32f_C4C1(fromFloats, ss, Floats(to), ds, w, h)
                       : pxExtractChannel_8u_C4C1(from, ss, to, ds, w, h))
            == pxOk;
    if (fromPlane && toColour)
        return (floats ? pxInsertChannel_32f_C1C4(fromFloats, ss, Floats(to), ds, w, h)
                       : pxInsertChannel_8u_C1C4(from, ss, to, ds, w, h))
            == pxOk;
    if (fromColour && toColour)
        return (floats ? pxCopyChannel_32f_C4(fromFloats, ss, Floats(to), ds, w, h)
                       : pxCopyChannel_8u_C4(from, ss, to, ds, w, h))
            == pxOk;
    return false;
}

bool ImageOps::ReverseChannels(const FrameBuffer& src, FrameBuffer& dst)
{
    const Size size = CommonSize(src, dst);
    const int bytes = PixelBytesOf(src.GetFormat());
    if (!IsPicture(src.GetFormat()) || !Holds(src, size.width, bytes) || !Holds(dst, size.width, bytes))
        return false;
    const CpuVariant variant = CurrentVariant();
    return IsFloat(src.GetFormat()) ? ReverseRows(src, dst, size, FloatKernelsFor(variant).reverse)
                                    : ReverseRows(src, dst, size, ByteKernelsFor(variant).reverse);
}

} // namespace kelmora

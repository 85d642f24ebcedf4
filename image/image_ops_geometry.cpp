#include "image/image_ops.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/primitives/resize.h"
#include "image/primitives/warp.h"

namespace kelmora {
namespace {

/// A part of a picture, by its first pixel and the ones beyond its last.
struct Bounds {
    int left, top, right, bottom;
};

bool LiesIn(const FrameBuffer& picture, const Bounds& rect)
{
    return rect.left >= 0 && rect.left < rect.right && rect.right <= picture.GetWidth() && rect.top >= 0
        && rect.top < rect.bottom && rect.bottom <= picture.GetHeight()
        && Holds(picture, rect.right, picture.GetPixelBytes());
}

int InterpolationOf(int quality)
{
    switch (quality) {
    case 0:
        return pxNearest;
    case 2:
        return pxCubic;
    case 3:
        return pxLanczos;
    default:
        return pxLinear;
    }
}

} // namespace

bool ImageOps::ResizeRect(const FrameBuffer& src, FrameBuffer& dst, int srcLeft, int srcTop, int srcRight,
                          int srcBottom, int dstLeft, int dstTop, int dstRight, int dstBottom, int quality,
                          double xFactor, double yFactor)
{
    if (src.GetPixelBytes() != dst.GetPixelBytes())
        return false;
    if (!LiesIn(src, {srcLeft, srcTop, srcRight, srcBottom})
        || !LiesIn(dst, {dstLeft, dstTop, dstRight, dstBottom}))
        return false;

    const PxRect region = {0, 0, srcRight - srcLeft, srcBottom - srcTop};
    const Size size = {dstRight - dstLeft, dstBottom - dstTop};
    if (xFactor == 0.0)
        xFactor = static_cast<double>(size.width) / region.width;
    if (yFactor == 0.0)
        yFactor = static_cast<double>(size.height) / region.height;
    const int interpolation = InterpolationOf(quality);
    const std::uint8_t* const from = src.PixelAddress(srcLeft, srcTop, 0);
    std::uint8_t* const to = dst.PixelAddress(dstLeft, dstTop, 0);
    const auto run = [&](auto resize, auto* first, auto* firstOut) {
        return resize(first, region.width, region.height, src.GetStride(), region, firstOut, dst.GetStride(),
                      size.width, size.height, xFactor, yFactor, interpolation)
            == pxOk;
    };
    const auto* const floats = reinterpret_cast<const float*>(from);
    const std::uint32_t format = src.GetFormat();
    switch (src.GetPixelBytes()) {
    case 1:
        return run(pxResize_8u_C1, from, to);
    case 4:
        if (format == PF_Mask32F)
            return run(pxResize_32f_C1, floats, Floats(to));
        return !IsByteColour(format) || run(pxResize_8u_C4, from, to);
    case 16:
        return !IsFloatColour(format) || run(pxResize_32f_C4, floats, Floats(to));
    default:
        return true;
    }
}

bool ImageOps::WarpAffine(const FrameBuffer& src, FrameBuffer& dst, const Transform2D& t)
{
    const Size size = CommonSize(src, dst);
    const std::uint32_t format = src.GetFormat();
    const int bytes = PixelBytesOf(format);
    if (format != dst.GetFormat() || bytes == 0 || !Holds(src, size.width, bytes)
        || !Holds(dst, size.width, bytes))
        return false;
    const PxRect region = {0, 0, size.width, size.height};
    const Transform2D::Coefficients coeffs = t.ToCoefficients();
    const auto run = [&](auto warp, const auto* from, auto* to) {
        return warp(from, size.width, size.height, src.GetStride(), region, to, dst.GetStride(), region,
                    coeffs.rows, pxLinear)
            == pxOk;
    };
    if (IsFloatColour(format))
        return run(pxWarpAffine_32f_C4, Floats(src.GetPixels()), Floats(dst.GetPixels()));
    if (IsByteColour(format))
        return run(pxWarpAffine_8u_C4, src.GetPixels(), dst.GetPixels());
    return format == PF_Mask8 && run(pxWarpAffine_8u_C1, src.GetPixels(), dst.GetPixels());
}

bool ImageOps::WarpQuad(const FrameBuffer& src, FrameBuffer& dst, const double quad[4][2],
                        std::uint32_t interpolation)
{
    const std::uint32_t format = src.GetFormat();
    const int bytes = PixelBytesOf(format);
    if (format != dst.GetFormat() || !IsPicture(format) || !Holds(src, src.GetWidth(), bytes)
        || !Holds(dst, dst.GetWidth(), bytes))
        return false;
    const PxRect from = {0, 0, src.GetWidth(), src.GetHeight()};
    const PxRect to = {0, 0, dst.GetWidth(), dst.GetHeight()};
    double coeffs[3][3];
    if (pxQuadTransform(from, quad, coeffs) != pxOk)
        return false;
    const auto run = [&](auto warp, const auto* first, auto* firstOut) {
        return warp(first, from.width, from.height, src.GetStride(), from, firstOut, dst.GetStride(), to,
                    coeffs, interpolation)
            == pxOk;
    };
    if (IsFloat(format))
        return run(pxWarpQuad_32f_C4, Floats(src.GetPixels()), Floats(dst.GetPixels()));
    return run(pxWarpQuad_8u_C4, src.GetPixels(), dst.GetPixels());
}

} // namespace kelmora

#include <algorithm>
#include <type_traits>

#include "image/exact_math.h"
#include "image/image_ops.h"
#include "image/levels.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/pixel_layouts.h"
#include "image/primitives/arithmetic.h"
#include "image/primitives/byte_kernels.h"
#include "image/primitives/colour.h"
#include "image/primitives/float_kernels.h"
#include "image/primitives/hsv_kernels.h"
#include "image/primitives/ycbcr.h"

namespace kelmora {
namespace {

bool HoldPictures(const FrameBuffer& src, const FrameBuffer& dst, Size size)
{
    const int bytes = PixelBytesOf(src.GetFormat());
    return IsPicture(src.GetFormat()) && src.GetPixelBytes() == dst.GetPixelBytes()
        && Holds(src, size.width, bytes) && Holds(dst, size.width, bytes);
}

// --- hue, saturation, value -----------------------------------------------------------------------------

bool MapRows(const FrameBuffer& src, FrameBuffer& dst, Size size, HsvKernels::Row row)
{
    for (int y = 0; y < size.height; ++y)
        row(src.PixelAddress(0, y, 0), dst.PixelAddress(0, y, 0), size.width);
    return true;
}

// --- tint -----------------------------------------------------------------------------------------------

/// Blue, green and red have these places in the colour of a tint.
struct TintColour {
    int red, green, blue;

    explicit TintColour(std::uint32_t colour)
        : red(static_cast<int>(colour & 0xFF)), green(static_cast<int>((colour >> 8) & 0xFF)),
          blue(static_cast<int>((colour >> 16) & 0xFF))
    {
    }
};

template <class P>
void TintFloats(const FrameBuffer& src, FrameBuffer& dst, Size size, TintColour colour)
{
    FloatTintRow row = {};
    row.pixels = size.width;
    row.red = colour.red * kByteUnit;
    row.green = colour.green * kByteUnit;
    row.blue = colour.blue * kByteUnit;
    row.alpha = kByteUnit;
    const FloatKernels& kernels = FloatKernelsFor(CurrentVariant());
    const auto tint = P::a == 0 ? kernels.tintArgb : kernels.tintBgra;
    for (int y = 0; y < size.height; ++y) {
        row.src = src.PixelAddress(0, y, 0);
        row.dst = dst.PixelAddress(0, y, 0);
        tint(row);
    }
}

template <class P>
void TintBytes(const FrameBuffer& src, FrameBuffer& dst, Size size, TintColour colour)
{
    TintRow row = {};
    row.pixels = size.width;
    const auto setChannel = [&row](int place, int luma, int level) {
        row.luma[place] = static_cast<std::int16_t>(luma);
        row.scale[place] = level * kByteUnit / 1000.0;
    };
    setChannel(P::r, 298, colour.red);
    setChannel(P::g, 586, colour.green);
    setChannel(P::b, 113, colour.blue);
    const ByteKernels& kernels = ByteKernelsFor(CurrentVariant());
    const auto tint = P::a == 0 ? kernels.tintAlphaFirst : kernels.tintAlphaLast;
    for (int y = 0; y < size.height; ++y) {
        row.src = src.PixelAddress(0, y, 0);
        row.dst = dst.PixelAddress(0, y, 0);
        tint(row);
    }
}

// --- the four knobs of a colour ---------------------------------------------------------------------------

struct Twist {
    float rows[3][4];
};

Twist TwistOf(const ColorMatrix& matrix)
{
    Twist twist;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c)
            twist.rows[r][c] = matrix.m[c][r];
        twist.rows[r][3] = matrix.m[4][r];
    }
    return twist;
}

/// The middle of each knob is near to neutral.
ColorMatrix Adjustment(ImageOps& ops, bool floats, double contrast, double brightness, double saturation,
                       double hue)
{
    const double curve =
        contrast < 0.5 ? contrast * 0.4575 / 0.5 : 1.0 - (1.0 - contrast) * (1.0 - 0.4575) / 0.5;
    const auto gain = static_cast<float>(curve * curve * 3.8 + 0.2);
    const auto offset = static_cast<float>(floats ? brightness * 2.0 - 1.0 : brightness * 512.0 - 256.0);
    ColorMatrix matrix;
    ops.ColorMatrixScale(matrix, gain, gain, gain, 1.0f);
    ops.ColorMatrixOffset(matrix, offset, offset, offset, 0.0f);
    ops.ColorMatrixSaturate(matrix, static_cast<float>(ExactPower(saturation, 1.58496) * 3.0));
    ops.ColorMatrixHue(matrix, static_cast<float>(180.0 - hue * 360.0));
    return matrix;
}

void ClampRows(FrameBuffer& picture, Size size)
{
    const auto clamp = FloatKernelsFor(CurrentVariant()).clamp;
    for (int y = 0; y < size.height; ++y)
        clamp(picture.PixelAddress(0, y, 0), 4 * size.width);
}

/// For pictures with alpha last.
void TwistPicture(const FrameBuffer& src, FrameBuffer& dst, Size size, const Twist& twist)
{
    if (IsFloat(src.GetFormat())) {
        pxColorTwist_32f_A3(Floats(src.GetPixels()), src.GetStride(), Floats(dst.GetPixels()),
                            dst.GetStride(), size.width, size.height, twist.rows);
        ClampRows(dst, size);
    } else {
        pxColorTwist_8u_A3(src.GetPixels(), src.GetStride(), dst.GetPixels(), dst.GetStride(), size.width,
                           size.height, twist.rows);
    }
}

/// The rows from `first` on.
void AttachRows(FrameBuffer& view, const FrameBuffer& picture, int first, Size size)
{
    view.Attach(picture.PixelAddress(0, first, 0), size.width, size.height, picture.GetStride(),
                picture.GetPixelBytes(), picture.GetFormat(), false);
}

/// For pictures with alpha first: a strip at a time is turned round, changed and turned back.
void TwistReversed(ImageOps& ops, const FrameBuffer& src, FrameBuffer& dst, Size size, const Twist& twist,
                   MemoryAllocator* allocator)
{
    constexpr int kStripRows = 16;
    FrameBuffer strip;
    if (!strip.Allocate(size.width, std::min(size.height, kStripRows), PixelBytesOf(src.GetFormat()),
                        allocator, AlphaLast(src.GetFormat()), false))
        return;
    for (int y = 0; y < size.height; y += kStripRows) {
        const Size part = {size.width, std::min(kStripRows, size.height - y)};
        FrameBuffer from, to;
        AttachRows(from, src, y, part);
        AttachRows(to, dst, y, part);
        ops.ReverseChannels(from, strip);
        TwistPicture(strip, strip, part, twist);
        // The last strip may be lower than the scratch picture, never higher.
        ops.ReverseChannels(strip, to);
    }
}

// --- YCbCr of floats --------------------------------------------------------------------------------------

/// The three colours of a PF_ARGB32F picture.
template <class Primitive>
bool OnColours(const FrameBuffer& src, FrameBuffer& dst, Primitive primitive)
{
    const Size size = CommonSize(src, dst);
    if (src.GetFormat() != PF_ARGB32F || dst.GetFormat() != PF_ARGB32F || !Holds(src, size.width, 16)
        || !Holds(dst, size.width, 16))
        return false;
    return primitive(Floats(src.PixelAddress(0, 0, 4)), src.GetStride(), Floats(dst.PixelAddress(0, 0, 4)),
                     dst.GetStride(), size)
        == pxOk;
}

bool Add(const FrameBuffer& src, FrameBuffer& dst, const float (&consts)[3])
{
    return OnColours(src, dst, [&](const float* s, int ss, float* d, int ds, Size size) {
        return pxAddConst_32f_A3(s, ss, consts, d, ds, size.width, size.height);
    });
}

bool Multiply(const FrameBuffer& src, FrameBuffer& dst, const float (&consts)[3])
{
    return OnColours(src, dst, [&](const float* s, int ss, float* d, int ds, Size size) {
        return pxMulConst_32f_A3(s, ss, consts, d, ds, size.width, size.height);
    });
}

bool TwistColours(const FrameBuffer& src, FrameBuffer& dst, const float (&twist)[3][4])
{
    return OnColours(src, dst, [&](const float* s, int ss, float* d, int ds, Size size) {
        return pxColorTwist_32f_A3(s, ss, d, ds, size.width, size.height, twist);
    });
}

} // namespace

bool ImageOps::RGBToHSV(const FrameBuffer& src, FrameBuffer& dst)
{
    const Size size = CommonSize(src, dst);
    if (!HoldPictures(src, dst, size))
        return false;
    const HsvKernels& kernels = HsvKernelsFor(CurrentVariant());
    switch (src.GetFormat()) {
    case PF_BGRA32F:
        return MapRows(src, dst, size, kernels.bgra32fToHsv);
    case PF_ARGB32F:
        return MapRows(src, dst, size, kernels.argb32fToHsv);
    case PF_ARGB8:
        return MapRows(src, dst, size, kernels.argb8ToHsv);
    default:
        return Copy(src, dst)
            && pxRGBToHSV_8u_A3(src.GetPixels(), src.GetStride(), dst.GetPixels(), dst.GetStride(),
                                size.width, size.height)
            == pxOk;
    }
}

bool ImageOps::HSVToRGB(const FrameBuffer& src, FrameBuffer& dst)
{
    const Size size = CommonSize(src, dst);
    if (!HoldPictures(src, dst, size))
        return false;
    const HsvKernels& kernels = HsvKernelsFor(CurrentVariant());
    switch (src.GetFormat()) {
    case PF_BGRA32F:
        return MapRows(src, dst, size, kernels.bgra32fToRgb);
    case PF_ARGB32F:
        return MapRows(src, dst, size, kernels.argb32fToRgb);
    case PF_ARGB8:
        return MapRows(src, dst, size, kernels.argb8ToRgb);
    default:
        return pxHSVToRGB_8u_A3(src.GetPixels(), src.GetStride(), dst.GetPixels(), dst.GetStride(),
                                size.width, size.height)
            == pxOk
            && CopyChannel(src, dst, 3, 3);
    }
}

bool ImageOps::Tint(const FrameBuffer& src, FrameBuffer& dst, std::uint32_t colour)
{
    const Size size = CommonSize(src, dst);
    if (!HoldPictures(src, dst, size))
        return false;
    return WithLayout(src.GetFormat(), [&](auto layout) {
        using P = decltype(layout);
        if constexpr (std::is_same_v<typename P::Channel, float>)
            TintFloats<P>(src, dst, size, TintColour(colour));
        else
            TintBytes<P>(src, dst, size, TintColour(colour));
    });
}

bool ImageOps::ClampFloats(FrameBuffer& frame)
{
    if (frame.GetFormat() != PF_BGRA32F || !Holds(frame, frame.GetWidth(), 16))
        return false;
    ClampRows(frame, SizeOf(frame));
    return true;
}

bool ImageOps::AdjustColor(const FrameBuffer& src, FrameBuffer& dst, float contrast, float brightness,
                           float saturation, float hue, MemoryAllocator* allocator)
{
    const std::uint32_t format = src.GetFormat();
    if (!IsPicture(format))
        return Copy(src, dst);
    const Size size = CommonSize(src, dst);
    if (!HoldPictures(src, dst, size))
        return false;
    const Twist twist = TwistOf(Adjustment(*this, IsFloat(format), static_cast<double>(contrast),
                                           static_cast<double>(brightness), static_cast<double>(saturation),
                                           static_cast<double>(hue)));
    if (IsAlphaFirst(format))
        TwistReversed(*this, src, dst, size, twist, allocator);
    else
        TwistPicture(src, dst, size, twist);
    if (format == PF_BGRA32F && size != SizeOf(dst))
        ClampFloats(dst);
    const int alpha = AlphaIndex(format);
    return CopyChannel(src, dst, alpha, alpha);
}

bool ImageOps::ARGBToYCbCr32F(const FrameBuffer& src, FrameBuffer& dst)
{
    return TwistColours(src, dst,
                        {{0.299f, 0.587f, 0.114f, 0.0f},
                         {-0.168736f, -0.331264f, 0.5f, 0.5f},
                         {0.5f, -0.418688f, -0.081312f, 0.5f}})
        && Multiply(src, dst, {0.85882354f, 0.8784314f, 0.8784314f})
        && Add(src, dst, {0.0f, 0.0627451f, 0.0627451f});
}

bool ImageOps::YCbCrToARGB32F(const FrameBuffer& src, FrameBuffer& dst)
{
    return Add(src, dst, {0.0f, -0.0627451f, -0.0627451f})
        && Multiply(src, dst, {1.1643835f, 1.1383928f, 1.1383928f}) && Add(src, dst, {0.0f, -0.5f, -0.5f})
        && TwistColours(
               src, dst,
               {{1.0f, 0.0f, 1.402f, 0.0f}, {1.0f, -0.344f, -0.714f, 0.0f}, {1.0f, 1.772f, 0.0f, 0.0f}});
}

bool ImageOps::BGRAToRGB24(const FrameBuffer& src, FrameBuffer& dst)
{
    const Size size = CommonSize(src, dst);
    if (!Holds(src, size.width, 4) || !Holds(dst, size.width, 3))
        return false;
    for (int y = 0; y < size.height; ++y) {
        const std::uint8_t* from = src.PixelAddress(0, y, 0);
        std::uint8_t* to = dst.PixelAddress(0, y, 0);
        for (int x = 0; x < size.width; ++x, from += 4, to += 3) {
            const std::uint8_t blue = from[0], green = from[1], red = from[2];
            to[0] = red;
            to[1] = green;
            to[2] = blue;
        }
    }
    return true;
}

bool ImageOps::RGB24ToBGRA(const FrameBuffer& src, FrameBuffer& dst, int alpha)
{
    const Size size = CommonSize(src, dst);
    if (!Holds(src, size.width, 3) || !Holds(dst, size.width, 4))
        return false;
    for (int y = 0; y < size.height; ++y) {
        const std::uint8_t* from = src.PixelAddress(0, y, 0);
        std::uint8_t* to = dst.PixelAddress(0, y, 0);
        for (int x = 0; x < size.width; ++x, from += 3, to += 4) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
            to[3] = static_cast<std::uint8_t>(alpha);
        }
    }
    return true;
}

bool ImageOps::RGB24ToYCbCr422(const FrameBuffer& src, FrameBuffer& dst)
{
    const Size size = CommonSize(src, dst);
    return Holds(src, size.width, 3) && Holds(dst, size.width, 2)
        && pxRGBToYCbCr422(src.GetPixels(), src.GetStride(), dst.GetPixels(), dst.GetStride(), size.width,
                           size.height)
        == pxOk;
}

bool ImageOps::YCbCr422ToRGB24(const FrameBuffer& src, FrameBuffer& dst)
{
    const Size size = CommonSize(src, dst);
    return Holds(src, size.width, 2) && Holds(dst, size.width, 3)
        && pxYCbCr422ToRGB(src.GetPixels(), src.GetStride(), dst.GetPixels(), dst.GetStride(), size.width,
                           size.height)
        == pxOk;
}

} // namespace kelmora

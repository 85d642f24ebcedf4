#include <algorithm>

#include "image/image_ops.h"
#include "image/levels.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/pixel_layouts.h"
#include "image/primitives/arithmetic.h"
#include "image/primitives/channels.h"
#include "image/primitives/composite.h"
#include "image/primitives/convert_kernels.h"
#include "image/primitives/cpu_variant.h"
#include "image/primitives/detail/byte_product.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/float_kernels.h"
#include "image/primitives/row_kernels.h"
#include "image/primitives/set.h"

namespace kelmora {
namespace {

using px::LooseFloat;

Size CommonSize(const FrameBuffer& a, const FrameBuffer& b, const FrameBuffer& c)
{
    const Size size = CommonSize(a, b);
    return {std::min(size.width, c.GetWidth()), std::min(size.height, c.GetHeight())};
}

/// The first picture's format decides what all are taken for.
bool HoldAlike(const FrameBuffer& a, const FrameBuffer& b, int width, int bytes)
{
    return a.GetPixelBytes() == b.GetPixelBytes() && Holds(a, width, bytes) && Holds(b, width, bytes);
}

const LooseFloat* ReadFloats(const FrameBuffer& picture, int y)
{
    return reinterpret_cast<const LooseFloat*>(picture.PixelAddress(0, y, 0));
}

LooseFloat* WriteFloats(FrameBuffer& picture, int y)
{
    return reinterpret_cast<LooseFloat*>(picture.PixelAddress(0, y, 0));
}

int ByteOfColour(std::uint32_t colour, int place)
{
    return static_cast<int>((colour >> (8 * place)) & 0xFF);
}

// --- conversion -----------------------------------------------------------------------------------------

/// The pairs of formats that Convert serves, but for those of one type.
struct Conversion {
    bool served;
    bool reverses;
};

constexpr Conversion ConversionOf(std::uint32_t src, std::uint32_t dst)
{
    const bool toFloat = IsByteColour(src) && IsFloatColour(dst);
    const bool toByte = IsFloatColour(src) && IsByteColour(dst);
    const bool same = IsAlphaFirst(src) == IsAlphaFirst(dst);
    const bool reverses = (src == PF_BGRA8 && dst == PF_ARGB32F) || (src == PF_ARGB32F && dst == PF_BGRA8);
    return {(toFloat || toByte) && (same || reverses), reverses};
}

// --- alpha ----------------------------------------------------------------------------------------------

template <class RowOp>
void ForRows(const FrameBuffer& a, const FrameBuffer& b, FrameBuffer& out, Size size, RowOp op)
{
    for (int y = 0; y < size.height; ++y)
        op(a.PixelAddress(0, y, 0), b.PixelAddress(0, y, 0), out.PixelAddress(0, y, 0), size.width);
}

void OverRows(const FrameBuffer& a, const FrameBuffer& b, FrameBuffer& out, Size size,
              void (*over)(const OverRow&))
{
    ForRows(a, b, out, size,
            [=](const std::uint8_t* first, const std::uint8_t* second, std::uint8_t* to, int width) {
                over({first, second, to, width});
            });
}

template <class P>
void PremultiplyFloats(const LooseFloat* from, LooseFloat* to, int width)
{
    for (int x = 0; x < width; ++x, from += 4, to += 4) {
        const float alpha = from[P::a];
        for (const int c : {P::b, P::g, P::r})
            to[c] = from[c] * alpha;
    }
}

void PremultiplyArgb(const std::uint8_t* from, std::uint8_t* to, int width)
{
    for (int x = 0; x < width; ++x, from += 4, to += 4) {
        const std::uint8_t alpha = from[Argb8::a];
        for (const int c : {Argb8::r, Argb8::g, Argb8::b})
            to[c] = px::ByteProduct(from[c], alpha);
    }
}

// --- weights --------------------------------------------------------------------------------------------

BlendRow<int> ByteWeights(float wa, float wb)
{
    BlendRow<int> row = {};
    row.firstWeight = TruncateToByte(static_cast<double>(wa) * 255.0 + 0.5);
    row.secondWeight = TruncateToByte(static_cast<double>(wb) * 255.0 + 0.5);
    row.saturates = row.firstWeight + row.secondWeight > 255;
    return row;
}

BlendRow<double> FloatWeights(float wa, float wb)
{
    const float first = ClampLevel(wa), second = ClampLevel(wb);
    BlendRow<double> row = {};
    row.firstWeight = static_cast<double>(first);
    row.secondWeight = static_cast<double>(second);
    row.saturates = first + second > 1.0f;
    return row;
}

template <class Weight>
void Blend(const FrameBuffer& a, const FrameBuffer& b, FrameBuffer& out, Size size, BlendRow<Weight> weights,
           void (*kernel)(const BlendRow<Weight>&))
{
    ForRows(a, b, out, size,
            [&](const std::uint8_t* first, const std::uint8_t* second, std::uint8_t* to, int width) {
                weights.first = first;
                weights.second = second;
                weights.dst = to;
                weights.values = 4 * width;
                kernel(weights);
            });
}

/// Calls row(a, b) for the first values of every two rows.
template <class RowWork>
bool ForRows(const FrameBuffer& a, FrameBuffer& b, Size size, RowWork row)
{
    for (int y = 0; y < size.height; ++y)
        row(a.PixelAddress(0, y, 0), b.PixelAddress(0, y, 0));
    return true;
}

bool MixBytes(const FrameBuffer& a, FrameBuffer& b, Size size, int wa, int wb)
{
    const auto mix = RowKernelsFor(CurrentVariant()).mixBytes;
    const int values = size.width * PixelBytesOf(a.GetFormat());
    return ForRows(a, b, size, [&](const auto* from, auto* to) { mix({from, to, to, values, wa, wb}); });
}

bool MixFloats(const FrameBuffer& a, FrameBuffer& b, Size size, int wa, int wb)
{
    const auto mix = RowKernelsFor(CurrentVariant()).mixFloats;
    return ForRows(a, b, size, [&](const auto* from, auto* to) {
        mix({from, to, to, size.width * 4, LevelOf(wa), LevelOf(wb)});
    });
}

/// The exact halving of two pictures.
bool MeanBytes(const FrameBuffer& a, FrameBuffer& b, Size size)
{
    return pxAddScaled_8u_C4_I(a.GetPixels(), a.GetStride(), b.GetPixels(), b.GetStride(), size.width,
                               size.height, 1)
        == pxOk;
}

bool MeanFloats(const FrameBuffer& a, FrameBuffer& b, Size size)
{
    const auto mean = FloatKernelsFor(CurrentVariant()).mean;
    return ForRows(a, b, size, [&](const auto* from, auto* to) { mean(from, to, size.width * 4); });
}

} // namespace

bool ImageOps::SetChannel(FrameBuffer& frame, int channel, int value)
{
    const int width = frame.GetWidth(), height = frame.GetHeight();
    const int level = std::clamp(value, 0, 255);
    if (channel < 0 || channel > 3)
        return false;
    if (IsFloatColour(frame.GetFormat()) && frame.GetPixelBytes() == 16 && Holds(frame, width, 16))
        return pxSetChannel_32f_C4(LevelOf(level), Floats(frame.PixelAddress(0, 0, 4 * channel)),
                                   frame.GetStride(), width, height)
            == pxOk;
    if (IsByteColour(frame.GetFormat()) && frame.GetPixelBytes() == 4 && Holds(frame, width, 4))
        return pxSetChannel_8u_C4(static_cast<std::uint8_t>(level), frame.PixelAddress(0, 0, channel),
                                  frame.GetStride(), width, height)
            == pxOk;
    return false;
}

bool ImageOps::Fill(FrameBuffer& frame, std::uint32_t colour)
{
    const int width = frame.GetWidth(), height = frame.GetHeight(), step = frame.GetStride();
    const int pixelBytes = frame.GetPixelBytes();
    std::uint8_t* pixels = frame.GetPixels();
    const auto level = [colour](int place) { return LevelOf(ByteOfColour(colour, place)); };
    const auto byte = [colour](int place) { return static_cast<std::uint8_t>(ByteOfColour(colour, place)); };

    if (IsFloat(frame.GetFormat()) && pixelBytes == 16 && Holds(frame, width, 16)) {
        const float last[4] = {level(0), level(1), level(2), level(3)};
        const float first[4] = {level(3), level(2), level(1), level(0)};
        const float* values = frame.GetFormat() == PF_BGRA32F ? last : first;
        return pxSet_32f_C4(values, Floats(pixels), step, width, height) == pxOk;
    }
    if (IsFloat(frame.GetFormat()))
        return pixelBytes == 4 && Holds(frame, width, 4)
            && pxSet_32f_C1(level(0), Floats(pixels), step, width, height) == pxOk;
    if (IsByteColour(frame.GetFormat())) {
        const std::uint8_t values[4] = {byte(0), byte(1), byte(2), byte(3)};
        return Holds(frame, width, 4) && pxSet_8u_C4(values, pixels, step, width, height) == pxOk;
    }
    return pixelBytes == 1 && Holds(frame, width, 1)
        && pxSet_8u_C1(byte(0), pixels, step, width, height) == pxOk;
}

bool ImageOps::PermuteChannels(FrameBuffer& frame, const int order[4])
{
    const int width = frame.GetWidth();
    return IsByteColour(frame.GetFormat()) && Holds(frame, width, 4)
        && pxSwapChannels_8u_C4_I(frame.GetPixels(), frame.GetStride(), width, frame.GetHeight(), order)
        == pxOk;
}

bool ImageOps::Convert(const FrameBuffer& src, FrameBuffer& dst)
{
    const std::uint32_t from = src.GetFormat(), to = dst.GetFormat();
    const bool sameType =
        (IsByteColour(from) && IsByteColour(to)) || (IsFloatColour(from) && IsFloatColour(to));
    if (sameType)
        return from != to && ReverseChannels(src, dst);

    const Conversion conversion = ConversionOf(from, to);
    const Size size = CommonSize(src, dst);
    if (!conversion.served || !Holds(src, size.width, PixelBytesOf(from))
        || !Holds(dst, size.width, PixelBytesOf(to)))
        return false;
    const ConvertKernels& kernels = ConvertKernelsFor(CurrentVariant());
    const auto row = IsFloat(to) ? (conversion.reverses ? kernels.toFloatsReversed : kernels.toFloats)
                                 : (conversion.reverses ? kernels.toBytesReversed : kernels.toBytes);
    for (int y = 0; y < size.height; ++y)
        row(src.PixelAddress(0, y, 0), dst.PixelAddress(0, y, 0), size.width);
    return true;
}

bool ImageOps::AlphaOver(const FrameBuffer& a, const FrameBuffer& b, FrameBuffer& out, bool premultiplied)
{
    const Size size = CommonSize(a, b, out);
    const std::uint32_t format = a.GetFormat();
    const int bytes = IsFloatColour(format) ? 16 : 4;
    const bool known = IsPicture(format) || a.GetPixelBytes() == 4;
    if (!known || !HoldAlike(a, b, size.width, bytes) || !HoldAlike(a, out, size.width, bytes))
        return false;
    const RowKernels& rows = RowKernelsFor(CurrentVariant());
    const FloatKernels& floats = FloatKernelsFor(CurrentVariant());
    switch (format) {
    case PF_BGRA32F:
        OverRows(a, b, out, size, premultiplied ? floats.overBgraPremultiplied : floats.overBgra);
        return true;
    case PF_ARGB32F:
        OverRows(a, b, out, size, premultiplied ? floats.overArgbPremultiplied : floats.overArgb);
        return true;
    case PF_ARGB8:
        OverRows(a, b, out, size, premultiplied ? rows.overArgbPremultiplied : rows.overArgb);
        return true;
    default:
        // Steps of whole pixels, also where the stride is none.
        return pxAlphaComposite_8u_C4(a.GetPixels(), a.GetRowPixels() * 4, b.GetPixels(),
                                      b.GetRowPixels() * 4, out.GetPixels(), out.GetRowPixels() * 4,
                                      size.width, size.height,
                                      premultiplied ? pxAlphaOverPremultiplied : pxAlphaOver)
            == pxOk;
    }
}

bool ImageOps::Premultiply(const FrameBuffer& src, FrameBuffer& dst)
{
    const Size size = CommonSize(src, dst);
    const std::uint32_t format = src.GetFormat();
    const int bytes = PixelBytesOf(format);
    if (!IsPicture(format) || !HoldAlike(src, dst, size.width, bytes))
        return false;
    if (format == PF_BGRA8)
        return pxPremultiply_8u_A3(src.GetPixels(), src.GetStride(), dst.GetPixels(), dst.GetStride(),
                                   size.width, size.height)
            == pxOk;
    for (int y = 0; y < size.height; ++y) {
        if (format == PF_ARGB8)
            PremultiplyArgb(src.PixelAddress(0, y, 0), dst.PixelAddress(0, y, 0), size.width);
        else if (format == PF_ARGB32F)
            PremultiplyFloats<Argb32F>(ReadFloats(src, y), WriteFloats(dst, y), size.width);
        else
            PremultiplyFloats<Bgra32F>(ReadFloats(src, y), WriteFloats(dst, y), size.width);
    }
    return true;
}

bool ImageOps::AddWeighted(const FrameBuffer& a, const FrameBuffer& b, FrameBuffer& out, float wa, float wb)
{
    const Size size = CommonSize(a, b, out);
    const std::uint32_t format = a.GetFormat();
    const int bytes = PixelBytesOf(format);
    if (!IsPicture(format) || !HoldAlike(a, b, size.width, bytes) || !HoldAlike(a, out, size.width, bytes))
        return false;
    const RowKernels& kernels = RowKernelsFor(CurrentVariant());
    if (IsFloat(format))
        Blend(a, b, out, size, FloatWeights(wa, wb), kernels.blendFloats);
    else
        Blend(a, b, out, size, ByteWeights(wa, wb), kernels.blendBytes);
    return true;
}

bool ImageOps::Mix(const FrameBuffer& a, FrameBuffer& b, int wa, int wb)
{
    const Size size = CommonSize(a, b);
    const std::uint32_t format = a.GetFormat();
    const int bytes = PixelBytesOf(format);
    const bool plane = format == PF_Mask8;
    if (!(IsPicture(format) || plane) || !HoldAlike(a, b, size.width, bytes))
        return false;
    const int first = std::clamp(wa, 0, 255), second = std::clamp(wb, 0, 255);
    const bool even = first == 128 && second == 128;
    if (IsFloat(format))
        return even ? MeanFloats(a, b, size) : MixFloats(a, b, size, first, second);
    return even && !plane ? MeanBytes(a, b, size) : MixBytes(a, b, size, first, second);
}

} // namespace kelmora

#include "effects/scene3d/scene_canvas.h"

#include <algorithm>
#include <cstring>

#include "effects/scene3d/face_light.h"
#include "image/image_ops.h"
#include "image/levels.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/pixel_layouts.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/warp.h"

namespace kelmora {
namespace {

/// The bytes of 0x00BBGGRR.
struct Colour {
    std::uint8_t r, g, b;
};

Colour ColourOf(std::uint32_t packed)
{
    return {static_cast<std::uint8_t>(packed), static_cast<std::uint8_t>(packed >> 8),
            static_cast<std::uint8_t>(packed >> 16)};
}

template <class P>
void FillPixel(std::uint8_t* pixel, Colour colour)
{
    if constexpr (std::is_same_v<typename P::Channel, float>) {
        auto* channel = px::Loose(Floats(pixel));
        const auto level = [](std::uint8_t value) { return static_cast<float>(value / 255.0); };
        channel[P::r] = level(colour.r);
        channel[P::g] = level(colour.g);
        channel[P::b] = level(colour.b);
    } else {
        pixel[P::r] = colour.r;
        pixel[P::g] = colour.g;
        pixel[P::b] = colour.b;
    }
}

} // namespace

bool SceneCanvas::Attach(const VideoFrame* frame)
{
    Detach();
    aspect = 1.0;
    if (!AttachFrame(frame) || !GetPixels())
        return false;
    canvasWidth = GetWidth();
    canvasHeight = GetHeight();
    return true;
}

void SceneCanvas::Detach()
{
    Release();
    canvasWidth = canvasHeight = 0;
}

void SceneCanvas::CopyFrom(const FrameBuffer& picture, std::uint32_t padColour)
{
    if (!IsValid() || IsEmpty(SizeOf(picture)) || !picture.GetPixels())
        return;
    if (canvasWidth <= picture.GetWidth() && canvasHeight <= picture.GetHeight()) {
        ImageOps ops;
        ops.Copy(picture, *this);
        return;
    }
    constexpr int kWord = 4;
    if (!Holds(*this, canvasWidth, kWord)
        || !Holds(picture, std::min(canvasWidth, picture.GetWidth()), kWord))
        return;
    const Colour pad = ColourOf(padColour);
    const std::uint8_t padPixel[kWord] = {pad.b, pad.g, pad.r, 0};
    const int copied = std::min(canvasWidth, picture.GetWidth());
    for (int y = 0; y < canvasHeight; ++y) {
        std::uint8_t* const row = PixelAddress(0, y, 0);
        const int fromPicture = y < picture.GetHeight() ? copied : 0;
        if (fromPicture > 0)
            std::memmove(row, picture.PixelAddress(0, y, 0), static_cast<std::size_t>(fromPicture) * kWord);
        for (int x = fromPicture; x < canvasWidth; ++x)
            std::memcpy(row + std::ptrdiff_t{x} * kWord, padPixel, kWord);
    }
}

void SceneCanvas::Fill(std::uint32_t colour, bool clearAlpha)
{
    if (!IsValid() || !Holds(*this, canvasWidth, GetPixelBytes()))
        return;
    const Colour fill = ColourOf(colour);
    if (fill.r == 0 && fill.g == 0 && fill.b == 0) {
        for (int y = 0; y < canvasHeight; ++y)
            std::memset(PixelAddress(0, y, 0), 0,
                        static_cast<std::size_t>(canvasWidth) * static_cast<std::size_t>(GetPixelBytes()));
        return;
    }
    if (GetPixelBytes() == PixelBytesOf(GetFormat()))
        WithLayout(GetFormat(), [&]<class P>(P) {
            for (int y = 0; y < canvasHeight; ++y) {
                std::uint8_t* pixel = GetPixels() + std::ptrdiff_t{GetStride()} * y;
                for (int x = 0; x < canvasWidth; ++x, pixel += GetPixelBytes())
                    FillPixel<P>(pixel, fill);
            }
        });
    if (clearAlpha) {
        ImageOps ops;
        ops.SetChannel(*this, 3, 0);
    }
}

void SceneCanvas::Warp(const double quad[4][2], const FrameBuffer* picture, std::uint32_t interpolation)
{
    if (!picture)
        return;
    ImageOps ops;
    ops.WarpQuad(*picture, *this, quad, interpolation);
}

bool SceneCanvas::WarpLit(const double quad[4][2], const FrameBuffer& picture, double light,
                          std::uint32_t interpolation)
{
    const std::uint32_t format = picture.GetFormat();
    const int bytes = PixelBytesOf(format);
    if (!IsPicture(format) || !IsFloat(format) || format != GetFormat()
        || !Holds(picture, picture.GetWidth(), bytes) || !Holds(*this, GetWidth(), bytes))
        return false;
    const PxRect from = {0, 0, picture.GetWidth(), picture.GetHeight()};
    const PxRect to = {0, 0, GetWidth(), GetHeight()};
    double coeffs[3][3];
    if (pxQuadTransform(from, quad, coeffs) != pxOk)
        return true; // a copy cannot be laid either
    const PxStatus status = pxWarpQuadLit_32f_C4(
        Floats(picture.GetPixels()), from.width, from.height, picture.GetStride(), from, Floats(GetPixels()),
        GetStride(), to, coeffs, interpolation, LightFactors(format, light).values);
    return status != pxBadSize && status != pxBadInterpolation;
}

} // namespace kelmora

#include "effects/scene3d/face_light.h"

#include <algorithm>
#include <array>

#include "effects/common/precision.h"
#include "effects/scene3d/face_kernels.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/pixel_layouts.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(FaceKernels, kFaceKernels, FaceKernelsFor)

namespace kelmora {
namespace {

using ByteCurve = std::array<std::uint8_t, 256>;

ByteCurve CurveFor(double light)
{
    ByteCurve curve;
    for (int i = 0; i < 256; ++i)
        curve[static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>(std::clamp(Truncate(i * light + 0.5), 0, 255));
    return curve;
}

/// Whether single precision gives the same bytes, so that the curve need not be looked up.
bool IsPlain(const ByteCurve& curve, float light)
{
    if (!(light >= 0.0f && light <= 1.0f)) // no integers come out beyond
        return false;
    for (int i = 0; i < 256; ++i) {
        const float raised = static_cast<float>(i) * light + 0.5f;
        if (static_cast<int>(raised) != curve[static_cast<std::size_t>(i)])
            return false;
    }
    return true;
}

void LightBytes(FrameBuffer& picture, double light)
{
    const ByteCurve curve = CurveFor(light);
    const float factor = static_cast<float>(light);
    const bool plain = IsPlain(curve, factor);
    const auto lightRow = FaceKernelsFor(CurrentVariant()).lightBytes;
    const std::uint32_t alphaMask = IsAlphaFirst(picture.GetFormat()) ? 0x000000FF : 0xFF000000;
    const int firstColour = IsAlphaFirst(picture.GetFormat()) ? 1 : 0;
    for (int y = 0; y < picture.GetHeight(); ++y) {
        std::uint8_t* row = picture.GetPixels() + std::ptrdiff_t{picture.GetStride()} * y;
        if (plain) {
            lightRow(row, picture.GetWidth(), factor, alphaMask);
            continue;
        }
        for (int x = 0; x < picture.GetWidth(); ++x, row += 4)
            for (int c = firstColour; c < firstColour + 3; ++c)
                row[c] = curve[row[c]];
    }
}

void LightFloats(FrameBuffer& picture, double light)
{
    const float factor = static_cast<float>(light);
    float factors[4] = {factor, factor, factor, factor};
    factors[AlphaIndex(picture.GetFormat())] = 1.0f;
    const auto lightRow = FaceKernelsFor(CurrentVariant()).lightFloats;
    for (int y = 0; y < picture.GetHeight(); ++y)
        lightRow(picture.PixelAddress(0, y, 0), picture.GetWidth(), factors);
}

void LightPacked(FrameBuffer& picture, double light)
{
    const ByteCurve curve = CurveFor(light);
    for (int y = 0; y < picture.GetHeight(); ++y) {
        std::uint8_t* const row = picture.GetPixels() + std::ptrdiff_t{picture.GetStride()} * y;
        for (std::ptrdiff_t x = 0; x < picture.GetWidth(); ++x)
            row[x * picture.GetPixelBytes()] = curve[row[x * picture.GetPixelBytes()]];
    }
}

/// A part of a picture, `right` and `bottom` beyond its last pixel.
struct Part {
    int left, top, right, bottom;
};

int CutTo(std::int64_t value, int most)
{
    return static_cast<int>(std::clamp<std::int64_t>(value, 0, most));
}

double MeanOfBytes(const FrameBuffer& picture, const Part& part, std::int64_t area)
{
    const FaceKernels& kernels = FaceKernelsFor(CurrentVariant());
    const auto sumRow = IsAlphaFirst(picture.GetFormat()) ? kernels.sumLumaArgb : kernels.sumLumaBgra;
    std::uint32_t sum = 0; // wraps for pieces of more than 16 million pixels
    for (int y = part.top; y < part.bottom; ++y)
        sum += sumRow(picture.PixelAddress(part.left, y, 0), part.right - part.left);
    const std::int64_t mean = sum / area;
    return static_cast<double>(mean);
}

double MeanOfFirstBytes(const FrameBuffer& picture, const Part& part, std::int64_t area)
{
    std::uint32_t sum = 0;
    for (int y = part.top; y < part.bottom; ++y) {
        const std::uint8_t* const row = picture.GetPixels() + std::ptrdiff_t{picture.GetStride()} * y;
        for (std::ptrdiff_t x = part.left; x < part.right; ++x)
            sum += row[x * picture.GetPixelBytes()];
    }
    const std::int64_t mean = sum / area;
    return static_cast<double>(mean);
}

/// The sum is rounded to single precision pixel by pixel.
template <class P>
double MeanOfFloats(const FrameBuffer& picture, const Part& part, std::int64_t area)
{
    float sum = 0.0f;
    for (int y = part.top; y < part.bottom; ++y) {
        const auto* p = px::Loose(Floats(picture.PixelAddress(part.left, y, 0)));
        for (int x = part.left; x < part.right; ++x, p += 4)
            sum += 0.298f * p[P::r] + 0.586f * p[P::g] + 0.113f * p[P::b];
    }
    return static_cast<double>(sum) * 255.0 / static_cast<double>(area);
}

double MeanOf(const FrameBuffer& picture, const Part& part, std::int64_t area)
{
    switch (picture.GetFormat()) {
    case PF_BGRA8:
    case PF_ARGB8:
        return MeanOfBytes(picture, part, area);
    case PF_BGRA32F:
        return MeanOfFloats<Bgra32F>(picture, part, area);
    case PF_ARGB32F:
        return MeanOfFloats<Argb32F>(picture, part, area);
    default:
        return MeanOfFirstBytes(picture, part, area);
    }
}

} // namespace

void ApplyLight(FrameBuffer& picture, double light)
{
    const std::uint32_t format = picture.GetFormat();
    if (format == PF_Packed8 && Holds(picture, picture.GetWidth(), picture.GetPixelBytes()))
        LightPacked(picture, light);
    if (!IsPicture(format) || picture.GetPixelBytes() != PixelBytesOf(format)
        || !Holds(picture, picture.GetWidth(), PixelBytesOf(format)))
        return;
    IsFloat(format) ? LightFloats(picture, light) : LightBytes(picture, light);
}

std::uint8_t AverageBrightness(const FrameBuffer& picture, int x, int y, int width, int height)
{
    const int bytes = picture.GetFormat() == PF_Packed8 ? 1 : PixelBytesOf(picture.GetFormat());
    if (width < 1 || height < 1 || picture.GetFormat() > PF_ARGB32F
        || !Holds(picture, picture.GetWidth(), std::max(bytes, picture.GetPixelBytes())))
        return 0;
    const Part part = {CutTo(x, picture.GetWidth()), CutTo(y, picture.GetHeight()),
                       CutTo(std::int64_t{x} + width, picture.GetWidth()),
                       CutTo(std::int64_t{y} + height, picture.GetHeight())};
    const double mean = MeanOf(picture, part, std::int64_t{width} * height);
    return static_cast<std::uint8_t>(std::clamp(Truncate(mean), 0, 255));
}

} // namespace kelmora

#include "tests/reference/crop_borders.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "tests/reference/air_brush.h"
#include "tests/reference/blends.h"
#include "tests/reference/copies.h"
#include "tests/reference/filter.h"
#include "tests/reference/resize.h"
#include "tests/reference/rounding.h"
#include "tests/reference/tent.h"

namespace kelmora::reference {
namespace {

constexpr double kOne = 16384; // of the zoom's weights

/// The pixels that a pixel of the zoom is made of, along one axis.
struct CubicTaps {
    std::array<int, 4> pixels;
    std::array<double, 4> weights; ///< in 16384ths
};

/// Catmull-Rom at pixel `i` of `size` pixels zoomed to `zoomed` ones.
CubicTaps TapsAt(int i, int size, int zoomed)
{
    const double length = size * (static_cast<double>(zoomed) / size);
    const double position = std::min(i * (size - 1.0) / (length - 1.0), size - 1.0);
    const int own = static_cast<int>(position);
    CubicTaps taps;
    double rest = kOne;
    for (std::size_t k = 0; k < 4; ++k) {
        const int pixel = own - 1 + static_cast<int>(k);
        const double d = std::fabs(position - pixel);
        const double weight =
            d < 1 ? 1.5 * d * d * d - 2.5 * d * d + 1 : -0.5 * d * d * d + 2.5 * d * d - 4 * d + 2;
        taps.pixels[k] = std::clamp(pixel, 0, size - 1);
        taps.weights[k] = std::nearbyint((d < 2 ? weight : 0) * kOne);
        rest -= taps.weights[k];
    }
    *std::max_element(taps.weights.begin(), taps.weights.end()) += rest;
    return taps;
}

/// A byte of the zoom: along rows exact, along columns in single precision.
double CubicByte(const Picture& src, const CubicTaps& across, const CubicTaps& down, int c)
{
    double sum = 0;
    for (std::size_t j = 0; j < 4; ++j) {
        double row = 0;
        for (std::size_t i = 0; i < 4; ++i)
            row += across.weights[i] * src.At(across.pixels[i], down.pixels[j], c);
        sum = RoundedToFloat(sum + RoundedToFloat(down.weights[j] * row));
    }
    return std::clamp(std::nearbyint(sum / (kOne * kOne)), 0.0, 255.0);
}

void ZoomBytes(const Picture& kept, Picture& zoomed)
{
    for (int y = 0; y < zoomed.height; ++y)
        for (int x = 0; x < zoomed.width; ++x)
            for (int c = 0; c < 4; ++c)
                zoomed.At(x, y, c) = CubicByte(kept, TapsAt(x, kept.width, zoomed.width),
                                               TapsAt(y, kept.height, zoomed.height), c);
}

void ClampPicture(Picture& picture)
{
    for (double& value : picture.values)
        value = value > 0 ? std::min(value, 1.0) : 0.0;
}

/// The kept rectangle zoomed to a picture of the same size.
Picture Zoomed(const Picture& src, const CropNumbers& crop)
{
    const int width = crop.right - crop.left, height = crop.bottom - crop.top;
    Picture kept(width, height, src.format);
    CopyRect(src, crop.left, crop.top, width, height, kept, 0, 0);
    Picture zoomed(src.width, src.height, src.format);
    if (!src.floats && LoweredInterpolation(width, height, kCubic) == kCubic) {
        ZoomBytes(kept, zoomed);
        return zoomed;
    }
    Resize(kept, {0, 0, width, height}, zoomed, static_cast<double>(src.width) / width,
           static_cast<double>(src.height) / height, kCubic);
    if (src.floats) {
        for (double& value : zoomed.values)
            value = RoundedToFloat(value);
        ClampPicture(zoomed);
    }
    return zoomed;
}

/// False where the picture is too small for a border.
bool MakeCropMask(Picture& mask, const CropNumbers& crop, bool halfHeight)
{
    Picture black(mask.width, mask.height, mask.floats ? PF_BGRA32F : PF_BGRA8), white = black;
    Fill(white, 0xFFFFFFFF);
    Fill(black, 0);
    CopyRect(white, crop.left, crop.top, crop.right - crop.left, crop.bottom - crop.top, black, crop.left,
             crop.top);
    const Picture sharp = black;
    if (!PlainBlurOperation(sharp, black, halfHeight ? 2 * crop.feather : crop.feather, crop.feather, false,
                            true))
        return false;
    if (!ExtendBorder(black, black, 1, 1, true))
        return false;
    CopyChannel(black, mask, 0, 0);
    return true;
}

/// Rows of a host's picture in one of two places: by its stride, or a whole number of pixels apart.
Picture ReadPart(const Rows& rows, int width, int height, bool whole)
{
    Picture picture(width, height, rows.format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c)
                picture.At(x, y, c) = ValueAt(whole ? rows.AtWhole(x, y) : rows.At(x, y), c, rows.Floats());
    return picture;
}

/// `zoomed` under the output, which is `out`'s memory. In BGRA8 the rows are a whole number of pixels apart, and
/// in memory the pixels of one row may lie in another.
void LayOver(const Rows& out, const Picture& zoomed)
{
    const bool whole = out.format == PF_BGRA8;
    for (int y = 0; y < zoomed.height; ++y)
        for (int x = 0; x < zoomed.width; ++x) {
            Picture over(1, 1, out.format), under(1, 1, out.format);
            for (int c = 0; c < 4; ++c) {
                over.At(0, 0, c) = ValueAt(whole ? out.AtWhole(x, y) : out.At(x, y), c, out.Floats());
                under.At(0, 0, c) = zoomed.At(x, y, c);
            }
            AlphaOver(over, under, over, false);
            for (int c = 0; c < 4; ++c)
                PutValue(whole ? out.AtWhole(x, y) : out.At(x, y), c, out.Floats(), over.At(0, 0, c));
        }
}

/// Source alpha times the mask, by way of two composites.
Picture AlphaTimesMask(const Picture& src, const Picture& mask)
{
    const int c = src.AlphaPlace();
    Picture backdrop(src.width, src.height, src.format), carrier = backdrop;
    Fill(backdrop, 0xFF000000);
    CopyChannel(src, carrier, c, 3 - c);
    CopyChannel(mask, carrier, 0, c);
    AlphaOver(carrier, backdrop, carrier, false);
    return carrier;
}

struct Job {
    Rows in, out;
    int width, height;
    CropNumbers crop;
    Picture src;

    Job(const VideoFrame& picture, const VideoFrame& output, const CropBordersKnobs& knobs)
        : in(picture), out(output), width(std::min(in.width, out.width)),
          height(std::min(in.height, out.height)), crop(CropOf(knobs, width, height)),
          src(ReadPart(in, width, height, false))
    {
    }

    void Put(const Picture& from) const { WriteRows(from, out); }

    bool Extend() const
    {
        Picture extended = src;
        if (!ExtendBorder(src, extended, crop.left, crop.top, false))
            return false;
        Put(extended);
        return true;
    }

    /// One channel of the output.
    void PutChannel(const Picture& from, int channel, int to) const
    {
        Picture now = ReadPart(out, width, height, false);
        CopyChannel(from, now, channel, to);
        Put(now);
    }

    Picture NewMask() const { return Picture(width, height, src.floats ? PF_Mask32F : PF_Mask8); }
};

bool Overlay(const Job& job, bool halfHeight, int steps)
{
    const int c = job.src.AlphaPlace();
    if (steps < 1 || !job.crop.IsInside(job.width, job.height) || !job.Extend())
        return false;
    Picture mask = job.NewMask();
    if (steps < 2 || !MakeCropMask(mask, job.crop, halfHeight))
        return false;
    job.PutChannel(mask, 0, c);
    if (steps < 3)
        return false;
    Picture zoomed = Zoomed(job.src, job.crop);
    SetChannel(zoomed, c, 255);
    LayOver(job.out, zoomed);
    if (steps < 4)
        return false;
    job.PutChannel(job.src, c, c);
    return true;
}

bool Transparent(const Job& job, bool halfHeight)
{
    const int c = job.src.AlphaPlace();
    if (!job.Extend())
        return false;
    Picture mask = job.NewMask();
    if (!MakeCropMask(mask, job.crop, halfHeight))
        return false;
    job.PutChannel(AlphaTimesMask(job.src, mask), 3 - c, c);
    return true;
}

constexpr int kAllSteps = 4;

} // namespace

CropNumbers CropOf(const CropBordersKnobs& knobs, int width, int height)
{
    const double x = RoundedToFloat(static_cast<double>(knobs.horizontal) * static_cast<double>(0.1f));
    const double y = RoundedToFloat(static_cast<double>(knobs.vertical) * static_cast<double>(0.1f));
    const double feather = height * static_cast<double>(knobs.feather) * static_cast<double>(0.15f);
    return {TowardZero(width * x + 0.5), TowardZero(height * y + 0.5), TowardZero((1 - x) * width + 0.5),
            TowardZero((1 - y) * height + 0.5), static_cast<float>(feather)};
}

bool CropBorders(const VideoFrame& picture, const VideoFrame& output, const CropBordersKnobs& knobs,
                 bool halfHeight)
{
    const Job job(picture, output, knobs);
    switch (knobs.style) {
    case 0:
        if (!job.crop.IsInside(job.width, job.height))
            return false;
        job.Put(Zoomed(job.src, job.crop));
        return true;
    case 1:
        return Overlay(job, halfHeight, kAllSteps);
    case 2:
        return job.Extend();
    case 3:
        return Transparent(job, halfHeight);
    default:
        return false;
    }
}

void CropBordersUpTo(const VideoFrame& picture, const VideoFrame& output, const CropBordersKnobs& knobs,
                     bool halfHeight, int steps)
{
    Overlay(Job(picture, output, knobs), halfHeight, steps);
}

} // namespace kelmora::reference

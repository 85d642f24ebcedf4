#include "tests/reference/color_melt.h"

#include <algorithm>
#include <cmath>

#include "tests/reference/blends.h"
#include "tests/reference/colour.h"
#include "tests/reference/copies.h"
#include "tests/reference/tent.h"

namespace kelmora::reference {
namespace {

// Single-precision constants, as the doubles that they are.
const double kTenth = static_cast<double>(0.1f);
const double kHeightShare = static_cast<double>(0.2f);

// The library makes no kernel of more taps: no memory would hold its pictures.
constexpr int kMostTaps = 32767;

// What moves when the blur's rounding moves: a few units of the largest magnitude at hand.
constexpr double kBlurUnits = 6.0 / (1 << 24);

double Single(double value)
{
    return static_cast<double>(static_cast<float>(value));
}

float FloatLuma(const EdgePixel& p)
{
    return static_cast<float>(static_cast<double>(0.298f) * p.red + static_cast<double>(0.586f) * p.green
                              + static_cast<double>(0.113f) * p.blue);
}

int ByteLuma(const EdgePixel& p)
{
    return (76 * static_cast<int>(p.red) + 149 * static_cast<int>(p.green) + 30 * static_cast<int>(p.blue))
        >> 8;
}

EdgePixel Darker(const EdgePixel& p, const EdgePixel& q)
{
    const auto darker = [](double a, double b) { return a < b ? a : b; };
    return {darker(p.blue, q.blue), darker(p.green, q.green), darker(p.red, q.red), darker(p.alpha, q.alpha)};
}

EdgePixel PixelAt(const Picture& picture, int x, int y, std::uint32_t format)
{
    const auto colour = [&](int c) { return picture.At(x, y, PlaceOfColour(format, c)); };
    return {colour(0), colour(1), colour(2), colour(3)};
}

void PutPixel(Picture& picture, int x, int y, std::uint32_t format, const EdgePixel& p)
{
    const double colours[4] = {p.blue, p.green, p.red, p.alpha};
    for (int c = 0; c < 4; ++c)
        picture.At(x, y, PlaceOfColour(format, c)) = colours[c];
}

/// The colour work on one pixel of the blur.
EdgePixel ColouredByte(const EdgePixel& blurred, const MeltNumbers& melt)
{
    const Hsv hsv = ByteHsvOf(static_cast<int>(blurred.blue), static_cast<int>(blurred.green),
                              static_cast<int>(blurred.red));
    const double gained = std::min(hsv.saturation * melt.gain, 255.0);
    const int saturation = std::clamp(TowardZero(gained), 0, 255);
    const int value = std::clamp(
        TowardZero((melt.target - hsv.value) * static_cast<double>(melt.amount) + hsv.value), 0, 255);
    const Colour colour = ByteColourOf(static_cast<int>(hsv.hue), saturation, value);
    return {colour.blue, colour.green, colour.red, blurred.alpha};
}

EdgePixel ColouredFloat(const EdgePixel& blurred, const MeltNumbers& melt)
{
    const Hsv exact = HsvOf({blurred.blue, blurred.green, blurred.red});
    const Hsv hsv = {Single(exact.hue), Single(exact.saturation), Single(exact.value)};
    const double target = melt.target * 0.003921569;
    const double saturation = Single(std::min(hsv.saturation * melt.gain, 1.0));
    const double value = Single((target - hsv.value) * static_cast<double>(melt.amount) + hsv.value);
    const Colour colour = ColourOf({hsv.hue, saturation, value});
    return {Single(colour.blue), Single(colour.green), Single(colour.red), blurred.alpha};
}

EdgePixel MeltedFloat(const EdgePixel& clean, const EdgePixel& blurred, const MeltNumbers& melt)
{
    return LiftAllFloat(clean, ColouredFloat(blurred, melt), melt.fog);
}

/// How far each value of the pixel moves, all told, when one channel of the blur does.
EdgePixel SwayOf(const EdgePixel& clean, const EdgePixel& blurred, const MeltNumbers& melt, double step)
{
    const EdgePixel still = MeltedFloat(clean, blurred, melt);
    EdgePixel sway = {0, 0, 0, 0};
    for (double EdgePixel::*channel :
         {&EdgePixel::blue, &EdgePixel::green, &EdgePixel::red, &EdgePixel::alpha})
        for (const double sign : {-1.0, 1.0}) {
            EdgePixel other = blurred;
            other.*channel += sign * step;
            const EdgePixel moved = MeltedFloat(clean, other, melt);
            for (double EdgePixel::*c :
                 {&EdgePixel::blue, &EdgePixel::green, &EdgePixel::red, &EdgePixel::alpha})
                sway.*c += std::fabs(moved.*c - still.*c);
        }
    return sway;
}

Picture Mixed(const Picture& first, const Picture& second, int width, int height, float progress,
              float crossFade)
{
    Picture mix(width, height, first.format);
    const Dissolve dissolve = MeltDissolve(progress, crossFade);
    const bool has = second.width > 0 && second.format == first.format;
    if (dissolve.kind == Dissolve::First)
        CopyRect(first, 0, 0, width, height, mix, 0, 0);
    else if (has && dissolve.kind == Dissolve::Second)
        CopyRect(second, 0, 0, width, height, mix, 0, 0);
    else if (has)
        AddWeighted(first, second, mix, static_cast<float>(1 - dissolve.position),
                    static_cast<float>(dissolve.position));
    return mix;
}

} // namespace

float MeltProgress(double progress)
{
    return progress > 0 ? static_cast<float>(std::min(progress, 1.0)) : 0.0f;
}

float MeltAmount(double progress, float tempo)
{
    const double p = static_cast<double>(MeltProgress(progress));
    const double tri = 2 * p > 1 ? 2 - 2 * p : 2 * p;
    const double amount = 1 - std::pow(1 - tri, static_cast<double>(tempo) * 3 + 1);
    return amount > 0 ? static_cast<float>(std::min(amount, 1.0)) : 0.0f;
}

int MeltTaps(float soften, int height, float amount, bool floats)
{
    const double size =
        (static_cast<double>(soften) + kTenth) * height * kHeightShare * static_cast<double>(amount);
    const int taps = std::min(TowardZero(Single(size)), kMostTaps) + 1;
    return std::max(taps, floats ? 1 : 2);
}

double MeltSaturationGain(float color, float amount)
{
    const double c = static_cast<double>(color), a = static_cast<double>(amount);
    return Single(a * 8 * a * Single(c * c * c)) + 1;
}

double MeltTarget(float brightness)
{
    const double dark = 1 - static_cast<double>(brightness);
    return Single(1 - dark * dark) * 200 + 55;
}

Dissolve MeltDissolve(float progress, float crossFade)
{
    const double p = static_cast<double>(progress), x = static_cast<double>(crossFade);
    const double start = 0.5 - x * 0.5;
    if (p < start)
        return {Dissolve::First, 0};
    if (p > start + x)
        return {Dissolve::Second, 1};
    const double position = (p - start) / (x == 0 ? 1e-6 : x);
    return {position == 0 ? Dissolve::First : Dissolve::Both, position};
}

EdgePixel LiftAllByte(const EdgePixel& p, const EdgePixel& q, float fog)
{
    const double v = static_cast<double>(1 - fog);
    const int scale = std::max(TowardZero((1 - v * v) * 245), -65536);
    const int threshold = (ByteLuma(q) * scale) >> 8;
    if (ByteLuma(p) >= threshold)
        return Darker(p, q);
    const int d = threshold - ByteLuma(p);
    const auto lifted = [d](double v0) { return v0 + d > 255 ? 255.0 : v0 + d; };
    return {lifted(p.blue), lifted(p.green), lifted(p.red), lifted(p.alpha)};
}

EdgePixel LiftAllFloat(const EdgePixel& p, const EdgePixel& q, float fog)
{
    const double f = 1 - static_cast<double>(fog);
    const float share = static_cast<float>((1 - f * f) * 0.9607843160629272);
    const float threshold = FloatLuma(q) * share;
    const float luma = FloatLuma(p);
    if (threshold <= luma)
        return Darker(p, q);
    const float d = threshold - luma;
    const auto lifted = [d](double v) { return static_cast<double>(static_cast<float>(v) + d); };
    return {lifted(p.blue), lifted(p.green), lifted(p.red), lifted(p.alpha)};
}

void ColorMelt(const VideoFrame& firstPicture, const VideoFrame* secondPicture, const VideoFrame& output,
               const ColorMeltKnobs& knobs, double progress, std::vector<double>* sway)
{
    const Rows in(firstPicture);
    Rows out(output);
    out.format = in.format;
    const int width = std::min(in.width, out.width), height = std::min(in.height, out.height);
    const Picture first = ReadRows(in);
    const Picture second =
        secondPicture && secondPicture->data ? ReadRows(Rows(*secondPicture)) : Picture(0, 0, in.format);
    const Picture keep = Mixed(first, second, width, height, MeltProgress(progress), knobs.crossFade);

    const float amount = MeltAmount(progress, knobs.tempo);
    const int taps = MeltTaps(knobs.soften, height, amount, in.Floats());
    if (taps > kMostTaps) {
        WriteRows(keep, out);
        return;
    }
    const MeltNumbers melt = {amount, MeltSaturationGain(knobs.color, amount), MeltTarget(knobs.brightness),
                              knobs.fog};

    BlurSteps steps;
    steps.width = width;
    steps.height = height;
    steps.tapsX = steps.tapsY = steps.padX = steps.padY = taps;
    // The blur runs in alpha-last order; turned there and back, alpha-first pictures get the same values.
    Picture source = keep;
    source.format = in.Floats() ? PF_BGRA32F : PF_BGRA8;
    const Picture blurred = PlainBlur(source, steps);

    WriteRows(MeltedPicture(keep, blurred, melt, sway), out);
}

Picture MeltedPicture(const Picture& keep, const Picture& blurred, const MeltNumbers& melt,
                      std::vector<double>* sway)
{
    double largest = 1;
    for (const double value : keep.values)
        if (std::isfinite(value))
            largest = std::max(largest, std::fabs(value));
    Picture melted = keep;
    for (int y = 0; y < keep.height; ++y)
        for (int x = 0; x < keep.width; ++x) {
            const EdgePixel clean = PixelAt(keep, x, y, keep.format);
            const EdgePixel blur = PixelAt(blurred, x, y, keep.format);
            PutPixel(melted, x, y, keep.format,
                     keep.floats ? MeltedFloat(clean, blur, melt)
                                 : LiftAllByte(clean, ColouredByte(blur, melt), melt.fog));
            if (sway && keep.floats) {
                Picture pixel(1, 1, keep.format);
                PutPixel(pixel, 0, 0, keep.format, SwayOf(clean, blur, melt, kBlurUnits * largest));
                for (const double value : pixel.values)
                    sway->push_back(value * static_cast<double>(melt.amount));
            }
        }
    AddWeighted(keep, melted, melted, static_cast<float>(1 - static_cast<double>(melt.amount)), melt.amount);
    return melted;
}

} // namespace kelmora::reference

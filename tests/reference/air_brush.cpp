#include "tests/reference/air_brush.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/reference/tent.h"

namespace kelmora::reference {
namespace {

// Single-precision constants, as the doubles that they are.
const double kTenth = static_cast<double>(0.1f);
const double kHeightShare = static_cast<double>(0.15f);

// The library makes no kernel of more taps: no memory would hold its pictures.
constexpr int kMostTaps = 32767;

int ByteLuma(const EdgePixel& p)
{
    return (76 * static_cast<int>(p.red) + 149 * static_cast<int>(p.green) + 30 * static_cast<int>(p.blue))
        >> 8;
}

float FloatLuma(const EdgePixel& p)
{
    return static_cast<float>(static_cast<double>(0.298f) * p.red + static_cast<double>(0.586f) * p.green
                              + static_cast<double>(0.113f) * p.blue);
}

EdgePixel ReadPixel(const std::uint8_t* pixel, std::uint32_t format)
{
    const bool floats = IsFloatFormat(format);
    const auto colour = [&](int c) { return ValueAt(pixel, PlaceOfColour(format, c), floats); };
    return {colour(0), colour(1), colour(2), colour(3)};
}

void WritePixel(std::uint8_t* pixel, std::uint32_t format, const EdgePixel& value)
{
    const double colours[4] = {value.blue, value.green, value.red, value.alpha};
    for (int c = 0; c < 4; ++c)
        PutValue(pixel, PlaceOfColour(format, c), IsFloatFormat(format), colours[c]);
}

EdgePixel Darker(const EdgePixel& p, const EdgePixel& q)
{
    const auto darker = [](double a, double b) { return a < b ? a : b; };
    return {darker(p.blue, q.blue), darker(p.green, q.green), darker(p.red, q.red), p.alpha};
}

} // namespace

int AirBrushTaps(float spray, int pictureHeight)
{
    const int taps = TowardZero((static_cast<double>(spray) + kTenth) * pictureHeight * kHeightShare);
    return taps < 2 ? 2 : taps;
}

EdgePixel LiftByte(const EdgePixel& p, const EdgePixel& q, float edge)
{
    const double e = static_cast<double>(edge);
    const int scale = std::max(TowardZero(245 - e * e * 245), -65536);
    const int threshold = (ByteLuma(q) * scale) >> 8;
    if (ByteLuma(p) >= threshold)
        return Darker(p, q);
    const int d = threshold - ByteLuma(p);
    const auto lifted = [d](double v) { return v + d > 255 ? 255.0 : v + d; };
    return {lifted(p.blue), lifted(p.green), lifted(p.red), p.alpha};
}

EdgePixel LiftFloat(const EdgePixel& p, const EdgePixel& q, float edge, double* closeness)
{
    const double e = static_cast<double>(edge);
    const float share = static_cast<float>((1 - e * e) * 0.9607843160629272);
    const float threshold = FloatLuma(q) * share;
    const float luma = FloatLuma(p);
    if (closeness)
        *closeness = static_cast<double>(threshold) - static_cast<double>(luma);
    if (threshold <= luma)
        return Darker(p, q);
    const float d = threshold - luma;
    const auto lifted = [d](double v) { return static_cast<double>(static_cast<float>(v) + d); };
    return {lifted(p.blue), lifted(p.green), lifted(p.red), p.alpha};
}

void AirBrush(const VideoFrame& firstPicture, const VideoFrame& output, float spray, float edge,
              std::vector<double>* closeness)
{
    const Rows in(firstPicture), out(output);
    const int width = std::min(in.width, out.width), height = std::min(in.height, out.height);
    const int taps = AirBrushTaps(spray, in.height);
    if (taps > kMostTaps)
        return;

    BlurSteps steps;
    steps.width = width;
    steps.height = height;
    steps.tapsX = steps.tapsY = steps.padX = steps.padY = taps;
    // The blur runs in alpha-last order; turned there and back, alpha-first pictures get the same values.
    Picture picture = ReadRows(in);
    picture.format = in.Floats() ? PF_BGRA32F : PF_BGRA8;
    WriteRows(PlainBlur(picture, steps), out);

    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::uint8_t* const to = out.AtWhole(x, y);
            const EdgePixel p = ReadPixel(in.AtWhole(x, y), in.format), q = ReadPixel(to, in.format);
            double close = 0;
            WritePixel(to, in.format, in.Floats() ? LiftFloat(p, q, edge, &close) : LiftByte(p, q, edge));
            if (closeness)
                closeness->push_back(close);
        }
}

Rows::Rows(const VideoFrame& frame)
    : first(static_cast<std::uint8_t*>(frame.data)), width(frame.width), height(frame.height),
      stride(frame.stride), pixelBytes(frame.pixelBytes), format(frame.format)
{
    if (stride < 0) {
        first += static_cast<std::ptrdiff_t>(stride) * (height - 1);
        stride = -stride;
    }
}

std::uint8_t* Rows::At(int x, int y) const
{
    return first + static_cast<std::ptrdiff_t>(stride) * y + static_cast<std::ptrdiff_t>(pixelBytes) * x;
}

std::uint8_t* Rows::AtWhole(int x, int y) const
{
    const std::ptrdiff_t rowPixels = stride / pixelBytes;
    return first + (rowPixels * y + x) * pixelBytes;
}

double ValueAt(const std::uint8_t* pixel, int channel, bool floats)
{
    if (!floats)
        return pixel[channel];
    float value;
    std::memcpy(&value, pixel + 4 * channel, 4);
    return static_cast<double>(value);
}

void PutValue(std::uint8_t* pixel, int channel, bool floats, double value)
{
    if (!floats) {
        pixel[channel] = static_cast<std::uint8_t>(value);
        return;
    }
    const auto single = static_cast<float>(value);
    std::memcpy(pixel + 4 * channel, &single, 4);
}

Picture ReadRows(const Rows& rows)
{
    Picture picture(rows.width, rows.height, rows.format);
    for (int y = 0; y < rows.height; ++y)
        for (int x = 0; x < rows.width; ++x)
            for (int c = 0; c < 4; ++c)
                picture.At(x, y, c) = ValueAt(rows.At(x, y), c, rows.Floats());
    return picture;
}

void WriteRows(const Picture& from, const Rows& to)
{
    for (int y = 0; y < from.height; ++y)
        for (int x = 0; x < from.width; ++x)
            for (int c = 0; c < 4; ++c)
                PutValue(to.At(x, y), c, to.Floats(), from.At(x, y, c));
}

int TowardZero(double value)
{
    if (std::isnan(value))
        return 0;
    return static_cast<int>(std::clamp(value, -2147483648.0, 2147483647.0));
}

} // namespace kelmora::reference

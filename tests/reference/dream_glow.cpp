#include "tests/reference/dream_glow.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/reference/copies.h"
#include "tests/reference/filter.h"
#include "tests/reference/rounding.h"

namespace kelmora::reference {
namespace {

constexpr int kMostTaps = 32767;

// The glow is white.
constexpr int kGlowByte = 255;
constexpr double kGlowFloat = 255 / 255.0;
constexpr double kGlowShine = 255 / 356.0;

EdgePixel PixelAt(const Picture& picture, int x, int y)
{
    const auto colour = [&](int c) { return picture.At(x, y, PlaceOfColour(picture.format, c)); };
    return {colour(0), colour(1), colour(2), colour(3)};
}

void PutPixel(Picture& picture, int x, int y, const EdgePixel& p)
{
    const double colours[4] = {p.blue, p.green, p.red, p.alpha};
    for (int c = 0; c < 4; ++c)
        picture.At(x, y, PlaceOfColour(picture.format, c)) = colours[c];
}

std::int64_t ByteLevel(const EdgePixel& p)
{
    return (76 * static_cast<std::int64_t>(p.red) + 149 * static_cast<std::int64_t>(p.green)
            + 30 * static_cast<std::int64_t>(p.blue))
        >> 8;
}

float FloatLevel(const EdgePixel& p)
{
    return static_cast<float>(static_cast<double>(0.298f) * p.red + static_cast<double>(0.586f) * p.green
                              + static_cast<double>(0.113f) * p.blue);
}

/// The second when either is no number.
double Lesser(double a, double b)
{
    return a < b ? a : b;
}

double Greater(double a, double b)
{
    return a > b ? a : b;
}

// --- the blur -----------------------------------------------------------------------------------------

std::vector<int> Triangle(int taps)
{
    std::vector<int> kernel(static_cast<std::size_t>(taps));
    const int half = (taps + 1) >> 1;
    for (int i = 0; i < half; ++i)
        kernel[static_cast<std::size_t>(i)] = kernel[static_cast<std::size_t>(taps - 1 - i)] = i + 1;
    return kernel;
}

/// One pass of a kernel from `src` at (fromX, fromY) to `dst` at (toX, toY).
class Pass {
public:
    Pass(int taps, bool floats) : m_whole(Triangle(taps)), m_floats(floats), m_anchor(taps >> 1)
    {
        for (const int weight : m_whole)
            m_sum += weight;
        for (const int weight : m_whole)
            m_parts.push_back(static_cast<float>(weight) / static_cast<float>(m_sum));
    }

    double operator()(const Picture& src, Axis axis, int x, int y, int c) const
    {
        return m_floats ? RoundedToFloat(SumAt(src, axis, x, y, c, m_parts, m_anchor))
                        : ByteFromSum(SumAt(src, axis, x, y, c, m_whole, m_anchor), m_sum);
    }

private:
    std::vector<int> m_whole;
    std::vector<float> m_parts;
    bool m_floats;
    int m_anchor;
    int m_sum = 0;
};

// --- the wave -----------------------------------------------------------------------------------------

struct Wave {
    double keep, amount, start, slope;
};

Wave WaveOf(float shine)
{
    const float f = 0.6f * 6.0f + 1.0f;
    const double s = static_cast<double>(shine), part = static_cast<double>(0.6f);
    return {1 - s * part, s * part, 2 * (s * 3.1415), static_cast<double>(2 * f * 3.1415f)};
}

double HeightOf(const Wave& wave, double level)
{
    constexpr double mostAngle = 1 << 30;
    const double angle = std::clamp(wave.start + wave.slope * level, -mostAngle, mostAngle);
    return (std::sin(angle) * static_cast<double>(0.8f) + 1) * 0.5 + level;
}

double Clamped(double value, double most)
{
    return Lesser(Greater(value, 0), most);
}

} // namespace

float GlowGain(float fog)
{
    const float a = fog * 0.8f;
    return static_cast<float>(std::sqrt(static_cast<double>(a)) * 1.5);
}

std::int64_t GlowByteGain(float fog)
{
    const float gain = GlowGain(fog) * 380.0f;
    return static_cast<std::int64_t>(std::min(gain, static_cast<float>(1 << 30)));
}

float GlowFloatGain(float fog)
{
    return GlowGain(fog) * 1.49f;
}

EdgePixel GlowByte(const EdgePixel& p, const EdgePixel& t, std::int64_t gain)
{
    const std::int64_t glow = (ByteLevel(t) * gain) >> 8, level = ByteLevel(p);
    const double diff = level >= glow ? 0 : static_cast<double>(((glow - level) * kGlowByte) >> 8);
    const auto lifted = [diff](double v) { return std::min(v + diff, static_cast<double>(kGlowByte)); };
    return {lifted(p.blue), lifted(p.green), lifted(p.red),
            std::min(std::max(static_cast<double>(glow), p.alpha), 255.0)};
}

EdgePixel GlowFloat(const EdgePixel& p, const EdgePixel& t, float gain)
{
    const float glow = FloatLevel(t) * gain, level = FloatLevel(p);
    const auto lifted = [&](double v) {
        if (level >= glow)
            return Lesser(v, kGlowFloat);
        const float diff = glow - level;
        return Lesser(RoundedToFloat(v + static_cast<double>(diff) * kGlowFloat), kGlowFloat);
    };
    return {lifted(p.blue), lifted(p.green), lifted(p.red),
            Lesser(Greater(static_cast<double>(glow), p.alpha), 1)};
}

EdgePixel ShineByte(const EdgePixel& p, float shine)
{
    const Wave wave = WaveOf(shine);
    const double w = wave.amount * 256 * HeightOf(wave, (p.red + p.green + p.blue) / 768.0);
    const auto shone = [&](double v) { return std::floor(Clamped(kGlowShine * w + v * wave.keep, 255)); };
    return {shone(p.blue), shone(p.green), shone(p.red), p.alpha};
}

EdgePixel ShineFloat(const EdgePixel& p, float shine)
{
    const Wave wave = WaveOf(shine);
    const double w = wave.amount * HeightOf(wave, (p.red + p.green + p.blue) / 3.0);
    const auto shone = [&](double v) { return RoundedToFloat(Clamped(kGlowShine * w + v * wave.keep, 1)); };
    return {shone(p.blue), shone(p.green), shone(p.red), p.alpha};
}

Picture GlowBlur(const Picture& picture, std::int32_t radius)
{
    if (radius < 0 || radius >= kMostTaps)
        return Picture(0, 0, picture.format);
    const int taps = radius + 1, anchor = taps >> 1, w = picture.width, h = picture.height;
    Picture first(w + taps, h + taps, picture.format);
    CopyRect(picture, 0, 0, w, h, first, anchor, anchor);
    ExtendBorder(first, first, anchor + 2, anchor + 2, true);

    const Pass pass(taps, picture.floats);
    Picture second(w + taps, h + taps, picture.format), blurred(w, h, picture.format);
    for (int c = 0; c < 4; ++c) {
        if (!picture.floats && c == picture.AlphaPlace())
            continue;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                second.At(x + anchor, y + anchor, c) = pass(first, Axis::Column, x + anchor, y + anchor, c);
    }
    ExtendBorder(second, second, anchor + 2, anchor + 2, true);
    for (int c = 0; c < 4; ++c) {
        if (!picture.floats && c == picture.AlphaPlace())
            continue;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                blurred.At(x, y, c) = pass(second, Axis::Row, x + anchor, y + anchor, c);
    }
    return blurred;
}

void ApplyDreamGlow(Picture& picture, const DreamGlow& glow)
{
    if (GlowGain(glow.fog) > 0) {
        Picture blurred = GlowBlur(picture, glow.radius);
        Picture hazed(picture.width, picture.height, picture.format);
        for (int y = 0; y < blurred.height; ++y)
            for (int x = 0; x < blurred.width; ++x) {
                if (picture.floats)
                    blurred.At(x, y, 0) = picture.At(x, y, 0);
                const EdgePixel p = PixelAt(picture, x, y), t = PixelAt(blurred, x, y);
                PutPixel(hazed, x, y,
                         picture.floats ? GlowFloat(p, t, GlowFloatGain(glow.fog))
                                        : GlowByte(p, t, GlowByteGain(glow.fog)));
            }
        picture = hazed;
    }
    if (!(glow.shine > 0))
        return;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) {
            const EdgePixel p = PixelAt(picture, x, y);
            PutPixel(picture, x, y, picture.floats ? ShineFloat(p, glow.shine) : ShineByte(p, glow.shine));
        }
}

} // namespace kelmora::reference

#include "tests/reference/detail_enhancer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "tests/reference/air_brush.h"
#include "tests/reference/tent.h"

namespace kelmora::reference {
namespace {

// Sums with sizes and amounts stay inside an int; both lie far beyond what the knobs reach.
constexpr int kMostSize = 32766;
constexpr int kMostScaled = 8000000;

float Radius(float definition)
{
    return definition + 0.01f;
}

void CopyPixels(const Picture& picture, const Rows& out, int width, int height)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c)
                PutValue(out.At(x, y), c, out.Floats(), picture.At(x, y, c));
}

} // namespace

int DetailEnhancerBlurSize(float definition, int height)
{
    const double radius = static_cast<double>(Radius(definition));
    const int truncated =
        TowardZero((radius * 0.5 + static_cast<double>(0.1f)) * height * static_cast<double>(0.3f));
    int k = std::min(truncated, kMostSize);
    k = k + (k & 1);
    return k < 2 ? 2 : k;
}

int SharpenByte(int picture, int blurred, float amount)
{
    const int scaled = std::clamp(TowardZero(10000 * static_cast<double>(amount)), -kMostScaled, kMostScaled);
    const auto t1 = [scaled](int v) { return scaled * v / 10000; };
    const auto t2 = [&t1](int v) { return t1(v) + v; };
    return std::clamp(t2(picture) - t1(blurred), 0, 255);
}

float SharpenFloat(float picture, float blurred, float amount)
{
    const float boost = static_cast<float>(static_cast<double>(amount) + 1.0);
    const float boosted = picture * boost;
    const float taken = blurred * amount;
    const float sharp = boosted - taken;
    if (!(sharp > 0.0f))
        return 0.0f;
    return sharp < 1.0f ? sharp : 1.0f;
}

void DetailEnhancer(const VideoFrame& firstPicture, const VideoFrame& output, float definition,
                    float strength, bool halfHeight)
{
    const Rows in(firstPicture), out(output);
    const int width = std::min(in.width, out.width), height = std::min(in.height, out.height);
    const int alpha = PlaceOfColour(in.format, 3);
    const float amount = strength + strength;
    const Picture picture = ReadRows(in);

    if (Radius(definition) > 0 && amount > 0) {
        const int k = DetailEnhancerBlurSize(definition, height);
        Picture blurred(width, height, in.format);
        PlainBlurOperation(picture, blurred, static_cast<float>(halfHeight ? 2 * k : k),
                           static_cast<float>(k), false);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < 4; ++c) {
                    if (c == alpha)
                        continue;
                    const double p = ValueAt(in.AtWhole(x, y), c, in.Floats());
                    const double b = blurred.At(x, y, c);
                    const double sharp = in.Floats()
                        ? static_cast<double>(
                            SharpenFloat(static_cast<float>(p), static_cast<float>(b), amount))
                        : SharpenByte(static_cast<int>(p), static_cast<int>(b), amount);
                    PutValue(out.AtWhole(x, y), c, out.Floats(), sharp);
                }
    } else {
        CopyPixels(picture, out, width, height);
    }
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            PutValue(out.At(x, y), alpha, out.Floats(), ValueAt(in.At(x, y), alpha, in.Floats()));
}

} // namespace kelmora::reference

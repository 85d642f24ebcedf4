#include "tests/reference/paper_collage.h"

#include <algorithm>
#include <cmath>

#include "tests/reference/air_brush.h"
#include "tests/reference/blends.h"
#include "tests/reference/copies.h"
#include "tests/reference/neighbourhood.h"
#include "tests/reference/tent.h"

namespace kelmora::reference {
namespace {

double Single(double value)
{
    return static_cast<double>(static_cast<float>(value));
}

Picture AsBytes(const Picture& picture, int width, int height)
{
    Picture corner(width, height, picture.format);
    CopyRect(picture, 0, 0, width, height, corner, 0, 0);
    if (picture.format == PF_BGRA8)
        return corner;
    Picture bytes(width, height, PF_BGRA8);
    Convert(corner, bytes);
    return bytes;
}

/// The dissolve. Its height is measured against a width.
Picture PaperMix(const Picture& first, const Picture& second, float fade)
{
    const int width = std::min(first.width, second.width);
    const int height = first.height < second.width ? first.height : second.width;
    Picture mix(width, height, first.format);
    AddWeighted(first, second, mix, static_cast<float>(1 - static_cast<double>(fade)), fade);
    return mix;
}

void PaperLuma(const Picture& from, Picture& to)
{
    for (int y = 0; y < std::min(from.height, to.height); ++y)
        for (int x = 0; x < std::min(from.width, to.width); ++x) {
            const auto level = [&](int c) { return static_cast<int>(from.At(x, y, c)); };
            const int grey = PaperGrey(level(0), level(1), level(2));
            for (int c = 0; c < 3; ++c)
                to.At(x, y, c) = grey;
            to.At(x, y, 3) = 0; // the grey of 0 to 1, toward zero: white is just below 1
        }
}

/// Softens a mask by a pixel. Around it lie zeros.
void PaperSoften(Picture& gray)
{
    Picture extended(gray.width + 4, gray.height + 4, PF_Mask8);
    CopyRect(gray, 0, 0, gray.width, gray.height, extended, 2, 2);
    for (int y = 0; y < gray.height; ++y)
        for (int x = 0; x < gray.width; ++x)
            gray.At(x, y, 0) = BoxAverageAt(extended, x + 2, y + 2, 0, 3);
}

/// One sheet or shadow of `colour` over what lies there.
void LaySheet(Picture& acc, const Picture& gray, std::uint32_t colour)
{
    Picture tint(acc.width, acc.height, PF_BGRA8);
    Fill(tint, colour);
    CopyChannel(gray, tint, 0, 3);
    AlphaOver(tint, acc, acc, false);
}

struct Sheets {
    std::vector<int> levels;
    std::vector<Picture> masks;
    std::vector<std::array<int, 3>> averages; // blue, green, red of the picture under each level
};

/// The masks and the colours under them.
Sheets CutSheets(const Picture& d, const Picture& c, int width, int height, int count, float balance)
{
    Sheets sheets;
    sheets.levels = PaperLevels(count);
    const std::array<int, 256> table = PaperTable(count, balance);
    for (const int level : sheets.levels) {
        Picture mask(width, height, PF_Mask8);
        std::array<std::int64_t, 3> sums = {};
        std::int64_t pixels = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const int v = table.at(static_cast<std::size_t>(c.At(x, y, 2)));
                if (v >= level)
                    mask.At(x, y, 0) = 255;
                if (v == level) {
                    ++pixels;
                    for (std::size_t k = 0; k < 3; ++k)
                        sums[k] += static_cast<int>(d.At(x, y, static_cast<int>(k)));
                }
            }
        std::array<int, 3> average = {};
        for (std::size_t k = 0; k < 3 && pixels > 0; ++k)
            average[k] = static_cast<int>(std::min<std::int64_t>(sums[k] / pixels, 255));
        sheets.masks.push_back(mask);
        sheets.averages.push_back(average);
    }
    return sheets;
}

/// Byte `place` of a colour word.
int ByteOf(std::uint32_t word, int place)
{
    return static_cast<int>(word >> (8 * place) & 255);
}

std::uint32_t WordOf(int low, int middle, int high)
{
    return static_cast<std::uint32_t>(low) | static_cast<std::uint32_t>(middle) << 8
        | static_cast<std::uint32_t>(high) << 16;
}

void PaperLayers(const Picture& d, Picture& c, const PaperCollageKnobs& knobs, int shadowDist, float fadeOut,
                 bool halfHeight)
{
    const int width = std::min(d.width, c.width), height = std::min(d.height, c.height);
    const int count = PaperLayerCount(knobs.layers);
    const Sheets sheets = CutSheets(d, c, width, height, count, knobs.balance);

    const int base = shadowDist * count * (halfHeight ? 2 : 1);
    Picture acc(width + 2 * base, height + 2 * base, PF_BGRA8);
    Picture gray(acc.width, acc.height, PF_Mask8);
    Fill(acc, knobs.background | 0xFF000000u);

    const int bc = std::clamp(TowardZero(static_cast<double>(knobs.blendColors) * 255), 0, 255);
    const int sk = std::clamp(TowardZero(static_cast<double>(fadeOut) * 255), 0, 255);
    const double turned = 1 - static_cast<double>(knobs.angle);
    const double angle = (turned + turned) * 3.141592502593994;
    const int dy = TowardZero(std::sin(angle) * shadowDist);
    const int dx = TowardZero(TowardZero(std::cos(angle) * shadowDist) * (halfHeight ? 2.0 : 1.0));

    int sR = 0, sG = 0, sB = 0;
    for (std::size_t i = 0; i < sheets.levels.size(); ++i) {
        const int k = sheets.levels[i];
        const auto colour = [&](int place, int average) {
            return PaperColorMix(
                average, PaperColorMix(ByteOf(knobs.foreground, place), ByteOf(knobs.background, place), k),
                bc);
        };
        const int red = colour(0, sheets.averages[i][2]);
        const int green = colour(1, sheets.averages[i][1]);
        const int blue = colour(2, sheets.averages[i][0]);
        sB = PaperColorMix(blue, sB, sk);
        sR = PaperColorMix(red, sR, sk);
        sG = PaperColorMix(green, sG, sk);
        if (shadowDist != 0) {
            CopyRect(sheets.masks[i], 0, 0, width, height, gray, base + dx, base + dy);
            PaperSoften(gray);
            LaySheet(acc, gray, WordOf(sR, sG, sB)); // red in the place of blue
        }
        CopyRect(sheets.masks[i], 0, 0, width, height, gray, base, base);
        LaySheet(acc, gray, WordOf(blue, green, red));
    }
    CopyRect(acc, base, base, width, height, c, 0, 0);
}

} // namespace

PaperCurve CrossfadeCurve(double progress, float crossFade, float tempo)
{
    const double p = progress > 0 ? std::min(progress, 1.0) : 0;
    const double x = static_cast<double>(crossFade);
    const double start = 0.5 - x * 0.5;
    double fade = (p - start) / (x == 0 ? 1e-6 : x);
    if (p < start)
        fade = 0;
    else if (p > start + x)
        fade = 1;
    const double tri = 2 * p > 1 ? 2 - 2 * p : 2 * p;
    const double amount = 1 - std::pow(1 - tri, static_cast<double>(tempo) * 3 + 1);
    return {amount > 0 ? static_cast<float>(std::min(amount, 1.0)) : 0.0f, static_cast<float>(fade)};
}

int PaperLayerCount(float layers)
{
    return std::clamp(TowardZero(static_cast<double>(layers) * 6.0), 0, 6) + 2;
}

std::vector<int> PaperLevels(int count)
{
    const double step = Single(255.0 / (count - 1));
    std::vector<int> levels;
    for (int i = 0; i < count; ++i)
        levels.push_back(std::clamp(static_cast<int>(i * step), 0, 255));
    return levels;
}

int BalancePoint(float balance)
{
    const double share =
        static_cast<double>(balance) * static_cast<double>(0.9f) + static_cast<double>(0.05f);
    return std::clamp(TowardZero(share * 255), 1, 254);
}

std::array<int, 256> PaperTable(int count, float balance)
{
    const std::vector<int> levels = PaperLevels(count);
    const double width = Single(255.0 / count);
    std::array<int, 256> quantised = {}, table = {};
    for (int i = 0; i < count; ++i)
        for (int j = static_cast<int>(i * width); j <= static_cast<int>((i + 1) * width); ++j)
            quantised.at(static_cast<std::size_t>(j)) = levels.at(static_cast<std::size_t>(i));
    quantised[255] = levels.back();
    const int middle = BalancePoint(balance);
    for (int i = 0; i < 256; ++i) {
        const int place = i < middle ? i * 127 / middle : 255 - (255 - i) * 127 / (255 - middle);
        table.at(static_cast<std::size_t>(i)) = quantised.at(static_cast<std::size_t>(place));
    }
    return table;
}

int PaperColorMix(int a, int b, int k)
{
    return (a * k + (255 - k) * b) >> 8;
}

int PaperGrey(int blue, int green, int red)
{
    const float r = 0.298f * static_cast<float>(red);
    const float g = 0.586f * static_cast<float>(green);
    const float b = 0.113f * static_cast<float>(blue);
    const float rg = r + g;
    const float sum = rg + b;
    const float grey = sum * 0.003921569f;
    const float level = grey * 255.0f;
    return static_cast<int>(level);
}

void PaperCollage(const VideoFrame& firstPicture, const VideoFrame& secondPicture, const VideoFrame& output,
                  const PaperCollageKnobs& knobs, double progress, bool halfHeight, bool hasSheets)
{
    const Rows in(firstPicture), secondRows(secondPicture);
    Rows out(output);
    out.format = in.format;
    const bool asIs = in.format == PF_BGRA8;
    const int width = std::min({in.width, secondRows.width, out.width});
    const int height = std::min({in.height, secondRows.height, out.height});

    const PaperCurve curve = CrossfadeCurve(progress, knobs.crossFade, knobs.tempo);
    const float amount = curve.amount;
    const Picture mix = PaperMix(ReadRows(in), ReadRows(secondRows), curve.fade);

    Picture result(width, height, in.format);
    CopyRect(ReadRows(out), 0, 0, width, height, result, 0, 0);
    // Alpha-last bytes are worked on where they are, at the dissolve's own size.
    Picture c = AsBytes(result, width, height);
    const Picture d = asIs ? mix : AsBytes(mix, width, height);

    PaperLuma(d, c);
    // Knobs and what they are scaled by are single, the constants are not.
    const float rounding = knobs.rounding * amount;
    const float shadow = knobs.shadow * amount;
    const int r = TowardZero(d.height * static_cast<double>(rounding) * 0.15);
    const Picture grey = c;
    PlainBlurOperation(grey, c, static_cast<float>(r), static_cast<float>(r), true, true);
    const int shadowDist = std::max(TowardZero(d.height * static_cast<double>(shadow) * 0.03), 0);
    if (hasSheets)
        PaperLayers(d, c, knobs, shadowDist, 1.0f - amount, halfHeight);

    const float hold = amount >= 0.5f ? 0.0f : static_cast<float>(1 - static_cast<double>(amount) / 0.5);
    if (asIs)
        result = c;
    else
        Convert(c, result);
    AddWeighted(mix, result, result, hold, 1.0f - hold);
    WriteRows(result, out);
}

} // namespace kelmora::reference

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "effects/common/precision.h"
#include "effects/painterly/crossfade.h"
#include "image/exact_math.h"

namespace kelmora::paper_collage {

inline constexpr int kMostLayers = 8;

/// The knobs as the host gave them, levels normalised, colours as 0x00BBGGRR.
struct Knobs {
    float balance = 0;
    float rounding = 0;
    float layers = 0;
    std::uint32_t foreground = 0;
    std::uint32_t background = 0;
    float shadow = 0;
    float blendColors = 0;
    float angle = 0;
    float tempo = 0;
    float crossFade = 0;
};

/// 2 to 8 sheets.
constexpr int LayersFor(float layers)
{
    return std::clamp(Truncate(static_cast<double>(layers) * 6.0), 0, kMostLayers - 2) + 2;
}

/// Size of the blur that rounds the paper's edges. `height` is that of the dissolve.
constexpr int RoundingSize(float rounding, int height)
{
    return std::max(Truncate(height * static_cast<double>(rounding) * 0.15), 0);
}

/// How far a sheet's shadow falls, in pixels.
constexpr int ShadowDistance(float shadow, int height)
{
    return std::max(Truncate(height * static_cast<double>(shadow) * 0.03), 0);
}

struct Offset {
    int x, y;
};

/// Where the shadow of a sheet falls. A field's line stands for two of the frame's, so its shadow is longer
/// across than down.
inline Offset ShadowOffset(float angle, int distance, bool halfHeight)
{
    const double back = 1.0 - static_cast<double>(angle);
    const double turn = (back + back) * 3.141592502593994;
    const SineCosine direction = ExactTurn(turn); // no numbers where the angle is none, and 0 pixels then
    const int across = Truncate(direction.cosine * distance);
    return {Truncate(across * (halfHeight ? 2.0 : 1.0)), Truncate(direction.sine * distance)};
}

/// (a * k + (255 - k) * b) >> 8.
// Kept: no exact mix. With 255 it is one less than `a`, and this loss is part of the picture.
constexpr int PaperColorMix(int a, int b, int k)
{
    return (a * k + (255 - k) * b) >> 8;
}

/// Greys of the sheets, from the lowest up.
struct Levels {
    int count = 0;
    std::array<int, kMostLayers> grey = {};
};

// Kept: with 8 sheets the top one is 254, with any other number 255.
constexpr Levels LevelsFor(int count)
{
    const double step = Single(255.0 / (count - 1));
    Levels levels = {count, {}};
    for (int i = 0; i < count; ++i)
        levels.grey[static_cast<std::size_t>(i)] = std::clamp(Truncate(i * step), 0, 255);
    return levels;
}

/// Which sheet each grey is on. Grey `balance` falls on the middle of the scale.
constexpr std::array<std::uint8_t, 256> SheetsFor(int count, float balance)
{
    const double width = Single(255.0 / count);
    std::array<std::uint8_t, 256> even = {};
    for (std::size_t j = 0; j < even.size(); ++j) {
        // A border belongs to the higher sheet.
        const int i = std::min(static_cast<int>(static_cast<double>(j) / width), count - 1);
        const bool next = i + 1 < count && Truncate((i + 1) * width) <= static_cast<int>(j);
        even[j] = static_cast<std::uint8_t>(next ? i + 1 : i);
    }
    even[255] = static_cast<std::uint8_t>(count - 1);

    const double middle = (static_cast<double>(balance) * Single(0.9) + Single(0.05)) * 255.0;
    const int point = std::clamp(Truncate(middle), 1, 254);
    std::array<std::uint8_t, 256> sheets = {};
    for (int i = 0; i < 256; ++i) {
        const int at = i < point ? i * 127 / point : 255 - (255 - i) * 127 / (255 - point);
        sheets[static_cast<std::size_t>(i)] = even[static_cast<std::size_t>(at)];
    }
    return sheets;
}

/// Blue, green, red.
struct Colour {
    int b = 0, g = 0, r = 0;
};

/// 0x00BBGGRR.
constexpr Colour ColourOf(std::uint32_t bbggrr)
{
    return {static_cast<int>(bbggrr >> 16 & 255), static_cast<int>(bbggrr >> 8 & 255),
            static_cast<int>(bbggrr & 255)};
}

constexpr Colour Mix(const Colour& a, const Colour& b, int k)
{
    return {PaperColorMix(a.b, b.b, k), PaperColorMix(a.g, b.g, k), PaperColorMix(a.r, b.r, k)};
}

/// A share of 0 to 1 in 255ths.
constexpr int Share255(double share)
{
    return std::clamp(Truncate(share * 255.0), 0, 255);
}

} // namespace kelmora::paper_collage

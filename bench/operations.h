#pragma once

#include <array>

#include "bench/cases.h"

namespace kelmora::bench {

// What every maker is asked for, in one place. Lengths are in pixels of the picture at hand.

inline constexpr int kTentTaps[] = {21, 100, 216};
inline constexpr int kMedianSides[] = {15, 55}; ///< of the mask, radius 7 and 27
inline constexpr int kRowTaps = 21;             ///< of the filters with any kernel
inline constexpr int kPad = 50;                 ///< on every side
inline constexpr double kFirstShare = 0.3, kSecondShare = 0.7;
inline constexpr std::uint32_t kFill = 0x80402010; ///< 0xAARRGGBB

/// A little more colour and contrast: rows make blue, green and red; the fourth number is added.
inline constexpr float kTwist[3][4] = {
    {1.25f, -0.15f, -0.1f, 0.0f}, {-0.1f, 1.2f, -0.1f, 0.0f}, {-0.1f, -0.15f, 1.25f, 0.0f}};

/// Of the sharpening mask, in eighths; 16 in the middle.
inline constexpr int kSharpenCentre = 16, kSharpenAround = -1;

/// The part that a resize makes as large as the picture: nine tenths each way.
struct Part {
    int left, top, width, height;
};
inline Part ResizedPart(int width, int height)
{
    return {width / 20, height / 20, width - width / 10, height - height / 10};
}

struct Interpolation {
    const char* name;
    int quality; ///< of ImageOps::ResizeRect
};
inline constexpr Interpolation kInterpolations[] = {
    {"Resize, linear", 1}, {"Resize, cubic", 2}, {"Resize, Lanczos", 3}};

/// An affine map from picture to result: its 2 by 2 part, and a shift that is meant for 1080 rows.
struct Move {
    const char* name;
    double matrix[2][2];
    double shift[2];
};
inline constexpr Move kMoves[] = {
    {"Affine, 12 degrees", {{1.0645, -0.2270}, {0.2270, 1.0645}}, {60.5, -250.25}},
    {"Zoom, 1.1 fold", {{1.1, 0}, {0, 1.1}}, {-96.3, -54.7}},
    {"Shift by fractions", {{1, 0}, {0, 1}}, {10.3, -6.6}},
};

/// The map's two rows for a picture of `height` rows. The shift keeps its fractions of a pixel.
using AffineRows = std::array<std::array<double, 3>, 2>;
inline AffineRows RowsOf(const Move& move, int height)
{
    const double scale = height / 1080.0;
    const auto moved = [&](double shift) {
        return static_cast<int>(shift * scale) + shift - static_cast<int>(shift);
    };
    return {{{move.matrix[0][0], move.matrix[0][1], moved(move.shift[0])},
             {move.matrix[1][0], move.matrix[1][1], moved(move.shift[1])}}};
}

/// Where a picture's corner pixels come to stand under the perspective map, clockwise from the top left.
using Corners = std::array<std::array<double, 2>, 4>;
inline Corners CornersOf(int width, int height)
{
    const double w = width, h = height;
    return {{{0.0575 * w, 0.0557 * h},
             {0.9325 * w, -0.0279 * h},
             {0.8598 * w, 0.9638 * h},
             {0.1251 * w, 1.0376 * h}}};
}

} // namespace kelmora::bench

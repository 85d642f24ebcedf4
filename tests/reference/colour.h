#pragma once

#include <array>

#include "tests/reference/picture.h"

namespace kelmora::reference {

// --- hue, saturation, value ---------------------------------------------------------------------------

/// Blue, green, red from 0 to 1, or to 255 for bytes.
struct Colour {
    double blue = 0, green = 0, red = 0;
};

/// Hue is a part of a turn that begins at blue and goes by green to red, 0 to 1, or to 255 for bytes.
struct Hsv {
    double hue = 0, saturation = 0, value = 0;
};

/// In double, not rounded.
Hsv HsvOf(const Colour& colour);

/// In double, not rounded. A hue outside of the three ranges gives the grey of the value.
Colour ColourOf(const Hsv& hsv);

/// Whole numbers from 0 to 255, each result the nearest to the exact fraction, ties to even.
Hsv ByteHsvOf(int blue, int green, int red);
Colour ByteColourOf(int hue, int saturation, int value);

/// Whole pictures of one format, over the common size. False for formats that are no pictures.
bool RGBToHSV(const Picture& src, Picture& dst);
bool HSVToRGB(const Picture& src, Picture& dst);

// --- linear changes ------------------------------------------------------------------------------------

/// New channel r = row[r][0] * c0 + row[r][1] * c1 + row[r][2] * c2 + row[r][3].
using TwistRows = std::array<std::array<float, 4>, 3>;

/// One pixel's three channels; products and sums in single precision, from left to right.
std::array<float, 3> Twisted(const TwistRows& twist, const std::array<float, 3>& channels);

/// 255 and more give 255, 0 and less 0, the rest goes to nearest, ties to even; not-a-number gives 0.
int ByteOfTwist(float value);

/// Three channels from `first` on, of bytes or floats; the other channel of `dst` stays.
void Twist(const Picture& src, Picture& dst, const TwistRows& twist, int first = 0);

/// Row vectors times matrix; the sums in double, each element of a product rounded to single precision.
struct Matrix {
    float m[5][5] = {
        {1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1},
    };
};

/// left * right; column 4 is that of `kept`.
Matrix Product(const Matrix& left, const Matrix& right, const Matrix& kept);

/// The matrix of a colour adjustment, knobs from 0 to 1. The offset is in levels for bytes.
Matrix AdjustMatrix(float contrast, float brightness, float saturation, float hue, bool floats);

/// Colours through that matrix, floats clamped to 0..1, then the alpha of `src`. Formats that are no pictures
/// are copied, except Packed8, whose copy writes nothing.
void AdjustColor(const Picture& src, Picture& dst, float contrast, float brightness, float saturation,
                 float hue);

} // namespace kelmora::reference

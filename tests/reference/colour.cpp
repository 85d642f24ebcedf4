#include "tests/reference/colour.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "tests/reference/copies.h"
#include "tests/reference/rounding.h"

namespace kelmora::reference {
namespace {

constexpr float kLevel = 0.003921569f;

bool IsColourPicture(const Picture& picture)
{
    return picture.format == PF_BGRA8 || picture.format == PF_ARGB8 || picture.format == PF_BGRA32F
        || picture.format == PF_ARGB32F;
}

/// The nearest whole number to a fraction of whole numbers that are not negative, ties to even.
int Nearest(std::int64_t numerator, std::int64_t denominator)
{
    const std::int64_t below = numerator / denominator, twice = 2 * (numerator % denominator);
    const bool up = twice > denominator || (twice == denominator && below % 2 != 0);
    return static_cast<int>(up ? below + 1 : below);
}

int TruncatedLevel(double value)
{
    const double scaled = value * 255.0;
    return std::isnan(scaled) ? 0 : static_cast<int>(std::clamp(scaled, 0.0, 255.0));
}

/// A result as a picture of the format holds it; BGRA8 has whole numbers already.
double Stored(double value, std::uint32_t format)
{
    if (format == PF_BGRA8)
        return value;
    const double rounded = RoundedToFloat(value);
    return format == PF_ARGB8 ? TruncatedLevel(rounded) : rounded;
}

template <class Each>
void ForEachPixel(const Picture& src, const Picture& dst, Each&& each)
{
    for (int y = 0; y < std::min(src.height, dst.height); ++y)
        for (int x = 0; x < std::min(src.width, dst.width); ++x)
            each(x, y);
}

Matrix RotationOf(double degrees, int axisA, int axisB)
{
    constexpr double pi = 3.14159265358979323846;
    const float cosine = static_cast<float>(std::cos(degrees * pi / 180));
    const float sine = static_cast<float>(std::sin(degrees * pi / 180));
    Matrix r;
    r.m[axisA][axisA] = cosine;
    r.m[axisB][axisB] = cosine;
    r.m[axisB][axisA] = sine;
    r.m[axisA][axisB] = -sine;
    return r;
}

/// order: not 0 puts `change` before `m`, as the left factor.
void Combine(const Matrix& change, Matrix& m, int order)
{
    m = order != 0 ? Product(change, m, m) : Product(m, change, m);
}

void Shear(Matrix& m, float a, int order)
{
    Matrix shear;
    shear.m[1][0] = a;
    Combine(shear, m, order);
}

// Axes of turns around X, Y and Z.
void TurnX(Matrix& m, double degrees, int order)
{
    Combine(RotationOf(degrees, 2, 1), m, order);
}
void TurnY(Matrix& m, double degrees, int order)
{
    Combine(RotationOf(degrees, 0, 2), m, order);
}
void TurnZ(Matrix& m, double degrees, int order)
{
    Combine(RotationOf(degrees, 1, 0), m, order);
}

void TurnHue(Matrix& m, double degrees)
{
    Matrix a;
    TurnZ(a, 45, 0);
    TurnY(a, -35, 1);
    const float v[4] = {0.082f, 0.6094f, 0.3086f, 1.0f};
    double turned[3];
    for (int i = 0; i < 3; ++i) {
        double sum = static_cast<double>(a.m[4][i]);
        for (int k = 0; k < 4; ++k)
            sum += static_cast<double>(v[k]) * static_cast<double>(a.m[k][i]);
        turned[i] = RoundedToFloat(sum);
    }
    const float p = static_cast<float>(turned[0] / turned[2]); // the second factor of a shear has no effect
    Shear(a, p, 1);
    Matrix b;
    Shear(b, -p, 0);
    TurnY(b, 35, 1);
    TurnZ(b, -45, 1);
    Combine(a, m, 1);
    TurnX(m, degrees, 1);
    Combine(b, m, 1);
}

} // namespace

Hsv HsvOf(const Colour& colour)
{
    const double r = colour.red, g = colour.green, b = colour.blue;
    const double most = std::max({r, g, b}), least = std::min({r, g, b});
    Hsv hsv{0, 0, most};
    if (!(most > 0 && least < most))
        return hsv;
    hsv.saturation = (most - least) / most;
    const double d = 1 / (most - least);
    const double nearRed = (most - r) * d, nearGreen = (most - g) * d, nearBlue = (most - b) * d;
    double h;
    if (most == b)
        h = nearRed - nearGreen;
    else if (most == g)
        h = nearBlue + 2 - nearRed;
    else
        h = nearGreen + 4 - nearBlue;
    h *= 60;
    if (h < 0)
        h += 360;
    hsv.hue = h / 360;
    return hsv;
}

Colour ColourOf(const Hsv& hsv)
{
    const double v = hsv.value;
    Colour grey{v, v, v};
    if (!(hsv.saturation > 0))
        return grey;
    double h = hsv.hue * 360;
    if (h >= 300)
        h -= 360;
    h /= 60;
    const double low = (1 - hsv.saturation) * v, c = v - low;
    if (h >= -1 && h < 1) {
        const double t = h * c;
        return t < 0 ? Colour{v, low, low - t} : Colour{v, t + low, low};
    }
    if (h >= 1 && h < 3) {
        const double t = (h - 2) * c;
        return t < 0 ? Colour{low - t, v, low} : Colour{low, v, t + low};
    }
    if (h >= 3 && h < 5) {
        const double t = (h - 4) * c;
        return t < 0 ? Colour{low, low - t, v} : Colour{t + low, low, v};
    }
    return grey;
}

Hsv ByteHsvOf(int blue, int green, int red)
{
    const int most = std::max({blue, green, red}), least = std::min({blue, green, red});
    const int d = most - least;
    if (d == 0)
        return {0, 0, static_cast<double>(most)};
    // The hue in sixths of a turn is sixths / d.
    int sixths;
    if (most == blue)
        sixths = green - red;
    else if (most == green)
        sixths = 2 * d + red - blue;
    else
        sixths = 4 * d + blue - green;
    if (sixths < 0)
        sixths += 6 * d;
    return {static_cast<double>(Nearest(std::int64_t{255} * sixths, 6 * d)),
            static_cast<double>(Nearest(std::int64_t{255} * d, most)), static_cast<double>(most)};
}

Colour ByteColourOf(int hue, int saturation, int value)
{
    const auto level = [](int whole) { return static_cast<double>(whole); };
    if (saturation == 0)
        return {level(value), level(value), level(value)};
    // Sixths of a turn are sixths / 255.
    int sixths = 6 * hue;
    if (sixths >= 5 * 255)
        sixths -= 6 * 255;
    const int sector = sixths < 255 ? 0 : sixths < 3 * 255 ? 2 : 4;
    const int off = sixths - sector * 255;
    // low = (255 - s) * v / 255, and between: low + |off| / 255 * s / 255 * v.
    const std::int64_t one = 255;
    const double low = level(Nearest((one - saturation) * value, one));
    const double between = level(Nearest(
        (one - saturation) * value * one + std::int64_t{std::abs(off)} * saturation * value, one * one));
    const double v = level(value);
    if (sector == 0)
        return off < 0 ? Colour{v, low, between} : Colour{v, between, low};
    if (sector == 2)
        return off < 0 ? Colour{between, v, low} : Colour{low, v, between};
    return off < 0 ? Colour{low, between, v} : Colour{between, low, v};
}

bool RGBToHSV(const Picture& src, Picture& dst)
{
    if (!IsColourPicture(src) || dst.format != src.format)
        return false;
    ForEachPixel(src, dst, [&](int x, int y) {
        const int place = src.AlphaPlace();
        const auto of = [&](int i) { return src.At(x, y, place == 0 ? 3 - i : i); };
        const double alpha = of(3);
        Hsv hsv;
        if (src.floats) {
            hsv = HsvOf({of(0), of(1), of(2)});
        } else if (src.format == PF_BGRA8) {
            hsv = ByteHsvOf(static_cast<int>(of(0)), static_cast<int>(of(1)), static_cast<int>(of(2)));
        } else {
            const double level = static_cast<double>(kLevel);
            hsv = HsvOf({RoundedToFloat(of(0) * level), RoundedToFloat(of(1) * level),
                         RoundedToFloat(of(2) * level)});
        }
        const double values[] = {hsv.hue, hsv.saturation, hsv.value};
        for (int c = 0; c < 3; ++c)
            dst.At(x, y, c) = Stored(values[c], src.format);
        dst.At(x, y, 3) = alpha;
    });
    return true;
}

bool HSVToRGB(const Picture& src, Picture& dst)
{
    if (!IsColourPicture(src) || dst.format != src.format)
        return false;
    ForEachPixel(src, dst, [&](int x, int y) {
        const double h = src.At(x, y, 0), s = src.At(x, y, 1), v = src.At(x, y, 2);
        const double alpha = src.At(x, y, 3);
        Colour colour;
        if (src.floats) {
            colour = ColourOf({h, s, v});
        } else if (src.format == PF_BGRA8) {
            colour = ByteColourOf(static_cast<int>(h), static_cast<int>(s), static_cast<int>(v));
        } else {
            const double level = static_cast<double>(kLevel);
            colour =
                ColourOf({RoundedToFloat(h * level), RoundedToFloat(s * level), RoundedToFloat(v * level)});
        }
        const double values[] = {colour.blue, colour.green, colour.red};
        const int place = src.AlphaPlace();
        for (int i = 0; i < 3; ++i)
            dst.At(x, y, place == 0 ? 3 - i : i) = Stored(values[i], src.format);
        dst.At(x, y, place) = alpha;
    });
    return true;
}

std::array<float, 3> Twisted(const TwistRows& twist, const std::array<float, 3>& channels)
{
    std::array<float, 3> result{};
    for (std::size_t r = 0; r < 3; ++r) {
        const float first = twist[r][0] * channels[0];
        const float second = twist[r][1] * channels[1];
        const float third = twist[r][2] * channels[2];
        const float two = first + second;
        const float three = two + third;
        result[r] = three + twist[r][3];
    }
    return result;
}

int ByteOfTwist(float value)
{
    if (!(value > 0.0f))
        return 0;
    if (value >= 255.0f)
        return 255;
    const float below = std::floor(value), part = value - below;
    const int whole = static_cast<int>(below);
    return whole + (part > 0.5f || (part == 0.5f && whole % 2 != 0) ? 1 : 0);
}

void Twist(const Picture& src, Picture& dst, const TwistRows& twist, int first)
{
    ForEachPixel(src, dst, [&](int x, int y) {
        std::array<float, 3> channels{};
        for (int c = 0; c < 3; ++c)
            channels[static_cast<std::size_t>(c)] = static_cast<float>(src.At(x, y, first + c));
        const std::array<float, 3> turned = Twisted(twist, channels);
        for (int c = 0; c < 3; ++c) {
            const float value = turned[static_cast<std::size_t>(c)];
            dst.At(x, y, first + c) = src.floats ? static_cast<double>(value) : ByteOfTwist(value);
        }
    });
}

Matrix Product(const Matrix& left, const Matrix& right, const Matrix& kept)
{
    Matrix result;
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 4; ++column) {
            double sum = 0;
            for (int k = 0; k < 5; ++k)
                sum += static_cast<double>(left.m[row][k]) * static_cast<double>(right.m[k][column]);
            result.m[row][column] = static_cast<float>(sum);
        }
        result.m[row][4] = kept.m[row][4];
    }
    return result;
}

Matrix AdjustMatrix(float contrast, float brightness, float saturation, float hue, bool floats)
{
    const double k = static_cast<double>(contrast);
    const double c = k < 0.5 ? k * 0.4575 / 0.5 : 1 - (1 - k) * (1 - 0.4575) / 0.5;
    const float gain = static_cast<float>(c * c * 3.8 + 0.2);
    const float factor = static_cast<float>(std::pow(static_cast<double>(saturation), 1.58496) * 3);
    const double light = static_cast<double>(brightness);
    const float offset = static_cast<float>(floats ? light * 2 - 1 : light * 512 - 256);
    const float degrees = static_cast<float>(180 - static_cast<double>(hue) * 360);

    Matrix m;
    Matrix scale;
    for (int i = 0; i < 3; ++i)
        scale.m[i][i] = gain;
    Combine(scale, m, 0);
    Matrix shift;
    for (int i = 0; i < 3; ++i)
        shift.m[4][i] = offset;
    Combine(shift, m, 1);

    const double t = 1 - static_cast<double>(factor);
    const double weights[3] = {0.3086 * t, 0.6094 * t, 0.082 * t};
    Matrix grey;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            grey.m[row][column] =
                static_cast<float>(weights[row] + (row == column ? static_cast<double>(factor) : 0.0));
    Combine(grey, m, 1);
    TurnHue(m, static_cast<double>(degrees));
    return m;
}

void AdjustColor(const Picture& src, Picture& dst, float contrast, float brightness, float saturation,
                 float hue)
{
    if (src.format == PF_Packed8)
        return;
    if (!IsColourPicture(src)) {
        CopyRect(src, 0, 0, src.width, src.height, dst, 0, 0);
        return;
    }
    const Matrix m = AdjustMatrix(contrast, brightness, saturation, hue, src.floats);
    TwistRows twist{};
    for (std::size_t r = 0; r < 3; ++r)
        twist[r] = {m.m[0][r], m.m[1][r], m.m[2][r], m.m[4][r]};

    const bool alphaFirst = src.AlphaPlace() == 0;
    const Picture before = alphaFirst ? ReversedChannels(src) : src;
    Picture turned = before;
    Twist(before, turned, twist);
    if (src.floats)
        for (double& value : turned.values)
            value = std::isnan(value) ? 0 : std::clamp(value, 0.0, 1.0);
    if (alphaFirst)
        turned = ReversedChannels(turned);
    CopyRect(turned, 0, 0, src.width, src.height, dst, 0, 0);
    CopyChannel(src, dst, src.AlphaPlace(), src.AlphaPlace());
}

} // namespace kelmora::reference

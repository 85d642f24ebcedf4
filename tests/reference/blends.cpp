#include "tests/reference/blends.h"

#include <algorithm>
#include <cmath>

#include "tests/reference/copies.h"
#include "tests/reference/rounding.h"

namespace kelmora::reference {
namespace {

constexpr float kLevel = 0.003921569f;

int Byte(double value)
{
    return static_cast<int>(value);
}

bool IsColour(const Picture& picture)
{
    return picture.format == PF_BGRA8 || picture.format == PF_ARGB8 || picture.format == PF_BGRA32F
        || picture.format == PF_ARGB32F;
}

/// Toward zero, cut to a byte; not-a-number counts as 0.
int WeightOf(float weight)
{
    const double scaled = static_cast<double>(weight) * 255 + 0.5;
    return std::isnan(scaled) ? 0 : static_cast<int>(std::clamp(scaled, 0.0, 255.0));
}

float Clamped(float weight)
{
    return std::isnan(weight) ? 0.0f : std::clamp(weight, 0.0f, 1.0f);
}

template <class Each>
void ForEachPixel(int width, int height, Each&& each)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            each(x, y);
}

} // namespace

double FloatOfLevel(int level)
{
    return static_cast<double>(static_cast<float>(level) * kLevel);
}

int LevelOfFloat(double value)
{
    if (!(value > 0))
        return 0;
    return static_cast<int>(std::min(value, 1.0) * 255.0 + 0.5);
}

int ScaledProduct(int a, int b)
{
    const int p = a * b;
    return (p + (p >> 8) + 1) >> 8;
}

bool Convert(const Picture& src, Picture& dst)
{
    const auto pair = [&](std::uint32_t from, std::uint32_t to) {
        return src.format == from && dst.format == to;
    };
    const bool reversed = pair(PF_BGRA8, PF_ARGB32F) || pair(PF_ARGB32F, PF_BGRA8) || pair(PF_ARGB8, PF_BGRA8)
        || pair(PF_BGRA8, PF_ARGB8) || pair(PF_BGRA32F, PF_ARGB32F) || pair(PF_ARGB32F, PF_BGRA32F);
    const bool straight = pair(PF_BGRA8, PF_BGRA32F) || pair(PF_ARGB8, PF_ARGB32F)
        || pair(PF_BGRA32F, PF_BGRA8) || pair(PF_ARGB32F, PF_ARGB8);
    if (!reversed && !straight)
        return false;
    ForEachPixel(std::min(src.width, dst.width), std::min(src.height, dst.height), [&](int x, int y) {
        double before[4];
        for (int c = 0; c < 4; ++c)
            before[c] = src.At(x, y, c);
        for (int c = 0; c < 4; ++c) {
            const double value = before[reversed ? 3 - c : c];
            double& to = dst.At(x, y, c);
            if (src.floats == dst.floats)
                to = value;
            else if (dst.floats)
                to = FloatOfLevel(Byte(value));
            else
                to = LevelOfFloat(value);
        }
    });
    return true;
}

void AlphaOver(const Picture& a, const Picture& b, Picture& out, bool premultiplied)
{
    const int place = a.AlphaPlace();
    const int width = std::min({a.width, b.width, out.width});
    const int height = std::min({a.height, b.height, out.height});
    ForEachPixel(width, height, [&](int x, int y) {
        double over[4];
        for (int c = 0; c < 4; ++c) {
            const double ac = a.At(x, y, c), bc = b.At(x, y, c);
            const double aa = a.At(x, y, place), ba = b.At(x, y, place);
            const int ia = Byte(ac), ib = Byte(bc), iaa = Byte(aa), iba = Byte(ba);
            if (a.floats && premultiplied) {
                over[c] = RoundedToFloat((1 - aa) * bc + ac);
            } else if (a.floats) {
                const double t = (1 - aa) * ba;
                over[c] = RoundedToFloat(c == place ? aa + t : ac * aa + t * bc);
            } else if (a.format == PF_ARGB8 && premultiplied) {
                over[c] = std::min(ia + ib * (255 - iaa) / 255, 255);
            } else if (a.format == PF_ARGB8) {
                const int t = (255 - iaa) * iba / 255;
                over[c] = std::min(c == place ? iaa + t : (ia * iaa + ib * t) / 255, 255);
            } else if (premultiplied) {
                over[c] = std::min(ia + ScaledProduct(ib, 255 - iaa), 255);
            } else {
                const int under = ScaledProduct(c == place ? iba : ScaledProduct(ib, iba), 255 - iaa);
                over[c] = ((c == place ? iaa : ScaledProduct(ia, iaa)) + under) % 256;
            }
        }
        for (int c = 0; c < 4; ++c)
            out.At(x, y, c) = over[c];
    });
}

bool AddWeighted(const Picture& a, const Picture& b, Picture& out, float wa, float wb)
{
    if (!IsColour(a) || b.format != a.format || out.format != a.format)
        return false;
    const float fa = Clamped(wa), fb = Clamped(wb);
    const float sum = fa + fb;
    const int ia = WeightOf(wa), ib = WeightOf(wb);
    const int width = std::min({a.width, b.width, out.width});
    const int height = std::min({a.height, b.height, out.height});
    ForEachPixel(width, height, [&](int x, int y) {
        for (int c = 0; c < 4; ++c) {
            const double ac = a.At(x, y, c), bc = b.At(x, y, c);
            if (a.floats) {
                const double value =
                    RoundedToFloat(ac * static_cast<double>(fa) + bc * static_cast<double>(fb));
                out.At(x, y, c) = sum > 1.0f ? std::min(value, 1.0) : value;
            } else {
                const int value = (Byte(ac) * ia + Byte(bc) * ib) / 255;
                out.At(x, y, c) = ia + ib < 256 ? value : std::min(value, 255);
            }
        }
    });
    return true;
}

bool Mix(const Picture& a, Picture& b, int wa, int wb)
{
    if ((!IsColour(a) && a.format != PF_Mask8) || b.format != a.format)
        return false;
    wa = std::clamp(wa, 0, 255);
    wb = std::clamp(wb, 0, 255);
    const bool half = wa == 128 && wb == 128 && a.format != PF_Mask8;
    ForEachPixel(std::min(a.width, b.width), std::min(a.height, b.height), [&](int x, int y) {
        for (int c = 0; c < a.channels; ++c) {
            const double from = a.At(x, y, c);
            double& to = b.At(x, y, c);
            if (a.floats && half) {
                to = RoundedToFloat(RoundedToFloat(from + to) * 0.5);
            } else if (a.floats) {
                to = RoundedToFloat(RoundedToFloat(from * FloatOfLevel(wa))
                                    + RoundedToFloat(to * FloatOfLevel(wb)));
            } else if (half) {
                const int s = Byte(from) + Byte(to);
                to = (s + ((s >> 1) & 1)) >> 1;
            } else {
                to = std::min(ScaledProduct(Byte(from), wa) + ScaledProduct(Byte(to), wb), 255);
            }
        }
    });
    return true;
}

bool Premultiply(const Picture& src, Picture& dst)
{
    if (!IsColour(src) || dst.format != src.format)
        return false;
    const int place = src.AlphaPlace();
    ForEachPixel(std::min(src.width, dst.width), std::min(src.height, dst.height), [&](int x, int y) {
        const double alpha = src.At(x, y, place);
        for (int c = 0; c < 4; ++c) {
            const double value = src.At(x, y, c);
            double& to = dst.At(x, y, c);
            if (c == place) {
                if (src.format == PF_BGRA8)
                    to = alpha;
            } else if (src.floats) {
                to = RoundedToFloat(value * alpha);
            } else if (src.format == PF_ARGB8) {
                to = Byte(value) * Byte(alpha) / 255;
            } else {
                to = ScaledProduct(Byte(value), Byte(alpha));
            }
        }
    });
    return true;
}

bool Fill(Picture& picture, std::uint32_t colour)
{
    int bytes[4]; // low byte first: B, G, R, A
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<int>((colour >> (8 * i)) & 255);
    if (picture.format == PF_Packed8)
        return false;
    ForEachPixel(picture.width, picture.height, [&](int x, int y) {
        for (int c = 0; c < picture.channels; ++c) {
            const bool turned = picture.format == PF_ARGB32F;
            const int level = bytes[turned ? 3 - c : c];
            picture.At(x, y, c) = picture.floats ? FloatOfLevel(level) : level;
        }
    });
    return true;
}

bool SetChannel(Picture& picture, int channel, int value)
{
    if (!IsColour(picture))
        return false;
    ForEachPixel(picture.width, picture.height, [&](int x, int y) {
        picture.At(x, y, channel) = picture.floats ? FloatOfLevel(value) : value;
    });
    return true;
}

bool Tint(const Picture& src, Picture& dst, std::uint32_t colour)
{
    if (!IsColour(src) || dst.format != src.format)
        return false;
    const int place = src.AlphaPlace();
    ForEachPixel(std::min(src.width, dst.width), std::min(src.height, dst.height), [&](int x, int y) {
        const auto of = [&](int i) { return src.At(x, y, place == 0 ? 3 - i : i); };
        const double blue = of(0), green = of(1), red = of(2);
        const double sum = 0.298 * red + 0.586 * green + 0.113 * blue;
        for (int i = 0; i < 4; ++i) {
            const int level = i == 3 ? 0 : static_cast<int>((colour >> (8 * (2 - i))) & 255); // 0x00BBGGRR
            double& to = dst.At(x, y, place == 0 ? 3 - i : i);
            if (src.floats) {
                const double luma = std::min(sum, 1.0);
                to = RoundedToFloat(luma * (i == 3 ? static_cast<double>(kLevel) : FloatOfLevel(level)));
            } else {
                const double v = sum * static_cast<double>(kLevel);
                to = i == 3 ? Byte(v) : Byte(v * level);
            }
        }
    });
    return true;
}

} // namespace kelmora::reference

#include "image/primitives/hsv_kernels.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/variants.h"
#include "tests/reference/colour.h"
#include "tests/reference/rounding.h"

namespace kelmora {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct Pixel {
    float first, second, third, fourth;
};

template <class Check>
void ForEachKernels(Check&& check)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant))
            check(HsvKernelsFor(variant));
}

float Rounded(double value)
{
    return static_cast<float>(reference::RoundedToFloat(value));
}

Pixel PlainHsv(float blue, float green, float red, float alpha)
{
    const reference::Hsv hsv =
        reference::HsvOf({static_cast<double>(blue), static_cast<double>(green), static_cast<double>(red)});
    return {Rounded(hsv.hue), Rounded(hsv.saturation), Rounded(hsv.value), alpha};
}

/// Blue, green, red.
Pixel PlainRgb(const Pixel& hsv)
{
    const reference::Colour colour = reference::ColourOf(
        {static_cast<double>(hsv.first), static_cast<double>(hsv.second), static_cast<double>(hsv.third)});
    return {Rounded(colour.blue), Rounded(colour.green), Rounded(colour.red), hsv.fourth};
}

/// Every bit, but for zeros and what is not a number.
void ExpectSame(float actual, float expected, const Pixel& of)
{
    const bool same = actual == expected || (std::isnan(actual) && std::isnan(expected));
    ASSERT_TRUE(same) << std::hexfloat << static_cast<double>(actual) << ", expected "
                      << static_cast<double>(expected) << ", of " << static_cast<double>(of.first) << ", "
                      << static_cast<double>(of.second) << ", " << static_cast<double>(of.third);
}

void ExpectSame(const Pixel& actual, const Pixel& expected, const Pixel& of)
{
    ExpectSame(actual.first, expected.first, of);
    ExpectSame(actual.second, expected.second, of);
    ExpectSame(actual.third, expected.third, of);
    ExpectSame(actual.fourth, expected.fourth, of);
}

class Numbers {
public:
    std::uint32_t Next() { return m_state = m_state * 1664525u + 1013904223u; }
    float Level() { return static_cast<float>(Next() >> 8) / 16777216.0f; }
    /// Any size from 2^-120 to 2^120, either sign.
    float Wide() { return std::bit_cast<float>((Next() & 0x807FFFFFu) | (7u + Next() % 241u) << 23); }

private:
    std::uint32_t m_state = 1;
};

std::vector<Pixel> ManyColours()
{
    const float levels[] = {0.0f, 1e-45f, 1e-40f, 0.1f, 0.5f, 0.7f, 1.0f, 1.5f, -0.3f, 1e38f, -0.0f};
    std::vector<Pixel> pixels;
    for (const float blue : levels)
        for (const float green : levels)
            for (const float red : levels)
                pixels.push_back({blue, green, red, -green});
    Numbers numbers;
    for (int i = 0; i < 60000; ++i) {
        pixels.push_back({numbers.Level(), numbers.Level(), numbers.Level(), numbers.Level()});
        pixels.push_back({numbers.Wide(), numbers.Wide(), numbers.Wide(), numbers.Wide()});
        // Levels of bytes, two of them next to each other.
        const float level = static_cast<float>(numbers.Next() >> 24) * 0.003921569f;
        pixels.push_back({level, std::nextafter(level, 2.0f), numbers.Level(), 1.0f});
    }
    return pixels;
}

std::vector<Pixel> ManyHues()
{
    std::vector<Pixel> pixels;
    Numbers numbers;
    for (int twelfths = -4; twelfths <= 26; ++twelfths) {
        const float edge = static_cast<float>(twelfths / 12.0);
        float below = edge, above = edge;
        for (int i = 0; i < 4; ++i) {
            for (const float saturation : {0.0f, -0.0f, -1.0f, 0.3f, 1.0f, 2.0f, kInfinity, NAN})
                for (const float value : {0.0f, 0.3f, 1.0f, -0.5f, 1e38f})
                    for (const float hue : {below, above})
                        pixels.push_back({hue, saturation, value, 0.5f});
            below = std::nextafter(below, -kInfinity);
            above = std::nextafter(above, kInfinity);
        }
    }
    for (const float hue : {NAN, kInfinity, -kInfinity, 3e38f, -3e38f, 1e-45f, -1e-45f, -0.0f})
        pixels.push_back({hue, 1.0f, 0.75f, 0.25f});
    for (int i = 0; i < 60000; ++i) {
        pixels.push_back({numbers.Level(), numbers.Level(), numbers.Level(), numbers.Level()});
        pixels.push_back({numbers.Level() * 2.2f - 0.2f, numbers.Wide(), numbers.Wide(), numbers.Wide()});
    }
    return pixels;
}

Pixel Reversed(const Pixel& pixel)
{
    return {pixel.fourth, pixel.third, pixel.second, pixel.first};
}

TEST(HsvKernels, FloatColours_AreTheDoubleResultRoundedOnce)
{
    const std::vector<Pixel> src = ManyColours();
    std::vector<Pixel> expected, reversed;
    for (const Pixel& p : src) {
        expected.push_back(PlainHsv(p.first, p.second, p.third, p.fourth));
        reversed.push_back(Reversed(p));
    }
    const int count = static_cast<int>(src.size());
    ForEachKernels([&](const HsvKernels& kernels) {
        std::vector<Pixel> bgra(src.size()), argb(reversed); // the second one in place
        kernels.bgra32fToHsv(src.data(), bgra.data(), count);
        kernels.argb32fToHsv(argb.data(), argb.data(), count);
        for (std::size_t i = 0; i < src.size() && !testing::Test::HasFatalFailure(); ++i) {
            ExpectSame(bgra[i], expected[i], src[i]);
            ExpectSame(argb[i], expected[i], src[i]);
        }
    });
}

TEST(HsvKernels, QuotientsAtATie_AreDivided)
{
    // A product with a reciprocal lies a last bit of a double beside the quotient, which a float shows where the one is
    // half-way between two floats or next to it and the other is not.
    //
    // Red 49/64 over 49/64 * 2^-25: the saturation is 1 - 2^-25, half-way to 1, which is even; times the reciprocal
    // of 49/64 it is less.
    //
    // Blue 1/4, red 49 below it, green 343 * 2^-26 below it: 49 times the reciprocal of 49 is 1 - 2^-53 in double, so that
    // the hue in sixths of a turn is 1 - 7 * 2^-26 - 2^-53. Times 60 that goes to 60 * (1 - 7 * 2^-26) - 2^-47, and over
    // 360 to 22369619 * 2^-27 - 2^-55: below half-way between 11184809 and 11184810 times 2^-26. Times the reciprocal of
    // 360 it is half-way, and so are 49/49 and 343/49, and the even float is the larger one.
    constexpr float least = 49.0f / 64 * 0x1p-25f;
    const Pixel src[] = {{least, least, 49.0f / 64, 1.0f}, {0.25f, 0.25f - 343 * 0x1p-26f, 0.25f - 49, 1.0f}};
    ForEachKernels([&](const HsvKernels& kernels) {
        Pixel hsv[2];
        kernels.bgra32fToHsv(src, hsv, 2);
        EXPECT_EQ(hsv[0].second, 1.0f);
        EXPECT_EQ(hsv[1].first, 11184809 * 0x1p-26f);
        const Pixel argb[] = {Reversed(src[0]), Reversed(src[1])};
        kernels.argb32fToHsv(argb, hsv, 2);
        EXPECT_EQ(hsv[0].second, 1.0f);
        EXPECT_EQ(hsv[1].first, 11184809 * 0x1p-26f);
    });
}

TEST(HsvKernels, FloatHues_AreTheDoubleResultRoundedOnce)
{
    const std::vector<Pixel> src = ManyHues();
    std::vector<Pixel> expected;
    for (const Pixel& p : src)
        expected.push_back(PlainRgb(p));
    const int count = static_cast<int>(src.size());
    ForEachKernels([&](const HsvKernels& kernels) {
        std::vector<Pixel> bgra(src.size()), argb(src); // the second one in place
        kernels.bgra32fToRgb(src.data(), bgra.data(), count);
        kernels.argb32fToRgb(argb.data(), argb.data(), count);
        for (std::size_t i = 0; i < src.size() && !testing::Test::HasFatalFailure(); ++i) {
            ExpectSame(bgra[i], expected[i], src[i]);
            ExpectSame(Reversed(argb[i]), expected[i], src[i]);
        }
    });
}

/// 255 times a level, toward zero: exact in double.
std::uint8_t PlainByte(float level)
{
    return static_cast<std::uint8_t>(static_cast<double>(level) * 255.0);
}

float LevelOf(int byte)
{
    return Rounded(byte * static_cast<double>(0.003921569f));
}

TEST(HsvKernels, AlphaFirstBytes_GoThroughLevelsAndTowardZero)
{
    constexpr int kSteps = 52;
    Bytes src;
    for (int r = 0; r < kSteps; ++r)
        for (int g = 0; g < kSteps; ++g)
            for (int b = 0; b < kSteps; ++b)
                for (const int byte : {r + g + b, r * 5, g * 5, b * 5})
                    src.push_back(static_cast<std::uint8_t>(byte));
    Bytes hsv, rgb;
    for (std::size_t i = 0; i < src.size(); i += 4) {
        const Pixel there = PlainHsv(LevelOf(src[i + 3]), LevelOf(src[i + 2]), LevelOf(src[i + 1]), 0);
        hsv.insert(hsv.end(),
                   {PlainByte(there.first), PlainByte(there.second), PlainByte(there.third), src[i]});
        const Pixel back = PlainRgb({LevelOf(src[i]), LevelOf(src[i + 1]), LevelOf(src[i + 2]), 0});
        rgb.insert(rgb.end(),
                   {src[i + 3], PlainByte(back.third), PlainByte(back.second), PlainByte(back.first)});
    }
    ForEachKernels([&](const HsvKernels& kernels) {
        Bytes result(src.size());
        kernels.argb8ToHsv(src.data(), result.data(), kSteps * kSteps * kSteps);
        EXPECT_TRUE(result == hsv);
        kernels.argb8ToRgb(src.data(), result.data(), kSteps * kSteps * kSteps);
        EXPECT_TRUE(result == rgb);
    });
}

TEST(HsvKernels, EveryLength_EndsWithItsRow)
{
    ForEachKernels([](const HsvKernels& kernels) {
        const HsvKernels::Row bytes[] = {kernels.argb8ToHsv, kernels.argb8ToRgb};
        const HsvKernels::Row colours[] = {kernels.coloursToHsv, kernels.coloursToRgb};
        const HsvKernels::Row floats[] = {kernels.bgra32fToHsv, kernels.bgra32fToRgb, kernels.argb32fToHsv,
                                          kernels.argb32fToRgb};
        Bytes src(16 * 71);
        for (std::size_t i = 0; i < src.size(); ++i)
            src[i] = static_cast<std::uint8_t>(i * 41 % 63); // small floats, all of them numbers
        // A row is the beginning of a longer one, and nothing behind it changes.
        const auto check = [&](HsvKernels::Row row, std::size_t pixelBytes, std::size_t untouched) {
            Bytes whole(src.size(), 0xA7);
            row(src.data(), whole.data(), 71);
            for (int pixels = 1; pixels <= 70; ++pixels) {
                const std::size_t end = static_cast<std::size_t>(pixels) * pixelBytes - untouched;
                Bytes expected(src.size(), 0xA7), dst(expected);
                std::memcpy(expected.data(), whole.data(), end);
                row(src.data(), dst.data(), pixels);
                ASSERT_EQ(dst, expected) << pixels;
            }
        };
        for (const auto row : bytes)
            check(row, 4, 0);
        for (const auto row : colours)
            check(row, 4, 1);
        for (const auto row : floats)
            check(row, 16, 0);
    });
}

} // namespace
} // namespace kelmora

#include "image/primitives/float_kernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/variants.h"
#include "tests/reference/rounding.h"
#include "tests/support/guard_pages.h"

namespace kelmora {
namespace {

using Floats = std::vector<float>;
using Pixel = std::array<double, 4>;

constexpr int kMostPixels = 70;
constexpr std::size_t kBehind = 16; ///< floats behind a row that must stay

template <class Check>
void ForEachKernels(Check&& check)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant))
            check(FloatKernelsFor(variant));
}

float Rounded(double value)
{
    return static_cast<float>(reference::RoundedToFloat(value));
}

/// Numbers from -1/8 to 9/8 with all their bits in use.
Floats Noise(std::uint32_t seed)
{
    Floats values(4 * kMostPixels + kBehind);
    for (float& value : values) {
        seed = seed * 1664525u + 1013904223u;
        value = static_cast<float>(seed >> 8) / 13421773.0f - 0.125f;
    }
    return values;
}

/// Calls row(src, dst, pixels) of every length on noise, and compares what it leaves bit for bit.
/// plain   gives a value of the result from the source, what stood in the destination, and its index
template <class Row, class Plain>
void CheckRows(bool inPlace, Row row, Plain plain)
{
    const Floats src = Noise(1), old = inPlace ? src : Noise(2);
    for (int pixels = 1; pixels <= kMostPixels; ++pixels) {
        Floats dst = old;
        row(inPlace ? dst.data() : src.data(), dst.data(), pixels);
        for (std::size_t i = 0; i < dst.size(); ++i)
            ASSERT_EQ(dst[i], i < 4 * static_cast<std::size_t>(pixels) ? plain(src, old, i) : old[i])
                << i << " of " << pixels << " pixels";
    }
}

TEST(FloatKernels, EveryAvailableVariant_HasItsLoops)
{
    ForEachKernels([](const FloatKernels& kernels) {
        EXPECT_NE(kernels.add, nullptr);
        EXPECT_NE(kernels.mean, nullptr);
        EXPECT_NE(kernels.clamp, nullptr);
        EXPECT_NE(kernels.reverse, nullptr);
        EXPECT_NE(kernels.extractChannel, nullptr);
        EXPECT_NE(kernels.overBgra, nullptr);
        EXPECT_NE(kernels.overBgraPremultiplied, nullptr);
        EXPECT_NE(kernels.overArgb, nullptr);
        EXPECT_NE(kernels.overArgbPremultiplied, nullptr);
        EXPECT_NE(kernels.tintBgra, nullptr);
        EXPECT_NE(kernels.tintArgb, nullptr);
    });
}

TEST(FloatKernels, SumsMeansAndReversals_OfEveryLength_EndWithTheirRow)
{
    const auto exact = [](float value) { return static_cast<double>(value); };
    ForEachKernels([&](const FloatKernels& kernels) {
        for (const bool inPlace : {false, true}) {
            CheckRows(
                inPlace, [&](const float* s, float* d, int n) { kernels.add(s, d, 4 * n); },
                [&](const Floats& s, const Floats& d, std::size_t i) {
                    return Rounded(exact(s[i]) + exact(d[i]));
                });
            CheckRows(
                inPlace, [&](const float* s, float* d, int n) { kernels.mean(s, d, 4 * n); },
                [&](const Floats& s, const Floats& d, std::size_t i) {
                    return Rounded(exact(s[i]) + exact(d[i])) / 2;
                });
            CheckRows(inPlace, kernels.reverse,
                      [](const Floats& s, const Floats&, std::size_t i) { return s[i ^ 3]; });
        }
        CheckRows(
            true, [&](const float*, float* d, int n) { kernels.clamp(d, 4 * n); },
            [](const Floats& s, const Floats&, std::size_t i) {
                return s[i] < 0.0f ? 0.0f : s[i] > 1.0f ? 1.0f : s[i];
            });
    });
}

TEST(FloatKernels, ChannelOfEveryLength_IsReadNoFurtherThanItsLastValue)
{
    // That value is the last before memory that nobody may touch.
    GuardPages pages(3 * PageBytes());
    pages.Open(PageBytes(), PageBytes());
    auto* const end = reinterpret_cast<float*>(pages.Base() + 2 * PageBytes());
    ForEachKernels([&](const FloatKernels& kernels) {
        for (int pixels = 1; pixels <= kMostPixels; ++pixels) {
            const int last = 4 * (pixels - 1);
            float* const src = end - last - 1;
            for (int i = 0; i <= last; ++i)
                src[i] = static_cast<float>(i);
            float dst[kMostPixels + 1];
            std::fill_n(dst, kMostPixels + 1, 0.5f);
            kernels.extractChannel(src, dst, pixels);
            for (int x = 0; x <= kMostPixels; ++x)
                ASSERT_EQ(dst[x], x < pixels ? static_cast<float>(4 * x) : 0.5f) << x << " of " << pixels;
        }
    });
}

TEST(FloatKernels, MeanOfTheSmallestAndLargest_RoundsEachStep)
{
    // Half of the smallest number above 0 is a tie, which goes to 0; twice the largest is no number's double.
    constexpr float tiny = std::numeric_limits<float>::denorm_min();
    constexpr float huge = std::numeric_limits<float>::max();
    ForEachKernels([](const FloatKernels& kernels) {
        const float src[] = {tiny, tiny, huge, 1.0f};
        float dst[] = {0.0f, 2 * tiny, huge, 16777216.0f};
        kernels.mean(src, dst, 4);
        EXPECT_EQ(dst[0], 0.0f);
        EXPECT_EQ(dst[1], 2 * tiny); // 1.5 of it: the tie goes to the even one
        EXPECT_EQ(dst[2], std::numeric_limits<float>::infinity());
        EXPECT_EQ(dst[3], 8388608.0f); // 16777217 is a tie, too, and goes down
    });
}

TEST(FloatKernels, ClampOfWhatIsNoNumber_IsZero)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    ForEachKernels([](const FloatKernels& kernels) {
        float values[] = {std::numeric_limits<float>::quiet_NaN(), -0.0f, infinity, -infinity, 0.75f};
        kernels.clamp(values, 5);
        EXPECT_EQ(values[0], 0.0f);
        EXPECT_FALSE(std::signbit(values[1]));
        EXPECT_EQ(values[2], 1.0f);
        EXPECT_EQ(values[3], 0.0f);
        EXPECT_EQ(values[4], 0.75f);
    });
}

// --- over -----------------------------------------------------------------------------------------------

Pixel PixelOf(const Floats& values, std::size_t i)
{
    Pixel pixel;
    for (std::size_t c = 0; c < 4; ++c)
        pixel[c] = static_cast<double>(values[i / 4 * 4 + c]);
    return pixel;
}

float PlainOver(const Pixel& a, const Pixel& b, std::size_t channel, std::size_t alpha)
{
    const double below = (1.0 - a[alpha]) * b[alpha];
    return Rounded(channel == alpha ? a[alpha] + below : a[channel] * a[alpha] + below * b[channel]);
}

float PlainOverPremultiplied(const Pixel& a, const Pixel& b, std::size_t channel, std::size_t alpha)
{
    return Rounded((1.0 - a[alpha]) * b[channel] + a[channel]);
}

TEST(FloatKernels, OverOfEveryLength_IsTheDoubleResultRoundedOnce)
{
    ForEachKernels([](const FloatKernels& kernels) {
        struct {
            void (*over)(const OverRow&);
            float (*plain)(const Pixel&, const Pixel&, std::size_t, std::size_t);
            std::size_t alpha;
        } const members[] = {{kernels.overBgra, PlainOver, 3},
                             {kernels.overBgraPremultiplied, PlainOverPremultiplied, 3},
                             {kernels.overArgb, PlainOver, 0},
                             {kernels.overArgbPremultiplied, PlainOverPremultiplied, 0}};
        for (const auto& member : members) {
            CheckRows(
                false,
                [&](const float* s, float* d, int n) {
                    member.over({s, d, d, n});
                },
                [&](const Floats& s, const Floats& d, std::size_t i) {
                    return member.plain(PixelOf(s, i), PixelOf(d, i), i % 4, member.alpha);
                });
            CheckRows(
                false,
                [&](const float* s, float* d, int n) {
                    member.over({d, s, d, n});
                },
                [&](const Floats& s, const Floats& d, std::size_t i) {
                    return member.plain(PixelOf(d, i), PixelOf(s, i), i % 4, member.alpha);
                });
        }
    });
}

TEST(FloatKernels, OverOfHandComputedPixels_ComesOut)
{
    ForEachKernels([](const FloatKernels& kernels) {
        const float top[] = {0.5f, 1.0f, 0.25f, 0.5f}, ground[] = {1.0f, 0.5f, 0.0f, 0.25f};
        float out[4];
        // Straight: half of the one, and half of a quarter of the other.
        kernels.overBgra({top, ground, out, 1});
        EXPECT_EQ(out[0], 0.375f);
        EXPECT_EQ(out[1], 0.5625f);
        EXPECT_EQ(out[2], 0.125f);
        EXPECT_EQ(out[3], 0.625f);
        // Premultiplied: the one, and half of the other.
        kernels.overBgraPremultiplied({top, ground, out, 1});
        EXPECT_EQ(out[0], 1.0f);
        EXPECT_EQ(out[1], 1.25f);
        EXPECT_EQ(out[2], 0.25f);
        EXPECT_EQ(out[3], 0.625f);
    });
}

// --- tint -----------------------------------------------------------------------------------------------

TEST(FloatKernels, TintOfEveryLength_IsTheDoubleResultRoundedOnce)
{
    ForEachKernels([](const FloatKernels& kernels) {
        for (const bool alphaFirst : {false, true})
            for (const bool inPlace : {false, true})
                CheckRows(
                    inPlace,
                    [&](const float* s, float* d, int n) {
                        (alphaFirst ? kernels.tintArgb : kernels.tintBgra)({s, d, n, 0.9, 0.7, 0.3, 0.004});
                    },
                    [&](const Floats& s, const Floats&, std::size_t i) {
                        const Pixel p = PixelOf(s, i);
                        const auto at = [&](std::size_t place) { return p[alphaFirst ? 3 - place : place]; };
                        const double luma = 0.298 * at(2) + 0.586 * at(1) + 0.113 * at(0);
                        constexpr double scales[] = {0.3, 0.7, 0.9, 0.004};
                        const double scale = scales[alphaFirst ? 3 - i % 4 : i % 4];
                        return Rounded((luma > 1.0 ? 1.0 : luma) * scale);
                    });
    });
}

TEST(FloatKernels, TintOfALongAlignedRow_IsThatOfItsPixels)
{
    // Long enough to go past the caches.
    constexpr int pixels = 1301;
    struct alignas(64) Row {
        float values[4 * pixels + 4];
    };
    std::vector<Row> src(1);
    for (int i = 0; i < 4 * pixels + 4; ++i)
        src[0].values[i] = static_cast<float>(i % 251) / 251.0f;
    ForEachKernels([&](const FloatKernels& kernels) {
        std::vector<Row> whole(1), single(1);
        whole[0].values[4 * pixels] = 7.0f;
        kernels.tintBgra({src[0].values, whole[0].values, pixels, 0.9, 0.7, 0.3, 0.004});
        for (int x = 0; x < pixels; ++x)
            kernels.tintBgra({src[0].values + 4 * x, single[0].values + 4 * x, 1, 0.9, 0.7, 0.3, 0.004});
        EXPECT_EQ(std::memcmp(whole[0].values, single[0].values, 16 * pixels), 0);
        EXPECT_EQ(whole[0].values[4 * pixels], 7.0f);
    });
}

} // namespace
} // namespace kelmora

#include "image/primitives/resize_kernels.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/variants.h"

namespace kelmora {
namespace {

TEST(ResizeKernels, EveryAvailableVariant_HasItsLoops)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant)) {
            EXPECT_NE(ResizeKernelsFor(variant).across, nullptr);
            EXPECT_NE(ResizeKernelsFor(variant).down, nullptr);
            EXPECT_NE(ResizeKernelsFor(variant).widen, nullptr);
            EXPECT_NE(ResizeKernelsFor(variant).acrossFloats, nullptr);
            EXPECT_NE(ResizeKernelsFor(variant).downFloats, nullptr);
            EXPECT_NE(ResizeKernelsFor(variant).endStreams, nullptr);
            EXPECT_EQ(&ResizeKernelsFor(variant), &ResizeKernelsFor(variant));
        }
}

/// Row `row` of pixels that say where they come from; sums of their halves and quarters are exact.
std::vector<float> PlacedPixels(int row, int pixels)
{
    std::vector<float> values;
    for (int x = 0; x < pixels; ++x)
        for (int channel = 0; channel < 4; ++channel)
            values.push_back(static_cast<float>(1000 * row + 10 * x + channel));
    return values;
}

TEST(ResizeKernels, TwoRowsOfFloats_AreFilteredEachByItself)
{
    const std::array<std::int32_t, 5> first = {3, 3, 4, 7, 9}; // columns 0, 0, 1, 4 and 6 of the rows
    const int columns = 12;
    const std::vector<float> one = PlacedPixels(1, columns), other = PlacedPixels(2, columns);
    for (const int taps : {2, 4, 6}) {
        std::vector<double> weights;
        for (std::size_t x = 0; x < first.size(); ++x)
            for (int k = 0; k < taps; ++k)
                weights.push_back(k < 2 ? 0.5 : 0.25);
        ForEachVariant([&] {
            const ResizeKernels& loops = ResizeKernelsFor(CurrentVariant());
            std::vector<double> rows(columns * 8), filtered(first.size() * 4 + 1, -1.0), second = filtered;
            loops.widen(one.data(), other.data(), rows.data(), columns);
            loops.acrossFloats({rows.data(),
                                {filtered.data(), second.data()},
                                static_cast<int>(first.size()),
                                first.data(),
                                weights.data(),
                                taps,
                                {one.data(), other.data()}});
            for (std::size_t x = 0; x < first.size(); ++x)
                for (int channel = 0; channel < 4; ++channel) {
                    double expected = 0.0;
                    for (int k = 0; k < taps; ++k)
                        expected += (k < 2 ? 0.5 : 0.25) * (1000 + 10 * (first[x] - 3 + k) + channel);
                    const double sum = 1.0 + 0.25 * (taps - 2); // of the weights
                    const std::size_t at = x * 4 + static_cast<std::size_t>(channel);
                    EXPECT_EQ(filtered[at], expected) << taps << " taps, pixel " << x;
                    EXPECT_EQ(second[at], expected + 1000 * sum) << taps << " taps, pixel " << x;
                }
            EXPECT_EQ(filtered.back(), -1.0);
            EXPECT_EQ(second.back(), -1.0);
        });
    }
}

TEST(ResizeKernels, RowsOfDoubles_AreSummedToEveryAddressStreamedOrNot)
{
    constexpr int kPixels = 21, kAround = 16;
    std::vector<double> rows[6];
    for (int k = 0; k < 6; ++k)
        for (const float value : PlacedPixels(k, kPixels))
            rows[k].push_back(static_cast<double>(value) / 65536.0);
    for (const int taps : {2, 4, 6})
        for (const bool streams : {false, true})
            for (int pixels = 0; pixels <= kPixels; ++pixels)
                for (int shift = 0; shift < 16; ++shift)
                    ForEachVariant([&] {
                        ResizeDownFloats down = {};
                        for (int k = 0; k < taps; ++k) {
                            down.rows[k] = rows[k].data();
                            down.weights[k] = k == 0 ? -1.0 : 16.0;
                        }
                        alignas(64) std::array<float, kPixels * 4 + 2 * kAround> result;
                        result.fill(-7.0f);
                        down.taps = taps;
                        down.dst = result.data() + shift;
                        down.values = pixels * 4;
                        down.levels = shift % 2 == 0;
                        down.streams = streams;
                        ResizeKernelsFor(CurrentVariant()).downFloats(down);
                        ResizeKernelsFor(CurrentVariant()).endStreams();
                        for (int i = 0; i < static_cast<int>(result.size()); ++i) {
                            double expected = -7.0;
                            if (const int at = i - shift; at >= 0 && at < down.values) {
                                const auto value = static_cast<std::size_t>(at);
                                expected = -rows[0][value];
                                for (int k = 1; k < taps; ++k)
                                    expected += 16.0 * rows[k][value];
                                if (down.levels)
                                    expected = expected > 1.0 ? 1.0 : expected;
                            }
                            ASSERT_EQ(result[static_cast<std::size_t>(i)], static_cast<float>(expected))
                                << taps << " taps, " << pixels << " pixels, shift " << shift << ", value "
                                << i;
                        }
                    });
}

} // namespace
} // namespace kelmora

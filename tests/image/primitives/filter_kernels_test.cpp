#include "image/primitives/filter_kernels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/variants.h"

namespace kelmora {
namespace {

constexpr int kStep = 160; ///< values from row to row

TEST(FilterKernels, BothLoopsOfEveryVariant_AddTheTapsUpAndKeepWhatTheyAreTold)
{
    // Taps 2, 3 and -1 over the values i + 1, i + 2 and i + 3: 4 * i + 5.
    constexpr std::int16_t weights[] = {2, 3, -1};
    for (const CpuVariant variant : kAllVariants) {
        if (!IsAvailable(variant))
            continue;
        const FilterKernels& kernels = FilterKernelsFor(variant);
        for (const auto loop : {kernels.narrow, kernels.wide})
            for (const bool keepsFourth : {false, true})
                for (int count = 1; count <= 150; ++count) {
                    std::uint8_t src[154], dst[151];
                    for (int i = 0; i < 154; ++i)
                        src[i] = static_cast<std::uint8_t>(i);
                    for (std::uint8_t& value : dst)
                        value = 0xC3;
                    FilterRow row = {};
                    row.src = src + 1;
                    row.tapStep = 1;
                    row.weights = weights;
                    row.taps = 3;
                    row.dst = dst;
                    row.count = count;
                    row.finish = FilterFinish::ScaleSingle;
                    row.reciprocal = 1.0 / 5;
                    row.keepsFourth = keepsFourth;
                    loop(row);
                    for (int i = 0; i <= 150; ++i) {
                        // To the nearest fifth; there are no ties.
                        const bool kept = i >= count || (keepsFourth && i % 4 == 3);
                        ASSERT_EQ(dst[i], kept ? 0xC3 : (2 * (4 * i + 5) + 5) / 10) << i << " of " << count;
                    }
                }
    }
}

/// Taps 1, 1 and 1, and two of 0, over a large number, 1 and its negative in turns.
constexpr float kPlainTaps[] = {1, 1, 1, 0, 0};

template <class Check>
void ForEachFloatLoop(Check&& check)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant))
            check(FilterKernelsFor(variant).floats);
}

FloatFilter FilterOf(const float* src, float* dst, int values, int rows)
{
    FloatFilter filter = {};
    filter.src = src;
    filter.srcStep = kStep * 4;
    filter.weights = kPlainTaps;
    filter.taps = 5;
    filter.dst = dst;
    filter.dstStep = kStep * 4;
    filter.count = values;
    filter.rows = rows;
    return filter;
}

TEST(FilterKernels, FloatRows_AddTheTapsInTheirOrderInDouble)
{
    // 2^60 takes the 1 with it when it comes first: of 2^60, 1, -2^60 nothing is left, of -2^60, 2^60, 1 a 1. What is
    // lost with 2^24 already is lost in single precision.
    ForEachFloatLoop([](auto loop) {
        for (const float large : {0x1p60f, 0x1p24f})
            for (const bool forward : {true, false})
                for (int values = 1; values <= 150; ++values) {
                    std::vector<float> src(kStep), dst(kStep, 7.0f);
                    for (int i = 0; i < kStep; ++i)
                        src.data()[i] = i % 3 == 0 ? large : i % 3 == 1 ? 1.0f : -large;
                    FloatFilter filter = FilterOf(src.data() + (forward ? 0 : 4), dst.data(), values, 1);
                    filter.tapStep = forward ? 4 : -4;
                    loop(filter);
                    for (int i = 0; i < kStep; ++i) {
                        const bool oneComesLast = forward ? i % 3 == 2 : (i + 4) % 3 == 0;
                        const float sum = large < 0x1p53f || oneComesLast ? 1.0f : 0.0f;
                        ASSERT_EQ(dst.data()[i], i < values ? sum : 7.0f) << i << " of " << values;
                    }
                }
    });
}

TEST(FilterKernels, FloatColumns_AddTheTapsInTheirOrderInDouble)
{
    ForEachFloatLoop([](auto loop) {
        for (const float large : {0x1p60f, 0x1p24f})
            for (const bool forward : {true, false})
                for (int rows = 1; rows <= 11; ++rows)
                    for (const int values : {1, 3, 4, 15, 16, 17, 150}) {
                        std::vector<float> src(15 * kStep), dst(12 * kStep, 7.0f);
                        for (int y = 0; y < 15; ++y)
                            std::fill_n(src.begin() + y * kStep, kStep,
                                        y % 3 == 0       ? large
                                            : y % 3 == 1 ? 1.0f
                                                         : -large);
                        FloatFilter filter =
                            FilterOf(src.data() + (forward ? 0 : 4 * kStep), dst.data(), values, rows);
                        filter.tapStep = forward ? filter.srcStep : -filter.srcStep;
                        loop(filter);
                        for (int y = 0; y < 12; ++y)
                            for (int i = 0; i < kStep; ++i) {
                                const bool oneComesLast = forward ? y % 3 == 2 : (y + 4) % 3 == 0;
                                const float sum = large < 0x1p53f || oneComesLast ? 1.0f : 0.0f;
                                ASSERT_EQ(dst.data()[y * kStep + i], y < rows && i < values ? sum : 7.0f)
                                    << i << " of row " << y << " of " << rows;
                            }
                    }
    });
}

TEST(FilterKernels, FloatsOfAnyNumberOfTaps_CountThemAll)
{
    // Every tap 1 over values i: n values from i on sum to n * i + n * (n - 1) / 2, all of them whole and small.
    const std::vector<float> ones(1200, 1.0f);
    ForEachFloatLoop([&](auto loop) {
        for (const bool column : {false, true})
            for (const int taps : {1, 2, 3, 4, 5, 7, 8, 20, 21, 120, 121, 240, 242, 1200})
                for (const bool keepsFourth : {false, true}) {
                    constexpr int rows = 6, values = 43;
                    const int step = column ? values : values + 4 * taps;
                    std::vector<float> src(static_cast<std::size_t>((rows + (column ? taps : 0)) * step));
                    for (std::size_t i = 0; i < src.size(); ++i)
                        src[i] = static_cast<float>(column ? static_cast<int>(i) / step
                                                           : static_cast<int>(i) % step / 4);
                    std::vector<float> dst(rows * values, -1.0f);
                    FloatFilter filter = FilterOf(src.data(), dst.data(), values, rows);
                    filter.srcStep = step * 4;
                    filter.tapStep = column ? filter.srcStep : 16;
                    filter.weights = ones.data();
                    filter.taps = taps;
                    filter.dstStep = values * 4;
                    filter.keepsFourth = keepsFourth;
                    loop(filter);
                    for (int i = 0; i < rows * values; ++i) {
                        const int first = column ? i / values : i % values / 4;
                        const bool kept = keepsFourth && i % values % 4 == 3;
                        ASSERT_EQ(dst.data()[i],
                                  kept ? -1.0f : static_cast<float>(taps * first + taps * (taps - 1) / 2))
                            << taps << " taps, value " << i;
                    }
                }
    });
}

} // namespace
} // namespace kelmora

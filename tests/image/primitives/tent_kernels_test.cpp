#include "image/primitives/tent_kernels.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "image/primitives/cpu_variant.h"
#include "tests/image/variants.h"
#include "tests/reference/tent.h"

namespace kelmora {
namespace {

TEST(TentKernels, EveryAvailableVariant_HasAllItsLoops)
{
    for (const CpuVariant variant : kAllVariants) {
        if (!IsAvailable(variant))
            continue;
        const TentKernels& kernels = TentKernelsFor(variant);
        EXPECT_GE(kernels.byteRows, 1);
        EXPECT_GE(kernels.floatRows, 1);
        EXPECT_NE(kernels.byteColumns, nullptr);
        EXPECT_NE(kernels.byteRowPass, nullptr);
        EXPECT_NE(kernels.floatColumns, nullptr);
        EXPECT_NE(kernels.floatRowPass, nullptr);
    }
}

/// Whether the loops take rows all of `flat`, then one step with `last`.
bool AreTaken(const TentKernels& kernels, const std::vector<float>& flat, const std::vector<float>& last)
{
    const auto bytesOf = [](const std::vector<float>& row) {
        return reinterpret_cast<const std::uint8_t*>(row.data());
    };
    const std::uint8_t* const taps[] = {bytesOf(flat), bytesOf(flat), bytesOf(flat), bytesOf(last)};
    const int width = static_cast<int>(flat.size() / 4);
    std::vector<double> slope(flat.size() + kTentSpare * 4), sum(slope.size());
    TentColumns job = {};
    job.taps = taps;
    job.steps = 1;
    job.width = width;
    job.flat = bytesOf(flat);
    job.weights = 1;
    job.slope = slope.data();
    job.sum = sum.data();
    return kernels.floatColumns(job);
}

TEST(TentKernels, FloatColumns_OneValueThatRunningSumsCannotTake_IsTold)
{
    const float above = std::nextafter(kTentLargestSummed, 2 * kTentLargestSummed);
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const CpuVariant variant : kAllVariants) {
        if (!IsAvailable(variant))
            continue;
        const TentKernels& kernels = TentKernelsFor(variant);
        for (int width = 1; width <= 9; ++width) {
            const std::vector<float> most(static_cast<std::size_t>(width) * 4, kTentLargestSummed),
                least(most.size(), -kTentLargestSummed);
            EXPECT_TRUE(AreTaken(kernels, most, least));
            EXPECT_TRUE(AreTaken(kernels, least, most));
            for (std::size_t i = 0; i < most.size(); ++i)
                for (const float wild : {above, -above, infinity, -infinity, nan, -nan}) {
                    std::vector<float> row = most;
                    row[i] = wild;
                    EXPECT_FALSE(AreTaken(kernels, most, row)) << width << " wide, value " << i;
                    EXPECT_FALSE(AreTaken(kernels, row, most)) << width << " wide, value " << i;
                }
        }
    }
}

TEST(TentKernels, TapsOf_FiveTaps_LieWhereTheTentBends)
{
    // 0 0 1 2 3 2 1: from -3 (two before the window's first pixel, -2), up for three, down for three.
    const TentTaps taps = TapsOf(5);
    EXPECT_EQ(taps.first, -4);
    EXPECT_EQ(taps.rise, -1);
    EXPECT_EQ(taps.fall, -1);
    EXPECT_EQ(taps.last, 2);
}

TEST(TentKernels, TapsOf_AnySize_HaveTheTentAsTheirDoubleSum)
{
    for (int size = 1; size <= 300; ++size) {
        const TentTaps taps = TapsOf(size);
        // A single 1 at pixel 0 passes through the recurrence; the sum at pixel u is the weight that u gives
        // to pixel 0: the tap number size / 2 - u counted from the far end.
        const auto pixel = [](int x) { return x == 0 ? 1 : 0; };
        int slope = 0, sum = 0;
        for (int u = -size - 3; u <= size + 3; ++u) {
            slope +=
                pixel(u + taps.first) - pixel(u + taps.rise) - pixel(u + taps.fall) + pixel(u + taps.last);
            sum += slope;
            const int tap = u + size / 2;
            const int weight =
                tap >= 0 && tap < size ? reference::TentWeights(size)[static_cast<std::size_t>(tap)] : 0;
            ASSERT_EQ(sum, weight) << size << " taps at " << u;
        }
    }
}

TEST(TentKernels, Limits_HoldTheSumsThatTheyPromise)
{
    // The largest slope of bytes is half a tent's taps times 255, the largest sum its weights times 255.
    EXPECT_LE((kTentNarrowTaps + 1) / 2 * 255, 32767);
    EXPECT_LE(std::int64_t{255} * reference::TentWeightSum(kTentMostTaps), 0x7FFFFFFF);
}

} // namespace
} // namespace kelmora

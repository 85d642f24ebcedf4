#include "image/primitives/tent_kernels.h"

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

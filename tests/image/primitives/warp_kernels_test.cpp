#include "image/primitives/warp_kernels.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "image/primitives/detail/warp_sample.h"
#include "tests/image/variants.h"

namespace kelmora {
namespace {

TEST(WarpKernels, EveryAvailableVariant_HasItsLoops)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant)) {
            const WarpKernels& kernels = WarpKernelsFor(variant);
            EXPECT_NE(kernels.affineBytes, nullptr);
            EXPECT_NE(kernels.affineFloats, nullptr);
            EXPECT_NE(kernels.perspectiveBytes, nullptr);
            EXPECT_NE(kernels.perspectiveFloats, nullptr);
            EXPECT_NE(kernels.ringBytes, nullptr);
            EXPECT_NE(kernels.ringFloats, nullptr);
            EXPECT_NE(kernels.acrossBytes, nullptr);
            EXPECT_NE(kernels.acrossFloats, nullptr);
            EXPECT_NE(kernels.downBytes, nullptr);
            EXPECT_NE(kernels.downFloats, nullptr);
            EXPECT_NE(kernels.lerpBytes, nullptr);
            EXPECT_EQ(&kernels, &WarpKernelsFor(variant));
        }
}

/// Runs a loop over the columns of `span`, of which those from 20 to 62 lie in a picture of 43 columns.
WarpSpan Found(bool floats, WarpSpan span)
{
    const std::vector<float> pixels(43 * 2 * 4, 0.0f);
    std::vector<float> row(100 * 4);
    PerspectiveRow job = {{pixels.data(), floats ? 43 * 16 : 43 * 4, {0, 0, 42, 1}},
                          row.data(),
                          span,
                          {1, -20},
                          {0, 0.5},
                          {0, 1}};
    const WarpKernels& kernels = WarpKernelsFor(CurrentVariant());
    return (floats ? kernels.perspectiveFloats : kernels.perspectiveBytes)(job);
}

TEST(WarpKernels, PerspectiveLoops_TellWhichPixelsLieInside)
{
    ForEachVariant([] {
        for (const bool floats : {false, true})
            for (const WarpSpan& span :
                 {WarpSpan{0, 100}, {0, 63}, {20, 63}, {25, 40}, {19, 21}, {62, 64}, {3, 62}}) {
                const WarpSpan found = Found(floats, span);
                EXPECT_EQ(found.begin, std::max(span.begin, 20)) << span.begin << " to " << span.end;
                EXPECT_EQ(found.end, std::min(span.end, 63)) << span.begin << " to " << span.end;
            }
    });
}

TEST(WarpKernels, PerspectiveLoopsBesideThePicture_TellOfNone)
{
    ForEachVariant([] {
        for (const bool floats : {false, true})
            for (const WarpSpan& span : {WarpSpan{0, 20}, {63, 99}, {5, 5}, {70, 71}})
                EXPECT_TRUE(Found(floats, span).IsEmpty()) << span.begin << " to " << span.end;
    });
}

TEST(WarpKernels, WayAhead_IsToTheRowBelowWhereTheWayIsDown)
{
    const WarpBounds bounds = {0, 0, 99, 49};
    using px::warping::BytesAhead;
    EXPECT_EQ(BytesAhead(0, 0, bounds, 2000, 16), 0);
    EXPECT_EQ(BytesAhead(3.2, 0.4, bounds, 2000, 16), 3 * 16);
    EXPECT_EQ(BytesAhead(0, 4, bounds, 2000, 16), 5 * 2000);
    EXPECT_EQ(BytesAhead(-1, -4, bounds, 2000, 16), -4 * 2000 - 16);
    EXPECT_EQ(BytesAhead(-1, 1, bounds, 2000, 4), 2 * 2000 - 4);
}

TEST(WarpKernels, WayAheadToNowhere_StaysWithinTheBoundsSize)
{
    const WarpBounds bounds = {0, 0, 99, 49};
    using px::warping::BytesAhead;
    constexpr double kFar = std::numeric_limits<double>::infinity();
    EXPECT_EQ(BytesAhead(kFar, kFar, bounds, 2000, 16), 50 * 2000 + 99 * 16);
    EXPECT_EQ(BytesAhead(-kFar, -1e300, bounds, 2000, 16), -49 * 2000 - 99 * 16);
    EXPECT_EQ(BytesAhead(std::nan(""), std::nan(""), bounds, 2000, 16), -49 * 2000 - 99 * 16);
}

} // namespace
} // namespace kelmora

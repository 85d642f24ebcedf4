#include "image/primitives/median_kernels.h"

#include <gtest/gtest.h>

#include "tests/image/variants.h"

namespace kelmora {
namespace {

TEST(MedianKernels, EveryAvailableVariant_HasItsLoops)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant)) {
            EXPECT_NE(MedianKernelsFor(variant).bytes, nullptr);
            EXPECT_NE(MedianKernelsFor(variant).wide, nullptr);
            EXPECT_EQ(&MedianKernelsFor(variant), &MedianKernelsFor(variant));
        }
}

TEST(MedianKernels, ByteCounts_HoldTheLargestMaskTheyAreFor)
{
    EXPECT_LE(MedianKernels::kMostByteRows, 255);    // a column's counts are bytes
    EXPECT_LE(MedianKernels::kMostByteArea, 0x7FFF); // the window's are compared as signed words
}

} // namespace
} // namespace kelmora

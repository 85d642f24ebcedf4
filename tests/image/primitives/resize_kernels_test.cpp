#include "image/primitives/resize_kernels.h"

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
            EXPECT_EQ(&ResizeKernelsFor(variant), &ResizeKernelsFor(variant));
        }
}

} // namespace
} // namespace kelmora

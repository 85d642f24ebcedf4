#include "image/primitives/warp_kernels.h"

#include <gtest/gtest.h>

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
            EXPECT_NE(kernels.acrossBytes, nullptr);
            EXPECT_NE(kernels.acrossFloats, nullptr);
            EXPECT_NE(kernels.downBytes, nullptr);
            EXPECT_NE(kernels.downFloats, nullptr);
            EXPECT_NE(kernels.lerpBytes, nullptr);
            EXPECT_EQ(&kernels, &WarpKernelsFor(variant));
        }
}

} // namespace
} // namespace kelmora

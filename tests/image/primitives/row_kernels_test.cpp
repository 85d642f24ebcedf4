#include "image/primitives/row_kernels.h"

#include <gtest/gtest.h>

#include "tests/image/variants.h"

namespace kelmora {
namespace {

TEST(RowKernels, EveryAvailableVariant_HasItsLoops)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant)) {
            const RowKernels& kernels = RowKernelsFor(variant);
            EXPECT_NE(kernels.twistBytes, nullptr);
            EXPECT_NE(kernels.twistFloats, nullptr);
            EXPECT_NE(kernels.sharpenBytes, nullptr);
            EXPECT_NE(kernels.blendBytes, nullptr);
            EXPECT_NE(kernels.blendFloats, nullptr);
        }
}

TEST(RowKernels, BlendOfBytes_DividesTowardZeroWithEveryVariant)
{
    for (const CpuVariant variant : kAllVariants) {
        if (!IsAvailable(variant))
            continue;
        for (const int weight : {0, 1, 100, 254, 255}) {
            std::uint8_t first[67], second[67], dst[68];
            for (int i = 0; i < 67; ++i) {
                first[i] = static_cast<std::uint8_t>(i * 3 + 50);
                second[i] = static_cast<std::uint8_t>(255 - i * 2);
            }
            dst[67] = 0xC3;
            BlendRow<int> row{first, second, dst, 67, weight, 255 - weight, false};
            RowKernelsFor(variant).blendBytes(row);
            for (int i = 0; i < 67; ++i)
                EXPECT_EQ(dst[i], (first[i] * weight + second[i] * (255 - weight)) / 255) << i;
            EXPECT_EQ(dst[67], 0xC3);
        }
    }
}

} // namespace
} // namespace kelmora

#include "image/primitives/byte_kernels.h"

#include <gtest/gtest.h>

#include "tests/image/variants.h"

namespace kelmora {
namespace {

/// Calls check(kernels) for each variant that this machine runs.
template <class Check>
void ForEachKernels(Check&& check)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant))
            check(ByteKernelsFor(variant));
}

TEST(ByteKernels, EveryAvailableVariant_HasItsLoops)
{
    ForEachKernels([](const ByteKernels& kernels) {
        EXPECT_NE(kernels.premultiply, nullptr);
        EXPECT_NE(kernels.scale, nullptr);
        EXPECT_NE(kernels.average, nullptr);
        EXPECT_NE(kernels.tintAlphaLast, nullptr);
        EXPECT_NE(kernels.tintAlphaFirst, nullptr);
        EXPECT_NE(kernels.yCbCr422ToRgb, nullptr);
    });
}

TEST(ByteKernels, AverageOfEveryPair_IsTheNearestAndTiesAreEven)
{
    ForEachKernels([](const ByteKernels& kernels) {
        for (int other = 0; other < 256; ++other) {
            std::uint8_t first[256], mean[257];
            for (int i = 0; i < 256; ++i) {
                first[i] = static_cast<std::uint8_t>(i);
                mean[i] = static_cast<std::uint8_t>(other);
            }
            mean[256] = 0xC3;
            kernels.average(first, mean, 256);
            for (int i = 0; i < 256; ++i) {
                const int sum = i + other;
                EXPECT_EQ(mean[i], sum % 4 == 3 ? sum / 2 + 1 : sum / 2) << i << ", " << other;
            }
            EXPECT_EQ(mean[256], 0xC3);
        }
    });
}

TEST(ByteKernels, TintOfEveryCount_TakesLumaFromColoursAlone)
{
    // Luma in 1000ths is 100 * 10 + 300 * 20 + 500 * 30 = 22000; times 1.5, 2.75 and 0.5 over 1000 that is 33, 60.5
    // and 11: a hair is added, so that no product is whole.
    ForEachKernels([](const ByteKernels& kernels) {
        for (int pixels = 1; pixels <= 33; ++pixels)
            for (const int firstColour : {0, 1}) {
                std::uint8_t values[34 * 4];
                TintRow row = {};
                for (int c = 0; c < 3; ++c) {
                    constexpr std::int16_t luma[] = {100, 300, 500};
                    constexpr double scale[] = {0.0015, 0.00275, 0.0005};
                    row.luma[firstColour + c] = luma[c];
                    row.scale[firstColour + c] = scale[c] + 1e-9;
                }
                for (int i = 0; i < 34 * 4; ++i) {
                    const int colour = i % 4 - firstColour;
                    values[i] =
                        static_cast<std::uint8_t>(colour >= 0 && colour < 3 ? 10 * (colour + 1) : 200);
                }
                row.src = row.dst = values;
                row.pixels = pixels;
                firstColour == 0 ? kernels.tintAlphaLast(row) : kernels.tintAlphaFirst(row);
                for (int x = 0; x < pixels; ++x) {
                    const std::uint8_t* const pixel = values + 4 * x;
                    EXPECT_EQ(pixel[firstColour], 33);
                    EXPECT_EQ(pixel[firstColour + 1], 60);
                    EXPECT_EQ(pixel[firstColour + 2], 11);
                    EXPECT_EQ(pixel[firstColour == 0 ? 3 : 0], 0);
                }
                for (int i = 4 * pixels; i < 34 * 4; ++i)
                    EXPECT_GE(values[i], 10) << "behind the row";
            }
    });
}

TEST(ByteKernels, BlocksOfYCbCr_AreEvenAndOverwriteOnlyPixelsThatFollow)
{
    ForEachKernels([](const ByteKernels& kernels) {
        for (int pixels = 0; pixels <= 140; ++pixels) {
            // Y 235 with neutral chroma is 254 in each colour.
            std::uint8_t src[280], dst[3 * 140 + 1];
            for (int i = 0; i < 280; ++i)
                src[i] = i % 2 == 0 ? 235 : 128;
            for (std::uint8_t& value : dst)
                value = 7;
            const int done = kernels.yCbCr422ToRgb(src, dst, pixels);
            ASSERT_GE(done, 0);
            ASSERT_LE(done, pixels);
            ASSERT_EQ(done % 2, 0);
            for (int i = 0; i < 3 * done; ++i)
                ASSERT_EQ(dst[i], 254) << i << " of " << pixels;
            for (int i = 3 * pixels; i < 3 * 140 + 1; ++i)
                ASSERT_EQ(dst[i], 7) << i << " behind " << pixels;
        }
    });
}

} // namespace
} // namespace kelmora

#include "effects/scene3d/face_kernels.h"

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/variants.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {
namespace {

constexpr std::uint32_t kAlphaLast = 0xFF000000, kAlphaFirst = 0x000000FF;

/// Rows of every short length and some longer ones, each up to an unreadable page.
template <class Check>
void ForEachRow(std::int32_t pixelBytes, const Check& check)
{
    for (int pixels = 1; pixels <= 70; ++pixels) {
        GuardedPicture row(pixels, 1, pixelBytes, pixelBytes == 16 ? PF_BGRA32F : PF_BGRA8,
                           {.guard = Guard::PageEnd});
        row.FillNoise(static_cast<std::uint32_t>(pixels));
        ForEachVariant([&] { check(FaceKernelsFor(CurrentVariant()), row, pixels); });
    }
}

TEST(FaceKernels, LightBytes_ChangesColoursAndKeepsWhatTheMaskCovers)
{
    ForEachRow(4, [](const FaceKernels& kernels, const GuardedPicture& row, int pixels) {
        for (const std::uint32_t mask : {kAlphaLast, kAlphaFirst})
            for (const float light : {0.0f, 0.25f, 0.5f, 0.9f}) {
                const GuardedPicture lit = row, copied(pixels, 1, PF_BGRA8, {.guard = Guard::PageEnd});
                kernels.lightBytes(lit.Row(0), lit.Row(0), pixels, light, mask);
                kernels.lightBytes(row.Row(0), copied.Row(0), pixels, light, mask);
                ASSERT_TRUE(Equal(copied, lit));
                for (int x = 0; x < pixels; ++x)
                    for (int c = 0; c < 4; ++c) {
                        const std::uint8_t was = row.Byte(x, 0, c);
                        const bool stays = c == (mask == kAlphaLast ? 3 : 0);
                        ASSERT_EQ(lit.Byte(x, 0, c),
                                  stays ? was : static_cast<int>(static_cast<float>(was) * light + 0.5f))
                            << x << " of " << pixels;
                    }
            }
    });
}

TEST(FaceKernels, LightFloats_MultipliesEachChannelByItsFactor)
{
    ForEachRow(16, [](const FaceKernels& kernels, const GuardedPicture& row, int pixels) {
        constexpr float factors[4] = {0.5f, 0.25f, 1.0f, 3.0f};
        const GuardedPicture lit = row, copied(pixels, 1, PF_BGRA32F, {.guard = Guard::PageEnd});
        kernels.lightFloats(lit.Row(0), lit.Row(0), pixels, factors);
        kernels.lightFloats(row.Row(0), copied.Row(0), pixels, factors);
        ASSERT_TRUE(Equal(copied, lit));
        for (int x = 0; x < pixels; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(lit.Float(x, 0, c), row.Float(x, 0, c) * factors[c]) << x << " of " << pixels;
    });
}

TEST(FaceKernels, SumLuma_AddsEachPixelsOwnTruncation)
{
    ForEachRow(4, [](const FaceKernels& kernels, const GuardedPicture& row, int pixels) {
        std::uint32_t bgra = 0, argb = 0;
        for (int x = 0; x < pixels; ++x) {
            const auto byte = [&](int c) { return std::uint32_t{row.Byte(x, 0, c)}; };
            bgra += (76 * byte(2) + 149 * byte(1) + 30 * byte(0)) / 256;
            argb += (76 * byte(1) + 149 * byte(2) + 30 * byte(3)) / 256;
        }
        ASSERT_EQ(kernels.sumLumaBgra(row.Row(0), pixels), bgra) << pixels;
        ASSERT_EQ(kernels.sumLumaArgb(row.Row(0), pixels), argb) << pixels;
    });
}

TEST(FaceKernels, SumFloats_AddsPixelAfterPixelToEachRowsOwnSum)
{
    // Values of very different sizes: any other order of additions rounds otherwise.
    ForEachRow(16, [](const FaceKernels& kernels, const GuardedPicture& row, int pixels) {
        for (const bool argb : {false, true}) {
            GuardedPicture other = row;
            for (int x = 0; x < pixels; ++x)
                other.SetFloat(x, 0, 1, row.Float(x, 0, 2) * (x % 3 == 0 ? 1e6f : 1e-3f));
            const void* rows[FaceKernels::kSums];
            float sums[FaceKernels::kSums], expected[FaceKernels::kSums];
            for (int i = 0; i < FaceKernels::kSums; ++i) {
                const GuardedPicture& picture = i % 2 == 0 ? row : other;
                rows[i] = picture.Row(0);
                sums[i] = expected[i] = static_cast<float>(i) * 0.3f;
                for (int x = 0; x < pixels; ++x) {
                    const auto value = [&](int c) { return picture.Float(x, 0, argb ? 3 - c : c); };
                    expected[i] += 0.298f * value(2) + 0.586f * value(1) + 0.113f * value(0);
                }
            }
            (argb ? kernels.sumFloatsArgb : kernels.sumFloatsBgra)(rows, pixels, sums);
            for (int i = 0; i < FaceKernels::kSums; ++i)
                ASSERT_EQ(sums[i], expected[i]) << i << " of " << pixels;
        }
    });
}

} // namespace
} // namespace kelmora

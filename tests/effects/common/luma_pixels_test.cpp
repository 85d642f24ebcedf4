// Luminance and layouts, by the loops that are made of them.

#include <gtest/gtest.h>

#include "effects/painterly/edge_lift_kernels.h"
#include "effects/scene3d/face_kernels.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

/// The luminance of one colour, as each variant there is has it in both byte orders.
void ExpectLuma(std::uint8_t blue, std::uint8_t green, std::uint8_t red, std::uint32_t expected)
{
    const std::uint8_t bgra[4] = {blue, green, red, 255}, argb[4] = {255, red, green, blue};
    for (const CpuVariant variant : {CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512}) {
        const CpuVariant before = CurrentVariant();
        if (UseVariant(variant)) {
            const FaceKernels& kernels = FaceKernelsFor(CurrentVariant());
            EXPECT_EQ(kernels.sumLumaBgra(bgra, 1), expected);
            EXPECT_EQ(kernels.sumLumaArgb(argb, 1), expected);
        }
        UseVariant(before);
    }
}

// 76 + 149 + 30 are 255 parts of 256, and what is below a whole level is cut.
TEST(LumaPixels, Bytes_WeighRedGreenAndBlue)
{
    ExpectLuma(0, 0, 0, 0);
    ExpectLuma(255, 0, 0, 29);  // 29.88
    ExpectLuma(0, 255, 0, 148); // 148.41
    ExpectLuma(0, 0, 255, 75);  // 75.70
    ExpectLuma(255, 255, 255, 254);
    ExpectLuma(30, 20, 10, 18); // (760 + 2980 + 900) / 256 = 18.125
}

// A black pixel rises to the luminance of the blur around it; alpha stays.
TEST(LumaPixels, Floats_AreSummedInDoubleAndRoundedOnce)
{
    const auto luma =
        static_cast<float>(0.5 * static_cast<double>(0.298f) + 0.25 * static_cast<double>(0.586f)
                           + 0.125 * static_cast<double>(0.113f));
    const float black[4] = {0, 0, 0, 1};
    const float bgra[4] = {0.125f, 0.25f, 0.5f, 0.0f}, argb[4] = {0.0f, 0.5f, 0.25f, 0.125f};
    for (const CpuVariant variant : {CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512}) {
        const CpuVariant before = CurrentVariant();
        if (UseVariant(variant)) {
            float result[4];
            EdgeLiftKernelsFor(CurrentVariant()).keepAlpha.bgra32f(black, bgra, result, 1, 1.0f);
            for (int c = 0; c < 3; ++c)
                EXPECT_EQ(result[c], luma);
            EXPECT_EQ(result[3], 1.0f);
            const float alphaFirst[4] = {1, 0, 0, 0};
            EdgeLiftKernelsFor(CurrentVariant()).keepAlpha.argb32f(alphaFirst, argb, result, 1, 1.0f);
            for (int c = 1; c < 4; ++c)
                EXPECT_EQ(result[c], luma);
            EXPECT_EQ(result[0], 1.0f);
        }
        UseVariant(before);
    }
}

} // namespace
} // namespace kelmora

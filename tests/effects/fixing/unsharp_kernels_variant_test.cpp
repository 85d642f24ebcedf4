#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "effects/fixing/unsharp_combine.h"
#include "tests/reference/detail_enhancer.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

// 0.0003 wants the table where no single multiplication serves.
constexpr float kAmounts[] = {0.0f, 0.0003f, 0.31f, 0.455f, 0.91f, 1.0f, 1.51f, 1.96f, 2.0f, 3.0f};

/// Bit for bit: two products and a difference, each rounded once.
void ComparePixel(const GuardedPicture& picture, const GuardedPicture& blurred, const GuardedPicture& alpha,
                  const GuardedPicture& result, int x, float amount)
{
    const std::uint32_t format = picture.Format();
    for (int c = 0; c < 4; ++c) {
        const bool isAlpha = c == PlaceOfColour(format, 3);
        if (IsFloatFormat(format)) {
            const float expected = isAlpha
                ? alpha.Float(x, 0, c)
                : reference::SharpenFloat(picture.Float(x, 0, c), blurred.Float(x, 0, c), amount);
            ASSERT_EQ(result.Float(x, 0, c), expected)
                << FormatName(format) << " amount " << amount << " at " << x << ", " << c;
        } else {
            const int expected = isAlpha
                ? alpha.Byte(x, 0, c)
                : reference::SharpenByte(picture.Byte(x, 0, c), blurred.Byte(x, 0, c), amount);
            ASSERT_EQ(result.Byte(x, 0, c), expected)
                << FormatName(format) << " amount " << amount << " at " << x << ", " << c;
        }
    }
}

void CompareVariant()
{
    std::uint32_t seed = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (int width = 1; width <= 70; ++width)
            for (const float amount : kAmounts) {
                PictureLayout layout;
                layout.guard = width % 3 == 0 ? Guard::PageEnd
                    : width % 3 == 1          ? Guard::PageStart
                                              : Guard::Moat;
                layout.shift = layout.guard == Guard::Moat ? width % 16 : 0;
                GuardedPicture picture(width, 1, format, layout), blurred(width, 1, format, layout),
                    alpha(width, 1, format, layout);
                picture.FillNoise(++seed, Noise::Leaning);
                blurred.FillNoise(++seed);
                alpha.FillNoise(++seed);
                // The result apart, in the blur's place and in the picture's.
                GuardedPicture apart(width, 1, format, layout), inBlur = blurred, inPicture = picture;
                const UnsharpCombine combine(format, amount);
                combine(picture.Row(0), blurred.Row(0), alpha.Row(0), apart.Row(0), width);
                combine(picture.Row(0), inBlur.Row(0), alpha.Row(0), inBlur.Row(0), width);
                combine(inPicture.Row(0), blurred.Row(0), alpha.Row(0), inPicture.Row(0), width);
                apart.Check();
                EXPECT_TRUE(Equal(inBlur, apart));
                EXPECT_TRUE(Equal(inPicture, apart));
                for (int x = 0; x < width; ++x)
                    ComparePixel(picture, blurred, alpha, apart, x, amount);
                if (testing::Test::HasFailure())
                    return;
            }
}

/// Rows so long that their results go past the caches, where they are aligned, and the ones beside them.
void CompareLongRows()
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F})
        for (const int width : {1279, 1280, 1281, 1286})
            for (const int shift : {0, 16}) {
                const PictureLayout layout = {.shift = shift};
                GuardedPicture picture(width, 1, format, layout), blurred(width, 1, format, layout),
                    apart(width, 1, format, layout);
                picture.FillNoise(1, Noise::Leaning);
                blurred.FillNoise(2);
                GuardedPicture inBlur = blurred;
                const UnsharpCombine combine(format, 0.91f);
                combine(picture.Row(0), blurred.Row(0), picture.Row(0), apart.Row(0), width);
                combine(picture.Row(0), inBlur.Row(0), picture.Row(0), inBlur.Row(0), width);
                apart.Check();
                inBlur.Check();
                EXPECT_TRUE(Equal(inBlur, apart));
                for (int x = 0; x < width; ++x)
                    ComparePixel(picture, blurred, picture, apart, x, 0.91f);
                if (testing::Test::HasFailure())
                    return;
            }
}

class UnsharpVariant : public testing::TestWithParam<CpuVariant> {
protected:
    void SetUp() override
    {
        if (!UseVariant(GetParam()))
            GTEST_SKIP() << "not on this processor, or not in this build";
    }
    void TearDown() override { UseVariant(m_before); }

private:
    CpuVariant m_before = CurrentVariant();
};

TEST_P(UnsharpVariant, EveryWidthFormatAndAmount_IsThePlainVersion)
{
    CompareVariant();
}

TEST_P(UnsharpVariant, RowsTooLongForTheCaches_AreThePlainVersion)
{
    CompareLongRows();
}

INSTANTIATE_TEST_SUITE_P(Variants, UnsharpVariant,
                         testing::Values(CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512));

} // namespace
} // namespace kelmora

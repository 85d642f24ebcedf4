// The edge step with alpha as a fourth channel.

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "effects/painterly/edge_lift.h"
#include "tests/effects/painterly/edge_pixel.h"
#include "tests/reference/color_melt.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

constexpr float kFogs[] = {0.0f, 0.1f, 0.23f, 0.5f, 0.77f, 0.99f, 1.0f, 2.0f, -0.5f};

void CallMember(const GuardedPicture& picture, GuardedPicture& output, float fog)
{
    const int width = picture.Width(), height = picture.Height();
    const int from = picture.Stride() / picture.PixelBytes(), to = output.Stride() / output.PixelBytes();
    const double level = 1 - static_cast<double>(fog);
    const auto share = static_cast<float>((1 - level * level) * 0.9607843160629272);
    switch (picture.Format()) {
    case PF_BGRA8:
        EdgeLiftAllChannels_BGRA8(picture.Row(0), output.Row(0), from, to, width, height, 1 - fog);
        break;
    case PF_ARGB8:
        EdgeLiftAllChannels_ARGB8(picture.Row(0), output.Row(0), from, to, width, height, 1 - fog);
        break;
    case PF_BGRA32F:
        EdgeLiftAllChannels_BGRA32F(picture.FloatRow(0), output.FloatRow(0), from, to, width, height, share);
        break;
    default:
        EdgeLiftAllChannels_ARGB32F(picture.FloatRow(0), output.FloatRow(0), from, to, width, height, share);
        break;
    }
}

/// Bit for bit: both round the luminance, the share and the threshold at the same places.
void ComparePixel(const GuardedPicture& picture, const GuardedPicture& blurred, const GuardedPicture& result,
                  int x, int y, float fog)
{
    const std::uint32_t format = picture.Format();
    const bool floats = IsFloatFormat(format);
    const reference::EdgePixel expected = floats
        ? reference::LiftAllFloat(EdgePixelAt(picture, x, y), EdgePixelAt(blurred, x, y), fog)
        : reference::LiftAllByte(EdgePixelAt(picture, x, y), EdgePixelAt(blurred, x, y), fog);
    const reference::EdgePixel is = EdgePixelAt(result, x, y);
    ASSERT_TRUE(is.blue == expected.blue && is.green == expected.green && is.red == expected.red
                && is.alpha == expected.alpha)
        << FormatName(format) << " fog " << fog << " at (" << x << ", " << y << "): " << is.blue << " "
        << is.green << " " << is.red << " " << is.alpha << ", expected " << expected.blue << " "
        << expected.green << " " << expected.red << " " << expected.alpha;
}

class EdgeLiftPixels : public testing::TestWithParam<CpuVariant> {
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

TEST_P(EdgeLiftPixels, AllChannels_EveryWidthFormatAndFog_IsThePlainVersion)
{
    std::uint32_t seed = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (int width = 1; width <= 70; ++width)
            for (const float fog : kFogs) {
                PictureLayout layout;
                layout.guard = width % 3 == 0 ? Guard::PageEnd
                    : width % 3 == 1          ? Guard::PageStart
                                              : Guard::Moat;
                layout.shift = layout.guard == Guard::Moat ? width % 16 : 0;
                const Noise noise = width % 2 != 0 ? Noise::Uniform : Noise::Leaning;
                GuardedPicture picture(width, 2, format, layout), blurred(width, 2, format, layout);
                picture.FillNoise(++seed, noise);
                blurred.FillNoise(++seed, noise);
                picture.Freeze();
                GuardedPicture result = blurred;
                CallMember(picture, result, fog);
                result.Check();
                for (int y = 0; y < 2; ++y)
                    for (int x = 0; x < width; ++x)
                        ComparePixel(picture, blurred, result, x, y, fog);
                if (HasFatalFailure())
                    return;
            }
}

INSTANTIATE_TEST_SUITE_P(Variants, EdgeLiftPixels,
                         testing::Values(CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512));

// Grey 200 has a luminance of (255 * 200) >> 8 = 199; full fog a threshold of (199 * 245) >> 8 = 190.
TEST(EdgeLiftAllChannels, ADarkPixel_RisesWithItsAlpha)
{
    GuardedPicture picture(1, 1, PF_BGRA8), output(1, 1, PF_BGRA8);
    picture.Fill(40, 40, 40, 100); // luminance 39
    output.Fill(200, 200, 200, 7);
    EdgeLiftAllChannels_BGRA8(picture.Row(0), output.Row(0), 1, 1, 1, 1, 0.0f);
    for (int c = 0; c < 3; ++c)
        EXPECT_EQ(output.Byte(0, 0, c), 191); // 40 + 190 - 39
    EXPECT_EQ(output.Byte(0, 0, 3), 251);
}

TEST(EdgeLiftAllChannels, ALightPixel_TakesTheDarkerOfAllFour)
{
    GuardedPicture picture(1, 1, PF_ARGB8), output(1, 1, PF_ARGB8);
    picture.SetColour(0, 0, 240, 250, 230, 100);
    output.SetColour(0, 0, 200, 255, 210, 7);
    EdgeLiftAllChannels_ARGB8(picture.Row(0), output.Row(0), 1, 1, 1, 1, 0.0f);
    const int expected[4] = {7, 210, 250, 200};
    for (int c = 0; c < 4; ++c)
        EXPECT_EQ(output.Byte(0, 0, c), expected[c]);
}

TEST(EdgeLiftAllChannels, AllChannelsByteShare_GoesFrom245ToNone)
{
    EXPECT_EQ(AllChannelsByteShare(0.0f), 245);
    EXPECT_EQ(AllChannelsByteShare(0.5f), 183);  // 183.75
    EXPECT_EQ(AllChannelsByteShare(0.75f), 107); // 107.1875
    EXPECT_EQ(AllChannelsByteShare(1.0f), 0);
    EXPECT_EQ(AllChannelsByteShare(-0.5f), 183);
}

// An edge of 7.5e-9 has a square of 5.6e-17. One less that is the double below 1, 245 times which truncates to
// 244; 245 times it, 1.38e-14, is too little to take from 245. White has a luminance of 254: 242 and 243.
TEST(EdgeLiftAllChannels, Kept_AllChannels_MayLiftToOneLess)
{
    EXPECT_EQ(AllChannelsByteShare(7.5e-9f), 244);
    const GuardedPicture black(1, 1, PF_BGRA8);
    GuardedPicture keepAlpha(1, 1, PF_BGRA8), allChannels(1, 1, PF_BGRA8);
    keepAlpha.Fill(255, 255, 255, 255);
    allChannels.Fill(255, 255, 255, 255);
    EdgeLiftKeepAlpha_BGRA8(black.Row(0), keepAlpha.Row(0), 1, 1, 1, 1, 7.5e-9f);
    EdgeLiftAllChannels_BGRA8(black.Row(0), allChannels.Row(0), 1, 1, 1, 1, 7.5e-9f);
    EXPECT_EQ(keepAlpha.Byte(0, 0, 1), 243);
    EXPECT_EQ(allChannels.Byte(0, 0, 1), 242);
}

} // namespace
} // namespace kelmora

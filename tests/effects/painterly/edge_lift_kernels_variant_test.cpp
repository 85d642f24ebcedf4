#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "effects/painterly/edge_lift.h"
#include "tests/effects/painterly/edge_pixel.h"
#include "tests/reference/air_brush.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

constexpr float kEdges[] = {
    0.0f, 0.15f, 0.27f, 0.5f, 0.57f, 0.9f, 1.0f, 2.0f, -0.5f, 1e18f, std::numeric_limits<float>::quiet_NaN()};

void CallMember(const GuardedPicture& picture, GuardedPicture& output, float edge)
{
    const int width = picture.Width(), height = picture.Height();
    const int from = picture.Stride() / picture.PixelBytes(), to = output.Stride() / output.PixelBytes();
    switch (picture.Format()) {
    case PF_BGRA8:
        EdgeLiftKeepAlpha_BGRA8(picture.Row(0), output.Row(0), from, to, width, height, edge);
        break;
    case PF_ARGB8:
        EdgeLiftKeepAlpha_ARGB8(picture.Row(0), output.Row(0), from, to, width, height, edge);
        break;
    case PF_BGRA32F:
        EdgeLiftKeepAlpha_BGRA32F(picture.FloatRow(0), output.FloatRow(0), from, to, width, height, edge);
        break;
    default:
        EdgeLiftKeepAlpha_ARGB32F(picture.FloatRow(0), output.FloatRow(0), from, to, width, height, edge);
        break;
    }
}

/// Bit for bit: both round the luminance, the share and the threshold at the same places.
void ComparePixel(const GuardedPicture& picture, const GuardedPicture& blurred, const GuardedPicture& result,
                  int x, int y, float edge)
{
    const std::uint32_t format = picture.Format();
    const bool floats = IsFloatFormat(format);
    const reference::EdgePixel expected = floats
        ? reference::LiftFloat(EdgePixelAt(picture, x, y), EdgePixelAt(blurred, x, y), edge)
        : reference::LiftByte(EdgePixelAt(picture, x, y), EdgePixelAt(blurred, x, y), edge);
    const reference::EdgePixel is = EdgePixelAt(result, x, y);
    const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
    ASSERT_TRUE(same(is.blue, expected.blue) && same(is.green, expected.green) && same(is.red, expected.red)
                && is.alpha == expected.alpha)
        << FormatName(format) << " edge " << edge << " at (" << x << ", " << y << "): " << is.blue << " "
        << is.green << " " << is.red << ", expected " << expected.blue << " " << expected.green << " "
        << expected.red;
}

void CompareVariant()
{
    std::uint32_t seed = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (int width = 1; width <= 70; ++width)
            for (const float edge : kEdges) {
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
                CallMember(picture, result, edge);
                result.Check();
                for (int y = 0; y < 2; ++y)
                    for (int x = 0; x < width; ++x)
                        ComparePixel(picture, blurred, result, x, y, edge);
                if (testing::Test::HasFatalFailure())
                    return;
            }
}

class EdgeLiftVariant : public testing::TestWithParam<CpuVariant> {
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

TEST_P(EdgeLiftVariant, EveryWidthFormatAndEdge_IsThePlainVersion)
{
    CompareVariant();
}

INSTANTIATE_TEST_SUITE_P(Variants, EdgeLiftVariant,
                         testing::Values(CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512));

} // namespace
} // namespace kelmora

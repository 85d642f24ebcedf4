#include "effects/painterly/color_melt_row.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference/color_melt.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

struct Look {
    float brightness, color, fog, amount;
};

constexpr Look kLooks[] = {
    {0.54f, 0.24f, 0.99f, 1.0f}, {0.54f, 0.24f, 0.99f, 0.37f}, {1.0f, 1.0f, 1.0f, 1.0f},
    {0.0f, 0.0f, 0.0f, 1.0f},    {0.0f, 1.0f, 0.0f, 0.999f},   {0.12f, 0.49f, 0.5f, 0.08f},
    {0.7f, 0.6f, 0.77f, 0.5f},   {4.0f, 2.0f, 0.5f, 0.6f},     {-1.0f, -2.0f, 0.5f, 0.6f},
};

/// A row's melt as the plain version makes it of whole pictures.
struct BothMelts {
    Melt melt;
    reference::MeltNumbers numbers;
};

BothMelts MeltOf(const Look& look)
{
    const double level = 1 - static_cast<double>(look.fog);
    const reference::MeltNumbers numbers = {look.amount,
                                            reference::MeltSaturationGain(look.color, look.amount),
                                            reference::MeltTarget(look.brightness), look.fog};
    return {{look.amount, numbers.gain, numbers.target, 1 - look.fog,
             static_cast<float>((1 - level * level) * 0.9607843160629272)},
            numbers};
}

void ExpectMelt(const GuardedPicture& mix, const GuardedPicture& blurred, const Look& look)
{
    const BothMelts melts = MeltOf(look);
    const MeltRow row(mix.Format(), melts.melt);
    GuardedPicture result(mix.Width(), mix.Height(), mix.Format(), mix.Layout());
    for (int y = 0; y < mix.Height(); ++y)
        row(mix.Row(y), blurred.Row(y), result.Row(y), mix.Width());
    result.Check();

    std::vector<double> sway;
    const reference::Picture expected =
        reference::MeltedPicture(reference::Read(mix), reference::Read(blurred), melts.numbers, &sway);
    if (!IsFloatFormat(mix.Format())) {
        ASSERT_TRUE(reference::Matches(result, expected)) << FormatName(mix.Format());
        return;
    }
    for (std::size_t i = 0; i < expected.values.size(); ++i) {
        const int pixel = static_cast<int>(i / 4), x = pixel % mix.Width(), y = pixel / mix.Width();
        const double is = static_cast<double>(result.Float(x, y, static_cast<int>(i % 4)));
        // Single precision on the way: some units, stretched as the colours are.
        ASSERT_LE(std::fabs(is - expected.values[i]), 8.0 / (1 << 24) + 2 * sway[i])
            << FormatName(mix.Format()) << " at (" << x << ", " << y << ")";
    }
}

class MeltRowVariant : public testing::TestWithParam<CpuVariant> {
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

TEST_P(MeltRowVariant, EveryWidthAndFormat_IsThePlainVersion)
{
    std::uint32_t seed = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (int width = 1; width <= 40; ++width)
            for (const Look& look : kLooks) {
                if (IsFloatFormat(format) && (look.brightness > 1 || look.brightness < 0))
                    continue; // bytes alone have ends to be cut at
                PictureLayout layout;
                layout.guard = width % 2 == 0 ? Guard::PageEnd : Guard::PageStart;
                GuardedPicture mix(width, 2, format, layout), blurred(width, 2, format, layout);
                mix.FillNoise(++seed, width % 3 == 0 ? Noise::Leaning : Noise::Uniform);
                blurred.FillNoise(++seed, width % 3 == 0 ? Noise::Leaning : Noise::Uniform);
                ExpectMelt(mix, blurred, look);
                if (HasFatalFailure())
                    return;
            }
}

// Every hue and saturation that bytes can have, nearly: all colours of multiples of 5, and the odd ones between.
TEST_P(MeltRowVariant, ManyColours_ArriveAsThePlainVersions)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const Look& look : {kLooks[0], kLooks[5]})
            for (int blue = 0; blue < 256; blue += 5) {
                GuardedPicture mix(52, 52, format), blurred(52, 52, format);
                mix.Fill(255, 255, 255, 255);
                for (int y = 0; y < 52; ++y)
                    for (int x = 0; x < 52; ++x)
                        blurred.SetColour(x, y, static_cast<std::uint8_t>(blue),
                                          static_cast<std::uint8_t>(5 * x),
                                          static_cast<std::uint8_t>(std::min(5 * y + blue % 3, 255)), 77);
                ExpectMelt(mix, blurred, look);
                if (HasFatalFailure())
                    return;
            }
}

INSTANTIATE_TEST_SUITE_P(Variants, MeltRowVariant,
                         testing::Values(CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512));

// Blue 200, green 100, red 50 is S 191 and H 14 of 255; nine times the saturation is full, and a value of 55
// gives green 14 / 255 * 6 * 55 = 18. The white mix takes no part but for the minimum.
TEST(MeltRow, AnAmountOfOne_IsTheDrivenBlurUnderTheMix)
{
    Melt melt = {};
    melt.amount = 1.0f;
    melt.saturationGain = 9.0;
    melt.targetValue = 55.0;
    melt.fogLevel = 1.0f;
    const MeltRow row(PF_BGRA8, melt);
    const std::uint8_t mix[4] = {255, 255, 255, 200};
    std::uint8_t blurred[4] = {200, 100, 50, 90};
    row(mix, blurred, blurred, 1); // in place
    EXPECT_EQ(blurred[0], 55);
    EXPECT_EQ(blurred[1], 18);
    EXPECT_EQ(blurred[2], 0);
    EXPECT_EQ(blurred[3], 90);
}

TEST(MeltRow, NoAmount_IsTheMix)
{
    for (const std::uint32_t format : kPictureFormats) {
        Melt melt = {};
        melt.saturationGain = 1.0;
        melt.targetValue = 155.0;
        GuardedPicture mix(33, 1, format), blurred(33, 1, format), result(33, 1, format);
        mix.FillNoise(1);
        blurred.FillNoise(2);
        MeltRow(format, melt)(mix.Row(0), blurred.Row(0), result.Row(0), 33);
        EXPECT_TRUE(Equal(result, mix));
    }
}

} // namespace
} // namespace kelmora

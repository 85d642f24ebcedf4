#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "image/primitives/cpu_variant.h"
#include "tests/effects/pictures_as_plain.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::Colormelt;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr double kNaNProgress = std::numeric_limits<double>::quiet_NaN();

// Soften, Fog, Brightness, Color, Tempo, Cross Fade.
const std::vector<std::vector<float>> kLevels = {
    {0.34f, 0.99f, 0.54f, 0.24f, 0.0f, 0.34f}, {0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f},
    {1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f},      {0.81f, 1.0f, 0.12f, 0.49f, 0.31f, 0.375f},
    {0.5f, 0.23f, 0.57f, 0.49f, 0.31f, 0.48f}, {0.0f, 1.0f, 0.74f, 1.0f, 0.15f, 0.45f},
    {0.75f, 1.0f, 1.0f, 0.0f, 0.6f, 0.54f},    {0.0f, 0.0f, 0.595f, 1.0f, 0.315f, 0.5f},
    {0.3f, 0.4f, 0.5f, 0.6f, 0.675f, 0.63f},
};

// What no host should say. Floats may leave any range there.
const std::vector<std::vector<float>> kWildLevels = {
    {5.0f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f}, {-2.0f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, 3.0f, 0.5f, 0.5f, 0.5f, 0.5f}, {0.5f, -2.0f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, 0.5f, 4.0f, 0.5f, 0.5f, 0.5f}, {0.5f, 0.5f, -1.0f, 0.5f, 0.5f, 0.5f},
    {0.5f, 0.5f, 0.5f, 2.0f, 0.5f, 0.5f}, {0.5f, 0.5f, 0.5f, -2.0f, 0.5f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0.5f, 3.0f, 0.5f}, {0.5f, 0.5f, 0.5f, 0.5f, -1.0f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 3.0f}, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, -1.0f},
    {kNaN, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f}, {0.5f, 0.5f, 0.5f, kNaN, 0.5f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0.5f, kNaN, 0.5f},
};

constexpr double kMoments[] = {0.0, 0.05, 0.25, 0.33, 0.4, 0.5, 0.6, 0.8, 0.95, 1.0, -3.0, 7.0, kNaNProgress};

GuardedPicture Flat(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint8_t blue,
                    std::uint8_t green, std::uint8_t red, std::uint8_t alpha)
{
    GuardedPicture picture(width, height, format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.SetColour(x, y, blue, green, red, alpha);
    return picture;
}

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed);
    return picture;
}

/// The melt of two pictures of the first one's size.
GuardedPicture Melted(const std::vector<float>& levels, const GuardedPicture& in,
                      const GuardedPicture* second, double progress)
{
    GuardedPicture out(in.Width(), in.Height(), in.Format());
    Moment moment;
    moment.second = second;
    moment.progress = progress;
    RenderFresh(kEffect, levels, moment, in, out);
    return out;
}

void ExpectColour(const GuardedPicture& picture, int x, int y, int blue, int green, int red, int alpha)
{
    const int expected[4] = {blue, green, red, alpha};
    for (int c = 0; c < 4; ++c)
        EXPECT_EQ(picture.Byte(x, y, PlaceOfColour(picture.Format(), c)), expected[c])
            << "colour " << c << ", " << FormatName(picture.Format());
}

// --- knobs --------------------------------------------------------------------------------------------

TEST(ColorMelt, Render_AsksForItsKnobsInOrder)
{
    FakeHost host(Levels(kEffect, kLevels[0]));
    const GuardedPicture in = MakePicture(Motif::Ramp, 9, 7, PF_BGRA8);
    GuardedPicture out(9, 7, PF_BGRA8);
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
    std::vector<KnobRead> expected;
    for (std::uint32_t k = 0; k < 6; ++k)
        expected.push_back({k, ParamFloat});
    EXPECT_EQ(host.Reads(), expected);
    EXPECT_TRUE(host.OtherCalls().empty());
    EXPECT_EQ(host.Queries(), std::vector<InterfaceId>{IMemoryProvider::id});
}

TEST(ColorMelt, Render_RefusedKnobs_ReadAsTheOneBefore)
{
    const std::vector<float> levels = {0.6f, 0.9f, 0.45f, 0.55f, 0.3f, 0.8f};
    const GuardedPicture in = MakePicture(Motif::Moving, 31, 40, PF_BGRA8);
    for (std::uint32_t k = 0; k < 6; ++k) {
        FakeHost host(Levels(kEffect, levels));
        host.RefuseKnob(k);
        GuardedPicture out(31, 40, PF_BGRA8), expected(31, 40, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
        std::vector<float> read = levels;
        read[k] = k == 0 ? 0.0f : levels[k - 1];
        RenderFresh(kEffect, read, in, expected);
        EXPECT_TRUE(Equal(out, expected)) << k;
    }
}

// --- whole pictures against the plain version -----------------------------------------------------------

TEST(ColorMelt, Render_AllSmallSizes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 1; height <= 8; ++height)
            for (int width = 1; width <= 8; ++width)
                CompareTransition(kEffect, format, {width, height, width, height, width, height},
                                  kLevels[random() % kLevels.size()], kMoments[random() % 10], false, random);
}

TEST(ColorMelt, Render_SmallPicturesWithWideKernels_AreThePlainVersions)
{
    std::mt19937 random(2);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 3; height <= 7; ++height)
            for (int width = 3; width <= 7; ++width)
                CompareTransition(kEffect, format, {width, height, width, height, width, height},
                                  {static_cast<float>(random() % 30), 0.6f, 0.4f, 0.3f, 0.3f, 0.5f}, 0.45,
                                  false, random);
}

TEST(ColorMelt, Render_RandomSizesAndKnobs_AreThePlainVersions)
{
    std::mt19937 random(3);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 120; ++i)
            CompareTransition(kEffect, format, RandomSizes(random, 80, 60),
                              kLevels[random() % kLevels.size()], kMoments[random() % std::size(kMoments)],
                              random() % 2 != 0, random);
}

TEST(ColorMelt, Render_WildKnobs_AreThePlainVersionsInBytes)
{
    std::mt19937 random(4);
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const std::vector<float>& levels : kWildLevels)
            for (const double progress : {0.3, 0.5})
                CompareTransition(kEffect, format, {23, 19, 23, 19, 23, 19}, levels, progress, false, random);
}

TEST(ColorMelt, Render_EveryCpuVariant_GivesTheSamePixels)
{
    const CpuVariant before = CurrentVariant();
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(67, 41, format, 77), second = Noisy(67, 41, format, 78);
        ASSERT_TRUE(UseVariant(CpuVariant::Baseline));
        const GuardedPicture expected = Melted(kLevels[4], in, &second, 0.45);
        for (const CpuVariant variant : {CpuVariant::Avx2, CpuVariant::Avx512}) {
            if (!UseVariant(variant))
                continue;
            EXPECT_TRUE(Equal(Melted(kLevels[4], in, &second, 0.45), expected)) << FormatName(format);
        }
    }
    UseVariant(before);
}

// --- progress ----------------------------------------------------------------------------------------------

TEST(ColorMelt, Render_AtTheEnds_IsTheCleanPictureBitForBit)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::vector<float>& levels : kLevels) {
            const GuardedPicture in = Noisy(37, 29, format, 1), second = Noisy(37, 29, format, 2);
            for (const double start : {0.0, -0.0, -1.0, -1e300, kNaNProgress})
                EXPECT_TRUE(Equal(Melted(levels, in, &second, start), in)) << start;
            for (const double end : {1.0, 1.0000001, 1e300, std::numeric_limits<double>::infinity()})
                EXPECT_TRUE(Equal(Melted(levels, in, &second, end), second)) << end;
        }
}

TEST(ColorMelt, Render_ProgressThatSinglePrecisionTakesToTheEnd_IsTheSecondPicture)
{
    const GuardedPicture in = Noisy(20, 20, PF_BGRA8, 1), second = Noisy(20, 20, PF_BGRA8, 2);
    EXPECT_TRUE(Equal(Melted(kLevels[2], in, &second, 1 - 1e-9), second));
}

TEST(ColorMelt, Render_NoCrossFade_CutsInTheMiddle)
{
    for (const std::uint32_t format : kPictureFormats) {
        const std::vector<float> levels = {0.3f, 0.9f, 0.5f, 0.5f, 0.3f, 0.0f};
        const GuardedPicture a = Noisy(24, 20, format, 1), b = Noisy(24, 20, format, 2),
                             c = Noisy(24, 20, format, 3);
        for (const double upToTheCut : {0.3, 0.4999, 0.5}) // at 0.5 itself the position is 0
            EXPECT_TRUE(Equal(Melted(levels, a, &b, upToTheCut), Melted(levels, a, &c, upToTheCut)));
        for (const double afterIt : {0.5001, 0.7})
            EXPECT_TRUE(Equal(Melted(levels, a, &c, afterIt), Melted(levels, b, &c, afterIt)));
    }
}

// Flat greys with full Brightness, no Color and no Fog: the melt of a grey is lighter, and no Fog takes the
// darker of it and the mix, so that the mix shows alone. With Cross Fade 1 a quarter of the way is a mix of
// 191 to 64 of 255ths: (100 * 191 + 200 * 64) / 255 = 125. Between the dissolve's ends and its own nothing
// moves with a narrow Cross Fade.
TEST(ColorMelt, Render_FullCrossFade_SpansTheWholeTransition)
{
    const GuardedPicture a = Flat(12, 12, PF_BGRA8, 100, 100, 100, 100);
    const GuardedPicture b = Flat(12, 12, PF_BGRA8, 200, 200, 200, 200);
    const auto level = [&](float crossFade, double progress) {
        return Melted({0.0f, 0.0f, 1.0f, 0.0f, 0.0f, crossFade}, a, &b, progress).Byte(6, 6, 0);
    };
    EXPECT_EQ(level(1.0f, 0.25), 125);
    EXPECT_EQ(level(0.5f, 0.25), 100); // the start of the dissolve
    EXPECT_EQ(level(0.5f, 0.375), 125);
    EXPECT_EQ(level(0.5f, 0.75), 200);
    EXPECT_EQ(level(0.25f, 0.36), 100);
    EXPECT_EQ(level(0.25f, 0.64), 200);
}

// --- the colour work, at the middle of a cut: an amount of 1 on the first picture alone -----------------------

// Value goes to the target: 255 for full Brightness, 55 for none. Full Fog: white has a luminance of 254, its
// share (254 * 245) >> 8 = 243, the grey 100 one of 99, so all four channels rise by 144. For 55: luminance
// 54, share 51, below 99: the darker of both.
TEST(ColorMelt, Render_FullAndNoBrightness_PullTheValueToItsTarget)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture in = Flat(20, 15, format, 100, 100, 100, 50);
        const GuardedPicture light = Melted({0.3f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f}, in, &in, 0.5);
        const GuardedPicture dark = Melted({0.3f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f}, in, &in, 0.5);
        for (int x = 0; x < 20; ++x) {
            ExpectColour(light, x, 7, 244, 244, 244, 194);
            ExpectColour(dark, x, 7, 55, 55, 55, 50);
        }
    }
}

TEST(ColorMelt, Render_LiftedAlpha_StopsAt255InBytes)
{
    const GuardedPicture in = Flat(20, 15, PF_BGRA8, 100, 100, 100, 200);
    ExpectColour(Melted({0.3f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f}, in, &in, 0.5), 5, 5, 244, 244, 244, 255);
}

// Floats: a target of 1, a share of 0.997 * 0.9607843 = 0.957902, and a grey of 0.4 with a luminance of 0.3988:
// a rise of 0.559102, alpha's too, and nothing cuts it.
TEST(ColorMelt, Render_LiftedFloats_MayLeaveTheRange)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture in(20, 15, format);
        in.FillFloat(0.4f, 0.4f, 0.4f, 0.4f);
        for (int y = 0; y < 15; ++y)
            for (int x = 0; x < 20; ++x)
                in.SetFloat(x, y, PlaceOfColour(format, 3), 0.9f);
        const GuardedPicture out = Melted({0.3f, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f}, in, &in, 0.5);
        for (int x = 0; x < 20; ++x) {
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(out.Float(x, 7, PlaceOfColour(format, c)), 0.959102, 2e-6);
            EXPECT_NEAR(out.Float(x, 7, PlaceOfColour(format, 3)), 1.459102, 2e-6);
        }
    }
}

// Blue 200, green 100, red 50: V 200, S 255 * 150 / 200 = 191, H (1 - 2/3) * 60 = 20 degrees, that is 14 of
// 255. With no Brightness V becomes 55. Back: low = 55 * 64 / 255 = 13.8, green 13.8 + 0.3294 * 41.2 = 27.4.
// No Fog: the darker of that and the mix, which it is itself, and of two equal alphas.
TEST(ColorMelt, Render_NoColor_KeepsHueAndSaturationOfTheMix)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture in = Flat(20, 15, format, 200, 100, 50, 77);
        ExpectColour(Melted({0.3f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f}, in, &in, 0.5), 9, 7, 55, 27, 14, 77);
    }
}

// Full Color: nine times the saturation, cut to 255, so low is 0 and green 0.3294 * 55 = 18.1.
TEST(ColorMelt, Render_FullColor_SaturatesTheMix)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture in = Flat(20, 15, format, 200, 100, 50, 77);
        ExpectColour(Melted({0.3f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f}, in, &in, 0.5), 9, 7, 55, 18, 0, 77);
    }
}

// The same in floats: S 0.75 times 9 is 1, H 20 / 360, V 55 / 255 = 0.215686: green 0.215686 / 3.
TEST(ColorMelt, Render_FullColorFloats_SaturateTheMix)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        const GuardedPicture in = Flat(20, 15, format, 200, 100, 50, 77);
        const GuardedPicture out = Melted({0.3f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f}, in, &in, 0.5);
        EXPECT_NEAR(out.Float(9, 7, PlaceOfColour(format, 0)), 0.215686, 1e-6);
        EXPECT_NEAR(out.Float(9, 7, PlaceOfColour(format, 1)), 0.071895, 1e-6);
        EXPECT_NEAR(out.Float(9, 7, PlaceOfColour(format, 2)), 0.0, 1e-6);
        EXPECT_NEAR(out.Float(9, 7, PlaceOfColour(format, 3)), 77.0 / 255, 1e-6);
    }
}

// Half-way to the middle without Tempo: an amount of 0.5. Grey 101 and no Brightness: V = (55 - 101) * 0.5 +
// 101 = 78. No Fog keeps the 78; the last dissolve weighs 128 and 128 of 255ths: (101 + 78) * 128 / 255 = 89.
TEST(ColorMelt, Render_NoTempo_MeltsInStepWithProgress)
{
    const GuardedPicture in = Flat(20, 15, PF_BGRA8, 101, 101, 101, 60);
    const GuardedPicture out = Melted({0.3f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f}, in, &in, 0.25);
    ExpectColour(out, 9, 7, 89, 89, 89, 60);
}

// Full Tempo: 1 - 0.5 to the fourth is 0.9375. V = -46 * 0.9375 + 101 = 57.875, so 57; weights of 16 and 239:
// (101 * 16 + 57 * 239) / 255 = 59.
TEST(ColorMelt, Render_FullTempo_MeltsEarly)
{
    const GuardedPicture in = Flat(20, 15, PF_BGRA8, 101, 101, 101, 60);
    const GuardedPicture out = Melted({0.3f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f}, in, &in, 0.25);
    ExpectColour(out, 9, 7, 59, 59, 59, 60);
}

// --- pictures ------------------------------------------------------------------------------------------------

TEST(ColorMelt, Render_AlphaFirst_GivesTheColoursOfAlphaLast)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F})
        for (int i = 0; i < 8; ++i) {
            const GuardedPicture in = Noisy(3 + 7 * i, 60 - 6 * i, format, static_cast<std::uint32_t>(i));
            const GuardedPicture second = Incoming(in);
            const GuardedPicture reversed = WithChannelsReversed(in), other = WithChannelsReversed(second);
            EXPECT_TRUE(Equal(WithChannelsReversed(Melted(kLevels[4], reversed, &other, 0.45)),
                              Melted(kLevels[4], in, &second, 0.45)));
        }
}

TEST(ColorMelt, Render_ASmallerSecondPicture_LeavesNothingWhereItEnds)
{
    // After the dissolve the mix is the second picture, and zeros around it: the same as with a second picture
    // of full size that holds them.
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(40, 30, format, 1), small = Noisy(25, 17, format, 2);
        GuardedPicture framed(40, 30, format);
        for (int y = 0; y < 17; ++y)
            for (int x = 0; x < 25 * BytesOfPixel(format); ++x)
                framed.Row(y)[x] = small.Row(y)[x];
        EXPECT_TRUE(Equal(Melted(kLevels[0], in, &small, 0.8), Melted(kLevels[0], in, &framed, 0.8)));
    }
}

TEST(ColorMelt, Render_WithoutASecondPicture_DissolvesToNothing)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(40, 30, format, 1), black(40, 30, format);
        const std::uint32_t otherFormat = IsFloatFormat(format) ? PF_BGRA8 : PF_BGRA32F;
        const GuardedPicture otherBytes = Noisy(40, 30, otherFormat, 2);
        // Where the first picture is alone the second plays no part.
        for (const double progress : {0.0, 0.2})
            EXPECT_TRUE(
                Equal(Melted(kLevels[0], in, nullptr, progress), Melted(kLevels[0], in, &black, progress)));
        const GuardedPicture expected = Melted(kLevels[0], in, &black, 0.8);
        EXPECT_TRUE(Equal(Melted(kLevels[0], in, nullptr, 0.8), expected));
        EXPECT_TRUE(Equal(Melted(kLevels[0], in, &otherBytes, 0.8), expected));
        EXPECT_TRUE(Equal(Melted(kLevels[0], in, nullptr, 1.0), black));
        // In the dissolve there is nothing to blend with: not even the first picture shows.
        GuardedPicture nothing = Melted(kLevels[0], black, &black, 0.5);
        EXPECT_TRUE(Equal(Melted(kLevels[0], in, nullptr, 0.5), nothing));
        EXPECT_TRUE(Equal(Melted(kLevels[0], in, &otherBytes, 0.5), nothing));
    }
}

TEST(ColorMelt, Render_ASecondPictureWithoutPixels_CountsAsNone)
{
    const GuardedPicture in = Noisy(40, 30, PF_BGRA8, 1);
    GuardedPicture out(40, 30, PF_BGRA8);
    FakeHost host(Levels(kEffect, kLevels[0]));
    VideoFrame first = in.Frame(), second = in.Frame(), output = out.Frame();
    second.data = nullptr;
    RenderInfo info = MakeInfo(AtProgress(0.8));
    EXPECT_TRUE(NewEffect(kEffect)->Render(&host, &first, &second, &output, &info));
    EXPECT_TRUE(Equal(out, Melted(kLevels[0], in, nullptr, 0.8)));
}

TEST(ColorMelt, Render_Fields_MakeNoDifference)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(30, 40, format, 1);
        GuardedPicture frame(30, 40, format), field(30, 40, format);
        RenderFresh(kEffect, kLevels[4], in, frame, false);
        RenderFresh(kEffect, kLevels[4], in, field, true);
        EXPECT_TRUE(Equal(frame, field));
    }
}

// A blur for 90 rows of picture would be wider than for the 30 of the output; it is the output's that counts.
TEST(ColorMelt, Render_LowerOutput_NarrowsTheBlur)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(50, 90, format, 1);
        GuardedPicture cropped(50, 30, format), out(50, 30, format);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 50 * BytesOfPixel(format); ++x)
                cropped.Row(y)[x] = in.Row(y)[x];
        Moment moment;
        moment.second = &cropped;
        moment.progress = 0.5;
        RenderFresh(kEffect, kLevels[4], moment, in, out);
        EXPECT_TRUE(Equal(out, Melted(kLevels[4], cropped, &cropped, 0.5)));
    }
}

TEST(ColorMelt, Render_ABlurBeyondAnyMemory_LeavesTheDissolve)
{
    for (const float soften : {1e9f, 1e30f, std::numeric_limits<float>::infinity()})
        for (const std::uint32_t format : kPictureFormats) {
            const GuardedPicture in = Noisy(20, 30, format, 1), second = Noisy(20, 30, format, 2);
            // Cross Fade 0: a cut, so the dissolve at 0.4 is the first picture.
            const GuardedPicture out = Melted({soften, 0.9f, 0.5f, 0.5f, 0.5f, 0.0f}, in, &second, 0.4);
            if (IsFloatFormat(format))
                EXPECT_TRUE(Near(out, in, 1e-6));
            else
                EXPECT_TRUE(Equal(out, in));
        }
}

TEST(ColorMelt, Render_SpecialFloats_StayInsideTheMemory)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F})
        for (const std::vector<float>& levels : kWildLevels) {
            GuardedPicture in(21, 17, format), second(21, 17, format);
            in.FillNoise(21, Noise::Special);
            second.FillNoise(22, Noise::Special);
            for (const double progress : {0.2, 0.5, 0.9})
                Melted(levels, in, &second, progress).Check();
        }
}

TEST(ColorMelt, Render_WithoutInfo_IsRefusedAndWritesNothing)
{
    FakeHost host(Levels(kEffect, kLevels[0]));
    const GuardedPicture in = MakePicture(Motif::Ramp, 20, 30, PF_BGRA8);
    GuardedPicture out = Noisy(20, 30, PF_BGRA8, 4);
    const GuardedPicture before = out;
    VideoFrame first = in.Frame(), second = in.Frame(), output = out.Frame();
    EXPECT_FALSE(NewEffect(kEffect)->Render(&host, &first, &second, &output, nullptr));
    EXPECT_TRUE(Equal(out, before));
}

} // namespace
} // namespace kelmora

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "image/primitives/cpu_variant.h"
#include "tests/effects/pictures_as_plain.h"
#include "tests/reference/detail_enhancer.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::UnsharpMask;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Definition and Strength.
const std::vector<std::vector<float>> kLevels = {
    {0.0f, 0.0f},   {1.0f, 1.0f},     {0.0f, 1.0f},  {1.0f, 0.0f},     {0.5f, 0.5f}, {0.1f, 1.0f},
    {0.885f, 1.0f}, {0.085f, 0.455f}, {0.17f, 1.0f}, {0.755f, 0.465f}, {kNaN, 0.5f}, {0.5f, kNaN},
    {-1.0f, 0.5f},  {0.5f, -1.0f},    {6.0f, 0.7f},  {1e30f, 0.6f}};

// --- knobs --------------------------------------------------------------------------------------------

TEST(DetailEnhancer, Render_AsksForStrengthThenDefinitionAsLevels)
{
    FakeHost host{LevelKnob(0.5f), LevelKnob(0.5f)};
    const GuardedPicture in = MakePicture(Motif::Ramp, 9, 7, PF_BGRA8);
    GuardedPicture out(9, 7, PF_BGRA8);
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
    EXPECT_EQ(host.Reads(), (std::vector<KnobRead>{{1, ParamFloat}, {0, ParamFloat}}));
    EXPECT_TRUE(host.OtherCalls().empty());
    EXPECT_EQ(host.Queries(), std::vector<InterfaceId>{IMemoryProvider::id});
}

TEST(DetailEnhancer, Render_RefusedKnobs_ReadAsTheOneBefore)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 31, 40, PF_BGRA8);
    const auto render = [&](std::vector<std::uint32_t> refused) {
        FakeHost host{LevelKnob(0.9f), LevelKnob(0.3f)};
        for (const std::uint32_t knob : refused)
            host.RefuseKnob(knob);
        GuardedPicture out(31, 40, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
        return out;
    };
    GuardedPicture bothStrength(31, 40, PF_BGRA8);
    RenderFresh(kEffect, {0.3f, 0.3f}, in, bothStrength); // Definition is asked for after Strength
    EXPECT_TRUE(Equal(render({0}), bothStrength));
    EXPECT_TRUE(Equal(render({1}), in)); // no strength
    EXPECT_TRUE(Equal(render({0, 1}), in));
}

// --- whole pictures against the plain version -----------------------------------------------------------

TEST(DetailEnhancer, Render_AllSmallSizes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 1; height <= 9; ++height)
            for (int width = 1; width <= 9; ++width)
                CompareCase(kEffect, format, width, height, width, height, kLevels[random() % kLevels.size()],
                            random() % 2 != 0, random);
}

TEST(DetailEnhancer, Render_RandomSizesAndKnobs_AreThePlainVersions)
{
    std::mt19937 random(3);
    const auto upTo = [&](std::uint32_t most) { return static_cast<std::int32_t>(random() % most + 1); };
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 250; ++i) {
            const std::int32_t width = upTo(90), height = upTo(60);
            const bool same = random() % 2 != 0;
            CompareCase(kEffect, format, width, height, same ? width : upTo(90), same ? height : upTo(60),
                        kLevels[random() % kLevels.size()], random() % 2 != 0, random);
        }
}

// Small amounts: the plain version's float bound holds for amounts up to 2 alone, bytes for all.
TEST(DetailEnhancer, Render_WildStrengths_AreThePlainVersionsInBytes)
{
    std::mt19937 random(4);
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const float strength :
             {1.2f, 7.0f, 150.0f, 1e6f, 1e30f, 1e-6f, std::numeric_limits<float>::infinity()})
            CompareCase(kEffect, format, 37, 29, 37, 29, {0.4f, strength}, false, random);
}

TEST(DetailEnhancer, Render_EveryCpuVariant_GivesTheSamePixels)
{
    const CpuVariant before = CurrentVariant();
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture in(67, 41, format);
        in.FillNoise(77);
        GuardedPicture expected(67, 41, format);
        ASSERT_TRUE(UseVariant(CpuVariant::Baseline));
        RenderFresh(kEffect, {0.5f, 0.5f}, in, expected);
        for (const CpuVariant variant : {CpuVariant::Avx2, CpuVariant::Avx512}) {
            if (!UseVariant(variant))
                continue;
            GuardedPicture out(67, 41, format);
            RenderFresh(kEffect, {0.5f, 0.5f}, in, out);
            EXPECT_TRUE(Equal(out, expected)) << FormatName(format);
        }
    }
    UseVariant(before);
}

// --- what the effect promises ----------------------------------------------------------------------------

TEST(DetailEnhancer, Render_NoStrength_CopiesThePicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float strength : {0.0f, -0.5f, kNaN}) {
            GuardedPicture in(33, 21, format);
            in.FillNoise(8);
            GuardedPicture out(33, 21, format);
            RenderFresh(kEffect, {0.5f, strength}, in, out);
            EXPECT_TRUE(Equal(out, in));
        }
}

TEST(DetailEnhancer, Render_FlatGreyBytes_StayWhenBothProductsCancel)
{
    // Half strength: an amount of 1, whose products are the bytes themselves.
    for (const std::uint8_t level :
         {std::uint8_t{0}, std::uint8_t{1}, std::uint8_t{128}, std::uint8_t{255}}) {
        GuardedPicture in(40, 50, PF_BGRA8);
        in.Fill(level, level, level, 99);
        GuardedPicture out(40, 50, PF_BGRA8);
        RenderFresh(kEffect, {0.5f, 0.5f}, in, out);
        EXPECT_TRUE(Equal(out, in)) << static_cast<int>(level);
    }
}

TEST(DetailEnhancer, Render_FlatGreyFloats_StayApartFromRounding)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture in(40, 50, format);
        in.FillFloat(0.5f, 0.5f, 0.5f, 0.25f);
        if (format == PF_ARGB32F)
            in.FillFloat(0.5f, 0.5f, 0.5f, 0.5f);
        GuardedPicture out(40, 50, format);
        RenderFresh(kEffect, {0.5f, 1.0f}, in, out);
        EXPECT_TRUE(Near(out, in, 1e-6));
    }
}

TEST(DetailEnhancer, Render_HardEdge_SaturatesAtBothEnds)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture in(60, 60, format);
        for (int y = 0; y < 60; ++y)
            for (int x = 0; x < 60; ++x) {
                const auto level = static_cast<std::uint8_t>(x < 30 ? 30 : 220);
                in.SetColour(x, y, level, level, level, 128);
            }
        GuardedPicture out(60, 60, format);
        RenderFresh(kEffect, {0.5f, 1.0f}, in, out);
        const auto green = PlaceOfColour(format, 1);
        if (IsFloatFormat(format)) {
            EXPECT_EQ(out.Float(29, 30, green), 0.0f);
            EXPECT_EQ(out.Float(30, 30, green), 1.0f);
        } else {
            EXPECT_EQ(out.Byte(29, 30, green), 0);
            EXPECT_EQ(out.Byte(30, 30, green), 255);
        }
    }
}

// A field's blur is twice as wide as high: vertical stripes far from the border give what a frame with twice
// the horizontal size would. 20 rows, Definition 0.5: 0.355 * 20 * 0.3 is 2.13, so 2 taps; 4 taps for a field.
TEST(DetailEnhancer, Render_Field_BlursTwiceAsWide)
{
    GuardedPicture in(40, 20, PF_BGRA8);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x) {
            const auto level = static_cast<std::uint8_t>(x < 20 ? 60 : 180);
            in.SetColour(x, y, level, level, level, 255);
        }
    GuardedPicture frame(40, 20, PF_BGRA8), field(40, 20, PF_BGRA8);
    RenderFresh(kEffect, {0.5f, 0.5f}, in, frame, false);
    RenderFresh(kEffect, {0.5f, 0.5f}, in, field, true);
    // Twice the picture less the blur. Weights 1, 1 over x, x + 1: 120 at column 19.
    EXPECT_EQ(frame.Byte(18, 10, 0), 60);
    EXPECT_EQ(frame.Byte(19, 10, 0), 0);
    EXPECT_EQ(frame.Byte(20, 10, 0), 180);
    // Weights 1, 2, 2, 1 over x - 1 to x + 2: 80 at 18, 120 at 19, 160 at 20.
    EXPECT_EQ(field.Byte(17, 10, 0), 60);
    EXPECT_EQ(field.Byte(18, 10, 0), 40);
    EXPECT_EQ(field.Byte(19, 10, 0), 0);
    EXPECT_EQ(field.Byte(20, 10, 0), 200);
    EXPECT_EQ(field.Byte(21, 10, 0), 180);
}

TEST(DetailEnhancer, Render_TallPicture_CutsTheBlurTo100)
{
    // 1080 rows at Definition 0.5 ask for 116, and full Definition for still more: both act as 100.
    GuardedPicture in(9, 1080, PF_BGRA8);
    in.FillNoise(12);
    GuardedPicture half(9, 1080, PF_BGRA8), full(9, 1080, PF_BGRA8);
    const GuardedPicture before = half;
    RenderFresh(kEffect, {0.5f, 0.5f}, in, half);
    RenderFresh(kEffect, {1.0f, 0.5f}, in, full);
    EXPECT_TRUE(Equal(half, full));
    EXPECT_TRUE(AsPlain(kEffect, {0.5f, 0.5f}, in, before, half));
}

TEST(DetailEnhancer, Render_AlphaIsThePicturesOwn)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = MakePicture(Motif::AlphaRamp, 41, 33, format);
        GuardedPicture out(41, 33, format);
        out.FillNoise(3);
        RenderFresh(kEffect, {0.9f, 0.7f}, in, out);
        const auto alpha = PlaceOfColour(format, 3);
        for (int y = 0; y < 33; ++y)
            for (int x = 0; x < 41; ++x) {
                if (IsFloatFormat(format))
                    ASSERT_EQ(out.Float(x, y, alpha), in.Float(x, y, alpha));
                else
                    ASSERT_EQ(out.Byte(x, y, alpha), in.Byte(x, y, alpha));
            }
    }
}

TEST(DetailEnhancer, Render_FloatsAreClampedToTheRange)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture in(50, 40, format);
        in.FillNoise(21, Noise::Special);
        GuardedPicture out(50, 40, format);
        RenderFresh(kEffect, {0.5f, 0.8f}, in, out);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 50; ++x)
                for (int c = 0; c < 3; ++c) {
                    const float value = out.Float(x, y, PlaceOfColour(format, c));
                    ASSERT_TRUE(value >= 0.0f && value <= 1.0f) << value;
                }
    }
}

TEST(DetailEnhancer, Render_WithoutInfo_IsRefusedAndWritesNothing)
{
    FakeHost host{LevelKnob(0.5f), LevelKnob(0.5f)};
    const GuardedPicture in = MakePicture(Motif::Ramp, 20, 30, PF_BGRA8);
    GuardedPicture out(20, 30, PF_BGRA8);
    out.FillNoise(4);
    const GuardedPicture before = out;
    VideoFrame first = in.Frame(), output = out.Frame();
    EXPECT_FALSE(NewEffect(kEffect)->Render(&host, &first, nullptr, &output, nullptr));
    EXPECT_TRUE(Equal(out, before));
}

} // namespace
} // namespace kelmora

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "image/primitives/cpu_variant.h"
#include "tests/effects/pictures_as_plain.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::WaterColor;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Color Shift, Color, Brightness, Contrast, Brush Width, Blend.
const std::vector<std::vector<float>> kLevels = {
    {0.53f, 0.69f, 0.435f, 0.64f, 1.0f, 0.885f}, {0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f},
    {1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f},        {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.0f, 0.23f, 0.285f, 1.0f, 0.53f, 0.5f},    {0.5001f, 0.5001f, 0.5001f, 0.5001f, 0.0001f, 0.0001f},
    {0.9f, 0.3f, 0.6f, 0.2f, 0.3f, 1.0f},        {0.5f, 0.5f, 0.5f, 0.5f, 4.0f, 1.0f},
    {-1.0f, 2.0f, -0.5f, 1.5f, -3.0f, 1.5f},     {kNaN, 0.5f, 0.5f, 0.5f, 0.5f, 1.0f},
    {0.5f, kNaN, 0.5f, 0.5f, 0.5f, 1.0f},        {0.5f, 0.5f, kNaN, 0.5f, 0.5f, 1.0f},
    {0.5f, 0.5f, 0.5f, kNaN, 0.5f, 1.0f},        {0.5f, 0.5f, 0.5f, 0.5f, kNaN, 1.0f},
    {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, kNaN},        {0.5f, 0.5f, 0.5f, 0.5f, -kInfinity, -1.0f},
};

/// All colour knobs in the middle, and no blending: black stays black, white nearly white.
std::vector<float> PlainPaint(float brushWidth)
{
    return {0.5f, 0.5f, 0.5f, 0.5f, brushWidth, 1.0f};
}

/// Black with a white rectangle.
GuardedPicture WithWhite(std::int32_t width, std::int32_t height, std::uint32_t format, int left, int top,
                         int right, int bottom)
{
    GuardedPicture picture(width, height, format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool inside = x >= left && x < right && y >= top && y < bottom;
            const auto level = static_cast<std::uint8_t>(inside ? 255 : 0);
            picture.SetColour(x, y, level, level, level, 200);
        }
    return picture;
}

int GreenAt(const GuardedPicture& picture, int x, int y)
{
    const auto place = PlaceOfColour(picture.Format(), 1);
    return IsFloatFormat(picture.Format())
        ? static_cast<int>(std::lround(picture.Float(x, y, place) * 255.0f))
        : picture.Byte(x, y, place);
}

// --- knobs --------------------------------------------------------------------------------------------

TEST(WaterColor, Render_AsksForItsKnobsInTheirKeptOrder)
{
    FakeHost host(Levels(kEffect, kLevels[0]));
    const GuardedPicture in = MakePicture(Motif::Ramp, 9, 7, PF_BGRA8);
    GuardedPicture out(9, 7, PF_BGRA8);
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
    EXPECT_EQ(host.Reads(),
              (std::vector<KnobRead>{{4, ParamFloat},
                                     {3, ParamFloat},
                                     {2, ParamFloat},
                                     {1, ParamFloat},
                                     {0, ParamFloat},
                                     {5, ParamFloat}}));
    EXPECT_TRUE(host.OtherCalls().empty());
}

TEST(WaterColor, Render_RefusedKnobs_ReadAsTheOneBefore)
{
    const std::vector<float> levels = {0.6f, 0.7f, 0.45f, 0.55f, 0.9f, 0.8f};
    const GuardedPicture in = MakePicture(Motif::Moving, 31, 60, PF_BGRA8);
    const std::vector<std::uint32_t> asked = {4, 3, 2, 1, 0, 5};
    for (std::size_t i = 0; i < asked.size(); ++i) {
        FakeHost host(Levels(kEffect, levels));
        host.RefuseKnob(asked[i]);
        GuardedPicture out(31, 60, PF_BGRA8), expected(31, 60, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
        std::vector<float> read = levels;
        read[asked[i]] = i == 0 ? 0.0f : levels[asked[i - 1]];
        RenderFresh(kEffect, read, in, expected);
        EXPECT_TRUE(Equal(out, expected)) << asked[i];
    }
}

// --- whole pictures against the plain version -----------------------------------------------------------

TEST(WaterColor, Render_AllSmallSizes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 1; height <= 7; ++height)
            for (int width = 1; width <= 7; ++width)
                CompareCase(kEffect, format, width, height, width, height, kLevels[random() % kLevels.size()],
                            random() % 2 != 0, random);
}

TEST(WaterColor, Render_SmallPicturesWithWideMedians_AreThePlainVersions)
{
    std::mt19937 random(2);
    for (const std::uint32_t format : kPictureFormats)
        for (const float brush : {6.0f, 20.0f, 60.0f})
            for (const bool halfHeight : {false, true})
                CompareCase(kEffect, format, 9, 11, 9, 11, {0.6f, 0.4f, 0.55f, 0.6f, brush, 0.9f}, halfHeight,
                            random);
}

TEST(WaterColor, Render_RandomSizesAndKnobs_AreThePlainVersions)
{
    std::mt19937 random(3);
    const auto upTo = [&](std::uint32_t most) { return static_cast<std::int32_t>(random() % most + 1); };
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 40; ++i) {
            const std::int32_t width = upTo(70), height = upTo(60);
            const bool same = random() % 2 != 0;
            CompareCase(kEffect, format, width, height, same ? width : upTo(70), same ? height : upTo(60),
                        kLevels[random() % kLevels.size()], random() % 2 != 0, random);
        }
}

TEST(WaterColor, Render_EveryCpuVariant_GivesTheSamePixels)
{
    const CpuVariant before = CurrentVariant();
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture in(67, 121, format);
        in.FillNoise(77);
        GuardedPicture expected(67, 121, format);
        ASSERT_TRUE(UseVariant(CpuVariant::Baseline));
        RenderFresh(kEffect, kLevels[0], in, expected);
        for (const CpuVariant variant : {CpuVariant::Avx2, CpuVariant::Avx512}) {
            if (!UseVariant(variant))
                continue;
            GuardedPicture out(67, 121, format);
            RenderFresh(kEffect, kLevels[0], in, out);
            EXPECT_TRUE(Equal(out, expected)) << FormatName(format);
        }
    }
    UseVariant(before);
}

// --- the colours ---------------------------------------------------------------------------------------------

// Half contrast is a gain of 0.4575 * 0.4575 * 3.8 + 0.2 = 0.99536, half brightness an offset of 0.
TEST(WaterColor, Render_MiddleKnobs_DarkenGreysByTheGainOfHalfContrast)
{
    struct Step {
        std::uint8_t in;
        int out;
    };
    // 127 * 0.99536 = 126.41, 200: 199.07, 255: 253.82, 100: 99.54
    for (const Step step : {Step{0, 0}, {100, 100}, {127, 126}, {200, 199}, {255, 254}})
        for (const std::uint32_t format : kPictureFormats) {
            GuardedPicture in(12, 10, format), out(12, 10, format);
            for (int y = 0; y < 10; ++y)
                for (int x = 0; x < 12; ++x)
                    in.SetColour(x, y, step.in, step.in, step.in, 90);
            RenderFresh(kEffect, PlainPaint(0.0f), in, out);
            for (int y = 0; y < 10; ++y)
                for (int x = 0; x < 12; ++x)
                    ASSERT_EQ(GreenAt(out, x, y), step.out) << FormatName(format);
        }
}

// --- the median --------------------------------------------------------------------------------------------

// Brush Width 1 is a brush of 6: 39 rows give 6 * 39 / 240 = 0.975 and no median, 40 rows a radius of 1, which
// takes a single white point out of black.
TEST(WaterColor, Render_UnderFortyRowsWithTheWidestBrush_HasNoMedian)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const int height : {39, 40}) {
            const GuardedPicture in = WithWhite(21, height, format, 10, 20, 11, 21);
            GuardedPicture out(21, height, format);
            RenderFresh(kEffect, PlainPaint(1.0f), in, out);
            EXPECT_EQ(GreenAt(out, 10, 20), height == 39 ? 255 : 0) << FormatName(format);
            EXPECT_EQ(GreenAt(out, 12, 20), 0);
        }
}

TEST(WaterColor, Render_Under240RowsWithTheFinestBrush_HasNoMedian)
{
    for (const int height : {239, 240}) {
        const GuardedPicture in = WithWhite(9, height, PF_BGRA8, 4, 20, 5, 21);
        GuardedPicture out(9, height, PF_BGRA8);
        RenderFresh(kEffect, PlainPaint(0.0f), in, out);
        EXPECT_EQ(GreenAt(out, 4, 20), height == 239 ? 255 : 0);
    }
}

// A field of 40 rows scales as 80 do: a radius of 2 across, of 1 downward. Under a mask of 5 by 3, two white
// rows are 10 of 15 and stay, two white columns 6 of 15 and go. Under 5 by 5 both are 10 of 25.
TEST(WaterColor, Render_Field_HalvesTheVerticalRadius)
{
    struct Case {
        int height;
        bool halfHeight, rowsStay;
    };
    for (const Case& one : {Case{40, true, true}, {80, false, false}}) {
        const GuardedPicture rows = WithWhite(30, one.height, PF_BGRA8, 0, 18, 30, 20);
        const GuardedPicture columns = WithWhite(30, one.height, PF_BGRA8, 15, 0, 17, one.height);
        GuardedPicture out(30, one.height, PF_BGRA8);
        RenderFresh(kEffect, PlainPaint(1.0f), rows, out, one.halfHeight);
        EXPECT_EQ(GreenAt(out, 15, 18), one.rowsStay ? 255 : 0);
        RenderFresh(kEffect, PlainPaint(1.0f), columns, out, one.halfHeight);
        EXPECT_EQ(GreenAt(out, 15, 20), 0);
    }
}

// 20 rows of a field scale as 40 do: a radius of 1 across; downward it would be half of that, and is 1.
TEST(WaterColor, Render_FieldWithARadiusOfOne_KeepsOneDownward)
{
    const GuardedPicture in = WithWhite(30, 20, PF_BGRA8, 0, 10, 30, 11); // 3 of 9: a row goes
    GuardedPicture out(30, 20, PF_BGRA8);
    RenderFresh(kEffect, PlainPaint(1.0f), in, out, true);
    EXPECT_EQ(GreenAt(out, 15, 10), 0);
}

TEST(WaterColor, Render_TallerThan500Rows_RunsTheMedianTwice)
{
    struct Case {
        int height;
        bool halfHeight;
    };
    for (const Case& one : {Case{500, false}, {501, false}, {250, true}, {251, true}}) {
        GuardedPicture in(7, one.height, PF_BGRA8), out(7, one.height, PF_BGRA8);
        in.FillNoise(4);
        const GuardedPicture before = out;
        RenderFresh(kEffect, PlainPaint(0.0f), in, out, one.halfHeight);
        EXPECT_TRUE(AsPlain(kEffect, PlainPaint(0.0f), in, before, out, one.halfHeight)) << one.height;
    }
}

// A radius of 2 at either height. Of a white corner of 3 by 3 pixels a first pass leaves 2 by 2 and, held up by
// the replicated border, the ends of the outermost row and column (15 of 25); a second one takes those two
// (12 of 25) and keeps the 2 by 2 (13 of 25 at its inner corner).
TEST(WaterColor, Render_500And501Rows_DifferByASecondPass)
{
    for (const int height : {500, 501}) {
        const GuardedPicture in = WithWhite(12, height, PF_BGRA8, 0, 0, 3, 3);
        GuardedPicture out(12, height, PF_BGRA8);
        RenderFresh(kEffect, PlainPaint(0.0f), in, out);
        int white = 0;
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x)
                white += GreenAt(out, x, y) > 200;
        EXPECT_EQ(white, height == 500 ? 6 : 4);
    }
}

// The picture has 80 rows, of which 30 are asked for. Alpha-last bytes are painted from the picture as it is,
// with a radius of 2; the other formats from a copy of 30 rows, with none.
TEST(WaterColor, Render_LowerOutput_AlphaLastBytesKeepThePicturesScale)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = WithWhite(21, 80, format, 10, 15, 11, 16);
        GuardedPicture out(21, 30, format);
        RenderFresh(kEffect, PlainPaint(1.0f), in, out);
        EXPECT_EQ(GreenAt(out, 10, 15), format == PF_BGRA8 ? 0 : 255) << FormatName(format);
    }
}

TEST(WaterColor, Render_ABrushBeyondAnyMemory_Fails)
{
    for (const float brush : {1e9f, 1e30f, kInfinity})
        for (const std::uint32_t format : kPictureFormats) {
            const GuardedPicture in = MakePicture(Motif::Ramp, 20, 30, format);
            GuardedPicture out(20, 30, format);
            out.FillNoise(1);
            const GuardedPicture before = out;
            FakeHost host(Levels(kEffect, PlainPaint(brush)));
            EXPECT_FALSE(Render(*NewEffect(kEffect), host, in, out));
            EXPECT_TRUE(Equal(out, before));
        }
}

// --- the sharpening ------------------------------------------------------------------------------------------

// A step from 100 to 104 (after the gain of 0.99536: 99.54 and 103.52, so 100 and 104): beside it the sum of
// nine is 6 * 100 + 3 * 104, and 17 * 100 - 912 = 788, that is 98.5, which the rounding takes to 98; on the
// other side 17 * 104 - 924 = 844, 105.5, to 106.
TEST(WaterColor, Render_AStep_IsSharpened)
{
    GuardedPicture in(12, 10, PF_BGRA8), out(12, 10, PF_BGRA8);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 12; ++x) {
            const auto level = static_cast<std::uint8_t>(x < 6 ? 100 : 104);
            in.SetColour(x, y, level, level, level, 1);
        }
    RenderFresh(kEffect, PlainPaint(0.0f), in, out);
    EXPECT_EQ(GreenAt(out, 4, 5), 100);
    EXPECT_EQ(GreenAt(out, 5, 5), 98);
    EXPECT_EQ(GreenAt(out, 6, 5), 106);
    EXPECT_EQ(GreenAt(out, 7, 5), 104);
}

// --- the blend ------------------------------------------------------------------------------------------------

TEST(WaterColor, Render_FullBlend_IsThePaintingAlone)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture in(40, 50, format), out(40, 50, format), more(40, 50, format);
        in.FillNoise(6);
        RenderFresh(kEffect, {0.6f, 0.7f, 0.5f, 0.6f, 0.9f, 1.0f}, in, out);
        RenderFresh(kEffect, {0.6f, 0.7f, 0.5f, 0.6f, 0.9f, 7.0f}, in, more);
        EXPECT_TRUE(Equal(out, more));
        // Painted levels only: floats are bytes times 1/255.
        for (int x = 0; x < 40 && IsFloatFormat(format); ++x) {
            const auto level = static_cast<std::uint8_t>(std::lround(out.Float(x, 20, 1) * 255.0f));
            ASSERT_EQ(out.Float(x, 20, 1), ByteLevel(level));
        }
    }
}

// A weight of a ten-thousandth rounds to none of 255 parts, but floats feel it.
TEST(WaterColor, Render_ResetToNone_ReturnsBytesAndNearlyReturnsFloats)
{
    const std::vector<float> reset = {0.5001f, 0.5001f, 0.5001f, 0.5001f, 0.0001f, 0.0001f};
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture in(40, 50, format), out(40, 50, format);
        in.FillNoise(6);
        RenderFresh(kEffect, reset, in, out);
        if (IsFloatFormat(format)) {
            EXPECT_TRUE(Near(out, in, 1.01e-4));
            EXPECT_FALSE(Equal(out, in));
        } else {
            EXPECT_TRUE(Equal(out, in));
        }
    }
}

// White on a white ground: painted 254 at middle knobs, half blended with 255. Weights of 128 of 255 each:
// (255 * 128 + 254 * 128) / 255 = 255.5, cut to 255. With a blend of 0.25, 191 and 64 parts: 254.7.
TEST(WaterColor, Render_ABlend_MixesPictureAndPainting)
{
    struct Step {
        float blend;
        int level;
    };
    for (const Step& step : {Step{0.5f, 255}, {0.25f, 254}}) {
        GuardedPicture in(12, 10, PF_BGRA8), out(12, 10, PF_BGRA8);
        in.Fill(255, 255, 255, 7);
        std::vector<float> levels = PlainPaint(0.0f);
        levels[5] = step.blend;
        RenderFresh(kEffect, levels, in, out);
        EXPECT_EQ(GreenAt(out, 5, 5), step.level);
    }
}

// --- what the effect promises ----------------------------------------------------------------------------

TEST(WaterColor, Render_AlphaIsThePicturesOwn)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float blend : {0.4f, 1.0f}) {
            const GuardedPicture in = MakePicture(Motif::AlphaRamp, 41, 43, format);
            GuardedPicture out(41, 43, format);
            out.FillNoise(3);
            RenderFresh(kEffect, {0.6f, 0.7f, 0.4f, 0.6f, 1.0f, blend}, in, out);
            const auto alpha = PlaceOfColour(format, 3);
            for (int y = 0; y < 43; ++y)
                for (int x = 0; x < 41; ++x) {
                    if (IsFloatFormat(format))
                        ASSERT_EQ(out.Float(x, y, alpha), in.Float(x, y, alpha));
                    else
                        ASSERT_EQ(out.Byte(x, y, alpha), in.Byte(x, y, alpha));
                }
        }
}

TEST(WaterColor, Render_AlphaFirst_GivesTheColoursOfAlphaLast)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F})
        for (int i = 0; i < 10; ++i) {
            const auto width = 3 + 7 * i, height = 90 - 9 * i;
            GuardedPicture in(width, height, format);
            in.FillNoise(static_cast<std::uint32_t>(i));
            const GuardedPicture reversed = WithChannelsReversed(in);
            GuardedPicture out(width, height, format), other(width, height, reversed.Format());
            RenderFresh(kEffect, kLevels[0], in, out);
            RenderFresh(kEffect, kLevels[0], reversed, other);
            EXPECT_TRUE(Equal(WithChannelsReversed(other), out));
        }
}

// Painting is done on bytes: floats that are byte levels give the same painting.
TEST(WaterColor, Render_FloatsOfByteLevels_GiveThePaintingOfBytes)
{
    GuardedPicture bytes(50, 60, PF_BGRA8), floats(50, 60, PF_BGRA32F);
    bytes.FillNoise(8, Noise::ByteLevels);
    floats.FillNoise(8, Noise::ByteLevels);
    GuardedPicture bytesOut(50, 60, PF_BGRA8), floatsOut(50, 60, PF_BGRA32F);
    RenderFresh(kEffect, {0.6f, 0.7f, 0.5f, 0.6f, 0.9f, 1.0f}, bytes, bytesOut);
    RenderFresh(kEffect, {0.6f, 0.7f, 0.5f, 0.6f, 0.9f, 1.0f}, floats, floatsOut);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 50; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(floatsOut.Float(x, y, c), ByteLevel(bytesOut.Byte(x, y, c)));
}

TEST(WaterColor, Render_FloatsOutsideTheRange_ArePaintedAsItsEnds)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture in(30, 45, format), cut(30, 45, format);
        in.FillNoise(21, Noise::Special);
        for (int y = 0; y < 45; ++y)
            for (int x = 0; x < 30; ++x)
                for (int c = 0; c < 4; ++c) {
                    const float value = in.Float(x, y, c);
                    cut.SetFloat(x, y, c, value > 0.0f ? std::min(value, 1.0f) : 0.0f);
                }
        GuardedPicture out(30, 45, format), expected(30, 45, format);
        RenderFresh(kEffect, PlainPaint(1.0f), in, out);
        RenderFresh(kEffect, PlainPaint(1.0f), cut, expected);
        for (int y = 0; y < 45; ++y)
            for (int x = 0; x < 30; ++x)
                for (int c = 0; c < 3; ++c)
                    ASSERT_EQ(out.Float(x, y, PlaceOfColour(format, c)),
                              expected.Float(x, y, PlaceOfColour(format, c)));
    }
}

// 85 rows: more than pass through the steps together, and a radius of 2.
TEST(WaterColor, Render_IntoThePictureItself_GivesWhatAnotherOutputGets)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float blend : {0.4f, 1.0f}) {
            GuardedPicture in(41, 85, format), expected(41, 85, format);
            in.FillNoise(9);
            const std::vector<float> levels = {0.6f, 0.7f, 0.4f, 0.6f, 1.0f, blend};
            RenderFresh(kEffect, levels, in, expected);
            FakeHost host(Levels(kEffect, levels));
            VideoFrame both = in.Frame(), output = both;
            RenderInfo info = MakeInfo(AtProgress(0.0));
            EXPECT_TRUE(NewEffect(kEffect)->Render(&host, &both, nullptr, &output, &info));
            EXPECT_TRUE(Equal(in, expected)) << FormatName(format);
        }
}

TEST(WaterColor, Render_WithoutMemory_LeavesTheOutputAsItWas)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float brush : {0.5f, 1e9f}) { // the host has no memory, or nobody has enough
            MemoryHabits habits;
            habits.refuseFrom = 0;
            FakeMemoryProvider memory(habits);
            FakeHost host(Levels(kEffect, PlainPaint(brush)));
            host.SetMemory(&memory);
            GuardedPicture in(20, 30, format);
            in.FillNoise(1);
            const GuardedPicture before = in;
            VideoFrame both = in.Frame(), output = both;
            RenderInfo info = MakeInfo(AtProgress(0.0));
            EXPECT_FALSE(NewEffect(kEffect)->Render(&host, &both, nullptr, &output, &info));
            EXPECT_TRUE(Equal(in, before)) << FormatName(format);
        }
}

TEST(WaterColor, Render_ProgressAndTheSecondPicture_PlayNoPart)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 50, PF_BGRA8);
    const GuardedPicture other = MakePicture(Motif::ZonePlate, 13, 90, PF_ARGB32F);
    GuardedPicture expected(40, 50, PF_BGRA8);
    RenderFresh(kEffect, kLevels[0], in, expected);
    for (const double progress : {0.0, 0.7, 1.0, std::numeric_limits<double>::quiet_NaN()})
        for (const GuardedPicture* second : {&other, static_cast<const GuardedPicture*>(nullptr)}) {
            Moment moment;
            moment.second = second;
            moment.progress = progress;
            GuardedPicture out(40, 50, PF_BGRA8);
            RenderFresh(kEffect, kLevels[0], moment, in, out);
            EXPECT_TRUE(Equal(out, expected));
        }
}

TEST(WaterColor, Render_WithoutInfo_IsRefusedAndWritesNothing)
{
    FakeHost host(Levels(kEffect, kLevels[0]));
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

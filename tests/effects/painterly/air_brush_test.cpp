#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "image/primitives/cpu_variant.h"
#include "tests/effects/pictures_as_plain.h"
#include "tests/reference/air_brush.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::Airbrush;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

const std::vector<std::vector<float>> kLevels = {
    {0.0f, 0.0f},   {1.0f, 1.0f},  {0.0f, 1.0f},    {1.0f, 0.0f},   {0.5f, 0.5f}, {0.39f, 1.0f},
    {0.51f, 0.27f}, {0.81f, 0.0f}, {0.395f, 0.15f}, {0.04f, 0.57f}, {5.0f, 0.3f}, {kNaN, 0.5f},
    {0.5f, kNaN},   {-3.0f, 0.5f}, {0.5f, -0.5f},   {0.5f, 2.0f},   {0.5f, 1e18f}};

// --- knobs --------------------------------------------------------------------------------------------

TEST(AirBrush, Render_AsksForEdgeThenSprayAsLevels)
{
    FakeHost host{LevelKnob(0.5f), LevelKnob(0.5f)};
    const HeldEffect effect = NewEffect(kEffect);
    const GuardedPicture in = MakePicture(Motif::Ramp, 9, 7, PF_BGRA8);
    GuardedPicture out(9, 7, PF_BGRA8);
    EXPECT_TRUE(Render(*effect, host, in, out));
    EXPECT_EQ(host.Reads(), (std::vector<KnobRead>{{1, ParamFloat}, {0, ParamFloat}}));
    EXPECT_TRUE(host.OtherCalls().empty());
    EXPECT_EQ(host.Queries(), std::vector<InterfaceId>{IMemoryProvider::id});
}

TEST(AirBrush, Render_RefusedKnobs_ReadAsTheOneBefore)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 31, 40, PF_BGRA8);
    const auto render = [&](std::vector<std::uint32_t> refused) {
        FakeHost host{LevelKnob(0.9f), LevelKnob(0.4f)};
        for (const std::uint32_t knob : refused)
            host.RefuseKnob(knob);
        GuardedPicture out(31, 40, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
        return out;
    };
    const auto fresh = [&](float spray, float edge) {
        GuardedPicture out(31, 40, PF_BGRA8);
        RenderFresh(kEffect, {spray, edge}, in, out);
        return out;
    };
    EXPECT_TRUE(Equal(render({0}), fresh(0.4f, 0.4f))); // Spray is asked for after Edge
    EXPECT_TRUE(Equal(render({1}), fresh(0.9f, 0.0f)));
    EXPECT_TRUE(Equal(render({0, 1}), fresh(0.0f, 0.0f)));
}

// --- whole pictures against the plain version -----------------------------------------------------------

TEST(AirBrush, Render_AllSmallSizes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 1; height <= 9; ++height)
            for (int width = 1; width <= 9; ++width)
                CompareCase(kEffect, format, width, height, width, height, kLevels[random() % kLevels.size()],
                            false, random);
}

TEST(AirBrush, Render_SmallPicturesWithWideKernels_AreThePlainVersions)
{
    std::mt19937 random(2);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 3; height <= 7; ++height)
            for (int width = 3; width <= 7; ++width)
                CompareCase(kEffect, format, width, height, width, height,
                            {static_cast<float>(random() % 30), 0.3f}, false, random);
}

TEST(AirBrush, Render_RandomSizesAndKnobs_AreThePlainVersions)
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

TEST(AirBrush, Render_EveryCpuVariant_GivesTheSamePixels)
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

// 100 rows and no spray: 0.1 * 100 * 0.15 is 1.5, so two taps, 1 and 1, and the byte blur of a vertical step
// between columns 9 and 10 is the mean of both beside it. Taps reach x and x + 1: only column 9 mixes.
TEST(AirBrush, Render_TwoTaps_MeanOfAPixelAndTheNext)
{
    GuardedPicture in(20, 100, PF_BGRA8);
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 20; ++x) {
            const auto level = static_cast<std::uint8_t>(x < 10 ? 200 : 100);
            in.SetColour(x, y, level, level, level, 77);
        }
    GuardedPicture out(20, 100, PF_BGRA8);
    RenderFresh(kEffect, {0.0f, 1.0f}, in, out); // full Edge: the darker of picture and blur
    for (int x = 0; x < 20; ++x) {
        const int expected = x < 9 ? 200 : x == 9 ? 150 : 100;
        EXPECT_EQ(out.Byte(x, 50, 0), expected) << x;
        EXPECT_EQ(out.Byte(x, 50, 3), 77) << x;
    }
}

TEST(AirBrush, Render_FullEdge_IsTheDarkerOfPictureAndBlur)
{
    GuardedPicture in(40, 60, PF_BGRA8);
    in.FillNoise(5);
    GuardedPicture dark(40, 60, PF_BGRA8);
    RenderFresh(kEffect, {0.5f, 1.0f}, in, dark);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 40; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_LE(dark.Byte(x, y, c), in.Byte(x, y, c));
}

// White around black: blurred luminance 254 ((76 + 149 + 30) * 255 >> 8) times 245 / 256 is 243.
TEST(AirBrush, Render_NoEdge_LiftsABlackPointByTheSharedThreshold)
{
    GuardedPicture in(120, 120, PF_BGRA8);
    in.Fill(255, 255, 255, 255);
    in.SetColour(60, 60, 0, 10, 0, 9);
    GuardedPicture out(120, 120, PF_BGRA8);
    RenderFresh(kEffect, {0.5f, 0.0f}, in, out);
    // 10 taps: the point weighs 5 * 5 of 900, so the blur there is 248 or more; the luminance of the point is
    // 1490 >> 8 = 5. All three colours rise by the same amount.
    const int rise = out.Byte(60, 60, 0);
    EXPECT_GE(rise, (248 * 245 >> 8) - 8);
    EXPECT_LE(rise, 243 - 5);
    EXPECT_EQ(out.Byte(60, 60, 1), rise + 10);
    EXPECT_EQ(out.Byte(60, 60, 2), rise);
    EXPECT_EQ(out.Byte(60, 60, 3), 9);
}

TEST(AirBrush, Render_KernelFollowsThePicturesOwnHeight)
{
    // An output of 30 rows, but a kernel for 90.
    GuardedPicture in(50, 90, PF_BGRA8);
    in.FillNoise(6);
    GuardedPicture out(50, 30, PF_BGRA8), before = out;
    RenderFresh(kEffect, {1.0f, 0.5f}, in, out);
    EXPECT_EQ(reference::AirBrushTaps(1.0f, 90), 14);
    EXPECT_TRUE(AsPlain(kEffect, {1.0f, 0.5f}, in, before, out));
    GuardedPicture cropped(50, 30, PF_BGRA8), other(50, 30, PF_BGRA8);
    for (int y = 0; y < 30; ++y)
        std::memcpy(cropped.Row(y), in.Row(y), 200);
    RenderFresh(kEffect, {1.0f, 0.5f}, cropped, other);
    EXPECT_FALSE(Equal(out, other));
}

TEST(AirBrush, Render_OddKernel_HasOneSpareRowAndColumnOnTheFarSides)
{
    // (0.5 + 0.1) * 34 * 0.15 is 3.06: three taps. In a picture of black with its last row white, every
    // output row above the spare one is black: the last row is a copy of the one before it.
    EXPECT_EQ(reference::AirBrushTaps(0.5f, 34), 3);
    for (const std::uint32_t format : kPictureFormats) {
        std::mt19937 random(9);
        CompareCase(kEffect, format, 35, 34, 35, 34, {0.5f, 0.4f}, false, random);
    }
}

TEST(AirBrush, Render_AlphaIsThePicturesOwn)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = MakePicture(Motif::AlphaRamp, 41, 33, format);
        GuardedPicture out(41, 33, format);
        out.FillNoise(3);
        RenderFresh(kEffect, {0.9f, 0.3f}, in, out);
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

TEST(AirBrush, Render_AlphaFirst_GivesTheColoursOfAlphaLast)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F})
        for (int i = 0; i < 10; ++i) {
            const auto width = 3 + 7 * i, height = 50 - 5 * i;
            GuardedPicture in(width, height, format);
            in.FillNoise(static_cast<std::uint32_t>(i));
            const GuardedPicture reversed = WithChannelsReversed(in);
            GuardedPicture out(width, height, format), other(width, height, reversed.Format());
            RenderFresh(kEffect, {0.7f, 0.5f}, in, out);
            RenderFresh(kEffect, {0.7f, 0.5f}, reversed, other);
            EXPECT_TRUE(Equal(WithChannelsReversed(other), out));
        }
}

TEST(AirBrush, Render_DarkFloatsBesideLight_MayLeaveTheRange)
{
    // A saturated blue of luminance 0.113 in white: it rises as a whole, blue beyond 1.
    GuardedPicture in(120, 120, PF_BGRA32F);
    in.FillFloat(1, 1, 1, 1);
    in.SetFloat(60, 60, 1, 0);
    in.SetFloat(60, 60, 2, 0);
    GuardedPicture out(120, 120, PF_BGRA32F);
    RenderFresh(kEffect, {0.5f, 0.0f}, in, out);
    EXPECT_GT(out.Float(60, 60, 0), 1.5f);
}

TEST(AirBrush, Render_KernelBeyondAnyMemory_LeavesTheOutput)
{
    for (const float spray : {1e30f, 1e9f, std::numeric_limits<float>::infinity()})
        for (const std::uint32_t format : kPictureFormats) {
            const GuardedPicture in = MakePicture(Motif::Ramp, 20, 30, format);
            GuardedPicture out(20, 30, format);
            out.FillNoise(1);
            const GuardedPicture before = out;
            RenderFresh(kEffect, {spray, 0.5f}, in, out);
            EXPECT_TRUE(Equal(out, before));
        }
}

TEST(AirBrush, Render_HundredsOfTaps_AreThePlainVersions)
{
    // The kernel follows the picture's height, the work the output's.
    EXPECT_EQ(reference::AirBrushTaps(1.0f, 1080), 178);
    EXPECT_EQ(reference::AirBrushTaps(1.0f, 2160), 356);
    std::mt19937 random(4);
    for (const std::uint32_t format : kPictureFormats)
        for (const std::int32_t height : {1080, 2160})
            CompareCase(kEffect, format, 7, height, 7, 20, {1.0f, 0.3f}, false, random);
}

TEST(AirBrush, Render_ALargerOutput_GetsTheSamePixelsInItsCorner)
{
    // Room to spare in the output neither moves the blur nor lets the edge step look at what was there.
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& [width, height] : {std::pair{64, 48}, {4, 48}, {64, 3}}) {
            GuardedPicture in(width, height, format), expected(width, height, format);
            in.FillNoise(1);
            RenderFresh(kEffect, {0.5f, 0.4f}, in, expected);
            for (const std::uint32_t seed : {2u, 3u}) {
                GuardedPicture out(200, 100, format);
                out.FillNoise(seed);
                const GuardedPicture before = out;
                RenderFresh(kEffect, {0.5f, 0.4f}, in, out);
                VideoFrame corner = out.Frame();
                corner.width = width;
                corner.height = height;
                EXPECT_TRUE(Equal(corner, expected.Frame())) << FormatName(format);
                EXPECT_TRUE(SameOutside(out, before, width, height));
            }
        }
}

TEST(AirBrush, Render_NeedsNoInfo)
{
    FakeHost host{LevelKnob(0.5f), LevelKnob(0.5f)};
    const GuardedPicture in = MakePicture(Motif::Ramp, 20, 30, PF_BGRA8);
    GuardedPicture out(20, 30, PF_BGRA8), expected(20, 30, PF_BGRA8);
    VideoFrame first = in.Frame(), output = out.Frame();
    EXPECT_TRUE(NewEffect(kEffect)->Render(&host, &first, nullptr, &output, nullptr));
    RenderFresh(kEffect, {0.5f, 0.5f}, in, expected);
    EXPECT_TRUE(Equal(out, expected));
}

} // namespace
} // namespace kelmora

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

constexpr EffectClass kEffect = EffectClass::EmbossedPaperBlend;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr double kNaNProgress = std::numeric_limits<double>::quiet_NaN();

// Rounding, Layers, Balance, Foreground, Background, Blend Colors, Shadow, Angle, Tempo, Cross Fade.
const std::vector<std::vector<float>> kLevels = {
    {0.39f, 0.87f, 0.815f, 0x44FEFE, 0x400080, 1.0f, 0.66f, 0.415f, 0.0f, 1.0f},
    {0.125f, 0.005f, 0.5f, 0xFFFFFF, 0x000000, 0.0f, 0.0f, 0.0f, 0.415f, 0.805f},
    {1.0f, 0.61f, 0.5001f, 0x43FEFF, 0x5B4639, 1.0f, 1.0f, 0.15f, 1.0f, 1.0f},
    {0.0f, 1.0f, 0.5001f, 0xA8D3FF, 0x5B4639, 0.4201f, 0.225f, 0.635f, 0.715f, 0.745f},
    {1.0f, 0.0f, 0.5001f, 0x43FEFF, 0x5B4639, 1.0001f, 1.0f, 0.15f, 0.64f, 0.82f},
    {0.0f, 0.0f, 0.0f, 0x000000, 0xFFFFFF, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f},
    {1.0f, 1.0f, 1.0f, 0x123456, 0xFEDCBA, 0.5f, 1.0f, 1.0f, 1.0f, 0.5f},
    {0.2f, 0.34f, 0.3f, 0xFFFF82, 0x000071, 0.7f, 1.0f, 0.75f, 0.2f, 0.4f},
};

// What no host should say.
const std::vector<std::vector<float>> kWildLevels = {
    {4.0f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {-1.0f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {kNaN, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, 2.0f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, -0.2f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, kNaN, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, 0.5f, 3.0f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, 0.5f, -kInfinity, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 7.0f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0x44FEFE, 0x400080, -1.0f, 0.5f, 0.5f, 0.5f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 4.0f, 0.3f, 0.5f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, -2.0f, 0.5f, 0.5f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 2.0f, 5.3f, 0.5f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 4.0f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, -1.0f, 0.5f},
    {0.5f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, 3.0f},
    {0.5f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.5f, 0.5f, 0.5f, 0.5f, -1.0f},
};

constexpr double kMoments[] = {0.0, 0.05, 0.25, 0.33, 0.4, 0.5, 0.6, 0.8, 0.95, 1.0, -3.0, 7.0, kNaNProgress};

/// The knobs of a collage of hard edges at half balance: two sheets, no rounding, no shadow, the ramp alone.
struct Sheets {
    float layers = 0.0f;
    std::uint32_t foreground = 0xFFFFFF, background = 0x000000;
    float blendColors = 0.0f;
    float shadow = 0.0f, angle = 0.0f;

    std::vector<float> Levels() const
    {
        return {0.0f,
                layers,
                0.5f,
                static_cast<float>(foreground),
                static_cast<float>(background),
                blendColors,
                shadow,
                angle,
                0.0f,
                1.0f};
    }
};

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed);
    return picture;
}

/// One colour with a rectangle of another.
GuardedPicture TwoColours(std::int32_t width, std::int32_t height, std::uint32_t format, PixelColour ground,
                          PixelColour inside, int left, int top, int right, int bottom)
{
    GuardedPicture picture(width, height, format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool isInside = x >= left && x < right && y >= top && y < bottom;
            const PixelColour& c = isInside ? inside : ground;
            picture.SetColour(x, y, c.blue, c.green, c.red, c.alpha);
        }
    return picture;
}

GuardedPicture Collaged(const std::vector<float>& levels, const GuardedPicture& in,
                        const GuardedPicture& second, double progress, bool halfHeight = false)
{
    GuardedPicture out(std::min(in.Width(), second.Width()), std::min(in.Height(), second.Height()),
                       in.Format());
    Moment moment;
    moment.second = &second;
    moment.progress = progress;
    moment.halfHeight = halfHeight;
    RenderFresh(kEffect, levels, moment, in, out);
    return out;
}

/// The level of a colour, bytes or floats of byte levels.
int LevelAt(const GuardedPicture& picture, int x, int y, int colour)
{
    const auto place = PlaceOfColour(picture.Format(), colour);
    return IsFloatFormat(picture.Format())
        ? static_cast<int>(std::lround(picture.Float(x, y, place) * 255.0f))
        : picture.Byte(x, y, place);
}

void ExpectColour(const GuardedPicture& picture, int x, int y, int blue, int green, int red)
{
    const int expected[4] = {blue, green, red, 255};
    for (int c = 0; c < 4; ++c)
        EXPECT_EQ(LevelAt(picture, x, y, c), expected[c])
            << "colour " << c << " at (" << x << ", " << y << "), " << FormatName(picture.Format());
}

// --- knobs --------------------------------------------------------------------------------------------

TEST(PaperCollage, Render_AsksForItsKnobsInTheirKeptOrder)
{
    FakeHost host(Levels(kEffect, kLevels[0]));
    const GuardedPicture in = MakePicture(Motif::Ramp, 9, 7, PF_BGRA8);
    GuardedPicture out(9, 7, PF_BGRA8);
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
    EXPECT_EQ(host.Reads(),
              (std::vector<KnobRead>{{2, ParamFloat},
                                     {0, ParamFloat},
                                     {1, ParamFloat},
                                     {3, ParamColor},
                                     {4, ParamColor},
                                     {6, ParamFloat},
                                     {5, ParamFloat},
                                     {7, ParamFloat},
                                     {8, ParamFloat},
                                     {9, ParamFloat}}));
    EXPECT_TRUE(host.OtherCalls().empty());
    EXPECT_EQ(host.Queries(), std::vector<InterfaceId>{IMemoryProvider::id});
}

TEST(PaperCollage, Render_RefusedKnobs_ReadAsTheOneBefore)
{
    const std::vector<float> levels = {0.6f, 0.7f, 0.45f, 0x44FEFE, 0x400080, 0.55f, 0.9f, 0.8f, 0.3f, 0.65f};
    const GuardedPicture in = MakePicture(Motif::Moving, 31, 60, PF_BGRA8);
    // A level after a level, or a colour after a colour.
    const std::uint32_t refusedAndBefore[][2] = {{0, 2}, {1, 0}, {4, 3}, {5, 6}, {7, 5}, {8, 7}, {9, 8}};
    for (const auto& [refused, before] : refusedAndBefore) {
        FakeHost host(Levels(kEffect, levels));
        host.RefuseKnob(refused);
        GuardedPicture out(31, 60, PF_BGRA8), expected(31, 60, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
        std::vector<float> read = levels;
        read[refused] = levels[before];
        RenderFresh(kEffect, read, in, expected);
        EXPECT_TRUE(Equal(out, expected)) << refused;
    }
}

// --- whole pictures against the plain version -----------------------------------------------------------

TEST(PaperCollage, Render_AllSmallSizes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 1; height <= 7; ++height)
            for (int width = 1; width <= 7; ++width)
                CompareTransition(kEffect, format, {width, height, width, height, width, height},
                                  kLevels[random() % kLevels.size()], kMoments[random() % 10],
                                  random() % 2 != 0, random);
}

TEST(PaperCollage, Render_LandscapesOfOneSize_AreThePlainVersions)
{
    std::mt19937 random(2);
    const auto upTo = [&](std::uint32_t most) { return static_cast<std::int32_t>(random() % most + 1); };
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 40; ++i) {
            const std::int32_t height = upTo(60), width = height + upTo(30);
            CompareTransition(kEffect, format, {width, height, width, height, width, height},
                              kLevels[random() % kLevels.size()], kMoments[random() % std::size(kMoments)],
                              random() % 2 != 0, random);
        }
}

TEST(PaperCollage, Render_RandomSizesAndKnobs_AreThePlainVersions)
{
    std::mt19937 random(3);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 50; ++i)
            CompareTransition(kEffect, format, RandomSizes(random, 60, 60),
                              kLevels[random() % kLevels.size()], kMoments[random() % std::size(kMoments)],
                              random() % 2 != 0, random);
}

TEST(PaperCollage, Render_LongShadows_AreThePlainVersions)
{
    // 40 rows with a shadow of 4: 4 pixels, in fields 8 across.
    std::mt19937 random(5);
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F})
        for (int turn = 0; turn < 12; ++turn)
            for (const bool halfHeight : {false, true})
                CompareTransition(kEffect, format, {44, 40, 44, 40, 44, 40},
                                  {0.3f, 0.6f, 0.5f, 0x44FEFE, 0x400080, 0.6f, 4.0f,
                                   static_cast<float>(turn) / 12.0f, 0.1f, 0.8f},
                                  turn % 2 == 0 ? 0.3 : 0.5, halfHeight, random);
}

TEST(PaperCollage, Render_WildKnobs_AreThePlainVersions)
{
    std::mt19937 random(4);
    for (const std::uint32_t format : kPictureFormats)
        for (const std::vector<float>& levels : kWildLevels)
            for (const double progress : {0.3, 0.5})
                CompareTransition(kEffect, format, {23, 19, 23, 19, 23, 19}, levels, progress,
                                  random() % 2 != 0, random);
}

TEST(PaperCollage, Render_EveryCpuVariant_GivesTheSamePixels)
{
    const CpuVariant before = CurrentVariant();
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(97, 81, format, 77), second = Noisy(97, 81, format, 78);
        ASSERT_TRUE(UseVariant(CpuVariant::Baseline));
        const GuardedPicture expected = Collaged(kLevels[0], in, second, 0.45);
        for (const CpuVariant variant : {CpuVariant::Avx2, CpuVariant::Avx512}) {
            if (!UseVariant(variant))
                continue;
            EXPECT_TRUE(Equal(Collaged(kLevels[0], in, second, 0.45), expected)) << FormatName(format);
        }
    }
    UseVariant(before);
}

// --- progress ----------------------------------------------------------------------------------------------

TEST(PaperCollage, Render_AtTheEnds_IsTheCleanPictureBitForBit)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::vector<float>& levels : kLevels) {
            const GuardedPicture in = Noisy(37, 29, format, 1), second = Noisy(37, 29, format, 2);
            for (const double start : {0.0, -0.0, -1.0, -1e300, kNaNProgress})
                EXPECT_TRUE(Equal(Collaged(levels, in, second, start), in)) << start;
            for (const double end : {1.0, 1.0000001, 1e300, std::numeric_limits<double>::infinity()})
                EXPECT_TRUE(Equal(Collaged(levels, in, second, end), second)) << end;
        }
}

// Without Tempo the amount is 2 p. At 0.25 it is a half: the collage stands alone. Just before, a share of the
// dissolve is left: 1 - 0.48 / 0.5 = 0.04 at 0.24, that is 10 and 245 of 255 parts.
TEST(PaperCollage, Render_HalfTheAmount_EndsTheBareDissolve)
{
    const GuardedPicture in = TwoColours(20, 16, PF_BGRA8, {200, 200, 200, 100}, {}, 0, 0, 0, 0);
    const GuardedPicture alone = Collaged(Sheets().Levels(), in, in, 0.25);
    ExpectColour(alone, 5, 5, 253, 253, 253);
    const GuardedPicture shared = Collaged(Sheets().Levels(), in, in, 0.24);
    // Both pictures are 200, mixed by 194 and 61: 200. (200 * 10 + 253 * 245) / 255 = 250, alpha (1000 + 255 *
    // 245) / 255 = 248.
    EXPECT_EQ(shared.Byte(5, 5, 0), 250);
    EXPECT_EQ(shared.Byte(5, 5, 3), 248);
}

// --- the sheets, at the middle: an amount of 1, shadows black, the dissolve gone --------------------------------

// The grey of (127, 127, 127) is 126, of (128, 128, 128) 127; Balance 0.5 puts the middle at 127. White paper
// is 255 * 255 >> 8 = 254, blended once more with nothing 253.
TEST(PaperCollage, Render_BlackAndWhite_CutsInTheMiddle)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in =
            TwoColours(30, 20, format, {127, 127, 127, 9}, {128, 128, 128, 9}, 15, 0, 30, 20);
        const GuardedPicture out = Collaged(Sheets().Levels(), in, in, 0.5);
        for (int y = 0; y < 20; ++y) {
            ExpectColour(out, 0, y, 0, 0, 0);
            ExpectColour(out, 14, y, 0, 0, 0);
            ExpectColour(out, 15, y, 253, 253, 253);
            ExpectColour(out, 29, y, 253, 253, 253);
        }
    }
}

TEST(PaperCollage, Render_BlackAndWhitePreset_HasTwoTones)
{
    const std::vector<float> preset = {0.125f, 0.005f, 0.5f, 0xFFFFFF, 0x000000,
                                       0.0f,   0.0f,   0.0f, 0.415f,   0.805f};
    const GuardedPicture in = MakePicture(Motif::SoftEdges, 60, 50, PF_BGRA8);
    const GuardedPicture out = Collaged(preset, in, in, 0.5);
    bool seen[2] = {};
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 60; ++x) {
            const int level = LevelAt(out, x, y, 1);
            ASSERT_TRUE(level == 0 || level == 253) << level;
            ExpectColour(out, x, y, level, level, level);
            seen[level != 0] = true;
        }
    EXPECT_TRUE(seen[0] && seen[1]);
}

// Background 0x400080 and Foreground 0x44FEFE: each sheet loses a level in the ramp and one in the blend.
TEST(PaperCollage, Render_NoBlendColors_IsTheRampFromBackgroundToForeground)
{
    Sheets sheets;
    sheets.foreground = 0x44FEFE;
    sheets.background = 0x400080;
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in =
            TwoColours(30, 20, format, {20, 20, 20, 9}, {220, 220, 220, 9}, 15, 0, 30, 20);
        const GuardedPicture out = Collaged(sheets.Levels(), in, in, 0.5);
        ExpectColour(out, 5, 5, 62, 0, 126);
        ExpectColour(out, 25, 5, 66, 252, 252);
    }
}

// Three sheets, of levels 0, 127 and 255. The middle one of a ramp from black to white is (255 * 127) >> 8 =
// 126, and blended with nothing (255 * 126) >> 8 = 125.
TEST(PaperCollage, Render_ThreeSheets_HaveAMiddleTone)
{
    Sheets sheets;
    sheets.layers = 0.17f; // 0.17 * 6 is 1.02
    GuardedPicture in(30, 20, PF_BGRA8);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 30; ++x) {
            const auto level = static_cast<std::uint8_t>(x < 10 ? 30 : x < 20 ? 128 : 230);
            in.SetColour(x, y, level, level, level, 1);
        }
    const GuardedPicture out = Collaged(sheets.Levels(), in, in, 0.5);
    ExpectColour(out, 5, 5, 0, 0, 0);
    ExpectColour(out, 15, 5, 125, 125, 125);
    ExpectColour(out, 25, 5, 253, 253, 253);
}

// Full Blend Colors: each sheet has its part's average, less a level.
TEST(PaperCollage, Render_FullBlendColors_AlmostKeepsTheAveragesOfTheMix)
{
    Sheets sheets;
    sheets.blendColors = 1.0f;
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture in = TwoColours(30, 20, format, {30, 20, 10, 9}, {200, 210, 220, 9}, 15, 0, 30, 20);
        for (int y = 0; y < 20; ++y) // a third of the dark part: the average is 40, 30, 20
            for (int x = 0; x < 15; x += 3)
                in.SetColour(x, y, 60, 50, 40, 9);
        const GuardedPicture out = Collaged(sheets.Levels(), in, in, 0.5);
        ExpectColour(out, 0, 5, 39, 29, 19);
        ExpectColour(out, 1, 5, 39, 29, 19);
        ExpectColour(out, 25, 5, 199, 209, 219);
    }
}

// No pixel has the middle level: its sheet, black, lies under the light one and nowhere else.
TEST(PaperCollage, Render_AnEmptyLevel_DoesNotShow)
{
    Sheets sheets;
    sheets.layers = 0.17f;
    sheets.blendColors = 1.0f;
    const GuardedPicture in =
        TwoColours(30, 20, PF_BGRA8, {30, 20, 10, 9}, {230, 240, 250, 9}, 15, 0, 30, 20);
    const GuardedPicture out = Collaged(sheets.Levels(), in, in, 0.5);
    for (int x = 0; x < 30; ++x)
        ExpectColour(out, x, 9, x < 15 ? 29 : 229, x < 15 ? 19 : 239, x < 15 ? 9 : 249);
}

// --- shadows ---------------------------------------------------------------------------------------------------

// 100 rows and a Shadow of 0.67 throw it 2 pixels far; a full turn's Angle to the right. The black shadow is
// softened by 3 by 3: of its edge column 170 of 255 are left, of the next one 85. Paper of 253 under it: 253 *
// 85 is 84, 253 * 170 is 168.
TEST(PaperCollage, Render_AShadow_FallsTwoPixelsToTheRight)
{
    Sheets sheets;
    sheets.foreground = 0x000000;
    sheets.background = 0xFFFFFF;
    sheets.shadow = 0.67f;
    sheets.angle = 1.0f;
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in =
            TwoColours(120, 100, format, {20, 20, 20, 9}, {220, 220, 220, 9}, 40, 40, 60, 60);
        const GuardedPicture out = Collaged(sheets.Levels(), in, in, 0.5);
        const int row[] = {253, 253, 0, 0, 0, 0, 84, 168, 253, 253}; // the sheet itself is black up to 59
        for (int x = 0; x < 2; ++x)
            ExpectColour(out, 38 + x, 50, row[x], row[x], row[x]);
        for (int x = 2; x < 10; ++x)
            ExpectColour(out, 55 + x, 50, row[x + 0], row[x + 0], row[x + 0]);
        // Above and below it is as wide as the sheet, softened by a pixel.
        ExpectColour(out, 50, 38, 253, 253, 253);
        ExpectColour(out, 50, 39, 168, 168, 168);
        ExpectColour(out, 50, 60, 168, 168, 168);
        ExpectColour(out, 50, 61, 253, 253, 253);
    }
}

TEST(PaperCollage, Render_FieldShadow_FallsTwiceAsFarToTheSide)
{
    Sheets sheets;
    sheets.foreground = 0x000000;
    sheets.background = 0xFFFFFF;
    sheets.shadow = 0.67f;
    sheets.angle = 1.0f;
    const GuardedPicture in =
        TwoColours(120, 100, PF_BGRA8, {20, 20, 20, 9}, {220, 220, 220, 9}, 40, 40, 60, 60);
    const GuardedPicture out = Collaged(sheets.Levels(), in, in, 0.5, true);
    const int row[] = {0, 0, 0, 84, 168, 253};
    for (int x = 0; x < 6; ++x)
        ExpectColour(out, 60 + x, 50, row[x], row[x], row[x]);
}

// Straight down: the sine falls short of 1 by the angle's own constant, so that 2 pixels truncate to 1, in
// frames and in fields. The cosine's 2 pixels truncate to none.
TEST(PaperCollage, Render_ShadowStraightDown_IsShortByATruncation)
{
    Sheets sheets;
    sheets.foreground = 0x000000;
    sheets.background = 0xFFFFFF;
    sheets.shadow = 0.67f;
    sheets.angle = 0.75f;
    const GuardedPicture in =
        TwoColours(120, 100, PF_BGRA8, {20, 20, 20, 9}, {220, 220, 220, 9}, 40, 40, 60, 60);
    for (const bool halfHeight : {false, true}) {
        const GuardedPicture out = Collaged(sheets.Levels(), in, in, 0.5, halfHeight);
        const int column[] = {84, 168, 253};
        for (int y = 0; y < 3; ++y)
            ExpectColour(out, 50, 60 + y, column[y], column[y], column[y]);
        ExpectColour(out, 60, 50, 168, 168, 168);
        ExpectColour(out, 61, 50, 253, 253, 253);
    }
}

// 100 rows: a Shadow of 0.33 is 0.99 pixels, one of 0.34 a whole one.
TEST(PaperCollage, Render_AShadowUnderAPixel_IsNone)
{
    const GuardedPicture in =
        TwoColours(120, 100, PF_BGRA8, {20, 20, 20, 9}, {220, 220, 220, 9}, 40, 40, 60, 60);
    Sheets none, under, whole;
    none.angle = under.angle = whole.angle = 1.0f;
    none.foreground = under.foreground = whole.foreground = 0x000000;
    none.background = under.background = whole.background = 0xFFFFFF;
    under.shadow = 0.33f;
    whole.shadow = 0.34f;
    const GuardedPicture expected = Collaged(none.Levels(), in, in, 0.5);
    EXPECT_TRUE(Equal(Collaged(under.Levels(), in, in, 0.5), expected));
    EXPECT_FALSE(Equal(Collaged(whole.Levels(), in, in, 0.5), expected));
}

// 100 rows: a Rounding of 0.06 is 0.9 pixels. At 0.5 the blur of 7 takes the corner off a sheet.
TEST(PaperCollage, Render_RoundingUnderAPixel_KeepsTheCorners)
{
    const GuardedPicture in =
        TwoColours(120, 100, PF_BGRA8, {20, 20, 20, 9}, {220, 220, 220, 9}, 40, 40, 60, 60);
    std::vector<float> sharp = Sheets().Levels(), under = sharp, rounded = sharp;
    under[0] = 0.06f;
    rounded[0] = 0.5f;
    const GuardedPicture expected = Collaged(sharp, in, in, 0.5);
    ExpectColour(expected, 40, 40, 253, 253, 253);
    EXPECT_TRUE(Equal(Collaged(under, in, in, 0.5), expected));
    const GuardedPicture out = Collaged(rounded, in, in, 0.5);
    ExpectColour(out, 40, 40, 0, 0, 0);
    ExpectColour(out, 50, 50, 253, 253, 253);
}

// While the collage comes in, a shadow still has some of its sheet's colour, red and blue exchanged. Shared by
// all channels of a grey sheet, the exchange shows in a coloured one alone.
TEST(PaperCollage, Kept_ColouredShadow_HasRedAndBlueExchanged)
{
    Sheets sheets;
    sheets.foreground = 0x0000FF; // red sheets on white
    sheets.background = 0xFFFFFF;
    sheets.shadow = 1.0f;
    sheets.angle = 1.0f;
    const GuardedPicture in =
        TwoColours(120, 100, PF_BGRA8, {20, 20, 20, 9}, {220, 220, 220, 9}, 40, 40, 60, 60);
    // A progress of 0.35: amount 0.7, two pixels of 2.1, and a share of 0.3: 76 of 255.
    const GuardedPicture out = Collaged(sheets.Levels(), in, in, 0.35);
    // Sheet 0 is 253, its shadow (253 * 76) >> 8 = 75. Sheet 1 is red, 253: red (253 * 76 + 179 * 75) >> 8 = 127,
    // green and blue (0 + 179 * 75) >> 8 = 52. The pixel beside the sheet is that shadow alone.
    EXPECT_EQ(out.Byte(60, 50, 0), 127);
    EXPECT_EQ(out.Byte(60, 50, 1), 52);
    EXPECT_EQ(out.Byte(60, 50, 2), 52);
    EXPECT_EQ(out.Byte(58, 50, 2), 253);
    EXPECT_EQ(out.Byte(58, 50, 0), 0);
}

// --- pictures ------------------------------------------------------------------------------------------------

TEST(PaperCollage, Render_TheCollage_IsOpaque)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::vector<float>& levels : kLevels) {
            const GuardedPicture in = MakePicture(Motif::AlphaRamp, 50, 40, format);
            const GuardedPicture out = Collaged(levels, in, in, 0.5);
            for (int x = 0; x < 50; ++x)
                ASSERT_EQ(LevelAt(out, x, 20, 3), 255) << FormatName(format);
        }
}

TEST(PaperCollage, Render_AlphaFirst_GivesTheColoursOfAlphaLast)
{
    for (int i = 0; i < 8; ++i) {
        const GuardedPicture in = Noisy(60 - 2 * i, 30 + i, PF_BGRA8, static_cast<std::uint32_t>(i));
        const GuardedPicture second = Incoming(in);
        const GuardedPicture reversed = WithChannelsReversed(in), other = WithChannelsReversed(second);
        EXPECT_TRUE(Equal(WithChannelsReversed(Collaged(kLevels[0], reversed, other, 0.45)),
                          Collaged(kLevels[0], in, second, 0.45)));
    }
}

TEST(PaperCollage, Render_FloatsOfByteLevels_GiveTheCollageOfBytes)
{
    GuardedPicture bytes(50, 40, PF_BGRA8), floats(50, 40, PF_BGRA32F);
    bytes.FillNoise(8, Noise::ByteLevels);
    floats.FillNoise(8, Noise::ByteLevels);
    // No Cross Fade: the mix is the second picture as it is.
    const std::vector<float> levels = {0.4f, 0.6f, 0.5f, 0x44FEFE, 0x400080, 0.6f, 1.0f, 0.3f, 0.3f, 0.0f};
    const GuardedPicture bytesOut = Collaged(levels, bytes, bytes, 0.6);
    const GuardedPicture floatsOut = Collaged(levels, floats, floats, 0.6);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 50; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(floatsOut.Float(x, y, c), ByteLevel(bytesOut.Byte(x, y, c)));
}

// The first picture's 40 rows are measured against the second's 24 columns: the dissolve has 24 rows. Alpha-last
// bytes are worked on in the output itself, where the rows below keep what they held; in the other formats
// those rows are cut from nothing: sheet 0, the background's colour.
TEST(PaperCollage, Kept_ASecondPictureNarrowerThanTheFirstIsHigh_ShortensTheDissolve)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(30, 40, format, 1), second = Noisy(24, 40, format, 2);
        GuardedPicture out = Noisy(24, 40, format, 3);
        const GuardedPicture before = out;
        Moment moment;
        moment.second = &second;
        moment.progress = 0.0;
        Sheets sheets;
        sheets.background = 0xC08040; // blue 192, green 128, red 64, two levels less each
        RenderFresh(kEffect, sheets.Levels(), moment, in, out);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 24; ++x) {
                if (y >= 24 && format != PF_BGRA8)
                    ExpectColour(out, x, y, 190, 126, 62);
                else
                    for (int c = 0; c < 4; ++c)
                        ASSERT_EQ(LevelAt(out, x, y, c), LevelAt(y < 24 ? in : before, x, y, c)) << y;
            }
    }
}

// The pictures have 100 rows, the output 70. Alpha-last bytes measure the dissolve, whose shadow of 0.67 falls
// 2.01 pixels; the other formats a copy of the output's size: 1.4.
TEST(PaperCollage, Render_LowerOutput_AlphaLastBytesKeepTheDissolvesScale)
{
    Sheets sheets;
    sheets.foreground = 0x000000;
    sheets.background = 0xFFFFFF;
    sheets.shadow = 0.67f;
    sheets.angle = 1.0f;
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in =
            TwoColours(120, 100, format, {20, 20, 20, 9}, {220, 220, 220, 9}, 40, 20, 60, 50);
        GuardedPicture out(120, 70, format);
        Moment moment;
        moment.second = &in;
        moment.progress = 0.5;
        RenderFresh(kEffect, sheets.Levels(), moment, in, out);
        const int twoPixels[] = {0, 84, 168, 253}, onePixel[] = {84, 168, 253, 253};
        for (int x = 0; x < 4; ++x) {
            const int level = format == PF_BGRA8 ? twoPixels[x] : onePixel[x];
            ExpectColour(out, 60 + x, 35, level, level, level);
        }
    }
}

TEST(PaperCollage, Render_LowerOutputs_AreThePlainVersions)
{
    std::mt19937 random(6);
    for (const std::uint32_t format : kPictureFormats)
        for (const std::int32_t outHeight : {1, 11, 33, 49})
            CompareTransition(kEffect, format, {60, 50, 63, 52, 60, outHeight},
                              {0.6f, 0.5f, 0.5f, 0x44FEFE, 0x400080, 0.6f, 2.0f, 0.9f, 0.3f, 0.8f}, 0.45,
                              outHeight % 3 == 0, random);
}

TEST(PaperCollage, Render_WithoutASecondPicture_WritesNothing)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(30, 20, format, 1);
        GuardedPicture out = Noisy(30, 20, format, 3);
        const GuardedPicture before = out;
        RenderFresh(kEffect, kLevels[0], Moment{}, in, out);
        EXPECT_TRUE(Equal(out, before));
        FakeHost host(Levels(kEffect, kLevels[0]));
        VideoFrame first = in.Frame(), second = in.Frame(), output = out.Frame();
        second.data = nullptr;
        RenderInfo info = MakeInfo(AtProgress(0.5));
        EXPECT_TRUE(NewEffect(kEffect)->Render(&host, &first, &second, &output, &info));
        EXPECT_TRUE(Equal(out, before));
    }
}

TEST(PaperCollage, Render_ASecondPictureOfAnotherFormat_StaysInsideTheMemory)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::uint32_t secondFormat : kPictureFormats) {
            const GuardedPicture in = Noisy(30, 20, format, 1), second = Noisy(27, 25, secondFormat, 2);
            GuardedPicture out = Noisy(33, 19, format, 3);
            Moment moment;
            moment.second = &second;
            RenderFresh(kEffect, kLevels[0], moment, in, out);
            out.Check();
        }
}

// There is no dissolve of two formats: the collage is of black, and so is what it thins out into.
TEST(PaperCollage, Render_ASecondPictureOfAnotherFormat_MakesTheCollageOfBlack)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::uint32_t secondFormat : kPictureFormats) {
            if (secondFormat == format)
                continue;
            const GuardedPicture in = Noisy(30, 20, format, 1), second = Noisy(30, 20, secondFormat, 2);
            const GuardedPicture black(30, 20, format);
            for (const double progress : {0.0, 0.1, 0.5, 1.0}) {
                const GuardedPicture out = Collaged(kLevels[3], in, second, progress);
                EXPECT_TRUE(Equal(out, Collaged(kLevels[3], black, black, progress))) << progress;
                if (progress == 0.0 || progress == 1.0) {
                    EXPECT_TRUE(Equal(out, black)) << progress;
                }
            }
        }
}

TEST(PaperCollage, Render_AShadowBeyondAnyMemory_LeavesTheGrey)
{
    // 20 rows: shadows of 6e8 pixels and more.
    for (const float shadow : {1e9f, 1e30f, kInfinity})
        for (const std::uint32_t format : kPictureFormats) {
            Sheets sheets;
            sheets.shadow = shadow;
            const GuardedPicture in = TwoColours(30, 20, format, {200, 100, 50, 9}, {}, 0, 0, 0, 0);
            const GuardedPicture out = Collaged(sheets.Levels(), in, in, 0.5);
            // 0.298 * 50 + 0.586 * 100 + 0.113 * 200 = 96.1, and no alpha.
            for (int c = 0; c < 4; ++c)
                EXPECT_EQ(LevelAt(out, 11, 11, c), c < 3 ? 96 : 0) << FormatName(format);
        }
}

// --- an output in a picture's own memory -----------------------------------------------------------------------

/// One render of records as they are.
void RenderRecords(VideoFrame first, VideoFrame second, VideoFrame output, const std::vector<float>& levels,
                   double progress)
{
    FakeHost host(Levels(kEffect, levels));
    RenderInfo info = MakeInfo(AtProgress(progress));
    EXPECT_TRUE(NewEffect(kEffect)->Render(&host, &first, &second, &output, &info));
}

// The bare dissolve shows up to an amount of a half: the pictures are read to the end.
TEST(PaperCollage, Render_IntoEitherPictureAtAnyMoment_GivesWhatAnotherOutputGets)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const double progress : {0.02, 0.1, 0.2, 0.5, 0.9})
            for (const float shadow : {0.66f, 1e9f}) { // sheets, and the greys without them
                const GuardedPicture in = Noisy(90, 70, format, 1), second = Noisy(90, 70, format, 2);
                std::vector<float> levels = kLevels[0];
                levels[6] = shadow;
                const GuardedPicture expected = Collaged(levels, in, second, progress);
                const GuardedPicture first = in, last = second;
                RenderRecords(first.Frame(), second.Frame(), first.Frame(), levels, progress);
                RenderRecords(in.Frame(), last.Frame(), last.Frame(), levels, progress);
                EXPECT_TRUE(Equal(first, expected)) << FormatName(format) << " at " << progress;
                EXPECT_TRUE(Equal(last, expected)) << FormatName(format) << " at " << progress;
            }
}

TEST(PaperCollage, Render_IntoOtherRowsOfAPicture_GivesWhatAnotherOutputGets)
{
    constexpr int kWidth = 60, kHeight = 50;
    for (const std::uint32_t format : kPictureFormats)
        for (const int rows : {0, 1, 7})
            for (const int pixels : {0, 1, 5})
                for (const bool meetsSecond : {false, true}) {
                    const GuardedPicture memory = Noisy(kWidth + 5, kHeight + 7, format, 3), apart = memory;
                    const GuardedPicture other = Noisy(kWidth, kHeight, format, 4);
                    const GuardedPicture expected(kWidth, kHeight, format);
                    VideoFrame picture = memory.Frame();
                    picture.width = kWidth;
                    picture.height = kHeight;
                    VideoFrame copy = picture, output = picture;
                    copy.data = apart.Row(0);
                    output.data = memory.Row(rows) + pixels * BytesOfPixel(format);
                    const auto render = [&](const VideoFrame& from, const VideoFrame& to) {
                        RenderRecords(meetsSecond ? other.Frame() : from, meetsSecond ? from : other.Frame(),
                                      to, kLevels[0], 0.2);
                    };
                    render(copy, expected.Frame());
                    render(picture, output);
                    for (int y = 0; y < kHeight; ++y)
                        ASSERT_EQ(std::memcmp(memory.Row(rows + y) + pixels * BytesOfPixel(format),
                                              expected.Row(y),
                                              static_cast<std::size_t>(kWidth * BytesOfPixel(format))),
                                  0)
                            << FormatName(format) << ", row " << y << ", " << rows << " and " << pixels
                            << " off";
                }
}

TEST(PaperCollage, Render_WithoutInfo_IsRefusedAndWritesNothing)
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

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "image/primitives/cpu_variant.h"
#include "tests/effects/pictures_as_plain.h"
#include "tests/golden/effect_presets.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::Smear;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

constexpr double kMoments[] = {0.0, 0.05, 0.25, 0.33, 0.4, 0.5, 0.6, 0.8, 0.95, 1.0, -3.0, 7.0};

// The numbers of "Background".
constexpr float kFirstClip = 0, kSecondClip = 1, kTransparent = 2, kBlended = 3;

/// Blur, Angle, Direction, Cross Fade, Background.
std::vector<std::vector<float>> InnerPresets()
{
    std::vector<std::vector<float>> levels;
    for (const PresetRow& preset : kSmearPresets)
        levels.push_back(ValuesOf(preset, 5));
    return levels;
}

std::vector<float> RandomLevels(std::mt19937& random)
{
    const auto level = [&] { return static_cast<float>(random() % 1001) / 1000.0f; };
    return {level(), level(), level(), level(), static_cast<float>(random() % 4)};
}

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed);
    return picture;
}

GuardedPicture OpaqueNoise(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed)
{
    GuardedPicture picture = Noisy(width, height, format, seed);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (IsFloatFormat(format))
                picture.SetFloat(x, y, PlaceOfColour(format, 3), 1.0f);
            else
                picture.SetByte(x, y, PlaceOfColour(format, 3), 255);
        }
    return picture;
}

/// Clear black with an opaque column of `colour` (0 blue, 1 green, 2 red), PF_BGRA32F.
GuardedPicture Column(std::int32_t width, std::int32_t height, int at, int colour)
{
    GuardedPicture picture(width, height, PF_BGRA32F);
    for (int y = 0; y < height; ++y) {
        picture.SetFloat(at, y, colour, 1.0f);
        picture.SetFloat(at, y, 3, 1.0f);
    }
    return picture;
}

/// The frame at `progress`, over an output of noise.
GuardedPicture Smeared(const std::vector<float>& levels, const GuardedPicture& in,
                       const GuardedPicture& second, double progress)
{
    GuardedPicture out = Noisy(in.Width(), in.Height(), in.Format(), 99);
    Moment moment;
    moment.second = &second;
    moment.progress = progress;
    RenderFresh(kEffect, levels, moment, in, out);
    return out;
}

void ExpectFloat(const GuardedPicture& picture, int x, int y, int channel, double expected,
                 double within = 1e-6)
{
    EXPECT_NEAR(static_cast<double>(picture.Float(x, y, channel)), expected, within)
        << "at (" << x << ", " << y << ") channel " << channel;
}

double SumOfRow(const GuardedPicture& picture, int y, int channel)
{
    double sum = 0;
    for (int x = 0; x < picture.Width(); ++x)
        sum += static_cast<double>(picture.Float(x, y, channel));
    return sum;
}

bool IsBlank(const GuardedPicture& picture)
{
    for (int y = 0; y < picture.Height(); ++y)
        for (int i = 0; i < picture.Width() * picture.PixelBytes(); ++i)
            if (picture.Row(y)[i] != 0)
                return false;
    return true;
}

// --- the face -----------------------------------------------------------------------------------------

TEST(Smear, GetParamInfo_HasFiveKnobsInAClearedRecord)
{
    struct Row {
        const char* name;
        ParamRect rect;
        float initial, least, most;
    };
    constexpr Row rows[] = {{"Blur", {0, 0, 48, 30}, 0.34f, 0.0f, 100.0f},
                            {"Angle", {66, 0, 48, 30}, 0.0f, 0.0f, 360.0f},
                            {"Direction", {132, 0, 48, 30}, 0.5f, -100.0f, 100.0f},
                            {"Cross Fade", {198, 0, 48, 30}, 0.34f, 0.0f, 100.0f}};
    const HeldEffect effect = NewEffect(kEffect);
    const auto answer = [&](std::uint32_t knob, bool expected) {
        ParamInfo info;
        std::memset(&info, 0xCC, sizeof info);
        EXPECT_EQ(effect->GetParamInfo(knob, &info), expected);
        return info;
    };
    for (std::uint32_t knob = 0; knob < 4; ++knob) {
        ParamInfo expected = {};
        expected.value = FloatWord(rows[knob].initial);
        expected.kind = ParamFloat;
        expected.scale.min = rows[knob].least;
        expected.scale.max = rows[knob].most;
        expected.scale.angular = knob == 1 ? 1 : 0;
        std::strcpy(expected.name, rows[knob].name);
        expected.rect = rows[knob].rect;
        expected.shown = 1;
        const ParamInfo info = answer(knob, true);
        EXPECT_EQ(std::memcmp(&info, &expected, sizeof info), 0) << rows[knob].name;
    }
    ParamInfo expected = {}, info = answer(4, true);
    expected.value = 2;
    expected.kind = ParamChoice;
    expected.choice.choiceCount = 4;
    constexpr const char* choices[] = {"First Clip", "Second Clip", "Transparent", "Blended"};
    for (std::size_t i = 0; i < 4; ++i)
        std::strcpy(expected.choice.choiceNames[i], choices[i]);
    std::strcpy(expected.name, "Background");
    expected.rect = {0, 90, 114, 20};
    expected.shown = 1;
    EXPECT_EQ(std::memcmp(&info, &expected, sizeof info), 0);
    info = answer(5, false);
    expected = {};
    EXPECT_EQ(std::memcmp(&info, &expected, sizeof info), 0);
}

TEST(Smear, GetPresetValue_HasElevenPresetsOfFourLevelsAndAChoice)
{
    const HeldEffect effect = NewEffect(kEffect);
    std::uint32_t preset = 0;
    for (const PresetRow& row : kSmearPresets) {
        EXPECT_STREQ(effect->GetPresetName(preset), row.name);
        for (std::uint32_t knob = 0; knob < 5; ++knob) {
            ParamValue value = {};
            ASSERT_TRUE(effect->GetPresetValue(preset, knob, &value));
            EXPECT_EQ(value.value,
                      knob < 4 ? FloatWord(row.values[knob]) : static_cast<std::uint32_t>(row.values[knob]))
                << row.name << ", " << knob;
            EXPECT_EQ(value.valueY, 0u);
        }
        ++preset;
    }
    EXPECT_EQ(preset, 11u);
    EXPECT_EQ(effect->GetPresetName(preset), nullptr);
}

// --- knobs --------------------------------------------------------------------------------------------

TEST(Smear, Render_AsksForItsKnobsInTheirOrder)
{
    FakeHost host(Levels(kEffect, {0.3f, 0.2f, 0.6f, 0.5f, kBlended}));
    const GuardedPicture in = MakePicture(Motif::Ramp, 9, 7, PF_BGRA8);
    GuardedPicture out(9, 7, PF_BGRA8);
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
    EXPECT_EQ(host.Reads(),
              (std::vector<KnobRead>{
                  {0, ParamFloat}, {1, ParamFloat}, {2, ParamFloat}, {3, ParamFloat}, {4, ParamChoice}}));
    EXPECT_TRUE(host.OtherCalls().empty());
    EXPECT_EQ(host.Queries(), std::vector<InterfaceId>{IMemoryProvider::id});
}

TEST(Smear, Render_RefusedKnobs_ReadAsTheOneBefore)
{
    const std::vector<float> levels = {0.6f, 0.15f, 0.8f, 0.5f, kTransparent};
    const GuardedPicture in = MakePicture(Motif::Moving, 31, 20, PF_BGRA8);
    for (const std::uint32_t refused : {1u, 2u, 3u}) {
        FakeHost host(Levels(kEffect, levels));
        host.RefuseKnob(refused);
        GuardedPicture out(31, 20, PF_BGRA8), expected(31, 20, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
        std::vector<float> read = levels;
        read[refused] = levels[refused - 1];
        RenderFresh(kEffect, read, in, expected);
        EXPECT_TRUE(Equal(out, expected)) << refused;
    }
}

// Its host has three knobs; Cross Fade is 0.595 and Background 3.
TEST(Smear, RenderOfTheWrapper_IsTheInnerEffectWithItsFixedKnobs)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 30, PF_BGRA8);
    const GuardedPicture second = MakePicture(Motif::SoftEdges, 40, 30, PF_BGRA8);
    for (const PresetRow& preset : kWrapSmearPresets)
        for (const double progress : {0.1, 0.45, 0.7}) {
            Moment moment;
            moment.second = &second;
            moment.progress = progress;
            FakeHost host(Levels(EffectClass::WrapSmear, ValuesOf(preset, 3)));
            GuardedPicture out(40, 30, PF_BGRA8), expected(40, 30, PF_BGRA8);
            EXPECT_TRUE(Render(*NewEffect(EffectClass::WrapSmear), host, moment, in, out));
            EXPECT_EQ(host.Reads(),
                      (std::vector<KnobRead>{{0, ParamFloat}, {1, ParamFloat}, {2, ParamFloat}}));
            const float* const v = preset.values;
            RenderFresh(kEffect, {v[0], v[1], v[2], 0.595f, kBlended}, moment, in, expected);
            EXPECT_TRUE(Equal(out, expected)) << preset.name << " at " << progress;
        }
}

// --- whole pictures against the plain version -----------------------------------------------------------

TEST(Smear, Render_AllSmallSizes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 1; height <= 7; ++height)
            for (int width = 1; width <= 7; ++width)
                CompareTransition(kEffect, format, {width, height, width, height, width, height},
                                  RandomLevels(random), kMoments[random() % std::size(kMoments)],
                                  random() % 2 != 0, random);
}

TEST(Smear, Render_RandomSizesAndKnobs_AreThePlainVersions)
{
    std::mt19937 random(2);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 60; ++i)
            CompareTransition(kEffect, format, RandomSizes(random, 40, 40), RandomLevels(random),
                              kMoments[random() % std::size(kMoments)], random() % 2 != 0, random);
}

TEST(Smear, Render_AllPresets_AreThePlainVersions)
{
    std::mt19937 random(3);
    for (const std::uint32_t format : kPictureFormats)
        for (const std::vector<float>& levels : InnerPresets())
            for (const double progress : {0.15, 0.5, 0.7})
                CompareTransition(kEffect, format, RandomSizes(random, 40, 30), levels, progress, false,
                                  random);
}

TEST(Smear, Render_AllPresetsOfTheWrapper_AreThePlainVersions)
{
    std::mt19937 random(4);
    for (const std::uint32_t format : kPictureFormats)
        for (const PresetRow& preset : kWrapSmearPresets)
            CompareTransition(EffectClass::WrapSmear, format, RandomSizes(random, 40, 30),
                              ValuesOf(preset, 3), kMoments[random() % std::size(kMoments)], false, random);
}

// 300 columns: streaks of up to 600 pixels, ten doublings.
TEST(Smear, Render_LongStreaks_AreThePlainVersions)
{
    std::mt19937 random(5);
    for (const std::uint32_t format : kPictureFormats)
        for (const float angle : {0.0f, 0.13f, 0.25f, 0.377778f, 0.5f, 0.75f, 1.0f})
            CompareTransition(kEffect, format, {300, 9, 300, 9, 300, 9},
                              {1.0f, angle, 0.4f, 0.6f, static_cast<float>(random() % 4)}, 0.45, false,
                              random);
}

// Streaks across the rows of pictures that are smeared in several tiles, upright, slanted and all but level.
TEST(Smear, Render_SlantedStreaksOfWidePictures_AreThePlainVersions)
{
    std::mt19937 random(8);
    for (const std::uint32_t format : {PF_ARGB8, PF_BGRA32F})
        for (const float angle : {0.01f, 0.13f, 0.377778f, 0.49f, 0.62f, 0.97f, 1.0f})
            CompareTransition(kEffect, format, {1100, 30, 1100, 30, 1090, 29},
                              {0.15f, angle, 0.4f, 0.6f, static_cast<float>(random() % 4)}, 0.45, false,
                              random);
}

// Streaks along the columns of pictures that are smeared some columns at a time.
TEST(Smear, Render_UprightStreaksOfWidePictures_AreThePlainVersions)
{
    std::mt19937 random(6);
    for (const std::uint32_t format : kPictureFormats)
        for (const float angle : {0.25f, 0.75f})
            for (const float direction : {0.0f, 0.4f})
                CompareTransition(kEffect, format, {1100, 9, 1090, 8, 1100, 9},
                                  {0.02f, angle, direction, 0.6f, kTransparent}, 0.45, false, random);
}

TEST(Smear, Render_KnobsSomewhatOutOfRange_AreThePlainVersions)
{
    std::mt19937 random(6);
    const std::vector<std::vector<float>> wild = {
        {3.0f, 0.3f, 0.4f, 0.5f, kBlended},     {-1.0f, 0.3f, 0.4f, 0.5f, kBlended},
        {0.5f, -2.6f, 0.4f, 0.5f, kBlended},    {0.5f, 7.2f, 0.4f, 0.5f, kTransparent},
        {0.5f, 0.3f, 1.5f, 0.5f, kFirstClip},   {0.5f, 0.3f, -0.5f, 0.5f, kSecondClip},
        {0.5f, 0.3f, 0.4f, 1.75f, kBlended},    {0.5f, 0.3f, 0.4f, 0.5f, 4.0f},
        {0.5f, 0.3f, 0.4f, 0.5f, 4294967040.0f}};
    for (const std::uint32_t format : kPictureFormats)
        for (const std::vector<float>& levels : wild)
            for (const double progress : {0.1, 0.5, 0.9})
                CompareTransition(kEffect, format, {23, 19, 23, 19, 23, 19}, levels, progress, false, random);
}

TEST(Smear, Render_HostileKnobs_StayInsideTheMemoryAndGiveTrue)
{
    constexpr float hostile[] = {kNaN, kInfinity, -kInfinity, 1e30f, -1e30f, -1.0f, 1e-40f, 2.0f};
    std::mt19937 random(7);
    for (const std::uint32_t format : kPictureFormats)
        for (std::size_t knob = 0; knob < 4; ++knob)
            for (const float value : hostile)
                for (const double progress : {0.0, 0.5, 0.9}) {
                    std::vector<float> levels = RandomLevels(random);
                    levels[knob] = value;
                    const GuardedPicture in = Noisy(17, 13, format, 1), second = Noisy(19, 11, format, 2);
                    const GuardedPicture out = Smeared(levels, in, second, progress);
                    out.Check();
                }
}

TEST(Smear, Render_EveryCpuVariant_GivesTheSamePixels)
{
    const CpuVariant before = CurrentVariant();
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(97, 41, format, 77), second = Noisy(97, 41, format, 78);
        for (const float angle : {0.0f, 0.13f, 0.25f}) {
            const std::vector<float> levels = {0.6f, angle, 0.3f, 0.8f, kBlended};
            ASSERT_TRUE(UseVariant(CpuVariant::Baseline));
            const GuardedPicture expected = Smeared(levels, in, second, 0.45);
            for (const CpuVariant variant : {CpuVariant::Avx2, CpuVariant::Avx512}) {
                if (!UseVariant(variant))
                    continue;
                EXPECT_TRUE(Equal(Smeared(levels, in, second, 0.45), expected)) << FormatName(format);
            }
        }
    }
    UseVariant(before);
}

// --- the streak ---------------------------------------------------------------------------------------------

// Without a cross fade the full smear is reached at the cut, and half of it at 0.25. 32 columns and a Blur of
// 0.25 make 2 * 32 * 0.25 / 2 = 8 pixels there: three doublings, of 0.5, 1 and 2 pixels. Eight copies, half a pixel
// apart, of a column at 10 cover 10 to 14.
constexpr float kEightPixels = 0.25f;
constexpr double kStreak[] = {0.1875, 0.25, 0.25, 0.25, 0.0625};

TEST(Smear, Render_DirectionZero_PullsTheFirstPictureForwardAlone)
{
    const GuardedPicture in = Column(32, 3, 10, 1), second = Column(32, 3, 20, 2);
    const GuardedPicture out = Smeared({kEightPixels, 0, 0, 0, kTransparent}, in, second, 0.25);
    for (int x = 0; x < 32; ++x)
        for (const int channel : {1, 3})
            ExpectFloat(out, x, 1, channel, x >= 10 && x < 15 ? kStreak[x - 10] : 0);
    EXPECT_EQ(SumOfRow(out, 1, 2), 0);
}

TEST(Smear, Render_DirectionZero_PullsTheSecondPictureBackwardAlone)
{
    const GuardedPicture in = Column(32, 3, 10, 1), second = Column(32, 3, 20, 2);
    const GuardedPicture out = Smeared({kEightPixels, 0, 0, 0, kTransparent}, in, second, 0.75);
    for (int x = 0; x < 32; ++x)
        for (const int channel : {2, 3})
            ExpectFloat(out, x, 1, channel, x > 15 && x <= 20 ? kStreak[20 - x] : 0);
    EXPECT_EQ(SumOfRow(out, 1, 1), 0);
}

TEST(Smear, Render_DirectionOne_TurnsBothRound)
{
    const GuardedPicture in = Column(32, 3, 10, 1), second = Column(32, 3, 20, 2);
    const std::vector<float> levels = {kEightPixels, 0, 1, 0, kTransparent};
    const GuardedPicture early = Smeared(levels, in, second, 0.25);
    const GuardedPicture late = Smeared(levels, in, second, 0.75);
    for (int x = 0; x < 32; ++x) {
        ExpectFloat(early, x, 1, 1, x > 5 && x <= 10 ? kStreak[10 - x] : 0);
        ExpectFloat(late, x, 1, 2, x >= 20 && x < 25 ? kStreak[x - 20] : 0);
    }
}

// A Blur of 0.5 makes 16 pixels, eight for either side; both have 127 of 255 parts.
TEST(Smear, Render_DirectionOneHalf_MixesBothStreaksInEqualParts)
{
    const GuardedPicture in = Column(32, 3, 15, 1);
    const GuardedPicture out = Smeared({0.5f, 0, 0.5f, 0, kTransparent}, in, in, 0.25);
    constexpr double part = 127 * 0.003921569;
    for (int x = 0; x < 32; ++x) {
        const int off = std::abs(x - 15);
        ExpectFloat(out, x, 1, 1, off > 4 ? 0 : off == 0 ? 2 * part * kStreak[0] : part * kStreak[off]);
    }
}

// 255 * 0.121568635 is 31.000002 in single precision: what is left of 255 is short of 224, and white loses a level. Of
// 1e-8 it is a trace, and what is left short of 255.
TEST(Smear, Render_DirectionsJustAboveALevel_CutBothWeights)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture white(24, 5, format);
        white.Fill(255, 255, 255, 255);
        for (const float direction : {0.121568635f, 1e-8f}) {
            const GuardedPicture out = Smeared({0, 0, direction, 0.5f, kTransparent}, white, white, 0.1);
            for (int c = 0; c < 4; ++c)
                EXPECT_EQ(out.Byte(11, 2, c), 254) << direction;
        }
        Moment moment;
        moment.second = &white;
        moment.progress = 0.1;
        GuardedPicture out(24, 5, format);
        const GuardedPicture before = out;
        const std::vector<float> levels = {0.4f, 0.1f, 0.121568635f, 0.5f, kTransparent};
        RenderFresh(kEffect, levels, moment, white, out);
        EXPECT_TRUE(AsPlain(kEffect, levels, moment, white, before, out));
    }
}

// At 90 degrees toward lower row numbers, as long as the width says: 32 columns, 12 rows.
TEST(Smear, Render_AQuarterTurn_SmearsUpwardInRowNumbers)
{
    GuardedPicture in(32, 12, PF_BGRA32F);
    for (int x = 0; x < 32; ++x)
        in.SetFloat(x, 8, 1, 1.0f);
    const GuardedPicture out = Smeared({kEightPixels, 0.25f, 0, 0, kTransparent}, in, in, 0.25);
    for (int y = 0; y < 12; ++y)
        for (const int x : {5, 16, 26})
            ExpectFloat(out, x, y, 1, y > 3 && y <= 8 ? kStreak[8 - y] : 0, 1e-5);
}

TEST(Smear, Render_NoLength_LeavesTheBarePicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float direction : {0.0f, 1.0f}) {
            const GuardedPicture in = Noisy(21, 17, format, 1), second = Noisy(21, 17, format, 2);
            const std::vector<float> levels = {0, 0.3f, direction, 0.5f, kTransparent};
            EXPECT_TRUE(Equal(Smeared(levels, in, second, 0.2), in)) << FormatName(format);
            EXPECT_TRUE(Equal(Smeared(levels, in, second, 0.8), second)) << FormatName(format);
        }
}

// 30 columns, at half the smear: 30 * Blur pixels.
TEST(Smear, Render_ALengthUnderOneAndAHalf_HasNoDoubling)
{
    const GuardedPicture in = Column(30, 3, 15, 1);
    EXPECT_TRUE(Equal(Smeared({0.0496f, 0, 0, 0, kTransparent}, in, in, 0.25), in)); // 1.488
    const GuardedPicture out =
        Smeared({0.0504f, 0, 0, 0, kTransparent}, in, in, 0.25); // 1.512: a step of 0.378
    ExpectFloat(out, 15, 1, 1, 0.5 + 0.5 * (1 - 0.378));
    ExpectFloat(out, 16, 1, 1, 0.5 * 0.378);
}

// --- progress ----------------------------------------------------------------------------------------------

TEST(Smear, Render_ResetToNone_CutsInTheMiddle)
{
    const std::vector<float> reset = {0, 0, 0, 0, kFirstClip};
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = OpaqueNoise(21, 17, format, 1), second = OpaqueNoise(21, 17, format, 2);
        for (const double progress : {0.0, 0.3, 0.49999999})
            EXPECT_TRUE(Equal(Smeared(reset, in, second, progress), in)) << progress;
        for (const double progress : {0.50000001, 0.8, 1.0})
            EXPECT_TRUE(Equal(Smeared(reset, in, second, progress), second)) << progress;
    }
}

TEST(Smear, Kept_NoCrossFadeAtTheMiddle_IsBlank)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float background : {kFirstClip, kSecondClip, kTransparent, kBlended}) {
            const GuardedPicture in = OpaqueNoise(21, 17, format, 1), second = OpaqueNoise(21, 17, format, 2);
            EXPECT_TRUE(IsBlank(Smeared({0, 0, 0, 0, background}, in, second, 0.5))) << FormatName(format);
        }
}

// With a Cross Fade of 1 at 0.25: a quarter of the first picture's smear, 2 * 32 * 0.5 / 4 = 8 pixels; three
// quarters of the second's, 24 pixels in four doublings of 0.75, 1.5, 3 and 6, so sixteen copies over 11.25 pixels.
// The dissolve's parts are trunc(63.75) and trunc(191.25) of 255.
TEST(Smear, Render_FullCrossFade_SmearsBothOverTheWholeTransition)
{
    const GuardedPicture in = Column(32, 3, 8, 1), second = Column(32, 3, 28, 2);
    const std::vector<float> levels = {0.5f, 0, 0, 1, kTransparent};
    const GuardedPicture out = Smeared(levels, in, second, 0.25);
    for (int x = 0; x < 32; ++x)
        ExpectFloat(out, x, 1, 1, x >= 8 && x < 13 ? 191 * 0.003921569 * kStreak[x - 8] : 0);
    constexpr double part = 63 * 0.003921569 / 16;
    ExpectFloat(out, 28, 1, 2, part * 1.25); // copies at 28 and 27.25
    // Copies at 25 and 24.25, and of the one at 25.75 what its two halves leave there: 1 + 0.25 + 0.75 / 2.
    ExpectFloat(out, 25, 1, 2, part * 1.625);
    EXPECT_NEAR(SumOfRow(out, 1, 2), 63 * 0.003921569, 1e-6);
    EXPECT_GT(out.Float(16, 1, 2), 0.0f); // the last copy lies at 16.75
    EXPECT_EQ(out.Float(15, 1, 2), 0.0f);

    // Mirrored in time, the pictures change parts.
    const GuardedPicture late = Smeared(levels, in, second, 0.75);
    EXPECT_NEAR(SumOfRow(late, 1, 1), 63 * 0.003921569, 1e-6);
    EXPECT_NEAR(SumOfRow(late, 1, 2), 191 * 0.003921569, 1e-6);
}

TEST(Smear, Render_AtTheEnds_IsTheCleanPictureBitForBit)
{
    // One streak alone has all of the weight, and an opaque picture covers what lies under it.
    for (const std::uint32_t format : kPictureFormats)
        for (const float direction : {0.0f, 1.0f})
            for (const float background : {kFirstClip, kSecondClip, kTransparent, kBlended})
                for (const float crossFade : {0.0f, 0.595f, 1.0f}) {
                    const GuardedPicture in = OpaqueNoise(37, 29, format, 1);
                    const GuardedPicture second = OpaqueNoise(37, 29, format, 2);
                    const std::vector<float> levels = {0.8f, 0.13f, direction, crossFade, background};
                    for (const double start :
                         {0.0, -0.0, -1.0, -1e300, std::numeric_limits<double>::quiet_NaN()})
                        EXPECT_TRUE(Equal(Smeared(levels, in, second, start), in)) << start;
                    for (const double end : {1.0, 1.0000001, 1e300, std::numeric_limits<double>::infinity()})
                        EXPECT_TRUE(Equal(Smeared(levels, in, second, end), second)) << end;
                }
}

// 127 of 255 parts twice, each cut to a whole level, and what of the clip shows through an alpha of 254.
TEST(Smear, Render_AtTheEndsWithTwoStreaks_LosesAtMostTwoLevels)
{
    const GuardedPicture in = OpaqueNoise(37, 29, PF_BGRA8, 1), second = OpaqueNoise(37, 29, PF_BGRA8, 2);
    const GuardedPicture out = Smeared({0.8f, 0.13f, 0.5f, 0.595f, kBlended}, in, second, 0.0);
    for (int y = 0; y < 29; ++y)
        for (int x = 0; x < 37; ++x) {
            for (int c = 0; c < 3; ++c) {
                ASSERT_LE(out.Byte(x, y, c), in.Byte(x, y, c));
                ASSERT_GE(out.Byte(x, y, c) + 2, in.Byte(x, y, c));
            }
            ASSERT_EQ(out.Byte(x, y, 3), 255);
        }
}

// --- backgrounds -----------------------------------------------------------------------------------------------

// The copies come from the left, where there is nothing: at the first column each of the three doublings halves.
TEST(Smear, Render_TransparentBackground_RunsOutTowardNothingAtTheEdge)
{
    GuardedPicture in(32, 5, PF_BGRA32F);
    in.FillFloat(0.5f, 0.5f, 0.5f, 1.0f);
    const GuardedPicture out = Smeared({kEightPixels, 0, 0, 0, kTransparent}, in, in, 0.25);
    ExpectFloat(out, 0, 2, 3, 0.125);
    ExpectFloat(out, 0, 2, 0, 0.0625);
    ExpectFloat(out, 31, 2, 3, 1);
}

TEST(Smear, Render_TransparentBackground_HasNoAlphaWhereNoPictureIs)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = OpaqueNoise(32, 10, format, 1), second = OpaqueNoise(12, 10, format, 2);
        // The second picture is pulled backward, away from what it does not cover.
        const GuardedPicture out = Smeared({0.5f, 0, 0, 0, kTransparent}, in, second, 0.75);
        for (int y = 0; y < 10; ++y)
            for (int x = 13; x < 32; ++x)
                for (int i = 0; i < out.PixelBytes(); ++i)
                    ASSERT_EQ(out.Row(y)[x * out.PixelBytes() + i], 0) << FormatName(format);
    }
}

// The streak of the first picture, whose alpha is 1/8 at the first column, over white, over grey and over itself.
TEST(Smear, Render_Backgrounds_LieUnderTheStreak)
{
    GuardedPicture in(32, 5, PF_BGRA32F), second(32, 5, PF_BGRA32F);
    in.FillFloat(0.25f, 0.25f, 0.25f, 1.0f);
    second.FillFloat(1.0f, 1.0f, 1.0f, 1.0f);
    constexpr double streak = 0.25 / 8, rest = 7.0 / 8;
    const auto early = [&](float background) {
        return Smeared({kEightPixels, 0, 0, 0, background}, in, second, 0.25);
    };
    ExpectFloat(early(kFirstClip), 0, 2, 1, streak + rest * 0.25);
    ExpectFloat(early(kSecondClip), 0, 2, 1, streak + rest);
    ExpectFloat(early(kTransparent), 0, 2, 1, streak);
    ExpectFloat(early(kBlended), 0, 2, 1, streak + rest * 0.25);
    // The second picture's streak runs out at the last column.
    const auto late = [&](float background) {
        return Smeared({kEightPixels, 0, 0, 0, background}, in, second, 0.75);
    };
    ExpectFloat(late(kFirstClip), 31, 2, 1, 0.125 + rest * 0.25);
    ExpectFloat(late(kSecondClip), 31, 2, 1, 0.125 + rest);
    ExpectFloat(late(kTransparent), 31, 2, 1, 0.125);
    ExpectFloat(late(kBlended), 31, 2, 1, 0.125 + rest);
}

// The streak of eight copies as above, but of a picture 20 columns wide whose last one is drawn out forward. Beside
// the picture stands what the last doubling moved: four copies at 19 to 20.5, two columns on.
TEST(Smear, Kept_ABackgroundSmallerThanTheStreak_ShowsTheLastMoveBesideIt)
{
    const GuardedPicture in(32, 3, PF_BGRA32F), second = Column(20, 3, 19, 1);
    const GuardedPicture blended = Smeared({kEightPixels, 0, 1, 0, kBlended}, in, second, 0.75);
    ExpectFloat(blended, 19, 1, 1, kStreak[0] + (1 - kStreak[0]));
    for (int x = 20; x < 32; ++x)
        ExpectFloat(blended, x, 1, 1, x == 21 ? 0.375 : x == 22 ? 0.5 : x == 23 ? 0.125 : 0);
    // The streak itself, where it has all of the picture to itself or a ground as large.
    for (const float background : {kTransparent, kFirstClip}) {
        const GuardedPicture alone = Smeared({kEightPixels, 0, 1, 0, background}, in, second, 0.75);
        for (int x = 19; x < 32; ++x)
            ExpectFloat(alone, x, 1, 1, x < 24 ? kStreak[x - 19] : 0);
    }
}

TEST(Smear, Render_UnknownBackground_ShowsNothing)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::uint32_t background : {4u, 0x80000000u, 0xFFFFFFFFu})
            for (const double progress : {0.1, 0.9}) {
                const GuardedPicture in = OpaqueNoise(21, 17, format, 1);
                GuardedPicture out = Noisy(21, 17, format, 3);
                std::vector<ParamValue> knobs = Levels(kEffect, {0.3f, 0.1f, 0.3f, 0.4f, 0.0f});
                knobs[4] = ChoiceKnob(background);
                FakeHost host(knobs);
                Moment moment;
                moment.second = &in;
                moment.progress = progress;
                EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
                EXPECT_TRUE(IsBlank(out)) << FormatName(format);
            }
}

// --- what the effect promises ----------------------------------------------------------------------------

TEST(Smear, Render_ASecondPictureThatIsMissing_CountsAsTransparent)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = OpaqueNoise(21, 17, format, 1), nothing(21, 17, format);
        const std::vector<float> levels = {0.3f, 0.1f, 0.3f, 0.5f, kBlended};
        for (const double progress : {0.1, 0.5, 0.9}) {
            Moment moment;
            moment.progress = progress;
            GuardedPicture out = Noisy(21, 17, format, 3);
            RenderFresh(kEffect, levels, moment, in, out);
            EXPECT_TRUE(Equal(out, Smeared(levels, in, nothing, progress))) << progress;
        }
    }
}

TEST(Smear, Render_ASecondPictureOfAnotherFormat_CountsAsTransparent)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::uint32_t other : kPictureFormats) {
            if (other == format)
                continue;
            const GuardedPicture in = OpaqueNoise(21, 17, format, 1), nothing(21, 17, format);
            const GuardedPicture second = OpaqueNoise(21, 17, other, 2);
            const std::vector<float> levels = {0.3f, 0.1f, 0.3f, 0.5f, kBlended};
            for (const double progress : {0.5, 0.9})
                EXPECT_TRUE(
                    Equal(Smeared(levels, in, second, progress), Smeared(levels, in, nothing, progress)));
        }
}

TEST(Smear, Render_TimeFieldsAndAspect_PlayNoPart)
{
    const GuardedPicture in = Noisy(31, 20, PF_BGRA8, 1), second = Noisy(31, 20, PF_BGRA8, 2);
    const std::vector<float> levels = {0.4f, 0.2f, 0.7f, 0.6f, kBlended};
    const GuardedPicture expected = Smeared(levels, in, second, 0.4);
    Moment moment;
    moment.second = &second;
    moment.progress = 0.4;
    moment.halfHeight = true;
    moment.time = 17.5;
    moment.pixelAspect = 3.0;
    GuardedPicture out(31, 20, PF_BGRA8);
    RenderFresh(kEffect, levels, moment, in, out);
    EXPECT_TRUE(Equal(out, expected));
}

TEST(Smear, Render_AnyBackgroundOverAnyScratch_GivesTheSamePixels)
{
    // The second picture is smaller, of the same size, larger.
    constexpr std::int32_t sizes[][2] = {{11, 9}, {21, 17}, {30, 25}};
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& [width, height] : sizes)
            for (const float background : {kFirstClip, kSecondClip, kTransparent, kBlended, 4.0f})
                for (const double progress : {0.1, 0.5, 0.9}) {
                    const std::vector<float> levels = {0.4f, 0.13f, 0.3f, 0.6f, background};
                    const GuardedPicture in = Noisy(21, 17, format, 1);
                    const GuardedPicture second = Noisy(width, height, format, 2);
                    const GuardedPicture expected = Smeared(levels, in, second, progress);
                    for (const std::uint32_t fill : {0x00000000u, 0xFFFFFFFFu, 0x7FA5A5A5u}) {
                        MemoryHabits habits;
                        habits.fill = fill;
                        FakeMemoryProvider memory(habits);
                        FakeHost host(Levels(kEffect, levels));
                        host.SetMemory(&memory);
                        GuardedPicture out = Noisy(21, 17, format, 99);
                        Moment moment;
                        moment.second = &second;
                        moment.progress = progress;
                        EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
                        EXPECT_TRUE(Equal(out, expected))
                            << FormatName(format) << ", background " << background << " at " << progress;
                    }
                }
}

TEST(Smear, Render_WithoutAnyMemory_LeavesTheOutput)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const double progress : {0.0, 0.1, 0.5, 0.9, 1.0}) {
            MemoryHabits habits;
            habits.refuseFrom = 0;
            FakeMemoryProvider memory(habits);
            FakeHost host(Levels(kEffect, {0.4f, 0.13f, 0.3f, 0.6f, kBlended}));
            host.SetMemory(&memory);
            const GuardedPicture in = Noisy(21, 17, format, 1), second = Noisy(21, 17, format, 2);
            GuardedPicture out = Noisy(25, 20, format, 3);
            const GuardedPicture before = out;
            Moment moment;
            moment.second = &second;
            moment.progress = progress;
            EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
            EXPECT_GT(memory.Refused(), 0u);
            EXPECT_TRUE(Equal(out, before)) << FormatName(format) << " at " << progress;
        }
}

/// The most memory that a frame took from its host at a time, beyond the pictures. The second picture may be null.
std::uint64_t PeakOf(const std::vector<float>& levels, const GuardedPicture& in, const GuardedPicture* second,
                     double progress)
{
    FakeMemoryProvider memory;
    FakeHost host(Levels(kEffect, levels));
    host.SetMemory(&memory);
    Moment moment;
    moment.second = second;
    moment.progress = progress;
    GuardedPicture out = Noisy(in.Width(), in.Height(), in.Format(), 3);
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
    EXPECT_EQ(memory.OpenBlocks(), 0u);
    return memory.PeakBytes();
}

TEST(Smear, Render_WithoutASecondPicture_StaysInsideItsWorkingSpace)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float angle : {0.0f, 0.13f}) {
            const GuardedPicture in = Noisy(301, 20, format, 1);
            for (const double progress : {0.4, 0.5, 0.9})
                PeakOf({0.4f, angle, 0.3f, 0.6f, kTransparent}, in, nullptr, progress);
        }
}

TEST(Smear, Render_StreaksAlongTheRows_TakeAFewRowsOfMemory)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F}) {
        const GuardedPicture in = Noisy(60, 400, format, 1), second = Noisy(60, 400, format, 2);
        const std::uint64_t row = 60u * static_cast<std::uint64_t>(in.PixelBytes());
        for (const float direction : {0.0f, 0.5f, 1.0f})
            EXPECT_LT(PeakOf({1.0f, 0.0f, direction, 0.8f, kBlended}, in, &second, 0.5), 50 * row)
                << direction;
    }
}

TEST(Smear, Render_SlantedStreaksOneWay_TakeHalfTheMemoryOfBothWays)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F}) {
        const GuardedPicture in = Noisy(60, 400, format, 1), second = Noisy(60, 400, format, 2);
        const std::uint64_t row = 60u * static_cast<std::uint64_t>(in.PixelBytes());
        for (const float direction : {0.0f, 1.0f})
            EXPECT_LT(PeakOf({1.0f, 0.13f, direction, 0.8f, kBlended}, in, &second, 0.5), 450 * row)
                << direction;
        EXPECT_LT(PeakOf({1.0f, 0.13f, 0.5f, 0.8f, kBlended}, in, &second, 0.5), 850 * row);
    }
}

// 512 columns of floats, or 1024 of bytes, and the margins for each way, of 6000; of flat streaks a few rows.
TEST(Smear, Render_StreaksAcrossTheRows_TakeAPartOfThePictureAtATime)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F}) {
        const GuardedPicture in = Noisy(6000, 150, format, 1), second = Noisy(6000, 150, format, 2);
        const auto bytes = static_cast<std::uint64_t>(in.PixelBytes());
        const std::uint64_t columns = format == PF_BGRA8 ? 3250 : 950; // of a tile with its margins, at most
        for (const float angle : {0.13f, 0.25f, 0.377778f, 0.7f})
            for (const float direction : {0.0f, 0.5f, 1.0f})
                EXPECT_LT(PeakOf({1.0f, angle, direction, 0.8f, kBlended}, in, &second, 0.5),
                          2 * columns * 152u * bytes) // two streaks
                    << angle << ", " << direction;
        const GuardedPicture high = Noisy(600, 2000, format, 1), other = Noisy(600, 2000, format, 2);
        for (const float angle : {0.01f, 0.49f})
            EXPECT_LT(PeakOf({1.0f, angle, 0.5f, 0.8f, kBlended}, high, &other, 0.5), 600u * 500u * bytes)
                << angle;
    }
}

TEST(Smear, Render_FramesInAnyOrder_AreTheSame)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 32, 24, PF_BGRA8);
    const GuardedPicture second = MakePicture(Motif::SoftEdges, 32, 24, PF_BGRA8);
    const std::vector<float> levels = {0.4f, 0.13f, 0.3f, 0.6f, kBlended};
    std::vector<int> order;
    std::vector<GuardedPicture> frames;
    for (int i = 0; i <= 50; ++i) {
        order.push_back(i);
        frames.push_back(Smeared(levels, in, second, i / 50.0));
    }
    std::shuffle(order.begin(), order.end(), std::mt19937(9));
    const HeldEffect effect = NewEffect(kEffect);
    FakeHost host(Levels(kEffect, levels));
    for (const int i : order) {
        Moment moment;
        moment.second = &second;
        moment.progress = i / 50.0;
        GuardedPicture out(32, 24, PF_BGRA8);
        EXPECT_TRUE(Render(*effect, host, moment, in, out));
        EXPECT_TRUE(Equal(out, frames[static_cast<std::size_t>(i)])) << i;
    }
}

TEST(Smear, Render_WithoutInfo_IsRefusedAndWritesNothing)
{
    FakeHost host(Levels(kEffect, {0.3f, 0.2f, 0.6f, 0.5f, kBlended}));
    const GuardedPicture in = MakePicture(Motif::Ramp, 20, 30, PF_BGRA8);
    GuardedPicture out = Noisy(20, 30, PF_BGRA8, 4);
    const GuardedPicture before = out;
    VideoFrame first = in.Frame(), second = in.Frame(), output = out.Frame();
    EXPECT_FALSE(NewEffect(kEffect)->Render(&host, &first, &second, &output, nullptr));
    EXPECT_TRUE(Equal(out, before));
}

} // namespace
} // namespace kelmora

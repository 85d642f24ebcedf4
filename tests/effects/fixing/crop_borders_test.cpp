#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "contract/param_tool_tip.h"
#include "tests/effects/pictures_as_plain.h"
#include "tests/golden/effect_presets.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::BorderCrop;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// The numbers of "Crop Style".
constexpr float kScale = 0, kOverlay = 1, kExtend = 2, kTransparent = 3;
constexpr float kStyles[] = {kScale, kOverlay, kExtend, kTransparent};

/// Horiz Crop, Vert Crop, Feather, Crop Style.
std::vector<float> RandomLevels(std::mt19937& random)
{
    const auto level = [&] {
        const auto pick = random() % 6;
        return pick == 0 ? 0.0f : pick == 1 ? 1.0f : static_cast<float>(random() % 1001) / 1000.0f;
    };
    return {level(), level(), level(), static_cast<float>(random() % 4)};
}

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed,
                     Noise noise = Noise::Uniform)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed, noise);
    return picture;
}

GuardedPicture Grey(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint8_t level,
                    std::uint8_t alpha = 255)
{
    GuardedPicture picture(width, height, format);
    picture.Fill(level, level, level, alpha);
    return picture;
}

GuardedPicture Cropped(const std::vector<float>& levels, const GuardedPicture& in, bool halfHeight = false)
{
    GuardedPicture out = Noisy(in.Width(), in.Height(), in.Format(), 99);
    RenderFresh(kEffect, levels, in, out, halfHeight);
    return out;
}

bool SamePixel(const GuardedPicture& a, int ax, int ay, const GuardedPicture& b, int bx, int by)
{
    const int bytes = a.PixelBytes();
    return std::equal(a.Row(ay) + bytes * ax, a.Row(ay) + bytes * (ax + 1), b.Row(by) + bytes * bx);
}

bool SameAlpha(const GuardedPicture& a, const GuardedPicture& b)
{
    const auto alpha = PlaceOfColour(a.Format(), 3);
    for (int y = 0; y < a.Height(); ++y)
        for (int x = 0; x < a.Width(); ++x)
            if (IsFloatFormat(a.Format()) ? a.Float(x, y, alpha) != b.Float(x, y, alpha)
                                          : a.Byte(x, y, alpha) != b.Byte(x, y, alpha))
                return false;
    return true;
}

int AlphaAt(const GuardedPicture& picture, int x, int y)
{
    return picture.Byte(x, y, PlaceOfColour(picture.Format(), 3));
}

// --- the face -----------------------------------------------------------------------------------------

TEST(CropBorders, GetParamInfo_HasThreeLevelsAndAChoiceOfFour)
{
    const HeldEffect effect = NewEffect(kEffect);
    EXPECT_STREQ(effect->GetName(), "Crop Borders");
    EXPECT_EQ(effect->GetHelpId(), 965u);
    constexpr const char* names[] = {"Horiz Crop", "Vert Crop", "Feather"};
    constexpr float initial[] = {0.75f, 0.75f, 0.02f};
    for (std::uint32_t knob = 0; knob < 3; ++knob) {
        ParamInfo info = {};
        ASSERT_TRUE(effect->GetParamInfo(knob, &info));
        EXPECT_STREQ(info.name, names[knob]);
        EXPECT_EQ(info.kind, ParamFloat);
        EXPECT_EQ(info.value, FloatWord(initial[knob]));
        EXPECT_EQ(info.scale.min, 0.0f);
        EXPECT_EQ(info.scale.max, 100.0f);
        EXPECT_EQ(info.scale.hostFlag, 1u);
        EXPECT_EQ(info.rect, (ParamRect{static_cast<std::int32_t>(66 * knob), 0, 48, 30}));
    }
    ParamInfo info = {};
    ASSERT_TRUE(effect->GetParamInfo(3, &info));
    EXPECT_STREQ(info.name, "Crop Style");
    EXPECT_EQ(info.kind, ParamChoice);
    EXPECT_EQ(info.value, 0u);
    EXPECT_EQ(info.rect, (ParamRect{0, 90, 180, 20}));
    ASSERT_EQ(info.choice.choiceCount, 4);
    constexpr const char* styles[] = {"Scale", "Overlay", "Extend", "Transparent"};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_STREQ(info.choice.choiceNames[i], styles[i]);
    EXPECT_FALSE(effect->GetParamInfo(4, &info));
}

TEST(CropBorders, GetPresetValue_HasFivePresetsOfThreeLevelsAndAChoice)
{
    const HeldEffect effect = NewEffect(kEffect);
    std::uint32_t preset = 0;
    for (const PresetRow& row : kCropBordersPresets) {
        EXPECT_STREQ(effect->GetPresetName(preset), row.name);
        for (std::uint32_t knob = 0; knob < 4; ++knob) {
            ParamValue value = {};
            ASSERT_TRUE(effect->GetPresetValue(preset, knob, &value));
            EXPECT_EQ(value.value,
                      knob < 3 ? FloatWord(row.values[knob]) : static_cast<std::uint32_t>(row.values[knob]))
                << row.name << ", " << knob;
        }
        ++preset;
    }
    EXPECT_EQ(preset, 5u);
    EXPECT_EQ(effect->GetPresetName(preset), nullptr);
}

TEST(CropBorders, GetToolTip_HasATextForEachKnobAndNoMore)
{
    const HeldEffect effect = NewEffect(kEffect);
    void* asked = nullptr;
    ASSERT_EQ(effect->QueryInterface(&IParamToolTip::id, &asked), S_OK);
    auto* const tips = static_cast<IParamToolTip*>(asked);
    constexpr std::string_view texts[] = {"Amount of hotizontal crop", "Amount of vertical crop",
                                          "Control the feathering of cropped edge", "Define crop style"};
    for (std::uint32_t knob = 0; knob < 4; ++knob)
        EXPECT_EQ(tips->GetToolTip(knob), texts[knob]);
    for (const std::uint32_t beyond : {4u, 5u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(tips->GetToolTip(beyond), nullptr);
    EXPECT_EQ(tips->Release(), 1u);
}

TEST(CropBorders, QueryInterface_ToolTipsAndEffect_AreOneObject)
{
    const HeldEffect effect = NewEffect(kEffect);
    void *tips = nullptr, *back = nullptr;
    ASSERT_EQ(effect->QueryInterface(&IParamToolTip::id, &tips), S_OK);
    ASSERT_EQ(static_cast<IParamToolTip*>(tips)->QueryInterface(&IVideoEffect::id, &back), S_OK);
    EXPECT_EQ(static_cast<IVideoEffect*>(back), effect.get());
    EXPECT_EQ(static_cast<IParamToolTip*>(tips)->Release(), 2u);
    EXPECT_EQ(effect->Release(), 1u);
}

TEST(CropBorders, Render_AsksForItsKnobsInTheirOrder)
{
    for (const float style : kStyles) {
        FakeHost host(Levels(kEffect, {0.5f, 0.4f, 0.3f, style}));
        const GuardedPicture in = MakePicture(Motif::Ramp, 19, 17, PF_BGRA8);
        GuardedPicture out(19, 17, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
        EXPECT_EQ(
            host.Reads(),
            (std::vector<KnobRead>{{0, ParamFloat}, {1, ParamFloat}, {2, ParamFloat}, {3, ParamChoice}}));
        EXPECT_TRUE(host.OtherCalls().empty());
        EXPECT_EQ(host.Queries(), std::vector<InterfaceId>{IMemoryProvider::id});
    }
}

// --- whole pictures against the plain version -----------------------------------------------------------

TEST(CropBorders, Render_AllSmallSizes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (const float style : kStyles)
            for (int height = 1; height <= 9; ++height)
                for (int width = 1; width <= 9; ++width) {
                    std::vector<float> levels = RandomLevels(random);
                    levels[3] = style;
                    CompareCase(kEffect, format, width, height, width, height, levels, random() % 2 != 0,
                                random);
                }
}

TEST(CropBorders, Render_RandomSizesAndKnobs_AreThePlainVersions)
{
    std::mt19937 random(2);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 120; ++i) {
            const TransitionSizes sizes = RandomSizes(random, 40, 40);
            CompareCase(kEffect, format, sizes.width, sizes.height, sizes.outWidth, sizes.outHeight,
                        RandomLevels(random), random() % 2 != 0, random);
        }
}

TEST(CropBorders, Render_AllPresets_AreThePlainVersions)
{
    std::mt19937 random(3);
    for (const std::uint32_t format : kPictureFormats)
        for (const PresetRow& preset : kCropBordersPresets)
            for (const bool halfHeight : {false, true})
                for (const auto& [width, height] : {std::pair{64, 48}, {61, 47}, {33, 120}})
                    CompareCase(kEffect, format, width, height, width, height, ValuesOf(preset, 4),
                                halfHeight, random);
}

// 15 % of 700 rows are 105: above a hundred taps a blur grows no more, and in a field the width gets there first.
TEST(CropBorders, Render_FeathersBeyondAHundredPixels_AreThePlainVersions)
{
    std::mt19937 random(4);
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB32F})
        for (const bool halfHeight : {false, true})
            CompareCase(kEffect, format, 240, 700, 240, 700, {1.0f, 1.0f, 1.0f, kTransparent}, halfHeight,
                        random);
}

// --- what is kept -------------------------------------------------------------------------------------------

TEST(CropBorders, Render_ScaleWithoutACrop_ReturnsThePicture)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(37, 23, format, 1);
        EXPECT_TRUE(Equal(Cropped({0, 0, 0.5f, kScale}, in), in)) << FormatName(format);
    }
}

// 72 of 720 columns and 48 of 480 rows on each side: 72, 48, 648, 432.
TEST(CropBorders, Render_FullCropOf720By480_KeepsFrom72And48To648And432)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB32F}) {
        const GuardedPicture in = Noisy(720, 480, format, 1);
        const GuardedPicture scaled = Cropped({1, 1, 0, kScale}, in);
        EXPECT_TRUE(SamePixel(scaled, 0, 0, in, 72, 48));
        EXPECT_TRUE(SamePixel(scaled, 719, 0, in, 647, 48));
        EXPECT_TRUE(SamePixel(scaled, 0, 479, in, 72, 431));
        EXPECT_TRUE(SamePixel(scaled, 719, 479, in, 647, 431));

        const GuardedPicture extended = Cropped({1, 1, 0, kExtend}, in);
        for (int y = 0; y < 480; y += 7)
            for (int x = 0; x < 720; ++x)
                ASSERT_TRUE(SamePixel(extended, x, y, in, std::clamp(x, 72, 647), std::clamp(y, 48, 431)))
                    << x << ", " << y;
    }
    const GuardedPicture shown = Cropped({1, 1, 0, kTransparent}, Grey(720, 480, PF_BGRA8, 9));
    for (int y = 0; y < 480; ++y)
        for (int x = 0; x < 720; ++x)
            ASSERT_EQ(AlphaAt(shown, x, y), x >= 72 && x < 648 && y >= 48 && y < 432 ? 255 : 0);
}

// A Horiz Crop of 0.625 takes a sixteenth in single precision: of 8 columns 0.5 + 0.5 on the left, and 7.5 + 0.5
// remain on the right, so one column goes and none. The extended border goes by the left alone and keeps 1 to 6.
TEST(CropBorders, Render_MarginsOfAHalf_RoundBothCornersUp)
{
    const GuardedPicture in = Noisy(8, 12, PF_BGRA8, 1);
    const GuardedPicture scaled = Cropped({0.625f, 0, 0, kScale}, in);
    EXPECT_TRUE(SamePixel(scaled, 0, 5, in, 1, 5));
    EXPECT_TRUE(SamePixel(scaled, 7, 5, in, 7, 5));
    const GuardedPicture extended = Cropped({0.625f, 0, 0, kExtend}, in);
    EXPECT_TRUE(SamePixel(extended, 0, 5, in, 1, 5));
    EXPECT_TRUE(SamePixel(extended, 6, 5, in, 6, 5));
    EXPECT_TRUE(SamePixel(extended, 7, 5, in, 6, 5));
}

TEST(CropBorders, Render_ExtendWithoutACrop_CopiesThePicture)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(37, 23, format, 1, Noise::Special);
        EXPECT_TRUE(Equal(Cropped({0, 0, 0.7f, kExtend}, in), in)) << FormatName(format);
    }
}

TEST(CropBorders, Render_Extend_KeepsTheSameRectangleInBytesAndFloats)
{
    const GuardedPicture bytes = Noisy(45, 33, PF_BGRA8, 5, Noise::ByteLevels);
    const GuardedPicture floats = Noisy(45, 33, PF_BGRA32F, 5, Noise::ByteLevels);
    for (const float crop : {0.1f, 0.34f, 0.75f, 1.0f}) {
        const GuardedPicture bytesOut = Cropped({crop, 1 - crop, 0, kExtend}, bytes);
        const GuardedPicture floatsOut = Cropped({crop, 1 - crop, 0, kExtend}, floats);
        for (int y = 0; y < 33; ++y)
            for (int x = 0; x < 45; ++x)
                for (int c = 0; c < 4; ++c)
                    ASSERT_EQ(floatsOut.Float(x, y, c), ByteLevel(bytesOut.Byte(x, y, c)));
    }
}

// "Reset to None": a ten-thousandth of a tenth of any height goes, which rounds to no row, and the picture runs
// through the zoom at its own size. What cubic zooms may overshoot to is cut, so floats beyond 0 to 1 do not return.
TEST(CropBorders, Render_ResetToNone_CutsFloatsToTheRangeAndNothingElse)
{
    const std::vector<float> reset = ValuesOf(kCropBordersPresets[3], 4);
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture in = Noisy(37, 23, format, 1);
        EXPECT_TRUE(Equal(Cropped(reset, in), in)) << FormatName(format);
        if (!IsFloatFormat(format))
            continue;
        GuardedPicture expected = in;
        for (int c = 0; c < 4; ++c) {
            in.SetFloat(5 + c, 7, c, 1.5f);
            expected.SetFloat(5 + c, 7, c, 1.0f);
            in.SetFloat(5 + c, 9, c, -0.25f);
            expected.SetFloat(5 + c, 9, c, 0.0f);
        }
        EXPECT_TRUE(Equal(Cropped(reset, in), expected)) << FormatName(format);
    }
}

// A zoom of a sharp edge overshoots in bytes and floats alike; neither leaves its range.
TEST(CropBorders, Render_ScaleOfASharpEdge_StaysInTheRange)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture in(40, 30, format);
        for (int y = 0; y < 30; ++y)
            for (int x = 20; x < 40; ++x)
                in.SetColour(x, y, 255, 255, 255, 255);
        const GuardedPicture out = Cropped({1, 1, 0, kScale}, in);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x)
                for (int c = 0; c < 4; ++c) {
                    ASSERT_GE(out.Float(x, y, c), 0.0f);
                    ASSERT_LE(out.Float(x, y, c), 1.0f);
                }
    }
}

// --- the feather ---------------------------------------------------------------------------------------------

// 40 rows and half the Feather: 40 * 0.5 * 0.15 = 3 taps of 1, 2 and 1 quarters. On the edge of a rectangle from 4 to
// 36 that makes a quarter outside, 63.75, and three quarters inside, 191.25.
TEST(CropBorders, Render_Transparent_FeathersTheEdgeByTheTent)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture out = Cropped({1, 1, 0.5f, kTransparent}, Grey(40, 40, format, 80));
        constexpr double profile[] = {0, 0, 0, 0.25, 0.75, 1, 1};
        constexpr int bytes[] = {0, 0, 0, 64, 191, 255, 255};
        const auto alpha = PlaceOfColour(format, 3);
        for (int i = 0; i < 7; ++i)
            for (const auto& [x, y] : {std::pair{i, 20}, {39 - i, 20}, {20, i}, {20, 39 - i}}) {
                if (IsFloatFormat(format))
                    EXPECT_NEAR(static_cast<double>(out.Float(x, y, alpha)), profile[i], 1e-6)
                        << x << ", " << y;
                else
                    EXPECT_EQ(out.Byte(x, y, alpha), bytes[i]) << x << ", " << y << " " << FormatName(format);
            }
    }
}

// 60 rows: 60 * 0.5 * 0.15 = 4.5, so 4 taps, and 9 across a field; a tent of n taps softens n - 1 pixels.
TEST(CropBorders, Render_Field_FeathersTwiceAsWideAsHigh)
{
    const GuardedPicture in = Grey(80, 60, PF_BGRA8, 80);
    for (const bool halfHeight : {false, true}) {
        const GuardedPicture out = Cropped({1, 1, 0.5f, kTransparent}, in, halfHeight);
        const auto isSoft = [&](int x, int y) { return AlphaAt(out, x, y) > 0 && AlphaAt(out, x, y) < 255; };
        int across = 0, downward = 0;
        for (int x = 0; x < 40; ++x)
            across += isSoft(x, 30);
        for (int y = 0; y < 30; ++y)
            downward += isSoft(40, y);
        EXPECT_EQ(across, halfHeight ? 8 : 3);
        EXPECT_EQ(downward, 3);
    }
}

TEST(CropBorders, Render_TransparentWithoutAFeather_KeepsTheAlphaInsideAndNoneOutside)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(40, 30, format, 1); // 4, 3, 36, 27
        const GuardedPicture out = Cropped({1, 1, 0, kTransparent}, in);
        const auto alpha = PlaceOfColour(format, 3);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) {
                const bool inside = x >= 4 && x < 36 && y >= 3 && y < 27;
                if (IsFloatFormat(format))
                    ASSERT_EQ(out.Float(x, y, alpha), inside ? in.Float(x, y, alpha) : 0.0f);
                else
                    ASSERT_EQ(out.Byte(x, y, alpha), inside ? in.Byte(x, y, alpha) : 0);
                for (int c = 0; c < 3; ++c) { // the colours are those of an extended border
                    const int place = PlaceOfColour(format, c);
                    const int fromX = std::clamp(x, 4, 35), fromY = std::clamp(y, 3, 26);
                    if (IsFloatFormat(format))
                        ASSERT_EQ(out.Float(x, y, place), in.Float(fromX, fromY, place));
                    else
                        ASSERT_EQ(out.Byte(x, y, place), in.Byte(fromX, fromY, place));
                }
            }
    }
}

// --- the overlay ----------------------------------------------------------------------------------------------

TEST(CropBorders, Render_Overlay_KeepsThePicturesAlphaEverywhere)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float feather : {0.0f, 0.02f, 0.5f, 1.0f})
            for (const bool halfHeight : {false, true}) {
                const GuardedPicture in = Noisy(50, 44, format, 1);
                EXPECT_TRUE(SameAlpha(Cropped({1, 0.7f, feather, kOverlay}, in, halfHeight), in))
                    << FormatName(format);
            }
}

TEST(CropBorders, Render_OverlayWithoutAFeather_ShowsThePictureInsideAndTheZoomOutside)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture in = Noisy(40, 30, format, 1);
        for (int y = 0; y < 30; ++y) // opaque, so that the zoom's alpha is the picture's
            for (int x = 0; x < 40; ++x) {
                if (IsFloatFormat(format))
                    in.SetFloat(x, y, PlaceOfColour(format, 3), 1.0f);
                else
                    in.SetByte(x, y, PlaceOfColour(format, 3), 255);
            }
        const GuardedPicture out = Cropped({1, 1, 0, kOverlay}, in);
        const GuardedPicture zoomed = Cropped({1, 1, 0, kScale}, in);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) {
                const bool inside = x >= 4 && x < 36 && y >= 3 && y < 27;
                ASSERT_TRUE(SamePixel(out, x, y, inside ? in : zoomed, x, y)) << x << ", " << y;
            }
    }
}

// Alpha-first bytes are weighed together and divided once, alpha-last ones one by one: 100 under masks of 64 and 191
// is (6400 + 19100) / 255 = 100 in the former, 25 + 74 = 99 in the latter. Alpha alone is one product either way.
TEST(CropBorders, Kept_ByteOrders_DifferByALevelAtMost)
{
    EXPECT_EQ(Cropped({1, 1, 0.5f, kOverlay}, Grey(40, 40, PF_BGRA8, 100)).Byte(3, 20, 1), 99);
    EXPECT_EQ(Cropped({1, 1, 0.5f, kOverlay}, Grey(40, 40, PF_ARGB8, 100)).Byte(3, 20, 1), 100);
    const GuardedPicture in = Noisy(50, 44, PF_BGRA8, 1), turned = WithChannelsReversed(in);
    for (const float style : kStyles) {
        const std::vector<float> levels = {1, 1, 0.8f, style};
        const GuardedPicture last = Cropped(levels, in);
        const GuardedPicture first = WithChannelsReversed(Cropped(levels, turned));
        if (style != kOverlay)
            EXPECT_TRUE(Equal(first, last)) << style;
        else
            EXPECT_TRUE(Near(first, last, 1.0));
    }
}

// --- what no host should say ---------------------------------------------------------------------------------

TEST(CropBorders, Render_UnknownStyles_FailAndWriteNothing)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::uint32_t style : {4u, 5u, 255u, 0x80000000u, 0xFFFFFFFFu}) {
            std::vector<ParamValue> knobs = Levels(kEffect, {0.5f, 0.5f, 0.5f, 0.0f});
            knobs[3] = ChoiceKnob(style);
            FakeHost host(knobs);
            const GuardedPicture in = Noisy(20, 18, format, 1);
            GuardedPicture out = Noisy(20, 18, format, 2);
            const GuardedPicture before = out;
            EXPECT_FALSE(Render(*NewEffect(kEffect), host, in, out));
            EXPECT_TRUE(Equal(out, before));
        }
}

// A Horiz Crop of 5 takes a half on each side, one of -1 a tenth too much.
TEST(CropBorders, Render_CropsThatLeaveNothing_FailAndWriteNothing)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float style : kStyles)
            for (const float crop : {5.0f, 5.5f, 40.0f, 1e30f, kInfinity, -1.0f, -1e30f, -kInfinity})
                for (const bool across : {false, true}) {
                    FakeHost host(Levels(kEffect, {across ? crop : 0.5f, across ? 0.5f : crop, 0.5f, style}));
                    const GuardedPicture in = Noisy(20, 18, format, 1);
                    GuardedPicture out = Noisy(20, 18, format, 2);
                    const GuardedPicture before = out;
                    EXPECT_FALSE(Render(*NewEffect(kEffect), host, in, out)) << crop << ", style " << style;
                    EXPECT_TRUE(Equal(out, before));
                }
}

TEST(CropBorders, Render_HostileKnobs_StayInsideTheMemory)
{
    constexpr float hostile[] = {kNaN, kInfinity, -kInfinity, 1e30f, -1e30f, -1.0f, 1e-40f, 3.0f, 9.99f};
    std::mt19937 random(7);
    for (const std::uint32_t format : kPictureFormats)
        for (const float style : kStyles)
            for (std::size_t knob = 0; knob < 3; ++knob)
                for (const float value : hostile)
                    for (const auto& [width, height] : {std::pair{17, 13}, {3, 3}, {1, 1}}) {
                        std::vector<float> levels = RandomLevels(random);
                        levels[knob] = value;
                        levels[3] = style;
                        FakeHost host(Levels(kEffect, levels));
                        const GuardedPicture in = Noisy(width, height, format, 1, Noise::Special);
                        GuardedPicture out = Noisy(width, height, format, 2);
                        Render(*NewEffect(kEffect), host, in, out);
                        out.Check();
                    }
}

TEST(CropBorders, Render_RefusedAllocations_LeaveTheStepBefore)
{
    // Scale and Extend need no memory of their own but what a zoom works in.
    const GuardedPicture in = Noisy(40, 36, PF_BGRA8, 1), extended = Cropped({1, 1, 0.5f, kExtend}, in);
    for (const bool fromThenOn : {false, true})
        for (std::uint64_t n = 0;; ++n) {
            ASSERT_LT(n, 100u);
            MemoryHabits habits;
            (fromThenOn ? habits.refuseFrom : habits.refuseOnly) = n;
            FakeMemoryProvider memory(habits);
            FakeHost host(Levels(kEffect, {1, 1, 0.5f, kTransparent}));
            host.SetMemory(&memory);
            GuardedPicture out = Noisy(40, 36, PF_BGRA8, 2);
            const bool result = Render(*NewEffect(kEffect), host, in, out);
            EXPECT_EQ(memory.OpenBlocks(), 0u);
            EXPECT_EQ(result, memory.Refused() == 0);
            if (memory.Refused() == 0)
                break;
            EXPECT_TRUE(Equal(out, extended)) << n;
        }
}

TEST(CropBorders, Render_AnyStyleOverAnyScratch_GivesTheSamePixels)
{
    // 12 rows are too few for the row by row way, which has no pictures of its own.
    for (const std::uint32_t format : kPictureFormats)
        for (const float style : kStyles)
            for (const auto& [width, height] : {std::pair{40, 36}, {40, 12}, {5, 7}}) {
                const std::vector<float> levels = {0.7f, 0.9f, 0.3f, style};
                const GuardedPicture in = Noisy(width, height, format, 1), expected = Cropped(levels, in);
                for (const std::uint32_t fill : {0x00000000u, 0xA5A5A5A5u, 0x7FA5A5A5u, 0x7F800001u}) {
                    MemoryHabits habits;
                    habits.fill = fill;
                    FakeMemoryProvider memory(habits);
                    FakeHost host(Levels(kEffect, levels));
                    host.SetMemory(&memory);
                    GuardedPicture out = Noisy(width, height, format, 2);
                    EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
                    EXPECT_TRUE(Equal(out, expected)) << FormatName(format) << ", style " << style;
                }
            }
}

// In pictures of two rows or columns there is no ring for a mask to copy its neighbour into.
TEST(CropBorders, Render_MasksOfTheSmallestPictures_Fail)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float style : {kOverlay, kTransparent})
            for (const auto& [width, height] : {std::pair{1, 9}, {2, 9}, {9, 1}, {9, 2}, {3, 3}}) {
                FakeHost host(Levels(kEffect, {0.2f, 0.2f, 0.2f, style}));
                const GuardedPicture in = Noisy(width, height, format, 1);
                GuardedPicture out = Noisy(width, height, format, 2);
                EXPECT_EQ(Render(*NewEffect(kEffect), host, in, out), std::min(width, height) > 2);
            }
}

TEST(CropBorders, Render_ProgressTimeAndTheSecondPicture_PlayNoPart)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 50, PF_BGRA8);
    const GuardedPicture other = MakePicture(Motif::ZonePlate, 13, 90, PF_ARGB32F);
    const std::vector<float> levels = {0.7f, 0.4f, 0.5f, kOverlay};
    const GuardedPicture expected = Cropped(levels, in);
    for (const GuardedPicture* second : {&other, static_cast<const GuardedPicture*>(nullptr)}) {
        Moment moment;
        moment.second = second;
        moment.progress = std::numeric_limits<double>::quiet_NaN();
        moment.time = 1e300;
        moment.pixelAspect = 3.0;
        GuardedPicture out(40, 50, PF_BGRA8);
        RenderFresh(kEffect, levels, moment, in, out);
        EXPECT_TRUE(Equal(out, expected));
    }
}

TEST(CropBorders, Render_WithoutInfo_IsRefusedAndWritesNothing)
{
    for (const float style : kStyles) {
        FakeHost host(Levels(kEffect, {0.5f, 0.5f, 0.5f, style}));
        const GuardedPicture in = MakePicture(Motif::Ramp, 20, 30, PF_BGRA8);
        GuardedPicture out = Noisy(20, 30, PF_BGRA8, 4);
        const GuardedPicture before = out;
        VideoFrame first = in.Frame(), output = out.Frame();
        EXPECT_FALSE(NewEffect(kEffect)->Render(&host, &first, nullptr, &output, nullptr));
        EXPECT_TRUE(Equal(out, before));
    }
}

} // namespace
} // namespace kelmora

#include <algorithm>
#include <climits>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "tests/image/bad_views.h"
#include "tests/image/buffers.h"
#include "tests/image/variants.h"
#include "tests/reference/blends.h"
#include "tests/reference/colour.h"
#include "tests/reference/picture.h"
#include "tests/reference/ycbcr.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_memory_provider.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

using reference::Picture;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// check(width, layout) for widths from 1 to 33 with slack 0, 1 and 5, and beside unreadable pages.
template <class Check>
void ForEachWidth(Check&& check)
{
    for (int width = 1; width <= 33; ++width) {
        for (const int slack : {0, 1, 5})
            check(width, PictureLayout{.slack = slack, .shift = slack});
        for (const Guard guard : {Guard::PictureStart, Guard::PictureEnd})
            check(width, PictureLayout{.guard = guard});
    }
}

/// Every channel of every pixel.
template <class Check>
void ForEachValue(const GuardedPicture& picture, Check&& check)
{
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < picture.Channels(); ++c)
                check(x, y, c);
}

using PairOperation = bool (ImageOps::*)(const FrameBuffer&, FrameBuffer&);

/// False for other formats, for pixels of two sizes and for no pictures, and nothing written.
/// sharesFormat   two formats of one pixel size are refused too; else that of the source decides
void CheckRefusals(PairOperation operation, std::initializer_list<std::uint32_t> served, bool sharesFormat)
{
    constexpr std::uint32_t all[] = {PF_BGRA8,   PF_ARGB8, PF_Packed8, PF_BGRA32F,
                                     PF_ARGB32F, PF_Mask8, PF_Mask32F};
    ImageOps ops;
    for (const std::uint32_t from : all)
        for (const std::uint32_t to : all) {
            const bool isServed = std::find(served.begin(), served.end(), from) != served.end();
            if (isServed && (sharesFormat ? from == to : BytesOfPixel(from) == BytesOfPixel(to)))
                continue;
            GuardedPicture src(3, 3, from), dst(3, 3, to);
            dst.FillNoise(1);
            dst.Freeze();
            FrameBuffer view = ViewOf(dst);
            EXPECT_FALSE((ops.*operation)(ViewOf(src), view)) << from << " to " << to;
            dst.Check();
        }
    for (const std::uint32_t format : served) {
        GuardedPicture src(3, 3, format), dst(3, 3, format);
        dst.Freeze();
        FrameBuffer view = ViewOf(dst);
        for (int kind = 0; kind < kBadViews; ++kind) {
            FrameBuffer bad = BadView(dst, kind);
            EXPECT_FALSE((ops.*operation)(ViewOf(src), bad)) << kind;
            EXPECT_FALSE((ops.*operation)(BadView(src, kind), view)) << kind;
        }
        dst.Check();
    }
}

// --- hue, saturation, value -------------------------------------------------------------------------------

TEST(RGBToHSV, EveryPictureFormat_IsThePlainConversionInPlaceAndNot)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const bool inverse : {false, true})
            ForEachWidth([&](int width, const PictureLayout& layout) {
                GuardedPicture src(width, 3, format, layout), dst(width + 1, 2, format, layout);
                src.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                dst.FillNoise(2);
                const auto plain = inverse ? reference::HSVToRGB : reference::RGBToHSV;
                const auto operation = inverse ? &ImageOps::HSVToRGB : &ImageOps::RGBToHSV;
                const Picture from = reference::Read(src);
                Picture expected = reference::Read(dst), inPlace = from;
                ASSERT_TRUE(plain(from, expected));
                ASSERT_TRUE(plain(from, inPlace));
                ForEachVariant([&] {
                    GuardedPicture copy(src), result(dst);
                    FrameBuffer to = ViewOf(result), itself = ViewOf(copy);
                    ASSERT_TRUE((ImageOps().*operation)(itself, to));
                    ASSERT_TRUE(reference::Matches(result, expected))
                        << width << ", format " << format << (inverse ? ", inverse" : "");
                    ASSERT_TRUE((ImageOps().*operation)(itself, itself));
                    ASSERT_TRUE(reference::Matches(copy, inPlace))
                        << width << ", format " << format << (inverse ? ", inverse" : "") << ", in place";
                    copy.Check();
                    result.Check();
                });
            });
}

TEST(RGBToHSV, PrimaryColours_HaveTheirHuesInEveryFormat)
{
    struct {
        std::uint8_t blue, green, red;
        int hue, saturation, value; // bytes
    } const cases[] = {{255, 0, 0, 0, 255, 255},
                       {0, 255, 0, 85, 255, 255},
                       {0, 0, 255, 170, 255, 255},
                       {0, 0, 0, 0, 0, 0},
                       {255, 255, 255, 0, 0, 255}};
    for (const auto& one : cases)
        for (const std::uint32_t format : kPictureFormats) {
            GuardedPicture src(2, 1, format), dst(2, 1, format);
            src.Fill(one.blue, one.green, one.red, 100);
            FrameBuffer to = ViewOf(dst);
            ASSERT_TRUE(ImageOps().RGBToHSV(ViewOf(src), to));
            const int expected[] = {one.hue, one.saturation, one.value, 100};
            for (int c = 0; c < 4; ++c) { // H, S, V, A in memory whatever the format
                if (IsFloatFormat(format))
                    EXPECT_NEAR(static_cast<double>(dst.Float(1, 0, c)), expected[c] / 255.0, 1e-7) << c;
                else
                    EXPECT_EQ(dst.Byte(1, 0, c), expected[c]) << c << ", format " << format;
            }
        }
}

TEST(HSVToRGB, OfRGBToHSV_GivesFloatPicturesBack)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture picture(64, 64, format);
        picture.FillNoise(1);
        const GuardedPicture before(picture);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(ImageOps().RGBToHSV(view, view));
        ASSERT_TRUE(ImageOps().HSVToRGB(view, view));
        EXPECT_TRUE(Near(picture, before, 1e-6));
    }
}

TEST(HSVToRGB, OfRGBToHSV_GivesBytesBackWithinRounding)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture picture(64, 64, format);
        picture.FillNoise(1);
        const GuardedPicture before(picture);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(ImageOps().RGBToHSV(view, view));
        ASSERT_TRUE(ImageOps().HSVToRGB(view, view));
        // A step of hue is 6 / 255 of a sixth; truncation adds up to one step in each of the three.
        EXPECT_TRUE(Near(picture, before, format == PF_BGRA8 ? 4 : 10));
    }
}

TEST(HSVToRGB, SpecialFloats_EndWithoutAFault)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture picture(33, 9, format), back(33, 9, format);
        picture.FillNoise(1, Noise::Special);
        FrameBuffer view = ViewOf(picture), to = ViewOf(back);
        EXPECT_TRUE(ImageOps().HSVToRGB(view, to));
        EXPECT_TRUE(ImageOps().RGBToHSV(view, view));
        EXPECT_TRUE(ImageOps().HSVToRGB(view, view));
    }
}

TEST(RGBToHSV, OtherFormatsAndNoPictures_AreFalse)
{
    CheckRefusals(&ImageOps::RGBToHSV, {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F}, false);
    CheckRefusals(&ImageOps::HSVToRGB, {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F}, false);
}

// --- Tint -------------------------------------------------------------------------------------------------

TEST(Tint, EveryPictureFormat_IsThePlainTintInPlaceAndNot)
{
    ForEachVariant([] {
        for (const std::uint32_t format : kPictureFormats)
            for (const std::uint32_t colour : {0x00FFFFFFu, 0u, 0x00804020u, 0xFF0000FFu})
                ForEachWidth([&](int width, const PictureLayout& layout) {
                    GuardedPicture src(width, 3, format, layout), dst(width + 1, 2, format, layout);
                    src.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                    dst.FillNoise(2);
                    const Picture from = reference::Read(src);
                    Picture expected = reference::Read(dst), inPlace = from;
                    reference::Tint(from, expected, colour);
                    reference::Tint(from, inPlace, colour);
                    FrameBuffer to = ViewOf(dst), itself = ViewOf(src);
                    ASSERT_TRUE(ImageOps().Tint(itself, to, colour));
                    ASSERT_TRUE(reference::Matches(dst, expected, 3e-7)) << width << ", format " << format;
                    ASSERT_TRUE(ImageOps().Tint(itself, itself, colour));
                    ASSERT_TRUE(reference::Matches(src, inPlace, 3e-7)) << width << ", format " << format;
                    src.Check();
                    dst.Check();
                });
    });
}

TEST(Tint, EveryThirdLevelOfEachColour_IsThePlainTint)
{
    constexpr int levels = 86;
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture src(levels * levels, levels, format), dst(levels * levels, levels, format);
        for (int y = 0; y < levels; ++y)
            for (int x = 0; x < levels * levels; ++x)
                src.SetColour(x, y, static_cast<std::uint8_t>(x % levels * 3),
                              static_cast<std::uint8_t>(x / levels * 3), static_cast<std::uint8_t>(y * 3),
                              99);
        Picture expected = reference::Read(dst);
        reference::Tint(reference::Read(src), expected, 0x00FE7FFFu);
        ForEachVariant([&] {
            FrameBuffer from = ViewOf(src), to = ViewOf(dst);
            ASSERT_TRUE(ImageOps().Tint(from, to, 0x00FE7FFFu));
            ASSERT_TRUE(reference::Matches(dst, expected)) << "format " << format;
        });
    }
}

TEST(Tint, HandComputedColours_ComeOutInTheirPlaces)
{
    // Luma of (R 200, G 100, B 50) is 59.6 + 58.6 + 5.65 = 123.85 of 255; times 255, 128 and 64 over 255:
    // 123.85, 62.2, 31.1. The colour 0x00BBGGRR is red 255, green 128, blue 64.
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture picture(2, 2, format);
        picture.Fill(50, 100, 200, 99);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(ImageOps().Tint(view, view, 0x004080FFu));
        EXPECT_EQ(picture.Byte(1, 1, PlaceOfColour(format, 0)), 31);
        EXPECT_EQ(picture.Byte(1, 1, PlaceOfColour(format, 1)), 62);
        EXPECT_EQ(picture.Byte(1, 1, PlaceOfColour(format, 2)), 123);
    }
}

TEST(Tint, Kept_AlphaEndsNearZeroInEveryFormat)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture picture(2, 2, format);
        picture.Fill(255, 255, 255, 255);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(ImageOps().Tint(view, view, 0x00FFFFFFu));
        // The weights sum to 0.997.
        for (int colour = 0; colour < 4; ++colour) {
            const int place = PlaceOfColour(format, colour);
            if (IsFloatFormat(format))
                EXPECT_NEAR(static_cast<double>(picture.Float(1, 1, place)),
                            colour == 3 ? 0.997 / 255 : 0.997, 1e-6);
            else
                EXPECT_EQ(picture.Byte(1, 1, place), colour == 3 ? 0 : 254);
        }
    }
}

TEST(Tint, FloatLumaAboveOne_IsCut)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture picture(2, 2, format);
        picture.FillFloat(3, 3, 3, 1);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(ImageOps().Tint(view, view, 0x00FF00FFu));
        EXPECT_EQ(picture.Float(1, 1, PlaceOfColour(format, 0)), 1.0f);
        EXPECT_EQ(picture.Float(1, 1, PlaceOfColour(format, 1)), 0.0f);
        EXPECT_EQ(picture.Float(1, 1, PlaceOfColour(format, 3)), 0.003921569f);
    }
}

TEST(Tint, SpecialFloatsOtherFormatsAndNoPictures_DoNoHarm)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture picture(33, 3, format);
        picture.FillNoise(1, Noise::Special);
        FrameBuffer view = ViewOf(picture);
        EXPECT_TRUE(ImageOps().Tint(view, view, 0x00123456u));
    }
    for (const std::uint32_t format : {PF_Packed8, PF_Mask8, PF_Mask32F}) {
        GuardedPicture picture(3, 3, format);
        picture.Freeze();
        FrameBuffer view = ViewOf(picture);
        EXPECT_FALSE(ImageOps().Tint(view, view, 1)) << format;
        picture.Check();
    }
    GuardedPicture src(3, 3, PF_BGRA8), dst(3, 3, PF_BGRA8), floats(3, 3, PF_BGRA32F);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    EXPECT_FALSE(ImageOps().Tint(ViewOf(floats), to, 1));
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(dst, kind);
        EXPECT_FALSE(ImageOps().Tint(bad, to, 1)) << kind;
        EXPECT_FALSE(ImageOps().Tint(ViewOf(src), bad, 1)) << kind;
    }
    dst.Check();
}

// --- ClampFloats ------------------------------------------------------------------------------------------

TEST(ClampFloats, EveryWidth_ClampsAllFourChannels)
{
    ForEachWidth([](int width, const PictureLayout& layout) {
        GuardedPicture picture(width, 3, PF_BGRA32F, layout);
        picture.FillNoise(static_cast<std::uint32_t>(width), Noise::Special);
        Picture expected = reference::Read(picture);
        for (double& value : expected.values)
            value = std::isnan(value) ? 0 : std::clamp(value, 0.0, 1.0);
        ForEachVariant([&] {
            GuardedPicture result(picture);
            FrameBuffer view = ViewOf(result);
            ASSERT_TRUE(ImageOps().ClampFloats(view));
            ASSERT_TRUE(reference::Matches(result, expected)) << width;
            result.Check();
        });
    });
}

TEST(ClampFloats, SpecialValues_ComeOutAsStated)
{
    struct {
        float value, result;
    } const cases[] = {{-1, 0},      {0, 0},         {0.25f, 0.25f},  {1, 1},
                       {1.0001f, 1}, {kInfinity, 1}, {-kInfinity, 0}, {kNan, 0}};
    for (const auto& one : cases) {
        GuardedPicture picture(5, 1, PF_BGRA32F);
        picture.FillFloat(one.value, one.value, one.value, one.value);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(ImageOps().ClampFloats(view));
        ForEachValue(picture, [&](int x, int y, int c) { EXPECT_EQ(picture.Float(x, y, c), one.result); });
    }
}

TEST(ClampFloats, OtherFormatsAndNoPictures_AreFalse)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_Packed8, PF_ARGB32F, PF_Mask8, PF_Mask32F}) {
        GuardedPicture picture(3, 3, format);
        picture.FillNoise(1);
        picture.Freeze();
        FrameBuffer view = ViewOf(picture);
        EXPECT_FALSE(ImageOps().ClampFloats(view)) << format;
        picture.Check();
    }
    GuardedPicture picture(3, 3, PF_BGRA32F);
    picture.FillFloat(7, 7, 7, 7);
    picture.Freeze();
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(picture, kind);
        EXPECT_FALSE(ImageOps().ClampFloats(bad)) << kind;
    }
    picture.Check();
}

// --- AdjustColor ------------------------------------------------------------------------------------------

struct Knobs {
    float contrast, brightness, saturation, hue;
};

constexpr Knobs kKnobs[] = {
    {0.5f, 0.5f, 0.5f, 0.5f},
    {0.5001f, 0.5001f, 0.5001f, 0.5001f},
    {0, 0, 0, 0},
    {1, 1, 1, 1},
    {0.49999f, 0.5f, 0.7f, 0.25f},
    {0.8f, 0.4f, 0.0f, 0.9f},
    {0.2f, 0.6f, 1.0f, 0.1f},
    {0.6f, 0.5f, 0.4f, 0.65f},
};

bool Adjust(const FrameBuffer& src, FrameBuffer& dst, const Knobs& knobs, MemoryAllocator* allocator)
{
    return ImageOps().AdjustColor(src, dst, knobs.contrast, knobs.brightness, knobs.saturation, knobs.hue,
                                  allocator);
}

TEST(AdjustColor, EveryPictureFormatAndKnob_IsThePlainTwist)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const Knobs& knobs : kKnobs)
            for (int width = 1; width <= 33; width += 4)
                for (const int slack : {0, 1, 5}) {
                    const PictureLayout layout{.slack = slack, .shift = slack};
                    GuardedPicture src(width, 3, format, layout), dst(width, 3, format, layout);
                    src.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                    const Picture from = reference::Read(src);
                    Picture expected(width, 3, format);
                    reference::AdjustColor(from, expected, knobs.contrast, knobs.brightness, knobs.saturation,
                                           knobs.hue);
                    ForEachVariant([&] {
                        dst.FillNoise(2);
                        FrameBuffer to = ViewOf(dst), from2 = ViewOf(src);
                        ASSERT_TRUE(Adjust(from2, to, knobs, nullptr));
                        ASSERT_TRUE(reference::Matches(dst, expected, 0, IsFloatFormat(format) ? 2e-6 : 0))
                            << width << ", format " << format << ", contrast "
                            << static_cast<double>(knobs.contrast) << ", hue "
                            << static_cast<double>(knobs.hue);
                        dst.Check();
                    });
                    FrameBuffer itself = ViewOf(src);
                    ASSERT_TRUE(Adjust(itself, itself, knobs, nullptr));
                    ASSERT_TRUE(reference::Matches(src, expected, 0, IsFloatFormat(format) ? 2e-6 : 0))
                        << "in place";
                    src.Check();
                }
}

TEST(AdjustColor, AllKnobsInTheMiddle_AreNearlyNeutral)
{
    // Gain 0.4575 * 0.4575 * 3.8 + 0.2 = 0.99535375, saturation 0.5 to the power of 1.58496, times 3: 1.0000.
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture src(2, 2, format), dst(2, 2, format);
        src.FillFloat(0.25f, 0.5f, 0.75f, 0.4f);
        FrameBuffer to = ViewOf(dst);
        ASSERT_TRUE(Adjust(ViewOf(src), to, {0.5f, 0.5f, 0.5f, 0.5f}, nullptr));
        for (int colour = 0; colour < 3; ++colour)
            EXPECT_NEAR(static_cast<double>(dst.Float(1, 1, PlaceOfColour(format, colour))),
                        0.25 * (colour + 1) * 0.99535375, 1e-5);
        EXPECT_EQ(dst.Float(1, 1, PlaceOfColour(format, 3)), 0.4f);
    }
}

TEST(AdjustColor, Kept_Desaturation_WeighsTheFirstChannelAsRed)
{
    // With saturation 0 a picture of pure blue becomes a grey: in BGRA of 0.3086, not 0.082, times the gain. The
    // channels of alpha-first pictures are turned round before, so it is the same there.
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture picture(2, 2, format);
        picture.FillFloat(1, 0, 0, 1);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(Adjust(view, view, {0.5f, 0.5f, 0.0f, 0.5f}, nullptr));
        for (int colour = 0; colour < 3; ++colour)
            EXPECT_NEAR(static_cast<double>(picture.Float(1, 1, PlaceOfColour(format, colour))),
                        0.3086 * 0.99535375, 1e-5);
    }
}

TEST(AdjustColor, Brightness_AddsBeforeTheGainMultiplies)
{
    // Bytes: 0.75 * 512 - 256 = 128 levels, times 0.99535375: 127.4. Floats: 0.5 times that gain. At full
    // contrast the gain is 4: black becomes white.
    GuardedPicture bytes(2, 2, PF_BGRA8), argb(2, 2, PF_ARGB8), floats(2, 2, PF_BGRA32F);
    bytes.Fill(0, 0, 0, 9);
    argb.Fill(0, 0, 0, 9);
    floats.FillFloat(0, 0, 0, 0.5f);
    FrameBuffer toBytes = ViewOf(bytes), toArgb = ViewOf(argb), toFloats = ViewOf(floats);
    ASSERT_TRUE(Adjust(toBytes, toBytes, {0.5f, 0.75f, 0.5f, 0.5f}, nullptr));
    ASSERT_TRUE(Adjust(toArgb, toArgb, {0.5f, 0.75f, 0.5f, 0.5f}, nullptr));
    ASSERT_TRUE(Adjust(toFloats, toFloats, {0.5f, 0.75f, 0.5f, 0.5f}, nullptr));
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(bytes.Byte(1, 1, c), 127);
        EXPECT_EQ(argb.Byte(1, 1, c + 1), 127);
        EXPECT_NEAR(static_cast<double>(floats.Float(1, 1, c)), 0.5 * 0.99535375, 1e-5);
    }
    EXPECT_EQ(bytes.Byte(1, 1, 3), 9);
    EXPECT_EQ(argb.Byte(1, 1, 0), 9);
    EXPECT_EQ(floats.Float(1, 1, 3), 0.5f);
    bytes.Fill(0, 0, 0, 9);
    ASSERT_TRUE(Adjust(toBytes, toBytes, {1.0f, 0.75f, 0.5f, 0.5f}, nullptr));
    EXPECT_EQ(bytes.Byte(1, 1, 0), 255); // 128 * 4
}

TEST(AdjustColor, Packed8_IsTrueAndWritesNothing)
{
    GuardedPicture src(3, 3, PF_Packed8), dst(3, 3, PF_Packed8);
    src.FillNoise(1);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    EXPECT_TRUE(Adjust(ViewOf(src), to, kKnobs[2], nullptr));
    dst.Check();
}

TEST(AdjustColor, Masks_AreCopied)
{
    for (const std::uint32_t format : {PF_Mask8, PF_Mask32F}) {
        GuardedPicture src(5, 3, format), dst(5, 3, format);
        src.FillNoise(1);
        FrameBuffer to = ViewOf(dst);
        EXPECT_TRUE(Adjust(ViewOf(src), to, kKnobs[2], nullptr));
        EXPECT_TRUE(Equal(dst, src));
    }
}

TEST(AdjustColor, WildKnobs_DoNoHarm)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float wild : {kNan, kInfinity, -kInfinity, -1.0f, 1e30f, -1e30f, 1e-42f})
            for (int knob = 0; knob < 4; ++knob) {
                float k[4] = {0.5f, 0.5f, 0.5f, 0.5f};
                k[knob] = wild;
                GuardedPicture picture(9, 2, format);
                picture.FillNoise(1);
                const GuardedPicture before(picture);
                FrameBuffer view = ViewOf(picture);
                EXPECT_TRUE(Adjust(view, view, {k[0], k[1], k[2], k[3]}, nullptr));
                const int alpha = PlaceOfColour(format, 3);
                for (int x = 0; x < 9; ++x)
                    if (IsFloatFormat(format)) {
                        for (int c = 0; c < 4; ++c)
                            EXPECT_TRUE(picture.Float(x, 1, c) >= 0 && picture.Float(x, 1, c) <= 1);
                        EXPECT_TRUE(picture.Float(x, 1, alpha) == before.Float(x, 1, alpha));
                    } else {
                        EXPECT_EQ(picture.Byte(x, 1, alpha), before.Byte(x, 1, alpha));
                    }
            }
}

TEST(AdjustColor, RefusedScratch_LeavesTheColoursAndStillSetsAlpha)
{
    for (const std::uint32_t format : {PF_ARGB8, PF_ARGB32F})
        for (const std::uint64_t refused : {0u, 1u, 2u, 3u}) {
            GuardedPicture src(9, 5, format), dst(9, 5, format);
            src.FillNoise(1);
            dst.FillNoise(2);
            Picture expected = reference::Read(dst), adjusted(9, 5, format);
            const Picture from = reference::Read(src);
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < 9; ++x)
                    expected.At(x, y, 0) = from.At(x, y, 0);
            reference::AdjustColor(from, adjusted, 0.6f, 0.5f, 0.4f, 0.65f);
            FakeMemoryProvider memory({.refuseOnly = refused, .fill = 0x7FA5A5A5u});
            FakeHost host;
            host.SetMemory(&memory);
            host.SetProviderAnswer(ProviderAnswer::Give);
            {
                MemoryAllocator allocator(&host);
                FrameBuffer to = ViewOf(dst);
                Adjust(ViewOf(src), to, {0.6f, 0.5f, 0.4f, 0.65f}, &allocator);
            }
            const bool wasRefused = memory.Refused() > 0;
            EXPECT_TRUE(wasRefused || refused > 0);
            EXPECT_TRUE(reference::Matches(dst, wasRefused ? expected : adjusted, 0,
                                           IsFloatFormat(format) ? 2e-6 : 0))
                << format << ", allocation " << refused;
            EXPECT_EQ(memory.OpenBlocks(), 0u);
            dst.Check();
        }
}

TEST(AdjustColor, ScratchOfAlphaFirstPictures_ComesFromTheHost)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture src(9, 5, format), dst(9, 5, format);
        src.FillNoise(1);
        Picture expected(9, 5, format);
        reference::AdjustColor(reference::Read(src), expected, 0.6f, 0.5f, 0.4f, 0.65f);
        FakeMemoryProvider memory({.fill = 0x7FA5A5A5u});
        FakeHost host;
        host.SetMemory(&memory);
        host.SetProviderAnswer(ProviderAnswer::Give);
        {
            MemoryAllocator allocator(&host);
            FrameBuffer to = ViewOf(dst);
            EXPECT_TRUE(Adjust(ViewOf(src), to, {0.6f, 0.5f, 0.4f, 0.65f}, &allocator));
        }
        EXPECT_TRUE(reference::Matches(dst, expected, 0, IsFloatFormat(format) ? 2e-6 : 0));
        EXPECT_EQ(memory.OpenBlocks(), 0u);
    }
}

TEST(AdjustColor, PicturesOfTwoSizes_WorkOnTheSmallerOne)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture src(7, 6, format), dst(9, 4, format);
        src.FillNoise(1);
        dst.FillNoise(2);
        const GuardedPicture before(dst);
        Picture expected(7, 6, format);
        reference::AdjustColor(reference::Read(src), expected, 0.6f, 0.5f, 0.4f, 0.65f);
        FrameBuffer to = ViewOf(dst);
        ASSERT_TRUE(Adjust(ViewOf(src), to, {0.6f, 0.5f, 0.4f, 0.65f}, nullptr));
        EXPECT_TRUE(SameOutside(dst, before, 7, 4)) << format;
        const Picture is = reference::Read(dst);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 7; ++x)
                for (int c = 0; c < 4; ++c)
                    EXPECT_NEAR(is.At(x, y, c), expected.At(x, y, c), IsFloatFormat(format) ? 2e-6 : 0);
    }
}

// Outside of the common size: 2 and -1 become 1 and 0 in alpha-last floats, and stay in alpha-first ones.
TEST(AdjustColor, Kept_ALargerFloatOutput_IsCutToOneAllOver)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        const bool isCut = format == PF_BGRA32F;
        GuardedPicture src(3, 2, format), dst(5, 4, format);
        dst.FillFloat(2.0f, -1.0f, 0.5f, 3.0f);
        FrameBuffer to = ViewOf(dst);
        ASSERT_TRUE(Adjust(ViewOf(src), to, kKnobs[0], nullptr));
        const double colours[4] = {isCut ? 1.0 : 2.0, isCut ? 0.0 : -1.0, 0.5, isCut ? 1.0 : 3.0};
        for (int y = 0; y < 4; ++y)
            for (int x = y < 2 ? 3 : 0; x < 5; ++x)
                for (int c = 0; c < 4; ++c)
                    EXPECT_EQ(static_cast<double>(dst.Float(x, y, PlaceOfColour(format, c))), colours[c])
                        << x << ", " << y << ", " << c;
        EXPECT_EQ(dst.Float(0, 0, PlaceOfColour(format, 3)), 0.0f); // alpha is the source's
        dst.Check();
    }
}

// Alpha goes by the size of a pixel, the colours before it by the format.
TEST(AdjustColor, PixelsLargerThanTheirFormat_AreAdjustedAndFalse)
{
    std::vector<std::uint8_t> src(16), dst(16, 7);
    FrameBuffer from, to;
    from.Attach(src.data(), 1, 1, 16, 16, PF_BGRA8, false);
    to.Attach(dst.data(), 1, 1, 16, 16, PF_BGRA8, false);
    // Brightness 1 adds 256 to each colour of the first four bytes.
    EXPECT_FALSE(ImageOps().AdjustColor(from, to, 0.5f, 1.0f, 0.5f, 0.5f, nullptr));
    for (std::size_t i = 0; i < dst.size(); ++i)
        EXPECT_EQ(dst[i], i < 3 ? 255 : 7) << i;
}

TEST(AdjustColor, NoPicturesAndTwoFormats_AreFalse)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture src(3, 3, format), dst(3, 3, format);
        dst.FillNoise(1);
        dst.Freeze();
        FrameBuffer to = ViewOf(dst);
        for (int kind = 0; kind < kBadViews; ++kind) {
            FrameBuffer bad = BadView(dst, kind);
            EXPECT_FALSE(Adjust(bad, to, kKnobs[0], nullptr)) << kind;
            EXPECT_FALSE(Adjust(ViewOf(src), bad, kKnobs[0], nullptr)) << kind;
        }
        dst.Check();
    }
    GuardedPicture bytes(3, 3, PF_BGRA8), floats(3, 3, PF_BGRA32F);
    bytes.Freeze();
    floats.Freeze();
    FrameBuffer toBytes = ViewOf(bytes), toFloats = ViewOf(floats);
    EXPECT_FALSE(Adjust(toBytes, toFloats, kKnobs[0], nullptr));
    EXPECT_FALSE(Adjust(toFloats, toBytes, kKnobs[0], nullptr));
    bytes.Check();
    floats.Check();
}

// --- YCbCr of floats --------------------------------------------------------------------------------------

/// One pixel of ARGB32F.
struct FloatPixel {
    float alpha, first, second, third;
};

GuardedPicture PixelPicture(const FloatPixel& pixel)
{
    GuardedPicture picture(3, 2, PF_ARGB32F);
    picture.FillFloat(pixel.third, pixel.second, pixel.first, pixel.alpha);
    return picture;
}

void ExpectPixel(const GuardedPicture& picture, double alpha, double first, double second, double third)
{
    EXPECT_NEAR(static_cast<double>(picture.Float(2, 1, 0)), alpha, 0);
    EXPECT_NEAR(static_cast<double>(picture.Float(2, 1, 1)), first, 1e-6);
    EXPECT_NEAR(static_cast<double>(picture.Float(2, 1, 2)), second, 1e-6);
    EXPECT_NEAR(static_cast<double>(picture.Float(2, 1, 3)), third, 1e-6);
}

TEST(ARGBToYCbCr32F, InPlace_CompoundsAllStages)
{
    // Red: Y = 0.299 * 0.85882354; Cb = (-0.168736 + 0.5) * 0.8784314 + 0.0627451;
    // Cr = (0.5 + 0.5) * 0.8784314 + 0.0627451.
    GuardedPicture red = PixelPicture({7.5f, 1, 0, 0});
    FrameBuffer view = ViewOf(red);
    ASSERT_TRUE(ImageOps().ARGBToYCbCr32F(view, view));
    ExpectPixel(red, 7.5, 0.25678824, 0.35373769, 0.9411765);
    // White: Y = 0.85882354; Cb = Cr = 0.5 * 0.8784314 + 0.0627451.
    GuardedPicture white = PixelPicture({0, 1, 1, 1});
    FrameBuffer itself = ViewOf(white);
    ASSERT_TRUE(ImageOps().ARGBToYCbCr32F(itself, itself));
    ExpectPixel(white, 0, 0.85882354, 0.5019608, 0.5019608);
}

TEST(YCbCrToARGB32F, InPlace_CompoundsAllStages)
{
    // Y 0.5, Cb 0.7, Cr 0.4: 0.5 * 1.1643835 = 0.58219175; (0.7 - 0.0627451) * 1.1383928 - 0.5 = 0.22544632;
    // (0.4 - 0.0627451) * 1.1383928 - 0.5 = -0.11607145.
    // R = 0.58219175 + 1.402 * -0.11607145; G = - 0.344 * 0.22544632 + 0.714 * 0.11607145; B = + 1.772 * 0.22544632
    const double y = 0.58219175, cb = 0.22544630, cr = -0.11607154;
    GuardedPicture picture = PixelPicture({0.25f, 0.5f, 0.7f, 0.4f});
    FrameBuffer view = ViewOf(picture);
    ASSERT_TRUE(ImageOps().YCbCrToARGB32F(view, view));
    ExpectPixel(picture, 0.25, y + 1.402 * cr, y - 0.344 * cb - 0.714 * cr, y + 1.772 * cb);
}

TEST(ARGBToYCbCr32F, Kept_TwoPictures_HoldTheLastStageOfTheSourceAlone)
{
    GuardedPicture src = PixelPicture({7.5f, 0.25f, 0.5f, 0.75f}), dst = PixelPicture({9, 9, 9, 9});
    FrameBuffer to = ViewOf(dst);
    ASSERT_TRUE(ImageOps().ARGBToYCbCr32F(ViewOf(src), to));
    ExpectPixel(dst, 9, 0.25, 0.5627451, 0.8127451); // the constants added, alpha left alone
    // Back, the last stage is the twist.
    ASSERT_TRUE(ImageOps().YCbCrToARGB32F(ViewOf(src), to));
    ExpectPixel(dst, 9, 0.25 + 1.402 * 0.75, 0.25 - 0.344 * 0.5 - 0.714 * 0.75, 0.25 + 1.772 * 0.5);
}

TEST(ARGBToYCbCr32F, ThereAndBack_IsNearThePicture)
{
    ForEachWidth([](int width, const PictureLayout& layout) {
        GuardedPicture picture(width, 3, PF_ARGB32F, layout);
        picture.FillNoise(static_cast<std::uint32_t>(width));
        const GuardedPicture before(picture);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(ImageOps().ARGBToYCbCr32F(view, view));
        ASSERT_TRUE(ImageOps().YCbCrToARGB32F(view, view));
        ASSERT_TRUE(Near(picture, before, 2e-3)); // the way back is rounded to three places
        picture.Check();
    });
}

TEST(ARGBToYCbCr32F, SameAddressWithAnotherStepOrSize_WritesTheSmallerSizeByItsOwnStep)
{
    for (const bool forth : {true, false}) {
        GuardedPicture picture(8, 4, PF_ARGB32F);
        picture.FillNoise(1);
        const GuardedPicture before(picture);
        FrameBuffer narrow, wide = ViewOf(picture);
        // Half the columns, and every other row.
        narrow.Attach(picture.Row(0), 4, 2, 2 * picture.Stride(), 16, PF_ARGB32F, false);
        const auto operation = forth ? &ImageOps::ARGBToYCbCr32F : &ImageOps::YCbCrToARGB32F;
        EXPECT_TRUE((ImageOps().*operation)(wide, narrow));
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 8; ++x)
                for (int c = 0; c < 4; ++c) {
                    if (x < 4 && y <= 2)
                        continue;
                    EXPECT_EQ(picture.Float(x, y, c), before.Float(x, y, c)) << x << ", " << y;
                }
        picture.Check();
    }
}

TEST(ARGBToYCbCr32F, OtherFormatsAndNoPictures_AreFalse)
{
    CheckRefusals(&ImageOps::ARGBToYCbCr32F, {PF_ARGB32F}, true);
    CheckRefusals(&ImageOps::YCbCrToARGB32F, {PF_ARGB32F}, true);
}

// --- packed pixels ----------------------------------------------------------------------------------------

TEST(Rgb24, BothWays_TurnTheColoursRound)
{
    ForEachWidth([](int width, const PictureLayout& layout) {
        GuardedPicture bgra(width, 3, PF_BGRA8, layout), rgb(width + 1, 2, 3, PF_Packed8, layout),
            back(width, 2, PF_BGRA8, layout);
        bgra.FillNoise(static_cast<std::uint32_t>(width));
        rgb.FillBytes(0x5A);
        FrameBuffer toRgb = ViewOf(rgb), toBack = ViewOf(back);
        ASSERT_TRUE(ImageOps().BGRAToRGB24(ViewOf(bgra), toRgb));
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < 3; ++c)
                    ASSERT_EQ(rgb.Byte(x, y, c), bgra.Byte(x, y, 2 - c));
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(rgb.Byte(width, 1, c), 0x5A);
        ASSERT_TRUE(ImageOps().RGB24ToBGRA(toRgb, toBack, 77));
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < width; ++x) {
                for (int c = 0; c < 3; ++c)
                    ASSERT_EQ(back.Byte(x, y, c), bgra.Byte(x, y, c));
                ASSERT_EQ(back.Byte(x, y, 3), 77);
            }
        rgb.Check();
        back.Check();
    });
}

TEST(Rgb24, OtherPixelSizesAndNoPictures_AreFalse)
{
    GuardedPicture bgra(3, 3, PF_BGRA8), rgb(3, 3, 3, PF_Packed8), mask(3, 3, PF_Mask8);
    GuardedPicture packed(3, 3, 2, PF_Packed8);
    rgb.Freeze();
    bgra.Freeze();
    mask.Freeze();
    packed.Freeze();
    ImageOps ops;
    FrameBuffer toBgra = ViewOf(bgra), toRgb = ViewOf(rgb), toMask = ViewOf(mask), toPacked = ViewOf(packed);
    EXPECT_FALSE(ops.BGRAToRGB24(toMask, toRgb));
    EXPECT_FALSE(ops.BGRAToRGB24(toBgra, toMask));
    EXPECT_FALSE(ops.RGB24ToBGRA(toMask, toBgra, 1));
    EXPECT_FALSE(ops.RGB24ToBGRA(toRgb, toMask, 1));
    EXPECT_FALSE(ops.RGB24ToYCbCr422(toMask, toMask));
    EXPECT_FALSE(ops.YCbCr422ToRGB24(toMask, toRgb));
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer badBgra = BadView(bgra, kind), badRgb = BadView(rgb, kind),
                    badPacked = BadView(packed, kind);
        EXPECT_FALSE(ops.BGRAToRGB24(badBgra, toRgb)) << kind;
        EXPECT_FALSE(ops.BGRAToRGB24(toBgra, badRgb)) << kind;
        EXPECT_FALSE(ops.RGB24ToBGRA(badRgb, toBgra, 1)) << kind;
        EXPECT_FALSE(ops.RGB24ToBGRA(toRgb, badBgra, 1)) << kind;
        EXPECT_FALSE(ops.RGB24ToYCbCr422(badRgb, toPacked)) << kind;
        EXPECT_FALSE(ops.RGB24ToYCbCr422(toRgb, badPacked)) << kind;
        EXPECT_FALSE(ops.YCbCr422ToRGB24(badPacked, toRgb)) << kind;
        EXPECT_FALSE(ops.YCbCr422ToRGB24(toPacked, badRgb)) << kind;
    }
    rgb.Check();
    bgra.Check();
    mask.Check();
    packed.Check();
}

TEST(YCbCr422, BothWays_ArePackedInTwoBytesPerPixel)
{
    ForEachWidth([](int width, const PictureLayout& layout) {
        GuardedPicture rgb(width, 3, 3, PF_Packed8, layout), packed(width, 2, 2, PF_Packed8, layout),
            back(width, 2, 3, PF_Packed8, layout);
        rgb.FillNoise(static_cast<std::uint32_t>(width));
        FrameBuffer toPacked = ViewOf(packed), toBack = ViewOf(back);
        ASSERT_TRUE(ImageOps().RGB24ToYCbCr422(ViewOf(rgb), toPacked));
        ASSERT_TRUE(ImageOps().YCbCr422ToRGB24(toPacked, toBack));
        using Row = std::vector<std::uint8_t>;
        for (int y = 0; y < 2; ++y) {
            const Row from(rgb.Row(y), rgb.Row(y) + 3 * width);
            const Row between = reference::YCbCrRow(from, width);
            ASSERT_EQ(Row(packed.Row(y), packed.Row(y) + 2 * width), between);
            ASSERT_EQ(Row(back.Row(y), back.Row(y) + 3 * width), reference::RgbRow(between, width));
        }
        packed.Check();
        back.Check();
    });
}

} // namespace
} // namespace kelmora

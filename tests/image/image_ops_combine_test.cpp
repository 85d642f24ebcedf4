#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "tests/image/bad_views.h"
#include "tests/image/buffers.h"
#include "tests/image/variants.h"
#include "tests/reference/blends.h"
#include "tests/reference/copies.h"
#include "tests/reference/picture.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

using reference::Picture;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Sums and products that the library may round more often than the plain versions do.
constexpr double kRounding = 3e-7;

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

// --- SetChannel -------------------------------------------------------------------------------------------

TEST(SetChannel, EveryPictureFormatAndChannel_SetsThatChannelAlone)
{
    for (const std::uint32_t format : kPictureFormats)
        for (int channel = 0; channel < 4; ++channel)
            ForEachWidth([&](int width, const PictureLayout& layout) {
                GuardedPicture picture(width, 3, format, layout);
                picture.FillNoise(1);
                Picture expected = reference::Read(picture);
                ASSERT_TRUE(reference::SetChannel(expected, channel, 7 * width));
                FrameBuffer view = ViewOf(picture);
                ASSERT_TRUE(ImageOps().SetChannel(view, channel, 7 * width));
                ASSERT_TRUE(reference::Matches(picture, expected));
                picture.Check();
            });
}

TEST(SetChannel, Floats_AreTheLevelTimesTheFloatNearestToOneOver255)
{
    GuardedPicture picture(1, 1, PF_BGRA32F);
    FrameBuffer view = ViewOf(picture);
    ASSERT_TRUE(ImageOps().SetChannel(view, 2, 255));
    EXPECT_EQ(picture.Float(0, 0, 2), 1.0f);
    ASSERT_TRUE(ImageOps().SetChannel(view, 2, 1));
    EXPECT_EQ(picture.Float(0, 0, 2), 0.003921569f);
    ASSERT_TRUE(ImageOps().SetChannel(view, 2, 51));
    EXPECT_NEAR(static_cast<double>(picture.Float(0, 0, 2)), 0.2, 2e-8);
}

TEST(SetChannel, OtherFormatsChannelsAndNoPictures_AreFalse)
{
    for (const std::uint32_t format : {PF_Packed8, PF_Mask8, PF_Mask32F}) {
        GuardedPicture picture(3, 3, format);
        picture.Freeze();
        FrameBuffer view = ViewOf(picture);
        EXPECT_FALSE(ImageOps().SetChannel(view, 0, 9)) << format;
        picture.Check();
    }
    GuardedPicture thin(3, 3, 4, PF_BGRA32F), wide(3, 3, 16, PF_BGRA8), picture(3, 3, PF_ARGB8);
    thin.Freeze();
    wide.Freeze();
    picture.Freeze();
    FrameBuffer toThin = ViewOf(thin), toWide = ViewOf(wide), view = ViewOf(picture);
    EXPECT_FALSE(ImageOps().SetChannel(toThin, 0, 9));
    EXPECT_FALSE(ImageOps().SetChannel(toWide, 0, 9));
    for (const int bad : {-1, 4, INT_MAX, INT_MIN})
        EXPECT_FALSE(ImageOps().SetChannel(view, bad, 9)) << bad;
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(picture, kind);
        EXPECT_FALSE(ImageOps().SetChannel(bad, 0, 9)) << kind;
    }
    picture.Check();
}

// --- Fill -------------------------------------------------------------------------------------------------

TEST(Fill, EveryFormat_StoresTheColourInItsWay)
{
    for (const std::uint32_t format : kServedFormats)
        for (const std::uint32_t colour : {0u, 0xFFFFFFFFu, 0x12345678u, 0xFF000000u, 0x80FF01FEu})
            ForEachWidth([&](int width, const PictureLayout& layout) {
                GuardedPicture picture(width, 3, format, layout);
                picture.FillNoise(1);
                Picture expected(width, 3, format);
                ASSERT_TRUE(reference::Fill(expected, colour));
                FrameBuffer view = ViewOf(picture);
                ASSERT_TRUE(ImageOps().Fill(view, colour));
                ASSERT_TRUE(reference::Matches(picture, expected)) << format << ": " << colour;
                picture.Check();
            });
}

TEST(Fill, Kept_Argb8_GetsTheLowByteAsAlpha)
{
    GuardedPicture picture(3, 2, PF_ARGB8);
    picture.FillBytes(9);
    FrameBuffer view = ViewOf(picture);
    ASSERT_TRUE(ImageOps().Fill(view, 0xFF000000u));
    for (const int x : {0, 2}) {
        EXPECT_EQ(picture.Byte(x, 1, 0), 0); // alpha
        EXPECT_EQ(picture.Byte(x, 1, 1), 0);
        EXPECT_EQ(picture.Byte(x, 1, 2), 0);
        EXPECT_EQ(picture.Byte(x, 1, 3), 255); // blue
    }
}

TEST(Fill, OpaqueBlackOnArgb32F_IsAlphaOneAndBlack)
{
    GuardedPicture picture(3, 2, PF_ARGB32F);
    picture.FillNoise(1);
    FrameBuffer view = ViewOf(picture);
    ASSERT_TRUE(ImageOps().Fill(view, 0xFF000000u));
    EXPECT_EQ(picture.Float(2, 1, 0), 1.0f);
    for (int c = 1; c < 4; ++c)
        EXPECT_EQ(picture.Float(2, 1, c), 0.0f);
}

TEST(Fill, FloatFormatsWithOtherPixelBytes_GoByThese)
{
    const float levels[] = {ByteLevel(0x12), ByteLevel(0x34), ByteLevel(0x56), ByteLevel(0x78)};
    GuardedPicture maskOf16(3, 2, 16, PF_Mask32F), bgraOf4(3, 2, 4, PF_BGRA32F), argbOf4(3, 2, 4, PF_ARGB32F);
    FrameBuffer a = ViewOf(maskOf16), b = ViewOf(bgraOf4), c = ViewOf(argbOf4);
    ASSERT_TRUE(ImageOps().Fill(a, 0x12345678u));
    ASSERT_TRUE(ImageOps().Fill(b, 0x12345678u));
    ASSERT_TRUE(ImageOps().Fill(c, 0x12345678u));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(maskOf16.Float(2, 1, i), levels[i]) << i; // as ARGB32F
    EXPECT_EQ(bgraOf4.Float(2, 1, 0), levels[3]);
    EXPECT_EQ(argbOf4.Float(2, 1, 0), levels[3]);
}

TEST(Fill, OtherFormatsOfOneByte_GetTheLowByte)
{
    for (const std::uint32_t format : {2u, 5u, 6u, 77u}) {
        GuardedPicture picture(3, 2, 1, format);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(ImageOps().Fill(view, 0x12345678u)) << format;
        EXPECT_EQ(picture.Byte(2, 1), 0x78);
    }
}

TEST(Fill, OtherCombinationsAndNoPictures_AreFalse)
{
    struct {
        std::uint32_t format;
        int pixelBytes;
    } const others[] = {{PF_Packed8, 4}, {PF_BGRA32F, 1}, {PF_BGRA32F, 8}, {PF_Mask32F, 1},
                        {PF_Mask8, 4},   {5, 4},          {77, 16}};
    for (const auto& other : others) {
        GuardedPicture picture(3, 3, other.pixelBytes, other.format);
        FrameBuffer view = ViewOf(picture);
        picture.Freeze();
        EXPECT_FALSE(ImageOps().Fill(view, 1)) << other.format << ", " << other.pixelBytes;
        picture.Check();
    }
    GuardedPicture picture(3, 3, PF_BGRA8);
    picture.Freeze();
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(picture, kind);
        EXPECT_FALSE(ImageOps().Fill(bad, 1)) << kind;
    }
    picture.Check();
}

// --- PermuteChannels --------------------------------------------------------------------------------------

TEST(PermuteChannels, EveryOrderOfBytes_TakesTheOldChannels)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (int code = 0; code < 256; ++code) {
            const int order[4] = {code & 3, (code >> 2) & 3, (code >> 4) & 3, code >> 6};
            GuardedPicture picture(1 + code % 33, 2, format, {.slack = code % 6});
            picture.FillNoise(1);
            const Picture expected = reference::SwappedChannels(reference::Read(picture), order);
            FrameBuffer view = ViewOf(picture);
            ASSERT_TRUE(ImageOps().PermuteChannels(view, order));
            ASSERT_TRUE(reference::Matches(picture, expected)) << code;
            picture.Check();
        }
}

TEST(PermuteChannels, OtherFormatsOrdersAndNoPictures_AreFalse)
{
    const int order[4] = {3, 2, 1, 0}, wrong[4] = {0, 1, 2, 4}, negative[4] = {-1, 1, 2, 3};
    for (const std::uint32_t format : {PF_Packed8, PF_BGRA32F, PF_ARGB32F, PF_Mask8, PF_Mask32F}) {
        GuardedPicture picture(3, 3, format);
        picture.Freeze();
        FrameBuffer view = ViewOf(picture);
        EXPECT_FALSE(ImageOps().PermuteChannels(view, order)) << format;
        picture.Check();
    }
    GuardedPicture picture(3, 3, PF_BGRA8);
    picture.Freeze();
    FrameBuffer view = ViewOf(picture);
    EXPECT_FALSE(ImageOps().PermuteChannels(view, wrong));
    EXPECT_FALSE(ImageOps().PermuteChannels(view, negative));
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(picture, kind);
        EXPECT_FALSE(ImageOps().PermuteChannels(bad, order)) << kind;
    }
    picture.Check();
}

// --- Convert ----------------------------------------------------------------------------------------------

TEST(Convert, EveryPairOfFormats_IsServedOrFalse)
{
    constexpr std::uint32_t all[] = {PF_BGRA8,   PF_ARGB8, PF_Packed8, PF_BGRA32F,
                                     PF_ARGB32F, PF_Mask8, PF_Mask32F};
    for (const std::uint32_t from : all)
        for (const std::uint32_t to : all)
            ForEachWidth([&](int width, const PictureLayout& layout) {
                for (const Noise noise : {Noise::Leaning, Noise::Special}) {
                    GuardedPicture src(width, 3, from, layout), dst(width + 2, 2, to, layout);
                    src.FillNoise(1, noise);
                    dst.FillNoise(2);
                    Picture expected = reference::Read(dst);
                    const bool served = reference::Convert(reference::Read(src), expected);
                    ForEachVariant([&] {
                        GuardedPicture result(dst);
                        FrameBuffer view = ViewOf(result);
                        ASSERT_EQ(ImageOps().Convert(ViewOf(src), view), served) << from << " to " << to;
                        ASSERT_TRUE(reference::Matches(result, expected)) << from << " to " << to;
                        result.Check();
                    });
                }
            });
}

TEST(Convert, ByteAlphaFirstToFloatAlphaLastAndBack_IsFalse)
{
    GuardedPicture bytes(3, 3, PF_ARGB8), floats(3, 3, PF_BGRA32F);
    bytes.Freeze();
    floats.Freeze();
    FrameBuffer toBytes = ViewOf(bytes), toFloats = ViewOf(floats);
    EXPECT_FALSE(ImageOps().Convert(toBytes, toFloats));
    EXPECT_FALSE(ImageOps().Convert(toFloats, toBytes));
    bytes.Check();
    floats.Check();
}

TEST(Convert, EveryByte_ComesBackThroughFloats)
{
    struct {
        std::uint32_t bytes, floats;
    } const pairs[] = {{PF_BGRA8, PF_BGRA32F}, {PF_ARGB8, PF_ARGB32F}, {PF_BGRA8, PF_ARGB32F}};
    for (const auto& pair : pairs) {
        GuardedPicture bytes(64, 1, pair.bytes), floats(64, 1, pair.floats), back(64, 1, pair.bytes);
        for (int i = 0; i < 256; ++i)
            bytes.SetByte(i / 4, 0, i % 4, static_cast<std::uint8_t>(i));
        FrameBuffer toFloats = ViewOf(floats), toBack = ViewOf(back);
        ASSERT_TRUE(ImageOps().Convert(ViewOf(bytes), toFloats));
        ASSERT_TRUE(ImageOps().Convert(toFloats, toBack));
        EXPECT_TRUE(Equal(back, bytes));
    }
}

TEST(Convert, FloatsAtTheEnds_GoToTheNearestByte)
{
    struct {
        float value;
        int level;
    } const cases[] = {{0.0f, 0},    {1.0f, 255},      {1.5f, 255},     {-0.5f, 0},
                       {kNan, 0},    {kInfinity, 255}, {-kInfinity, 0}, {0.5f, 128}, // 127.5 + 0.5
                       {0.0019f, 0}, {0.002f, 1},      {0.998f, 254},   {0.9981f, 255},
                       {-0.0f, 0},   {1e-42f, 0},      {3e38f, 255},    {0.25f, 64}}; // 63.75
    for (const auto& one : cases)
        for (const std::uint32_t to : {PF_BGRA8, PF_ARGB8}) {
            GuardedPicture src(1, 1, to == PF_BGRA8 ? PF_BGRA32F : PF_ARGB32F), dst(1, 1, to);
            for (int c = 0; c < 4; ++c)
                src.SetFloat(0, 0, c, one.value);
            FrameBuffer view = ViewOf(dst);
            ASSERT_TRUE(ImageOps().Convert(ViewOf(src), view));
            for (int c = 0; c < 4; ++c)
                EXPECT_EQ(dst.Byte(0, 0, c), one.level) << static_cast<double>(one.value);
        }
}

TEST(Convert, NoPictures_AreFalse)
{
    GuardedPicture src(3, 3, PF_BGRA8), dst(3, 3, PF_BGRA32F);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(dst, kind);
        EXPECT_FALSE(ImageOps().Convert(ViewOf(src), bad)) << kind;
        EXPECT_FALSE(ImageOps().Convert(BadView(src, kind), to)) << kind;
    }
    GuardedPicture thin(3, 3, 4, PF_BGRA32F);
    thin.Freeze();
    FrameBuffer toThin = ViewOf(thin);
    EXPECT_FALSE(ImageOps().Convert(ViewOf(src), toThin));
    EXPECT_FALSE(ImageOps().Convert(toThin, to));
    dst.Check();
    thin.Check();
}

// --- AlphaOver --------------------------------------------------------------------------------------------

TEST(AlphaOver, EveryFormatAndBothKinds_IsThePlainComposite)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F, PF_Packed8})
        for (const bool premultiplied : {false, true})
            ForEachWidth([&](int width, PictureLayout layout) {
                if (format == PF_BGRA8 || format == PF_Packed8)
                    layout.slack *= 4; // its rows are a whole number of pixels apart
                GuardedPicture a(width, 3, format, layout), b(width + 1, 2, format),
                    out(width + 2, 4, format, layout);
                a.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                b.FillNoise(2, Noise::Leaning);
                out.FillNoise(3);
                Picture expected = reference::Read(out);
                reference::AlphaOver(reference::Read(a), reference::Read(b), expected, premultiplied);
                a.Freeze();
                b.Freeze();
                ForEachVariant([&] {
                    GuardedPicture result(out);
                    FrameBuffer to = ViewOf(result);
                    ASSERT_TRUE(ImageOps().AlphaOver(ViewOf(a), ViewOf(b), to, premultiplied));
                    ASSERT_TRUE(reference::Matches(result, expected, kRounding))
                        << width << ", format " << format << (premultiplied ? ", premultiplied" : "");
                    result.Check();
                });
                a.Check();
                b.Check();
            });
}

TEST(AlphaOver, EveryByteOfColourAndAlpha_OverAFewOthers)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const bool premultiplied : {false, true})
            for (const int level : {0, 1, 127, 200, 255}) {
                GuardedPicture a(256, 256, format), b(256, 256, format), out(256, 256, format);
                for (int y = 0; y < 256; ++y)
                    for (int x = 0; x < 256; ++x) {
                        a.SetColour(x, y, static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(x), 255,
                                    static_cast<std::uint8_t>(y));
                        b.SetColour(x, y, static_cast<std::uint8_t>(level), static_cast<std::uint8_t>(y),
                                    static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(level));
                    }
                Picture expected(256, 256, format);
                reference::AlphaOver(reference::Read(a), reference::Read(b), expected, premultiplied);
                FrameBuffer to = ViewOf(out);
                ASSERT_TRUE(ImageOps().AlphaOver(ViewOf(a), ViewOf(b), to, premultiplied));
                ASSERT_TRUE(reference::Matches(out, expected)) << format << " " << level;
            }
}

TEST(AlphaOver, TransparentAndNotPremultiplied_GivesAlphaTimesTheColourBelow)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture a(2, 2, format), b(2, 2, format), out(2, 2, format);
        a.Fill(10, 20, 30, 0);
        b.Fill(200, 100, 255, 51); // alpha 0.2
        FrameBuffer to = ViewOf(out);
        ASSERT_TRUE(ImageOps().AlphaOver(ViewOf(a), ViewOf(b), to, false));
        const int blue = PlaceOfColour(format, 0), red = PlaceOfColour(format, 2),
                  alpha = PlaceOfColour(format, 3);
        if (IsFloatFormat(format)) {
            EXPECT_NEAR(static_cast<double>(out.Float(1, 1, blue)), 40.0 / 255, 1e-7);
            EXPECT_NEAR(static_cast<double>(out.Float(1, 1, red)), 51.0 / 255, 1e-7);
            EXPECT_NEAR(static_cast<double>(out.Float(1, 1, alpha)), 51.0 / 255, 1e-7);
        } else {
            EXPECT_EQ(out.Byte(1, 1, blue), 40);
            EXPECT_EQ(out.Byte(1, 1, red), 51);
            EXPECT_EQ(out.Byte(1, 1, alpha), 51);
        }
    }
}

TEST(AlphaOver, HandComputedPixelsOfArgb8_ComeOut)
{
    // In memory: alpha, red, green, blue.
    const std::uint8_t a[] = {100, 200, 50, 255}, b[] = {200, 30, 255, 255};
    std::uint8_t out[4] = {};
    FrameBuffer first, second, to;
    first.Attach(const_cast<std::uint8_t*>(a), 1, 1, 4, 4, PF_ARGB8, false);
    second.Attach(const_cast<std::uint8_t*>(b), 1, 1, 4, 4, PF_ARGB8, false);
    to.Attach(out, 1, 1, 4, 4, PF_ARGB8, false);
    // t = 155: 100 + 200 * 155 / 255 = 100 + 121; 200 + 30 * 155 / 255 = 218; 50 + 155; 255 + 155 cut
    ASSERT_TRUE(ImageOps().AlphaOver(first, second, to, true));
    EXPECT_EQ(out[0], 221);
    EXPECT_EQ(out[1], 218);
    EXPECT_EQ(out[2], 205);
    EXPECT_EQ(out[3], 255);
    // t = 155 * 200 / 255 = 121: (20000 + 3630) / 255 = 92; (5000 + 30855) / 255 = 140; (25500 + 30855) / 255
    ASSERT_TRUE(ImageOps().AlphaOver(first, second, to, false));
    EXPECT_EQ(out[0], 221);
    EXPECT_EQ(out[1], 92);
    EXPECT_EQ(out[2], 140);
    EXPECT_EQ(out[3], 221);
}

TEST(AlphaOver, Kept_RowsOfBgra8_AreAWholeNumberOfPixelsApart)
{
    // Steps of 11 bytes: the second row begins at byte 8, in each of the three.
    std::uint8_t a[22] = {}, b[22] = {}, out[22];
    for (int i = 0; i < 22; ++i) {
        b[i] = static_cast<std::uint8_t>(100 + i);
        out[i] = 0xEE;
    }
    FrameBuffer first, second, to;
    first.Attach(a, 2, 2, 11, 4, PF_BGRA8, false);
    second.Attach(b, 2, 2, 11, 4, PF_BGRA8, false);
    to.Attach(out, 2, 2, 11, 4, PF_BGRA8, false);
    ASSERT_TRUE(ImageOps().AlphaOver(first, second, to, true)); // alpha 0: what is below
    for (int i = 0; i < 22; ++i)
        EXPECT_EQ(out[i], i < 16 ? 100 + i : 0xEE) << i;
}

TEST(AlphaOver, OutputThatIsOneOfThePictures_GetsTheSameResult)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const bool premultiplied : {false, true})
            for (const bool first : {false, true}) {
                GuardedPicture a(33, 3, format), b(33, 3, format);
                a.FillNoise(1);
                b.FillNoise(2);
                Picture expected(33, 3, format);
                reference::AlphaOver(reference::Read(a), reference::Read(b), expected, premultiplied);
                GuardedPicture& out = first ? a : b;
                FrameBuffer to = ViewOf(out);
                ASSERT_TRUE(ImageOps().AlphaOver(ViewOf(a), ViewOf(b), to, premultiplied));
                ASSERT_TRUE(reference::Matches(out, expected, kRounding)) << format;
            }
}

TEST(AlphaOver, OtherPixelSizesFormatsAndNoPictures_AreFalse)
{
    GuardedPicture a(3, 3, PF_BGRA8), floats(3, 3, PF_BGRA32F), mask(3, 3, PF_Mask8), out(3, 3, PF_BGRA8),
        outFloats(3, 3, PF_BGRA32F), outMask(3, 3, PF_Mask8);
    out.Freeze();
    outFloats.Freeze();
    outMask.Freeze();
    ImageOps ops;
    FrameBuffer to = ViewOf(out), toFloats = ViewOf(outFloats), toMask = ViewOf(outMask);
    for (const bool premultiplied : {false, true}) {
        EXPECT_FALSE(ops.AlphaOver(ViewOf(mask), ViewOf(mask), toMask, premultiplied));
        EXPECT_FALSE(ops.AlphaOver(ViewOf(a), ViewOf(mask), to, premultiplied));
        EXPECT_FALSE(ops.AlphaOver(ViewOf(a), ViewOf(a), toMask, premultiplied));
        EXPECT_FALSE(ops.AlphaOver(ViewOf(floats), ViewOf(a), toFloats, premultiplied));
        EXPECT_FALSE(ops.AlphaOver(ViewOf(floats), ViewOf(floats), to, premultiplied));
        for (int kind = 0; kind < kBadViews; ++kind) {
            FrameBuffer bad = BadView(out, kind);
            EXPECT_FALSE(ops.AlphaOver(bad, ViewOf(a), to, premultiplied)) << kind;
            EXPECT_FALSE(ops.AlphaOver(ViewOf(a), bad, to, premultiplied)) << kind;
            EXPECT_FALSE(ops.AlphaOver(ViewOf(a), ViewOf(a), bad, premultiplied)) << kind;
        }
    }
    out.Check();
    outFloats.Check();
    outMask.Check();
}

// --- Premultiply ------------------------------------------------------------------------------------------

TEST(Premultiply, EveryPictureFormat_IsThePlainProductInPlaceAndNot)
{
    for (const std::uint32_t format : kPictureFormats)
        ForEachWidth([&](int width, const PictureLayout& layout) {
            GuardedPicture src(width, 3, format, layout), dst(width + 1, 2, format, layout);
            src.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
            dst.FillNoise(2);
            Picture expected = reference::Read(dst), inPlace = reference::Read(src);
            reference::Premultiply(reference::Read(src), expected);
            reference::Premultiply(reference::Read(src), inPlace);
            FrameBuffer to = ViewOf(dst), itself = ViewOf(src);
            ASSERT_TRUE(ImageOps().Premultiply(itself, to));
            ASSERT_TRUE(reference::Matches(dst, expected)) << width << ", format " << format;
            ASSERT_TRUE(ImageOps().Premultiply(itself, itself));
            ASSERT_TRUE(reference::Matches(src, inPlace)) << width << ", format " << format;
            src.Check();
            dst.Check();
        });
}

TEST(Premultiply, EveryByteTimesEveryAlpha_DiffersBetweenTheOrders)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture picture(256, 256, format);
        for (int y = 0; y < 256; ++y)
            for (int x = 0; x < 256; ++x)
                picture.SetColour(x, y, static_cast<std::uint8_t>(x), 255, static_cast<std::uint8_t>(255 - x),
                                  static_cast<std::uint8_t>(y));
        Picture expected = reference::Read(picture);
        reference::Premultiply(reference::Read(picture), expected);
        FrameBuffer view = ViewOf(picture);
        ASSERT_TRUE(ImageOps().Premultiply(view, view));
        ASSERT_TRUE(reference::Matches(picture, expected)) << format;
    }
}

TEST(Premultiply, Kept_AlphaOfTheDestination_IsThatOfTheSourceInBgra8Alone)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture src(2, 2, format), dst(2, 2, format);
        src.Fill(200, 100, 50, 128);
        dst.Fill(1, 2, 3, 77);
        FrameBuffer to = ViewOf(dst);
        ASSERT_TRUE(ImageOps().Premultiply(ViewOf(src), to));
        const int alpha = PlaceOfColour(format, 3), blue = PlaceOfColour(format, 0);
        if (IsFloatFormat(format)) {
            EXPECT_EQ(dst.Float(1, 1, alpha), ByteLevel(77));
            EXPECT_NEAR(static_cast<double>(dst.Float(1, 1, blue)), 200 * 128 / 65025.0, 1e-7);
        } else {
            EXPECT_EQ(dst.Byte(1, 1, alpha), format == PF_BGRA8 ? 128 : 77);
            EXPECT_EQ(dst.Byte(1, 1, blue), 100); // 25600 / 255 = 100.4; 25600 + 100 + 1, / 256 = 100.4
        }
    }
}

TEST(Premultiply, OtherFormatsAndNoPictures_AreFalse)
{
    for (const std::uint32_t format : {PF_Packed8, PF_Mask8, PF_Mask32F}) {
        GuardedPicture src(3, 3, format), dst(3, 3, format);
        dst.Freeze();
        FrameBuffer to = ViewOf(dst);
        EXPECT_FALSE(ImageOps().Premultiply(ViewOf(src), to)) << format;
        dst.Check();
    }
    GuardedPicture src(3, 3, PF_BGRA8), dst(3, 3, PF_BGRA8), floats(3, 3, PF_BGRA32F);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    EXPECT_FALSE(ImageOps().Premultiply(ViewOf(floats), to));
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(dst, kind);
        EXPECT_FALSE(ImageOps().Premultiply(bad, to)) << kind;
        EXPECT_FALSE(ImageOps().Premultiply(ViewOf(src), bad)) << kind;
    }
    dst.Check();
}

// --- AddWeighted ------------------------------------------------------------------------------------------

constexpr float kWeights[][2] = {
    {0.0f, 0.0f},    {1.0f, 0.0f},    {0.0f, 1.0f},    {0.5f, 0.5f},       {0.6f, 0.6f},
    {1.0f, 1.0f},    {0.3f, 0.7f},    {0.25f, 0.751f}, {-1.0f, 0.5f},      {2.0f, 0.5f},
    {1e30f, -1e30f}, {kNan, 0.5f},    {0.5f, kNan},    {kInfinity, 0.25f}, {-kInfinity, kInfinity},
    {kNan, kNan},    {0.9981f, 0.0f}, {0.998f, 0.0f},  {0.0019f, 0.002f},  {0.501f, 0.501f},
};

TEST(AddWeighted, EveryFormatAndWeight_IsThePlainSum)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& weights : kWeights)
            ForEachWidth([&](int width, const PictureLayout& layout) {
                GuardedPicture a(width, 2, format, layout), b(width + 1, 3, format),
                    out(width + 2, 4, format, layout);
                a.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                b.FillNoise(2, Noise::Leaning);
                out.FillNoise(3);
                Picture expected = reference::Read(out);
                ASSERT_TRUE(reference::AddWeighted(reference::Read(a), reference::Read(b), expected,
                                                   weights[0], weights[1]));
                a.Freeze();
                b.Freeze();
                ForEachVariant([&] {
                    GuardedPicture result(out);
                    FrameBuffer to = ViewOf(result);
                    ASSERT_TRUE(ImageOps().AddWeighted(ViewOf(a), ViewOf(b), to, weights[0], weights[1]));
                    ASSERT_TRUE(reference::Matches(result, expected, kRounding))
                        << "format " << format << ", weights " << static_cast<double>(weights[0]) << ", "
                        << static_cast<double>(weights[1]);
                    result.Check();
                });
                a.Check();
                b.Check();
            });
}

TEST(AddWeighted, EveryPairOfBytes_IsDividedTowardZero)
{
    for (const auto& weights : kWeights) {
        GuardedPicture a(256, 64, PF_BGRA8), b(256, 64, PF_BGRA8);
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 256; ++x)
                for (int c = 0; c < 4; ++c) {
                    a.SetByte(x, y, c, static_cast<std::uint8_t>(x));
                    b.SetByte(x, y, c, static_cast<std::uint8_t>(4 * y + c));
                }
        Picture expected(256, 64, PF_BGRA8);
        reference::AddWeighted(reference::Read(a), reference::Read(b), expected, weights[0], weights[1]);
        ForEachVariant([&] {
            GuardedPicture out(256, 64, PF_BGRA8);
            FrameBuffer to = ViewOf(out);
            ASSERT_TRUE(ImageOps().AddWeighted(ViewOf(a), ViewOf(b), to, weights[0], weights[1]));
            ASSERT_TRUE(reference::Matches(out, expected))
                << static_cast<double>(weights[0]) << ", " << static_cast<double>(weights[1]);
        });
    }
}

TEST(AddWeighted, WeightsAboveOneInSum_CutFloatsAtOne)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture a(5, 2, format), b(5, 2, format), out(5, 2, format);
        a.FillFloat(1.0f, 0.5f, -2.0f, 3.0f);
        b.FillFloat(1.0f, 0.25f, -1.0f, 0.0f);
        FrameBuffer to = ViewOf(out);
        ASSERT_TRUE(ImageOps().AddWeighted(ViewOf(a), ViewOf(b), to, 0.6f, 0.6f));
        EXPECT_EQ(out.Float(4, 1, PlaceOfColour(format, 0)), 1.0f);
        EXPECT_NEAR(static_cast<double>(out.Float(4, 1, PlaceOfColour(format, 1))), 0.45, 1e-7);
        EXPECT_NEAR(static_cast<double>(out.Float(4, 1, PlaceOfColour(format, 2))), -1.8, 3e-7);
        EXPECT_EQ(out.Float(4, 1, PlaceOfColour(format, 3)), 1.0f);
        // Not above 1 in sum: nothing is cut.
        ASSERT_TRUE(ImageOps().AddWeighted(ViewOf(a), ViewOf(b), to, 0.75f, 0.25f));
        EXPECT_EQ(out.Float(4, 1, PlaceOfColour(format, 3)), 2.25f);
    }
}

TEST(AddWeighted, HandComputedBytes_ComeOut)
{
    struct {
        float wa, wb;
        std::uint8_t a, b, result;
    } const cases[] = {
        {0.5f, 0.5f, 255, 0, 128},    // 0.5 * 255 + 0.5 = 128: 128 * 255 / 255
        {0.5f, 0.5f, 255, 255, 255},  // 128 + 128 is 256: cut
        {0.25f, 0.25f, 100, 200, 75}, // 64: 6400 + 12800 = 19200, / 255 = 75.3
        {0.6f, 0.6f, 200, 200, 240},  // 153: 61200 / 255
        {0.6f, 0.6f, 255, 255, 255},  // 306, cut
        {1.0f, 1.0f, 100, 100, 200},  {1.0f, 1.0f, 200, 200, 255},
        {2.0f, -3.0f, 77, 9, 77},     {kNan, 1.0f, 77, 9, 9},
    };
    for (const auto& one : cases)
        for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
            GuardedPicture a(3, 1, format), b(3, 1, format), out(3, 1, format);
            a.FillBytes(one.a);
            b.FillBytes(one.b);
            FrameBuffer to = ViewOf(out);
            ASSERT_TRUE(ImageOps().AddWeighted(ViewOf(a), ViewOf(b), to, one.wa, one.wb));
            for (int c = 0; c < 4; ++c)
                EXPECT_EQ(out.Byte(2, 0, c), one.result)
                    << static_cast<double>(one.wa) << " * " << int{one.a} << " + "
                    << static_cast<double>(one.wb) << " * " << int{one.b};
        }
}

TEST(AddWeighted, OutputThatIsOneOfThePictures_GetsTheSameResult)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const bool first : {false, true})
            ForEachVariant([&] {
                GuardedPicture a(33, 3, format), b(33, 3, format);
                a.FillNoise(1);
                b.FillNoise(2);
                Picture expected(33, 3, format);
                reference::AddWeighted(reference::Read(a), reference::Read(b), expected, 0.3f, 0.8f);
                GuardedPicture& out = first ? a : b;
                FrameBuffer to = ViewOf(out);
                ASSERT_TRUE(ImageOps().AddWeighted(ViewOf(a), ViewOf(b), to, 0.3f, 0.8f));
                ASSERT_TRUE(reference::Matches(out, expected, kRounding)) << format;
            });
}

TEST(AddWeighted, FloatsThatAreNoNumbers_DoNotSpread)
{
    GuardedPicture a(33, 2, PF_BGRA32F), b(33, 2, PF_BGRA32F);
    a.FillNoise(1, Noise::Special);
    b.FillNoise(2);
    Picture expected(33, 2, PF_BGRA32F);
    reference::AddWeighted(reference::Read(a), reference::Read(b), expected, 0.25f, 0.5f);
    ForEachVariant([&] {
        GuardedPicture out(33, 2, PF_BGRA32F);
        FrameBuffer to = ViewOf(out);
        ASSERT_TRUE(ImageOps().AddWeighted(ViewOf(a), ViewOf(b), to, 0.25f, 0.5f));
        ASSERT_TRUE(reference::Matches(out, expected, kRounding));
    });
}

TEST(AddWeighted, OtherFormatsAndNoPictures_AreFalse)
{
    ImageOps ops;
    for (const std::uint32_t format : {PF_Packed8, PF_Mask8, PF_Mask32F}) {
        GuardedPicture a(3, 3, format), out(3, 3, format);
        out.Freeze();
        FrameBuffer to = ViewOf(out);
        EXPECT_FALSE(ops.AddWeighted(ViewOf(a), ViewOf(a), to, 0.5f, 0.5f)) << format;
        out.Check();
    }
    GuardedPicture a(3, 3, PF_BGRA8), floats(3, 3, PF_BGRA32F), out(3, 3, PF_BGRA8);
    out.Freeze();
    FrameBuffer to = ViewOf(out);
    EXPECT_FALSE(ops.AddWeighted(ViewOf(a), ViewOf(floats), to, 0.5f, 0.5f));
    EXPECT_FALSE(ops.AddWeighted(ViewOf(floats), ViewOf(a), to, 0.5f, 0.5f));
    EXPECT_FALSE(ops.AddWeighted(ViewOf(floats), ViewOf(floats), to, 0.5f, 0.5f));
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(out, kind);
        EXPECT_FALSE(ops.AddWeighted(bad, ViewOf(a), to, 0.5f, 0.5f)) << kind;
        EXPECT_FALSE(ops.AddWeighted(ViewOf(a), bad, to, 0.5f, 0.5f)) << kind;
        EXPECT_FALSE(ops.AddWeighted(ViewOf(a), ViewOf(a), bad, 0.5f, 0.5f)) << kind;
    }
    out.Check();
}

// --- Mix --------------------------------------------------------------------------------------------------

TEST(Mix, EveryFormatAndWeight_IsThePlainSumInTheSecond)
{
    struct {
        int a, b;
    } const weights[] = {{128, 128}, {0, 0},     {255, 0},      {0, 255},           {127, 128},
                         {255, 255}, {100, 155}, {-5, 300},     {INT_MIN, INT_MAX}, {1, 254},
                         {128, 127}, {64, 192},  {INT_MAX, 128}};
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F, PF_Mask8})
        for (const auto& weight : weights)
            ForEachWidth([&](int width, const PictureLayout& layout) {
                GuardedPicture a(width + 1, 2, format, layout), b(width, 3, format, layout);
                a.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                b.FillNoise(2, Noise::Leaning);
                Picture expected = reference::Read(b);
                ASSERT_TRUE(reference::Mix(reference::Read(a), expected, weight.a, weight.b));
                ForEachVariant([&] {
                    GuardedPicture result(b);
                    FrameBuffer from = ViewOf(a), to = ViewOf(result);
                    ASSERT_TRUE(ImageOps().Mix(from, to, weight.a, weight.b));
                    ASSERT_TRUE(reference::Matches(result, expected, kRounding))
                        << "format " << format << ", weights " << weight.a << ", " << weight.b;
                    result.Check();
                });
                a.Check();
            });
}

TEST(Mix, HandComputedBytes_ComeOut)
{
    struct {
        std::uint32_t format;
        int wa, wb;
        std::uint8_t a, b, result;
    } const cases[] = {
        {PF_BGRA8, 128, 128, 1, 2, 2}, // 1.5: the tie goes to the even 2
        {PF_BGRA8, 128, 128, 1, 0, 0}, // 0.5
        {PF_BGRA8, 128, 128, 255, 255, 255}, {PF_Mask8, 128, 128, 255, 255, 255}, // 128 + 128 is 256: cut
        {PF_Mask8, 128, 128, 1, 2, 1}, // (128 + 0 + 1) >> 8 = 0; (256 + 1 + 1) >> 8 = 1
        {PF_ARGB8, 255, 0, 77, 9, 77},       {PF_ARGB8, 0, 255, 77, 9, 9},
        {PF_BGRA8, 255, 255, 200, 100, 255},
    };
    for (const auto& one : cases) {
        GuardedPicture a(3, 1, one.format), b(3, 1, one.format);
        a.FillBytes(one.a);
        b.FillBytes(one.b);
        FrameBuffer from = ViewOf(a), to = ViewOf(b);
        ASSERT_TRUE(ImageOps().Mix(from, to, one.wa, one.wb));
        EXPECT_EQ(b.Byte(2, 0), one.result) << one.format << ": " << int{one.a} << " with " << int{one.b};
    }
}

TEST(Mix, HalfOfFloats_IsTheMean)
{
    GuardedPicture a(2, 2, PF_BGRA32F), b(2, 2, PF_BGRA32F);
    a.FillFloat(1.0f, 0.5f, -3.0f, 8.0f);
    b.FillFloat(0.0f, 0.25f, 1.0f, 8.0f);
    FrameBuffer from = ViewOf(a), to = ViewOf(b);
    ASSERT_TRUE(ImageOps().Mix(from, to, 128, 128));
    EXPECT_EQ(b.Float(1, 1, 0), 0.5f);
    EXPECT_EQ(b.Float(1, 1, 1), 0.375f);
    EXPECT_EQ(b.Float(1, 1, 2), -1.0f);
    EXPECT_EQ(b.Float(1, 1, 3), 8.0f);
}

TEST(Mix, OtherFormatsAndNoPictures_AreFalse)
{
    ImageOps ops;
    for (const std::uint32_t format : {PF_Packed8, PF_Mask32F}) {
        GuardedPicture a(3, 3, format), b(3, 3, format);
        a.Freeze();
        b.Freeze();
        FrameBuffer from = ViewOf(a), to = ViewOf(b);
        EXPECT_FALSE(ops.Mix(from, to, 128, 128)) << format;
        EXPECT_FALSE(ops.Mix(from, to, 100, 155)) << format;
        a.Check();
        b.Check();
    }
    GuardedPicture a(3, 3, PF_BGRA8), b(3, 3, PF_BGRA8), floats(3, 3, PF_BGRA32F);
    a.Freeze();
    b.Freeze();
    floats.Freeze();
    FrameBuffer from = ViewOf(a), to = ViewOf(b), other = ViewOf(floats);
    for (const int weight : {128, 100}) {
        EXPECT_FALSE(ops.Mix(other, to, weight, weight));
        EXPECT_FALSE(ops.Mix(from, other, weight, weight));
        for (int kind = 0; kind < kBadViews; ++kind) {
            FrameBuffer bad = BadView(a, kind);
            EXPECT_FALSE(ops.Mix(bad, to, weight, weight)) << kind;
            EXPECT_FALSE(ops.Mix(from, bad, weight, weight)) << kind;
        }
    }
    a.Check();
    b.Check();
    floats.Check();
}

} // namespace
} // namespace kelmora

#include "image/primitives/colour.h"

#include <climits>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/colour.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

using reference::Picture;
using reference::TwistRows;

constexpr float kTwists[][3][4] = {
    {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}},
    {{0, 0, 1, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}}, // channels change places
    {{0.5f, 0.25f, 0.125f, 0.5f}, {1.7f, -0.4f, -0.3f, -3.5f}, {-1, -1, -1, 300}},
    {{0.299f, 0.587f, 0.114f, 0}, {-0.168736f, -0.331264f, 0.5f, 0.5f}, {0.5f, -0.418688f, -0.081312f, 0.5f}},
    {{1e38f, 1e38f, 0, 0}, {0, 0, 0, NAN}, {INFINITY, 0, 0, -1}},
};

TwistRows RowsOf(const float (&twist)[3][4])
{
    TwistRows rows{};
    for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 4; ++c)
            rows[r][c] = twist[r][c];
    return rows;
}

PxStatus Twist(const GuardedPicture& src, GuardedPicture& dst, const float (&twist)[3][4])
{
    const int w = src.Width(), h = src.Height();
    if (IsFloatFormat(src.Format()))
        return pxColorTwist_32f_A3(ElementAt<float>(src), src.Stride(), ElementAt<float>(dst), dst.Stride(),
                                   w, h, twist);
    return pxColorTwist_8u_A3(src.Row(0), src.Stride(), dst.Row(0), dst.Stride(), w, h, twist);
}

template <class Check>
void ForEachVariantAndLayout(Check&& check)
{
    ForEachVariant([&] { ForEachLayout(check); });
}

TEST(ColorTwist, EveryMember_MixesTheThreeChannelsAndLeavesTheFourth)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_BGRA8})
        for (const Noise noise : {Noise::Leaning, Noise::Special})
            for (const auto& twist : kTwists)
                for (int width = 1; width <= 33; ++width)
                    ForEachLayout([&](const PictureLayout& layout) {
                        GuardedPicture src(width, 2, format, layout), dst(width, 2, format, layout);
                        src.FillNoise(static_cast<std::uint32_t>(width), noise);
                        dst.FillNoise(2);
                        Picture expected = reference::Read(dst);
                        reference::Twist(reference::Read(src), expected, RowsOf(twist));
                        src.Freeze();
                        ForEachVariant([&] {
                            GuardedPicture to(dst);
                            ASSERT_EQ(Twist(src, to, twist), pxOk);
                            ASSERT_TRUE(reference::Matches(to, expected)) << width << ", format " << format;
                            to.Check();
                        });
                        src.Check();
                    });
}

TEST(ColorTwist, InPlace_UsesTheOldChannels)
{
    for (const auto& twist : kTwists)
        for (int width = 1; width <= 33; ++width)
            ForEachVariantAndLayout([&](const PictureLayout& layout) {
                GuardedPicture floats(width, 2, PF_BGRA32F, layout), same(width, 2, PF_BGRA32F, layout),
                    bytes(width, 2, PF_BGRA8, layout);
                floats.FillNoise(1);
                same.FillNoise(1);
                bytes.FillNoise(1);
                Picture expected = reference::Read(floats), expectedBytes = reference::Read(bytes);
                reference::Twist(reference::Read(floats), expected, RowsOf(twist));
                reference::Twist(reference::Read(bytes), expectedBytes, RowsOf(twist));
                ASSERT_EQ(pxColorTwist_32f_A3_I(ElementAt<float>(floats), floats.Stride(), width, 2, twist),
                          pxOk);
                ASSERT_TRUE(reference::Matches(floats, expected)) << width;
                ASSERT_EQ(Twist(same, same, twist), pxOk);
                ASSERT_TRUE(reference::Matches(same, expected)) << width;
                ASSERT_EQ(Twist(bytes, bytes, twist), pxOk);
                ASSERT_TRUE(reference::Matches(bytes, expectedBytes)) << width;
            });
}

TEST(ColorTwist, AlphaFirstPicture_IsServedFromItsSecondValueOn)
{
    GuardedPicture picture(5, 3, PF_ARGB32F);
    picture.FillNoise(1);
    Picture expected = reference::Read(picture);
    reference::Twist(reference::Read(picture), expected, RowsOf(kTwists[2]), 1);
    ASSERT_EQ(pxColorTwist_32f_A3_I(ElementAt<float>(picture, 0, 0, 1), picture.Stride(), 5, 3, kTwists[2]),
              pxOk);
    EXPECT_TRUE(reference::Matches(picture, expected));
    picture.Check();
}

TEST(ColorTwist, BytesAtTheEndsAndOnTies_GoAsStated)
{
    struct {
        float offset;
        int result;
    } const cases[] = {{0.5f, 0},      {1.5f, 2},   {2.5f, 2},  {0.50001f, 1}, {254.5f, 254}, {254.6f, 255},
                       {255.0f, 255},  {1e9f, 255}, {0.0f, 0},  {-0.5f, 0},    {-1e9f, 0},    {INFINITY, 255},
                       {-INFINITY, 0}, {NAN, 0},    {0.49f, 0}, {-0.0f, 0},    {253.5f, 254}, {3e38f, 255}};
    for (const auto& one : cases) {
        const float twist[3][4] = {{0, 0, 0, one.offset}, {0, 0, 0, one.offset}, {0, 0, 0, one.offset}};
        std::uint8_t pixels[8] = {1, 2, 3, 4, 5, 6, 7, 8};
        ASSERT_EQ(pxColorTwist_8u_A3(pixels, 8, pixels, 8, 2, 1, twist), pxOk);
        for (const int i : {0, 1, 2, 4, 5, 6})
            EXPECT_EQ(pixels[i], one.result) << static_cast<double>(one.offset);
        EXPECT_EQ(pixels[3], 4);
        EXPECT_EQ(pixels[7], 8);
    }
}

TEST(ColorTwist, HandComputedPixel_ComesOut)
{
    const std::uint8_t src[] = {100, 50, 200, 9};
    std::uint8_t dst[] = {0, 0, 0, 77};
    const float twist[3][4] = {{0.5f, 1, 0, 10}, {0, 0, 2, 0}, {1, -1, -1, 0}};
    ASSERT_EQ(pxColorTwist_8u_A3(src, 4, dst, 4, 1, 1, twist), pxOk);
    EXPECT_EQ(dst[0], 110);
    EXPECT_EQ(dst[1], 255); // 400
    EXPECT_EQ(dst[2], 0);   // -150
    EXPECT_EQ(dst[3], 77);
}

TEST(ColorTwist, BadArguments_AreRefused)
{
    GuardedPicture floats(5, 4, PF_BGRA32F), bytes(5, 4, PF_BGRA8), from(5, 4, PF_BGRA32F);
    floats.FillNoise(1);
    bytes.FillNoise(1);
    floats.Freeze();
    bytes.Freeze();
    float* const f = ElementAt<float>(floats);
    const float* const s = ElementAt<float>(from);
    std::uint8_t* const b = bytes.Row(0);
    const auto& twist = kTwists[1];
    EXPECT_EQ(pxColorTwist_32f_A3(nullptr, 80, f, 80, 5, 4, twist), pxNullPointer);
    EXPECT_EQ(pxColorTwist_32f_A3(s, 80, nullptr, 80, 5, 4, twist), pxNullPointer);
    EXPECT_EQ(pxColorTwist_32f_A3(s, 80, f, 80, 5, 4, nullptr), pxNullPointer);
    EXPECT_EQ(pxColorTwist_32f_A3_I(nullptr, 80, 5, 4, twist), pxNullPointer);
    EXPECT_EQ(pxColorTwist_32f_A3_I(f, 80, 5, 4, nullptr), pxNullPointer);
    EXPECT_EQ(pxColorTwist_8u_A3(nullptr, 20, b, 20, 5, 4, twist), pxNullPointer);
    EXPECT_EQ(pxColorTwist_8u_A3(b, 20, nullptr, 20, 5, 4, twist), pxNullPointer);
    EXPECT_EQ(pxColorTwist_8u_A3(b, 20, b, 20, 5, 4, nullptr), pxNullPointer);
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_EQ(pxColorTwist_32f_A3(s, 80, f, 80, bad, 4, twist), pxBadSize);
        EXPECT_EQ(pxColorTwist_32f_A3(s, 80, f, 80, 5, bad, twist), pxBadSize);
        EXPECT_EQ(pxColorTwist_32f_A3_I(f, 80, bad, 4, twist), pxBadSize);
        EXPECT_EQ(pxColorTwist_32f_A3_I(f, 80, 5, bad, twist), pxBadSize);
        EXPECT_EQ(pxColorTwist_8u_A3(b, 20, b, 20, bad, 4, twist), pxBadSize);
        EXPECT_EQ(pxColorTwist_8u_A3(b, 20, b, 20, 5, bad, twist), pxBadSize);
    }
    EXPECT_EQ(pxColorTwist_32f_A3(s, 79, f, 80, 5, 4, twist), pxBadStep);
    EXPECT_EQ(pxColorTwist_32f_A3(s, 80, f, 79, 5, 4, twist), pxBadStep);
    EXPECT_EQ(pxColorTwist_32f_A3_I(f, 79, 5, 4, twist), pxBadStep);
    EXPECT_EQ(pxColorTwist_32f_A3_I(f, 80, INT_MAX, 4, twist), pxBadStep);
    EXPECT_EQ(pxColorTwist_8u_A3(b, 19, b, 20, 5, 4, twist), pxBadStep);
    EXPECT_EQ(pxColorTwist_8u_A3(b, 20, b, 19, 5, 4, twist), pxBadStep);
    EXPECT_EQ(pxColorTwist_8u_A3(b, -20, b, 20, 5, 4, twist), pxBadStep);
    floats.Check();
    bytes.Check();
}

// --- hue, saturation, value -------------------------------------------------------------------------------

using HsvMember = decltype(&pxRGBToHSV_8u_A3);

/// 256 by 256 pixels: the first channel is the column, the second the row, the third given.
GuardedPicture Plane(int third)
{
    GuardedPicture picture(256, 256, PF_BGRA8);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) {
            std::uint8_t* pixel = picture.Row(y) + 4 * x;
            pixel[0] = static_cast<std::uint8_t>(x);
            pixel[1] = static_cast<std::uint8_t>(y);
            pixel[2] = static_cast<std::uint8_t>(third);
            pixel[3] = static_cast<std::uint8_t>(x + y);
        }
    return picture;
}

void ExpectPixel(const std::uint8_t* pixel, double first, double second, double third, int fourth,
                 const std::uint8_t* from)
{
    ASSERT_TRUE(pixel[0] == first && pixel[1] == second && pixel[2] == third && pixel[3] == fourth)
        << int{from[0]} << ", " << int{from[1]} << ", " << int{from[2]} << " gave " << int{pixel[0]} << ", "
        << int{pixel[1]} << ", " << int{pixel[2]} << ", " << int{pixel[3]} << ", expected " << first << ", "
        << second << ", " << third << ", " << fourth;
}

/// Every pair of the first two channels with a few of the third.
template <class Expect>
void CheckAllPixels(HsvMember member, Expect&& expect)
{
    for (int third = 0; third < 256; third += third < 5 || third > 249 ? 1 : 7) {
        const GuardedPicture src = Plane(third);
        ForEachVariant([&] {
            GuardedPicture dst(256, 256, PF_BGRA8);
            dst.FillBytes(0x5A);
            ASSERT_EQ(member(src.Row(0), 1024, dst.Row(0), 1024, 256, 256), pxOk);
            for (int y = 0; y < 256; ++y)
                for (int x = 0; x < 256; ++x) {
                    expect(src.Row(y) + 4 * x, dst.Row(y) + 4 * x);
                    if (testing::Test::HasFatalFailure())
                        return;
                }
        });
        if (testing::Test::HasFatalFailure())
            return;
    }
}

TEST(RGBToHSV, EveryBlueAndGreenWithManyReds_IsTheNearestToTheExactFraction)
{
    CheckAllPixels(pxRGBToHSV_8u_A3, [](const std::uint8_t* from, const std::uint8_t* to) {
        const reference::Hsv hsv = reference::ByteHsvOf(from[0], from[1], from[2]);
        ExpectPixel(to, hsv.hue, hsv.saturation, hsv.value, 0x5A, from);
    });
}

TEST(HSVToRGB, EveryHueAndSaturationWithManyValues_IsTheNearestToTheExactFraction)
{
    CheckAllPixels(pxHSVToRGB_8u_A3, [](const std::uint8_t* from, const std::uint8_t* to) {
        const reference::Colour colour = reference::ByteColourOf(from[0], from[1], from[2]);
        ExpectPixel(to, colour.blue, colour.green, colour.red, 0x5A, from);
    });
}

TEST(RGBToHSV, HandComputedColours_ComeOut)
{
    struct {
        std::uint8_t blue, green, red, hue, saturation, value;
    } const cases[] = {
        {255, 0, 0, 0, 255, 255},     // blue is the origin
        {0, 255, 0, 85, 255, 255},    // green at a third
        {0, 0, 255, 170, 255, 255},   // red at two thirds
        {0, 0, 0, 0, 0, 0},           // black
        {255, 255, 255, 0, 0, 255},   // white
        {77, 77, 77, 0, 0, 77},       // grey
        {255, 255, 0, 42, 255, 255},  // blue wins the draw: 42.5, the tie to even
        {0, 255, 255, 128, 255, 255}, // green wins: 2 + 1 sixths, 127.5
        {255, 0, 255, 212, 255, 255}, // blue wins: -1 sixth is 5 sixths, 212.5
        {200, 100, 50, 14, 191, 200}, // 50 / 150 of a sixth: 14.17; 255 * 150 / 200 = 191.25
        {10, 20, 40, 156, 191, 40},   // 4 - 10 / 30 sixths: 155.83; 191.25
    };
    for (const auto& one : cases) {
        const std::uint8_t src[4] = {one.blue, one.green, one.red, 1};
        std::uint8_t dst[4] = {0, 0, 0, 99};
        ASSERT_EQ(pxRGBToHSV_8u_A3(src, 4, dst, 4, 1, 1), pxOk);
        EXPECT_EQ(dst[0], one.hue) << int{one.blue} << " " << int{one.green} << " " << int{one.red};
        EXPECT_EQ(dst[1], one.saturation) << int{one.blue} << " " << int{one.green} << " " << int{one.red};
        EXPECT_EQ(dst[2], one.value);
        EXPECT_EQ(dst[3], 99);
    }
}

TEST(HSVToRGB, HandComputedColours_ComeOut)
{
    struct {
        std::uint8_t hue, saturation, value, blue, green, red;
    } const cases[] = {
        {0, 255, 255, 255, 0, 0},     {85, 255, 255, 0, 255, 0}, {170, 255, 255, 0, 0, 255},
        {200, 0, 50, 50, 50, 50},     {0, 255, 0, 0, 0, 0},      {255, 255, 255, 255, 0, 0}, // a full turn
        {42, 255, 255, 255, 252, 0},  // 84 / 85 of a sixth, times 255
        {43, 255, 255, 252, 255, 0},  // 2 - 86 / 85 = 84 / 85
        {0, 128, 200, 200, 100, 100}, // (255 - 128) * 200 / 255 = 99.6
    };
    for (const auto& one : cases) {
        const std::uint8_t src[4] = {one.hue, one.saturation, one.value, 1};
        std::uint8_t dst[4] = {0, 0, 0, 99};
        ASSERT_EQ(pxHSVToRGB_8u_A3(src, 4, dst, 4, 1, 1), pxOk);
        EXPECT_EQ(dst[0], one.blue) << int{one.hue} << " " << int{one.saturation} << " " << int{one.value};
        EXPECT_EQ(dst[1], one.green) << int{one.hue} << " " << int{one.saturation} << " " << int{one.value};
        EXPECT_EQ(dst[2], one.red) << int{one.hue} << " " << int{one.saturation} << " " << int{one.value};
        EXPECT_EQ(dst[3], 99);
    }
}

void CheckHsvMember(const char* name, HsvMember member, bool inverse)
{
    SCOPED_TRACE(name);
    for (int width = 1; width <= 33; ++width)
        ForEachVariantAndLayout([&](const PictureLayout& layout) {
            GuardedPicture src(width, 3, PF_BGRA8, layout), dst(width, 3, PF_BGRA8, layout);
            src.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
            dst.FillNoise(2);
            const Picture from = reference::Read(src);
            Picture expected = reference::Read(dst), inPlace = from;
            for (Picture* picture : {&expected, &inPlace})
                for (int y = 0; y < 3; ++y)
                    for (int x = 0; x < width; ++x) {
                        int v[3];
                        for (int c = 0; c < 3; ++c)
                            v[c] = static_cast<int>(from.At(x, y, c));
                        const reference::Hsv hsv = reference::ByteHsvOf(v[0], v[1], v[2]);
                        const reference::Colour colour = reference::ByteColourOf(v[0], v[1], v[2]);
                        picture->At(x, y, 0) = inverse ? colour.blue : hsv.hue;
                        picture->At(x, y, 1) = inverse ? colour.green : hsv.saturation;
                        picture->At(x, y, 2) = inverse ? colour.red : hsv.value;
                    }
            ASSERT_EQ(member(src.Row(0), src.Stride(), dst.Row(0), dst.Stride(), width, 3), pxOk);
            ASSERT_TRUE(reference::Matches(dst, expected)) << width;
            ASSERT_EQ(member(src.Row(0), src.Stride(), src.Row(0), src.Stride(), width, 3), pxOk);
            ASSERT_TRUE(reference::Matches(src, inPlace)) << width << " in place";
            src.Check();
            dst.Check();
        });

    GuardedPicture src(5, 4, PF_BGRA8), dst(5, 4, PF_BGRA8);
    dst.Freeze();
    const std::uint8_t* s = src.Row(0);
    std::uint8_t* d = dst.Row(0);
    EXPECT_EQ(member(nullptr, 20, d, 20, 5, 4), pxNullPointer);
    EXPECT_EQ(member(s, 20, nullptr, 20, 5, 4), pxNullPointer);
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_EQ(member(s, 20, d, 20, bad, 4), pxBadSize);
        EXPECT_EQ(member(s, 20, d, 20, 5, bad), pxBadSize);
    }
    for (const int bad : {19, 0, -20}) {
        EXPECT_EQ(member(s, bad, d, 20, 5, 4), pxBadStep);
        EXPECT_EQ(member(s, 20, d, bad, 5, 4), pxBadStep);
    }
    EXPECT_EQ(member(s, 20, d, 20, INT_MAX, 4), pxBadStep);
    dst.Check();
}

TEST(Hsv, EveryByteMember_StaysInsideItsRegionAndRefusesBadArguments)
{
    CheckHsvMember("pxRGBToHSV_8u_A3", pxRGBToHSV_8u_A3, false);
    CheckHsvMember("pxHSVToRGB_8u_A3", pxHSVToRGB_8u_A3, true);
}

} // namespace
} // namespace kelmora

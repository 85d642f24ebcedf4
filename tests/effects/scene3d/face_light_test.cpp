#include "effects/scene3d/face_light.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/variants.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(3);
    return picture;
}

FrameBuffer ViewOf(const GuardedPicture& picture)
{
    FrameBuffer view;
    const VideoFrame frame = picture.Frame();
    view.AttachFrame(&frame);
    return view;
}

/// All 256 bytes in each channel, in a row that is no whole number of vectors.
GuardedPicture AllBytes(std::uint32_t format)
{
    GuardedPicture picture(256 + 7, 2, format, {.slack = 12, .shift = 4});
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < 4; ++c)
                picture.SetByte(x, y, c, static_cast<std::uint8_t>(x + 61 * c + 17 * y));
    return picture;
}

void Light(const GuardedPicture& picture, double light)
{
    FrameBuffer view = ViewOf(picture);
    ApplyLight(view, light);
    picture.Check();
}

/// The ends, even steps, and lights for which some byte comes next to a half, where single precision may round to
/// another side.
std::vector<double> ManyLights()
{
    std::vector<double> lights = {0.0,    std::nextafter(1.0, 0.0), 0.15, 0.5, 0.99,
                                  1e-300, 0.0019607843137254902};
    for (int i = 0; i < 1000; ++i)
        lights.push_back(i / 1000.0);
    std::mt19937 random(3);
    for (int i = 0; i < 600; ++i) {
        const double byte = static_cast<double>(random() % 255 + 1);
        const double half = (static_cast<double>(random() % static_cast<unsigned>(byte)) + 0.5) / byte;
        for (const double ulps : {-3e8, -1.0, 0.0, 1.0, 3e8})
            if (const double light = half * (1.0 + ulps * 1.1102230246251565e-16); light < 1.0)
                lights.push_back(light);
    }
    return lights;
}

// --- the light curve ---------------------------------------------------------------------------------------------

TEST(LightFactors, OfAlphaIsOne)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F})
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(LightFactors(format, 0.3).values[c], c == PlaceOfColour(format, 3) ? 1.0f : 0.3f);
}

TEST(ApplyLight, EveryByteInEveryLight_IsTheRoundedProduct)
{
    const std::vector<double> lights = ManyLights();
    ForEachVariant([&] {
        for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
            const GuardedPicture before = AllBytes(format);
            const int alpha = PlaceOfColour(format, 3);
            for (const double light : lights) {
                const GuardedPicture lit = before;
                Light(lit, light);
                for (int y = 0; y < lit.Height(); ++y)
                    for (int x = 0; x < lit.Width(); ++x)
                        for (int c = 0; c < 4; ++c) {
                            const int was = before.Byte(x, y, c);
                            const int expected = c == alpha ? was : static_cast<int>(was * light + 0.5);
                            ASSERT_EQ(lit.Byte(x, y, c), expected)
                                << was << " in light " << light << ", channel " << c;
                        }
            }
        }
    });
}

// 100 * 0.505 is 50.5, which goes up; 255 * 0.5 is 127.5.
TEST(CopyLit, EveryFormat_IsTheLitCopyOfAnUntouchedPicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const double light : {0.0, 0.3, 0.505, 0.98 / 510.0, 0.9999999999}) {
            GuardedPicture before(37, 5, format, {.slack = 16, .shift = 4});
            before.FillNoise(4);
            before.Freeze();
            const GuardedPicture lit(before), copy(37, 5, format);
            Light(lit, light);
            const VideoFrame from = before.Frame(), to = copy.Frame();
            FrameBuffer picture, result;
            picture.AttachFrame(&from);
            result.AttachFrame(&to);
            CopyLit(picture, result, light);
            EXPECT_TRUE(Equal(copy, lit)) << FormatName(format) << ", " << light;
            before.Check();
        }
}

TEST(ApplyLight, HandComputedBytes_ComeOut)
{
    GuardedPicture picture(1, 1, PF_BGRA8);
    picture.Fill(255, 101, 1, 77);
    Light(picture, 0.5);
    EXPECT_EQ(picture.Byte(0, 0, 0), 128);
    EXPECT_EQ(picture.Byte(0, 0, 1), 51);
    EXPECT_EQ(picture.Byte(0, 0, 2), 1);
    EXPECT_EQ(picture.Byte(0, 0, 3), 77);
    picture.Fill(255, 101, 1, 77);
    Light(picture, 0.0);
    for (int c = 0; c < 3; ++c)
        EXPECT_EQ(picture.Byte(0, 0, c), 0);
    EXPECT_EQ(picture.Byte(0, 0, 3), 77);
}

TEST(ApplyLight, Floats_AreMultipliedInSinglePrecision)
{
    ForEachVariant([] {
        for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F})
            for (const double light : {0.0, 0.1, 0.5, 0.7071, 0.9999999999}) {
                GuardedPicture before(11, 3, format, {.slack = 16, .shift = 4});
                before.FillNoise(1, Noise::Positive);
                before.SetFloat(2, 1, 1, -3.5f);
                const GuardedPicture lit = before;
                Light(lit, light);
                const int alpha = PlaceOfColour(format, 3);
                for (int y = 0; y < 3; ++y)
                    for (int x = 0; x < 11; ++x)
                        for (int c = 0; c < 4; ++c) {
                            const float was = before.Float(x, y, c);
                            EXPECT_EQ(lit.Float(x, y, c), c == alpha ? was : was * static_cast<float>(light));
                        }
            }
    });
}

TEST(ApplyLight, Packed8_ChangesTheFirstByteOfAPixelAlone)
{
    for (const std::int32_t pixelBytes : {1, 2, 4}) {
        GuardedPicture before(40, 3, pixelBytes, PF_Packed8);
        for (int y = 0; y < 3; ++y)
            for (int i = 0; i < 40 * pixelBytes; ++i)
                before.Row(y)[i] = static_cast<std::uint8_t>(31 * i + 7 * y);
        const GuardedPicture lit = before;
        Light(lit, 0.3);
        for (int y = 0; y < 3; ++y)
            for (int i = 0; i < 40 * pixelBytes; ++i) {
                const int was = before.Row(y)[i];
                EXPECT_EQ(lit.Row(y)[i], i % pixelBytes == 0 ? static_cast<int>(was * 0.3 + 0.5) : was);
            }
    }
}

TEST(ApplyLight, LightThatNoFaceHas_SaturatesBytes)
{
    struct Case {
        double light;
        int of100, of1; // what these bytes become
    };
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr Case cases[] = {
        {2.0, 200, 2},
        {3.0, 255, 3},
        {1e300, 255, 255},
        {infinity, 255, 255},
        {-1.0, 0, 0},
        {-infinity, 0, 0},
        {std::numeric_limits<double>::quiet_NaN(), 0, 0},
    };
    ForEachVariant([&] {
        for (const Case& one : cases) {
            GuardedPicture picture(9, 2, PF_BGRA8);
            picture.Fill(100, 1, 100, 77);
            Light(picture, one.light);
            EXPECT_EQ(picture.Row(1)[8 * 4], one.of100) << one.light;
            EXPECT_EQ(picture.Row(1)[8 * 4 + 1], one.of1) << one.light;
            EXPECT_EQ(picture.Row(1)[8 * 4 + 3], 77) << one.light;
        }
    });
}

TEST(ApplyLight, Packed8WithoutBytesInAPixel_ChangesNothing)
{
    for (const std::int32_t pixelBytes : {0, -1, -4, std::numeric_limits<std::int32_t>::min()}) {
        GuardedPicture picture(9, 5, 4, PF_Packed8);
        picture.FillBytes(90);
        const GuardedPicture before = picture;
        FrameBuffer view;
        view.Attach(picture.Row(0), 9, 5, picture.Stride(), pixelBytes, PF_Packed8, false);
        ApplyLight(view, 0.5);
        EXPECT_TRUE(Equal(picture, before)) << pixelBytes;
    }
}

TEST(ApplyLight, OtherFormatsAndSizes_ChangeNothing)
{
    for (const std::uint32_t format : {5u, 6u, 7u, 8u, 0xFFFFFFFFu})
        for (const std::int32_t pixelBytes : {1, 4, 16}) {
            GuardedPicture picture(9, 5, pixelBytes, PF_BGRA8);
            picture.FillBytes(90);
            const GuardedPicture before = picture;
            FrameBuffer view;
            view.Attach(picture.Row(0), 9, 5, picture.Stride(), pixelBytes, format, false);
            ApplyLight(view, 0.5);
            EXPECT_TRUE(Equal(picture, before)) << format;
        }
    GuardedPicture picture(9, 5, PF_BGRA8);
    picture.FillBytes(90);
    const GuardedPicture before = picture;
    FrameBuffer floats, narrow, empty;
    floats.Attach(picture.Row(0), 9, 5, picture.Stride(), 4, PF_BGRA32F, false); // sizes that disagree
    narrow.Attach(picture.Row(0), 9, 5, 8, 4, PF_BGRA8, false);                  // rows that overlap
    for (FrameBuffer* view : {&floats, &narrow, &empty})
        ApplyLight(*view, 0.5);
    EXPECT_TRUE(Equal(picture, before));
}

// --- the mean brightness -------------------------------------------------------------------------------------------

GuardedPicture White(std::int32_t width, std::int32_t height, std::uint32_t format)
{
    GuardedPicture picture(width, height, format);
    picture.Fill(255, 255, 255, 255);
    return picture;
}

TEST(AverageBrightness, OneColour_IsItsLuminance)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        // 76 * 255 + 149 * 255 + 30 * 255 is 255 * 255; over 256 that is 254.
        EXPECT_EQ(AverageBrightness(ViewOf(White(8, 6, format)), 0, 0, 8, 6), 254);
        GuardedPicture picture(8, 6, format);
        picture.Fill(0, 0, 200, 9); // red: 15200 / 256
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 1, 1, 3, 2), 59);
        picture.Fill(0, 200, 0, 9); // green: 29800 / 256
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 1, 1, 3, 2), 116);
        picture.Fill(200, 0, 0, 9); // blue: 6000 / 256
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 1, 1, 3, 2), 23);
    }
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture picture(8, 6, format);
        picture.FillFloat(1, 1, 1, 0); // 0.997 * 255 is 254.2
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 8, 6), 254);
        picture.FillFloat(0, 0, 0.5f, 1); // 0.149 * 255 is 37.995
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 8, 6), 37);
        picture.FillFloat(0, 0.5f, 0, 1); // 0.293 * 255 is 74.7
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 8, 6), 74);
        picture.FillFloat(0.5f, 0, 0, 1); // 0.0565 * 255 is 14.4
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 8, 6), 14);
    }
}

TEST(AverageBrightness, APart_CountsItsPixelsAlone)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture picture = White(8, 6, format);
        for (int y = 2; y < 4; ++y)
            for (int x = 1; x < 4; ++x)
                picture.SetColour(x, y, 0, 0, 0, 255);
        const FrameBuffer view = ViewOf(picture);
        EXPECT_EQ(AverageBrightness(view, 1, 2, 3, 2), 0);
        EXPECT_EQ(AverageBrightness(view, 4, 2, 3, 2), 254);
        EXPECT_EQ(AverageBrightness(view, 1, 1, 3, 3), 84) << "254 * 3 / 9, 84.7 of floats";
    }
}

TEST(AverageBrightness, Bytes_AreCutPixelByPixel)
{
    // (76 + 149 + 30) * 1 is 255, less than one level, in each of the pixels.
    GuardedPicture picture(4, 4, PF_BGRA8);
    picture.Fill(1, 1, 1, 255);
    EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 4, 4), 0);
}

TEST(AverageBrightness, Packed8_IsTheMeanOfTheFirstBytes)
{
    GuardedPicture picture(4, 2, 2, PF_Packed8);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) {
            picture.Row(y)[2 * x] = static_cast<std::uint8_t>(10 * x + y);
            picture.Row(y)[2 * x + 1] = 255;
        }
    // (0 + 10 + 20 + 30) * 2 + 4 is 124, over 8.
    EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 4, 2), 15);
    EXPECT_EQ(AverageBrightness(ViewOf(picture), 2, 1, 2, 1), 26);
}

TEST(AverageBrightness, Kept_APartOverTheEdge_IsDividedByTheWholeArea)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture picture = White(8, 6, format);
        const FrameBuffer view = ViewOf(picture);
        EXPECT_EQ(AverageBrightness(view, 4, 0, 8, 6), 127) << "half of it is there";
        EXPECT_EQ(AverageBrightness(view, 6, 4, 4, 4), 63) << "a quarter";
        EXPECT_EQ(AverageBrightness(view, 8, 0, 4, 4), 0) << "none";
        EXPECT_EQ(AverageBrightness(view, 0, 6, 4, 4), 0);
        EXPECT_EQ(AverageBrightness(view, 1000, 1000, 4, 4), 0);
    }
}

TEST(AverageBrightness, WildParts_StayInsideThePicture)
{
    constexpr int most = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    constexpr int ends[] = {least, -1, 0, 1, 5, most};
    for (const std::uint32_t format : kPictureFormats)
        for (const Guard guard : {Guard::PageEnd, Guard::PageStart}) {
            GuardedPicture picture(7, 5, format, {.guard = guard});
            picture.Fill(255, 255, 255, 255);
            const FrameBuffer view = ViewOf(picture);
            for (const int x : ends)
                for (const int y : ends)
                    for (const int width : ends)
                        for (const int height : ends) {
                            const int mean = AverageBrightness(view, x, y, width, height);
                            if (width < 1 || height < 1 || width == most || height == most || x == most
                                || y == most) {
                                EXPECT_EQ(mean, 0);
                            }
                        }
        }
}

TEST(AverageBrightness, NothingToSum_IsZero)
{
    const GuardedPicture picture = White(8, 6, PF_BGRA8);
    EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 0, 6), 0);
    EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 8, -1), 0);
    EXPECT_EQ(AverageBrightness(FrameBuffer(), 0, 0, 8, 6), 0);
    for (const std::uint32_t format : {5u, 6u, 7u, 0xFFFFFFFFu}) {
        FrameBuffer view;
        view.Attach(picture.Row(0), 8, 6, picture.Stride(), 4, format, false);
        EXPECT_EQ(AverageBrightness(view, 0, 0, 8, 6), 0) << format;
    }
}

TEST(FindBrightness, ManyParts_AreWhatEachIsForItself)
{
    // Of all sizes, over the edges and beyond them, more than fit side by side.
    const GuardedPicture pictures[] = {Noisy(50, 40, PF_BGRA32F), Noisy(41, 30, PF_ARGB32F),
                                       Noisy(50, 40, PF_BGRA8), Noisy(9, 9, PF_Packed8)};
    std::vector<FrameBuffer> views;
    for (const GuardedPicture& picture : pictures)
        views.push_back(ViewOf(picture));
    std::vector<Brightness> parts;
    for (int i = 0; i < 200; ++i)
        parts.push_back({&views[static_cast<std::size_t>(i * 7 % 11 % 4)],
                         {i * 13 % 60 - 4, i * 5 % 50 - 4, i * 17 % 23, i * 11 % 19}});
    FindBrightness(parts);
    for (const Brightness& found : parts) {
        const SourceRect& part = found.part;
        EXPECT_EQ(found.mean, AverageBrightness(*found.picture, part.x, part.y, part.width, part.height));
    }
    FindBrightness({});
}

TEST(AverageBrightness, FloatsBeyondTheScale_AreCutToIt)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture picture(8, 6, format);
        picture.FillFloat(4, 4, 4, 1);
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 8, 6), 255);
        picture.FillFloat(-4, -4, -4, 1);
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 8, 6), 0);
        constexpr float infinity = std::numeric_limits<float>::infinity();
        picture.FillFloat(infinity, infinity, infinity, 1);
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 8, 6), 255);
        picture.SetFloat(3, 3, 1, std::numeric_limits<float>::quiet_NaN());
        EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 8, 6), 0);
    }
}

// The sum of 254 per pixel passes 2^32 after 16 909 320 pixels. Of 4200 * 4100 = 17 220 000 pixels 17 220 000 * 254
// - 2^32 = 78 912 704 is left, 4 per pixel.
TEST(AverageBrightness, TheSumOfAVeryLargePart_WrapsIn32Bits)
{
    GuardedPicture picture(4200, 4100, PF_BGRA8);
    picture.FillBytes(255);
    EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, 4200, 4100), 4);
}

TEST(AverageBrightness, EveryVariantAndWidth_SumsAlike)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (int width = 1; width <= 70; ++width) {
            GuardedPicture picture(width, 3, format, {.guard = Guard::PageEnd});
            picture.FillNoise(static_cast<std::uint32_t>(width));
            int sum = 0;
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < width; ++x) {
                    const auto colour = [&](int c) {
                        return int{picture.Byte(x, y, PlaceOfColour(format, c))};
                    };
                    sum += (76 * colour(2) + 149 * colour(1) + 30 * colour(0)) / 256;
                }
            ForEachVariant([&] {
                EXPECT_EQ(AverageBrightness(ViewOf(picture), 0, 0, width, 3), sum / (3 * width)) << width;
            });
        }
}

} // namespace
} // namespace kelmora

#include "image/primitives/resize.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/picture.h"
#include "tests/reference/resize.h"

namespace kelmora {
namespace {

using reference::Picture;

constexpr std::uint32_t kFormats[] = {PF_Mask8, PF_BGRA8, PF_Mask32F, PF_BGRA32F}; // one for each member
constexpr int kCodes[] = {pxNearest, pxLinear, pxCubic, pxAverage, pxLanczos};
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

/// The arguments of one call, of the member for `format`.
struct Call {
    std::uint32_t format;
    const void* src;
    int srcWidth, srcHeight, srcStep;
    PxRect region;
    void* dst;
    int dstStep, dstWidth, dstHeight;
    double xFactor, yFactor;
    int code;

    template <class T, class Member>
    PxStatus RunMember(Member member) const
    {
        return member(static_cast<const T*>(src), srcWidth, srcHeight, srcStep, region, static_cast<T*>(dst),
                      dstStep, dstWidth, dstHeight, xFactor, yFactor, code);
    }

    PxStatus Run() const
    {
        switch (format) {
        case PF_Mask8:
            return RunMember<std::uint8_t>(pxResize_8u_C1);
        case PF_BGRA8:
            return RunMember<std::uint8_t>(pxResize_8u_C4);
        case PF_Mask32F:
            return RunMember<float>(pxResize_32f_C1);
        default:
            return RunMember<float>(pxResize_32f_C4);
        }
    }
};

Call CallOn(const GuardedPicture& src, PxRect region, const GuardedPicture& dst, double xFactor,
            double yFactor, int code)
{
    return {src.Format(), src.Row(0),  src.Width(),  src.Height(), src.Stride(), region, dst.Row(0),
            dst.Stride(), dst.Width(), dst.Height(), xFactor,      yFactor,      code};
}

PxRect WholeOf(const GuardedPicture& picture)
{
    return {0, 0, picture.Width(), picture.Height()};
}

/// How far a result may lie from the exact value; sources hold bytes, or floats from 0 to 1.
///
/// Bytes round to nearest once at the end, so half a level, and some more for weights of single precision;
/// linear bytes are exact. For floats each operation of single precision may be off by 2^-24 of what it
/// gives. Per axis the weight, the product and the sum of `taps` add up to taps + 1 of these; two axes
/// double them, and negative lobes raise them by the sum of the weights' magnitudes over both axes (at most
/// 1.25^2 for cubic, 1.3^2 for Lanczos).
double ToleranceOf(std::uint32_t format, int code)
{
    if (code == pxNearest || (code == pxLinear && !IsFloatFormat(format)))
        return 0.0;
    if (!IsFloatFormat(format))
        return 0.502;
    const double unit = std::ldexp(1.0, -24);
    return (code == pxLinear ? 8 : code == pxCubic ? 16 : 24) * unit;
}

/// Calls the member with every variant; compares all of the destination with the plain version, and the variants
/// bit for bit with each other.
void CheckAgainstPlain(GuardedPicture& src, PxRect region, GuardedPicture& dst, double xFactor,
                       double yFactor, int code, Noise noise = Noise::Uniform)
{
    if (testing::Test::HasFatalFailure())
        return; // one message is enough
    src.Thaw();
    src.FillNoise(1, noise);
    src.Freeze();
    dst.FillNoise(2);
    Picture expected = reference::Read(dst);
    reference::Resize(reference::Read(src), {region.x, region.y, region.width, region.height}, expected,
                      xFactor, yFactor, code);
    std::vector<GuardedPicture> results;
    ForEachVariant([&] {
        GuardedPicture& result = results.emplace_back(dst);
        ASSERT_EQ(CallOn(src, region, result, xFactor, yFactor, code).Run(), pxOk);
        ASSERT_TRUE(reference::Matches(result, expected, 0.0, ToleranceOf(src.Format(), code)))
            << "format " << src.Format() << ", " << src.Width() << " x " << src.Height() << ", region at "
            << region.x << ", " << region.y << " of " << region.width << " x " << region.height
            << ", factors " << xFactor << ", " << yFactor << ", code " << code << ", variant "
            << static_cast<int>(CurrentVariant());
        ASSERT_TRUE(Equal(result, results.front())) << "variant " << static_cast<int>(CurrentVariant());
        result.Check();
    });
    src.Check();
}

/// A plane with the same row everywhere, resized along x alone; one row of the result, all of them alike.
template <class T>
std::vector<T> ResizedRow(const std::vector<T>& row, int height, double xFactor, int dstWidth, int code,
                          bool turned = false)
{
    const int width = static_cast<int>(row.size());
    GuardedPicture src(turned ? height : width, turned ? width : height, FormatOf<T>(1));
    GuardedPicture dst(turned ? height : dstWidth, turned ? dstWidth : height, FormatOf<T>(1));
    for (int y = 0; y < src.Height(); ++y)
        for (int x = 0; x < src.Width(); ++x)
            *ElementAt<T>(src, x, y) = row[static_cast<std::size_t>(turned ? y : x)];
    EXPECT_EQ(CallOn(src, WholeOf(src), dst, turned ? 1.0 : xFactor, turned ? xFactor : 1.0, code).Run(),
              pxOk);
    std::vector<T> result;
    for (int i = 0; i < dstWidth; ++i) {
        result.push_back(*ElementAt<T>(dst, turned ? 0 : i, turned ? i : 0));
        for (int other = 1; other < height; ++other)
            EXPECT_EQ(*ElementAt<T>(dst, turned ? other : i, turned ? i : other), result.back());
    }
    return result;
}

using Bytes = std::vector<std::uint8_t>;
using Floats = std::vector<float>;

void ExpectNear(const Floats& actual, const std::vector<double>& expected, double tolerance)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
        EXPECT_NEAR(static_cast<double>(actual[i]), expected[i], tolerance) << i;
}

// --- numbers worked out by hand ---------------------------------------------------------------------------

TEST(Resize, Nearest_TruncatesPositionsOverTheFactor)
{
    // i / (5 / 3): 0, 0.6, 1.2, 1.8, 2.4. i / 0.4: 0, 2.5.
    for (const bool turned : {false, true}) {
        EXPECT_EQ(ResizedRow<std::uint8_t>({10, 20, 30}, 3, 5.0 / 3.0, 5, pxNearest, turned),
                  (Bytes{10, 10, 20, 20, 30}));
        EXPECT_EQ(ResizedRow<float>({1, 2, 3, 4, 5}, 2, 0.4, 2, pxNearest, turned), (Floats{1, 3}));
    }
}

TEST(Resize, Linear_FirstAndLastPixelsLandOnEachOther)
{
    // Positions 0, 1/3, 2/3, 1.
    for (const bool turned : {false, true}) {
        EXPECT_EQ(ResizedRow<std::uint8_t>({0, 100}, 2, 2.0, 4, pxLinear, turned), (Bytes{0, 33, 67, 100}));
        ExpectNear(ResizedRow<float>({0, 3}, 2, 2.0, 4, pxLinear, turned), {0, 1, 2, 3}, 1e-6);
    }
}

TEST(Resize, Linear_LengthThatIsNotWhole_SpacesPositionsByAllOfIt)
{
    // 4 * 1.7 = 6.8: six pixels, at i * 3 / 5.8. With 58 levels from pixel to pixel that is 30 from result to result.
    for (const bool turned : {false, true})
        EXPECT_EQ(ResizedRow<std::uint8_t>({0, 58, 116, 174}, 4, 1.7, 6, pxLinear, turned),
                  (Bytes{0, 30, 60, 90, 120, 150}));
}

TEST(Resize, LinearBytes_RoundHalvesUp)
{
    for (const bool turned : {false, true}) {
        EXPECT_EQ(ResizedRow<std::uint8_t>({0, 1}, 2, 1.5, 3, pxLinear, turned), (Bytes{0, 1, 1}));
        EXPECT_EQ(ResizedRow<std::uint8_t>({2, 3}, 2, 1.5, 3, pxLinear, turned), (Bytes{2, 3, 3}));
        EXPECT_EQ(ResizedRow<std::uint8_t>({255, 0}, 2, 1.5, 3, pxLinear, turned), (Bytes{255, 128, 0}));
    }
}

TEST(Resize, LinearBytes_RoundOnceForBothAxes)
{
    // A quarter in the middle; a row rounded by itself would be 1, and so would the middle.
    GuardedPicture src(2, 2, PF_Mask8), dst(3, 3, PF_Mask8);
    src.SetByte(1, 0, 0, 1);
    ASSERT_EQ(CallOn(src, WholeOf(src), dst, 1.5, 1.5, pxLinear).Run(), pxOk);
    const int expected[3][3] = {{0, 1, 1}, {0, 0, 1}, {0, 0, 0}};
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(dst.Byte(x, y), expected[y][x]) << x << ", " << y;
}

TEST(Resize, LinearBytes_WeightsHave14Bits)
{
    // Positions i / 6. 5/6 of 16384 is 13653.33, so 13653; 255 * 13653 / 16384 = 212.495, which is 212,
    // while 255 * 5/6 = 212.5 would be 213. The others: 42.505, 84.997, 127.5, 170.003.
    for (const bool turned : {false, true})
        EXPECT_EQ(ResizedRow<std::uint8_t>({0, 255}, 2, 3.5, 7, pxLinear, turned),
                  (Bytes{0, 43, 85, 128, 170, 212, 255}));
}

TEST(Resize, Cubic_IsCatmullRomWithEdgePixelsRepeated)
{
    // Half way the taps are -1/16, 9/16, 9/16, -1/16.
    // At 0.5: (9 * 0 + 9 * 16 - 64) / 16 = 5; at 1.5: (9 * 16 + 9 * 64) / 16 = 45;
    // at 2.5: (-16 + 9 * 64) / 16 = 35.
    for (const bool turned : {false, true}) {
        EXPECT_EQ(ResizedRow<std::uint8_t>({0, 16, 64, 0}, 4, 1.75, 7, pxCubic, turned),
                  (Bytes{0, 5, 16, 45, 64, 35, 0}));
        ExpectNear(ResizedRow<float>({0, 16, 64, 0}, 4, 1.75, 7, pxCubic, turned), {0, 5, 16, 45, 64, 35, 0},
                   1e-4);
    }
}

TEST(Resize, CubicOvershoot_SaturatesBytesAndStaysInFloats)
{
    // At 0.5: -1/16 + 9/16 = 1/2; at 1.5: 18/16; next to a flat 0 -1/16.
    EXPECT_EQ(ResizedRow<std::uint8_t>({0, 255, 255, 0}, 4, 1.75, 7, pxCubic),
              (Bytes{0, 128, 255, 255, 255, 128, 0}));
    EXPECT_EQ(ResizedRow<std::uint8_t>({0, 0, 255, 255}, 4, 1.75, 7, pxCubic),
              (Bytes{0, 0, 0, 128, 255, 255, 255}));
    ExpectNear(ResizedRow<float>({0, 1, 1, 0}, 4, 1.75, 7, pxCubic), {0, 0.5, 1, 1.125, 1, 0.5, 0}, 1e-6);
    ExpectNear(ResizedRow<float>({0, 0, 1, 1}, 4, 1.75, 7, pxCubic), {0, -0.0625, 0, 0.5, 1, 1.0625, 1},
               1e-6);
}

TEST(Resize, CubicAndLanczosBytes_AreWithinOneLevelOfExactSampling)
{
    // Floats of the same levels have weights in double. Six weights a 32768th off, and the largest by their sum,
    // make at most 255 * 12 / 32768 per axis: 0.19 on top of the half level of rounding.
    for (const int code : {pxCubic, pxLanczos}) {
        GuardedPicture bytes(61, 47, PF_BGRA8), levels(61, 47, PF_BGRA32F);
        bytes.FillNoise(3);
        for (int y = 0; y < bytes.Height(); ++y)
            for (int i = 0; i < bytes.Width() * 4; ++i)
                reinterpret_cast<float*>(levels.Row(y))[i] = static_cast<float>(bytes.Row(y)[i]);
        GuardedPicture byteResult(83, 71, PF_BGRA8), result(83, 71, PF_BGRA32F);
        ASSERT_EQ(CallOn(bytes, WholeOf(bytes), byteResult, 83.0 / 61.0, 71.0 / 47.0, code).Run(), pxOk);
        ASSERT_EQ(CallOn(levels, WholeOf(levels), result, 83.0 / 61.0, 71.0 / 47.0, code).Run(), pxOk);
        for (int y = 0; y < 71; ++y)
            for (int i = 0; i < 83 * 4; ++i) {
                const double exact = std::clamp(
                    static_cast<double>(reinterpret_cast<const float*>(result.Row(y))[i]), 0.0, 255.0);
                EXPECT_NEAR(byteResult.Row(y)[i], exact, 0.7) << code << " at " << i << ", " << y;
            }
    }
}

TEST(Resize, Lanczos_HasThreeLobesAndTapsThatSumTo1)
{
    // Half way the lobes are 0.607927, -0.135095, 0.024317 (6 / pi^2, -4 / (3 pi^2), 6 / (25 pi^2)), twice
    // each; over their sum, 0.994298, they are 0.611413, -0.135870, 0.024457.
    const double near = 0.611413, middle = -0.135870, far = 0.024457;
    for (const bool turned : {false, true}) {
        ExpectNear(ResizedRow<float>({0, 0, 0, 1, 0, 0, 0, 0}, 8, 1.875, 15, pxLanczos, turned),
                   {0, far, 0, middle, 0, near, 1, near, 0, middle, 0, far, 0, 0, 0}, 2e-6);
        // The edge pixel stands for those beyond: at 0.5 it has three taps.
        ExpectNear(ResizedRow<float>({1, 0, 0, 0, 0, 0, 0, 0}, 8, 1.875, 15, pxLanczos, turned),
                   {1, near + middle + far, 0, middle + far, 0, far, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 4e-6);
    }
    // 200 * 0.611413 = 122.28, 200 * 0.024457 = 4.89.
    EXPECT_EQ(ResizedRow<std::uint8_t>({0, 0, 0, 200, 0, 0, 0, 0}, 8, 1.875, 15, pxLanczos),
              (Bytes{0, 5, 0, 0, 0, 122, 200, 122, 0, 0, 0, 5, 0, 0, 0}));
}

TEST(Resize, Average_TakesTheAreaThatAPixelCovers)
{
    for (const bool turned : {false, true}) {
        EXPECT_EQ(ResizedRow<std::uint8_t>({10, 20, 50, 70}, 4, 0.5, 2, pxAverage, turned), (Bytes{15, 60}));
        // 3 to 2: one pixel and a half each, (12 + 24 / 2) / 1.5 and (24 / 2 + 60) / 1.5.
        EXPECT_EQ(ResizedRow<std::uint8_t>({12, 24, 60}, 3, 2.0 / 3.0, 2, pxAverage, turned),
                  (Bytes{16, 48}));
        // 5 * 0.5 = 2.5: two pixels of two each; the fifth is left over.
        ExpectNear(ResizedRow<float>({1, 2, 3, 5, 90}, 5, 0.5, 2, pxAverage, turned), {1.5, 4}, 1e-6);
    }
}

TEST(Resize, Floats_AreNotClamped)
{
    for (const int code : {pxNearest, pxLinear, pxCubic, pxLanczos})
        ExpectNear(ResizedRow<float>({-5, -5, -5, -5, 300, 300, 300, 300}, 8, 1.0, 8, code),
                   {-5, -5, -5, -5, 300, 300, 300, 300}, 1e-4);
    ExpectNear(ResizedRow<float>({-5, -5, 300, 300}, 4, 0.5, 2, pxAverage), {-5, 300}, 1e-4);
}

// --- against the plain version ----------------------------------------------------------------------------

struct Size {
    int width, height;
};

TEST(Resize, EveryMemberCodeSizeAndFactor_MatchesThePlainVersion)
{
    struct {
        double x, y;
    } const factors[] = {{1, 1},     {2, 2},     {0.5, 0.5},        {3.7, 0.3}, {0.77, 1.9},
                         {6.1, 5.3}, {0.9, 0.6}, {1.0 / 3, 0.4567}, {1.01, 7},  {0.99, 1}};
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const auto& size : {Size{1, 1},
                                     {1, 9},
                                     {9, 1},
                                     {2, 2},
                                     {2, 9},
                                     {3, 5},
                                     {4, 4},
                                     {7, 9},
                                     {12, 7},
                                     {8, 8},
                                     {9, 8},
                                     {33, 12},
                                     {16, 31}})
                for (const auto& factor : factors) {
                    if (code == pxAverage && (factor.x > 1 || factor.y > 1))
                        continue;
                    const int width = reference::ResizedLength(size.width, factor.x, 1000);
                    const int height = reference::ResizedLength(size.height, factor.y, 1000);
                    if (width == 0 || height == 0)
                        continue;
                    // A pixel of a result below 1 covers more than there is: not compared with numbers.
                    if (code == pxAverage && (size.width * factor.x < 1 || size.height * factor.y < 1))
                        continue;
                    for (const int more : {-1, 0, 2}) {
                        GuardedPicture src(size.width, size.height, format);
                        GuardedPicture dst(std::max(width + more, 1), std::max(height + more, 1), format);
                        CheckAgainstPlain(src, WholeOf(src), dst, factor.x, factor.y, code);
                    }
                }
}

TEST(Resize, EveryWidthAndLayout_MatchesThePlainVersion)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (int width = 1; width <= 33; ++width)
                ForEachLayout([&](const PictureLayout& layout) {
                    GuardedPicture src(width, 9, format, layout), up(2 * width, 12, format, layout),
                        down(width, 5, format, layout);
                    if (code != pxAverage)
                        CheckAgainstPlain(src, WholeOf(src), up, 1.9, 1.3, code, Noise::Leaning);
                    CheckAgainstPlain(src, WholeOf(src), down, width == 1 ? 1.0 : 0.8, 0.5, code,
                                      Noise::Leaning);
                });
}

TEST(Resize, Regions_AreCutToThePictureAndLookAtNothingElse)
{
    const PxRect regions[] = {{3, 2, 10, 8},    {0, 0, 1, 1},       {19, 14, 1, 1}, {19, 0, 5, 15},
                              {4, 14, 9, 9},    {5, 3, 3, 2},       {12, 9, 8, 6},  {12, 9, 100, 100},
                              {1, 1, 2, 9},     {0, 0, 20, 15},     {7, 0, 1, 15},  {10, 7, INT_MAX, INT_MAX},
                              {19, 14, 50, 50}, {1, 13, INT_MAX, 1}};
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const PxRect& region : regions)
                for (const double factor : {1.0, 2.3, 0.6}) {
                    const int width = std::min(region.width, 20 - region.x);
                    const int height = std::min(region.height, 15 - region.y);
                    if (code == pxAverage && (factor > 1 || std::min(width, height) * factor < 1))
                        continue;
                    GuardedPicture src(20, 15, format), dst(30, 30, format);
                    CheckAgainstPlain(src, region, dst, factor, factor, code);
                }
}

TEST(Resize, PicturesAgainstUnreadablePages_AreNotLeft)
{
    for (const Guard guard : {Guard::PageEnd, Guard::PageStart})
        for (const std::uint32_t format : kFormats)
            for (const int code : kCodes)
                for (const auto& size : {Size{1, 5}, {2, 2}, {3, 4}, {7, 8}, {8, 9}, {17, 11}, {33, 3}}) {
                    const PictureLayout layout{.guard = guard};
                    GuardedPicture src(size.width, size.height, format, layout);
                    if (code != pxAverage) {
                        GuardedPicture large(size.width * 2, size.height * 3, format, layout);
                        CheckAgainstPlain(src, WholeOf(src), large, 2.0, 3.0, code);
                    }
                    GuardedPicture small((size.width + 1) / 2, (size.height + 1) / 2, format, layout);
                    CheckAgainstPlain(src, WholeOf(src), small, 1.0 * small.Width() / size.width,
                                      1.0 * small.Height() / size.height, code);
                }
}

TEST(Resize, WidePicturesAgainstUnreadablePages_AreNotLeft)
{
    for (const Guard guard : {Guard::PageEnd, Guard::PageStart})
        for (const int code : {pxCubic, pxLanczos})
            for (const int width :
                 {1150, 1184, 1185, 1400}) { // the last strip ends with the row, or some pixels on
                GuardedPicture src(width, 5, PF_BGRA8, {.guard = guard});
                GuardedPicture same(width, 6, PF_BGRA8, {.guard = guard});
                GuardedPicture large(width + 150, 6, PF_BGRA8, {.guard = guard});
                CheckAgainstPlain(src, WholeOf(src), same, 1.0, 1.2, code);
                CheckAgainstPlain(src, WholeOf(src), large, (width + 150.0) / width, 1.2, code);
            }
}

TEST(Resize, FloatsOfMoreThanAStrip_MatchThePlainVersion)
{
    for (const Guard guard : {Guard::PageEnd, Guard::PageStart})
        for (const int code : {pxLinear, pxCubic, pxLanczos})
            for (const int width : {384, 385, 770}) {
                const PictureLayout layout{.guard = guard};
                GuardedPicture src(width, 8, PF_BGRA32F, layout);
                GuardedPicture same(width, 9, PF_BGRA32F, layout);
                GuardedPicture large(width + 150, 11, PF_BGRA32F, layout);
                GuardedPicture small(width / 5, 3, PF_BGRA32F, layout);
                for (GuardedPicture* const dst : {&same, &large, &small})
                    CheckAgainstPlain(src, WholeOf(src), *dst, 1.0 * dst->Width() / width,
                                      dst->Height() / 8.0, code);
            }
}

/// Only whole pixels can be sent past the caches.
TEST(Resize, FloatsTooLargeForTheCaches_AreThoseAtAnAddressOfNoWholePixels)
{
    GuardedPicture src(1152, 650, PF_BGRA32F);
    src.FillNoise(1);
    src.Freeze();
    for (const int code : {pxLinear, pxLanczos}) {
        const auto resize = [&](GuardedPicture& dst) {
            return CallOn(src, WholeOf(src), dst, 1283.0 / 1152, 722.0 / 650, code).Run();
        };
        GuardedPicture stored(1283, 722, PF_BGRA32F, {.shift = 4});
        ASSERT_EQ(resize(stored), pxOk);
        ForEachVariant([&] {
            for (const int shift : {0, 48}) {
                GuardedPicture result(1283, 722, PF_BGRA32F, {.shift = shift});
                ASSERT_EQ(resize(result), pxOk);
                ASSERT_TRUE(Equal(result, stored)) << "code " << code << ", shift " << shift << ", variant "
                                                   << static_cast<int>(CurrentVariant());
            }
        });
    }
}

TEST(ResizeAround, GivesTheWholeResultButForTheHole)
{
    GuardedPicture src(1100, 21, PF_BGRA8);
    src.FillNoise(1, Noise::Uniform);
    src.Freeze();
    for (const PxRect& hole : {PxRect{0, 0, 0, 0}, PxRect{300, 5, 900, 9}, PxRect{384, 0, 384, 24},
                               PxRect{0, 3, 1300, 7}, PxRect{-5, -5, 2000, 2000}}) {
        GuardedPicture whole(1300, 24, PF_BGRA8), around(1300, 24, PF_BGRA8);
        for (GuardedPicture* const picture : {&whole, &around})
            picture->FillNoise(2, Noise::Uniform);
        ASSERT_EQ(CallOn(src, WholeOf(src), whole, 1300.0 / 1100, 24.0 / 21, pxCubic).Run(), pxOk);
        ASSERT_EQ(pxResizeAround_8u_C4(src.Row(0), 1100, 21, src.Stride(), WholeOf(src), around.Row(0),
                                       around.Stride(), 1300, 24, 1300.0 / 1100, 24.0 / 21, pxCubic, hole),
                  pxOk);
        for (int y = 0; y < 24; ++y)
            for (int x = 0; x < 1300; ++x) {
                if (x >= hole.x && x < hole.x + hole.width && y >= hole.y && y < hole.y + hole.height)
                    continue;
                for (int channel = 0; channel < 4; ++channel)
                    ASSERT_EQ(around.Byte(x, y, channel), whole.Byte(x, y, channel)) << x << ", " << y;
            }
        around.Check();
    }
}

TEST(ResizeLevelsAround, GivesTheWholeResultCutToLevelsButForTheHole)
{
    struct Case {
        int width, height, code;
        double xFactor, yFactor;
    };
    // The last two are taken for pxLinear and pxNearest: they are too small.
    for (const Case& given : {Case{600, 21, pxCubic, 1.25, 1.5}, Case{600, 21, pxLanczos, 0.7, 1.1},
                              Case{600, 21, pxAverage, 0.5, 0.4}, Case{300, 3, pxCubic, 2.0, 5.0},
                              Case{300, 1, pxCubic, 2.0, 9.0}})
        for (const PxRect& hole : {PxRect{0, 0, 0, 0}, PxRect{200, 2, 400, 3}, PxRect{-5, -5, 900, 900}}) {
            GuardedPicture src(given.width, given.height, PF_BGRA32F);
            src.FillNoise(1, Noise::Special);
            src.Freeze();
            const int width = static_cast<int>(given.width * given.xFactor + 1e-7);
            const int height = static_cast<int>(given.height * given.yFactor + 1e-7);
            GuardedPicture whole(width, height, PF_BGRA32F);
            ASSERT_EQ(CallOn(src, WholeOf(src), whole, given.xFactor, given.yFactor, given.code).Run(), pxOk);
            ForEachVariant([&] {
                GuardedPicture around(width, height, PF_BGRA32F);
                ASSERT_EQ(pxResizeLevelsAround_32f_C4(src.FloatRow(0), given.width, given.height,
                                                      src.Stride(), WholeOf(src), around.FloatRow(0),
                                                      around.Stride(), width, height, given.xFactor,
                                                      given.yFactor, given.code, hole),
                          pxOk);
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x) {
                        if (x >= hole.x && x < hole.x + hole.width && y >= hole.y && y < hole.y + hole.height)
                            continue;
                        for (int channel = 0; channel < 4; ++channel) {
                            const float value = whole.Float(x, y, channel);
                            const float level = value > 0.0f ? std::min(value, 1.0f) : 0.0f;
                            ASSERT_EQ(around.Float(x, y, channel), level) << x << ", " << y;
                        }
                    }
                around.Check();
            });
        }
}

TEST(ResizeLevelsAround, LeavesStripsInsideTheHoleAsTheyStand)
{
    GuardedPicture src(1400, 8, PF_BGRA32F), around(1400, 8, PF_BGRA32F);
    src.FillNoise(1);
    around.FillFloat(7.0f, 7.0f, 7.0f, 7.0f);
    ASSERT_EQ(pxResizeLevelsAround_32f_C4(src.FloatRow(0), 1400, 8, src.Stride(), WholeOf(src),
                                          around.FloatRow(0), around.Stride(), 1400, 8, 1.0, 1.0, pxCubic,
                                          {100, 2, 1200, 4}),
              pxOk);
    for (const int column : {100, 700, 1299})
        EXPECT_EQ(around.Float(column, 4, 0), 7.0f);
    EXPECT_EQ(around.Float(99, 4, 0), src.Float(99, 4, 0));
    EXPECT_EQ(around.Float(1300, 4, 0), src.Float(1300, 4, 0));
    EXPECT_EQ(around.Float(700, 1, 0), src.Float(700, 1, 0));
    EXPECT_EQ(around.Float(700, 6, 0), src.Float(700, 6, 0));
}

TEST(Resize, Nearest_CopiesFloatsOfEveryKind)
{
    for (const std::uint32_t format : {PF_Mask32F, PF_BGRA32F}) {
        GuardedPicture src(13, 9, format), dst(30, 20, format);
        CheckAgainstPlain(src, WholeOf(src), dst, 2.2, 2.1, pxNearest, Noise::Special);
        CheckAgainstPlain(src, WholeOf(src), dst, 0.7, 0.4, pxNearest, Noise::Special);
    }
}

// --- what the rules promise -------------------------------------------------------------------------------

TEST(Resize, FactorsOf1_CopyExactly)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const auto& size : {Size{1, 1}, {2, 3}, {5, 6}, {8, 8}, {19, 11}, {64, 9}}) {
                GuardedPicture src(size.width, size.height, format), dst(size.width, size.height, format);
                src.FillNoise(3);
                ASSERT_EQ(CallOn(src, WholeOf(src), dst, 1.0, 1.0, code).Run(), pxOk);
                ASSERT_TRUE(Equal(dst, src)) << "format " << format << ", code " << code;
            }
}

TEST(Resize, FlatPictures_StayFlat)
{
    for (const int code : kCodes)
        for (const double factor : {0.13, 0.5, 0.77, 1.0, 1.3, 3.9}) {
            if (code == pxAverage && factor > 1)
                continue;
            for (const int level : {0, 1, 127, 254, 255}) {
                GuardedPicture src(12, 12, PF_BGRA8), dst(50, 50, PF_BGRA8);
                src.FillBytes(static_cast<std::uint8_t>(level));
                dst.FillBytes(77);
                ASSERT_EQ(CallOn(src, WholeOf(src), dst, factor, factor, code).Run(), pxOk);
                const int length = static_cast<int>(12 * factor);
                for (int y = 0; y < 50; ++y)
                    for (int x = 0; x < 50; ++x)
                        ASSERT_EQ(dst.Byte(x, y), x < length && y < length ? level : 77)
                            << x << ", " << y << ", code " << code << ", factor " << factor;
            }
        }
}

TEST(Resize, FactorsThatAreQuotientsOfSizes_GiveExactlyTheSize)
{
    // The quotient is rounded, and its product with the size may come out just below a whole number.
    for (const int code : {pxLinear, pxCubic, pxLanczos})
        for (int from = 4; from <= 60; ++from)
            for (int to = 2; to <= 60; ++to) {
                GuardedPicture src(from, 4, PF_Mask8), dst(to + 1, 4, PF_Mask8);
                src.FillBytes(50);
                for (int y = 0; y < 4; ++y) {
                    src.SetByte(0, y, 0, 100);
                    src.SetByte(from - 1, y, 0, 200);
                }
                dst.FillBytes(7);
                const double factor = static_cast<double>(to) / from;
                ASSERT_EQ(CallOn(src, WholeOf(src), dst, factor, 1.0, code).Run(), pxOk);
                for (int y = 0; y < 4; ++y) {
                    ASSERT_EQ(dst.Byte(0, y), 100) << from << " to " << to;
                    ASSERT_EQ(dst.Byte(to - 1, y), 200) << from << " to " << to << ", code " << code;
                    ASSERT_EQ(dst.Byte(to, y), 7) << from << " to " << to;
                }
            }
}

TEST(Resize, ProductJustBelowAWholeNumber_CountsAsIt)
{
    // 10 * 0.299999995 is 5e-8 below 3, 10 * 0.29999998 is 2e-7 below.
    GuardedPicture src(10, 10, PF_Mask8);
    src.FillBytes(9);
    for (const bool turned : {false, true}) {
        const auto lengthAt = [&](double factor) {
            GuardedPicture dst(10, 10, PF_Mask8);
            EXPECT_EQ(
                CallOn(src, WholeOf(src), dst, turned ? 1.0 : factor, turned ? factor : 1.0, pxNearest).Run(),
                pxOk);
            int length = 0;
            while (length < 10 && dst.Byte(turned ? 0 : length, turned ? length : 0) == 9)
                ++length;
            return length;
        };
        EXPECT_EQ(lengthAt(0.299999995), 3);
        EXPECT_EQ(lengthAt(0.29999998), 2);
    }
}

TEST(Resize, ResultBeyondTheDestination_IsCutThere)
{
    EXPECT_EQ(ResizedRow<std::uint8_t>({0, 100}, 2, 2.0, 3, pxLinear), (Bytes{0, 33, 67}));
    EXPECT_EQ(ResizedRow<std::uint8_t>({0, 100}, 2, 2.0, 3, pxLinear, true), (Bytes{0, 33, 67}));
    EXPECT_EQ(ResizedRow<std::uint8_t>({10, 20, 50, 70}, 4, 0.5, 1, pxAverage), (Bytes{15}));
}

TEST(Resize, ProductOfAtLeastHalf_StillWritesOnePixel)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const auto& factor : {std::array{0.5 / 9, 1.0}, {1.0, 0.5 / 9}, {0.7 / 9, 0.99 / 9}}) {
                GuardedPicture src(9, 9, format), dst(12, 12, format);
                src.FillNoise(1);
                if (code == pxAverage)
                    src.Fill(64, 64, 64, 64); // which pixels count is left open there
                dst.FillNoise(2);
                const GuardedPicture before = dst;
                ASSERT_EQ(CallOn(src, WholeOf(src), dst, factor[0], factor[1], code).Run(), pxOk);
                const Picture from = reference::Read(src), to = reference::Read(dst);
                for (int c = 0; c < from.channels; ++c)
                    EXPECT_NEAR(to.At(0, 0, c), from.At(0, 0, c), from.floats ? 1e-6 : 0.0)
                        << "format " << format << ", code " << code;
                EXPECT_TRUE(SameOutside(dst, before, factor[0] == 1.0 ? 9 : 1, factor[1] == 1.0 ? 9 : 1));
            }
}

TEST(Resize, ProductBelowHalf_IsTooSmall)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const double small : {0.499 / 9, 1e-9, 1e-300, std::numeric_limits<double>::denorm_min()}) {
                GuardedPicture src(9, 9, format), dst(12, 12, format);
                dst.FillNoise(2);
                dst.Freeze();
                EXPECT_EQ(CallOn(src, WholeOf(src), dst, small, 1.0, code).Run(), pxResultTooSmall);
                EXPECT_EQ(CallOn(src, WholeOf(src), dst, 1.0, small, code).Run(), pxResultTooSmall);
                EXPECT_EQ(CallOn(src, {8, 8, 9, 9}, dst, 0.499, 1.0, code).Run(), pxResultTooSmall);
                dst.Check();
            }
}

TEST(Resize, PictureOnePixelWide_IsNearestWhateverTheCode)
{
    for (const int code : {pxNearest, pxLinear, pxCubic, pxLanczos})
        for (const bool turned : {false, true}) {
            EXPECT_EQ(ResizedRow<std::uint8_t>({10, 20}, 1, 2.0, 4, code, turned), (Bytes{10, 10, 20, 20}));
            EXPECT_EQ(ResizedRow<float>({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 1, 0.4, 4, code, turned),
                      (Floats{1, 3, 6, 8}));
        }
    for (const bool turned : {false, true})
        EXPECT_EQ(ResizedRow<std::uint8_t>({10, 20, 30, 40}, 1, 0.5, 2, pxAverage, turned), (Bytes{10, 30}));
}

TEST(Resize, SmallPictures_LowerTheCode)
{
    struct {
        int width, height, asked, served;
    } const cases[] = {
        {7, 20, pxLanczos, pxCubic},  {20, 7, pxLanczos, pxCubic},  {4, 4, pxLanczos, pxCubic},
        {3, 20, pxLanczos, pxLinear}, {20, 3, pxLanczos, pxLinear}, {3, 3, pxCubic, pxLinear},
        {20, 3, pxCubic, pxLinear},   {2, 2, pxCubic, pxLinear},    {1, 20, pxLinear, pxNearest},
        {20, 1, pxCubic, pxNearest},  {1, 1, pxLanczos, pxNearest},
    };
    for (const std::uint32_t format : kFormats)
        for (const auto& one : cases) {
            GuardedPicture src(one.width, one.height, format), asked(50, 50, format), served(50, 50, format);
            src.FillNoise(4);
            ASSERT_EQ(CallOn(src, WholeOf(src), asked, 2.4, 2.4, one.asked).Run(), pxOk);
            ASSERT_EQ(CallOn(src, WholeOf(src), served, 2.4, 2.4, one.served).Run(), pxOk);
            EXPECT_TRUE(Equal(asked, served)) << one.width << " x " << one.height << ", code " << one.asked;
        }
}

TEST(Resize, PicturesJustLargeEnough_KeepTheCode)
{
    struct {
        int size, code, lower;
    } const cases[] = {{8, pxLanczos, pxCubic}, {4, pxCubic, pxLinear}, {2, pxLinear, pxNearest}};
    for (const std::uint32_t format : kFormats)
        for (const auto& one : cases) {
            GuardedPicture src(one.size, one.size, format), kept(50, 50, format), lower(50, 50, format);
            src.FillNoise(4);
            ASSERT_EQ(CallOn(src, WholeOf(src), kept, 2.4, 2.4, one.code).Run(), pxOk);
            ASSERT_EQ(CallOn(src, WholeOf(src), lower, 2.4, 2.4, one.lower).Run(), pxOk);
            EXPECT_FALSE(Equal(kept, lower)) << one.size;
        }
}

TEST(Resize, SmallRegionOfALargePicture_KeepsTheCode)
{
    // Two pixels of a picture that is large enough for cubic. Its other pixels would show at once.
    GuardedPicture src(4, 4, PF_Mask32F), dst(5, 1, PF_Mask32F);
    src.FillFloat(1000, 1000, 1000, 1000);
    src.SetFloat(1, 1, 0, 0.0f);
    src.SetFloat(2, 1, 0, 128.0f);
    ASSERT_EQ(CallOn(src, {1, 1, 2, 1}, dst, 2.5, 1.0, pxCubic).Run(), pxOk);
    // Positions i / 4. With both ends repeated Catmull-Rom is 128 * (t + 3 t^2 - 2 t^3) / 2.
    const double expected[] = {0, 26, 64, 102, 128};
    for (int x = 0; x < 5; ++x)
        EXPECT_NEAR(static_cast<double>(dst.Float(x, 0)), expected[x], 1e-4) << x;
}

TEST(Resize, EnormousFactors_RepeatTheFirstPixel)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : {pxNearest, pxLinear, pxCubic, pxLanczos})
            for (const double factor : {1e30, 1e300, std::numeric_limits<double>::max(), kInfinity}) {
                GuardedPicture src(9, 9, format), dst(12, 12, format), expected(12, 12, format);
                src.FillNoise(1);
                for (int y = 0; y < 12; ++y)
                    for (int x = 0; x < 12; ++x)
                        std::copy_n(src.Row(0), src.PixelBytes(), ElementAt<std::uint8_t>(expected, x, y));
                ASSERT_EQ(CallOn(src, WholeOf(src), dst, factor, factor, code).Run(), pxOk);
                EXPECT_TRUE(Near(dst, expected, IsFloatFormat(format) ? 1e-6 : 0.0))
                    << "format " << format << ", code " << code << ", factor " << factor;
            }
}

// --- what is refused --------------------------------------------------------------------------------------

class ResizeRefusals : public testing::TestWithParam<std::uint32_t> {
protected:
    ResizeRefusals() : m_src(9, 8, GetParam()), m_dst(9, 8, GetParam())
    {
        m_src.FillNoise(1);
        m_dst.FillNoise(2);
        m_dst.Freeze();
    }

    ~ResizeRefusals() override { m_dst.Check(); }

    /// A call that would work.
    Call Good() const { return CallOn(m_src, WholeOf(m_src), m_dst, 1.0, 1.0, pxLinear); }

    GuardedPicture m_src, m_dst;
};

TEST_P(ResizeRefusals, NullPointers_AreRefused)
{
    Call call = Good();
    call.src = nullptr;
    EXPECT_EQ(call.Run(), pxNullPointer);
    call = Good();
    call.dst = nullptr;
    EXPECT_EQ(call.Run(), pxNullPointer);
}

TEST_P(ResizeRefusals, SizesBelow1_AreRefused)
{
    const Call good = Good();
    for (const int bad : {0, -1, INT_MIN}) {
        Call calls[] = {good, good, good, good, good, good};
        calls[0].srcWidth = bad;
        calls[1].srcHeight = bad;
        calls[2].region.width = bad;
        calls[3].region.height = bad;
        calls[4].dstWidth = bad;
        calls[5].dstHeight = bad;
        for (const Call& call : calls)
            EXPECT_EQ(call.Run(), pxBadSize) << &call - calls << ", " << bad;
    }
}

TEST_P(ResizeRefusals, StepsThatHoldNoRow_AreRefused)
{
    const int row = m_src.Width() * m_src.PixelBytes();
    for (const int bad : {row - 1, 1 - row, 0, INT_MIN}) {
        Call call = Good();
        call.srcStep = bad;
        EXPECT_EQ(call.Run(), pxBadStep) << bad;
        call = Good();
        call.dstStep = bad;
        EXPECT_EQ(call.Run(), pxBadStep) << bad;
    }
}

TEST_P(ResizeRefusals, RegionsBeyondThePicture_AreAWarning)
{
    for (const PxRect& region : {PxRect{9, 0, 1, 1},
                                 {0, 8, 1, 1},
                                 {9, 8, 1, 1},
                                 {INT_MAX, 0, INT_MAX, 1},
                                 {0, INT_MAX, 1, INT_MAX},
                                 {100, 100, 9, 8}}) {
        Call call = Good();
        call.region = region;
        EXPECT_EQ(call.Run(), pxRegionOutsideSource) << region.x << ", " << region.y;
        EXPECT_EQ(call.Run(), 29);
    }
}

TEST_P(ResizeRefusals, RegionsBeforeThePicture_AreNotServed)
{
    for (const PxRect& region :
         {PxRect{-1, 0, 4, 4}, {0, -1, 4, 4}, {INT_MIN, 0, INT_MAX, 4}, {0, INT_MIN, 4, INT_MAX}}) {
        Call call = Good();
        call.region = region;
        EXPECT_NE(call.Run(), pxOk) << region.x << ", " << region.y;
    }
}

TEST_P(ResizeRefusals, FactorsThatAreNotPositive_AreRefused)
{
    for (const double bad : {0.0, -0.0, -1.0, -1e-300, -kInfinity, kNotANumber})
        for (const int code : kCodes) {
            Call call = Good();
            call.code = code;
            call.xFactor = bad;
            EXPECT_EQ(call.Run(), pxBadFactor) << bad;
            call = Good();
            call.code = code;
            call.yFactor = bad;
            EXPECT_EQ(call.Run(), pxBadFactor) << bad;
        }
}

TEST_P(ResizeRefusals, UnknownInterpolations_AreRefused)
{
    for (const int bad : {0, 3, 5, 6, 7, 9, 15, 17, 20, 32, -1, INT_MIN, INT_MAX}) {
        Call call = Good();
        call.code = bad;
        EXPECT_EQ(call.Run(), pxBadInterpolation) << bad;
        call.srcWidth = 1; // so small that every known code would be nearest
        EXPECT_EQ(call.Run(), pxBadInterpolation) << bad;
    }
}

TEST_P(ResizeRefusals, AverageWithAFactorAbove1_IsNoKnownInterpolation)
{
    for (const double above : {std::nextafter(1.0, 2.0), 2.0, kInfinity}) {
        Call call = Good();
        call.code = pxAverage;
        call.xFactor = above;
        EXPECT_EQ(call.Run(), pxBadInterpolation) << above;
        call.xFactor = 0.5;
        call.yFactor = above;
        EXPECT_EQ(call.Run(), pxBadInterpolation) << above;
        call.srcWidth = 1;
        EXPECT_EQ(call.Run(), pxBadInterpolation) << above;
    }
}

TEST_P(ResizeRefusals, WithSeveralReasons_NameTheFirst)
{
    Call call = Good();
    call.src = nullptr;
    call.srcWidth = 0;
    call.region = {9, 0, 0, 1};
    call.xFactor = 0.0;
    call.yFactor = 1e-9;
    call.code = 3;
    EXPECT_EQ(call.Run(), pxNullPointer);
    call.src = m_src.Row(0);
    EXPECT_EQ(call.Run(), pxBadSize);
    call.srcWidth = m_src.Width();
    EXPECT_EQ(call.Run(), pxBadSize);
    call.region.width = 1;
    EXPECT_EQ(call.Run(), pxRegionOutsideSource);
    call.region.x = 0;
    EXPECT_EQ(call.Run(), pxBadFactor);
    call.xFactor = 1.0;
    EXPECT_EQ(call.Run(), pxBadInterpolation);
    call.code = pxLinear;
    EXPECT_EQ(call.Run(), pxResultTooSmall);
}

INSTANTIATE_TEST_SUITE_P(EveryMember, ResizeRefusals, testing::ValuesIn(kFormats));

} // namespace
} // namespace kelmora

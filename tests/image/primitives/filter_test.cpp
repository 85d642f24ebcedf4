#include "image/primitives/filter.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/filter.h"
#include "tests/reference/picture.h"
#include "tests/reference/tent.h"

namespace kelmora {
namespace {

using reference::Axis;
using reference::Picture;
using u8 = std::uint8_t;
using ByteFilter = decltype(&pxRowFilter_8u_C1);
using FloatFilter = decltype(&pxRowFilter_32f_C1);

/// A source just large enough for a region and its taps, and where the region starts in it.
struct Place {
    int srcWidth, srcHeight, x, y;
};

Place PlaceOf(Axis axis, int width, int height, int kernelSize, int anchor)
{
    // Taps lie at +anchor down to +anchor - (kernelSize - 1).
    const int before = kernelSize - 1 - anchor;
    return axis == Axis::Row ? Place{width + kernelSize - 1, height, before, 0}
                             : Place{width, height + kernelSize - 1, 0, before};
}

PxStatus Call(ByteFilter filter, const u8* s, int ss, u8* d, int ds, int w, int h,
              const std::vector<int>& kernel, int anchor, int divisor)
{
    return filter(s, ss, d, ds, w, h, kernel.data(), static_cast<int>(kernel.size()), anchor, divisor);
}

PxStatus Call(FloatFilter filter, const float* s, int ss, float* d, int ds, int w, int h,
              const std::vector<float>& kernel, int anchor, int)
{
    return filter(s, ss, d, ds, w, h, kernel.data(), static_cast<int>(kernel.size()), anchor);
}

double Finished(std::int64_t sum, int divisor)
{
    return reference::ByteFromSum(sum, divisor);
}

double Finished(double sum, int)
{
    return static_cast<double>(static_cast<float>(sum));
}

/// One call against the plain version: bit for bit, floats included, since both sum in double and in one
/// order.
template <class T, class Filter, class Tap>
void CheckCall(Filter filter, Axis axis, int channels, int touched, int width, int height,
               const PictureLayout& layout, const std::vector<Tap>& kernel, int anchor, int divisor,
               Noise noise)
{
    const int size = static_cast<int>(kernel.size());
    const Place place = PlaceOf(axis, width, height, size, anchor);
    GuardedPicture src(place.srcWidth, place.srcHeight, FormatOf<T>(channels), layout);
    GuardedPicture dst(width, height, FormatOf<T>(channels), layout);
    src.FillNoise(static_cast<std::uint32_t>(width * 37 + anchor), noise);
    dst.FillNoise(99);
    src.Freeze();
    const Picture plain = reference::Read(src);
    Picture expected = reference::Read(dst);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < touched; ++c)
                expected.At(x, y, c) = Finished(
                    reference::SumAt(plain, axis, place.x + x, place.y + y, c, kernel, anchor), divisor);
    ForEachVariant([&] {
        GuardedPicture result(dst);
        ASSERT_EQ(Call(filter, ElementAt<T>(src, place.x, place.y), src.Stride(), ElementAt<T>(result),
                       result.Stride(), width, height, kernel, anchor, divisor),
                  pxOk);
        ASSERT_TRUE(reference::Matches(result, expected))
            << "width " << width << ", taps " << size << ", anchor " << anchor << ", divisor " << divisor;
        result.Check();
    });
    src.Check();
}

/// Every pair of bytes through two taps: every sum from 0 to largestTap * 255, or down to it, comes up.
void CheckEverySum(int smallTap, int largeTap, int divisor)
{
    const int kernel[] = {smallTap, largeTap};
    const auto sumOf = [=](int x, int y) { return std::int64_t{smallTap} * x + std::int64_t{largeTap} * y; };
    u8 src[2][256], dst[256];
    for (int x = 0; x < 256; ++x)
        src[1][x] = static_cast<u8>(x);
    for (int other = 0; other < 256; ++other) {
        std::fill_n(src[0], 256, static_cast<u8>(other));
        ASSERT_EQ(pxColumnFilter_8u_C1(src[0], 256, dst, 256, 256, 1, kernel, 2, 1, divisor), pxOk);
        for (int x = 0; x < 256; ++x)
            ASSERT_EQ(dst[x], reference::ByteFromSum(sumOf(x, other), divisor))
                << smallTap << " * " << x << " + " << largeTap << " * " << other << ", divisor " << divisor;
    }
}

std::vector<int> RandomTaps(std::mt19937& random, int size, int)
{
    std::vector<int> taps;
    for (int i = 0; i < size; ++i)
        taps.push_back(static_cast<int>(random() % 13) - 4);
    return taps;
}

std::vector<float> RandomTaps(std::mt19937& random, int size, float)
{
    std::vector<float> taps;
    for (int i = 0; i < size; ++i)
        taps.push_back(static_cast<float>(static_cast<int>(random() % 2001) - 700) / 1000.0f);
    return taps;
}

template <class Tap, class T, class Filter>
void CheckPixels(Filter filter, Axis axis, int channels, int touched)
{
    std::mt19937 random(4711);
    constexpr int divisors[] = {1, 2, 3, 4, 7, 9, 16, 64, -1, -3, 255, INT_MIN};
    int turn = 0;
    for (int width = 1; width <= 33; ++width)
        ForEachLayout([&](const PictureLayout& layout) {
            const int size = 1 + turn % 7;
            const Noise noise = turn % 3 == 0 ? Noise::Leaning
                : turn % 3 == 1               ? Noise::Uniform
                                              : Noise::Special;
            CheckCall<T>(filter, axis, channels, touched, width, 1 + turn % 4, layout,
                         RandomTaps(random, size, Tap{}), (turn / 7) % size, divisors[turn % 12], noise);
            ++turn;
        });
    // More taps, and more values in a row, than any working space of fixed size would hold.
    for (const int size : {100, 101, 217, 600})
        CheckCall<T>(filter, axis, channels, touched, 150, 2, {}, RandomTaps(random, size, Tap{}), size / 2,
                     5, Noise::Uniform);
}

template <class Tap, class T, class Filter>
void CheckArguments(Filter filter, int channels, bool bytes)
{
    GuardedPicture src(9, 9, FormatOf<T>(channels)), dst(5, 4, FormatOf<T>(channels));
    src.FillNoise(1);
    dst.FillNoise(2);
    dst.Freeze();
    const T* s = ElementAt<T>(src, 3, 3);
    T* d = ElementAt<T>(dst);
    const int ss = src.Stride(), ds = dst.Stride();
    const std::vector<Tap> three = {1, 2, 1}, none;
    EXPECT_EQ(Call(filter, nullptr, ss, d, ds, 5, 4, three, 1, 4), pxNullPointer);
    EXPECT_EQ(Call(filter, s, ss, nullptr, ds, 5, 4, three, 1, 4), pxNullPointer);
    EXPECT_EQ(Call(filter, s, ss, d, ds, 5, 4, none, 0, 4), pxNullPointer); // an empty vector's pointer
    EXPECT_EQ(Call(filter, s, ss, d, ds, 0, 4, three, 1, 4), pxBadSize);
    EXPECT_EQ(Call(filter, s, ss, d, ds, 5, -4, three, 1, 4), pxBadSize);
    EXPECT_EQ(Call(filter, s, ds - 1, d, ds, 5, 4, three, 1, 4), pxBadStep);
    EXPECT_EQ(Call(filter, s, ss, d, ds - 1, 5, 4, three, 1, 4), pxBadStep);
    EXPECT_EQ(Call(filter, s, -ss, d, ds, 5, 4, three, 1, 4), pxBadStep);
    EXPECT_EQ(Call(filter, s, ss, d, ds, INT_MAX, 4, three, 1, 4), pxBadStep);
    for (const int anchor : {-1, 3, INT_MAX, INT_MIN})
        EXPECT_EQ(Call(filter, s, ss, d, ds, 5, 4, three, anchor, 4), pxBadAnchor);
    if (bytes) {
        EXPECT_EQ(Call(filter, s, ss, d, ds, 5, 4, three, 1, 0), pxZeroDivisor);
    }
    dst.Check();
}

/// Kernel sizes below 1, which a vector cannot say.
void CheckNoTaps(ByteFilter filter)
{
    u8 pixel[64] = {}, out[64] = {};
    const int tap = 1;
    EXPECT_EQ(filter(pixel, 64, out, 64, 1, 1, &tap, 0, 0, 1), pxBadSize);
    EXPECT_EQ(filter(pixel, 64, out, 64, 1, 1, &tap, -2, 0, 1), pxBadSize);
}

void CheckNoTaps(FloatFilter filter)
{
    float pixel[16] = {}, out[16] = {};
    const float tap = 1;
    EXPECT_EQ(filter(pixel, 64, out, 64, 1, 1, &tap, 0, 0), pxBadSize);
    EXPECT_EQ(filter(pixel, 64, out, 64, 1, 1, &tap, -2, 0), pxBadSize);
}

void CheckMember(const char* name, ByteFilter filter, Axis axis, int channels, int touched)
{
    SCOPED_TRACE(name);
    CheckPixels<int, u8>(filter, axis, channels, touched);
    CheckArguments<int, u8>(filter, channels, true);
    CheckNoTaps(filter);
}

void CheckMember(const char* name, FloatFilter filter, Axis axis, int channels, int touched)
{
    SCOPED_TRACE(name);
    CheckPixels<float, float>(filter, axis, channels, touched);
    CheckArguments<float, float>(filter, channels, false);
    CheckNoTaps(filter);
}

TEST(RowFilter, EveryMember_EqualsThePlainVersionAndRefusesBadArguments)
{
    CheckMember("pxRowFilter_8u_C1", pxRowFilter_8u_C1, Axis::Row, 1, 1);
    CheckMember("pxRowFilter_8u_A3", pxRowFilter_8u_A3, Axis::Row, 4, 3);
    CheckMember("pxRowFilter_8u_C4", pxRowFilter_8u_C4, Axis::Row, 4, 4);
    CheckMember("pxRowFilter_32f_C1", pxRowFilter_32f_C1, Axis::Row, 1, 1);
    CheckMember("pxRowFilter_32f_A3", pxRowFilter_32f_A3, Axis::Row, 4, 3);
    CheckMember("pxRowFilter_32f_C4", pxRowFilter_32f_C4, Axis::Row, 4, 4);
}

TEST(ColumnFilter, EveryMember_EqualsThePlainVersionAndRefusesBadArguments)
{
    CheckMember("pxColumnFilter_8u_C1", pxColumnFilter_8u_C1, Axis::Column, 1, 1);
    CheckMember("pxColumnFilter_8u_A3", pxColumnFilter_8u_A3, Axis::Column, 4, 3);
    CheckMember("pxColumnFilter_8u_C4", pxColumnFilter_8u_C4, Axis::Column, 4, 4);
    CheckMember("pxColumnFilter_32f_C1", pxColumnFilter_32f_C1, Axis::Column, 1, 1);
    CheckMember("pxColumnFilter_32f_A3", pxColumnFilter_32f_A3, Axis::Column, 4, 3);
    CheckMember("pxColumnFilter_32f_C4", pxColumnFilter_32f_C4, Axis::Column, 4, 4);
}

/// Rows of all lengths up to some vectors, with more of them below each other than are summed at once.
template <class T, class Tap, class Filter>
void CheckEnds(Filter filter, Axis axis, int touched)
{
    for (const Guard guard : {Guard::PictureStart, Guard::PictureEnd, Guard::PageStart, Guard::PageEnd})
        for (const int width : {1, 2, 3, 4, 7, 16, 17, 33})
            for (const int taps : {1, 3, 4, 5, 9})
                CheckCall<T>(filter, axis, 4, touched, width, 5, {.guard = guard},
                             std::vector<Tap>(static_cast<std::size_t>(taps), Tap{1}), taps / 2, taps,
                             Noise::Uniform);
}

TEST(RowFilter, UnreadablePagesAround_AreNeverTouched)
{
    CheckEnds<u8, int>(pxRowFilter_8u_A3, Axis::Row, 3);
    CheckEnds<u8, int>(pxRowFilter_8u_C4, Axis::Row, 4);
    CheckEnds<float, float>(pxRowFilter_32f_A3, Axis::Row, 3);
    CheckEnds<float, float>(pxRowFilter_32f_C4, Axis::Row, 4);
}

TEST(ColumnFilter, UnreadablePagesAround_AreNeverTouched)
{
    CheckEnds<u8, int>(pxColumnFilter_8u_A3, Axis::Column, 3);
    CheckEnds<u8, int>(pxColumnFilter_8u_C4, Axis::Column, 4);
    CheckEnds<float, float>(pxColumnFilter_32f_A3, Axis::Column, 3);
    CheckEnds<float, float>(pxColumnFilter_32f_C4, Axis::Column, 4);
}

// --- by hand ----------------------------------------------------------------------------------------------

int FilterOne(const std::vector<int>& taps, const std::vector<u8>& values, int divisor)
{
    std::vector<u8> pixels;
    for (const u8 value : values)
        pixels.insert(pixels.end(), {value, value, value, value});
    u8 out[4] = {};
    const int size = static_cast<int>(taps.size());
    // Anchor 0: the taps lie at the pixel and left of it.
    EXPECT_EQ(pxRowFilter_8u_C4(pixels.data() + 4 * (size - 1), static_cast<int>(pixels.size()), out, 4, 1, 1,
                                taps.data(), size, 0, divisor),
              pxOk);
    EXPECT_EQ(out[0], out[3]);
    return out[0];
}

/// One tap, so that the value is the sum.
int Divided(int tap, u8 value, int divisor)
{
    return FilterOne({tap}, {value}, divisor);
}

TEST(RowFilter, Divisor3_RoundsToNearest)
{
    EXPECT_EQ(Divided(1, 7, 3), 2); // 2.33
    EXPECT_EQ(Divided(1, 5, 3), 2); // 1.67
    EXPECT_EQ(Divided(1, 1, 3), 0); // 0.33
    EXPECT_EQ(Divided(1, 2, 3), 1); // 0.67
    EXPECT_EQ(Divided(3, 255, 3), 255);
    EXPECT_EQ(Divided(4, 255, 3), 255); // 340
    EXPECT_EQ(Divided(-1, 9, 3), 0);
}

TEST(RowFilter, Divisor2_TiesGoToEven)
{
    EXPECT_EQ(Divided(1, 5, 2), 2);
    EXPECT_EQ(Divided(1, 7, 2), 4);
    EXPECT_EQ(Divided(1, 1, 2), 0);
    EXPECT_EQ(Divided(1, 3, 2), 2);
    EXPECT_EQ(Divided(2, 255, 2), 255);
    EXPECT_EQ(Divided(3, 255, 2), 255);
    EXPECT_EQ(Divided(-1, 5, 2), 0);
}

TEST(RowFilter, Divisor6_TiesGoToEven)
{
    EXPECT_EQ(Divided(1, 3, 6), 0);  // 0.5 and less give 0
    EXPECT_EQ(Divided(1, 15, 6), 2); // 2.5
    EXPECT_EQ(Divided(1, 21, 6), 4); // 3.5
}

TEST(RowFilter, Divisor1_Saturates)
{
    EXPECT_EQ(Divided(2, 200, 1), 255);
    EXPECT_EQ(Divided(-1, 200, 1), 0);
    EXPECT_EQ(Divided(1, 200, 1), 200);
}

TEST(RowFilter, NegativeDivisors_AreReciprocalsLikeAnyOther)
{
    EXPECT_EQ(Divided(-1, 10, -4), 2); // 2.5, to even; not a power of two
    EXPECT_EQ(Divided(-1, 200, -1), 200);
    EXPECT_EQ(Divided(1, 200, -1), 0);
    EXPECT_EQ(Divided(1, 200, INT_MIN), 0);
}

TEST(RowFilter, LopsidedKernel_IsAppliedReversed)
{
    // dst(1) = 1 * src(1 + 1) + 10 * src(1) + 100 * src(0), with anchor 1
    const u8 src[3] = {1, 2, 0};
    const int kernel[3] = {1, 10, 100};
    u8 out = 0;
    ASSERT_EQ(pxRowFilter_8u_C1(src + 1, 3, &out, 1, 1, 1, kernel, 3, 1, 1), pxOk);
    EXPECT_EQ(out, 120);
    ASSERT_EQ(pxColumnFilter_8u_C1(src + 1, 1, &out, 1, 1, 1, kernel, 3, 1, 1), pxOk);
    EXPECT_EQ(out, 120);
}

TEST(RowFilter, FloatsOfA3_LeaveChannel3)
{
    const float src[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    float dst[4] = {0, 0, 0, 77};
    const float kernel[2] = {1, 0.5f};
    ASSERT_EQ(pxRowFilter_32f_A3(src + 4, 32, dst, 16, 1, 1, kernel, 2, 0), pxOk);
    EXPECT_EQ(dst[0], 5.5f);
    EXPECT_EQ(dst[1], 7.0f);
    EXPECT_EQ(dst[2], 8.5f);
    EXPECT_EQ(dst[3], 77.0f);
}

TEST(RowFilter, Floats_AreNotClamped)
{
    const float src[2] = {3, -5};
    const float kernel[1] = {2};
    float dst[2] = {};
    ASSERT_EQ(pxRowFilter_32f_C1(src, 8, dst, 8, 2, 1, kernel, 1, 0), pxOk);
    EXPECT_EQ(dst[0], 6.0f);
    EXPECT_EQ(dst[1], -10.0f);
}

TEST(RowFilter, Floats_AreSummedInDouble)
{
    // In single precision 1 is lost beside 2^25, from whichever side the taps come.
    const float src[3] = {33554432.0f, 1.0f, -33554432.0f};
    const float kernel[3] = {1, 1, 1};
    float out = 0;
    ASSERT_EQ(pxRowFilter_32f_C1(src + 1, 12, &out, 4, 1, 1, kernel, 3, 1), pxOk);
    EXPECT_EQ(out, 1.0f);
    ASSERT_EQ(pxColumnFilter_32f_C1(src + 1, 4, &out, 4, 1, 1, kernel, 3, 1), pxOk);
    EXPECT_EQ(out, 1.0f);
}

TEST(RowFilter, SumsBeyond32Bits_ComeOutRight)
{
    for (const int taps : {5801, 5802, 6000}) {
        const std::vector<int> kernel = reference::TentWeights(taps);
        const int divisor = reference::TentWeightSum(taps);
        const std::vector<u8> src(static_cast<std::size_t>(taps) + 4, 255);
        u8 dst[5] = {};
        ASSERT_EQ(pxRowFilter_8u_C1(src.data() + (taps - 1 - taps / 2), taps + 4, dst, 5, 5, 1, kernel.data(),
                                    taps, taps / 2, divisor),
                  pxOk);
        for (const u8 value : dst)
            EXPECT_EQ(value, 255) << taps;
    }
    EXPECT_EQ(FilterOne({INT_MAX, INT_MAX}, {255, 255}, INT_MAX), 255);
    EXPECT_EQ(FilterOne({INT_MAX, INT_MIN}, {10, 10}, 1), 0);      // -10
    EXPECT_EQ(FilterOne({INT_MAX, INT_MAX}, {3, 4}, 1 << 30), 14); // 7 * (2^31 - 1) / 2^30
}

TEST(RowFilter, A3_NeitherReadsNorNeedsTheFourthValue)
{
    // The colours of an alpha-first picture: one value on, the last pixel's fourth value would lie behind
    // the picture, on a page that faults.
    GuardedPicture src(7, 5, PF_ARGB32F, {.guard = Guard::PageEnd});
    GuardedPicture dst(5, 3, PF_ARGB32F, {.guard = Guard::PageEnd});
    src.FillNoise(5);
    const Picture plain = reference::Read(src);
    const std::vector<float> kernel = {0.25f, 0.5f, 0.25f};
    for (const bool row : {true, false}) {
        dst.FillNoise(6);
        Picture expected = reference::Read(dst);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 5; ++x)
                for (int c = 1; c < 4; ++c)
                    expected.At(x, y, c) = Finished(
                        reference::SumAt(plain, row ? Axis::Row : Axis::Column, x + 1, y + 1, c, kernel, 1),
                        1);
        ASSERT_EQ((row ? pxRowFilter_32f_A3 : pxColumnFilter_32f_A3)(
                      ElementAt<float>(src, 1, 1, 1), src.Stride(), ElementAt<float>(dst, 0, 0, 1),
                      dst.Stride(), 5, 3, kernel.data(), 3, 1),
                  pxOk);
        EXPECT_TRUE(reference::Matches(dst, expected));
    }
    // And a region that ends with the picture's last byte.
    const float one = 1;
    ASSERT_EQ(pxRowFilter_32f_A3(ElementAt<float>(src, 2, 2, 1), src.Stride(), ElementAt<float>(dst, 0, 0, 1),
                                 dst.Stride(), 5, 3, &one, 1, 0),
              pxOk);
    for (int c = 1; c < 4; ++c)
        EXPECT_EQ(dst.Float(4, 2, c), src.Float(6, 4, c));
}

TEST(ByteFilters, EverySum_IsFinishedAsThePlainVersionDoes)
{
    // Odd divisors below and above 8192, even ones with ties, shifts, and products of taps that need 16, 24 and 32
    // bits.
    constexpr int divisors[] = {1,     2,     3,       4,       5,       6,      7,     10,  12,
                                49,    121,   127,     128,     129,     144,    255,   256, 1000,
                                4096,  8191,  8192,    8193,    8194,    32639,  12345, -1,  -7,
                                65536, 65537, 1 << 24, 1 << 30, INT_MAX, INT_MIN};
    constexpr int taps[][2] = {{1, 127},    {1, -127},    {-1, 127},     {-127, -1},      {1, 128},
                               {128, -127}, {255, 32767}, {-1, 32768},   {-32767, -1},    {127, 65536},
                               {-3, 65000}, {1, 8000000}, {-1, 8400000}, {1, -2000000000}};
    ForEachVariant([&] {
        for (const auto& pair : taps)
            for (const int divisor : divisors)
                CheckEverySum(pair[0], pair[1], divisor);
    });
}

TEST(ByteFilters, MoreTapsThanVectorsServe_AreThePlainSum)
{
    std::mt19937 random(5);
    for (const int size : {511, 512, 513})
        for (const int divisor : {1, 64, 121, 144})
            CheckCall<u8>(pxRowFilter_8u_C4, Axis::Row, 4, 4, 17, 1, {}, RandomTaps(random, size, 0), 3,
                          divisor, Noise::Uniform);
}

} // namespace
} // namespace kelmora

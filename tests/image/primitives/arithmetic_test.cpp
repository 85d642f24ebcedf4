#include "image/primitives/arithmetic.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/blends.h"
#include "tests/reference/picture.h"
#include "tests/reference/rounding.h"

namespace kelmora {
namespace {

using reference::Picture;

// A sum and a product of two floats are rounded once, which double makes sure of: exact for products, and for
// sums its 53 bits are enough for rounding twice to come out as once.
double Plus(double a, double b)
{
    return reference::RoundedToFloat(a + b);
}
double Times(double a, double b)
{
    return reference::RoundedToFloat(a * b);
}

using Operation = double (*)(double, double);

constexpr float kConstants[][4] = {
    {0.0f, -0.0f, 1.0f, -1.0f},
    {0.1f, 3.5f, -2.25f, 1e-30f},
    {1e38f, INFINITY, NAN, 0.003921569f},
};

/// Status of a call with each argument wrong in turn: call(pixels, step, width, height).
template <class T, class Call>
void CheckBadRegion(GuardedPicture& picture, Call&& call)
{
    const int w = picture.Width(), h = picture.Height(), step = picture.Stride();
    T* const p = ElementAt<T>(picture);
    EXPECT_EQ(call(static_cast<T*>(nullptr), step, w, h), pxNullPointer);
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_EQ(call(p, step, bad, h), pxBadSize) << bad;
        EXPECT_EQ(call(p, step, w, bad), pxBadSize) << bad;
    }
    EXPECT_EQ(call(p, step - 1, w, h), pxBadStep);
    EXPECT_EQ(call(p, 0, w, h), pxBadStep);
    EXPECT_EQ(call(p, -step, w, h), pxBadStep);
    EXPECT_EQ(call(p, step, INT_MAX, h), pxBadStep);
}

Picture WithConstants(const Picture& src, const Picture& dst, const float* consts, int count, Operation op)
{
    Picture result = dst;
    for (int y = 0; y < src.height; ++y)
        for (int x = 0; x < src.width; ++x)
            for (int c = 0; c < count; ++c)
                result.At(x, y, c) = op(src.At(x, y, c), static_cast<double>(consts[c]));
    return result;
}

using ConstantMember = PxStatus (*)(const float*, int, const float*, float*, int, int, int);
using ConstantInPlace = PxStatus (*)(const float*, float*, int, int, int);

void CheckConstant(const char* name, ConstantMember member, Operation op)
{
    SCOPED_TRACE(name);
    for (int width = 1; width <= 33; ++width)
        for (const auto& consts : kConstants)
            ForEachLayout([&](const PictureLayout& layout) {
                GuardedPicture src(width, 2, PF_BGRA32F, layout), dst(width, 2, PF_BGRA32F, layout);
                src.FillNoise(static_cast<std::uint32_t>(width), Noise::Special);
                dst.FillNoise(2);
                const Picture expected =
                    WithConstants(reference::Read(src), reference::Read(dst), consts, 3, op);
                src.Freeze();
                ASSERT_EQ(member(ElementAt<float>(src), src.Stride(), consts, ElementAt<float>(dst),
                                 dst.Stride(), width, 2),
                          pxOk);
                ASSERT_TRUE(reference::Matches(dst, expected)) << width;
                src.Check();
                dst.Check();
            });
    GuardedPicture src(5, 4, PF_BGRA32F), dst(5, 4, PF_BGRA32F);
    dst.FillNoise(1);
    dst.Freeze();
    float* const s = ElementAt<float>(src);
    float* const d = ElementAt<float>(dst);
    EXPECT_EQ(member(s, src.Stride(), nullptr, d, dst.Stride(), 5, 4), pxNullPointer);
    CheckBadRegion<float>(src, [&](const float* p, int step, int w, int h) {
        return member(p, step, kConstants[0], d, dst.Stride(), w, h);
    });
    CheckBadRegion<float>(dst, [&](float* p, int step, int w, int h) {
        return member(s, src.Stride(), kConstants[0], p, step, w, h);
    });
    dst.Check();
}

void CheckConstantInPlace(const char* name, ConstantInPlace member, int count, Operation op)
{
    SCOPED_TRACE(name);
    for (int width = 1; width <= 33; ++width)
        for (const auto& consts : kConstants)
            ForEachLayout([&](const PictureLayout& layout) {
                GuardedPicture picture(width, 2, PF_BGRA32F, layout);
                picture.FillNoise(static_cast<std::uint32_t>(width), Noise::Special);
                const Picture before = reference::Read(picture);
                const Picture expected = WithConstants(before, before, consts, count, op);
                ASSERT_EQ(member(consts, ElementAt<float>(picture), picture.Stride(), width, 2), pxOk);
                ASSERT_TRUE(reference::Matches(picture, expected)) << width;
                picture.Check();
            });
    GuardedPicture picture(5, 4, PF_BGRA32F);
    picture.FillNoise(1);
    picture.Freeze();
    EXPECT_EQ(member(nullptr, ElementAt<float>(picture), picture.Stride(), 5, 4), pxNullPointer);
    CheckBadRegion<float>(
        picture, [&](float* p, int step, int w, int h) { return member(kConstants[0], p, step, w, h); });
    picture.Check();
}

TEST(Arithmetic, EveryFloatMemberWithConstants_RoundsOnceAndLeavesTheRest)
{
    CheckConstant("pxAddConst_32f_A3", pxAddConst_32f_A3, Plus);
    CheckConstant("pxMulConst_32f_A3", pxMulConst_32f_A3, Times);
    CheckConstantInPlace("pxAddConst_32f_A3_I", pxAddConst_32f_A3_I, 3, Plus);
    CheckConstantInPlace("pxMulConst_32f_A3_I", pxMulConst_32f_A3_I, 3, Times);
    CheckConstantInPlace("pxMulConst_32f_C4_I", pxMulConst_32f_C4_I, 4, Times);
}

TEST(Arithmetic, SourceEqualsDestination_MembersWithConstantsWorkInPlace)
{
    GuardedPicture picture(33, 2, PF_BGRA32F);
    picture.FillNoise(1);
    const Picture before = reference::Read(picture);
    float* const p = ElementAt<float>(picture);
    const int step = picture.Stride();
    ASSERT_EQ(pxMulConst_32f_A3(p, step, kConstants[1], p, step, 33, 2), pxOk);
    const Picture product = WithConstants(before, before, kConstants[1], 3, Times);
    ASSERT_TRUE(reference::Matches(picture, product));
    ASSERT_EQ(pxAddConst_32f_A3(p, step, kConstants[1], p, step, 33, 2), pxOk);
    ASSERT_TRUE(reference::Matches(picture, WithConstants(product, product, kConstants[1], 3, Plus)));
}

TEST(Arithmetic, AddFloats_AddsAllFourChannelsWithoutClamping)
{
    for (int width = 1; width <= 33; ++width)
        ForEachLayout([&](const PictureLayout& layout) {
            GuardedPicture src(width, 3, PF_BGRA32F, layout), sum(width, 3, PF_BGRA32F, layout);
            src.FillNoise(1, Noise::Special);
            sum.FillNoise(static_cast<std::uint32_t>(width), Noise::Special);
            const Picture from = reference::Read(src);
            Picture expected = reference::Read(sum);
            for (std::size_t i = 0; i < expected.values.size(); ++i)
                expected.values[i] = Plus(expected.values[i], from.values[i]);
            src.Freeze();
            ForEachVariant([&] {
                GuardedPicture to(sum);
                ASSERT_EQ(pxAdd_32f_C4_I(ElementAt<float>(src), src.Stride(), ElementAt<float>(to),
                                         to.Stride(), width, 3),
                          pxOk);
                ASSERT_TRUE(reference::Matches(to, expected)) << width;
                to.Check();
            });
            src.Check();
        });
    GuardedPicture src(5, 4, PF_BGRA32F), sum(5, 4, PF_BGRA32F);
    sum.Freeze();
    CheckBadRegion<float>(src, [&](const float* p, int step, int w, int h) {
        return pxAdd_32f_C4_I(p, step, ElementAt<float>(sum), sum.Stride(), w, h);
    });
    CheckBadRegion<float>(sum, [&](float* p, int step, int w, int h) {
        return pxAdd_32f_C4_I(ElementAt<float>(src), src.Stride(), p, step, w, h);
    });
    sum.Check();
}

// --- bytes ------------------------------------------------------------------------------------------------

/// A picture of 256 by 1 pixels whose every channel holds its column.
GuardedPicture AllBytes(std::uint32_t format)
{
    GuardedPicture picture(256, 1, format);
    for (int x = 0; x < 256; ++x)
        for (int c = 0; c < picture.Channels(); ++c)
            picture.SetByte(x, 0, c, static_cast<std::uint8_t>(x));
    return picture;
}

TEST(MulConstScaled, EveryByteTimesEveryConstant_IsTheScaledProduct)
{
    ForEachVariant([] {
        for (int constant = 0; constant < 256; ++constant) {
            const auto k = static_cast<std::uint8_t>(constant);
            GuardedPicture plane = AllBytes(PF_Mask8), colour = AllBytes(PF_BGRA8);
            const std::uint8_t consts[4] = {k, static_cast<std::uint8_t>(255 - k), 255, 0};
            ASSERT_EQ(pxMulConstScaled_8u_C1_I(k, plane.Row(0), 256, 256, 1), pxOk);
            ASSERT_EQ(pxMulConstScaled_8u_C4_I(consts, colour.Row(0), 1024, 256, 1), pxOk);
            for (int x = 0; x < 256; ++x) {
                ASSERT_EQ(plane.Byte(x, 0), reference::ScaledProduct(x, constant)) << x << " * " << constant;
                for (int c = 0; c < 4; ++c)
                    ASSERT_EQ(colour.Byte(x, 0, c), reference::ScaledProduct(x, consts[c]))
                        << x << " * " << int{consts[c]};
            }
        }
    });
}

TEST(MulConstScaled, HandComputedProducts_ComeOut)
{
    struct {
        std::uint8_t value, constant, product;
    } const cases[] = {
        {255, 255, 255}, // 65025 + 254 + 1 = 65280
        {128, 128, 64},  // 16384 + 64 + 1 = 16449
        {1, 255, 1},     // 255 + 0 + 1 = 256
        {1, 254, 0},     // 254 + 0 + 1 = 255
        {200, 100, 78},  // 20000 + 78 + 1 = 20079, / 256 = 78.4
        {0, 255, 0},
    };
    for (const auto& one : cases) {
        std::uint8_t pixel = one.value;
        ASSERT_EQ(pxMulConstScaled_8u_C1_I(one.constant, &pixel, 1, 1, 1), pxOk);
        EXPECT_EQ(pixel, one.product) << int{one.value} << " * " << int{one.constant};
    }
}

TEST(MulConstScaled, Constant255_LeavesEveryValueUnchanged)
{
    GuardedPicture plane = AllBytes(PF_Mask8);
    ASSERT_EQ(pxMulConstScaled_8u_C1_I(255, plane.Row(0), 256, 256, 1), pxOk);
    EXPECT_TRUE(Equal(plane, AllBytes(PF_Mask8)));
}

TEST(MulConstScaled, EveryWidthAndLayout_StaysInsideItsRegion)
{
    ForEachVariant([] {
        const std::uint8_t consts[4] = {255, 128, 3, 77};
        for (int width = 1; width <= 33; ++width)
            for (const std::uint32_t format : {PF_Mask8, PF_BGRA8})
                ForEachLayout([&](const PictureLayout& layout) {
                    GuardedPicture picture(width, 3, format, layout);
                    picture.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                    Picture expected = reference::Read(picture);
                    for (std::size_t i = 0; i < expected.values.size(); ++i)
                        expected.values[i] = reference::ScaledProduct(
                            static_cast<int>(expected.values[i]), format == PF_Mask8 ? 77 : consts[i % 4]);
                    ASSERT_EQ(
                        format == PF_Mask8
                            ? pxMulConstScaled_8u_C1_I(77, picture.Row(0), picture.Stride(), width, 3)
                            : pxMulConstScaled_8u_C4_I(consts, picture.Row(0), picture.Stride(), width, 3),
                        pxOk);
                    ASSERT_TRUE(reference::Matches(picture, expected)) << width;
                    picture.Check();
                });
    });
}

TEST(MulConstScaled, BadArguments_AreRefused)
{
    GuardedPicture plane(5, 4, PF_Mask8), colour(5, 4, PF_BGRA8);
    plane.Freeze();
    colour.Freeze();
    const std::uint8_t consts[4] = {1, 2, 3, 4};
    CheckBadRegion<std::uint8_t>(plane, [](std::uint8_t* p, int step, int w, int h) {
        return pxMulConstScaled_8u_C1_I(9, p, step, w, h);
    });
    CheckBadRegion<std::uint8_t>(colour, [&](std::uint8_t* p, int step, int w, int h) {
        return pxMulConstScaled_8u_C4_I(consts, p, step, w, h);
    });
    EXPECT_EQ(pxMulConstScaled_8u_C4_I(nullptr, colour.Row(0), colour.Stride(), 5, 4), pxNullPointer);
    plane.Check();
    colour.Check();
}

/// The sum of two bytes, shifted as a whole number: to nearest with ties to even, or to the left, saturated.
int Shifted(int sum, int scale)
{
    if (scale > 9)
        return 0;
    if (scale <= 0) {
        std::int64_t value = sum;
        for (int i = 0; i > scale && value > 0 && value < 256; --i)
            value *= 2;
        return static_cast<int>(std::min<std::int64_t>(value, 255));
    }
    const int divisor = 1 << scale, below = sum / divisor, twice = 2 * (sum % divisor);
    return below + (twice > divisor || (twice == divisor && below % 2 != 0) ? 1 : 0);
}

constexpr int kScales[] = {INT_MIN, -1000, -40, -32, -31, -9, -8, -7, -2, -1, 0,  1,    2,
                           3,       4,     5,   6,   7,   8,  9,  10, 31, 32, 40, 1000, INT_MAX};

TEST(AddScaled, EveryPairOfBytesAtEveryScale_IsTheShiftedSum)
{
    ForEachVariant([] {
        for (const int scale : kScales)
            for (int other = 0; other < 256; ++other) {
                GuardedPicture src = AllBytes(PF_Mask8), sum(256, 1, PF_Mask8);
                sum.FillBytes(static_cast<std::uint8_t>(other));
                ASSERT_EQ(pxAddScaled_8u_C1_I(src.Row(0), 256, sum.Row(0), 256, 256, 1, scale), pxOk);
                for (int x = 0; x < 256; ++x)
                    ASSERT_EQ(sum.Byte(x, 0), Shifted(x + other, scale))
                        << x << " + " << other << " at scale " << scale;
            }
    });
}

TEST(AddScaled, FourChannels_AreTheSameAsPlanes)
{
    ForEachVariant([] {
        for (const int scale : kScales)
            for (int width = 1; width <= 33; ++width)
                for (const std::uint32_t format : {PF_Mask8, PF_BGRA8})
                    ForEachLayout([&](const PictureLayout& layout) {
                        GuardedPicture src(width, 2, format, layout), sum(width, 2, format, layout);
                        src.FillNoise(1, Noise::Leaning);
                        sum.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                        const Picture from = reference::Read(src);
                        Picture expected = reference::Read(sum);
                        for (std::size_t i = 0; i < expected.values.size(); ++i)
                            expected.values[i] =
                                Shifted(static_cast<int>(expected.values[i] + from.values[i]), scale);
                        const auto member = format == PF_Mask8 ? pxAddScaled_8u_C1_I : pxAddScaled_8u_C4_I;
                        src.Freeze();
                        ASSERT_EQ(member(src.Row(0), src.Stride(), sum.Row(0), sum.Stride(), width, 2, scale),
                                  pxOk);
                        ASSERT_TRUE(reference::Matches(sum, expected)) << width << " at scale " << scale;
                        src.Check();
                        sum.Check();
                    });
    });
}

TEST(AddScaled, HandComputedSums_ComeOut)
{
    struct {
        std::uint8_t a, b;
        int scale;
        std::uint8_t result;
    } const cases[] = {
        {1, 2, 1, 2},                         // 1.5: the tie goes to the even 2
        {1, 0, 1, 0},                         // 0.5: to 0
        {200, 100, 0, 255},                   // saturated
        {255, 255, 1, 255}, {3, 3, 2, 2},     // 1.5
        {1, 1, 2, 0},       {255, 255, 9, 1}, // 510 / 512
        {128, 128, 9, 0},                     // 0.5
        {5, 6, -2, 44},     {100, 0, -2, 255}, {1, 0, -8, 255}, {0, 0, -1000, 0}, {255, 255, 10, 0},
    };
    for (const auto& one : cases) {
        const std::uint8_t src[4] = {one.a, one.a, one.a, one.a};
        std::uint8_t sum[4] = {one.b, one.b, one.b, one.b};
        ASSERT_EQ(pxAddScaled_8u_C4_I(src, 4, sum, 4, 1, 1, one.scale), pxOk);
        for (const std::uint8_t value : sum)
            EXPECT_EQ(value, one.result) << int{one.a} << " + " << int{one.b} << " at scale " << one.scale;
    }
}

TEST(AddScaled, BadArguments_AreRefusedAtEveryScale)
{
    for (const std::uint32_t format : {PF_Mask8, PF_BGRA8})
        for (const int scale : {-40, 0, 1, 5, 40}) {
            const auto member = format == PF_Mask8 ? pxAddScaled_8u_C1_I : pxAddScaled_8u_C4_I;
            GuardedPicture src(5, 4, format), sum(5, 4, format);
            sum.FillNoise(1);
            sum.Freeze();
            CheckBadRegion<std::uint8_t>(src, [&](const std::uint8_t* p, int step, int w, int h) {
                return member(p, step, sum.Row(0), sum.Stride(), w, h, scale);
            });
            CheckBadRegion<std::uint8_t>(sum, [&](std::uint8_t* p, int step, int w, int h) {
                return member(src.Row(0), src.Stride(), p, step, w, h, scale);
            });
            sum.Check();
        }
}

} // namespace
} // namespace kelmora

#include "tests/support/guarded_picture.h"

#include <gtest/gtest-spi.h>

#include <cmath>
#include <cstring>
#include <string>
#include <utility>

namespace kelmora {
namespace {

// Reads that the compiler may not leave out.
std::uint8_t Touch(const std::uint8_t* place)
{
    return *const_cast<const volatile std::uint8_t*>(place);
}

void Poke(std::uint8_t* place, std::uint8_t value)
{
    *const_cast<volatile std::uint8_t*>(place) = value;
}

// What the line about a fault must hold; a sanitizer writes lines of its own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KELMORA_FAULT(text) ""
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KELMORA_FAULT(text) ""
#endif
#endif
#ifndef KELMORA_FAULT
#define KELMORA_FAULT(text) text
#endif

class EveryGuard : public testing::TestWithParam<Guard> {};

TEST_P(EveryGuard, Record_OfAnUpwardPicture_StartsAtTheHighestRow)
{
    GuardedPicture picture(3, 4, PF_BGRA8, {.guard = GetParam(), .upward = true, .bottomUp = true});
    const VideoFrame frame = picture.Frame();
    EXPECT_LT(frame.stride, 0);
    EXPECT_EQ(frame.width, 3);
    EXPECT_EQ(frame.height, 4);
    EXPECT_EQ(frame.pixelBytes, 4);
    EXPECT_EQ(frame.bottomUp, 1);
    EXPECT_EQ(frame.reserved[0], 0u);
    EXPECT_EQ(frame.reserved[1], 0u);
    EXPECT_EQ(frame.data, picture.Row(0));
    EXPECT_EQ(picture.Row(3), picture.Row(0) + 3 * static_cast<std::ptrdiff_t>(frame.stride));
    EXPECT_LT(picture.Row(3), picture.Row(0));
}

TEST_P(EveryGuard, AllPixels_CanBeWritten_WithoutMovingAGuard)
{
    for (const bool upward : {false, true}) {
        for (const std::uint32_t format : {PF_BGRA8, PF_ARGB32F, PF_Mask8}) {
            GuardedPicture picture(5, 3, format, {.guard = GetParam(), .upward = upward});
            picture.FillBytes(0x11);
            picture.FillNoise(7);
            EXPECT_TRUE(picture.Intact());
        }
    }
}

TEST_P(EveryGuard, Copy_HasTheSamePixels_AndItsOwnMemory)
{
    GuardedPicture picture(6, 2, PF_BGRA8, {.guard = GetParam()});
    picture.FillNoise(1);
    GuardedPicture copy(picture);
    EXPECT_TRUE(Equal(copy, picture));
    copy.SetByte(5, 1, 2, static_cast<std::uint8_t>(copy.Byte(5, 1, 2) ^ 1));
    EXPECT_FALSE(Equal(copy, picture));
}

TEST_P(EveryGuard, MovedPicture_KeepsItsMemory)
{
    GuardedPicture picture(6, 2, PF_BGRA8, {.guard = GetParam()});
    picture.FillNoise(1);
    const std::uint8_t* const row = picture.Row(1);
    const GuardedPicture moved(std::move(picture));
    EXPECT_EQ(moved.Row(1), row);
    EXPECT_TRUE(moved.Intact());
}

TEST_P(EveryGuard, FrozenPicture_CanBeReadAndThawed)
{
    GuardedPicture picture(6, 3, PF_BGRA8, {.guard = GetParam()});
    picture.Fill(1, 2, 3, 4);
    picture.Freeze();
    EXPECT_EQ(picture.Byte(5, 2, 3), 4);
    picture.Thaw();
    picture.Fill(5, 6, 7, 8);
    EXPECT_EQ(picture.Byte(5, 2, 3), 8);
}

INSTANTIATE_TEST_SUITE_P(Guards, EveryGuard,
                         testing::Values(Guard::Moat, Guard::PageEnd, Guard::PageStart, Guard::PictureEnd,
                                         Guard::PictureStart));

TEST(GuardedPicture_Moat, AnyGuardByte_Changed_IsFoundAndNamed)
{
    GuardedPicture picture(3, 2, PF_BGRA8, {.slack = 5});
    std::uint8_t* const lowest = picture.Row(0);
    const std::ptrdiff_t offsets[] = {-64, -1, 12, 16, 17 + 12, 17 + 16, 34, 34 + 63};
    for (const std::ptrdiff_t offset : offsets) {
        Poke(lowest + offset, 0);
        EXPECT_FALSE(picture.Intact()) << "offset " << offset;
        Poke(lowest + offset, GuardedPicture::kMark);
        EXPECT_TRUE(picture.Intact());
    }
    Poke(lowest + 17 + 13, 9);
    EXPECT_STREQ(picture.Intact().message(),
                 "guard byte 1 bytes past the end of row 1 (in memory order) is 0x9, was 0xc3");
    Poke(lowest + 17 + 13, GuardedPicture::kMark);
}

TEST(GuardedPicture_Moat, DamagedPicture_FailsTheTestWhenItEnds)
{
    EXPECT_NONFATAL_FAILURE(
        {
            GuardedPicture picture(3, 2, PF_BGRA8);
            Poke(picture.Row(1) + 12, 0);
        },
        "guard byte");
}

TEST(GuardedPicture_Moat, FrozenPicture_Written_IsFound)
{
    GuardedPicture picture(3, 2, PF_BGRA8);
    picture.Freeze();
    picture.SetByte(1, 1, 0, 77);
    EXPECT_STREQ(picture.Intact().message(), "a frozen picture was written: row 1 (in memory order), byte 4");
    picture.SetByte(1, 1, 0, 0);
    EXPECT_TRUE(picture.Intact());
}

TEST(GuardedPicture_Moat, Shift_MovesTheRowsOffAlignment)
{
    for (const std::int32_t shift : {0, 1, 15, 63}) {
        const GuardedPicture picture(3, 2, PF_BGRA8, {.shift = shift});
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(picture.Row(0)) % 64, static_cast<std::uintptr_t>(shift));
    }
}

TEST(GuardedPicture_Moat, Slack_WidensTheStrideAlone)
{
    const GuardedPicture picture(3, 2, PF_BGRA8, {.slack = 5});
    EXPECT_EQ(picture.Stride(), 17);
}

TEST(GuardedPictureDeathTest, PageEnd_OneByteBehindAnyRow_Faults)
{
    GuardedPicture picture(5, 3, PF_BGRA8, {.guard = Guard::PageEnd});
    for (std::int32_t y = 0; y < 3; ++y) {
        EXPECT_EQ(Touch(picture.Row(y) + 19), 0);
        EXPECT_DEATH(
            Touch(picture.Row(y) + 20),
            KELMORA_FAULT("touched in GuardedPictureDeathTest.PageEnd_OneByteBehindAnyRow_Faults: a picture "
                          "of 5 x 3 .*, byte 0 past the end of stretch "
                          + std::to_string(y)));
        EXPECT_DEATH(Poke(picture.Row(y) + 20, 1), "");
    }
}

TEST(GuardedPictureDeathTest, PageStart_OneByteBeforeAnyRow_Faults)
{
    GuardedPicture picture(5, 3, PF_BGRA8, {.guard = Guard::PageStart});
    for (std::int32_t y = 0; y < 3; ++y) {
        EXPECT_EQ(Touch(picture.Row(y)), 0);
        EXPECT_DEATH(Touch(picture.Row(y) - 1), KELMORA_FAULT("1 bytes before stretch " + std::to_string(y)));
    }
}

TEST(GuardedPictureDeathTest, FrozenPages_Written_Fault)
{
    GuardedPicture picture(5, 3, PF_BGRA8, {.guard = Guard::PageEnd});
    picture.Freeze();
    EXPECT_DEATH(Poke(picture.Row(1), 1), KELMORA_FAULT("write into stretch 1, which may only be read"));
    picture.Thaw();
    Poke(picture.Row(1), 1);
}

TEST(GuardedPicture_Pages, ReadableBytesBesideTheRow_AreWatchedToo)
{
    GuardedPicture end(5, 3, PF_BGRA8, {.guard = Guard::PageEnd});
    Poke(end.Row(2) - 1, 0);
    EXPECT_FALSE(end.Intact());
    Poke(end.Row(2) - 1, GuardedPicture::kMark);

    GuardedPicture start(5, 3, PF_BGRA8, {.guard = Guard::PageStart});
    Poke(start.Row(2) + 20, 0);
    EXPECT_FALSE(start.Intact());
    Poke(start.Row(2) + 20, GuardedPicture::kMark);
}

TEST(GuardedPictureDeathTest, PictureEnd_OneByteBehindTheLastRowInMemory_Faults)
{
    GuardedPicture picture(5, 3, PF_BGRA8, {.guard = Guard::PictureEnd, .slack = 8, .upward = true});
    EXPECT_EQ(picture.Stride(), -28);
    EXPECT_EQ(Touch(picture.Row(0) + 19), 0);
    EXPECT_DEATH(Touch(picture.Row(0) + 20), KELMORA_FAULT("byte 0 past the end of stretch 0"));
}

TEST(GuardedPictureDeathTest, PictureStart_OneByteBeforeTheFirstRowInMemory_Faults)
{
    GuardedPicture picture(5, 3, PF_BGRA8, {.guard = Guard::PictureStart});
    EXPECT_EQ(picture.Stride(), 20);
    EXPECT_EQ(Touch(picture.Row(0)), 0);
    EXPECT_DEATH(Touch(picture.Row(0) - 1), KELMORA_FAULT("1 bytes before stretch 0"));
}

TEST(GuardedPicture_Pages, ReadableBytesAroundAndBetweenTheRowsOfOneStretch_AreWatchedToo)
{
    for (const Guard guard : {Guard::PictureEnd, Guard::PictureStart}) {
        GuardedPicture picture(5, 3, PF_BGRA8, {.guard = guard, .slack = 8});
        const std::ptrdiff_t outside = guard == Guard::PictureEnd ? -1 : 2 * 28 + 20;
        for (const std::ptrdiff_t offset : {std::ptrdiff_t{20}, std::ptrdiff_t{28 + 27}, outside}) {
            Poke(picture.Row(0) + offset, 0);
            EXPECT_FALSE(picture.Intact()) << offset;
            Poke(picture.Row(0) + offset, GuardedPicture::kMark);
            EXPECT_TRUE(picture.Intact()) << offset;
        }
    }
}

TEST(GuardedPicture_Colours, SetColour_FollowsTheFormatsOrder)
{
    GuardedPicture bgra(1, 1, PF_BGRA8);
    bgra.SetColour(0, 0, 10, 20, 30, 40);
    const std::uint8_t blueFirst[] = {10, 20, 30, 40};
    EXPECT_EQ(std::memcmp(bgra.Row(0), blueFirst, 4), 0);

    GuardedPicture argb(1, 1, PF_ARGB8);
    argb.SetColour(0, 0, 10, 20, 30, 40);
    const std::uint8_t alphaFirst[] = {40, 30, 20, 10};
    EXPECT_EQ(std::memcmp(argb.Row(0), alphaFirst, 4), 0);

    GuardedPicture floats(1, 1, PF_ARGB32F);
    floats.SetColour(0, 0, 10, 20, 255, 0);
    EXPECT_EQ(floats.Float(0, 0, 0), 0.0f);
    EXPECT_EQ(floats.Float(0, 0, 1), 255.0f * 0.003921569f);
    EXPECT_EQ(floats.Float(0, 0, 3), 10.0f * 0.003921569f);
}

TEST(GuardedPicture_Colours, Fill_ReachesEveryPixel)
{
    GuardedPicture picture(3, 2, PF_BGRA32F);
    picture.FillFloat(0.25f, 0.5f, 0.75f, 2.0f);
    EXPECT_EQ(picture.Float(2, 1, 0), 0.25f);
    EXPECT_EQ(picture.Float(2, 1, 3), 2.0f);
    EXPECT_EQ(picture.Float(0, 0, 1), 0.5f);

    GuardedPicture mask(3, 2, PF_Mask8);
    mask.Fill(9, 0, 0, 0);
    EXPECT_EQ(mask.Byte(2, 1), 9);
}

TEST(GuardedPicture_Colours, FillWord_RepeatsTheWordOverTheRow)
{
    GuardedPicture picture(2, 2, PF_BGRA32F);
    picture.FillWord(0x7FA5A5A5u);
    EXPECT_TRUE(std::isnan(picture.Float(1, 1, 3)));
    EXPECT_EQ(picture.Row(1)[3], 0x7F);
    EXPECT_EQ(picture.Row(1)[4], 0xA5);
}

TEST(GuardedPicture_Noise, SameSeed_SameColoursInEveryFormat)
{
    GuardedPicture bgra(7, 5, PF_BGRA8);
    GuardedPicture argb(7, 5, PF_ARGB8);
    GuardedPicture floats(7, 5, PF_ARGB32F);
    bgra.FillNoise(42, Noise::ByteLevels);
    argb.FillNoise(42, Noise::ByteLevels);
    floats.FillNoise(42, Noise::ByteLevels);
    for (std::int32_t y = 0; y < 5; ++y) {
        for (std::int32_t x = 0; x < 7; ++x) {
            for (std::int32_t channel = 0; channel < 4; ++channel) {
                EXPECT_EQ(bgra.Byte(x, y, channel), argb.Byte(x, y, 3 - channel));
                EXPECT_EQ(ByteLevel(bgra.Byte(x, y, channel)), floats.Float(x, y, 3 - channel));
            }
        }
    }
    GuardedPicture other(7, 5, PF_BGRA8);
    other.FillNoise(43, Noise::ByteLevels);
    EXPECT_FALSE(Equal(other, bgra));
}

TEST(GuardedPicture_Noise, Kinds_HoldWhatTheyPromise)
{
    GuardedPicture bytes(64, 64, PF_BGRA8);
    bytes.FillNoise(1, Noise::Leaning);
    int zeros = 0;
    int maxima = 0;
    for (std::int32_t y = 0; y < 64; ++y) {
        for (std::int32_t i = 0; i < 256; ++i) {
            zeros += bytes.Row(y)[i] == 0;
            maxima += bytes.Row(y)[i] == 255;
        }
    }
    EXPECT_GT(zeros, 16384 / 5);
    EXPECT_GT(maxima, 16384 / 5);

    GuardedPicture special(64, 64, PF_BGRA32F);
    special.FillNoise(1, Noise::Special);
    int nans = 0;
    int infinities = 0;
    int denormals = 0;
    int huge = 0;
    for (std::int32_t y = 0; y < 64; ++y) {
        for (std::int32_t i = 0; i < 256; ++i) {
            const float value = special.FloatRow(y)[i];
            nans += std::isnan(value);
            infinities += std::isinf(value);
            denormals += std::fpclassify(value) == FP_SUBNORMAL;
            huge += std::isfinite(value) && std::abs(value) > 1e37f;
        }
    }
    EXPECT_GT(nans, 100);
    EXPECT_GT(infinities, 100);
    EXPECT_GT(denormals, 100);
    EXPECT_GT(huge, 100);

    GuardedPicture positive(64, 64, PF_BGRA32F);
    positive.FillNoise(1, Noise::Positive);
    GuardedPicture uniform(64, 64, PF_BGRA32F);
    uniform.FillNoise(1, Noise::Uniform);
    for (std::int32_t y = 0; y < 64; ++y) {
        for (std::int32_t i = 0; i < 256; ++i) {
            const float value = positive.FloatRow(y)[i];
            ASSERT_TRUE(value == 0.0f || (value >= std::ldexp(1.0f, -20) && value < 4.0f)) << value;
            ASSERT_TRUE(uniform.FloatRow(y)[i] >= 0.0f && uniform.FloatRow(y)[i] <= 1.0f);
        }
    }
}

TEST(GuardedPicture_Difference, First_IsNamedWithItsPlaceAndValues)
{
    GuardedPicture a(4, 3, PF_BGRA8);
    GuardedPicture b(4, 3, PF_BGRA8, {.slack = 7, .upward = true});
    EXPECT_TRUE(Equal(a, b));
    b.SetByte(2, 1, 3, 10);
    b.SetByte(0, 2, 0, 20);
    const auto difference = FirstDifference(a.Frame(), b.Frame());
    ASSERT_TRUE(difference);
    EXPECT_EQ(difference->x, 2);
    EXPECT_EQ(difference->y, 1);
    EXPECT_EQ(difference->channel, 3);
    EXPECT_EQ(difference->pixels, 2u);
    EXPECT_EQ(difference->largest, 20.0);
    EXPECT_EQ(difference->text,
              "first at x 2, y 1, channel 3: 0 against 10; 2 of 12 pixels differ, by at most 20");
}

TEST(GuardedPicture_Difference, Floats_AreComparedBitForBit)
{
    GuardedPicture a(2, 1, PF_BGRA32F);
    GuardedPicture b(2, 1, PF_BGRA32F);
    b.SetFloat(1, 0, 2, -0.0f);
    EXPECT_FALSE(Equal(a, b));
    EXPECT_TRUE(Near(a, b, 1e-9));
    b.SetFloat(1, 0, 2, 0.25f);
    EXPECT_TRUE(Near(a, b, 0.25));
    EXPECT_FALSE(Near(a, b, 0.24));
    b.SetFloat(1, 0, 2, std::nanf(""));
    EXPECT_FALSE(Near(a, b, 1e30));
}

TEST(GuardedPicture_Difference, Pictures_OfTwoKinds_AreNotEqual)
{
    const GuardedPicture a(4, 3, PF_BGRA8);
    EXPECT_FALSE(Equal(a, GuardedPicture(3, 3, PF_BGRA8)));
    EXPECT_FALSE(Equal(a, GuardedPicture(4, 4, PF_BGRA8)));
    EXPECT_FALSE(Equal(a, GuardedPicture(4, 3, PF_ARGB8)));
    EXPECT_FALSE(Near(a, GuardedPicture(4, 3, PF_ARGB8), 1e9));
}

TEST(GuardedPicture_Difference, SameOutside_SeesEveryPixelThereAndNoneInside)
{
    GuardedPicture before(4, 3, PF_BGRA8);
    before.FillNoise(3);
    for (std::int32_t y = 0; y < 3; ++y) {
        for (std::int32_t x = 0; x < 4; ++x) {
            GuardedPicture now(before);
            now.SetByte(x, y, 3, static_cast<std::uint8_t>(now.Byte(x, y, 3) + 1));
            EXPECT_EQ(static_cast<bool>(SameOutside(now, before, 3, 2)), x < 3 && y < 2) << x << ", " << y;
        }
    }
}

} // namespace
} // namespace kelmora

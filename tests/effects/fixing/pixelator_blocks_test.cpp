#include "effects/fixing/pixelator_blocks.h"

#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "tests/reference/pixelator.h"
#include "tests/support/fake_host.h"
#include "tests/support/pictures.h"

namespace kelmora::pixelator {
namespace {

constexpr Ellipse kEverywhere = {0, 0, 1 << 20, 1 << 20};

FrameBuffer ViewOf(const GuardedPicture& picture)
{
    const VideoFrame frame = picture.Frame();
    FrameBuffer view;
    view.AttachFrame(&frame);
    return view;
}

bool Pixelate(const GuardedPicture& src, const GuardedPicture& dst, float amount, bool halfHeight,
              const Ellipse& region = kEverywhere)
{
    FrameBuffer view = ViewOf(dst);
    MemoryAllocator allocator;
    return Pixelate(ViewOf(src), view, amount, halfHeight, region, allocator);
}

/// The same grey in the three colours.
void SetGrey(GuardedPicture& picture, int x, int y, std::uint8_t level, std::uint8_t alpha = 255)
{
    picture.SetColour(x, y, level, level, level, alpha);
}

int Blue(const GuardedPicture& picture, int x, int y)
{
    return picture.Byte(x, y, PlaceOfColour(picture.Format(), 0));
}

// (10 + 21 + 30 + 42) / 4 = 25.75, toward zero; at the right (50 + 61) / 2 = 55.5.
TEST(Pixelate, BlocksOfTwo_HoldTheTruncatedAverageOfThePixelsTheyHave)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture src(3, 2, format), dst(3, 2, format);
        constexpr std::uint8_t levels[2][3] = {{10, 21, 50}, {30, 42, 61}};
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 3; ++x)
                SetGrey(src, x, y, levels[y][x]);
        ASSERT_TRUE(Pixelate(src, dst, 0.0f, false));
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 3; ++x)
                for (int colour = 0; colour < 3; ++colour)
                    EXPECT_EQ(dst.Byte(x, y, PlaceOfColour(format, colour)), x < 2 ? 25 : 55);
    }
}

// 20 * 0.3 * 0.5 = 3 rows a block; the last one has the rows 18 and 19 and counts the latter twice:
// (30 + 90 + 90) / 3, (0.25 + 0.5 + 0.5) / 3.
TEST(Pixelate, Kept_TheLastRow_CountsForTheRowsThatABlockLacks)
{
    GuardedPicture bytes(4, 20, PF_BGRA8), bytesOut(4, 20, PF_BGRA8);
    GuardedPicture floats(4, 20, PF_ARGB32F), floatsOut(4, 20, PF_ARGB32F);
    for (int x = 0; x < 4; ++x) {
        SetGrey(bytes, x, 18, 30);
        SetGrey(bytes, x, 19, 90);
        for (int c = 0; c < 4; ++c) {
            floats.SetFloat(x, 18, c, 0.25f);
            floats.SetFloat(x, 19, c, 0.5f);
        }
    }
    ASSERT_TRUE(Pixelate(bytes, bytesOut, 0.5f, false));
    ASSERT_TRUE(Pixelate(floats, floatsOut, 0.5f, false));
    for (int x = 0; x < 4; ++x)
        for (int y = 0; y < 20; ++y) {
            EXPECT_EQ(Blue(bytesOut, x, y), y < 18 ? 0 : 70);
            EXPECT_EQ(floatsOut.Float(x, y, 1), y < 18 ? 0.0f : 1.25f / 3);
        }
}

TEST(Pixelate, InAField_BlocksAreTwiceAsWideAsHigh)
{
    GuardedPicture src(12, 20, PF_BGRA8), dst(12, 20, PF_BGRA8); // blocks of 6 by 3
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 12; ++x)
            SetGrey(src, x, y, static_cast<std::uint8_t>(x / 6 * 100 + y / 3 * 10));
    ASSERT_TRUE(Pixelate(src, dst, 0.5f, true));
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 12; ++x)
            EXPECT_EQ(Blue(dst, x, y), x / 6 * 100 + y / 3 * 10);
}

TEST(Pixelate, OutsideOfTheRegionAndInAlpha_NothingIsWritten)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture src(40, 40, format), dst(40, 40, format);
        src.FillNoise(1);
        dst.FillNoise(2);
        const GuardedPicture before = dst;
        // Blocks of 6: from 20 - 5 and 10 - 5 on, columns 12 to 29 and rows 0 to 17.
        ASSERT_TRUE(Pixelate(src, dst, 0.5f, false, {20, 10, 5, 5}));
        int changed = 0;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                for (int c = 0; c < 4; ++c) {
                    const bool same = IsFloatFormat(format) ? dst.Float(x, y, c) == before.Float(x, y, c)
                                                            : dst.Byte(x, y, c) == before.Byte(x, y, c);
                    const bool mayChange = x >= 12 && x < 30 && y < 18 && c != PlaceOfColour(format, 3);
                    ASSERT_TRUE(same || mayChange) << x << ", " << y;
                    changed += !same;
                }
        EXPECT_GT(changed, 18 * 18 * 3 * 9 / 10);
    }
}

// 64 halves make 32 exactly; of values above 1 no average is.
TEST(Pixelate, FloatAverages_AreCutToOne)
{
    GuardedPicture src(8, 54, PF_BGRA32F), dst(8, 54, PF_BGRA32F); // blocks of 8
    for (int y = 0; y < 54; ++y)
        for (int x = 0; x < 8; ++x)
            for (int c = 0; c < 3; ++c)
                src.SetFloat(x, y, c, y < 8 ? 0.5f : y < 16 ? 1.5f : -0.25f);
    ASSERT_TRUE(Pixelate(src, dst, 0.5f, false));
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(dst.Float(7, 7, c), 0.5f);
        EXPECT_EQ(dst.Float(0, 8, c), 1.0f);
        EXPECT_EQ(dst.Float(0, 16, c), -0.25f);
    }
}

TEST(Pixelate, RandomPicturesAndRegions_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 250; ++i) {
            const int width = static_cast<int>(random() % 60 + 1),
                      height = static_cast<int>(random() % 60 + 1);
            constexpr Guard guards[] = {Guard::Moat, Guard::PageEnd, Guard::PageStart};
            PictureLayout layout = {.guard = guards[random() % 3]};
            if (layout.guard == Guard::Moat)
                layout.slack = layout.shift = static_cast<std::int32_t>(random() % 6);
            GuardedPicture src(width, height, format, layout), dst(width, height, format, layout);
            constexpr Noise noises[] = {Noise::Uniform, Noise::Leaning, Noise::Special, Noise::Positive};
            src.FillNoise(static_cast<std::uint32_t>(random()), noises[random() % 4]);
            dst.FillNoise(static_cast<std::uint32_t>(random()));
            const float amount = static_cast<float>(random() % 101) / (i % 4 == 0 ? 20.0f : 200.0f);
            const bool halfHeight = random() % 2 != 0;
            const auto upTo = [&](int most) {
                return static_cast<int>(random() % static_cast<unsigned>(most));
            };
            const Ellipse region = {upTo(width), upTo(height), upTo(width), upTo(height)};
            reference::Picture expected = reference::Read(dst);
            reference::Pixelate(reference::Read(src), expected, amount, halfHeight, region.centreX,
                                region.centreY, region.radiusX, region.radiusY);
            src.Freeze();
            ASSERT_TRUE(Pixelate(src, dst, amount, halfHeight, region));
            ASSERT_TRUE(reference::Matches(dst, expected))
                << FormatName(format) << " " << width << " x " << height << ", " << amount << halfHeight;
            dst.Check();
        }
}

// 4 * 0.3 * 14 = 16.8: one block of 16 by 16 pixels over 16 by 4, half of them 200.
TEST(Pixelate, AnAmountFarBeyondOne_MakesOneBlockOfAWidePicture)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture src(16, 4, format), dst(16, 4, format);
        for (int y = 0; y < 4; ++y)
            for (int x = 8; x < 16; ++x)
                SetGrey(src, x, y, 200);
        ASSERT_TRUE(Pixelate(src, dst, 14.0f, false));
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 16; ++x)
                EXPECT_EQ(Blue(dst, x, y), 100);
    }
}

// Blocks of 300 rows: what 16 bits hold of a column is less.
TEST(Pixelate, BlocksOfManyRows_AreThePlainVersions)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const int height : {2000, 1714, 3430}) {
            GuardedPicture src(7, height, format), dst(7, height, format);
            src.FillNoise(1, Noise::Leaning);
            reference::Picture expected = reference::Read(dst);
            reference::Pixelate(reference::Read(src), expected, 0.5f, false, 0, 0, 1 << 20, 1 << 20);
            ASSERT_TRUE(Pixelate(src, dst, 0.5f, false));
            ASSERT_TRUE(reference::Matches(dst, expected));
        }
    GuardedPicture white(3, 2000, PF_ARGB8), out(3, 2000, PF_ARGB8);
    white.FillBytes(255);
    ASSERT_TRUE(Pixelate(white, out, 0.5f, false));
    EXPECT_EQ(Blue(out, 2, 1999), 255);
}

TEST(Pixelate, ARegionBesideThePicture_SucceedsAndWritesNothing)
{
    GuardedPicture src(9, 9, PF_BGRA8), dst(9, 9, PF_BGRA8);
    dst.Freeze();
    for (const Ellipse& beside : {Ellipse{30, 4, 5, 5}, {4, 30, 5, 5}})
        EXPECT_TRUE(Pixelate(src, dst, 0.5f, false, beside));
}

TEST(Pixelate, OtherFormatsAndSmallerOutputs_AreRefused)
{
    for (const std::uint32_t format : {PF_Packed8, PF_Mask8, PF_Mask32F}) {
        GuardedPicture src(9, 9, format), dst(9, 9, format);
        dst.Freeze();
        EXPECT_FALSE(Pixelate(src, dst, 0.5f, false));
    }
    const GuardedPicture src(9, 9, PF_BGRA8);
    GuardedPicture other(9, 9, PF_ARGB8), narrow(8, 9, PF_BGRA8), low(9, 8, PF_BGRA8);
    for (GuardedPicture* dst : {&other, &narrow, &low}) {
        dst->Freeze();
        EXPECT_FALSE(Pixelate(src, *dst, 0.5f, false));
    }
    FrameBuffer none, out = ViewOf(other);
    MemoryAllocator allocator;
    EXPECT_FALSE(Pixelate(none, out, 0.5f, false, kEverywhere, allocator));
}

TEST(Pixelate, OutputsWithTooFewPixelsOrBytesInARow_AreRefused)
{
    const GuardedPicture src(9, 9, PF_BGRA8);
    GuardedPicture narrow(8, 9, PF_BGRA8, {.slack = 4}), memory(9, 9, PF_BGRA8);
    narrow.Freeze();
    memory.Freeze();
    EXPECT_FALSE(Pixelate(src, narrow, 0.5f, false));
    FrameBuffer shortRows;
    shortRows.Attach(memory.Row(0), 9, 9, 35, 4, PF_BGRA8, false);
    MemoryAllocator allocator;
    EXPECT_FALSE(Pixelate(ViewOf(src), shortRows, 0.5f, false, kEverywhere, allocator));
}

TEST(Pixelate, WithoutMemory_WritesNothing)
{
    MemoryHabits habits;
    habits.refuseFrom = 0;
    FakeMemoryProvider memory(habits);
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    const GuardedPicture src(9, 9, PF_BGRA8);
    GuardedPicture dst(9, 9, PF_BGRA8);
    dst.Freeze();
    FrameBuffer view = ViewOf(dst);
    EXPECT_FALSE(Pixelate(ViewOf(src), view, 0.5f, false, kEverywhere, allocator));
    EXPECT_EQ(memory.Refused(), 1u);
}

TEST(Pixelate, WildAmounts_StayInBoundsAndEnd)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (const std::uint32_t format : kPictureFormats)
        for (const float amount :
             {-1.0f, 7.0f, 1e30f, infinity, -infinity, std::numeric_limits<float>::quiet_NaN()})
            for (const bool halfHeight : {false, true})
                for (const auto& [width, height] : {std::pair{1, 1}, {2, 300}, {300, 2}, {31, 17}}) {
                    GuardedPicture src(width, height, format, {.guard = Guard::PageEnd});
                    GuardedPicture dst(width, height, format, {.guard = Guard::PageStart});
                    src.FillNoise(1, Noise::Special);
                    EXPECT_TRUE(Pixelate(src, dst, amount, halfHeight));
                }
}

} // namespace
} // namespace kelmora::pixelator

#include "image/primitives/median.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <functional>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/median.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

using reference::MedianMask;
using reference::Picture;

struct Region {
    int width, height;
};

/// A picture that holds what the masks of a region reach, and no pixel more.
GuardedPicture SourceFor(Region region, const MedianMask& mask, const PictureLayout& layout = {})
{
    return GuardedPicture(region.width + mask.width - 1, region.height + mask.height - 1, PF_BGRA8, layout);
}

PxStatus Median(const GuardedPicture& src, GuardedPicture& dst, const MedianMask& mask, int channels)
{
    const auto member = channels == 3 ? pxMedian_8u_A3 : pxMedian_8u_C4;
    return member(ElementAt<std::uint8_t>(src, mask.anchorX, mask.anchorY), src.Stride(), dst.Row(0),
                  dst.Stride(), dst.Width(), dst.Height(), mask.width, mask.height, mask.anchorX,
                  mask.anchorY);
}

/// Both members with every variant, compared with sorting.
void CheckAgainstSorting(Region region, const MedianMask& mask,
                         const std::function<void(GuardedPicture&)>& draw, const PictureLayout& layout = {})
{
    GuardedPicture src = SourceFor(region, mask, layout);
    draw(src);
    src.Freeze();
    GuardedPicture dst(region.width, region.height, PF_BGRA8, layout);
    dst.FillNoise(2);
    const Picture before = reference::Read(dst);
    Picture three = before, four = before;
    reference::Median(reference::Read(src), mask.anchorX, mask.anchorY, four, mask, 4);
    for (int y = 0; y < region.height; ++y)
        for (int x = 0; x < region.width; ++x)
            for (int c = 0; c < 3; ++c)
                three.At(x, y, c) = four.At(x, y, c);
    ForEachVariant([&] {
        for (const int channels : {3, 4}) {
            reference::Write(before, dst);
            ASSERT_EQ(Median(src, dst, mask, channels), pxOk);
            ASSERT_TRUE(reference::Matches(dst, channels == 3 ? three : four))
                << region.width << " x " << region.height << ", mask " << mask.width << " x " << mask.height
                << " at " << mask.anchorX << ", " << mask.anchorY << ", " << channels << " channels, variant "
                << static_cast<int>(CurrentVariant());
            dst.Check();
        }
    });
    src.Check();
}

std::function<void(GuardedPicture&)> NoiseOf(std::uint32_t seed, Noise noise)
{
    return [=](GuardedPicture& picture) { picture.FillNoise(seed, noise); };
}

void Checker(GuardedPicture& picture)
{
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < 4; ++c)
                picture.SetByte(x, y, c, (x + y + c) % 2 != 0 ? 255 : 0);
}

/// Channels rise to the right, downward, along and against the diagonal, around at 256.
void Ramps(GuardedPicture& picture)
{
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x) {
            const std::array<int, 4> values = {x, y, x + y, 255 - x + y};
            for (int c = 0; c < 4; ++c)
                picture.SetByte(x, y, c, static_cast<std::uint8_t>(values[static_cast<std::size_t>(c)]));
        }
}

/// Few values, so that many are equal, and none of them near another.
void Few(GuardedPicture& picture)
{
    picture.FillNoise(5);
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < 4; ++c)
                picture.SetByte(x, y, c, static_cast<std::uint8_t>(picture.Byte(x, y, c) & 0xC1));
}

/// Slopes with some grain, which go up and down.
void Hills(GuardedPicture& picture)
{
    picture.FillNoise(9);
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < 4; ++c) {
                const int along = x * (c + 1) / 4 + y * (4 - c) / 3;
                const int level = std::abs(along % 200 - 100) + 70 + picture.Byte(x, y, c) % 8;
                picture.SetByte(x, y, c, static_cast<std::uint8_t>(level));
            }
}

/// Hills that steps in both directions cross, each from some row or column on.
void Cliffs(GuardedPicture& picture)
{
    Hills(picture);
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < 4; ++c) {
                const int step =
                    (y > 40 + 20 * c && x > 130 ? 75 : 0) + (y % 170 > 100 && x % 90 < 20 ? -60 : 0);
                picture.SetByte(x, y, c,
                                static_cast<std::uint8_t>(std::max(picture.Byte(x, y, c) + step, 0)));
            }
}

/// Rows take turns.
void Stripes(GuardedPicture& picture)
{
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < 4; ++c)
                picture.SetByte(x, y, c, (y + c) % 3 == 0 ? 240 : 20);
}

const std::function<void(GuardedPicture&)> kSlopes[] = {Hills, Cliffs, Stripes};

TEST(Median, EveryWidthAndLayoutWithSmallMasks_IsTheMiddleInOrder)
{
    for (const auto& size : {Region{1, 1}, {1, 9}, {9, 1}, {3, 3}, {5, 7}, {15, 15}})
        for (int width = 1; width <= 33; ++width)
            for (const int slack : {0, 1, 5})
                CheckAgainstSorting({width, 3}, reference::CentredMask(size.width, size.height),
                                    NoiseOf(static_cast<std::uint32_t>(width), Noise::Uniform),
                                    {.slack = slack, .shift = slack});
}

TEST(Median, LargeMasks_AreTheMiddleInOrder)
{
    struct {
        Region mask, region;
    } const cases[] = {
        {{55, 27}, {19, 9}},  {{127, 127}, {9, 5}}, {{129, 5}, {17, 7}},  {{5, 131}, {17, 7}},
        {{301, 3}, {21, 9}},  {{3, 301}, {21, 5}},  {{1, 257}, {33, 5}},  {{257, 1}, {33, 5}},
        {{127, 129}, {5, 4}}, {{257, 127}, {5, 4}}, {{259, 127}, {5, 4}}, {{17, 33}, {40, 40}},
        {{3, 3}, {130, 40}},
    };
    for (const auto& one : cases)
        for (const Noise noise : {Noise::Uniform, Noise::Leaning, Noise::Special})
            CheckAgainstSorting(one.region, reference::CentredMask(one.mask.width, one.mask.height),
                                NoiseOf(7, noise));
}

TEST(Median, MasksWiderThanAStrip_AreTheMiddleInOrder)
{
    for (const int width : {2047, 2049, 5001}) // strips are 2048 columns, or more beside a wide mask
        CheckAgainstSorting({3, 2}, reference::CentredMask(width, 1), NoiseOf(7, Noise::Uniform));
}

// The first row of the result stands above the masks, the others take rows that no mask needs any more.
TEST(Median, IntoTheSourcesMemoryAboveTheMasks_IsTheMiddleInOrder)
{
    struct {
        Region region;
        MedianMask mask;
    } const cases[] = {
        {{1, 1}, {1, 1, 0, 0}},    {{9, 7}, {1, 1, 0, 0}},    {{9, 7}, {1, 9, 0, 4}},
        {{40, 30}, {5, 3, 2, 1}},  {{70, 9}, {9, 5, 0, 4}},   {{70, 9}, {9, 5, 8, 0}},
        {{2051, 5}, {3, 3, 1, 1}}, {{4200, 4}, {7, 1, 3, 0}}, {{19, 9}, {5, 131, 2, 65}},
        {{400, 60}, {5, 3, 2, 1}}, {{90, 400}, {3, 5, 1, 2}},
    };
    for (const auto& one : cases) {
        const Region region = one.region;
        const MedianMask mask = one.mask;
        GuardedPicture source = SourceFor({region.width, region.height + 1}, mask);
        if (region.height < 32)
            source.FillNoise(3);
        else
            Cliffs(source);
        const Picture before = reference::Read(source);
        for (const int channels : {3, 4}) {
            Picture expected(region.width, region.height, PF_BGRA8);
            for (int y = 0; y < region.height; ++y)
                for (int x = 0; x < region.width; ++x)
                    expected.At(x, y, 3) = before.At(x, y, 3);
            reference::Median(before, mask.anchorX, mask.anchorY + 1, expected, mask, channels);
            const auto member = channels == 3 ? pxMedian_8u_A3 : pxMedian_8u_C4;
            ForEachVariant([&] {
                reference::Write(before, source);
                const auto* first = ElementAt<std::uint8_t>(source, mask.anchorX, mask.anchorY + 1);
                ASSERT_EQ(member(first, source.Stride(), source.Row(0), source.Stride(), region.width,
                                 region.height, mask.width, mask.height, mask.anchorX, mask.anchorY),
                          pxOk);
                const Picture after = reference::Read(source);
                for (int y = 0; y < region.height; ++y)
                    for (int x = 0; x < region.width; ++x)
                        for (int c = 0; c < 4; ++c)
                            ASSERT_EQ(after.At(x, y, c), expected.At(x, y, c)) << x << ", " << y;
            });
        }
    }
}

TEST(Median, FlatCheckeredRampsAndFewValues_AreTheMiddleInOrder)
{
    for (const auto& size : {Region{1, 1}, {3, 3}, {1, 9}, {9, 1}, {15, 15}, {31, 9}, {9, 65}})
        for (const auto& draw :
             {std::function<void(GuardedPicture&)>(Checker), std::function<void(GuardedPicture&)>(Ramps),
              std::function<void(GuardedPicture&)>(Few)})
            CheckAgainstSorting({21, 13}, reference::CentredMask(size.width, size.height), draw);
    for (const int level : {0, 1, 15, 16, 127, 128, 240, 254, 255})
        CheckAgainstSorting({9, 5}, reference::CentredMask(7, 5), [level](GuardedPicture& picture) {
            picture.FillBytes(static_cast<std::uint8_t>(level));
        });
}

// From 32 rows on, columns whose medians lie close together go a way of their own, in tiles of some 250 columns and
// blocks of 384 rows.
TEST(Median, ManyColumnsAndRows_AreTheMiddleInOrder)
{
    struct {
        Region mask, region;
    } const cases[] = {
        {{1, 1}, {300, 32}},  {{3, 3}, {600, 40}},  {{5, 3}, {47, 60}},   {{9, 5}, {140, 200}},
        {{1, 7}, {70, 800}},  {{7, 1}, {261, 390}}, {{31, 9}, {130, 60}}, {{127, 3}, {150, 40}},
        {{3, 127}, {50, 40}}, {{129, 3}, {60, 40}},
    };
    for (const auto& one : cases)
        for (const auto& draw : kSlopes)
            CheckAgainstSorting(one.region, reference::CentredMask(one.mask.width, one.mask.height), draw);
}

TEST(Median, ManyRowsAgainstUnreadablePages_AreNotReadBeyondTheMask)
{
    for (const Guard guard : {Guard::PageEnd, Guard::PageStart, Guard::PictureEnd, Guard::PictureStart})
        for (const auto& draw : kSlopes)
            CheckAgainstSorting({70, 40}, reference::CentredMask(7, 5), draw, {.guard = guard});
}

TEST(Median, AnchorsAtAllCorners_MoveTheMask)
{
    for (const auto& size : {Region{1, 9}, {9, 1}, {3, 3}, {15, 7}, {5, 131}})
        for (const int anchorX : {0, size.width / 2, size.width - 1})
            for (const int anchorY : {0, size.height / 2, size.height - 1})
                CheckAgainstSorting({11, 5}, {size.width, size.height, anchorX, anchorY},
                                    NoiseOf(3, Noise::Uniform));
}

TEST(Median, SourceAgainstUnreadablePages_IsNotReadBeyondTheMask)
{
    for (const Guard guard : {Guard::PageEnd, Guard::PageStart})
        for (const auto& size : {Region{1, 1}, {3, 3}, {15, 15}, {5, 131}, {131, 5}})
            for (const int width : {1, 7, 16, 33})
                CheckAgainstSorting({width, 5}, reference::CentredMask(size.width, size.height),
                                    NoiseOf(4, Noise::Uniform), {.guard = guard});
}

TEST(Median, HandComputedRanks_ComeOut)
{
    // 3 by 3: the fifth of nine.
    const std::uint8_t values[9] = {9, 1, 8, 2, 250, 3, 6, 4, 5};
    std::uint8_t src[36], dst[4] = {1, 2, 3, 44};
    for (int i = 0; i < 9; ++i)
        for (int c = 0; c < 4; ++c)
            src[4 * i + c] = static_cast<std::uint8_t>(values[i] + (c == 1 ? 5 : 0));
    ASSERT_EQ(pxMedian_8u_A3(src + 16, 12, dst, 4, 1, 1, 3, 3, 1, 1), pxOk);
    EXPECT_EQ(dst[0], 5);
    EXPECT_EQ(dst[1], 10);
    EXPECT_EQ(dst[3], 44);
}

TEST(Median, OneValueMoreOrLess_TurnsTheMiddle)
{
    // Of an odd count of zeros and 255s, the middle is what there is more of.
    for (const auto& size : {Region{3, 3}, {15, 15}, {127, 127}, {5, 131}, {257, 127}, {259, 127}}) {
        const int area = size.width * size.height;
        const MedianMask mask = reference::CentredMask(size.width, size.height);
        for (const int bright : {area / 2, area / 2 + 1}) {
            GuardedPicture src = SourceFor({1, 1}, mask);
            for (int i = 0; i < bright; ++i)
                for (int c = 0; c < 4; ++c)
                    src.SetByte(i % size.width, i / size.width, c, 255);
            ForEachVariant([&] {
                GuardedPicture dst(1, 1, PF_BGRA8);
                ASSERT_EQ(Median(src, dst, mask, 4), pxOk);
                for (int c = 0; c < 4; ++c)
                    EXPECT_EQ(dst.Byte(0, 0, c), bright > area / 2 ? 255 : 0) << size.width << " " << bright;
            });
        }
    }
}

TEST(Median, MaskOf68121Pixels_CountsBeyond16Bits)
{
    // A mask of 261 by 261 on a strip 5200 pixels long, as a radius of 130 asks for. Columns are all 200 or
    // all 10; of the 261 under a mask those of 200 decide. With counts of 16 bits 68121 would be 2585.
    constexpr int length = 5200, mask = 261, rows = 2;
    GuardedPicture src(length + mask - 1, rows + mask - 1, PF_BGRA8);
    const auto isBright = [](int x) { return (x / 400) % 2 == 0; };
    for (int y = 0; y < src.Height(); ++y)
        for (int x = 0; x < src.Width(); ++x) {
            const auto level = static_cast<std::uint8_t>(isBright(x) ? 200 : 10);
            src.SetColour(x, y, level, static_cast<std::uint8_t>(210 - level), 200, level);
        }
    src.Freeze();
    ForEachVariant([&] {
        GuardedPicture dst(length, rows, PF_BGRA8);
        ASSERT_EQ(Median(src, dst, reference::CentredMask(mask, mask), 4), pxOk);
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < length; ++x) {
                int bright = 0;
                for (int i = 0; i < mask; ++i)
                    bright += isBright(x + i) ? 1 : 0;
                const int level = bright > mask / 2 ? 200 : 10;
                ASSERT_EQ(dst.Byte(x, y, 0), level) << x;
                ASSERT_EQ(dst.Byte(x, y, 1), 210 - level) << x;
                ASSERT_EQ(dst.Byte(x, y, 2), 200) << x;
                ASSERT_EQ(dst.Byte(x, y, 3), level) << x;
            }
        dst.Check();
    });
}

TEST(Median, StripOf5200RowsWithRadius130_HoldsTheMiddle)
{
    // The same turned: rows decide.
    constexpr int length = 5200, mask = 261;
    GuardedPicture src(mask, length + mask - 1, PF_BGRA8);
    const auto isBright = [](int y) { return (y / 400) % 2 == 0; };
    for (int y = 0; y < src.Height(); ++y)
        for (int x = 0; x < src.Width(); ++x) {
            const auto level = static_cast<std::uint8_t>(isBright(y) ? 255 : 0);
            src.SetColour(x, y, level, static_cast<std::uint8_t>(255 - level), 7, level);
        }
    src.Freeze();
    ForEachVariant([&] {
        GuardedPicture dst(1, length, PF_BGRA8);
        ASSERT_EQ(Median(src, dst, reference::CentredMask(mask, mask), 3), pxOk);
        for (int y = 0; y < length; ++y) {
            int bright = 0;
            for (int i = 0; i < mask; ++i)
                bright += isBright(y + i) ? 1 : 0;
            const int level = bright > mask / 2 ? 255 : 0;
            ASSERT_EQ(dst.Byte(0, y, 0), level) << y;
            ASSERT_EQ(dst.Byte(0, y, 1), 255 - level) << y;
            ASSERT_EQ(dst.Byte(0, y, 2), 7) << y;
            ASSERT_EQ(dst.Byte(0, y, 3), 0) << y;
        }
    });
}

TEST(Median, BadArguments_AreRefused)
{
    GuardedPicture src(19, 18, PF_BGRA8), dst(5, 4, PF_BGRA8);
    dst.FillNoise(1);
    dst.Freeze();
    const std::uint8_t* s = ElementAt<std::uint8_t>(src, 7, 7);
    std::uint8_t* d = dst.Row(0);
    const int ss = src.Stride(), ds = dst.Stride();
    for (const auto member : {pxMedian_8u_A3, pxMedian_8u_C4}) {
        EXPECT_EQ(member(nullptr, ss, d, ds, 5, 4, 3, 3, 1, 1), pxNullPointer);
        EXPECT_EQ(member(s, ss, nullptr, ds, 5, 4, 3, 3, 1, 1), pxNullPointer);
        for (const int bad : {0, -1, INT_MIN}) {
            EXPECT_EQ(member(s, ss, d, ds, bad, 4, 3, 3, 1, 1), pxBadSize);
            EXPECT_EQ(member(s, ss, d, ds, 5, bad, 3, 3, 1, 1), pxBadSize);
            EXPECT_EQ(member(s, ss, d, ds, 5, 4, bad, 3, 1, 1), pxBadSize) << bad;
            EXPECT_EQ(member(s, ss, d, ds, 5, 4, 3, bad, 1, 1), pxBadSize) << bad;
        }
        for (const int bad : {19, 0, -20}) {
            EXPECT_EQ(member(s, bad, d, ds, 5, 4, 3, 3, 1, 1), pxBadStep) << bad;
            EXPECT_EQ(member(s, ss, d, bad, 5, 4, 3, 3, 1, 1), pxBadStep) << bad;
        }
        EXPECT_EQ(member(s, ss, d, ds, INT_MAX, 4, 3, 3, 1, 1), pxBadStep);
        for (const int bad : {2, 4, 100, INT_MAX - 1}) {
            EXPECT_EQ(member(s, ss, d, ds, 5, 4, bad, 3, 1, 1), pxBadMask) << bad;
            EXPECT_EQ(member(s, ss, d, ds, 5, 4, 3, bad, 1, 1), pxBadMask) << bad;
        }
        for (const int bad : {-1, 3, INT_MAX, INT_MIN}) {
            EXPECT_EQ(member(s, ss, d, ds, 5, 4, 3, 3, bad, 1), pxBadAnchor) << bad;
            EXPECT_EQ(member(s, ss, d, ds, 5, 4, 3, 3, 1, bad), pxBadAnchor) << bad;
        }
        // More values than any count holds.
        EXPECT_LT(member(s, ss, d, ds, 5, 4, INT_MAX, INT_MAX, 1, 1), 0);
        EXPECT_LT(member(s, ss, d, ds, 5, 4, 65537, 65537, 1, 1), 0);
    }
    dst.Check();
}

} // namespace
} // namespace kelmora

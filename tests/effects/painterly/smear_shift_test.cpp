#include "effects/painterly/smear_shift.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "effects/painterly/smear_kernels.h"
#include "tests/image/variants.h"
#include "tests/reference/blends.h"
#include "tests/reference/plain_transform.h"
#include "tests/reference/warp.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

using smear::RowPart;
using smear::Shift;

struct Way {
    float x, y;
};

Transform2D MoveBy(Way way)
{
    Transform2D move;
    move.Translate(way.x, way.y);
    return move;
}

RowPart PartOf(GuardedPicture& picture, int y)
{
    return {picture.Row(y), 0, picture.Width()};
}

/// The picture becomes the mean of itself and itself moved, in the order that the shift names.
void AverageAll(GuardedPicture& picture, const Shift& shift)
{
    for (int i = 0; i < picture.Height(); ++i) {
        const int y = shift.IsUpward() ? picture.Height() - 1 - i : i;
        Shift::Source source;
        if (shift.SourceOf(y, source))
            shift.Average(PartOf(picture, y), source, PartOf(picture, source.upper),
                          PartOf(picture, source.lower));
        else
            shift.Halve(PartOf(picture, y));
    }
}

/// The same, warped onto transparent black and mixed by the plain version.
reference::Picture PlainMean(const GuardedPicture& picture, Way way)
{
    reference::Picture mean = reference::Read(picture);
    reference::Picture moved(mean.width, mean.height, mean.format);
    reference::PlainTransform move;
    move.Translate(way.x, way.y);
    reference::WarpAffine(mean, moved, move.m);
    reference::Mix(moved, mean, 128, 128);
    return mean;
}

/// Whole and broken, up and down, to the left and to the right, just at the borders and out of the picture.
constexpr Way kWays[] = {{0, 0},          {3, 0},       {-3, 0},       {0, -2},        {0, 2},
                         {2.25f, 0},      {-0.25f, 0},  {0, 1.5f},     {0, -0.5f},     {-3.75f, 2.125f},
                         {3.75f, -2.5f},  {0.4f, 0.3f}, {-0.4f, 0.3f}, {0.4f, -0.3f},  {-0.4f, -0.3f},
                         {0.0004f, 0.5f}, {0.5f, 3},    {-5, 0.75f},   {0.002f, 0.3f}, {-0.0004f, -0.3f},
                         {100, 0},        {0, -100},    {6.5f, 0},     {-1, -1}};

TEST(SmearShift, Average_EveryWayAndWidth_IsTheMeanWithTheWarpedPicture)
{
    std::uint32_t seed = 0;
    ForEachVariant([&] {
        for (const std::uint32_t format : kPictureFormats)
            for (int width = 1; width <= 40; width += width < 20 ? 1 : 5)
                for (const Way way : kWays) {
                    PictureLayout layout;
                    layout.guard = width % 2 != 0 ? Guard::PageEnd : Guard::PageStart;
                    GuardedPicture picture(width, 4, format, layout);
                    picture.FillNoise(++seed, width % 3 == 0 ? Noise::Special : Noise::Leaning);
                    const reference::Picture expected = PlainMean(picture, way);
                    const Shift shift(MoveBy(way), {width, 4}, IsFloatFormat(format));
                    ASSERT_TRUE(shift.IsServed());
                    AverageAll(picture, shift);
                    picture.Check();
                    ASSERT_TRUE(reference::Matches(picture, expected))
                        << FormatName(format) << ", " << width << " columns by " << way.x << ", " << way.y;
                }
    });
}

TEST(SmearShift, IsServed_MovesThatTurnOrScaleOrAreNoNumbers_AreNot)
{
    Transform2D turn, scale, nothing;
    turn.Rotate(0.1f);
    scale.Scale(1.1f, 1.0f);
    nothing.Translate(std::numeric_limits<float>::quiet_NaN(), 0);
    for (const Transform2D& move : {turn, scale, nothing})
        EXPECT_FALSE(Shift(move, {9, 9}, true).IsServed());
    EXPECT_FALSE(Shift(MoveBy({1, 1}), {0, 9}, true).IsServed());
    EXPECT_TRUE(Shift(MoveBy({1, 1}), {9, 9}, true).IsServed());
}

// Pixel (x, y) of the moved picture was pixel (x - 2.25, y + 1.5).
TEST(SmearShift, ColumnAndLine_AreThoseOfTheUpperLeftNeighbour)
{
    const Shift shift(MoveBy({2.25f, -1.5f}), {9, 9}, true);
    EXPECT_TRUE(shift.Reaches());
    EXPECT_EQ(shift.X(), -2.25);
    EXPECT_EQ(shift.Y(), 1.5);
    EXPECT_EQ(shift.Column(), -3);
    EXPECT_EQ(shift.Line(), 1);
    EXPECT_FALSE(shift.IsUpward());
    EXPECT_TRUE(Shift(MoveBy({0, 0.5f}), {9, 9}, true).IsUpward());
    EXPECT_FALSE(Shift(MoveBy({9, 0}), {9, 9}, true).Reaches());
    EXPECT_FALSE(Shift(MoveBy({0, -9}), {9, 9}, true).Reaches());
}

TEST(SmearShift, SourceOf_ARowAtTheEnd_HasNoRowBelow)
{
    const Shift shift(MoveBy({0, -1.25f}), {5, 4}, true); // from 1.25 rows below
    Shift::Source source;
    ASSERT_TRUE(shift.SourceOf(1, source));
    EXPECT_EQ(source.upper, 2);
    EXPECT_EQ(source.lower, 3);
    EXPECT_EQ(source.belowFloat, 0.25f);
    EXPECT_FALSE(shift.SourceOf(2, source)); // 3.25 lies below the last one
    EXPECT_FALSE(shift.SourceOf(3, source));
    ASSERT_TRUE(Shift(MoveBy({0, -1}), {5, 4}, false).SourceOf(2, source));
    EXPECT_EQ(source.upper, 3);
    EXPECT_EQ(source.lower, 3);
    EXPECT_EQ(source.below, 0);
}

// Bytes know 512ths of a pixel, of which less than one is none, and no row is read beyond a thousandth.
TEST(SmearShift, IsLevel_AFewThousandthsOfARow_AreNone)
{
    EXPECT_TRUE(Shift(MoveBy({3, 0}), {9, 9}, true).IsLevel());
    EXPECT_FALSE(Shift(MoveBy({3, 0.0009f}), {9, 9}, true).IsLevel());
    EXPECT_TRUE(Shift(MoveBy({3, 0.0009f}), {9, 9}, false).IsLevel());
    EXPECT_FALSE(Shift(MoveBy({3, 0.0011f}), {9, 9}, false).IsLevel());
}

// Six pixels of 8, moved one to the right. Of the row that they come of, columns 2 to 4 are at hand: pixels 3 and 4
// become 8, as the right neighbour of the last one is read as well; the others 4.
TEST(SmearShift, Average_WhatIsNotAtHand_CountsAsNothing)
{
    ForEachVariant([] {
        GuardedPicture row(6, 1, PF_BGRA8), source(3, 1, PF_BGRA8);
        row.FillBytes(8);
        source.FillBytes(8);
        const Shift shift(MoveBy({1, 0}), {6, 1}, false);
        shift.Average(PartOf(row, 0), {}, {source.Row(0), 2, 5}, {source.Row(0), 2, 5});
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(row.Byte(x, 0, 1), x == 3 || x == 4 ? 8 : 4) << x;
        row.Check();
    });
}

// Of one row columns 1 to 4 are at hand, of the other one 2 to 5: 2 to 4 of both.
TEST(SmearShift, Average_WhatIsAtHandOfOneRowAlone_CountsAsNothing)
{
    ForEachVariant([] {
        for (const bool upperIsLeft : {false, true}) {
            GuardedPicture row(6, 1, PF_BGRA8), left(4, 1, PF_BGRA8), right(4, 1, PF_BGRA8);
            for (GuardedPicture* picture : {&row, &left, &right})
                picture->FillBytes(8);
            const RowPart begin = {left.Row(0), 1, 5}, end = {right.Row(0), 2, 6};
            const Shift shift(MoveBy({1, -0.5f}), {6, 2}, false);
            Shift::Source source;
            ASSERT_TRUE(shift.SourceOf(0, source));
            shift.Average(PartOf(row, 0), source, upperIsLeft ? begin : end, upperIsLeft ? end : begin);
            for (int x = 0; x < 6; ++x)
                EXPECT_EQ(row.Byte(x, 0, 1), x == 3 || x == 4 ? 8 : 4) << x;
        }
    });
}

// A row below of no weight adds nothing, unless it is infinite.
TEST(SmearShift, Average_WithoutARowBelow_IsThatWithAnOrdinaryOne)
{
    ForEachVariant([] {
        for (int width = 1; width <= 40; ++width)
            for (const float way : {0.25f, -0.25f, 3.5f, -2.0f}) {
                GuardedPicture row(width, 1, PF_BGRA32F), below(width, 1, PF_BGRA32F);
                row.FillNoise(static_cast<std::uint32_t>(width), Noise::Special);
                below.FillNoise(7, Noise::Positive);
                GuardedPicture other = row;
                const Shift shift(MoveBy({way, 0}), {width, 2}, true);
                shift.Average(PartOf(row, 0), {0, 1, 0, 0.0f}, PartOf(row, 0), {});
                shift.Average(PartOf(other, 0), {0, 1, 0, 0.0f}, PartOf(other, 0), PartOf(below, 0));
                EXPECT_TRUE(reference::Matches(row, reference::Read(other))) << width << " by " << way;
            }
    });
}

TEST(SmearShift, AreOrdinary_OneValueAnywhere_IsFound)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const float most = std::ldexp(1.0f, 100);
    const auto areOrdinary = [](const std::vector<float>& values) {
        return SmearKernelsFor(CurrentVariant()).areOrdinary(values.data(), static_cast<int>(values.size()));
    };
    ForEachVariant([&] {
        for (std::size_t count = 1; count <= 40; ++count)
            EXPECT_TRUE(areOrdinary(std::vector<float>(count, most)));
        for (std::size_t count = 1; count <= 40; ++count)
            for (std::size_t i = 0; i < count; ++i) {
                std::vector<float> values(count, 1.0f);
                for (const float fine : {0.0f, 1e-40f, 4.0f}) {
                    values[i] = fine;
                    EXPECT_TRUE(areOrdinary(values)) << fine;
                }
                for (const float strange :
                     {-0.0f, -1.0f, std::nextafter(most, kInfinity), kInfinity, -kInfinity,
                      std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::quiet_NaN()}) {
                    values[i] = strange;
                    EXPECT_FALSE(areOrdinary(values)) << strange << " at " << i << " of " << count;
                }
            }
    });
}

} // namespace
} // namespace kelmora

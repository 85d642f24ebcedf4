#include "effects/painterly/smear_streaks.h"

#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/image/buffers.h"
#include "tests/reference/blends.h"
#include "tests/reference/plain_transform.h"
#include "tests/reference/warp.h"
#include "tests/support/pictures.h"

namespace kelmora::smear {
namespace {

constexpr double kQuarter = 1.5707963; // upward in row numbers

Way MakeWay(double turn, int count, double step)
{
    return {turn, {count, step}};
}

/// The picture at the top left of a frame of `size`, laid over itself as often as the way says.
reference::Picture PlainStreak(const GuardedPicture& picture, Size size, const Way& way)
{
    const reference::Picture source = reference::Read(picture);
    reference::Picture frame(size.width, size.height, source.format);
    for (int y = 0; y < std::min(size.height, source.height); ++y)
        for (int x = 0; x < std::min(size.width, source.width); ++x)
            for (int c = 0; c < 4; ++c)
                frame.At(x, y, c) = source.At(x, y, c);
    double step = way.doublings.step;
    for (int i = 0; i < way.doublings.count; ++i, step *= 2) {
        reference::Picture moved(size.width, size.height, source.format);
        reference::PlainTransform move;
        move.Rotate(static_cast<float>(way.turn));
        move.Translate(static_cast<float>(step), 0);
        move.Rotate(static_cast<float>(-way.turn));
        reference::WarpAffine(frame, moved, move.m);
        reference::Mix(moved, frame, 128, 128);
    }
    return frame;
}

void CopyRow(const FrameBuffer& row, GuardedPicture& to, int x, int y)
{
    std::memcpy(to.Row(y) + x * to.PixelBytes(), row.GetPixels(),
                static_cast<std::size_t>(row.GetWidth() * to.PixelBytes()));
}

/// Of a picture that covers 5 columns and 2 rows less than its frame.
void CompareLevel(Size size, std::uint32_t format, Noise noise, const Way& way)
{
    GuardedPicture picture(std::max(size.width - 5, 1), std::max(size.height - 2, 1), format);
    picture.FillNoise(5, noise);
    const Steps steps(way, size, IsFloatFormat(format));
    ASSERT_TRUE(steps.AreServed() && steps.AreLevel());
    const FrameBuffer view = ViewOf(picture);
    MemoryAllocator allocator;
    LevelStreak streak(steps);
    ASSERT_TRUE(streak.Allocate(view, size, allocator));
    GuardedPicture result(size.width, size.height, format);
    for (int top = 0; top < size.height; top += LevelStreak::kBandRows) {
        const FrameBuffer& band = streak.Band(view, top);
        for (int y = 0; y < band.GetHeight(); ++y) {
            FrameBuffer row;
            AttachBand(row, band, y, 1);
            CopyRow(row, result, 0, top + y);
        }
    }
    EXPECT_TRUE(reference::Matches(result, PlainStreak(picture, size, way)))
        << FormatName(format) << ", " << way.doublings.count << " steps from " << way.doublings.step;
}

/// All that is wanted of the picture's streak, tile by tile.
void DrawTiles(SlantedStreak& streak, const Tiles& tiles, const FrameBuffer& picture, GuardedPicture& result)
{
    for (std::int64_t i = 0; i < tiles.Count(); ++i) {
        const Tile tile = tiles.At(i);
        streak.Begin(picture, tile);
        for (int y = tile.firstRow; y < tile.endRow; ++y)
            if (const Columns wanted = tiles.Wanted(tile, y); !wanted.IsEmpty())
                CopyRow(streak.Row(y), result, wanted.begin, y);
    }
}

void CompareSlanted(Size size, std::uint32_t format, Noise noise, const Way& way)
{
    GuardedPicture picture(std::max(size.width - 5, 1), std::max(size.height - 2, 1), format);
    picture.FillNoise(6, noise);
    const Steps steps(way, size, IsFloatFormat(format));
    ASSERT_TRUE(steps.AreServed() && !steps.AreLevel());
    const Slant slant = Slant::Along(steps.Last().X(), steps.Last().Y());
    const Tiles tiles(size, slant, steps.Margin(slant), 256);
    const FrameBuffer view = ViewOf(picture);
    MemoryAllocator allocator;
    SlantedStreak streak(steps, tiles);
    ASSERT_TRUE(streak.Allocate(view, allocator));
    GuardedPicture result(size.width, size.height, format);
    DrawTiles(streak, tiles, view, result);
    EXPECT_TRUE(reference::Matches(result, PlainStreak(picture, size, way)))
        << FormatName(format) << ", " << size.width << " x " << size.height << ", turn " << way.turn << ", "
        << way.doublings.count << " steps from " << way.doublings.step;
}

TEST(SmearStreaks, StepAlong_AQuarterTurn_MovesUpward)
{
    const Shift shift(StepAlong(kQuarter, 3), {9, 9}, true);
    EXPECT_NEAR(shift.X(), 0, 1e-6);
    EXPECT_NEAR(shift.Y(), 3, 1e-6);
}

TEST(SmearStreaks, AttachBandAndColumns_AreCutToThePicture)
{
    const GuardedPicture picture(10, 6, PF_BGRA8, {.slack = 8});
    const FrameBuffer view = ViewOf(picture);
    FrameBuffer part;
    AttachBand(part, view, 4, 8);
    EXPECT_EQ(part.GetPixels(), picture.Row(4));
    EXPECT_EQ(part.GetHeight(), 2);
    EXPECT_EQ(part.GetStride(), 48);
    AttachBand(part, view, 6, 8);
    EXPECT_EQ(part.GetPixels(), nullptr);
    EXPECT_EQ(part.GetHeight(), 0);
    AttachColumns(part, view, 3, 99);
    EXPECT_EQ(part.GetPixels(), picture.Row(0) + 12);
    EXPECT_EQ(part.GetWidth(), 7);
    EXPECT_EQ(part.GetStride(), 48);
    AttachColumns(part, view, 10, 12);
    EXPECT_EQ(part.GetPixels(), nullptr);
    EXPECT_EQ(part.GetWidth(), 0);
}

TEST(SmearSteps, OfAWay_DoubleFromOneToTheNext)
{
    const Steps steps(MakeWay(0, 4, -0.75), {100, 10}, true);
    ASSERT_EQ(steps.Count(), 4);
    double step = 0.75;
    for (const Shift& shift : steps) {
        EXPECT_EQ(shift.X(), step);
        step *= 2;
    }
    EXPECT_EQ(steps.Last().X(), 6);
    EXPECT_TRUE(steps.AreServed());
    EXPECT_TRUE(steps.AreLevel());
    EXPECT_FALSE(Steps(MakeWay(0.1, 4, 0.75), {100, 10}, true).AreLevel());
    EXPECT_TRUE(Steps(MakeWay(0.1, 0, 0.75), {100, 10}, true).AreLevel());
    EXPECT_FALSE(Steps(MakeWay(HUGE_VAL, 1, 0.75), {100, 10}, true).AreServed());
}

// Straight up and down, of a whole number of rows: the pixel that lies there and its right neighbour. Steps that reach
// out of the frame need nothing.
TEST(SmearSteps, Margin_StraightDown_IsAColumnPerStep)
{
    Way way = MakeWay(kQuarter, 5, 4);
    const Slant slant = Slant::Along(0, 1);
    EXPECT_GE(Steps(way, {50, 200}, false).Margin(slant), 5);
    EXPECT_LE(Steps(way, {50, 200}, false).Margin(slant), 10);
    EXPECT_EQ(Steps(way, {50, 3}, false).Margin(slant), 0);
}

TEST(LevelStreak, Band_AnyStepsAndRows_AreThePlainStreak)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const int height : {1, 7, 8, 9, 21})
            for (const int count : {0, 1, 2, 5, 9})
                for (const double step : {0.6, -0.8, 1.0})
                    CompareLevel({67, height}, format, Noise::Leaning, MakeWay(0, count, step));
}

// Negative values and such that leave the range of a float at some step, but nothing infinite.
TEST(LevelStreak, Band_FloatsThatAreNotOrdinary_AreThePlainStreak)
{
    GuardedPicture picture(40, 20, PF_BGRA32F);
    picture.FillNoise(3);
    for (int y = 0; y < 20; y += 3)
        picture.SetFloat(y, y, 1, y % 2 != 0 ? -3.5f : 1e35f);
    const Way way = MakeWay(0, 4, 0.7);
    const Steps steps(way, {40, 20}, true);
    MemoryAllocator allocator;
    LevelStreak streak(steps);
    const FrameBuffer view = ViewOf(picture);
    ASSERT_TRUE(streak.Allocate(view, {40, 20}, allocator));
    GuardedPicture result(40, 20, PF_BGRA32F);
    for (int top = 0; top < 20; top += LevelStreak::kBandRows) {
        const FrameBuffer& band = streak.Band(view, top);
        for (int y = 0; y < band.GetHeight(); ++y) {
            FrameBuffer row;
            AttachBand(row, band, y, 1);
            CopyRow(row, result, 0, top + y);
        }
    }
    EXPECT_TRUE(reference::Matches(result, PlainStreak(picture, {40, 20}, way)));
}

TEST(SlantedStreak, Row_SmallFrames_AreThePlainStreak)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const Size size : {Size{1, 1}, Size{1, 30}, Size{40, 1}, Size{23, 19}})
            for (const double turn : {0.01, 0.8, kQuarter, 2.0, 3.13, 3.9, 5.5, 6.27})
                for (const double step : {0.7, -0.9})
                    CompareSlanted(size, format, Noise::Special, MakeWay(turn, 4, step));
}

// Frames of several tiles.
TEST(SlantedStreak, Row_LargeFrames_AreThePlainStreak)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB32F})
        for (const double turn : {0.03, 0.5, 0.9, 1.4, 2.6, 3.1, 4.0, 6.2})
            CompareSlanted({700, 60}, format, Noise::Leaning, MakeWay(turn, 6, turn < 3 ? 0.6 : -0.6));
}

// Nearly a full turn: what comes of the first row would lie a millionth of a row above it. So that row counts, with the
// second one, which has no weight. Half a column to the right, the infinite pixel (10, 1) is one of the neighbours of
// columns 10 and 11, and what it has made of the second row by then is none.
TEST(SlantedStreak, Row_NearlyLevelUpward_LooksAtTheSecondRowAsItWas)
{
    GuardedPicture picture(20, 4, PF_BGRA32F);
    picture.FillBytes(0);
    picture.SetFloat(10, 1, 1, std::numeric_limits<float>::infinity());
    const FrameBuffer view = ViewOf(picture);
    const Steps steps(MakeWay(6.283185, 1, 0.5), {20, 4}, true);
    ASSERT_TRUE(steps.Last().IsUpward());
    const Slant slant = Slant::Along(steps.Last().X(), steps.Last().Y());
    const Tiles tiles({20, 4}, slant, steps.Margin(slant), 256);
    MemoryAllocator allocator;
    SlantedStreak streak(steps, tiles);
    ASSERT_TRUE(streak.Allocate(view, allocator));
    GuardedPicture row(20, 1, PF_BGRA32F);
    for (std::int64_t i = 0; i < tiles.Count(); ++i) {
        const Tile tile = tiles.At(i);
        const Columns wanted = tiles.Wanted(tile, 0);
        if (wanted.IsEmpty())
            continue;
        streak.Begin(view, tile);
        CopyRow(streak.Row(0), row, wanted.begin, 0);
    }
    for (int x = 0; x < 20; ++x)
        EXPECT_EQ(std::isnan(row.Float(x, 0, 1)), x == 10 || x == 11) << x;
}

TEST(SlantedStreak, Row_WithoutSteps_IsThePicturesOwnAndTakesOneRow)
{
    GuardedPicture picture(30, 12, PF_BGRA8);
    picture.FillNoise(8);
    const Steps none(MakeWay(0.7, 0, 0), {30, 12}, false);
    const Tiles tiles({30, 12}, Slant::Along(1, 1), 4, 16);
    const FrameBuffer view = ViewOf(picture);
    MemoryAllocator allocator;
    SlantedStreak streak(none, tiles);
    ASSERT_TRUE(streak.Allocate(view, allocator));
    GuardedPicture result(30, 12, PF_BGRA8);
    DrawTiles(streak, tiles, view, result);
    EXPECT_TRUE(Equal(result, picture));
}

} // namespace
} // namespace kelmora::smear

#include "host/pictures/picture_shrink.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

TEST(ShrunkHeight, Shape_IsKeptToTheNearest)
{
    EXPECT_EQ(ShrunkHeight(600, 400, 300), 200);
    EXPECT_EQ(ShrunkHeight(600, 400, 160), 107); // 106.67
    EXPECT_EQ(ShrunkHeight(600, 400, 200), 133); // 133.33
    EXPECT_EQ(ShrunkHeight(4, 3, 2), 2);         // 1.5
    EXPECT_EQ(ShrunkHeight(600, 400, 600), 400);
}

TEST(ShrunkHeight, FlatPicture_KeepsOneRow)
{
    EXPECT_EQ(ShrunkHeight(1000, 1, 10), 1);
}

TEST(Shrink, SameWidth_IsTheSamePicture)
{
    const Picture picture{2, 1, {1, 2, 3, 0, 5, 6, 7, 8}};
    EXPECT_EQ(Shrink(picture, 2), picture);
}

TEST(Shrink, WholeBlocks_GiveTheirMeans)
{
    const Picture picture{4, 2, {10, 0, 0, 255, 20, 0, 0, 255, 1, 0, 0, 255, 1, 0, 0, 255,
                                 30, 0, 0, 255, 40, 0, 0, 255, 1, 0, 0, 255, 3, 0, 0, 255}};
    // (10 + 20 + 30 + 40) / 4, and 6 / 4 = 1.5 up.
    EXPECT_EQ(Shrink(picture, 2), (Picture{2, 1, {25, 0, 0, 255, 2, 0, 0, 255}}));
}

TEST(Shrink, PixelBetweenTwo_CountsForBothByItsShare)
{
    const Picture picture{3, 1, {0, 0, 0, 255, 90, 0, 0, 255, 255, 0, 0, 255}};
    // A pixel and a half each: (0 + 45) / 1.5 and (45 + 255) / 1.5. The height stays 1.
    EXPECT_EQ(Shrink(picture, 2), (Picture{2, 1, {30, 0, 0, 255, 200, 0, 0, 255}}));
}

TEST(Shrink, Colour_CountsByItsAlpha)
{
    const Picture picture{2, 1, {200, 100, 0, 30, 0, 0, 255, 10}};
    // (200 * 30) / 40, (100 * 30) / 40, 2550 / 40 = 63.75, and 40 / 2.
    EXPECT_EQ(Shrink(picture, 1), (Picture{1, 1, {150, 75, 64, 20}}));
}

TEST(Shrink, WithoutAlpha_IsClear)
{
    EXPECT_EQ(Shrink({2, 1, {9, 9, 9, 0, 9, 9, 9, 0}}, 1), (Picture{1, 1, {0, 0, 0, 0}}));
}

} // namespace
} // namespace kelmora::host

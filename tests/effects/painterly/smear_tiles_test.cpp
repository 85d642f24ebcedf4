#include "effects/painterly/smear_tiles.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace kelmora::smear {
namespace {

/// Upright, both ways, steep and nearly level.
std::vector<Slant> Slants()
{
    return {Slant::Along(0, 5),  Slant::Along(3, -2),   Slant::Along(-1, 7),
            Slant::Along(40, 1), Slant::Along(900, -2), Slant::Along(1, 1e-30)};
}

/// A streak needs a row to each side, and some columns.
std::int64_t MarginOf(Slant slant, int columns)
{
    return std::max(slant.At(1), -slant.At(1)) + columns;
}

constexpr Size kSizes[] = {{1, 1}, {1300, 1}, {1, 900}, {700, 300}, {1300, 40}, {2600, 9}};

TEST(SmearSlant, At_IsRoundedDown)
{
    const Slant slant = Slant::Along(3, -2);
    EXPECT_EQ(slant.At(0), 0);
    EXPECT_EQ(slant.At(1), -2);
    EXPECT_EQ(slant.At(2), -3);
    EXPECT_EQ(slant.At(-1), 1);
    EXPECT_EQ(slant.At(-4), 6);
}

TEST(SmearSlant, Along_NearlyLevel_IsAMillionColumnsPerRow)
{
    EXPECT_EQ(Slant::Along(1, 1e-30).At(1), 1048576);
    EXPECT_EQ(Slant::Along(-5, 1e-9).At(2), -2097152);
}

TEST(SmearTiles, Wanted_EveryPixel_IsInOneTile)
{
    for (const Slant slant : Slants())
        for (const Size size : kSizes)
            for (const int columns : {0, 3, 60}) {
                const Tiles tiles(size, slant, MarginOf(slant, columns), 512);
                std::vector<int> times(static_cast<std::size_t>(size.width * size.height));
                for (std::int64_t i = 0; i < tiles.Count(); ++i) {
                    const Tile tile = tiles.At(i);
                    for (int y = tile.firstRow; y < tile.endRow; ++y)
                        for (int x = tiles.Wanted(tile, y).begin; x < tiles.Wanted(tile, y).end; ++x)
                            ++times[static_cast<std::size_t>(y * size.width + x)];
                }
                EXPECT_EQ(std::count(times.begin(), times.end(), 1), std::ssize(times))
                    << size.width << " x " << size.height << ", and " << columns;
            }
}

TEST(SmearTiles, All_HasTheMarginAroundAsFarAsTheFrameGoes)
{
    for (const Slant slant : Slants())
        for (const Size size : kSizes) {
            const std::int64_t margin = MarginOf(slant, 60);
            const Tiles tiles(size, slant, margin, 512);
            const Size most = tiles.Most();
            for (std::int64_t i = 0; i < tiles.Count(); ++i) {
                const Tile tile = tiles.At(i);
                EXPECT_LE(tile.endRow - tile.firstRow, most.height);
                for (int y = 0; y < size.height; ++y) {
                    const Columns all = tiles.All(tile, y), wanted = tiles.Wanted(tile, y);
                    EXPECT_EQ(all.IsEmpty(), y < tile.firstRow || y >= tile.endRow);
                    EXPECT_LE(all.end - all.begin, most.width);
                    if (wanted.IsEmpty())
                        continue;
                    EXPECT_LE(all.begin, std::max<std::int64_t>(wanted.begin - margin, 0));
                    EXPECT_GE(all.end, std::min<std::int64_t>(wanted.end + margin, size.width));
                }
            }
        }
}

// 512 columns and the margins, whose sides cross the frame within a few rows where the slant is flat.
TEST(SmearTiles, Most_IsFarLessThanTheFrame)
{
    const Tiles upright({4000, 2000}, Slant::Along(0, 1), 20, 512);
    EXPECT_EQ(upright.Most(), (Size{552, 2000}));
    const Tiles flat({4000, 2000}, Slant::Along(40, 1), 20, 512);
    EXPECT_EQ(flat.Most().width, 552);
    EXPECT_LE(flat.Most().height, (4000 + 552) / 40 + 1);
}

} // namespace
} // namespace kelmora::smear

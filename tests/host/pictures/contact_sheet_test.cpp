#include "host/pictures/contact_sheet.h"

#include <gtest/gtest.h>

#include "host/failure.h"

namespace kelmora::host {
namespace {

TEST(SheetGrid, LastRow_MayHaveEmptyPlaces)
{
    const SheetGrid full{10, 7, 6, 3};
    EXPECT_EQ(full.Rows(), 2);
    EXPECT_EQ(full.Width(), 30);
    EXPECT_EQ(full.Height(), 14);
    const SheetGrid oneMore{10, 7, 7, 3};
    EXPECT_EQ(oneMore.Rows(), 3);
    EXPECT_EQ(oneMore.Height(), 21);
}

TEST(SheetGrid, SizeBeyond32Bits_IsCounted)
{
    const SheetGrid grid{2'000'000'000, 2'000'000'000, 4, 2};
    EXPECT_EQ(grid.Width(), 4'000'000'000);
    EXPECT_EQ(grid.Height(), 4'000'000'000);
}

TEST(EmptySheet, IsTransparentBlack)
{
    EXPECT_EQ(EmptySheet({2, 1, 3, 2}), (Picture{4, 2, std::vector<std::uint8_t>(32)}));
}

TEST(EmptySheet, LargerThanAPictureCanBe_IsRefused)
{
    EXPECT_THROW(EmptySheet({65535, 65535, 1001, 1001}), Failure);
}

TEST(PlaceFrame, Frame_LandsAtItsPlaceAndNowhereElse)
{
    const SheetGrid grid{1, 2, 3, 2};
    Picture sheet = EmptySheet(grid);
    PlaceFrame(grid, 1, {1, 2, {1, 2, 3, 4, 5, 6, 7, 8}}, sheet);
    PlaceFrame(grid, 2, {1, 2, {9, 9, 9, 9, 10, 10, 10, 10}}, sheet);
    EXPECT_EQ(sheet, (Picture{2, 4, {0, 0, 0, 0, 1, 2, 3, 4, 0,  0,  0,  0,  5, 6, 7, 8,
                                     9, 9, 9, 9, 0, 0, 0, 0, 10, 10, 10, 10, 0, 0, 0, 0}}));
}

} // namespace
} // namespace kelmora::host

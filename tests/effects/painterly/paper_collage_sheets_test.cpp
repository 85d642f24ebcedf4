#include "effects/painterly/paper_collage_sheets.h"

#include <algorithm>
#include <array>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/fake_host.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

/// Greys below 100 are on sheet 0, below 200 on sheet 1, the others on sheet 2.
std::array<std::uint8_t, 256> ThreeSheets()
{
    std::array<std::uint8_t, 256> sheets = {};
    for (std::size_t grey = 0; grey < 256; ++grey)
        sheets[grey] = static_cast<std::uint8_t>(grey / 100);
    return sheets;
}

PaperLook PlainLook()
{
    PaperLook look = {};
    look.background = 0x000000;
    look.foreground = 0xFFFFFF;
    return look;
}

/// Lays `picture`, whose red is also its grey, on a canvas of the same size.
GuardedPicture Laid(int count, const std::array<std::uint8_t, 256>& sheetOf, const GuardedPicture& picture,
                    const PaperLook& look, FakeHost* host = nullptr)
{
    MemoryAllocator allocator(host);
    PaperSheets sheets(count, sheetOf);
    GuardedPicture canvas(picture.Width(), picture.Height(), PF_BGRA8);
    EXPECT_TRUE(sheets.Allocate({picture.Width(), picture.Height()}, look.shadowMargin, allocator));
    for (int y = 0; y < picture.Height(); ++y)
        sheets.AddRow(y, picture.Row(y), picture.Row(y));
    int next = 0;
    sheets.Lay(look, [&](int y, const std::uint8_t* row) {
        EXPECT_EQ(y, next++);
        std::copy_n(row, 4 * canvas.Width(), canvas.Row(y));
    });
    EXPECT_EQ(next, canvas.Height());
    return canvas;
}

void ExpectColour(const GuardedPicture& picture, int x, int y, int blue, int green, int red)
{
    const int expected[4] = {blue, green, red, 255};
    for (int c = 0; c < 4; ++c)
        EXPECT_EQ(picture.Byte(x, y, c), expected[c]) << "channel " << c << " at (" << x << ", " << y << ")";
}

// Three sheets from black to white: levels 0, 127 and 255 of the ramp, each short of two levels.
TEST(PaperSheets, Lay_NoBlendAndNoShadow_PaintsTheRamp)
{
    GuardedPicture picture(9, 2, PF_BGRA8);
    for (int x = 0; x < 9; ++x)
        for (int y = 0; y < 2; ++y)
            picture.SetColour(x, y, 7, 7, static_cast<std::uint8_t>(x < 3 ? 0 : x < 6 ? 100 : 255), 0);
    const GuardedPicture canvas = Laid(3, ThreeSheets(), picture, PlainLook());
    for (int y = 0; y < 2; ++y) {
        ExpectColour(canvas, 2, y, 0, 0, 0);
        ExpectColour(canvas, 3, y, 125, 125, 125);
        ExpectColour(canvas, 8, y, 253, 253, 253);
    }
}

TEST(PaperSheets, Lay_FullBlend_PaintsTheAveragesLessALevel)
{
    PaperLook look = PlainLook();
    look.blendColors = 255;
    GuardedPicture picture(4, 1, PF_BGRA8);
    picture.SetColour(0, 0, 10, 20, 30, 0);
    picture.SetColour(1, 0, 21, 41, 61, 0); // the averages are 15, 30 and 45
    picture.SetColour(2, 0, 200, 150, 250, 0);
    picture.SetColour(3, 0, 200, 150, 250, 0);
    const GuardedPicture canvas = Laid(3, ThreeSheets(), picture, look);
    ExpectColour(canvas, 0, 0, 14, 29, 44);
    ExpectColour(canvas, 1, 0, 14, 29, 44);
    ExpectColour(canvas, 3, 0, 199, 149, 249);
}

// Sums of 255 over 4096 by 2160 pixels are beyond 31 bits; the average is 255 all the same.
TEST(PaperSheets, Lay_ALargeWhitePicture_KeepsItsAverage)
{
    PaperLook look = PlainLook();
    look.foreground = 0x000000;
    look.blendColors = 255;
    MemoryAllocator allocator;
    PaperSheets sheets(3, ThreeSheets());
    ASSERT_TRUE(sheets.Allocate({4096, 2160}, 0, allocator));
    const std::vector<std::uint8_t> white(4 * 4096, 255);
    for (int y = 0; y < 2160; ++y)
        sheets.AddRow(y, white.data(), white.data());
    sheets.Lay(look, [](int, const std::uint8_t* row) {
        ASSERT_EQ(row[0], 254);
        ASSERT_EQ(row[4 * 4095 + 2], 254);
    });
}

// A black sheet of one column in white ground, its shadow one pixel to the right: of the softened shadow, 3 of 9,
// 85 of 255 are left beside its column on each side, 85 in the column itself: (253 * 170) is 168.
TEST(PaperSheets, Lay_AShadow_IsSoftAndLiesOnLowerSheetsAlone)
{
    PaperLook look = PlainLook();
    look.background = 0xFFFFFF;
    look.foreground = 0x000000;
    look.shadowDistance = 1;
    look.shadow = {1, 0};
    look.shadowMargin = 2;
    GuardedPicture picture(12, 12, PF_BGRA8);
    for (int y = 0; y < 12; ++y)
        picture.SetColour(5, y, 0, 0, 250, 0);
    std::array<std::uint8_t, 256> twoSheets = {};
    for (std::size_t grey = 128; grey < 256; ++grey)
        twoSheets[grey] = 1;
    const GuardedPicture canvas = Laid(2, twoSheets, picture, look);
    ExpectColour(canvas, 4, 6, 253, 253, 253);
    ExpectColour(canvas, 5, 6, 0, 0, 0); // the sheet itself
    ExpectColour(canvas, 6, 6, 168, 168, 168);
    ExpectColour(canvas, 7, 6, 168, 168, 168);
    ExpectColour(canvas, 8, 6, 253, 253, 253);
}

// One sheet alone, and an empty one above it whose shadow falls two pixels to the right. To the left of where it
// begins the mask of the sheet below is still there: 6 of 9 are left of it at the edge and beside it, (1535 * 455)
// >> 12 = 170, and 3 of 9 one further, 85. Of the sheet's 253 the shadow leaves 84 and 168.
TEST(PaperSheets, Kept_WhereNoShiftedMaskReaches_TheSheetBelowThrowsTheShadow)
{
    PaperLook look = PlainLook();
    look.background = 0xFFFFFF;
    look.shadowDistance = 2;
    look.shadow = {2, 0};
    look.shadowMargin = 4;
    std::array<std::uint8_t, 256> twoSheets = {};
    twoSheets[255] = 1;
    GuardedPicture picture(12, 12, PF_BGRA8);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 12; ++x)
            picture.SetColour(x, y, 0, 0, 0, 0);
    const GuardedPicture canvas = Laid(2, twoSheets, picture, look);
    ExpectColour(canvas, 0, 6, 84, 84, 84);
    ExpectColour(canvas, 1, 6, 84, 84, 84);
    ExpectColour(canvas, 2, 6, 168, 168, 168);
    ExpectColour(canvas, 3, 6, 253, 253, 253);
}

TEST(PaperSheets, Lay_ColouredShadows_HaveRedAndBlueExchanged)
{
    PaperLook look = PlainLook();
    look.background = 0x000000;
    look.foreground = 0x0000FF; // red
    look.shadowColour = 255;
    look.shadowDistance = 1;
    look.shadow = {1, 0};
    look.shadowMargin = 2;
    GuardedPicture picture(12, 12, PF_BGRA8);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 6; ++x)
            picture.SetColour(x, y, 0, 0, 250, 0);
    std::array<std::uint8_t, 256> twoSheets = {};
    for (std::size_t grey = 128; grey < 256; ++grey)
        twoSheets[grey] = 1;
    const GuardedPicture canvas = Laid(2, twoSheets, picture, look);
    // The sheet is 253 of red; its shadow (253 * 255) >> 8 = 252 in the place of blue, two thirds of it at 6.
    ExpectColour(canvas, 5, 6, 0, 0, 253);
    ExpectColour(canvas, 6, 6, 168, 0, 0); // 252 * 170 in units of 255
}

TEST(PaperSheets, Allocate_AMarginBeyondAnyPicture_IsFalse)
{
    MemoryAllocator allocator;
    for (const int margin : {1 << 29, 1 << 28, 20000}) {
        PaperSheets sheets(2, {});
        EXPECT_FALSE(sheets.Allocate({100, 100}, margin, allocator)) << margin;
    }
    PaperSheets sheets(2, {});
    EXPECT_TRUE(sheets.Allocate({100, 100}, 1000, allocator));
}

// Around the canvas softening finds black, not what the memory happened to hold.
TEST(PaperSheets, Lay_MemoryOfAnyContent_GivesTheSamePicture)
{
    GuardedPicture picture(12, 9, PF_BGRA8);
    picture.FillNoise(3);
    PaperLook look = PlainLook();
    look.shadowDistance = 1;
    look.shadow = {1, -1};
    for (const int margin : {0, 1, 4}) {
        look.shadowMargin = margin;
        std::vector<GuardedPicture> canvases;
        for (const std::uint32_t fill : {0u, 0xFFFFFFFFu}) {
            MemoryHabits habits;
            habits.fill = fill;
            FakeMemoryProvider memory(habits);
            FakeHost host;
            host.SetMemory(&memory);
            canvases.push_back(Laid(3, ThreeSheets(), picture, look, &host));
        }
        EXPECT_TRUE(Equal(canvases[0], canvases[1])) << margin;
    }
}

TEST(PaperSheets, Allocate_RefusedMemory_IsFalse)
{
    for (std::uint64_t n = 0; n < 3; ++n) {
        MemoryHabits habits;
        habits.refuseOnly = n;
        FakeMemoryProvider memory(habits);
        FakeHost host;
        host.SetMemory(&memory);
        MemoryAllocator allocator(&host);
        PaperSheets sheets(2, {});
        EXPECT_FALSE(sheets.Allocate({20, 20}, 3, allocator)) << n;
    }
}

} // namespace
} // namespace kelmora

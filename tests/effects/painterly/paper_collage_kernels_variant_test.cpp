#include "effects/painterly/paper_collage_kernels.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/variants.h"
#include "tests/reference/paper_collage.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {
namespace {

constexpr int kMostSheets = PaperKernels::kMostSheets;

/// Every short width, and some that are longer than what is added up in one stretch.
template <class Check>
void ForEachWidth(const Check& check)
{
    std::vector<int> widths = {255, 1023, 1024, 1025, 2051, 4096, 4097, 9000};
    for (int width = 1; width <= 140; ++width)
        widths.push_back(width);
    for (const int width : widths)
        ForEachVariant([&] { check(PaperKernelsFor(CurrentVariant()), width); });
}

/// A row of pixels up to an unreadable page.
GuardedPicture Pixels(int width, std::uint32_t seed)
{
    GuardedPicture row(width, 1, PF_BGRA8, {.guard = Guard::PageEnd});
    row.FillNoise(seed);
    return row;
}

/// Rows of one value per pixel.
GuardedPicture Values(int width, int rows = 1)
{
    return GuardedPicture(width, rows, PF_Mask8, {.guard = Guard::PageEnd});
}

/// Sheets as pictures have them: stretches of one, some of a single pixel, some long.
GuardedPicture Sheets(int width, int count, std::uint32_t seed)
{
    GuardedPicture row = Values(width);
    std::mt19937 random(seed);
    for (int x = 0; x < width;) {
        const auto sheet = static_cast<std::uint8_t>(random() % static_cast<unsigned>(count));
        const int length = static_cast<int>(random() % (random() % 3 == 0 ? 200 : 12)) + 1;
        for (const int end = std::min(width, x + length); x < end; ++x)
            row.SetByte(x, 0, 0, sheet);
    }
    return row;
}

TEST(PaperKernels, Greys_AreTheLumaTowardZero)
{
    ForEachWidth([](const PaperKernels& kernels, int width) {
        const GuardedPicture pixels = Pixels(width, 1), greys(width, 1, PF_BGRA8, {.guard = Guard::PageEnd});
        kernels.greys(pixels.Row(0), greys.Row(0), width);
        for (int x = 0; x < width; ++x) {
            const int grey =
                reference::PaperGrey(pixels.Byte(x, 0, 0), pixels.Byte(x, 0, 1), pixels.Byte(x, 0, 2));
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(greys.Byte(x, 0, c), c < 3 ? grey : 0) << x << " of " << width;
        }
    });
}

TEST(PaperKernels, Cut_CountsTheLimitsBelowEachGrey)
{
    const std::vector<std::vector<std::uint8_t>> limits = {{},
                                                           {127},
                                                           {0},
                                                           {255},
                                                           {63, 191},
                                                           {10, 10, 10, 200},
                                                           {31, 63, 95, 127, 159, 191, 223},
                                                           {0, 0, 254, 255}};
    ForEachWidth([&](const PaperKernels& kernels, int width) {
        GuardedPicture greys = Pixels(width, 2), sheets = Values(width);
        for (int x = 0; x < width && x < 256; ++x) // all levels, where there is room
            greys.SetByte(x, 0, 2, static_cast<std::uint8_t>(x * 37));
        for (const std::vector<std::uint8_t>& rising : limits) {
            kernels.cut(greys.Row(0), sheets.Row(0), width, rising.data(), static_cast<int>(rising.size()));
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(sheets.Byte(x, 0),
                          std::count_if(rising.begin(), rising.end(),
                                        [&](std::uint8_t limit) { return limit < greys.Byte(x, 0, 2); }))
                    << x << " of " << width;
        }
    });
}

TEST(PaperKernels, Add_SumsUpEverySheetsColours)
{
    ForEachWidth([](const PaperKernels& kernels, int width) {
        for (const int count : {1, 2, 8})
            for (const bool isWhite : {false, true}) {
                GuardedPicture pixels = Pixels(width, 3);
                if (isWhite)
                    pixels.Fill(255, 255, 255, 255);
                const GuardedPicture sheets = Sheets(width, count, static_cast<std::uint32_t>(width));
                PaperSums sums[kMostSheets], expected[kMostSheets];
                sums[1] = expected[1] = {5, 1000000000000, 2, 3}; // of the rows before
                for (int x = 0; x < width; ++x) {
                    PaperSums& sheet = expected[sheets.Byte(x, 0)];
                    ++sheet.count;
                    sheet.b += pixels.Byte(x, 0, 0);
                    sheet.g += pixels.Byte(x, 0, 1);
                    sheet.r += pixels.Byte(x, 0, 2);
                }
                kernels.add(pixels.Row(0), sheets.Row(0), width, sums);
                for (int i = 0; i < kMostSheets; ++i) {
                    ASSERT_EQ(sums[i].count, expected[i].count) << width;
                    ASSERT_EQ(sums[i].b, expected[i].b) << width;
                    ASSERT_EQ(sums[i].g, expected[i].g) << width;
                    ASSERT_EQ(sums[i].r, expected[i].r) << width;
                }
            }
    });
}

TEST(PaperKernels, Mask_CoversTheSheetAndThoseAbove)
{
    ForEachWidth([](const PaperKernels& kernels, int width) {
        const GuardedPicture sheets = Sheets(width, 8, 4), mask = Values(width);
        for (const int sheet : {0, 1, 7}) {
            kernels.mask(sheets.Row(0), mask.Row(0), width, sheet);
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(mask.Byte(x, 0), sheets.Byte(x, 0) >= sheet ? 255 : 0) << x << " of " << width;
        }
    });
}

/// Three rows of a mask, one value wider on both sides: all, none, and soft edges.
GuardedPicture MaskRows(int width, std::uint32_t seed)
{
    GuardedPicture rows = Values(width + 2, 3);
    std::mt19937 random(seed);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < width + 2; ++x) {
            const std::uint_fast32_t kind = random() % 7;
            const bool isEmpty = x / 70 % 2 != 0;
            rows.SetByte(x, y, 0,
                         static_cast<std::uint8_t>(isEmpty || kind < 3 ? 0
                                                       : kind < 6      ? 255
                                                                       : random()));
        }
    return rows;
}

/// ((sum of 3 by 3) + 5) * 455 over 4096.
int SoftAt(const GuardedPicture& rows, int x)
{
    int sum = 0;
    for (int y = 0; y < 3; ++y)
        for (int i = x; i <= x + 2; ++i)
            sum += rows.Byte(i, y);
    return ((sum + 5) * 455) >> 12;
}

TEST(PaperKernels, Soften_IsTheMeanOfNine)
{
    ForEachWidth([](const PaperKernels& kernels, int width) {
        const GuardedPicture rows = MaskRows(width, static_cast<std::uint32_t>(width)), soft = Values(width);
        kernels.soften(rows.Row(0) + 1, rows.Row(1) + 1, rows.Row(2) + 1, soft.Row(0), width);
        for (int x = 0; x < width; ++x)
            ASSERT_EQ(soft.Byte(x, 0), SoftAt(rows, x)) << x << " of " << width;
    });
}

/// The product of two bytes in units of 255.
int Product(int a, int b)
{
    const int p = a * b;
    return (p + (p >> 8) + 1) >> 8;
}

TEST(PaperKernels, Shade_LaysTheSoftenedMaskOnLowerSheetsAlone)
{
    constexpr std::uint32_t kShadow = 0x00C08021; // of blue 33, green 128, red 192
    ForEachWidth([](const PaperKernels& kernels, int width) {
        const auto seed = static_cast<std::uint32_t>(width);
        const GuardedPicture sheets = Sheets(width, 8, seed), rows = MaskRows(width, seed + 1);
        GuardedPicture opaque = Pixels(width, seed + 2);
        for (int x = 0; x < width; ++x)
            opaque.SetByte(x, 0, 3, 255);
        for (const int sheet : {0, 1, 4, 7}) {
            const GuardedPicture pixels = opaque;
            kernels.shade({pixels.Row(0), sheets.Row(0), rows.Row(0) + 1, rows.Row(1) + 1, rows.Row(2) + 1,
                           width, sheet, kShadow});
            for (int x = 0; x < width; ++x) {
                const int alpha = sheets.Byte(x, 0) < sheet ? SoftAt(rows, x) : 0;
                const int shadow[3] = {33, 128, 192};
                for (int c = 0; c < 3; ++c) {
                    const int was = opaque.Byte(x, 0, c);
                    const int expected =
                        alpha == 0 ? was : Product(shadow[c], alpha) + Product(was, 255 - alpha);
                    ASSERT_EQ(pixels.Byte(x, 0, c), expected) << x << " of " << width;
                }
                ASSERT_EQ(pixels.Byte(x, 0, 3), 255);
            }
        }
    });
}

TEST(PaperKernels, Colour_IsThatOfTheSheet)
{
    const std::uint32_t colours[kMostSheets] = {0xFF000001, 0xFF000203, 0xFF040506, 0xFF070809,
                                                0xFF0A0B0C, 0xFFFFFFFF, 0x00000000, 0x80C0E0F0};
    ForEachWidth([&](const PaperKernels& kernels, int width) {
        const GuardedPicture sheets = Sheets(width, 8, 5),
                             pixels(width, 1, PF_BGRA8, {.guard = Guard::PageEnd});
        kernels.colour(sheets.Row(0), pixels.Row(0), width, colours);
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(pixels.Byte(x, 0, c), colours[sheets.Byte(x, 0)] >> (8 * c) & 255)
                    << x << " of " << width;
    });
}

} // namespace
} // namespace kelmora

#include "image/primitives/flood_fill.h"

#include <climits>
#include <limits>
#include <random>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/reference/picture.h"
#include "tests/reference/pixelator.h"

namespace kelmora {
namespace {

using reference::Picture;

int SizeFor(int width, int height)
{
    int bytes = 0;
    EXPECT_EQ(pxFloodFillSize(width, height, &bytes), pxOk);
    return bytes;
}

/// Fills a plane of either type. The working space ends where an unreadable page starts.
PxStatus Fill(const GuardedPicture& plane, int seedX, int seedY, double value,
              PxFilledRegion* region = nullptr)
{
    const int whole = SizeFor(plane.Width(), plane.Height()) / 8 * 8;
    GuardedPicture work(whole, 1, PF_Mask8, {.guard = Guard::PageEnd});
    work.FillBytes(0xA5);
    if (plane.Format() == PF_Mask8)
        return pxFloodFill_8u_C1(plane.Row(0), plane.Stride(), plane.Width(), plane.Height(), seedX, seedY,
                                 static_cast<std::uint8_t>(value), region, work.Row(0));
    return pxFloodFill_32f_C1(plane.FloatRow(0), plane.Stride(), plane.Width(), plane.Height(), seedX, seedY,
                              static_cast<float>(value), region, work.Row(0));
}

void Set(GuardedPicture& plane, int x, int y, double value)
{
    if (plane.Format() == PF_Mask8)
        plane.SetByte(x, y, 0, static_cast<std::uint8_t>(value));
    else
        plane.SetFloat(x, y, 0, static_cast<float>(value));
}

/// A plane drawn by hand: a digit for each pixel.
GuardedPicture Drawn(std::uint32_t format, const std::vector<std::string_view>& rows)
{
    GuardedPicture plane(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), format);
    for (int y = 0; y < plane.Height(); ++y)
        for (int x = 0; x < plane.Width(); ++x)
            Set(plane, x, y, rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] - '0');
    return plane;
}

void CompareWithPlain(GuardedPicture& plane, int seedX, int seedY, double value)
{
    Picture expected = reference::Read(plane);
    const Picture before = expected;
    reference::FloodFill(expected, seedX, seedY, value);
    std::int64_t changed = 0;
    for (std::size_t i = 0; i < expected.values.size(); ++i)
        changed += expected.values[i] != before.values[i];
    PxFilledRegion region;
    ASSERT_EQ(Fill(plane, seedX, seedY, value, &region), pxOk);
    ASSERT_TRUE(reference::Matches(plane, expected))
        << plane.Width() << " x " << plane.Height() << " from " << seedX << ", " << seedY;
    EXPECT_EQ(region.pixels, changed);
    plane.Check();
}

TEST(FloodFillSize, OfAnyPlane_IsSixBytesAPixelAnd32)
{
    EXPECT_EQ(SizeFor(1, 1), 38);
    EXPECT_EQ(SizeFor(3, 5), 122);
    EXPECT_EQ(SizeFor(1920, 1080), 12441632);
    // 24 * width * height alone exceeds 32 bits here.
    EXPECT_EQ(SizeFor(10000, 10000), 600000032);
    EXPECT_EQ(SizeFor(357913935, 1), 2147483642);
}

TEST(FloodFillSize, BadArgumentsAndPlanesBeyondAnInt_AreRefused)
{
    int bytes = 77;
    EXPECT_EQ(pxFloodFillSize(2, 2, nullptr), pxNullPointer);
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_EQ(pxFloodFillSize(bad, 2, &bytes), pxBadSize);
        EXPECT_EQ(pxFloodFillSize(2, bad, &bytes), pxBadSize);
    }
    EXPECT_EQ(pxFloodFillSize(357913936, 1, &bytes), pxBadSize);
    EXPECT_EQ(pxFloodFillSize(INT_MAX, INT_MAX, &bytes), pxBadSize);
    EXPECT_EQ(bytes, 77);
}

TEST(FloodFill, AnAreaWithinAnOutline_IsFilledAcrossSidesAndNotCorners)
{
    for (const std::uint32_t format : {PF_Mask8, PF_Mask32F}) {
        const GuardedPicture plane = Drawn(format,
                                           {"0010000", //
                                            "0101000", //
                                            "1000100", //
                                            "0101020", //
                                            "0010000"});
        PxFilledRegion region;
        ASSERT_EQ(Fill(plane, 2, 2, 7, &region), pxOk);
        EXPECT_TRUE(Equal(plane,
                          Drawn(format,
                                {"0010000", //
                                 "0171000", //
                                 "1777100", //
                                 "0171020", //
                                 "0010000"})));
        EXPECT_EQ(region.pixels, 5);
        EXPECT_EQ(region.x, 1);
        EXPECT_EQ(region.y, 1);
        EXPECT_EQ(region.width, 3);
        EXPECT_EQ(region.height, 3);
    }
}

TEST(FloodFill, AnAreaThatTurnsBack_IsFilledWhole)
{
    for (const std::uint32_t format : {PF_Mask8, PF_Mask32F}) {
        const GuardedPicture plane = Drawn(format,
                                           {"0000001", //
                                            "1111101", //
                                            "0001101", //
                                            "0101101", //
                                            "0100001"});
        ASSERT_EQ(Fill(plane, 0, 0, 2), pxOk);
        EXPECT_TRUE(Equal(plane,
                          Drawn(format,
                                {"2222221", //
                                 "1111121", //
                                 "2221121", //
                                 "2121121", //
                                 "2122221"})));
    }
}

TEST(FloodFill, ASeedThatHasTheValue_SucceedsAndWritesNothing)
{
    for (const std::uint32_t format : {PF_Mask8, PF_Mask32F}) {
        GuardedPicture plane = Drawn(format, {"011", "010"});
        plane.Freeze();
        PxFilledRegion region = {5, 5, 5, 5, 5};
        EXPECT_EQ(Fill(plane, 1, 0, 1, &region), pxOk);
        EXPECT_EQ(region.pixels, 0);
        EXPECT_EQ(region.width, 0);
    }
}

TEST(FloodFill, RandomPlanes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : {PF_Mask8, PF_Mask32F})
        for (int i = 0; i < 1500; ++i) {
            const int width = static_cast<int>(random() % 40 + 1),
                      height = static_cast<int>(random() % 20 + 1);
            constexpr Guard guards[] = {Guard::Moat, Guard::PageEnd, Guard::PageStart};
            PictureLayout layout = {.guard = guards[random() % 3]};
            if (layout.guard == Guard::Moat) {
                layout.slack = static_cast<std::int32_t>(random() % 4);
                layout.shift = static_cast<std::int32_t>(random() % 8);
            }
            GuardedPicture plane(width, height, format, layout);
            const auto scarce = random() % 5 + 1; // few walls leave large areas
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    Set(plane, x, y, random() % scarce == 0 ? static_cast<double>(random() % 3) : 0.0);
            const int seedX = static_cast<int>(random() % static_cast<unsigned>(width));
            const int seedY = static_cast<int>(random() % static_cast<unsigned>(height));
            CompareWithPlain(plane, seedX, seedY, static_cast<double>(random() % 4));
        }
}

TEST(FloodFill, CombsSpiralsAndCheckers_NeedNoMoreThanTheWorkingSpace)
{
    const auto comb = [](int x, int y) { return y != 0 && x % 2 != 0; };
    const auto combDown = [](int x, int y) { return x != 0 && y % 2 != 0; };
    const auto checker = [](int x, int y) { return (x + y) % 2 != 0; };
    const auto dots = [](int x, int y) { return x % 2 != 0 && y % 2 != 0; };
    const auto none = [](int, int) { return false; };
    const auto spiral = [](int x, int y) { // of rings with a gap each
        const int ring = std::max(std::abs(x - 16), std::abs(y - 16));
        return ring % 2 != 0 && !(y == 16 && (ring % 4 == 1 ? x > 16 : x < 16));
    };
    using Wall = bool (*)(int, int);
    for (const std::uint32_t format : {PF_Mask8, PF_Mask32F})
        for (const Wall wall :
             {Wall(comb), Wall(combDown), Wall(checker), Wall(dots), Wall(none), Wall(spiral)})
            for (const auto& [width, height] :
                 {std::pair{33, 33}, {32, 9}, {1, 60}, {60, 1}, {2, 51}, {3, 51}})
                for (const auto& [seedX, seedY] :
                     {std::pair{0, 0}, {width - 1, height - 1}, {width / 2, height / 2}}) {
                    GuardedPicture plane(width, height, format);
                    for (int y = 0; y < height; ++y)
                        for (int x = 0; x < width; ++x)
                            Set(plane, x, y, wall(x, y) ? 1 : 0);
                    CompareWithPlain(plane, seedX, seedY, 9);
                }
}

TEST(FloodFill, FloatsThatAreNotEqual_AreWalls)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    GuardedPicture plane(5, 1, PF_Mask32F);
    plane.SetFloat(1, 0, 0, -0.0f); // equals 0
    plane.SetFloat(2, 0, 0, nan);
    ASSERT_EQ(Fill(plane, 0, 0, 0.5), pxOk);
    EXPECT_EQ(plane.Float(0, 0), 0.5f);
    EXPECT_EQ(plane.Float(1, 0), 0.5f);
    EXPECT_EQ(plane.Float(3, 0), 0.0f);
    PxFilledRegion region;
    EXPECT_EQ(Fill(plane, 2, 0, 0.5, &region), pxOk);
    EXPECT_EQ(region.pixels, 0);
}

TEST(FloodFill, BadArguments_AreRefused)
{
    GuardedPicture bytes(6, 4, PF_Mask8), floats(6, 4, PF_Mask32F);
    bytes.Freeze();
    floats.Freeze();
    std::vector<std::uint64_t> work(22);
    const auto check = [&](auto* plane, int step, auto member) {
        const auto fill = [&](auto* p, int s, int w, int h, int x, int y, void* space) {
            return member(p, s, w, h, x, y, {}, nullptr, space);
        };
        EXPECT_EQ(fill(decltype(plane){nullptr}, step, 6, 4, 0, 0, work.data()), pxNullPointer);
        EXPECT_EQ(fill(plane, step, 6, 4, 0, 0, nullptr), pxNullPointer);
        for (const int bad : {0, -1, INT_MIN}) {
            EXPECT_EQ(fill(plane, step, bad, 4, 0, 0, work.data()), pxBadSize);
            EXPECT_EQ(fill(plane, step, 6, bad, 0, 0, work.data()), pxBadSize);
            EXPECT_EQ(fill(plane, bad, 6, 4, 0, 0, work.data()), pxBadStep);
        }
        EXPECT_EQ(fill(plane, step, 6, INT_MAX, 0, 0, work.data()), pxBadSize);
        for (const int bad : {-1, 6, INT_MAX, INT_MIN})
            EXPECT_EQ(fill(plane, step, 6, 4, bad, 0, work.data()), pxSeedOutside);
        for (const int bad : {-1, 4, INT_MAX, INT_MIN})
            EXPECT_EQ(fill(plane, step, 6, 4, 0, bad, work.data()), pxSeedOutside);
    };
    check(bytes.Row(0), bytes.Stride(), pxFloodFill_8u_C1);
    check(floats.FloatRow(0), floats.Stride(), pxFloodFill_32f_C1);
    EXPECT_EQ(pxSeedOutside, -11);
}

} // namespace
} // namespace kelmora

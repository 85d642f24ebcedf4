#include "effects/fixing/pixelator_mask.h"

#include <cstdlib>
#include <random>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference/pixelator.h"
#include "tests/support/fake_host.h"

namespace kelmora::pixelator {
namespace {

using reference::Picture;

constexpr std::uint32_t kPlanes[] = {PF_Mask8, PF_Mask32F};

FrameBuffer ViewOf(const GuardedPicture& plane)
{
    const VideoFrame frame = plane.Frame();
    FrameBuffer view;
    view.AttachFrame(&frame);
    return view;
}

void Draw(const GuardedPicture& plane, const Ellipse& ellipse)
{
    FrameBuffer view = ViewOf(plane);
    DrawEllipse(view, ellipse);
}

void Flood(const GuardedPicture& plane, int seedX, int seedY, int value = 255)
{
    FrameBuffer view = ViewOf(plane);
    MemoryAllocator allocator;
    FloodMask(view, seedX, seedY, value, allocator);
}

bool IsFull(const GuardedPicture& plane, int x, int y)
{
    return plane.Format() == PF_Mask8 ? plane.Byte(x, y) == 255 : plane.Float(x, y) == 1.0f;
}

bool IsEmpty(const GuardedPicture& plane, int x, int y)
{
    return plane.Format() == PF_Mask8 ? plane.Byte(x, y) == 0 : plane.Float(x, y) == 0.0f;
}

/// For EXPECT_TRUE: full where there is a '#', empty elsewhere.
testing::AssertionResult Shows(const GuardedPicture& plane, const std::vector<std::string_view>& rows)
{
    for (int y = 0; y < plane.Height(); ++y)
        for (int x = 0; x < plane.Width(); ++x) {
            const bool full = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] == '#';
            if (!(full ? IsFull : IsEmpty)(plane, x, y))
                return testing::AssertionFailure() << "at " << x << ", " << y;
        }
    return testing::AssertionSuccess();
}

// a2 = 4, b2 = 1, d = (1 - 4) * 1 + 1 = -2. To (1, 1) with d = -2 + 1 + 2 = 1; then down, d stays, and to (2, 0).
TEST(DrawEllipse, RadiiOf2And1_AreTenPoints)
{
    for (const std::uint32_t format : kPlanes) {
        const GuardedPicture plane(7, 5, format);
        Draw(plane, {3, 2, 2, 1});
        EXPECT_TRUE(Shows(plane,
                          {".......", //
                           "..###..", //
                           ".#...#.", //
                           "..###..", //
                           "......."}));
    }
}

TEST(DrawEllipse, BeyondTheEdges_DrawsWhatLiesInside)
{
    for (const std::uint32_t format : kPlanes)
        for (const Guard guard : {Guard::PageEnd, Guard::PageStart}) {
            const GuardedPicture plane(2, 2, format, {.guard = guard});
            Draw(plane, {0, 0, 2, 1});
            EXPECT_TRUE(Shows(plane, {"..", "##"}));
            plane.Check();
        }
}

TEST(DrawEllipse, WhereverThe32BitsSuffice_IsThe32BitOutline)
{
    std::mt19937 random(1);
    int fits = 0;
    for (int i = 0; i < 300; ++i) {
        const std::uint32_t format = kPlanes[random() % 2];
        const GuardedPicture plane(static_cast<int>(random() % 120 + 1), static_cast<int>(random() % 90 + 1),
                                   format);
        const Ellipse ellipse = {static_cast<int>(random() % 130) - 5, static_cast<int>(random() % 100) - 5,
                                 static_cast<int>(random() % (i % 2 == 0 ? 40 : 240)),
                                 static_cast<int>(random() % (i % 2 == 0 ? 40 : 180))};
        Picture expected = reference::Read(plane);
        fits += reference::DrawEllipse(expected, ellipse.centreX, ellipse.centreY, ellipse.radiusX,
                                       ellipse.radiusY);
        Draw(plane, ellipse);
        ASSERT_TRUE(reference::Matches(plane, expected)) << ellipse.radiusX << " " << ellipse.radiusY;
    }
    EXPECT_EQ(fits, 300);
}

TEST(DrawEllipse, OfMaxAt1280By720_FitsThe32Bits)
{
    const GuardedPicture plane(1280, 720, PF_Mask8);
    const Ellipse max = MakeEllipse({0.488372f, 0.465116f, 1.0f, 1.0f, 1.0f}, 1280, 720, false);
    Picture expected = reference::Read(plane);
    EXPECT_TRUE(reference::DrawEllipse(expected, max.centreX, max.centreY, max.radiusX, max.radiusY));
    Draw(plane, max);
    EXPECT_TRUE(reference::Matches(plane, expected));
}

// Filled, no pixel lies more than a pixel on the wrong side of the true ellipse.
TEST(DrawEllipse, LargeOnes_AreTheTrueEllipseWithinAPixel)
{
    struct Case {
        int width, height;
        Knobs knobs;
        bool fits;
    };
    const Case cases[] = {
        {1920, 1080, {0.488372f, 0.465116f, 1.0f, 1.0f, 1.0f}, false}, // "Max"
        {1920, 1080, {0.1f, 0.9f, 1.0f, 1.0f, 1.0f}, false},
        {3840, 2160, {0.511628f, 0.465116f, 0.41f, 0.615f, 0.505f}, false}, // the defaults
        {3000, 40, {0.5f, 0.5f, 0.7f, 0.6f, 0.5f}, true},
        {640, 480, {0.5f, 0.5f, 0.7f, 0.6f, 0.5f}, true},
    };
    for (const Case& one : cases) {
        const Ellipse e = MakeEllipse(one.knobs, one.width, one.height, false);
        Picture unread(1, 1, PF_Mask8);
        EXPECT_EQ(reference::DrawEllipse(unread, 0, 0, e.radiusX, e.radiusY), one.fits);
        const GuardedPicture plane(one.width, one.height, PF_Mask8);
        Draw(plane, e);
        Flood(plane, e.centreX, e.centreY);
        const auto inside = [&](int dx, int dy) { // as far from the centre, of the true ellipse
            const double u = dx / static_cast<double>(e.radiusX), v = dy / static_cast<double>(e.radiusY);
            return u * u + v * v <= 1.0;
        };
        for (int y = 0; y < one.height; ++y)
            for (int x = 0; x < one.width; ++x) {
                const int dx = std::abs(x - e.centreX), dy = std::abs(y - e.centreY);
                const bool mayBeFull = inside(dx, dy) || inside(dx - 1, dy) || inside(dx, dy - 1);
                const bool mayBeEmpty = !inside(dx + 1, dy) || !inside(dx, dy + 1);
                ASSERT_TRUE(IsFull(plane, x, y) ? mayBeFull : mayBeEmpty)
                    << x << ", " << y << " of " << one.width;
            }
    }
}

TEST(DrawEllipse, WildRadii_StayInBoundsAndEnd)
{
    for (const int side : {1, 2, 50, 1000}) {
        const GuardedPicture plane(side, side, PF_Mask8, {.guard = Guard::PageEnd});
        for (const int radius : {0, 1, side, 2 * side})
            for (const int other : {0, 1, side, 2 * side})
                Draw(plane, {side / 2, side / 2, radius, other});
        plane.Check();
    }
}

// With no width the points run down the middle; with no height only the two ends and the centre are drawn.
TEST(DrawEllipse, Kept_ARadiusOf0_LeavesAThinCross)
{
    for (const std::uint32_t format : kPlanes) {
        const GuardedPicture dot(5, 5, format), line(5, 5, format), ends(5, 5, format);
        Draw(dot, {2, 2, 0, 0});
        Flood(dot, 2, 2);
        EXPECT_TRUE(Shows(dot, {".....", ".....", "..#..", ".....", "....."}));
        Draw(line, {2, 2, 0, 2});
        Flood(line, 2, 2);
        EXPECT_TRUE(Shows(line, {"..#..", "..#..", "..#..", "..#..", "..#.."}));
        Draw(ends, {2, 2, 2, 0});
        Flood(ends, 2, 2);
        EXPECT_TRUE(Shows(ends, {".....", ".....", "#.#.#", ".....", "....."}));
    }
}

TEST(DrawEllipse, OtherPicturesAndNone_AreLeftAlone)
{
    FrameBuffer none;
    DrawEllipse(none, {0, 0, 3, 3});
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F}) {
        GuardedPicture picture(9, 9, format);
        picture.Freeze();
        Draw(picture, {4, 4, 3, 3});
        Flood(picture, 4, 4);
    }
    GuardedPicture wide(9, 9, 4, PF_Mask8); // not the pixels of its format
    wide.Freeze();
    Draw(wide, {4, 4, 3, 3});
    Flood(wide, 4, 4);
}

TEST(FloodMask, WithinAnOutline_MakesASolidEllipse)
{
    for (const std::uint32_t format : kPlanes) {
        const GuardedPicture plane(7, 5, format);
        Draw(plane, {3, 2, 2, 1});
        Flood(plane, 3, 2);
        EXPECT_TRUE(Shows(plane,
                          {".......", //
                           "..###..", //
                           ".#####.", //
                           "..###..", //
                           "......."}));
    }
}

TEST(FloodMask, OtherValues_AreOf255)
{
    const GuardedPicture bytes(3, 3, PF_Mask8), floats(3, 3, PF_Mask32F);
    Flood(bytes, 1, 1, 51);
    Flood(floats, 1, 1, 51);
    EXPECT_EQ(bytes.Byte(2, 0), 51);
    EXPECT_EQ(floats.Float(2, 0), 0.2f);
}

TEST(FloodMask, SeedsOutsideAndNoPixels_DoNothing)
{
    FrameBuffer none;
    MemoryAllocator allocator;
    FloodMask(none, 0, 0, 255, allocator);
    for (const std::uint32_t format : kPlanes) {
        GuardedPicture plane(6, 4, format);
        plane.Freeze();
        for (const auto& [x, y] : {std::pair{-1, 0}, {0, -1}, {6, 0}, {0, 4}})
            Flood(plane, x, y);
    }
}

TEST(FloodMask, WithoutMemory_LeavesThePlane)
{
    MemoryHabits habits;
    habits.refuseFrom = 0;
    FakeMemoryProvider memory(habits);
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    GuardedPicture plane(6, 4, PF_Mask8);
    plane.Freeze();
    FrameBuffer view = ViewOf(plane);
    FloodMask(view, 2, 2, 255, allocator);
    EXPECT_EQ(memory.Refused(), 1u);
}

TEST(FloodMask, Kept_AnOutlineOutsideOfThePlane_FillsAllOfIt)
{
    for (const std::uint32_t format : kPlanes) {
        const GuardedPicture plane(20, 10, format);
        Draw(plane, {10, 5, 40, 20});
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 20; ++x)
                ASSERT_TRUE(IsEmpty(plane, x, y));
        Flood(plane, 10, 5);
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 20; ++x)
                ASSERT_TRUE(IsFull(plane, x, y));
    }
}

} // namespace
} // namespace kelmora::pixelator

#include "effects/fixing/crop_borders_rows.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "image/pixel_format.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_memory_provider.h"
#include "tests/support/guarded_picture.h"

namespace kelmora::crop_borders {
namespace {

FrameBuffer ViewOf(const GuardedPicture& picture)
{
    FrameBuffer view;
    const VideoFrame frame = picture.Frame();
    view.AttachFrame(&frame);
    return view;
}

constexpr Crop kHard = {{4, 3, 20, 13}, 0.0f, 0.0f};

/// A picture of 24 by 16 with columns as blue, rows as green, and alpha 200.
GuardedPicture Graded(std::uint32_t format)
{
    GuardedPicture picture(24, 16, format);
    const int alpha = AlphaIndex(format);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 24; ++x) {
            picture.SetByte(x, y, 3 - alpha, static_cast<std::uint8_t>(x));
            picture.SetByte(x, y, alpha == 3 ? 1 : 2, static_cast<std::uint8_t>(y));
            picture.SetByte(x, y, alpha, 200);
        }
    return picture;
}

TEST(CropRows, HardOverlay_IsTheKeptPartOnTheGround)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture picture = Graded(format);
        GuardedPicture ground(24, 16, format);
        ground.FillBytes(90);
        FrameBuffer out = ViewOf(ground);
        const FrameBuffer source = ViewOf(picture);
        MemoryAllocator allocator;
        CropRows rows(source, out, kHard);
        ASSERT_TRUE(rows.AreServed());
        ASSERT_TRUE(rows.Begin(allocator));
        rows.Overlay();
        const int blue = 3 - AlphaIndex(format), alpha = AlphaIndex(format);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 24; ++x) {
                const bool kept = x >= 4 && x < 20 && y >= 3 && y < 13;
                EXPECT_EQ(ground.Byte(x, y, blue), kept ? x : 90) << x << ", " << y;
                EXPECT_EQ(ground.Byte(x, y, alpha), 200);
            }
        ground.Check();
    }
}

TEST(CropRows, HardTransparent_IsExtendedWithNoAlphaAround)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture picture = Graded(format);
        GuardedPicture result(24, 16, format);
        FrameBuffer out = ViewOf(result);
        const FrameBuffer source = ViewOf(picture);
        MemoryAllocator allocator;
        CropRows rows(source, out, kHard);
        ASSERT_TRUE(rows.Begin(allocator));
        rows.Transparent();
        const int blue = 3 - AlphaIndex(format), alpha = AlphaIndex(format);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 24; ++x) {
                const bool kept = x >= 4 && x < 20 && y >= 3 && y < 13;
                EXPECT_EQ(result.Byte(x, y, alpha), kept ? 200 : 0) << x << ", " << y;
                EXPECT_EQ(result.Byte(x, y, blue), std::clamp(x, 4, 19)) << x << ", " << y;
            }
        result.Check();
    }
}

TEST(CropRows, TinyPicturesFloatsAndRectanglesOutside_AreNotServed)
{
    const auto served = [](int width, int height, std::uint32_t format, const Rect& kept) {
        const GuardedPicture picture(width, height, format), out(width, height, format);
        FrameBuffer view = ViewOf(out);
        const FrameBuffer source = ViewOf(picture);
        return CropRows(source, view, {kept, 3.0f, 3.0f}).AreServed();
    };
    EXPECT_TRUE(served(16, 16, PF_BGRA8, {1, 1, 15, 15}));
    EXPECT_TRUE(served(16, 16, PF_ARGB8, {0, 0, 16, 16}));
    EXPECT_FALSE(served(15, 16, PF_BGRA8, {1, 1, 14, 15}));
    EXPECT_FALSE(served(16, 15, PF_BGRA8, {1, 1, 15, 14}));
    EXPECT_FALSE(served(16, 16, PF_BGRA32F, {1, 1, 15, 15}));
    EXPECT_FALSE(served(16, 16, PF_BGRA8, {-1, 1, 15, 15}));
    EXPECT_FALSE(served(16, 16, PF_BGRA8, {1, 1, 17, 15}));
    EXPECT_FALSE(served(16, 16, PF_BGRA8, {1, -1, 15, 15}));
    EXPECT_FALSE(served(16, 16, PF_BGRA8, {1, 1, 15, 17}));
    EXPECT_FALSE(served(16, 16, PF_BGRA8, {5, 5, 5, 6}));
    EXPECT_FALSE(served(16, 16, PF_BGRA8, {8, 1, 15, 15})) << "nothing is left between the margins";
}

TEST(CropRows, NoMemory_IsSaid)
{
    const GuardedPicture picture(24, 16, PF_BGRA8), out(24, 16, PF_BGRA8);
    FrameBuffer view = ViewOf(out);
    const FrameBuffer source = ViewOf(picture);
    for (std::uint64_t n = 0; n < 3; ++n) {
        MemoryHabits habits;
        habits.refuseOnly = n;
        FakeMemoryProvider memory(habits);
        FakeHost host({});
        host.SetMemory(&memory);
        MemoryAllocator allocator(&host);
        CropRows rows(source, view, kHard);
        EXPECT_FALSE(rows.Begin(allocator)) << n;
    }
}

} // namespace
} // namespace kelmora::crop_borders

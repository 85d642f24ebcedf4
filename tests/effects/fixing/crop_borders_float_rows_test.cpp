#include "effects/fixing/crop_borders_float_rows.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "effects/common/frame.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "tests/image/variants.h"
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

/// A picture of 24 by 16 with columns as blue, rows as green, and alpha 0.75.
GuardedPicture Graded(std::uint32_t format)
{
    GuardedPicture picture(24, 16, format);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 24; ++x) {
            picture.SetFloat(x, y, PlaceOfColour(format, 0), static_cast<float>(x));
            picture.SetFloat(x, y, PlaceOfColour(format, 1), static_cast<float>(y));
            picture.SetFloat(x, y, PlaceOfColour(format, 3), 0.75f);
        }
    return picture;
}

TEST(FloatCropRows, HardOverlay_IsTheKeptPartOnTheGround)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        const GuardedPicture picture = Graded(format);
        GuardedPicture ground(24, 16, format);
        ground.FillFloat(0.5f, 0.5f, 0.5f, 0.5f);
        FrameBuffer out = ViewOf(ground);
        const FrameBuffer source = ViewOf(picture);
        MemoryAllocator allocator;
        FloatCropRows rows(source, out, kHard);
        ASSERT_TRUE(rows.AreServed());
        ASSERT_TRUE(rows.Begin(allocator));
        rows.Overlay();
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 24; ++x) {
                const bool kept = x >= 4 && x < 20 && y >= 3 && y < 13;
                EXPECT_EQ(ground.Float(x, y, PlaceOfColour(format, 0)), kept ? static_cast<float>(x) : 0.5f)
                    << x << ", " << y;
                EXPECT_EQ(ground.Float(x, y, PlaceOfColour(format, 3)), 0.75f);
            }
        ground.Check();
    }
}

TEST(FloatCropRows, HardTransparent_IsExtendedWithNoAlphaAround)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        const GuardedPicture picture = Graded(format);
        GuardedPicture result(24, 16, format);
        FrameBuffer out = ViewOf(result);
        const FrameBuffer source = ViewOf(picture);
        MemoryAllocator allocator;
        FloatCropRows rows(source, out, kHard);
        ASSERT_TRUE(rows.Begin(allocator));
        rows.Transparent();
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 24; ++x) {
                const bool kept = x >= 4 && x < 20 && y >= 3 && y < 13;
                EXPECT_EQ(result.Float(x, y, PlaceOfColour(format, 3)), kept ? 0.75f : 0.0f)
                    << x << ", " << y;
                EXPECT_EQ(result.Float(x, y, PlaceOfColour(format, 0)),
                          static_cast<float>(std::clamp(x, 4, 19)))
                    << x << ", " << y;
            }
        result.Check();
    }
}

/// The mask by itself: one channel of a white rectangle on black, blurred, the frame's own edge extended.
bool MakeMask(FrameBuffer& mask, const Crop& crop, Size size, MemoryAllocator& allocator)
{
    FrameBuffer shape, part;
    ImageOps ops;
    const Rect& kept = crop.kept;
    if (!shape.Allocate(size.width, size.height, 16, &allocator, PF_BGRA32F, false) || !ops.Fill(shape, 0)
        || !mask.Allocate(size.width, size.height, 4, &allocator, PF_Mask32F, false))
        return false;
    part.Attach(shape.PixelAddress(kept.left, kept.top, 0), kept.right - kept.left, kept.bottom - kept.top,
                shape.GetStride(), 16, PF_BGRA32F, false);
    return ops.Fill(part, 0xFFFFFFFF)
        && ops.Blur(shape, shape, crop.featherX, crop.featherY, &allocator, false)
        && ops.ExtendBorder(shape, shape, 1, 1) && ops.CopyChannel(shape, mask, 0, 0);
}

/// Overlay as one operation after the other, in whole pictures.
bool OverlayInSteps(const FrameBuffer& src, FrameBuffer& dst, const Crop& crop)
{
    MemoryAllocator allocator;
    ImageOps ops;
    const Rect& kept = crop.kept;
    const int alpha = AlphaIndex(src.GetFormat());
    FrameBuffer mask, zoomed, levels;
    if (!AllocateLike(zoomed, src, SizeOf(src), allocator)
        || !ops.ResizeRect(src, zoomed, kept.left, kept.top, kept.right, kept.bottom, 0, 0, src.GetWidth(),
                           src.GetHeight(), 2, 0, 0))
        return false;
    levels.Attach(zoomed.GetPixels(), zoomed.GetWidth(), zoomed.GetHeight(), zoomed.GetStride(), 16,
                  PF_BGRA32F, false);
    return ops.ClampFloats(levels) && ops.ExtendBorder(src, dst, kept.left, kept.top)
        && MakeMask(mask, crop, SizeOf(src), allocator) && ops.CopyChannel(mask, dst, 0, alpha)
        && ops.SetChannel(zoomed, alpha, 255) && ops.AlphaOver(dst, zoomed, dst, false)
        && ops.CopyChannel(src, dst, alpha, alpha);
}

/// Transparent in the same way: over black a colour comes out times its alpha.
bool TransparentInSteps(const FrameBuffer& src, FrameBuffer& dst, const Crop& crop)
{
    MemoryAllocator allocator;
    ImageOps ops;
    const int alpha = AlphaIndex(src.GetFormat());
    FrameBuffer mask, backdrop, carrier;
    return ops.ExtendBorder(src, dst, crop.kept.left, crop.kept.top)
        && MakeMask(mask, crop, SizeOf(src), allocator) && AllocateLike(backdrop, src, SizeOf(src), allocator)
        && AllocateLike(carrier, src, SizeOf(src), allocator) && ops.Fill(backdrop, 0) && ops.Fill(carrier, 0)
        && ops.CopyChannel(src, carrier, alpha, 3 - alpha) && ops.CopyChannel(mask, carrier, 0, alpha)
        && ops.AlphaOver(carrier, backdrop, carrier, false)
        && ops.CopyChannel(carrier, dst, 3 - alpha, alpha);
}

/// Bit for bit, save that one not-a-number is as good as another.
void ExpectSameFloats(const GuardedPicture& a, const GuardedPicture& b)
{
    for (int y = 0; y < a.Height(); ++y)
        for (int x = 0; x < a.Width(); ++x)
            for (int c = 0; c < 4; ++c) {
                const float one = a.Float(x, y, c), other = b.Float(x, y, c);
                ASSERT_TRUE((std::isnan(one) && std::isnan(other))
                            || (one == other && std::signbit(one) == std::signbit(other)))
                    << x << ", " << y << ", channel " << c << ": " << one << " and " << other;
            }
}

TEST(FloatCropRows, BothStyles_AreTheirStepsBitForBit)
{
    constexpr int kWidth = 143, kHeight = 118;
    for (const Crop& crop : {Crop{{14, 11, 130, 107}, 17.7f, 17.7f}, Crop{{0, 0, 143, 118}, 35.0f, 17.5f},
                             Crop{{1, 2, 142, 116}, 2.0f, 1.0f}, Crop{{9, 0, 134, 118}, 240.0f, 99.0f},
                             Crop{{7, 5, 136, 113}, 1.5f, 0.9f}, Crop{{60, 50, 83, 68}, 40.0f, 30.0f}})
        for (const Noise noise : {Noise::Leaning, Noise::Special})
            for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
                SCOPED_TRACE(testing::Message() << "left " << crop.kept.left << ", format " << format
                                                << ", noise " << static_cast<int>(noise));
                GuardedPicture picture(kWidth, kHeight, format);
                picture.FillNoise(3, noise);
                const FrameBuffer source = ViewOf(picture);
                GuardedPicture overlaid(kWidth, kHeight, format), faded(kWidth, kHeight, format);
                FrameBuffer plainOverlay = ViewOf(overlaid), plainFaded = ViewOf(faded);
                ASSERT_TRUE(OverlayInSteps(source, plainOverlay, crop));
                ASSERT_TRUE(TransparentInSteps(source, plainFaded, crop));
                ForEachVariant([&] {
                    GuardedPicture fast(kWidth, kHeight, format);
                    fast.FillWord(0x7FA5A5A5); // what is hidden must not be read
                    FrameBuffer out = ViewOf(fast);
                    MemoryAllocator allocator;
                    FloatCropRows rows(source, out, crop);
                    ASSERT_TRUE(rows.AreServed() && rows.Begin(allocator) && rows.ZoomGround());
                    rows.Overlay();
                    ExpectSameFloats(fast, overlaid);
                    rows.Transparent();
                    ExpectSameFloats(fast, faded);
                    fast.Check();
                });
            }
}

TEST(FloatCropRows, TinyPicturesBytesAndRectanglesOutside_AreNotServed)
{
    const auto served = [](int width, int height, std::uint32_t format, const Rect& kept) {
        const GuardedPicture picture(width, height, format), out(width, height, format);
        FrameBuffer view = ViewOf(out);
        const FrameBuffer source = ViewOf(picture);
        return FloatCropRows(source, view, {kept, 3.0f, 3.0f}).AreServed();
    };
    EXPECT_TRUE(served(16, 16, PF_BGRA32F, {1, 1, 15, 15}));
    EXPECT_TRUE(served(16, 16, PF_ARGB32F, {0, 0, 16, 16}));
    EXPECT_FALSE(served(15, 16, PF_BGRA32F, {1, 1, 14, 15}));
    EXPECT_FALSE(served(16, 15, PF_BGRA32F, {1, 1, 15, 14}));
    EXPECT_FALSE(served(16, 16, PF_BGRA8, {1, 1, 15, 15}));
    EXPECT_FALSE(served(16, 16, PF_BGRA32F, {-1, 1, 15, 15}));
    EXPECT_FALSE(served(16, 16, PF_BGRA32F, {1, 1, 15, 17}));
    EXPECT_FALSE(served(16, 16, PF_BGRA32F, {5, 5, 5, 6}));
    EXPECT_FALSE(served(16, 16, PF_BGRA32F, {1, 8, 15, 15})) << "nothing is left between the margins";
}

TEST(FloatCropRows, NoMemory_IsSaid)
{
    const GuardedPicture picture(24, 16, PF_BGRA32F), out(24, 16, PF_BGRA32F);
    FrameBuffer view = ViewOf(out);
    const FrameBuffer source = ViewOf(picture);
    MemoryHabits habits;
    habits.refuseOnly = 0;
    FakeMemoryProvider memory(habits);
    FakeHost host({});
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    FloatCropRows rows(source, view, kHard);
    EXPECT_FALSE(rows.Begin(allocator));
}

TEST(ZoomFloats, CutsWhatOvershootsAndRefusesWhatLiesOutside)
{
    GuardedPicture edge(24, 16, PF_BGRA32F), zoomed(24, 16, PF_BGRA32F);
    for (int y = 0; y < 16; ++y)
        for (int x = 12; x < 24; ++x)
            for (int c = 0; c < 4; ++c)
                edge.SetFloat(x, y, c, 1.0f);
    const FrameBuffer source = ViewOf(edge);
    FrameBuffer out = ViewOf(zoomed);
    ASSERT_TRUE(ZoomFloats(source, out, {2, 1, 22, 15}, {0, 0, 0, 0}));
    bool isCutBelow = false, isCutAbove = false;
    for (int x = 0; x < 24; ++x) {
        const float level = zoomed.Float(x, 8, 0);
        EXPECT_TRUE(level >= 0.0f && level <= 1.0f) << x;
        isCutBelow |= x > 0 && level == 0.0f && zoomed.Float(x - 1, 8, 0) == 0.0f;
        isCutAbove |= x > 0 && level == 1.0f && zoomed.Float(x - 1, 8, 0) == 1.0f;
    }
    EXPECT_TRUE(isCutBelow && isCutAbove);
    EXPECT_FALSE(ZoomFloats(source, out, {2, 1, 25, 15}, {0, 0, 0, 0}));
    EXPECT_FALSE(ZoomFloats(source, out, {-1, 1, 20, 15}, {0, 0, 0, 0}));
    EXPECT_FALSE(ZoomFloats(source, out, {5, 1, 5, 15}, {0, 0, 0, 0}));
    zoomed.Check();
}

} // namespace
} // namespace kelmora::crop_borders

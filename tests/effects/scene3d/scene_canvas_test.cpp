#include "effects/scene3d/scene_canvas.h"

#include <cstring>
#include <limits>
#include <utility>

#include <gtest/gtest.h>

#include "effects/scene3d/face_light.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

constexpr std::uint32_t kBlack = 0x00000000, kColour = 0x00102030; // blue 0x10, green 0x20, red 0x30

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed = 1)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed);
    return picture;
}

FrameBuffer ViewOf(const GuardedPicture& picture)
{
    FrameBuffer view;
    const VideoFrame frame = picture.Frame();
    view.AttachFrame(&frame);
    return view;
}

bool AttachTo(SceneCanvas& canvas, const GuardedPicture& picture)
{
    const VideoFrame frame = picture.Frame();
    return canvas.Attach(&frame);
}

/// The canvas `out` after a copy of `picture`.
void Copy(const GuardedPicture& picture, const GuardedPicture& out, std::uint32_t padColour = kBlack)
{
    SceneCanvas canvas;
    ASSERT_TRUE(AttachTo(canvas, out));
    canvas.CopyFrom(ViewOf(picture), padColour);
}

void Fill(const GuardedPicture& out, std::uint32_t colour, bool clearAlpha)
{
    SceneCanvas canvas;
    ASSERT_TRUE(AttachTo(canvas, out));
    canvas.Fill(colour, clearAlpha);
}

std::uint32_t Word(const GuardedPicture& picture, int word, int y)
{
    std::uint32_t value;
    std::memcpy(&value, picture.Row(y) + 4 * word, sizeof value);
    return value;
}

// --- the view ----------------------------------------------------------------------------------------------

TEST(SceneCanvas, Default_IsNotValidAndSquare)
{
    const SceneCanvas canvas;
    EXPECT_FALSE(canvas.IsValid());
    EXPECT_EQ(canvas.canvasWidth, 0);
    EXPECT_EQ(canvas.canvasHeight, 0);
    EXPECT_EQ(canvas.aspect, 1.0);
}

TEST(SceneCanvas, Attach_TakesThePixelsAndTheSizeWithoutCopying)
{
    const GuardedPicture picture(7, 5, PF_BGRA8);
    SceneCanvas canvas;
    canvas.aspect = 3.0;
    EXPECT_TRUE(AttachTo(canvas, picture));
    EXPECT_TRUE(canvas.IsValid());
    EXPECT_EQ(canvas.canvasWidth, 7);
    EXPECT_EQ(canvas.canvasHeight, 5);
    EXPECT_EQ(canvas.aspect, 1.0);
    EXPECT_EQ(canvas.GetPixels(), picture.Row(0));
    EXPECT_FALSE(canvas.IsOwned());
}

TEST(SceneCanvas, Attach_NoPixels_IsFalseAndForgetsTheLastPicture)
{
    const GuardedPicture picture(7, 5, PF_BGRA8);
    VideoFrame empty = picture.Frame();
    empty.data = nullptr;
    for (const VideoFrame* const nothing : {static_cast<const VideoFrame*>(nullptr), &std::as_const(empty)}) {
        SceneCanvas canvas;
        ASSERT_TRUE(AttachTo(canvas, picture));
        EXPECT_FALSE(canvas.Attach(nothing));
        EXPECT_FALSE(canvas.IsValid());
        EXPECT_EQ(canvas.canvasWidth, 0);
        EXPECT_EQ(canvas.canvasHeight, 0);
    }
}

TEST(SceneCanvas, Detach_LetsThePictureGo)
{
    const GuardedPicture picture(7, 5, PF_BGRA8);
    SceneCanvas canvas;
    ASSERT_TRUE(AttachTo(canvas, picture));
    canvas.Detach();
    EXPECT_FALSE(canvas.IsValid());
    EXPECT_EQ(canvas.GetPixels(), nullptr);
}

// --- backgrounds ---------------------------------------------------------------------------------------------

TEST(SceneCanvas, CopyFrom_APictureAsLargeOrLarger_ShowsItsTopLeft)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& [width, height] : {std::pair{9, 6}, {12, 6}, {9, 8}, {30, 20}}) {
            const GuardedPicture picture = Noisy(width, height, format);
            const GuardedPicture out = Noisy(9, 6, format, 2);
            Copy(picture, out, 0x00FFFFFF);
            for (int y = 0; y < 6; ++y)
                EXPECT_EQ(
                    std::memcmp(out.Row(y), picture.Row(y), static_cast<std::size_t>(9 * out.PixelBytes())),
                    0)
                    << FormatName(format) << ", row " << y;
        }
}

TEST(SceneCanvas, CopyFrom_ASmallerBytePicture_IsPaddedWithTheColourAndNoAlpha)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const auto& [width, height] : {std::pair{4, 3}, {20, 3}, {4, 20}}) {
            const GuardedPicture picture = Noisy(width, height, format);
            const GuardedPicture out = Noisy(9, 6, format, 2);
            Copy(picture, out, kColour);
            for (int y = 0; y < 6; ++y)
                for (int x = 0; x < 9; ++x)
                    // Bytes in memory order: the third of the colour, the second, the first, 0.
                    EXPECT_EQ(Word(out, x, y), x < width && y < height ? Word(picture, x, y) : 0x00302010u)
                        << x << ", " << y;
        }
}

TEST(SceneCanvas, CopyFrom_BlackPadding_IsTransparentBlack)
{
    const GuardedPicture picture = Noisy(4, 3, PF_BGRA8);
    const GuardedPicture out = Noisy(9, 6, PF_BGRA8, 2);
    Copy(picture, out);
    EXPECT_EQ(Word(out, 3, 2), Word(picture, 3, 2));
    EXPECT_EQ(Word(out, 4, 2), 0u);
    EXPECT_EQ(Word(out, 3, 3), 0u);
    EXPECT_EQ(Word(out, 8, 5), 0u);
}

TEST(SceneCanvas, Kept_ASmallerFloatPicture_IsCopiedInWordsOfFourBytes)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        const GuardedPicture picture = Noisy(4, 3, format), before = Noisy(9, 6, format, 2), out = before;
        Copy(picture, out);
        // Nine words are two pixels and a quarter; four of them are there, one pixel.
        for (int y = 0; y < 6; ++y)
            for (int word = 0; word < 36; ++word) {
                const std::uint32_t expected = word >= 9 ? Word(before, word, y)
                    : word < 4 && y < 3                  ? Word(picture, word, y)
                                                         : 0u;
                EXPECT_EQ(Word(out, word, y), expected) << word << ", " << y;
            }
    }
}

TEST(SceneCanvas, CopyFrom_APictureWithoutPixelsOrAnInvalidCanvas_ChangesNothing)
{
    const GuardedPicture picture = Noisy(9, 6, PF_BGRA8), before = Noisy(9, 6, PF_BGRA8, 2), out = before;
    SceneCanvas canvas;
    canvas.CopyFrom(ViewOf(picture), kBlack);
    canvas.Fill(kBlack, true);
    ASSERT_TRUE(AttachTo(canvas, out));
    canvas.CopyFrom(FrameBuffer(), kBlack);
    FrameBuffer flat;
    flat.Attach(picture.Row(0), 9, 0, 36, 4, PF_BGRA8, false);
    canvas.CopyFrom(flat, kBlack);
    EXPECT_TRUE(Equal(out, before));
}

// A picture of another pixel size, and canvases too narrow for words of four bytes.
TEST(SceneCanvas, CopyFrom_PixelsOfOtherSizes_StaysInsideThePictures)
{
    constexpr std::uint32_t formats[] = {PF_BGRA8, PF_BGRA32F, PF_Mask8, PF_Mask32F, PF_Packed8};
    for (const std::uint32_t from : formats)
        for (const std::uint32_t to : formats)
            for (const auto& [width, height] : {std::pair{9, 6}, {4, 3}, {30, 2}, {2, 30}})
                for (const Guard guard : {Guard::Moat, Guard::PageEnd, Guard::PageStart}) {
                    GuardedPicture picture(width, height, BytesOfPixel(from), from, {.guard = guard});
                    const GuardedPicture out(9, 6, BytesOfPixel(to), to, {.guard = guard});
                    picture.FillBytes(0x5A);
                    picture.Freeze();
                    Copy(picture, out);
                    picture.Check();
                    out.Check();
                }
}

TEST(SceneCanvas, Kept_FillBlack_ClearsAlphaAsWell)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const bool clearAlpha : {false, true}) {
            const GuardedPicture out = Noisy(9, 6, format), cleared(9, 6, format);
            Fill(out, kBlack, clearAlpha);
            EXPECT_TRUE(Equal(out, cleared)) << FormatName(format);
        }
}

// What lies above the three colour bytes plays no part.
TEST(SceneCanvas, Fill_BlackWithABitAboveTheColour_IsBlack)
{
    const GuardedPicture out = Noisy(9, 6, PF_BGRA8), cleared(9, 6, PF_BGRA8);
    Fill(out, 0xFF000000, false);
    EXPECT_TRUE(Equal(out, cleared));
}

TEST(SceneCanvas, Fill_AColour_LeavesAlpha)
{
    constexpr double levels[] = {0x10, 0x20, 0x30}; // blue, green, red
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture before = Noisy(9, 6, format), out = before;
        Fill(out, kColour, false);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 9; ++x)
                for (int colour = 0; colour < 4; ++colour) {
                    const int c = PlaceOfColour(format, colour);
                    if (IsFloatFormat(format)) {
                        EXPECT_EQ(out.Float(x, y, c),
                                  colour == 3 ? before.Float(x, y, c)
                                              : static_cast<float>(levels[colour] / 255.0));
                    } else {
                        EXPECT_EQ(out.Byte(x, y, c), colour == 3 ? before.Byte(x, y, c) : levels[colour]);
                    }
                }
    }
}

TEST(SceneCanvas, Kept_FillAColourAndClearAlpha_ClearsChannelThree)
{
    // In alpha-first pictures that is blue.
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture before = Noisy(9, 6, format), out = before;
        Fill(out, kColour, true);
        const bool alphaFirst = PlaceOfColour(format, 3) == 0;
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 9; ++x) {
                if (IsFloatFormat(format)) {
                    EXPECT_EQ(out.Float(x, y, 3), 0.0f);
                    EXPECT_EQ(out.Float(x, y, 0),
                              alphaFirst ? before.Float(x, y, 0) : static_cast<float>(0x10 / 255.0));
                } else {
                    EXPECT_EQ(out.Byte(x, y, 3), 0);
                    EXPECT_EQ(out.Byte(x, y, 0), alphaFirst ? before.Byte(x, y, 0) : 0x10);
                }
            }
    }
}

TEST(SceneCanvas, Fill_FormatsWithoutColours_ChangeOnBlackAlone)
{
    GuardedPicture out(9, 6, PF_Packed8);
    out.FillBytes(0x5A);
    const GuardedPicture before = out, cleared(9, 6, PF_Packed8);
    Fill(out, kColour, false);
    EXPECT_TRUE(Equal(out, before));
    Fill(out, kBlack, false);
    EXPECT_TRUE(Equal(out, cleared));
}

TEST(SceneCanvas, Fill_PixelsOfNoBytesOrFewer_ChangesNothing)
{
    for (const std::int32_t pixelBytes : {0, -1, -4, std::numeric_limits<std::int32_t>::min()})
        for (const std::uint32_t format : {PF_BGRA8, PF_Packed8, PF_BGRA32F}) {
            const GuardedPicture before = Noisy(9, 6, PF_BGRA8), out = before;
            VideoFrame frame = out.Frame();
            frame.pixelBytes = pixelBytes;
            frame.format = format;
            SceneCanvas canvas;
            canvas.Attach(&frame);
            canvas.Fill(kBlack, false);
            canvas.Fill(kColour, true);
            out.Check();
            EXPECT_TRUE(Equal(out, before)) << pixelBytes << ' ' << format;
        }
}

// --- faces -----------------------------------------------------------------------------------------------------

TEST(SceneCanvas, Warp_LaysThePictureAtTheCorners)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture picture = Noisy(4, 3, format);
        const GuardedPicture before = Noisy(9, 6, format, 2), out = before;
        SceneCanvas canvas;
        ASSERT_TRUE(AttachTo(canvas, out));
        constexpr double quad[4][2] = {{2, 1}, {5, 1}, {5, 3}, {2, 3}};
        const FrameBuffer view = ViewOf(picture);
        canvas.Warp(quad, nullptr, 0x80000002);
        EXPECT_TRUE(Equal(out, before)) << "no picture";
        canvas.Warp(quad, &view, 0x80000002);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 9; ++x) {
                const bool inside = x >= 2 && x <= 5 && y >= 1 && y <= 3;
                const std::uint8_t* const expected = inside
                    ? picture.Row(y - 1) + (x - 2) * picture.PixelBytes()
                    : before.Row(y) + x * picture.PixelBytes();
                EXPECT_EQ(std::memcmp(out.Row(y) + x * out.PixelBytes(), expected,
                                      static_cast<std::size_t>(out.PixelBytes())),
                          0)
                    << x << ", " << y << " " << FormatName(format);
            }
    }
}

TEST(SceneCanvas, WarpLit_IsTheWarpOfALitCopy)
{
    constexpr double quad[4][2] = {{2.3, 1}, {8.9, 0.4}, {7, 5.2}, {-1, 3}};
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        const GuardedPicture picture = Noisy(7, 5, format), lit = picture;
        const GuardedPicture out = Noisy(9, 6, format, 2), expected = out;
        FrameBuffer view = ViewOf(lit);
        ApplyLight(view, 0.3);
        SceneCanvas canvas;
        ASSERT_TRUE(AttachTo(canvas, expected));
        canvas.Warp(quad, &view, 0x80000002);
        ASSERT_TRUE(AttachTo(canvas, out));
        EXPECT_TRUE(canvas.WarpLit(quad, ViewOf(picture), 0.3, 0x80000002));
        EXPECT_TRUE(Equal(out, expected)) << FormatName(format);
    }
}

TEST(SceneCanvas, WarpLit_WhatNeedsACopy_IsFalseAndChangesNothing)
{
    constexpr double quad[4][2] = {{2, 1}, {5, 1}, {5, 3}, {2, 3}};
    const GuardedPicture bytes = Noisy(4, 3, PF_BGRA8), floats = Noisy(4, 3, PF_BGRA32F);
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F, PF_ARGB32F}) {
        const GuardedPicture before = Noisy(9, 6, format, 2), out = before;
        SceneCanvas canvas;
        ASSERT_TRUE(AttachTo(canvas, out));
        EXPECT_FALSE(canvas.WarpLit(quad, ViewOf(bytes), 0.5, 0x80000002)) << FormatName(format);
        if (format != PF_BGRA32F)
            EXPECT_FALSE(canvas.WarpLit(quad, ViewOf(floats), 0.5, 0x80000002)) << FormatName(format);
        else
            EXPECT_FALSE(canvas.WarpLit(quad, ViewOf(floats), 0.5, 0x80000004)) << "cubic";
        EXPECT_TRUE(Equal(out, before));
    }
}

TEST(SceneCanvas, WarpLit_WithoutAMap_ChangesNothingAndWantsNoCopy)
{
    constexpr double line[4][2] = {{2, 1}, {5, 1}, {8, 1}, {3, 1}};
    const GuardedPicture picture = Noisy(4, 3, PF_BGRA32F), before = Noisy(9, 6, PF_BGRA32F, 2), out = before;
    SceneCanvas canvas;
    ASSERT_TRUE(AttachTo(canvas, out));
    EXPECT_TRUE(canvas.WarpLit(line, ViewOf(picture), 0.5, 0x80000002));
    EXPECT_TRUE(Equal(out, before));
}

TEST(SceneCanvas, Warp_WithoutAMap_ChangesNothing)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double quads[][4][2] = {
        {{2, 1}, {5, 1}, {8, 1}, {3, 1}},   // a line
        {{2, 1}, {5, 4}, {5, 1}, {2, 4}},   // a bow-tie
        {{nan, 1}, {5, 1}, {5, 4}, {2, 4}}, // nowhere
        {{3, 3}, {3, 3}, {3, 3}, {3, 3}},   // a point
    };
    const GuardedPicture picture = Noisy(4, 3, PF_BGRA8), before = Noisy(9, 6, PF_BGRA8, 2), out = before;
    SceneCanvas canvas;
    ASSERT_TRUE(AttachTo(canvas, out));
    const FrameBuffer view = ViewOf(picture);
    for (const auto& quad : quads)
        canvas.Warp(quad, &view, 0x80000002);
    EXPECT_TRUE(Equal(out, before));
}

} // namespace
} // namespace kelmora

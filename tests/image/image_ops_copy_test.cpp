#include <algorithm>
#include <climits>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "tests/image/buffers.h"
#include "tests/image/variants.h"
#include "tests/reference/copies.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

using reference::Picture;

/// Every size relation of two pictures, loosely in memory and beside unreadable pages.
template <class Check>
void ForEachPair(Check&& check)
{
    for (int width = 1; width <= 33; width += 4)
        for (const int more : {-3, 0, 4}) {
            if (width + more < 1)
                continue;
            for (const int slack : {0, 1, 5})
                check(width, width + more, PictureLayout{.slack = slack, .shift = slack});
            for (const Guard guard : {Guard::PictureStart, Guard::PictureEnd})
                check(width, width + more, PictureLayout{.guard = guard});
        }
}

/// What no operation takes for a picture.
FrameBuffer Bad(const GuardedPicture& picture, int kind)
{
    FrameBuffer bad;
    const int w = picture.Width(), h = picture.Height(), s = picture.Stride(), b = picture.PixelBytes();
    switch (kind) {
    case 0:
        bad.Attach(nullptr, w, h, s, b, picture.Format(), false);
        break;
    case 1:
        bad.Attach(picture.Row(0), 0, h, s, b, picture.Format(), false);
        break;
    case 2:
        bad.Attach(picture.Row(0), w, -2, s, b, picture.Format(), false);
        break;
    case 3:
        bad.Attach(picture.Row(0), w, h, w * b - 1, b, picture.Format(), false); // rows that overlap
        break;
    default:
        break; // empty
    }
    return bad;
}

constexpr int kBadKinds = 5;

// --- Copy -------------------------------------------------------------------------------------------------

TEST(Copy, EveryServedFormat_CopiesTheCommonSize)
{
    for (const std::uint32_t format : kServedFormats)
        ForEachPair([&](int srcWidth, int dstWidth, const PictureLayout& layout) {
            GuardedPicture src(srcWidth, 4, format, layout), dst(dstWidth, 3, format);
            src.FillNoise(1, Noise::Special);
            dst.FillNoise(2);
            Picture expected = reference::Read(dst);
            reference::CopyRect(reference::Read(src), 0, 0, srcWidth, 4, expected, 0, 0);
            FrameBuffer to = ViewOf(dst);
            ASSERT_TRUE(ImageOps().Copy(ViewOf(src), to));
            ASSERT_TRUE(reference::Matches(dst, expected));
            dst.Check();
        });
}

TEST(Copy, Kept_Packed8_IsTrueAndWritesNothing)
{
    GuardedPicture src(3, 3, PF_Packed8), dst(3, 3, PF_Packed8);
    src.FillNoise(1);
    dst.FillNoise(2);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    EXPECT_TRUE(ImageOps().Copy(ViewOf(src), to));
    dst.Check();
}

TEST(Copy, UnknownFormatOfOneByte_IsCopiedAsBytes)
{
    GuardedPicture src(3, 3, 1, 77), dst(3, 3, 1, 77);
    src.FillBytes(5);
    FrameBuffer to = ViewOf(dst);
    EXPECT_TRUE(ImageOps().Copy(ViewOf(src), to));
    EXPECT_TRUE(Equal(dst, src));
}

TEST(Copy, DifferentPixelBytesOrNoPicture_IsFalseAndWritesNothing)
{
    GuardedPicture src(3, 3, PF_BGRA8), wide(3, 3, PF_BGRA32F), dst(3, 3, PF_BGRA8);
    dst.FillNoise(1);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    EXPECT_FALSE(ImageOps().Copy(ViewOf(wide), to));
    for (int kind = 0; kind < kBadKinds; ++kind) {
        FrameBuffer bad = Bad(dst, kind);
        EXPECT_FALSE(ImageOps().Copy(bad, to)) << kind;
        EXPECT_FALSE(ImageOps().Copy(ViewOf(src), bad)) << kind;
    }
    dst.Check();
}

TEST(Copy, FormatWiderThanItsPixels_IsFalse)
{
    GuardedPicture src(3, 3, 4, PF_BGRA32F), dst(3, 3, 4, PF_BGRA32F); // says floats, has 4 bytes a pixel
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    EXPECT_FALSE(ImageOps().Copy(ViewOf(src), to));
    dst.Check();
}

// --- CopyRect ---------------------------------------------------------------------------------------------

TEST(CopyRect, AnyRectangle_IsCutToWhatFits)
{
    for (const std::uint32_t format : kServedFormats)
        for (int turn = 0; turn < 300; ++turn) {
            GuardedPicture src(1 + turn % 9, 1 + turn % 5, format, {.slack = turn % 6});
            GuardedPicture dst(1 + turn % 7, 1 + turn % 8, format, {.slack = turn % 3});
            src.FillNoise(1);
            dst.FillNoise(2);
            const int x = turn % 4, y = turn % 3, toX = turn / 4 % 5, toY = turn / 3 % 4;
            const int w = turn % 11, h = turn % 6;
            Picture expected = reference::Read(dst);
            reference::CopyRect(reference::Read(src), x, y, w, h, expected, toX, toY);
            const bool some = std::min({w, src.Width() - x, dst.Width() - toX}) > 0
                && std::min({h, src.Height() - y, dst.Height() - toY}) > 0;
            FrameBuffer to = ViewOf(dst);
            ASSERT_EQ(ImageOps().CopyRect(ViewOf(src), x, y, w, h, to, toX, toY), some) << turn;
            ASSERT_TRUE(reference::Matches(dst, expected)) << turn;
            dst.Check();
        }
}

TEST(CopyRect, SticksOutOfTheDestination_CopiesThePartThatFits)
{
    GuardedPicture src(4, 4, PF_Mask8), dst(4, 4, PF_Mask8);
    src.FillBytes(9);
    FrameBuffer to = ViewOf(dst);
    EXPECT_TRUE(ImageOps().CopyRect(ViewOf(src), 0, 0, INT_MAX, INT_MAX, to, 2, 3));
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(dst.Byte(x, y), x >= 2 && y == 3 ? 9 : 0);
}

TEST(CopyRect, NegativeCornersEmptyRectanglesAndStrangers_AreFalse)
{
    GuardedPicture src(4, 4, PF_BGRA8), dst(4, 4, PF_BGRA8), packed(4, 4, PF_Packed8), mask(4, 4, PF_Mask8);
    dst.FillNoise(1);
    dst.Freeze();
    packed.Freeze();
    FrameBuffer to = ViewOf(dst), toPacked = ViewOf(packed);
    const FrameBuffer from = ViewOf(src);
    ImageOps ops;
    for (const int bad : {-1, 4, INT_MAX, INT_MIN}) {
        EXPECT_FALSE(ops.CopyRect(from, bad, 0, 2, 2, to, 0, 0)) << bad;
        EXPECT_FALSE(ops.CopyRect(from, 0, bad, 2, 2, to, 0, 0)) << bad;
        EXPECT_FALSE(ops.CopyRect(from, 0, 0, 2, 2, to, bad, 0)) << bad;
        EXPECT_FALSE(ops.CopyRect(from, 0, 0, 2, 2, to, 0, bad)) << bad;
    }
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_FALSE(ops.CopyRect(from, 0, 0, bad, 2, to, 0, 0)) << bad;
        EXPECT_FALSE(ops.CopyRect(from, 0, 0, 2, bad, to, 0, 0)) << bad;
    }
    EXPECT_FALSE(ops.CopyRect(ViewOf(packed), 0, 0, 2, 2, toPacked, 0, 0));
    EXPECT_FALSE(ops.CopyRect(ViewOf(mask), 0, 0, 2, 2, to, 0, 0));
    for (int kind = 0; kind < kBadKinds; ++kind) {
        FrameBuffer bad = Bad(dst, kind);
        EXPECT_FALSE(ops.CopyRect(bad, 0, 0, 2, 2, to, 0, 0)) << kind;
        EXPECT_FALSE(ops.CopyRect(from, 0, 0, 2, 2, bad, 0, 0)) << kind;
    }
    dst.Check();
    packed.Check();
}

// --- CopyChannel ------------------------------------------------------------------------------------------

TEST(CopyChannel, EveryPairOfOneElementType_MovesTheChannel)
{
    struct {
        std::uint32_t src, dst;
    } const pairs[] = {{PF_BGRA32F, PF_Mask32F}, {PF_ARGB32F, PF_Mask32F}, {PF_Mask32F, PF_BGRA32F},
                       {PF_BGRA32F, PF_ARGB32F}, {PF_BGRA8, PF_Mask8},     {PF_ARGB8, PF_Mask8},
                       {PF_Mask8, PF_ARGB8},     {PF_ARGB8, PF_BGRA8}};
    for (const auto& pair : pairs)
        for (int from = 0; from < 4; ++from)
            for (int to = 0; to < 4; ++to)
                ForEachPair([&](int srcWidth, int dstWidth, const PictureLayout& layout) {
                    GuardedPicture src(srcWidth, 2, pair.src, layout), dst(dstWidth, 3, pair.dst, layout);
                    src.FillNoise(1, Noise::Special);
                    dst.FillNoise(2);
                    Picture expected = reference::Read(dst);
                    reference::CopyChannel(reference::Read(src), expected, from, to);
                    FrameBuffer view = ViewOf(dst);
                    ASSERT_TRUE(ImageOps().CopyChannel(ViewOf(src), view, from, to));
                    ASSERT_TRUE(reference::Matches(dst, expected)) << pair.src << " to " << pair.dst;
                    dst.Check();
                });
}

TEST(CopyChannel, PlanesOwnNumber_IsIgnored)
{
    GuardedPicture mask(2, 2, PF_Mask8), colour(2, 2, PF_BGRA8);
    mask.FillBytes(7);
    FrameBuffer toColour = ViewOf(colour), toMask = ViewOf(mask);
    EXPECT_TRUE(ImageOps().CopyChannel(ViewOf(mask), toColour, 99, 2));
    EXPECT_EQ(colour.Byte(1, 1, 2), 7);
    colour.FillBytes(3);
    EXPECT_TRUE(ImageOps().CopyChannel(ViewOf(colour), toMask, 1, -5));
    EXPECT_EQ(mask.Byte(1, 1), 3);
}

TEST(CopyChannel, OtherPairsAndChannels_AreFalseAndWriteNothing)
{
    GuardedPicture colour(3, 3, PF_BGRA8), floats(3, 3, PF_BGRA32F), mask(3, 3, PF_Mask8),
        plane(3, 3, PF_Mask32F), packed(3, 3, PF_Packed8);
    const GuardedPicture* const all[] = {&colour, &floats, &mask, &plane, &packed};
    for (const GuardedPicture* picture : all)
        const_cast<GuardedPicture*>(picture)->Freeze();
    const auto refused = [&](const GuardedPicture& src, const GuardedPicture& dst, int from, int to) {
        FrameBuffer view = ViewOf(dst);
        return !ImageOps().CopyChannel(ViewOf(src), view, from, to);
    };
    EXPECT_TRUE(refused(mask, mask, 0, 0)); // two planes
    EXPECT_TRUE(refused(plane, plane, 0, 0));
    EXPECT_TRUE(refused(floats, mask, 0, 0));   // 16 to 1
    EXPECT_TRUE(refused(colour, floats, 0, 0)); // bytes, 4 to 16
    EXPECT_TRUE(refused(mask, floats, 0, 0));
    EXPECT_TRUE(refused(packed, mask, 0, 0)); // no family
    for (const int bad : {-1, 4, INT_MAX, INT_MIN}) {
        EXPECT_TRUE(refused(colour, colour, bad, 0));
        EXPECT_TRUE(refused(colour, colour, 0, bad));
        EXPECT_TRUE(refused(colour, mask, bad, 0));
        EXPECT_TRUE(refused(mask, colour, 0, bad));
        EXPECT_TRUE(refused(floats, floats, bad, 0));
        EXPECT_TRUE(refused(plane, floats, 0, bad));
    }
    FrameBuffer to = ViewOf(colour);
    for (int kind = 0; kind < kBadKinds; ++kind) {
        FrameBuffer bad = Bad(colour, kind);
        EXPECT_FALSE(ImageOps().CopyChannel(bad, to, 0, 1)) << kind;
        EXPECT_FALSE(ImageOps().CopyChannel(ViewOf(colour), bad, 0, 1)) << kind;
    }
    for (const GuardedPicture* picture : all)
        picture->Check();
}

// --- ReverseChannels --------------------------------------------------------------------------------------

TEST(ReverseChannels, EveryPictureFormat_TurnsTheOrderInPlaceAndNot)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F})
        ForEachPair([&](int srcWidth, int dstWidth, const PictureLayout& layout) {
            GuardedPicture src(srcWidth, 3, format, layout), dst(dstWidth, 2, format, layout);
            src.FillNoise(1, Noise::Special);
            dst.FillNoise(2);
            const Picture turned = reference::ReversedChannels(reference::Read(src));
            Picture expected = reference::Read(dst);
            reference::CopyRect(turned, 0, 0, srcWidth, 3, expected, 0, 0);
            ForEachVariant([&] {
                GuardedPicture result(dst), copy(src);
                FrameBuffer to = ViewOf(result), itself = ViewOf(copy);
                ASSERT_TRUE(ImageOps().ReverseChannels(ViewOf(src), to));
                ASSERT_TRUE(reference::Matches(result, expected));
                ASSERT_TRUE(ImageOps().ReverseChannels(itself, itself));
                ASSERT_TRUE(reference::Matches(copy, turned));
                EXPECT_EQ(itself.GetFormat(), format);
                result.Check();
                copy.Check();
            });
        });
}

TEST(ReverseChannels, OtherFormatsAndNoPictures_AreFalse)
{
    for (const std::uint32_t format : {PF_Packed8, PF_Mask8, PF_Mask32F}) {
        GuardedPicture picture(3, 3, format);
        picture.Freeze();
        FrameBuffer view = ViewOf(picture);
        EXPECT_FALSE(ImageOps().ReverseChannels(view, view)) << format;
        picture.Check();
    }
    GuardedPicture dst(3, 3, PF_BGRA8);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    for (int kind = 0; kind < kBadKinds; ++kind) {
        FrameBuffer bad = Bad(dst, kind);
        EXPECT_FALSE(ImageOps().ReverseChannels(bad, to)) << kind;
        EXPECT_FALSE(ImageOps().ReverseChannels(to, bad)) << kind;
    }
    dst.Check();
}

} // namespace
} // namespace kelmora

#include <algorithm>
#include <climits>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "tests/image/buffers.h"
#include "tests/image/variants.h"
#include "tests/reference/filter.h"
#include "tests/reference/picture.h"
#include "tests/reference/tent.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_memory_provider.h"

namespace kelmora {
namespace {

using reference::Axis;
using reference::FilterStep;
using reference::Picture;

// See tent_filter_test.cpp for where these come from.
constexpr double kRelative = 6.0 / (1 << 24);
constexpr double kAbsolute = 1e-9;

template <class Tap>
bool RunFilter(const FilterStep<Tap>& step, const FrameBuffer& src, FrameBuffer& dst)
{
    ImageOps ops;
    const int size = static_cast<int>(step.kernel.size());
    return step.axis == Axis::Row ? ops.RowFilter(src, dst, step.kernel.data(), size, step.anchor,
                                                  step.margin, step.divisor, step.withAlpha)
                                  : ops.ColumnFilter(src, dst, step.kernel.data(), size, step.margin,
                                                     step.anchor, step.divisor, step.withAlpha);
}

template <class Tap>
void CheckFilter(std::uint32_t format, int turn, FilterStep<Tap> step)
{
    std::mt19937 random(static_cast<unsigned>(turn));
    const int size = 1 + turn % 9;
    for (int i = 0; i < size; ++i)
        step.kernel.push_back(static_cast<Tap>(static_cast<int>(random() % 9) - 2));
    step.axis = turn / 9 % 2 == 0 ? Axis::Row : Axis::Column;
    step.anchor = size / 2;
    step.margin = turn % 4;
    step.divisor = std::vector<int>{1, 2, 3, 8, 11, -2}[random() % 6];
    step.withAlpha = random() % 2 == 0;
    step.forward = IsAlphaFirst(format);

    const PictureLayout layout = {.slack = turn % 6, .shift = turn % 4};
    GuardedPicture src(1 + turn % 33, 1 + turn % 17, format, layout);
    GuardedPicture dst(1 + static_cast<int>(random() % 40), 1 + static_cast<int>(random() % 24), format,
                       layout);
    src.FillNoise(1, turn % 3 == 0 ? Noise::Special : Noise::Leaning);
    dst.FillNoise(2);
    src.Freeze();
    Picture expected = reference::Read(dst);
    const bool done = reference::Filter(reference::Read(src), expected, step);
    ForEachVariant([&] {
        GuardedPicture result(dst);
        FrameBuffer to = ViewOf(result);
        ASSERT_EQ(RunFilter(step, ViewOf(src), to), done) << "turn " << turn;
        ASSERT_TRUE(reference::Matches(result, expected)) << "turn " << turn << ", format " << format;
        result.Check();
    });
    src.Check();
}

TEST(RowAndColumnFilter, EveryServedFormatAndSize_EqualThePlainVersion)
{
    for (const std::uint32_t format : kServedFormats)
        for (int turn = 0; turn < 600; ++turn) {
            if (IsFloat(format))
                CheckFilter(format, turn, FilterStep<float>{});
            else
                CheckFilter(format, turn, FilterStep<int>{});
        }
}

/// A column or row of bytes in, the same out.
std::vector<int> FilterPlane(Axis axis, const std::vector<int>& values, const std::vector<int>& kernel,
                             int anchor, int dstLength)
{
    const int length = static_cast<int>(values.size());
    const bool row = axis == Axis::Row;
    GuardedPicture src(row ? length : 1, row ? 1 : length, PF_Mask8);
    GuardedPicture dst(row ? dstLength : 1, row ? 1 : dstLength, PF_Mask8);
    for (int i = 0; i < length; ++i)
        src.SetByte(row ? i : 0, row ? 0 : i, 0,
                    static_cast<std::uint8_t>(values[static_cast<std::size_t>(i)]));
    dst.FillBytes(99);
    FilterStep<int> step;
    step.axis = axis;
    step.kernel = kernel;
    step.anchor = anchor;
    FrameBuffer to = ViewOf(dst);
    EXPECT_TRUE(RunFilter(step, ViewOf(src), to));
    std::vector<int> result;
    for (int i = 0; i < dstLength; ++i)
        result.push_back(dst.Byte(row ? i : 0, row ? 0 : i));
    return result;
}

TEST(RowFilter, OddKernel_LosesOneColumnLessThanItsSize)
{
    // Six columns, three taps: 6 - 2 = 4 columns, from column 1 on.
    EXPECT_EQ(FilterPlane(Axis::Row, {1, 2, 3, 4, 5, 6}, {0, 1, 0}, 1, 4), (std::vector<int>{2, 3, 4, 5}));
}

TEST(ColumnFilter, Kept_OddKernel_LeavesOneRowLess)
{
    EXPECT_EQ(FilterPlane(Axis::Column, {1, 2, 3, 4, 5, 6}, {0, 1, 0}, 1, 4),
              (std::vector<int>{2, 3, 4, 99}));
}

TEST(RowFilter, RoomInTheDestination_StartsInItsMiddle)
{
    // Four columns of ten: spare 6, (6 - 2) / 2 + 1 = 3. Two taps, anchor 1: from column 1 on, and the second
    // tap lies on the pixel itself.
    EXPECT_EQ(FilterPlane(Axis::Row, {1, 2, 3, 4, 5, 6}, {0, 1}, 1, 10),
              (std::vector<int>{99, 99, 99, 2, 3, 4, 5, 99, 99, 99}));
    // A spare below the kernel's size: from column 0 on.
    EXPECT_EQ(FilterPlane(Axis::Row, {1, 2, 3, 4, 5, 6}, {0, 1}, 1, 5), (std::vector<int>{2, 3, 4, 5, 99}));
}

TEST(RowFilter, Kept_AlphaFirst_RunsForwardAndTruncates)
{
    GuardedPicture bgra(3, 1, PF_BGRA8), argb(3, 1, PF_ARGB8);
    for (GuardedPicture* picture : {&bgra, &argb}) {
        picture->SetColour(0, 0, 10, 10, 10, 10);
        picture->SetColour(1, 0, 20, 20, 20, 20);
        picture->SetColour(2, 0, 35, 35, 35, 35);
    }
    FilterStep<int> step;
    step.kernel = {1, 0, 0};
    step.anchor = 1;
    step.divisor = 3;
    GuardedPicture fromBgra(1, 1, PF_BGRA8), fromArgb(1, 1, PF_ARGB8);
    FrameBuffer to = ViewOf(fromBgra);
    ASSERT_TRUE(RunFilter(step, ViewOf(bgra), to));
    EXPECT_EQ(fromBgra.Byte(0, 0, 0), 12); // 35 / 3 = 11.67: the kernel meets the right end, to nearest
    to.AttachBuffer(ViewOf(fromArgb));
    ASSERT_TRUE(RunFilter(step, ViewOf(argb), to));
    EXPECT_EQ(fromArgb.Byte(0, 0, 1), 3); // 10 / 3 = 3.33: the left end
    step.kernel = {0, 0, 1};
    ASSERT_TRUE(RunFilter(step, ViewOf(argb), to));
    EXPECT_EQ(fromArgb.Byte(0, 0, 1), 11); // 11.67 toward zero
    step.divisor = 0;
    ASSERT_TRUE(RunFilter(step, ViewOf(argb), to));
    EXPECT_EQ(fromArgb.Byte(0, 0, 1), 35); // not divided at all
    step.divisor = -3;
    ASSERT_TRUE(RunFilter(step, ViewOf(argb), to));
    EXPECT_EQ(fromArgb.Byte(0, 0, 1), 0);
}

TEST(RowFilter, WithoutAlpha_AlphaFirstCopiesItAndAlphaLastLeavesIt)
{
    FilterStep<int> step;
    step.kernel = {1, 1};
    step.anchor = 1;
    step.divisor = 2;
    step.withAlpha = false;
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture src(3, 1, format), dst(1, 1, format);
        src.SetColour(0, 0, 2, 2, 2, 2);
        src.SetColour(1, 0, 4, 4, 4, 40);
        src.SetColour(2, 0, 6, 6, 6, 6);
        dst.SetColour(0, 0, 1, 1, 1, 77);
        FrameBuffer to = ViewOf(dst);
        ASSERT_TRUE(RunFilter(step, ViewOf(src), to));
        EXPECT_EQ(dst.Byte(0, 0, PlaceOfColour(format, 3)), format == PF_ARGB8 ? 40 : 77);
        EXPECT_EQ(dst.Byte(0, 0, PlaceOfColour(format, 0)), 5); // pixels 1 and 2
    }
}

TEST(RowAndColumnFilter, BadArguments_AreFalseAndWriteNothing)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture src(9, 9, format), dst(9, 9, format), floats(9, 9, PF_BGRA32F), mask(9, 9, PF_Mask8);
        dst.FillNoise(1);
        dst.Freeze();
        const FrameBuffer from = ViewOf(src);
        FrameBuffer to = ViewOf(dst), toFloats = ViewOf(floats), none;
        const int kernel[3] = {1, 2, 1};
        const float parts[3] = {1, 2, 1};
        ImageOps ops;
        const auto refused = [&](const FrameBuffer& s, FrameBuffer& d, const int* k, int size, int anchor,
                                 int margin, int divisor) {
            return !ops.RowFilter(s, d, k, size, anchor, margin, divisor, true)
                && !ops.ColumnFilter(s, d, k, size, margin, anchor, divisor, true);
        };
        EXPECT_TRUE(refused(from, to, nullptr, 3, 1, 0, 4));
        for (const int size : {0, -1, INT_MIN, INT_MAX})
            EXPECT_TRUE(refused(from, to, kernel, size, 0, 0, 4)) << size;
        for (const int anchor : {-1, 3, INT_MAX, INT_MIN})
            EXPECT_TRUE(refused(from, to, kernel, 3, anchor, 0, 4)) << anchor;
        EXPECT_TRUE(refused(from, to, kernel, 3, 0, 0, 4)); // would read left of the picture
        for (const int margin : {5, -1, INT_MAX, INT_MIN})
            EXPECT_TRUE(refused(from, to, kernel, 3, 1, margin, 4)) << margin;
        EXPECT_TRUE(refused(none, to, kernel, 3, 1, 0, 4));
        EXPECT_TRUE(refused(from, none, kernel, 3, 1, 0, 4));
        EXPECT_TRUE(refused(from, toFloats, kernel, 3, 1, 0, 4));
        EXPECT_TRUE(refused(ViewOf(mask), to, kernel, 3, 1, 0, 4));
        EXPECT_FALSE(ops.RowFilter(from, to, parts, 3, 1, 0, 1, true)); // float taps for bytes
        EXPECT_FALSE(ops.ColumnFilter(ViewOf(floats), toFloats, kernel, 3, 0, 1, 1, true));
        if (format == PF_BGRA8) {
            EXPECT_TRUE(refused(from, to, kernel, 3, 1, 0, 0));
        }
        dst.Check();
    }
}

TEST(RowAndColumnFilter, EveryAnchorOfEverySize_StaysInsideThePicture)
{
    for (int size = 1; size <= 12; ++size)
        for (int anchor = 0; anchor < size; ++anchor) {
            const std::vector<int> kernel(static_cast<std::size_t>(size), 1);
            GuardedPicture src(13, 13, PF_BGRA8, {.guard = anchor % 2 ? Guard::PageEnd : Guard::PageStart});
            GuardedPicture dst(13, 13, PF_BGRA8);
            FrameBuffer to = ViewOf(dst);
            ImageOps ops;
            const bool row = ops.RowFilter(ViewOf(src), to, kernel.data(), size, anchor, 0, 1, true);
            const bool column = ops.ColumnFilter(ViewOf(src), to, kernel.data(), size, 0, anchor, 1, true);
            if (anchor == size / 2) {
                EXPECT_TRUE(row && column) << size;
            }
            // The first tap of the first pixel: 2 * anchor - size + 1 must not be negative.
            if (2 * anchor - size + 1 < 0) {
                EXPECT_FALSE(row || column) << size << ", " << anchor;
            }
            dst.Check();
        }
}

TEST(TentKernels, OfTheOperations_AreTheOnesOfTheKernelFile)
{
    int whole[5] = {};
    float parts[4] = {};
    EXPECT_EQ(ImageOps().MakeTentKernelI(whole, 5), 9);
    EXPECT_EQ(whole[2], 3);
    EXPECT_EQ(ImageOps().MakeTentKernelF(parts, 4), 6.0f);
    EXPECT_EQ(parts[3], 1.0f / 6);
}

// --- ExtendBorder -----------------------------------------------------------------------------------------

TEST(ExtendBorder, EveryServedFormatAndMargin_EqualsThePlainVersion)
{
    for (const std::uint32_t format : kServedFormats)
        for (int turn = 0; turn < 400; ++turn) {
            const int marginX = turn % 5, marginY = turn / 5 % 4;
            const int more = turn % 3 == 0 ? 0 : turn % 7;
            GuardedPicture src(1 + turn % 33, 1 + turn % 11, format, {.slack = turn % 6, .shift = turn % 3});
            GuardedPicture dst(src.Width() + more, src.Height() + more, format, {.slack = turn % 4});
            src.FillNoise(1, Noise::Special);
            dst.FillNoise(2);
            Picture expected = reference::Read(dst), itself = reference::Read(src);
            const bool apart =
                reference::ExtendBorder(reference::Read(src), expected, marginX, marginY, false);
            const bool inPlace = reference::ExtendBorder(itself, itself, marginX, marginY, true);
            FrameBuffer to = ViewOf(dst), from = ViewOf(src);
            ASSERT_EQ(ImageOps().ExtendBorder(from, to, marginX, marginY), apart) << turn;
            ASSERT_TRUE(reference::Matches(dst, expected)) << turn;
            ASSERT_EQ(ImageOps().ExtendBorder(from, from, marginX, marginY), inPlace) << turn;
            ASSERT_TRUE(reference::Matches(src, itself)) << turn;
            src.Check();
            dst.Check();
        }
}

TEST(ExtendBorder, EqualSizes_WritesTheWholeAndKeepsTheMiddle)
{
    for (const std::uint32_t format : {PF_Mask8, PF_Mask32F}) {
        GuardedPicture src(4, 3, format), dst(4, 3, format);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 4; ++x) {
                if (format == PF_Mask8)
                    src.SetByte(x, y, 0, static_cast<std::uint8_t>(10 * y + x));
                else
                    src.SetFloat(x, y, 0, static_cast<float>(10 * y + x));
            }
        FrameBuffer to = ViewOf(dst);
        ASSERT_TRUE(ImageOps().ExtendBorder(ViewOf(src), to, 1, 1));
        const Picture result = reference::Read(dst);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 4; ++x)
                EXPECT_EQ(result.At(x, y, 0), x < 2 ? 11 : 12);
    }
}

TEST(ExtendBorder, NoInnerRectangleLeft_IsFalseAndWritesNothing)
{
    for (const std::uint32_t format : kServedFormats) {
        GuardedPicture src(6, 6, format), dst(6, 6, format), small(5, 5, format);
        dst.FillNoise(1);
        small.FillNoise(1);
        dst.Freeze();
        small.Freeze();
        FrameBuffer to = ViewOf(dst), toSmall = ViewOf(small);
        ImageOps ops;
        for (const int margin : {3, 4, INT_MAX, -1, INT_MIN}) {
            EXPECT_FALSE(ops.ExtendBorder(ViewOf(src), to, margin, 1)) << margin;
            EXPECT_FALSE(ops.ExtendBorder(ViewOf(src), to, 1, margin)) << margin;
            EXPECT_FALSE(ops.ExtendBorder(to, to, margin, 1)) << margin;
        }
        EXPECT_FALSE(ops.ExtendBorder(ViewOf(src), toSmall, 0, 0)); // does not fit
        dst.Check();
        small.Check();
    }
}

TEST(ExtendBorder, Strangers_AreFalse)
{
    GuardedPicture packed(6, 6, PF_Packed8), colour(6, 6, PF_BGRA8), mask(6, 6, PF_Mask8);
    packed.Freeze();
    colour.Freeze();
    mask.Freeze();
    FrameBuffer p = ViewOf(packed), c = ViewOf(colour), m = ViewOf(mask), none;
    ImageOps ops;
    EXPECT_FALSE(ops.ExtendBorder(p, p, 1, 1));
    EXPECT_FALSE(ops.ExtendBorder(c, m, 1, 1));
    EXPECT_FALSE(ops.ExtendBorder(none, c, 1, 1));
    EXPECT_FALSE(ops.ExtendBorder(c, none, 1, 1));
    packed.Check();
    colour.Check();
    mask.Check();
}

// --- Blur -------------------------------------------------------------------------------------------------

void CheckBlur(std::uint32_t srcFormat, std::uint32_t dstFormat, int turn, Noise noise)
{
    std::mt19937 random(static_cast<unsigned>(turn));
    const auto pick = [&](int most) { return 1 + static_cast<int>(random() % static_cast<unsigned>(most)); };
    const int most = turn % 5 == 0 ? 120 : 12;
    const float xSize = static_cast<float>(pick(most)) + 0.9f, ySize = static_cast<float>(pick(most)) + 0.1f;
    const bool withAlpha = random() % 2 == 0;
    const bool inPlace = srcFormat == dstFormat && turn % 3 == 0;
    const PictureLayout layout = {.slack = turn % 6, .shift = turn % 4};
    GuardedPicture src(pick(50), pick(40), srcFormat, layout);
    // Larger by a little, by much, smaller.
    const int dstWidth = turn % 4 == 0 ? src.Width() + pick(30)
        : turn % 4 == 1                ? pick(src.Width())
                                       : src.Width();
    const int dstHeight = turn % 5 == 1 ? src.Height() + pick(30) : src.Height();
    GuardedPicture other(dstWidth, dstHeight, dstFormat, layout);
    src.FillNoise(static_cast<std::uint32_t>(turn), noise);
    other.FillNoise(99);
    GuardedPicture& dst = inPlace ? src : other;
    Picture expected = reference::Read(dst);
    const bool done =
        reference::PlainBlurOperation(reference::Read(src), expected, xSize, ySize, withAlpha, inPlace);
    FakeMemoryProvider memory({.fill = 0x7FA5A5A5u});
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    FrameBuffer to = ViewOf(dst);
    ASSERT_EQ(ImageOps().Blur(ViewOf(src), to, xSize, ySize, &allocator, withAlpha), done) << turn;
    const bool floats = IsFloat(dstFormat);
    ASSERT_TRUE(reference::Matches(dst, expected, floats ? kRelative : 0, floats ? kAbsolute : 0))
        << "turn " << turn << ": " << src.Width() << " x " << src.Height() << " to " << dstWidth << " x "
        << dstHeight << ", sizes " << xSize << " x " << ySize << ", formats " << srcFormat << " to "
        << dstFormat << ", withAlpha " << withAlpha << ", in place " << inPlace;
    dst.Check();
}

TEST(Blur, EveryFormatAndSize_EqualsThePlainVersionInEveryVariant)
{
    ForEachVariant([] {
        for (const std::uint32_t format : kServedFormats)
            for (int turn = 0; turn < 60; ++turn)
                ASSERT_NO_FATAL_FAILURE(
                    CheckBlur(format, format, turn, turn % 2 == 0 ? Noise::Uniform : Noise::Leaning));
    });
}

TEST(Blur, ChannelOrders_MayDiffer)
{
    struct {
        std::uint32_t src, dst;
    } const pairs[] = {
        {PF_ARGB8, PF_BGRA8}, {PF_BGRA8, PF_ARGB8}, {PF_ARGB32F, PF_BGRA32F}, {PF_BGRA32F, PF_ARGB32F}};
    for (const auto& pair : pairs)
        for (int turn = 0; turn < 60; ++turn)
            ASSERT_NO_FATAL_FAILURE(CheckBlur(pair.src, pair.dst, turn, Noise::Uniform));
}

TEST(Blur, SizesBelowOne_Copy)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (const std::uint32_t format : kServedFormats)
        for (const float size : {0.9f, 0.0f, -5.0f, -1e30f, nan, -std::numeric_limits<float>::infinity()}) {
            GuardedPicture src(9, 7, format), dst(9, 7, format);
            src.FillNoise(1);
            FrameBuffer to = ViewOf(dst);
            EXPECT_TRUE(ImageOps().Blur(ViewOf(src), to, size, 8, nullptr, true)) << size;
            EXPECT_TRUE(Equal(dst, src));
            dst.FillBytes(0);
            EXPECT_TRUE(ImageOps().Blur(ViewOf(src), to, 8, size, nullptr, true)) << size;
            EXPECT_TRUE(Equal(dst, src));
        }
}

TEST(Blur, SizesBeyond100_AreCutTo100)
{
    for (const float size : {100.9f, 250.0f, 1e30f, std::numeric_limits<float>::infinity()})
        for (const std::uint32_t format : {PF_BGRA8, PF_Mask8}) {
            GuardedPicture src(33, 21, format), dst(33, 21, format), capped(33, 21, format);
            src.FillNoise(1);
            FrameBuffer to = ViewOf(dst), toCapped = ViewOf(capped);
            ASSERT_TRUE(ImageOps().Blur(ViewOf(src), to, size, size, nullptr, true));
            ASSERT_TRUE(ImageOps().Blur(ViewOf(src), toCapped, 100, 100, nullptr, true));
            EXPECT_TRUE(Equal(dst, capped)) << size;
        }
}

TEST(Blur, HundredTapsOnFiveByFive_IsTheMiddlePixelEverywhere)
{
    // Twice two border pixels go and one is left.
    GuardedPicture src(5, 5, PF_BGRA8), dst(5, 5, PF_BGRA8);
    src.FillNoise(1);
    src.SetColour(2, 2, 10, 20, 30, 40);
    FrameBuffer to = ViewOf(dst);
    ASSERT_TRUE(ImageOps().Blur(ViewOf(src), to, 100, 100, nullptr, true));
    GuardedPicture expected(5, 5, PF_BGRA8);
    expected.Fill(10, 20, 30, 40);
    EXPECT_TRUE(Equal(dst, expected));
}

TEST(Blur, Kept_OneTap_StillReplacesTheTwoOutermostRowsAndColumns)
{
    GuardedPicture src(6, 7, PF_Mask8), dst(6, 7, PF_Mask8);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 6; ++x)
            src.SetByte(x, y, 0, static_cast<std::uint8_t>(10 * y + x));
    FrameBuffer to = ViewOf(dst);
    ASSERT_TRUE(ImageOps().Blur(ViewOf(src), to, 1, 1, nullptr, true));
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(dst.Byte(x, y), 10 * std::clamp(y, 2, 4) + std::clamp(x, 2, 3));
}

TEST(Blur, ConstantPicture_StaysConstant)
{
    for (const std::uint32_t format : kServedFormats)
        for (const float size : {1.0f, 2.0f, 3.0f, 10.0f, 99.0f, 100.0f}) {
            GuardedPicture src(40, 30, format), dst(40, 30, format);
            src.Fill(200, 200, 200, 200);
            FrameBuffer to = ViewOf(dst);
            ASSERT_TRUE(ImageOps().Blur(ViewOf(src), to, size, size, nullptr, true));
            EXPECT_TRUE(IsFloat(format) ? Near(dst, src, 1e-6) : Equal(dst, src)) << format << ", " << size;
        }
}

TEST(Blur, MaskInPlace_UsesByteKernels)
{
    // 5 taps over a single 90 in the middle row: 90 / 9 * {1, 2, 3, 2, 1}, and one column tap.
    GuardedPicture mask(11, 5, PF_Mask8);
    mask.SetByte(5, 2, 0, 90);
    FrameBuffer view = ViewOf(mask);
    ASSERT_TRUE(ImageOps().Blur(view, view, 5, 1, nullptr, true));
    const int expected[11] = {0, 0, 0, 10, 20, 30, 20, 10, 0, 0, 0};
    for (int x = 0; x < 11; ++x)
        EXPECT_EQ(mask.Byte(x, 2), expected[x]) << x;
    mask.Check();
}

TEST(Blur, Kept_AlphaFirstToAlphaLastWithoutAlpha_CopiesChannelZeroToChannelZero)
{
    // The channel's place comes from the source's format alone: its alpha lands on blue.
    GuardedPicture src(8, 8, PF_ARGB8), dst(8, 8, PF_BGRA8);
    src.Fill(10, 20, 30, 77);
    dst.FillBytes(5);
    FrameBuffer to = ViewOf(dst);
    ASSERT_TRUE(ImageOps().Blur(ViewOf(src), to, 3, 3, nullptr, false));
    GuardedPicture expected(8, 8, PF_BGRA8);
    expected.Fill(77, 20, 30, 5);
    EXPECT_TRUE(Equal(dst, expected));
}

TEST(Blur, WithoutAlpha_KeepsTheSourcesAlpha)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture src(12, 9, format), dst(12, 9, format);
        src.FillNoise(3);
        FrameBuffer to = ViewOf(dst);
        ASSERT_TRUE(ImageOps().Blur(ViewOf(src), to, 5, 5, nullptr, false));
        const Picture before = reference::Read(src), after = reference::Read(dst);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 12; ++x)
                ASSERT_EQ(after.At(x, y, after.AlphaPlace()), before.At(x, y, before.AlphaPlace()));
    }
}

TEST(Blur, PicturesTooSmallForABorder_NeverShowWhatMemoryHeld)
{
    for (const std::uint32_t format : kServedFormats)
        for (int width = 1; width <= 5; ++width)
            for (int height = 1; height <= 5; ++height) {
                GuardedPicture src(width, height, format), dst(width, height, format);
                src.FillNoise(1);
                Picture expected = reference::Read(dst);
                const bool done = reference::PlainBlurOperation(reference::Read(src), expected, 4, 3, true);
                for (const std::uint32_t fill : {0u, 0xFFFFFFFFu, 0x7FA5A5A5u}) {
                    FakeMemoryProvider memory({.fill = fill});
                    FakeHost host;
                    host.SetMemory(&memory);
                    MemoryAllocator allocator(&host);
                    FrameBuffer to = ViewOf(dst);
                    ASSERT_EQ(ImageOps().Blur(ViewOf(src), to, 4, 3, &allocator, true), done);
                    ASSERT_TRUE(reference::Matches(dst, expected, IsFloat(format) ? kRelative : 0,
                                                   IsFloat(format) ? kAbsolute : 0))
                        << width << " x " << height << ", format " << format;
                }
            }
}

TEST(Blur, PartlyOverlappingPictures_ReadTheSourceAsItWas)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F}) {
        GuardedPicture picture(20, 40, format);
        picture.FillNoise(1);
        const VideoFrame whole = picture.Frame();
        FrameBuffer src, dst;
        src.Attach(picture.Row(0), 20, 30, whole.stride, whole.pixelBytes, format, false);
        dst.Attach(picture.Row(7), 20, 30, whole.stride, whole.pixelBytes, format, false);
        GuardedPicture before(20, 30, format), expected(20, 30, format);
        FrameBuffer toBefore = ViewOf(before), toExpected = ViewOf(expected);
        ASSERT_TRUE(ImageOps().Copy(src, toBefore));
        ASSERT_TRUE(ImageOps().Blur(toBefore, toExpected, 9, 9, nullptr, true));
        ASSERT_TRUE(ImageOps().Blur(src, dst, 9, 9, nullptr, true));
        VideoFrame result;
        dst.ToVideoFrame(&result);
        EXPECT_TRUE(Equal(result, expected.Frame()));
        picture.Check();
    }
}

TEST(Blur, WhatItCannotDo_IsFalseAndWritesNothing)
{
    GuardedPicture colour(9, 9, PF_BGRA8), floats(9, 9, PF_BGRA32F), packed(9, 9, PF_Packed8);
    GuardedPicture unknown(9, 9, 4, 5);
    for (GuardedPicture* picture : {&colour, &floats, &packed, &unknown}) {
        picture->FillBytes(3);
        picture->Freeze();
    }
    FrameBuffer c = ViewOf(colour), f = ViewOf(floats), p = ViewOf(packed), u = ViewOf(unknown), none;
    ImageOps ops;
    EXPECT_FALSE(ops.Blur(c, f, 3, 3, nullptr, true));
    EXPECT_FALSE(ops.Blur(f, c, 3, 3, nullptr, true));
    EXPECT_FALSE(ops.Blur(p, p, 3, 3, nullptr, true));
    EXPECT_FALSE(ops.Blur(u, u, 3, 3, nullptr, true));
    EXPECT_FALSE(ops.Blur(c, p, 3, 3, nullptr, true));
    EXPECT_FALSE(ops.Blur(none, c, 3, 3, nullptr, true));
    EXPECT_FALSE(ops.Blur(c, none, 3, 3, nullptr, true));
    // Rows shorter than the pixels, and sizes whose products leave 32 bits.
    FrameBuffer wild;
    wild.Attach(colour.Row(0), 9, 9, 35, 4, PF_BGRA8, false);
    EXPECT_FALSE(ops.Blur(wild, c, 3, 3, nullptr, true));
    EXPECT_FALSE(ops.Blur(c, wild, 3, 3, nullptr, true));
    wild.Attach(colour.Row(0), INT_MAX, INT_MAX, 36, 4, PF_BGRA8, false);
    FrameBuffer wildToo(wild);
    EXPECT_FALSE(ops.Blur(wild, wildToo, 3, 3, nullptr, true));
    wild.Attach(colour.Row(0), 0x40000001, 9, 36, 4, PF_BGRA8, false);
    EXPECT_FALSE(ops.Blur(wild, wildToo, 100, 100, nullptr, true));
    for (GuardedPicture* picture : {&colour, &floats, &packed, &unknown})
        picture->Check();
}

TEST(Blur, EachRefusedAllocation_IsFalseWithoutTouchingTheDestination)
{
    for (const std::uint32_t format : kServedFormats)
        for (const bool inPlace : {false, true})
            for (const int side : {4, 12}) {
                GuardedPicture src(side, side, format), dst(side, side, format);
                src.FillNoise(1);
                dst.FillNoise(2);
                const GuardedPicture before(inPlace ? src : dst);
                FakeMemoryProvider memory;
                FakeHost host;
                host.SetMemory(&memory);
                MemoryAllocator allocator(&host);
                const auto blur = [&](const GuardedPicture& to) {
                    FrameBuffer view = ViewOf(to);
                    return ImageOps().Blur(ViewOf(inPlace ? to : src), view, 5, 4, &allocator, true);
                };
                ASSERT_TRUE(blur(GuardedPicture(before)));
                const std::uint64_t asked = memory.Asked();
                ASSERT_GT(asked, 0u);
                EXPECT_EQ(memory.OpenBlocks(), 0u);
                for (std::uint64_t n = 0; n < asked; ++n)
                    for (const bool onwards : {false, true}) {
                        MemoryHabits habits;
                        (onwards ? habits.refuseFrom : habits.refuseOnly) = n;
                        memory.SetHabits(habits);
                        GuardedPicture to(before);
                        EXPECT_FALSE(blur(to)) << "call " << n << ", format " << format;
                        EXPECT_TRUE(Equal(to, before)) << "call " << n << ", format " << format;
                        EXPECT_GT(memory.Refused(), 0u);
                        EXPECT_EQ(memory.OpenBlocks(), 0u);
                    }
            }
}

} // namespace
} // namespace kelmora

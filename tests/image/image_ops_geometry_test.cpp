#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "image/primitives/warp.h"
#include "tests/image/bad_views.h"
#include "tests/image/buffers.h"
#include "tests/reference/copies.h"
#include "tests/reference/picture.h"
#include "tests/reference/resize.h"
#include "tests/reference/warp.h"

namespace kelmora {
namespace {

using reference::Picture;

struct Rect {
    int left, top, right, bottom;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
};

bool ResizeRect(const FrameBuffer& src, const Rect& from, FrameBuffer& dst, const Rect& to, int quality,
                double xFactor = 0.0, double yFactor = 0.0)
{
    return ImageOps().ResizeRect(src, dst, from.left, from.top, from.right, from.bottom, to.left, to.top,
                                 to.right, to.bottom, quality, xFactor, yFactor);
}

bool ResizeRect(const GuardedPicture& src, const Rect& from, const GuardedPicture& dst, const Rect& to,
                int quality, double xFactor = 0.0, double yFactor = 0.0)
{
    FrameBuffer view = ViewOf(dst);
    return ResizeRect(ViewOf(src), from, view, to, quality, xFactor, yFactor);
}

int CodeOf(int quality)
{
    switch (quality) {
    case 0:
        return reference::kNearest;
    case 2:
        return reference::kCubic;
    case 3:
        return reference::kLanczos;
    default:
        return reference::kLinear;
    }
}

Picture Cut(const Picture& picture, const Rect& rect)
{
    Picture part(rect.Width(), rect.Height(), picture.format);
    reference::CopyRect(picture, rect.left, rect.top, rect.Width(), rect.Height(), part, 0, 0);
    return part;
}

/// The rectangle as a picture by itself, resized into a picture of the other rectangle's size.
Picture Expected(const GuardedPicture& src, const Rect& from, const GuardedPicture& dst, const Rect& to,
                 int quality, double xFactor = 0.0, double yFactor = 0.0)
{
    if (xFactor == 0.0)
        xFactor = static_cast<double>(to.Width()) / from.Width();
    if (yFactor == 0.0)
        yFactor = static_cast<double>(to.Height()) / from.Height();
    const Picture whole = reference::Read(src);
    Picture result = reference::Read(dst);
    Picture part = Cut(result, to);
    reference::Resize(Cut(whole, from), {0, 0, from.Width(), from.Height()}, part, xFactor, yFactor,
                      CodeOf(quality));
    reference::CopyRect(part, 0, 0, to.Width(), to.Height(), result, to.left, to.top);
    return result;
}

/// Bytes round to nearest; linear and nearest ones are exact. Floats: see the primitive's test.
double ToleranceOf(std::uint32_t format, int quality)
{
    if (IsFloatFormat(format))
        return CodeOf(quality) == reference::kNearest ? 0.0 : 24 * std::ldexp(1.0, -24);
    return quality == 2 || quality == 3 ? 0.502 : 0.0;
}

void CheckAgainstPlain(std::uint32_t format, const Rect& from, const Rect& to, int quality,
                       double xFactor = 0.0, double yFactor = 0.0, const PictureLayout& layout = {})
{
    if (testing::Test::HasFatalFailure())
        return; // one message is enough
    GuardedPicture src(30, 25, format, layout), dst(40, 35, format, layout);
    src.FillNoise(1);
    src.Freeze();
    dst.FillNoise(2);
    const Picture expected = Expected(src, from, dst, to, quality, xFactor, yFactor);
    ASSERT_TRUE(ResizeRect(src, from, dst, to, quality, xFactor, yFactor));
    ASSERT_TRUE(reference::Matches(dst, expected, 0.0, ToleranceOf(format, quality)))
        << "format " << format << ", quality " << quality << ", " << from.Width() << " x " << from.Height()
        << " to " << to.Width() << " x " << to.Height();
    src.Check();
    dst.Check();
}

constexpr Rect kWhole = {0, 0, 30, 25};

TEST(ResizeRect, EveryServedFormatAndQuality_ResizesTheRectangleAlone)
{
    for (const std::uint32_t format : kServedFormats)
        for (const int quality : {0, 1, 2, 3})
            for (const Rect& from : {kWhole,
                                     Rect{3, 2, 20, 14},
                                     {29, 24, 30, 25},
                                     {5, 4, 12, 20},
                                     {10, 10, 13, 22},
                                     {0, 7, 1, 25}})
                for (const Rect& to : {Rect{0, 0, 40, 35}, {7, 5, 21, 11}, {39, 34, 40, 35}, {1, 30, 40, 33}})
                    for (const int slack : {0, 5})
                        CheckAgainstPlain(format, from, to, quality, 0.0, 0.0,
                                          {.slack = slack, .shift = slack});
}

TEST(ResizeRect, OtherQualities_AreLinear)
{
    for (const int quality : {4, 8, 16, -1, INT_MIN, INT_MAX})
        CheckAgainstPlain(PF_BGRA8, kWhole, {2, 3, 38, 20}, quality);
}

TEST(ResizeRect, HandComputedRow_ComesOut)
{
    // The rectangle {0, 100} of two rows; what lies around it would show at once.
    GuardedPicture src(4, 4, PF_Mask8), dst(6, 4, PF_Mask8);
    src.FillBytes(255);
    for (const int y : {1, 2}) {
        src.SetByte(1, y, 0, 0);
        src.SetByte(2, y, 0, 100);
    }
    dst.FillBytes(9);
    ASSERT_TRUE(ResizeRect(src, {1, 1, 3, 3}, dst, {1, 1, 5, 3}, 1));
    const int expected[6] = {9, 0, 33, 67, 100, 9};
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(dst.Byte(x, y), y == 1 || y == 2 ? expected[x] : 9) << x << ", " << y;
}

TEST(ResizeRect, SmallRectangleOfALargePicture_LowersTheCode)
{
    // One pixel wide: nearest, so no value between the two.
    GuardedPicture src(30, 25, PF_Mask8), dst(3, 4, PF_Mask8);
    src.SetByte(8, 5, 0, 10);
    src.SetByte(8, 6, 0, 20);
    ASSERT_TRUE(ResizeRect(src, {8, 5, 9, 7}, dst, {0, 0, 3, 4}, 3));
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(dst.Byte(x, y), y < 2 ? 10 : 20);
}

TEST(ResizeRect, GivenFactors_DecideInsteadOfTheRectangles)
{
    for (const std::uint32_t format : kServedFormats)
        for (const int quality : {0, 1, 2, 3}) {
            CheckAgainstPlain(format, kWhole, {3, 4, 38, 33}, quality, 0.5, 0.7);  // a smaller result
            CheckAgainstPlain(format, kWhole, {3, 4, 20, 21}, quality, 1.3, 1.9);  // cut to the rectangle
            CheckAgainstPlain(format, kWhole, {3, 4, 38, 33}, quality, 0.5, 0.0);  // one of them
            CheckAgainstPlain(format, kWhole, {3, 4, 38, 33}, quality, 0.0, 0.25); // the other
        }
}

TEST(ResizeRect, SameSize_CopiesExactly)
{
    for (const std::uint32_t format : kServedFormats)
        for (const int quality : {0, 1, 2, 3}) {
            GuardedPicture src(30, 25, format), dst(40, 35, format);
            src.FillNoise(1);
            dst.FillNoise(2);
            Picture expected = reference::Read(dst);
            reference::CopyRect(reference::Read(src), 3, 4, 20, 19, expected, 11, 7);
            ASSERT_TRUE(ResizeRect(src, {3, 4, 23, 23}, dst, {11, 7, 31, 26}, quality));
            EXPECT_TRUE(reference::Matches(dst, expected)) << "format " << format << ", quality " << quality;
        }
}

TEST(ResizeRect, UnknownFormatOfOneByte_IsAPlaneOfBytes)
{
    GuardedPicture src(2, 2, 1, 77), dst(4, 2, 1, 77);
    for (int y = 0; y < 2; ++y)
        src.SetByte(1, y, 0, 100);
    ASSERT_TRUE(ResizeRect(src, {0, 0, 2, 2}, dst, {0, 0, 4, 2}, 1));
    const int expected[4] = {0, 33, 67, 100};
    for (int x = 0; x < 4; ++x)
        EXPECT_EQ(dst.Byte(x, 1), expected[x]);
}

TEST(ResizeRect, Kept_FormatsNotServed_AreTrueAndWriteNothing)
{
    struct {
        int pixelBytes;
        std::uint32_t format;
    } const strangers[] = {{4, PF_Packed8}, {4, 5},  {4, 77}, {16, PF_Mask32F}, {16, PF_BGRA8},
                           {4, PF_BGRA32F}, {16, 2}, {4, 6},  {2, 77},          {3, PF_BGRA8}};
    for (const auto& stranger : strangers) {
        GuardedPicture src(5, 5, stranger.pixelBytes, stranger.format),
            dst(7, 7, stranger.pixelBytes, stranger.format);
        src.FillBytes(200);
        dst.FillBytes(9);
        dst.Freeze();
        for (const int quality : {0, 1, 2, 3})
            EXPECT_TRUE(ResizeRect(src, {0, 0, 5, 5}, dst, {0, 0, 7, 7}, quality))
                << stranger.format << ", " << stranger.pixelBytes << " bytes";
        dst.Check();
    }
}

TEST(ResizeRect, DifferentPixelBytes_AreFalse)
{
    for (const auto& formats : {std::array{PF_BGRA8, PF_BGRA32F},
                                {PF_BGRA32F, PF_BGRA8},
                                {PF_Mask8, PF_BGRA8},
                                {PF_BGRA8, PF_Mask8},
                                {PF_Mask8, PF_Mask32F},
                                {PF_BGRA32F, PF_Mask32F}}) {
        GuardedPicture src(5, 5, formats[0]), dst(7, 7, formats[1]);
        dst.FillNoise(1);
        dst.Freeze();
        EXPECT_FALSE(ResizeRect(src, {0, 0, 5, 5}, dst, {0, 0, 7, 7}, 1));
        dst.Check();
    }
}

TEST(ResizeRect, RectanglesThatAreEmptyOrReachOut_AreFalse)
{
    const Rect bad[] = {{-1, 0, 5, 5},
                        {0, -1, 5, 5},
                        {0, 0, 8, 5},
                        {0, 0, 5, 8},
                        {3, 0, 3, 5},
                        {0, 3, 5, 3},
                        {4, 0, 3, 5},
                        {0, 4, 5, 3},
                        {7, 0, 8, 5},
                        {0, 7, 5, 8},
                        {INT_MIN, 0, 5, 5},
                        {0, INT_MIN, 5, 5},
                        {0, 0, INT_MAX, 5},
                        {0, 0, 5, INT_MAX},
                        {INT_MIN, INT_MIN, INT_MAX, INT_MAX},
                        {INT_MAX, 0, INT_MIN, 5},
                        {0, INT_MAX, 5, INT_MIN},
                        {1, 0, INT_MIN, 5}};
    for (const std::uint32_t format : kServedFormats) {
        GuardedPicture src(7, 7, format), dst(7, 7, format);
        dst.FillNoise(1);
        dst.Freeze();
        for (const Rect& rect : bad)
            for (const double factor : {0.0, 1.0}) {
                EXPECT_FALSE(ResizeRect(src, rect, dst, {0, 0, 5, 5}, 1, factor, factor))
                    << rect.left << ", " << rect.top << ", " << rect.right << ", " << rect.bottom;
                EXPECT_FALSE(ResizeRect(src, {0, 0, 5, 5}, dst, rect, 1, factor, factor))
                    << rect.left << ", " << rect.top << ", " << rect.right << ", " << rect.bottom;
            }
        dst.Check();
    }
}

TEST(ResizeRect, FactorsThatGiveNothing_AreFalse)
{
    for (const std::uint32_t format : kServedFormats) {
        GuardedPicture src(7, 7, format), dst(7, 7, format);
        dst.FillNoise(1);
        dst.Freeze();
        for (const double factor : {-1.0, -1e-300, 1e-300, 0.05, std::numeric_limits<double>::quiet_NaN()})
            for (const int quality : {0, 1, 2, 3}) {
                EXPECT_FALSE(ResizeRect(src, {0, 0, 7, 7}, dst, {0, 0, 7, 7}, quality, factor, 1.0))
                    << factor;
                EXPECT_FALSE(ResizeRect(src, {0, 0, 7, 7}, dst, {0, 0, 7, 7}, quality, 1.0, factor))
                    << factor;
            }
        // 7 pixels to 1 is a seventh and fine.
        dst.Thaw();
        EXPECT_TRUE(ResizeRect(src, {0, 0, 7, 7}, dst, {0, 0, 1, 1}, 1));
    }
}

TEST(ResizeRect, NoPicture_IsFalse)
{
    GuardedPicture src(5, 5, PF_BGRA8), dst(5, 5, PF_BGRA8);
    dst.FillNoise(1);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(dst, kind);
        EXPECT_FALSE(ResizeRect(bad, {0, 0, 5, 5}, to, {0, 0, 5, 5}, 1)) << kind;
        EXPECT_FALSE(ResizeRect(ViewOf(src), {0, 0, 5, 5}, bad, {0, 0, 5, 5}, 1)) << kind;
    }
    dst.Check();
}

// --- affine warps -----------------------------------------------------------------------------------------

/// The formats that affine warps serve; quadrangles take all but the mask.
constexpr std::uint32_t kWarpFormats[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F, PF_Mask8};
constexpr std::uint32_t kQuadFormats[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};

constexpr std::int32_t kWarpWidth = 23, kWarpHeight = 17;

bool WarpAffine(const GuardedPicture& src, const GuardedPicture& dst, const Transform2D& t)
{
    FrameBuffer view = ViewOf(dst);
    return ImageOps().WarpAffine(ViewOf(src), view, t);
}

/// Moves of all kinds about the middle of a picture.
std::vector<Transform2D> Moves()
{
    std::vector<Transform2D> moves(6);
    for (Transform2D& move : moves)
        move.Translate(-11, -8);
    moves[0].Translate(11, 8);
    moves[1].Rotate(0.3f);
    moves[1].Translate(12.25f, 7.5f);
    moves[2].Scale(1.5f, 0.75f);
    moves[2].Rotate(-2.0f);
    moves[2].Translate(11, 8);
    moves[3].Scale(-1, 1.25f);
    moves[3].Translate(10.5f, 9);
    moves[4].Translate(13.5f, 6.25f);
    moves[5].Scale(4);
    moves[5].Rotate(0.1f);
    moves[5].Translate(11, 8);
    return moves;
}

bool WarpPlain(const Picture& src, Picture& dst, const Transform2D& t)
{
    float rows[3][3];
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            rows[row][column] = t.Get(row, column);
    return reference::WarpAffine(src, dst, rows);
}

TEST(WarpAffine, EveryServedFormatAndMove_MatchesThePlainVersion)
{
    for (const std::uint32_t format : kWarpFormats)
        for (const Transform2D& move : Moves())
            for (const int more : {-5, 0, 4})
                for (const int slack : {0, 5}) {
                    const PictureLayout layout = {.slack = slack, .shift = slack};
                    GuardedPicture src(kWarpWidth, kWarpHeight, format, layout),
                        dst(kWarpWidth + more, kWarpHeight - more, format, layout);
                    src.FillNoise(1);
                    src.Freeze();
                    dst.FillNoise(2);
                    Picture expected = reference::Read(dst);
                    ASSERT_TRUE(WarpPlain(reference::Read(src), expected, move));
                    ASSERT_TRUE(WarpAffine(src, dst, move));
                    ASSERT_TRUE(reference::Matches(dst, expected)) << "format " << format << ", " << more;
                    src.Check();
                    dst.Check();
                }
}

TEST(WarpAffine, HandComputedMove_TakesRowVectors)
{
    // A quarter turn from the first axis toward the second one, then 4 to the right: (x, y) to (4 - y, x).
    GuardedPicture src(5, 5, PF_BGRA8), dst(5, 5, PF_BGRA8);
    src.FillNoise(1);
    Transform2D turn;
    turn.Rotate(1.57079632679f);
    turn.Translate(4, 0);
    ASSERT_TRUE(WarpAffine(src, dst, turn));
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x)
            for (int c = 0; c < 4; ++c)
                EXPECT_EQ(dst.Byte(4 - y, x, c), src.Byte(x, y, c)) << x << ", " << y;
}

TEST(WarpAffine, Identity_CopiesTheCommonSizeAlone)
{
    for (const std::uint32_t format : kWarpFormats) {
        GuardedPicture src(12, 9, format), dst(10, 14, format);
        src.FillNoise(1);
        dst.FillNoise(2);
        Picture expected = reference::Read(dst);
        reference::CopyRect(reference::Read(src), 0, 0, 10, 9, expected, 0, 0);
        ASSERT_TRUE(WarpAffine(src, dst, Transform2D()));
        EXPECT_TRUE(reference::Matches(dst, expected)) << "format " << format;
    }
}

TEST(WarpAffine, MovesWithoutAnInverse_AreFalse)
{
    const float infinity = std::numeric_limits<float>::infinity();
    for (const std::uint32_t format : kWarpFormats) {
        GuardedPicture src(9, 7, format), dst(9, 7, format);
        dst.FillNoise(1);
        dst.Freeze();
        for (const float bad : {0.0f, infinity, std::numeric_limits<float>::quiet_NaN()}) {
            Transform2D flat, moved;
            flat.Scale(bad, 1);
            EXPECT_FALSE(WarpAffine(src, dst, flat)) << bad;
            moved.Scale(1, bad);
            EXPECT_FALSE(WarpAffine(src, dst, moved)) << bad;
        }
        Transform2D away;
        away.Translate(infinity, 0);
        EXPECT_FALSE(WarpAffine(src, dst, away));
        dst.Check();
    }
}

TEST(WarpAffine, OtherFormatsAndNoPictures_AreFalse)
{
    for (const std::uint32_t format : {std::uint32_t{PF_Packed8}, std::uint32_t{PF_Mask32F}, 5u, 77u}) {
        GuardedPicture src(5, 5, 4, format), dst(5, 5, 4, format);
        dst.FillBytes(9);
        dst.Freeze();
        EXPECT_FALSE(WarpAffine(src, dst, Transform2D())) << format;
        dst.Check();
    }
    GuardedPicture src(5, 5, PF_BGRA8), dst(5, 5, PF_BGRA8);
    dst.FillNoise(1);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(dst, kind);
        EXPECT_FALSE(ImageOps().WarpAffine(bad, to, Transform2D())) << kind;
        EXPECT_FALSE(ImageOps().WarpAffine(ViewOf(src), bad, Transform2D())) << kind;
    }
    dst.Check();
}

/// A corner of a picture of floats whose label says floats, but whose pixels are said to have four bytes.
FrameBuffer Mislabelled(const GuardedPicture& floats)
{
    FrameBuffer view;
    view.Attach(floats.Row(0), 5, 5, floats.Stride(), 4, PF_BGRA32F, false);
    return view;
}

TEST(WarpAffine, LabelsOfLargerPixels_AreFalseThoughTheRowsAreLongEnough)
{
    const GuardedPicture src(5, 5, PF_BGRA32F);
    GuardedPicture dst(5, 5, PF_BGRA32F);
    dst.FillNoise(1);
    dst.Freeze();
    FrameBuffer from = Mislabelled(src), to = Mislabelled(dst), whole = ViewOf(dst);
    EXPECT_FALSE(ImageOps().WarpAffine(from, whole, Transform2D()));
    EXPECT_FALSE(ImageOps().WarpAffine(ViewOf(src), to, Transform2D()));
    dst.Check();
}

TEST(WarpAffine, PicturesOfUnlikeFormats_NeverReachPastARow)
{
    for (const std::uint32_t from : kServedFormats)
        for (const std::uint32_t to : kServedFormats)
            if (BytesOfPixel(from) != BytesOfPixel(to)) {
                GuardedPicture src(9, 7, from), dst(9, 7, to);
                dst.FillNoise(1);
                const GuardedPicture before = dst;
                if (!WarpAffine(src, dst, Transform2D())) {
                    EXPECT_TRUE(Equal(dst, before)) << from << " to " << to;
                }
                dst.Check();
            }
}

// --- quadrangles ------------------------------------------------------------------------------------------

using Corners = double[4][2];

bool WarpQuad(const GuardedPicture& src, const GuardedPicture& dst, const Corners& quad,
              std::uint32_t interpolation = pxLinear)
{
    FrameBuffer view = ViewOf(dst);
    return ImageOps().WarpQuad(ViewOf(src), view, quad, interpolation);
}

constexpr Corners kQuads[] = {
    {{4.25, 3.5}, {26.1, 1.7}, {22.4, 20.3}, {1.8, 17.6}},        // leaning
    {{9.3, 6.1}, {20.7, 6.4}, {31.2, 24.9}, {-3.6, 23.8}},        // lying
    {{27.3, 2.2}, {5.4, 1.1}, {3.2, 19.8}, {25.9, 22.7}},         // from behind
    {{-40.5, -31.2}, {61.7, -28.4}, {70.3, 55.6}, {-38.1, 49.9}}, // from near by
};

TEST(WarpQuad, EveryServedFormatAndCode_MatchesThePlainVersion)
{
    for (const std::uint32_t format : kQuadFormats)
        for (const Corners& quad : kQuads)
            for (const int code : {pxNearest, pxLinear, pxCubic})
                for (const bool smooth : {false, true})
                    for (const int slack : {0, 5}) {
                        const PictureLayout layout = {.slack = slack, .shift = slack};
                        GuardedPicture src(kWarpWidth, kWarpHeight, format, layout),
                            dst(31, 26, format, layout);
                        src.FillNoise(1);
                        src.Freeze();
                        dst.FillNoise(2);
                        Picture expected = reference::Read(dst);
                        ASSERT_TRUE(reference::WarpQuad(reference::Read(src), expected,
                                                        reference::QuadOf(quad), code, smooth));
                        ASSERT_TRUE(WarpQuad(
                            src, dst, quad, static_cast<std::uint32_t>(code) | (smooth ? pxSmoothEdges : 0)));
                        // The corners' map is one of its own there: a last bit of the positions may differ.
                        const double tolerance = IsFloatFormat(format) ? 2e-6 : code == pxCubic ? 1.001 : 0.0;
                        ASSERT_TRUE(reference::Matches(dst, expected, 0.0, tolerance))
                            << "format " << format << ", code " << code << (smooth ? ", smooth" : "");
                        src.Check();
                        dst.Check();
                    }
}

TEST(WarpQuad, CornerPixels_LandOnTheCorners)
{
    // A picture of 4 by 3 as a rectangle of 7 by 5: every second pixel is one of the picture's.
    GuardedPicture src(4, 3, PF_BGRA8), dst(9, 7, PF_BGRA8);
    src.FillNoise(1);
    dst.FillBytes(9);
    ASSERT_TRUE(WarpQuad(src, dst, {{1, 1}, {7, 1}, {7, 5}, {1, 5}}));
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x)
            for (int c = 0; c < 4; ++c) {
                const bool outside = x < 1 || y < 1 || x > 7 || y > 5;
                if (outside || (x % 2 != 0 && y % 2 != 0)) {
                    const int expected = outside ? 9 : src.Byte(x / 2, y / 2, c);
                    EXPECT_EQ(dst.Byte(x, y, c), expected) << x << ", " << y;
                }
            }
}

TEST(WarpQuad, AtRest_CopiesAndLeavesTheRest)
{
    for (const std::uint32_t format : kQuadFormats)
        for (const std::uint32_t code : {std::uint32_t{pxNearest}, pxLinear | pxSmoothEdges}) {
            GuardedPicture src(12, 9, format), dst(15, 11, format);
            src.FillNoise(1);
            dst.FillNoise(2);
            Picture expected = reference::Read(dst);
            reference::CopyRect(reference::Read(src), 0, 0, 12, 9, expected, 0, 0);
            ASSERT_TRUE(WarpQuad(src, dst, {{0, 0}, {11, 0}, {11, 8}, {0, 8}}, code));
            EXPECT_TRUE(reference::Matches(dst, expected, 0.0, IsFloatFormat(format) ? 1e-6 : 0.0)) << format;
        }
}

TEST(WarpQuad, QuadranglesWithoutAMap_AreFalse)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const Corners bad[] = {
        {{0, 0}, {9, 9}, {9, 0}, {0, 9}},        {{0, 0}, {9, 0}, {2, 2}, {0, 9}},
        {{0, 0}, {3, 3}, {6, 6}, {9, 9}},        {{4, 4}, {4, 4}, {4, 4}, {4, 4}},
        {{0, 0}, {infinity, 0}, {9, 9}, {0, 9}}, {{0, 0}, {9, 0}, {9, std::nan("")}, {0, 9}},
    };
    for (const std::uint32_t format : kQuadFormats) {
        GuardedPicture src(9, 7, format), dst(12, 11, format), line(1, 7, format), row(9, 1, format);
        dst.FillNoise(1);
        dst.Freeze();
        for (const Corners& quad : bad)
            EXPECT_FALSE(WarpQuad(src, dst, quad)) << &quad - bad;
        const Corners good = {{0, 0}, {9, 0}, {9, 9}, {0, 9}};
        EXPECT_FALSE(WarpQuad(line, dst, good));
        EXPECT_FALSE(WarpQuad(row, dst, good));
        for (const std::uint32_t code : {0u, 3u, 8u, 16u, 0u | pxSmoothEdges, 0x40000002u})
            EXPECT_FALSE(WarpQuad(src, dst, good, code)) << code;
        FrameBuffer to = ViewOf(dst);
        EXPECT_FALSE(ImageOps().WarpQuad(ViewOf(src), to, nullptr, pxLinear));
        dst.Check();
    }
}

TEST(WarpQuad, OtherFormatsAndNoPictures_AreFalse)
{
    const Corners good = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    struct {
        int pixelBytes;
        std::uint32_t format;
    } const strangers[] = {{4, PF_Packed8}, {4, PF_Mask32F}, {1, PF_Mask8}, {4, 5}, {4, 77}};
    for (const auto& stranger : strangers) {
        GuardedPicture src(5, 5, stranger.pixelBytes, stranger.format),
            dst(5, 5, stranger.pixelBytes, stranger.format);
        dst.FillBytes(9);
        dst.Freeze();
        EXPECT_FALSE(WarpQuad(src, dst, good)) << stranger.format;
        dst.Check();
    }
    GuardedPicture src(5, 5, PF_BGRA8), dst(5, 5, PF_BGRA8);
    dst.FillNoise(1);
    dst.Freeze();
    FrameBuffer to = ViewOf(dst);
    for (int kind = 0; kind < kBadViews; ++kind) {
        FrameBuffer bad = BadView(dst, kind);
        EXPECT_FALSE(ImageOps().WarpQuad(bad, to, good, pxLinear)) << kind;
        EXPECT_FALSE(ImageOps().WarpQuad(ViewOf(src), bad, good, pxLinear)) << kind;
    }
    dst.Check();
}

TEST(WarpQuad, LabelsOfLargerPixels_AreFalseThoughTheRowsAreLongEnough)
{
    const GuardedPicture src(5, 5, PF_BGRA32F);
    GuardedPicture dst(5, 5, PF_BGRA32F);
    dst.FillNoise(1);
    dst.Freeze();
    constexpr Corners rest = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    FrameBuffer from = Mislabelled(src), to = Mislabelled(dst), whole = ViewOf(dst);
    EXPECT_FALSE(ImageOps().WarpQuad(from, whole, rest, pxLinear));
    EXPECT_FALSE(ImageOps().WarpQuad(ViewOf(src), to, rest, pxLinear));
    dst.Check();
}

TEST(WarpQuad, PicturesOfUnlikeFormats_NeverReachPastARow)
{
    for (const std::uint32_t from : kServedFormats)
        for (const std::uint32_t to : kServedFormats)
            if (BytesOfPixel(from) != BytesOfPixel(to)) {
                GuardedPicture src(9, 7, from), dst(9, 7, to);
                dst.FillNoise(1);
                const GuardedPicture before = dst;
                if (!WarpQuad(src, dst, {{0, 0}, {8, 0}, {8, 6}, {0, 6}})) {
                    EXPECT_TRUE(Equal(dst, before)) << from << " to " << to;
                }
                dst.Check();
            }
}

} // namespace
} // namespace kelmora

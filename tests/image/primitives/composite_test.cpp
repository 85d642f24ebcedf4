#include "image/primitives/composite.h"

#include <climits>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/blends.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

using reference::Picture;

TEST(AlphaComposite, EveryWidthAndLayout_IsThePlainComposite)
{
    for (const int op : {pxAlphaOver, pxAlphaOverPremultiplied})
        for (int width = 1; width <= 33; ++width)
            ForEachLayout([&](const PictureLayout& layout) {
                GuardedPicture a(width, 3, PF_BGRA8, layout), b(width, 3, PF_BGRA8, layout),
                    out(width, 3, PF_BGRA8, layout);
                a.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                b.FillNoise(2, Noise::Leaning);
                Picture expected(width, 3, PF_BGRA8);
                reference::AlphaOver(reference::Read(a), reference::Read(b), expected,
                                     op == pxAlphaOverPremultiplied);
                a.Freeze();
                b.Freeze();
                ASSERT_EQ(pxAlphaComposite_8u_C4(a.Row(0), a.Stride(), b.Row(0), b.Stride(), out.Row(0),
                                                 out.Stride(), width, 3, op),
                          pxOk);
                ASSERT_TRUE(reference::Matches(out, expected)) << width << ", op " << op;
                a.Check();
                b.Check();
                out.Check();
            });
}

TEST(AlphaComposite, EveryAlphaAndColourOfTheFirst_OverAFewOfTheSecond)
{
    constexpr std::uint8_t seconds[][2] = {{0, 0},    {255, 255}, {128, 128}, {77, 200},
                                           {200, 77}, {255, 1},   {1, 255},   {254, 254}};
    for (const int op : {pxAlphaOver, pxAlphaOverPremultiplied})
        for (const auto& second : seconds) {
            GuardedPicture a(256, 256, PF_BGRA8), b(256, 256, PF_BGRA8), out(256, 256, PF_BGRA8);
            for (int y = 0; y < 256; ++y)
                for (int x = 0; x < 256; ++x)
                    a.SetColour(x, y, static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(255 - x),
                                second[0], static_cast<std::uint8_t>(y));
            b.Fill(second[0], second[1], static_cast<std::uint8_t>(255 - second[0]), second[1]);
            Picture expected(256, 256, PF_BGRA8);
            reference::AlphaOver(reference::Read(a), reference::Read(b), expected,
                                 op == pxAlphaOverPremultiplied);
            ASSERT_EQ(pxAlphaComposite_8u_C4(a.Row(0), 1024, b.Row(0), 1024, out.Row(0), 1024, 256, 256, op),
                      pxOk);
            ASSERT_TRUE(reference::Matches(out, expected)) << "op " << op;
        }
}

TEST(AlphaComposite, HandComputedPixels_ComeOut)
{
    const std::uint8_t a[] = {200, 100, 0, 128}, b[] = {50, 255, 255, 255};
    std::uint8_t out[4];
    // m(200, 128) = (25600 + 100 + 1) >> 8 = 100; m(m(50, 255), 127) = m(50, 127) = (6350 + 24 + 1) >> 8 = 24
    // m(100, 128) = (12800 + 50 + 1) >> 8 = 50; m(255, 127) = 127
    ASSERT_EQ(pxAlphaComposite_8u_C4(a, 4, b, 4, out, 4, 1, 1, pxAlphaOver), pxOk);
    EXPECT_EQ(out[0], 124);
    EXPECT_EQ(out[1], 177);
    EXPECT_EQ(out[2], 127);
    EXPECT_EQ(out[3], 255); // 128 + 127
    // 200 + 24; 100 + 127; 0 + 127; 128 + 127
    ASSERT_EQ(pxAlphaComposite_8u_C4(a, 4, b, 4, out, 4, 1, 1, pxAlphaOverPremultiplied), pxOk);
    EXPECT_EQ(out[0], 224);
    EXPECT_EQ(out[1], 227);
    EXPECT_EQ(out[2], 127);
    EXPECT_EQ(out[3], 255);
    const std::uint8_t bright[] = {250, 0, 0, 0};
    ASSERT_EQ(pxAlphaComposite_8u_C4(bright, 4, b, 4, out, 4, 1, 1, pxAlphaOverPremultiplied), pxOk);
    EXPECT_EQ(out[0], 255); // 250 + 50, saturated
    EXPECT_EQ(out[3], 255);
}

TEST(AlphaComposite, OtherOperations_CountAsOver)
{
    GuardedPicture a(9, 2, PF_BGRA8), b(9, 2, PF_BGRA8), out(9, 2, PF_BGRA8), over(9, 2, PF_BGRA8);
    a.FillNoise(1);
    b.FillNoise(2);
    const auto composite = [&](GuardedPicture& to, int op) {
        return pxAlphaComposite_8u_C4(a.Row(0), a.Stride(), b.Row(0), b.Stride(), to.Row(0), to.Stride(), 9,
                                      2, op);
    };
    ASSERT_EQ(composite(over, pxAlphaOver), pxOk);
    for (const int op : {-1, 1, 5, 7, INT_MAX, INT_MIN}) {
        out.FillBytes(9);
        ASSERT_EQ(composite(out, op), pxOk) << op;
        EXPECT_TRUE(Equal(out, over)) << op;
    }
}

TEST(AlphaComposite, DestinationThatIsASource_GetsTheSameResult)
{
    for (const int op : {pxAlphaOver, pxAlphaOverPremultiplied})
        for (const bool first : {true, false}) {
            GuardedPicture a(33, 3, PF_BGRA8), b(33, 3, PF_BGRA8);
            a.FillNoise(1);
            b.FillNoise(2);
            Picture expected(33, 3, PF_BGRA8);
            reference::AlphaOver(reference::Read(a), reference::Read(b), expected,
                                 op == pxAlphaOverPremultiplied);
            GuardedPicture& out = first ? a : b;
            ASSERT_EQ(pxAlphaComposite_8u_C4(a.Row(0), a.Stride(), b.Row(0), b.Stride(), out.Row(0),
                                             out.Stride(), 33, 3, op),
                      pxOk);
            EXPECT_TRUE(reference::Matches(out, expected)) << "op " << op;
        }
}

TEST(AlphaComposite, BadArguments_AreRefused)
{
    GuardedPicture a(5, 4, PF_BGRA8), b(5, 4, PF_BGRA8), out(5, 4, PF_BGRA8);
    out.FillNoise(1);
    out.Freeze();
    for (const int op : {pxAlphaOver, pxAlphaOverPremultiplied}) {
        const auto call = [op](const std::uint8_t* p, int ps, const std::uint8_t* q, int qs, std::uint8_t* d,
                               int ds, int w,
                               int h) { return pxAlphaComposite_8u_C4(p, ps, q, qs, d, ds, w, h, op); };
        std::uint8_t *p = a.Row(0), *q = b.Row(0), *d = out.Row(0);
        EXPECT_EQ(call(nullptr, 20, q, 20, d, 20, 5, 4), pxNullPointer);
        EXPECT_EQ(call(p, 20, nullptr, 20, d, 20, 5, 4), pxNullPointer);
        EXPECT_EQ(call(p, 20, q, 20, nullptr, 20, 5, 4), pxNullPointer);
        for (const int bad : {0, -1, INT_MIN}) {
            EXPECT_EQ(call(p, 20, q, 20, d, 20, bad, 4), pxBadSize);
            EXPECT_EQ(call(p, 20, q, 20, d, 20, 5, bad), pxBadSize);
        }
        for (const int bad : {19, 0, -20}) {
            EXPECT_EQ(call(p, bad, q, 20, d, 20, 5, 4), pxBadStep);
            EXPECT_EQ(call(p, 20, q, bad, d, 20, 5, 4), pxBadStep);
            EXPECT_EQ(call(p, 20, q, 20, d, bad, 5, 4), pxBadStep);
        }
        EXPECT_EQ(call(p, 20, q, 20, d, 20, INT_MAX, 4), pxBadStep);
    }
    out.Check();
}

TEST(Premultiply, EveryByteTimesEveryAlpha_IsTheScaledProductAndAlphaIsCopied)
{
    ForEachVariant([] {
        GuardedPicture src(256, 256, PF_BGRA8), dst(256, 256, PF_BGRA8);
        for (int y = 0; y < 256; ++y)
            for (int x = 0; x < 256; ++x)
                src.SetColour(x, y, static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(255 - x),
                              static_cast<std::uint8_t>(x ^ y), static_cast<std::uint8_t>(y));
        Picture expected(256, 256, PF_BGRA8);
        ASSERT_TRUE(reference::Premultiply(reference::Read(src), expected));
        ASSERT_EQ(pxPremultiply_8u_A3(src.Row(0), 1024, dst.Row(0), 1024, 256, 256), pxOk);
        ASSERT_TRUE(reference::Matches(dst, expected));
        ASSERT_EQ(pxPremultiply_8u_A3(src.Row(0), 1024, src.Row(0), 1024, 256, 256), pxOk);
        ASSERT_TRUE(reference::Matches(src, expected)) << "in place";
    });
}

TEST(Premultiply, EveryWidthAndLayout_StaysInsideItsRegion)
{
    ForEachVariant([] {
        for (int width = 1; width <= 33; ++width)
            ForEachLayout([&](const PictureLayout& layout) {
                GuardedPicture src(width, 3, PF_BGRA8, layout), dst(width, 3, PF_BGRA8, layout);
                src.FillNoise(static_cast<std::uint32_t>(width), Noise::Leaning);
                Picture expected(width, 3, PF_BGRA8);
                reference::Premultiply(reference::Read(src), expected);
                src.Freeze();
                ASSERT_EQ(pxPremultiply_8u_A3(src.Row(0), src.Stride(), dst.Row(0), dst.Stride(), width, 3),
                          pxOk);
                ASSERT_TRUE(reference::Matches(dst, expected)) << width;
                src.Check();
                dst.Check();
            });
    });
}

TEST(Premultiply, BadArguments_AreRefused)
{
    GuardedPicture src(5, 4, PF_BGRA8), dst(5, 4, PF_BGRA8);
    dst.Freeze();
    const std::uint8_t* s = src.Row(0);
    std::uint8_t* d = dst.Row(0);
    EXPECT_EQ(pxPremultiply_8u_A3(nullptr, 20, d, 20, 5, 4), pxNullPointer);
    EXPECT_EQ(pxPremultiply_8u_A3(s, 20, nullptr, 20, 5, 4), pxNullPointer);
    for (const int bad : {0, -1, INT_MIN}) {
        EXPECT_EQ(pxPremultiply_8u_A3(s, 20, d, 20, bad, 4), pxBadSize);
        EXPECT_EQ(pxPremultiply_8u_A3(s, 20, d, 20, 5, bad), pxBadSize);
    }
    for (const int bad : {19, 0, -20}) {
        EXPECT_EQ(pxPremultiply_8u_A3(s, bad, d, 20, 5, 4), pxBadStep);
        EXPECT_EQ(pxPremultiply_8u_A3(s, 20, d, bad, 5, 4), pxBadStep);
    }
    EXPECT_EQ(pxPremultiply_8u_A3(s, 20, d, 20, INT_MAX, 4), pxBadStep);
    dst.Check();
}

} // namespace
} // namespace kelmora

#include "image/primitives/pad.h"

#include <climits>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/reference/copies.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

using PadMember = decltype(&pxPadReplicate_8u_C1);

template <int channels>
void CheckMember(const char* name, PadMember pad)
{
    SCOPED_TRACE(name);
    const std::uint32_t format = FormatOf<std::uint8_t>(channels);
    for (int width = 1; width <= 33; ++width)
        ForEachLayout([&](const PictureLayout& layout) {
            const int left = width % 4, top = width % 3, right = width % 5, bottom = width % 2;
            const int height = 1 + width % 4;
            GuardedPicture src(width, height, format, layout);
            GuardedPicture dst(width + left + right, height + top + bottom, format, layout);
            src.FillNoise(static_cast<std::uint32_t>(width));
            src.Freeze();
            const reference::Picture expected =
                reference::Padded(reference::Read(src), dst.Width(), dst.Height(), top, left);
            ASSERT_EQ(pad(src.Row(0), src.Stride(), width, height, dst.Row(0), dst.Stride(), dst.Width(),
                          dst.Height(), top, left),
                      pxOk);
            ASSERT_TRUE(reference::Matches(dst, expected)) << width;
            dst.Check();
            src.Check();

            // The same once more from its own place.
            ASSERT_EQ(pad(dst.Row(top) + left * channels, dst.Stride(), width, height, dst.Row(0),
                          dst.Stride(), dst.Width(), dst.Height(), top, left),
                      pxOk);
            ASSERT_TRUE(reference::Matches(dst, expected)) << width << " in place";
            dst.Check();
        });

    GuardedPicture src(3, 2, format), dst(6, 5, format);
    dst.FillNoise(1);
    dst.Freeze();
    const std::uint8_t* s = src.Row(0);
    std::uint8_t* d = dst.Row(0);
    const int ss = src.Stride(), ds = dst.Stride();
    EXPECT_EQ(pad(nullptr, ss, 3, 2, d, ds, 6, 5, 1, 1), pxNullPointer);
    EXPECT_EQ(pad(s, ss, 3, 2, nullptr, ds, 6, 5, 1, 1), pxNullPointer);
    EXPECT_EQ(pad(s, ss, 0, 2, d, ds, 6, 5, 1, 1), pxBadSize);
    EXPECT_EQ(pad(s, ss, 3, 0, d, ds, 6, 5, 1, 1), pxBadSize);
    EXPECT_EQ(pad(s, ss, 3, 2, d, ds, 0, 5, 0, 0), pxBadSize);
    EXPECT_EQ(pad(s, ss, 3, 2, d, ds, 6, -5, 0, 0), pxBadSize);
    EXPECT_EQ(pad(s, ss - 1, 3, 2, d, ds, 6, 5, 1, 1), pxBadStep);
    EXPECT_EQ(pad(s, ss, 3, 2, d, ds - 1, 6, 5, 1, 1), pxBadStep);
    EXPECT_EQ(pad(s, ss, 3, 2, d, ds, 6, 5, 4, 1), pxBadSize);  // below the bottom
    EXPECT_EQ(pad(s, ss, 3, 2, d, ds, 6, 5, 1, 4), pxBadSize);  // past the right
    EXPECT_EQ(pad(s, ss, 3, 2, d, ds, 6, 5, -1, 1), pxBadSize); // above
    EXPECT_EQ(pad(s, ss, 3, 2, d, ds, 6, 5, 1, -1), pxBadSize);
    EXPECT_EQ(pad(s, ss, 3, 2, d, ds, 6, 5, INT_MAX, INT_MAX), pxBadSize);
    dst.Check();
}

TEST(PadReplicate, EveryMember_ExtendsTheEdgesAndRefusesBadArguments)
{
    CheckMember<1>("pxPadReplicate_8u_C1", pxPadReplicate_8u_C1);
    CheckMember<4>("pxPadReplicate_8u_C4", pxPadReplicate_8u_C4);
}

TEST(PadReplicate, TwoByTwoInFourByFive_ComesOutAsDrawn)
{
    const std::uint8_t src[] = {1, 2, 3, 4};
    GuardedPicture dst(5, 4, PF_Mask8);
    ASSERT_EQ(pxPadReplicate_8u_C1(src, 2, 2, 2, dst.Row(0), dst.Stride(), 5, 4, 1, 2), pxOk);
    const std::uint8_t drawn[4][5] = {{1, 1, 1, 2, 2}, {1, 1, 1, 2, 2}, {3, 3, 3, 4, 4}, {3, 3, 3, 4, 4}};
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(dst.Byte(x, y), drawn[y][x]) << x << ", " << y;
}

} // namespace
} // namespace kelmora

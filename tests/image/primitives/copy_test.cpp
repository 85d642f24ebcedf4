#include "image/primitives/copy.h"

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

template <class T>
using CopyMember = PxStatus (*)(const T*, int, T*, int, int, int);

/// The exact copy, the guards, and every bad argument in turn.
template <int channels, class T>
void CheckMember(const char* name, CopyMember<T> copy)
{
    SCOPED_TRACE(name);
    const std::uint32_t format = FormatOf<T>(channels);
    for (int width = 1; width <= 33; ++width)
        ForEachLayout([&](const PictureLayout& layout) {
            GuardedPicture src(width, 3, format, layout);
            GuardedPicture dst(width, 3, format, layout);
            src.FillNoise(static_cast<std::uint32_t>(width), Noise::Special);
            dst.FillBytes(0x77);
            src.Freeze();
            ASSERT_EQ(copy(ElementAt<T>(src), src.Stride(), ElementAt<T>(dst), dst.Stride(), width, 3), pxOk);
            ASSERT_TRUE(Equal(dst, src));
            src.Check();
            dst.Check();
            ASSERT_EQ(copy(ElementAt<T>(dst), dst.Stride(), ElementAt<T>(dst), dst.Stride(), width, 3), pxOk);
            ASSERT_TRUE(Equal(dst, src)) << "in place";
        });

    GuardedPicture src(5, 4, format), dst(5, 4, format);
    src.FillBytes(0x11);
    dst.FillBytes(0x22);
    dst.Freeze();
    const T* s = ElementAt<T>(src);
    T* d = ElementAt<T>(dst);
    const int step = src.Stride();
    EXPECT_EQ(copy(nullptr, step, d, step, 5, 4), pxNullPointer);
    EXPECT_EQ(copy(s, step, nullptr, step, 5, 4), pxNullPointer);
    EXPECT_EQ(copy(s, step, d, step, 0, 4), pxBadSize);
    EXPECT_EQ(copy(s, step, d, step, -3, 4), pxBadSize);
    EXPECT_EQ(copy(s, step, d, step, 5, 0), pxBadSize);
    EXPECT_EQ(copy(s, step, d, step, 5, -1), pxBadSize);
    EXPECT_EQ(copy(s, step - 1, d, step, 5, 4), pxBadStep);
    EXPECT_EQ(copy(s, step, d, step - 1, 5, 4), pxBadStep);
    EXPECT_EQ(copy(s, -step, d, step, 5, 4), pxBadStep);
    EXPECT_EQ(copy(s, step, d, step, 0x7FFFFFFF, 4), pxBadStep); // the row's bytes exceed 32 bits
    dst.Check();
}

TEST(Copy, EveryMember_CopiesExactlyAndRefusesBadArguments)
{
    CheckMember<1, std::uint8_t>("pxCopy_8u_C1", pxCopy_8u_C1);
    CheckMember<4, std::uint8_t>("pxCopy_8u_C4", pxCopy_8u_C4);
    CheckMember<1, float>("pxCopy_32f_C1", pxCopy_32f_C1);
    CheckMember<4, float>("pxCopy_32f_C4", pxCopy_32f_C4);
}

TEST(Copy, RowsThatOverlap_ComeOutAsBefore)
{
    for (const bool down : {true, false}) {
        GuardedPicture picture(4, 5, PF_Mask8);
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 4; ++x)
                picture.SetByte(x, y, 0, static_cast<std::uint8_t>(10 * y + x));
        const int from = down ? 0 : 1, to = down ? 1 : 0;
        ASSERT_EQ(pxCopy_8u_C1(picture.Row(from), picture.Stride(), picture.Row(to), picture.Stride(), 4, 4),
                  pxOk);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x)
                EXPECT_EQ(picture.Byte(x, to + y), 10 * (from + y) + x);
    }
}

} // namespace
} // namespace kelmora

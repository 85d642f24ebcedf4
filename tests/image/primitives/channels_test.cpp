#include "image/primitives/channels.h"

#include <algorithm>
#include <array>
#include <climits>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/copies.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

template <class T>
using ChannelMember = PxStatus (*)(const T*, int, T*, int, int, int);

/// Every channel to every channel, what must stay untouched, and every bad argument in turn.
template <int srcChannels, int dstChannels, class T>
void CheckMember(const char* name, ChannelMember<T> move)
{
    SCOPED_TRACE(name);
    const std::uint32_t srcFormat = FormatOf<T>(srcChannels), dstFormat = FormatOf<T>(dstChannels);
    for (int width = 1; width <= 33; ++width)
        ForEachLayout([&](const PictureLayout& layout) {
            for (int from = 0; from < srcChannels; ++from)
                for (int to = 0; to < dstChannels; ++to) {
                    GuardedPicture src(width, 3, srcFormat, layout), dst(width, 3, dstFormat, layout);
                    src.FillNoise(1, Noise::Special);
                    dst.FillNoise(2);
                    GuardedPicture expected(dst);
                    reference::Picture plain = reference::Read(dst);
                    reference::CopyChannel(reference::Read(src), plain, from, to);
                    src.Freeze();
                    ASSERT_EQ(move(ElementAt<T>(src, 0, 0, from), src.Stride(), ElementAt<T>(dst, 0, 0, to),
                                   dst.Stride(), width, 3),
                              pxOk);
                    ASSERT_TRUE(reference::Matches(dst, plain)) << width << ": " << from << " to " << to;
                    src.Check();
                    dst.Check();
                }
        });

    GuardedPicture src(5, 4, srcFormat), dst(5, 4, dstFormat);
    dst.FillBytes(0x22);
    dst.Freeze();
    const T* s = ElementAt<T>(src);
    T* d = ElementAt<T>(dst);
    const int ss = src.Stride(), ds = dst.Stride();
    EXPECT_EQ(move(nullptr, ss, d, ds, 5, 4), pxNullPointer);
    EXPECT_EQ(move(s, ss, nullptr, ds, 5, 4), pxNullPointer);
    EXPECT_EQ(move(s, ss, d, ds, 0, 4), pxBadSize);
    EXPECT_EQ(move(s, ss, d, ds, 5, 0), pxBadSize);
    EXPECT_EQ(move(s, ss, d, ds, INT_MIN, INT_MIN), pxBadSize);
    EXPECT_EQ(move(s, ss - 1, d, ds, 5, 4), pxBadStep);
    EXPECT_EQ(move(s, ss, d, ds - 1, 5, 4), pxBadStep);
    EXPECT_EQ(move(s, ss, d, ds, INT_MAX, 4), pxBadStep);
    dst.Check();
}

TEST(Channels, EveryMember_MovesOneChannelAndRefusesBadArguments)
{
    ForEachVariant([] {
        CheckMember<4, 4, std::uint8_t>("pxCopyChannel_8u_C4", pxCopyChannel_8u_C4);
        CheckMember<4, 1, std::uint8_t>("pxExtractChannel_8u_C4C1", pxExtractChannel_8u_C4C1);
        CheckMember<4, 1, float>("pxExtractChannel_32f_C4C1", pxExtractChannel_32f_C4C1);
    });
    CheckMember<4, 4, float>("pxCopyChannel_32f_C4", pxCopyChannel_32f_C4);
    CheckMember<1, 4, std::uint8_t>("pxInsertChannel_8u_C1C4", pxInsertChannel_8u_C1C4);
    CheckMember<1, 4, float>("pxInsertChannel_32f_C1C4", pxInsertChannel_32f_C1C4);
}

TEST(Channels, CopyChannel_InPlace_MovesWithinThePixel)
{
    GuardedPicture picture(1, 1, PF_BGRA8);
    picture.SetColour(0, 0, 10, 20, 30, 40);
    ASSERT_EQ(pxCopyChannel_8u_C4(picture.Row(0), 4, picture.Row(0) + 3, 4, 1, 1), pxOk);
    EXPECT_EQ(picture.Byte(0, 0, 0), 10);
    EXPECT_EQ(picture.Byte(0, 0, 1), 20);
    EXPECT_EQ(picture.Byte(0, 0, 2), 30);
    EXPECT_EQ(picture.Byte(0, 0, 3), 10);
}

TEST(Channels, SwapChannels_EveryOrder_TakesOldChannels)
{
    for (int code = 0; code < 256; ++code) {
        const int order[4] = {code & 3, (code >> 2) & 3, (code >> 4) & 3, code >> 6};
        const int width = 1 + code % 33;
        GuardedPicture picture(width, 2, PF_BGRA8, {.slack = code % 6});
        picture.FillNoise(static_cast<std::uint32_t>(code));
        const reference::Picture expected = reference::SwappedChannels(reference::Read(picture), order);
        ASSERT_EQ(pxSwapChannels_8u_C4_I(picture.Row(0), picture.Stride(), width, 2, order), pxOk);
        ASSERT_TRUE(reference::Matches(picture, expected)) << code;
        picture.Check();
    }
}

TEST(Channels, SwapChannels_BadArguments_AreRefused)
{
    GuardedPicture picture(5, 4, PF_BGRA8);
    picture.FillNoise(3);
    picture.Freeze();
    std::uint8_t* p = picture.Row(0);
    const int order[4] = {3, 2, 1, 0};
    EXPECT_EQ(pxSwapChannels_8u_C4_I(nullptr, 20, 5, 4, order), pxNullPointer);
    EXPECT_EQ(pxSwapChannels_8u_C4_I(p, 20, 5, 4, nullptr), pxNullPointer);
    EXPECT_EQ(pxSwapChannels_8u_C4_I(p, 20, 0, 4, order), pxBadSize);
    EXPECT_EQ(pxSwapChannels_8u_C4_I(p, 20, 5, -1, order), pxBadSize);
    EXPECT_EQ(pxSwapChannels_8u_C4_I(p, 19, 5, 4, order), pxBadStep);
    for (int place = 0; place < 4; ++place)
        for (const int bad : {-1, 4, INT_MAX, INT_MIN}) {
            int wrong[4] = {0, 1, 2, 3};
            wrong[place] = bad;
            EXPECT_EQ(pxSwapChannels_8u_C4_I(p, 20, 5, 4, wrong), pxBadChannelOrder);
        }
    picture.Check();
}

} // namespace
} // namespace kelmora

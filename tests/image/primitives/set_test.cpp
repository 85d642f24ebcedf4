#include "image/primitives/set.h"

#include <climits>
#include <limits>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

/// Every channel has its value, or one channel the first value and the others what they had.
template <class T>
void CheckFill(const GuardedPicture& picture, const reference::Picture& before, const T* values,
               int onlyChannel)
{
    reference::Picture expected = before;
    for (int y = 0; y < expected.height; ++y)
        for (int x = 0; x < expected.width; ++x)
            for (int c = 0; c < expected.channels; ++c)
                if (onlyChannel < 0 || c == onlyChannel)
                    expected.At(x, y, c) = static_cast<double>(values[onlyChannel < 0 ? c : 0]);
    ASSERT_TRUE(reference::Matches(picture, expected)) << picture.Width() << " wide";
    picture.Check();
}

template <class T>
constexpr T kValues[3][4] = {{0, 1, 2, 3}, {255, 254, 200, 7}, {5, 5, 5, 5}};

template <>
constexpr float kValues<float>[3][4] = {
    {-1.5f, 0.0f, 1.0f, 3.25f},
    {std::numeric_limits<float>::infinity(), 1e-42f, -1e38f, std::numeric_limits<float>::quiet_NaN()},
    {0.5f, 0.5f, 0.5f, 0.5f},
};

/// Every width, layout and value through fill(values, pixels, step, width, height), then the bad arguments.
/// onlyChannel   the one that is written; -1: all
template <class T, class Fill>
void CheckMember(const char* name, int channels, int onlyChannel, Fill&& fill)
{
    SCOPED_TRACE(name);
    const std::uint32_t format = FormatOf<T>(channels);
    const int place = onlyChannel < 0 ? 0 : onlyChannel;
    for (int width = 1; width <= 33; ++width)
        for (const auto& values : kValues<T>)
            ForEachLayout([&](const PictureLayout& layout) {
                GuardedPicture picture(width, 3, format, layout);
                picture.FillNoise(static_cast<std::uint32_t>(width));
                const reference::Picture before = reference::Read(picture);
                ASSERT_EQ(fill(values, ElementAt<T>(picture, 0, 0, place), picture.Stride(), width, 3), pxOk);
                CheckFill(picture, before, values, onlyChannel);
            });

    GuardedPicture picture(5, 4, format);
    picture.FillNoise(1);
    picture.Freeze();
    T* p = ElementAt<T>(picture, 0, 0, place);
    const T* const v = kValues<T>[1];
    const int step = picture.Stride();
    EXPECT_EQ(fill(v, static_cast<T*>(nullptr), step, 5, 4), pxNullPointer);
    EXPECT_EQ(fill(v, p, step, 0, 4), pxBadSize);
    EXPECT_EQ(fill(v, p, step, 5, 0), pxBadSize);
    EXPECT_EQ(fill(v, p, step, -1, 4), pxBadSize);
    EXPECT_EQ(fill(v, p, step, 5, INT_MIN), pxBadSize);
    EXPECT_EQ(fill(v, p, step - 1, 5, 4), pxBadStep);
    EXPECT_EQ(fill(v, p, 0, 5, 4), pxBadStep);
    EXPECT_EQ(fill(v, p, -step, 5, 4), pxBadStep);
    EXPECT_EQ(fill(v, p, step, INT_MAX, 4), pxBadStep);
    picture.Check();
}

/// The members that take one value.
template <class T>
auto OfFirst(PxStatus (*member)(T, T*, int, int, int))
{
    return [member](const T* values, T* pixels, int step, int width, int height) {
        return member(values[0], pixels, step, width, height);
    };
}

TEST(Set, EveryMember_FillsTheRegionAndRefusesBadArguments)
{
    CheckMember<std::uint8_t>("pxSet_8u_C1", 1, -1, OfFirst<std::uint8_t>(pxSet_8u_C1));
    CheckMember<std::uint8_t>("pxSet_8u_C4", 4, -1, pxSet_8u_C4);
    CheckMember<float>("pxSet_32f_C1", 1, -1, OfFirst<float>(pxSet_32f_C1));
    CheckMember<float>("pxSet_32f_C4", 4, -1, pxSet_32f_C4);
}

TEST(SetChannel, EveryMember_WritesEveryFourthValueAndNothingElse)
{
    for (int channel = 0; channel < 4; ++channel) {
        ForEachVariant([=] {
            CheckMember<std::uint8_t>("pxSetChannel_8u_C4", 4, channel,
                                      OfFirst<std::uint8_t>(pxSetChannel_8u_C4));
        });
        CheckMember<float>("pxSetChannel_32f_C4", 4, channel, OfFirst<float>(pxSetChannel_32f_C4));
    }
}

TEST(Set, NullValues_AreRefused)
{
    GuardedPicture bytes(2, 2, PF_BGRA8), floats(2, 2, PF_BGRA32F);
    bytes.Freeze();
    floats.Freeze();
    EXPECT_EQ(pxSet_8u_C4(nullptr, bytes.Row(0), 8, 2, 2), pxNullPointer);
    EXPECT_EQ(pxSet_32f_C4(nullptr, floats.FloatRow(0), 32, 2, 2), pxNullPointer);
    bytes.Check();
    floats.Check();
}

TEST(SetChannel, TwoPixels_ComeOutAsDrawn)
{
    std::uint8_t pixels[] = {1, 2, 3, 4, 5, 6, 7, 8};
    ASSERT_EQ(pxSetChannel_8u_C4(99, pixels + 2, 8, 2, 1), pxOk);
    const std::uint8_t drawn[] = {1, 2, 99, 4, 5, 6, 99, 8};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(pixels[i], drawn[i]) << i;
}

} // namespace
} // namespace kelmora

#include "effects/painterly/dissolve.h"

#include <gtest/gtest.h>

#include "tests/support/fake_host.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

/// A view of the picture; none for null.
void Attach(FrameBuffer& view, const GuardedPicture* picture)
{
    if (!picture)
        return;
    const VideoFrame frame = picture->Frame();
    view.AttachFrame(&frame);
}

/// The dissolve over memory that held something else before.
GuardedPicture Dissolved(const GuardedPicture& first, const GuardedPicture* second, Size size, double fade)
{
    FakeMemoryProvider memory;
    FakeHost host;
    host.SetMemory(&memory);
    GuardedPicture result(size.width, size.height, first.Format());
    {
        MemoryAllocator allocator(&host);
        FrameBuffer a, b, mix;
        Attach(a, &first);
        Attach(b, second);
        EXPECT_TRUE(Dissolve(a, b, mix, size, fade, allocator));
        EXPECT_EQ(mix.GetFormat(), first.Format());
        EXPECT_EQ(mix.GetWidth(), size.width);
        EXPECT_EQ(mix.GetHeight(), size.height);
        for (int y = 0; y < size.height; ++y)
            std::copy_n(mix.PixelAddress(0, y, 0), size.width * mix.GetPixelBytes(), result.Row(y));

        GuardedPicture rows(size.width, size.height, first.Format());
        rows.FillNoise(9);
        for (int y = size.height - 1; y >= 0; --y)
            DissolveRow(a, b, fade, y, size.width, rows.Row(y));
        EXPECT_TRUE(Equal(rows, result)) << "row by row";
    }
    return result;
}

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed);
    return picture;
}

TEST(Dissolve, AtItsEnds_IsOnePictureBitForBit)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture first = Noisy(21, 17, format, 1), second = Noisy(21, 17, format, 2);
        EXPECT_TRUE(Equal(Dissolved(first, &second, {21, 17}, 0.0), first));
        EXPECT_TRUE(Equal(Dissolved(first, &second, {21, 17}, 1.0), second));
    }
}

// A quarter: 191 and 64 of 255 parts.
TEST(Dissolve, Between_WeighsAllFourChannels)
{
    GuardedPicture first(5, 4, PF_ARGB8), second(5, 4, PF_ARGB8);
    first.Fill(100, 50, 0, 255);
    second.Fill(200, 0, 255, 0);
    const GuardedPicture mix = Dissolved(first, &second, {5, 4}, 0.25);
    const int expected[4] = {191, 64, 37, 125}; // alpha 255, red 0 to 255, green 50 to 0, blue 100 to 200
    for (int c = 0; c < 4; ++c)
        EXPECT_EQ(mix.Byte(2, 2, c), expected[c]);
}

TEST(Dissolve, Floats_AreWeighedAndRounded)
{
    GuardedPicture first(5, 4, PF_BGRA32F), second(5, 4, PF_BGRA32F);
    first.FillFloat(0.5f, 0.25f, 1.0f, 2.0f);
    second.FillFloat(0.75f, 0.25f, 0.0f, 4.0f);
    const GuardedPicture mix = Dissolved(first, &second, {5, 4}, 0.25);
    const float expected[4] = {0.5625f, 0.25f, 0.75f, 2.5f};
    for (int c = 0; c < 4; ++c)
        EXPECT_EQ(mix.Float(2, 2, c), expected[c]);
}

TEST(Dissolve, SmallerPictures_LeaveTransparentBlack)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const double fade : {0.0, 0.3, 1.0}) {
            const GuardedPicture first = Noisy(15, 20, format, 1), second = Noisy(20, 13, format, 2);
            const GuardedPicture mix = Dissolved(first, &second, {20, 20}, fade);
            const int right = fade == 1.0 ? 20 : 15, bottom = fade == 0.0 ? 20 : 13;
            for (int y = 0; y < 20; ++y)
                for (int x = 0; x < 20; ++x)
                    for (int i = 0; i < BytesOfPixel(format) && (x >= right || y >= bottom); ++i)
                        ASSERT_EQ(mix.Row(y)[x * BytesOfPixel(format) + i], 0);
        }
}

TEST(Dissolve, AMissingOrUnlikeSecondPicture_CountsAsTransparentBlack)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::uint32_t other : kPictureFormats) {
            const GuardedPicture first = Noisy(12, 9, format, 1), second = Noisy(12, 9, other, 2);
            const GuardedPicture black(12, 9, format);
            for (const double fade : {0.0, 0.3, 1.0}) {
                const GuardedPicture& expected = fade == 0.0 ? first : black;
                EXPECT_TRUE(Equal(Dissolved(first, nullptr, {12, 9}, fade), expected));
                if (other != format) {
                    EXPECT_TRUE(Equal(Dissolved(first, &second, {12, 9}, fade), expected));
                }
            }
        }
}

TEST(Dissolve, WithoutMemory_IsFalse)
{
    MemoryHabits habits;
    habits.refuseFrom = 0;
    FakeMemoryProvider memory(habits);
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    const GuardedPicture picture = Noisy(12, 9, PF_BGRA8, 1);
    FrameBuffer a, b, mix;
    Attach(a, &picture);
    Attach(b, &picture);
    EXPECT_FALSE(Dissolve(a, b, mix, {12, 9}, 0.5, allocator));
}

} // namespace
} // namespace kelmora

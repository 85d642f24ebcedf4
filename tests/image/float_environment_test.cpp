#include "image/float_environment.h"

#include <cstring>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "tests/image/buffers.h"
#include "tests/support/float_state.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {
namespace {

#ifdef KELMORA_HAS_FLOAT_STATE

/// Puts the usual arithmetic back when a test ends.
struct UsualAtTheEnd {
    ~UsualAtTheEnd() { SetFloatState(kUsualFloatState); }
};

TEST(FloatEnvironment, Inside_IsTheLibrarysArithmetic)
{
    const UsualAtTheEnd end;
    for (const FloatHabit& habit : kFloatHabits) {
        SetFloatState(habit.state);
        const FloatState inside = WithFloatEnvironment([] { return ReadFloatState(); });
        SetFloatState(kUsualFloatState);
        EXPECT_EQ(inside.mxcsr, kUsualFloatState.mxcsr) << habit.name;
        EXPECT_EQ(inside.control & 0x0F3F, kUsualFloatState.control & 0x0F3F) << habit.name;
    }
}

TEST(FloatEnvironment, Afterwards_IsTheCallersOwnWithItsStatusFlags)
{
    const UsualAtTheEnd end;
    for (const FloatHabit& habit : kFloatHabits) {
        SetFloatState(habit.state);
        const FloatState before = ReadFloatState();
        const float quotient = WithFloatEnvironment([] {
            volatile float three = 3.0f, huge = 1e38f, tiny = 1e-38f;
            volatile float overflow = huge * huge; // raises flags that the caller must not see
            volatile float underflow = tiny * tiny;
            volatile long double x87 = 1.0L;
            x87 = x87 / 3.0L;
            (void)overflow;
            (void)underflow;
            return three / 7.0f;
        });
        const FloatState after = ReadFloatState();
        SetFloatState(kUsualFloatState);
        EXPECT_EQ(after, before) << habit.name;
        EXPECT_EQ(quotient, 3.0f / 7.0f);
    }
}

TEST(FloatEnvironment, X87StatusFlags_ComeBack)
{
    const UsualAtTheEnd end;
    __asm__ volatile("fnclex\n\tfld1\n\tfldz\n\tfdivrp\n\tfstp %%st(0)" : : : "st"); // 1 / 0: raised, masked
    const FloatState before = ReadFloatState();
    WithFloatEnvironment([] {
        __asm__ volatile("fnclex");
        return 0;
    });
    const FloatState after = ReadFloatState();
    SetFloatState(kUsualFloatState);
    EXPECT_NE(before.status & 0x04, 0);
    EXPECT_EQ(after, before);
}

TEST(FloatEnvironment, Blur_GivesTheSamePictureUnderEveryHabit)
{
    const UsualAtTheEnd end;
    for (const std::uint32_t format : kServedFormats) {
        GuardedPicture src(21, 19, format), expected(21, 19, format);
        src.FillNoise(8, format == PF_BGRA32F ? Noise::Special : Noise::Uniform);
        const auto blur = [&](const GuardedPicture& dst) {
            FrameBuffer to = ViewOf(dst);
            const FrameBuffer from = ViewOf(src);
            return WithFloatEnvironment([&] { return ImageOps().Blur(from, to, 6, 5, nullptr, true); });
        };
        ASSERT_TRUE(blur(expected));
        for (const FloatHabit& habit : kFloatHabits) {
            GuardedPicture dst(21, 19, format);
            SetFloatState(habit.state);
            const FloatState before = ReadFloatState();
            const bool done = blur(dst);
            const FloatState after = ReadFloatState();
            SetFloatState(kUsualFloatState);
            EXPECT_TRUE(done);
            EXPECT_EQ(after, before) << habit.name;
            EXPECT_TRUE(Equal(dst, expected)) << habit.name << ", format " << format;
        }
    }
}

#endif

TEST(FloatEnvironment, WithFloatEnvironment_GivesTheResultOfTheWork)
{
    int calls = 0;
    EXPECT_EQ(WithFloatEnvironment([&] { return ++calls; }), 1);
    WithFloatEnvironment([&] { ++calls; });
    EXPECT_EQ(calls, 2);
}

} // namespace
} // namespace kelmora

#include "image/float_environment.h"

#include <cstring>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "tests/image/buffers.h"
#include "tests/support/guarded_picture.h"

#if defined(__i386__) || defined(__x86_64__)
#include <xmmintrin.h>
#define KELMORA_X86 1
#endif

namespace kelmora {
namespace {

#ifdef KELMORA_X86

/// What a program can see of the floating-point state: both control words and both sets of status flags.
struct Registers {
    unsigned mxcsr = 0;
    std::uint16_t control = 0;
    std::uint16_t status = 0;
    std::uint16_t tags = 0;

    bool operator==(const Registers&) const = default;
};

Registers ReadRegisters()
{
    struct {
        std::uint16_t control, unused0, status, unused1, tags, unused2;
        std::uint32_t rest[4];
    } x87 = {};
    __asm__ volatile("fnstenv %0\n\tfldcw %0" : "+m"(x87));
    return {_mm_getcsr(), x87.control, x87.status, x87.tags};
}

constexpr std::uint16_t kUsualControl = 0x037F;
constexpr unsigned kUsualMxcsr = 0x1F80;

void SetRegisters(unsigned mxcsr, std::uint16_t control)
{
    __asm__ volatile("fnclex\n\tfldcw %0" : : "m"(control));
    _mm_setcsr(mxcsr);
}

/// Puts the usual arithmetic back when a test ends.
struct UsualAtTheEnd {
    ~UsualAtTheEnd() { SetRegisters(kUsualMxcsr, kUsualControl); }
};

struct Habit {
    const char* name;
    unsigned mxcsr;
    std::uint16_t control;
};

constexpr Habit kHabits[] = {
    {"as usual", 0x1F80, 0x037F},
    {"down", 0x3F80, 0x077F},
    {"up", 0x5F80, 0x0B7F},
    {"toward zero", 0x7F80, 0x0F7F},
    {"flush to zero, denormals are zero", 0x9FC0, 0x037F},
    {"single x87 precision", 0x1F80, 0x007F},
    {"nothing masked", 0x0000, 0x0340},
    {"status flags raised", 0x1FBF, 0x037F},
    {"everything", 0xFFFF & ~0x003Fu, 0x0F7F},
};

TEST(FloatEnvironment, Inside_IsTheLibrarysArithmetic)
{
    const UsualAtTheEnd end;
    for (const Habit& habit : kHabits) {
        SetRegisters(habit.mxcsr, habit.control);
        const Registers inside = WithFloatEnvironment([] { return ReadRegisters(); });
        SetRegisters(kUsualMxcsr, kUsualControl);
        EXPECT_EQ(inside.mxcsr, kUsualMxcsr) << habit.name;
        EXPECT_EQ(inside.control & 0x0F3F, kUsualControl & 0x0F3F) << habit.name;
    }
}

TEST(FloatEnvironment, Afterwards_IsTheCallersOwnWithItsStatusFlags)
{
    const UsualAtTheEnd end;
    for (const Habit& habit : kHabits) {
        SetRegisters(habit.mxcsr, habit.control);
        const Registers before = ReadRegisters();
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
        const Registers after = ReadRegisters();
        SetRegisters(kUsualMxcsr, kUsualControl);
        EXPECT_EQ(after, before) << habit.name;
        EXPECT_EQ(quotient, 3.0f / 7.0f);
    }
}

TEST(FloatEnvironment, X87StatusFlags_ComeBack)
{
    const UsualAtTheEnd end;
    __asm__ volatile("fnclex\n\tfld1\n\tfldz\n\tfdivrp\n\tfstp %%st(0)" : : : "st"); // 1 / 0: raised, masked
    const Registers before = ReadRegisters();
    WithFloatEnvironment([] {
        __asm__ volatile("fnclex");
        return 0;
    });
    const Registers after = ReadRegisters();
    SetRegisters(kUsualMxcsr, kUsualControl);
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
        for (const Habit& habit : kHabits) {
            GuardedPicture dst(21, 19, format);
            SetRegisters(habit.mxcsr, habit.control);
            const Registers before = ReadRegisters();
            const bool done = blur(dst);
            const Registers after = ReadRegisters();
            SetRegisters(kUsualMxcsr, kUsualControl);
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

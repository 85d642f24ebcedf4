#pragma once

#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__i386__) || defined(__x86_64__)
#include <xmmintrin.h>
#define KELMORA_HAS_FLOAT_STATE 1
#endif

namespace kelmora {

/// What a program can see of its floating-point arithmetic: the control words, with rounding, precision and masks, and
/// the status flags that were raised. All zeros on processors that have other registers.
struct FloatState {
    std::uint32_t mxcsr = 0; ///< control and flags
    std::uint16_t control = 0;
    std::uint16_t status = 0;
    std::uint16_t tags = 0xFFFF; ///< which x87 registers are empty: all

    bool operator==(const FloatState&) const = default;
};

inline constexpr FloatState kUsualFloatState = {0x1F80, 0x037F, 0};

/// A state that a host's thread may be in.
struct FloatHabit {
    const char* name;
    FloatState state;
};

inline constexpr FloatHabit kFloatHabits[] = {
    {"as usual", kUsualFloatState},
    {"rounding down", {0x3F80, 0x077F, 0}},
    {"rounding up", {0x5F80, 0x0B7F, 0}},
    {"rounding toward zero", {0x7F80, 0x0F7F, 0}},
    {"flush to zero", {0x9F80, 0x037F, 0}},
    {"denormals are zero", {0x1FC0, 0x037F, 0}},
    {"flush to zero, denormals are zero, rounding up", {0xDFC0, 0x0B7F, 0}},
    {"24-bit x87", {0x1F80, 0x007F, 0}},
    {"53-bit x87", {0x1F80, 0x027F, 0}},
    {"nothing masked", {0x0000, 0x0340, 0}},
    {"nothing masked, 24-bit x87", {0x0000, 0x0040, 0}},
    {"nothing masked, rounding toward zero", {0x6000, 0x0F40, 0}},
    {"division, overflow and invalid operations unmasked", {0x1900, 0x0372, 0}},
    {"flags raised", {0x1FBF, 0x037F, 0x003F}},
    {"flags raised, nothing masked", {0x003F, 0x0340, 0}},
};

#ifdef KELMORA_HAS_FLOAT_STATE

/// The registers as fnstenv stores them.
struct X87Environment {
    std::uint16_t control, unused0, status, unused1, tags, unused2;
    std::uint32_t rest[4];
};

inline FloatState ReadFloatState()
{
    X87Environment x87;
    __asm__ volatile("fnstenv %0\n\tfldcw %0" : "=m"(x87)); // storing masks everything
    return {_mm_getcsr(), static_cast<std::uint16_t>(x87.control | 0x40), x87.status, x87.tags};
}

inline void SetFloatState(const FloatState& state)
{
    X87Environment x87;
    __asm__ volatile("fnstenv %0" : "=m"(x87));
    x87.control = state.control;
    x87.status = state.status;
    x87.tags = state.tags;
    __asm__ volatile("fldenv %0" : : "m"(x87));
    _mm_setcsr(state.mxcsr);
}

#else

inline FloatState ReadFloatState()
{
    return {};
}
inline void SetFloatState(const FloatState&) {}

#endif

/// Calls `work` in a state of arithmetic and puts the usual one back. Gives the state that `work` left behind. It may
/// do no arithmetic of its own.
template <class Work>
[[gnu::noinline]] FloatState AfterWorkIn(const FloatState& state, Work&& work)
{
    SetFloatState(state);
    std::forward<Work>(work)();
    const FloatState after = ReadFloatState();
    SetFloatState(kUsualFloatState);
    return after;
}

} // namespace kelmora

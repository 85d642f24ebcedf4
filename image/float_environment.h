#pragma once

#include <cstdint>

namespace kelmora {

/// Sets the floating-point arithmetic that pictures are computed in - round to nearest, all exceptions
/// masked, denormals kept, full x87 precision - and puts the caller's own back, status flags included.
///
/// The thread is the host's, and hosts and their other plug-ins leave anything there: rounding modes,
/// flush-to-zero, unmasked exceptions, 24-bit x87 precision. Every entry that computes holds one of these.
/// What computes must stand in a function that is not inlined beside it; WithFloatEnvironment sees to that.
class FloatEnvironment {
public:
    FloatEnvironment();
    ~FloatEnvironment();
    FloatEnvironment(const FloatEnvironment&) = delete;
    FloatEnvironment& operator=(const FloatEnvironment&) = delete;

private:
    std::uint32_t m_mxcsr = 0;
    alignas(16) unsigned char m_x87[28] = {};
};

/// Calls `work` in the arithmetic of the library and gives its result.
template <class Work>
auto WithFloatEnvironment(Work&& work)
{
    // The compiler knows nothing of the control registers and would move arithmetic across their loads.
    struct Apart {
        [[gnu::noinline]] static auto Call(Work& inner) { return inner(); }
    };
    const FloatEnvironment environment;
    return Apart::Call(work);
}

} // namespace kelmora

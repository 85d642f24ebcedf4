#pragma once

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace kelmora::fake {

/// The variable of the environment that names the rule to break.
inline constexpr const char* kFaultVariable = "KELMORA_FAKE_FAULT";

/// Whether the library is told to break the rule `name`. One at a time.
inline bool Breaks(std::string_view name)
{
    const char* const fault = std::getenv(kFaultVariable);
    return fault != nullptr && name == fault;
}

/// Faults as a wild pointer does.
inline void Crash()
{
    volatile std::uintptr_t nowhere = 8;
    *reinterpret_cast<volatile int*>(nowhere) = 1;
}

} // namespace kelmora::fake

#pragma once

#include <cstdint>

#include "contract/calling.h"
#include "contract/interface_id.h"

namespace kelmora {

// Result codes of QueryInterface. A Windows header defines them as macros of the same value.
#ifndef S_OK
inline constexpr std::int32_t S_OK = 0;
#endif
#ifndef E_NOINTERFACE
inline constexpr std::int32_t E_NOINTERFACE = static_cast<std::int32_t>(0x80004002u);
#endif
#ifndef E_FAIL
inline constexpr std::int32_t E_FAIL = static_cast<std::int32_t>(0x80004005u);
#endif

/// Root of all interfaces: identity and lifetime. [any thread]
///
/// An object starts with a count of 1 when its factory hands it out.
struct IUnknown {
    static constexpr InterfaceId id = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

    /// Stores in `*out` the object's view for `interfaceId`, counted, and gives S_OK; for an interface
    /// that the object does not have stores null and gives E_NOINTERFACE. A null `out` gives E_FAIL.
    virtual std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) = 0;

    /// Counts one holder more; gives the new count.
    virtual std::uint32_t KELMORA_CALL AddRef() = 0;

    /// Counts one holder less; gives the new count. At 0 the object is gone.
    virtual std::uint32_t KELMORA_CALL Release() = 0;

protected:
    ~IUnknown() = default;
};

} // namespace kelmora

#pragma once

#include <cstdint>

#include "contract/host_info.h"
#include "contract/param.h"
#include "contract/unknown.h"

namespace kelmora {

/// The host's side of a render: where the knobs and, through IMemoryProvider, scratch memory come from.
/// Valid for the one call of Render that it was passed to. [during Render]
struct IVideoHost : IUnknown {
    static constexpr InterfaceId id = {
        0x4ABCB36F, 0x7FDC, 0x43E6, {0xB4, 0x5D, 0xFA, 0xD4, 0xD7, 0xAA, 0x80, 0xDD}};

    /// Fills `value` and `valueY` of `*out` with knob `knob`'s value at the frame being rendered and sets
    /// its `kind` to `kind`, which is the kind of the effect's own knob. False when there is no such knob.
    virtual bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind) = 0;

    // Places kept in the table. No effect calls them.
    virtual bool KELMORA_CALL HostReserved4(std::uint32_t first, std::uint32_t second,
                                            std::uint8_t third) = 0;
    virtual std::uint32_t KELMORA_CALL HostReserved5(std::uint32_t first, std::uint32_t second) = 0;
    virtual bool KELMORA_CALL HostReserved6(std::uint32_t first, std::uint32_t second) = 0;
    virtual void KELMORA_CALL HostReserved7(std::uint32_t first, std::uint32_t second) = 0;

    /// Fills `*result` and gives `result` back.
    ///
    /// A host written in C++ for Windows declares this as returning a HostInfo by value. To the machine
    /// that is exactly this form: `this` first, then the address of the result. GCC passes the two the
    /// other way round when it is told "by value", hence the pointer.
    virtual HostInfo* KELMORA_CALL GetHostInfo(HostInfo* result) = 0;

protected:
    ~IVideoHost() = default;
};

} // namespace kelmora

#pragma once

#include <cstdint>

#include "contract/unknown.h"

namespace kelmora {

/// A short text per knob, to be shown beside the pointer.
struct IParamToolTip : IUnknown {
    static constexpr InterfaceId id = {
        0xC40A4523, 0xECE1, 0x493B, {0xA7, 0x3D, 0xEC, 0xF1, 0x15, 0x38, 0xF6, 0x00}};

    /// The text of knob `knob`, constant ASCII; null past the last one.
    virtual const char* KELMORA_CALL GetToolTip(std::uint32_t knob) = 0;

protected:
    ~IParamToolTip() = default;
};

} // namespace kelmora

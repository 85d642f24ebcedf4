#pragma once

#include <cstdint>

#include "contract/unknown.h"

namespace kelmora {

/// The host's own allocator. A host may offer it through IVideoHost::QueryInterface; the scratch pictures and filter
/// kernels of a render then come from it. A few working spaces are the library's own all the same: the median's with
/// the picture that it works on, the tables of a resize or a warp. Any call may fail. [during Render]
struct IMemoryProvider : IUnknown {
    static constexpr InterfaceId id = {
        0x9F635B81, 0x506A, 0x4DEE, {0x9D, 0xC7, 0x9E, 0x0B, 0xAB, 0xA2, 0xD5, 0xA2}};

    /// Plain memory: stores its address, or null, in `*out`. The library goes by `*out`, not by the result.
    virtual bool KELMORA_CALL Alloc(void** out, std::uint32_t bytes) = 0;

    /// Takes back what Alloc gave.
    virtual void KELMORA_CALL Free(void* memory) = 0;

    /// Memory for a picture: stores its address, or null, in `*out` and the bytes from row to row in
    /// `*stride`. The library goes by `*out`, not by the result.
    virtual bool KELMORA_CALL AllocImage(void** out, std::int32_t width, std::int32_t height,
                                         std::int32_t pixelBytes, std::int32_t* stride) = 0;

    /// Takes back what AllocImage gave.
    virtual void KELMORA_CALL FreeImage(void* memory) = 0;

protected:
    ~IMemoryProvider() = default;
};

} // namespace kelmora

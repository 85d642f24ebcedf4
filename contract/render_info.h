#pragma once

#include <cstddef>
#include <cstdint>

namespace kelmora {

/// Bits of RenderInfo::flags.
enum RenderFlags : std::uint32_t {
    RenderFieldPicture = 0x20, ///< `fieldMode` holds
    RenderHasAspect = 0x40,    ///< `pixelAspect` holds
};

/// What the host says about the frame being made. Read-only to the library, which reads the named fields
/// and no other byte. A host's record may be longer, and need not be longer than kRenderInfoBytes.
struct RenderInfo {
    std::uint32_t unused0;
    std::uint32_t flags;
    double progress; ///< position in the effect's clip: 0 at its start, 1 at its end
    double time;     ///< running clock of the clip
    std::uint8_t unused24[16];
    double pixelAspect; ///< width of a pixel over its height
    std::uint32_t unused48;
    std::int16_t fieldMode; ///< below 3, with RenderFieldPicture set: a half-height field of a frame
};

/// The bytes of a RenderInfo that a host must provide.
inline constexpr std::size_t kRenderInfoBytes = 54;

static_assert(offsetof(RenderInfo, flags) == 4 && offsetof(RenderInfo, progress) == 8);
static_assert(offsetof(RenderInfo, time) == 16 && offsetof(RenderInfo, pixelAspect) == 40);
static_assert(offsetof(RenderInfo, fieldMode) == 52);
static_assert(offsetof(RenderInfo, fieldMode) + sizeof(RenderInfo::fieldMode) == kRenderInfoBytes);

} // namespace kelmora

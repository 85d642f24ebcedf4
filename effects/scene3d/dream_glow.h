#pragma once

#include <cstdint>

#include "effects/scene3d/picture_effect.h"
#include "image/memory_allocator.h"

namespace kelmora {

/// Two stages, in place: a haze that bleeds out of the bright parts of a picture and lifts its dark ones, alpha
/// included, and then a wave of the glow colour that runs through the levels of brightness like the bands of
/// polished metal.
///
/// Serves the four picture formats; a picture of any other is left as it was.
class PRDreamGlowEffect final : public PREffect {
public:
    /// fogRadius   how far the haze reaches, in pixels: 0 to 32766. Any other is a haze that cannot be made
    /// shineLevel  how strong the wave is: nothing is done for 0, below, or not-a-number
    /// fogLevel    how strong the haze is, likewise
    /// memory      for working space: of a picture in place about as many rows as the haze reaches; it must outlive
    ///             this
    PRDreamGlowEffect(std::int32_t fogRadius, float shineLevel, float fogLevel, MemoryAllocator& memory)
        : radius(fogRadius), fog(fogLevel), shine(shineLevel), allocator(&memory)
    {
    }

    /// Without memory for the rows that wait to be put back there is no haze. Where the haze cannot be made for any other
    /// reason, the picture becomes zeros. The wave follows all the same.
    void Apply(FrameBuffer* picture) override;

    /// The pixels of `picture` from column `x` and row `y` on as they are when all of it glows, in as many as `result`
    /// has. `result` is of the picture's format and in other memory. Where the haze cannot be made, zeros take the
    /// picture's place. False, and nothing done, for a format that is not served and for pixels outside the picture.
    bool ApplyInto(const FrameBuffer& picture, int x, int y, FrameBuffer& result) const;

private:
    std::int32_t radius;
    float fog;
    float shine;
    std::uint32_t colour = 0x00FFFFFF; // 0x00BBGGRR, white
    MemoryAllocator* allocator;        // not owned
};

} // namespace kelmora

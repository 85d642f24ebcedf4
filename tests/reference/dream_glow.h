#pragma once

#include <cstdint>

#include "tests/reference/air_brush.h"
#include "tests/reference/picture.h"

namespace kelmora::reference {

/// As the effect's constructor takes them.
struct DreamGlow {
    std::int32_t radius = 0;
    float shine = 0;
    float fog = 0;
};

/// The gains that brightness is multiplied by: bytes in 256ths. Not above 0, or not-a-number: no haze.
float GlowGain(float fog);
std::int64_t GlowByteGain(float fog);
float GlowFloatGain(float fog);

/// The haze for one pixel of the picture and of its blur. Bytes are whole numbers, 0 to 255.
EdgePixel GlowByte(const EdgePixel& picture, const EdgePixel& blurred, std::int64_t gain);
EdgePixel GlowFloat(const EdgePixel& picture, const EdgePixel& blurred, float gain);

/// The wave for one pixel. What is not a number becomes 0; a wave's angle is cut at 2^30 either way.
EdgePixel ShineByte(const EdgePixel& picture, float shine);
EdgePixel ShineFloat(const EdgePixel& picture, float shine);

/// The picture's blur with a kernel of radius + 1 taps. One that no picture can have: an empty picture.
/// Bytes: alpha is 0.
Picture GlowBlur(const Picture& picture, std::int32_t radius);

/// Both stages, step by step, in place. A picture of one of the four picture formats.
void ApplyDreamGlow(Picture& picture, const DreamGlow& glow);

} // namespace kelmora::reference

#pragma once

#include <cstdint>

#include "contract/video_effect.h"

namespace kelmora {

/// A new effect of number `effectId`, with a count of 1; null for a number without an effect, and when memory
/// is out.
IVideoEffect* CreateEffectOfNumber(std::int32_t effectId);

} // namespace kelmora

#pragma once

#include <memory>

#include "contract/video_effect.h"

namespace kelmora {

/// Lets a holder go when it ends.
struct ReleaseHeld {
    void operator()(IVideoEffect* effect) const { effect->Release(); }
};
using HeldEffect = std::unique_ptr<IVideoEffect, ReleaseHeld>;

/// The effects that a test can render with, seen as a host sees them.
enum class EffectClass { Airbrush, UnsharpMask, WrapAirbrush, WrapDetailEnhancer };

inline constexpr EffectClass kAllEffects[] = {EffectClass::Airbrush, EffectClass::UnsharpMask,
                                              EffectClass::WrapAirbrush, EffectClass::WrapDetailEnhancer};

/// A new object with one holder.
HeldEffect NewEffect(EffectClass which);

} // namespace kelmora

#pragma once

#include <memory>
#include <string_view>

#include "contract/video_effect.h"

namespace kelmora {

/// Lets a holder go when it ends.
struct ReleaseHeld {
    void operator()(IVideoEffect* effect) const { effect->Release(); }
};
using HeldEffect = std::unique_ptr<IVideoEffect, ReleaseHeld>;

/// The effects that a test can render with, seen as a host sees them.
enum class EffectClass {
    Airbrush,
    UnsharpMask,
    WaterColor,
    Colormelt,
    EmbossedPaperBlend,
    Smear,
    Activecamera,
    BorderCrop,
    BlowingLeaves,
    Layers,
    FacePixelator,
    WrapAirbrush,
    WrapDetailEnhancer,
    WrapWaterColor,
    WrapColorMelt,
    WrapPaperCollage,
    WrapSmear,
    WrapActiveCamera,
    WrapConfetti,
    WrapPizzaBoxes,
};

inline constexpr EffectClass kAllEffects[] = {EffectClass::Airbrush,
                                              EffectClass::UnsharpMask,
                                              EffectClass::WaterColor,
                                              EffectClass::Colormelt,
                                              EffectClass::EmbossedPaperBlend,
                                              EffectClass::Smear,
                                              EffectClass::Activecamera,
                                              EffectClass::BorderCrop,
                                              EffectClass::FacePixelator,
                                              EffectClass::BlowingLeaves,
                                              EffectClass::Layers,
                                              EffectClass::WrapAirbrush,
                                              EffectClass::WrapDetailEnhancer,
                                              EffectClass::WrapWaterColor,
                                              EffectClass::WrapColorMelt,
                                              EffectClass::WrapPaperCollage,
                                              EffectClass::WrapSmear,
                                              EffectClass::WrapActiveCamera,
                                              EffectClass::WrapConfetti,
                                              EffectClass::WrapPizzaBoxes};

/// A new object with one holder.
HeldEffect NewEffect(EffectClass which);

/// "AirBrush", "WrappedAirBrush".
const char* NameOf(EffectClass which);

/// What its files are called: "air_brush", for the wrapper's too.
std::string_view KeyOf(EffectClass which);

/// The inner effect's class, for a wrapper's as for its own.
EffectClass InnerOf(EffectClass which);

/// What a frame is a function of, besides pictures and knobs.
enum class Clock {
    None,
    Progress, ///< a transition from the first picture to the second
    Time,
};
Clock ClockOf(EffectClass which);

/// Whether it goes from the first picture to the second.
inline bool IsTransition(EffectClass which)
{
    return ClockOf(which) == Clock::Progress;
}

/// Whether it draws a scene: over the whole output, whatever the pictures' sizes.
inline bool IsScene(EffectClass which)
{
    return InnerOf(which) == EffectClass::BlowingLeaves || InnerOf(which) == EffectClass::Layers;
}

} // namespace kelmora

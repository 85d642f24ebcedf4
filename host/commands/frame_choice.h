#pragma once

#include "host/arguments.h"
#include "host/effect_face.h"
#include "host/effect_run.h"
#include "host/keyframes.h"

namespace kelmora::host {

/// The knobs as the preset, its file, or else the defaults, have them, then each setting over them. Throws Failure for
/// an unknown name and for a bad value.
KnobTimeline ChosenKnobs(const EffectFace& face, const FrameArguments& arguments);

/// What the arguments set for a frame: the knobs as ChosenKnobs has them at the time; the format and the
/// time. Throws Failure for an unknown name and for a bad value.
FrameSettings ChosenSettings(const EffectFace& face, const FrameArguments& arguments);

/// Throws Failure when a transition lacks its second picture, and when a filter is given one.
void CheckPictureCount(const EffectFace& face, const FrameArguments& arguments);

} // namespace kelmora::host

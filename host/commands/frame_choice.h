#pragma once

#include "host/arguments.h"
#include "host/effect_face.h"
#include "host/effect_run.h"

namespace kelmora::host {

/// What the arguments set for a frame: the knobs as the preset, or else the defaults, have them, then each
/// setting over them; the format and the time. Throws Failure for an unknown name and for a bad value.
FrameSettings ChosenSettings(const EffectFace& face, const FrameArguments& arguments);

/// Throws Failure when a transition lacks its second picture, and when a filter is given one.
void CheckPictureCount(const EffectFace& face, const FrameArguments& arguments);

} // namespace kelmora::host

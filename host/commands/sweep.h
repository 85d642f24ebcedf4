#pragma once

#include "host/arguments.h"

namespace kelmora::host {

/// Renders a transition at evenly spaced moments, from progress 0 to progress 1, side by side into one file.
/// Throws Failure.
void RunSweep(const SweepArguments& arguments);

} // namespace kelmora::host

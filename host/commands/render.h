#pragma once

#include <ostream>

#include "host/arguments.h"

namespace kelmora::host {

/// Renders one frame from files to a file, or a clip to a clip. Throws Failure.
///
/// out     for what machines read of a clip
/// errors  for how far a clip is, when somebody watches
void RunRender(const RenderArguments& arguments, std::ostream& out, std::ostream& errors);

} // namespace kelmora::host

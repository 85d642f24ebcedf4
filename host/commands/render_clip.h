#pragma once

#include <ostream>

#include "host/arguments.h"

namespace kelmora::host {

/// Renders a clip, or a transition between clips or pictures, to a clip. Throws Failure.
///
/// out     with --json: a line about once a second, and a last one
/// errors  a line that shows how far it is, on a terminal
void RunRenderClip(const RenderArguments& arguments, std::ostream& out, std::ostream& errors);

} // namespace kelmora::host

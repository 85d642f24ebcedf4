#pragma once

#include "host/arguments.h"

namespace kelmora::host {

/// Renders one frame from files to a file. Throws Failure.
void RunRender(const RenderArguments& arguments);

} // namespace kelmora::host

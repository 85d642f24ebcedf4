#pragma once

#include <ostream>

#include "host/arguments.h"

namespace kelmora::host {

/// Saves a preset file, or writes to `out` what one holds. Throws Failure.
void RunPresets(const PresetsArguments& arguments, std::ostream& out);

} // namespace kelmora::host

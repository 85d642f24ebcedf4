#pragma once

#include <ostream>

#include "host/arguments.h"

namespace kelmora::host {

/// Writes a line, or a JSON object, per effect to `out`. Throws Failure.
void RunList(const ListArguments& arguments, std::ostream& out);

} // namespace kelmora::host

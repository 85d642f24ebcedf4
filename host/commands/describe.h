#pragma once

#include <ostream>

#include "host/arguments.h"

namespace kelmora::host {

/// Writes all that an effect tells of itself to `out`. Throws Failure.
void RunDescribe(const DescribeArguments& arguments, std::ostream& out);

} // namespace kelmora::host

#pragma once

#include <ostream>

#include "host/arguments.h"

namespace kelmora::host {

/// Checks a library file against the contract and writes a report per check and a summary to `out`. Gives
/// Failed when a check failed, crashed or came to no end. Throws Failure for an unknown check.
ExitCode RunCheck(const CheckArguments& arguments, std::ostream& out, std::ostream& errors);

} // namespace kelmora::host

#pragma once

#include <string>

#include "host/program_description.h"

namespace kelmora::host {

/// The manual page of `program` as man reads it.
std::string ManualFor(const ProgramDescription& program);

} // namespace kelmora::host

#pragma once

#include <string>

#include "host/arguments.h"

namespace kelmora::host {

/// The program that completes the arguments of `program` in `shell`. It asks the program itself for the names of
/// effects, presets and checks, at the moment of completion.
std::string CompletionFor(const ProgramDescription& program, Shell shell);

} // namespace kelmora::host

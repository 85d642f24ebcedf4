#pragma once

#include <cstddef>

#include "platform/process.h"

namespace kelmora::platform {

/// Reads bytes from the standard input as they are. Fewer than `count`: it is at its end, or `stop` said yes.
std::size_t ReadStandardInput(void* bytes, std::size_t count, StopQuestion stop);

/// Writes bytes to the standard output as they are; false when that does not work.
bool WriteStandardOutput(const void* bytes, std::size_t count);

/// Whether somebody watches the standard error at a terminal.
bool IsErrorTerminal();

} // namespace kelmora::platform

#pragma once

#include <stdexcept>
#include <string>

namespace kelmora::host {

/// What the program ends with.
enum class ExitCode {
    Done = 0,
    Failed = 1,        ///< a rendering or a file failed, or a check did
    Usage = 2,         ///< the arguments make no sense
    Unknown = 3,       ///< there is no such effect, knob or preset
    Interrupted = 130, ///< Ctrl-C came, as shells number it
};

/// Ends a command: one line for the user and the exit code.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), m_code(code) {}

    ExitCode Code() const { return m_code; }

private:
    ExitCode m_code;
};

} // namespace kelmora::host

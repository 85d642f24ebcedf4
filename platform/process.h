#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace kelmora::platform {

/// How a program that was started came to its end.
enum class ProcessEnd {
    Exited,     ///< of itself: `exitCode` holds
    Crashed,    ///< by a fault: `crash` holds
    TimedOut,   ///< it was stopped at the limit
    NotStarted, ///< `crash` says why
};

/// The exit code of a program that ran and is over, but of whose end the system has no word: it keeps none in a
/// process that ignores SIGCHLD, and another part of this process may have taken it. No program has this code.
inline constexpr int kExitCodeLost = -1;

/// What RunProcess gives back.
struct ProcessResult {
    ProcessEnd end = ProcessEnd::NotStarted;
    int exitCode = 0;
    std::string crash;  ///< the fault in the system's words: "SIGSEGV", "exception 0xC0000005"
    std::string output; ///< what it wrote to its standard output, up to kMostOutput bytes
    std::string errors; ///< what it wrote to its standard error, up to kMostOutput bytes
};

/// Of each stream, what goes beyond this is read and dropped, so that a chatty program never blocks.
inline constexpr std::size_t kMostOutput = std::size_t{1} << 20;

/// Runs a program to its end and collects what it writes. Its standard input is empty.
///
/// arguments    the program first, by its path or, searched for as a shell does, its bare name; UTF-8. No shell
///              sees them
/// limit        how long it may take; then it is ended by force
/// environment  "NAME=VALUE" each, added to this program's own
///
/// Only the program itself is ended at the limit, not what it may have started. One call at a time.
ProcessResult RunProcess(const std::vector<std::string>& arguments, std::chrono::milliseconds limit,
                         const std::vector<std::string>& environment = {});

/// Which stream of a PipedProcess its maker holds.
enum class PipedStream { Input, Output };

/// Whether to give up waiting. Asked about ten times a second.
using StopQuestion = bool (*)();

/// A program that runs beside this one, with its standard input or its standard output in our hands. What it
/// writes to its standard error is collected. A Ctrl-C at the terminal does not reach it: its maker decides.
class PipedProcess {
public:
    /// Starts the program; arguments as for RunProcess. Of the two streams the one that is not `stream` is
    /// empty.
    PipedProcess(const std::vector<std::string>& arguments, PipedStream stream, StopQuestion stop);
    PipedProcess(const PipedProcess&) = delete;
    PipedProcess& operator=(const PipedProcess&) = delete;

    /// Ends the program by force if it still runs.
    ~PipedProcess();

    /// Reads from its standard output. Fewer than `count` bytes: it closed its output, or `stop` said yes.
    std::size_t Read(void* bytes, std::size_t count);

    /// Writes to its standard input; false when it no longer reads, or when `stop` said yes.
    bool Write(const void* bytes, std::size_t count);

    /// Closes the stream and waits for the program's end, which `stop` brings about by force. `output` of the
    /// result is empty. Once only.
    ProcessResult Finish();

private:
    struct Inside;
    std::unique_ptr<Inside> m_inside;
};

/// The full path of the running program, UTF-8; empty when the system does not tell.
std::string ProgramPath();

/// The arguments of the running program behind its name, UTF-8 whatever main was given.
std::vector<std::string> ProgramArguments(int argc, char** argv);

/// A number that no other running process has.
unsigned long ProcessNumber();

} // namespace kelmora::platform

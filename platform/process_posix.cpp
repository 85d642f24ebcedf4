#include "platform/process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelmora::platform {
namespace {

using Clock = std::chrono::steady_clock;

/// A file descriptor that closes itself.
class Descriptor {
public:
    Descriptor() = default;
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_number; }
    void Set(int number) { m_number = number; }
    void Close()
    {
        if (m_number >= 0)
            ::close(m_number);
        m_number = -1;
    }

private:
    int m_number = -1;
};

struct Pipe {
    Descriptor read;
    Descriptor write;

    bool Open()
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return false;
        read.Set(ends[0]);
        write.Set(ends[1]);
        return ::fcntl(ends[0], F_SETFL, O_NONBLOCK) == 0;
    }
};

/// Takes what is in the pipe now. Closes it at its end.
void Drain(Descriptor& pipe, std::string& into)
{
    std::array<char, 4096> chunk;
    while (pipe.Get() >= 0) {
        const ssize_t count = ::read(pipe.Get(), chunk.data(), chunk.size());
        if (count > 0) {
            const std::size_t room = kMostOutput - std::min(kMostOutput, into.size());
            into.append(chunk.data(), std::min(room, static_cast<std::size_t>(count)));
        } else if (count == 0) {
            pipe.Close();
        } else if (errno != EINTR) {
            if (errno != EAGAIN)
                pipe.Close();
            return;
        }
    }
}

std::string SignalName(int number)
{
    const char* const name = ::sigabbrev_np(number);
    return name != nullptr ? std::string("SIG") + name : "signal " + std::to_string(number);
}

ProcessResult Failure(int error)
{
    ProcessResult result;
    result.crash = std::strerror(error);
    return result;
}

/// This program's environment with `added` in front: of two of the same name the first one counts.
std::vector<char*> EnvironmentWith(const std::vector<std::string>& added)
{
    std::vector<char*> all;
    all.reserve(added.size());
    for (const std::string& entry : added)
        all.push_back(const_cast<char*>(entry.c_str()));
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
        all.push_back(*entry);
    all.push_back(nullptr);
    return all;
}

/// Starts the program; 0, or the system's error.
int Spawn(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
          const Pipe& output, const Pipe& errors, pid_t& child)
{
    std::vector<char*> words;
    words.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    const std::vector<char*> variables = EnvironmentWith(environment);

    posix_spawn_file_actions_t actions;
    if (const int error = ::posix_spawn_file_actions_init(&actions))
        return error;
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, output.write.Get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errors.write.Get(), STDERR_FILENO);
    const int error = ::posix_spawn(&child, words[0], &actions, nullptr, words.data(), variables.data());
    ::posix_spawn_file_actions_destroy(&actions);
    return error;
}

/// Waits for something to read, but not long: the end of the child is not in the pipes, which a program of
/// its own may hold open.
void WaitForOutput(const Descriptor& output, const Descriptor& errors)
{
    std::array<pollfd, 2> waiting = {pollfd{output.Get(), POLLIN, 0}, pollfd{errors.Get(), POLLIN, 0}};
    constexpr int kMilliseconds = 10;
    ::poll(waiting.data(), waiting.size(), kMilliseconds);
}

} // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments, std::chrono::milliseconds limit,
                         const std::vector<std::string>& environment)
{
    if (arguments.empty())
        return Failure(EINVAL);
    Pipe output;
    Pipe errors;
    if (!output.Open() || !errors.Open())
        return Failure(errno);

    const Clock::time_point deadline = Clock::now() + limit;
    pid_t child = 0;
    if (const int error = Spawn(arguments, environment, output, errors, child))
        return Failure(error);
    output.write.Close();
    errors.write.Close();

    ProcessResult result;
    bool stopped = false;
    int status = 0;
    for (;;) {
        WaitForOutput(output.read, errors.read);
        Drain(output.read, result.output);
        Drain(errors.read, result.errors);
        const pid_t ended = ::waitpid(child, &status, WNOHANG);
        if (ended == child)
            break;
        if (ended < 0 && errno != EINTR)
            return Failure(errno);
        if (!stopped && Clock::now() >= deadline) {
            stopped = true;
            ::kill(child, SIGKILL);
        }
    }
    Drain(output.read, result.output);
    Drain(errors.read, result.errors);

    if (WIFEXITED(status)) {
        result.end = ProcessEnd::Exited;
        result.exitCode = WEXITSTATUS(status);
    } else if (stopped && WTERMSIG(status) == SIGKILL) {
        result.end = ProcessEnd::TimedOut;
    } else {
        result.end = ProcessEnd::Crashed;
        result.crash = SignalName(WTERMSIG(status));
    }
    return result;
}

std::string ProgramPath()
{
    std::string path(4096, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0 || static_cast<std::size_t>(length) == path.size())
        return {};
    path.resize(static_cast<std::size_t>(length));
    return path;
}

std::vector<std::string> ProgramArguments(int argc, char** argv)
{
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

unsigned long ProcessNumber()
{
    return static_cast<unsigned long>(::getpid());
}

} // namespace kelmora::platform

#include "platform/process.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <thread>
#include <utility>

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
    void Take(Descriptor& other)
    {
        Close();
        m_number = std::exchange(other.m_number, -1);
    }
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
        return true;
    }
};

bool NeverBlock(const Descriptor& end)
{
    return ::fcntl(end.Get(), F_SETFL, O_NONBLOCK) == 0;
}

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

/// What a child gets as its standard streams; -1: the null device.
struct ChildStreams {
    int input = -1;
    int output = -1;
    int errors = -1;
};

/// Whose signals from the terminal a child gets.
enum class Group { Ours, ItsOwn };

void AddStream(posix_spawn_file_actions_t& actions, int from, int to)
{
    if (from >= 0)
        ::posix_spawn_file_actions_adddup2(&actions, from, to);
    else
        ::posix_spawn_file_actions_addopen(&actions, to, "/dev/null", O_RDWR, 0);
}

/// Starts the program; 0, or the system's error.
int Spawn(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
          const ChildStreams& streams, Group group, pid_t& child)
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
    posix_spawnattr_t attributes;
    if (const int error = ::posix_spawnattr_init(&attributes)) {
        ::posix_spawn_file_actions_destroy(&actions);
        return error;
    }
    AddStream(actions, streams.input, STDIN_FILENO);
    AddStream(actions, streams.output, STDOUT_FILENO);
    AddStream(actions, streams.errors, STDERR_FILENO);
    if (group == Group::ItsOwn)
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    const int error = ::posix_spawnp(&child, words[0], &actions, &attributes, words.data(), variables.data());
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return error;
}

/// Whether the program is over. `status` is how, and stays empty where the word of it is lost; see kExitCodeLost.
bool HasEnded(pid_t child, std::optional<int>& status)
{
    int word = 0;
    const pid_t ended = ::waitpid(child, &word, WNOHANG);
    if (ended == child)
        status = word;
    return ended == child || (ended < 0 && errno != EINTR);
}

/// Waits for something to read, but not long: the end of the child is not in the pipes, which a program of
/// its own may hold open.
void WaitForOutput(const Descriptor& output, const Descriptor& errors)
{
    std::array<pollfd, 2> waiting = {pollfd{output.Get(), POLLIN, 0}, pollfd{errors.Get(), POLLIN, 0}};
    constexpr int kMilliseconds = 10;
    ::poll(waiting.data(), waiting.size(), kMilliseconds);
}

/// Fills in how the program ended.
void NoteEnd(std::optional<int> status, bool stopped, ProcessResult& result)
{
    if (!status) {
        result.end = stopped ? ProcessEnd::TimedOut : ProcessEnd::Exited;
        result.exitCode = kExitCodeLost;
    } else if (WIFEXITED(*status)) {
        result.end = ProcessEnd::Exited;
        result.exitCode = WEXITSTATUS(*status);
    } else if (stopped && WTERMSIG(*status) == SIGKILL) {
        result.end = ProcessEnd::TimedOut;
    } else {
        result.end = ProcessEnd::Crashed;
        result.crash = SignalName(WTERMSIG(*status));
    }
}

/// While it lives, writing into a pipe that nobody reads gives this thread an error, not a signal.
class WithoutPipeSignal {
public:
    WithoutPipeSignal()
    {
        ::sigemptyset(&m_signal);
        ::sigaddset(&m_signal, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &m_signal, &m_before);
    }
    WithoutPipeSignal(const WithoutPipeSignal&) = delete;
    WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;
    ~WithoutPipeSignal()
    {
        constexpr timespec atOnce = {0, 0};
        if (::sigismember(&m_before, SIGPIPE) == 0) {
            while (::sigtimedwait(&m_signal, nullptr, &atOnce) < 0 && errno == EINTR) {
            }
        }
        ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }

private:
    sigset_t m_signal = {};
    sigset_t m_before = {};
};

/// Waits until the descriptor can be used; false when `stop` says yes.
bool WaitUntilReady(int descriptor, short event, StopQuestion stop)
{
    constexpr int kMilliseconds = 100;
    pollfd waiting = {descriptor, event, 0};
    while (!stop()) {
        if (::poll(&waiting, 1, kMilliseconds) > 0)
            return true;
    }
    return false;
}

} // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments, std::chrono::milliseconds limit,
                         const std::vector<std::string>& environment)
{
    if (arguments.empty())
        return Failure(EINVAL);
    Pipe output;
    Pipe errors;
    if (!output.Open() || !errors.Open() || !NeverBlock(output.read) || !NeverBlock(errors.read))
        return Failure(errno);

    const Clock::time_point deadline = Clock::now() + limit;
    pid_t child = 0;
    const ChildStreams streams = {-1, output.write.Get(), errors.write.Get()};
    if (const int error = Spawn(arguments, environment, streams, Group::Ours, child))
        return Failure(error);
    output.write.Close();
    errors.write.Close();

    ProcessResult result;
    bool stopped = false;
    std::optional<int> status;
    for (;;) {
        WaitForOutput(output.read, errors.read);
        Drain(output.read, result.output);
        Drain(errors.read, result.errors);
        if (HasEnded(child, status))
            break;
        if (!stopped && Clock::now() >= deadline) {
            stopped = true;
            ::kill(child, SIGKILL);
        }
    }
    Drain(output.read, result.output);
    Drain(errors.read, result.errors);

    NoteEnd(status, stopped, result);
    return result;
}

struct PipedProcess::Inside {
    ProcessResult result; ///< `end` is NotStarted while it runs, too
    StopQuestion stop = nullptr;
    pid_t child = 0; ///< 0: none that runs
    Descriptor stream;
    Descriptor errors;
    std::thread errorReader;

    std::atomic<bool> hasEnded = false; ///< the program, not what it may have left running with its streams

    /// Collects what the program says, which must not block it.
    void ReadErrors()
    {
        constexpr int kMilliseconds = 20;
        std::array<char, 4096> chunk;
        pollfd waiting = {errors.Get(), POLLIN, 0};
        for (;;) {
            const bool last = hasEnded;
            if (::poll(&waiting, 1, kMilliseconds) <= 0) {
                if (last)
                    return;
                continue;
            }
            const ssize_t count = ::read(errors.Get(), chunk.data(), chunk.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return;
            const std::size_t room = kMostOutput - std::min(kMostOutput, result.errors.size());
            result.errors.append(chunk.data(), std::min(room, static_cast<std::size_t>(count)));
        }
    }

    /// Waits for the end of the program.
    void Wait()
    {
        bool stopped = false;
        std::optional<int> status;
        while (!HasEnded(child, status)) {
            if (!stopped && stop()) {
                stopped = true;
                ::kill(child, SIGKILL);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        child = 0;
        hasEnded = true;
        errorReader.join();
        NoteEnd(status, stopped, result);
    }
};

PipedProcess::PipedProcess(const std::vector<std::string>& arguments, PipedStream stream, StopQuestion stop)
    : m_inside(std::make_unique<Inside>())
{
    m_inside->stop = stop;
    const bool isInput = stream == PipedStream::Input;
    Pipe data;
    Pipe errors;
    if (arguments.empty() || !data.Open() || !errors.Open()
        || !NeverBlock(isInput ? data.write : data.read)) {
        m_inside->result = Failure(arguments.empty() ? EINVAL : errno);
        return;
    }
    constexpr int kPipeBytes = 1 << 20; // pictures are large; a system that gives less is slower
    ::fcntl(data.write.Get(), F_SETPIPE_SZ, kPipeBytes);

    ChildStreams streams;
    (isInput ? streams.input : streams.output) = isInput ? data.read.Get() : data.write.Get();
    streams.errors = errors.write.Get();
    if (const int error = Spawn(arguments, {}, streams, Group::ItsOwn, m_inside->child)) {
        m_inside->result = Failure(error);
        m_inside->child = 0;
        return;
    }
    m_inside->stream.Take(isInput ? data.write : data.read);
    m_inside->errors.Take(errors.read);
    errors.write.Close(); // or its end would never come
    m_inside->errorReader = std::thread(&Inside::ReadErrors, m_inside.get());
}

PipedProcess::~PipedProcess()
{
    if (m_inside->child == 0)
        return;
    m_inside->stream.Close();
    ::kill(m_inside->child, SIGKILL);
    m_inside->Wait();
}

std::size_t PipedProcess::Read(void* bytes, std::size_t count)
{
    auto* const to = static_cast<char*>(bytes);
    const int stream = m_inside->stream.Get();
    std::size_t done = 0;
    while (stream >= 0 && done < count) {
        const ssize_t got = ::read(stream, to + done, count - done);
        if (got > 0)
            done += static_cast<std::size_t>(got);
        else if (got == 0 || (errno != EAGAIN && errno != EINTR)
                 || !WaitUntilReady(stream, POLLIN, m_inside->stop))
            break;
    }
    return done;
}

bool PipedProcess::Write(const void* bytes, std::size_t count)
{
    const WithoutPipeSignal quiet;
    const auto* const from = static_cast<const char*>(bytes);
    const int stream = m_inside->stream.Get();
    std::size_t done = 0;
    while (stream >= 0 && done < count) {
        const ssize_t put = ::write(stream, from + done, count - done);
        if (put >= 0)
            done += static_cast<std::size_t>(put);
        else if ((errno != EAGAIN && errno != EINTR) || !WaitUntilReady(stream, POLLOUT, m_inside->stop))
            break;
    }
    return done == count;
}

ProcessResult PipedProcess::Finish()
{
    m_inside->stream.Close();
    if (m_inside->child != 0)
        m_inside->Wait();
    return m_inside->result;
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

#include "platform/process.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <thread>
#include <utility>

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <shellapi.h>

namespace kelmora::platform {
namespace {

/// A handle that closes itself.
class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE handle) : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~Handle() { Close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE Get() const { return m_handle; }
    HANDLE* Place() { return &m_handle; }
    void Take(Handle& other)
    {
        Close();
        m_handle = std::exchange(other.m_handle, nullptr);
    }
    void Close()
    {
        if (m_handle != nullptr)
            ::CloseHandle(m_handle);
        m_handle = nullptr;
    }

private:
    HANDLE m_handle = nullptr;
};

std::wstring Wide(const std::string& text)
{
    if (text.empty())
        return {};
    const int bytes = static_cast<int>(text.size());
    const int length = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(std::max(length, 0)), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, wide.data(), length);
    return wide;
}

std::string Narrow(const wchar_t* text, std::size_t length)
{
    if (length == 0)
        return {};
    const int count = static_cast<int>(length);
    const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text, count, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(std::max(bytes, 0)), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, count, narrow.data(), bytes, nullptr, nullptr);
    return narrow;
}

ProcessResult Failure(DWORD error)
{
    ProcessResult result;
    result.crash = "system error " + std::to_string(error);
    return result;
}

/// A pipe whose ends a child inherits.
struct Pipe {
    Handle read;
    Handle write;

    bool Open(DWORD bytes = 0)
    {
        SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        return ::CreatePipe(read.Place(), write.Place(), &inherited, bytes) != 0;
    }
};

/// Keeps our end of a pipe from the child, which would hold it open.
bool KeepFromChild(const Handle& end)
{
    return ::SetHandleInformation(end.Get(), HANDLE_FLAG_INHERIT, 0) != 0;
}

/// Reads to the end of the pipe, or of the process when that comes first: a program that it left running may hold
/// the pipe open for good. Runs in a thread of its own.
void ReadAll(HANDLE pipe, HANDLE process, std::string& into)
{
    constexpr DWORD kMilliseconds = 5;
    std::array<char, 4096> chunk;
    bool ended = false;
    for (DWORD waiting = 0; ::PeekNamedPipe(pipe, nullptr, 0, nullptr, &waiting, nullptr) != 0;) {
        if (waiting == 0) {
            if (ended)
                return;
            ended = ::WaitForSingleObject(process, kMilliseconds) == WAIT_OBJECT_0; // then looks once more
            continue;
        }
        DWORD count = 0;
        if (::ReadFile(pipe, chunk.data(), static_cast<DWORD>(chunk.size()), &count, nullptr) == 0)
            return;
        const std::size_t room = kMostOutput - std::min(kMostOutput, into.size());
        into.append(chunk.data(), std::min(room, static_cast<std::size_t>(count)));
    }
}

/// One argument in the quoting that programs take apart again: backslashes count only before a quote.
void AppendQuoted(const std::wstring& argument, std::wstring& line)
{
    if (!line.empty())
        line += L' ';
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
        line += argument;
        return;
    }
    line += L'"';
    std::size_t backslashes = 0;
    for (const wchar_t letter : argument) {
        if (letter == L'"')
            line.append(backslashes + 1, L'\\');
        backslashes = letter == L'\\' ? backslashes + 1 : 0;
        line += letter;
    }
    line.append(backslashes, L'\\');
    line += L'"';
}

/// Whether the entry "NAME=value" has the name of the entry `added`.
bool SameVariable(const std::wstring& added, const std::wstring& entry)
{
    const std::size_t length = added.find(L'=');
    return length != std::wstring::npos && entry.size() > length && entry[length] == L'='
        && ::_wcsnicmp(added.c_str(), entry.c_str(), length) == 0;
}

/// This program's environment with `added` in the place of variables of the same name: entries that end in a
/// zero, then one zero more.
std::wstring EnvironmentWith(const std::vector<std::string>& added)
{
    std::vector<std::wstring> entries;
    for (const std::string& entry : added)
        entries.push_back(Wide(entry));
    const std::size_t own = entries.size();

    wchar_t* const block = ::GetEnvironmentStringsW();
    for (const wchar_t* at = block; at != nullptr && *at != L'\0'; at += std::wcslen(at) + 1) {
        const std::wstring entry = at;
        const auto isEntry = [&entry](const std::wstring& mine) { return SameVariable(mine, entry); };
        const auto lastOwn = entries.begin() + static_cast<std::ptrdiff_t>(own);
        if (std::none_of(entries.begin(), lastOwn, isEntry))
            entries.push_back(entry);
    }
    if (block != nullptr)
        ::FreeEnvironmentStringsW(block);

    std::wstring joined;
    for (const std::wstring& entry : entries)
        joined.append(entry).push_back(L'\0');
    joined.push_back(L'\0');
    return joined;
}

/// Programs that end by a fault give the fault's number as their exit code; those have the two upper bits
/// set.
bool IsFault(DWORD exitCode)
{
    return (exitCode & 0xC0000000u) == 0xC0000000u;
}

std::string FaultName(DWORD exitCode)
{
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "exception 0x%08lX", exitCode);
    return text.data();
}

/// Fills in how the program ended.
void NoteEnd(DWORD exitCode, bool stopped, ProcessResult& result)
{
    if (stopped) {
        result.end = ProcessEnd::TimedOut;
    } else if (IsFault(exitCode)) {
        result.end = ProcessEnd::Crashed;
        result.crash = FaultName(exitCode);
    } else {
        result.end = ProcessEnd::Exited;
        result.exitCode = static_cast<int>(exitCode);
    }
}

/// The null device, for a child to inherit.
HANDLE OpenNull()
{
    SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return ::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                         OPEN_EXISTING, 0, nullptr);
}

/// What a child gets as its standard streams.
struct ChildStreams {
    HANDLE input = nullptr;
    HANDLE output = nullptr;
    HANDLE errors = nullptr;
};

/// Starts the program; 0, or the system's error.
DWORD Start(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
            const ChildStreams& streams, DWORD flags, Handle& process)
{
    std::wstring line;
    for (const std::string& argument : arguments)
        AppendQuoted(Wide(argument), line);
    std::wstring variables = EnvironmentWith(environment);

    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = streams.input;
    start.hStdOutput = streams.output;
    start.hStdError = streams.errors;

    // The child inherits the error mode: with it a fault ends the program without asking the user.
    const UINT oldMode = ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    PROCESS_INFORMATION started = {};
    const BOOL ok =
        ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, flags | CREATE_UNICODE_ENVIRONMENT,
                         variables.data(), nullptr, &start, &started);
    const DWORD error = ::GetLastError();
    ::SetErrorMode(oldMode);
    if (ok == 0)
        return error;
    ::CloseHandle(started.hThread);
    *process.Place() = started.hProcess;
    return 0;
}

} // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments, std::chrono::milliseconds limit,
                         const std::vector<std::string>& environment)
{
    if (arguments.empty())
        return Failure(ERROR_INVALID_PARAMETER);
    Pipe output;
    Pipe errors;
    const Handle input(OpenNull());
    if (!output.Open() || !errors.Open() || !KeepFromChild(output.read) || !KeepFromChild(errors.read)
        || input.Get() == nullptr)
        return Failure(::GetLastError());

    Handle process;
    const ChildStreams streams = {input.Get(), output.write.Get(), errors.write.Get()};
    if (const DWORD error = Start(arguments, environment, streams, 0, process))
        return Failure(error);
    output.write.Close();
    errors.write.Close();

    ProcessResult result;
    std::thread outputReader(ReadAll, output.read.Get(), process.Get(), std::ref(result.output));
    std::thread errorReader(ReadAll, errors.read.Get(), process.Get(), std::ref(result.errors));
    const auto milliseconds = std::clamp<std::chrono::milliseconds::rep>(limit.count(), 0, 0x7FFFFFFF);
    const bool stopped =
        ::WaitForSingleObject(process.Get(), static_cast<DWORD>(milliseconds)) == WAIT_TIMEOUT;
    if (stopped) {
        ::TerminateProcess(process.Get(), 1);
        ::WaitForSingleObject(process.Get(), INFINITE);
    }
    outputReader.join();
    errorReader.join();

    DWORD exitCode = 0;
    ::GetExitCodeProcess(process.Get(), &exitCode);
    NoteEnd(exitCode, stopped, result);
    return result;
}

struct PipedProcess::Inside {
    ProcessResult result;
    StopQuestion stop = nullptr;
    Handle process; ///< null: none that runs
    Handle stream;
    Handle errors;
    std::thread errorReader;

    /// Waits for the end of the program.
    void Wait()
    {
        constexpr DWORD kMilliseconds = 100;
        bool stopped = false;
        while (::WaitForSingleObject(process.Get(), kMilliseconds) == WAIT_TIMEOUT) {
            if (!stopped && stop()) {
                stopped = true;
                ::TerminateProcess(process.Get(), 1);
            }
        }
        errorReader.join();
        DWORD exitCode = 0;
        ::GetExitCodeProcess(process.Get(), &exitCode);
        process.Close();
        NoteEnd(exitCode, stopped, result);
    }
};

PipedProcess::PipedProcess(const std::vector<std::string>& arguments, PipedStream stream, StopQuestion stop)
    : m_inside(std::make_unique<Inside>())
{
    constexpr DWORD kPipeBytes = 1 << 20; // pictures are large
    m_inside->stop = stop;
    if (arguments.empty()) {
        m_inside->result = Failure(ERROR_INVALID_PARAMETER);
        return;
    }
    const bool isInput = stream == PipedStream::Input;
    Pipe data;
    Pipe errors;
    const Handle null(OpenNull());
    if (!data.Open(kPipeBytes) || !errors.Open() || !KeepFromChild(isInput ? data.write : data.read)
        || !KeepFromChild(errors.read) || null.Get() == nullptr) {
        m_inside->result = Failure(::GetLastError());
        return;
    }
    ChildStreams streams = {null.Get(), null.Get(), errors.write.Get()};
    (isInput ? streams.input : streams.output) = isInput ? data.read.Get() : data.write.Get();
    if (const DWORD error = Start(arguments, {}, streams, CREATE_NEW_PROCESS_GROUP, m_inside->process)) {
        m_inside->result = Failure(error);
        return;
    }
    m_inside->stream.Take(isInput ? data.write : data.read);
    m_inside->errors.Take(errors.read);
    errors.write.Close(); // or its end would never come
    m_inside->errorReader = std::thread(ReadAll, m_inside->errors.Get(), m_inside->process.Get(),
                                        std::ref(m_inside->result.errors));
}

PipedProcess::~PipedProcess()
{
    if (m_inside->process.Get() == nullptr)
        return;
    m_inside->stream.Close();
    ::TerminateProcess(m_inside->process.Get(), 1);
    m_inside->Wait();
}

std::size_t PipedProcess::Read(void* bytes, std::size_t count)
{
    constexpr std::size_t kMost = std::size_t{1} << 20;
    auto* const to = static_cast<char*>(bytes);
    std::size_t done = 0;
    DWORD got = 0;
    while (m_inside->stream.Get() != nullptr && done < count && !m_inside->stop()
           && ::ReadFile(m_inside->stream.Get(), to + done, static_cast<DWORD>(std::min(count - done, kMost)),
                         &got, nullptr)
               != 0
           && got > 0)
        done += got;
    return done;
}

bool PipedProcess::Write(const void* bytes, std::size_t count)
{
    constexpr std::size_t kMost = std::size_t{1} << 20;
    const auto* const from = static_cast<const char*>(bytes);
    std::size_t done = 0;
    DWORD put = 0;
    while (m_inside->stream.Get() != nullptr && done < count && !m_inside->stop()
           && ::WriteFile(m_inside->stream.Get(), from + done,
                          static_cast<DWORD>(std::min(count - done, kMost)), &put, nullptr)
               != 0)
        done += put;
    return done == count;
}

ProcessResult PipedProcess::Finish()
{
    m_inside->stream.Close();
    if (m_inside->process.Get() != nullptr)
        m_inside->Wait();
    return m_inside->result;
}

std::string ProgramPath()
{
    std::wstring path(32768, L'\0');
    const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return length < path.size() ? Narrow(path.data(), length) : std::string();
}

std::vector<std::string> ProgramArguments(int, char**)
{
    // The narrow arguments of main are in the ANSI code page, which cannot say every file name.
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; words != nullptr && i < count; ++i)
        arguments.push_back(Narrow(words[i], std::wcslen(words[i])));
    ::LocalFree(words);
    return arguments;
}

unsigned long ProcessNumber()
{
    return ::GetCurrentProcessId();
}

} // namespace kelmora::platform

#include "platform/process.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace kelmora::platform {
namespace {

using std::chrono::milliseconds;
using Words = std::vector<std::string>;

constexpr milliseconds kLong = std::chrono::minutes(2);

ProcessResult Probe(const Words& words, milliseconds limit = kLong, const Words& environment = {})
{
    Words all = {KELMORA_PROCESS_PROBE};
    all.insert(all.end(), words.begin(), words.end());
    return RunProcess(all, limit, environment);
}

TEST(RunProcess, ExitCode_IsThePrograms)
{
    for (const char* const code : {"0", "1", "77"}) {
        const ProcessResult result = Probe({"code", code});
        EXPECT_EQ(result.end, ProcessEnd::Exited);
        EXPECT_EQ(std::to_string(result.exitCode), code);
    }
}

TEST(RunProcess, Streams_AreKeptApart)
{
    const ProcessResult result = Probe({"both"});
    EXPECT_EQ(result.output, "to output");
    EXPECT_EQ(result.errors, "to errors");
}

TEST(RunProcess, ArgumentsOfAllForms_ArriveAsTheyAre)
{
    const ProcessResult result = Probe({"arguments", "two words", "", "\"quoted\"", "back\\slash\\", "a\\\"b",
                                        "ends \\", "tab\there", "$HOME", "%PATH%", "*", "-x"});
    EXPECT_EQ(result.output,
              "[two words][][\"quoted\"][back\\slash\\][a\\\"b][ends \\][tab\there][$HOME][%PATH%][*][-x]");
}

TEST(RunProcess, Environment_IsAddedAndReplaced)
{
    EXPECT_EQ(Probe({"variable", "KELMORA_PROBE_VARIABLE"}).output, "none");
    EXPECT_EQ(Probe({"variable", "KELMORA_PROBE_VARIABLE"}, kLong, {"KELMORA_PROBE_VARIABLE=a=b c"}).output,
              "a=b c");
    EXPECT_NE(Probe({"variable", "PATH"}).output, "none");
    EXPECT_NE(Probe({"variable", "PATH"}, kLong, {"KELMORA_PROBE_VARIABLE=x"}).output, "none");
    EXPECT_EQ(Probe({"variable", "PATH"}, kLong, {"PATH=elsewhere"}).output, "elsewhere");
}

TEST(RunProcess, StandardInput_IsEmpty)
{
    EXPECT_EQ(Probe({"input"}).output, "empty");
}

TEST(RunProcess, MoreOutputThanIsKept_DoesNotBlock)
{
    const ProcessResult result = Probe({"flood"});
    EXPECT_EQ(result.end, ProcessEnd::Exited);
    EXPECT_EQ(result.output, std::string(kMostOutput, 'x'));
    EXPECT_EQ(result.errors.size(), kMostOutput);
}

TEST(RunProcess, Crash_IsToldFromAnExit)
{
    const ProcessResult result = Probe({"crash"});
#ifdef KELMORA_SANITIZED
    EXPECT_EQ(result.end, ProcessEnd::Exited); // the sanitizer turns the fault into a report
    EXPECT_NE(result.exitCode, 0);
    EXPECT_NE(result.errors, "");
#else
    EXPECT_EQ(result.end, ProcessEnd::Crashed);
    EXPECT_TRUE(result.crash == "SIGSEGV" || result.crash == "exception 0xC0000005") << result.crash;
#endif
}

TEST(RunProcess, Hang_IsEndedAtTheLimit)
{
    const auto start = std::chrono::steady_clock::now();
    const ProcessResult result = Probe({"hang"}, milliseconds(1500));
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(result.end, ProcessEnd::TimedOut);
    EXPECT_EQ(result.output, "hanging");
    EXPECT_GE(took, milliseconds(1400));
    EXPECT_LT(took, std::chrono::minutes(1));
}

/// Less than what the probe leaves running takes, which holds the probe's streams.
constexpr std::chrono::seconds kSoon{15};

TEST(RunProcess, ProgramThatLeavesAnotherRunning_IsNotWaitedForLonger)
{
    const auto start = std::chrono::steady_clock::now();
    const ProcessResult result = Probe({"leave"});
    EXPECT_LT(std::chrono::steady_clock::now() - start, kSoon);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.output, "to output");
    EXPECT_EQ(result.errors, "to errors");
}

TEST(RunProcess, MissingProgram_IsNotStarted)
{
    for (const Words& words : {Words{"no/such/program"}, Words{}}) {
        const ProcessResult result = RunProcess(words, kLong);
        EXPECT_EQ(result.end, ProcessEnd::NotStarted);
        EXPECT_NE(result.crash, "");
    }
}

#ifndef _WIN32

/// While it lives the system keeps no word of how this process's children end.
class IgnoredChildren {
public:
    IgnoredChildren() : m_before(std::signal(SIGCHLD, SIG_IGN)) {}
    ~IgnoredChildren() { std::signal(SIGCHLD, m_before); }
    IgnoredChildren(const IgnoredChildren&) = delete;
    IgnoredChildren& operator=(const IgnoredChildren&) = delete;

private:
    void (*m_before)(int);
};

TEST(RunProcess, HostThatIgnoresItsChildren_GetsTheOutputAndNoExitCode)
{
    const IgnoredChildren ignored;
    for (const char* const task : {"both", "leave"}) { // codes 0 and 3
        const ProcessResult result = Probe({task});
        EXPECT_EQ(result.end, ProcessEnd::Exited);
        EXPECT_EQ(result.exitCode, kExitCodeLost);
        EXPECT_EQ(result.output, "to output");
        EXPECT_EQ(result.errors, "to errors");
    }
    EXPECT_EQ(Probe({"hang"}, milliseconds(200)).end, ProcessEnd::TimedOut);
    EXPECT_EQ(RunProcess({"no/such/program"}, kLong).end, ProcessEnd::NotStarted);
}

TEST(RunProcess, HostThatReapsAllChildren_GetsTheOutput)
{
    std::atomic<bool> isOver = false;
    std::thread reaper([&] {
        int status = 0;
        while (!isOver)
            ::waitpid(-1, &status, 0);
    });
    for (int i = 0; i < 5; ++i) {
        const ProcessResult result = Probe({"both"});
        EXPECT_EQ(result.end, ProcessEnd::Exited);
        EXPECT_TRUE(result.exitCode == 0 || result.exitCode == kExitCodeLost) << result.exitCode;
        EXPECT_EQ(result.output, "to output");
    }
    isOver = true;
    reaper.join();
}

#endif

bool Never()
{
    return false;
}

bool Always()
{
    return true;
}

TEST(PipedProcess, OutputOfAProgram_IsReadToItsEnd)
{
    PipedProcess process({KELMORA_PROCESS_PROBE, "flood"}, PipedStream::Output, Never);
    std::string text(4'000'000, '?');
    const std::size_t count = process.Read(text.data(), text.size());
    EXPECT_EQ(count, 3'000'000u);
    EXPECT_EQ(text.substr(0, count), std::string(count, 'x'));
    EXPECT_EQ(process.Read(text.data(), 1), 0u);
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.end, ProcessEnd::Exited);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors.size(), kMostOutput);
}

TEST(PipedProcess, InputOfAProgram_ArrivesAndEnds)
{
    PipedProcess process({KELMORA_PROCESS_PROBE, "count"}, PipedStream::Input, Never);
    const std::string text(1'000'042, 'x');
    EXPECT_TRUE(process.Write(text.data(), text.size()));
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.end, ProcessEnd::Exited);
    EXPECT_EQ(result.exitCode, 42);
}

TEST(PipedProcess, ProgramThatDoesNotRead_FailsTheWriteAndTellsWhy)
{
    PipedProcess process({KELMORA_PROCESS_PROBE, "both"}, PipedStream::Input, Never);
    const std::string text(8'000'000, 'x');
    EXPECT_FALSE(process.Write(text.data(), text.size()));
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "to errors");
}

TEST(PipedProcess, ProgramThatLeavesAnotherRunning_IsNotWaitedForLonger)
{
    const auto start = std::chrono::steady_clock::now();
    PipedProcess process({KELMORA_PROCESS_PROBE, "leave"}, PipedStream::Input, Never);
    const ProcessResult result = process.Finish();
    EXPECT_LT(std::chrono::steady_clock::now() - start, kSoon);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.errors, "to errors");
}

TEST(PipedProcess, ProgramThatHangs_IsEndedWithItsObject)
{
    const auto start = std::chrono::steady_clock::now();
    {
        PipedProcess process({KELMORA_PROCESS_PROBE, "hang"}, PipedStream::Output, Never);
        char letter = 0;
        EXPECT_EQ(process.Read(&letter, 1), 1u); // it runs
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(1));
}

TEST(PipedProcess, Stop_EndsTheWaiting)
{
    PipedProcess process({KELMORA_PROCESS_PROBE, "hang"}, PipedStream::Input, Always);
    EXPECT_EQ(process.Finish().end, ProcessEnd::TimedOut);
}

#ifndef _WIN32

TEST(PipedProcess, HostThatIgnoresItsChildren_GetsTheOutputAndNoExitCode)
{
    const IgnoredChildren ignored;
    PipedProcess process({KELMORA_PROCESS_PROBE, "both"}, PipedStream::Output, Never);
    std::string text(100, '?');
    EXPECT_EQ(text.substr(0, process.Read(text.data(), text.size())), "to output");
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.end, ProcessEnd::Exited);
    EXPECT_EQ(result.exitCode, kExitCodeLost);
    EXPECT_EQ(result.errors, "to errors");
}

#endif

TEST(PipedProcess, MissingProgram_IsNotStarted)
{
    PipedProcess process({"no/such/program"}, PipedStream::Output, Never);
    char letter = 0;
    EXPECT_EQ(process.Read(&letter, 1), 0u);
    EXPECT_FALSE(process.Write(&letter, 1));
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.end, ProcessEnd::NotStarted);
    EXPECT_NE(result.crash, "");
}

TEST(ProgramPath, FileThatRuns_IsThere)
{
    const std::string path = ProgramPath();
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(std::u8string(path.begin(), path.end()))))
        << path;
    EXPECT_TRUE(std::filesystem::path(path).is_absolute());
}

TEST(ProcessNumber, SameProcess_IsTheSame)
{
    EXPECT_NE(ProcessNumber(), 0u);
    unsigned long other = 0;
    std::thread([&other] { other = ProcessNumber(); }).join();
    EXPECT_EQ(other, ProcessNumber());
}

TEST(ProgramArguments, ThisProgram_HasThoseOfItsCommandLine)
{
    // The test runner takes its own options out of argv, so all that is known here is what none of them is.
    char name[] = "program";
    char* words[] = {name, nullptr};
    for (const std::string& argument : ProgramArguments(1, words))
        EXPECT_NE(argument, ProgramPath());
}

} // namespace
} // namespace kelmora::platform

#include "host/commands/check.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/process.h"
#include "tests/host/checks/fault_run.h"
#include "tests/host/fake_library_file.h"
#include "tests/host/program_run.h"

namespace kelmora::host {
namespace {

/// Lines of another process end as its system ends them.
std::string WithoutReturns(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

TEST(RunCheck, LibraryThatKeepsTheContract_PassesEverything)
{
    const ProgramRun run = RunWith({"check", kFakeLibrary, "--in-process"});
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_EQ(run.out.find("failed  "), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("skipped  "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find(" 0 failed, 0 skipped, 0 crashed, 0 timed out; seed 1\n"), std::string::npos)
        << run.out;
}

TEST(RunCheck, EachInItsOwnProcess_PassesEverything)
{
    const platform::ProcessResult result =
        platform::RunProcess({KelmoraProgram(), "check", kFakeLibrary}, std::chrono::minutes(5));
    ASSERT_EQ(result.end, platform::ProcessEnd::Exited);
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
    EXPECT_NE(result.output.find(" 0 failed, 0 skipped, 0 crashed, 0 timed out"), std::string::npos)
        << result.output;
    EXPECT_EQ(result.errors, "");
}

TEST(RunCheck, CrashOfOne_DoesNotEndTheOthers)
{
    const platform::ProcessResult result =
        platform::RunProcess({KelmoraProgram(), "check", kFakeLibrary, "--only", "index-far-past-end",
                              "--only", "exports-present"},
                             std::chrono::minutes(5), {FaultVariable("crashes-without-value")});
    ASSERT_EQ(result.end, platform::ProcessEnd::Exited);
    EXPECT_EQ(result.exitCode, 1);
    const std::string output = WithoutReturns(result.output);
    EXPECT_TRUE(output.starts_with("crashed    index-far-past-end\n    ")) << output;
    EXPECT_TRUE(output.ends_with("\npassed     exports-present\n"
                                 "2 checks: 1 passed, 0 failed, 0 skipped, 1 crashed, 0 timed out; seed 1\n"))
        << output;
}

TEST(RunCheck, FileThatIsNoLibrary_FailsOnceAndSkipsTheRest)
{
    const ProgramRun run = RunWith({"check", kEmptyLibrary, "--in-process"});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.out.starts_with("failed     exports-present\n")) << run.out;
    EXPECT_NE(run.out.find("skipped    guard-bytes\n    the file is no effect library\n"), std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find(": 0 passed, 1 failed, "), std::string::npos) << run.out;
}

TEST(RunCheck, Only_RunsThatOne)
{
    const ProgramRun run =
        RunWith({"check", kFakeLibrary, "--in-process", "--only", "Exports Present", "--seed", "9"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out,
              "passed     exports-present\n"
              "1 check: 1 passed, 0 failed, 0 skipped, 0 crashed, 0 timed out; seed 9\n");
}

TEST(RunCheck, UnknownCheck_IsCode3WithTheNearest)
{
    const ProgramRun run = RunWith({"check", kFakeLibrary, "--only", "export-present"});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.errors,
              "kelmora: there is no check \"export-present\"; did you mean \"exports-present\"? "
              "\"kelmora check --list\" shows all checks\n");
}

TEST(RunCheck, MissingFile_IsCode1)
{
    const ProgramRun run = RunWith({"check", "nowhere.so"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kelmora: there is no library file nowhere.so\n");
}

TEST(RunCheck, List_NamesEveryCheckWithItsSentence)
{
    const ProgramRun run = RunWith({"check", "--list"});
    EXPECT_EQ(run.code, 0);
    for (const Check& check : AllChecks())
        EXPECT_NE(run.out.find(std::string(check.name) + "\n    " + check.sentence + "\n"),
                  std::string::npos);
}

TEST(RunCheck, Trace_GoesToTheErrors)
{
    const ProgramRun run =
        RunWith({"check", kFakeLibrary, "--in-process", "--only", "presets-in-range", "--trace"});
    EXPECT_EQ(run.code, 0);
    EXPECT_NE(run.errors.find("at: Fake Blend\n"), std::string::npos) << run.errors;
    EXPECT_EQ(run.out.find("at: "), std::string::npos);
}

} // namespace
} // namespace kelmora::host

#include "host/program.h"

#include <gtest/gtest.h>

#include "tests/host/fake_library_file.h"
#include "tests/host/program_run.h"

namespace kelmora::host {
namespace {

TEST(RunProgram, Result_GoesToTheOutputAlone)
{
    const ProgramRun run = RunWith({"--version"});
    EXPECT_EQ(run.code, 0);
    EXPECT_NE(run.out, "");
    EXPECT_EQ(run.errors, "");
}

TEST(RunProgram, BadArguments_AreCode2AndOneLine)
{
    const ProgramRun run = RunWith({"paint"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.errors.starts_with("kelmora: ")) << run.errors;
    EXPECT_EQ(run.errors.find('\n'), run.errors.size() - 1) << run.errors;
}

TEST(RunProgram, MissingLibrary_IsCode1)
{
    const ProgramRun run = RunWith({"list", "--library", "nowhere.so"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.errors, "kelmora: there is no library file nowhere.so\n");
}

TEST(RunProgram, UnknownEffect_IsCode3)
{
    const ProgramRun run = RunWith({"describe", "sepia", "--library", kFakeLibrary});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.errors, "kelmora: there is no effect \"sepia\"; \"kelmora list\" shows all effects\n");
}

TEST(RunProgram, OutputThatCannotBeWritten_IsCode1)
{
    std::ostringstream out;
    std::ostringstream errors;
    out.setstate(std::ios::badbit);
    EXPECT_EQ(RunProgram({"list", "--library", kFakeLibrary}, out, errors), 1);
    EXPECT_EQ(errors.str(), "kelmora: cannot write to the standard output\n");
}

} // namespace
} // namespace kelmora::host

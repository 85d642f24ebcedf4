#pragma once

#include <chrono>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "host/checks/check_text.h"
#include "host/checks/child_run.h"
#include "host/path_text.h"
#include "platform/process.h"
#include "tests/host/fake_library_file.h"

namespace kelmora::host {

/// The built kelmora program, which lies beside the test program.
inline std::string KelmoraProgram()
{
    return TextOf(PathOf(platform::ProgramPath()).parent_path() / KELMORA_PROGRAM_FILE);
}

/// The variable of the environment that makes the fake library break one rule.
inline std::string FaultVariable(const std::string& fault)
{
    return "KELMORA_FAKE_FAULT=" + fault;
}

/// A rule that the fake library breaks, and the check that must see it.
struct FaultCase {
    const char* fault;
    const char* check;
    Outcome outcome = Outcome::Failed;
    bool mayCrash = false; ///< the fault writes where anything may lie
};

inline void PrintTo(const FaultCase& one, std::ostream* out)
{
    *out << one.fault << " seen by " << one.check;
}

/// Runs the check on the fake library with this fault, in a process of its own. No fault: an empty name.
inline CheckReport ReportWithFault(const std::string& check, const std::string& fault,
                                   std::chrono::milliseconds limit = kCheckLimit)
{
    ChildRun child;
    child.program = KelmoraProgram();
    child.file = kFakeLibrary;
    child.limit = limit;
    child.environment = {FaultVariable(fault)};
    return RunCheckInChild(child, check);
}

/// Whether the check sees the fault, and passes without it.
inline void ExpectSeen(const FaultCase& one)
{
    const CheckReport without = ReportWithFault(one.check, "");
    EXPECT_EQ(without, CheckReport{}) << testing::PrintToString(without.details);
    const CheckReport with = ReportWithFault(one.check, one.fault);
    const bool crashedAsItMay = one.mayCrash && with.outcome == Outcome::Crashed;
    EXPECT_TRUE(crashedAsItMay || with.outcome == one.outcome)
        << OutcomeText(with.outcome) << " " << testing::PrintToString(with.details);
    EXPECT_FALSE(with.details.empty());
}

/// The name of a test case: "NoTrust_GuardBytes".
inline std::string CaseName(const testing::TestParamInfo<FaultCase>& info)
{
    std::string name;
    bool isStart = true;
    for (const char letter : std::string(info.param.fault) + "_" + info.param.check) {
        if (letter != '-')
            name += isStart && letter >= 'a' ? static_cast<char>(letter - 'a' + 'A') : letter;
        isStart = letter == '-' || letter == '_';
    }
    return name;
}

} // namespace kelmora::host

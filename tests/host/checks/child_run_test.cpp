#include "host/checks/child_run.h"

#include <gtest/gtest.h>

#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

TEST(RunCheckInChild, CheckThatPasses_Passed)
{
    EXPECT_EQ(ReportWithFault("exports-present", ""), CheckReport{});
}

TEST(RunCheckInChild, CheckThatFails_BringsItsFindings)
{
    const CheckReport report = ReportWithFault("library-has-a-name", "library-without-name");
    EXPECT_EQ(report, (CheckReport{Outcome::Failed, {"the library has no name"}}));
}

TEST(RunCheckInChild, Crash_SaysHowAndWhere)
{
    const CheckReport report = ReportWithFault("index-far-past-end", "crashes-without-value");
    EXPECT_EQ(report.outcome, Outcome::Crashed);
    ASSERT_GE(report.details.size(), 2u);
    EXPECT_EQ(report.details[1], "at: Fake Blend");
}

TEST(RunCheckInChild, Hang_IsEndedAtTheLimit)
{
    const auto start = std::chrono::steady_clock::now();
    const CheckReport report =
        ReportWithFault("render-odd-knobs", "hangs-on-odd-knobs", std::chrono::milliseconds(1500));
    EXPECT_EQ(report.outcome, Outcome::TimedOut);
    ASSERT_GE(report.details.size(), 2u);
    EXPECT_EQ(report.details[0], "no end after 1500 ms");
    EXPECT_TRUE(report.details[1].starts_with("at: Fake Blend")) << report.details[1];
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(RunCheckInChild, ProgramThatIsNotThere_Failed)
{
    ChildRun child;
    child.program = "no/such/program";
    child.file = kFakeLibrary;
    const CheckReport report = RunCheckInChild(child, "exports-present");
    EXPECT_EQ(report.outcome, Outcome::Failed);
    ASSERT_EQ(report.details.size(), 1u);
    EXPECT_TRUE(report.details[0].starts_with("the process of the check did not start: "))
        << report.details[0];
}

TEST(RunCheckInChild, ProgramThatGivesNoReport_Crashed)
{
    const CheckReport report = ReportWithFault("no-such-check", "");
    EXPECT_EQ(report.outcome, Outcome::Crashed);
    EXPECT_EQ(report.details.front(), "it ended with code 3");
}

} // namespace
} // namespace kelmora::host

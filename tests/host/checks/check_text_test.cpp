#include "host/checks/check_text.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

TEST(ReportText, Passed_IsOneLine)
{
    EXPECT_EQ(ReportText("guard-bytes", {}), "passed     guard-bytes\n");
}

TEST(ReportText, Details_AreIndentedLines)
{
    EXPECT_EQ(ReportText("guard-bytes", {Outcome::TimedOut, {"one", "two\nlines"}}),
              "timed out  guard-bytes\n    one\n    two lines\n");
}

TEST(ParseReport, EveryOutcome_ReadsBack)
{
    for (const Outcome outcome :
         {Outcome::Passed, Outcome::Failed, Outcome::Skipped, Outcome::Crashed, Outcome::TimedOut}) {
        const CheckReport report{outcome, {"first", "second: with words"}};
        EXPECT_EQ(ParseReport(ReportText("guard-bytes", report), "guard-bytes"), report)
            << OutcomeText(outcome);
    }
}

TEST(ParseReport, OtherLines_AreNoPartOfIt)
{
    const std::string text = "a library's own words\r\n    indented\r\nfailed     guard-bytes\r\n    why\r\n"
                             "1 check: 0 passed, 1 failed\r\n    more\r\n";
    EXPECT_EQ(ParseReport(text, "guard-bytes"), (CheckReport{Outcome::Failed, {"why"}}));
}

TEST(ParseReport, NoReport_IsNothing)
{
    EXPECT_EQ(ParseReport("", "guard-bytes"), std::nullopt);
    EXPECT_EQ(ParseReport("passed     guard-bytes-and-more\n", "guard-bytes"), std::nullopt);
    EXPECT_EQ(ParseReport("passed     other\n", "guard-bytes"), std::nullopt);
}

} // namespace
} // namespace kelmora::host

#include "host/checks/check.h"

#include <algorithm>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

TEST(CheckRun, NothingFound_Passed)
{
    CheckRun run("file", 1);
    EXPECT_TRUE(run.Expect(true, "never seen"));
    EXPECT_EQ(run.Report(), CheckReport{});
}

TEST(CheckRun, Finding_HasItsPlace)
{
    CheckRun run("file", 1);
    EXPECT_FALSE(run.Expect(false, "no place yet"));
    run.At("Air Brush");
    run.Expect(false, "wrong");
    EXPECT_EQ(run.Report(), (CheckReport{Outcome::Failed, {"no place yet", "Air Brush: wrong"}}));
}

TEST(CheckRun, FindingsWithoutEnd_AreCut)
{
    CheckRun run("file", 1);
    for (int i = 0; i < 100; ++i)
        run.Expect(false, "again");
    EXPECT_EQ(run.Report().details.size(), CheckRun::kMostFindings);
}

TEST(CheckRun, Skipped_UnlessSomethingWasFound)
{
    CheckRun run("file", 1);
    run.Skip("nothing there");
    EXPECT_EQ(run.Report(), (CheckReport{Outcome::Skipped, {"nothing there"}}));
    run.Expect(false, "wrong");
    EXPECT_EQ(run.Report().outcome, Outcome::Failed);
}

TEST(CheckRun, Take_AddsTheFindingsOfAnother)
{
    CheckRun run("file", 1);
    CheckRun other("file", 1);
    other.At("thread 2");
    other.Expect(false, "wrong");
    run.Take(other);
    EXPECT_EQ(run.Report(), (CheckReport{Outcome::Failed, {"thread 2: wrong"}}));
}

TEST(CheckRun, Trace_GetsEveryPlace)
{
    std::ostringstream trace;
    CheckRun run("file", 1, &trace);
    run.At("here");
    run.At("there");
    EXPECT_EQ(trace.str(), "at: here\nat: there\n");
}

TEST(RunCheckHere, Exception_IsAFinding)
{
    const Check check{"throws", "It throws.", [](CheckRun&) { throw std::runtime_error("thrown"); }};
    EXPECT_EQ(RunCheckHere(check, CheckRun("file", 1)), (CheckReport{Outcome::Failed, {"thrown"}}));
}

TEST(AllChecks, NamesAndSentences_AreInTheirForm)
{
    std::set<std::string> names;
    for (const Check& check : AllChecks()) {
        const std::string name = check.name;
        EXPECT_TRUE(names.insert(name).second) << name << " is there twice";
        const auto isLetter = [](char letter) { return letter == '-' || (letter >= 'a' && letter <= 'z'); };
        EXPECT_TRUE(std::all_of(name.begin(), name.end(), isLetter)) << name;
        EXPECT_EQ(std::string(check.sentence).back(), '.') << name;
    }
    for (const char* const name : {"exports-present", "library-count-and-unload", "render-all-formats",
                                   "memory-provider-refuses", "guard-bytes", "two-threads-two-objects"})
        EXPECT_EQ(names.count(name), 1u) << name;
}

TEST(ForEachEffect, LibraryWithoutEffects_SkipsTheCheck)
{
    const CheckReport report = ReportWithFault("presets-in-range", "makes-no-effect");
    EXPECT_EQ(report, (CheckReport{Outcome::Skipped, {"the library makes no effect"}}));
}

TEST(ForEachEffect, EveryEffect_IsLookedAtWithItsFace)
{
    CheckRun run(kFakeLibrary, 1);
    std::vector<std::string> names;
    ForEachEffect(run, [&names](IEffectLibrary&, const EffectFace& face) { names.push_back(face.name); });
    EXPECT_EQ(names, (std::vector<std::string>{"Fake Blend", "Fake Filter"}));
}

} // namespace
} // namespace kelmora::host

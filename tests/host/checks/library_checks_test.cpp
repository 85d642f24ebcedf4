#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class LibraryChecks : public testing::TestWithParam<FaultCase> {};

TEST_P(LibraryChecks, BrokenRule_IsSeen)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"library-without-name", "library-has-a-name"},    {"always-unload", "library-count-and-unload"},
    {"never-unload", "library-count-and-unload"},      {"one-library-for-all", "library-count-and-unload"},
    {"effects-keep-file", "library-count-and-unload"}, {"looks-at-low-byte", "unknown-number-is-null"},
    {"gives-no-library", "library-has-a-name"},
};

INSTANTIATE_TEST_SUITE_P(Fault, LibraryChecks, testing::ValuesIn(kCases), CaseName);

CheckReport ExportsOf(const std::string& file)
{
    ChildRun child;
    child.program = KelmoraProgram();
    child.file = file;
    return RunCheckInChild(child, "exports-present");
}

TEST(ExportsPresent, FileWithoutThem_FailsByBothNames)
{
    EXPECT_EQ(ExportsOf(kEmptyLibrary),
              (CheckReport{Outcome::Failed,
                           {"GetEffectsLibrary is not exported", "CanUnloadDLLNow is not exported"}}));
    EXPECT_EQ(ExportsOf(kFakeLibrary), CheckReport{});
}

TEST(ExportsPresent, FileThatIsNoModule_Fails)
{
    const CheckReport report = ExportsOf(__FILE__);
    EXPECT_EQ(report.outcome, Outcome::Failed);
    ASSERT_EQ(report.details.size(), 1u);
    EXPECT_TRUE(report.details[0].starts_with("the file does not load: ")) << report.details[0];
}

} // namespace
} // namespace kelmora::host

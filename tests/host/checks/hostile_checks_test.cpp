#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class HostileChecks : public testing::TestWithParam<FaultCase> {};

TEST_P(HostileChecks, BrokenRule_IsSeen)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"true-without-pictures", "render-without-pictures"},
    {"crashes-without-pictures", "render-without-pictures", Outcome::Crashed},
    {"trusts-format", "render-bad-records", Outcome::Failed, true},
    {"trusts-format", "render-mixed-formats", Outcome::Failed, true},
    {"trusts-choice", "render-odd-knobs", Outcome::Crashed},
};

INSTANTIATE_TEST_SUITE_P(Fault, HostileChecks, testing::ValuesIn(kCases), CaseName);

} // namespace
} // namespace kelmora::host

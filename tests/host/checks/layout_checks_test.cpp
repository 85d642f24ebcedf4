#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class LayoutChecks : public testing::TestWithParam<FaultCase> {};

TEST_P(LayoutChecks, BrokenRule_IsSeen)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"crashes-on-one-pixel", "render-odd-sizes", Outcome::Crashed},
    {"writes-behind-picture", "render-odd-sizes", Outcome::Failed, true},
    {"forgets-what-is-up", "render-negative-stride"},
    {"uses-input-size", "render-smaller-output", Outcome::Failed, true},
    {"fills-whole-output", "render-smaller-output"},
    {"assumes-tight-rows", "guard-bytes"},
    {"writes-slack", "guard-bytes"},
};

INSTANTIATE_TEST_SUITE_P(Fault, LayoutChecks, testing::ValuesIn(kCases), CaseName);

} // namespace
} // namespace kelmora::host

#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class ObjectChecks : public testing::TestWithParam<FaultCase> {};

TEST_P(ObjectChecks, BrokenRule_IsSeen)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"accepts-any-interface", "interface-asked-twice-is-same"},
    {"compares-half-the-id", "interface-asked-twice-is-same"},
    {"refusal-leaves-pointer", "interface-asked-twice-is-same"},
    {"shrugs-without-place", "interface-asked-twice-is-same"},
    {"crashes-without-place", "interface-asked-twice-is-same", Outcome::Crashed},
    {"view-with-own-identity", "interface-asked-twice-is-same"},
    {"view-counts-apart", "reference-counts-balance"},
    {"addref-gives-old-count", "reference-counts-balance"},
    {"render-counts-itself", "reference-counts-balance"},
    {"query-forgets-to-count", "reference-counts-balance", Outcome::Failed, true},
};

INSTANTIATE_TEST_SUITE_P(Fault, ObjectChecks, testing::ValuesIn(kCases), CaseName);

} // namespace
} // namespace kelmora::host

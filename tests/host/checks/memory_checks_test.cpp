#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class MemoryChecks : public testing::TestWithParam<FaultCase> {};

TEST_P(MemoryChecks, BrokenRule_IsSeen)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"ignores-provider", "memory-provider-used-and-returned"},
    {"forgets-memory", "memory-provider-used-and-returned"},
    {"frees-by-other-function", "memory-provider-used-and-returned"},
    {"holds-provider", "memory-provider-used-and-returned"},
    {"writes-past-memory", "memory-provider-used-and-returned", Outcome::Failed, true},
    {"trusts-answer", "memory-provider-used-and-returned"},
    {"uses-new-memory", "memory-content-does-not-matter"},
    {"loses-memory-when-refused", "memory-provider-refuses"},
    {"trusts-memory", "memory-provider-refuses", Outcome::Crashed},
    {"keeps-host", "host-not-kept"},
    {"calls-host-at-end", "host-not-kept"},
    {"holds-host", "host-not-kept"},
};

INSTANTIATE_TEST_SUITE_P(Fault, MemoryChecks, testing::ValuesIn(kCases), CaseName);

} // namespace
} // namespace kelmora::host

#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class ThreadChecks : public testing::TestWithParam<FaultCase> {};

TEST_P(ThreadChecks, BrokenRule_IsSeen)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"minds-the-thread", "two-threads-two-objects"},
    {"counts-on-one-thread", "counts-from-two-threads"},
};

INSTANTIATE_TEST_SUITE_P(Fault, ThreadChecks, testing::ValuesIn(kCases), CaseName);

} // namespace
} // namespace kelmora::host

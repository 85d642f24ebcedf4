#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class ProcessorChecks : public testing::TestWithParam<FaultCase> {};

TEST_P(ProcessorChecks, BrokenRule_IsSeen)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"processor-writes-behind-rows", "processor-copies-and-flips"},
    {"processor-flips-but-one", "processor-copies-and-flips"},
    {"processor-reverses-three", "processor-copies-and-flips"},
    {"processor-resizes-late", "processor-resizes"},
    {"processor-writes-odd-pairs", "processor-converts"},
    {"processor-shows-older-frame", "processor-converts"},
    {"processor-true-for-null", "processor-null-records"},
    {"processor-trusts-records", "processor-bad-records", Outcome::Failed, true},
};

INSTANTIATE_TEST_SUITE_P(Fault, ProcessorChecks, testing::ValuesIn(kCases), CaseName);

} // namespace
} // namespace kelmora::host

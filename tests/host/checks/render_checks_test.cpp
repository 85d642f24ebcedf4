#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class RenderChecks : public testing::TestWithParam<FaultCase> {};

TEST_P(RenderChecks, BrokenRule_IsSeen)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"leaves-last-row", "render-all-formats"},
    {"refuses-argb32f", "render-all-formats"},
    {"not-a-number", "render-all-formats"},
    {"refuses-last-preset", "render-every-preset"},
    {"counts-frames", "render-is-repeatable"},
    {"remembers-last-frame", "render-out-of-order"},
    {"reads-reserved", "unread-bytes-do-not-matter"},
    {"reads-unused-info", "unread-bytes-do-not-matter"},
    {"takes-bottom-up-as-1", "unread-bytes-do-not-matter"},
    {"any-flag-is-field", "unread-bytes-do-not-matter"},
    {"alpha-is-always-full", "output-alpha-is-the-inputs"},
};

INSTANTIATE_TEST_SUITE_P(Fault, RenderChecks, testing::ValuesIn(kCases), CaseName);

} // namespace
} // namespace kelmora::host

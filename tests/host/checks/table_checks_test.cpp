#include "tests/host/checks/fault_run.h"

namespace kelmora::host {
namespace {

class TableChecks : public testing::TestWithParam<FaultCase> {};

TEST_P(TableChecks, BrokenRule_IsSeen)
{
    ExpectSeen(GetParam());
}

constexpr FaultCase kCases[] = {
    {"knobs-without-end", "knobs-walk-ends"},
    {"presets-without-end", "knobs-walk-ends"},
    {"gap-in-knobs", "knobs-walk-ends"},
    {"walk-differs", "knobs-walk-ends"},
    {"signed-index", "index-far-past-end"},
    {"past-end-writes", "index-far-past-end"},
    {"preset-past-end-writes", "index-far-past-end"},
    {"tips-without-end", "index-far-past-end"},
    {"crashes-without-value", "index-far-past-end", Outcome::Crashed},
    {"name-without-end", "names-fit-records"},
    {"choice-name-without-end", "names-fit-records"},
    {"hidden-knob", "records-are-filled"},
    {"unknown-kind", "records-are-filled"},
    {"scale-upside-down", "records-are-filled"},
    {"writes-reserved-bytes", "untouched-fields-stay"},
    {"writes-other-view", "untouched-fields-stay"},
    {"writes-past-record", "untouched-fields-stay", Outcome::Failed, true},
    {"writes-preset-kind", "untouched-fields-stay"},
    {"preset-out-of-range", "presets-in-range"},
    {"default-out-of-range", "presets-in-range"},
};

INSTANTIATE_TEST_SUITE_P(Fault, TableChecks, testing::ValuesIn(kCases), CaseName);

} // namespace
} // namespace kelmora::host

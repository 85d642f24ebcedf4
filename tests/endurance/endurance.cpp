// endurance [RENDERS [SEED]]: a host's long day in one process. Prints one line; fails when anything has grown.

#include <cstdio>
#include <cstdlib>

#include "tests/endurance/endurance_run.h"

int main(int argc, char** argv)
{
    using namespace kelmora;
    const std::uint64_t renders = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 100'000;
    const std::uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
    const EnduranceReport report = Endure(PlanOf(renders, seed));
    std::printf("%s\n", TextOf(report).c_str());
    for (const std::string& look : report.unequal)
        std::printf("another first picture %s\n", look.c_str());
    const bool holds = report.looks > 0 && report.unequal.empty() && report.openBlocks == 0
        && std::abs(report.heapGrowth) <= 4096 && report.residentGrowth <= 256 * 1024
        && report.handleGrowth == 0;
    return holds ? EXIT_SUCCESS : EXIT_FAILURE;
}

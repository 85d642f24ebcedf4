#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelmora {

/// How long to go on, and when to look.
struct EndurancePlan {
    std::uint64_t renders;
    std::uint64_t settled; ///< renders after which memory must not grow any more
    std::uint64_t every;   ///< renders between two looks
    std::uint64_t seed;
};

/// A look after each hundredth of `renders`; the process has settled after 5,000, or a quarter of fewer.
EndurancePlan PlanOf(std::uint64_t renders, std::uint64_t seed);

/// What came of it.
struct EnduranceReport {
    std::uint64_t renders = 0;
    std::uint64_t objects = 0; ///< made and released
    std::uint64_t refused = 0; ///< allocations
    std::uint64_t looks = 0;   ///< with every object released
    std::int64_t openBlocks =
        0; ///< most of operator new and of the host's memory, over those of the first look
    std::int64_t heapGrowth = 0;      ///< largest change of the heap's bytes since the process had settled
    std::int64_t residentGrowth = 0;  ///< largest since then
    std::int64_t handleGrowth = 0;    ///< largest change since then
    std::vector<std::string> unequal; ///< looks at which the first render gave another picture
};

/// Renders with all effects that a library makes, and Pixelator, in one process: any preset, format and size from
/// 16 to 160, one render in 50 with a refused allocation, objects made and released in between.
EnduranceReport Endure(const EndurancePlan& plan);

/// One line.
std::string TextOf(const EnduranceReport& report);

} // namespace kelmora

#pragma once

#include <initializer_list>
#include <string>
#include <utility>

#include "bench/frame_bench.h"

namespace kelmora::bench {

// What our operations and OpenCV's are both timed at, under names that sort side by side.

inline constexpr int kOperationWidth = 1920, kOperationHeight = 1080;

/// Radii of the median: masks of 15 and of 55 pixels.
inline constexpr std::int64_t kMedianRadii[] = {7, 27};

/// Taps of the tent in both directions.
inline constexpr std::int64_t kTentTaps[] = {21, 44, 100};

/// Registers `work` with each argument as "NAME/MAKER/argument".
template <class Arguments, class Work>
void RegisterOperation(const char* name, const char* maker, const Arguments& arguments, Work work)
{
    auto* const entry =
        benchmark::RegisterBenchmark((std::string(name) + "/" + maker).c_str(), std::move(work));
    for (const std::int64_t argument : arguments)
        entry->Arg(argument);
    entry->Unit(benchmark::kMillisecond);
}

} // namespace kelmora::bench

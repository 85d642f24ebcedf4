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

/// An affine map, and a perspective one, from a picture to the result.
struct Move {
    const char* name;
    double rows[2][3];
};

inline constexpr Move kMoves[] = {
    {"Affine rotated", {{1.0645, -0.2270, 60.5}, {0.2270, 1.0645, -250.25}}}, // 12 degrees, 1.09 fold
    {"Zoom", {{1.1, 0, -96.3}, {0, 1.1, -54.7}}},
    {"Shift", {{1, 0, 10.3}, {0, 1, -6.6}}},
};

/// Where the picture's corners come to stand.
inline constexpr double kQuad[4][2] = {{110.5, 60.25}, {1790.3, -30.1}, {1650.7, 1040.9}, {240.2, 1120.6}};

/// A picture that the cubic resize makes 1.5 times as wide and high.
inline constexpr int kSmallWidth = 1280, kSmallHeight = 720;

struct PictureKind {
    const char* name;
    std::uint32_t format;
};

inline constexpr PictureKind kPictureKinds[] = {{"bgra8", PF_BGRA8}, {"bgra32f", PF_BGRA32F}};

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

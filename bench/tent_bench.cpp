// The tent filter alone: its price must not grow with the number of taps.

#include <cstring>

#include "bench/frame_bench.h"
#include "image/tent_filter.h"

namespace kelmora::bench {
namespace {

void Tent(benchmark::State& state, std::uint32_t format)
{
    constexpr int width = 1920, height = 1080;
    Frame picture(width, height, format), result(width, height, format);
    const VideoFrame record = picture.Record(), resultRecord = result.Record();
    FrameBuffer src, dst;
    src.AttachFrame(&record);
    dst.AttachFrame(&resultRecord);
    TentJob job;
    job.size = {width, height};
    job.rowTaps = job.columnTaps = static_cast<int>(state.range(0));
    job.padWidth = job.padHeight = job.rowTaps / 2 * 2;
    MemoryAllocator allocator;
    Measure(state, width, height, [&] {
        FilterTentRows(src, job, allocator, [&](int y, const std::uint8_t* row) {
            std::memcpy(dst.PixelAddress(0, y, 0), row, static_cast<std::size_t>(dst.GetStride()));
        });
    });
}

BENCHMARK_CAPTURE(Tent, bytes, PF_BGRA8)
    ->Arg(21)
    ->Arg(44)
    ->Arg(100)
    ->Arg(178)
    ->Arg(216)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Tent, floats, PF_BGRA32F)->Arg(21)->Arg(100)->Arg(216)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelmora::bench

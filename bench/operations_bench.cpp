// Operations on whole pictures; opencv_bench.cpp has OpenCV's for the same work.

#include "bench/operations_bench.h"
#include "image/image_ops.h"
#include "image/primitives/median.h"
#include "image/primitives/pad.h"

namespace kelmora::bench {
namespace {

constexpr int kWidth = kOperationWidth, kHeight = kOperationHeight;

/// The padding is part of the work: a median needs it, and OpenCV's sees to its own.
void Median(benchmark::State& state, Content content)
{
    const int radius = static_cast<int>(state.range(0));
    const int padWidth = kWidth + 2 * radius, padHeight = kHeight + 2 * radius;
    const int step = kWidth * 4, padStep = padWidth * 4;
    Frame picture(kWidth, kHeight, PF_BGRA8, content), padded(padWidth, padHeight, PF_BGRA8),
        result(kWidth, kHeight, PF_BGRA8);
    const std::uint8_t* const middle = padded.Bytes().data() + radius * padStep + radius * 4;
    Measure(state, kWidth, kHeight, [&] {
        pxPadReplicate_8u_C4(picture.Bytes().data(), step, kWidth, kHeight, padded.Bytes().data(), padStep,
                             padWidth, padHeight, radius, radius);
        pxMedian_8u_A3(middle, padStep, result.Bytes().data(), step, kWidth, kHeight, 2 * radius + 1,
                       2 * radius + 1, radius, radius);
    });
}

void Tent(benchmark::State& state, std::uint32_t format)
{
    Frame picture(kWidth, kHeight, format, Content::Scene), result(kWidth, kHeight, format);
    const VideoFrame record = picture.Record(), resultRecord = result.Record();
    FrameBuffer src, dst;
    src.AttachFrame(&record);
    dst.AttachFrame(&resultRecord);
    const auto taps = static_cast<float>(state.range(0));
    MemoryAllocator allocator;
    ImageOps ops;
    Measure(state, kWidth, kHeight, [&] { ops.Blur(src, dst, taps, taps, &allocator, true); });
}

void WeightedSum(benchmark::State& state, std::uint32_t format)
{
    Frame first(kWidth, kHeight, format, Content::Scene), second(kWidth, kHeight, format, Content::Scene, 2),
        result(kWidth, kHeight, format);
    const VideoFrame firstRecord = first.Record(), secondRecord = second.Record(),
                     resultRecord = result.Record();
    FrameBuffer a, b, out;
    a.AttachFrame(&firstRecord);
    b.AttachFrame(&secondRecord);
    out.AttachFrame(&resultRecord);
    ImageOps ops;
    Measure(state, kWidth, kHeight, [&] { ops.AddWeighted(a, b, out, 0.3f, 0.7f); });
}

const bool g_registered = [] {
    constexpr std::initializer_list<std::int64_t> none = {};
    const char* const maker = "Kelmora";
    RegisterOperation("Median of a scene", maker, kMedianRadii,
                      [](benchmark::State& state) { Median(state, Content::Scene); });
    RegisterOperation("Median of noise", maker, kMedianRadii,
                      [](benchmark::State& state) { Median(state, Content::Noise); });
    RegisterOperation("Tent bgra8", maker, kTentTaps, [](benchmark::State& state) { Tent(state, PF_BGRA8); });
    RegisterOperation("Tent bgra32f", maker, kTentTaps,
                      [](benchmark::State& state) { Tent(state, PF_BGRA32F); });
    RegisterOperation("Weighted sum bgra8", maker, none,
                      [](benchmark::State& state) { WeightedSum(state, PF_BGRA8); });
    RegisterOperation("Weighted sum bgra32f", maker, none,
                      [](benchmark::State& state) { WeightedSum(state, PF_BGRA32F); });
    return true;
}();

} // namespace
} // namespace kelmora::bench

// Operations on whole pictures; opencv_bench.cpp has OpenCV's for the same work.

#include "bench/operations_bench.h"
#include "image/image_ops.h"
#include "image/primitives/median.h"
#include "image/primitives/pad.h"
#include "image/primitives/warp.h"

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

constexpr PxRect kWhole = {0, 0, kWidth, kHeight};

void Affine(benchmark::State& state, std::uint32_t format, const Move& move)
{
    Frame picture(kWidth, kHeight, format, Content::Scene), result(kWidth, kHeight, format);
    const int step = picture.Record().stride;
    const auto run = [&](auto warp, const auto* src, auto* dst) {
        Measure(state, kWidth, kHeight,
                [&] { warp(src, kWidth, kHeight, step, kWhole, dst, step, kWhole, move.rows, pxLinear); });
    };
    std::uint8_t *const src = picture.Bytes().data(), *const dst = result.Bytes().data();
    if (format == PF_BGRA8)
        run(pxWarpAffine_8u_C4, src, dst);
    else
        run(pxWarpAffine_32f_C4, reinterpret_cast<const float*>(src), reinterpret_cast<float*>(dst));
}

void Perspective(benchmark::State& state, std::uint32_t format)
{
    Frame picture(kWidth, kHeight, format, Content::Scene), result(kWidth, kHeight, format);
    const VideoFrame record = picture.Record(), resultRecord = result.Record();
    FrameBuffer src, dst;
    src.AttachFrame(&record);
    dst.AttachFrame(&resultRecord);
    ImageOps ops;
    Measure(state, kWidth, kHeight, [&] { ops.WarpQuad(src, dst, kQuad, pxLinear); });
}

void CubicResize(benchmark::State& state, std::uint32_t format)
{
    Frame picture(kSmallWidth, kSmallHeight, format, Content::Scene), result(kWidth, kHeight, format);
    const VideoFrame record = picture.Record(), resultRecord = result.Record();
    FrameBuffer src, dst;
    src.AttachFrame(&record);
    dst.AttachFrame(&resultRecord);
    ImageOps ops;
    constexpr int cubic = 2; // of the qualities
    Measure(state, kWidth, kHeight, [&] {
        ops.ResizeRect(src, dst, 0, 0, kSmallWidth, kSmallHeight, 0, 0, kWidth, kHeight, cubic, 0.0, 0.0);
    });
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
    for (const PictureKind& kind : kPictureKinds) {
        const auto named = [&kind](const char* name) { return std::string(name) + " " + kind.name; };
        const std::uint32_t format = kind.format;
        for (const Move& move : kMoves)
            RegisterOperation(named(move.name).c_str(), maker, none,
                              [format, &move](benchmark::State& state) { Affine(state, format, move); });
        RegisterOperation(named("Perspective").c_str(), maker, none,
                          [format](benchmark::State& state) { Perspective(state, format); });
        RegisterOperation(named("Cubic resize").c_str(), maker, none,
                          [format](benchmark::State& state) { CubicResize(state, format); });
    }
    return true;
}();

} // namespace
} // namespace kelmora::bench

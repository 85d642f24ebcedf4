// OpenCV, on one thread, at the work of operations_bench.cpp.

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/operations_bench.h"
#include "image/tent_kernel.h"

namespace kelmora::bench {
namespace {

constexpr int kWidth = kOperationWidth, kHeight = kOperationHeight;

/// The frame as OpenCV sees it.
cv::Mat MatOf(Frame& frame)
{
    const VideoFrame record = frame.Record();
    return cv::Mat(record.height, record.width, record.pixelBytes == 16 ? CV_32FC4 : CV_8UC4, record.data,
                   static_cast<std::size_t>(record.stride));
}

/// Three channels: the fourth is not asked for.
void Median(benchmark::State& state, Content content)
{
    const int radius = static_cast<int>(state.range(0));
    Frame picture(kWidth, kHeight, PF_BGRA8, content);
    cv::Mat src, dst;
    cv::cvtColor(MatOf(picture), src, cv::COLOR_BGRA2BGR);
    Measure(state, kWidth, kHeight, [&] { cv::medianBlur(src, dst, 2 * radius + 1); });
}

void Tent(benchmark::State& state, std::uint32_t format)
{
    const int taps = static_cast<int>(state.range(0));
    Frame picture(kWidth, kHeight, format, Content::Scene), result(kWidth, kHeight, format);
    const cv::Mat src = MatOf(picture);
    cv::Mat dst = MatOf(result);
    std::vector<float> kernel(static_cast<std::size_t>(taps));
    MakeTentKernelF(kernel.data(), taps);
    Measure(state, kWidth, kHeight, [&] {
        cv::sepFilter2D(src, dst, -1, kernel, kernel, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
    });
}

void WeightedSum(benchmark::State& state, std::uint32_t format)
{
    Frame first(kWidth, kHeight, format, Content::Scene), second(kWidth, kHeight, format, Content::Scene, 2),
        result(kWidth, kHeight, format);
    const cv::Mat a = MatOf(first), b = MatOf(second);
    cv::Mat out = MatOf(result);
    Measure(state, kWidth, kHeight, [&] { cv::addWeighted(a, 0.3, b, 0.7, 0, out); });
}

void Affine(benchmark::State& state, std::uint32_t format, const Move& move)
{
    Frame picture(kWidth, kHeight, format, Content::Scene), result(kWidth, kHeight, format);
    const cv::Mat src = MatOf(picture);
    cv::Mat dst = MatOf(result);
    const cv::Matx23d map(&move.rows[0][0]);
    Measure(state, kWidth, kHeight,
            [&] { cv::warpAffine(src, dst, map, dst.size(), cv::INTER_LINEAR, cv::BORDER_TRANSPARENT); });
}

void Perspective(benchmark::State& state, std::uint32_t format)
{
    Frame picture(kWidth, kHeight, format, Content::Scene), result(kWidth, kHeight, format);
    const cv::Mat src = MatOf(picture);
    cv::Mat dst = MatOf(result);
    const cv::Point2f from[] = {{0, 0}, {kWidth - 1, 0}, {kWidth - 1, kHeight - 1}, {0, kHeight - 1}};
    cv::Point2f to[4];
    for (int i = 0; i < 4; ++i)
        to[i] = {static_cast<float>(kQuad[i][0]), static_cast<float>(kQuad[i][1])};
    const cv::Mat map = cv::getPerspectiveTransform(from, to);
    Measure(state, kWidth, kHeight, [&] {
        cv::warpPerspective(src, dst, map, dst.size(), cv::INTER_LINEAR, cv::BORDER_TRANSPARENT);
    });
}

void CubicResize(benchmark::State& state, std::uint32_t format)
{
    Frame picture(kSmallWidth, kSmallHeight, format, Content::Scene), result(kWidth, kHeight, format);
    const cv::Mat src = MatOf(picture);
    cv::Mat dst = MatOf(result);
    Measure(state, kWidth, kHeight, [&] { cv::resize(src, dst, dst.size(), 0, 0, cv::INTER_CUBIC); });
}

const bool g_registered = [] {
    constexpr std::initializer_list<std::int64_t> none = {};
    const char* const maker = "OpenCV";
    cv::setNumThreads(1);
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

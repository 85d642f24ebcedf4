// Whole effects as a host calls them.

#include "bench/frame_bench.h"
#include "image/primitives/cpu_variant.h"
#include "library/effect_numbers.h"

namespace kelmora::bench {
namespace {

/// An effect, set.
struct Case {
    const char* name;
    EffectId effectId;
    std::vector<std::uint32_t> knobs;
    Content content = Content::Scene;
    double progress = 0.0;
};

void RenderEffect(benchmark::State& state, const Case& work, std::uint32_t format, CpuVariant variant)
{
    IVideoEffect* const effect = CreateEffectOfNumber(work.effectId);
    if (!effect) {
        state.SkipWithError("the library does not have this effect");
        return;
    }
    if (!IsAvailable(variant)) {
        state.SkipWithError("this processor lacks the instruction set");
        effect->Release();
        return;
    }
    const CpuVariant before = CurrentVariant();
    UseVariant(variant);
    const int width = static_cast<int>(state.range(0)), height = static_cast<int>(state.range(1));
    Frame picture(width, height, format, work.content), other(width, height, format, work.content, 2),
        output(width, height, format);
    VideoFrame first = picture.Record(), second = other.Record(), out = output.Record();
    RenderInfo info = {};
    info.progress = work.progress;
    Host host(work.knobs);
    Measure(state, width, height, [&] { effect->Render(&host, &first, &second, &out, &info); });
    effect->Release();
    UseVariant(before);
}

const std::vector<std::vector<std::int64_t>> kSizes = {{1280, 720}, {1920, 1080}, {3840, 2160}};

void Register(const Case& work)
{
    struct Named {
        const char* name;
        CpuVariant variant;
    };
    constexpr Named variants[] = {
        {"avx512", CpuVariant::Avx512}, {"avx2", CpuVariant::Avx2}, {"sse2", CpuVariant::Baseline}};
    struct Format {
        const char* name;
        std::uint32_t format;
    };
    constexpr Format formats[] = {{"bgra8", PF_BGRA8}, {"argb8", PF_ARGB8}, {"bgra32f", PF_BGRA32F}};
    for (const Named& variant : variants)
        for (const Format& format : formats)
            for (const auto& size : kSizes)
                benchmark::RegisterBenchmark(
                    (std::string(work.name) + "/" + format.name + "/" + variant.name).c_str(),
                    [=](benchmark::State& state) {
                        RenderEffect(state, work, format.format, variant.variant);
                    })
                    ->Args(size)
                    ->Unit(benchmark::kMillisecond);
}

const bool g_registered = [] {
    Register({"Air Brush half spray", EffectAirBrush, Levels({0.5f, 0.5f}), Content::Noise});
    Register({"Air Brush full spray", EffectAirBrush, Levels({1.0f, 0.5f}), Content::Noise});
    Register({"Detail Enhancer", EffectDetailEnhancer, Levels({0.5f}), Content::Noise});
    // Color, Brightness, Contrast, Brush Width, Blend: at 1080 rows two medians of radius 27.
    Register({"Water Color", EffectWaterColor, Levels({0.69f, 0.435f, 0.64f, 1.0f, 0.885f})});
    // Soften, Fog, Brightness, Color, as a user finds them, at the moment of the widest blur.
    Register({"Color Melt", EffectColorMelt, Levels({0.565f, 0.99f, 0.54f, 0.24f}), Content::Scene, 0.5});
    // Eight sheets, each with a shadow.
    std::vector<std::uint32_t> collage =
        Levels({0.39f, 1.0f, 0.76f, 0.76f});                              // Rounding, Layers, Shadow, Angle
    collage.insert(collage.end(), {0x44FEFE, 0x400080, FloatWord(1.0f)}); // colours, Blend Colors
    Register({"Paper Collage", EffectPaperCollage, collage, Content::Scene, 0.5});
    return true;
}();

} // namespace
} // namespace kelmora::bench

// Whole effects as a host calls them.

#include "bench/frame_bench.h"
#include "image/primitives/cpu_variant.h"
#include "library/effect_numbers.h"

namespace kelmora::bench {
namespace {

void RenderEffect(benchmark::State& state, EffectId effectId, std::uint32_t format, std::vector<float> levels,
                  CpuVariant variant)
{
    if (!IsAvailable(variant)) {
        state.SkipWithError("this processor lacks the instruction set");
        return;
    }
    const CpuVariant before = CurrentVariant();
    UseVariant(variant);
    const int width = static_cast<int>(state.range(0)), height = static_cast<int>(state.range(1));
    Frame picture(width, height, format), output(width, height, format);
    VideoFrame first = picture.Record(), out = output.Record();
    RenderInfo info = {};
    Host host(std::move(levels));
    IVideoEffect* effect = CreateEffectOfNumber(effectId);
    Measure(state, width, height, [&] { effect->Render(&host, &first, nullptr, &out, &info); });
    effect->Release();
    UseVariant(before);
}

const std::vector<std::vector<std::int64_t>> kSizes = {{1280, 720}, {1920, 1080}, {3840, 2160}};

void Register(const char* name, EffectId effectId, const std::vector<float>& levels)
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
                    (std::string(name) + "/" + format.name + "/" + variant.name).c_str(),
                    [=](benchmark::State& state) {
                        RenderEffect(state, effectId, format.format, levels, variant.variant);
                    })
                    ->Args(size)
                    ->Unit(benchmark::kMillisecond);
}

const bool g_registered = [] {
    Register("Air Brush half spray", EffectAirBrush, {0.5f, 0.5f});
    Register("Air Brush full spray", EffectAirBrush, {1.0f, 0.5f});
    Register("Detail Enhancer", EffectDetailEnhancer, {0.5f});
    return true;
}();

} // namespace
} // namespace kelmora::bench

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
    double time = 0.0;
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
    info.time = work.time;
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
    // Blur, Angle, Direction: streaks both ways, as long as they get, of both pictures.
    Register({"Smear", EffectSmear, Levels({1.0f, 0.0f, 0.5f}), Content::Scene, 0.5});
    // Horizontal, Vertical, Crop, Rate, Jitter, Blur, as a user finds them, in mid-move.
    Register({"Active Camera", EffectActiveCamera, Levels({0.2f, 0.5f, 0.18f, 0.9f, 0.5f, 0.505f}),
              Content::Scene, 0.0, 1.3});
    // Horiz Crop, Vert Crop, Feather, Crop Style.
    Register({"Crop Borders scale", EffectCropBorders, Levels({0.75f, 0.75f, 0.02f, 0.0f})});
    std::vector<std::uint32_t> overlay = Levels({1.0f, 1.0f, 0.835f});
    overlay.push_back(1);
    Register({"Crop Borders overlay", EffectCropBorders, overlay});
    // Columns, Rows, Direction, Reverse.
    Register({"3D Confetti 6x4", Effect3DConfetti, Levels({0.27f, 0.16f, 0.0f, 0.0f}), Content::Scene, 0.5});
    Register({"3D Confetti 20x20", Effect3DConfetti, Levels({1.0f, 1.0f, 0.0f, 0.0f}), Content::Scene, 0.5});
    // Slices, Depth, Orientation, Rotate right, Spread, Fog, Shine, Background; both glows, and neither.
    Register({"3D Pizza Boxes glowing", Effect3DPizzaBoxes,
              Levels({0.43f, 0.51f, 0.0f, 0.0f, 0.0f, 0.45f, 0.5f, 0.0f}), Content::Scene, 0.5});
    Register({"3D Pizza Boxes", Effect3DPizzaBoxes,
              Levels({0.43f, 0.51f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f}), Content::Scene, 0.5});
    return true;
}();

} // namespace
} // namespace kelmora::bench

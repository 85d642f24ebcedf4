#include "tests/golden/golden_cases.h"

#include "tests/golden/effect_presets.h"

namespace kelmora {
namespace {

struct PresetCase {
    bool wrapped;
    std::string name;
    std::vector<float> knobs;
    float inner[2];
};

std::vector<PresetCase> AirBrushCases()
{
    std::vector<PresetCase> cases;
    for (const bool wrapped : {false, true})
        for (const PresetRow& row : kAirBrushPresets)
            cases.push_back({wrapped,
                             std::string(wrapped ? "CWrapAirbrush: " : "CAirbrush: ") + row.name,
                             {row.first, row.second},
                             {row.first, row.second}});
    return cases;
}

std::vector<PresetCase> DetailEnhancerCases()
{
    std::vector<PresetCase> cases;
    for (const PresetRow& row : kDetailEnhancerPresets)
        cases.push_back({false,
                         std::string("CUnsharpMask: ") + row.name,
                         {row.first, row.second},
                         {row.first, row.second}});
    for (const PresetRow& row : kWrapDetailEnhancerPresets)
        cases.push_back({true,
                         std::string("CWrapDetailEnhancer: ") + row.name,
                         {row.first},
                         {kWrapDetailEnhancerDefinition, row.first}});
    return cases;
}

} // namespace

std::string GoldenCase::Picture() const
{
    return std::string(Name(motif)) + "-" + std::to_string(width) + "x" + std::to_string(height);
}

std::vector<GoldenCase> GoldenCases(std::string_view effect, bool floats)
{
    constexpr std::int32_t sizes[][2] = {{64, 48}, {61, 47}};
    const std::vector<PresetCase> presets = effect == "air_brush" ? AirBrushCases() : DetailEnhancerCases();
    std::vector<GoldenCase> cases;
    for (const Motif motif : {Motif::Moving, Motif::AlphaRamp})
        for (const auto& size : sizes)
            for (const std::uint32_t format : kPictureFormats)
                if (IsFloatFormat(format) == floats)
                    for (const PresetCase& preset : presets)
                        cases.push_back({motif,
                                         size[0],
                                         size[1],
                                         format,
                                         preset.wrapped,
                                         preset.name,
                                         preset.knobs,
                                         {preset.inner[0], preset.inner[1]}});
    return cases;
}

} // namespace kelmora

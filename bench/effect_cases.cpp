#include "bench/effect_cases.h"

#include <initializer_list>

namespace kelmora::bench {
namespace {

/// The words of knobs that are levels.
std::vector<std::uint32_t> Levels(std::initializer_list<float> levels,
                                  std::initializer_list<std::uint32_t> others = {})
{
    std::vector<std::uint32_t> words;
    for (const float level : levels)
        words.push_back(FloatWord(level));
    words.insert(words.end(), others);
    return words;
}

std::vector<EffectCase> MakeCases()
{
    return {
        {"Air Brush, half spray", EffectAirBrush, Levels({0.5f, 0.5f})},
        {"Air Brush, full spray", EffectAirBrush, Levels({1.0f, 0.5f})},
        {"Detail Enhancer", EffectDetailEnhancer, Levels({0.5f})},
        // Color, Brightness, Contrast, Brush Width, Blend: at 1080 rows two medians of radius 27.
        {"Water Color", EffectWaterColor, Levels({0.69f, 0.435f, 0.64f, 1.0f, 0.885f})},
        // Horizontal, Vertical, Crop, Rate, Jitter, Blur, as a user finds them, in mid-move.
        {"Active Camera", EffectActiveCamera, Levels({0.2f, 0.5f, 0.18f, 0.9f, 0.5f, 0.505f}), Content::Scene,
         0.0, 1.3},
        // Horiz Crop, Vert Crop, Feather, Crop Style.
        {"Crop Borders, scale", EffectCropBorders, Levels({0.75f, 0.75f, 0.02f}, {0})},
        {"Crop Borders, overlay", EffectCropBorders, Levels({1.0f, 1.0f, 0.835f}, {1})},
        // Soften, Fog, Brightness, Color, as a user finds them, at the moment of the widest blur.
        {"Color Melt", EffectColorMelt, Levels({0.565f, 0.99f, 0.54f, 0.24f}), Content::Scene, 0.5},
        // Rounding, Layers, Shadow, Angle, two colours, Blend Colors: eight sheets, each with a shadow.
        {"Paper Collage", EffectPaperCollage,
         Levels({0.39f, 1.0f, 0.76f, 0.76f}, {0x44FEFE, 0x400080, FloatWord(1.0f)}), Content::Scene, 0.5},
        // Blur, Angle, Direction: streaks both ways, as long as they get, of both pictures.
        {"Smear", EffectSmear, Levels({1.0f, 0.0f, 0.5f}), Content::Scene, 0.5},
        // Columns, Rows, Direction, Reverse.
        {"3D Confetti, 6 by 4", Effect3DConfetti, Levels({0.27f, 0.16f, 0.0f}, {0}), Content::Scene, 0.5},
        {"3D Confetti, 20 by 20", Effect3DConfetti, Levels({1.0f, 1.0f, 0.0f}, {0}), Content::Scene, 0.5},
        // Slices, Depth, Orientation, Rotate right, Spread, Fog, Shine, Background; neither glow, then both.
        {"3D Pizza Boxes", Effect3DPizzaBoxes, Levels({0.43f, 0.51f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f}),
         Content::Scene, 0.5},
        {"3D Pizza Boxes, glowing", Effect3DPizzaBoxes,
         Levels({0.43f, 0.51f, 0.0f, 0.0f, 0.0f, 0.45f, 0.5f, 0.0f}), Content::Scene, 0.5},
    };
}

} // namespace

std::span<const EffectCase> EffectCases()
{
    static const std::vector<EffectCase> cases = MakeCases();
    return cases;
}

std::int32_t Host::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    if (m_memory)
        return m_memory->QueryInterface(interfaceId, out);
    *out = nullptr;
    return E_NOINTERFACE;
}

bool Host::GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind)
{
    if (knob >= m_knobs.size())
        return false;
    *out = {m_knobs[knob], 0, kind};
    return true;
}

HostInfo* Host::GetHostInfo(HostInfo* result)
{
    *result = {};
    return result;
}

} // namespace kelmora::bench

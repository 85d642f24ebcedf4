#pragma once

#include <cstdint>

namespace kelmora {

/// A factory preset, typed in by hand: what the tables of the effects are compared with.
struct PresetRow {
    const char* name;
    float first;  ///< the value of knob 0
    float second; ///< of knob 1, where there is one
};

/// "Spray" and "Edge". The wrapper has the same.
inline constexpr PresetRow kAirBrushPresets[] = {
    {"Air Brushed", 0.39f, 1.0f},    {"Dream", 0.51f, 0.27f},       {"Fog", 0.81f, 0.0f},
    {"Out Of Focus", 0.395f, 0.15f}, {"Reset To None", 0.0f, 0.0f}, {"Touch Up", 0.04f, 0.57f},
};

/// "Definition" and "Strength".
inline constexpr PresetRow kDetailEnhancerPresets[] = {
    {"Contrast", 0.1f, 1.0f},    {"Intense", 0.885f, 1.0f}, {"Reset to None", 0.0f, 0.0f},
    {"Sharpen", 0.085f, 0.455f}, {"Stark", 0.17f, 1.0f},    {"Strong", 0.755f, 0.465f},
};

/// "Strength" alone.
inline constexpr PresetRow kWrapDetailEnhancerPresets[] = {
    {"Mild", 0.455f, 0.0f},
    {"Reset to None", 0.0f, 0.0f},
    {"Strong", 0.98f, 0.0f},
    {"Subtle", 0.155f, 0.0f},
};

/// What the inner effect reads as "Definition" behind the wrapper.
inline constexpr float kWrapDetailEnhancerDefinition = 0.065f;

} // namespace kelmora

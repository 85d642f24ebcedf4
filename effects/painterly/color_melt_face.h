#pragma once

#include "effects/common/tables.h"

namespace kelmora {

inline constexpr Face<6, 9> kColorMelt{
    .name = "Color Melt",
    .helpId = 962,
    .knobs = {{
        // name, default, (x, y, width, height), shown scale
        {"Soften", Level(0.34), {0, 0, 198, 30}, {{0, 100}}},
        {"Fog", Level(0.99), {66, 0, 198, 30}, {{0, 100}}},
        {"Brightness", Level(0.54), {132, 0, 198, 30}, {{0, 100}}},
        {"Color", Level(0.24), {0, 100, 198, 30}, {{0, 100}}},
        {"Tempo", Level(0.0), {66, 100, 198, 30}, {{0, 100}}},
        {"Cross Fade", Level(0.34), {132, 100, 198, 30}, {{0, 100}}},
    }},
    .presets = {{
        // Soften, Fog, Brightness, Color, Tempo, Cross Fade
        {"Bright Fog", {{Level(0.81), Level(1.0), Level(0.54), Level(0.27), Level(0.32), Level(0.39)}}},
        {"Dark Fog", {{Level(0.81), Level(1.0), Level(0.12), Level(0.49), Level(0.31), Level(0.375)}}},
        {"Evening", {{Level(0.355), Level(0.77), Level(0.1), Level(0.0), Level(0.31), Level(0.465)}}},
        {"Gentle", {{Level(0.5), Level(0.23), Level(0.57), Level(0.49), Level(0.31), Level(0.48)}}},
        {"Hallucination", {{Level(0.0), Level(1.0), Level(0.74), Level(1.0), Level(0.15), Level(0.45)}}},
        {"Ooze", {{Level(0.38), Level(0.68), Level(0.51), Level(1.0), Level(0.31), Level(0.5)}}},
        {"Radiation", {{Level(0.75), Level(1.0), Level(1.0), Level(0.0), Level(0.6), Level(0.54)}}},
        {"Reset to None", {{Level(0.0), Level(0.0), Level(1.0), Level(0.0), Level(0.15), Level(0.45)}}},
        {"Vivid Dream", {{Level(0.0), Level(0.0), Level(0.595), Level(1.0), Level(0.315), Level(0.5)}}},
    }},
};

} // namespace kelmora

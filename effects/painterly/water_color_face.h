#pragma once

#include "effects/common/tables.h"

namespace kelmora {

inline constexpr Face<6, 11> kWaterColor{
    .name = "Water Color",
    .helpId = 961,
    .knobs = {{
        // name, default, (x, y, width, height), shown scale, hostFlag
        {"Color Shift", Level(0.53), {0, 0, 48, 30}, {{-100, 100}}, 1},
        {"Color", Level(0.69), {66, 0, 48, 30}, {{-100, 100}}, 1},
        {"Brightness", Level(0.435), {132, 0, 48, 30}, {{-100, 100}}, 1},
        {"Contrast", Level(0.64), {0, 90, 48, 30}, {{-100, 100}}, 1},
        {"Brush Width", Level(1.0), {66, 90, 48, 30}, {{1, 10}}, 1},
        {"Blend", Level(0.885), {132, 90, 48, 30}, {{0, 100}}, 1},
    }},
    .presets = {{
        // Color Shift, Color, Brightness, Contrast, Brush Width, Blend
        {"Accurate",
         {{Level(0.5001), Level(0.4301), Level(0.5001), Level(0.5001), Level(0.3851), Level(0.695)}}},
        {"Bright Colors",
         {{Level(0.5001), Level(1.0), Level(0.5001), Level(0.5001), Level(0.5251), Level(0.695)}}},
        {"Burnt", {{Level(0.0), Level(0.23), Level(0.285), Level(1.0), Level(0.53), Level(0.5)}}},
        {"Flowing Paint",
         {{Level(0.5001), Level(0.98), Level(0.5001), Level(0.5001), Level(1.0), Level(1.0)}}},
        {"Fun Day Out",
         {{Level(0.475728), Level(0.92233), Level(0.5001), Level(0.504854), Level(0.116505),
           Level(0.626214)}}},
        {"Glow in the Dark",
         {{Level(0.5001), Level(0.715), Level(0.17), Level(1.0), Level(0.32), Level(1.0)}}},
        {"Painted Photograph",
         {{Level(0.49), Level(1.0), Level(0.51), Level(1.0), Level(0.78), Level(0.52)}}},
        {"Pastels", {{Level(0.5001), Level(0.715), Level(0.37), Level(1.0), Level(0.575), Level(1.0)}}},
        {"Posterize", {{Level(0.525), Level(1.0), Level(0.295), Level(1.0), Level(0.085), Level(1.0)}}},
        {"Reset to None",
         {{Level(0.5001), Level(0.5001), Level(0.5001), Level(0.5001), Level(0.0001), Level(0.0001)}}},
        {"Smokey", {{Level(0.5001), Level(0.0), Level(0.5001), Level(0.5001), Level(1.0), Level(0.825)}}},
    }},
};

} // namespace kelmora

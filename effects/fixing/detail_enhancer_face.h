#pragma once

#include <array>

#include "effects/common/tables.h"

namespace kelmora {

inline constexpr Face<2, 6> kDetailEnhancer{
    .name = "Detail Enhancer",
    .helpId = 961,
    .knobs = {{
        // name          default     x, y, width, height  shown scale  hostFlag
        {"Definition", Level(0.5), {0, 0, 198, 30}, {{0, 100}}, 1},
        {"Strength", Level(0.5), {66, 0, 198, 30}, {{0, 100}}, 1},
    }},
    .presets = {{
        //                 Definition    Strength
        {"Contrast", {{Level(0.1), Level(1.0)}}},
        {"Intense", {{Level(0.885), Level(1.0)}}},
        {"Reset to None", {{Level(0.0), Level(0.0)}}},
        {"Sharpen", {{Level(0.085), Level(0.455)}}},
        {"Stark", {{Level(0.17), Level(1.0)}}},
        {"Strong", {{Level(0.755), Level(0.465)}}},
    }},
};

inline constexpr std::array<const char*, 2> kDetailEnhancerToolTips = {"Definition", "Strength"};

} // namespace kelmora

#pragma once

#include "effects/common/tables.h"

namespace kelmora {

inline constexpr Face<2, 6> kAirBrush{
    .name = "Air Brush",
    .helpId = 961,
    .knobs = {{
        // name     default     x, y, width, height  shown scale
        {"Spray", Level(0.5), {0, 0, 198, 30}, {{0, 100}}},
        {"Edge", Level(0.5), {66, 0, 198, 30}, {{0, 100}}},
    }},
    .presets = {{
        //                 Spray         Edge
        {"Air Brushed", {{Level(0.39), Level(1.0)}}},
        {"Dream", {{Level(0.51), Level(0.27)}}},
        {"Fog", {{Level(0.81), Level(0.0)}}},
        {"Out Of Focus", {{Level(0.395), Level(0.15)}}},
        {"Reset To None", {{Level(0.0), Level(0.0)}}},
        {"Touch Up", {{Level(0.04), Level(0.57)}}},
    }},
};

} // namespace kelmora

#pragma once

#include <array>

#include "effects/common/tables.h"

namespace kelmora {

inline constexpr Face<4, 5> kPixelator{
    .name = "Pixelator",
    .helpId = 961,
    .knobs = {{
        // name          default                      x, y, width, height  shown scale  hostFlag
        {"Center", Point(0.511628, 0.465116), {0, 0, 198, 30}},
        {"Width", Level(0.41), {0, 90, 198, 30}, {{0, 100}}, 1},
        {"Height", Level(0.615), {66, 90, 198, 30}, {{0, 100}}, 0},
        {"Block Size", Level(0.505), {132, 90, 198, 30}, {{0, 100}}, 0},
    }},
    .presets = {{
        //              Center                     Width         Height       Block Size
        {"Left Face", {{Point(0.244186, 0.395349), Level(0.345), Level(0.53), Level(0.505)}}},
        {"Max", {{Point(0.488372, 0.465116), Level(1.0), Level(1.0), Level(1.0)}}},
        {"Min", {{Point(0.511628, 0.44186), Level(1.0), Level(1.0), Level(0.0)}}},
        {"Reset to None", {{Point(0.511628, 0.465116), Level(0.0), Level(0.0), Level(0.0001)}}},
        {"Right Face", {{Point(0.767442, 0.348837), Level(0.365), Level(0.53), Level(0.505)}}},
    }},
};

inline constexpr std::array<const char*, 4> kPixelatorToolTips = {
    "Face center",
    "Width of pixelated region",
    "Height of pixelated region",
    "Pixelated block size",
};

} // namespace kelmora

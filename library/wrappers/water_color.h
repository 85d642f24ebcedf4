#pragma once

#include "effects/painterly/water_color.h"
#include "library/wrappers/wrapper.h"

namespace kelmora {

inline constexpr WrapperTables<5, 11, 6> kWrapWaterColor{
    .face =
        {
            .name = kWaterColor.name,
            .helpId = kWaterColor.helpId,
            .knobs = {{
                // name, default, (x, y, width, height), shown scale, hostFlag
                {"Color", Level(0.78), {0, 0, 48, 30}, {{-100, 100}}, 1},
                {"Brightness", Level(0.505), {66, 0, 48, 30}, {{-100, 100}}, 1},
                {"Contrast", Level(0.5001), {132, 0, 48, 30}, {{-100, 100}}, 1},
                {"Brush Width", Level(0.955), {0, 90, 48, 30}, {{1, 10}}, 1},
                {"Blend", Level(1.0), {66, 90, 48, 30}, {{0, 100}}, 1},
            }},
            .presets = {{
                // Color, Brightness, Contrast, Brush Width, Blend
                {"Accurate", {{Level(0.4301), Level(0.5001), Level(0.5001), Level(0.3851), Level(0.695)}}},
                {"Bright Colors", {{Level(1.0), Level(0.5001), Level(0.5001), Level(0.5251), Level(0.695)}}},
                {"Burnt", {{Level(0.23), Level(0.285), Level(1.0), Level(0.53), Level(0.5)}}},
                {"Flowing Paint", {{Level(0.98), Level(0.5001), Level(0.5001), Level(1.0), Level(1.0)}}},
                {"Fun Day Out",
                 {{Level(0.92233), Level(0.5001), Level(0.504854), Level(0.116505), Level(0.626214)}}},
                {"Glow in the Dark", {{Level(0.715), Level(0.17), Level(1.0), Level(0.32), Level(1.0)}}},
                {"Painted Photograph", {{Level(1.0), Level(0.545), Level(1.0), Level(0.89), Level(0.595)}}},
                {"Pastels", {{Level(0.715), Level(0.44), Level(1.0), Level(0.575), Level(1.0)}}},
                {"Posterize", {{Level(1.0), Level(0.295), Level(1.0), Level(0.085), Level(1.0)}}},
                {"Reset to None",
                 {{Level(0.5001), Level(0.5001), Level(0.5001), Level(0.0001), Level(0.0001)}}},
                {"Smokey", {{Level(0.0), Level(0.5001), Level(0.5001), Level(1.0), Level(0.825)}}},
            }},
        },
    .answers = {{
        /* Color Shift */ Always(Level(0.5001)),
        /* Color       */ FromHost(0),
        /* Brightness  */ FromHost(1),
        /* Contrast    */ FromHost(2),
        /* Brush Width */ FromHost(3),
        /* Blend       */ FromHost(4),
    }},
};

static_assert(AnswersAll(kWrapWaterColor, kWaterColor));

using CWrapWaterColor = Wrapper<CWaterColor, kWrapWaterColor>;

} // namespace kelmora

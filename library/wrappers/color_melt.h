#pragma once

#include "effects/painterly/color_melt.h"
#include "library/wrappers/wrapper.h"

namespace kelmora {

inline constexpr WrapperTables<4, 9, 6> kWrapColorMelt{
    .face =
        {
            .name = kColorMelt.name,
            .helpId = kColorMelt.helpId,
            .knobs = {{
                // name, default, (x, y, width, height), shown scale, hostFlag
                {"Soften", Level(0.565), {0, 0, 198, 30}, {{0, 100}}, 1},
                {"Fog", Level(0.99), {66, 0, 198, 30}, {{0, 100}}, 1},
                {"Brightness", Level(0.54), {132, 0, 198, 30}, {{0, 100}}, 1},
                {"Color", Level(0.24), {198, 0, 198, 30}, {{0, 100}}, 1},
            }},
            .presets = {{
                // Soften, Fog, Brightness, Color
                {"Bright Fog", {{Level(0.81), Level(1.0), Level(0.54), Level(0.27)}}},
                {"Dark Fog", {{Level(0.81), Level(1.0), Level(0.12), Level(0.49)}}},
                {"Gentle", {{Level(0.5), Level(0.23), Level(0.57), Level(0.49)}}},
                {"Ghosts", {{Level(0.355), Level(0.77), Level(0.1), Level(0.0)}}},
                {"Hallucination", {{Level(0.0), Level(1.0), Level(1.0), Level(1.0)}}},
                {"Ooze", {{Level(0.405), Level(0.835), Level(0.51), Level(1.0)}}},
                {"Psycho Bloom", {{Level(1.0), Level(1.0), Level(1.0), Level(1.0)}}},
                {"Vivid Dream", {{Level(0.0), Level(0.0), Level(0.595), Level(1.0)}}},
                {"White Wash", {{Level(0.75), Level(1.0), Level(1.0), Level(0.0)}}},
            }},
        },
    .answers = {{
        /* Soften     */ FromHost(0),
        /* Fog        */ FromHost(1),
        /* Brightness */ FromHost(2),
        /* Color      */ FromHost(3),
        /* Tempo      */ Always(Level(0.675)),
        /* Cross Fade */ Always(Level(0.63)),
    }},
};

static_assert(AnswersAll(kWrapColorMelt, kColorMelt));

using CWrapColorMelt = Wrapper<CColormelt, kWrapColorMelt>;

} // namespace kelmora

#pragma once

#include "effects/painterly/air_brush.h"
#include "library/wrappers/wrapper.h"

namespace kelmora {

inline constexpr WrapperTables<2, 6, 2> kWrapAirbrush{
    .face =
        {
            .name = kAirBrush.name,
            .helpId = kAirBrush.helpId,
            .knobs = {{
                // name     default     x, y, width, height  shown scale  hostFlag
                {"Spray", Level(0.5), {0, 0, 198, 30}, {{0, 100}}, 0},
                {"Edge", Level(0.5), {66, 0, 198, 30}, {{0, 100}}, 0},
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
        },
    .answers = {{
        /* Spray */ FromHost(0),
        /* Edge  */ FromHost(1),
    }},
};

static_assert(AnswersAll(kWrapAirbrush, kAirBrush));

using CWrapAirbrush = Wrapper<CAirbrush, kWrapAirbrush>;

} // namespace kelmora

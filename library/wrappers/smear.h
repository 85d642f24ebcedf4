#pragma once

#include "effects/painterly/smear.h"
#include "library/wrappers/wrapper.h"

namespace kelmora {

inline constexpr WrapperTables<3, 13, 5> kWrapSmear{
    .face =
        {
            .name = kSmear.name,
            .helpId = kSmear.helpId,
            .knobs = {{
                // name, default, (x, y, width, height), shown scale, hostFlag, angular
                {"Blur", Level(0.8001), {0, 0, 48, 30}, {{0, 100}}, 1},
                {"Angle", Level(0.0001), {66, 0, 48, 30}, {{0, 360}}, 1, 1},
                {"Direction", Level(1.0), {132, 0, 48, 30}, {{-100, 100}}, 1},
            }},
            .presets = {{
                //                            Blur          Angle          Direction
                {"Blur Left", {{Level(0.875), Level(0.0), Level(1.0)}}},
                {"Blur Right", {{Level(1.0), Level(0.0), Level(0.0)}}},
                {"Diagonal Left", {{Level(0.28), Level(0.13), Level(0.48)}}},
                {"Diagonal Right", {{Level(0.28), Level(0.377778), Level(0.52)}}},
                {"Horizontal Stretch", {{Level(1.0), Level(0.0), Level(0.5)}}},
                {"Reset To None", {{Level(0.0), Level(0.0), Level(0.0)}}},
                {"Shift Down", {{Level(0.345), Level(0.25), Level(0.0)}}},
                {"Shift Left", {{Level(0.33), Level(0.0), Level(1.0)}}},
                {"Shift Right", {{Level(0.33), Level(0.0), Level(0.0)}}},
                {"Shift Up", {{Level(0.37), Level(0.25), Level(1.0)}}},
                {"Top Left", {{Level(0.28), Level(0.13), Level(1.0)}}},
                {"Top Right", {{Level(0.28), Level(0.38), Level(1.0)}}},
                {"Vertical Stretch", {{Level(1.0), Level(0.25), Level(0.5)}}},
            }},
        },
    .answers = {{
        /* Blur       */ FromHost(0),
        /* Angle      */ FromHost(1),
        /* Direction  */ FromHost(2),
        /* Cross Fade */ Always(Level(0.595)),
        /* Background */ Always(Choice(3)),
    }},
};

static_assert(AnswersAll(kWrapSmear, kSmear));

using CWrapSmear = Wrapper<CSmear, kWrapSmear>;

} // namespace kelmora

#pragma once

#include "effects/scene3d/confetti.h"
#include "library/wrappers/wrapper.h"

namespace kelmora {

inline constexpr WrapperTables<4, 14, 8> kWrap3DConfetti{
    .face =
        {
            .name = kConfetti.name,
            .helpId = kConfetti.helpId,
            .knobs = {{
                // name, default, (x, y, width, height), shown scale, hostFlag
                {"Columns", Level(0.35), {0, 0, 48, 30}, {{1, 20}}, 0},
                {"Rows", Level(0.31), {66, 0, 48, 30}, {{1, 20}}, 0},
                {"Direction", Level(0.0), {132, 0, 48, 30}, {{0, 360}}, 1, 1},
                {"Reverse", Check(false), {0, 90, 72, 30}},
            }},
            .presets = {{
                // Columns, Rows, Direction, Reverse
                {"Blow East", {{Level(0.368421), Level(0.263158), Level(0.5), Check(false)}}},
                {"Blow North", {{Level(0.368421), Level(0.263158), Level(0.25), Check(false)}}},
                {"Blow North East", {{Level(0.368421), Level(0.263158), Level(0.375), Check(false)}}},
                {"Blow North West", {{Level(0.368421), Level(0.263158), Level(0.125), Check(false)}}},
                {"Blow South", {{Level(0.368421), Level(0.263158), Level(0.75), Check(false)}}},
                {"Blow South East", {{Level(0.368421), Level(0.263158), Level(0.625), Check(false)}}},
                {"Blow South West", {{Level(0.368421), Level(0.263158), Level(0.875), Check(false)}}},
                {"Blow West", {{Level(0.368421), Level(0.263158), Level(0.0), Check(false)}}},
                {"Blowing Sticks", {{Level(0.0), Level(0.99), Level(0.0), Check(false)}}},
                {"Dumping Logs", {{Level(0.0), Level(0.99), Level(0.25), Check(true)}}},
                {"Lotsa Leaves", {{Level(0.722222), Level(0.591111), Level(0.0), Check(false)}}},
                {"Undo", {{Level(0.222222), Level(0.111111), Level(0.0), Check(true)}}},
                {"Wind Blown Panels Left", {{Level(0.22), Level(0.0), Level(0.0), Check(false)}}},
                {"Wind Blown Panels Right", {{Level(0.22), Level(0.0), Level(0.5), Check(false)}}},
            }},
        },
    .answers = {{
        /* Shading */ Always(Level(0.545)),
        /* Columns */ FromHost(0),
        /* Rows */ FromHost(1),
        /* Power */ Always(Level(0.34)),
        /* Direction */ FromHost(2),
        /* Flutter */ Always(Level(0.355)),
        /* Vacuum */ Always(Check(false)),
        /* Reverse */ FromHost(3),
    }},
};

static_assert(AnswersAll(kWrap3DConfetti, kConfetti));

using CWrap3DConfetti = Wrapper<D3DBlowingLeaves, kWrap3DConfetti>;

} // namespace kelmora

#pragma once

#include "effects/fixing/detail_enhancer.h"
#include "library/wrappers/wrapper.h"

namespace kelmora {

inline constexpr WrapperTables<1, 4, 2> kWrapDetailEnhancer{
    .face =
        {
            .name = kDetailEnhancer.name,
            .helpId = kDetailEnhancer.helpId,
            .knobs = {{
                // name        default     x, y, width, height  shown scale  hostFlag
                {"Strength", Level(0.5), {0, 0, 198, 30}, {{0, 100}}, 1},
            }},
            .presets = {{
                //                 Strength
                {"Mild", {{Level(0.455)}}},
                {"Reset to None", {{Level(0.0)}}},
                {"Strong", {{Level(0.98)}}},
                {"Subtle", {{Level(0.155)}}},
            }},
        },
    .answers = {{
        /* Definition */ Always(Level(0.065)),
        /* Strength   */ FromHost(0),
    }},
};

static_assert(AnswersAll(kWrapDetailEnhancer, kDetailEnhancer));

using CWrapDetailEnhancer = Wrapper<CUnsharpMask, kWrapDetailEnhancer>;

} // namespace kelmora

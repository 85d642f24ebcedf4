#pragma once

#include "effects/painterly/active_camera.h"
#include "library/wrappers/wrapper.h"

namespace kelmora {

inline constexpr WrapperTables<6, 9, 9> kWrapActiveCamera{
    .face =
        {
            .name = kActiveCamera.name,
            .helpId = kActiveCamera.helpId,
            .knobs = {{
                // name, default, (x, y, width, height), shown scale, hostFlag
                {"Horizontal", Level(0.2), {0, 0, 48, 30}, {{0, 100}}, 1},
                {"Vertical", Level(0.5), {66, 0, 48, 30}, {{0, 100}}, 1},
                {"Crop", Level(0.18), {132, 0, 48, 30}, {{0, 100}}, 1},
                {"Rate", Level(0.9), {0, 90, 48, 30}, {{0, 100}}, 1},
                {"Jitter", Level(0.5), {66, 90, 48, 30}, {{0, 100}}, 1},
                {"Blur", Level(0.505), {132, 90, 48, 30}, {{0, 100}}, 1},
            }},
            .presets = {{
                // Horizontal, Vertical, Crop, Rate, Jitter, Blur
                {"Dirt Road", {{Level(0.11), Level(0.55), Level(0.42), Level(1.0), Level(0.56), Level(0.4)}}},
                {"Hand Held",
                 {{Level(0.21), Level(0.19), Level(0.34), Level(0.67), Level(0.54), Level(0.21)}}},
                {"Jack Hammer",
                 {{Level(0.08), Level(0.615), Level(0.45), Level(0.9), Level(0.91), Level(0.4)}}},
                {"Reset To None", {{Level(0.0), Level(0.0), Level(0.0), Level(0.0), Level(0.0), Level(0.0)}}},
                {"Rocket Ship",
                 {{Level(0.0), Level(0.54), Level(0.3), Level(0.82), Level(0.89), Level(0.73)}}},
                {"Stumbling Drunk",
                 {{Level(0.4), Level(0.38031), Level(0.33), Level(0.705), Level(0.76), Level(0.97)}}},
                {"Subtle Moves",
                 {{Level(0.15), Level(0.165), Level(0.14), Level(0.395), Level(0.21), Level(0.0)}}},
                {"Train Ride",
                 {{Level(0.18), Level(0.04), Level(0.2), Level(0.42), Level(0.72), Level(0.25)}}},
                {"Wild Shaking", {{Level(1.0), Level(1.0), Level(1.0), Level(1.0), Level(1.0), Level(1.0)}}},
            }},
        },
    .answers = {{
        /* Horizontal       */ FromHost(0),
        /* Vertical         */ FromHost(1),
        /* Rotation         */ Always(Level(0.0)),
        /* Crop             */ FromHost(2),
        /* Rate             */ FromHost(3),
        /* Jitter           */ FromHost(4),
        /* Hold             */ Always(Level(0.0)),
        /* Blur             */ FromHost(5),
        /* Synchronize Axes */ Always(Check(true)),
    }},
};

static_assert(AnswersAll(kWrapActiveCamera, kActiveCamera));

using CWrapActiveCamera = Wrapper<CActivecamera, kWrapActiveCamera>;

} // namespace kelmora

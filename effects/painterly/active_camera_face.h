#pragma once

#include "effects/common/tables.h"

namespace kelmora {

inline constexpr Face<9, 13> kActiveCamera{
    .name = "Active Camera",
    .helpId = 965,
    .clearsRecord = true,
    .knobs = {{
        // name, default, (x, y, width, height), shown scale, hostFlag
        {"Horizontal", Level(0.2), {0, 0, 48, 30}, {{0, 100}}, 0},
        {"Vertical", Level(0.5), {66, 0, 48, 30}, {{0, 100}}, 0},
        {"Rotation", Level(0.12), {132, 0, 48, 30}, {{0, 100}}, 0},
        {"Crop", Level(0.3), {198, 0, 48, 30}, {{0, 100}}, 0},
        {"Rate", Level(0.9), {0, 90, 48, 30}, {{0, 100}}, 0},
        {"Jitter", Level(0.5), {66, 90, 48, 30}, {{0, 100}}, 0},
        {"Hold", Level(0.3), {132, 90, 48, 30}, {{0, 100}}, 0},
        {"Blur", Level(0.4), {198, 90, 48, 30}, {{0, 100}}, 0},
        {"Synchronize Axes", Check(false), {0, 180, 114, 10}},
    }},
    .presets = {{
        // Horizontal, Vertical, Rotation, Crop, Rate, Jitter, Hold, Blur, Synchronize Axes
        {"Dirt Road",
         {{Level(0.11), Level(0.55), Level(0.16), Level(0.42), Level(1.0), Level(0.56), Level(0.39),
           Level(0.4), Check(false)}}},
        {"Hand Held",
         {{Level(0.21), Level(0.19), Level(0.04), Level(0.34), Level(0.67), Level(0.54), Level(0.34),
           Level(0.21), Check(false)}}},
        {"Itchy Camera",
         {{Level(0.52), Level(0.54), Level(0.01), Level(0.54), Level(0.26), Level(0.77), Level(0.74),
           Level(0.0), Check(true)}}},
        {"Jack Hammer",
         {{Level(0.08), Level(0.615), Level(0.0), Level(0.45), Level(0.9), Level(0.91), Level(0.26),
           Level(0.4), Check(true)}}},
        {"Jumping Image",
         {{Level(0.71), Level(0.73), Level(0.0), Level(0.59), Level(0.26), Level(0.0), Level(1.0),
           Level(0.47), Check(false)}}},
        {"Large Boat",
         {{Level(0.34), Level(0.33), Level(0.27), Level(0.34), Level(0.27), Level(0.1), Level(0.0),
           Level(0.0), Check(false)}}},
        {"Reset To None",
         {{Level(0.0), Level(0.0), Level(0.0), Level(0.0), Level(0.0), Level(0.0), Level(0.0), Level(0.0),
           Check(false)}}},
        {"Rocket Ship",
         {{Level(0.0), Level(0.54), Level(0.0), Level(0.3), Level(0.82), Level(0.89), Level(0.26),
           Level(0.73), Check(true)}}},
        {"Seesaw",
         {{Level(0.0), Level(0.0), Level(1.0), Level(0.3036), Level(0.565), Level(0.075), Level(0.0),
           Level(1.0), Check(false)}}},
        {"Stumbling Drunk",
         {{Level(0.4), Level(0.38031), Level(0.04), Level(0.33), Level(0.42), Level(0.76), Level(0.34),
           Level(0.97), Check(false)}}},
        {"Subtle Moves",
         {{Level(0.07), Level(0.1), Level(0.0), Level(0.12), Level(0.0), Level(0.21), Level(0.44), Level(0.0),
           Check(true)}}},
        {"Train Ride",
         {{Level(0.18), Level(0.04), Level(0.07), Level(0.2), Level(0.42), Level(0.72), Level(0.36),
           Level(0.25), Check(false)}}},
        {"Wild Shaking",
         {{Level(1.0), Level(1.0), Level(1.0), Level(1.0), Level(1.0), Level(1.0), Level(0.19), Level(1.0),
           Check(false)}}},
    }},
};

} // namespace kelmora

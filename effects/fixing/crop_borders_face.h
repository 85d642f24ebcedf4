#pragma once

#include <array>

#include "effects/common/tables.h"

namespace kelmora {

inline constexpr Face<4, 5> kCropBorders{
    .name = "Crop Borders",
    .helpId = 965,
    .knobs = {{
        // name          default      x, y, width, height  shown scale  hostFlag
        {"Horiz Crop", Level(0.75), {0, 0, 48, 30}, {{0, 100}}, 1},
        {"Vert Crop", Level(0.75), {66, 0, 48, 30}, {{0, 100}}, 1},
        {"Feather", Level(0.02), {132, 0, 48, 30}, {{0, 100}}, 1},
        {.name = "Crop Style",
         .initial = Choice(0),
         .rect = {0, 90, 180, 20},
         .choices = {"Scale", "Overlay", "Extend", "Transparent"}},
    }},
    .presets = {{
        //                           Horiz Crop    Vert Crop      Feather        Crop Style
        {"Fix Overscan", {{Level(0.215), Level(0.17), Level(0.35), Choice(0)}}},
        {"Max Crop", {{Level(1.0), Level(1.0), Level(0.835), Choice(1)}}},
        {"Picture in Picture", {{Level(1.0), Level(1.0), Level(0.0), Choice(3)}}},
        {"Reset to None", {{Level(0.0), Level(0.0001), Level(0.0001), Choice(0)}}},
        {"Zoom In", {{Level(1.0), Level(1.0), Level(0.0), Choice(0)}}},
    }},
};

inline constexpr std::array<const char*, 4> kCropBordersToolTips = {
    "Amount of hotizontal crop", // sic: hosts may look texts up by their spelling
    "Amount of vertical crop",
    "Control the feathering of cropped edge",
    "Define crop style",
};

} // namespace kelmora

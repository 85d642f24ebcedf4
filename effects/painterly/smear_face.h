#pragma once

#include "effects/common/tables.h"

namespace kelmora {

inline constexpr Face<5, 11> kSmear{
    .name = "Smear",
    .helpId = 966,
    .clearsRecord = true,
    .knobs = {{
        // name, default, (x, y, width, height), shown scale, hostFlag, angular
        {"Blur", Level(0.34), {0, 0, 48, 30}, {{0, 100}}, 0},
        {"Angle", Level(0.0), {66, 0, 48, 30}, {{0, 360}}, 0, 1},
        {"Direction", Level(0.5), {132, 0, 48, 30}, {{-100, 100}}, 0},
        {"Cross Fade", Level(0.34), {198, 0, 48, 30}, {{0, 100}}, 0},
        {.name = "Background",
         .initial = Choice(2),
         .rect = {0, 90, 114, 20},
         .choices = {"First Clip", "Second Clip", "Transparent", "Blended"}},
    }},
    .presets = {{
        // Blur, Angle, Direction, Cross Fade, Background
        {"Bottom Left", {{Level(0.28), Level(0.377778), Level(0.0), Level(0.56), Choice(3)}}},
        {"Bottom Right", {{Level(0.28), Level(0.13), Level(0.0), Level(0.56), Choice(3)}}},
        {"Down", {{Level(0.43), Level(0.25), Level(0.0), Level(0.7), Choice(0)}}},
        {"Horizontal Stretch", {{Level(1.0), Level(0.0), Level(0.5), Level(0.795), Choice(1)}}},
        {"Left", {{Level(0.56), Level(0.0), Level(1.0), Level(0.72), Choice(3)}}},
        {"Reset To None", {{Level(0.0), Level(0.0), Level(0.0), Level(0.0), Choice(0)}}},
        {"Right", {{Level(0.56), Level(0.0), Level(0.0), Level(0.72), Choice(3)}}},
        {"Top Left", {{Level(0.28), Level(0.13), Level(1.0), Level(0.56), Choice(0)}}},
        {"Top Right", {{Level(0.28), Level(0.38), Level(1.0), Level(0.56), Choice(0)}}},
        {"Up", {{Level(0.43), Level(0.25), Level(1.0), Level(0.7), Choice(0)}}},
        {"Vertical Stretch", {{Level(1.0), Level(0.25), Level(0.5), Level(0.795), Choice(0)}}},
    }},
};

} // namespace kelmora

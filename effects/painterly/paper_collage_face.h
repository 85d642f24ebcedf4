#pragma once

#include "effects/common/tables.h"

namespace kelmora {

inline constexpr Face<10, 13> kPaperCollage{
    .name = "Paper Collage",
    .helpId = 962,
    .knobs = {{
        // name, default, (x, y, width, height), shown scale, hostFlag
        {"Rounding", Level(0.39), {0, 0, 48, 30}, {{0, 100}}, 1},
        {"Layers", Level(0.87), {66, 0, 48, 30}, {{2, 8}}, 0},
        {"Balance", Level(0.815), {132, 0, 48, 30}, {{-100, 100}}, 0},
        {"Foreground", Colour(0x44FEFE), {0, 90, 48, 30}},
        {"Background", Colour(0x400080), {66, 90, 48, 30}},
        {"Blend Colors", Level(1.0), {132, 90, 48, 30}, {{0, 100}}, 1},
        {"Shadow", Level(0.66), {0, 180, 48, 30}, {{0, 100}}, 1},
        {"Angle", Level(0.415), {66, 180, 48, 30}, {{0, 360}}, 1},
        {"Tempo", Level(0.0), {132, 180, 48, 30}, {{0, 100}}, 1},
        {"Cross Fade", Level(1.0), {198, 180, 48, 30}, {{0, 100}}, 1},
    }},
    .presets = {{
        // Rounding, Layers, Balance, Foreground, Background, Blend Colors, Shadow, Angle, Tempo, Cross Fade
        {"Black and White",
         {{Level(0.125), Level(0.005), Level(0.5), Colour(0xFFFFFF), Colour(0x000000), Level(0.0), Level(0.0),
           Level(0.0), Level(0.415), Level(0.805)}}},
        {"Blue",
         {{Level(0.275), Level(0.295), Level(0.5001), Colour(0xFF8000), Colour(0xFF0000), Level(0.5651),
           Level(0.6), Level(0.15), Level(0.69), Level(0.89)}}},
        {"Chill",
         {{Level(0.33), Level(0.575), Level(0.5001), Colour(0xFCF986), Colour(0xFF6800), Level(0.1051),
           Level(0.0), Level(0.15), Level(0.435), Level(0.89)}}},
        {"Curvey Cuts",
         {{Level(1.0), Level(0.61), Level(0.5001), Colour(0x43FEFF), Colour(0x5B4639), Level(1.0), Level(1.0),
           Level(0.15), Level(1.0), Level(1.0)}}},
        {"Dark",
         {{Level(0.35), Level(1.0), Level(0.81), Colour(0xC08000), Colour(0x00376F), Level(0.14),
           Level(0.635), Level(0.175), Level(0.635), Level(0.79)}}},
        {"Etched",
         {{Level(0.0), Level(1.0), Level(0.5001), Colour(0xA8D3FF), Colour(0x5B4639), Level(0.4201),
           Level(0.225), Level(0.635), Level(0.715), Level(0.745)}}},
        {"Heat",
         {{Level(0.33), Level(1.0), Level(0.5001), Colour(0x47FDFE), Colour(0x0000FF), Level(0.1051),
           Level(0.0), Level(0.15), Level(0.215), Level(0.685)}}},
        {"Ice",
         {{Level(0.0), Level(0.795), Level(0.435), Colour(0xFFFF82), Colour(0xFFFFFF), Level(0.0),
           Level(0.575), Level(0.635), Level(0.515), Level(0.835)}}},
        {"Negative",
         {{Level(0.435), Level(0.85), Level(0.5001), Colour(0x000000), Colour(0xFFFFFF), Level(0.0),
           Level(0.58), Level(0.17), Level(0.0), Level(0.615)}}},
        {"Ooze",
         {{Level(1.0), Level(0.0), Level(0.5001), Colour(0x43FEFF), Colour(0x5B4639), LevelAsGiven(1.0001),
           Level(1.0), Level(0.15), Level(0.64), Level(0.82)}}},
        {"Red",
         {{Level(0.275), Level(0.225), Level(0.5001), Colour(0x0000FF), Colour(0x0000FF), Level(0.2301),
           Level(0.6), Level(0.15), Level(0.445), Level(0.67)}}},
        {"Topagraphic Map",
         {{Level(0.43), Level(1.0), Level(0.5), Colour(0xFFFF82), Colour(0x000071), Level(0.0), Level(0.465),
           Level(0.21), Level(0.83), Level(0.755)}}},
        {"Yellow",
         {{Level(0.275), Level(0.225), Level(0.5001), Colour(0x47FDFE), Colour(0x00FFFF), Level(0.2251),
           Level(0.6), Level(0.15), Level(0.335), Level(0.89)}}},
    }},
};

} // namespace kelmora

#pragma once

#include "effects/painterly/paper_collage.h"
#include "library/wrappers/wrapper.h"

namespace kelmora {

inline constexpr WrapperTables<7, 13, 10> kWrapPaperCollage{
    .face =
        {
            .name = kPaperCollage.name,
            .helpId = kPaperCollage.helpId,
            .knobs = {{
                // name, default, (x, y, width, height), shown scale, hostFlag, angular
                {"Rounding", Level(0.39), {0, 0, 48, 30}, {{0, 100}}, 1},
                {"Layers", Level(0.87), {66, 0, 48, 30}, {{2, 8}}, 0},
                {"Shadow", Level(0.76), {132, 0, 48, 30}, {{0, 100}}, 1},
                {"Angle", Level(0.76), {198, 0, 48, 30}, {{0, 360}}, 1, 1},
                {"Foreground", Colour(0x44FEFE), {0, 90, 48, 30}},
                {"Background", Colour(0x400080), {66, 90, 48, 30}},
                {"Blend Colors", Level(1.0), {132, 90, 48, 30}, {{0, 100}}, 1},
            }},
            .presets =
                {
                    {
                        // Rounding, Layers, Shadow, Angle, Foreground, Background, Blend Colors
                        {"Black and White",
                         {{Level(0.255), Level(0.0), Level(0.0), Level(0.0), Colour(0xFFFFFF),
                           Colour(0x000000), Level(0.0)}}},
                        {"Blue",
                         {{Level(0.275), Level(0.295), Level(0.6), Level(0.15), Colour(0xFF8000),
                           Colour(0xFF0000), Level(0.5651)}}},
                        {"Chill",
                         {{Level(0.33), Level(0.575), Level(0.0), Level(0.15), Colour(0xFCF986),
                           Colour(0xFF6800), Level(0.1051)}}},
                        {"Curvey Cuts",
                         {{Level(1.0), Level(0.61), Level(1.0), Level(0.15), Colour(0x43FEFF),
                           Colour(0x5B4639), Level(1.0)}}},
                        {"Dark",
                         {{Level(0.35), Level(1.0), Level(0.635), Level(0.175), Colour(0xC08000),
                           Colour(0x00376F), Level(0.14)}}},
                        {"Etched",
                         {{Level(0.0), Level(1.0), Level(0.225), Level(0.635), Colour(0xA8D3FF),
                           Colour(0x5B4639), Level(0.4201)}}},
                        {"Heat",
                         {{Level(0.33), Level(1.0), Level(0.0), Level(0.15), Colour(0x47FDFE),
                           Colour(0x0000FF), Level(0.1051)}}},
                        {"Ice",
                         {{Level(0.13), Level(0.795), Level(0.41), Level(0.635), Colour(0xEAEA00),
                           Colour(0xFFFFFF), Level(0.0)}}},
                        {"Negative",
                         {{Level(0.275), Level(0.85), Level(0.215), Level(0.17), Colour(0x121010),
                           Colour(0xF2EEEC), Level(0.0)}}},
                        {"Ooze",
                         {{Level(1.0), Level(0.0), Level(1.0), Level(0.15), Colour(0x43FEFF),
                           Colour(0x5B4639), Level(0.705)}}},
                        {"Red",
                         {{Level(0.275), Level(0.225), Level(0.6), Level(0.15), Colour(0x0000FF),
                           Colour(0x0000FF), Level(0.2301)}}},
                        {"Topographic Map",
                         {{Level(0.43), Level(1.0), Level(0.465), Level(0.21), Colour(0xFFFF82),
                           Colour(0x000071), Level(0.0)}}},
                        {"Yellow Lines",
                         {{Level(1.0), Level(0.71), Level(0.33), Level(0.15), Colour(0x47FDFE),
                           Colour(0x00FFFF), Level(0.0)}}},
                    }},
        },
    .answers = {{
        /* Rounding     */ FromHost(0),
        /* Layers       */ FromHost(1),
        /* Balance      */ Always(Level(0.495)),
        /* Foreground   */ FromHost(4),
        /* Background   */ FromHost(5),
        /* Blend Colors */ FromHost(6),
        /* Shadow       */ FromHost(2),
        /* Angle        */ FromHost(3),
        /* Tempo        */ Always(Level(0.32)),
        /* Cross Fade   */ Always(Level(0.725)),
    }},
};

static_assert(AnswersAll(kWrapPaperCollage, kPaperCollage));

using CWrapPaperCollage = Wrapper<CEmbossedPaperBlend, kWrapPaperCollage>;

} // namespace kelmora

#pragma once

#include "effects/scene3d/pizza_boxes.h"
#include "library/wrappers/wrapper.h"

namespace kelmora {

inline constexpr WrapperTables<8, 17, 11> kWrap3DPizzaBoxes{
    .face =
        {
            .name = kPizzaBoxes.name,
            .helpId = kPizzaBoxes.helpId,
            .knobs = {{
                // name, default, (x, y, width, height), shown scale, hostFlag
                {"Slices", Level(0.43), {0, 0, 48, 30}, {{1, 10}}, 0},
                {"Depth", Level(0.51), {66, 0, 48, 30}, {{0, 100}}, 1},
                {"Orientation", Choice(0), {0, 90, 114, 20}, {}, {}, {}, {"Horizontal", "Vertical"}},
                {"Rotate right", Check(false), {0, 145, 114, 10}},
                {"Spread", Check(false), {132, 145, 114, 10}},
                {"Fog", Level(0.45), {132, 0, 48, 30}, {{0, 100}}, 1},
                {"Shine", Level(0.0), {198, 0, 48, 30}, {{0, 100}}, 1},
                {"Background",
                 Choice(0),
                 {132, 90, 114, 20},
                 {},
                 {},
                 {},
                 {"First Picture", "Second Picture", "Transparent"}},
            }},
            .presets =
                {
                    {
                        // Slices, Depth, Orientation, Rotate right, Spread, Fog, Shine, Background
                        {"Box Stack Left",
                         {{Level(0.425), Level(0.0), Choice(0), Check(false), Check(false), Level(0.0),
                           Level(0.0), Choice(0)}}},
                        {"Box Stack Right",
                         {{Level(0.425), Level(0.0), Choice(0), Check(true), Check(false), Level(0.0),
                           Level(0.0), Choice(0)}}},
                        {"Casino",
                         {{Level(0.425), Level(0.0), Choice(1), Check(false), Check(false), Level(0.0),
                           Level(0.0), Choice(0)}}},
                        {"Cube Down",
                         {{Level(0.0), Level(0.31), Choice(1), Check(false), Check(false), Level(0.0),
                           Level(0.0), Choice(2)}}},
                        {"Cube Left",
                         {{Level(0.0), Level(0.375), Choice(0), Check(false), Check(false), Level(0.0),
                           Level(0.0), Choice(2)}}},
                        {"Cube Right",
                         {{Level(0.0), Level(0.375), Choice(0), Check(true), Check(false), Level(0.0),
                           Level(0.0), Choice(2)}}},
                        {"Cube Up",
                         {{Level(0.0), Level(0.31), Choice(1), Check(true), Check(false), Level(0.0),
                           Level(0.0), Choice(2)}}},
                        {"Flying Saucers",
                         {{Level(0.47), Level(0.7), Choice(0), Check(true), Check(true), Level(0.415),
                           Level(1.0), Choice(2)}}},
                        {"Horizontal Shuffle",
                         {{Level(0.575), Level(0.175), Choice(1), Check(false), Check(true),
                           Level(0.0), Level(0.0), Choice(0)}}},
                        {"Levitate",
                         {{Level(0.185), Level(0.3), Choice(0), Check(true), Check(true),
                           Level(0.0), Level(0.0), Choice(2)}}},
                        {"Light Boxes",
                         {{Level(0.45), Level(0.675), Choice(0), Check(false), Check(false),
                           Level(1.0), Level(0.0), Choice(0)}}},
                        {"Metal Cube Down",
                         {{Level(0.0), Level(0.0), Choice(1), Check(false), Check(false), Level(0.62),
                           Level(0.97), Choice(2)}}},
                        {"Metal Cube Left",
                         {{Level(0.0), Level(0.0), Choice(0), Check(false), Check(false), Level(0.62),
                           Level(0.97), Choice(2)}}},
                        {"Metal Cube Right",
                         {{Level(0.0), Level(0.0), Choice(0), Check(true), Check(false), Level(0.62),
                           Level(0.97), Choice(2)}}},
                        {"Metal Cube Up",
                         {{Level(0.0), Level(0.0), Choice(1), Check(true), Check(false), Level(0.62),
                           Level(0.97), Choice(2)}}},
                        {"Three Boxes",
                         {{Level(0.25), Level(0.3), Choice(1), Check(true), Check(true),
                           Level(0.0), Level(0.0), Choice(2)}}},
                        {"Vertical Shuffle",
                         {{Level(0.345), Level(0.175), Choice(0), Check(false), Check(true),
                           Level(0.0), Level(0.0), Choice(0)}}},
                    }},
        },
    .answers = {{
        /* Slices */ FromHost(0),
        /* Cohesion */ Always(Level(0.495)),
        /* Depth */ FromHost(1),
        /* Ebb && Flow */ Always(Level(0.0)),
        /* Orientation */ FromHost(2),
        /* Rotate right */ FromHost(3),
        /* Spread */ FromHost(4),
        /* Alternate */ Always(Check(false)),
        /* Fog */ FromHost(5),
        /* Shine */ FromHost(6),
        /* Background */ FromHost(7),
    }},
};

static_assert(AnswersAll(kWrap3DPizzaBoxes, kPizzaBoxes));

using CWrap3DPizzaBoxes = Wrapper<D3DLayers, kWrap3DPizzaBoxes>;

} // namespace kelmora

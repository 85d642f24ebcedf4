#include "effects/common/tables.h"

#include <bit>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

constexpr Face<2, 1> kSound{
    .name = "Sound",
    .helpId = 1,
    .knobs = {{
        {"Level", Level(0.5), {0, 0, 1, 1}, {{0, 100}}, 1},
        {"Kind", Choice(1), {}, {}, {}, {}, {"One", "Two"}},
    }},
    .presets = {{{"First", {{Level(1.0), Choice(0)}}}}},
};
static_assert(IsSound(kSound));

/// kSound with one thing changed.
template <class Change>
consteval bool SoundWith(Change change)
{
    auto face = kSound;
    change(face);
    return IsSound(face);
}

// Each is a row that a table could hold by mistake.
static_assert(SoundWith([](auto&) {}));
static_assert(!SoundWith([](auto& face) { face.name = nullptr; }));
static_assert(!SoundWith([](auto& face) { face.knobs[0].name = nullptr; }));
static_assert(!SoundWith([](auto& face) { face.presets[0].name = nullptr; }));
static_assert(!SoundWith([](auto& face) { face.presets[0].values[1] = {}; }));        // a row cut short
static_assert(!SoundWith([](auto& face) { face.presets[0].values[0] = Choice(0); })); // another kind
static_assert(!SoundWith([](auto& face) { face.presets[0].values[0] = Level(1.01); }));
static_assert(!SoundWith([](auto& face) { face.knobs[0].initial = Level(-0.01); }));
static_assert(SoundWith([](auto& face) { face.presets[0].values[0] = LevelAsGiven(1.01); }));
static_assert(!SoundWith([](auto& face) { face.presets[0].values[1] = Choice(2); })); // no such choice
static_assert(!SoundWith([](auto& face) { face.knobs[0].scale = {}; }));
static_assert(!SoundWith([](auto& face) { face.knobs[1].hostFlag = 0u; })); // levels alone have one
static_assert(!SoundWith([](auto& face) { face.knobs[1].choices = {}; }));
static_assert(!SoundWith([](auto& face) { face.knobs[1].choices[1] = "twenty characters..."; }));
static_assert(!SoundWith([](auto& face) {
    face.knobs[0].name = "a name of forty characters does not fit."; // its end mark is the 41st
}));

TEST(Tables, Values_CarryTheirWordsAndKinds)
{
    EXPECT_EQ(Level(0.5).kind, ParamFloat);
    EXPECT_EQ(Level(0.5).word, 0x3F000000u);
    EXPECT_EQ(Level(0.5).wordY, 0u);
    EXPECT_EQ(LevelWith(0.5, 1.0).wordY, 0x3F800000u);
    EXPECT_EQ(Choice(3).kind, ParamChoice);
    EXPECT_EQ(Choice(3).word, 3u);
    EXPECT_EQ(Colour(0x00AABBCC).kind, ParamColor);
    EXPECT_EQ(Colour(0x00AABBCC).word, 0x00AABBCCu);
    EXPECT_EQ(Check(true).kind, ParamCheck);
    EXPECT_EQ(Check(true).word, 1u);
    EXPECT_EQ(Check(false).word, 0u);
    EXPECT_EQ(CheckAsGiven(0x3EE8F501).kind, ParamCheck);
    EXPECT_EQ(CheckAsGiven(0x3EE8F501).word, 0x3EE8F501u);
    EXPECT_EQ(CheckAsGiven(0x3EE8F501).wordY, 0u);
    EXPECT_EQ(Point(0.5, 1.0).kind, ParamPoint);
    EXPECT_EQ(Point(0.5, 1.0).wordY, 0x3F800000u);
}

TEST(Tables, ChoiceCount_EndsAtTheFirstEmptyPlace)
{
    EXPECT_EQ(kSound.knobs[0].ChoiceCount(), 0u);
    EXPECT_EQ(kSound.knobs[1].ChoiceCount(), 2u);
    // A constant: a look behind the last place would not compile.
    constexpr std::size_t all = [] {
        Knob full;
        full.choices.fill("x");
        return full.ChoiceCount();
    }();
    EXPECT_EQ(all, 10u);
}

} // namespace
} // namespace kelmora

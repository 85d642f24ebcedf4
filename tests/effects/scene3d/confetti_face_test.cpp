#include "effects/scene3d/confetti_face.h"

#include <string_view>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

static_assert(IsSound(kConfetti));

constexpr std::size_t kVacuum = 6;
constexpr std::size_t kReverse = 7;

const Preset<8>& Named(std::string_view name)
{
    for (const Preset<8>& preset : kConfetti.presets)
        if (preset.name == name)
            return preset;
    ADD_FAILURE() << name;
    return kConfetti.presets[0];
}

bool IsOn(const Value& value)
{
    return (value.word & 0xFF) != 0;
}

TEST(ConfettiFace, Knobs_TellTheirScales)
{
    EXPECT_TRUE(kConfetti.clearsRecord);
    EXPECT_EQ(kConfetti.knobs[0].initial.word, FloatWord(0.85f));
    EXPECT_EQ((*kConfetti.knobs[1].scale)[1], 20.0f);
    EXPECT_EQ(kConfetti.knobs[1].hostFlag, 0u);
    EXPECT_EQ(kConfetti.knobs[3].rect, (ParamRect{0, 90, 114, 10}));
    for (std::size_t k = 0; k < 8; ++k)
        EXPECT_EQ(kConfetti.knobs[k].angular.value_or(0), k == 4 ? 1 : 0);
}

TEST(ConfettiFace, Presets_TurnCheckBoxesOnByTheLowByte)
{
    for (const Preset<8>& preset : kConfetti.presets) {
        const std::string_view name = preset.name;
        EXPECT_EQ(IsOn(preset.values[kVacuum]), name.substr(0, 7) == "Vacuum " || name == "Dumping Logs")
            << name;
        EXPECT_EQ(IsOn(preset.values[kReverse]),
                  name == "Dive Into Place" || name == "Dumping Logs" || name == "Undo")
            << name;
    }
}

TEST(ConfettiFace, Kept_SomeCheckBoxes_CarryTheRestOfALevel)
{
    const std::string_view vacuums[] = {"Vacuum East", "Vacuum North", "Vacuum South", "Vacuum West"};
    for (const std::string_view name : vacuums) {
        EXPECT_EQ(Named(name).values[kVacuum].word, 0x3EDEB801u) << name;
        EXPECT_EQ(Named(name).values[kReverse].word, 0x3EE8F500u) << name;
    }
    for (const std::string_view name :
         {"Lotsa Leaves", "Wind Blown Panels Left", "Wind Blown Panels Right"}) {
        EXPECT_EQ(Named(name).values[kVacuum].word, 0u) << name;
        EXPECT_EQ(Named(name).values[kReverse].word, 0x3EE8F500u) << name;
    }
    EXPECT_EQ(Named("Undo").values[kReverse].word, 0x3EE8F501u);
    EXPECT_EQ(Named("Dumping Logs").values[kVacuum].word, 1u);
    EXPECT_EQ(Named("Blow East").values[kReverse].word, 0u);
}

TEST(ConfettiFace, SecondWords_AreZero)
{
    for (const Preset<8>& preset : kConfetti.presets)
        for (const Value& value : preset.values)
            EXPECT_EQ(value.wordY, 0u) << preset.name;
}

} // namespace
} // namespace kelmora

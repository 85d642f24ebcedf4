#include "host/commands/frame_choice.h"

#include <gtest/gtest.h>

#include "host/failure.h"

namespace kelmora::host {
namespace {

/// An effect of two levels, 0.25 and 0.5, with a preset that has 0.75 and 1.
EffectFace Face(int pictures)
{
    EffectFace face;
    face.name = "Tint";
    face.pictures = pictures;
    face.knobs.resize(2);
    face.knobs[0].name = "Red";
    face.knobs[0].standard.value = FloatWord(0.25f);
    face.knobs[1].name = "Blue";
    face.knobs[1].standard.value = FloatWord(0.5f);
    face.presets = {{"Loud", {{FloatWord(0.75f), 0, ParamFloat}, {FloatWord(1.0f), 0, ParamFloat}}}};
    return face;
}

std::vector<float> Levels(const FrameSettings& settings)
{
    std::vector<float> levels;
    for (const ParamValue& value : settings.knobs)
        levels.push_back(WordFloat(value.value));
    return levels;
}

TEST(ChosenSettings, NothingSet_GivesTheDefaults)
{
    const FrameSettings settings = ChosenSettings(Face(1), {});
    EXPECT_EQ(Levels(settings), (std::vector<float>{0.25f, 0.5f}));
    EXPECT_EQ(settings.format, PF_BGRA8);
    EXPECT_EQ(settings.time, 0.0);
}

TEST(ChosenSettings, Settings_ComeOverThePreset)
{
    FrameArguments arguments;
    arguments.preset = "loud";
    EXPECT_EQ(Levels(ChosenSettings(Face(1), arguments)), (std::vector<float>{0.75f, 1.0f}));
    arguments.settings = {"Blue=0.125"};
    EXPECT_EQ(Levels(ChosenSettings(Face(1), arguments)), (std::vector<float>{0.75f, 0.125f}));
}

TEST(ChosenSettings, FormatAndTime_ArePassedOn)
{
    FrameArguments arguments;
    arguments.format = PF_ARGB32F;
    arguments.time = 2.5;
    EXPECT_EQ(ChosenSettings(Face(1), arguments).format, PF_ARGB32F);
    EXPECT_EQ(ChosenSettings(Face(1), arguments).time, 2.5);
}

TEST(ChosenSettings, UnknownNames_AreRefused)
{
    FrameArguments arguments;
    arguments.preset = "Silent";
    EXPECT_THROW(ChosenSettings(Face(1), arguments), Failure);
    arguments.preset.clear();
    arguments.settings = {"Green=1"};
    EXPECT_THROW(ChosenSettings(Face(1), arguments), Failure);
}

TEST(CheckPictureCount, SecondPicture_MustBeThereForATransitionAlone)
{
    FrameArguments one;
    FrameArguments two;
    two.second = "b.png";
    EXPECT_NO_THROW(CheckPictureCount(Face(1), one));
    EXPECT_NO_THROW(CheckPictureCount(Face(2), two));
    EXPECT_THROW(CheckPictureCount(Face(2), one), Failure);
    EXPECT_THROW(CheckPictureCount(Face(1), two), Failure);
}

} // namespace
} // namespace kelmora::host

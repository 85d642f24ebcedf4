#include "effects/scene3d/pizza_boxes_face.h"

#include <string_view>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

static_assert(IsSound(kPizzaBoxes));

TEST(PizzaBoxesFace, Knobs_TellTheirScalesAndChoices)
{
    EXPECT_TRUE(kPizzaBoxes.clearsRecord);
    EXPECT_EQ(std::string_view(kPizzaBoxes.knobs[3].name), "Ebb && Flow");
    EXPECT_EQ((*kPizzaBoxes.knobs[0].scale)[0], 1.0f);
    EXPECT_EQ((*kPizzaBoxes.knobs[0].scale)[1], 10.0f);
    EXPECT_EQ(kPizzaBoxes.knobs[0].hostFlag, 0u);
    EXPECT_EQ(kPizzaBoxes.knobs[4].ChoiceCount(), 2u);
    EXPECT_EQ(kPizzaBoxes.knobs[10].ChoiceCount(), 3u);
    EXPECT_EQ(std::string_view(kPizzaBoxes.knobs[10].choices[2]), "Transparent");
    EXPECT_EQ(kPizzaBoxes.knobs[10].rect, (ParamRect{132, 181, 114, 20}));
}

TEST(PizzaBoxesFace, APreset_HoldsItsValues)
{
    const Preset<11>& saucers = kPizzaBoxes.presets[7];
    EXPECT_EQ(std::string_view(saucers.name), "Flying Saucers");
    const std::uint32_t words[11] = {FloatWord(0.47f),
                                     FloatWord(0.78f),
                                     FloatWord(0.7f),
                                     FloatWord(0.61f),
                                     0,
                                     1,
                                     1,
                                     1,
                                     FloatWord(0.415f),
                                     FloatWord(1.0f),
                                     2};
    for (std::size_t k = 0; k < 11; ++k)
        EXPECT_EQ(saucers.values[k].word, words[k]) << k;
}

TEST(PizzaBoxesFace, SecondWords_AreZero)
{
    for (const Preset<11>& preset : kPizzaBoxes.presets)
        for (const Value& value : preset.values)
            EXPECT_EQ(value.wordY, 0u) << preset.name;
}

} // namespace
} // namespace kelmora

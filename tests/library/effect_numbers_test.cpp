#include "library/effect_numbers.h"

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

struct Effect {
    std::int32_t number;
    const char* name;
    std::uint32_t helpId;
};

constexpr std::array kEffects{
    Effect{100, "3D Confetti", 970},     //
    Effect{101, "3D Pizza Boxes", 966},  //
    Effect{102, "Color Melt", 962},      //
    Effect{103, "Paper Collage", 962},   //
    Effect{104, "Smear", 966},           //
    Effect{105, "Active Camera", 965},   //
    Effect{106, "Air Brush", 961},       //
    Effect{107, "Crop Borders", 965},    //
    Effect{108, "Detail Enhancer", 961}, //
    Effect{109, "Water Color", 961},     //
};

TEST(EffectNumbers, EachNumber_GivesTheEffectOfItsNameCountedOnce)
{
    for (const Effect& expected : kEffects) {
        IVideoEffect* const effect = CreateEffectOfNumber(expected.number);
        ASSERT_NE(effect, nullptr) << expected.name;
        EXPECT_STREQ(effect->GetName(), expected.name);
        EXPECT_EQ(effect->GetHelpId(), expected.helpId) << expected.name;
        EXPECT_EQ(effect->Release(), 0u) << expected.name;
    }
}

TEST(EffectNumbers, TwoCalls_GiveTwoObjects)
{
    for (const Effect& expected : kEffects) {
        IVideoEffect* const first = CreateEffectOfNumber(expected.number);
        IVideoEffect* const second = CreateEffectOfNumber(expected.number);
        EXPECT_NE(first, second) << expected.name;
        first->Release();
        second->Release();
    }
}

TEST(EffectNumbers, AnyOtherNumber_GivesNull)
{
    std::vector<std::uint32_t> numbers{0x7FFFFFFF, 0x80000000, 0x80000064, 0xFFFFFFFF, 0xFFFFFF9C};
    for (std::uint32_t number = 0; number <= 255; ++number)
        numbers.push_back(number);
    std::mt19937 random(20260101);
    for (int i = 0; i < 1000; ++i)
        numbers.push_back(static_cast<std::uint32_t>(random()));
    for (const std::uint32_t number : numbers) {
        if (number < 100 || number > 109) {
            EXPECT_EQ(CreateEffectOfNumber(static_cast<std::int32_t>(number)), nullptr) << number;
        }
    }
}

} // namespace
} // namespace kelmora

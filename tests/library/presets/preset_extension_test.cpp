#include "library/presets/preset_extension.h"

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

std::u16string Extension(const char* libraryName, std::int32_t effectId)
{
    char16_t extension[kPresetExtensionCapacity];
    for (char16_t& c : extension)
        c = u'#';
    MakePresetExtension(libraryName, effectId, extension);
    return extension;
}

TEST(PresetExtension, EffectsOfThisLibrary_HaveTheLettersFromAToJ)
{
    const std::u16string letters = u"abcdefghij";
    for (std::size_t i = 0; i < letters.size(); ++i)
        EXPECT_EQ(Extension("Larkvee Kelmora", 100 + static_cast<std::int32_t>(i)),
                  u"fxpklm" + letters.substr(i, 1));
    EXPECT_EQ(Extension("Larkvee Kelmora", 105), u"fxpklmf");
}

TEST(PresetExtension, UnknownLibrary_HasACodeOfItsOwn)
{
    EXPECT_EQ(Extension("Another", 105), u"fxpunkf");
    EXPECT_EQ(Extension("", 100), u"fxpunka");
    EXPECT_EQ(Extension("larkvee kelmora", 100), u"fxpunka");
    EXPECT_EQ(Extension("Larkvee Kelmora ", 100), u"fxpunka");
    EXPECT_EQ(Extension("Larkvee", 100), u"fxpunka");
}

TEST(PresetExtension, NoLibrary_HasOneForAllEffects)
{
    EXPECT_EQ(Extension(nullptr, 100), u"prs");
    EXPECT_EQ(Extension(nullptr, -7), u"prs");
}

TEST(PresetExtension, AnyOtherNumber_HasTheDistanceFrom100CutToASignedByte)
{
    const auto letter = [](std::int32_t effectId) { return Extension("Larkvee Kelmora", effectId).at(6); };
    EXPECT_EQ(letter(125), u'z');
    EXPECT_EQ(letter(99), u'`');
    EXPECT_EQ(letter(227), char16_t(97 + 127));
    EXPECT_EQ(letter(228), char16_t(0xFFFF & (97 - 128))); // turns over
    EXPECT_EQ(letter(356), u'a');                          // comes round
    EXPECT_EQ(letter(45), u'*');                           // what the dialogs make of it is their matter
    // -2147483648 - 100 is 2147483548 = 0x7FFFFF9C, the byte -100.
    EXPECT_EQ(letter(std::numeric_limits<std::int32_t>::min()), char16_t(0xFFFF & (97 - 100)));
    // 2147483647 - 100 = 0x7FFFFF9B, the byte -101.
    EXPECT_EQ(letter(std::numeric_limits<std::int32_t>::max()), char16_t(0xFFFF & (97 - 101)));
}

TEST(PresetExtension, LetterThatIsZero_EndsTheExtension)
{
    EXPECT_EQ(Extension("Larkvee Kelmora", 3), u"fxpklm");
}

} // namespace
} // namespace kelmora

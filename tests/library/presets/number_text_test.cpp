#include "library/presets/number_text.h"

#include <bit>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/library/presets/comma_locale.h"

namespace kelmora {
namespace {

constexpr std::int32_t kMost = 0x7FFFFFFF;
constexpr std::int32_t kLeast = -kMost - 1;
constexpr float kLargest = std::numeric_limits<float>::max();

TEST(NumberText, ReadInteger_TakesWhatTheTextBeginsWith)
{
    struct Row {
        std::string_view text;
        std::int32_t number;
    };
    for (const Row& row : {
             Row{"", 0},
             Row{"0", 0},
             Row{"-0", 0},
             Row{"2", 2},
             Row{"256", 256},
             Row{"00012", 12},
             Row{"-1", -1},
             Row{"+3", 3},
             Row{" 4", 4},
             Row{"\t\n\v\f\r 5", 5},
             Row{"6 7", 6},
             Row{"8.9", 8},
             Row{"1e5", 1},
             Row{"0x10", 0},
             Row{"12abc", 12},
             Row{"abc", 0},
             Row{"-", 0},
             Row{"+", 0},
             Row{"+-5", 0},
             Row{"--5", 0},
             Row{"- 5", 0},
             Row{",5", 0},
             Row{".5", 0},
             Row{"   ", 0},
             Row{"16777215", 0xFFFFFF},
             Row{"2147483646", kMost - 1},
             Row{"2147483647", kMost},
             Row{"2147483648", kMost},
             Row{"4294967295", kMost},
             Row{"4294967296", kMost},
             Row{"99999999999", kMost},
             Row{"9223372036854775807", kMost},
             Row{"9223372036854775808", kMost},
             Row{"18446744073709551616", kMost},
             Row{"99999999999999999999999999999999999999999", kMost},
             Row{"-2147483647", -kMost},
             Row{"-2147483648", kLeast},
             Row{"-2147483649", kLeast},
             Row{"-99999999999", kLeast},
             Row{"-99999999999999999999999999999999999999999", kLeast},
         })
        EXPECT_EQ(ReadInteger(row.text), row.number) << row.text;
}

TEST(NumberText, ReadLevel_TakesWhatTheTextBeginsWith)
{
    struct Row {
        std::string text;
        float number;
    };
    const std::string zeros(400, '0');
    for (const Row& row : {
             Row{"", 0.0f},
             Row{"0.368421", 0.368421f},
             Row{"1", 1.0f},
             Row{"1.", 1.0f},
             Row{".5", 0.5f},
             Row{"-.5", -0.5f},
             Row{"+0.25", 0.25f},
             Row{" \t\r\n\v\f0.25", 0.25f},
             Row{"0.25xyz", 0.25f},
             Row{"0.25 0.5", 0.25f},
             Row{"1,5", 1.0f},
             Row{"2.5e1", 25.0f},
             Row{"2.5E-1", 0.25f},
             Row{"2.5e+1", 25.0f},
             Row{"2.5e", 2.5f},
             Row{"2.5e+", 2.5f},
             Row{"2.5ex", 2.5f},
             Row{"0x1p3", 0.0f},
             Row{".", 0.0f},
             Row{"-", 0.0f},
             Row{"+-1", 0.0f},
             Row{"e5", 0.0f},
             Row{".e5", 0.0f},
             Row{"abc", 0.0f},
             Row{"nan", 0.0f},
             Row{"NAN", 0.0f},
             Row{"-nan(1)", 0.0f},
             Row{"inf", 0.0f},
             Row{"-infinity", 0.0f},
             Row{"1e38", 1e38f},
             Row{"3.5e38", kLargest}, // a double, but no float
             Row{"1e39", kLargest},
             Row{"-1e39", -kLargest},
             Row{"1e400", kLargest}, // no double either
             Row{"-1e400", -kLargest},
             Row{"1e99999999999999999999", kLargest},
             Row{"0.0001e99999", kLargest},
             Row{"1" + zeros, kLargest},
             Row{"0." + zeros + "1e500", kLargest},
             Row{"1e-400", 0.0f}, // too small
             Row{"-1e-400", 0.0f},
             Row{"1e-99999999999999999999", 0.0f},
             Row{"1" + zeros + "e-1000", 0.0f},
             Row{"0." + zeros + "1", 0.0f},
             Row{"0e99999", 0.0f},
             Row{"1" + zeros + "e-400", 1.0f},
             Row{"0." + zeros + "1e401", 1.0f},
             Row{"1e-50", 0.0f},                   // a double, but no float
             Row{"1e-45", 1.401298464324817e-45f}, // the smallest of all
         })
        EXPECT_EQ(ReadLevel(row.text), row.number) << row.text;
}

TEST(NumberText, ReadLevel_RoundsToDoubleFirst)
{
    // The middle between 1 and the float after it, and a tail below the last digit of a double: as a double it is
    // the middle itself, which goes to the even neighbour, 1. Straight to float it would be the neighbour above.
    EXPECT_EQ(ReadLevel("1.000000059604644775390625000000000000001"), 1.0f);
}

TEST(NumberText, WriteLevel_HasSixDecimals)
{
    struct Row {
        float level;
        const char* text;
    };
    for (const Row& row : {
             Row{0.0f, "0.000000"},
             Row{-0.0f, "-0.000000"},
             Row{1.0f, "1.000000"},
             Row{0.5f, "0.500000"},
             Row{-0.25f, "-0.250000"},
             Row{0.36842105f, "0.368421"},
             Row{1e-7f, "0.000000"},
             Row{0.00000051f, "0.000001"},
             Row{0.0000019073486328125f, "0.000002"},  // 2^-19
             Row{0.00000095367431640625f, "0.000001"}, // 2^-20
             Row{0.015625f, "0.015625"},
             Row{0.0078125f, "0.007812"}, // a tie goes to even
             Row{0.0234375f, "0.023438"}, // likewise
             Row{123456792.0f, "123456792.000000"},
             Row{1e20f, "100000002004087734272.000000"},
             Row{kLargest, "340282346638528859811704183484516925440.000000"},
             Row{-kLargest, "-340282346638528859811704183484516925440.000000"},
             Row{std::numeric_limits<float>::infinity(), "inf"},
             Row{-std::numeric_limits<float>::infinity(), "-inf"},
             Row{std::numeric_limits<float>::quiet_NaN(), "nan"},
         }) {
        char text[kLevelTextCapacity];
        WriteLevel(row.level, text);
        EXPECT_STREQ(text, row.text);
    }
}

TEST(NumberText, EverySixDecimals_ComeBackToTheSameText)
{
    char first[kLevelTextCapacity];
    char second[kLevelTextCapacity];
    for (std::uint32_t word = 0; word < 0x3F800000; word += 4099) { // floats from 0 to 1
        WriteLevel(std::bit_cast<float>(word), first);
        WriteLevel(ReadLevel(first), second);
        ASSERT_STREQ(first, second);
    }
}

TEST(NumberText, LocaleWithADecimalComma_ChangesNothing)
{
    char text[kLevelTextCapacity];
    float read = 0.0f;
    {
        const CommaLocale locale;
        if (!CommaLocale::IsHere())
            GTEST_SKIP() << "there is no such locale here";
        WriteLevel(0.368421f, text);
        read = ReadLevel("0.75");
    }
    EXPECT_STREQ(text, "0.368421");
    EXPECT_EQ(read, 0.75f);
}

} // namespace
} // namespace kelmora

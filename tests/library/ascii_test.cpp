#include "library/ascii.h"

#include <string_view>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

TEST(Ascii, OfAllBytes_SixAreBlanksAndTenAreDigits)
{
    constexpr std::string_view blanks = " \t\n\v\f\r", digits = "0123456789";
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        EXPECT_EQ(IsBlank(c), blanks.find(c) != blanks.npos) << byte;
        EXPECT_EQ(IsDigit(c), digits.find(c) != digits.npos) << byte;
    }
}

} // namespace
} // namespace kelmora

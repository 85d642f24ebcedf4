#include <gtest/gtest.h>

#ifdef _WIN32

#include <string>

#include "platform/wide_win32.h"

namespace kelmora::platform {
namespace {

TEST(Wide, Text_IsTheSameCharacters)
{
    EXPECT_EQ(std::wstring(Wide(u"caf\u00E9 \U0001F600")), L"caf\u00E9 \U0001F600");
    EXPECT_EQ(Wide(nullptr), nullptr);
}

} // namespace
} // namespace kelmora::platform

#endif

#include "effects/common/by_format.h"

#include <gtest/gtest.h>

namespace kelmora {
namespace {

struct Set {
    int bgra8, argb8, bgra32f, argb32f;
};

TEST(ByFormat, EachPictureFormat_HasItsMember)
{
    const Set set = {1, 2, 3, 4};
    EXPECT_EQ(&ByFormat(set, PF_BGRA8), &set.bgra8);
    EXPECT_EQ(&ByFormat(set, PF_ARGB8), &set.argb8);
    EXPECT_EQ(&ByFormat(set, PF_BGRA32F), &set.bgra32f);
    EXPECT_EQ(&ByFormat(set, PF_ARGB32F), &set.argb32f);
}

TEST(ByFormat, OtherFormats_CountAsAlphaLastBytes)
{
    const Set set = {1, 2, 3, 4};
    for (const std::uint32_t format : {2u, 5u, 6u, 1000u})
        EXPECT_EQ(ByFormat(set, format), 1) << format;
}

} // namespace
} // namespace kelmora

#include "image/pixel_format.h"

#include <gtest/gtest.h>

namespace kelmora {
namespace {

struct Row {
    std::uint32_t format;
    int bytes, alpha;
    bool first, byteColour, floatColour, isFloat;
};

constexpr Row kRows[] = {
    // format      bytes alpha first  bytes  floats float
    {PF_BGRA8, 4, 3, false, true, false, false},    {PF_ARGB8, 4, 0, true, true, false, false},
    {PF_Packed8, 4, 3, false, false, false, false}, {PF_BGRA32F, 16, 3, false, false, true, true},
    {PF_ARGB32F, 16, 0, true, false, true, true},   {5, 0, 3, false, false, false, false},
    {PF_Mask8, 1, 3, false, false, false, false},   {PF_Mask32F, 4, 3, false, false, false, true},
    {8, 0, 3, false, false, false, false},          {0xFFFFFFFF, 0, 3, false, false, false, false},
};

TEST(PixelFormat, EveryCode_IsWhatTheTableSays)
{
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_EQ(PixelBytesOf(row.format), row.bytes);
        EXPECT_EQ(AlphaIndex(row.format), row.alpha);
        EXPECT_EQ(IsAlphaFirst(row.format), row.first);
        EXPECT_EQ(IsByteColour(row.format), row.byteColour);
        EXPECT_EQ(IsFloatColour(row.format), row.floatColour);
        EXPECT_EQ(IsFloat(row.format), row.isFloat);
        EXPECT_EQ(IsPicture(row.format), row.byteColour || row.floatColour);
    }
}

TEST(PixelFormat, AlphaLast_TurnsTheAlphaFirstCodesOnly)
{
    EXPECT_EQ(AlphaLast(PF_ARGB8), PF_BGRA8);
    EXPECT_EQ(AlphaLast(PF_ARGB32F), PF_BGRA32F);
    for (const std::uint32_t format : {0u, 2u, 3u, 5u, 6u, 7u, 99u})
        EXPECT_EQ(AlphaLast(format), format);
}

} // namespace
} // namespace kelmora

#include "image/pixel_layouts.h"

#include <type_traits>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

TEST(PixelLayouts, EveryPictureFormat_HasItsChannelPlaces)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F}) {
        SCOPED_TRACE(format);
        const bool first = format == PF_ARGB8 || format == PF_ARGB32F;
        const bool floats = format == PF_BGRA32F || format == PF_ARGB32F;
        int calls = 0;
        EXPECT_TRUE(WithLayout(format, [&]<class P>(P) {
            ++calls;
            EXPECT_EQ((std::is_same_v<typename P::Channel, float>), floats);
            EXPECT_EQ(P::b, first ? 3 : 0);
            EXPECT_EQ(P::g, first ? 2 : 1);
            EXPECT_EQ(P::r, first ? 1 : 2);
            EXPECT_EQ(P::a, first ? 0 : 3);
        }));
        EXPECT_EQ(calls, 1);
    }
}

TEST(PixelLayouts, OtherFormats_AreNotCalled)
{
    for (const std::uint32_t format : {2u, 5u, 6u, 7u, 8u, 0xFFFFFFFFu})
        EXPECT_FALSE(WithLayout(format, [](auto) { FAIL(); })) << format;
}

} // namespace
} // namespace kelmora

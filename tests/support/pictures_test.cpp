#include "tests/support/pictures.h"

#include <gtest/gtest.h>

namespace kelmora {
namespace {

TEST(Pictures_Ramp, RunsFromZeroToFull_InBothDirections)
{
    EXPECT_EQ(ColourAt(Motif::Ramp, 0, 0, 64, 48), (PixelColour{0, 0, 0, 255}));
    EXPECT_EQ(ColourAt(Motif::Ramp, 63, 47, 64, 48), (PixelColour{255, 255, 255, 255}));
    EXPECT_EQ(ColourAt(Motif::Ramp, 63, 0, 64, 48), (PixelColour{255, 0, 146, 255})); // 63 * 255 / 110
}

TEST(Pictures_AlphaRamp, AlphaRisesToTheRight)
{
    EXPECT_EQ(ColourAt(Motif::AlphaRamp, 0, 5, 52, 48).alpha, 0);
    EXPECT_EQ(ColourAt(Motif::AlphaRamp, 1, 5, 52, 48).alpha, 5);
    EXPECT_EQ(ColourAt(Motif::AlphaRamp, 51, 5, 52, 48).alpha, 255);
}

TEST(Pictures_Checkerboard, AlternatesByPixel)
{
    EXPECT_EQ(ColourAt(Motif::Checkerboard, 0, 0, 8, 8), (PixelColour{0, 0, 0, 255}));
    EXPECT_EQ(ColourAt(Motif::Checkerboard, 1, 0, 8, 8), (PixelColour{255, 255, 255, 255}));
    EXPECT_EQ(ColourAt(Motif::Checkerboard, 1, 1, 8, 8), (PixelColour{0, 0, 0, 255}));
}

TEST(Pictures_SoftEdges, LightInTheMiddle_GroundInTheCorners)
{
    EXPECT_EQ(ColourAt(Motif::SoftEdges, 32, 24, 64, 48), (PixelColour{230, 250, 255, 255}));
    EXPECT_EQ(ColourAt(Motif::SoftEdges, 0, 0, 64, 48), (PixelColour{120, 60, 20, 255}));
}

TEST(Pictures_Moving, EveryFrame_IsAnotherPicture)
{
    const GuardedPicture first = MakePicture(Motif::Moving, 64, 48, PF_BGRA8, {}, 0);
    for (std::int32_t frame = 1; frame < 10; ++frame)
        EXPECT_FALSE(Equal(MakePicture(Motif::Moving, 64, 48, PF_BGRA8, {}, frame), first)) << frame;
}

TEST(Pictures_AllMotifs, ShowTheSameColoursInEveryFormat)
{
    for (const Motif motif : kAllMotifs) {
        const GuardedPicture bgra = MakePicture(motif, 33, 17, PF_BGRA8);
        const GuardedPicture argb = MakePicture(motif, 33, 17, PF_ARGB8);
        const GuardedPicture floats = MakePicture(motif, 33, 17, PF_BGRA32F);
        EXPECT_TRUE(Equal(WithChannelsReversed(bgra), argb)) << Name(motif);
        EXPECT_TRUE(Equal(WithChannelsReversed(floats), MakePicture(motif, 33, 17, PF_ARGB32F)))
            << Name(motif);
        for (std::int32_t channel = 0; channel < 4; ++channel)
            EXPECT_EQ(floats.Float(20, 9, channel), ByteLevel(bgra.Byte(20, 9, channel))) << Name(motif);
    }
}

TEST(Pictures_AllMotifs, AreNotFlat_AndHaveNames)
{
    for (const Motif motif : kAllMotifs) {
        const GuardedPicture picture = MakePicture(motif, 33, 17, PF_BGRA8);
        GuardedPicture flat(picture);
        flat.Fill(picture.Byte(0, 0, 0), picture.Byte(0, 0, 1), picture.Byte(0, 0, 2), picture.Byte(0, 0, 3));
        EXPECT_FALSE(Equal(picture, flat)) << Name(motif);
        EXPECT_EQ(MotifNamed(Name(motif)), motif);
    }
    EXPECT_FALSE(MotifNamed("no-such-motif"));
}

TEST(Pictures_AllMotifs, DrawOnSizesDownToOne)
{
    for (const Motif motif : kAllMotifs)
        for (const std::int32_t size : {1, 2, 3})
            EXPECT_TRUE(MakePicture(motif, size, 4 - size, PF_Mask8).Intact());
}

} // namespace
} // namespace kelmora

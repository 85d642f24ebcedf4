#include "effects/painterly/edge_lift.h"

#include <array>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "contract/video_frame.h"

namespace kelmora {
namespace {

using Pixel8 = std::array<std::uint8_t, 4>;
using PixelF = std::array<float, 4>;

// One pixel, blue green red alpha.
Pixel8 Lift(Pixel8 picture, Pixel8 blurred, float edge)
{
    EdgeLiftKeepAlpha_BGRA8(picture.data(), blurred.data(), 1, 1, 1, 1, edge);
    return blurred;
}

PixelF Lift(PixelF picture, PixelF blurred, float edge)
{
    EdgeLiftKeepAlpha_BGRA32F(picture.data(), blurred.data(), 1, 1, 1, 1, edge);
    return blurred;
}

TEST(EdgeLift, Bytes_FullEdge_TakesTheDarkerOfEachColour)
{
    // The share is 0: nothing is darker than that.
    EXPECT_EQ(Lift(Pixel8{10, 200, 30, 77}, Pixel8{20, 100, 30, 5}, 1.0f), (Pixel8{10, 100, 30, 77}));
    EXPECT_EQ(Lift(Pixel8{0, 0, 0, 0}, Pixel8{255, 255, 255, 255}, 1.0f), (Pixel8{0, 0, 0, 0}));
}

TEST(EdgeLift, Bytes_NoEdge_LiftsUpTo245Of256OfTheBlur)
{
    // Luminances: blur 255 * 200 >> 8 = 199, times 245 >> 8 = 190; picture 255 * 100 >> 8 = 99. A rise of 91.
    EXPECT_EQ(Lift(Pixel8{100, 100, 100, 9}, Pixel8{200, 200, 200, 1}, 0.0f), (Pixel8{191, 191, 191, 9}));
}

TEST(EdgeLift, Bytes_LuminanceWeighsGreenMost)
{
    // Green 255: 149 * 255 >> 8 = 148, times 245 >> 8 = 141. Picture black.
    EXPECT_EQ(Lift(Pixel8{0, 0, 0, 9}, Pixel8{0, 255, 0, 1}, 0.0f), (Pixel8{141, 141, 141, 9}));
    // Red 255: 76 * 255 >> 8 = 75, times 245 >> 8 = 71.
    EXPECT_EQ(Lift(Pixel8{0, 0, 0, 9}, Pixel8{0, 0, 255, 1}, 0.0f), (Pixel8{71, 71, 71, 9}));
    // Blue 255: 30 * 255 >> 8 = 29, times 245 >> 8 = 27.
    EXPECT_EQ(Lift(Pixel8{0, 0, 0, 9}, Pixel8{255, 0, 0, 1}, 0.0f), (Pixel8{27, 27, 27, 9}));
}

TEST(EdgeLift, Bytes_LiftedColours_StopAt255)
{
    // Picture: blue 250 alone, 30 * 250 >> 8 = 29. Blur white: 254 * 245 >> 8 = 243. A rise of 214.
    EXPECT_EQ(Lift(Pixel8{250, 0, 0, 9}, Pixel8{255, 255, 255, 1}, 0.0f), (Pixel8{255, 214, 214, 9}));
}

TEST(EdgeLift, Bytes_EqualToTheThreshold_TakesTheDarker)
{
    // Half edge: 245 - 61.25 = 183.75, so 183. Blur 200 grey: 199 * 183 >> 8 = 142. A grey of 143 has
    // luminance 255 * 143 >> 8 = 142: not below. One of 142 has 141 and rises by 1.
    EXPECT_EQ(Lift(Pixel8{143, 143, 143, 9}, Pixel8{200, 100, 240, 1}, 0.5f)[3], 9);
    EXPECT_EQ(Lift(Pixel8{143, 143, 143, 9}, Pixel8{200, 200, 200, 1}, 0.5f), (Pixel8{143, 143, 143, 9}));
    EXPECT_EQ(Lift(Pixel8{142, 142, 142, 9}, Pixel8{200, 200, 200, 1}, 0.5f), (Pixel8{143, 143, 143, 9}));
}

TEST(EdgeLift, Bytes_EdgesOutsideTheRange_AreDefined)
{
    const Pixel8 picture = {10, 20, 30, 9}, blurred = {200, 15, 200, 1}, darker = {10, 15, 30, 9};
    for (const float edge : {2.0f, -2.0f, 1e30f, std::numeric_limits<float>::infinity(),
                             std::numeric_limits<float>::quiet_NaN()})
        EXPECT_EQ(Lift(picture, blurred, edge), darker) << edge;
}

TEST(EdgeLift, AlphaFirst_ReadsTheColoursFromTheOtherEnd)
{
    const Pixel8 picture = {9, 100, 100, 100};
    Pixel8 output = {1, 200, 200, 200};
    EdgeLiftKeepAlpha_ARGB8(picture.data(), output.data(), 1, 1, 1, 1, 0.0f);
    EXPECT_EQ(output, (Pixel8{9, 191, 191, 191}));
    const Pixel8 black = {9, 0, 0, 0};
    output = {1, 255, 0, 0}; // red
    EdgeLiftKeepAlpha_ARGB8(black.data(), output.data(), 1, 1, 1, 1, 0.0f);
    EXPECT_EQ(output, (Pixel8{9, 71, 71, 71}));
    const PixelF blackFloat = {0.5f, 0, 0, 0};
    PixelF red = {1, 1, 0, 0};
    EdgeLiftKeepAlpha_ARGB32F(blackFloat.data(), red.data(), 1, 1, 1, 1, 0.0f);
    EXPECT_EQ(red[0], 0.5f);
    EXPECT_NEAR(red[1], 0.298 * 0.9607843160629272, 1e-7);
    EXPECT_EQ(red[2], red[1]);
    EXPECT_EQ(red[3], red[1]);
}

TEST(EdgeLift, Floats_NoEdge_LiftUpToTheShareOfTheBlur)
{
    // Weights 0.298, 0.586, 0.113 sum to 0.997: blur 0.997, share 0.9607843, picture black.
    const PixelF lifted = Lift(PixelF{0, 0.25f, 0, 0.5f}, PixelF{1, 1, 1, 1}, 0.0f);
    const double rise = 0.997 * 0.9607843160629272 - 0.25 * 0.586;
    EXPECT_NEAR(lifted[0], rise, 2e-7);
    EXPECT_NEAR(lifted[1], 0.25 + rise, 2e-7);
    EXPECT_NEAR(lifted[2], rise, 2e-7);
    EXPECT_EQ(lifted[3], 0.5f);
}

TEST(EdgeLift, Floats_LiftedColours_HaveNoTop)
{
    EXPECT_GT(Lift(PixelF{1, 0, 0, 1}, PixelF{1, 1, 1, 1}, 0.0f)[0], 1.8f); // 1 + 0.9579 - 0.113
}

TEST(EdgeLift, Floats_FullEdge_TakesTheDarkerOfEachColour)
{
    EXPECT_EQ(Lift(PixelF{0.1f, 0.8f, 0.3f, 0.7f}, PixelF{0.2f, 0.4f, 0.3f, 0.1f}, 1.0f),
              (PixelF{0.1f, 0.4f, 0.3f, 0.7f}));
}

TEST(EdgeLift, Rows_AreFoundByTheirLengthInPixels)
{
    // 2 x 2 pixels in rows of 3 and of 4: what lies between stays.
    std::vector<std::uint8_t> picture(2 * 3 * 4, 50), output(2 * 4 * 4, 40);
    EdgeLiftKeepAlpha_BGRA8(picture.data(), output.data(), 3, 4, 2, 2, 1.0f);
    for (std::size_t i = 0; i < output.size(); ++i) {
        const std::size_t pixel = i / 4 % 4;
        EXPECT_EQ(output[i], pixel >= 2 ? 40 : i % 4 == 3 ? 50 : 40) << i;
    }
}

TEST(EdgeLift, Row_ResultApart_IsThatOfTheMember)
{
    std::mt19937 random(1);
    std::vector<std::uint8_t> picture(4 * 70), blurred(4 * 70), result(4 * 70);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        picture[i] = static_cast<std::uint8_t>(random());
        blurred[i] = static_cast<std::uint8_t>(random());
    }
    EdgeLiftRow(PF_ARGB8, 0.3f)(picture.data(), blurred.data(), result.data(), 70);
    EdgeLiftKeepAlpha_ARGB8(picture.data(), blurred.data(), 70, 70, 70, 1, 0.3f);
    EXPECT_EQ(result, blurred);
}

} // namespace
} // namespace kelmora

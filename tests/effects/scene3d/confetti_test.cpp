#include "effects/scene3d/confetti.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "effects/scene3d/face_light.h"
#include "effects/scene3d/quad_mesh.h"
#include "tests/effects/scene3d/transitions.h"
#include "tests/golden/effect_presets.h"
#include "tests/reference/confetti.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::BlowingLeaves;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Levels by name; the defaults are a flat flight to the right in full light.
struct Flight {
    float shading = 1, columns = 0, rows = 0, power = 0, direction = 0.5f, flutter = 0, vacuum = 0,
          reverse = 0;

    std::vector<float> Levels() const
    {
        return {shading, columns, rows, power, direction, flutter, vacuum, reverse};
    }
};

/// The level of a number of columns or rows.
constexpr float Pieces(int count)
{
    return static_cast<float>(count - 1) / 19.0f + 0.001f;
}

GuardedPicture Fly(const Flight& flight, const GuardedPicture& in, const GuardedPicture& second,
                   double progress)
{
    return Rendered(kEffect, flight.Levels(), in, second, progress);
}

/// Whether a flight cuts the picture into so many columns and rows: no other number looks the same half way.
void ExpectPieces(std::vector<float> levels, int columns, int rows)
{
    const GuardedPicture in = Noisy(64, 48, PF_BGRA8, 1), second = Noisy(64, 48, PF_BGRA8, 2);
    levels[3] = levels[4] = 0.3f; // so that no row or column flies with another
    const GuardedPicture out = Rendered(kEffect, levels, in, second, 0.4);
    for (const int moreColumns : {-1, 0, 1})
        for (const int moreRows : {-1, 0, 1}) {
            if (columns + moreColumns < 1 || rows + moreRows < 1 || columns + moreColumns > 20
                || rows + moreRows > 20)
                continue;
            levels[1] = Pieces(columns + moreColumns);
            levels[2] = Pieces(rows + moreRows);
            EXPECT_EQ(static_cast<bool>(Equal(Rendered(kEffect, levels, in, second, 0.4), out)),
                      moreColumns == 0 && moreRows == 0)
                << columns + moreColumns << " by " << rows + moreRows;
        }
}

GuardedPicture Plain(std::int32_t width, std::int32_t height, std::uint8_t blue, std::uint8_t green,
                     std::uint8_t red, std::uint8_t alpha)
{
    GuardedPicture picture(width, height, PF_BGRA8);
    picture.Fill(blue, green, red, alpha);
    return picture;
}

// --- the ends -------------------------------------------------------------------------------------------------

TEST(Confetti, Render_AtTheEnds_IsTheBarePicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float reverse : {0.0f, 1.0f})
            for (const float vacuum : {0.0f, 1.0f}) {
                const GuardedPicture in = Noisy(30, 20, format, 1), second = Noisy(30, 20, format, 2);
                const std::vector<float> levels = {0.5f, 0.3f, 0.4f, 0.5f, 0.1f, 0.6f, vacuum, reverse};
                for (const double start : {0.0, -0.0, -1e-9, -3.0, -1e300, -kInfinity, kNaN})
                    EXPECT_TRUE(Equal(Rendered(kEffect, levels, in, second, start), in)) << start;
                for (const double end : {1.0, 1.000001, 7.0, 1e300, kInfinity})
                    EXPECT_TRUE(Equal(Rendered(kEffect, levels, in, second, end), second)) << end;
            }
}

TEST(Confetti, Render_AtTheEnds_AsksForNoMemory)
{
    const GuardedPicture in = Noisy(30, 20, PF_BGRA8, 1);
    FakeMemoryProvider memory;
    FakeHost host(Levels(kEffect, {0.5f, 0.3f, 0.4f, 0.5f, 0.1f, 0.6f, 0, 0}));
    host.SetMemory(&memory);
    GuardedPicture out = in;
    Moment moment;
    const GuardedPicture second = Incoming(in);
    moment.second = &second;
    for (const double progress : {-1.0, 0.0, 1.0, 2.0}) {
        moment.progress = progress;
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
    }
    EXPECT_TRUE(memory.Calls().empty());
}

TEST(Confetti, Render_JustAfterTheStart_ShowsThePictureWithoutSeams)
{
    // What flies has moved by less than the dust that is brushed off.
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& [width, height] : {std::pair{64, 48}, {61, 47}, {29, 31}, {120, 40}})
            for (const float pieces : {0.0f, 0.315f, 0.21f, 0.6f, 1.0f})
                for (const float vacuum : {0.0f, 1.0f}) {
                    const GuardedPicture in = Noisy(width, height, format, 1);
                    const GuardedPicture second = Noisy(width, height, format, 2);
                    const std::vector<float> levels = {0.85f, pieces, pieces, 0.5f, 0.1f, 0.41f, vacuum, 0};
                    EXPECT_TRUE(Equal(Rendered(kEffect, levels, in, second, 1e-12), in))
                        << width << " x " << height << " " << FormatName(format) << ", " << pieces;
                }
}

TEST(Confetti, Render_Reversed_IsTheOtherWayRoundInTimeAndPictures)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(30, 20, format, 1), second = Noisy(30, 20, format, 2);
        for (const double progress : {0.125, 0.25, 0.5, 0.75}) {
            std::vector<float> levels = {0.5f, 0.3f, 0.4f, 0.5f, 0.1f, 0.6f, 0, 0};
            const GuardedPicture forward = Rendered(kEffect, levels, second, in, 1 - progress);
            levels[7] = 1;
            EXPECT_TRUE(Equal(Rendered(kEffect, levels, in, second, progress), forward)) << progress;
        }
    }
}

// --- one piece, by hand ---------------------------------------------------------------------------------------

// The wind springs from (-sqrt(2), 0, -0.1). It blows along (sqrt(2), 0, 0.1), whose length is sqrt(2.01), for
// 2 sqrt(2): at a quarter by 0.705346 to the right and 0.049876 toward the viewer. Seen from 6 away that is
// larger by 1 / (1 - 0.049876 / 6) = 1.008382: from x = -0.297125 to 1.719640, y = +-1.008382. Of 65 columns
// these are 22.4920 to 87.0285, of 65 rows -0.268230 to 64.268230.
TEST(Confetti, Render_OnePieceOnItsWay_LiesWhereThePerspectivePutsIt)
{
    GuardedPicture in(65, 65, PF_BGRA32F), second(65, 65, PF_BGRA32F);
    for (int y = 0; y < 65; ++y)
        for (int x = 0; x < 65; ++x) {
            in.SetFloat(x, y, 0, static_cast<float>(x) / 64);
            in.SetFloat(x, y, 1, static_cast<float>(y) / 64);
            in.SetFloat(x, y, 3, 1.0f);
        }
    second.FillFloat(0, 0, 1, 0.25f);
    const GuardedPicture out = Fly({}, in, second, 0.25);
    for (int y = 0; y < 65; ++y)
        for (int x = 0; x < 65; ++x) {
            const double across = (x - 22.4920) / (87.0285 - 22.4920), down = (y + 0.26823) / 64.53646;
            if (x <= 21) {
                EXPECT_EQ(PixelAt(out, x, y), PixelAt(second, x, y)) << x;
            } else if (x >= 23) {
                EXPECT_NEAR(static_cast<double>(out.Float(x, y, 0)), across, 2e-5);
                EXPECT_NEAR(static_cast<double>(out.Float(x, y, 1)), down, 2e-5);
                EXPECT_EQ(out.Float(x, y, 2), 0.0f);
                EXPECT_EQ(out.Float(x, y, 3), 1.0f);
            } else { // the blended border, 0.492 away
                EXPECT_NEAR(static_cast<double>(out.Float(x, y, 2)), 0.492, 1e-4);
                EXPECT_NEAR(static_cast<double>(out.Float(x, y, 3)), 0.508 + 0.492 * 0.25, 1e-4);
            }
        }
}

TEST(Confetti, Render_Power_CarriesThreeTimesAsFar)
{
    // Half a way at a power of 3 is beyond the frame's right edge: 4.24 to the right.
    const GuardedPicture in = Noisy(33, 33, PF_BGRA8, 1), second = Noisy(33, 33, PF_BGRA8, 2);
    Flight flight;
    EXPECT_FALSE(Equal(Fly(flight, in, second, 0.5), second));
    EXPECT_TRUE(Equal(Fly(flight, in, second, 0.75), second)) << "2.12 to the right";
    flight.power = 1;
    EXPECT_FALSE(Equal(Fly(flight, in, second, 0.2), second)) << "1.69 to the right";
    EXPECT_TRUE(Equal(Fly(flight, in, second, 0.3), second)) << "2.54 to the right";
}

TEST(Confetti, Render_Direction_IsWhereTheWindComesFrom)
{
    // A quarter of a turn on, it comes from above, and so on. What is left free shows the second picture.
    const GuardedPicture in = Plain(33, 33, 10, 20, 30, 255), second = Plain(33, 33, 200, 210, 220, 255);
    constexpr struct {
        float direction;
        int freeX, freeY, coveredX, coveredY;
    } rows[] = {{0.0f, 31, 16, 2, 16}, {0.25f, 16, 2, 16, 30}, {0.5f, 2, 16, 30, 16}, {0.75f, 16, 30, 16, 2}};
    for (const auto& row : rows) {
        Flight flight;
        flight.direction = row.direction;
        const GuardedPicture out = Fly(flight, in, second, 0.25);
        EXPECT_EQ(PixelAt(out, row.freeX, row.freeY), PixelAt(second, 0, 0)) << row.direction;
        EXPECT_EQ(PixelAt(out, row.coveredX, row.coveredY), PixelAt(in, 0, 0)) << row.direction;
    }
}

TEST(Confetti, Render_WithoutFlutter_FliesFlatInFullLight)
{
    const GuardedPicture in = Plain(40, 40, 255, 255, 255, 255), second = Plain(40, 40, 0, 0, 0, 0);
    Flight flight;
    flight.columns = flight.rows = Pieces(4);
    bool isDim = false;
    for (const float flutter : {0.0f, 0.41f}) {
        flight.flutter = flutter;
        const GuardedPicture out = Fly(flight, in, second, 0.3);
        int bright = 0, dim = 0;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x) {
                if (out.Byte(x, y, 3) != 255)
                    continue; // a border
                ++(out.Byte(x, y, 0) == 255 ? bright : dim);
            }
        EXPECT_GT(bright, 100);
        isDim = dim > 20;
        EXPECT_EQ(isDim, flutter > 0.0f) << dim;
    }
}

TEST(Confetti, Render_Shading_IsHowDarkAPieceGets)
{
    const GuardedPicture in = Plain(40, 40, 200, 200, 200, 255), second = Plain(40, 40, 0, 0, 0, 0);
    Flight flight;
    flight.columns = flight.rows = Pieces(5);
    flight.flutter = 0.8f;
    int least[3] = {255, 255, 255};
    constexpr float shadings[] = {0.0f, 0.5f, 1.0f};
    for (std::size_t i = 0; i < 3; ++i) {
        flight.shading = shadings[i];
        for (const double progress : {0.2, 0.3, 0.4, 0.5, 0.6}) {
            const GuardedPicture out = Fly(flight, in, second, progress);
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 40; ++x)
                    if (out.Byte(x, y, 3) == 255)
                        least[i] = std::min<int>(least[i], out.Byte(x, y, 0));
        }
    }
    EXPECT_EQ(least[0], 200);
    EXPECT_GE(least[1], 100) << "half of the light misses nothing";
    EXPECT_LT(least[1], 150);
    EXPECT_LT(least[2], 60);
}

// --- many pieces ----------------------------------------------------------------------------------------------

TEST(Confetti, Render_KnobDefaults_CutSixByFourPieces)
{
    ExpectPieces({0.85f, 0.315f, 0.21f, 0.5f, 0.0f, 0.41f, 0, 0}, 6, 4);
}

TEST(Confetti, Render_BlowingSticks_HasNineteenRowsOfOne)
{
    ASSERT_STREQ(kConfettiPresets[8].name, "Blowing Sticks");
    ExpectPieces(ValuesOf(kConfettiPresets[8], 8), 1, 19);
}

TEST(Confetti, Render_ColumnsAndRowsAtZero_AreOnePieceThatLeavesAtOnce)
{
    const GuardedPicture in = Noisy(64, 48, PF_BGRA8, 1), second = Noisy(64, 48, PF_BGRA8, 2);
    ExpectPieces(Flight{}.Levels(), 1, 1);
    EXPECT_FALSE(Equal(Fly({}, in, second, 0.01), in));
}

TEST(Confetti, Render_KnobsAtOne_CutTwentyByTwenty)
{
    Flight flight;
    flight.columns = flight.rows = 1;
    ExpectPieces(flight.Levels(), 20, 20);
}

// Two pieces side by side, and the wind from the left. At a tenth the left one, nearest the wind, has gone 0.28 to the
// right; the other one waits until 0.9.
TEST(Confetti, Render_ThePieceNearestTheWind_LeavesFirst)
{
    const GuardedPicture in = Noisy(65, 65, PF_BGRA8, 1), second = Noisy(65, 65, PF_BGRA8, 2);
    Flight flight;
    flight.columns = Pieces(2);
    const GuardedPicture out = Fly(flight, in, second, 0.1);
    for (int y = 0; y < 65; ++y) {
        for (int x = 0; x < 7; ++x)
            EXPECT_EQ(PixelAt(out, x, y), PixelAt(second, x, y)) << x;
        for (int x = 44; x < 65; ++x)
            EXPECT_EQ(PixelAt(out, x, y), PixelAt(in, x, y)) << x;
    }
    EXPECT_TRUE(Equal(Fly(flight, in, second, 1e-12), in));
}

// With "Vacuum" it is the right one that goes at once, by 0.28; the left one waits until 0.9 - sin(1) / 2 = 0.479.
TEST(Confetti, Render_InAVacuum_ThePieceFarthestFromTheWindLeavesFirst)
{
    const GuardedPicture in = Noisy(65, 65, PF_BGRA8, 1), second = Noisy(65, 65, PF_BGRA8, 2);
    Flight flight;
    flight.columns = Pieces(2);
    flight.vacuum = 1;
    const GuardedPicture out = Fly(flight, in, second, 0.1);
    for (int y = 0; y < 65; ++y) {
        for (int x = 0; x <= 32; ++x)
            EXPECT_EQ(PixelAt(out, x, y), PixelAt(in, x, y)) << x;
        for (int x = 34; x < 40; ++x)
            EXPECT_EQ(PixelAt(out, x, y), PixelAt(second, x, y)) << x;
    }
}

TEST(Confetti, Render_WhatHasNotStarted_IsThePictureWithoutSeams)
{
    // The wind blows from the right. The two left columns of five wait longer than a twentieth, and nothing reaches
    // them yet.
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(61, 40, format, 1), second = Noisy(61, 40, format, 2);
        Flight flight;
        flight.columns = flight.rows = Pieces(5);
        flight.direction = 0;
        const GuardedPicture out = Fly(flight, in, second, 0.05);
        for (int y = 0; y < 40; ++y)
            EXPECT_EQ(std::memcmp(out.Row(y), in.Row(y), static_cast<std::size_t>(22 * in.PixelBytes())), 0)
                << y;
        EXPECT_FALSE(Equal(out, in));
    }
}

TEST(Confetti, Render_CheckBoxes_AreReadByTheirLowByte)
{
    const GuardedPicture in = Noisy(40, 30, PF_BGRA8, 1), second = Noisy(40, 30, PF_BGRA8, 2);
    std::vector<float> levels = {0.29f, 0.222222f, 0.206111f, 0.485f, 0.5f, 0.64f, 1, 0};
    const GuardedPicture expected = Rendered(kEffect, levels, in, second, 0.4);
    std::vector<ParamValue> knobs = Levels(kEffect, levels);
    knobs[6].value = 0x3EDEB801;
    knobs[7].value = 0x3EE8F500;
    FakeHost host(knobs);
    Moment moment;
    moment.second = &second;
    GuardedPicture out(40, 30, PF_BGRA8);
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
    EXPECT_TRUE(Equal(out, expected));
}

TEST(Confetti, Render_Knobs_AreReadOnceInTheirOrder)
{
    for (const double progress : {0.0, 0.4, 1.0}) {
        FakeHost host(Levels(kEffect, {0.5f}));
        const GuardedPicture in = Noisy(20, 16, PF_BGRA8, 1), second = Noisy(20, 16, PF_BGRA8, 2);
        GuardedPicture out(20, 16, PF_BGRA8);
        Moment moment;
        moment.second = &second;
        moment.progress = progress;
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
        std::vector<KnobRead> expected;
        for (std::uint32_t k = 0; k < 8; ++k)
            expected.push_back({k, k < 6 ? ParamFloat : ParamCheck});
        EXPECT_EQ(host.Reads(), expected);
    }
}

// --- what steers the tumble -----------------------------------------------------------------------------------

/// How the frame is covered when the second picture is transparent.
std::vector<std::uint8_t> Coverage(const GuardedPicture& in, const GuardedPicture& second)
{
    Flight flight;
    flight.columns = flight.rows = Pieces(4);
    flight.flutter = 0.5f;
    const GuardedPicture out = Fly(flight, in, second, 0.4);
    std::vector<std::uint8_t> alphas;
    for (int y = 0; y < out.Height(); ++y)
        for (int x = 0; x < out.Width(); ++x)
            alphas.push_back(out.Byte(x, y, 3));
    return alphas;
}

TEST(Confetti, Render_BrightnessOfBothPictures_SteersTheTumbleAndNothingElseDoes)
{
    // 76 * 200 and 149 * 102 are both 59 after the shift.
    const GuardedPicture red = Plain(40, 40, 0, 0, 200, 255), green = Plain(40, 40, 0, 102, 0, 255);
    GuardedPicture mixed = red;
    for (int y = 0; y < 40; ++y)
        for (int x = y % 2; x < 40; x += 2)
            mixed.SetColour(x, y, 0, 102, 0, 255);
    const GuardedPicture bright = Plain(40, 40, 200, 200, 200, 255);
    const GuardedPicture clear = Plain(40, 40, 0, 0, 0, 0), clearBright = Plain(40, 40, 200, 200, 200, 0);
    EXPECT_EQ(Coverage(red, clear), Coverage(green, clear));
    EXPECT_EQ(Coverage(red, clear), Coverage(mixed, clear));
    EXPECT_NE(Coverage(red, clear), Coverage(bright, clear));
    EXPECT_NE(Coverage(red, clear), Coverage(red, clearBright));
}

TEST(Confetti, Render_BrightnessElsewhere_LeavesAPiecesTumbleAlone)
{
    // The wind comes from the left; the right piece, from column 21 on, waits.
    const GuardedPicture clear = Plain(41, 41, 0, 0, 0, 0), grey = Plain(41, 41, 120, 120, 120, 255);
    GuardedPicture half = grey;
    for (int y = 0; y < 41; ++y)
        for (int x = 22; x < 41; ++x)
            half.SetColour(x, y, 30, 30, 30, 255);
    Flight flight;
    flight.columns = Pieces(2);
    flight.flutter = 0.4f;
    const GuardedPicture all = Fly(flight, grey, clear, 0.05), partly = Fly(flight, half, clear, 0.05);
    for (int y = 0; y < 41; ++y)
        for (int x = 0; x < 14; ++x)
            EXPECT_EQ(PixelAt(all, x, y), PixelAt(partly, x, y)) << x << ", " << y;
}

TEST(Confetti, EqualBrightnessEverywhere_GivesAllPiecesOneTumble)
{
    const GuardedPicture grey = Plain(61, 47, 120, 120, 120, 255);
    FrameBuffer view;
    const VideoFrame frame = grey.Frame();
    view.AttachFrame(&frame);
    QuadGrid grid;
    grid.width = 61;
    grid.height = 47;
    grid.area = {Vector3{-1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}};
    grid.columns = 7;
    grid.rows = 5;
    grid.frontTexture = grid.backTexture = &view;
    const QuadMesh mesh = QuadMeshCreator().CreateGrid(grid);
    ASSERT_EQ(mesh.GetFaceCount(), 35u);
    for (std::size_t i = 0; i < 35; ++i) {
        const SourceRect part = mesh.GetFace(i).GetSourceRect(false);
        // 255 * 120 / 256 is 119.5.
        EXPECT_EQ(AverageBrightness(view, part.x, part.y, part.width, part.height), 119) << i;
    }
}

// --- pictures that are missing or of other sizes ----------------------------------------------------------------

TEST(Confetti, Render_ASecondPictureThatIsMissing_LeavesTheOutputUnderThePieces)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(65, 65, format, 1), before = Noisy(65, 65, format, 3);
        const GuardedPicture out = RenderedOver(before, kEffect, Flight{}.Levels(), in, nullptr, 0.25);
        for (int y = 0; y < 65; ++y)
            for (int x = 0; x <= 21; ++x) // as far as the piece above has gone
                ASSERT_EQ(PixelAt(out, x, y), PixelAt(before, x, y)) << x << ", " << y;
        EXPECT_NE(PixelAt(out, 40, 40), PixelAt(before, 40, 40));
        EXPECT_TRUE(Equal(RenderedOver(before, kEffect, Flight{}.Levels(), in, nullptr, 1.0), before));
        EXPECT_TRUE(Equal(RenderedOver(before, kEffect, Flight{}.Levels(), in, nullptr, 0.0), in));
    }
}

// Of one picture alone there is no brightness to steer by: dark pieces spin as bright ones do.
TEST(Confetti, Render_ASecondPictureThatIsMissing_LeavesThePiecesWithoutATumble)
{
    const GuardedPicture before = Plain(40, 40, 0, 0, 0, 0), second = before;
    const GuardedPicture dark = Plain(40, 40, 60, 60, 60, 255), bright = Plain(40, 40, 200, 200, 200, 255);
    Flight flight;
    flight.flutter = 0.3f;
    const auto alphas = [&](const GuardedPicture& in, const GuardedPicture* to) {
        const GuardedPicture out = RenderedOver(before, kEffect, flight.Levels(), in, to, 0.1);
        std::vector<int> all;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                all.push_back(out.Byte(x, y, 3));
        return all;
    };
    EXPECT_EQ(alphas(dark, nullptr), alphas(bright, nullptr));
    EXPECT_NE(alphas(dark, &second), alphas(bright, &second));
}

TEST(Confetti, Render_ReversedWithoutASecondPicture_ShowsTheFirstAlone)
{
    const GuardedPicture in = Noisy(30, 20, PF_BGRA8, 1), before = Noisy(30, 20, PF_BGRA8, 3);
    Flight flight;
    flight.reverse = 1;
    flight.columns = flight.rows = Pieces(3);
    EXPECT_TRUE(Equal(RenderedOver(before, kEffect, flight.Levels(), in, nullptr, 0.5), in));
}

TEST(Confetti, Render_SmallerPictures_AreCopiedAndPaddedAtTheEnds)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture in = Noisy(20, 30, format, 1), second = Noisy(50, 10, format, 2);
        const GuardedPicture before = Noisy(40, 40, format, 3);
        const GuardedPicture start = RenderedOver(before, kEffect, Flight{}.Levels(), in, &second, 0.0);
        const GuardedPicture end = RenderedOver(before, kEffect, Flight{}.Levels(), in, &second, 1.0);
        const std::vector<std::uint8_t> nothing(4, 0);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x) {
                ASSERT_EQ(PixelAt(start, x, y), x < 20 && y < 30 ? PixelAt(in, x, y) : nothing);
                ASSERT_EQ(PixelAt(end, x, y), y < 10 ? PixelAt(second, x, y) : nothing);
            }
    }
}

TEST(Confetti, Render_APictureOfAnotherSize_IsScaledOnThePieces)
{
    // Twice as far from pixel to pixel: even pixels of the output are the picture's own.
    const GuardedPicture in = Noisy(17, 13, PF_BGRA8, 1), second = Noisy(33, 25, PF_BGRA8, 2);
    const GuardedPicture out =
        RenderedOver(Noisy(33, 25, PF_BGRA8, 3), kEffect, Flight{}.Levels(), in, &second, 1e-12);
    for (int y = 0; y < 13; ++y)
        for (int x = 0; x < 17; ++x)
            EXPECT_EQ(PixelAt(out, 2 * x, 2 * y), PixelAt(in, x, y)) << x << ", " << y;
}

TEST(Confetti, Render_MorePiecesThanPixels_ShowNothingOfTheScratch)
{
    // Pieces of half a pixel or less may want a column or row that the picture does not have.
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB32F})
        for (int side = 2; side <= 10; ++side)
            for (int pieces = 2; pieces <= 20; pieces += 3)
                for (const bool across : {false, true}) {
                    Flight flight;
                    (across ? flight.columns : flight.rows) = Pieces(pieces);
                    const GuardedPicture in = Noisy(side, side, format, 1),
                                         second = Noisy(side, side, format, 2);
                    GuardedPicture outs[] = {Noisy(side, side, format, 3), Noisy(side, side, format, 3)};
                    for (const bool dirty : {false, true}) {
                        MemoryHabits habits;
                        habits.fill = dirty ? 0x7FA5A5A5u : 0u;
                        FakeMemoryProvider memory(habits);
                        FakeHost host(Levels(kEffect, flight.Levels()));
                        host.SetMemory(&memory);
                        Moment moment;
                        moment.second = &second;
                        moment.progress = 0.05;
                        EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, outs[dirty]));
                    }
                    EXPECT_TRUE(Equal(outs[1], outs[0])) << side << ", pieces " << pieces;
                }
}

TEST(Confetti, Render_OnePixelAcrossOrDown_ShowsTheBackgroundAlone)
{
    for (const auto& [width, height] : {std::pair{1, 20}, {20, 1}, {1, 1}}) {
        const GuardedPicture in = Noisy(width, height, PF_BGRA8, 1),
                             second = Noisy(width, height, PF_BGRA8, 2);
        EXPECT_TRUE(Equal(Fly({}, in, second, 0.3), second));
    }
}

// --- memory ---------------------------------------------------------------------------------------------------

TEST(Confetti, Render_RefusedBlocks_LeaveTheirPiecesOut)
{
    const std::vector<float> levels = {0.5f, Pieces(4), Pieces(3), 0.3f, 0.1f, 0.5f, 0, 0};
    const reference::ConfettiKnobs knobs = {0.5f, Pieces(4), Pieces(3), 0.3f, 0.1f, 0.5f, false, false};
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const bool fromThenOn : {false, true})
            for (int n = 0; n <= 12; ++n) {
                MemoryHabits habits;
                (fromThenOn ? habits.refuseFrom : habits.refuseOnly) = static_cast<std::uint64_t>(n);
                FakeMemoryProvider memory(habits);
                FakeHost host(Levels(kEffect, levels));
                host.SetMemory(&memory);
                const GuardedPicture in = Noisy(30, 24, format, 1), second = Noisy(30, 24, format, 2);
                GuardedPicture out = Noisy(30, 24, format, 3);
                const GuardedPicture expected = out;
                Moment moment;
                moment.second = &second;
                moment.progress = 0.3;
                EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
                const VideoFrame secondFrame = second.Frame();
                reference::Confetti(in.Frame(), &secondFrame, expected.Frame(), knobs,
                                    {0.3, fromThenOn ? n : -1, fromThenOn ? -1 : n});
                EXPECT_TRUE(Equal(out, expected)) << n;
            }
}

// --- against the plain version -----------------------------------------------------------------------------------

TEST(Confetti, Render_EveryPreset_IsThePlainVersion)
{
    std::mt19937 random(21);
    for (const EffectClass which : {kEffect, EffectClass::WrapConfetti}) {
        const bool wrapped = which != kEffect;
        const std::span<const PresetRow> presets =
            wrapped ? std::span<const PresetRow>(kWrapConfettiPresets) : kConfettiPresets;
        for (const PresetRow& preset : presets)
            for (const std::uint32_t format : kPictureFormats)
                for (const double progress : {0.05, 0.37, 0.81}) {
                    SCOPED_TRACE(preset.name);
                    CompareTransition(which, format, {36, 28, 36, 28, 36, 28},
                                      ValuesOf(preset, wrapped ? 4 : 8), progress, false, random);
                }
    }
}

TEST(Confetti, Render_RandomPicturesAndKnobs_AreThePlainVersion)
{
    std::mt19937 random(22);
    const auto level = [&] { return static_cast<float>(random() % 1001) / 1000.0f; };
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 60; ++i) {
            const std::vector<float> levels = {level(),
                                               level(),
                                               level(),
                                               level(),
                                               level(),
                                               level(),
                                               static_cast<float>(random() % 2),
                                               static_cast<float>(random() % 2)};
            TransitionSizes sizes = RandomSizes(random, 47, 47);
            for (std::int32_t* size : {&sizes.width, &sizes.height, &sizes.secondWidth, &sizes.secondHeight,
                                       &sizes.outWidth, &sizes.outHeight})
                ++*size;
            CompareTransition(kEffect, format, sizes, levels, static_cast<double>(level()), i % 7 == 0,
                              random);
        }
}

} // namespace
} // namespace kelmora

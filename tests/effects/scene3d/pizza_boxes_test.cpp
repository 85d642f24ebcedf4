#include "effects/scene3d/pizza_boxes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "tests/effects/scene3d/transitions.h"
#include "tests/golden/effect_presets.h"
#include "tests/reference/pizza_boxes.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::Layers;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The numbers of "Background" and "Orientation".
constexpr float kFirst = 0, kSecond = 1, kTransparent = 2;
constexpr float kHorizontal = 0, kVertical = 1;

/// Levels by name; one box on a transparent ground unless told.
struct Turn {
    float slices = 0, cohesion = 1, depth = 0, ebb = 0, orientation = kHorizontal, rotateRight = 0,
          spread = 0, alternate = 0, fog = 0, shine = 0, background = kTransparent;

    std::vector<float> Levels() const
    {
        return {slices, cohesion,  depth, ebb,   orientation, rotateRight,
                spread, alternate, fog,   shine, background};
    }
};

/// The level of a number of slices.
constexpr float Slices(int count)
{
    return static_cast<float>(count - 1) / 9.0f + 0.001f;
}

GuardedPicture TurnOver(const Turn& turn, const GuardedPicture& in, const GuardedPicture& second,
                        double progress)
{
    return Rendered(kEffect, turn.Levels(), in, second, progress);
}

GuardedPicture Plain(std::int32_t width, std::int32_t height, std::uint8_t blue, std::uint8_t green,
                     std::uint8_t red, std::uint8_t alpha, const PictureLayout& layout = {})
{
    GuardedPicture picture(width, height, PF_BGRA8, layout);
    picture.Fill(blue, green, red, alpha);
    return picture;
}

/// PF_BGRA32F, blue rising to the right and green downward, opaque.
GuardedPicture Ramp(std::int32_t width, std::int32_t height)
{
    GuardedPicture picture(width, height, PF_BGRA32F);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            picture.SetFloat(x, y, 0, static_cast<float>(x) / static_cast<float>(width - 1));
            picture.SetFloat(x, y, 1, static_cast<float>(y) / static_cast<float>(height - 1));
            picture.SetFloat(x, y, 3, 1.0f);
        }
    return picture;
}

const std::vector<Turn>& ManyTurns()
{
    static const std::vector<Turn> turns = [] {
        std::vector<Turn> all;
        for (const float orientation : {kHorizontal, kVertical})
            for (const int slices : {1, 2, 5, 10})
                for (const float cohesion : {0.0f, 0.4f, 1.0f})
                    for (const float other : {0.0f, 1.0f}) {
                        Turn turn;
                        turn.orientation = orientation;
                        turn.slices = Slices(slices);
                        turn.cohesion = cohesion;
                        turn.depth = turn.ebb = other;
                        turn.rotateRight = turn.spread = turn.alternate = other;
                        all.push_back(turn);
                    }
        return all;
    }();
    return turns;
}

// --- the ends -------------------------------------------------------------------------------------------------

TEST(PizzaBoxes, Render_AtZero_DrawsTheFirstPictureExactly)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& [width, height] : {std::pair{64, 48}, {61, 47}})
            for (const Turn& turn : ManyTurns()) {
                const GuardedPicture in = Noisy(width, height, format, 1);
                const GuardedPicture second = Noisy(width, height, format, 2);
                for (const double progress : {0.0, -0.0, 1e-13, kNaN})
                    ASSERT_TRUE(Equal(TurnOver(turn, in, second, progress), in))
                        << FormatName(format) << ", slices " << turn.slices << " at " << progress;
            }
}

TEST(PizzaBoxes, Render_AtZeroWithFogAndShine_DrawsTheFirstPictureExactly)
{
    const GuardedPicture in = Noisy(40, 30, PF_BGRA8, 1), second = Noisy(40, 30, PF_BGRA8, 2);
    Turn turn;
    turn.fog = turn.shine = 1;
    EXPECT_TRUE(Equal(TurnOver(turn, in, second, 0.0), in));
}

TEST(PizzaBoxes, Render_OutsideTheTransition_ShowsTheBarePicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float background : {kFirst, kSecond, kTransparent, 7.0f}) {
            const GuardedPicture in = Noisy(40, 30, format, 1), second = Noisy(40, 30, format, 2);
            Turn turn;
            turn.background = background;
            turn.fog = 0.5f;
            for (const double start : {-1e-300, -0.5, -1e300, -kInfinity})
                EXPECT_TRUE(Equal(TurnOver(turn, in, second, start), in)) << start;
            for (const double end : {1.0, 1.5, 1e300, kInfinity})
                EXPECT_TRUE(Equal(TurnOver(turn, in, second, end), second)) << end;
        }
}

TEST(PizzaBoxes, Render_JustBeforeTheEnd_TheBacksFaceTheViewer)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const Turn& turn : ManyTurns()) {
            const GuardedPicture in = Noisy(61, 47, format, 1), second = Noisy(61, 47, format, 2);
            ASSERT_TRUE(Equal(TurnOver(turn, in, second, 1.0 - 1e-12), second))
                << FormatName(format) << ", slices " << turn.slices << ", orientation " << turn.orientation;
        }
}

// --- one box, by hand ------------------------------------------------------------------------------------------

// A cube's depth is (2 + 2 sqrt(2)) / 2 = 2.414214. After a quarter of a turn its side is in front, 0.207107 behind
// the frame, and as wide as the box was deep. From 5 away it reaches to x = +-1.207107 / 1.041421 = +-1.159095, y =
// +-0.960226: of 65 columns -5.09105 to 69.09105, of 65 rows 1.27277 to 62.72723. It shows the whole first picture.
TEST(PizzaBoxes, Render_ACubeOnItsSide_LiesWhereThePerspectivePutsIt)
{
    const GuardedPicture in = Ramp(65, 65);
    GuardedPicture second(65, 65, PF_BGRA32F);
    second.FillFloat(0, 0, 1, 1);
    for (const float rotateRight : {0.0f, 1.0f}) {
        Turn turn;
        turn.rotateRight = rotateRight;
        const GuardedPicture out = TurnOver(turn, in, second, 0.5);
        for (int y = 0; y < 65; ++y)
            for (int x = 0; x < 65; ++x) {
                const double across = (x + 5.09105) / 74.1821, down = (y - 1.27277) / 61.45446;
                const double alpha = y == 1 || y == 63 ? 1 - 0.27277 : y < 1 || y > 63 ? 0 : 1;
                EXPECT_NEAR(static_cast<double>(out.Float(x, y, 3)), alpha, 1e-4) << y;
                if (alpha == 1) {
                    EXPECT_NEAR(static_cast<double>(out.Float(x, y, 0)), across, 2e-5) << x;
                    EXPECT_NEAR(static_cast<double>(out.Float(x, y, 1)), down, 2e-5) << y;
                }
                EXPECT_EQ(out.Float(x, y, 2), 0.0f);
            }
    }
}

// On its top or bottom the same box is as high as it was deep.
TEST(PizzaBoxes, Render_AVerticalCubeOnItsSide_IsTheSameTurnedByAQuarter)
{
    const GuardedPicture in = Ramp(65, 65), second = Ramp(65, 65);
    Turn turn;
    turn.orientation = kVertical;
    const GuardedPicture out = TurnOver(turn, in, second, 0.5);
    for (int y = 0; y < 65; ++y)
        for (int x = 2; x < 63; ++x) {
            EXPECT_NEAR(static_cast<double>(out.Float(x, y, 0)), (x - 1.27277) / 61.45446, 2e-5);
            EXPECT_NEAR(static_cast<double>(out.Float(x, y, 1)), (y + 5.09105) / 74.1821, 2e-5);
        }
    EXPECT_EQ(out.Float(0, 30, 3), 0.0f);
    EXPECT_EQ(out.Float(64, 30, 3), 0.0f);
}

// Five farther away: w is 1 + 5.207107 / 5 = 2.041421. Columns 13.078 to 50.922, rows 16.325 to 47.675.
TEST(PizzaBoxes, Render_Depth_PushesTheStackAway)
{
    const GuardedPicture in = Ramp(65, 65), second = Ramp(65, 65);
    Turn turn;
    turn.depth = 1;
    const GuardedPicture out = TurnOver(turn, in, second, 0.5);
    for (int y = 0; y < 65; ++y)
        for (int x = 0; x < 65; ++x) {
            if (x >= 14 && x <= 50 && y >= 17 && y <= 47) {
                EXPECT_EQ(out.Float(x, y, 3), 1.0f);
                EXPECT_NEAR(static_cast<double>(out.Float(x, y, 0)), (x - 13.0782) / 37.8436, 2e-5);
            }
            if (x < 13 || x > 51 || y < 16 || y > 48) {
                EXPECT_EQ(out.Float(x, y, 3), 0.0f) << x << ", " << y;
            }
        }
}

TEST(PizzaBoxes, Render_Background_LiesWhereNoBoxIs)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(40, 40, format, 1), second = Noisy(40, 40, format, 2);
        const GuardedPicture before = Noisy(40, 40, format, 3), nothing(40, 40, format);
        Turn turn;
        turn.depth = 1;
        const auto corner = [&](const ParamValue& background) {
            std::vector<ParamValue> knobs = Levels(kEffect, turn.Levels());
            knobs[10] = background;
            FakeHost host(knobs);
            Moment moment;
            moment.second = &second;
            moment.progress = 0.5;
            GuardedPicture out = before;
            EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
            EXPECT_NE(PixelAt(out, 20, 20), PixelAt(before, 20, 20));
            return PixelAt(out, 2, 2);
        };
        EXPECT_EQ(corner(ChoiceKnob(0)), PixelAt(in, 2, 2));
        EXPECT_EQ(corner(ChoiceKnob(1)), PixelAt(second, 2, 2));
        EXPECT_EQ(corner(ChoiceKnob(2)), PixelAt(nothing, 2, 2)) << "alpha included";
        for (const std::uint32_t other : {3u, 7u, 0x80000000u, 0xFFFFFFFFu})
            EXPECT_EQ(corner(ChoiceKnob(other)), PixelAt(before, 2, 2)) << other;
    }
}

// --- which way they turn ------------------------------------------------------------------------------------------

enum class Side { Left, Right, Top, Bottom, None };

/// Where the second picture comes round at three quarters of the turn of one box.
Side ComingFrom(const Turn& turn, bool bottomUp)
{
    const PictureLayout layout = {.bottomUp = bottomUp};
    const GuardedPicture in = Plain(65, 65, 0, 0, 200, 255, layout), second = Plain(65, 65, 200, 0, 0, 255);
    const GuardedPicture out = TurnOver(turn, in, second, 0.75);
    const auto isSecond = [&](int x, int y) { return out.Byte(x, y, 0) > 100 && out.Byte(x, y, 2) == 0; };
    const bool left = isSecond(10, 32), right = isSecond(54, 32), top = isSecond(32, 10),
               bottom = isSecond(32, 54);
    if (left + right == 1 && turn.orientation == kHorizontal)
        return left ? Side::Left : Side::Right;
    if (top + bottom == 1 && turn.orientation == kVertical)
        return top ? Side::Top : Side::Bottom;
    return Side::None;
}

TEST(PizzaBoxes, Render_Horizontal_TurnsToTheLeftUnlessRotateRight)
{
    for (const bool bottomUp : {false, true}) {
        Turn turn;
        EXPECT_EQ(ComingFrom(turn, bottomUp), Side::Right);
        turn.rotateRight = 1;
        EXPECT_EQ(ComingFrom(turn, bottomUp), Side::Left);
    }
}

TEST(PizzaBoxes, Render_Vertical_TurnsTheOtherWayForBottomUpPictures)
{
    Turn turn;
    turn.orientation = kVertical;
    EXPECT_EQ(ComingFrom(turn, false), Side::Bottom);
    EXPECT_EQ(ComingFrom(turn, true), Side::Top);
    turn.rotateRight = 1;
    EXPECT_EQ(ComingFrom(turn, false), Side::Top);
    EXPECT_EQ(ComingFrom(turn, true), Side::Bottom);
}

TEST(PizzaBoxes, Render_AnyOrientationButZero_IsVertical)
{
    const GuardedPicture in = Noisy(40, 30, PF_BGRA8, 1), second = Noisy(40, 30, PF_BGRA8, 2);
    Turn turn;
    turn.orientation = kVertical;
    turn.slices = Slices(3);
    const GuardedPicture expected = TurnOver(turn, in, second, 0.3);
    for (const std::uint32_t orientation : {1u, 2u, 7u, 0x80000000u}) {
        std::vector<ParamValue> knobs = Levels(kEffect, turn.Levels());
        knobs[4] = ChoiceKnob(orientation);
        FakeHost host(knobs);
        Moment moment;
        moment.second = &second;
        moment.progress = 0.3;
        GuardedPicture out(40, 30, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
        EXPECT_TRUE(Equal(out, expected)) << orientation;
    }
}

TEST(PizzaBoxes, Render_Alternate_TurnsOddBoxesTheOtherWay)
{
    const GuardedPicture in = Plain(65, 65, 0, 0, 200, 255), second = Plain(65, 65, 200, 0, 0, 255);
    Turn turn;
    turn.slices = Slices(2);
    for (const bool alternate : {false, true}) {
        turn.alternate = alternate ? 1.0f : 0.0f;
        const GuardedPicture out = TurnOver(turn, in, second, 0.75);
        const auto isSecond = [&](int x, int y) { return out.Byte(x, y, 0) > 100; };
        EXPECT_TRUE(isSecond(54, 16));
        EXPECT_FALSE(isSecond(10, 16));
        EXPECT_EQ(isSecond(54, 48), !alternate);
        EXPECT_EQ(isSecond(10, 48), alternate);
    }
}

// With "Ebb && Flow" at 0.3 a box swings by 1.5 toward the viewer at a quarter of its turn, and odd ones away.
TEST(PizzaBoxes, Render_AlternateWithEbb_SendsOddBoxesTheOtherWayInDepth)
{
    const GuardedPicture in = Plain(65, 65, 0, 0, 200, 255), second = Plain(65, 65, 200, 0, 0, 255);
    const auto rowsCovered = [&](float alternate, int from, int to) {
        Turn turn;
        turn.slices = Slices(2);
        turn.ebb = 0.3f;
        turn.alternate = alternate;
        const GuardedPicture out = TurnOver(turn, in, second, 0.25);
        int rows = 0;
        for (int y = from; y < to; ++y)
            rows += out.Byte(32, y, 3) != 0;
        return rows;
    };
    EXPECT_EQ(rowsCovered(0, 33, 65), 32) << "so near that it fills its half";
    EXPECT_LT(rowsCovered(1, 33, 65), 28);
    EXPECT_EQ(rowsCovered(1, 0, 32), 32);
}

// --- one after the other -------------------------------------------------------------------------------------------

TEST(PizzaBoxes, Render_WithoutCohesion_TurnsBoxAfterBox)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(64, 64, format, 1), second = Noisy(64, 64, format, 2);
        Turn turn;
        turn.slices = Slices(4);
        turn.cohesion = 0;
        // The boxes begin at rows 0, 16, 32 and 48; where two meet either may win.
        for (const auto& [progress, done] : {std::pair{0.25, 16}, {0.5, 32}, {0.75, 48}}) {
            const GuardedPicture out = TurnOver(turn, in, second, progress);
            for (int y = 0; y < 64; ++y)
                if (y != done) {
                    ASSERT_EQ(std::memcmp(out.Row(y), (y < done ? second : in).Row(y),
                                          static_cast<std::size_t>(64 * in.PixelBytes())),
                              0)
                        << y << " at " << progress;
                }
        }
        turn.orientation = kVertical;
        const GuardedPicture out = TurnOver(turn, in, second, 0.5);
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x)
                if (x != 32) {
                    ASSERT_EQ(PixelAt(out, x, y), PixelAt(x < 32 ? second : in, x, y)) << x << ", " << y;
                }
    }
}

TEST(PizzaBoxes, Render_Spread_MovesTheBoxesApart)
{
    // Two slices move apart by half a unit each at half the transition.
    const GuardedPicture in = Plain(65, 65, 0, 0, 200, 255), second = Plain(65, 65, 200, 0, 0, 255);
    Turn turn;
    turn.slices = Slices(2);
    const GuardedPicture together = TurnOver(turn, in, second, 0.5);
    turn.spread = 1;
    const GuardedPicture apart = TurnOver(turn, in, second, 0.5);
    EXPECT_NE(together.Byte(32, 30, 3), 0);
    EXPECT_EQ(together.Byte(32, 30, 2), 200) << "a side seen in full light";
    EXPECT_NE(apart.Byte(32, 30, 2), 200) << "what is seen between them leans away";
    EXPECT_EQ(apart.Byte(32, 4, 2), 200);
    EXPECT_EQ(apart.Byte(32, 60, 2), 200);
}

// --- the glow -------------------------------------------------------------------------------------------------

using Sizes = std::vector<std::pair<int, int>>;

/// The first `most` scratch pictures of a frame of three slices.
Sizes FirstScratchPictures(std::size_t most, float fog, float shine, double progress)
{
    FakeMemoryProvider memory;
    Turn turn;
    turn.slices = Slices(3);
    turn.fog = fog;
    turn.shine = shine;
    FakeHost host(Levels(kEffect, turn.Levels()));
    host.SetMemory(&memory);
    const GuardedPicture in = Noisy(40, 30, PF_BGRA8, 1);
    const GuardedPicture second = Incoming(in);
    GuardedPicture out(40, 30, PF_BGRA8);
    Moment moment;
    moment.second = &second;
    moment.progress = progress;
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
    Sizes sizes;
    for (const MemoryCall& call : memory.Calls())
        if (call.kind == MemoryCall::AllocImage && call.height > 1 && sizes.size() < most)
            sizes.emplace_back(call.width, call.height);
    return sizes;
}

TEST(PizzaBoxes, Render_WithoutFogAndShine_TakesSpaceForDimFacesAlone)
{
    // Rows 0 to 10, 10 to 20 and 20 to 29. One space does for them all.
    const Sizes one = {{40, 11}};
    EXPECT_EQ(FirstScratchPictures(9, 0, 0, 0.3), one);
    EXPECT_EQ(FirstScratchPictures(9, -1, -1, 0.3), one);
    EXPECT_EQ(FirstScratchPictures(9, static_cast<float>(kNaN), 0, 0.3), one);
}

TEST(PizzaBoxes, Render_AGlow_TakesThePartsThatAreSeenAndSpaceForOne)
{
    // Before the turn the fronts are seen, and between them the underside of the upper box and the upper side of the
    // lower one, with the same parts. Shortly before the middle, at 81 degrees, the viewer is behind the planes of fronts
    // and backs and sees sides alone, with the first picture. Behind the turn it is two sides and three backs.
    const Sizes three = {{40, 10}, {40, 11}, {40, 11}},
                five = {{40, 10}, {40, 10}, {40, 11}, {40, 11}, {40, 11}};
    for (const auto& [progress, slices] : {std::pair{0.0, three}, {0.45, three}, {0.999999, five}})
        for (const float fog : {0.0f, 0.5f}) {
            Sizes taken = FirstScratchPictures(9, fog, 0.5f, progress);
            ASSERT_EQ(taken.size(), slices.size() + 1) << progress;
            EXPECT_EQ(taken.back().first, 40) << "for the pixels of dim faces";
            taken.pop_back();
            std::sort(taken.begin(), taken.end());
            EXPECT_EQ(taken, slices) << progress;
        }
}

TEST(PizzaBoxes, Render_Fog_RisesAndFalls)
{
    // A bright band bleeds over dark ground, most in the middle of the transition.
    GuardedPicture in = Plain(60, 60, 10, 10, 10, 255);
    for (int y = 20; y < 40; ++y)
        for (int x = 0; x < 60; ++x)
            in.SetColour(x, y, 255, 255, 255, 255);
    Turn turn;
    const auto gain = [&](double progress) {
        turn.fog = 0;
        const GuardedPicture clear = TurnOver(turn, in, in, progress);
        turn.fog = 1;
        const GuardedPicture foggy = TurnOver(turn, in, in, progress);
        double sum = 0;
        for (int y = 0; y < 60; ++y)
            for (int x = 0; x < 60; ++x)
                sum += foggy.Byte(x, y, 1) - clear.Byte(x, y, 1);
        return sum / 3600;
    };
    const double early = gain(0.02), middle = gain(0.5), late = gain(0.98);
    EXPECT_GT(middle, early + 10);
    EXPECT_GT(middle, late + 10);
}

TEST(PizzaBoxes, Render_NoMemoryForTheGlowsCopies_DropsTheGlow)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(40, 30, format, 1), second = Noisy(40, 30, format, 2);
        Turn turn;
        turn.slices = Slices(3);
        const GuardedPicture expected = TurnOver(turn, in, second, 0.4);
        turn.fog = 0.7f;
        turn.shine = 0.6f;
        EXPECT_FALSE(Equal(TurnOver(turn, in, second, 0.4), expected));
        for (const std::uint64_t refused : {0u, 1u, 2u}) {
            MemoryHabits habits;
            habits.refuseOnly = refused;
            FakeMemoryProvider memory(habits);
            FakeHost host(Levels(kEffect, turn.Levels()));
            host.SetMemory(&memory);
            GuardedPicture out = Noisy(40, 30, format, 99);
            Moment moment;
            moment.second = &second;
            EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
            EXPECT_TRUE(Equal(out, expected)) << refused;
        }
    }
}

// --- pictures that are missing or of other sizes ----------------------------------------------------------------

TEST(PizzaBoxes, Render_ASecondPictureThatIsMissing_ShowsNoBacks)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(40, 30, format, 1), before = Noisy(40, 30, format, 3);
        Turn turn;
        turn.background = kSecond;
        const auto over = [&](double progress) {
            return RenderedOver(before, kEffect, turn.Levels(), in, nullptr, progress);
        };
        EXPECT_TRUE(Equal(over(0.0), in));
        EXPECT_TRUE(Equal(over(-1.0), in));
        EXPECT_TRUE(Equal(over(1.0), before));
        EXPECT_TRUE(Equal(over(1.0 - 1e-13), before)) << "sides seen edge-on";
        turn.fog = 1; // of one picture alone there is no glow
        EXPECT_TRUE(Equal(over(1.0 - 1e-13), before));
    }
}

TEST(PizzaBoxes, Render_OnePixelAcrossOrDown_ShowsTheBackgroundAlone)
{
    for (const auto& [width, height] : {std::pair{1, 20}, {20, 1}, {1, 1}}) {
        const GuardedPicture in = Noisy(width, height, PF_BGRA8, 1),
                             second = Noisy(width, height, PF_BGRA8, 2);
        const GuardedPicture nothing(width, height, PF_BGRA8);
        Turn turn;
        EXPECT_TRUE(Equal(TurnOver(turn, in, second, 0.3), nothing));
        turn.background = kFirst;
        EXPECT_TRUE(Equal(TurnOver(turn, in, second, 0.3), in));
        turn.background = kSecond;
        EXPECT_TRUE(Equal(TurnOver(turn, in, second, 0.3), second));
    }
}

TEST(PizzaBoxes, Render_PicturesWithoutHeight_ShowTheBackgroundAlone)
{
    const GuardedPicture in = Noisy(20, 16, PF_BGRA8, 1), before = Noisy(20, 16, PF_BGRA8, 3);
    const GuardedPicture nothing(20, 16, PF_BGRA8);
    for (const bool ofOutput : {false, true}) {
        FakeHost host(Levels(kEffect, Turn{}.Levels()));
        const GuardedPicture out = before;
        VideoFrame first = in.Frame(), second = {}, output = out.Frame();
        (ofOutput ? output : first).height = 0;
        RenderInfo info = MakeInfo(AtProgress(0.3));
        EXPECT_TRUE(NewEffect(kEffect)->Render(&host, &first, &second, &output, &info));
        EXPECT_TRUE(Equal(out, ofOutput ? before : nothing));
    }
}

TEST(PizzaBoxes, Render_APictureOfAnotherSize_IsScaledOnTheBoxes)
{
    const GuardedPicture in = Noisy(17, 13, PF_BGRA8, 1), second = Noisy(33, 25, PF_BGRA8, 2);
    const GuardedPicture out =
        RenderedOver(Noisy(33, 25, PF_BGRA8, 3), kEffect, Turn{}.Levels(), in, &second, 0.0);
    for (int y = 0; y < 13; ++y)
        for (int x = 0; x < 17; ++x)
            EXPECT_EQ(PixelAt(out, 2 * x, 2 * y), PixelAt(in, x, y)) << x << ", " << y;
}

// Of packed bytes no copy is made: the glow's own is black without alpha, and so is what a box shows of it.
TEST(PizzaBoxes, Render_AGlowOnASecondPictureOfPackedBytes_ShowsItBlank)
{
    const GuardedPicture in = Noisy(40, 30, PF_BGRA8, 1), blank(40, 30, PF_BGRA8);
    const GuardedPicture packed = Noisy(40, 30, PF_Packed8, 2), colours = Noisy(40, 30, PF_BGRA8, 2);
    Turn turn;
    turn.fog = turn.shine = 0.5f;
    const GuardedPicture out = TurnOver(turn, in, packed, 0.9);
    EXPECT_TRUE(Equal(out, TurnOver(turn, in, blank, 0.9)));
    EXPECT_FALSE(Equal(out, TurnOver(turn, in, colours, 0.9)));
}

// --- knobs and memory -------------------------------------------------------------------------------------------

TEST(PizzaBoxes, Render_Knobs_AreReadOnceInTheirOrder)
{
    for (const double progress : {-1.0, 0.4, 1.0}) {
        FakeHost host(Levels(kEffect, {0.5f}));
        const GuardedPicture in = Noisy(20, 16, PF_BGRA8, 1), second = Noisy(20, 16, PF_BGRA8, 2);
        GuardedPicture out(20, 16, PF_BGRA8);
        Moment moment;
        moment.second = &second;
        moment.progress = progress;
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
        std::vector<KnobRead> expected;
        for (std::uint32_t k = 0; k < 11; ++k)
            expected.push_back({k,
                                k == 4 || k == 10      ? ParamChoice
                                    : k >= 5 && k <= 7 ? ParamCheck
                                                       : ParamFloat});
        EXPECT_EQ(host.Reads(), expected);
    }
}

TEST(PizzaBoxes, Render_RefusedBlocks_LeaveTheirFacesOut)
{
    Turn turn;
    turn.slices = Slices(4);
    turn.cohesion = 0.3f;
    reference::PizzaBoxesKnobs knobs;
    knobs.slices = turn.slices;
    knobs.cohesion = turn.cohesion;
    knobs.background = 2;
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const bool fromThenOn : {false, true})
            for (int n = 0; n <= 14; ++n) {
                MemoryHabits habits;
                (fromThenOn ? habits.refuseFrom : habits.refuseOnly) = static_cast<std::uint64_t>(n);
                FakeMemoryProvider memory(habits);
                FakeHost host(Levels(kEffect, turn.Levels()));
                host.SetMemory(&memory);
                const GuardedPicture in = Noisy(30, 24, format, 1), second = Noisy(30, 24, format, 2);
                GuardedPicture out = Noisy(30, 24, format, 3);
                const GuardedPicture expected = out;
                Moment moment;
                moment.second = &second;
                EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
                const VideoFrame secondFrame = second.Frame();
                reference::PizzaBoxes(in.Frame(), &secondFrame, expected.Frame(), knobs,
                                      {0.4, fromThenOn ? n : -1, fromThenOn ? -1 : n});
                EXPECT_TRUE(Equal(out, expected)) << n;
            }
}

// --- against the plain version -----------------------------------------------------------------------------------

TEST(PizzaBoxes, Render_EveryPreset_IsThePlainVersion)
{
    std::mt19937 random(31);
    for (const EffectClass which : {kEffect, EffectClass::WrapPizzaBoxes}) {
        const bool wrapped = which != kEffect;
        const std::span<const PresetRow> presets =
            wrapped ? std::span<const PresetRow>(kWrapPizzaBoxesPresets) : kPizzaBoxesPresets;
        for (const PresetRow& preset : presets)
            for (const std::uint32_t format : kPictureFormats)
                for (const double progress : {0.05, 0.37, 0.81}) {
                    SCOPED_TRACE(preset.name);
                    CompareTransition(which, format, {36, 28, 36, 28, 36, 28},
                                      ValuesOf(preset, wrapped ? 8 : 11), progress, false, random);
                }
    }
}

TEST(PizzaBoxes, Render_RandomPicturesAndKnobs_AreThePlainVersion)
{
    std::mt19937 random(32);
    const auto level = [&] { return static_cast<float>(random() % 1001) / 1000.0f; };
    const auto box = [&] { return static_cast<float>(random() % 2); };
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 60; ++i) {
            const bool glows = i % 3 == 0;
            const std::vector<float> levels = {level(),
                                               level(),
                                               level(),
                                               level(),
                                               box(),
                                               box(),
                                               box(),
                                               box(),
                                               glows ? level() : 0,
                                               glows ? level() : 0,
                                               static_cast<float>(random() % 4)};
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

#include "image/transform_2d.h"

#include <array>

#include <gtest/gtest.h>

#include "tests/reference/rounding.h"

namespace kelmora {
namespace {

constexpr float kQuarter = 1.57079633f; // a right angle

struct Point {
    double x, y;
};

/// The row (x, y, 1) times the matrix.
Point Moved(const Transform2D& t, Point p)
{
    const auto column = [&](int c) {
        return p.x * static_cast<double>(t.Get(0, c)) + p.y * static_cast<double>(t.Get(1, c))
            + static_cast<double>(t.Get(2, c));
    };
    return {column(0), column(1)};
}

void ExpectAt(Point actual, Point expected, double tolerance = 1e-5)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
}

void ExpectElements(const Transform2D& t, const std::array<std::array<float, 3>, 3>& expected)
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_EQ(t.Get(row, column),
                      expected[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)])
                << row << ", " << column;
}

TEST(Transform2D, New_IsTheIdentity)
{
    ExpectElements(Transform2D(), {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
}

TEST(Transform2D, Scale_StandsOnTheDiagonal)
{
    Transform2D t;
    t.Scale(2, -0.5f);
    ExpectElements(t, {{{2, 0, 0}, {0, -0.5f, 0}, {0, 0, 1}}});
    Transform2D both;
    both.Scale(3);
    ExpectElements(both, {{{3, 0, 0}, {0, 3, 0}, {0, 0, 1}}});
}

TEST(Transform2D, Translate_StandsInTheLastRow)
{
    Transform2D t;
    t.Translate(5, -7);
    ExpectElements(t, {{{1, 0, 0}, {0, 1, 0}, {5, -7, 1}}});
}

TEST(Transform2D, RotateByARightAngle_TakesTheFirstAxisToTheSecond)
{
    Transform2D t;
    t.Rotate(kQuarter);
    const float expected[3][3] = {{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_NEAR(t.Get(row, column), expected[row][column], 1e-6f) << row << ", " << column;
    ExpectAt(Moved(t, {1, 0}), {0, 1});
    ExpectAt(Moved(t, {0, 1}), {-1, 0});
    ExpectAt(Moved(t, {3, 4}), {-4, 3});
}

TEST(Transform2D, RotateBy30Degrees_HasSineAndCosine)
{
    Transform2D t;
    t.Rotate(0.523598776f);
    EXPECT_NEAR(t.Get(0, 0), 0.866025404f, 1e-7f);
    EXPECT_NEAR(t.Get(0, 1), 0.5f, 1e-7f);
    EXPECT_NEAR(t.Get(1, 0), -0.5f, 1e-7f);
    EXPECT_NEAR(t.Get(1, 1), 0.866025404f, 1e-7f);
}

TEST(Transform2D, TranslateAndScale_HappenInTheOrderOfTheCalls)
{
    Transform2D translateFirst;
    translateFirst.Translate(2, 3);
    translateFirst.Scale(10, 100);
    ExpectElements(translateFirst, {{{10, 0, 0}, {0, 100, 0}, {20, 300, 1}}});

    Transform2D scaleFirst;
    scaleFirst.Scale(10, 100);
    scaleFirst.Translate(2, 3);
    ExpectElements(scaleFirst, {{{10, 0, 0}, {0, 100, 0}, {2, 3, 1}}});
}

TEST(Transform2D, RotationAboutAPoint_KeepsThePoint)
{
    Transform2D t;
    t.Translate(-8, -6);
    t.Rotate(kQuarter);
    t.Translate(8, 6);
    ExpectAt(Moved(t, {8, 6}), {8, 6});
    ExpectAt(Moved(t, {9, 6}), {8, 7});
    ExpectAt(Moved(t, {8, 7}), {7, 6});
}

TEST(Transform2D, TranslateAfterRotation_IsNotTurned)
{
    Transform2D t;
    t.Rotate(kQuarter);
    t.Translate(10, 0);
    ExpectAt(Moved(t, {1, 0}), {10, 1});
    Transform2D turned;
    turned.Translate(10, 0);
    turned.Rotate(kQuarter);
    ExpectAt(Moved(turned, {1, 0}), {0, 11});
}

TEST(Transform2D, Multiply_AppliesTheArgumentAfterwards)
{
    Transform2D move, stretch;
    move.Translate(2, 3);
    stretch.Scale(10, 100);
    Transform2D both = move;
    both.Multiply(stretch);
    ExpectElements(both, {{{10, 0, 0}, {0, 100, 0}, {20, 300, 1}}});
    stretch.Multiply(move);
    ExpectElements(stretch, {{{10, 0, 0}, {0, 100, 0}, {2, 3, 1}}});
}

TEST(Transform2D, Multiply_ByItself_IsTheSquare)
{
    Transform2D t;
    t.Scale(2);
    t.Translate(3, 5); // 2 x + 3; twice 4 x + 9
    t.Multiply(t);
    ExpectElements(t, {{{4, 0, 0}, {0, 4, 0}, {9, 15, 1}}});
}

TEST(Transform2D, Multiply_ByTheIdentity_ChangesNothing)
{
    Transform2D t;
    t.Rotate(0.7f);
    t.Translate(1.5f, -2.25f);
    t.Scale(1.1f, 0.3f);
    Transform2D after = t, before;
    after.Multiply(Transform2D());
    before.Multiply(t);
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) {
            EXPECT_EQ(after.Get(row, column), t.Get(row, column));
            EXPECT_EQ(before.Get(row, column), t.Get(row, column));
        }
}

TEST(Transform2D, Products_AreSummedInDoubleAndRoundedOnce)
{
    // Two large terms that all but cancel: in single precision each would be off by up to half a unit.
    Transform2D turn;
    turn.Rotate(0.785398163f);
    Transform2D t;
    t.Translate(16777213, 16777211);
    t.Rotate(0.785398163f);
    const double exact =
        16777213.0 * static_cast<double>(turn.Get(0, 0)) + 16777211.0 * static_cast<double>(turn.Get(1, 0));
    EXPECT_EQ(static_cast<double>(t.Get(2, 0)), reference::RoundedToFloat(exact));
    EXPECT_NE(exact, static_cast<double>(static_cast<int>(exact))); // what single precision would have left
}

} // namespace
} // namespace kelmora

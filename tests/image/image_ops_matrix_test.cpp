#include <cmath>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "tests/reference/colour.h"

namespace kelmora {
namespace {

ColorMatrix Numbered(float first)
{
    ColorMatrix matrix;
    for (int i = 0; i < 25; ++i)
        matrix.m[i / 5][i % 5] = first + static_cast<float>(i);
    return matrix;
}

void ExpectMatrix(const ColorMatrix& actual, const float (&expected)[5][5], double tolerance = 0)
{
    for (int row = 0; row < 5; ++row)
        for (int column = 0; column < 5; ++column)
            EXPECT_NEAR(static_cast<double>(actual.m[row][column]),
                        static_cast<double>(expected[row][column]), tolerance)
                << row << ", " << column;
}

reference::Matrix PlainOf(const ColorMatrix& matrix)
{
    reference::Matrix plain;
    for (int i = 0; i < 25; ++i)
        plain.m[i / 5][i % 5] = matrix.m[i / 5][i % 5];
    return plain;
}

TEST(ColorMatrixCombine, TheOrder_SaysWhichOneIsTheLeftFactor)
{
    for (const int order : {0, 1, -1, 7}) {
        const ColorMatrix a = Numbered(1);
        ColorMatrix m = Numbered(-9);
        const reference::Matrix before = PlainOf(m);
        ImageOps().ColorMatrixCombine(a, m, order);
        ExpectMatrix(m,
                     (order != 0 ? reference::Product(PlainOf(a), before, before)
                                 : reference::Product(before, PlainOf(a), before))
                         .m);
    }
}

TEST(ColorMatrixCombine, HandComputedProduct_ComesOutAndColumnFourStays)
{
    ColorMatrix a, m;
    a.m[0][1] = 2; // adds twice red to green
    m.m[1][0] = 3; // adds three times green to red
    m.m[2][4] = 77;
    ColorMatrix first = m, second = m;
    ImageOps().ColorMatrixCombine(a, first, 1); // a * m
    ImageOps().ColorMatrixCombine(a, second, 0);
    const float am[5][5] = {
        {7, 2, 0, 0, 0}, {3, 1, 0, 0, 0}, {0, 0, 1, 0, 77}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1}};
    const float ma[5][5] = {
        {1, 2, 0, 0, 0}, {3, 7, 0, 0, 0}, {0, 0, 1, 0, 77}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1}};
    ExpectMatrix(first, am);
    ExpectMatrix(second, ma);
}

TEST(ColorMatrixCombine, WithItself_IsTheSquare)
{
    ColorMatrix m = Numbered(1);
    const reference::Matrix before = PlainOf(m);
    ImageOps().ColorMatrixCombine(m, m, 1);
    ExpectMatrix(m, reference::Product(before, before, before).m);
}

TEST(ColorMatrixScale, MultipliesTheColumns)
{
    ColorMatrix m = Numbered(1);
    ImageOps().ColorMatrixScale(m, 2, 3, 4, 5);
    float expected[5][5];
    for (int row = 0; row < 5; ++row)
        for (int column = 0; column < 5; ++column)
            expected[row][column] = static_cast<float>(1 + 5 * row + column)
                * (column < 4 ? static_cast<float>(2 + column) : 1.0f);
    ExpectMatrix(m, expected);
}

TEST(ColorMatrixOffset, Kept_FirstArgument_LandsInColumnTwo)
{
    ColorMatrix m;
    ImageOps().ColorMatrixOffset(m, 1, 2, 3, 4);
    const float expected[5][5] = {
        {1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {3, 2, 1, 4, 1}};
    ExpectMatrix(m, expected);
}

TEST(ColorMatrixOffset, AfterAScale_IsScaledToo)
{
    ColorMatrix m; // the offset is the left factor: it comes first on a pixel
    ImageOps().ColorMatrixScale(m, 10, 10, 10, 1);
    ImageOps().ColorMatrixOffset(m, 1, 2, 3, 4);
    const float expected[5][5] = {
        {10, 0, 0, 0, 0}, {0, 10, 0, 0, 0}, {0, 0, 10, 0, 0}, {0, 0, 0, 1, 0}, {30, 20, 10, 4, 1}};
    ExpectMatrix(m, expected);
}

TEST(ColorMatrixSaturate, HandComputedFactors_ComeOut)
{
    ColorMatrix grey, same, twice;
    ImageOps().ColorMatrixSaturate(grey, 0);
    ImageOps().ColorMatrixSaturate(same, 1);
    ImageOps().ColorMatrixSaturate(twice, 2);
    const float r = 0.3086f, g = 0.6094f, b = 0.082f;
    const float none[5][5] = {
        {r, r, r, 0, 0}, {g, g, g, 0, 0}, {b, b, b, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1}};
    const float doubled[5][5] = {{2 - r, -r, -r, 0, 0},
                                 {-g, 2 - g, -g, 0, 0},
                                 {-b, -b, 2 - b, 0, 0},
                                 {0, 0, 0, 1, 0},
                                 {0, 0, 0, 0, 1}};
    ExpectMatrix(grey, none, 1e-7);
    ExpectMatrix(same, ColorMatrix().m, 1e-7);
    ExpectMatrix(twice, doubled, 3e-7);
}

TEST(ColorMatrixSaturate, AfterAScale_IsTheLeftFactor)
{
    ColorMatrix m;
    ImageOps().ColorMatrixScale(m, 2, 3, 4, 1);
    ImageOps().ColorMatrixSaturate(m, 0);
    for (int column = 0; column < 3; ++column) {
        const double scale = 2 + column;
        EXPECT_NEAR(static_cast<double>(m.m[0][column]), 0.3086 * scale, 1e-6);
        EXPECT_NEAR(static_cast<double>(m.m[1][column]), 0.6094 * scale, 1e-6);
        EXPECT_NEAR(static_cast<double>(m.m[2][column]), 0.082 * scale, 1e-6);
    }
}

TEST(ColorMatrixRotate, EveryPairOfAxes_TurnsInTheirPlane)
{
    const double pi = std::acos(-1.0);
    for (const float degrees : {0.0f, 30.0f, 45.0f, 90.0f, -120.0f, 180.0f, 725.0f})
        for (int a = 0; a < 4; ++a)
            for (int b = 0; b < 4; ++b) {
                if (a == b)
                    continue;
                ColorMatrix m;
                ImageOps().ColorMatrixRotate(m, degrees, a, b, 1);
                const auto cosine = static_cast<float>(std::cos(static_cast<double>(degrees) * pi / 180));
                const auto sine = static_cast<float>(std::sin(static_cast<double>(degrees) * pi / 180));
                ColorMatrix expected;
                expected.m[a][a] = expected.m[b][b] = cosine;
                expected.m[b][a] = sine;
                expected.m[a][b] = -sine;
                ExpectMatrix(m, expected.m, 2e-7);
            }
}

TEST(ColorMatrixRotate, OtherAxes_ChangeNothing)
{
    for (const int bad : {-1, 5, 1000000, -1000000})
        for (const int order : {0, 1}) {
            ColorMatrix m = Numbered(1);
            ImageOps().ColorMatrixRotate(m, 30, bad, 1, order);
            ImageOps().ColorMatrixRotate(m, 30, 1, bad, order);
            ImageOps().ColorMatrixRotate(m, 30, bad, bad, order);
            ExpectMatrix(m, Numbered(1).m);
        }
}

TEST(ColorMatrixRotate, TheOffsetForAnAxis_TurnsOntoAColour)
{
    ColorMatrix m; // R[4][0] is sine, and column 4 stays
    ImageOps().ColorMatrixRotate(m, 90, 0, 4, 1);
    float black[4] = {0, 0, 0, 1};
    ImageOps().ColorMatrixTransform(m, black);
    EXPECT_EQ(black[0], 1.0f);
    EXPECT_EQ(m.m[4][4], 1.0f);
    EXPECT_EQ(m.m[0][4], 0.0f);
}

TEST(ColorMatrixRotate, OneAxisTwice_ChangesNothing)
{
    for (int axis = 0; axis < 5; ++axis) {
        ColorMatrix m = Numbered(1);
        ImageOps().ColorMatrixRotate(m, 30, axis, axis, 1);
        ExpectMatrix(m, Numbered(1).m);
    }
}

TEST(ColorMatrixRotate, NamedAxes_ArePairsOfAxesInBothOrders)
{
    for (const int order : {0, 1}) {
        ColorMatrix x = Numbered(1), y = x, z = x, a = x, b = x, c = x;
        ImageOps().ColorMatrixRotateX(x, 40, order);
        ImageOps().ColorMatrixRotate(a, 40, 2, 1, order);
        ExpectMatrix(x, a.m);
        ImageOps().ColorMatrixRotateY(y, 40, order);
        ImageOps().ColorMatrixRotate(b, 40, 0, 2, order);
        ExpectMatrix(y, b.m);
        ImageOps().ColorMatrixRotateZ(z, 40, order);
        ImageOps().ColorMatrixRotate(c, 40, 1, 0, order);
        ExpectMatrix(z, c.m);
    }
}

TEST(ColorMatrixRotate, QuarterTurns_MoveOneAxisToAnother)
{
    // v * R: with axes (1, 0), R[0][1] is sine and R[1][0] is -sine, so red goes to green.
    ColorMatrix z;
    ImageOps().ColorMatrixRotateZ(z, 90, 1);
    float red[4] = {1, 0, 0, 1};
    ImageOps().ColorMatrixTransform(z, red);
    EXPECT_NEAR(static_cast<double>(red[0]), 0, 1e-7);
    EXPECT_NEAR(static_cast<double>(red[1]), 1, 1e-7);
    EXPECT_EQ(red[2], 0.0f);
    EXPECT_EQ(red[3], 1.0f);
}

TEST(ColorMatrixRotate, AnglesThatAreNoNumbers_DoNoHarm)
{
    for (const float degrees : {NAN, INFINITY, -INFINITY, 1e38f}) {
        ColorMatrix m;
        ImageOps().ColorMatrixRotateX(m, degrees, 1);
        ImageOps().ColorMatrixHue(m, degrees);
        EXPECT_EQ(m.m[4][4], 1.0f);
    }
}

TEST(ColorMatrixShear, Kept_SecondArgument_HasNoEffect)
{
    for (const float b : {0.0f, 5.0f, -1e30f}) {
        ColorMatrix m;
        ImageOps().ColorMatrixShear(m, 0.5f, b, 1);
        const float expected[5][5] = {
            {1, 0, 0, 0, 0}, {0.5f, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1}};
        ExpectMatrix(m, expected);
    }
}

TEST(ColorMatrixShear, BothOrders_AreKept)
{
    ColorMatrix left = Numbered(1), right = Numbered(1);
    const reference::Matrix before = PlainOf(left);
    reference::Matrix shear;
    shear.m[1][0] = 2;
    ImageOps().ColorMatrixShear(left, 2, 9, 1);
    ImageOps().ColorMatrixShear(right, 2, 9, 0);
    ExpectMatrix(left, reference::Product(shear, before, before).m);
    ExpectMatrix(right, reference::Product(before, shear, before).m);
}

TEST(ColorMatrixTransform, HandComputedVector_ComesOutWithTheOffset)
{
    const ColorMatrix m = Numbered(1); // rows 1 2 3 4 5, 6 7 8 9 10, ...
    float v[4] = {1, 2, 3, 4};
    ImageOps().ColorMatrixTransform(m, v);
    // 21 + 1 * 1 + 2 * 6 + 3 * 11 + 4 * 16 = 131; each column is 1 + 10 more.
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(v[i], 131.0f + 11.0f * static_cast<float>(i));
}

TEST(ColorMatrixHue, NoTurnOrAWholeOne_IsTheIdentity)
{
    for (const float degrees : {0.0f, 360.0f}) {
        ColorMatrix m;
        ImageOps().ColorMatrixHue(m, degrees);
        ExpectMatrix(m, ColorMatrix().m, 1e-6);
    }
}

TEST(ColorMatrixHue, AnyAngle_IsThePlainChain)
{
    // A saturation of 1 and no offset leave the gain and the hue of an adjustment: see AdjustMatrix.
    for (int step = 0; step <= 20; ++step) {
        const float hue = static_cast<float>(step) / 20;
        const reference::Matrix plain = reference::AdjustMatrix(1, 0.5f, 0.5f, hue, true);
        const auto factor = static_cast<float>(std::pow(0.5, 1.58496) * 3);
        const auto degrees = static_cast<float>(180 - static_cast<double>(hue) * 360);
        ColorMatrix m;
        ImageOps ops;
        ops.ColorMatrixScale(m, 4, 4, 4, 1); // 1 * 1 * 3.8 + 0.2
        ops.ColorMatrixOffset(m, 0, 0, 0, 0);
        ops.ColorMatrixSaturate(m, factor);
        ops.ColorMatrixHue(m, degrees);
        ExpectMatrix(m, plain.m, 4e-6);
    }
}

} // namespace
} // namespace kelmora

#include "image/exact_math.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The math library at hand is right to about one unit in the last place; some more are allowed here.
void ExpectNear(double actual, double expected, double units, double least = 0.0)
{
    EXPECT_NEAR(actual, expected,
                units * std::numeric_limits<double>::epsilon() * std::fmax(std::fabs(expected), least));
}

TEST(ExactTurn, ManyAngles_AreTheSineAndTheCosine)
{
    for (int i = -40000; i <= 40000; ++i) {
        const double angle = i * 0.01234567;
        const SineCosine turn = ExactTurn(angle);
        ExpectNear(turn.sine, std::sin(angle), 4, 1.0);
        ExpectNear(turn.cosine, std::cos(angle), 4, 1.0);
    }
}

TEST(ExactTurn, Zero_IsExact)
{
    EXPECT_EQ(ExactTurn(0.0).sine, 0.0);
    EXPECT_EQ(ExactTurn(0.0).cosine, 1.0);
}

TEST(ExactTurn, HugeAngles_StayWithinOne)
{
    for (const double angle : {1e7, -1e12, 1e300}) {
        EXPECT_LE(std::fabs(ExactTurn(angle).sine), 1.0);
        EXPECT_LE(std::fabs(ExactTurn(angle).cosine), 1.0);
    }
}

TEST(ExactTurn, WhatIsNoAngle_IsNoNumber)
{
    for (const double angle : {kInfinity, -kInfinity, kNaN}) {
        EXPECT_TRUE(std::isnan(ExactTurn(angle).sine));
        EXPECT_TRUE(std::isnan(ExactTurnDegrees(angle).cosine));
    }
}

TEST(ExactTurnDegrees, QuarterTurns_AreExact)
{
    const double sines[4] = {0.0, 1.0, 0.0, -1.0};
    for (int quarters = -8; quarters <= 8; ++quarters) {
        const SineCosine turn = ExactTurnDegrees(quarters * 90.0);
        EXPECT_EQ(turn.sine, sines[quarters & 3]) << quarters;
        EXPECT_EQ(turn.cosine, sines[(quarters + 1) & 3]) << quarters;
    }
}

TEST(ExactTurnDegrees, ManyAngles_AreTheSineAndTheCosine)
{
    for (int i = -4000; i <= 4000; ++i) {
        const double degrees = i * 0.37;
        const SineCosine turn = ExactTurnDegrees(degrees);
        // In radians within one turn: in several, what they are rounded by would show.
        const double radians = std::fmod(degrees, 360.0) * kPi / 180.0;
        ExpectNear(turn.sine, std::sin(radians), 8, 1.0);
        ExpectNear(turn.cosine, std::cos(radians), 8, 1.0);
    }
}

TEST(ExactLog, ManyNumbers_AreTheLogarithm)
{
    for (double x = 1e-300; x < 1e300; x *= 1.0371)
        ExpectNear(ExactLog(x), std::log(x), 4);
    for (int i = 1; i < 4000; ++i)
        ExpectNear(ExactLog(i / 1000.0), std::log(i / 1000.0), 4);
}

TEST(ExactLog, TheEnds)
{
    EXPECT_EQ(ExactLog(1.0), 0.0);
    EXPECT_EQ(ExactLog(0.0), -kInfinity);
    EXPECT_EQ(ExactLog(kInfinity), kInfinity);
    EXPECT_TRUE(std::isnan(ExactLog(-1.0)));
    EXPECT_TRUE(std::isnan(ExactLog(kNaN)));
}

TEST(ExactExp, ManyNumbers_AreThePowersOfE)
{
    for (int i = -7000; i <= 7000; ++i)
        ExpectNear(ExactExp(i * 0.1), std::exp(i * 0.1), 4);
}

TEST(ExactExp, TheEnds)
{
    EXPECT_EQ(ExactExp(0.0), 1.0);
    EXPECT_EQ(ExactExp(1000.0), kInfinity);
    EXPECT_EQ(ExactExp(-1000.0), 0.0);
    EXPECT_TRUE(std::isnan(ExactExp(kNaN)));
}

TEST(ExactPower, BasesFromZeroToOne_AreThePowers)
{
    for (int base = 1; base <= 200; ++base)
        for (int exponent = 1; exponent <= 60; ++exponent)
            ExpectNear(ExactPower(base / 200.0, exponent / 10.0), std::pow(base / 200.0, exponent / 10.0),
                       64);
}

TEST(ExactPower, TheEnds)
{
    EXPECT_EQ(ExactPower(0.37, 1.0), 0.37);
    EXPECT_EQ(ExactPower(-0.37, 1.0), -0.37);
    EXPECT_EQ(ExactPower(0.37, 0.0), 1.0);
    EXPECT_EQ(ExactPower(0.0, 2.5), 0.0);
    EXPECT_EQ(ExactPower(0.0, -1.0), kInfinity);
    EXPECT_EQ(ExactPower(1.0, 2.5), 1.0);
    EXPECT_TRUE(std::isnan(ExactPower(-0.5, 2.5)));
    EXPECT_TRUE(std::isnan(ExactPower(kNaN, 2.5)));
    EXPECT_TRUE(std::isnan(ExactPower(0.5, kNaN)));
}

TEST(ExactArcCosine, KnownAngles_ComeOut)
{
    EXPECT_EQ(ExactArcCosine(1.0), 0.0);
    ExpectNear(ExactArcCosine(0.5), kPi / 3.0, 1);
    ExpectNear(ExactArcCosine(-0.5), kPi / 1.5, 1);
    EXPECT_EQ(ExactArcCosine(0.0), kPi / 2.0);
    EXPECT_EQ(ExactArcCosine(-1.0), kPi);
}

/// Units in the last place between two positive numbers.
double UnitsBetween(double a, double b)
{
    return std::fabs(a - b) / (std::nextafter(b, kInfinity) - b);
}

TEST(ExactArcCosine, ManyNumbers_AreTheArcCosine)
{
    for (int i = -200000; i <= 200000; ++i) {
        const double x = i / 200001.0;
        ASSERT_LE(UnitsBetween(ExactArcCosine(x), std::acos(x)), 1.0) << x;
    }
}

TEST(ExactArcCosine, NumbersNextToOneZeroAndMinusOne_AreTheArcCosine)
{
    for (double gap = 0.4; gap > 1e-16; gap *= 0.97)
        for (const double x : {1.0 - gap, gap - 1.0, gap, -gap})
            ASSERT_LE(UnitsBetween(ExactArcCosine(x), std::acos(x)), 1.0) << x;
}

TEST(ExactArcCosine, OfANumberAndItsNegative_MakeAHalfTurn)
{
    for (int i = 0; i <= 1000; ++i)
        ExpectNear(ExactArcCosine(i / 1000.0) + ExactArcCosine(i / -1000.0), kPi, 2);
}

TEST(ExactArcCosine, WhatNoAngleHas_IsNoNumber)
{
    for (const double x : {std::nextafter(1.0, 2.0), std::nextafter(-1.0, -2.0), kInfinity, -kInfinity, kNaN})
        EXPECT_TRUE(std::isnan(ExactArcCosine(x))) << x;
}

} // namespace
} // namespace kelmora

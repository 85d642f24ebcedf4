#include "image/exact_math.h"

#include <cmath>
#include <limits>

namespace kelmora {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr double kEndless = std::numeric_limits<double>::infinity();

// Constants in two parts: the products of the first parts with small whole numbers are exact.
constexpr double kQuarterTurn = 0x1.921fb544p+0;
constexpr double kQuarterTurnRest = 0x1.0b4611a626331p-34;
constexpr double kLogOfTwo = 0x1.62e42feep-1;
constexpr double kLogOfTwoRest = 0x1.a39ef35793c76p-33;

/// Of an angle from -pi / 4 to pi / 4, by the power series.
SineCosine SmallTurn(double x)
{
    const double square = x * x;
    double sine = 1.0, cosine = 1.0;
    for (int n = 18; n > 0; n -= 2) {
        sine = 1.0 - sine * square / (n * (n + 1));
        cosine = 1.0 - cosine * square / (n * (n - 1));
    }
    return {sine * x, cosine};
}

/// `rest` turned by whole quarters.
SineCosine AddQuarters(const SineCosine& rest, int quarters)
{
    switch (quarters & 3) {
    case 1:
        return {rest.cosine, -rest.sine};
    case 2:
        return {-rest.sine, -rest.cosine};
    case 3:
        return {-rest.cosine, rest.sine};
    default:
        return rest;
    }
}

/// arcsin(x) / x - 1 for x from -0.5 to 0.5, given its square; by the power series.
double ArcSineSurplus(double square)
{
    double series = 1.0;
    for (int n = 51; n >= 3; n -= 2)
        series = 1.0 + series * square * (n * n) / ((n + 1) * (n + 2));
    return series * square / 6.0;
}

} // namespace

SineCosine ExactTurn(double radians)
{
    constexpr double mostQuarters = 4.0e6; // within which the products below are exact
    double angle = radians;
    if (!(std::fabs(angle) < mostQuarters))
        angle = std::fmod(angle, 4.0 * kQuarterTurn);
    if (!(std::fabs(angle) < mostQuarters))
        return {kNone, kNone};
    const double quarters = std::floor(angle / kQuarterTurn + 0.5);
    const double rest = (angle - quarters * kQuarterTurn) - quarters * kQuarterTurnRest;
    return AddQuarters(SmallTurn(rest), static_cast<int>(quarters));
}

SineCosine ExactTurnDegrees(double degrees)
{
    if (!std::isfinite(degrees))
        return {kNone, kNone};
    double rest = std::fmod(degrees, 360.0); // exact
    const double quarters = std::floor(rest / 90.0 + 0.5);
    rest -= quarters * 90.0;
    return AddQuarters(SmallTurn(rest * (3.14159265358979323846 / 180.0)), static_cast<int>(quarters));
}

double ExactLog(double x)
{
    if (!(x > 0.0))
        return x == 0.0 ? -kEndless : kNone;
    if (!std::isfinite(x))
        return x;
    int exponent = 0;
    double m = std::frexp(x, &exponent); // exact, 0.5 to 1
    if (m < 0.70710678118654752440) {
        m *= 2.0;
        --exponent;
    }
    // log(m) = 2 artanh((m - 1) / (m + 1)), by its power series.
    const double s = (m - 1.0) / (m + 1.0);
    const double square = s * s;
    double series = 0.0;
    for (int n = 25; n >= 3; n -= 2)
        series = (series + 1.0 / n) * square;
    const double whole = exponent;
    return whole * kLogOfTwo + (2.0 * s + (2.0 * s * series + whole * kLogOfTwoRest));
}

double ExactExp(double x)
{
    if (x != x)
        return x;
    if (x > 710.0)
        return kEndless;
    if (x < -746.0)
        return 0.0;
    const double whole = std::floor(x / kLogOfTwo + 0.5);
    const double rest = (x - whole * kLogOfTwo) - whole * kLogOfTwoRest;
    double series = 1.0;
    for (int n = 18; n > 0; --n)
        series = 1.0 + series * rest / n;
    return std::ldexp(series, static_cast<int>(whole)); // exact but for results too small to be normal
}

double ExactPower(double base, double exponent)
{
    if (exponent == 0.0)
        return 1.0;
    if (exponent == 1.0)
        return base;
    if (base == 0.0)
        return exponent > 0.0 ? 0.0 : exponent < 0.0 ? kEndless : kNone;
    if (base == 1.0)
        return 1.0;
    return ExactExp(exponent * ExactLog(base));
}

double ExactArcCosine(double x)
{
    if (!(x >= -1.0 && x <= 1.0))
        return kNone;
    if (x == 1.0)
        return 0.0;
    constexpr double rightAngle = 0x1.921fb54442d18p+0;
    constexpr double rightAngleRest = 0x1.1a62633145c07p-54;
    if (x >= -0.5 && x <= 0.5)
        return rightAngle - (x - (rightAngleRest - x * ArcSineSurplus(x * x)));
    // Twice the arc sine of the root of half of what is missing to 1 or -1, which subtracts without rounding.
    const double square = (1.0 - std::fabs(x)) * 0.5;
    const double root = std::sqrt(square);
    const double surplus = root * ArcSineSurplus(square);
    if (x < 0.0)
        return 2.0 * (rightAngle - (root + (surplus - rightAngleRest)));
    // Near 0 what the root was rounded by counts: the square of its first half is exact.
    const double half = static_cast<double>(static_cast<float>(root));
    return 2.0 * (half + ((square - half * half) / (root + half) + surplus));
}

} // namespace kelmora

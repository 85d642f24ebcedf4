#pragma once

namespace kelmora {

// Elementary functions that give the same bits on every platform: the math libraries differ in the last ones, and
// what is truncated or compared after them would differ with them. Made of exact operations alone, in double;
// right to a few units in the last place.

struct SineCosine {
    double sine, cosine;
};

/// Of an angle in radians. Not-a-number and infinities give not-a-number. Angles beyond a million turns lose
/// what their own last bits do not hold.
SineCosine ExactTurn(double radians);

/// Of an angle in degrees; whole quarter turns come out exact.
SineCosine ExactTurnDegrees(double degrees);

/// The natural logarithm. Minus infinity for 0, not-a-number below.
double ExactLog(double x);

/// e to the power of x.
double ExactExp(double x);

/// `base` to the power of `exponent`; not-a-number for a base below 0. Exact for the exponents 0 and 1.
double ExactPower(double base, double exponent);

/// The angle in radians, 0 to pi, whose cosine is x; not-a-number for x outside -1 to 1.
double ExactArcCosine(double x);

} // namespace kelmora

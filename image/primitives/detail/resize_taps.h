#pragma once

// Each writes the weights of its taps for a position and gives the pixel of the first one, which may lie
// outside the region.

#include <algorithm>
#include <cmath>

namespace kelmora::px::resizing {

/// `bits` of the weights' fraction; 0 for all that there are.
template <int bits>
struct LinearTaps {
    static constexpr int kTaps = 2;

    static int Place(double position, int source, double* weights)
    {
        int index = static_cast<int>(position);
        double right = position - index;
        if (index == source - 1) {
            --index;
            right = 1.0;
        }
        if constexpr (bits > 0) {
            constexpr double kOne = 1 << bits;
            right = std::floor(right * kOne + 0.5) / kOne;
        }
        weights[0] = 1.0 - right;
        weights[1] = right;
        return index;
    }
};

/// Catmull-Rom.
struct CubicTaps {
    static constexpr int kTaps = 4;

    static int Place(double position, int, double* weights)
    {
        const int index = static_cast<int>(position);
        const double t = position - index;
        weights[0] = ((-0.5 * t + 1.0) * t - 0.5) * t;
        weights[1] = (1.5 * t - 2.5) * t * t + 1.0;
        weights[2] = ((-1.5 * t + 2.0) * t + 0.5) * t;
        weights[3] = (0.5 * t - 0.5) * t * t;
        return index - 1;
    }
};

struct LanczosTaps {
    static constexpr int kTaps = 6;

    static int Place(double position, int, double* weights)
    {
        const int index = static_cast<int>(position);
        const double t = position - index;
        if (t <= 0.5)
            Weigh(t, weights);
        else {
            Weigh(1.0 - t, weights);
            std::reverse(weights, weights + kTaps);
        }
        return index - 2;
    }

private:
    /// sin(pi x) sin(pi x / 3) / x^2 at the distances x = t + 2, t + 1, ... t - 3, made to sum to 1. The
    /// first sine is the same for all taps but for its sign, so it cancels out. `t` is 0 to 0.5.
    static void Weigh(double t, double* weights)
    {
        constexpr double kPiThird = 1.04719755119659774615;
        constexpr double kSine = 0.86602540378443864676; // of pi / 3; the cosine is a half
        std::fill_n(weights, kTaps, 0.0);
        weights[2] = 1.0;
        if (!(t > 0.0))
            return;
        // Polynomials, because the last bits of the math library's sines depend on the platform.
        const double angle = t * kPiThird;
        const double s = angle * SineSeries(angle * angle);
        const double c = CosineSeries(angle * angle);
        // Times t, so that the nearest tap stays finite.
        const auto overSquare = [t](double sine, double x) { return sine * t / (x * x); };
        weights[0] = overSquare(kSine * c - 0.5 * s, t + 2.0);
        weights[1] = -overSquare(kSine * c + 0.5 * s, t + 1.0);
        weights[2] = s / t;
        weights[3] = overSquare(kSine * c - 0.5 * s, t - 1.0);
        weights[4] = -overSquare(kSine * c + 0.5 * s, t - 2.0);
        weights[5] = overSquare(s, t - 3.0); // half a turn on, and of the other sign
        double sum = 0.0;
        for (int i = 0; i < kTaps; ++i)
            sum += weights[i];
        for (int i = 0; i < kTaps; ++i)
            weights[i] /= sum;
    }

    /// sin(a) / a from the square of an angle up to pi / 6.
    static double SineSeries(double square)
    {
        double sum = 1.0;
        for (int n = 14; n > 0; n -= 2)
            sum = 1.0 - square / (n * (n + 1)) * sum;
        return sum;
    }

    static double CosineSeries(double square)
    {
        double sum = 1.0;
        for (int n = 15; n > 0; n -= 2)
            sum = 1.0 - square / (n * (n + 1)) * sum;
        return sum;
    }
};

} // namespace kelmora::px::resizing

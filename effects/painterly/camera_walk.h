#pragma once

#include <cstdint>

namespace kelmora {

// The noise that moves a hand-held camera: a walk between random key positions, in moves with rests between
// them. The interval of the walk that holds a time says how far the move has come; the keys' values and a small
// jitter come from generators that are seeded with the interval's own times. So a time gives the same value
// in any order of frames, on every platform, bit for bit.

/// A generator of 32 bits. What it draws for a time is part of the look: other numbers are another shake.
class CameraRandom {
public:
    /// The state becomes a * b toward zero, its low 32 bits, plus `seed`. A product beyond 64 bits counts as the
    /// nearest one within, not-a-number as 0.
    void SeedCamera(double a, double b, std::uint32_t seed);

    /// The next 9 bits, 0 to 511.
    std::uint32_t NextDraw();

    /// From -scale to just under scale, in 512 steps.
    float CameraDraw(double scale);

    /// As if `draws` numbers had been drawn.
    void Skip(std::uint64_t draws);

    std::uint32_t GetState() const { return m_state; }

private:
    std::uint32_t m_state = 0;
};

/// 2 to the power of what CameraDraw(1.0) makes of `draw`, 0 to 511; rounded to nearest.
double CameraPower(std::uint32_t draw);

/// A time as the walk sees it: in single precision, at least 0, at most the largest finite one. One that is not
/// finite counts as 0.
float CameraTime(double time);

/// The interval of a walk that holds a time, from `start` to `end`.
struct CameraInterval {
    float before = 0; ///< where the interval before it started
    float start = 0;
    float end = 0;
    float time = 0; ///< the time asked for, or the one where the walk ended
    bool resting = true;
};

/// A walk over the knots between rests and moves. It starts at 0 with a rest.
///
/// A walk ends, resting, where single precision no longer resolves its steps: that is where no length that
/// can be drawn moves the knot. With a `hold` outside 0 to 1, which may lead back and forth, it ends after 2^24
/// knots at the latest. The interval is then empty, at the time reached.
///
/// The cost grows with the time, up to some 10^8 knots at the very end; long stretches are summed without
/// going from knot to knot.
class CameraWalk {
public:
    /// rate    0 to 1: steps of about 3.0 to 0.1 units of time; below 0.0001 as 0
    /// hold    0 to 1: the share of rests
    CameraWalk(float rate, float hold, std::uint32_t timingSeed);

    /// Goes on to the interval that holds `time`, which is finite and not below the one before.
    CameraInterval AdvanceTo(float time);

    /// The generator of the lengths, after the last one drawn.
    const CameraRandom& GetRandom() const { return m_random; }

private:
    double LengthOf(std::uint32_t draw, bool resting) const;
    float LongestFrom(float end) const;
    void Step();
    void StepWithinBinade(float time);
    void SkipWithinBinade(float time);
    void EndHere();

    CameraRandom m_random;
    double m_unit = 0;
    double m_restShare, m_moveShare;
    double m_longest = 0;          // length of a step
    std::uint32_t m_knotsLeft = 0; // of a walk that may not end by itself
    bool m_forward;                // no step leads back
    bool m_ended = false;
    CameraInterval m_now;
};

/// The curve at an interval's time, from -1 to just under 1, and up to jitter / 2 beyond; more where single precision
/// hardly resolves the jitter. `jitter` is 0 to 1.
float CameraNoise(const CameraInterval& interval, float jitter, std::uint32_t valueSeed);

/// The curve at `time`.
float CameraNoise(float rate, float hold, float jitter, double time, std::uint32_t timingSeed,
                  std::uint32_t valueSeed);

} // namespace kelmora

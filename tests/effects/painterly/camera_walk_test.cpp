#include "effects/painterly/camera_walk.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "image/exact_math.h"

namespace kelmora {
namespace {

constexpr float kMost = std::numeric_limits<float>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// --- the generator ----------------------------------------------------------------------------------------

TEST(CameraRandom, SeedCamera_CutsTheProductTowardZeroToItsLowWord)
{
    CameraRandom random;
    random.SeedCamera(1.0, 12345.0, 444);
    EXPECT_EQ(random.GetState(), 12789u);
    random.SeedCamera(2.5, 532.0, 111); // 1330 + 111
    EXPECT_EQ(random.GetState(), 1441u);
    random.SeedCamera(-3.7, 1.0, 10); // -3 + 10
    EXPECT_EQ(random.GetState(), 7u);
    random.SeedCamera(1e7, 12345.0, 0); // 123450000000 - 28 * 2^32
    EXPECT_EQ(random.GetState(), 3190915712u);
    random.SeedCamera(0.0, 641.0, 0xFFFFFFFF);
    EXPECT_EQ(random.GetState(), 0xFFFFFFFFu);
}

TEST(CameraRandom, SeedCamera_ProductsBeyondSixtyFourBits_CountAsTheNearestWithin)
{
    CameraRandom random;
    for (const double beyond : {1e30, 1e308, static_cast<double>(kInfinity)}) {
        random.SeedCamera(beyond, 532.0, 444); // all ones, plus 444
        EXPECT_EQ(random.GetState(), 443u);
        random.SeedCamera(-beyond, 532.0, 444); // -2^63 has a low word of 0
        EXPECT_EQ(random.GetState(), 444u);
    }
    random.SeedCamera(static_cast<double>(kNaN), 532.0, 444);
    EXPECT_EQ(random.GetState(), 444u);
}

TEST(CameraRandom, NextDraw_FollowsTheSequenceWorkedOutByHand)
{
    CameraRandom random;
    random.SeedCamera(1.0, 12345.0, 444);
    // 12789 * 214013 + 2531011 = 2739543268, its upper half 41802, less 81 * 512.
    EXPECT_EQ(random.NextDraw(), 330u);
    EXPECT_EQ(random.GetState(), 2739543268u);
    EXPECT_EQ(random.NextDraw(), 160u);
    EXPECT_EQ(random.NextDraw(), 495u);
    EXPECT_EQ(random.NextDraw(), 316u);
    EXPECT_EQ(random.GetState(), 1564245833u);
}

TEST(CameraRandom, CameraDraw_IsTheDrawOn512Steps)
{
    CameraRandom random;
    random.SeedCamera(1.0, 12345.0, 444);
    EXPECT_EQ(random.CameraDraw(1.0), 0.2890625f); // 330 / 256 - 1
    EXPECT_EQ(random.CameraDraw(1.0), -0.375f);
    EXPECT_EQ(random.CameraDraw(0.5), 0.466796875f);
}

TEST(CameraRandom, Skip_IsAsManyDraws)
{
    for (const std::uint64_t draws : {0u, 1u, 2u, 15u, 16u, 1000u}) {
        CameraRandom skipped, drawn;
        skipped.SeedCamera(0.0, 0.0, 77);
        drawn.SeedCamera(0.0, 0.0, 77);
        skipped.Skip(draws);
        for (std::uint64_t i = 0; i < draws; ++i)
            drawn.NextDraw();
        EXPECT_EQ(skipped.GetState(), drawn.GetState()) << draws;
    }
    CameraRandom round;
    round.SeedCamera(0.0, 0.0, 77);
    round.Skip(std::uint64_t{1} << 32);
    EXPECT_EQ(round.GetState(), 77u); // the generator has a full period
}

// --- powers -------------------------------------------------------------------------------------------------

/// A sum of two doubles, the second one the rest of the first one's rounding.
struct Exact {
    double value, rest;
};

Exact Square(const Exact& x)
{
    constexpr double kSplit = 134217729.0; // 2^27 + 1
    const double product = x.value * x.value;
    const double high = x.value * kSplit - (x.value * kSplit - x.value), low = x.value - high;
    const double rest = ((high * high - product) + 2.0 * high * low) + low * low + 2.0 * x.value * x.rest;
    return {product + rest, rest - ((product + rest) - product)};
}

TEST(CameraPower, EveryDraw_IsTheNearestDoubleToTheRoot)
{
    for (int n = 0; n < 256; ++n) {
        const double power = CameraPower(static_cast<std::uint32_t>(256 + n));
        Exact raised = {power, 0.0};
        for (int times = 0; times < 8; ++times)
            raised = Square(raised);
        // The 256th power is off by 256 times what the root is off by, relatively; half a unit is 2^-53 absolutely.
        const double whole = std::ldexp(1.0, n);
        const double off = ((raised.value - whole) + raised.rest) / whole;
        EXPECT_LE(std::fabs(off) * power, 256.0 * 0x1p-53 * (1.0 + 1e-9)) << n;
        EXPECT_EQ(CameraPower(static_cast<std::uint32_t>(n)), power / 2.0) << n;
    }
}

TEST(CameraPower, EveryDraw_AgreesWithTheLibrarysPower)
{
    for (std::uint32_t draw = 0; draw < 512; ++draw) {
        const double power = ExactPower(2.0, draw * 0.00390625 - 1.0);
        EXPECT_NEAR(CameraPower(draw) / power, 1.0, 0x1p-50) << draw;
    }
    EXPECT_EQ(CameraPower(0), 0.5);
    EXPECT_EQ(CameraPower(256), 1.0);
    EXPECT_EQ(CameraPower(384), 1.4142135623730951);
}

// --- times --------------------------------------------------------------------------------------------------

TEST(CameraTime, TakesSinglePrecisionAndStaysFinite)
{
    EXPECT_EQ(CameraTime(2.5), 2.5f);
    EXPECT_EQ(CameraTime(16777217.0), 16777216.0f);
    EXPECT_EQ(CameraTime(-0.001), 0.0f);
    EXPECT_EQ(CameraTime(-1e300), 0.0f);
    EXPECT_EQ(CameraTime(1e300), kMost);
    EXPECT_EQ(CameraTime(static_cast<double>(kInfinity)), 0.0f);
    EXPECT_EQ(CameraTime(static_cast<double>(-kInfinity)), 0.0f);
    EXPECT_EQ(CameraTime(static_cast<double>(kNaN)), 0.0f);
}

// --- the walk -----------------------------------------------------------------------------------------------

/// The walk, knot by knot.
struct PlainWalk {
    float before = 0.0f, start = 0.0f, end = 0.0f;
    bool resting = true;
    CameraRandom random;

    PlainWalk(float rate, float hold, float time, std::uint32_t timingSeed)
    {
        const double r = static_cast<double>(rate) < 0.0001 ? 0.0 : static_cast<double>(rate);
        const double share = static_cast<double>(hold);
        random.SeedCamera(r, 12345.0, timingSeed);
        const auto unit = static_cast<double>(static_cast<float>(ExactPower(3.9, 1.0 - r) - 0.9));
        end = 0.0f + static_cast<float>(CameraPower(random.NextDraw()) * unit);
        while (time > end) {
            resting = !resting;
            const double length = CameraPower(random.NextDraw()) * unit * (resting ? share : 1.0 - share);
            before = start;
            start = end;
            end = static_cast<float>(static_cast<double>(end) + length);
        }
    }
};

std::uint32_t Bits(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}

void ExpectAs(const PlainWalk& plain, const CameraInterval& interval, const CameraWalk& walk)
{
    EXPECT_EQ(Bits(interval.before), Bits(plain.before));
    EXPECT_EQ(Bits(interval.start), Bits(plain.start));
    EXPECT_EQ(Bits(interval.end), Bits(plain.end));
    EXPECT_EQ(interval.resting, plain.resting);
    EXPECT_EQ(walk.GetRandom().GetState(), plain.random.GetState());
}

void ExpectPlain(float rate, float hold, float time, std::uint32_t timingSeed)
{
    SCOPED_TRACE(::testing::Message() << "rate " << rate << ", hold " << hold << ", time " << time);
    CameraWalk walk(rate, hold, timingSeed);
    const CameraInterval interval = walk.AdvanceTo(time);
    ExpectAs(PlainWalk(rate, hold, time, timingSeed), interval, walk);
    EXPECT_EQ(Bits(interval.time), Bits(time));
}

TEST(CameraWalk, FirstKnots_AreThoseWorkedOutByHand)
{
    // Rate 1: steps of 0.1 times 2 to the powers 0.2890625, -0.375 and 0.93359375 of the generator's test; the
    // first one whole, then three quarters of a move, a quarter of a rest.
    CameraWalk walk(1.0f, 0.25f, 444);
    CameraInterval at = walk.AdvanceTo(0.0f);
    EXPECT_TRUE(at.resting);
    EXPECT_EQ(at.start, 0.0f);
    EXPECT_EQ(at.end, 0.122184604f);
    at = walk.AdvanceTo(0.15f);
    EXPECT_FALSE(at.resting);
    EXPECT_EQ(at.before, 0.0f);
    EXPECT_EQ(at.start, 0.122184604f);
    EXPECT_EQ(at.end, 0.180017516f);
    at = walk.AdvanceTo(0.2f);
    EXPECT_TRUE(at.resting);
    EXPECT_EQ(at.before, 0.122184604f);
    EXPECT_EQ(at.start, 0.180017516f);
    EXPECT_EQ(at.end, 0.227768213f);
    EXPECT_EQ(at.time, 0.2f);
}

TEST(CameraWalk, TimesOnAKnot_BelongToTheIntervalBeforeIt)
{
    CameraWalk walk(1.0f, 0.25f, 444);
    EXPECT_TRUE(walk.AdvanceTo(0.122184604f).resting);
    EXPECT_FALSE(walk.AdvanceTo(std::nextafter(0.122184604f, 1.0f)).resting);
}

TEST(CameraWalk, Kept_FirstRest_IsNotShortenedByHold)
{
    EXPECT_EQ(CameraWalk(1.0f, 0.0f, 444).AdvanceTo(0.0f).end, 0.122184604f);
    EXPECT_EQ(CameraWalk(1.0f, 1.0f, 444).AdvanceTo(0.0f).end, 0.122184604f);
}

TEST(CameraWalk, Kept_ARateNextToAnother_LeadsElsewhere)
{
    // 0.5 and 0.501 seed the lengths with 6172 and 6184: 6616 * 214013 + 2531011 and 6628 * 214013 + 2531011 begin
    // with the draws 139 and 178.
    const auto first = [](float rate) {
        const double unit = std::pow(3.9, 1.0 - static_cast<double>(rate)) - 0.9;
        return static_cast<double>(CameraWalk(rate, 0.3f, 444).AdvanceTo(0.0f).end) / unit;
    };
    EXPECT_NEAR(first(0.5f), std::exp2(139.0 / 256.0 - 1.0), 1e-6);
    EXPECT_NEAR(first(0.501f), std::exp2(178.0 / 256.0 - 1.0), 1e-6);
}

TEST(CameraWalk, RatesBelowATenThousandth_AreZero)
{
    for (const float rate : {0.00009f, -0.5f, -1e30f, -kInfinity, kNaN})
        ExpectAs(PlainWalk(0.0f, 0.3f, 1000.0f, 555), CameraWalk(rate, 0.3f, 555).AdvanceTo(1000.0f), [] {
            CameraWalk walk(0.0f, 0.3f, 555);
            walk.AdvanceTo(1000.0f);
            return walk;
        }());
    EXPECT_NE(CameraWalk(0.001f, 0.3f, 555).AdvanceTo(0.0f).end,
              CameraWalk(0.0f, 0.3f, 555).AdvanceTo(0.0f).end);
}

TEST(CameraWalk, ShortTimes_AreThePlainWalk)
{
    std::mt19937 engine(11);
    std::uniform_real_distribution<float> level(0.0f, 1.0f), upTo(0.0f, 300.0f);
    for (int round = 0; round < 2000; ++round) {
        const float hold = round % 8 == 0 ? 0.0f : round % 8 == 1 ? 1.0f : level(engine);
        ExpectPlain(level(engine), hold, upTo(engine), 444 + 111 * static_cast<std::uint32_t>(round % 3));
    }
}

TEST(CameraWalk, LongTimes_AreThePlainWalk)
{
    for (const float rate : {0.0f, 0.395f, 0.9f, 1.0f, 1.07f})
        for (const float hold : {0.0f, 0.3f, 0.44f, 1.0f}) {
            const auto unit = static_cast<float>(ExactPower(3.9, 1.0 - static_cast<double>(rate)) - 0.9);
            for (const float steps : {9000.0f, 40000.0f, 250000.0f})
                ExpectPlain(rate, hold, unit * steps, 444);
        }
    ExpectPlain(1.0f, 0.0f, 120000.0f, 444);
    ExpectPlain(1.0f, 0.39f, 300000.0f, 666);
}

TEST(CameraWalk, StepsThatFallBetweenTwoFloats_AreThePlainWalk)
{
    // Moves of 3/128 and rests of 381/128 are an odd number of halves of the spacing from 131072 on.
    for (const float time : {131072.0f, 131073.0f, 170000.0f, 200000.5f, 262143.9f, 270000.0f})
        for (const std::uint32_t seed : {444u, 555u, 666u})
            ExpectPlain(0.0f, 127.0f / 128.0f, time, seed);
    for (const float time : {262150.0f, 300000.0f, 500000.0f}) // from 262144 on of a quarter less
        ExpectPlain(0.0f, 255.0f / 256.0f, time, 444);
}

TEST(CameraWalk, TimesJustAroundPowersOfTwo_AreThePlainWalk)
{
    for (const float power : {16384.0f, 65536.0f, 262144.0f})
        for (const float time : {std::nextafter(power, 0.0f), power, std::nextafter(power, kMost)})
            for (const float rate : {0.5f, 1.0f})
                ExpectPlain(rate, 0.0f, time, 555);
}

TEST(CameraWalk, SeveralTimesInARow_AreTheSameAsTheLastAlone)
{
    std::mt19937 engine(12);
    std::uniform_real_distribution<float> level(0.0f, 1.0f);
    for (int round = 0; round < 60; ++round) {
        const float rate = level(engine), hold = round % 2 == 0 ? 0.0f : level(engine);
        const float last = 30000.0f * level(engine);
        std::vector<float> times = {last * level(engine), last - 0.125f, last, last};
        if (times[0] > times[1])
            std::swap(times[0], times[1]);
        CameraWalk walk(rate, hold, 444);
        for (const float time : times) {
            const CameraInterval interval = walk.AdvanceTo(std::max(time, 0.0f));
            ExpectAs(PlainWalk(rate, hold, std::max(time, 0.0f), 444), interval, walk);
        }
    }
}

TEST(CameraWalk, WholePeriodsOfTheGenerator_AreTheSameAsManyShortStretches)
{
    // Above 2^21 a step moves the knot by a quarter of the spacing or less on average.
    CameraWalk whole(1.0f, 0.0f, 444), parts(1.0f, 0.0f, 444);
    for (float time = 2097152.0f; time < 4194000.0f; time += 9973.0f)
        parts.AdvanceTo(time);
    const CameraInterval expected = parts.AdvanceTo(4194000.0f);
    const CameraInterval interval = whole.AdvanceTo(4194000.0f);
    EXPECT_EQ(Bits(interval.before), Bits(expected.before));
    EXPECT_EQ(Bits(interval.start), Bits(expected.start));
    EXPECT_EQ(Bits(interval.end), Bits(expected.end));
    EXPECT_EQ(interval.resting, expected.resting);
    EXPECT_EQ(whole.GetRandom().GetState(), parts.GetRandom().GetState());
}

TEST(CameraWalk, WhereStepsAreNoLongerResolved_EndsAtRest)
{
    // From 4194304 on floats are 0.5 apart, and steps of at most 0.2 no longer count.
    for (const float time : {4194304.5f, 5000000.0f, 1e30f, kMost}) {
        const CameraInterval interval = CameraWalk(1.0f, 0.0f, 444).AdvanceTo(time);
        EXPECT_TRUE(interval.resting);
        EXPECT_EQ(interval.time, 4194304.0f);
        EXPECT_EQ(interval.start, 4194304.0f);
        EXPECT_EQ(interval.end, 4194304.0f);
    }
    const CameraInterval on = CameraWalk(1.0f, 0.0f, 444).AdvanceTo(4194304.0f);
    EXPECT_EQ(on.end, 4194304.0f);
    EXPECT_LT(on.start, 4194304.0f);
}

TEST(CameraWalk, LongestStepsFarOut_EndWhereTheirHalfSpacingIs)
{
    // Steps of up to 5.98 count while floats are at most 8 apart: below 2^27.
    const CameraInterval interval = CameraWalk(0.0f, 0.0f, 444).AdvanceTo(kMost);
    EXPECT_EQ(interval.end, 134217728.0f);
    EXPECT_EQ(interval.time, 134217728.0f);
}

TEST(CameraWalk, RatesWithoutLength_EndAtTheFirstKnot)
{
    // 3.9^(1 - rate) falls below 0.9 above 1.0774.
    for (const float rate : {1.0775f, 1.5f, 2.0f, 100.0f, 1e30f, kMost, kInfinity})
        for (const float hold : {0.0f, 0.5f, 1.0f})
            for (const float time : {0.0f, 1.0f, 1e30f}) {
                const CameraInterval interval = CameraWalk(rate, hold, 444).AdvanceTo(time);
                EXPECT_TRUE(interval.resting) << rate;
                EXPECT_LT(interval.end, 0.0f) << rate;
                EXPECT_EQ(interval.start, interval.end) << rate;
                EXPECT_EQ(interval.time, interval.end) << rate;
            }
}

TEST(CameraWalk, RatesWithHardlyAnyLength_ComeToAnEnd)
{
    for (const float rate : {1.0773f, 1.0774f, 1.07741f})
        for (const float hold : {0.0f, 0.3f}) {
            const CameraInterval interval = CameraWalk(rate, hold, 444).AdvanceTo(kMost);
            EXPECT_TRUE(interval.resting);
            EXPECT_EQ(interval.time, interval.end);
            EXPECT_LT(interval.end, 10000.0f);
        }
}

TEST(CameraWalk, HoldsOutsideOfTheKnob_AreThePlainWalkWhereThatEnds)
{
    for (const float hold : {-1.0f, -0.25f, 1.25f, 2.0f, kInfinity, -kInfinity})
        for (const float time : {0.0f, 1.0f, 500.0f, 10000.0f})
            ExpectPlain(0.7f, hold, time, 444);
    CameraWalk walk(0.7f, kNaN, 444);
    EXPECT_TRUE(std::isnan(walk.AdvanceTo(10.0f).end));
}

TEST(CameraWalk, HoldsOutsideOfTheKnob_EndAfter2To24KnotsAtTheLatest)
{
    for (const float hold : {-3.0f, 1.5f, 1e6f}) {
        CameraWalk walk(0.9f, hold, 444);
        const CameraInterval interval = walk.AdvanceTo(kMost);
        EXPECT_TRUE(interval.resting) << hold;
        EXPECT_EQ(interval.start, interval.end) << hold;
        EXPECT_EQ(interval.time, interval.end) << hold;
        CameraRandom most;
        most.SeedCamera(static_cast<double>(0.9f), 12345.0, 444);
        most.Skip((1u << 24) + 2);
        EXPECT_EQ(walk.GetRandom().GetState(), most.GetState()) << hold;
    }
}

// --- the curve ----------------------------------------------------------------------------------------------

TEST(CameraNoise, AtTheStart_IsTheFirstKeysValue)
{
    // 111 * 214013 + 2531011 = 26286454, its upper half 401: 401 / 256 - 1. Both jitter and ease begin at 0.
    EXPECT_EQ(CameraNoise(1.0f, 0.25f, 0.5f, 0.0, 444, 111), 0.56640625f);
    EXPECT_EQ(CameraNoise(0.3f, 0.9f, 1.0f, 0.0, 555, 111), 0.56640625f);
}

TEST(CameraNoise, SomeTimes_AreThoseOfAnIndependentCalculation)
{
    EXPECT_EQ(Bits(CameraNoise(1.0f, 0.25f, 0.5f, 0.31, 444, 111)), 0xBF646C48u);
    EXPECT_EQ(Bits(CameraNoise(1.0f, 0.25f, 0.5f, 0.55, 444, 111)), 0x3F7541F5u);
    EXPECT_EQ(Bits(CameraNoise(0.9f, 0.0f, 0.5f, 12.345, 444, 222)), 0xBE755998u);
    EXPECT_EQ(Bits(CameraNoise(0.5f, 0.3f, 1.0f, 33.3, 666, 333)), 0x3F8A2F27u);
    EXPECT_EQ(Bits(CameraNoise(0.67f, 0.34f, 0.54f, 100.0, 444, 111)), 0x3E98FA39u);
    EXPECT_EQ(Bits(CameraNoise(0.0f, 0.44f, 0.21f, 1000.0, 444, 222)), 0xBF760374u);
}

TEST(CameraNoise, NegativeTimes_AreZero)
{
    for (const double time : {-0.0, -0.1, -1000.0, -1e300})
        EXPECT_EQ(CameraNoise(0.9f, 0.3f, 0.5f, time, 444, 222),
                  CameraNoise(0.9f, 0.3f, 0.5f, 0.0, 444, 222));
}

TEST(CameraNoise, HoldOfOne_JumpsFromRestToRest)
{
    // Without jitter the rest from 4.2067... to 7.6231... stays where it starts.
    const float rest = CameraNoise(0.26f, 1.0f, 0.0f, 4.3, 444, 111);
    EXPECT_EQ(rest, 0.95703125f);
    EXPECT_EQ(CameraNoise(0.26f, 1.0f, 0.0f, 7.0, 444, 111), rest);
    EXPECT_EQ(CameraNoise(0.26f, 1.0f, 0.0f, 7.6, 444, 111), rest);
    EXPECT_NE(CameraNoise(0.26f, 1.0f, 0.0f, 4.2, 444, 111), rest);
    EXPECT_NE(CameraNoise(0.26f, 1.0f, 0.0f, 7.7, 444, 111), rest);
}

TEST(CameraNoise, HoldOfZero_MovesThroughEveryKey)
{
    // A move's end is the next one's start.
    CameraWalk walk(0.5f, 0.0f, 444);
    float time = walk.AdvanceTo(0.0f).end;
    for (int move = 0; move < 50; ++move) {
        const float before = CameraNoise(0.5f, 0.0f, 0.0f, static_cast<double>(time), 444, 111);
        const float after =
            CameraNoise(0.5f, 0.0f, 0.0f, static_cast<double>(std::nextafter(time, kMost)), 444, 111);
        EXPECT_NEAR(before, after, 1e-4) << time;
        const CameraInterval next = walk.AdvanceTo(std::nextafter(time, kMost));
        EXPECT_FALSE(next.resting);
        time = next.end;
    }
}

TEST(CameraNoise, Jitter_IsHalvedAtRest)
{
    CameraInterval interval = {.before = 1.0f, .start = 1.0f, .end = 2.0f, .time = 1.25f, .resting = false};
    // Two segments: at a quarter the first one's middle. The value is 532 + 111 drawn: 643 * 214013 + 2531011 =
    // 140141370, its upper half 2138, less 4 * 512: 90 / 256 - 1, halved.
    const double wobble = 0.5 * (90.0 / 256.0 - 1.0) / 2.0 * 0.25;
    const float moving = CameraNoise(interval, 0.25f, 111) - CameraNoise(interval, 0.0f, 111);
    EXPECT_NEAR(static_cast<double>(moving), wobble, 2e-7);
    interval.resting = true;
    const float resting = CameraNoise(interval, 0.25f, 111) - CameraNoise(interval, 0.0f, 111);
    EXPECT_NEAR(static_cast<double>(resting), wobble / 2.0, 2e-7);
}

TEST(CameraNoise, Jitter_EndsAtZero)
{
    const CameraInterval interval = {.before = 1.0f, .start = 2.0f, .end = 4.0f, .time = 4.0f};
    for (const float jitter : {0.1f, 0.5f, 0.8f, 1.0f})
        EXPECT_NEAR(CameraNoise(interval, jitter, 111), CameraNoise(interval, 0.0f, 111), 1e-5) << jitter;
}

TEST(CameraNoise, Halfway_IsTheMeanOfItsKeys)
{
    // 641 * 2 + 222 = 1504 and 641 * 8 + 222 = 5350: one step of the generator has the upper halves 4950 and 17509,
    // the draws 342 and 101.
    const CameraInterval interval = {
        .before = 2.0f, .start = 4.0f, .end = 8.0f, .time = 6.0f, .resting = false};
    const double from = 342.0 / 256.0 - 1.0, to = 101.0 / 256.0 - 1.0;
    EXPECT_NEAR(static_cast<double>(CameraNoise(interval, 0.0f, 222)), (from + to) / 2.0, 1e-6);
}

TEST(CameraNoise, SegmentsBelowHalfTheSpacing_GiveTheValueWithoutJitter)
{
    // Floats are 1/64 apart, a twelfth of the interval is 1/192.
    const CameraInterval interval = {.before = 131071.0f,
                                     .start = 131072.0f,
                                     .end = 131072.0625f,
                                     .time = 131072.03125f,
                                     .resting = false};
    EXPECT_EQ(CameraNoise(interval, 1.0f, 111), CameraNoise(interval, 0.0f, 111));
}

TEST(CameraNoise, SegmentsThatStopAtAPowerOfTwo_GiveTheValueOfThatPlace)
{
    // From 131072 on floats are 1/64 apart, before it 1/128: steps of 1/192 lead there and no further, so time counts
    // as 131072, the end of the second segment, rounded up by half a segment from 131071.9921875.
    const CameraInterval interval = {
        .before = 131071.0f, .start = 131071.984375f, .end = 131072.046875f, .time = 131072.03125f};
    // 532 * 131071.984375 + 111 = 69730406, drawn twice: the upper halves 38139 and 15905, the draws 251 and 33.
    const double first = (251.0 / 256.0 - 1.0) / 2.0, second = (33.0 / 256.0 - 1.0) / 2.0;
    const double wobble = (1.5 * second - 0.5 * first) / 2.0;
    const float value = CameraNoise(interval, 1.0f, 111) - CameraNoise(interval, 0.0f, 111);
    EXPECT_NEAR(static_cast<double>(value), wobble, 1e-6);
}

TEST(CameraNoise, TimesWhereStepsAreHardlyResolved_GiveAValue)
{
    // A segment's end may be rounded up to twice its length: 0.5 becomes 1.5 there.
    for (int step = 0; step <= 120; ++step)
        EXPECT_LE(std::fabs(CameraNoise(1.0f, 0.0f, 1.0f, 131072.0 + step * 0.5, 444, 111)), 2.5f) << step;
    for (const double time : {4194304.0, 1e30, 1e300, static_cast<double>(kMost)})
        for (const float hold : {0.0f, 0.3f, 1.0f})
            EXPECT_LE(std::fabs(CameraNoise(1.0f, hold, 1.0f, time, 444, 111)), 2.5f) << time;
}

TEST(CameraNoise, TimesThatAreNotFinite_AreZero)
{
    for (const float time : {kInfinity, -kInfinity, kNaN})
        EXPECT_EQ(CameraNoise(1.0f, 0.0f, 1.0f, static_cast<double>(time), 444, 111), 0.56640625f);
}

TEST(CameraNoise, WhereTheWalkHasEnded_IsTheValueOfThatPlace)
{
    // 641 * 4194304 + 222 = 2688549086; one step of the generator: 574329897, upper half 8763, draw 59.
    const auto expected = static_cast<float>(59.0 / 256.0 - 1.0);
    EXPECT_NEAR(CameraNoise(1.0f, 0.0f, 1.0f, 1e30, 444, 222), expected, 1e-6);
}

TEST(CameraNoise, WildJitter_ComesToAnEnd)
{
    for (const float jitter : {1e6f, -1e6f, 1e30f, kMost, kInfinity, kNaN})
        CameraNoise(0.5f, 0.3f, jitter, 100.0, 444, 111);
    const CameraInterval wide = {.before = 0.0f, .start = 0.0f, .end = kMost, .time = 1e38f};
    EXPECT_TRUE(std::isfinite(CameraNoise(wide, 1000.0f, 111)));
}

} // namespace
} // namespace kelmora

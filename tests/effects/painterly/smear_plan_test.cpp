#include "effects/painterly/smear_plan.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/reference/smear.h"

namespace kelmora::smear {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(SmearPlan, SmearShare_TheFirstPicture_GrowsUntilTheSecondStandsAlone)
{
    // Cross Fade 0.5: full from 0.75 on.
    EXPECT_EQ(SmearShare(Clip::First, 0.0, 0.5f), 0.0);
    EXPECT_EQ(SmearShare(Clip::First, 0.375, 0.5f), 0.5);
    EXPECT_EQ(SmearShare(Clip::First, 0.75, 0.5f), 1.0);
    EXPECT_EQ(SmearShare(Clip::First, 1.0, 0.5f), 1.0);
}

TEST(SmearPlan, SmearShare_TheSecondPicture_ShrinksFromWhereTheFirstStoodAlone)
{
    EXPECT_EQ(SmearShare(Clip::Second, 0.0, 0.5f), 1.0);
    EXPECT_EQ(SmearShare(Clip::Second, 0.25, 0.5f), 1.0);
    EXPECT_EQ(SmearShare(Clip::Second, 0.625, 0.5f), 0.5);
    EXPECT_EQ(SmearShare(Clip::Second, 1.0, 0.5f), 0.0);
}

TEST(SmearPlan, SmearShare_AFullCrossFade_TakesTheWholeTransition)
{
    EXPECT_EQ(SmearShare(Clip::First, 0.25, 1.0f), 0.25);
    EXPECT_EQ(SmearShare(Clip::First, 1.0, 1.0f), 1.0);
    EXPECT_EQ(SmearShare(Clip::Second, 0.0, 1.0f), 1.0);
    EXPECT_EQ(SmearShare(Clip::Second, 0.25, 1.0f), 0.75);
}

TEST(SmearPlan, SmearShare_NoCrossFade_IsFullInTheMiddle)
{
    EXPECT_EQ(SmearShare(Clip::First, 0.25, 0.0f), 0.5);
    EXPECT_EQ(SmearShare(Clip::First, 0.5, 0.0f), 1.0);
    EXPECT_EQ(SmearShare(Clip::Second, 0.5, 0.0f), 1.0);
    EXPECT_EQ(SmearShare(Clip::Second, 0.75, 0.0f), 0.5);
}

TEST(SmearPlan, SmearLength_IsTwiceTheWidthAtFullBlur)
{
    EXPECT_EQ(SmearLength(1.0f, 720, 1.0), 1440.0f);
    EXPECT_EQ(SmearLength(0.5f, 720, 0.25), 180.0f);
    EXPECT_EQ(SmearLength(0.0f, 720, 1.0), 0.0f);
    EXPECT_EQ(SmearLength(1.0f, 720, 0.0), 0.0f);
}

TEST(SmearPlan, SmearLength_IsSinglePrecision)
{
    // 2 * 3 / 7 = 0.857142857142857206: between the singles 0.857142806 and 0.857142866, nearer the latter.
    EXPECT_EQ(SmearLength(1.0f, 3, 1.0 / 7), 0.857142866f);
}

void ExpectLengths(const Lengths& lengths, double forward, double backward)
{
    EXPECT_EQ(lengths.forward, forward);
    EXPECT_EQ(lengths.backward, backward);
}

TEST(SmearPlan, SplitLength_TheTwoPictures_LeanToOppositeSides)
{
    ExpectLengths(SplitLength(Clip::First, 100.0f, 0.0f), 100, 0);
    ExpectLengths(SplitLength(Clip::Second, 100.0f, 0.0f), 0, 100);
    ExpectLengths(SplitLength(Clip::First, 100.0f, 1.0f), 0, 100);
    ExpectLengths(SplitLength(Clip::Second, 100.0f, 1.0f), 100, 0);
    ExpectLengths(SplitLength(Clip::First, 100.0f, 0.25f), 75, 25);
    ExpectLengths(SplitLength(Clip::Second, 100.0f, 0.25f), 25, 75);
    ExpectLengths(SplitLength(Clip::First, 100.0f, 0.5f), 50, 50);
}

TEST(SmearPlan, DoublingsFor_ShortOfOneAndAHalfPixels_AreNone)
{
    EXPECT_EQ(DoublingsFor(0.0).count, -1);
    EXPECT_EQ(DoublingsFor(0.001).count, 0); // -0.997, truncated
    EXPECT_EQ(DoublingsFor(0.5).count, 0);
    EXPECT_EQ(DoublingsFor(1.49).count, 0);
}

TEST(SmearPlan, DoublingsFor_AHalfLessThanAPowerOfTwo_AreItsExponent)
{
    for (int n = 1; n <= 12; ++n) {
        const double power = static_cast<double>(1 << n);
        EXPECT_EQ(DoublingsFor(power - 0.5).count, n);
        EXPECT_EQ(DoublingsFor(power - 0.51).count, n - 1);
        EXPECT_EQ(DoublingsFor(power - 0.5).step, (power - 0.5) / (2 * power));
    }
}

TEST(SmearPlan, DoublingsFor_1440Pixels_StepByFiveEighthsAndMore)
{
    const Doublings doublings = DoublingsFor(1440.0); // 1024 <= 1440.5 < 2048
    EXPECT_EQ(doublings.count, 10);
    EXPECT_EQ(doublings.step, 0.703125); // 1440 / 2048
}

TEST(SmearPlan, DoublingsFor_WildLengths_AreBounded)
{
    for (const double none : {-1.0, -1e300, static_cast<double>(kNaN), -static_cast<double>(kInfinity)}) {
        EXPECT_EQ(DoublingsFor(none).count, -1) << none;
        EXPECT_EQ(DoublingsFor(none).step, 0.0) << none;
    }
    EXPECT_EQ(DoublingsFor(1e30).count, 30);
    EXPECT_EQ(DoublingsFor(1e30).step, 1e30 / 2147483648.0);
    EXPECT_EQ(DoublingsFor(static_cast<double>(kInfinity)).count, 30);
}

TEST(SmearPlan, DoublingsFor_ManyLengths_AreThePlainVersions)
{
    for (int i = 0; i < 20000; ++i) {
        const double length = i * 0.37;
        const reference::Streak expected = reference::StreakOf(length);
        const Doublings doublings = DoublingsFor(length);
        ASSERT_EQ(std::max(doublings.count, 0), expected.doublings) << length;
        ASSERT_EQ(static_cast<float>(doublings.step), expected.step) << length;
    }
}

TEST(SmearPlan, Lengths_ForManyKnobs_AreThePlainVersions)
{
    for (int i = 0; i <= 20; ++i)
        for (const float direction : {0.0f, 0.13f, 0.5f, 0.52f, 1.0f})
            for (const float crossFade : {0.0f, 0.34f, 0.595f, 1.0f})
                for (const Clip clip : {Clip::First, Clip::Second}) {
                    const double progress = i / 20.0;
                    reference::SmearKnobs knobs;
                    knobs.blur = 0.8001f;
                    knobs.direction = direction;
                    knobs.crossFade = crossFade;
                    const auto expected = reference::LengthsOf(knobs, 641, clip == Clip::Second, progress);
                    const double share = SmearShare(clip, progress, crossFade);
                    ExpectLengths(SplitLength(clip, SmearLength(0.8001f, 641, share), direction),
                                  expected.forward, expected.backward);
                }
}

TEST(SmearPlan, Turn_OneIsTwiceAShortPi)
{
    EXPECT_EQ(Turn(0.0f), 0.0);
    EXPECT_EQ(Turn(0.25f), 1.570796251296997);
    EXPECT_EQ(Turn(1.0f), 6.283185005187988);
}

void ExpectWeights(const Weights& weights, int rising, int falling)
{
    EXPECT_EQ(weights.rising, rising);
    EXPECT_EQ(weights.falling, falling);
}

TEST(SmearPlan, WeightsFor_AShare_TruncateBothParts)
{
    ExpectWeights(WeightsFor(0.0), 0, 255);
    ExpectWeights(WeightsFor(1.0), 255, 0);
    ExpectWeights(WeightsFor(0.5), 127, 127);
    ExpectWeights(WeightsFor(0.25), 63, 191); // 63.75 and 191.25
    ExpectWeights(WeightsFor(0.2), 51, 204);  // 51, and 204 with nothing lost
}

TEST(SmearPlan, Kept_WeightsBetweenTheEnds_SumTo254)
{
    for (const double share : {0.01, 0.25, 0.48, 0.5, 0.9})
        EXPECT_EQ(WeightsFor(share).rising + WeightsFor(share).falling, 254) << share;
    ExpectWeights(WeightsFor(1e-9), 0, 254); // 255 less a trace
}

void ExpectDissolve(const Dissolve& dissolve, int rising, int falling)
{
    EXPECT_EQ(dissolve.shown, Shown::Both);
    ExpectWeights(dissolve.weights, rising, falling);
}

TEST(SmearPlan, DissolveAt_ACrossFade_LiesAroundTheMiddle)
{
    EXPECT_EQ(DissolveAt(0.0, 0.5f).shown, Shown::First);
    EXPECT_EQ(DissolveAt(0.2499, 0.5f).shown, Shown::First);
    ExpectDissolve(DissolveAt(0.25, 0.5f), 0, 255);
    ExpectDissolve(DissolveAt(0.5, 0.5f), 127, 127);
    ExpectDissolve(DissolveAt(0.75, 0.5f), 255, 0);
    EXPECT_EQ(DissolveAt(0.7501, 0.5f).shown, Shown::Second);
    EXPECT_EQ(DissolveAt(1.0, 0.5f).shown, Shown::Second);
}

TEST(SmearPlan, DissolveAt_AFullCrossFade_EndsInThePicturesThemselves)
{
    ExpectDissolve(DissolveAt(0.0, 1.0f), 0, 255);
    ExpectDissolve(DissolveAt(1.0, 1.0f), 255, 0);
}

TEST(SmearPlan, Kept_NoCrossFade_LeavesTheVeryMiddleBlank)
{
    EXPECT_EQ(DissolveAt(0.49999, 0.0f).shown, Shown::First);
    ExpectDissolve(DissolveAt(0.5, 0.0f), 0, 0);
    EXPECT_EQ(DissolveAt(0.50001, 0.0f).shown, Shown::Second);
}

TEST(SmearPlan, WildKnobs_AreDefined)
{
    EXPECT_EQ(SmearShare(Clip::First, 0.5, kNaN), 1.0);
    EXPECT_EQ(SmearShare(Clip::Second, 0.5, kNaN), 1.0);
    ExpectDissolve(DissolveAt(0.5, kNaN), 0, 0);
    ExpectWeights(WeightsFor(static_cast<double>(kNaN)), 0, 0);
    constexpr int most = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    ExpectWeights(WeightsFor(1e30), most, least);
    ExpectWeights(WeightsFor(-1e30), least, most);
}

} // namespace
} // namespace kelmora::smear

#include "effects/painterly/crossfade.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/reference/color_melt.h"
#include "tests/reference/paper_collage.h"

namespace kelmora {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Crossfade, ClampProgress_AnyNumber_LiesFromZeroToOne)
{
    EXPECT_EQ(ClampProgress(0.25), 0.25);
    EXPECT_EQ(ClampProgress(0.0), 0.0);
    EXPECT_EQ(ClampProgress(1.0), 1.0);
    EXPECT_EQ(ClampProgress(-0.5), 0.0);
    EXPECT_EQ(ClampProgress(1.5), 1.0);
    EXPECT_EQ(ClampProgress(-kInfinity), 0.0);
    EXPECT_EQ(ClampProgress(kInfinity), 1.0);
    EXPECT_EQ(ClampProgress(std::numeric_limits<double>::quiet_NaN()), 0.0);
}

TEST(Crossfade, CrossfadeCurve_NoTempo_RisesAndFallsStraight)
{
    EXPECT_EQ(CrossfadeCurve(0.0, 1.0f, 0.0f).amount, 0.0f);
    EXPECT_EQ(CrossfadeCurve(0.25, 1.0f, 0.0f).amount, 0.5f);
    EXPECT_EQ(CrossfadeCurve(0.5, 1.0f, 0.0f).amount, 1.0f);
    EXPECT_EQ(CrossfadeCurve(0.75, 1.0f, 0.0f).amount, 0.5f);
    EXPECT_EQ(CrossfadeCurve(1.0, 1.0f, 0.0f).amount, 0.0f);
}

TEST(Crossfade, CrossfadeCurve_FullTempo_RisesAsAFourthPower)
{
    EXPECT_EQ(CrossfadeCurve(0.25, 1.0f, 1.0f).amount, 0.9375f);      // 1 - 1/16
    EXPECT_EQ(CrossfadeCurve(0.875, 1.0f, 1.0f).amount, 0.68359375f); // 1 - (3/4)^4
    EXPECT_EQ(CrossfadeCurve(0.0, 1.0f, 1.0f).amount, 0.0f);
    EXPECT_EQ(CrossfadeCurve(0.5, 1.0f, 1.0f).amount, 1.0f);
    EXPECT_EQ(CrossfadeCurve(1.0, 1.0f, 1.0f).amount, 0.0f);
}

TEST(Crossfade, CrossfadeCurve_FullCrossFade_SpansTheWholeTransition)
{
    for (const double progress : {0.0, 0.125, 0.5, 0.75, 1.0})
        EXPECT_EQ(CrossfadeCurve(progress, 1.0f, 0.3f).fade, progress);
}

TEST(Crossfade, CrossfadeCurve_AHalf_FadesInTheMiddle)
{
    EXPECT_EQ(CrossfadeCurve(0.2, 0.5f, 0.0f).fade, 0.0);
    EXPECT_EQ(CrossfadeCurve(0.25, 0.5f, 0.0f).fade, 0.0);
    EXPECT_EQ(CrossfadeCurve(0.375, 0.5f, 0.0f).fade, 0.25);
    EXPECT_EQ(CrossfadeCurve(0.75, 0.5f, 0.0f).fade, 1.0);
    EXPECT_EQ(CrossfadeCurve(0.8, 0.5f, 0.0f).fade, 1.0);
}

TEST(Crossfade, CrossfadeCurve_NoCrossFade_CutsBehindTheMiddle)
{
    EXPECT_EQ(CrossfadeCurve(0.4999, 0.0f, 0.0f).fade, 0.0);
    EXPECT_EQ(CrossfadeCurve(0.5, 0.0f, 0.0f).fade, 0.0);
    EXPECT_EQ(CrossfadeCurve(0.5001, 0.0f, 0.0f).fade, 1.0);
}

TEST(Crossfade, CrossfadeCurve_WildTempos_StayFromZeroToOne)
{
    for (const float tempo : {-0.5f, -1.0f, -100.0f, 100.0f, kNaN, std::numeric_limits<float>::infinity()})
        for (const double progress : {0.0, 0.1, 0.5, 0.9, 1.0}) {
            const float amount = CrossfadeCurve(progress, 0.5f, tempo).amount;
            EXPECT_TRUE(amount >= 0.0f && amount <= 1.0f) << tempo << " at " << progress;
        }
    // The power of 0 to an exponent below 0 is infinite.
    EXPECT_EQ(CrossfadeCurve(0.5, 0.5f, -1.0f).amount, 0.0f);
    EXPECT_EQ(CrossfadeCurve(0.3, 0.5f, kNaN).amount, 0.0f);
}

TEST(Crossfade, CrossfadeCurve_ManyKnobs_IsThePlainVersions)
{
    for (int p = 0; p <= 64; ++p)
        for (int x = 0; x <= 20; ++x)
            for (int t = 0; t <= 4; ++t) {
                const double progress = p / 64.0; // the same in single precision
                const float crossFade = static_cast<float>(x) / 20.0f, tempo = static_cast<float>(t) / 4.0f;
                const Crossfade curve = CrossfadeCurve(progress, crossFade, tempo);
                const reference::PaperCurve paper = reference::CrossfadeCurve(progress, crossFade, tempo);
                ASSERT_EQ(curve.amount, paper.amount);
                ASSERT_EQ(static_cast<float>(curve.fade), paper.fade);
                ASSERT_EQ(curve.amount, reference::MeltAmount(progress, tempo));
                ASSERT_EQ(curve.fade,
                          reference::MeltDissolve(static_cast<float>(progress), crossFade).position);
            }
}

} // namespace
} // namespace kelmora

#include "image/tent_scale.h"

#include <cmath>
#include <utility>

#include <gtest/gtest.h>

#include "image/tent_kernel.h"

namespace kelmora {
namespace {

/// The rule of the byte filters: times the reciprocal in double, 255 or more gives 255, ties to even.
int RoundedByRule(std::int64_t sum, std::int64_t weights)
{
    const double value = static_cast<double>(sum) * (1.0 / static_cast<double>(weights));
    return value >= 255.0 ? 255 : static_cast<int>(std::lrint(value));
}

TEST(TentScale, EverySumOfSmallTents_RoundsByTheRule)
{
    for (int taps = 2; taps <= 60; ++taps) {
        const std::int64_t weights = TentSum(taps);
        const TentScale scale = MakeByteScale(weights, false);
        for (std::int64_t sum = 0; sum <= 255 * weights; ++sum)
            ASSERT_EQ(ApplyScale(scale, sum), RoundedByRule(sum, weights)) << taps << " taps, sum " << sum;
    }
}

TEST(TentScale, SumsAroundEveryTie_RoundByTheRule)
{
    for (int taps = 2; taps <= 600; ++taps) {
        const std::int64_t weights = TentSum(taps);
        const TentScale scale = MakeByteScale(weights, false);
        for (int value = 0; value < 255; ++value)
            for (std::int64_t off = -2; off <= 2; ++off) {
                const std::int64_t sum = weights * value + weights / 2 + off;
                if (sum < 0 || sum > 255 * weights)
                    continue;
                ASSERT_EQ(ApplyScale(scale, sum), RoundedByRule(sum, weights))
                    << taps << " taps, sum " << sum;
            }
    }
}

TEST(TentScale, SumsAroundEveryWholeQuotient_AreTruncated)
{
    for (int taps = 2; taps <= 600; ++taps) {
        const std::int64_t weights = TentSum(taps);
        const TentScale scale = MakeByteScale(weights, true);
        for (int value = 0; value <= 255; ++value)
            for (std::int64_t off = -2; off <= 2; ++off) {
                const std::int64_t sum = weights * value + off;
                if (sum < 0 || sum > 255 * weights)
                    continue;
                ASSERT_EQ(ApplyScale(scale, sum), sum / weights) << taps << " taps, sum " << sum;
            }
    }
}

// Half of 1 and of 3 lie between two levels, and a last bit beside them decides.
TEST(TentScale, ApplyScale_ASecondFactor_DecidesTies)
{
    const auto levels = [](double rest) {
        const TentScale scale = {.single = true, .factor = 0.5, .rest = rest};
        return std::pair(ApplyScale(scale, 1), ApplyScale(scale, 3));
    };
    EXPECT_EQ(levels(0.0), std::pair(0, 2)) << "to even";
    EXPECT_EQ(levels(std::ldexp(1.0, -26)), std::pair(0, 2)) << "too little";
    EXPECT_EQ(levels(std::ldexp(1.0, -23)), std::pair(1, 2));
    EXPECT_EQ(levels(std::ldexp(-1.0, -23)), std::pair(0, 1));
}

TEST(TentScale, EverySumOfATentOfTwoFactors_RoundsByTheRule)
{
    for (const int taps : {194, 200, 356}) {
        const std::int64_t weights = TentSum(taps);
        const TentScale scale = MakeByteScale(weights, false);
        ASSERT_TRUE(scale.single) << taps;
        ASSERT_NE(scale.rest, 0.0) << taps;
        for (std::int64_t sum = 0; sum <= 255 * weights; ++sum)
            ASSERT_EQ(ApplyScale(scale, sum), RoundedByRule(sum, weights)) << taps << " taps, sum " << sum;
    }
}

// 216 taps weigh 11772 in all. In single precision one of their 255 ties comes out wrong; it is patched.
TEST(TentScale, OneWrongTie_DoesNotCostDoublePrecision)
{
    const TentScale scale = MakeByteScale(TentSum(216), false);
    EXPECT_TRUE(scale.single);
    EXPECT_NE(scale.patch, 0);
}

} // namespace
} // namespace kelmora

#include "image/tent_kernel.h"

#include <climits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference/tent.h"

namespace kelmora {
namespace {

TEST(TentKernel, FiveAndFourTaps_AreAsWritten)
{
    int five[5] = {}, four[4] = {}, one[1] = {};
    EXPECT_EQ(MakeTentKernelI(five, 5), 9);
    EXPECT_EQ(MakeTentKernelI(four, 4), 6);
    EXPECT_EQ(MakeTentKernelI(one, 1), 1);
    EXPECT_EQ(std::vector<int>(five, five + 5), (std::vector<int>{1, 2, 3, 2, 1}));
    EXPECT_EQ(std::vector<int>(four, four + 4), (std::vector<int>{1, 2, 2, 1}));
    EXPECT_EQ(one[0], 1);

    float fractions[4] = {};
    EXPECT_EQ(MakeTentKernelF(fractions, 4), 6.0f);
    EXPECT_EQ(fractions[0], 1.0f / 6);
    EXPECT_EQ(fractions[1], 2.0f / 6);
    EXPECT_EQ(fractions[2], 2.0f / 6);
    EXPECT_EQ(fractions[3], 1.0f / 6);
}

TEST(TentKernel, AnyTaps_AreTheTentAndSumToWhatIsSaid)
{
    for (int taps = 1; taps <= 600; ++taps) {
        std::vector<int> whole(static_cast<std::size_t>(taps) + 1, -7);
        EXPECT_EQ(MakeTentKernelI(whole.data(), taps), reference::TentWeightSum(taps));
        EXPECT_EQ(whole.back(), -7) << "written behind";
        whole.pop_back();
        EXPECT_EQ(whole, reference::TentWeights(taps));
        EXPECT_EQ(TentSum(taps), reference::TentWeightSum(taps));

        std::vector<float> parts(static_cast<std::size_t>(taps) + 1, -7.0f);
        EXPECT_EQ(MakeTentKernelF(parts.data(), taps), static_cast<float>(reference::TentWeightSum(taps)));
        EXPECT_EQ(parts.back(), -7.0f) << "written behind";
        parts.pop_back();
        EXPECT_EQ(parts, reference::TentFractions(taps));
        double sum = 0;
        for (const float part : parts)
            sum += static_cast<double>(part);
        EXPECT_NEAR(sum, 1.0, 1e-6);
    }
}

TEST(TentKernel, NoTapsOrNoMemory_GiveZero)
{
    int whole = -7;
    float part = -7;
    for (const int taps : {0, -1, INT_MIN}) {
        EXPECT_EQ(MakeTentKernelI(&whole, taps), 0);
        EXPECT_EQ(MakeTentKernelF(&part, taps), 0.0f);
    }
    EXPECT_EQ(whole, -7);
    EXPECT_EQ(part, -7.0f);
    EXPECT_EQ(MakeTentKernelI(nullptr, 5), 0);
    EXPECT_EQ(MakeTentKernelF(nullptr, 5), 0.0f);
}

} // namespace
} // namespace kelmora

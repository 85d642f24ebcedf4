#include "image/primitives/filter_kernels.h"

#include <gtest/gtest.h>

#include "tests/image/variants.h"

namespace kelmora {
namespace {

TEST(FilterKernels, BothLoopsOfEveryVariant_AddTheTapsUpAndKeepWhatTheyAreTold)
{
    // Taps 2, 3 and -1 over the values i + 1, i + 2 and i + 3: 4 * i + 5.
    constexpr std::int16_t weights[] = {2, 3, -1};
    for (const CpuVariant variant : kAllVariants) {
        if (!IsAvailable(variant))
            continue;
        const FilterKernels& kernels = FilterKernelsFor(variant);
        for (const auto loop : {kernels.narrow, kernels.wide})
            for (const bool keepsFourth : {false, true})
                for (int count = 1; count <= 150; ++count) {
                    std::uint8_t src[154], dst[151];
                    for (int i = 0; i < 154; ++i)
                        src[i] = static_cast<std::uint8_t>(i);
                    for (std::uint8_t& value : dst)
                        value = 0xC3;
                    FilterRow row = {};
                    row.src = src + 1;
                    row.tapStep = 1;
                    row.weights = weights;
                    row.taps = 3;
                    row.dst = dst;
                    row.count = count;
                    row.finish = FilterFinish::ScaleSingle;
                    row.reciprocal = 1.0 / 5;
                    row.keepsFourth = keepsFourth;
                    loop(row);
                    for (int i = 0; i <= 150; ++i) {
                        // To the nearest fifth; there are no ties.
                        const bool kept = i >= count || (keepsFourth && i % 4 == 3);
                        ASSERT_EQ(dst[i], kept ? 0xC3 : (2 * (4 * i + 5) + 5) / 10) << i << " of " << count;
                    }
                }
    }
}

} // namespace
} // namespace kelmora

#include <vector>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "tests/image/buffers.h"
#include "tests/image/variants.h"

namespace kelmora {
namespace {

/// The pictures of all variants side by side, floats bit for bit too.
TEST(TentKernelsVariant, AllVariants_GiveTheSameBits)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F})
        for (const int width : {5, 6, 15, 16, 17, 31, 33, 64, 67})
            for (const float taps : {1.0f, 2.0f, 3.0f, 16.0f, 31.0f, 100.0f}) {
                GuardedPicture src(width, 37, format, {.slack = 5});
                src.FillNoise(static_cast<std::uint32_t>(width));
                std::vector<GuardedPicture> results;
                ForEachVariant([&] {
                    GuardedPicture& dst = results.emplace_back(width, 37, format);
                    FrameBuffer to = ViewOf(dst);
                    ASSERT_TRUE(ImageOps().Blur(ViewOf(src), to, taps, taps, nullptr, true));
                });
                for (const GuardedPicture& result : results)
                    ASSERT_TRUE(Equal(result, results.front())) << width << " wide, " << taps << " taps";
            }
}

} // namespace
} // namespace kelmora
